#include "georeference.h"

#include <cmath>
#include <numbers>

namespace vek::tools {

namespace {

// The Earth's mean radius; a degree of latitude is 1/360 of its great
// circle, within half a percent of the ellipsoid's everywhere.
constexpr double kEarthRadiusMetres = 6371008.8;
constexpr double kMetresPerDegree = kEarthRadiusMetres * std::numbers::pi / 180.0;

} // namespace

void Georeference::FrameInCells(double cellSize, int rows)
{
    columnStep = cellSize;
    rowStep = -cellSize;
    originX = -0.5 * cellSize;
    originY = (rows - 0.5) * cellSize;
}

std::array<double, 6> Georeference::GeoTransform() const
{
    return {originX, columnStep, 0.0, originY, 0.0, rowStep};
}

std::array<double, 2> Georeference::GroundSteps(double row) const
{
    if (!degrees) return {columnStep, rowStep};
    const double latitude = Y(row) * std::numbers::pi / 180.0;
    return {columnStep * kMetresPerDegree * std::cos(latitude), rowStep * kMetresPerDegree};
}

} // namespace vek::tools
