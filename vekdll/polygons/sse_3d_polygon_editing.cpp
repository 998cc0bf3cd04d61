// The order of the points of a polygon: its start point and its direction.

#include <algorithm>
#include <cmath>
#include <vector>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// Start value of the search of RotateIndices(): any distance in height from
// the centre beats it, whatever the centre's height.
constexpr float kNoHeightDistance = 999999.9f;

// Start value of the running distance of RotateIndices(other).
constexpr float kAlignmentStart = 10000000.0f;

// Start value of the angle searches: far above any elevation angle.
constexpr float kNoAngle = 31.415928f;

// Lanes of a point that enter the distance to the centre in the angle searches.
const __m128 kLanesXYZ = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
const __m128 kLanesXZ = _mm_castsi128_ps(_mm_setr_epi32(-1, 0, -1, 0));
const __m128 kLanesYZ = _mm_castsi128_ps(_mm_setr_epi32(0, -1, -1, 0));

} // namespace

void CSSE3dPolygon::ChangeStartPoint(SSEPoint& p, int* indices)
{
    ChangeStartPoint(ClosestPoint(p), indices);
}

void CSSE3dPolygon::ChangeStartPoint(int start, int* indices)
{
    // A start outside the line, as the -1 of a failed nearest-point search,
    // is dropped like any index out of range.
    if (!InRange(start)) return;
    ReorderPoints(start, 1);
    if (indices != nullptr) std::rotate(indices, indices + start, indices + NumPoints);
}

void CSSE3dPolygon::InvertPolygonDirection()
{
    if (NumPoints < 1) return;
    ReorderPoints(NumPoints - 1, -1);
}

void CSSE3dPolygon::RotateIndices()
{
    CalcGeometricCenter();
    const SSEPoint c = *GeometricCenter;
    float best = std::fabs(c.y) + kNoHeightDistance;
    int found = 0;
    for (int i = 0; i < NumPoints; ++i) {
        const float d = std::fabs(PointsY[i] - c.y);
        if (PointsX[i] > c.x && d < best) {
            best = d;
            found = i;
        }
    }
    ReorderPoints(found, 1);
}

void CSSE3dPolygon::RotateIndices(CSSE3dPolygon* other)
{
    if (other == nullptr || other->NumPoints != NumPoints) return;
    // The search runs over a table of n x n entries whose row i holds, in
    // every column, the distance of point i of this line to point i of the
    // other. The columns of a row are equal, so a strictly larger entry is
    // only ever met in column 0, and the search over rows alone is the same
    // without the table's n² memory. As the running value starts at 10^7,
    // real lines find nothing: both offsets stay 0 and the lines are only
    // rebuilt.
    float running = kAlignmentStart;
    int row = 0;
    const int column = 0;
    SSEPoint a;
    SSEPoint b;
    for (int i = 0; i < NumPoints; ++i) {
        GetPointSSE(i, a);
        other->GetPointSSE(i, b);
        const float d = CSSEFns::euclideandistance(a.sse, b.sse);
        if (d > running) {
            running = d;
            row = i;
        }
    }
    ReorderPoints(row, 1);
    other->ReorderPoints(column, 1);
}

void CSSE3dPolygon::RotateIndicesXY()
{
    CalcGeometricCenter();
    const SSEPoint c = *GeometricCenter;
    // The direction in which the line spreads more decides which side counts.
    float spreadX = 0.0f;
    float spreadY = 0.0f;
    for (int i = 0; i < NumPoints; ++i) {
        spreadX += std::fabs(PointsX[i] - c.x);
        spreadY += std::fabs(PointsY[i] - c.y);
    }
    std::vector<bool> qualifies(static_cast<std::size_t>(NumPoints));
    for (int i = 0; i < NumPoints; ++i) {
        qualifies[static_cast<std::size_t>(i)] = (PointsX[i] > c.x && spreadX > spreadY) || (PointsY[i] > c.y && spreadY > spreadX);
    }
    StartAtFlattestElevation(kLanesXYZ, qualifies);
}

void CSSE3dPolygon::RotateIndicesXZ()
{
    CalcGeometricCenter();
    std::vector<bool> qualifies(static_cast<std::size_t>(NumPoints));
    for (int i = 0; i < NumPoints; ++i) qualifies[static_cast<std::size_t>(i)] = PointsX[i] > GeometricCenter->x;
    StartAtFlattestElevation(kLanesXZ, qualifies);
}

void CSSE3dPolygon::RotateIndicesYZ()
{
    CalcGeometricCenter();
    std::vector<bool> qualifies(static_cast<std::size_t>(NumPoints));
    for (int i = 0; i < NumPoints; ++i) qualifies[static_cast<std::size_t>(i)] = PointsY[i] > GeometricCenter->y;
    StartAtFlattestElevation(kLanesYZ, qualifies);
}

void CSSE3dPolygon::StartAtFlattestElevation(__m128 lanes, const std::vector<bool>& qualifies)
{
    // The elevation angle asin(dz / r) of each qualifying point seen from the
    // centre, r measured in the lanes given; the smallest |angle| wins,
    // strictly, so the first of equal ones. A point at the centre itself
    // gives 0 / 0 and never wins.
    const SSEPoint c = *GeometricCenter;
    const __m128 centre = _mm_and_ps(c.sse, lanes);
    float best = kNoAngle;
    int found = 0;
    for (int i = 0; i < NumPoints; ++i) {
        if (!qualifies[static_cast<std::size_t>(i)]) continue;
        SSEPoint p;
        GetPointSSE(i, p);
        const float r = CSSEFns::euclideandistance(_mm_and_ps(p.sse, lanes), centre);
        const float angle = std::fabs(std::asin((p.z - c.z) / r));
        if (angle < best) {
            best = angle;
            found = i;
        }
    }
    ReorderPoints(found, 1);
}
