#pragma once

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

namespace vek::tools {

// A height field as the program reads and writes it: `width` columns and
// `height` rows, row 0 at the top (north), heights in the file's units.
// A cell that is not a finite number holds no data.
struct HeightRaster {
    int width = 0;
    int height = 0;
    std::vector<float> heights;

    float At(int column, int row) const { return heights[static_cast<std::size_t>(row) * width + column]; }
    float& At(int column, int row) { return heights[static_cast<std::size_t>(row) * width + column]; }
    static bool HoldsData(float h) { return std::isfinite(h); }
};

// What went wrong with a file or an argument, in one line for the user.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vek::tools
