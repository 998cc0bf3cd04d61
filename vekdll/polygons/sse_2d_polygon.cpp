#include "vekdll/polygons/sse_2d_polygon.h"

#include "vekdll/foundation/member_copy_move.h"
#include "vekdll/polygons/polygon_blocks.h"
#include "vekdll/polygons/polygon_scans.h"

using vek::detail::AllocateBlocks;
using vek::detail::ReleaseBlocks;

// The count starts at 0 rather than unset, so that an object that was never
// created reads as empty.
CSSE2dPolygon::CSSE2dPolygon() : PointsX(nullptr), PointsY(nullptr), NumPoints(0) {}

CSSE2dPolygon::~CSSE2dPolygon()
{
    Free();
}

CSSE2dPolygon& CSSE2dPolygon::operator=(const CSSE2dPolygon& other) = default;

CSSE2dPolygon::CSSE2dPolygon(CSSE2dPolygon&& other) noexcept : CSSE2dPolygon()
{
    vek::detail::MoveByMemberCopy(*this, other);
}

CSSE2dPolygon& CSSE2dPolygon::operator=(CSSE2dPolygon&& other) noexcept
{
    return vek::detail::MoveByMemberCopy(*this, other);
}

void CSSE2dPolygon::Create(int numPoints)
{
    Free();
    const int count = numPoints > 0 ? numPoints : 0;
    // Twice the room that the points need: ((n + 1) >> 1) blocks of four.
    const std::uint64_t blocks = (static_cast<std::uint64_t>(count) + 1) >> 1;
    PointsX = AllocateBlocks(blocks);
    PointsY = AllocateBlocks(blocks);
    NumPoints = count;
}

void CSSE2dPolygon::Free()
{
    ReleaseBlocks(PointsX);
    ReleaseBlocks(PointsY);
}

int CSSE2dPolygon::GetNumPoints() const
{
    return NumPoints;
}

void CSSE2dPolygon::GetPoint(int i, float& x, float& y) const
{
    if (!InRange(i)) return;
    x = PointsX[i];
    y = PointsY[i];
}

void CSSE2dPolygon::GetPoint(int i, t_h2dpoint& p) const
{
    GetPoint(i, p.x, p.y);
}

void CSSE2dPolygon::SetPoint(int i, float x, float y)
{
    if (!InRange(i)) return;
    PointsX[i] = x;
    PointsY[i] = y;
}

float CSSE2dPolygon::CalcArea() const
{
    // Not the area of the line: only the first two and the last two points
    // enter, and x of point 1 stands where y would be expected. Kept as this
    // formula; the planar classes compute their own signed areas.
    const int n = NumPoints;
    if (n < 3 || PointsX == nullptr) return 0.0f;
    const float* x = PointsX;
    const float* y = PointsY;
    const int L = n - 1;
    const int M = n - 2;
    const float t1 = (x[0] - x[L]) * (x[1] - y[L]) - (y[0] - y[L]) * (x[1] - y[L]);
    const float t2 = (x[L] - x[M]) * (x[1] - y[M]) - (y[L] - y[M]) * (x[1] - y[M]);
    return t2 + t1;
}

int CSSE2dPolygon::ClosestPointX(float x) const
{
    if (PointsX == nullptr) return -1;
    return vek::detail::ClosestInOneCoordinate(PointsX, NumPoints, x);
}

int CSSE2dPolygon::ClosestPointY(float y) const
{
    if (PointsY == nullptr) return -1;
    return vek::detail::ClosestInOneCoordinate(PointsY, NumPoints, y);
}

float CSSE2dPolygon::GetMinEuclDistance(float x, float) const
{
    // Each point counts by its x alone, as the root of twice the squared x
    // difference: the planar scan with the x array in both places.
    if (PointsX == nullptr) return vek::detail::kNoBlockDistance;
    return vek::detail::MinDistanceOverWholeBlocks<false>(PointsX, PointsX, nullptr, NumPoints, x, x, 0.0f, 0);
}
