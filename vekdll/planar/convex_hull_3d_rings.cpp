// The three rings of the spatial hull and the making and releasing of their records.

#include "vekdll/planar/convex_hull_3d.h"

#include "vekdll/planar/hull_rings.h"

tVertexStructure* CHConvexHull3D::MakeNullVertex()
{
    return vek::detail::AppendNewToRing(Vertices);
}

tEdgeStructure* CHConvexHull3D::MakeNullEdge()
{
    return vek::detail::AppendNewToRing(Edges);
}

tFaceStructure* CHConvexHull3D::MakeNullFace()
{
    return vek::detail::AppendNewToRing(Faces);
}

void CHConvexHull3D::AddVertex(tVertexStructure* v)
{
    vek::detail::LinkAtRingEnd(Vertices, v);
}

void CHConvexHull3D::AddEdge(tEdgeStructure* e)
{
    vek::detail::LinkAtRingEnd(Edges, e);
}

void CHConvexHull3D::AddFace(tFaceStructure* f)
{
    vek::detail::LinkAtRingEnd(Faces, f);
}

void CHConvexHull3D::DeleteVertex(tVertexStructure* v)
{
    vek::detail::UnlinkFromRing(Vertices, v);
    FreeVertex(v);
}

void CHConvexHull3D::DeleteEdge(tEdgeStructure* e)
{
    vek::detail::ReleaseFromRing(Edges, e);
}

void CHConvexHull3D::DeleteFace(tFaceStructure* f)
{
    vek::detail::ReleaseFromRing(Faces, f);
}

void CHConvexHull3D::FreeVertex(tVertexStructure* v)
{
    SafeFree(v);
}

tVertexStructure* CHConvexHull3D::NewVertex(long long x, long long y, long long z)
{
    // The whole ring is searched, which makes the input quadratic; the grid
    // needs no point twice.
    const tVertexStructure* there = vek::detail::FindInRing(Vertices, [&](const tVertexStructure* v) {
        const long long* c = v->Coordinate;
        return c[0] == x && c[1] == y && c[2] == z;
    });
    if (there != nullptr) return nullptr;
    tVertexStructure* v = MakeNullVertex();
    v->Coordinate[0] = x;
    v->Coordinate[1] = y;
    v->Coordinate[2] = z;
    return v;
}
