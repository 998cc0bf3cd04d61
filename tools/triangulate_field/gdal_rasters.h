#pragma once

#include <string>

#include "georeference.h"
#include "height_raster.h"
#include "raster_files.h"

namespace vek::tools {

// GeoTIFF and every other raster format GDAL knows. In a build without GDAL
// both functions throw ToolError with WithoutGdalError.

// Reads the one band of a raster: cells holding the file's no-data value
// hold no data, and the geotransform, coordinate system and no-data value
// make the georeference. Throws ToolError naming the file for several
// bands, a rotated or sheared geotransform, a band of complex numbers or of
// colour-table indices, a size the library cannot hold, or a file that
// cannot be read to its end.
LoadedRaster ReadGdalRaster(const std::string& path);

// Writes the heights as a GeoTIFF of one Float32 band, deflated, with the
// geotransform (where the georeference is placed), the coordinate system
// and the no-data value of `georeference`; cells without data are written
// as that value, or as not-a-number where there is none.
void WriteGeoTiff(const std::string& path, const HeightRaster& raster, const Georeference& georeference);

} // namespace vek::tools
