// Cutting parts of a polygon away: half planes, a second line, a box, the hull.

#include <vector>

#include "vekdll/planar/convex_hull_2d.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// Marks the points whose coordinate lies strictly below (or above) the
// centre's, so that points on the centre line go in both cases.
std::vector<bool> StrictlyOnOneSide(const float* values, int count, float centre, bool below)
{
    std::vector<bool> marks(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) marks[static_cast<std::size_t>(i)] = below ? values[i] < centre : values[i] > centre;
    return marks;
}

} // namespace

void CSSE3dPolygon::KeepLeftHalfPlaneX()
{
    CalcGeometricCenter();
    KeepMarkedPoints(StrictlyOnOneSide(PointsX, NumPoints, GeometricCenter->x, true));
}

void CSSE3dPolygon::KeepRightHalfPlaneX()
{
    CalcGeometricCenter();
    KeepMarkedPoints(StrictlyOnOneSide(PointsX, NumPoints, GeometricCenter->x, false));
}

void CSSE3dPolygon::KeepLowerHalfPlaneY()
{
    CalcGeometricCenter();
    KeepMarkedPoints(StrictlyOnOneSide(PointsY, NumPoints, GeometricCenter->y, true));
}

void CSSE3dPolygon::KeepUpperHalfPlaneY()
{
    CalcGeometricCenter();
    KeepMarkedPoints(StrictlyOnOneSide(PointsY, NumPoints, GeometricCenter->y, false));
}

void CSSE3dPolygon::KeepPointsBelow(CSSE3dPolygon& other)
{
    // A point for which `other` has no nearest point (an empty line) has
    // nothing above it and goes.
    std::vector<bool> keep(static_cast<std::size_t>(NumPoints));
    for (int i = 0; i < NumPoints; ++i) {
        SSEPoint p;
        GetPointSSE(i, p);
        const int nearest = other.ClosestPoint(p);
        keep[static_cast<std::size_t>(i)] = nearest >= 0 && other.PointsY[nearest] > p.y;
    }
    KeepMarkedPoints(keep);
}

void CSSE3dPolygon::GetPointsInPatch(SSEPoint& upper, SSEPoint& lower, int* out, int& count)
{
    count = 0;
    if (out == nullptr) return;
    for (int i = 0; i < NumPoints; ++i) {
        const float x = PointsX[i];
        const float y = PointsY[i];
        if (x < upper.x && y < upper.y && x > lower.x && y > lower.y) out[count++] = i;
    }
}

void CSSE3dPolygon::ReplaceByConvexHullXY()
{
    CHConvexHull2D hull(this);
    hull.ObtainConvexHull3D(this);
}
