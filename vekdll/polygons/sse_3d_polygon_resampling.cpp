// Resampling a polygon to a spacing.

#include <algorithm>
#include <climits>
#include <cmath>

#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// The inserting forms collect their output in a buffer of fixed room, so
// that no counting pass is needed; they fill it to one point short of the
// room and drop anything further.
constexpr int kBufferRoom = 100000;
constexpr int kBufferFill = kBufferRoom - 1;

// Points to put on a segment of `ratio` spacings: the ratio truncated, read
// as none when it is not a number and as more than any buffer holds when it
// is beyond the range of int.
int SegmentPointCount(float ratio)
{
    if (!(ratio >= 0.0f)) return 0;
    if (ratio >= static_cast<float>(INT_MAX)) return INT_MAX;
    return static_cast<int>(ratio);
}

} // namespace

void CSSE3dPolygon::ReParametrize(float spacing)
{
    InsertPointsOnLongSegments(spacing, true, false, nullptr);
}

void CSSE3dPolygon::ReParametrize(float spacing, int* indices)
{
    InsertPointsOnLongSegments(spacing, true, false, indices);
}

void CSSE3dPolygon::InsertPointsOnLongSegments(float spacing, bool closed, bool heightCounts, int* indices)
{
    CSSE3dPolygon buffer;
    buffer.Create(kBufferRoom);
    int count = 0;
    const int segments = closed ? NumPoints : NumPoints - 1;
    for (int i = 0; i < segments; ++i) {
        SSEPoint from;
        SSEPoint to;
        GetPointSSE(i, from);
        GetPointSSE((i + 1) % NumPoints, to);
        SSEPoint d;
        d.sse = _mm_sub_ps(to.sse, from.sse);
        if (indices != nullptr) indices[i] = count;

        const float ax = std::fabs(d.x);
        const float ay = std::fabs(d.y);
        const bool isLong = ax > spacing || ay > spacing || (heightCounts && std::fabs(d.z) > spacing);
        if (!isLong) {
            if (count < kBufferFill) buffer.SetPointSSE(count++, from);
            continue;
        }
        // k points from the start on, a step of d / (k + 0.5) apart: the last
        // gap of a segment is one and a half steps. Only x and y decide k, so
        // a segment that is long in z alone gets no point at all.
        const int k = SegmentPointCount(std::max(ax / spacing, ay / spacing));
        const __m128 step = _mm_div_ps(d.sse, _mm_set1_ps(static_cast<float>(k) + 0.5f));
        for (int j = 0; j < k && count < kBufferFill; ++j) {
            SSEPoint p;
            p.sse = _mm_add_ps(from.sse, _mm_mul_ps(_mm_set1_ps(static_cast<float>(j)), step));
            buffer.SetPointSSE(count++, p);
        }
    }

    Create(count);
    std::copy_n(buffer.PointsX, count, PointsX);
    std::copy_n(buffer.PointsY, count, PointsY);
    std::copy_n(buffer.PointsZ, count, PointsZ);
}
