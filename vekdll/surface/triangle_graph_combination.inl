// Joining two surfaces: copying one into the other, closing two rims of one
// outline into a skin, and stitching a patch into an opening with a seam
// of three bands.

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/polygon_blend.h"
#include "vekdll/surface/side_test.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

inline SSEPoint MidPoint(const SSEPoint& a, const SSEPoint& b)
{
    SSEPoint m;
    m.sse = _mm_div_ps(_mm_add_ps(a.sse, b.sse), _mm_set1_ps(2.0f));
    return m;
}

// from + (to - from) / 2, the form in which the extra ring of a wide gap
// is laid.
inline SSEPoint HalfWayFrom(const SSEPoint& from, const SSEPoint& to)
{
    SSEPoint m;
    m.sse = _mm_add_ps(from.sse, _mm_div_ps(_mm_sub_ps(to.sse, from.sse), _mm_set1_ps(2.0f)));
    return m;
}

inline SSEPoint PolygonPoint(const CSSE3dPolygon& polygon, int i)
{
    SSEPoint p;
    polygon.GetPointSSE(i, p);
    return p;
}

} // namespace vek::detail

namespace vek {

template <class D, class T, class E>
T* TriangleGraph<D, T, E>::NewSeamTriangle(int a, int b, int c)
{
    T* triangle = InitNewTriangle();
    triangle->Vertex[0] = a;
    triangle->Vertex[1] = b;
    triangle->Vertex[2] = c;
    if constexpr (requires { triangle->SortIndex; }) triangle->SortIndex = -1;
    RefreshCircle(triangle);
    return triangle;
}

// The last vertex at p in x, y and z, or -1. A rim's vertices are the
// newest at their place: vertices of triangles that a clearing took away
// stay in the store and may sit at the same place before them.
template <class D, class T, class E>
int TriangleGraph<D, T, E>::NewestVertexAt(const SSEPoint& p) const
{
    for (int i = NumVertices - 1; i >= 0; --i) {
        if (Vertices[i].x == p.x && Vertices[i].y == p.y && Vertices[i].z == p.z) return i;
    }
    return -1;
}

template <class D, class T, class E>
int TriangleGraph<D, T, E>::AppendVertexGrowing(const SSEPoint& point)
{
    if (NumVertices >= MaxNumVertices) ReallocSize(MaxNumVertices + 1);
    AppendVertex(point);
    return NumVertices - 1;
}

// Links every triangle of `triangles` that has an open side with the others
// that carry one of its sides, until its three sides are taken. Only open
// slots on both sides are joined, so that a link once made is never
// overwritten and every link stays returned.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::LinkAmong(const std::vector<T*>& triangles)
{
    for (T* triangle : triangles) {
        for (T* other : triangles) {
            if (FindNullNeighbour(triangle) == eSideNone) break;
            if (other == triangle) continue;
            for (int sideA = 0; sideA < 3; ++sideA) {
                if (triangle->Neighbour[sideA] != nullptr) continue;
                const ESharedSide sideB = FindCommonSide(sideA, triangle, other);
                if (sideB == eSideNone || other->Neighbour[sideB] != nullptr) continue;
                triangle->Neighbour[sideA] = other;
                other->Neighbour[sideB] = triangle;
            }
        }
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CopyAndInsertOtherTriangulation(D& other, bool finalize)
{
    if (&other == &Self()) return;
    Self().LeaveFinalizedState();
    const bool otherWasFinal = other.LeaveFinalizedState();
    const int offset = NumVertices;
    const int added = other.GetNumVertices();
    if (added > 0 && offset + added > MaxNumVertices) ReallocSize(offset + added);
    for (int i = 0; i < added; ++i) AppendVertex(other.GetVertex(i));
    std::unordered_map<const T*, T*> copyOf;
    std::vector<T*> copies;
    for (POSITION pos = other.TriangleList.GetHeadPosition(); pos != nullptr;) {
        const T* original = other.TriangleList.GetNext(pos);
        if (original == nullptr) continue;
        T* copy = InitNewTriangle();
        CopyTriangle(original, copy);
        for (int& corner : copy->Vertex) corner += offset;
        if constexpr (HasNormalPointer<T>) copy->Normal = nullptr;
        if constexpr (requires { copy->Center; }) copy->Center = nullptr;
        copy->SortIndex = -1;
        copyOf[original] = copy;
        copies.push_back(copy);
    }
    for (T* copy : copies) {
        for (T*& slot : copy->Neighbour) {
            const auto found = copyOf.find(slot);
            slot = found == copyOf.end() ? nullptr : found->second;
        }
        TriangleList.AddTail(copy);
    }
    other.ReturnToFinalizedState(otherWasFinal);
    Self().ReturnToFinalizedState(finalize);
}

// Lays the triangles of one step of the rim walk: the edge a-b of the first
// chain faces c-d of the second, S is the mid vertex at the start (-1 for
// none), E at the end, and `wide` asks for the extra ring of U and L.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::LayRimStep(int a, int b, int c, int d, int s, int e, bool wide, std::vector<T*>& made)
{
    const auto lay = [&](int p, int q, int r) { made.push_back(NewSeamTriangle(p, q, r)); };
    if (s < 0 && e < 0) {
        lay(c, b, a), lay(c, d, b);
    } else if (s < 0) {
        lay(a, e, b), lay(c, e, a), lay(c, d, e);
    } else if (e < 0) {
        lay(s, b, a), lay(s, d, b), lay(c, d, s);
    } else if (!wide) {
        lay(s, b, a), lay(s, e, b), lay(s, d, e), lay(c, d, s);
    } else {
        const int u = AppendVertexGrowing(detail::HalfWayFrom(Vertices[s], Vertices[b]));
        const int l = AppendVertexGrowing(detail::HalfWayFrom(Vertices[d], Vertices[s]));
        lay(s, u, a), lay(u, b, a), lay(u, e, b), lay(s, e, u);
        lay(c, l, s), lay(s, l, e), lay(l, d, e), lay(c, d, l);
    }
}

// Links the new triangle that carries the edge's two vertices with the
// edge's triangle, in the edge's side of the old one and the matching side
// of the new one.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::LinkToRim(const E* edge, const std::vector<T*>& made)
{
    T* old = edge->Triangle;
    if (old == nullptr || edge->Side == eSideNone) return;
    for (T* triangle : made) {
        if (!IsVertexInTriangle(triangle, edge->Vertex[0]) || !IsVertexInTriangle(triangle, edge->Vertex[1])) continue;
        const ESharedSide facing = FindCommonSide(edge->Side, old, triangle);
        if (facing == eSideNone) continue;
        old->Neighbour[edge->Side] = triangle;
        triangle->Neighbour[facing] = old;
        return;
    }
}

// The rims of both surfaces are walked edge for edge. Where they lie closer
// than the near gap in z they are joined directly; farther apart a middle
// line is laid halfway, and from the wide gap on an extra ring of points
// halfway to the rims keeps the triangles short.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CombineTriangulationsMidPoint(D& first, D& second, bool, bool finalize)
{
    if (&first == &Self() || &second == &Self() || &first == &second) return;
    Self().LeaveFinalizedState();
    ClearTriangleList();
    CreateVertexArray(first.GetNumVertices() + second.GetNumVertices() + 1);
    CopyAndInsertOtherTriangulation(second, false);
    OtherVertexStart = NumVertices;
    CopyAndInsertOtherTriangulation(first, false);
    const int total = NumVertices;
    GetBorderOfCombinedTriangulationApdated();

    const float nearGap = D::kMidPointNearGap;
    const float wideGap = D::kMidPointWideGap;
    const int steps = static_cast<int>(std::min(OrderedBorderFirst.GetCount(), OrderedBorderSecond.GetCount()));
    const E* firstEdge = steps > 0 ? OrderedBorderFirst.GetHead() : nullptr;
    const E* firstEdgeOfSecond = steps > 0 ? OrderedBorderSecond.GetHead() : nullptr;
    int pending = -1;
    int firstMid = -1;
    std::vector<T*> previous;
    std::vector<T*> firstStep;
    POSITION one = OrderedBorderFirst.GetHeadPosition();
    POSITION two = OrderedBorderSecond.GetHeadPosition();
    for (int step = 0; step < steps; ++step) {
        const E* upper = OrderedBorderFirst.GetNext(one);
        const E* lower = OrderedBorderSecond.GetNext(two);
        const int a = upper->Vertex[0], b = upper->Vertex[1], c = lower->Vertex[0], d = lower->Vertex[1];
        const float gapStart = std::fabs(Vertices[a].z - Vertices[c].z);
        const float gapEnd = std::fabs(Vertices[b].z - Vertices[d].z);
        const bool last = step == steps - 1;
        const bool ringCloses = b == firstEdge->Vertex[0] && d == firstEdgeOfSecond->Vertex[0];
        if (NumVertices + 4 > MaxNumVertices) ReallocSize(NumVertices + 4);
        int s = -1;
        if (gapStart >= nearGap) {
            s = pending >= 0 ? pending : AppendVertexGrowing(detail::MidPoint(Vertices[a], Vertices[c]));
            if (firstMid < 0) firstMid = s;
        }
        int e = -1;
        if (gapEnd >= nearGap) {
            if (last && ringCloses && firstMid >= 0)
                e = firstMid;
            else
                e = AppendVertexGrowing(detail::MidPoint(Vertices[b], Vertices[d]));
            if (firstMid < 0) firstMid = e;
        }
        pending = e;
        std::vector<T*> made;
        LayRimStep(a, b, c, d, s, e, gapStart >= wideGap && gapEnd >= wideGap, made);
        LinkToRim(upper, made);
        LinkToRim(lower, made);
        std::vector<T*> around(made);
        around.insert(around.end(), previous.begin(), previous.end());
        if (last) around.insert(around.end(), firstStep.begin(), firstStep.end());
        LinkAmong(around);
        for (T* triangle : made) {
            if (GetOrientation(triangle) == -1) FlipTriangleOrientationWithNeigbour(triangle);
            TriangleList.AddTail(triangle);
        }
        if (step == 0) firstStep = made;
        previous = made;
    }
    // The half that came from `first` is turned over, so that both halves
    // face outwards.
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        const bool fromFirst = std::all_of(std::begin(triangle->Vertex), std::end(triangle->Vertex),
                                           [&](int v) { return v >= OtherVertexStart && v < total; });
        if (fromFirst) FlipTriangleOrientationWithNeigbour(triangle);
    }
    Self().ReturnToFinalizedState(finalize);
}

// The loops of the first half are chained anew, and of those that hold the
// first point of `rim` in their inner area the one of least area is moved
// to `edges1`: the opening that the patch lies in, which the count of the
// loops would pass over for the surface's outer border.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::TakeOpeningAround(const CSSE3dPolygon& rim, EdgeListType* edges1)
{
    if (rim.GetNumPoints() < 1) return;
    SSEPoint inside = detail::PolygonPoint(rim, 0);
    FindOutsideEdgesOfBorderTriang();
    std::vector<EdgeListType*> loops;
    while (!BorderEdgesFirst.IsEmpty()) {
        loops.push_back(new EdgeListType(10));
        detail::GrowChain(BorderEdgesFirst, *loops.back(), detail::SameIndex);
    }
    EdgeListType* opening = nullptr;
    float openingArea = 0.0f;
    for (EdgeListType* loop : loops) {
        CSSE3dPolygon outline;
        BuildPolygonFromEdgeList(loop, outline, *this);
        const float area = std::fabs(outline.CalcXYArea());
        if (outline.GetNumPoints() < 3 || !outline.PointInLineInnerArea(inside, 1)) continue;
        if (opening == nullptr || area < openingArea) {
            opening = loop;
            openingArea = area;
        }
    }
    if (opening != nullptr) {
        ClearEdgeList(edges1);
        CopyEdgeListInList(opening, edges1);
    }
    for (EdgeListType* loop : loops) {
        ClearEdgeList(loop);
        delete loop;
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::InsertTriangulationAndCombine(D& other, CSSEMatrix* matrix, bool flag)
{
    if (&other == &Self()) return;
    EdgeListType edges1;
    EdgeListType edges2;
    TriangleListType triangles;
    GetBorderOfCombinedTriangulationApdated(other, &edges1, &edges2, &triangles);
    if (edges1.IsEmpty() || edges2.IsEmpty()) {
        ClearEdgeList(&edges1);
        ClearEdgeList(&edges2);
        return;
    }
    const bool wasFinalized = &Self().PresentList() != &TriangleList;
    CheckAndGetBorderOfCombinedTriangulation(other, &edges1, &edges2, &triangles, flag);
    Self().LeaveFinalizedState();
    OtherVertexStart = NumVertices;
    CopyAndInsertOtherTriangulation(other, false);
    triangles.RemoveAll();
    GetBorderOfCombinedTriangulationApdated(&edges1, &edges2, &triangles);

    CSSE3dPolygon second;
    std::vector<int> secondIndices(static_cast<std::size_t>(edges2.GetCount()) + 1);
    BuildPolygonFromEdgeList(&edges2, second, secondIndices.data());
    TakeOpeningAround(second, &edges1);
    CSSE3dPolygon first;
    std::vector<int> firstIndices(static_cast<std::size_t>(edges1.GetCount()) + 1);
    BuildPolygonFromEdgeList(&edges1, first, firstIndices.data());

    CombineTriangulations(&first, &second, &triangles, matrix, firstIndices.data(), secondIndices.data());
    // The seam's triangles are linked with each other and with the
    // triangles on both rims.
    std::vector<T*> linked;
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) linked.push_back(triangles.GetNext(pos));
    for (EdgeListType* rim : {&edges1, &edges2}) {
        for (POSITION pos = rim->GetHeadPosition(); pos != nullptr;) {
            if (const E* edge = rim->GetNext(pos)) linked.push_back(edge->Triangle);
        }
    }
    LinkAmong(linked);
    CombineMergeTriangulations();
    // A seam triangle that found no neighbour at all lies across nothing.
    DeleteTrianglesWithoutNeighbours();
    ClearEdgeList(&edges1);
    ClearEdgeList(&edges2);
    Self().ReturnToFinalizedState(wasFinalized);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CombineTriangulations(CSSE3dPolygon* first, CSSE3dPolygon* second,
                                                   TriangleListType* triangles, CSSEMatrix* matrix,
                                                   int* firstIndices, int* secondIndices)
{
    (void)matrix;
    if (first == nullptr || second == nullptr) return;
    const bool wasFinalized = Self().LeaveFinalizedState();
    CSSE3dPolygon firstCopy(*first);
    CSSE3dPolygon secondCopy(*second);
    std::vector<int> firstMap(firstIndices, firstIndices + (firstIndices ? first->GetNumPoints() : 0));
    std::vector<int> secondMap(secondIndices, secondIndices + (secondIndices ? second->GetNumPoints() : 0));
    CombinedMidPolygon.Free();
    CList<t_PolygonsForCombineDelaunay*> sections;
    PreparePolygonsForCombine(&firstCopy, &secondCopy, firstMap.empty() ? nullptr : firstMap.data(),
                              secondMap.empty() ? nullptr : secondMap.data(), &sections);
    CSSE3dPolygon upper;
    CSSE3dPolygon lower;
    for (POSITION pos = sections.GetHeadPosition(); pos != nullptr;) {
        const t_PolygonsForCombineDelaunay* section = sections.GetNext(pos);
        PolygonBlend blend(*section->FirstPolygon, *section->SecondPolygon, 0.5f, false);
        if (!blend.IsValid()) continue;
        CSSE3dPolygon ring(blend.Blend(0.8f));
        upper.AppendPoints(ring);
        ring = CSSE3dPolygon(blend.Blend(0.2f));
        lower.AppendPoints(ring);
        ring = CSSE3dPolygon(blend.Blend(0.5f));
        CombinedMidPolygon.AppendPoints(ring);
    }
    const int longer = std::max({firstCopy.GetNumPoints(), secondCopy.GetNumPoints(), 1});
    const int step = std::max(upper.GetNumPoints() / longer - 2, 1);
    upper.Subsample(step, false);
    lower.Subsample(step, false);
    CombinedMidPolygon.Subsample(step, false);
    SeamTrianglesFirst.RemoveAll();
    SeamTrianglesSecond.RemoveAll();
    const auto ringOfVertices = [this](CSSE3dPolygon& ring, int& start, int& count) {
        start = NumVertices;
        count = ring.GetNumPoints();
        if (count > 0 && NumVertices + count > MaxNumVertices) ReallocSize(NumVertices + count);
        std::vector<int> indices(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            AppendVertex(detail::PolygonPoint(ring, i));
            indices[static_cast<std::size_t>(i)] = start + i;
        }
        return indices;
    };
    std::vector<int> upperIndices = ringOfVertices(upper, UpperRingStart, UpperRingCount);
    if (upper.GetNumPoints() >= secondCopy.GetNumPoints())
        BildNewTriangulationsWithTwoPolygon(&secondCopy, &upper, triangles, &SeamTrianglesSecond, upperIndices.data(),
                                            true, true);
    std::vector<int> lowerIndices = ringOfVertices(lower, LowerRingStart, LowerRingCount);
    if (lower.GetNumPoints() >= firstCopy.GetNumPoints())
        BildNewTriangulationsWithTwoPolygon(&firstCopy, &lower, triangles, &SeamTrianglesFirst, lowerIndices.data(),
                                            false, true);
    detail::DestroySections(sections);
    Self().ReturnToFinalizedState(wasFinalized);
}

// The zipper walks both closed lines from their matched starts and lays
// one triangle at a time, on a side of `a` or a side of `b`, whichever
// leaves the shorter new diagonal; so every side of both lines gets exactly
// one triangle and the band between them is closed without a gap.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::BildNewTriangulationsWithTwoPolygon(CSSE3dPolygon* a, CSSE3dPolygon* b,
                                                                 TriangleListType* triangles,
                                                                 TriangleListType* seamTriangles, int* indices,
                                                                 bool flagA, bool flagB)
{
    (void)flagA;
    if (a == nullptr || b == nullptr || indices == nullptr) return;
    const int na = a->GetNumPoints();
    const int nb = b->GetNumPoints();
    if (na < 2 || nb < 2) return;
    FindClosedPolygonSafe(*a, *b, indices);
    std::vector<int> aIndices(static_cast<std::size_t>(na));
    for (int k = 0; k < na; ++k) {
        const SSEPoint p = detail::PolygonPoint(*a, k);
        aIndices[static_cast<std::size_t>(k)] = NewestVertexAt(p);
    }
    const auto A = [&](int k) { return aIndices[static_cast<std::size_t>(k % na)]; };
    const auto B = [&](int k) { return indices[k % nb]; };
    const auto length = [this](int p, int q) { return CSSEFns::euclideandistance(Vertices[p].sse, Vertices[q].sse); };
    const auto lay = [&](int p, int q, int r) {
        if (p < 0 || q < 0 || r < 0 || p == q || q == r || p == r) return;
        T* triangle = NewSeamTriangle(p, q, r);
        if (detail::SideValue(Vertices[p], Vertices[q], Vertices[r]) < 0.0f) {
            FlipTriangleOrientation(triangle);
            RefreshCircle(triangle);
        }
        TriangleList.AddTail(triangle);
        if (triangles != nullptr) triangles->AddTail(triangle);
        if (seamTriangles == nullptr) return;
        if (flagB)
            seamTriangles->AddTail(triangle);
        else
            seamTriangles->AddHead(triangle);
    };
    int i = 0;
    int j = 0;
    while (i < na || j < nb) {
        const bool advanceA = j >= nb || (i < na && length(A(i + 1), B(j)) <= length(A(i), B(j + 1)));
        if (advanceA) {
            lay(A(i), A(i + 1), B(j));
            ++i;
        } else {
            lay(A(i), B(j + 1), B(j));
            ++j;
        }
    }
}

// The middle ring becomes vertices, and the two bands from the lower ring
// to it and from it to the upper ring are zipped and linked with the seam
// triangles on either side.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CombineMergeTriangulations()
{
    Self().LeaveFinalizedState();
    const int midCount = CombinedMidPolygon.GetNumPoints();
    if (midCount < 2 || LowerRingCount < 2 || UpperRingCount < 2) return;
    if (LowerRingStart + LowerRingCount > NumVertices || UpperRingStart + UpperRingCount > NumVertices) return;
    const auto ringPolygon = [this](int start, int count) {
        CSSE3dPolygon ring;
        ring.Create(count);
        for (int i = 0; i < count; ++i) ring.SetPointSSE(i, Vertices[start + i]);
        return ring;
    };
    CSSE3dPolygon lower = ringPolygon(LowerRingStart, LowerRingCount);
    CSSE3dPolygon upper = ringPolygon(UpperRingStart, UpperRingCount);
    const int midStart = NumVertices;
    if (NumVertices + midCount > MaxNumVertices) ReallocSize(NumVertices + midCount);
    std::vector<int> midIndices(static_cast<std::size_t>(midCount));
    for (int i = 0; i < midCount; ++i) {
        AppendVertex(detail::PolygonPoint(CombinedMidPolygon, i));
        midIndices[static_cast<std::size_t>(i)] = midStart + i;
    }
    CSSE3dPolygon mid = ringPolygon(midStart, midCount);
    std::vector<int> upperIndices(static_cast<std::size_t>(UpperRingCount));
    for (int i = 0; i < UpperRingCount; ++i) upperIndices[static_cast<std::size_t>(i)] = UpperRingStart + i;
    TriangleListType band;
    BildNewTriangulationsWithTwoPolygon(&lower, &mid, &band, nullptr, midIndices.data(), false, true);
    BildNewTriangulationsWithTwoPolygon(&mid, &upper, &band, nullptr, upperIndices.data(), false, true);
    std::vector<T*> linked;
    for (TriangleListType* list : {&band, &SeamTrianglesFirst, &SeamTrianglesSecond}) {
        for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) linked.push_back(list->GetNext(pos));
    }
    LinkAmong(linked);
}

} // namespace vek
