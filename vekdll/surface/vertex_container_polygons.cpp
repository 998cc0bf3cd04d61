// The vertex store and polygons: storing a polygon's points, taking heights
// from another polygon, projecting polygons on a plane, and turning points
// and a polygon into a view direction.

#include <algorithm>
#include <cmath>
#include <vector>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/vertex_container.h"

namespace {

SSEPoint PointOf(const CSSE3dPolygon& polygon, int i)
{
    SSEPoint p;
    polygon.GetPointSSE(i, p);
    return p;
}

// -1, 0 or 1 by the sign of v.
float SignOf(float v)
{
    return v > 0.0f ? 1.0f : (v < 0.0f ? -1.0f : 0.0f);
}

// The angle between a vector and the target direction (0, 0, +-1), from the
// dot product of their unit vectors, clamped against rounding, and given
// the sign of `side`. A zero sign means no turn: it also covers the vector
// of length 0, which has no direction to measure.
float SignedAngleToTarget(__m128 v, __m128 target, float side)
{
    const float sign = SignOf(side);
    if (sign == 0.0f) return 0.0f;
    const float c = CSSEFns::scalarproduct(CSSEFns::normalizevector(v), target);
    return std::acos(std::clamp(c, -1.0f, 1.0f)) * sign;
}

} // namespace

// Appends the polygon's points in order while there is room. With
// `checkDistance` a point within 1.0 in x-y of a vertex already stored (the
// points just added included) is skipped.
void ZrCSSEVertexContainer::AddPolygon(const CSSE3dPolygon& polygon, bool checkDistance)
{
    for (int i = 0; i < polygon.GetNumPoints(); ++i) {
        if (NumVertices >= MaxNumVertices) continue;
        const SSEPoint p = PointOf(polygon, i);
        if (checkDistance && IsVertexExist(p, 1.0f) >= 0) continue;
        AppendVertex(p);
    }
}

// For each point of `polygon`, the nearest point of `other` (by the
// polygon's ClosestPoint, which measures in 3D) gives its height
// to the vertex that equals the polygon's point in x, y and z.
void ZrCSSEVertexContainer::ResetVertexFromPolygon(const CSSE3dPolygon& polygon, const CSSE3dPolygon& other)
{
    for (int i = 0; i < polygon.GetNumPoints(); ++i) {
        SSEPoint p = PointOf(polygon, i);
        const int nearest = other.ClosestPoint(p);
        if (nearest < 0) continue;
        const int vertex = PointIndex3D(p, 0, NumVertices);
        if (vertex < 0) continue;
        Vertices[vertex].z = PointOf(other, nearest).z;
    }
}

void ZrCSSEVertexContainer::CalcProjectPolygon(const SSEPoint& planePoint, const SSEPoint& normal,
                                               const CSSE3dPolygon& source, CSSE3dPolygon& result)
{
    result.Create(source.GetNumPoints());
    for (int i = 0; i < source.GetNumPoints(); ++i) {
        SSEPoint projected;
        CalcProjectionPoint(PointOf(source, i), projected, planePoint, normal);
        result.SetPointSSE(i, projected);
    }
}

// Keeps the points of `first` that lie closer than `limit` to the point of
// the same index in `second`. Polygons of different lengths are not
// compared. Without a result polygon nothing is kept.
void ZrCSSEVertexContainer::CutProjPolygon(const CSSE3dPolygon& first, const CSSE3dPolygon& second,
                                           CSSE3dPolygon* result, float limit)
{
    const int count = first.GetNumPoints();
    if (count != second.GetNumPoints() || result == nullptr) return;
    std::vector<int> kept;
    for (int i = 0; i < count; ++i) {
        if (CSSEFns::euclideandistance(PointOf(first, i).sse, PointOf(second, i).sse) < limit) kept.push_back(i);
    }
    if (kept.empty()) return;
    result->Create(static_cast<int>(kept.size()));
    for (std::size_t k = 0; k < kept.size(); ++k) {
        SSEPoint p = PointOf(first, kept[k]);
        result->SetPointSSE(static_cast<int>(k), p);
    }
}

// Turns the three points and the polygon, by the MoveVertex rule, so that
// `direction` comes to lie along (0, 0, 1), or (0, 0, -1) with `invert`:
// first about y, by the angle of direction's x-z shadow, then about x. The
// vertices of the store are not touched.
void ZrCSSEVertexContainer::MoveTriangulationAndPolygonWithAngle(SSEPoint* first, SSEPoint* second,
                                                                 SSEPoint& third, const SSEPoint& direction,
                                                                 CSSE3dPolygon* polygon, bool invert)
{
    const __m128 target = _mm_setr_ps(0.0f, 0.0f, invert ? -1.0f : 1.0f, 0.0f);
    const __m128 shadow = _mm_setr_ps(direction.x, 0.0f, direction.z, 0.0f);
    float angleY = SignedAngleToTarget(shadow, target, direction.x);
    if (!invert) angleY = -angleY;

    SSEPoint turned = direction;
    MoveVertex(angleY, 0.0f, turned);
    float angleX = SignedAngleToTarget(turned.sse, target, turned.y);
    if (invert) angleX = -angleX;

    if (first != nullptr) MoveVertex(angleY, angleX, *first);
    if (second != nullptr) MoveVertex(angleY, angleX, *second);
    MoveVertex(angleY, angleX, third);
    if (polygon == nullptr) return;
    for (int i = 0; i < polygon->GetNumPoints(); ++i) {
        SSEPoint p = PointOf(*polygon, i);
        MoveVertex(angleY, angleX, p);
        polygon->SetPointSSE(i, p);
    }
}
