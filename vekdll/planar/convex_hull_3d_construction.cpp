// Incremental construction of the spatial hull: a double-sided triangle to
// start, then one vertex at a time, each replacing the faces it sees by a
// cone of new faces from the horizon to itself.

#include "vekdll/planar/convex_hull_3d.h"

#include "vekdll/planar/hull_rings.h"
#include "vekdll/platform/user_hooks.h"

namespace {

bool IsVisible(const tFaceStructure* f)
{
    return f != nullptr && f->Visible;
}

} // namespace

void CHConvexHull3D::DoubleTriangle()
{
    // Three successive vertices that span a plane. On a ring whose points
    // all lie on one line (or that has fewer than three) no such triple
    // exists and the search would go round for ever; it ends the process
    // instead, through the same replaceable hook as coplanar input below.
    if (Vertices == nullptr) vek::ExitProgram(0);
    tVertexStructure* v0 = Vertices;
    while (Collinear(v0, v0->Next, v0->Next->Next)) {
        v0 = v0->Next;
        if (v0 == Vertices) vek::ExitProgram(0);
    }
    tVertexStructure* v1 = v0->Next;
    tVertexStructure* v2 = v1->Next;
    v0->Processed = true;
    v1->Processed = true;
    v2->Processed = true;

    // Two faces back to back on the same three edges.
    tFaceStructure* f0 = MakeFace(v0, v1, v2, nullptr);
    tFaceStructure* f1 = MakeFace(v2, v1, v0, f0);
    for (tEdgeStructure* e : f0->Edge) e->AdjacentFace[1] = f1;
    for (tEdgeStructure* e : f1->Edge) e->AdjacentFace[1] = f0;

    // A fourth vertex off their plane; with none, the points have no
    // spatial hull, and the process ends without a word.
    tVertexStructure* v3 = v2->Next;
    while (VolumeSign(f0, v3) == 0) {
        v3 = v3->Next;
        if (v3 == v0) vek::ExitProgram(0);
    }
    // It is the first to be added.
    Vertices = v3;
}

void CHConvexHull3D::ConstructHull()
{
    tVertexStructure* v = Vertices;
    do {
        // The clean-up may delete the successor and move it on.
        tVertexStructure* next = v->Next;
        if (!v->Processed) {
            v->Processed = true;
            AddOne(v);
            CleanUp(&next);
            if (Check) Checks();
        }
        v = next;
        // Only orientation tests thrown off by overflowing coordinates can
        // empty the ring; the walk then has nothing left to visit.
    } while (Vertices != nullptr && v != Vertices);
}

bool CHConvexHull3D::AddOne(tVertexStructure* p)
{
    bool anyVisible = false;
    vek::detail::ForEachInRing(Faces, [this, p, &anyVisible](tFaceStructure* f) {
        if (VolumeSign(f, p) < 0) {
            f->Visible = true;
            anyVisible = true;
        }
    });
    if (!anyVisible) {
        // Inside the hull: the clean-up removes it.
        p->OnHull = false;
        LooseVertices.push_back(p);
        return false;
    }
    // Edges between two visible faces go; each edge of the horizon carries a
    // cone face to p. The cone's own new edges come last in the ring and are
    // met by this walk too, but by then both their faces exist and neither
    // is visible.
    vek::detail::ForEachInRing(Edges, [this, p](tEdgeStructure* e) {
        const bool visible0 = IsVisible(e->AdjacentFace[0]);
        const bool visible1 = IsVisible(e->AdjacentFace[1]);
        if (visible0 && visible1) {
            e->Delete = true;
        } else if (visible0 || visible1) {
            e->NewFace = MakeConeFace(e, p);
        }
    });
    return true;
}

tFaceStructure* CHConvexHull3D::MakeFace(tVertexStructure* p, tVertexStructure* q, tVertexStructure* r,
                                         tFaceStructure* fold)
{
    // The back face of a double triangle reuses the front face's edges, in
    // reverse order.
    tVertexStructure* const corners[3] = {p, q, r};
    tEdgeStructure* const edges[3] = {fold != nullptr ? fold->Edge[2] : MakeNullEdge(),
                                      fold != nullptr ? fold->Edge[1] : MakeNullEdge(),
                                      fold != nullptr ? fold->Edge[0] : MakeNullEdge()};
    tFaceStructure* f = MakeNullFace();
    for (int i = 0; i < 3; ++i) {
        edges[i]->EndPoint[0] = corners[i];
        edges[i]->EndPoint[1] = corners[(i + 1) % 3];
        f->Edge[i] = edges[i];
        f->Vertex[i] = corners[i];
        edges[i]->AdjacentFace[0] = f;
    }
    return f;
}

tFaceStructure* CHConvexHull3D::MakeConeFace(tEdgeStructure* e, tVertexStructure* p)
{
    // The edge from each end of e to p is shared by two cone faces: the
    // first of them makes it, the second finds it through Duplicate.
    tEdgeStructure* sides[2];
    for (int i = 0; i < 2; ++i) {
        tVertexStructure* end = e->EndPoint[i];
        sides[i] = end->Duplicate;
        if (sides[i] == nullptr) {
            sides[i] = MakeNullEdge();
            sides[i]->EndPoint[0] = end;
            sides[i]->EndPoint[1] = p;
            end->Duplicate = sides[i];
        }
    }
    tFaceStructure* f = MakeNullFace();
    f->Edge[0] = e;
    f->Edge[1] = sides[0];
    f->Edge[2] = sides[1];
    MakeCcw(f, e, p);
    for (tEdgeStructure* side : sides) {
        if (side->AdjacentFace[0] == nullptr) {
            side->AdjacentFace[0] = f;
        } else if (side->AdjacentFace[1] == nullptr) {
            side->AdjacentFace[1] = f;
        }
    }
    return f;
}

void CHConvexHull3D::MakeCcw(tFaceStructure* f, tEdgeStructure* e, tVertexStructure* p)
{
    // The new face takes the orientation of the visible face it replaces.
    const tFaceStructure* fv = IsVisible(e->AdjacentFace[0]) ? e->AdjacentFace[0] : e->AdjacentFace[1];
    int i = 0;
    while (i < 3 && fv->Vertex[i] != e->EndPoint[0]) ++i;
    if (i < 3 && fv->Vertex[(i + 1) % 3] == e->EndPoint[1]) {
        f->Vertex[0] = e->EndPoint[0];
        f->Vertex[1] = e->EndPoint[1];
        // Edge 1 was made at EndPoint[0] and edge 2 at EndPoint[1]; running
        // forwards, the side at EndPoint[1] follows e.
        tEdgeStructure* side = f->Edge[1];
        f->Edge[1] = f->Edge[2];
        f->Edge[2] = side;
    } else {
        f->Vertex[0] = e->EndPoint[1];
        f->Vertex[1] = e->EndPoint[0];
    }
    f->Vertex[2] = p;
}
