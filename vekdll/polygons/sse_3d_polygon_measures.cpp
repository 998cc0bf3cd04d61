// Box, centre, circumference and areas of a polygon.

#include <algorithm>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// The box starts inverted at these limits, so that an empty polygon keeps an
// inverted box and no coordinate beyond them widens it.
constexpr float kBoxLimit = 1000000.0f;

__m128 WithLaneZeroed(__m128 v, int lane)
{
    SSEPoint p;
    p.sse = v;
    p.lane[lane] = 0.0f;
    return p.sse;
}

// Truncation towards zero that gives INT_MIN, not undefined behaviour, for a
// box corner beyond the range of int.
int TruncateToInt(float v)
{
    return _mm_cvttss_si32(_mm_set_ss(v));
}

// Twice the signed area of the closed line in the plane of the coordinates
// a and b: the sum of a(i)*b(i+1) - a(i+1)*b(i) along the line, then the
// closing edge from the last point to the first.
float TwiceSignedArea(const float* a, const float* b, int n)
{
    float sum = 0.0f;
    for (int i = 0; i < n - 1; ++i) sum += a[i] * b[i + 1] - a[i + 1] * b[i];
    if (n >= 2) sum += a[n - 1] * b[0] - a[0] * b[n - 1];
    return sum;
}

} // namespace

void CSSE3dPolygon::CalcBoundingBox()
{
    __m128 top = _mm_set1_ps(-kBoxLimit);
    __m128 bottom = _mm_set1_ps(kBoxLimit);
    for (int i = 0; i < NumPoints; ++i) {
        const __m128 p = _mm_setr_ps(PointsX[i], PointsY[i], PointsZ[i], 0.0f);
        // The point is the first operand: max and min return the second one
        // when either is not-a-number, so such a coordinate leaves the box as it is.
        top = _mm_max_ps(p, top);
        bottom = _mm_min_ps(p, bottom);
    }
    TopRight->sse = WithLaneZeroed(top, 3);
    BottomLeft->sse = WithLaneZeroed(bottom, 3);
    TopRight2D->sse = WithLaneZeroed(TopRight->sse, 2);
    BottomLeft2D->sse = WithLaneZeroed(BottomLeft->sse, 2);
    BoundingBoxCalculated = true;
}

void CSSE3dPolygon::GetBoundingBox2D(int& xmin, int& ymin, int& xmax, int& ymax)
{
    if (!BoundingBoxCalculated) CalcBoundingBox();
    xmin = TruncateToInt(std::min(BottomLeft->x, TopRight->x));
    ymin = TruncateToInt(std::min(BottomLeft->y, TopRight->y));
    xmax = TruncateToInt(std::max(BottomLeft->x, TopRight->x));
    ymax = TruncateToInt(std::max(BottomLeft->y, TopRight->y));
}

void CSSE3dPolygon::GetBoundingBox3D(float& xmin, float& ymin, float& zmin, float& xmax, float& ymax, float& zmax)
{
    // The corners are ordered again on the way out, so the inverted box of an
    // empty polygon reads as -1000000 .. 1000000 on each axis.
    if (!BoundingBoxCalculated) CalcBoundingBox();
    xmin = std::min(BottomLeft->x, TopRight->x);
    ymin = std::min(BottomLeft->y, TopRight->y);
    zmin = std::min(BottomLeft->z, TopRight->z);
    xmax = std::max(BottomLeft->x, TopRight->x);
    ymax = std::max(BottomLeft->y, TopRight->y);
    zmax = std::max(BottomLeft->z, TopRight->z);
}

SSEPoint CSSE3dPolygon::GetTopRight() const
{
    return *TopRight;
}

SSEPoint CSSE3dPolygon::GetBottomLeft() const
{
    return *BottomLeft;
}

void CSSE3dPolygon::CalcGeometricCenter()
{
    // Each point is divided by n before it is added, which keeps the running
    // sum at the size of one coordinate however long the line is.
    __m128 sum = _mm_setzero_ps();
    const __m128 count = _mm_set1_ps(static_cast<float>(NumPoints));
    for (int i = 0; i < NumPoints; ++i) {
        const __m128 p = _mm_setr_ps(PointsX[i], PointsY[i], PointsZ[i], 0.0f);
        sum = _mm_add_ps(sum, _mm_div_ps(p, count));
    }
    GeometricCenter->sse = sum;
}

void CSSE3dPolygon::GetGeometricCenter(SSEPoint& centre) const
{
    centre = *GeometricCenter;
}

float CSSE3dPolygon::CalcCircumference() const
{
    float length = 0.0f;
    SSEPoint from;
    SSEPoint to;
    for (int i = 0; i < NumPoints; ++i) {
        GetPointSSE(i, from);
        GetPointSSE((i + 1) % NumPoints, to);
        length += CSSEFns::euclideandistance(from.sse, to.sse);
    }
    return length;
}

float CSSE3dPolygon::CalcXYArea() const
{
    return TwiceSignedArea(PointsX, PointsY, NumPoints);
}

float CSSE3dPolygon::CalcXZArea() const
{
    return TwiceSignedArea(PointsX, PointsZ, NumPoints);
}

float CSSE3dPolygon::CalcYZArea() const
{
    return TwiceSignedArea(PointsY, PointsZ, NumPoints);
}
