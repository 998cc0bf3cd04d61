// A polygon edited against a second one: appended, morphed, or partly replaced.

#include <algorithm>
#include <climits>
#include <vector>

#include "vekdll/polygons/polygon_point_math.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::Blend;
using vek::detail::TruncatedCount;

namespace {

// ResetPointsBetweenBB follows the other line at this spacing in x.
constexpr float kCourseSpacing = 0.5f;

// The x positions of the walk from `from` towards `to` (exclusive) in steps
// of `step`, at most `limit` of them. A walk whose step no longer changes x
// (coordinates so large that half a unit is lost) ends there.
std::vector<float> WalkInX(float from, float to, float step, int limit)
{
    std::vector<float> xs;
    const bool down = step < 0.0f;
    for (float x = from; (down ? x > to : x < to) && static_cast<int>(xs.size()) < limit;) {
        xs.push_back(x);
        const float next = x + step;
        if (next == x) break;
        x = next;
    }
    return xs;
}

} // namespace

void CSSE3dPolygon::AppendPoints(CSSE3dPolygon& other)
{
    if (other.NumPoints == 0) return;
    if (NumPoints == 0) {
        CreateSimilar(&other);
        return;
    }
    const int n = NumPoints;
    const int m = other.NumPoints;
    CSSE3dPolygon local;
    local.Create(n + m);
    for (int i = 0; i < n; ++i) local.SetPoint(i, PointsX[i], PointsY[i], PointsZ[i]);
    for (int i = 0; i < m; ++i) local.SetPoint(n + i, other.PointsX[i], other.PointsY[i], other.PointsZ[i]);
    TakePointsOf(local, n + m);
}

void CSSE3dPolygon::MoveTowardsPolygon(CSSE3dPolygon* other, float t)
{
    if (other == nullptr) return;
    // A point beyond the end of `other` is blended with the zero point, which
    // is what reading it gives.
    SSEPoint a;
    SSEPoint b;
    for (int i = 0; i < NumPoints; ++i) {
        GetPointSSE(i, a);
        other->GetPointSSE(i, b);
        a.sse = Blend(a.sse, b.sse, t);
        SetPointSSE(i, a);
    }
}

void CSSE3dPolygon::ResetPointsBetweenBB(CSSE3dPolygon* other)
{
    // A line of fewer than two points has no stretch between its ends.
    if (other == nullptr || NumPoints < 2) return;
    CSSE3dPolygon course;
    course.CreateSimilar(other);
    course.ReParametrizeOpen(kCourseSpacing);

    CalcBoundingBox();
    const float xmin = BottomLeft->x;
    const float xmax = TopRight->x;
    const int n = NumPoints;
    const long long wanted = static_cast<long long>(TruncatedCount(2.0f * (xmax - xmin) + 0.5f)) + n;
    const int room = static_cast<int>(std::min<long long>(wanted, INT_MAX));

    // The line starts in its leftmost region and j is in its rightmost one,
    // both found among every second point.
    ChangeStartPoint(ClosestPointX(xmin), nullptr);
    const int j = ClosestPointX(xmax);
    if (j < 0) return;

    // Counter-clockwise, points 0 .. j are the lower run from left to right;
    // the upper run back is replaced by the course of `other` from right to
    // left. Clockwise, the course goes first, from left to right, and the
    // run from j to the end follows. That run reads one point past the line,
    // which gives the zero point: the line ends at (0, 0, 0).
    const bool counterClockwise = CalcXYArea() > 0.0f;
    const std::vector<float> walk = counterClockwise ? WalkInX(xmax, xmin, -kCourseSpacing, room)
                                                     : WalkInX(xmin, xmax, kCourseSpacing, room);
    CSSE3dPolygon local;
    local.Create(static_cast<int>(std::min<long long>(room, static_cast<long long>(walk.size()) + n + 1)));
    int count = 0;
    const auto add = [&](SSEPoint p) {
        if (count < local.NumPoints) local.SetPointSSE(count++, p);
    };
    const auto addPoints = [&](int first, int last) {
        for (int i = first; i <= last; ++i) {
            SSEPoint p;
            GetPointSSE(i, p);
            add(p);
        }
    };
    const auto addCourse = [&] {
        for (float x : walk) {
            SSEPoint onCourse;
            course.GetPointSSE(course.ClosestPointX(x), onCourse);
            SSEPoint p;
            p.sse = _mm_setr_ps(x, onCourse.y, 0.0f, 0.0f);
            add(p);
        }
    };
    if (counterClockwise) {
        addPoints(0, j);
        addCourse();
    } else {
        addCourse();
        addPoints(j, n);
    }
    TakePointsOf(local, count);
}
