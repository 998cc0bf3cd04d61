// triangulate_field with georeferenced rasters: GeoTIFFs read and written
// through GDAL, meshes in world units, the refusal of rasters that are no
// height field, and what a build without GDAL says instead.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "tools/tool_test_support.h"
#include "tools/triangulate_field/build_features.h"
#include "tools/triangulate_field/elevation_input.h"
#include "tools/triangulate_field/gdal_rasters.h"

#ifdef VEKDLL_TOOLS_WITH_GDAL
#include <cpl_conv.h>
#include <gdal.h>
#include <ogr_srs_api.h>
#endif

namespace {

using namespace vek::test;

TEST(GeoTiffMessages, ABuildWithoutGdalSaysWhatItLacks)
{
    using namespace vek::tools;
    const std::string refusal = WithoutGdalError("dem.tif");
    EXPECT_EQ(refusal.rfind("dem.tif: ", 0), 0u) << refusal;
    EXPECT_NE(refusal.find("built without GDAL"), std::string::npos) << refusal;
    EXPECT_EQ(refusal.find('\n'), std::string::npos);

    const std::string without = InputHelp(false), with = InputHelp(true);
    EXPECT_NE(without.find("built without GDAL"), std::string::npos) << without;
    EXPECT_NE(without.find("data/bigtujunga.pgm"), std::string::npos) << without;
    EXPECT_EQ(with.find("without GDAL"), std::string::npos) << with;
    EXPECT_NE(with.find("GeoTIFF"), std::string::npos) << with;
    EXPECT_NE(with.find("data/bigtujunga.tif"), std::string::npos) << with;
    EXPECT_NE(WithoutPngNote().find("without libpng"), std::string::npos);
}

#ifndef VEKDLL_TOOLS_WITH_GDAL

TEST(GeoTiffWithoutGdal, ATiffIsRefusedWithTheNote)
{
    // Told by its first bytes whatever its name, or by its name.
    ScratchFolder folder;
    const std::string tiff = folder.File("dem.raster"), named = folder.File("dem.TIF");
    WriteBytes(tiff, Bytes{'M', 'M', 0, 42, 0, 0, 0, 8} + Bytes(64, 0));
    WriteBytes(named, Text("not even a TIFF"));
    for (const std::string& path : {tiff, named}) {
        const Outcome o = RunProgram({path, "-o", folder.File("out")});
        ExpectOneLineRefusal(o);
        EXPECT_EQ(o.err, "triangulate_field: " + vek::tools::WithoutGdalError(path) + "\n");
        EXPECT_FALSE(fs::exists(folder.File("out")));
    }
}

#else

// What a test GeoTIFF holds; heights row by row from the top.
struct TiffPlan {
    int width = 4;
    int height = 3;
    int bands = 1;
    GDALDataType type = GDT_Float32;
    std::optional<std::array<double, 6>> geoTransform = std::array<double, 6>{1000, 10, 0, 5000, 0, -10};
    int epsg = 32611;
    std::optional<double> noData;
    std::vector<float> heights;
    std::vector<std::string> options;
    bool palette = false;
};

std::string WktOf(int epsg)
{
    OGRSpatialReferenceH srs = OSRNewSpatialReference(nullptr);
    char* wkt = nullptr;
    OSRImportFromEPSG(srs, epsg);
    OSRExportToWkt(srs, &wkt);
    std::string text = wkt != nullptr ? wkt : "";
    CPLFree(wkt);
    OSRDestroySpatialReference(srs);
    return text;
}

void MakeGeoTiff(const std::string& path, const TiffPlan& plan)
{
    GDALAllRegister();
    std::vector<const char*> options;
    for (const std::string& o : plan.options) options.push_back(o.c_str());
    options.push_back(nullptr);
    GDALDatasetH d = GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), plan.width, plan.height, plan.bands,
                                plan.type, const_cast<char**>(options.data()));
    ASSERT_NE(d, nullptr) << CPLGetLastErrorMsg();
    if (plan.geoTransform) {
        std::array<double, 6> t = *plan.geoTransform;
        GDALSetGeoTransform(d, t.data());
    }
    if (plan.epsg != 0) GDALSetProjection(d, WktOf(plan.epsg).c_str());
    GDALRasterBandH band = GDALGetRasterBand(d, 1);
    if (plan.noData) GDALSetRasterNoDataValue(band, *plan.noData);
    if (plan.palette) {
        GDALColorTableH table = GDALCreateColorTable(GPI_RGB);
        const GDALColorEntry red{255, 0, 0, 255};
        GDALSetColorEntry(table, 0, &red);
        GDALSetRasterColorTable(band, table);
        GDALDestroyColorTable(table);
    }
    if (!plan.heights.empty()) {
        std::vector<float> cells = plan.heights;
        EXPECT_EQ(GDALRasterIO(band, GF_Write, 0, 0, plan.width, plan.height, cells.data(), plan.width, plan.height,
                               GDT_Float32, 0, 0),
                  CE_None);
    }
    GDALClose(d);
}

struct TiffContents {
    std::array<double, 6> geoTransform{};
    std::string projection;
    std::optional<double> noData;
    std::vector<float> heights;
};

TiffContents ReadGeoTiff(const std::string& path)
{
    TiffContents c;
    GDALDatasetH d = GDALOpen(path.c_str(), GA_ReadOnly);
    if (d == nullptr) return c;
    GDALGetGeoTransform(d, c.geoTransform.data());
    c.projection = GDALGetProjectionRef(d);
    GDALRasterBandH band = GDALGetRasterBand(d, 1);
    int has = 0;
    const double noData = GDALGetRasterNoDataValue(band, &has);
    if (has) c.noData = noData;
    const int w = GDALGetRasterXSize(d), h = GDALGetRasterYSize(d);
    c.heights.resize(static_cast<std::size_t>(w) * h);
    EXPECT_EQ(GDALRasterIO(band, GF_Read, 0, 0, w, h, c.heights.data(), w, h, GDT_Float32, 0, 0), CE_None);
    GDALClose(d);
    return c;
}

bool SameCoordinateSystem(const std::string& a, const std::string& b)
{
    OGRSpatialReferenceH x = OSRNewSpatialReference(a.c_str());
    OGRSpatialReferenceH y = OSRNewSpatialReference(b.c_str());
    const bool same = OSRIsSame(x, y) != 0;
    OSRDestroySpatialReference(x);
    OSRDestroySpatialReference(y);
    return same;
}

TEST(GeoTiffInput, HeightsNoDataAndGeoreferenceAreRead)
{
    // 4 x 3 cells of 10 column + row + 100, one of them the no-data value.
    ScratchFolder folder;
    TiffPlan plan;
    plan.type = GDT_Int16;
    plan.noData = -9999;
    for (int i = 0; i < 12; ++i) plan.heights.push_back(i == 5 ? -9999.0f : static_cast<float>(10 * (i % 4) + i / 4 + 100));
    MakeGeoTiff(folder.File("utm.tif"), plan);

    const vek::tools::LoadedRaster loaded = vek::tools::ReadElevationModel(folder.File("utm.tif"));
    EXPECT_EQ(loaded.format, vek::tools::RasterFormat::Gdal);
    EXPECT_NE(loaded.description.find("GeoTIFF, Int16"), std::string::npos) << loaded.description;
    ASSERT_EQ(std::pair(loaded.raster.width, loaded.raster.height), std::pair(4, 3));
    for (std::size_t i = 0; i < 12; ++i) {
        if (i == 5) {
            EXPECT_TRUE(std::isnan(loaded.raster.heights[i]));
        } else {
            EXPECT_EQ(loaded.raster.heights[i], plan.heights[i]) << i;
        }
    }
    const vek::tools::Georeference& g = loaded.georeference;
    EXPECT_TRUE(g.placed);
    EXPECT_EQ(std::tuple(g.originX, g.originY, g.columnStep, g.rowStep), std::tuple(1000.0, 5000.0, 10.0, -10.0));
    EXPECT_EQ(g.projectionName, "WGS 84 / UTM zone 11N");
    EXPECT_FALSE(g.degrees);
    EXPECT_EQ(g.noData, -9999.0);

    // Longitude and latitude are degrees; a raster without geotransform or
    // coordinate system is not placed.
    plan.geoTransform = std::array<double, 6>{-97.5, 0.001, 0, 32.8, 0, -0.001};
    plan.epsg = 4326;
    MakeGeoTiff(folder.File("geographic.tif"), plan);
    EXPECT_TRUE(vek::tools::ReadElevationModel(folder.File("geographic.tif")).georeference.degrees);
    plan.geoTransform.reset();
    plan.epsg = 0;
    MakeGeoTiff(folder.File("plain.tif"), plan);
    const vek::tools::Georeference plain = vek::tools::ReadElevationModel(folder.File("plain.tif")).georeference;
    EXPECT_FALSE(plain.placed);
    EXPECT_EQ(plain.projection, "");
}

// A plane in world coordinates over 40 x 30 cells of 2 m from (500000,
// 4000000) south-east, with a hole of 3 x 3 cells without data.
constexpr double kWest = 500000, kNorth = 4000000, kCell = 2;
double PlaneAt(double x, double y) { return 100.0 + 0.25 * (x - kWest) - 0.5 * (kNorth - y); }

TiffPlan PlaneTiff()
{
    TiffPlan plan;
    plan.width = 40;
    plan.height = 30;
    plan.geoTransform = std::array<double, 6>{kWest, kCell, 0, kNorth, 0, -kCell};
    plan.noData = -1;
    for (int row = 0; row < 30; ++row) {
        for (int column = 0; column < 40; ++column) {
            const bool hole = column >= 10 && column < 13 && row >= 10 && row < 13;
            const double x = kWest + kCell * (column + 0.5), y = kNorth - kCell * (row + 0.5);
            plan.heights.push_back(hole ? -1.0f : static_cast<float>(PlaneAt(x, y)));
        }
    }
    return plan;
}

struct PlyFile {
    std::string header;
    std::vector<std::array<double, 3>> vertices;
    std::vector<std::array<int, 3>> faces;
    bool wellFormed = false;
};

// Parses the PLY the program writes, checking its length to the byte.
PlyFile ReadPly(const std::string& path)
{
    const Bytes bytes = ReadBytes(path);
    PlyFile ply;
    const std::string text(bytes.begin(), bytes.end());
    const std::size_t end = text.find("end_header\n");
    if (end == std::string::npos) return ply;
    ply.header = text.substr(0, end + 11);
    std::size_t nv = 0, nf = 0;
    std::istringstream lines(ply.header);
    for (std::string line; std::getline(lines, line);) {
        std::sscanf(line.c_str(), "element vertex %zu", &nv);
        std::sscanf(line.c_str(), "element face %zu", &nf);
    }
    if (bytes.size() != ply.header.size() + nv * 24 + nf * 13) return ply;
    const unsigned char* p = bytes.data() + ply.header.size();
    for (std::size_t i = 0; i < nv; ++i, p += 24) {
        std::array<double, 3> v;
        std::memcpy(v.data(), p, 24);
        ply.vertices.push_back(v);
    }
    for (std::size_t i = 0; i < nf; ++i, p += 13) {
        if (p[0] != 3) return ply;
        std::array<std::int32_t, 3> f;
        std::memcpy(f.data(), p + 1, 12);
        ply.faces.push_back({f[0], f[1], f[2]});
    }
    ply.wellFormed = true;
    return ply;
}

TEST(GeoTiffRun, TheSurfaceKeepsTheGeoreferenceAndTheMeshLiesInWorldUnits)
{
    ScratchFolder folder;
    MakeGeoTiff(folder.File("plane.tif"), PlaneTiff());
    const Outcome o = RunProgram({folder.File("plane.tif"), "--mode", "lattice", "--points", "2000", "--mesh-format",
                                  "ply", "--no-images", "-o", folder.File("ply")});
    ASSERT_EQ(o.code, 0) << o.err;
    EXPECT_NE(o.out.find("cell size 2.00 from the geotransform"), std::string::npos) << o.out;
    EXPECT_EQ(FilesIn(folder.File("ply")),
              (std::vector<std::string>{"plane_surface.field", "plane_surface.tif", "plane_triangles.ply"}));

    // The written GeoTIFF has the input's geotransform, coordinate system and
    // no-data value. Every cell lies within the plane's rise over half a
    // cell, (0.5 + 1) / 2, of the plane, the hole too, which the triangles
    // bridge.
    const TiffContents surface = ReadGeoTiff(folder.File("ply/plane_surface.tif"));
    EXPECT_EQ(surface.geoTransform, (std::array<double, 6>{kWest, kCell, 0, kNorth, 0, -kCell}));
    EXPECT_TRUE(SameCoordinateSystem(surface.projection, WktOf(32611))) << surface.projection;
    EXPECT_EQ(surface.noData, -1.0);
    ASSERT_EQ(surface.heights.size(), 40u * 30u);
    for (std::size_t i = 0; i < surface.heights.size(); ++i) {
        const double column = static_cast<double>(i % 40), row = static_cast<double>(i / 40);
        EXPECT_NEAR(surface.heights[i], PlaneAt(kWest + kCell * (column + 0.5), kNorth - kCell * (row + 0.5)), 0.75 + 1e-3)
            << i;
    }

    // The PLY's vertices are cell centres in world units on the plane, its
    // faces counter-clockwise seen from above.
    const PlyFile ply = ReadPly(folder.File("ply/plane_triangles.ply"));
    ASSERT_TRUE(ply.wellFormed) << ply.header;
    EXPECT_EQ(ply.header.rfind("ply\nformat binary_little_endian 1.0\n", 0), 0u) << ply.header;
    EXPECT_NE(ply.header.find("property double z\n"), std::string::npos);
    EXPECT_NE(ply.header.find("property list uchar int vertex_indices\n"), std::string::npos);
    EXPECT_NE(o.out.find("mesh        " + std::to_string(ply.vertices.size()) + " vertices, " +
                         std::to_string(ply.faces.size()) + " triangles"),
              std::string::npos)
        << o.out;
    EXPECT_GT(ply.vertices.size(), 1000u);
    for (const auto& v : ply.vertices) {
        EXPECT_TRUE(v[0] > kWest && v[0] < kWest + 80 && v[1] < kNorth && v[1] > kNorth - 60) << v[0] << " " << v[1];
        EXPECT_NEAR(std::fmod(v[0] - kWest, kCell), 1.0, 1e-6);
        EXPECT_NEAR(v[2], PlaneAt(v[0], v[1]), 1e-3);
    }
    for (const auto& f : ply.faces) {
        ASSERT_TRUE(std::max({f[0], f[1], f[2]}) < static_cast<int>(ply.vertices.size()) && std::min({f[0], f[1], f[2]}) >= 0);
        const auto &a = ply.vertices[f[0]], &b = ply.vertices[f[1]], &c = ply.vertices[f[2]];
        EXPECT_GT((b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]), 0.0);
    }

    // The OBJ holds the same mesh, to the hundredth of a metre.
    ASSERT_EQ(RunProgram({folder.File("plane.tif"), "--mode", "lattice", "--points", "2000", "--no-images", "-o",
                          folder.File("obj")})
                  .code,
              0);
    const ObjMesh obj = ReadObj(folder.File("obj/plane_triangles.obj"));
    ASSERT_EQ(obj.vertices.size(), ply.vertices.size());
    ASSERT_EQ(obj.faces.size(), ply.faces.size());
    for (std::size_t i = 0; i < obj.vertices.size(); ++i) {
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(obj.vertices[i][k], ply.vertices[i][k], 0.01);
    }
    for (std::size_t i = 0; i < obj.faces.size(); ++i)
        EXPECT_EQ(obj.faces[i], (std::array<int, 3>{ply.faces[i][0] + 1, ply.faces[i][1] + 1, ply.faces[i][2] + 1}));
}

TEST(GeoTiffOutput, CellsWithoutDataAreWrittenAsTheNoDataValue)
{
    // Not-a-number is the program's "no data"; in the file it becomes the
    // georeference's value, or stays not-a-number where there is none, and
    // it reads back as no data either way.
    ScratchFolder folder;
    const vek::tools::HeightRaster raster{3, 1, {1.5f, std::nanf(""), -2.0f}};
    vek::tools::Georeference g;
    g.noData = -32768;
    vek::tools::WriteGeoTiff(folder.File("with.tif"), raster, g);
    g.noData.reset();
    vek::tools::WriteGeoTiff(folder.File("without.tif"), raster, g);

    const TiffContents with = ReadGeoTiff(folder.File("with.tif")), without = ReadGeoTiff(folder.File("without.tif"));
    EXPECT_EQ(with.heights, (std::vector<float>{1.5f, -32768.0f, -2.0f}));
    EXPECT_EQ(with.noData, -32768.0);
    EXPECT_TRUE(std::isnan(without.heights[1]));
    EXPECT_FALSE(without.noData.has_value());
    // Not placed: GDAL's default geotransform of a raster without one.
    EXPECT_EQ(without.geoTransform, (std::array<double, 6>{0, 1, 0, 0, 0, 1}));
    for (const char* name : {"with.tif", "without.tif"}) {
        const vek::tools::LoadedRaster back = vek::tools::ReadElevationModel(folder.File(name));
        EXPECT_TRUE(std::isnan(back.raster.heights[1])) << name;
        EXPECT_EQ(back.raster.heights[2], -2.0f) << name;
    }
}

TEST(GeoTiffInput, RastersThatAreNoHeightFieldEndWithOneLineAndNothingWritten)
{
    ScratchFolder folder;
    TiffPlan bands, rotated, complex, palette, tall, huge, whole;
    bands.bands = 3;
    rotated.geoTransform = std::array<double, 6>{1000, 10, 0.5, 5000, 0, -10};
    complex.type = GDT_CInt16;
    palette.type = GDT_Byte;
    palette.palette = true;
    // Sparse files: the sizes are there, the blocks are not.
    tall.type = huge.type = GDT_Byte;
    tall.width = 2;
    tall.height = 32000;
    huge.width = huge.height = 20000;
    tall.options = huge.options = {"SPARSE_OK=TRUE"};
    whole.type = GDT_Int16;
    whole.width = whole.height = 64;
    whole.heights.assign(64 * 64, 7.0f);
    const std::vector<std::pair<std::string, TiffPlan>> made = {{"bands.tif", bands},     {"rotated.tif", rotated},
                                                                {"complex.tif", complex}, {"palette.tif", palette},
                                                                {"tall.tif", tall},       {"huge.tif", huge},
                                                                {"truncated.tif", whole}};
    for (const auto& [name, plan] : made) MakeGeoTiff(folder.File(name), plan);
    const Bytes full = ReadBytes(folder.File("truncated.tif"));
    WriteBytes(folder.File("truncated.tif"), Bytes(full.begin(), full.begin() + static_cast<long>(full.size() / 2)));
    WriteBytes(folder.File("text.tif"), Text("no raster at all\n"));

    const std::vector<std::pair<std::string, std::string>> cases = {
        {"bands.tif", "3 bands"},
        {"rotated.tif", "rotated"},
        {"complex.tif", "CInt16 values, not heights"},
        {"palette.tif", "colour table"},
        {"tall.tif", "32000 rows, more than the 31999"},
        {"huge.tif", "400000000 cells"},
        {"truncated.tif", "cannot be read to its end"},
        {"text.tif", "not a raster GDAL reads"},
    };
    for (const auto& [name, reason] : cases) {
        SCOPED_TRACE(name);
        const Outcome o = RunProgram({folder.File(name), "-o", folder.File("out")});
        ExpectOneLineRefusal(o);
        const std::string named = "triangulate_field: " + folder.File(name) + ": ";
        EXPECT_EQ(o.err.rfind(named, 0), 0u) << o.err;
        EXPECT_GT(o.err.size(), named.size() + 1) << o.err;
        EXPECT_NE(o.err.find(reason), std::string::npos) << o.err;
        EXPECT_FALSE(fs::exists(folder.File("out")));
    }
}

#endif

} // namespace
