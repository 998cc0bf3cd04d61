// Nearest points and smallest distances between a query and a polygon.

#include <cmath>

#include "vekdll/polygons/polygon_scans.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::ClosestInOneCoordinate;
using vek::detail::ClosestIndex;
using vek::detail::ClosestOfEverySecondPoint;
using vek::detail::MinDistanceOverWholeBlocks;

// ---------------------------------------------------------------- every point, spatial distance

int CSSE3dPolygon::ClosestPoint(SSEPoint& p) const
{
    return ClosestPointWithIntervalIndex(p, 0, NumPoints);
}

int CSSE3dPolygon::ClosestPointWithIntervalIndex(SSEPoint& p, int from, int to) const
{
    if (from < 0 || to > NumPoints || from > to) return -1;
    const __m128 query = p.sse;
    return ClosestIndex(from, to, 1, [&](int i) {
        SSEPoint point;
        GetPointSSE(i, point);
        return CSSEFns::euclideandistance(point.sse, query);
    });
}

// ---------------------------------------------------------------- every second point, by coordinates

int CSSE3dPolygon::ClosestPointX(float x) const
{
    return ClosestInOneCoordinate(PointsX, NumPoints, x);
}

int CSSE3dPolygon::ClosestPointY(float y) const
{
    return ClosestInOneCoordinate(PointsY, NumPoints, y);
}

int CSSE3dPolygon::ClosestPointXWithIntervalY(float x, float lo, float hi) const
{
    return ClosestOfEverySecondPoint(
        NumPoints, [&](int i) { return std::fabs(PointsX[i] - x); },
        [&](int i) { return lo < PointsY[i] && PointsY[i] < hi; });
}

int CSSE3dPolygon::ClosestPointYWithIntervalX(float y, float lo, float hi) const
{
    return ClosestOfEverySecondPoint(
        NumPoints, [&](int i) { return std::fabs(PointsY[i] - y); },
        [&](int i) { return lo < PointsX[i] && PointsX[i] < hi; });
}

namespace {

// Squared planar distance in the plane of the coordinates a and b. It is
// compared with the same start value as a true distance, without a root.
int ClosestInPlane(const float* as, const float* bs, int numPoints, float a, float b)
{
    return ClosestOfEverySecondPoint(numPoints, [=](int i) {
        const float da = as[i] - a;
        const float db = bs[i] - b;
        return da * da + db * db;
    });
}

} // namespace

int CSSE3dPolygon::ClosestPointXY(float x, float y) const
{
    return ClosestInPlane(PointsX, PointsY, NumPoints, x, y);
}

int CSSE3dPolygon::ClosestPointYZ(float y, float z) const
{
    return ClosestInPlane(PointsY, PointsZ, NumPoints, y, z);
}

bool CSSE3dPolygon::PointAlreadyThereInArrayXY(int upto, SSEPoint& p, float tol) const
{
    // A city-block test: cheap, and all that is needed to catch a point that
    // was already taken in.
    if (upto < 0) upto = 0;
    if (upto > NumPoints - 1) upto = NumPoints - 1;
    for (int i = 0; i < upto; ++i) {
        if (std::fabs(PointsX[i] - p.x) + std::fabs(PointsY[i] - p.y) < tol) return true;
    }
    return false;
}

// ---------------------------------------------------------------- whole-block scans of the normalised copy

float CSSE3dPolygon::GetMinEuclDistance(float x, float y, float z, int skip) const
{
    return MinDistanceOverWholeBlocks<true>(NormalizedX, NormalizedY, NormalizedZ, NumPoints, x, y, z, skip);
}

float CSSE3dPolygon::GetMinEuclDistanceXY(float x, float y, int skip) const
{
    return MinDistanceOverWholeBlocks<false>(NormalizedX, NormalizedY, nullptr, NumPoints, x, y, 0.0f, skip);
}

float CSSE3dPolygon::GetMinEuclDistanceSpecial(float x, float y, float z, int skip) const
{
    // A query without height (z about zero) is measured in the plane only.
    if (std::fabs(static_cast<double>(z)) > 0.001) return GetMinEuclDistance(x, y, z, skip);
    return GetMinEuclDistanceXY(x, y, skip);
}
