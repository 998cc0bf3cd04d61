// Cutting a surface by a mask, with the holes closed again, and by a cap
// outlined in space.

#include <algorithm>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/polygons/polygon_point_math.h"
#include "vekdll/surface/raster_cells.h"
#include "vekdll/surface/side_key.h"
#include "vekdll/surface/side_test.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

// Holes are divided until no side is longer than this many cells.
inline constexpr int kHoleSideLimit = 10;
// Each round halves the longest sides; this many rounds reach the limit
// from any hole a field can hold.
inline constexpr int kHoleDivisionRounds = 16;

} // namespace vek::detail

namespace vek {

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RemoveAllTrianglesInMaskAreaAndRetriangulate(CSSEMatrix* mask)
{
    if (!detail::Readable(mask)) return;
    const bool wasFinalized = Self().LeaveFinalizedState();
    const auto inMask = [&](int v) { return detail::ValueAtCell(*mask, Vertices[v].x, Vertices[v].y) != 0.0f; };
    std::unordered_set<T*> cut;
    std::vector<int> maskedVertices;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        for (int corner : triangle->Vertex) {
            if (!inMask(corner)) continue;
            cut.insert(triangle);
            maskedVertices.push_back(corner);
        }
    }
    if (cut.empty()) {
        Self().ReturnToFinalizedState(wasFinalized);
        return;
    }
    // The sides that the cut opens in the remaining surface.
    std::unordered_set<std::uint64_t> opened;
    for (const T* triangle : cut) {
        for (int side = 0; side < 3; ++side) {
            T* neighbour = triangle->Neighbour[side];
            if (neighbour != nullptr && cut.count(neighbour) == 0)
                opened.insert(detail::SideKey(triangle->Vertex[side], triangle->Vertex[(side + 1) % 3]));
        }
    }
    FreeFromWorkingList(cut);
    // Every triangle at a vertex in the mask went: those vertices are free
    // for the points that the closing adds, lowest index first.
    std::sort(maskedVertices.begin(), maskedVertices.end(), std::greater<>());
    maskedVertices.erase(std::unique(maskedVertices.begin(), maskedVertices.end()), maskedVertices.end());

    CList<EdgeListType*> loops;
    FindAllBorderEdgeLists(&loops);
    for (POSITION pos = loops.GetHeadPosition(); pos != nullptr;) {
        EdgeListType* loop = loops.GetNext(pos);
        if (IsClosedHoleOf(*loop, opened)) CloseHole(*loop, maskedVertices);
        ClearEdgeList(loop);
        delete loop;
    }
    Self().ReturnToFinalizedState(wasFinalized);
}

// A loop that the cut alone opened, closed and passing each vertex once.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::IsClosedHoleOf(const EdgeListType& loop, const std::unordered_set<std::uint64_t>& opened)
{
    if (loop.GetCount() < 3) return false;
    if (loop.GetHead()->Vertex[0] != loop.GetTail()->Vertex[1]) return false;
    std::unordered_set<int> passed;
    for (POSITION pos = loop.GetHeadPosition(); pos != nullptr;) {
        const E* edge = loop.GetNext(pos);
        if (opened.count(detail::SideKey(edge->Vertex[0], edge->Vertex[1])) == 0) return false;
        if (!passed.insert(edge->Vertex[0]).second) return false;
    }
    return true;
}

// Cuts the hole's outline into triangles by ear clipping, in the winding of
// the surface around it, links them to the rim and divides them where
// their sides are long. A hole that ear clipping cannot cut whole stays
// open.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CloseHole(const EdgeListType& loop, std::vector<int>& freeSlots)
{
    std::vector<int> rim;
    std::vector<T*> linked;
    for (POSITION pos = loop.GetHeadPosition(); pos != nullptr;) {
        const E* edge = loop.GetNext(pos);
        rim.push_back(edge->Vertex[0]);
        linked.push_back(edge->Triangle);
    }
    const int n = static_cast<int>(rim.size());
    CSSE3dPolygon outline;
    outline.Create(n);
    const auto trace = [&]() {
        for (int i = 0; i < n; ++i) outline.SetPointSSE(i, Vertices[rim[static_cast<std::size_t>(i)]]);
    };
    trace();
    if (outline.CalcXYArea() < 0.0f) {
        std::reverse(rim.begin(), rim.end());
        trace();
    }
    CHPolygonTriangulator ears(&outline, 1, 1.0f, 1.0f, 1.0f, false, PlanarPredicates::Exact);
    if (ears.GetNumTriangles() != n - 2) return;
    const auto turn = [this](const T* t) {
        return detail::SideValue(Vertices[t->Vertex[0]], Vertices[t->Vertex[1]], Vertices[t->Vertex[2]]);
    };
    const bool surfaceTurnsLeft = !(turn(linked.front()) < 0.0f);
    TriangleListType closing;
    const t_htriangleconnectivity* triples = ears.GetConnectivityArray();
    for (int i = 0; i < ears.GetNumTriangles(); ++i) {
        T* triangle = NewSeamTriangle(rim[triples[i].a], rim[triples[i].b], rim[triples[i].c]);
        if ((turn(triangle) > 0.0f) != surfaceTurnsLeft) {
            FlipTriangleOrientation(triangle);
            RefreshCircle(triangle);
        }
        TriangleList.AddTail(triangle);
        closing.AddTail(triangle);
        linked.push_back(triangle);
    }
    LinkAmong(linked);
    DivideListedTriangles(nullptr, detail::kHoleSideLimit, nullptr, &closing, detail::kHoleDivisionRounds,
                          &freeSlots);
}

// The unit normal of a triangle: its own where the record keeps one.
template <class D, class T, class E>
SSEPoint TriangleGraph<D, T, E>::UnitNormalOf(const T* triangle) const
{
    if constexpr (HasNormalPointer<T>) {
        if (triangle->Normal != nullptr) return *triangle->Normal;
    }
    const SSEPoint& a = Vertices[triangle->Vertex[0]];
    SSEPoint normal;
    normal.sse = CSSEFns::vectorproduct(_mm_sub_ps(Vertices[triangle->Vertex[1]].sse, a.sse),
                                        _mm_sub_ps(Vertices[triangle->Vertex[2]].sse, a.sse));
    if (CSSEFns::vectorlen(normal.sse) > 0.0f) normal.sse = CSSEFns::normalizevector(normal.sse);
    return normal;
}

// Whether the cap covers part of the triangle a, b, c: the polygon is
// projected along the normal onto the triangle's plane, both are turned so
// that the normal points along z, and samples of the triangle's sides
// (every min(length / 10, 0.1)) and its centroid are tested against the
// turned outline, as are the outline's points against the triangle.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::CapCoversTriangle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c,
                                               const SSEPoint& normal, const CSSE3dPolygon& cap, bool invert)
{
    CSSE3dPolygon projected;
    CalcProjectPolygon(a, normal, cap, projected);
    SSEPoint corners[3] = {a, b, c};
    MoveTriangulationAndPolygonWithAngle(&corners[0], &corners[1], corners[2], normal, &projected, invert);
    for (int i = 0; i < projected.GetNumPoints(); ++i) {
        SSEPoint p;
        projected.GetPointSSE(i, p);
        const float f0 = detail::SideValue(corners[0], corners[1], p);
        const float f1 = detail::SideValue(corners[1], corners[2], p);
        const float f2 = detail::SideValue(corners[2], corners[0], p);
        if ((f0 > 0.0f && f1 > 0.0f && f2 > 0.0f) || (f0 < 0.0f && f1 < 0.0f && f2 < 0.0f)) return true;
    }
    const SSEPoint centroid = detail::CentroidOf(corners[0], corners[1], corners[2]);
    if (projected.PointInLineInnerArea(centroid.x, centroid.y, 1)) return true;
    for (int side = 0; side < 3; ++side) {
        const SSEPoint& from = corners[side];
        const __m128 delta = _mm_sub_ps(corners[(side + 1) % 3].sse, from.sse);
        const float length = CSSEFns::vectorlen(delta);
        const float step = std::min(length / 10.0f, 0.1f);
        if (!(step > 0.0f)) continue;
        const int n = detail::TruncatedCount(length / step);
        const __m128 direction = _mm_mul_ps(_mm_div_ps(delta, _mm_set1_ps(length)), _mm_set1_ps(step));
        for (int k = 0; k <= n; ++k) {
            SSEPoint p;
            p.sse = _mm_add_ps(from.sse, _mm_mul_ps(direction, _mm_set1_ps(static_cast<float>(k))));
            if (projected.PointInLineInnerArea(p.x, p.y, 1)) return true;
        }
    }
    return false;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteTrianglesInCap(CSSE3dPolygon* polygon, D* other, bool flag)
{
    if (polygon == nullptr || polygon->GetNumPoints() < 3) return;
    // The facing of `other` is read first: finding it may finalize `other`.
    const bool checkFacing = other != nullptr && other != &Self();
    const bool otherFacesUp = checkFacing && other->CalcNormalDirection();
    const bool wasFinalized = Self().LeaveFinalizedState();
    if constexpr (HasNormalPointer<T>) Self().ComputeNormalVectorsOfTriangles();
    polygon->CalcBoundingBox();
    float low[3];
    float high[3];
    polygon->GetBoundingBox3D(low[0], low[1], low[2], high[0], high[1], high[2]);
    const auto nearCap = [&](const SSEPoint& p) {
        const float at[3] = {p.x, p.y, p.z};
        for (int axis = 0; axis < 3; ++axis) {
            if (!(low[axis] - 10.0f < at[axis] && at[axis] < high[axis] + 10.0f)) return false;
        }
        return true;
    };
    TriangleListType covered;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        const SSEPoint& a = Vertices[triangle->Vertex[0]];
        const SSEPoint& b = Vertices[triangle->Vertex[1]];
        const SSEPoint& c = Vertices[triangle->Vertex[2]];
        if (!nearCap(a) && !nearCap(b) && !nearCap(c)) continue;
        const SSEPoint normal = UnitNormalOf(triangle);
        if (checkFacing && (normal.z >= 0.0f) != otherFacesUp) continue;
        if (!CapCoversTriangle(a, b, c, normal, *polygon, flag)) continue;
        triangle->Visited = true;
        covered.AddTail(triangle);
    }
    if (!covered.IsEmpty()) CheckTrianglesForDelete(&covered, polygon);
    Self().ReturnToFinalizedState(wasFinalized);
}

} // namespace vek
