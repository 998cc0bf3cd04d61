// After each added vertex: the cone faces take the place of the visible
// ones, and what no longer bounds the hull goes.

#include "vekdll/planar/convex_hull_3d.h"

#include "vekdll/planar/hull_rings.h"

namespace {

bool Joins(const tEdgeStructure* e, const tVertexStructure* a, const tVertexStructure* b)
{
    return (e->EndPoint[0] == a && e->EndPoint[1] == b) || (e->EndPoint[0] == b && e->EndPoint[1] == a);
}

} // namespace

void CHConvexHull3D::CleanUp(tVertexStructure** vnext)
{
    CleanEdges();
    CleanFaces();
    CleanVertices(vnext);
}

void CHConvexHull3D::CleanEdges()
{
    vek::detail::ForEachInRing(Edges, [](tEdgeStructure* e) {
        if (e->NewFace == nullptr) return;
        const int visibleSide = e->AdjacentFace[0] != nullptr && e->AdjacentFace[0]->Visible ? 0 : 1;
        e->AdjacentFace[visibleSide] = e->NewFace;
        e->NewFace = nullptr;
    });
    vek::detail::RemoveMarkedFromRing(
        Edges, [](const tEdgeStructure* e) { return e->Delete; },
        [this](tEdgeStructure* e) {
            LooseVertices.push_back(e->EndPoint[0]);
            LooseVertices.push_back(e->EndPoint[1]);
            DeleteEdge(e);
        });
}

void CHConvexHull3D::CleanFaces()
{
    vek::detail::RemoveMarkedFromRing(
        Faces, [](const tFaceStructure* f) { return f->Visible; }, [this](tFaceStructure* f) { DeleteFace(f); });
}

void CHConvexHull3D::CleanVertices(tVertexStructure** vnext)
{
    vek::detail::ForEachInRing(Edges, [](tEdgeStructure* e) {
        e->EndPoint[0]->OnHull = true;
        e->EndPoint[1]->OnHull = true;
    });
    // A vertex that was added but ends on no edge lies inside the hull.
    // Only the loose vertices of this step can be such; each is taken once,
    // marked on the hull meanwhile so that its repeats are passed over.
    size_t inside = 0;
    for (tVertexStructure* v : LooseVertices) {
        if (!v->Processed || v->OnHull) continue;
        v->OnHull = true;
        LooseVertices[inside++] = v;
    }
    LooseVertices.resize(inside);
    // Which ring entry and successor result doesn't depend on the order of
    // deletion: each moves on to its first surviving successor.
    for (tVertexStructure* v : LooseVertices) {
        if (v == *vnext) *vnext = v->Next;
        DeleteVertex(v);
    }
    LooseVertices.clear();
    // Only ends of edges carry the marks of a step.
    vek::detail::ForEachInRing(Edges, [](tEdgeStructure* e) {
        for (tVertexStructure* end : e->EndPoint) {
            end->Duplicate = nullptr;
            end->OnHull = false;
        }
    });
}

void CHConvexHull3D::EdgeOrderOnFaces()
{
    // Edge i of each face comes to join corners i and i + 1.
    vek::detail::ForEachInRing(Faces, [](tFaceStructure* f) {
        for (int i = 0; i < 3; ++i) {
            const tVertexStructure* a = f->Vertex[i];
            const tVertexStructure* b = f->Vertex[(i + 1) % 3];
            if (Joins(f->Edge[i], a, b)) continue;
            for (int j = 0; j < 3; ++j) {
                if (!Joins(f->Edge[j], a, b)) continue;
                tEdgeStructure* misplaced = f->Edge[i];
                f->Edge[i] = f->Edge[j];
                f->Edge[j] = misplaced;
            }
        }
    });
}
