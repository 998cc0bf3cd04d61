// The point-in-area test of the closed line, and the tests of whole lines built on it.

#include <vector>

#include "vekdll/polygons/inner_area_chords.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// One chord of the even-odd count: it toggles where it is counted at the
// test column and passes strictly above the test point.
bool CrossesAbove(float x, float y, float prevX, float prevY, float curX, float curY)
{
    using namespace vek::detail;
    return ChordCountsAtColumn(x, prevX, curX) && ChordPassesAbove(OrderedChord(prevX, prevY, curX, curY), x, y);
}

} // namespace

bool CSSE3dPolygon::InnerAreaTest(__m128 point, const float* xs, const float* ys, int step)
{
    const int n = NumPoints;
    // A step below 1 would never end the walk; nobody asks for it.
    if (n < 3 || step < 1) return false;
    if (!BoundingBoxCalculated) CalcBoundingBox();
    const __m128 below = _mm_cmplt_ps(point, BottomLeft2D->sse);
    const __m128 above = _mm_cmpgt_ps(point, TopRight2D->sse);
    if (_mm_movemask_ps(_mm_or_ps(below, above)) != 0) return false;

    SSEPoint p;
    p.sse = point;
    bool inside = false;
    float prevX = xs[n - 1];
    float prevY = ys[n - 1];
    for (int i = 0; i <= n - step; i += step) {
        if (CrossesAbove(p.x, p.y, prevX, prevY, xs[i], ys[i])) inside = !inside;
        prevX = xs[i];
        prevY = ys[i];
    }
    // A thinned line is closed by one more chord to the last point.
    if (step >= 2 && CrossesAbove(p.x, p.y, prevX, prevY, xs[n - 1], ys[n - 1])) inside = !inside;
    return inside;
}

bool CSSE3dPolygon::PointInLineInnerArea(SSEPoint& p, int step)
{
    // z takes no part; w does, and a point whose w isn't 0 fails the box.
    SSEPoint flat = p;
    flat.z = 0.0f;
    return InnerAreaTest(flat.sse, PointsX, PointsY, step);
}

bool CSSE3dPolygon::PointInLineInnerArea(float x, float y, int step)
{
    return InnerAreaTest(_mm_setr_ps(x, y, 0.0f, 0.0f), PointsX, PointsY, step);
}

bool CSSE3dPolygon::PointInLineInnerAreaNormalized(SSEPoint& p, int step)
{
    SSEPoint flat = p;
    flat.z = 0.0f;
    return InnerAreaTest(flat.sse, NormalizedX, NormalizedY, step);
}

bool CSSE3dPolygon::PointInLineInnerAreaNormalized(float x, float y, int step)
{
    return InnerAreaTest(_mm_setr_ps(x, y, 0.0f, 0.0f), NormalizedX, NormalizedY, step);
}

bool CSSE3dPolygon::PolygonInThisPolygon(CSSE3dPolygon& other)
{
    if (NumPoints < 1 || other.NumPoints < 1) return false;
    for (int i = 0; i < other.NumPoints; ++i) {
        if (!PointInLineInnerArea(other.PointsX[i], other.PointsY[i], 1)) return false;
    }
    return true;
}

void CSSE3dPolygon::KeepPointsInInner(CSSE3dPolygon& other)
{
    std::vector<bool> keep(static_cast<std::size_t>(NumPoints));
    for (int i = 0; i < NumPoints; ++i) keep[static_cast<std::size_t>(i)] = other.PointInLineInnerArea(PointsX[i], PointsY[i], 1);
    KeepMarkedPoints(keep);
}
