// Resampling a polygon: to a spacing, by arc length, by index, and thinning.

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/near_duplicates.h"
#include "vekdll/polygons/polygon_point_math.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::Blend;
using vek::detail::TruncatedCount;

namespace {

// The inserting forms stop at one point short of a room of 100000 and drop
// anything further. Their output gathers in an array that grows as it
// fills, so that no counting pass is needed and a short line doesn't pay for
// the room of a long one.
constexpr int kBufferRoom = 100000;
constexpr int kBufferFill = kBufferRoom - 1;

// The extremes of ResortAndSubsample start from these, so that a coordinate
// beyond them is never an extreme.
constexpr float kExtremeStart = 999999.9f;

} // namespace

// ---------------------------------------------------------------- inserting points on long segments

void CSSE3dPolygon::ReParametrize(float spacing)
{
    InsertPointsOnLongSegments(spacing, true, false, nullptr);
}

void CSSE3dPolygon::ReParametrize(float spacing, int* indices)
{
    InsertPointsOnLongSegments(spacing, true, false, indices);
}

void CSSE3dPolygon::ReParametrizeOpen(float spacing)
{
    InsertPointsOnLongSegments(spacing, false, false, nullptr);
}

void CSSE3dPolygon::ReParametrizeXYZ(float spacing)
{
    InsertPointsOnLongSegments(spacing, true, true, nullptr);
}

void CSSE3dPolygon::InsertPointsOnLongSegments(float spacing, bool closed, bool heightCounts, int* indices)
{
    std::vector<SSEPoint> output;
    output.reserve(static_cast<std::size_t>(std::clamp(NumPoints, 0, kBufferFill)));
    const auto add = [&](const SSEPoint& p) {
        if (static_cast<int>(output.size()) < kBufferFill) output.push_back(p);
    };
    const int segments = closed ? NumPoints : NumPoints - 1;
    for (int i = 0; i < segments; ++i) {
        SSEPoint from;
        SSEPoint to;
        GetPointSSE(i, from);
        GetPointSSE((i + 1) % NumPoints, to);
        SSEPoint d;
        d.sse = _mm_sub_ps(to.sse, from.sse);
        if (indices != nullptr) indices[i] = static_cast<int>(output.size());

        const float ax = std::fabs(d.x);
        const float ay = std::fabs(d.y);
        const bool isLong = ax > spacing || ay > spacing || (heightCounts && std::fabs(d.z) > spacing);
        if (!isLong) {
            add(from);
            continue;
        }
        // k points from the start on, a step of d / (k + 0.5) apart: the last
        // gap of a segment is one and a half steps. Only x and y decide k, so
        // a segment that is long in z alone gets no point at all.
        const int k = TruncatedCount(std::max(ax / spacing, ay / spacing));
        const __m128 step = _mm_div_ps(d.sse, _mm_set1_ps(static_cast<float>(k) + 0.5f));
        for (int j = 0; j < k && static_cast<int>(output.size()) < kBufferFill; ++j) {
            SSEPoint p;
            p.sse = _mm_add_ps(from.sse, _mm_mul_ps(_mm_set1_ps(static_cast<float>(j)), step));
            add(p);
        }
    }
    const int count = static_cast<int>(output.size());
    CSSE3dPolygon local;
    local.Create(count);
    for (int i = 0; i < count; ++i) local.SetPointSSE(i, output[static_cast<std::size_t>(i)]);
    // The line is made anew rather than similar to a fresh polygon: its box
    // points stay, and since no point moved they still bound the line.
    local.CopyBoxPointsFrom(*this);
    TakePointsOf(local, count);
}

// ---------------------------------------------------------------- by arc length

void CSSE3dPolygon::ReParametrize3D(float spacing)
{
    const int n = NumPoints;
    // No point to start from, or a spacing that would never advance along the line.
    if (n < 1 || !(spacing > 0.0f)) return;
    std::vector<float> length(static_cast<std::size_t>(n));
    std::vector<float> travelled(static_cast<std::size_t>(n) + 1, 0.0f);
    SSEPoint a;
    SSEPoint b;
    for (int i = 1; i <= n; ++i) {
        GetPointSSE(i - 1, a);
        GetPointSSE(i % n, b);
        length[i - 1] = CSSEFns::euclideandistance(a.sse, b.sse);
        travelled[i] = travelled[i - 1] + length[i - 1];
    }
    const int count = std::min(TruncatedCount(travelled[n] / spacing), INT_MAX - 1) + 1;
    CSSE3dPolygon local;
    local.Create(count);
    // The segment of each output is the first one whose end has travelled at
    // least t. Both t and the travelled lengths only grow, so the search goes
    // on from the segment of the previous output instead of from the start
    // and finds the same segment. Past the end of the line (t pushed beyond
    // the total by rounding) the last segment is extrapolated.
    int segment = 0;
    float t = 0.0f;
    for (int k = 0; k < count; ++k) {
        while (segment < n && !(travelled[segment + 1] >= t)) ++segment;
        const int j = std::min(segment, n - 1);
        GetPointSSE(j, a);
        GetPointSSE((j + 1) % n, b);
        // A segment of length 0 that t falls on divides by zero.
        const float f = (t - travelled[j]) / length[j];
        SSEPoint p;
        p.sse = Blend(a.sse, b.sse, f);
        local.SetPointSSE(k, p);
        t += spacing;
    }
    TakePointsOf(local, count);
}

// ---------------------------------------------------------------- thinning

void CSSE3dPolygon::Subsample(int step, bool closeAtMean)
{
    const int n = NumPoints;
    // A step of 0 would divide by zero and a negative one walk backwards.
    if (step < 1 || n < 1) return;
    const int taken = (n - step + 1) / step;
    const int last = (taken - 1) * step;
    const bool extra = last != n - 1;
    CSSE3dPolygon local;
    local.Create(taken + (extra ? 1 : 0));
    for (int k = 0; k < taken; ++k) local.SetPoint(k, PointsX[k * step], PointsY[k * step], PointsZ[k * step]);
    if (extra) {
        SSEPoint p;
        if (closeAtMean && taken > 0) {
            // The bridge between the two ends of a closed line; the true last
            // point is left out.
            SSEPoint first;
            SSEPoint lastTaken;
            local.GetPointSSE(0, first);
            local.GetPointSSE(taken - 1, lastTaken);
            p.sse = _mm_mul_ps(_mm_add_ps(first.sse, lastTaken.sse), _mm_set1_ps(0.5f));
        } else {
            // Also when the step is longer than the line and nothing was taken
            // to bridge between: then the last point is all that is left.
            GetPointSSE(n - 1, p);
        }
        local.SetPointSSE(taken, p);
    }
    TakePointsOf(local, local.NumPoints);
}

namespace {

// One of the four extremes of ResortAndSubsample: strict, so the first point
// wins a tie; -1 while no coordinate has beaten the start value.
template <class Beats>
struct Extreme {
    float value;
    int index = -1;
    void Offer(float v, int i)
    {
        if (Beats{}(v, value)) {
            value = v;
            index = i;
        }
    }
};

} // namespace

void CSSE3dPolygon::ResortAndSubsample(int step)
{
    if (step < 1) return; // as Subsample
    Extreme<std::less<float>> smallestX{kExtremeStart}, smallestY{kExtremeStart};
    Extreme<std::greater<float>> largestX{-kExtremeStart}, largestY{-kExtremeStart};
    for (int i = 0; i < NumPoints; ++i) {
        largestX.Offer(PointsX[i], i);
        smallestX.Offer(PointsX[i], i);
        largestY.Offer(PointsY[i], i);
        smallestY.Offer(PointsY[i], i);
    }
    // A point extreme in two ways comes twice, and counts twice against the rest.
    std::vector<int> extremes;
    std::vector<bool> isExtreme(static_cast<std::size_t>(NumPoints), false);
    for (int index : {smallestX.index, largestX.index, smallestY.index, largestY.index}) {
        if (index < 0) continue;
        extremes.push_back(index);
        isExtreme[static_cast<std::size_t>(index)] = true;
    }
    const int rest = NumPoints - static_cast<int>(extremes.size());
    if (2LL * step > rest) return;

    CSSE3dPolygon others;
    others.Create(static_cast<int>(std::count(isExtreme.begin(), isExtreme.end(), false)));
    int count = 0;
    for (int i = 0; i < NumPoints; ++i) {
        if (!isExtreme[static_cast<std::size_t>(i)]) others.SetPoint(count++, PointsX[i], PointsY[i], PointsZ[i]);
    }
    others.Subsample(step, true);

    CSSE3dPolygon local;
    local.Create(static_cast<int>(extremes.size()) + others.NumPoints);
    count = 0;
    for (int index : extremes) local.SetPoint(count++, PointsX[index], PointsY[index], PointsZ[index]);
    for (int i = 0; i < others.NumPoints; ++i) local.SetPoint(count++, others.PointsX[i], others.PointsY[i], others.PointsZ[i]);
    TakePointsOf(local, count);
}

void CSSE3dPolygon::RemoveEqualPointsXY()
{
    if (NumPoints < 1) return;
    // Every point is compared with all earlier points of the line as it came,
    // dropped ones included. Right after a dropped point a near-duplicate
    // stays, so a run of close points is thinned, never emptied.
    const std::vector<bool> near = vek::detail::EarlierNearDuplicatesXY(PointsX, PointsY, NumPoints);
    std::vector<bool> keep(static_cast<std::size_t>(NumPoints), true);
    int lastDropped = -1;
    for (int j = 1; j < NumPoints; ++j) {
        if (lastDropped != j - 1 && near[static_cast<std::size_t>(j)]) {
            keep[static_cast<std::size_t>(j)] = false;
            lastDropped = j;
        }
    }
    KeepMarkedPoints(keep);
}

// ---------------------------------------------------------------- by index

void CSSE3dPolygon::AdaptPolygons(CSSE3dPolygon* other)
{
    if (other == nullptr) return;
    // Of two lines of one length, this one is resampled (to itself).
    CSSE3dPolygon* shorter = other->NumPoints < NumPoints ? other : this;
    CSSE3dPolygon* longer = shorter == this ? other : this;
    const int s = shorter->NumPoints;
    const int l = longer->NumPoints;
    // A line without points has nothing to resample.
    if (s < 1) return;
    // The local line takes the longer one's shape; only its size counts.
    CSSE3dPolygon local;
    local.CreateSimilar(longer);
    const float f = static_cast<float>(s) / static_cast<float>(l);
    float p = 0.0f;
    SSEPoint a;
    SSEPoint b;
    for (int i = 0; i < l; ++i) {
        // Rounded to the nearest index, so g lies in -0.5 .. 0.5 and a
        // negative g extrapolates back from point k.
        const int k = static_cast<int>(std::nearbyint(p));
        const float g = p - static_cast<float>(k);
        shorter->GetPointSSE(k % s, a);
        shorter->GetPointSSE((k + 1) % s, b);
        SSEPoint q;
        q.sse = Blend(a.sse, b.sse, g);
        local.SetPointSSE(i, q);
        p += f;
    }
    shorter->TakePointsOf(local, l);
}
