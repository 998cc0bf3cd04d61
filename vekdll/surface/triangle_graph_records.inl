// Life of triangle and edge records, and the lists that carry them.
// Compiled through the explicit instantiations of the triangulation classes.

#include <cstring>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/surface/triangle_graph.h"
#include "vekdll/surface/working_list_index.h"

namespace vek {

template <class D, class T, class E>
TriangleGraph<D, T, E>::~TriangleGraph()
{
    ClearTriangleList();
    for (EdgeListType* list : {&BorderEdgesFirst, &BorderEdgesSecond, &OrderedBorderFirst, &OrderedBorderSecond})
        ClearEdgeList(list);
}

// calloc gives the all-zero record the graph starts from: no corners, no
// neighbours, no flags.
template <class D, class T, class E>
T* TriangleGraph<D, T, E>::InitNewTriangle()
{
    return static_cast<T*>(SafeCalloc(1, sizeof(T)));
}

template <class D, class T, class E>
E* TriangleGraph<D, T, E>::InitNewEdge()
{
    return static_cast<E*>(SafeCalloc(1, sizeof(E)));
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteTriangle(T* triangle)
{
    SafeFree(triangle);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteEdge(E* edge)
{
    SafeFree(edge);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CopyTriangle(const T* source, T* destination)
{
    if (source == nullptr || destination == nullptr) return;
    *destination = *source;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ClearTriangleList()
{
    DeleteAllTriangles(TriangleList);
}

// Frees every triangle that `list` owns and empties it.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteAllTriangles(TriangleListType& list)
{
    if (list.GetCount() < 1) return;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) DeleteTriangle(list.GetNext(pos));
    list.RemoveAll();
}

namespace detail {

// Moves the pointers: each non-null entry goes to the tail of `to` and
// leaves `from`. Null entries stay where they are. Into an empty list, and
// with no null entry to leave behind, the two lists simply exchange their
// nodes, which costs no memory (a whole working list moves this way when a
// triangulation is finalized).
template <class Record>
void MoveRecords(CList<Record*>* from, CList<Record*>* to)
{
    if (from == nullptr || to == nullptr || from == to) return;
    if (to->IsEmpty() && from->Find(nullptr) == nullptr) {
        to->Swap(*from);
        return;
    }
    for (POSITION pos = from->GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        Record* record = from->GetNext(pos);
        if (record == nullptr) continue;
        to->AddTail(record);
        from->RemoveAt(current);
    }
}

} // namespace detail

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CopyTriangleListInList(TriangleListType* from, TriangleListType* to)
{
    detail::MoveRecords(from, to);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CopyEdgeListInList(EdgeListType* from, EdgeListType* to)
{
    detail::MoveRecords(from, to);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ClearEdgeList(EdgeListType* list)
{
    if (list == nullptr) return;
    for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) DeleteEdge(list->GetNext(pos));
    list->RemoveAll();
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::InitSortedListFromTriangles(TriangleListType* list)
{
    if (list == nullptr) return;
    for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = list->GetNext(pos)) triangle->SortIndex = -1;
    }
}

// Reverses n integers in place, through a copy.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::InvertVertexArray(int* array, int n)
{
    if (array == nullptr || n < 1) return;
    int* copy = static_cast<int*>(SafeMalloc(sizeof(int) * static_cast<std::uint64_t>(n)));
    std::memcpy(copy, array, sizeof(int) * static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) array[i] = copy[n - 1 - i];
    SafeFree(copy);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CollectOpenEdges(const TriangleListType& triangles, EdgeListType& edges,
                                              bool outsideNeighbourIsOpen)
{
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = triangles.GetNext(pos)) AppendOpenSidesOf(triangle, edges, outsideNeighbourIsOpen);
    }
}

template <class D, class T, class E>
int TriangleGraph<D, T, E>::AppendOpenSidesOf(T* triangle, EdgeListType& edges, bool outsideNeighbourIsOpen)
{
    int open = 0;
    for (int side = 0; side < 3; ++side) {
        const T* neighbour = triangle->Neighbour[side];
        bool isOpen = neighbour == nullptr;
        if constexpr (HasOutsideFlag<T>) isOpen = isOpen || (outsideNeighbourIsOpen && neighbour->Outside);
        if (!isOpen) continue;
        E* edge = InitNewEdge();
        edge->Vertex[0] = triangle->Vertex[side];
        edge->Vertex[1] = triangle->Vertex[(side + 1) % 3];
        edge->Side = static_cast<ESharedSide>(side);
        edge->Triangle = triangle;
        edges.AddTail(edge);
        ++open;
    }
    return open;
}

} // namespace vek
