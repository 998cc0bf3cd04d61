// Refinement against raster fields: each criterion walks the triangles of
// the moment, compares them with the fields at one sample, its centroid or
// a cell, and inserts new vertices where the surface departs from them.

#include <algorithm>
#include <cmath>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/polygon_point_math.h"
#include "vekdll/surface/raster_cells.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

// Where a loop grows the store by itself, it grows by this many vertices.
inline constexpr int kStoreGrowth = 50;

// Whether two of the heights differ by more than the root of `limit2`.
inline bool SquaredDifferenceAbove(float p, float q, float limit2)
{
    const float d = p - q;
    return d * d > limit2;
}

inline bool CornersDepart(float za, float zb, float zc, float limit2)
{
    return SquaredDifferenceAbove(za, zb, limit2) || SquaredDifferenceAbove(zb, zc, limit2) ||
           SquaredDifferenceAbove(zc, za, limit2);
}

// Whether two corners, or a corner and the field's height h, differ by
// more than the root of `limit2`: the six squared differences.
inline bool HeightsDepart(float za, float zb, float zc, float h, float limit2)
{
    return CornersDepart(za, zb, zc, limit2) || SquaredDifferenceAbove(za, h, limit2) ||
           SquaredDifferenceAbove(zb, h, limit2) || SquaredDifferenceAbove(zc, h, limit2);
}

} // namespace vek::detail

namespace vek {

template <class D, class T, class E>
std::vector<T*> TriangleGraph<D, T, E>::TrianglesOfTheMoment() const
{
    std::vector<T*> triangles;
    triangles.reserve(static_cast<std::size_t>(TriangleList.GetCount()));
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = TriangleList.GetNext(pos)) triangles.push_back(triangle);
    }
    return triangles;
}

template <class D, class T, class E>
bool TriangleGraph<D, T, E>::IsInnerTriangle(const T* triangle)
{
    if constexpr (HasOutsideFlag<T>) return !triangle->Outside && !triangle->Border;
    return true;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::MakeRoomIfFull()
{
    if (NumVertices >= MaxNumVertices) ReallocSize(NumVertices + detail::kStoreGrowth);
}

// Vertices first .. NumVertices - 1 were stored by a walk; each goes in now.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::InsertStoredVerticesFrom(int first)
{
    if constexpr (HasCircumCircle<T>) {
        for (int index = first; index < NumVertices; ++index) Self().InsertVertexIntoTriangulation(index);
    }
}

// Stores p unless a vertex lies within `tolerance` of it in x-y, and inserts
// it only inside the present triangulation; true if it stays.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::InsertSampleInside(const SSEPoint& p, float tolerance)
{
    if constexpr (HasCircumCircle<T>) {
        if (IsVertexExist(p, tolerance) != -1) return false;
        const int index = NumVertices;
        AppendVertex(p);
        if (NumVertices == index) return false;
        Self().InsertVertexIntoTriangulationNoExterior(index);
        return NumVertices > index;
    }
    return false;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DistanceImageInsertPoints(CSSEMatrix* mask, CSSEMatrix* height, bool cellCorners,
                                                       int sampling, bool finalize)
{
    if constexpr (HasCircumCircle<T>) {
        if (!detail::Readable(mask) || !detail::Readable(height)) return;
        Self().LeaveFinalizedState();
        const int sizeX = mask->GetSizeX();
        const int sizeY = mask->GetSizeY();
        if (!cellCorners) {
            for (int y = 0; y < sizeY; ++y) {
                for (int x = 0; x < sizeX; ++x) {
                    if (mask->GetPoint(x, y) == 0.0f) continue;
                    const float fx = static_cast<float>(x);
                    const float fy = static_cast<float>(y);
                    InsertSampleInside(detail::PointAt(fx, fy, height->GetPoint(x, y)), 0.5f);
                }
            }
        } else {
            // The cell's centre, then the points a quarter in from its corners.
            constexpr float kOffsets[5][2] = {{0.5f, 0.5f}, {0.25f, 0.25f}, {0.75f, 0.25f}, {0.25f, 0.75f},
                                              {0.75f, 0.75f}};
            const int samples = sampling == 1 ? 1 : 5;
            for (int y = 0; y + 1 < sizeY; ++y) {
                for (int x = 0; x + 1 < sizeX; ++x) {
                    if (mask->GetPoint(x, y) == 0.0f || mask->GetPoint(x + 1, y) == 0.0f ||
                        mask->GetPoint(x, y + 1) == 0.0f || mask->GetPoint(x + 1, y + 1) == 0.0f)
                        continue;
                    for (int k = 0; k < samples; ++k) {
                        const float px = static_cast<float>(x) + kOffsets[k][0];
                        const float py = static_cast<float>(y) + kOffsets[k][1];
                        InsertSampleInside(detail::PointAt(px, py, detail::HeightBetweenCells(*height, px, py)),
                                           0.249f);
                    }
                }
            }
        }
        Self().ReturnToFinalizedState(finalize);
    }
}

// The centroid of a triangle rounded to a cell, where that cell lies inside
// the triangle, with the cell's indices; false where the rounding carried it
// out of the triangle (or onto a side).
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::CellCentroidInside(const T* triangle, SSEPoint& centroid, float& cellX,
                                                float& cellY) const
{
    if constexpr (HasCircumCircle<T>) {
        const SSEPoint& a = Vertices[triangle->Vertex[0]];
        const SSEPoint& b = Vertices[triangle->Vertex[1]];
        const SSEPoint& c = Vertices[triangle->Vertex[2]];
        centroid = detail::CentroidOf(a, b, c);
        cellX = detail::RoundedToCell(centroid.x);
        cellY = detail::RoundedToCell(centroid.y);
        return static_cast<const D&>(*this).PointWhere(cellX, cellY, triangle) == ePointInside;
    }
    return false;
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::HighDerivationInsertPoints(CSSEMatrix* height, CSSEMatrix* mask, float limit,
                                                        bool finalize)
{
    if constexpr (HasCircumCircle<T>) {
        if (!detail::Readable(height) || !detail::Readable(mask)) return;
        const float limit2 = limit * limit;
        Self().LeaveFinalizedState();
        const int first = NumVertices;
        for (T* triangle : TrianglesOfTheMoment()) {
            if (!IsInnerTriangle(triangle)) continue;
            SSEPoint centroid;
            float x = 0.0f;
            float y = 0.0f;
            if (!CellCentroidInside(triangle, centroid, x, y)) continue;
            if (detail::ValueAtCell(*mask, x, y) == 0.0f) continue;
            const float h = detail::ValueAtCell(*height, x, y);
            if (detail::HeightsDepart(Vertices[triangle->Vertex[0]].z, Vertices[triangle->Vertex[1]].z,
                                      Vertices[triangle->Vertex[2]].z, h, limit2))
                AppendVertex(detail::PointAt(x, y, h));
        }
        InsertStoredVerticesFrom(first);
        Self().ReturnToFinalizedState(finalize);
    }
}

// The frame of the forms that split as they walk: each triangle of the
// moment whose cell centroid lies inside it, off the mask's background and
// within 5.0 of the field, and that `wants(triangle, h)`, is split into
// three around the cell point at the field's height h. The pieces join the
// working list after the walk.
template <class D, class T, class E>
template <class Wants>
void TriangleGraph<D, T, E>::SplitAtCellCentroids(CSSEMatrix* height, CSSEMatrix* mask, bool legalize,
                                                  bool finalize, Wants wants)
{
    if constexpr (HasCircumCircle<T>) {
        if (!detail::Readable(height) || !detail::Readable(mask)) return;
        // The mask's background: its maximum with `legalize`, else its
        // minimum, as BuildMaskFromMatrix reads it with its flag.
        const float background = detail::RasterBackground(*mask, !legalize);
        Self().LeaveFinalizedState();
        TriangleListType pieces;
        for (T* triangle : TrianglesOfTheMoment()) {
            if (triangle->Ignore) continue;
            SSEPoint centroid;
            float x = 0.0f;
            float y = 0.0f;
            if (!CellCentroidInside(triangle, centroid, x, y)) continue;
            if (detail::ValueAtCell(*mask, x, y) == background) continue;
            const float h = detail::ValueAtCell(*height, x, y);
            if (std::fabs(h - centroid.z) > 5.0f || !wants(triangle, h)) continue;
            MakeRoomIfFull();
            AppendVertex(detail::PointAt(x, y, h));
            BildNewTriangulesWithCenter(triangle, NumVertices - 1, &pieces);
        }
        CopyTriangleListInList(&pieces, &TriangleList);
        KillIgnoredTrianglesFromTriangleList(true);
        if (legalize) CheckEdgeFlip(&TriangleList);
        Self().ReturnToFinalizedState(finalize);
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::HighDerivationInsertPoints(CSSEMatrix* height, CSSEMatrix* mask, bool legalize,
                                                        float limit, bool finalize)
{
    const float limit2 = limit * limit;
    SplitAtCellCentroids(height, mask, legalize, finalize, [this, limit2](const T* triangle, float h) {
        return detail::HeightsDepart(Vertices[triangle->Vertex[0]].z, Vertices[triangle->Vertex[1]].z,
                                     Vertices[triangle->Vertex[2]].z, h, limit2);
    });
}

template <class D, class T, class E>
bool TriangleGraph<D, T, E>::SecondHighDerivationInsertPoints(CSSEMatrix* height, CSSEMatrix* mask,
                                                              CSSEMatrix* curvature, float limit, bool finalize)
{
    if constexpr (HasCircumCircle<T>) {
        if (!detail::Readable(height) || !detail::Readable(mask) || !detail::Readable(curvature)) return false;
        const float limit2 = limit * limit;
        const float steepCosine = std::cos(0.3490658f);
        Self().LeaveFinalizedState();
        const int first = NumVertices;
        for (T* triangle : TrianglesOfTheMoment()) {
            if (!IsInnerTriangle(triangle)) continue;
            SSEPoint centroid;
            float x = 0.0f;
            float y = 0.0f;
            if (!CellCentroidInside(triangle, centroid, x, y)) continue;
            if (detail::ValueAtCell(*mask, x, y) == 0.0f) continue;
            const SSEPoint& a = Vertices[triangle->Vertex[0]];
            const SSEPoint& b = Vertices[triangle->Vertex[1]];
            const SSEPoint& c = Vertices[triangle->Vertex[2]];
            const __m128 normal = CSSEFns::vectorproduct(_mm_sub_ps(b.sse, a.sse), _mm_sub_ps(c.sse, a.sse));
            SSEPoint unit;
            unit.sse = CSSEFns::normalizevector(normal);
            if (!(std::fabs(unit.z) < steepCosine)) continue;
            const float h = detail::ValueAtCell(*height, x, y);
            if (!detail::HeightsDepart(a.z, b.z, c.z, h, limit2)) continue;
            if (!(std::fabs(h - centroid.z) > 2.0f)) continue;
            if (!(std::fabs(detail::ValueAtCell(*curvature, x, y)) > 5.0f)) continue;
            const SSEPoint point = detail::PointAt(x, y, h);
            if (PointIndex(point) == -1) AppendVertex(point);
        }
        const bool stored = NumVertices > first;
        InsertStoredVerticesFrom(first);
        Self().ReturnToFinalizedState(finalize);
        return stored;
    }
    return false;
}

template <class D, class T, class E>
float TriangleGraph<D, T, E>::CalcDistancePointLine(const SSEPoint& point, const SSEPoint& lineStart,
                                                    const SSEPoint& lineEnd)
{
    const __m128 along = _mm_sub_ps(lineEnd.sse, lineStart.sse);
    if (!(CSSEFns::vectorlen(along) >= 0.001f)) return -1.0f;
    const __m128 toPoint = _mm_sub_ps(point.sse, lineStart.sse);
    const float t = CSSEFns::scalarproduct(toPoint, along) / CSSEFns::scalarproduct(along, along);
    const __m128 foot = _mm_add_ps(lineStart.sse, _mm_mul_ps(along, _mm_set1_ps(t)));
    return CSSEFns::euclideandistance(point.sse, foot);
}

template <class D, class T, class E>
float TriangleGraph<D, T, E>::CalcDisPointToEdge(const T* triangle, int side, const SSEPoint& point) const
{
    if (triangle == nullptr || side < 0 || side > 2) return -1.0f;
    const SSEPoint& start = Vertices[triangle->Vertex[side]];
    const SSEPoint& end = Vertices[triangle->Vertex[(side + 1) % 3]];
    const float length = CSSEFns::euclideandistance(end.sse, start.sse);
    const float step = std::min(length / 10.0f, 0.1f);
    if (!(step > 0.0f)) return -1.0f;
    const auto distance3D = [&point](const SSEPoint& q) {
        const float dx = q.x - point.x;
        const float dy = q.y - point.y;
        const float dz = q.z - point.z;
        return std::sqrt(dx * dx + dy * dy + dz * dz);
    };
    const int n = detail::TruncatedCount(length / step);
    float best = 999.9f;
    SSEPoint running = start;
    for (int k = 0; k <= n; ++k) {
        best = std::min(best, distance3D(running));
        running.sse = _mm_add_ps(running.sse, _mm_set1_ps(step));
    }
    return std::min(best, distance3D(end));
}

// The side test of HighEdgeLengthInsertPoints: a side of at least `limit`
// in 3D, all three longer than 1.0, and no sliver. A triangle whose widest
// angle reaches 165 degrees is a sliver unless that corner stands more than
// 0.5 off the opposite side (a side shorter than 0.001 gives no distance):
// splitting a sliver would only make thinner ones.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::HasLongSides(const T* triangle, float limit) const
{
    const int* v = triangle->Vertex;
    if (v[0] == v[1] || v[1] == v[2] || v[0] == v[2]) return false;
    const SSEPoint* corner[3] = {&Vertices[v[0]], &Vertices[v[1]], &Vertices[v[2]]};
    float angle[3];
    for (int k = 0; k < 3; ++k) {
        const float cosine = InnerAngleCosine(*corner[k], *corner[(k + 1) % 3], *corner[(k + 2) % 3]);
        angle[k] = std::acos(std::clamp(cosine, -1.0f, 1.0f));
    }
    int widest = 0;
    for (int k = 1; k < 3; ++k) {
        if (angle[k] > angle[widest]) widest = k;
    }
    const float offSide =
        CalcDistancePointLine(*corner[widest], *corner[(widest + 1) % 3], *corner[(widest + 2) % 3]);
    if (!(offSide > 0.5f) && angle[widest] >= 2.879793f) return false;
    bool reaches = false;
    for (int k = 0; k < 3; ++k) {
        const float side = CSSEFns::euclideandistance(corner[(k + 1) % 3]->sse, corner[k]->sse);
        if (!(side > 1.0f)) return false;
        reaches = reaches || side >= limit;
    }
    return reaches;
}

// Flips the obtuse pairs of `list`, each pair once, and makes every
// triangle of it free to flip again.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::FlipObtusePairs(TriangleListType& list)
{
    CheckEdgeFlip(&list);
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        if (T* triangle = list.GetNext(pos)) triangle->FlipState = false;
    }
}

// Collapses sides that have shrunk to nothing, and unfolds pinched pairs.
// A side below a twentieth of a cell goes, unless the whole triangle is a
// speck below 0.001 that a collapse would not improve.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CollapseSlivers()
{
    CheckCollaborateTriangles(&TriangleList, 0.001f, 0.05f);
    KillIgnoredTrianglesFromTriangleList(true);
    CheckDoubleNeighbours();
    KillIgnoredTrianglesFromTriangleList(true);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::HighEdgeLengthInsertPoints(float limit, int iterations, bool finalize)
{
    FlipObtusePairs(Self().PresentList());
    Self().LeaveFinalizedState();
    CollapseSlivers();
    for (int round = 0; round < iterations; ++round) {
        TriangleListType pieces;
        for (T* triangle : TrianglesOfTheMoment()) {
            if (triangle->Ignore || !HasLongSides(triangle, limit)) continue;
            const int* v = triangle->Vertex;
            const SSEPoint centroid = detail::CentroidOf(Vertices[v[0]], Vertices[v[1]], Vertices[v[2]]);
            MakeRoomIfFull();
            int index = PointIndex3D(centroid, 0, NumVertices - 1);
            if (index < 0) {
                AppendVertex(centroid);
                index = NumVertices - 1;
            }
            BuildNewTriangles(index, triangle, &pieces);
        }
        CopyTriangleListInList(&pieces, &TriangleList);
        KillIgnoredTrianglesFromTriangleList(true);
        FlipObtusePairs(TriangleList);
        CollapseSlivers();
    }
    Self().ReturnToFinalizedState(finalize);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::HighEdgeLengthInsertPoints(CSSEMatrix* height, CSSEMatrix* mask, bool legalize,
                                                        float limit, bool finalize)
{
    SplitAtCellCentroids(height, mask, legalize, finalize,
                         [this, limit](const T* triangle, float) { return HasLongSides(triangle, limit); });
}

// Whether every side of the triangle is longer than the root of `limit2` in
// x-y, each side's vector taken as twice the way from its start to its
// mid-point.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::AllSidesLongerXY(const T* triangle, float limit2) const
{
    for (int side = 0; side < 3; ++side) {
        const SSEPoint& start = Vertices[triangle->Vertex[side]];
        const SSEPoint& end = Vertices[triangle->Vertex[(side + 1) % 3]];
        const float midX = (start.x + end.x) * 0.5f;
        const float midY = (start.y + end.y) * 0.5f;
        const float dx = (midX - start.x) * 2.0f;
        const float dy = (midY - start.y) * 2.0f;
        if (!(dx * dx + dy * dy > limit2)) return false;
    }
    return true;
}

// The rounds of RefineTriangulation; a null field is no test.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::RefineInRounds(const CSSEMatrix* first, const CSSEMatrix* second, float limit,
                                            int iterations, float margin)
{
    if constexpr (HasCircumCircle<T>) {
        const float limit2 = limit * limit;
        const float margin2 = margin * margin;
        const bool wasFinalized = Self().LeaveFinalizedState();
        for (int round = 0; round < iterations; ++round) {
            const int triangles = static_cast<int>(TriangleList.GetCount());
            if (NumVertices + triangles > MaxNumVertices) ReallocSize(NumVertices + triangles);
            const int stored = NumVertices;
            for (T* triangle : TrianglesOfTheMoment()) {
                if (!IsInnerTriangle(triangle) || !AllSidesLongerXY(triangle, limit2)) continue;
                const SSEPoint& a = Vertices[triangle->Vertex[0]];
                const SSEPoint& b = Vertices[triangle->Vertex[1]];
                const SSEPoint& c = Vertices[triangle->Vertex[2]];
                if (!detail::CornersDepart(a.z, b.z, c.z, margin2)) continue;
                SSEPoint centroid;
                float x = 0.0f;
                float y = 0.0f;
                const bool inside = CellCentroidInside(triangle, centroid, x, y);
                const float lowest = std::min({a.z, b.z, c.z});
                const float highest = std::max({a.z, b.z, c.z});
                if (!(centroid.z >= lowest - margin && centroid.z <= highest + margin)) continue;
                bool onFields = true;
                for (const CSSEMatrix* field : {first, second}) {
                    if (field != nullptr) onFields = onFields && inside && detail::ValueAtCell(*field, x, y) != 0.0f;
                }
                if (!onFields) continue;
                AppendVertex(centroid);
            }
            if (NumVertices == stored) break;
            InsertStoredVerticesFrom(stored);
        }
        Self().ReturnToFinalizedState(wasFinalized);
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RefineTriangulation(float limit, int iterations, float margin)
{
    RefineInRounds(nullptr, nullptr, limit, iterations, margin);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RefineTriangulation(CSSEMatrix* field, float limit, int iterations, float margin)
{
    if (detail::Readable(field)) RefineInRounds(field, nullptr, limit, iterations, margin);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RefineTriangulation(CSSEMatrix* first, CSSEMatrix* second, float limit, int iterations,
                                                 float margin)
{
    if (detail::Readable(first) && detail::Readable(second)) RefineInRounds(first, second, limit, iterations, margin);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RefineBorderTriangulationConstrained(CSSEMatrix* height, CSSEMatrix* mask, int count)
{
    if constexpr (HasCircumCircle<T>) {
        if (!detail::Readable(height) || !detail::Readable(mask) || count < 1) return;
        const bool wasFinalized = Self().LeaveFinalizedState();
        Self().IsolateTrianglesWithoutNeighbour();
        // The open sides of the moment, by their end points: the insertions
        // below split them, and the samples go on along the pieces.
        std::vector<std::pair<SSEPoint, SSEPoint>> sides;
        for (T* triangle : TrianglesOfTheMoment()) {
            if (!triangle->Border) continue;
            for (int side = 0; side < 3; ++side) {
                const T* neighbour = triangle->Neighbour[side];
                if (neighbour != nullptr && !neighbour->Outside) continue;
                sides.emplace_back(Vertices[triangle->Vertex[side]], Vertices[triangle->Vertex[(side + 1) % 3]]);
            }
        }
        int added = 0;
        for (const auto& [start, end] : sides) {
            const __m128 delta = _mm_sub_ps(end.sse, start.sse);
            const float length = CSSEFns::vectorlen(delta);
            const float step = std::min(length / 10.0f, 0.1f);
            if (!(step > 0.0f)) continue;
            const int n = detail::TruncatedCount(length / step);
            const __m128 direction = _mm_mul_ps(_mm_div_ps(delta, _mm_set1_ps(length)), _mm_set1_ps(step));
            for (int k = 1; k < n && added < count; ++k) {
                SSEPoint p;
                p.sse = _mm_add_ps(start.sse, _mm_mul_ps(direction, _mm_set1_ps(static_cast<float>(k))));
                if (detail::ValueAtCell(*mask, p.x, p.y) == 0.0f) continue;
                p = detail::PointAt(p.x, p.y, detail::ValueAtCell(*height, p.x, p.y));
                MakeRoomIfFull();
                if (InsertSampleInside(p, 0.5f)) ++added;
            }
        }
        Self().ReturnToFinalizedState(wasFinalized);
    }
}

} // namespace vek
