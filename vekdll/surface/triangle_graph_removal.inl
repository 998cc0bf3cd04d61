// The removal family and the passes over the working list. Triangles are
// marked (Ignore) during a walk and freed by a later pass, so that no walk
// ever reads a freed record. Every list walk reads the next position before
// it removes the current node.

#include "vekdll/surface/triangle_graph.h"

#include <algorithm>

namespace vek::detail {

template <class T>
int NullNeighbourCount(const T* triangle)
{
    return (triangle->Neighbour[0] == nullptr) + (triangle->Neighbour[1] == nullptr) +
           (triangle->Neighbour[2] == nullptr);
}

} // namespace vek::detail

namespace vek {

// Where float decisions contradicted each other (duplicates among the first
// points, collinear starts), a triangle can name a marked neighbour that does
// not name it back, so unlinking the marked one leaves that link behind, to
// be read after the free. On a sound graph every link is mutual and this
// changes nothing.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::DropOneWayLinksToMarked(TriangleListType& list)
{
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        T* triangle = list.GetNext(pos);
        if (triangle == nullptr || triangle->Ignore) continue;
        for (T*& slot : triangle->Neighbour) {
            if (slot == nullptr || !slot->Ignore || std::ranges::count(slot->Neighbour, triangle) != 0) continue;
            slot = nullptr;
            NoteSideMayBeOpen(triangle);
        }
    }
}

// All marked triangles are unlinked before the first is freed: a marked
// triangle that was split may still name a marked neighbour that no longer
// names it (the neighbour was pointed at the split's pieces), and unlinking
// must not read that neighbour after it has been freed.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::KillIgnoredIn(TriangleListType& list, bool unlinkNeighbours, std::vector<T*>* holdBack)
{
    if (unlinkNeighbours) {
        bool anyMarked = false;
        for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
            T* triangle = list.GetNext(pos);
            if (triangle == nullptr || !triangle->Ignore) continue;
            UnlinkFromNeighbours(triangle);
            anyMarked = true;
        }
        if (anyMarked) DropOneWayLinksToMarked(list);
    }
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        T* triangle = list.GetNext(pos);
        if (triangle == nullptr || !triangle->Ignore) continue;
        if (holdBack != nullptr)
            holdBack->push_back(triangle);
        else
            DeleteTriangle(triangle);
        list.RemoveAt(current);
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::KillIgnoredTrianglesFromTriangleList(bool unlinkNeighbours)
{
    KillIgnoredIn(TriangleList, unlinkNeighbours);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::KillIgnoredTrianglesFromTriangleList(TriangleListType* list)
{
    if (list != nullptr) KillIgnoredIn(*list, true);
}

// Frees the marked triangles of the working list, and hands their surviving
// neighbours (those neither marked nor visited yet) to `list`, in side
// order, so that a breadth-first pass can go on from the new border.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::KillIgnoredTrianglesAndCheckNeighbours(TriangleListType* list, bool unlinkNeighbours)
{
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr || !triangle->Ignore) continue;
        for (int side = 0; side < 3; ++side) {
            T* neighbour = triangle->Neighbour[side];
            if (neighbour == nullptr || neighbour->Ignore || neighbour->Visited) continue;
            if constexpr (HasNormalPointer<T>) {
                if (side == 2) Self().ComputeNormalVectorOfTriangle(neighbour);
            }
            if (list != nullptr) list->AddTail(neighbour);
            neighbour->Visited = true;
        }
        if (unlinkNeighbours) UnlinkFromNeighbours(triangle);
        DeleteTriangle(triangle);
        TriangleList.RemoveAt(current);
    }
}

// A marked triangle whose three neighbours all exist and none is marked is
// taken back; every other marked one is freed.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckAndKillIgnoredTrianglesFromTriangleList()
{
    const bool wasFinalized = Self().LeaveFinalizedState();
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr || !triangle->Ignore) continue;
        bool enclosed = true;
        for (const T* neighbour : triangle->Neighbour) {
            if (neighbour == nullptr || neighbour->Ignore) enclosed = false;
        }
        if (enclosed) {
            triangle->Ignore = false;
            continue;
        }
        UnlinkFromNeighbours(triangle);
        DeleteTriangle(triangle);
        TriangleList.RemoveAt(current);
    }
    Self().ReturnToFinalizedState(wasFinalized);
}

template <class D, class T, class E>
bool TriangleGraph<D, T, E>::PeelOpenTrianglesOnce(TriangleListType& list, TriangleListType& collected,
                                                   bool unlinkNeighbours)
{
    const INT_PTR before = list.GetCount();
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        T* triangle = list.GetNext(pos);
        if (triangle == nullptr || FindNullNeighbour(triangle) == eSideNone) continue;
        triangle->Ignore = true;
        list.RemoveAt(current);
    }
    RemoveIgnoredTrianglesFromList(&list);
    // Nothing that is about to be freed may stay behind in `collected`.
    RemoveIgnoredTrianglesFromList(&collected);
    KillIgnoredTrianglesAndCheckNeighbours(&collected, unlinkNeighbours);
    return list.GetCount() != before;
}

// Peels `list` from its open border inwards: a triangle with a null
// neighbour is marked and freed, which opens its neighbours in turn, until
// a pass takes nothing more. What is left is the part of `list` that is
// closed off by triangles. The neighbours met on the way are collected only
// for the time of the call, and lose their Visited mark again.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckAndKillIgnoredTrianglesFromTriangleList(TriangleListType* list)
{
    if (list == nullptr) return;
    Self().LeaveFinalizedState();
    TriangleListType collected;
    while (PeelOpenTrianglesOnce(*list, collected, true)) {
    }
    for (POSITION pos = collected.GetHeadPosition(); pos != nullptr;) collected.GetNext(pos)->Visited = false;
}

// As the form above, but the neighbours met on the way go to `collected`,
// and the triangles that stay in `list` are made ready for the next pass
// (Visited and Processed cleared).
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckAndKillIgnoredTrianglesFromTriangleList(TriangleListType* list,
                                                                         TriangleListType* collected,
                                                                         bool unlinkNeighbours)
{
    if (list == nullptr || collected == nullptr) return;
    Self().LeaveFinalizedState();
    while (PeelOpenTrianglesOnce(*list, *collected, unlinkNeighbours)) {
    }
    for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = list->GetNext(pos)) {
            triangle->Visited = false;
            triangle->Processed = false;
        }
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RemoveIgnoredTrianglesFromList(TriangleListType* list)
{
    if (list == nullptr) return;
    for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        const T* triangle = list->GetNext(pos);
        if (triangle != nullptr && triangle->Ignore) list->RemoveAt(current);
    }
}

// Hands the marked triangles of the present list to `list`, unmarked.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CopyIgnoredTrianglesToList(TriangleListType* list)
{
    if (list == nullptr) return;
    list->RemoveAll();
    TriangleListType& present = Self().PresentList();
    for (POSITION pos = present.GetHeadPosition(); pos != nullptr;) {
        T* triangle = present.GetNext(pos);
        if (triangle == nullptr || !triangle->Ignore) continue;
        list->AddTail(triangle);
        triangle->Ignore = false;
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ResetIgnoreStateOfTriangles()
{
    if (TriangleList.GetCount() < 1) return;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = TriangleList.GetNext(pos)) triangle->Ignore = false;
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ResetFlipState()
{
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = TriangleList.GetNext(pos)) triangle->FlipState = false;
    }
}

// Takes away triangles that hang in the air, with no neighbour at all.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteTrianglesWithoutNeighbours()
{
    Self().LeaveFinalizedState();
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        if (triangle != nullptr && detail::NullNeighbourCount(triangle) == 3) triangle->Ignore = true;
    }
    KillIgnoredTrianglesFromTriangleList(true);
}

// Peels the surface from its border, layer by layer, until a pass finds no
// triangle with a null neighbour: only closed parts survive.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteAllTrianglesWithNULLNeighbour()
{
    const bool wasFinalized = Self().LeaveFinalizedState();
    bool removed = true;
    while (removed) {
        removed = false;
        for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
            const POSITION current = pos;
            T* triangle = TriangleList.GetNext(pos);
            if (triangle == nullptr || FindNullNeighbour(triangle) == eSideNone) continue;
            UnlinkFromNeighbours(triangle);
            DeleteTriangle(triangle);
            TriangleList.RemoveAt(current);
            removed = true;
        }
    }
    Self().ReturnToFinalizedState(wasFinalized);
}

// Peels away, layer by layer, the triangles that stick out of the surface:
// those with two or three null neighbours.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteTrianglesWithTwoNULLNeighbours()
{
    const bool wasFinalized = Self().LeaveFinalizedState();
    bool marked = true;
    while (marked) {
        marked = false;
        for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
            T* triangle = TriangleList.GetNext(pos);
            if (triangle == nullptr || detail::NullNeighbourCount(triangle) < 2) continue;
            triangle->Ignore = true;
            marked = true;
        }
        KillIgnoredTrianglesFromTriangleList(true);
    }
    Self().ReturnToFinalizedState(wasFinalized);
}

// Repairs a pinched pair: a triangle that has the same neighbour X in two
// slots folds onto X. Its remaining neighbour and X's first other neighbour
// are linked past the pair, and both of the pair are marked for removal.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckDoubleNeighbours()
{
    constexpr int kSlotPairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        for (const auto& pair : kSlotPairs) {
            T* twin = triangle->Neighbour[pair[0]];
            if (twin == nullptr || twin != triangle->Neighbour[pair[1]]) continue;
            T* beyondTwin = nullptr;
            for (T* candidate : twin->Neighbour) {
                if (candidate != nullptr && candidate != triangle) {
                    beyondTwin = candidate;
                    break;
                }
            }
            T* remaining = triangle->Neighbour[3 - pair[0] - pair[1]];
            FindNeighbours(remaining, beyondTwin);
            triangle->Ignore = true;
            twin->Ignore = true;
        }
    }
}

} // namespace vek
