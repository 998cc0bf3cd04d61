// The triangulate_field program: its arguments, its readers and writers of
// height rasters, and one small run from file to files.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "tools/tool_test_support.h"
#include "tools/triangulate_field/build_features.h"
#include "tools/triangulate_field/command_line.h"
#include "tools/triangulate_field/elevation_input.h"
#include "tools/triangulate_field/field_archive.h"
#include "tools/triangulate_field/raster_files.h"
#include "tools/triangulate_field/run.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using namespace vek::test;
using vek::tools::HeightRaster;
using vek::tools::ParseHeightRaster;
using vek::tools::ReadHeightRaster;
using vek::tools::ToolError;

TEST(TriangulateFieldArguments, OptionsDefaultsAndHelp)
{
    using vek::tools::MeshFormat;
    using vek::tools::ParseCommandLine;
    using vek::tools::SurfaceMode;
    const auto fields = [](const vek::tools::Options& o) {
        return std::tuple(o.input, o.outputDirectory, o.mode, o.maxError, o.maxVertices, o.points, o.cellSize,
                          o.keepLowest, o.meshFormat, o.images);
    };
    EXPECT_EQ(fields(ParseCommandLine({})), std::tuple(std::string(), std::string("out"), SurfaceMode::Adaptive, 10.0,
                                                       5'000'000, 60000, 0.0, false, MeshFormat::Obj, true));
    EXPECT_EQ(fields(ParseCommandLine({"--points", "500", "in.pfm", "--cell-size", "2.5", "-o", "results", "--lowest",
                                       "--mesh-format", "ply", "--no-images", "--mode", "lattice"})),
              std::tuple(std::string("in.pfm"), std::string("results"), SurfaceMode::Lattice, 10.0, 5'000'000, 500,
                         2.5, true, MeshFormat::Ply, false));
    EXPECT_EQ(fields(ParseCommandLine({"--max-error", "0.25", "--max-vertices", "4", "--mode", "adaptive"})),
              std::tuple(std::string(), std::string("out"), SurfaceMode::Adaptive, 0.25, 4, 60000, 0.0, false,
                         MeshFormat::Obj, true));
    EXPECT_EQ(ParseCommandLine({"-n", "3", "--mode", "lattice"}).points, 3);
    EXPECT_EQ(ParseCommandLine({"-e", "1e-3"}).maxError, 0.001);
    EXPECT_EQ(ParseCommandLine({"--mesh-format", "ply", "--mesh-format", "obj"}).meshFormat, MeshFormat::Obj);

    for (const char* flag : {"--help", "-h"}) {
        EXPECT_EQ(RunProgram({flag, "--bogus-after-help-is-still-an-error"}).code, 2);
        const Outcome help = RunProgram({flag});
        EXPECT_EQ(help.code, 0);
        EXPECT_EQ(help.err, "");
        for (const char* option : {"--max-error", "--max-vertices", "--mode", "--points", "--cell-size", "--lowest",
                                   "--output", "--help", "--mesh-format", "--no-images", "PFM", "PGM", "OBJ", "PLY",
                                   "GeoTIFF", "_relief.png", "_error.png"})
            EXPECT_NE(help.out.find(option), std::string::npos) << option;
        EXPECT_NE(help.out.find(vek::tools::InputHelp(vek::tools::BuiltWithGdal())), std::string::npos);
    }
}

TEST(TriangulateFieldArguments, BadArgumentsAndFilesEndWithOneLineAndCodeTwo)
{
    ScratchFolder folder;
    const std::string garbage = folder.File("garbage.pgm"), blocked = folder.File("blocked");
    const std::string tiny = folder.File("tiny.pgm"), small = folder.File("small.pgm");
    WriteBytes(garbage, Text("P5\n12 x\n"));
    WriteBytes(blocked, Text("a file where a folder is wanted"));
    WriteBytes(tiny, Text("P5 1 5 255\n") + Bytes(5, 7));
    WriteBytes(small, Text("P5 3 3 255\n") + Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9});
    const std::vector<std::vector<std::string>> cases = {
        {"--points"}, {"--points", "many", "--mode", "lattice"}, {"--points", "2", "--mode", "lattice"},
        {"--points", "12abc", "--mode", "lattice"}, {"--cell-size", "0"}, {"--cell-size", "nan"}, {"--output", ""},
        {"--bogus"}, {"a.pfm", "b.pfm"}, {"--mesh-format"}, {"--mesh-format", "stl"}, {"--mode", "finest"},
        {"--max-error", "0"}, {"--max-error", "-1"}, {"--max-error", "inf"}, {"--max-vertices", "3"},
        {"--max-vertices", "1.5"}, {"--points", "500"}, {"--max-error", "2", "--mode", "lattice"},
        {"--mode", "lattice", "--max-vertices", "100"}, {folder.File("missing.pfm")}, {garbage}, {tiny},
        {small, "-o", blocked},
    };
    for (const auto& args : cases) {
        SCOPED_TRACE(args[0] + (args.size() > 1 ? " " + args[1] : ""));
        ExpectOneLineRefusal(RunProgram(args));
    }
}

// 3 x 2 cells whose heights name their place: 10 * column + row.
const std::vector<float> kTopDown = {0, 10, 20, 1, 11, 21};

TEST(TriangulateFieldRasters, EachFormatReadsInRowsFromTheTop)
{
    ScratchFolder folder;
    // 16-bit samples are big-endian; the comment maps sample s to 5 + 0.5 s,
    // so sample 2 h - 10 + 300 reads as h + 150.
    Bytes pgm16 = Text("P5\n# offset=5 scale=0.5 height=offset+scale*value\n3 2\n65535\n");
    for (const float h : kTopDown) {
        const int sample = 2 * static_cast<int>(h) + 290;
        pgm16 = pgm16 + Bytes{static_cast<unsigned char>(sample >> 8), static_cast<unsigned char>(sample & 0xFF)};
    }
    // PFM stores the bottom row first.
    const std::vector<float> bottomUp = {1, 11, 21, 0, 10, 20};
    const std::vector<std::pair<std::string, Bytes>> files = {
        {"le.pfm", Text("Pf\n3 2\n-1.0\n") + FloatBytes(bottomUp, true)},
        {"be.pfm", Text("Pf 3 2 1.0\n") + FloatBytes(bottomUp, false)},
        {"8.pgm", Text("P5 3 2 # a comment\n255\n") + Bytes{0, 10, 20, 1, 11, 21}},
        {"16.pgm", pgm16},
    };
    for (const auto& [name, bytes] : files) {
        SCOPED_TRACE(name);
        WriteBytes(folder.File(name), bytes);
        const HeightRaster r = ReadHeightRaster(folder.File(name)).raster;
        ASSERT_EQ(std::pair(r.width, r.height), std::pair(3, 2));
        for (std::size_t i = 0; i < kTopDown.size(); ++i)
            EXPECT_EQ(r.heights[i], kTopDown[i] + (name == "16.pgm" ? 150.0f : 0.0f)) << i;
    }
}

TEST(TriangulateFieldRasters, FieldArchivesReadWithRowZeroAtTheBottom)
{
    // Stored by the library itself: field row y is raster row 1 - y, and a
    // cell of 0 holds no data.
    ScratchFolder folder;
    CSSEMatrix field;
    field.Create(3, 2);
    for (int i = 0; i < 6; ++i) field.SetPoint(i % 3, 1 - i / 3, kTopDown[i]);
    ASSERT_TRUE(field.Store(folder.File("f.field")));
    const vek::tools::LoadedRaster loaded = ReadHeightRaster(folder.File("f.field"));
    EXPECT_EQ(loaded.format, vek::tools::RasterFormat::FieldArchive);
    ASSERT_EQ(std::pair(loaded.raster.width, loaded.raster.height), std::pair(3, 2));
    EXPECT_TRUE(std::isnan(loaded.raster.heights[0]));
    for (std::size_t i = 1; i < kTopDown.size(); ++i) EXPECT_EQ(loaded.raster.heights[i], kTopDown[i]) << i;

    // One byte more or less, or a size that calls for other lengths, is no
    // field archive.
    std::ifstream in(folder.File("f.field"), std::ios::binary);
    const Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Bytes negative = bytes;
    negative[7] = 0x80;
    for (const Bytes& damaged : {Bytes(bytes.begin(), bytes.end() - 1), bytes + Bytes{0}, negative})
        EXPECT_THROW(ParseHeightRaster(damaged, "damaged"), ToolError);
}

TEST(TriangulateFieldRasters, TruncatedOrRandomFilesAreRefusedNeverReadBeyond)
{
    const Bytes pfm = Text("Pf\n3 2\n-1.0\n") + FloatBytes(kTopDown, true);
    const Bytes pgm = Text("P5\n3 2\n65535\n") + Bytes(12, 1);
    for (const Bytes& whole : {pfm, pgm}) {
        // A copy of exactly `cut` bytes, so that a read beyond is caught.
        for (auto end = whole.begin(); end != whole.end(); ++end)
            EXPECT_THROW(ParseHeightRaster(Bytes(whole.begin(), end), "cut"), ToolError) << end - whole.begin();
    }
    // Random bodies behind each magic number, mostly digits and spaces so
    // that many headers get far: read or refused, nothing else.
    std::mt19937 engine(77);
    for (int round = 0; round < 300; ++round) {
        Bytes bytes = Text(round % 2 == 0 ? "P5" : "Pf");
        for (int i = static_cast<int>(engine() % 40); i > 0; --i) {
            const unsigned r = engine() % 16;
            bytes.push_back(r < 6 ? static_cast<unsigned char>('0' + r) : r < 10 ? ' ' : static_cast<unsigned char>(engine()));
        }
        try {
            const HeightRaster r = ParseHeightRaster(bytes, "random").raster;
            EXPECT_EQ(r.heights.size(), static_cast<std::size_t>(r.width) * r.height);
        } catch (const ToolError&) {
        }
    }
}

TEST(TriangulateFieldRasters, SizesBeyondTheLibraryAreRefusedByName)
{
    // The library's fields end at 31999 rows; the sizes are refused from the
    // header, before any sample is looked for.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"P5 2 32000 255\n", "32000 rows, more than the 31999"},
        {"Pf 2 40000 -1.0\n", "40000 rows"},
        {"P5 20000 20000 255\n", "400000000 cells, more than the 268435456"},
    };
    for (const auto& [header, reason] : cases) {
        try {
            ParseHeightRaster(Text(header), "huge");
            ADD_FAILURE() << header;
        } catch (const ToolError& e) {
            EXPECT_NE(std::string(e.what()).find("huge: " + reason), std::string::npos) << e.what();
        }
    }
}

TEST(TriangulateFieldRasters, WrittenFilesReadBack)
{
    // PFM keeps every height and no data; the archive writes no data as 0,
    // which reads back as no data; 16 bits over -3 ... 2295 leave steps of
    // about 0.035, and their sample 0 for no data reads as a height.
    ScratchFolder folder;
    const HeightRaster r{4, 3, {315.0f, 316.5f, 1000.25f, 2295.0f, -3.0f, 0.0f, std::nanf(""), 17, 18, 19, 20, 21}};
    vek::tools::WritePfm(folder.File("r.pfm"), r);
    vek::tools::WriteFieldArchive(folder.File("r.field"), r);
    vek::tools::WritePgm16(folder.File("r.pgm"), r);
    for (const char* name : {"r.pfm", "r.field", "r.pgm"}) {
        SCOPED_TRACE(name);
        const HeightRaster back = ReadHeightRaster(folder.File(name)).raster;
        ASSERT_EQ(std::pair(back.width, back.height), std::pair(4, 3));
        const bool archive = name == std::string("r.field"), pgm = name == std::string("r.pgm");
        const double tolerance = pgm ? (2295.0 + 3.0) / 65534.0 / 2 + 1e-3 : 0.0;
        for (std::size_t i = 0; i < r.heights.size(); ++i) {
            if (pgm && std::isnan(r.heights[i])) continue;
            if (std::isnan(r.heights[i]) || (archive && r.heights[i] == 0.0f)) {
                EXPECT_TRUE(std::isnan(back.heights[i])) << i;
            } else {
                EXPECT_NEAR(back.heights[i], r.heights[i], tolerance) << i;
            }
        }
    }
}

TEST(TriangulateFieldRasters, BundledModelIsFoundAndRead)
{
    // The GeoTIFF where GDAL reads it, else the PGM; the corner and the cells
    // are those data/README.md gives.
    const std::string bundled = vek::tools::FindBundledInput();
    ASSERT_FALSE(bundled.empty());
    const bool gdal = vek::tools::BuiltWithGdal();
    EXPECT_TRUE(fs::equivalent(bundled, fs::path(VEKDLL_TEST_DATA_DIR) / (gdal ? "bigtujunga.tif" : "bigtujunga.pgm")));
    const vek::tools::LoadedRaster loaded = vek::tools::ReadElevationModel(bundled);
    const HeightRaster& r = loaded.raster;
    EXPECT_EQ(std::pair(r.width, r.height), std::pair(1197, 643));
    const auto [lo, hi] = std::minmax_element(r.heights.begin(), r.heights.end());
    EXPECT_EQ(std::pair(*lo, *hi), std::pair(315.0f, 2295.0f));
    const vek::tools::Georeference& g = loaded.georeference;
    EXPECT_EQ(g.placed, gdal);
    if (gdal) {
        EXPECT_NEAR(g.originX, 376313.66, 0.005);
        EXPECT_NEAR(g.originY, 3807917.83, 0.005);
        EXPECT_EQ(std::pair(g.columnStep, g.rowStep), std::pair(30.0, -30.0));
        EXPECT_EQ(g.projectionName, "WGS 84 / UTM zone 11N");
        EXPECT_EQ(g.noData, 32767.0);
    }
}

TEST(TriangulateFieldRun, APlaneComesBackWithinHalfACellOfSlope)
{
    // z = 0.5 column - 0.25 row + 40 over 30 x 20 cells of size 1: every
    // triangle lies in the plane, so a cell can be off by no more than the
    // plane rises across half a cell, 0.5 (0.5 + 0.25).
    ScratchFolder folder;
    HeightRaster plane{30, 20, {}};
    for (int i = 0; i < 600; ++i)
        plane.heights.push_back(0.5f * static_cast<float>(i % 30) - 0.25f * static_cast<float>(i / 30) + 40.0f);
    vek::tools::WritePfm(folder.File("plane.pfm"), plane);

    const Outcome o = RunProgram({folder.File("plane.pfm"), "--mode", "lattice", "--points", "120", "--cell-size", "1",
                                  "-o", folder.File("out")});
    ASSERT_EQ(o.code, 0) << o.err;
    EXPECT_NE(o.out.find("30 x 20 cells"), std::string::npos) << o.out;
    const HeightRaster result = ReadHeightRaster(folder.File("out/plane_surface.pfm")).raster;
    ASSERT_EQ(std::pair(result.width, result.height), std::pair(30, 20));
    for (std::size_t i = 0; i < plane.heights.size(); ++i)
        EXPECT_NEAR(result.heights[i], plane.heights[i], 0.375 + 1e-3) << "cell " << i;

    // The OBJ holds as many faces as the report says, every face names
    // vertices before it, and the vertices lie on the plane at x = column,
    // y = row counted from the bottom (19 - row), times the cell size 1.
    const ObjMesh obj = ReadObj(folder.File("out/plane_triangles.obj"));
    EXPECT_LE(obj.vertices.size(), 120u + 4u);
    EXPECT_GT(obj.faces.size(), obj.vertices.size());
    for (const auto& f : obj.faces)
        EXPECT_TRUE(std::min({f[0], f[1], f[2]}) >= 1 && std::max({f[0], f[1], f[2]}) <= static_cast<int>(obj.vertices.size()));
    for (const auto& v : obj.vertices) EXPECT_NEAR(v[2], 0.5 * v[0] - 0.25 * (19.0 - v[1]) + 40.0, 1e-4);
    EXPECT_NE(o.out.find("triangles   " + std::to_string(obj.faces.size())), std::string::npos) << o.out;

    // Whole files only, under their names: no temporary is left behind.
    std::vector<std::string> expected = {"plane_surface.field", "plane_surface.pfm", "plane_surface.pgm",
                                         "plane_triangles.obj"};
    if (vek::tools::BuiltWithPng()) expected.insert(expected.begin(), {"plane_error.png", "plane_relief.png"});
    EXPECT_EQ(FilesIn(folder.File("out")), expected);
}

} // namespace
