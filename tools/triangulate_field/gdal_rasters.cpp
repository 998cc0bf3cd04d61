#include "gdal_rasters.h"

#include "build_features.h"

#ifdef VEKDLL_TOOLS_WITH_GDAL

#include <gdal.h>
#include <ogr_srs_api.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

namespace vek::tools {

namespace {

struct DatasetCloser {
    void operator()(void* dataset) const { GDALClose(dataset); }
};
using Dataset = std::unique_ptr<void, DatasetCloser>;

void RegisterDrivers()
{
    static std::once_flag once;
    std::call_once(once, [] { GDALAllRegister(); });
}

// Keeps GDAL's messages off stderr while it lives, so that a failure ends
// in the program's one line, which quotes GDAL's last message.
class QuietGdal {
public:
    QuietGdal()
    {
        RegisterDrivers();
        CPLPushErrorHandler(CPLQuietErrorHandler);
        CPLErrorReset();
    }
    ~QuietGdal() { CPLPopErrorHandler(); }
    QuietGdal(const QuietGdal&) = delete;
    QuietGdal& operator=(const QuietGdal&) = delete;

    bool Failed() const { return CPLGetLastErrorType() >= CE_Failure; }

    // GDAL's last message on one line, or `fallback` when it left none.
    static std::string Reason(const std::string& fallback)
    {
        std::string message = CPLGetLastErrorMsg();
        std::replace_if(message.begin(), message.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        return message.empty() ? fallback : message;
    }
};

void RequireHeights(GDALDatasetH dataset, GDALRasterBandH band, const std::string& path)
{
    const GDALDataType type = GDALGetRasterDataType(band);
    if (type == GDT_Unknown || GDALDataTypeIsComplex(type))
        throw ToolError(path + ": the band holds " + GDALGetDataTypeName(type) + " values, not heights");
    if (GDALGetRasterColorTable(band) != nullptr || GDALGetRasterColorInterpretation(band) == GCI_PaletteIndex)
        throw ToolError(path + ": the band holds indices into a colour table, not heights");
    const long long width = GDALGetRasterXSize(dataset);
    const long long height = GDALGetRasterYSize(dataset);
    if (width < 1 || height < 1) throw ToolError(path + ": the raster holds no cells");
    RequireHoldableSize(width, height, path);
}

Georeference GeoreferenceOf(GDALDatasetH dataset, GDALRasterBandH band, const std::string& path)
{
    Georeference g;
    double t[6];
    if (GDALGetGeoTransform(dataset, t) == CE_None) {
        if (t[2] != 0.0 || t[4] != 0.0)
            throw ToolError(path + ": the geotransform is rotated or sheared; only rasters whose rows run along x "
                                   "are read");
        if (!std::all_of(t, t + 6, [](double v) { return std::isfinite(v); }) || t[1] == 0.0 || t[5] == 0.0)
            throw ToolError(path + ": the geotransform gives cells without size");
        g.placed = true;
        g.originX = t[0];
        g.columnStep = t[1];
        g.originY = t[3];
        g.rowStep = t[5];
    }
    g.projection = GDALGetProjectionRef(dataset);
    if (OGRSpatialReferenceH srs = GDALGetSpatialRef(dataset)) {
        const char* name = OSRGetName(srs);
        g.projectionName = name != nullptr ? name : "";
        g.degrees = OSRIsGeographic(srs) != 0;
    }
    int hasNoData = 0;
    const double noData = GDALGetRasterNoDataValue(band, &hasNoData);
    if (hasNoData) g.noData = noData;
    return g;
}

} // namespace

LoadedRaster ReadGdalRaster(const std::string& path)
{
    QuietGdal quiet;
    const Dataset dataset(GDALOpenEx(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr));
    if (!dataset) throw ToolError(path + ": " + QuietGdal::Reason("not a raster GDAL reads"));
    const int bands = GDALGetRasterCount(dataset.get());
    if (bands != 1) throw ToolError(path + ": " + std::to_string(bands) + " bands; a height field has one");
    GDALRasterBandH band = GDALGetRasterBand(dataset.get(), 1);
    RequireHeights(dataset.get(), band, path);

    LoadedRaster loaded;
    loaded.format = RasterFormat::Gdal;
    loaded.georeference = GeoreferenceOf(dataset.get(), band, path);
    loaded.description = std::string(GDALGetDriverLongName(GDALGetDatasetDriver(dataset.get()))) + ", " +
                         GDALGetDataTypeName(GDALGetRasterDataType(band)) + ", through GDAL";
    HeightRaster& r = loaded.raster;
    r.width = GDALGetRasterXSize(dataset.get());
    r.height = GDALGetRasterYSize(dataset.get());
    r.heights.resize(static_cast<std::size_t>(r.width) * r.height);
    if (GDALRasterIO(band, GF_Read, 0, 0, r.width, r.height, r.heights.data(), r.width, r.height, GDT_Float32, 0, 0) !=
        CE_None)
        throw ToolError(path + ": cannot be read to its end: " + QuietGdal::Reason("no reason given"));
    if (loaded.georeference.noData) {
        // The comparison is in the band's values read as floats, as the
        // cells themselves were.
        const float noData = static_cast<float>(*loaded.georeference.noData);
        for (float& h : r.heights) {
            if (h == noData) h = std::numeric_limits<float>::quiet_NaN();
        }
    }
    return loaded;
}

void WriteGeoTiff(const std::string& path, const HeightRaster& raster, const Georeference& georeference)
{
    QuietGdal quiet;
    GDALDriverH driver = GDALGetDriverByName("GTiff");
    if (driver == nullptr) throw ToolError("cannot write " + path + ": GDAL has no GeoTIFF driver");
    // Floating-point prediction makes neighbouring heights compress well.
    const char* options[] = {"COMPRESS=DEFLATE", "PREDICTOR=3", "TILED=YES", nullptr};
    Dataset dataset(GDALCreate(driver, path.c_str(), raster.width, raster.height, 1, GDT_Float32,
                               const_cast<char**>(options)));
    if (!dataset) throw ToolError("cannot write " + path + ": " + QuietGdal::Reason("GDAL refused to create it"));
    if (georeference.placed) {
        std::array<double, 6> t = georeference.GeoTransform();
        GDALSetGeoTransform(dataset.get(), t.data());
    }
    if (!georeference.projection.empty()) GDALSetProjection(dataset.get(), georeference.projection.c_str());
    GDALRasterBandH band = GDALGetRasterBand(dataset.get(), 1);
    std::vector<float> cells = raster.heights;
    if (georeference.noData) {
        GDALSetRasterNoDataValue(band, *georeference.noData);
        const float noData = static_cast<float>(*georeference.noData);
        std::replace_if(cells.begin(), cells.end(), [](float h) { return !HeightRaster::HoldsData(h); }, noData);
    }
    const CPLErr written = GDALRasterIO(band, GF_Write, 0, 0, raster.width, raster.height, cells.data(), raster.width,
                                        raster.height, GDT_Float32, 0, 0);
    dataset.reset(); // closing writes the last blocks and the directory
    if (written != CE_None || quiet.Failed())
        throw ToolError("cannot write " + path + ": " + QuietGdal::Reason("GDAL failed"));
}

} // namespace vek::tools

#else

namespace vek::tools {

LoadedRaster ReadGdalRaster(const std::string& path)
{
    throw ToolError(WithoutGdalError(path));
}

void WriteGeoTiff(const std::string& path, const HeightRaster&, const Georeference&)
{
    throw ToolError(WithoutGdalError(path));
}

} // namespace vek::tools

#endif
