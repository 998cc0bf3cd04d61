#pragma once

#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "height_raster.h"

namespace vek::tools {

// A file opened for writing from its start; ToolError if it cannot be.
inline std::ofstream OpenForWriting(const std::string& path, std::ios::openmode mode = std::ios::binary)
{
    std::ofstream out(path, mode | std::ios::out | std::ios::trunc);
    if (!out) throw ToolError("cannot write " + path + ": " + std::strerror(errno));
    return out;
}

// Closes what OpenForWriting opened; ToolError if a write went wrong.
inline void FinishWriting(std::ofstream& out, const std::string& path)
{
    out.close();
    if (!out) throw ToolError("cannot write " + path);
}

// Runs `write` on a temporary name beside `path` and renames the file to
// `path` once `write` has returned, so that a reader never meets a half
// written result under its real name. If `write` throws, the temporary is
// removed and the exception passes on. `write` may leave a side file named
// after the temporary with ".aux.xml" appended (GDAL does for what a
// GeoTIFF cannot hold); it is renamed along.
void WriteAtomically(const std::string& path, const std::function<void(const std::string& temporary)>& write);

} // namespace vek::tools
