#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "height_raster.h"

namespace vek::tools {

// The library's own field archive (CSSEMatrix::Serialize): its two sizes and
// then every lane of the field. It has no magic number, so a file is taken
// for one when its length is exactly what its sizes call for.
bool LooksLikeFieldArchive(const std::vector<unsigned char>& bytes);
// The same from the first bytes of a file and its length.
bool LooksLikeFieldArchive(const unsigned char* head, std::size_t headSize, unsigned long long fileSize);

// Field row 0 is the lowest y, the bottom of the raster; a cell of 0 holds
// no data, as everywhere in the library. Throws ToolError.
HeightRaster ParseFieldArchive(const std::vector<unsigned char>& bytes, const std::string& name);

// The same layout back: cells without data are written as 0.
void WriteFieldArchive(const std::string& path, const HeightRaster& raster);

} // namespace vek::tools
