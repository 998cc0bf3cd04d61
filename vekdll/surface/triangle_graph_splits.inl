// Splitting a triangle at a new vertex: into three around an inner point,
// or into two at a point on one of its sides.

#include "vekdll/surface/triangle_graph.h"

namespace vek {

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RefreshCircle(T* triangle)
{
    if constexpr (HasCircumCircle<T>) Self().CalcCircumCircle(triangle);
}

// T = (a, b, c) becomes t1 = (a, b, v), t2 = (b, c, v), t3 = (c, a, v); each
// keeps T's neighbour across its outer side (side 0), and T's outer
// neighbours are pointed at the new owners. T itself is neither changed nor
// freed: the caller decides what becomes of it.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::SplitTriangleIntoThree(int vertex, T* triangle, T* t1, T* t2, T* t3)
{
    if (triangle == nullptr || t1 == nullptr || t2 == nullptr || t3 == nullptr) return;
    const int a = triangle->Vertex[0];
    const int b = triangle->Vertex[1];
    const int c = triangle->Vertex[2];
    T* const parts[3] = {t1, t2, t3};
    const int outer[3][2] = {{a, b}, {b, c}, {c, a}};
    for (int i = 0; i < 3; ++i) {
        T* part = parts[i];
        CopyTriangle(triangle, part);
        part->Vertex[0] = outer[i][0];
        part->Vertex[1] = outer[i][1];
        part->Vertex[2] = vertex;
        part->Neighbour[0] = triangle->Neighbour[i];
        part->Neighbour[1] = parts[(i + 1) % 3];
        part->Neighbour[2] = parts[(i + 2) % 3];
        RefreshCircle(part);
    }
    for (int i = 0; i < 3; ++i) ReplaceMeInNeighbours(triangle, i, parts[i]);
}

namespace detail {

// How a triangle splits at a vertex on one of its sides: which corner of
// each half the vertex replaces, the slots by which the halves face each
// other, and T's sides whose neighbours pass to t1 and to t2.
struct SplitOnSide {
    int cornerOfT1;
    int cornerOfT2;
    int innerSlotOfT1;
    int innerSlotOfT2;
    int sideToT1;
    int sideToT2;
};

// Side 0: t1 = (a, v, c), t2 = (v, b, c); side 1: t1 = (a, b, v),
// t2 = (a, v, c); side 2: t1 = (a, b, v), t2 = (v, b, c).
inline constexpr SplitOnSide kSplitOnSide[3] = {
    {1, 0, 1, 2, 2, 1},
    {2, 1, 2, 0, 0, 2},
    {2, 0, 1, 0, 0, 1},
};

} // namespace detail

// Splits T at a vertex on side `side` into two halves that meet along the
// line from the vertex to the opposite corner. Both start as copies of T, so
// both still name T's neighbour across `side`; the caller links them to the
// two halves of that neighbour. A side out of range only recalculates the
// circles.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::SplitTriangleIntoTwo(int vertex, int side, T* triangle, T* t1, T* t2)
{
    if (triangle == nullptr || t1 == nullptr || t2 == nullptr) return;
    CopyTriangle(triangle, t1);
    CopyTriangle(triangle, t2);
    if (side >= 0 && side <= 2) {
        const detail::SplitOnSide& split = detail::kSplitOnSide[side];
        t1->Vertex[split.cornerOfT1] = vertex;
        t2->Vertex[split.cornerOfT2] = vertex;
        t1->Neighbour[split.innerSlotOfT1] = t2;
        t2->Neighbour[split.innerSlotOfT2] = t1;
        ReplaceMeInNeighbours(triangle, split.sideToT2, t2);
        ReplaceMeInNeighbours(triangle, split.sideToT1, t1);
    }
    RefreshCircle(t1);
    RefreshCircle(t2);
}

// Splits T around `vertex` into three triangles that go to `list`, and marks
// T for removal.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::BildNewTriangulesWithCenter(T* triangle, int vertex, TriangleListType* list)
{
    if (triangle == nullptr || list == nullptr) return;
    T* t1 = InitNewTriangle();
    T* t2 = InitNewTriangle();
    T* t3 = InitNewTriangle();
    SplitTriangleIntoThree(vertex, triangle, t1, t2, t3);
    triangle->Ignore = true;
    list->AddTail(t1);
    list->AddTail(t2);
    list->AddTail(t3);
}

// As BildNewTriangulesWithCenter, except that a triangle already marked for
// removal is not split again.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::BuildNewTriangles(int vertex, T* triangle, TriangleListType* list)
{
    if (triangle == nullptr) return;
    if (triangle->Ignore) return;
    BildNewTriangulesWithCenter(triangle, vertex, list);
}

} // namespace vek
