// Heights of a polygon: levelled, smoothed, and interpolated at a query point.

#include <cmath>

#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// Every height becomes that of the box corner, the top or the bottom one.
void LevelAtBoxCorner(CSSE3dPolygon& polygon, SSEPoint (CSSE3dPolygon::*corner)() const)
{
    polygon.CalcBoundingBox();
    polygon.SetAllZValues((polygon.*corner)().z);
}

// Inverse-distance weighting over every `step`-th point with the weight
// 1 / weightOf(d), d being the squared planar distance. The sums run in
// double; with no point to weigh the result is 0 / 0.
template <class WeightOf>
float InverseDistanceHeight(const CSSE3dPolygon& polygon, float x, float y, int step, float eps, WeightOf weightOf)
{
    // A step below 1 would never leave the first point; it is read as every point.
    if (step < 1) step = 1;
    double weights = 0.0;
    double weighted = 0.0;
    for (int i = 0; i < polygon.GetNumPoints() - step + 1; i += step) {
        float px = 0.0f;
        float py = 0.0f;
        float pz = 0.0f;
        polygon.GetPoint(i, px, py, pz);
        const float d = (y - py) * (y - py) + (x - px) * (x - px);
        if (static_cast<double>(d) <= static_cast<double>(eps)) return pz;
        const double weight = 1.0 / weightOf(static_cast<double>(d));
        weights += weight;
        weighted += weight * static_cast<double>(pz);
    }
    return static_cast<float>(weighted / weights);
}

} // namespace

void CSSE3dPolygon::AdaptToHighestZValue()
{
    LevelAtBoxCorner(*this, &CSSE3dPolygon::GetTopRight);
}

void CSSE3dPolygon::AdaptToLowestZValue()
{
    LevelAtBoxCorner(*this, &CSSE3dPolygon::GetBottomLeft);
}

void CSSE3dPolygon::FilterZValues()
{
    // In place and in one pass round the closed line, so each mean reads
    // heights filtered a step before. Point b takes x and y of point c, not
    // its own: the line slides along its own points by one index per pass
    // and keeps its shape.
    const int n = NumPoints;
    for (int i = 0; i < n; ++i) {
        const int b = (i + 1) % n;
        const int c = (i + 2) % n;
        const float mean = (PointsZ[i] + PointsZ[b] + PointsZ[c]) / 3.0f;
        SetPoint(b, PointsX[c], PointsY[c], mean);
    }
}

float CSSE3dPolygon::InterpolateZ(float x, float y, int step, float eps)
{
    return InverseDistanceHeight(*this, x, y, step, eps, [](double d) { return d; });
}

float CSSE3dPolygon::InterpolateZLow(float x, float y, int step, float eps)
{
    // The weight 1 / distance rather than 1 / distance²: far points have more say.
    return InverseDistanceHeight(*this, x, y, step, eps, [](double d) { return std::sqrt(d); });
}
