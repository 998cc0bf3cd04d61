// Where a surface ends: its open edges, chained into border loops, turned
// into polygons, into the triangles behind a loop, and into the matching
// sections that a seam is built from.

#include <algorithm>
#include <vector>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/surface/border_chaining.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

inline bool SameIndex(int a, int b) { return a == b; }

} // namespace vek::detail

namespace vek {

template <class D, class T, class E>
auto TriangleGraph<D, T, E>::ChainerByIndex(EdgeListType& from)
{
    return detail::EdgeChainer(from, detail::SameIndex, detail::IndexKey, GetSearchMode() == SearchMode::Indexed);
}

template <class D, class T, class E>
auto TriangleGraph<D, T, E>::ChainerByPlace(EdgeListType& from)
{
    const auto same = [this](int a, int b) { return Self().CompareVertexXY(a, b) == 1; };
    const auto keyOf = [this](int v) { return detail::PlaceKey(Vertices[v].x, Vertices[v].y); };
    return detail::EdgeChainer(from, same, keyOf, GetSearchMode() == SearchMode::Indexed);
}

// A triangle with one or two open sides lies on the border; with none it is
// inside, and with three it stands alone, and neither keeps the flag.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindOutsideEdgesOfBorderTriang()
{
    ClearEdgeList(&BorderEdgesFirst);
    ClearEdgeList(&BorderEdgesSecond);
    TriangleListType& present = Self().PresentList();
    for (POSITION pos = present.GetHeadPosition(); pos != nullptr;) {
        T* triangle = present.GetNext(pos);
        if (triangle == nullptr) continue;
        EdgeListType& half = triangle->Vertex[0] >= OtherVertexStart ? BorderEdgesSecond : BorderEdgesFirst;
        const int open = AppendOpenSidesOf(triangle, half, true);
        if constexpr (requires { triangle->Border; }) {
            if (open == 0 || open == 3) triangle->Border = false;
        }
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindOutsideEdgesOfBorderTriang(TriangleListType* triangles, EdgeListType* edges)
{
    if (triangles == nullptr || edges == nullptr) return;
    CollectOpenEdges(*triangles, *edges, true);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindOutsideEdgesOfBorderTriang(D& other)
{
    ClearEdgeList(&BorderEdgesFirst);
    ClearEdgeList(&BorderEdgesSecond);
    CollectOpenEdges(Self().PresentList(), BorderEdgesFirst, true);
    CollectOpenEdges(other.PresentList(), BorderEdgesSecond, true);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindAllBorderEdgeLists(CList<EdgeListType*>* lists)
{
    if (lists == nullptr) return;
    Self().LeaveFinalizedState();
    EdgeListType open;
    CollectOpenEdges(TriangleList, open, true);
    auto chainer = ChainerByIndex(open);
    while (!open.IsEmpty()) {
        auto* chain = new EdgeListType(10);
        chainer.Grow(*chain);
        lists->AddTail(chain);
    }
}

// The first chain runs along the first half's border by vertex index. The
// second half has vertices of its own, so its chain is matched by position:
// it starts on the edge that lies on the first chain's first edge, turned
// to run the same way, and goes on while the two borders coincide in x-y.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::GetBorderOfCombinedTriangulationApdated()
{
    FindOutsideEdgesOfBorderTriang();
    ClearEdgeList(&OrderedBorderFirst);
    ClearEdgeList(&OrderedBorderSecond);
    ChainerByIndex(BorderEdgesFirst).Grow(OrderedBorderFirst);
    if (OrderedBorderFirst.IsEmpty()) return;
    const auto samePlace = [this](int a, int b) { return Self().CompareVertexXY(a, b) == 1; };
    const E* start = OrderedBorderFirst.GetHead();
    for (POSITION pos = BorderEdgesSecond.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        E* edge = BorderEdgesSecond.GetNext(pos);
        if (edge == nullptr) continue;
        const bool along = samePlace(edge->Vertex[0], start->Vertex[0]) && samePlace(edge->Vertex[1], start->Vertex[1]);
        const bool against = samePlace(edge->Vertex[0], start->Vertex[1]) && samePlace(edge->Vertex[1], start->Vertex[0]);
        if (!along && !against) continue;
        if (!along) std::swap(edge->Vertex[0], edge->Vertex[1]);
        OrderedBorderSecond.AddTail(edge);
        BorderEdgesSecond.RemoveAt(current);
        ChainerByPlace(BorderEdgesSecond).Grow(OrderedBorderSecond);
        return;
    }
}

template <class D, class T, class E>
int TriangleGraph<D, T, E>::CountInnerTrianglesFromEdgeList(int steps, CountParams* params, int index)
{
    if (params == nullptr || params->EdgeList == nullptr) return 0;
    const auto reach = [&](T* triangle, TriangleListType& front) {
        if (triangle == nullptr || triangle->SortIndex != -1) return;
        triangle->SortIndex = index;
        front.AddTail(triangle);
        params->FoundList.AddTail(triangle);
    };
    if (params->FoundList.IsEmpty()) {
        for (POSITION pos = params->EdgeList->GetHeadPosition(); pos != nullptr;) {
            if (E* edge = params->EdgeList->GetNext(pos)) reach(edge->Triangle, params->FrontList);
        }
    }
    for (int step = 0; step < steps && params->Growing; ++step) {
        TriangleListType next;
        for (POSITION pos = params->FrontList.GetHeadPosition(); pos != nullptr;) {
            T* triangle = params->FrontList.GetNext(pos);
            for (T* neighbour : triangle->Neighbour) reach(neighbour, next);
        }
        params->FrontList.RemoveAll();
        params->FrontList.AddTail(&next);
        params->Growing = !next.IsEmpty();
    }
    return static_cast<int>(params->FoundList.GetCount());
}

// Chains every loop of `open` and keeps one in `result`. With several, each
// loop's front advances ten steps at a time into the surface, a triangle
// belonging to the first front that reaches it, until at most one front
// still grows and it cannot overtake the best stopped one any more: the
// loop that reached the most triangles, the first of equal ones, is the
// border of the largest piece, and what it reached goes to `triangles`.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::ChooseBorderLoop(EdgeListType& open, EdgeListType* result, TriangleListType* triangles)
{
    std::vector<EdgeListType*> loops;
    auto chainer = ChainerByIndex(open);
    while (!open.IsEmpty()) {
        loops.push_back(new EdgeListType(10));
        chainer.Grow(*loops.back());
    }
    if (loops.empty()) return;
    if (loops.size() == 1) {
        CopyEdgeListInList(loops.front(), result);
        delete loops.front();
        return;
    }
    TriangleListType& present = Self().PresentList();
    InitSortedListFromTriangles(&present);
    std::vector<CountParams> counts(loops.size());
    for (std::size_t k = 0; k < loops.size(); ++k) counts[k].EdgeList = loops[k];
    int best = -1;
    int bestCount = -1;
    for (;;) {
        int growing = 0;
        int largestGrowing = 0;
        for (std::size_t k = 0; k < loops.size(); ++k) {
            if (!counts[k].Growing) continue;
            const int reached = CountInnerTrianglesFromEdgeList(10, &counts[k], static_cast<int>(k));
            if (counts[k].Growing) {
                ++growing;
                largestGrowing = std::max(largestGrowing, reached);
            } else if (reached > bestCount) {
                best = static_cast<int>(k);
                bestCount = reached;
            }
        }
        // A growing front cannot overtake a best that holds more than every
        // triangle not yet reached by anyone.
        if (growing == 0) break;
        int reachedByAll = 0;
        for (const CountParams& count : counts) reachedByAll += static_cast<int>(count.FoundList.GetCount());
        const int unreached = static_cast<int>(present.GetCount()) - reachedByAll;
        if (growing < 2 && best >= 0 && bestCount >= largestGrowing + unreached) break;
    }
    if (best < 0) {
        for (std::size_t k = 0; k < loops.size(); ++k) {
            if (static_cast<int>(counts[k].FoundList.GetCount()) > bestCount) {
                best = static_cast<int>(k);
                bestCount = static_cast<int>(counts[k].FoundList.GetCount());
            }
        }
    }
    CopyEdgeListInList(loops[static_cast<std::size_t>(best)], result);
    if (triangles != nullptr) triangles->AddTail(&counts[static_cast<std::size_t>(best)].FoundList);
    for (EdgeListType* loop : loops) {
        ClearEdgeList(loop);
        delete loop;
    }
    InitSortedListFromTriangles(&present);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::GetBorderOfCombinedTriangulationApdated(EdgeListType* edges1, EdgeListType* edges2,
                                                                     TriangleListType* triangles)
{
    if (edges1 == nullptr || edges2 == nullptr) return;
    FindOutsideEdgesOfBorderTriang();
    ClearEdgeList(edges1);
    ClearEdgeList(edges2);
    ChooseBorderLoop(BorderEdgesFirst, edges1, triangles);
    ChooseBorderLoop(BorderEdgesSecond, edges2, triangles);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::GetBorderOfCombinedTriangulationApdated(D& other, EdgeListType* edges1,
                                                                     EdgeListType* edges2, TriangleListType* triangles)
{
    if (edges1 == nullptr || edges2 == nullptr || &other == &Self()) return;
    const bool thisWasFinal = Self().LeaveFinalizedState();
    const bool otherWasFinal = other.LeaveFinalizedState();
    FindOutsideEdgesOfBorderTriang(other);
    ClearEdgeList(edges1);
    ClearEdgeList(edges2);
    ChooseBorderLoop(BorderEdgesFirst, edges1, triangles);
    other.ChooseBorderLoop(BorderEdgesSecond, edges2, nullptr);
    other.ReturnToFinalizedState(otherWasFinal);
    Self().ReturnToFinalizedState(thisWasFinal);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::BuildPolygonFromEdgeList(EdgeListType* edges, CSSE3dPolygon& polygon,
                                                      const ZrCSSEVertexContainer& vertexSource)
{
    if (edges == nullptr) return;
    polygon.Create(static_cast<int>(edges->GetCount()));
    int next = 0;
    for (POSITION pos = edges->GetHeadPosition(); pos != nullptr;) {
        const E* edge = edges->GetNext(pos);
        if (edge == nullptr) continue;
        SSEPoint point = vertexSource.GetVertex(edge->Vertex[0]);
        polygon.SetPointSSE(next++, point);
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::BuildPolygonFromEdgeList(EdgeListType* edges, CSSE3dPolygon& polygon, int* vertexIndices)
{
    if (edges == nullptr) return;
    BuildPolygonFromEdgeList(edges, polygon, *this);
    if (vertexIndices == nullptr) return;
    int next = 0;
    for (POSITION pos = edges->GetHeadPosition(); pos != nullptr;) {
        if (const E* edge = edges->GetNext(pos)) vertexIndices[next++] = edge->Vertex[0];
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::BuildBorderPolygonForTriang(CSSE3dPolygon& polygon)
{
    const bool wasFinalized = Self().LeaveFinalizedState();
    EdgeListType open;
    EdgeListType loop;
    CollectOpenEdges(TriangleList, open, true);
    ChainerByIndex(open).Grow(loop);
    BuildPolygonFromEdgeList(&loop, polygon, nullptr);
    Self().ReturnToFinalizedState(wasFinalized);
    ClearEdgeList(&open);
    ClearEdgeList(&loop);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::GetTriangleListFromEdgeList(EdgeListType* edges)
{
    if (edges == nullptr) return;
    Self().LeaveFinalizedState();
    TriangleListType& selected = Self().SelectionList();
    TriangleListType front;
    const auto select = [&](T* triangle, TriangleListType& to) {
        if (triangle == nullptr || triangle->SortIndex != -1) return;
        triangle->SortIndex = 0;
        triangle->Signed = true;
        selected.AddTail(triangle);
        to.AddTail(triangle);
    };
    for (POSITION pos = edges->GetHeadPosition(); pos != nullptr;) {
        if (E* edge = edges->GetNext(pos)) select(edge->Triangle, front);
    }
    while (!front.IsEmpty()) {
        TriangleListType next;
        for (POSITION pos = front.GetHeadPosition(); pos != nullptr;) {
            T* triangle = front.GetNext(pos);
            for (T* neighbour : triangle->Neighbour) select(neighbour, next);
        }
        front.RemoveAll();
        front.AddTail(&next);
    }
}

namespace detail {

// A new polygon of the points from .. to of `source`, both inclusive.
inline CSSE3dPolygon* PolygonPart(const CSSE3dPolygon& source, int from, int to)
{
    auto* part = new CSSE3dPolygon();
    const int count = to - from + 1;
    if (count < 1) return part;
    part->Create(count);
    for (int i = 0; i < count; ++i) {
        SSEPoint p;
        source.GetPointSSE(from + i, p);
        part->SetPointSSE(i, p);
    }
    return part;
}

inline void AppendSection(CList<t_PolygonsForCombineDelaunay*>& sections, CSSE3dPolygon* first, CSSE3dPolygon* second)
{
    auto* section = new t_PolygonsForCombineDelaunay{first, second, static_cast<std::int32_t>(sections.GetCount())};
    sections.AddTail(section);
}

// Frees every section of `sections`, with its two polygons, and empties it.
inline void DestroySections(CList<t_PolygonsForCombineDelaunay*>& sections)
{
    while (!sections.IsEmpty()) {
        t_PolygonsForCombineDelaunay* section = sections.RemoveHead();
        if (section == nullptr) continue;
        delete section->FirstPolygon;
        delete section->SecondPolygon;
        delete section;
    }
}

} // namespace detail

// Both outlines are made counter-clockwise, the second starts opposite the
// start of the first, and the second is cut into blocks of 50 points; each
// block's partner on the first runs from the end of the previous partner to
// the first's point that corresponds to the block's last point.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::PreparePolygonsForCombine(CSSE3dPolygon* first, CSSE3dPolygon* second,
                                                       int* firstIndices, int* secondIndices,
                                                       CList<t_PolygonsForCombineDelaunay*>* sections)
{
    FirstPolygonInverted = false;
    SecondPolygonInverted = false;
    if (first == nullptr || second == nullptr || sections == nullptr) return;
    const auto turnCounterClockwise = [](CSSE3dPolygon& polygon, int* indices, bool& inverted) {
        if (polygon.CalcXYArea() >= 0.0f) return;
        polygon.InvertPolygonDirection();
        InvertVertexArray(indices, polygon.GetNumPoints());
        inverted = true;
    };
    turnCounterClockwise(*first, firstIndices, FirstPolygonInverted);
    turnCounterClockwise(*second, secondIndices, SecondPolygonInverted);
    const int firstCount = first->GetNumPoints();
    const int secondCount = second->GetNumPoints();
    if (firstCount < 1 || secondCount < 1) return;
    FindClosedPolygonSafe(*first, *second, secondIndices);

    CSSE3dPolygon fine(*first);
    int* map = static_cast<int*>(SafeMalloc(sizeof(int) * static_cast<std::uint64_t>(firstCount)));
    fine.ReParametrize(0.2f, map);
    const int lastOfFirst = firstCount - 1;
    // The end on `first` that belongs to point `target` of `second`,
    // searched from `from` on; the last point if the search falls back.
    const auto partnerEnd = [&](int from, int target) {
        const int found = GetClosedPointSafe(*first, fine, *second, map, from, lastOfFirst, target);
        return found < from ? lastOfFirst : found;
    };
    constexpr int kBlock = 50;
    int start = 0;
    int firstFrom = 0;
    int end = start + kBlock - 1;
    for (; end < secondCount; start += kBlock, end = start + kBlock - 1) {
        const int firstTo = partnerEnd(firstFrom, end);
        detail::AppendSection(*sections, detail::PolygonPart(*first, firstFrom, firstTo),
                              detail::PolygonPart(*second, start, end));
        if (firstTo < lastOfFirst) firstFrom = firstTo + 1;
    }
    if (start - 1 != secondCount - 1) {
        if (sections->IsEmpty()) {
            auto* wholeFirst = new CSSE3dPolygon();
            auto* wholeSecond = new CSSE3dPolygon();
            wholeFirst->CreateSimilar(first);
            wholeSecond->CreateSimilar(second);
            detail::AppendSection(*sections, wholeFirst, wholeSecond);
        } else {
            const int firstTo = partnerEnd(firstFrom, secondCount - 1);
            CSSE3dPolygon* restOfFirst = firstTo - firstFrom + 1 >= 2 ? detail::PolygonPart(*first, firstFrom, firstTo)
                                                                      : new CSSE3dPolygon();
            detail::AppendSection(*sections, restOfFirst, detail::PolygonPart(*second, start, secondCount - 1));
        }
    }
    SafeFree(map);
}

} // namespace vek
