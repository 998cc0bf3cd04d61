// Reordering the points of a polygon.

#include <algorithm>

#include "vekdll/polygons/sse_3d_polygon.h"

void CSSE3dPolygon::ChangeStartPoint(SSEPoint& p, int* indices)
{
    ChangeStartPoint(ClosestPoint(p), indices);
}

void CSSE3dPolygon::ChangeStartPoint(int start, int* indices)
{
    // A start outside the line, as the -1 of a failed nearest-point search,
    // is dropped like any index out of range.
    if (!InRange(start)) return;
    CSSE3dPolygon rotated;
    rotated.Create(NumPoints);
    for (int k = 0; k < NumPoints; ++k) {
        const int source = start + k < NumPoints ? start + k : start + k - NumPoints;
        rotated.SetPoint(k, PointsX[source], PointsY[source], PointsZ[source]);
    }
    CreateSimilar(&rotated);
    if (indices != nullptr) std::rotate(indices, indices + start, indices + NumPoints);
}
