#pragma once

#include <cmath>
#include <cstddef>

namespace vek {

// A raster of heights as the surface is measured against it: cell (x, y) is
// the point (x, y) of the triangulation's plane, so that a vertex set on a
// cell lies on that cell's centre. The caller keeps the heights; rowStep may
// be negative, for a raster stored with its top row first while y counts
// from the bottom. A height that is not finite holds no data.
struct HeightGrid {
    int width = 0;
    int height = 0;
    const float* cells = nullptr;
    std::ptrdiff_t rowStep = 0;

    const float* Row(int y) const { return cells + static_cast<std::ptrdiff_t>(y) * rowStep; }
    float At(int x, int y) const { return Row(y)[x]; }
    static bool HoldsData(float h) { return std::isfinite(h); }
};

} // namespace vek
