#pragma once

#include <string>
#include <vector>

#include "georeference.h"
#include "height_raster.h"

namespace vek::tools {

// The formats the program reads, told apart by their first bytes; Gdal is
// every other raster, read through GDAL where the program has it.
enum class RasterFormat { Pfm, Pgm, FieldArchive, Gdal };

struct LoadedRaster {
    HeightRaster raster;
    RasterFormat format = RasterFormat::Pfm;
    // What the header said, for the report: "PFM, little-endian" and the like.
    std::string description;
    // Where the raster lies in the world, as far as the file says: not
    // placed, and without coordinate system or no-data value, where it
    // says nothing.
    Georeference georeference;
};

// Throws ToolError naming `path` for a raster wider, taller or larger than
// the program and the library's fields hold.
void RequireHoldableSize(long long width, long long height, const std::string& path);

// Reads a Portable Float Map (grey "Pf", either byte order, rows stored from
// the bottom up) or a binary PGM ("P5", 8 or 16 bits, 16-bit samples
// big-endian, rows from the top), or the library's own field archive (see
// field_archive.h). A PGM comment of the form "offset=<o> scale=<s>" maps a
// sample to the height o + s * sample.
// Throws ToolError for an unreadable, truncated or unknown file.
LoadedRaster ReadHeightRaster(const std::string& path);

// The same from the bytes of a file; `name` is what the errors call it.
LoadedRaster ParseHeightRaster(const std::vector<unsigned char>& bytes, const std::string& name);

// Writes a grey little-endian PFM; cells without data are written as they
// are (not a number).
void WritePfm(const std::string& path, const HeightRaster& raster);

// Writes a 16-bit PGM that shows the heights from black (lowest) to white
// (highest), with the comment that maps samples back to heights. Sample 0
// stands for cells without data, so the heights use 1 ... 65535.
void WritePgm16(const std::string& path, const HeightRaster& raster);

} // namespace vek::tools
