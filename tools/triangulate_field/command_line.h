#pragma once

#include <string>
#include <vector>

namespace vek::tools {

enum class MeshFormat { Obj, Ply };

struct Options {
    // Empty: the elevation model bundled with the library.
    std::string input;
    std::string outputDirectory = "out";
    // How many vertices to store. The insertion is still quadratic in them,
    // and this many keep a run of the bundled model within a few seconds.
    int points = 16000;
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
