#pragma once

#include <string>

#include "raster_files.h"

namespace vek::tools {

// The program's input: a PFM, a PGM or a field archive, told by its first
// bytes and read by the program's own readers; any other file through GDAL
// where the program has it. Throws ToolError naming the file; in a build
// without GDAL a TIFF, or a file named .tif, is refused with the note that
// GDAL is missing.
LoadedRaster ReadElevationModel(const std::string& path);

} // namespace vek::tools
