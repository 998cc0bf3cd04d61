#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command_line.h"
#include "georeference.h"
#include "mesh_file.h"
#include "raster_files.h"

namespace vek::tools {

// What one run hands to the writers.
struct Results {
    const LoadedRaster& input;
    // The scan-converted heights on the input's cells.
    const HeightRaster& surface;
    const WorldMesh& mesh;
    // The input's georeference, framed in cells where it had none.
    const Georeference& world;
};

struct WrittenFiles {
    std::vector<std::string> paths;
    // The error map's scale, when pictures were drawn.
    std::optional<double> errorRange;
    long long errorBeyond = 0;
    // Why no pictures were written, if none were although they were wanted.
    std::string picturesNote;
};

// Makes the output folder and writes every result into it, each under a
// temporary name until it is whole: the surface as a GeoTIFF for an input
// read through GDAL, else as PFM and 16-bit PGM; always as a field archive;
// the mesh as OBJ or PLY; the shaded relief and the error map as PNG.
// Files are named after the input: bigtujunga.tif gives
// bigtujunga_surface.tif and so on.
WrittenFiles WriteResults(const Options& options, const std::string& inputPath, const Results& results);

} // namespace vek::tools
