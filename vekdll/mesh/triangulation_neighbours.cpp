// The working list and the search for neighbours across edges.

#include <smmintrin.h>

#include "vekdll/mesh/linked_nodes.h"
#include "vekdll/mesh/triangulation.h"

namespace {

// Whether `p` lies in the triangle with corners q0, q1, q2: each lane of p
// must equal that lane of some corner, and the lanes may be matched by
// different corners. Float equality, so 0 equals -0 and not-a-number matches
// nothing.
bool LiesIn(__m128 p, __m128 q0, __m128 q1, __m128 q2)
{
    const __m128 anyCorner = _mm_or_ps(_mm_or_ps(_mm_cmpeq_ps(p, q0), _mm_cmpeq_ps(p, q1)), _mm_cmpeq_ps(p, q2));
    return _mm_movemask_ps(anyCorner) == 0xF;
}

// The neighbour slot of `t` whose edge lies in `other`, tried in the order
// P0-P1, P1-P2, P2-P0; null if no edge does.
t_htriangle** SharedEdgeSlot(t_htriangle& t, const t_htriangle& other)
{
    const __m128 q0 = other.P0->sse;
    const __m128 q1 = other.P1->sse;
    const __m128 q2 = other.P2->sse;
    const bool in0 = LiesIn(t.P0->sse, q0, q1, q2);
    const bool in1 = LiesIn(t.P1->sse, q0, q1, q2);
    if (in0 && in1) return &t.Neighbour0;
    const bool in2 = LiesIn(t.P2->sse, q0, q1, q2);
    if (in1 && in2) return &t.Neighbour1;
    if (in0 && in2) return &t.Neighbour2;
    return nullptr;
}

bool HasAllNeighbours(const t_htriangle& t)
{
    return t.Neighbour0 != nullptr && t.Neighbour1 != nullptr && t.Neighbour2 != nullptr;
}

} // namespace

void CHTriangulation::IndexTriangleList()
{
    TriangleListHead = nullptr;
    for (int i = NumTriangles - 1; i >= 0; --i) vek::detail::PushFront(TriangleListHead, &Triangles[i]);
}

void CHTriangulation::DeleteTriangleFromList(t_htriangle* triangle)
{
    if (triangle == nullptr) return;
    vek::detail::Unlink(TriangleListHead, triangle);
}

// A quadratic scan over pairs of the working list. A triangle leaves the list
// as soon as all three of its neighbours are known, which keeps the scan
// bearable: in the end only the border triangles are still compared. Existing
// neighbour pointers are not cleared first, and a later match on the same edge
// overwrites an earlier one.
void CHTriangulation::CalcNeighbours()
{
    IndexTriangleList();
    t_htriangle* a = TriangleListHead;
    while (a != nullptr) {
        t_htriangle* b = a->Next;
        bool searchEnded = false;
        while (b != nullptr) {
            t_htriangle** slotOfA = SharedEdgeSlot(*a, *b);
            if (slotOfA == nullptr) {
                b = b->Next;
                continue;
            }
            *slotOfA = b;
            if (t_htriangle** slotOfB = SharedEdgeSlot(*b, *a)) *slotOfB = a;

            t_htriangle* const afterB = b->Next;
            if (HasAllNeighbours(*b)) DeleteTriangleFromList(b);
            b = afterB;

            if (HasAllNeighbours(*a)) {
                t_htriangle* const afterA = a->Next;
                DeleteTriangleFromList(a);
                a = afterA;
                if (a == nullptr) {
                    searchEnded = true;
                    break;
                }
                b = a->Next;
            }
        }
        if (searchEnded) break;
        a = a->Next;
    }
    FindBorderTriangles();
}

void CHTriangulation::CalcNeighboursConstrained()
{
    CalcNeighbours();
}

void CHTriangulation::FindBorderTriangles()
{
    for (int i = 0; i < NumTriangles; ++i) {
        t_htriangle& t = Triangles[i];
        if (!HasAllNeighbours(t)) t.Flag = vek::kTriangleFlagBorder;
    }
}
