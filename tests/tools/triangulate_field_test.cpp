// The triangulate_field program: its arguments, its readers and writers of
// height rasters, and one small run from file to files.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tools/triangulate_field/command_line.h"
#include "tools/triangulate_field/field_archive.h"
#include "tools/triangulate_field/raster_files.h"
#include "tools/triangulate_field/run.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

namespace fs = std::filesystem;
using vek::tools::HeightRaster;
using vek::tools::ReadHeightRaster;
using vek::tools::ToolError;

using Bytes = std::vector<unsigned char>;

// A folder of its own for each test, removed afterwards.
class ScratchFolder {
public:
    ScratchFolder()
        : path_(fs::temp_directory_path() /
                ("triangulate_field_test_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name())))
    {
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~ScratchFolder() { fs::remove_all(path_); }
    std::string File(const std::string& name) const { return (path_ / name).string(); }

private:
    fs::path path_;
};

void WriteBytes(const std::string& path, const Bytes& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes Text(const std::string& s)
{
    return Bytes(s.begin(), s.end());
}

Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes FloatBytes(const std::vector<float>& values, bool littleEndian)
{
    Bytes bytes;
    for (float v : values) {
        std::uint32_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        for (int k = 0; k < 4; ++k) bytes.push_back(static_cast<unsigned char>(bits >> (8 * (littleEndian ? k : 3 - k))));
    }
    return bytes;
}

struct Outcome {
    int code;
    std::string out;
    std::string err;
};

Outcome RunProgram(const std::vector<std::string>& args)
{
    std::ostringstream out;
    std::ostringstream err;
    const int code = vek::tools::RunTriangulateField(args, out, err);
    return {code, out.str(), err.str()};
}

// ---------------------------------------------------------------- arguments

TEST(TriangulateFieldArguments, OptionsAndTheirDefaults)
{
    using vek::tools::ParseCommandLine;
    const vek::tools::Options defaults = ParseCommandLine({});
    EXPECT_EQ(defaults.input, "");
    EXPECT_EQ(defaults.outputDirectory, "out");
    EXPECT_EQ(defaults.points, 16000);
    EXPECT_EQ(defaults.cellSize, 30.0);
    EXPECT_FALSE(defaults.keepLowest);

    const vek::tools::Options set =
        ParseCommandLine({"--points", "500", "in.pfm", "--cell-size", "2.5", "-o", "results", "--lowest"});
    EXPECT_EQ(set.input, "in.pfm");
    EXPECT_EQ(set.points, 500);
    EXPECT_EQ(set.cellSize, 2.5);
    EXPECT_EQ(set.outputDirectory, "results");
    EXPECT_TRUE(set.keepLowest);
    EXPECT_EQ(ParseCommandLine({"-n", "3"}).points, 3);
}

TEST(TriangulateFieldArguments, HelpNamesEveryOption)
{
    for (const char* flag : {"--help", "-h"}) {
        const Outcome o = RunProgram({flag, "--bogus-after-help-is-still-an-error"});
        EXPECT_EQ(o.code, 2);
        const Outcome help = RunProgram({flag});
        EXPECT_EQ(help.code, 0);
        EXPECT_EQ(help.err, "");
        for (const char* option : {"--points", "--cell-size", "--lowest", "--output", "--help", "PFM", "PGM", "OBJ"})
            EXPECT_NE(help.out.find(option), std::string::npos) << option;
    }
}

TEST(TriangulateFieldArguments, BadArgumentsAndFilesEndWithOneLineAndCodeTwo)
{
    ScratchFolder folder;
    const std::string garbage = folder.File("garbage.pgm");
    WriteBytes(garbage, Text("P5\n12 x\n"));
    const std::string blocked = folder.File("blocked");
    WriteBytes(blocked, Text("a file where a folder is wanted"));
    const std::string tiny = folder.File("tiny.pgm");
    WriteBytes(tiny, Text("P5 1 5 255\n") + Bytes(5, 7));
    const std::string small = folder.File("small.pgm");
    WriteBytes(small, Text("P5 3 3 255\n") + Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9});
    const std::vector<std::vector<std::string>> cases = {
        {"--points"},
        {"--points", "many"},
        {"--points", "2"},
        {"--points", "12abc"},
        {"--cell-size", "0"},
        {"--cell-size", "nan"},
        {"--output", ""},
        {"--bogus"},
        {"a.pfm", "b.pfm"},
        {folder.File("missing.pfm")},
        {garbage},
        {tiny},
        {small, "-o", blocked},
    };
    for (const auto& args : cases) {
        const Outcome o = RunProgram(args);
        const std::string shown = args.empty() ? "" : args[0] + (args.size() > 1 ? " " + args[1] : "");
        EXPECT_EQ(o.code, 2) << shown;
        ASSERT_FALSE(o.err.empty()) << shown;
        EXPECT_EQ(o.err.find('\n'), o.err.size() - 1) << shown << ": " << o.err;
        EXPECT_EQ(o.err.rfind("triangulate_field: ", 0), 0u) << o.err;
    }
}

// ---------------------------------------------------------------- readers and writers

// 3 x 2 cells whose heights name their place: 10 * column + row.
const std::vector<float> kTopDown = {0, 10, 20, 1, 11, 21};

TEST(TriangulateFieldRasters, EachFormatReadsInRowsFromTheTop)
{
    ScratchFolder folder;
    // 16-bit samples are big-endian; the comment maps sample s to 5 + 0.5 s.
    Bytes pgm16 = Text("P5\n# offset=5 scale=0.5 height=offset+scale*value\n3 2\n65535\n");
    for (float h : kTopDown) {
        const int sample = static_cast<int>((h - 5.0f) / 0.5f) + 300;
        pgm16.push_back(static_cast<unsigned char>(sample >> 8));
        pgm16.push_back(static_cast<unsigned char>(sample & 0xFF));
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
        WriteBytes(folder.File(name), bytes);
        const HeightRaster r = ReadHeightRaster(folder.File(name)).raster;
        ASSERT_EQ(r.width, 3) << name;
        ASSERT_EQ(r.height, 2) << name;
        for (std::size_t i = 0; i < kTopDown.size(); ++i) {
            const float expected = name == "16.pgm" ? kTopDown[i] + 150.0f : kTopDown[i];
            EXPECT_EQ(r.heights[i], expected) << name << " cell " << i;
        }
    }
}

TEST(TriangulateFieldRasters, FieldArchivesReadWithRowZeroAtTheBottom)
{
    // Stored by the library itself: field row y is raster row 1 - y, and a
    // cell of 0 holds no data.
    ScratchFolder folder;
    CSSEMatrix field;
    field.Create(3, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) field.SetPoint(x, y, static_cast<float>(10 * x + (1 - y)));
    ASSERT_TRUE(field.Store(folder.File("f.field")));
    const vek::tools::LoadedRaster loaded = ReadHeightRaster(folder.File("f.field"));
    EXPECT_EQ(loaded.format, vek::tools::RasterFormat::FieldArchive);
    ASSERT_EQ(loaded.raster.width, 3);
    ASSERT_EQ(loaded.raster.height, 2);
    EXPECT_TRUE(std::isnan(loaded.raster.heights[0])); // field cell (0, 1) holds 0
    for (std::size_t i = 1; i < kTopDown.size(); ++i) EXPECT_EQ(loaded.raster.heights[i], kTopDown[i]) << i;

    // One byte more or less, or a size that calls for other lengths, is no
    // field archive.
    std::ifstream in(folder.File("f.field"), std::ios::binary);
    const Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_THROW(vek::tools::ParseHeightRaster(Bytes(bytes.begin(), bytes.end() - 1), "short"), ToolError);
    EXPECT_THROW(vek::tools::ParseHeightRaster(bytes + Bytes{0}, "long"), ToolError);
    Bytes negative = bytes;
    negative[7] = 0x80;
    EXPECT_THROW(vek::tools::ParseHeightRaster(negative, "negative"), ToolError);
}

TEST(TriangulateFieldRasters, TruncatedOrRandomFilesAreRefusedNeverReadBeyond)
{
    using vek::tools::ParseHeightRaster;
    const Bytes pfm = Text("Pf\n3 2\n-1.0\n") + FloatBytes(kTopDown, true);
    const Bytes pgm = Text("P5\n3 2\n65535\n") + Bytes(12, 1);
    for (const Bytes& whole : {pfm, pgm}) {
        for (std::size_t cut = 0; cut < whole.size(); ++cut) {
            // A copy of exactly `cut` bytes, so that a read beyond is caught.
            const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
            EXPECT_THROW(ParseHeightRaster(part, "damaged"), ToolError) << cut;
        }
    }
    // Random bodies behind each magic number, mostly digits and spaces so
    // that many headers get far: read or refused, nothing else.
    std::mt19937 engine(77);
    for (int round = 0; round < 300; ++round) {
        Bytes bytes = round % 2 == 0 ? Text("P5") : Text("Pf");
        const int length = static_cast<int>(engine() % 40);
        for (int i = 0; i < length; ++i) {
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

TEST(TriangulateFieldRasters, WrittenFilesReadBack)
{
    ScratchFolder folder;
    HeightRaster r;
    r.width = 4;
    r.height = 3;
    r.heights = {315.0f, 316.5f, 1000.25f, 2295.0f, -3.0f, 0.0f, std::nanf(""), 17.0f, 18.0f, 19.0f, 20.0f, 21.0f};
    vek::tools::WritePfm(folder.File("r.pfm"), r);
    const HeightRaster pfm = ReadHeightRaster(folder.File("r.pfm")).raster;
    ASSERT_EQ(pfm.width, 4);
    ASSERT_EQ(pfm.height, 3);
    for (std::size_t i = 0; i < r.heights.size(); ++i) {
        if (std::isnan(r.heights[i])) {
            EXPECT_TRUE(std::isnan(pfm.heights[i]));
        } else {
            EXPECT_EQ(pfm.heights[i], r.heights[i]) << i;
        }
    }

    // The archive keeps every height; no data comes back as no data.
    vek::tools::WriteFieldArchive(folder.File("r.field"), r);
    const HeightRaster archived = ReadHeightRaster(folder.File("r.field")).raster;
    ASSERT_EQ(archived.heights.size(), r.heights.size());
    for (std::size_t i = 0; i < r.heights.size(); ++i) {
        if (std::isnan(r.heights[i]) || r.heights[i] == 0.0f) {
            EXPECT_TRUE(std::isnan(archived.heights[i])) << i;
        } else {
            EXPECT_EQ(archived.heights[i], r.heights[i]) << i;
        }
    }

    // 16 bits over -3 ... 2295 leave steps of about 0.035.
    vek::tools::WritePgm16(folder.File("r.pgm"), r);
    const HeightRaster pgm = ReadHeightRaster(folder.File("r.pgm")).raster;
    const double step = (2295.0 + 3.0) / 65534.0;
    for (std::size_t i = 0; i < r.heights.size(); ++i) {
        if (std::isnan(r.heights[i])) continue;
        EXPECT_NEAR(pgm.heights[i], r.heights[i], step / 2 + 1e-3) << i;
    }
}

TEST(TriangulateFieldRasters, BundledModelIsFoundAndRead)
{
    const std::string bundled = vek::tools::FindBundledInput();
    ASSERT_FALSE(bundled.empty());
    EXPECT_TRUE(fs::equivalent(bundled, fs::path(VEKDLL_TEST_DATA_DIR) / "bigtujunga.pgm"));
    const HeightRaster r = ReadHeightRaster(bundled).raster;
    EXPECT_EQ(r.width, 1197);
    EXPECT_EQ(r.height, 643);
    const auto [lo, hi] = std::minmax_element(r.heights.begin(), r.heights.end());
    EXPECT_EQ(*lo, 315.0f);
    EXPECT_EQ(*hi, 2295.0f);
}

// ---------------------------------------------------------------- a whole run

TEST(TriangulateFieldRun, APlaneComesBackWithinHalfACellOfSlope)
{
    // z = 0.5 column - 0.25 row + 40 over 30 x 20 cells of size 1: every
    // triangle lies in the plane, so a cell can be off by no more than the
    // plane rises across half a cell, 0.5 (0.5 + 0.25).
    ScratchFolder folder;
    HeightRaster plane;
    plane.width = 30;
    plane.height = 20;
    for (int row = 0; row < 20; ++row)
        for (int column = 0; column < 30; ++column)
            plane.heights.push_back(0.5f * static_cast<float>(column) - 0.25f * static_cast<float>(row) + 40.0f);
    vek::tools::WritePfm(folder.File("plane.pfm"), plane);

    const Outcome o = RunProgram({folder.File("plane.pfm"), "--points", "120", "--cell-size", "1", "-o", folder.File("out")});
    ASSERT_EQ(o.code, 0) << o.err;
    EXPECT_NE(o.out.find("30 x 20 cells"), std::string::npos) << o.out;

    const HeightRaster result = ReadHeightRaster(folder.File("out/plane_surface.pfm")).raster;
    ASSERT_EQ(result.width, 30);
    ASSERT_EQ(result.height, 20);
    for (std::size_t i = 0; i < plane.heights.size(); ++i)
        EXPECT_NEAR(result.heights[i], plane.heights[i], 0.375 + 1e-3) << "cell " << i;

    // The OBJ holds as many vertices and faces as the report says, and every
    // face names stored vertices.
    std::ifstream obj(folder.File("out/plane_triangles.obj"));
    int vertices = 0;
    int faces = 0;
    int badFaces = 0;
    std::string tag;
    std::string line;
    while (std::getline(obj, line)) {
        std::istringstream words(line);
        words >> tag;
        if (tag == "v") ++vertices;
        if (tag != "f") continue;
        ++faces;
        int a = 0, b = 0, c = 0;
        words >> a >> b >> c;
        badFaces += a < 1 || b < 1 || c < 1 || a > vertices || b > vertices || c > vertices;
    }
    EXPECT_LE(vertices, 120 + 4);
    EXPECT_GT(faces, vertices);
    EXPECT_EQ(badFaces, 0);
    EXPECT_NE(o.out.find("triangles   " + std::to_string(faces)), std::string::npos) << o.out;
    EXPECT_TRUE(fs::exists(folder.File("out/plane_surface.pgm")));
    EXPECT_TRUE(fs::exists(folder.File("out/plane_surface.field")));
}

} // namespace
