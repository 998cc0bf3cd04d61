#pragma once

#include <string>
#include <vector>

namespace vek::tools {

struct Options {
    // Empty: the elevation model bundled with the library.
    std::string input;
    std::string outputDirectory = "out";
    // How many vertices to store. The insertion is still quadratic in them,
    // and this many keep a run of the bundled model within a few seconds.
    int points = 16000;
    // The side of a cell in the units of the heights, so that slopes come
    // out true: 30 for the bundled model's 30 m cells and metre heights.
    double cellSize = 30.0;
    bool keepLowest = false;
    bool help = false;
};

// Reads the arguments after the program name. Throws ToolError naming the
// first argument that is wrong.
Options ParseCommandLine(const std::vector<std::string>& args);

std::string HelpText();

} // namespace vek::tools
