#include "build_features.h"

namespace vek::tools {

bool BuiltWithGdal()
{
#ifdef VEKDLL_TOOLS_WITH_GDAL
    return true;
#else
    return false;
#endif
}

bool BuiltWithPng()
{
#ifdef VEKDLL_TOOLS_WITH_PNG
    return true;
#else
    return false;
#endif
}

std::string BundledInputName(bool withGdal)
{
    return withGdal ? "bigtujunga.tif" : "bigtujunga.pgm";
}

std::string InputHelp(bool withGdal)
{
    const std::string own =
        R"(a grey PFM (Pf, either byte order), a binary PGM (P5, 8 or 16 bits;
        a comment "offset=<o> scale=<s>" maps a sample to o + s * sample), or
        the library's own field archive (CSSEMatrix::Store; row 0 is the
        bottom, and a cell of 0 holds no data).)";
    const std::string bundled = "data/" + BundledInputName(withGdal);
    if (withGdal) {
        return "INPUT   any single-band raster GDAL reads, a GeoTIFF above all: its\n"
               "        no-data value marks cells without data, and its geotransform\n"
               "        gives the cell size and the world position of the results. Or\n        " +
               own + "\n        Without INPUT the bundled elevation model " + bundled + " is read.\n";
    }
    return "INPUT   " + own +
           "\n        This program was built without GDAL and reads no GeoTIFF.\n"
           "        Without INPUT the bundled elevation model " +
           bundled + " is read.\n";
}

std::string WithoutGdalError(const std::string& path)
{
    return path + ": this triangulate_field was built without GDAL, which reads such files; it reads PFM, PGM and "
                  "field archives";
}

std::string WithoutPngNote()
{
    return "no pictures: this triangulate_field was built without libpng";
}

} // namespace vek::tools
