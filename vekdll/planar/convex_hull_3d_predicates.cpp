// The exact orientation tests of the spatial hull and its self-tests.

#include "vekdll/planar/convex_hull_3d.h"

#include "vekdll/planar/grid_arithmetic.h"
#include "vekdll/planar/grid_predicates.h"
#include "vekdll/planar/hull_rings.h"

void CHConvexHull3D::SubVec(const long long a[3], const long long b[3], long long c[3])
{
    for (int i = 0; i < 3; ++i) c[i] = vek::detail::GridSub(a[i], b[i]);
}

int CHConvexHull3D::VolumeSign(tFaceStructure* f, tVertexStructure* p)
{
    return vek::detail::GridVolumeSign(f->Vertex[0]->Coordinate, f->Vertex[1]->Coordinate, f->Vertex[2]->Coordinate,
                                       p->Coordinate);
}

bool CHConvexHull3D::Collinear(tVertexStructure* a, tVertexStructure* b, tVertexStructure* c)
{
    return vek::detail::GridCollinear(a->Coordinate, b->Coordinate, c->Coordinate);
}

bool CHConvexHull3D::Checks()
{
    const bool consistent = Consistency();
    const bool convex = Convexity();
    CheckEuler();
    CheckEndpts();
    return consistent && convex;
}

bool CHConvexHull3D::Consistency()
{
    // Each edge must be named by both faces it borders.
    bool consistent = true;
    vek::detail::ForEachInRing(Edges, [&consistent](const tEdgeStructure* e) {
        for (const tFaceStructure* f : e->AdjacentFace) {
            if (f == nullptr || (f->Edge[0] != e && f->Edge[1] != e && f->Edge[2] != e)) consistent = false;
        }
    });
    return consistent;
}

bool CHConvexHull3D::Convexity()
{
    // No vertex added so far may see a face from outside.
    bool convex = true;
    vek::detail::ForEachInRing(Faces, [this, &convex](tFaceStructure* f) {
        vek::detail::ForEachInRing(Vertices, [this, f, &convex](tVertexStructure* v) {
            if (v->Processed && VolumeSign(f, v) < 0) convex = false;
        });
    });
    return convex;
}
