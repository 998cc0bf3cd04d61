#pragma once

#include <array>
#include <vector>

#include "georeference.h"
#include "height_raster.h"

namespace vek::tools {

// Eight-bit red, green, blue and opacity per pixel, rows from the top, one
// pixel per cell of the raster drawn.
struct RgbaImage {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgba;

    std::array<unsigned char, 4> At(int column, int row) const;
};

// The surface lit from the north-west, 45 degrees above the horizon, over a
// tint that runs with the height from green through tan and brown to white.
// Slopes are taken on the ground (see Georeference::GroundSteps), so a
// raster in degrees is lit as steep as it is. Cells without data are clear.
RgbaImage ShadedRelief(const HeightRaster& surface, const Georeference& georeference);

// The result minus the input on a diverging scale: white where they agree,
// deepening to red at +range where the result lies above the input and to
// blue at -range where it lies below; grey where the input has data and the
// result none; clear where the input has none.
struct ErrorMap {
    RgbaImage image;
    // A round number (1, 2 or 5 times a power of ten) at or above the
    // difference that 99 % of the cells stay within, so that a few outliers
    // do not wash the rest out to white.
    double range = 0.0;
    // Cells whose difference lies beyond the range, drawn at its ends.
    long long beyond = 0;
};

ErrorMap DrawErrorMap(const HeightRaster& input, const HeightRaster& result);

// The smallest of 1, 2 and 5 times a power of ten at or above `value`,
// which must lie above 0.
double RoundScaleUp(double value);

} // namespace vek::tools
