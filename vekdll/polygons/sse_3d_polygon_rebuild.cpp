// The common ending of the methods that rebuild a polygon: they gather the
// new points in a local polygon and make this one similar to it, so that the
// arrays are replaced and the normalised copy holds no data afterwards.

#include <algorithm>

#include "vekdll/polygons/sse_3d_polygon.h"

void CSSE3dPolygon::TakePointsOf(CSSE3dPolygon& local, int count)
{
    // A local buffer may be filled only in part; only its arrays' size, not
    // their release, depends on the count, so it may simply be told fewer.
    local.NumPoints = std::clamp(count, 0, local.NumPoints);
    CreateSimilar(&local);
}

void CSSE3dPolygon::ReorderPoints(int first, int direction)
{
    const int n = NumPoints;
    CSSE3dPolygon local;
    local.Create(n);
    int source = n > 0 ? ((first % n) + n) % n : 0;
    for (int k = 0; k < n; ++k) {
        local.SetPoint(k, PointsX[source], PointsY[source], PointsZ[source]);
        source += direction;
        if (source >= n) source -= n;
        if (source < 0) source += n;
    }
    TakePointsOf(local, n);
}

void CSSE3dPolygon::KeepMarkedPoints(const std::vector<bool>& keep)
{
    CSSE3dPolygon local;
    local.Create(NumPoints);
    int count = 0;
    for (int i = 0; i < NumPoints; ++i) {
        if (keep[static_cast<std::size_t>(i)]) local.SetPoint(count++, PointsX[i], PointsY[i], PointsZ[i]);
    }
    TakePointsOf(local, count);
}
