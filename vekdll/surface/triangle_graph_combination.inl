// Joining two surfaces: copying one into the other, closing two rims of one
// outline into a skin, and stitching a patch into an opening with a seam
// of three bands.

#include <algorithm>
#include <cmath>
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
        // Every link goes into the slot across the side that carries the
        // two shared vertices, not into a triangle's first free slot: the
        // corner lists of the steps put the rim's side, and the sides shared
        // with the step before, in any slot, and a link in the first free
        // one would stand across the wrong side. The turn of a triangle
        // below swaps its slots with its corners, so the links stay true.
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

// The patch is stitched into the opening that the clearing leaves, and at
// the end every triangle with an open side is peeled away, layer by layer,
// until only closed parts are left. So the operation is made for a skin
// that is closed but for the opening the patch covers: what it gives back
// is that skin with the patch sewn in. On a surface with an outer rim of
// its own the peel takes everything, and a caller who wants the open
// surface stitched runs the steps itself, up to CombineMergeTriangulations.
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

    CSSE3dPolygon first;
    CSSE3dPolygon second;
    std::vector<int> firstIndices(static_cast<std::size_t>(edges1.GetCount()) + 1);
    std::vector<int> secondIndices(static_cast<std::size_t>(edges2.GetCount()) + 1);
    BuildPolygonFromEdgeList(&edges1, first, firstIndices.data());
    BuildPolygonFromEdgeList(&edges2, second, secondIndices.data());
    CombineTriangulations(&first, &second, &triangles, matrix, firstIndices.data(), secondIndices.data());
    LinkSeamToRims(triangles, edges1, edges2);
    CombineMergeTriangulations();
    DeleteAllTrianglesWithNULLNeighbour();
    ClearEdgeList(&edges1);
    ClearEdgeList(&edges2);
    Self().ReturnToFinalizedState(wasFinalized);
}

// The seam's triangles are linked with each other and with the triangles
// that own the edges of both rims: the rims' open sides are what the seam
// closes.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::LinkSeamToRims(TriangleListType& seam, EdgeListType& rim1, EdgeListType& rim2)
{
    std::vector<T*> linked;
    for (POSITION pos = seam.GetHeadPosition(); pos != nullptr;) linked.push_back(seam.GetNext(pos));
    for (EdgeListType* rim : {&rim1, &rim2}) {
        for (POSITION pos = rim->GetHeadPosition(); pos != nullptr;) {
            if (const E* edge = rim->GetNext(pos)) linked.push_back(edge->Triangle);
        }
    }
    LinkAmong(linked);
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
        CSSE3dPolygon upperPart(blend.Blend(0.8f));
        upper.AppendPoints(upperPart);
        CSSE3dPolygon lowerPart(blend.Blend(0.2f));
        lower.AppendPoints(lowerPart);
        CSSE3dPolygon midPart(blend.Blend(0.5f));
        CombinedMidPolygon.AppendPoints(midPart);
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
    // Each zipper finds the border's points among the vertices by their
    // place, and is handed the indices of the ring's new vertices, in ring
    // order, which it turns with the ring.
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

// The zipper walks the points of `b` and gives each side of `b` the
// stretch of `a` that lies across from it: the stretch ends at the point of
// `a` that GetClosedPointSafe finds for the side's end, searched forward
// from where the last stretch ended, and the last side of `b` takes what is
// left of `a` back to its start. Every side of both lines thus gets exactly
// one triangle, and the band between them closes without a gap.
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
    // `a` is walked from its point nearest the start of `b`.
    CSSE3dPolygon along(*a);
    SSEPoint bStart = detail::PolygonPoint(*b, 0);
    const int aStart = along.ClosestPoint(bStart);
    if (aStart > 0) along.ChangeStartPoint(aStart, nullptr);
    CSSE3dPolygon fine(along);
    std::vector<int> map(static_cast<std::size_t>(na));
    fine.ReParametrize(0.2f, map.data());
    // The vertex of a point of `a` is the first at its place that a
    // triangle uses. Vertices of triangles that a clearing took away stay in
    // the store where they were, and one of them may stand before a rim
    // vertex at the same place; the seam must join the vertex that the
    // rim's own triangles share.
    std::vector<bool> used(static_cast<std::size_t>(NumVertices), false);
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        for (const int v : TriangleList.GetNext(pos)->Vertex) {
            if (v >= 0 && v < NumVertices) used[static_cast<std::size_t>(v)] = true;
        }
    }
    std::vector<int> aIndices(static_cast<std::size_t>(na));
    for (int k = 0; k < na; ++k) {
        const SSEPoint p = detail::PolygonPoint(along, k);
        int v = PointIndex3D(p, 0, NumVertices);
        while (v >= 0 && !used[static_cast<std::size_t>(v)]) v = PointIndex3D(p, v + 1, NumVertices);
        aIndices[static_cast<std::size_t>(k)] = v;
    }

    const auto A = [&](int k) { return aIndices[static_cast<std::size_t>(k % na)]; };
    const auto B = [&](int k) { return indices[k % nb]; };
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
    int start = 0;
    for (int i = 0; i < nb; ++i) {
        int end = na;
        if (i + 1 < nb) {
            // The first matches may not run away along `a`.
            const int last = i < 10 ? std::min(start + std::min(20, na / 2), na - 1) : na - 1;
            end = start < na ? GetClosedPointSafe(along, fine, *b, map.data(), start, last, i + 1) : -1;
            end = std::max(end, std::min(start, na));
        }
        LaySpan(start, end, i, A, B, lay);
        start = end;
    }
}

// The stretch s .. e of `a` across from side i of `b`. With no side of `a`
// one triangle on the side of `b`; with one the quadrilateral is cut from
// the start of the stretch to the end of the side; a longer stretch is
// fanned from both ends of the side, split at the point of the stretch
// nearest to the side's middle.
template <class D, class T, class E>
template <class IndexA, class IndexB, class Lay>
void TriangleGraph<D, T, E>::LaySpan(int s, int e, int i, IndexA A, IndexB B, Lay lay)
{
    int split = s;
    if (e - s >= 2 && B(i) >= 0 && B(i + 1) >= 0) {
        const SSEPoint middle = detail::MidPoint(Vertices[B(i)], Vertices[B(i + 1)]);
        float best = HUGE_VALF;
        for (int k = s; k <= e; ++k) {
            if (A(k) < 0) continue; // a point that is no vertex makes no triangle
            const float d = CSSEFns::euclideansqr(Vertices[A(k)].sse, middle.sse);
            if (d < best) {
                best = d;
                split = k;
            }
        }
    }
    for (int k = s; k < split; ++k) lay(A(k + 1), A(k), B(i));
    lay(B(i + 1), A(split), B(i));
    for (int k = split; k < e; ++k) lay(A(k + 1), A(k), B(i + 1));
}

// The middle ring becomes vertices, and the band between the lower and the
// upper ring is closed through it: the three rings were thinned alike from
// one blend, so that point k of each lies across from point k of the
// others, and each pair of neighbouring points is joined to the next ring
// by two triangles. The band is linked with the seam triangles on either
// side.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CombineMergeTriangulations()
{
    Self().LeaveFinalizedState();
    const int count = CombinedMidPolygon.GetNumPoints();
    if (count < 2 || LowerRingCount != count || UpperRingCount != count) return;
    if (LowerRingStart + count > NumVertices || UpperRingStart + count > NumVertices) return;
    const int midStart = NumVertices;
    if (NumVertices + count > MaxNumVertices) ReallocSize(NumVertices + count);
    for (int i = 0; i < count; ++i) AppendVertex(detail::PolygonPoint(CombinedMidPolygon, i));
    std::vector<T*> linked;
    const auto lay = [&](int p, int q, int r) {
        T* triangle = NewSeamTriangle(p, q, r);
        if (detail::SideValue(Vertices[p], Vertices[q], Vertices[r]) < 0.0f) {
            FlipTriangleOrientation(triangle);
            RefreshCircle(triangle);
        }
        TriangleList.AddTail(triangle);
        linked.push_back(triangle);
    };
    for (const int from : {LowerRingStart, midStart}) {
        const int to = from == LowerRingStart ? midStart : UpperRingStart;
        for (int k = 0; k < count; ++k) {
            const int next = (k + 1) % count;
            lay(from + k, from + next, to + next);
            lay(from + k, to + next, to + k);
        }
    }
    for (TriangleListType* list : {&SeamTrianglesFirst, &SeamTrianglesSecond}) {
        for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) linked.push_back(list->GetNext(pos));
    }
    LinkAmong(linked);
}

} // namespace vek
