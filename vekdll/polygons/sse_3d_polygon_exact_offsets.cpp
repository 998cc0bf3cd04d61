// Dilation and erosion of a line by a sampled half disc: a cloud of samples
// around every point, of which those inside another point's half disc, and
// inside (dilation) or outside (erosion) the line, are dropped.

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <memory>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

constexpr float kTwoPi = 6.2831855f;
constexpr float kPi = 3.1415927f;
// The height that marks a dropped sample; a sample at or below it counts as dropped.
constexpr float kDropped = -99999.9f;
// Samples per point beyond this can't be held by a polygon, and are refused
// as memory that can't be had.
constexpr long long kMostSamples = 1LL << 30;

// The number of quarters of the sampled circle, 1 - trunc(scaledRatio), from
// the ratio of its length to the sample spacing times -0.25: a part quarter
// counts as a whole one. A ratio that is not a number gives no quarter; one
// beyond the range of a count gives more samples than a polygon can hold.
long long QuartersOf(float scaledRatio)
{
    if (std::isnan(scaledRatio)) return 0;
    if (!(std::fabs(scaledRatio) < static_cast<float>(kMostSamples))) return kMostSamples;
    return 1 - static_cast<long long>(scaledRatio);
}

struct FreeFloats {
    void operator()(float* p) const { SafeFree(p); }
};
using FloatArray = std::unique_ptr<float[], FreeFloats>;

FloatArray FloatsFor(std::uint64_t count)
{
    return FloatArray(static_cast<float*>(SafeMalloc(count * sizeof(float))));
}

// The sample cloud: block i holds the K samples of the half disc laid on
// point i, in order.
struct SampleCloud {
    FloatArray x;
    FloatArray y;
    FloatArray z;
    long long count;

    bool Lives(long long j) const { return z[j] > kDropped; }
    void Drop(long long j) { z[j] = kDropped; }
};

} // namespace

void CSSE3dPolygon::DilateExact(float radius)
{
    // The mean segment of an empty line would divide by zero.
    if (NumPoints < 1) return;
    const float meanSegment = CalcCircumference() / static_cast<float>(NumPoints);
    KeepSamplesOfHalfDiscs(radius, 4 * QuartersOf(radius * kTwoPi / meanSegment * -0.25f), false);
}

void CSSE3dPolygon::ErodeExact(float radius)
{
    KeepSamplesOfHalfDiscs(radius, 4 * QuartersOf(radius * kTwoPi * -0.25f), true);
}

void CSSE3dPolygon::KeepSamplesOfHalfDiscs(float radius, long long samples, bool keepInside)
{
    const int n = NumPoints;
    // A negative radius gives no samples at all, and the line stays.
    if (n < 1 || samples < 1) return;
    if (samples >= kMostSamples) AfxThrowMemoryException();
    const int k = static_cast<int>(samples);

    // The half disc from the angle 0 up to just below pi, closed by its chord.
    CSSE3dPolygon halfDisc;
    halfDisc.Create(k);
    for (int s = 0; s < k; ++s) {
        const float t = static_cast<float>(s) * kPi / static_cast<float>(k);
        halfDisc.SetPoint(s, radius * std::cos(t), radius * std::sin(t), 0.0f);
    }
    const std::uint64_t cloudSize = static_cast<std::uint64_t>(n) * static_cast<std::uint64_t>(k);
    SampleCloud cloud{FloatsFor(cloudSize), FloatsFor(cloudSize), FloatsFor(cloudSize), static_cast<long long>(cloudSize)};
    CSSE3dPolygon laid;
    const auto layOn = [&](int i) {
        laid.CreateSimilar(&halfDisc);
        laid.ShiftLine(PointsX[i], PointsY[i], PointsZ[i]);
    };
    for (int i = 0; i < n; ++i) {
        layOn(i);
        const long long block = static_cast<long long>(i) * k;
        for (int s = 0; s < k; ++s) laid.GetPoint(s, cloud.x[block + s], cloud.y[block + s], cloud.z[block + s]);
    }
    // Samples inside the half disc of another point go.
    for (int i = 0; i < n; ++i) {
        layOn(i);
        for (long long j = 0; j < cloud.count; ++j) {
            if (j / k == i || !cloud.Lives(j)) continue;
            if (laid.PointInLineInnerArea(cloud.x[j], cloud.y[j], 1)) cloud.Drop(j);
        }
    }
    // Then those inside the line (dilation), or those outside it (erosion).
    long long living = 0;
    for (long long j = 0; j < cloud.count; ++j) {
        if (!cloud.Lives(j)) continue;
        if (PointInLineInnerArea(cloud.x[j], cloud.y[j], 1) != keepInside) {
            cloud.Drop(j);
        } else {
            ++living;
        }
    }
    // A line that loses every sample keeps its points. The new line has a
    // place for each living sample; a sample whose own height marked it as
    // dropped from the start has none, where counting down from n K would
    // leave places that nothing fills.
    if (living == 0) return;
    Create(static_cast<int>(std::min<long long>(living, INT_MAX)));
    int next = 0;
    for (long long j = 0; j < cloud.count && next < NumPoints; ++j) {
        if (cloud.Lives(j)) SetPoint(next++, cloud.x[j], cloud.y[j], cloud.z[j]);
    }
}
