// Neighbour operations. Sides are compared as unordered pairs of vertex
// indices; coordinates are never looked at, so the graph survives
// triangles of either winding.

#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

// Vertex indices of side `side` of a triangle, start first.
template <class T>
int SideStart(const T* triangle, int side)
{
    return triangle->Vertex[side];
}
template <class T>
int SideEnd(const T* triangle, int side)
{
    return triangle->Vertex[(side + 1) % 3];
}

// True if side `side` of the triangle carries p and q, in either order.
template <class T>
bool SideCarries(const T* triangle, int side, int p, int q)
{
    const int s = SideStart(triangle, side);
    const int e = SideEnd(triangle, side);
    return (s == p && e == q) || (s == q && e == p);
}

} // namespace vek::detail

namespace vek {

template <class D, class T, class E>
bool TriangleGraph<D, T, E>::IsVertexInTriangle(const T* triangle, int vertex)
{
    return triangle->Vertex[0] == vertex || triangle->Vertex[1] == vertex || triangle->Vertex[2] == vertex;
}

// The first side of a whose two vertices are both corners of b.
template <class D, class T, class E>
ESharedSide TriangleGraph<D, T, E>::FindCommonSide(const T* a, const T* b)
{
    if (a == nullptr || b == nullptr) return eSideNone;
    for (int side = 0; side < 3; ++side) {
        if (IsVertexInTriangle(b, detail::SideStart(a, side)) && IsVertexInTriangle(b, detail::SideEnd(a, side)))
            return static_cast<ESharedSide>(side);
    }
    return eSideNone;
}

// The side of b that carries the two vertices of side `side` of a.
template <class D, class T, class E>
ESharedSide TriangleGraph<D, T, E>::FindCommonSide(int side, const T* a, const T* b)
{
    if (side < 0 || side > 2 || a == nullptr || b == nullptr) return eSideNone;
    const int p = detail::SideStart(a, side);
    const int q = detail::SideEnd(a, side);
    for (int sideOfB = 0; sideOfB < 3; ++sideOfB) {
        if (detail::SideCarries(b, sideOfB, p, q)) return static_cast<ESharedSide>(sideOfB);
    }
    return eSideNone;
}

// A side number other than 1 or 2 counts as side 0.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::EdgesEqual(int sideA, const T* a, int sideB, const T* b)
{
    if (a == nullptr || b == nullptr) return false;
    if (sideA != 1 && sideA != 2) sideA = 0;
    if (sideB != 1 && sideB != 2) sideB = 0;
    return detail::SideCarries(b, sideB, detail::SideStart(a, sideA), detail::SideEnd(a, sideA));
}

// Links a and b across the first pair of sides that carry the same two
// vertices, trying a's sides 0, 1, 2 against b's sides 0, 1, 2.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindNeighbours(T* a, T* b)
{
    if (a == nullptr || b == nullptr) return;
    for (int sideA = 0; sideA < 3; ++sideA) {
        for (int sideB = 0; sideB < 3; ++sideB) {
            if (!EdgesEqual(sideA, a, sideB, b)) continue;
            a->Neighbour[sideA] = b;
            b->Neighbour[sideB] = a;
            return;
        }
    }
}

template <class D, class T, class E>
ESharedSide TriangleGraph<D, T, E>::FindNullNeighbour(const T* triangle)
{
    for (int side = 0; side < 3; ++side) {
        if (triangle->Neighbour[side] == nullptr) return static_cast<ESharedSide>(side);
    }
    return eSideNone;
}

// In the neighbour across `side`, every slot that points at `triangle` now
// points at `other`.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::ReplaceMeInNeighbours(T* triangle, int side, T* other)
{
    if (side < 0 || side > 2) return;
    T* neighbour = triangle->Neighbour[side];
    if (neighbour == nullptr) return;
    for (T*& slot : neighbour->Neighbour) {
        if (slot == triangle) slot = other;
    }
}

// In the neighbour across `side`, the slot whose side carries the vertices
// of `side` now points at `other`.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::ReplaceNeighbourInNeighbour(T* triangle, int side, T* other)
{
    if (side < 0 || side > 2) return;
    T* neighbour = triangle->Neighbour[side];
    const ESharedSide facing = FindCommonSide(side, triangle, neighbour);
    if (facing == eSideNone) return;
    neighbour->Neighbour[facing] = other;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ResetVertexWithVertex(int oldVertex, int newVertex, T* triangle)
{
    for (int& corner : triangle->Vertex) {
        if (corner == oldVertex) {
            corner = newVertex;
            return;
        }
    }
}

// All three neighbours exist and each carries both vertices of its side.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::CheckNeighbours(const T* triangle)
{
    if (triangle == nullptr) return false;
    for (int side = 0; side < 3; ++side) {
        const T* neighbour = triangle->Neighbour[side];
        if (neighbour == nullptr) return false;
        if (!IsVertexInTriangle(neighbour, detail::SideStart(triangle, side)) ||
            !IsVertexInTriangle(neighbour, detail::SideEnd(triangle, side)))
            return false;
    }
    return true;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::UnlinkFromNeighbours(T* triangle)
{
    for (T* neighbour : triangle->Neighbour) {
        if (neighbour == nullptr) continue;
        for (T*& slot : neighbour->Neighbour) {
            if (slot == triangle) slot = nullptr;
        }
        NoteSideMayBeOpen(neighbour);
    }
}

} // namespace vek
