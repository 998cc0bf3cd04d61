// Ear clipping proper: the ear flags, the diagonal test and the clipping loop.

#include "vekdll/planar/polygon_triangulator.h"

bool CHPolygonTriangulator::Diagonalie(t_hvertex* a, t_hvertex* b) const
{
    // Edges at a or b can only touch the segment in its ends, so they are
    // left out; any other edge that meets it disqualifies it.
    t_hvertex* c = Head;
    do {
        t_hvertex* c1 = c->Next;
        if (c != a && c1 != a && c != b && c1 != b &&
            Intersect(&a->Point, &b->Point, &c->Point, &c1->Point, Predicates)) {
            return false;
        }
        c = c1;
    } while (c != Head);
    return true;
}

bool CHPolygonTriangulator::Diagonal(t_hvertex* a, t_hvertex* b) const
{
    // The cheap cone tests first: most candidates fail there.
    return InCone(a, b, Predicates) && InCone(b, a, Predicates) && Diagonalie(a, b);
}

void CHPolygonTriangulator::EarInit()
{
    // The last vertex is left out of this first pass and starts as no ear; it
    // can become one only when a neighbour is clipped. Which ears a run
    // finds, and so its triangles, depend on that.
    for (int i = 0; i + 1 < NumVertices; ++i) {
        t_hvertex* v = &VertexArray[i];
        v->IsEar = Diagonal(v->Prev, v->Next);
    }
}

t_hvertex* CHPolygonTriangulator::FindEar() const
{
    // Starting one behind the last clip walks the ears along the ring, which
    // gives more even triangles than the fan that clipping at one place makes.
    t_hvertex* v = StartBehindHead ? Head->Next : Head;
    for (int looked = 0; looked < NumVertices; ++looked) {
        if (v->IsEar) return v;
        v = v->Next;
    }
    return nullptr;
}

t_hvertex* CHPolygonTriangulator::LastTriangleTip() const
{
    // No corner of three passes the cone test, since its neighbours are
    // adjacent; the three are the last triangle if they turn left, and the
    // tip is the vertex where the search for an ear would begin.
    t_hvertex* start = StartBehindHead ? Head->Next : Head;
    return Left(&start->Prev->Point, &start->Point, &start->Next->Point, Predicates) ? start : nullptr;
}

void CHPolygonTriangulator::ClipEar(t_hvertex* tip)
{
    t_hvertex* after = tip->Next;
    t_hvertex* afterNext = after->Next;
    t_hvertex* before = tip->Prev;
    t_hvertex* beforePrev = before->Prev;

    t_hdiagonal& diagonal = DiagonalArray[NumDiagonals++];
    diagonal.Exists = true;
    diagonal.From = before->Index;
    diagonal.FromConvex = LeftOn(&before->Point, &tip->Point, &beforePrev->Point, Predicates);
    diagonal.To = after->Index;
    diagonal.ToConvex = LeftOn(&after->Point, &afterNext->Point, &tip->Point, Predicates);

    // Only the two ends of the new diagonal change their corner; they are
    // judged while the tip is still in the ring.
    before->IsEar = Diagonal(beforePrev, after);
    after->IsEar = Diagonal(before, afterNext);

    ConnectivityArray[NumTriangles++] = t_htriangleconnectivity{before->Index, tip->Index, after->Index};

    before->Next = after;
    after->Prev = before;
    Head = after;
}

void CHPolygonTriangulator::Triangulate()
{
    for (int i = 0; i < NumVertices; ++i) DiagonalArray[i].Exists = false;
    EarInit();
    if (NumVertices < 3) return;
    // The loop runs down to a ring of three as well: the last triangle is
    // written only if its tip still carries an ear flag from before, since
    // a corner whose neighbours are adjacent never passes the cone test.
    // The exact mode writes it whenever the three turn left. Before that,
    // the search can't fail on a simple ring: a ring of four or more has two
    // ears that aren't neighbours, a clip changes the ear of its two
    // neighbours only, which are judged again at once, and so every flag is
    // right but perhaps the last vertex's, which the first pass leaves out.
    for (int ringSize = NumVertices; ringSize >= 3; --ringSize) {
        t_hvertex* tip = FindEar();
        if (tip == nullptr && ringSize == 3 && Predicates == vek::PlanarPredicates::Exact) tip = LastTriangleTip();
        if (tip == nullptr) return;  // a partial result; GetNumTriangles tells
        ClipEar(tip);
    }
}
