#pragma once

#include <string>
#include <vector>

#include "surface_road.h"

namespace vek::tools {

enum class MeshFormat { Obj, Ply };

// The adaptive mode's default target, in height units: 10 m for the bundled
// model, about the height accuracy of its SRTM data, where a closer fit
// mostly traces the data's own noise and costs many more triangles.
inline constexpr double kDefaultMaxError = 10.0;
// A bound that a run can reach only on a raster of millions of cells with
// a small target; it keeps such a run from exhausting memory.
inline constexpr int kDefaultMaxVertices = 5'000'000;

struct Options {
    // Empty: the elevation model bundled with the library.
    std::string input;
    std::string outputDirectory = "out";
    SurfaceMode mode = SurfaceMode::Adaptive;
    // The adaptive mode: the largest departure from the input allowed at
    // any cell centre, in height units, and the most vertices it may use.
    double maxError = kDefaultMaxError;
    int maxVertices = kDefaultMaxVertices;
    // The lattice mode: how many vertices to store, about.
    int points = 60000;
    // The side of a cell in the units of the heights, so that slopes come
    // out true. 0: the input's own, from its georeference, or 30 for an
    // input without one (the bundled PGM's 30 m cells and metre heights).
    double cellSize = 0.0;
    bool keepLowest = false;
    MeshFormat meshFormat = MeshFormat::Obj;
    // The shaded relief and the error map.
    bool images = true;
    bool help = false;
};

// Reads the arguments after the program name. Throws ToolError naming the
// first argument that is wrong.
Options ParseCommandLine(const std::vector<std::string>& args);

// The side of a cell taken when neither the option nor the input gives one.
inline constexpr double kDefaultCellSize = 30.0;

std::string HelpText();

} // namespace vek::tools
