// Triangulates a height field with the library and scan-converts it back:
// see --help.

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "run.h"

int main(int argc, char** argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    return vek::tools::RunTriangulateField(args, std::cout, std::cerr, isatty(STDERR_FILENO) == 1);
}
