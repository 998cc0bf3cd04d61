// Orientation of triangles, and the edge flip that both the Delaunay sweep
// and the angle flip for surfaces are built on.

#include <cmath>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/side_test.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek {

// 1 only if twice the signed area, taken from each of the three corners,
// exceeds the on-edge tolerance; a clockwise, degenerate or thin triangle
// gives -1.
template <class D, class T, class E>
int TriangleGraph<D, T, E>::GetOrientation(const T* triangle) const
{
    const SSEPoint& a = Vertices[triangle->Vertex[0]];
    const SSEPoint& b = Vertices[triangle->Vertex[1]];
    const SSEPoint& c = Vertices[triangle->Vertex[2]];
    const float fromA = SideTest(a, b, c);
    const float fromB = SideTest(b, c, a);
    const float fromC = SideTest(c, a, b);
    const float limit = detail::kOnEdgeTolerance;
    return fromA > limit && fromB > limit && fromC > limit ? 1 : -1;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FlipTriangleOrientation(T* triangle)
{
    std::swap(triangle->Vertex[0], triangle->Vertex[1]);
}

// Swapping the first two corners exchanges sides 1 and 2, so their slots
// are swapped with them and each still faces its neighbour.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::FlipTriangleOrientationWithNeigbour(T* triangle)
{
    std::swap(triangle->Vertex[0], triangle->Vertex[1]);
    std::swap(triangle->Neighbour[1], triangle->Neighbour[2]);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FlipAllTrianglesOrientation()
{
    const bool wasFinalized = Self().LeaveFinalizedState();
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = TriangleList.GetNext(pos)) FlipTriangleOrientationWithNeigbour(triangle);
    }
    Self().ReturnToFinalizedState(wasFinalized);
}

// With T = (.., u, w, ..) on `side` and x opposite, and N holding w-u on
// `sideOfN` with d opposite, T becomes (d, x, u) and N (x, d, w), each turned
// so that the new diagonal stands in the slot that the two records already
// use for each other. Both keep their winding.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::FlipSharedEdge(T* t, int side, T* n, int sideOfN)
{
    const int u = t->Vertex[side];
    const int w = t->Vertex[(side + 1) % 3];
    const int x = t->Vertex[(side + 2) % 3];
    const int d = n->Vertex[(sideOfN + 2) % 3];

    T* const tAcrossXU = t->Neighbour[(side + 2) % 3];
    T* const tAcrossWX = t->Neighbour[(side + 1) % 3];
    // N's outer sides are found by their vertices, so that the flip does not
    // depend on which way round N holds the shared side.
    const int nSideUD = (sideOfN + 1) % 3;
    const int nSideDW = (sideOfN + 2) % 3;
    const bool nHoldsWU = n->Vertex[sideOfN] == w;
    T* const nAcrossUD = n->Neighbour[nHoldsWU ? nSideUD : nSideDW];
    T* const nAcrossDW = n->Neighbour[nHoldsWU ? nSideDW : nSideUD];

    t->Vertex[side] = d;
    t->Vertex[(side + 1) % 3] = x;
    t->Vertex[(side + 2) % 3] = u;
    t->Neighbour[side] = n;
    t->Neighbour[(side + 1) % 3] = tAcrossXU;
    t->Neighbour[(side + 2) % 3] = nAcrossUD;

    n->Vertex[sideOfN] = x;
    n->Vertex[(sideOfN + 1) % 3] = d;
    n->Vertex[(sideOfN + 2) % 3] = w;
    n->Neighbour[sideOfN] = t;
    n->Neighbour[(sideOfN + 1) % 3] = nAcrossDW;
    n->Neighbour[(sideOfN + 2) % 3] = tAcrossWX;

    // The neighbour across w-x now faces N and the one across u-d faces T;
    // the other two are written again with what they held.
    ReplaceNeighbourInNeighbour(t, (side + 1) % 3, t);
    ReplaceNeighbourInNeighbour(t, (side + 2) % 3, t);
    ReplaceNeighbourInNeighbour(n, (sideOfN + 1) % 3, n);
    ReplaceNeighbourInNeighbour(n, (sideOfN + 2) % 3, n);
    // An open side of the quadrilateral may have passed from one record to
    // the other.
    NoteSideMayBeOpen(t);
    NoteSideMayBeOpen(n);
}

template <class D, class T, class E>
float TriangleGraph<D, T, E>::InnerAngleCosine(const SSEPoint& at, const SSEPoint& p, const SSEPoint& q)
{
    const __m128 toP = CSSEFns::normalizevector(_mm_sub_ps(p.sse, at.sse));
    const __m128 toQ = CSSEFns::normalizevector(_mm_sub_ps(q.sse, at.sse));
    return CSSEFns::scalarproduct(toP, toQ);
}

template <class D, class T, class E>
float TriangleGraph<D, T, E>::InnerAngle(const SSEPoint& at, const SSEPoint& p, const SSEPoint& q)
{
    return std::acos(InnerAngleCosine(at, p, q));
}

// The angle flip for a surface: the shared side is flipped when the corner
// of the neighbour opposite it sees it under more than a right angle, in 3D.
// One step, no recursion, and the circles are left as they are.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::LegalizeEdges(T* triangle, int side)
{
    if (triangle == nullptr || side < 0 || side > 2) return;
    T* neighbour = triangle->Neighbour[side];
    if (neighbour == nullptr || neighbour->FlipState) return;
    const ESharedSide sideOfN = FindCommonSide(side, triangle, neighbour);
    if (sideOfN == eSideNone) return;
    const int d = OppositeCorner(neighbour, sideOfN);
    const float angle = InnerAngle(Vertices[d], Vertices[neighbour->Vertex[sideOfN]],
                                   Vertices[neighbour->Vertex[(sideOfN + 1) % 3]]);
    if (!(angle > 1.5707964f)) return;
    if (CheckCommonEdge(triangle, OppositeCorner(triangle, side), d)) return;
    FlipSharedEdge(triangle, side, neighbour, sideOfN);
    if constexpr (D::kAngleFlipSetsFlipState) {
        triangle->FlipState = true;
        neighbour->FlipState = true;
    }
}

// Flips the side opposite the greatest inner angle of each triangle when
// that angle is obtuse; the first of equal angles wins. Such a flip happens
// only if the neighbour is obtuse at the same edge too, so long thin
// triangles across steep parts of a surface go away.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckEdgeFlip(TriangleListType* list)
{
    if (list == nullptr) return;
    for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
        T* triangle = list->GetNext(pos);
        if (triangle == nullptr || triangle->FlipState) continue;
        const SSEPoint& a = Vertices[triangle->Vertex[0]];
        const SSEPoint& b = Vertices[triangle->Vertex[1]];
        const SSEPoint& c = Vertices[triangle->Vertex[2]];
        // The side opposite corner i is side (i + 1) % 3.
        const float angles[3] = {InnerAngle(a, b, c), InnerAngle(b, c, a), InnerAngle(c, a, b)};
        int widest = 0;
        for (int corner = 1; corner < 3; ++corner) {
            if (angles[corner] > angles[widest]) widest = corner;
        }
        if (angles[widest] > 1.5707964f) LegalizeEdges(triangle, (widest + 1) % 3);
    }
}

} // namespace vek
