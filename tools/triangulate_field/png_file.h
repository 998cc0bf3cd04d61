#pragma once

#include <string>

#include "pictures.h"

namespace vek::tools {

// Writes the image as an eight-bit RGBA PNG through libpng. In a build
// without libpng it throws ToolError with WithoutPngNote.
void WritePng(const std::string& path, const RgbaImage& image);

} // namespace vek::tools
