#pragma once

#include <string>

namespace vek::tools {

// What this build of the program reads and writes beyond its own formats.
// GDAL and libpng are found, or not, when the build is configured; the
// texts for both cases live here so that --help and the errors agree.
bool BuiltWithGdal();
bool BuiltWithPng();

// The bundled elevation model that is read when no input is named: the
// GeoTIFF where GDAL reads it, else the same heights as a PGM.
std::string BundledInputName(bool withGdal);

// The INPUT paragraph of --help for a build with or without GDAL.
std::string InputHelp(bool withGdal);

// The error for a file that only GDAL would read, in a build without it.
std::string WithoutGdalError(const std::string& path);

// Why the pictures are missing in a build without libpng.
std::string WithoutPngNote();

} // namespace vek::tools
