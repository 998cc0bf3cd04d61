// The pictures triangulate_field draws: a shaded relief lit from the
// north-west, an error map on a diverging scale, and their PNG files.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "tools/tool_test_support.h"
#include "tools/triangulate_field/build_features.h"
#include "tools/triangulate_field/pictures.h"
#include "tools/triangulate_field/png_file.h"

#ifdef VEKDLL_TOOLS_WITH_PNG
#include <png.h>
#endif

namespace {

using namespace vek::test;
using vek::tools::Georeference;
using vek::tools::HeightRaster;
using vek::tools::RgbaImage;
using Pixel = std::array<unsigned char, 4>;

int Brightness(const Pixel& p) { return p[0] + p[1] + p[2]; }

// Two flanks of a V rising 2 per cell from its floor at the middle column
// (or row): the same heights, so the same tint, on opposite faces.
HeightRaster Valley(bool alongColumns)
{
    HeightRaster r{alongColumns ? 5 : 21, alongColumns ? 21 : 5, {}};
    for (int row = 0; row < r.height; ++row) {
        for (int column = 0; column < r.width; ++column)
            r.heights.push_back(100.0f + 2.0f * static_cast<float>(std::abs((alongColumns ? row : column) - 10)));
    }
    return r;
}

TEST(ShadedRelief, FacesTowardsTheNorthWestSunAreTheBrighter)
{
    Georeference northUp;
    northUp.placed = true;

    // A valley running north-south: its east flank faces west, into the sun.
    const RgbaImage across = vek::tools::ShadedRelief(Valley(false), northUp);
    EXPECT_GT(Brightness(across.At(15, 2)), Brightness(across.At(5, 2)) + 30);

    // A valley running east-west: its south flank faces north. In a raster
    // whose rows run north the same rows are the north flank.
    const RgbaImage along = vek::tools::ShadedRelief(Valley(true), northUp);
    EXPECT_GT(Brightness(along.At(2, 15)), Brightness(along.At(2, 5)) + 30);
    Georeference southUp = northUp;
    southUp.rowStep = 1.0;
    const RgbaImage flipped = vek::tools::ShadedRelief(Valley(true), southUp);
    EXPECT_GT(Brightness(flipped.At(2, 5)), Brightness(flipped.At(2, 15)) + 30);

    // Cells without data are clear, and their neighbours are still drawn.
    HeightRaster holed = Valley(false);
    holed.At(7, 2) = std::nanf("");
    const RgbaImage withHole = vek::tools::ShadedRelief(holed, northUp);
    EXPECT_EQ(withHole.At(7, 2)[3], 0);
    EXPECT_EQ(withHole.At(6, 2)[3], 255);
    EXPECT_EQ(withHole.At(8, 2)[3], 255);
}

TEST(ShadedRelief, CellsInDegreesAreLitByTheirLengthOnTheGround)
{
    // A fall of 1 m per cell of 0.001 degrees eastward, about 111 m at the
    // equator, so facing east, away from the sun: nearly flat ground. Taken
    // as 0.001 m, the same cells would form a wall in the shade.
    HeightRaster slope{5, 5, {}};
    for (int i = 0; i < 25; ++i) slope.heights.push_back(static_cast<float>(4 - i % 5));
    // Flat around the middle cell at the slope's range and middle height, so
    // that the tint there is the same.
    HeightRaster flat{5, 5, std::vector<float>(25, 2.0f)};
    flat.At(0, 0) = 0.0f;
    flat.At(4, 4) = 4.0f;
    Georeference degrees;
    degrees.placed = degrees.degrees = true;
    degrees.columnStep = 0.001;
    degrees.rowStep = -0.001;
    Georeference metres = degrees;
    metres.degrees = false;
    const int lit = Brightness(vek::tools::ShadedRelief(flat, degrees).At(2, 2));
    const int onTheGround = Brightness(vek::tools::ShadedRelief(slope, degrees).At(2, 2));
    const int asAWall = Brightness(vek::tools::ShadedRelief(slope, metres).At(2, 2));
    EXPECT_LT(std::abs(onTheGround - lit) * 20, lit) << onTheGround << " vs " << lit;
    EXPECT_LT(asAWall * 2, lit) << asAWall << " vs " << lit;
}

TEST(ErrorMap, ScaleColoursAndCellsBeyond)
{
    // Differences 0, +0.4, -0.4, +3, -1, +0.2; a cell the result misses and
    // one without input. The 99th percentile of the six sizes (the fifth
    // of 0, 0.2, 0.4, 0.4, 1, 3) is 1, a round number already: +3 lies
    // beyond it.
    const float gap = std::nanf("");
    const HeightRaster input{4, 2, {10, 10, 10, 10, 10, 10, 10, gap}};
    const HeightRaster result{4, 2, {10, 10.4f, 9.6f, 13, 9, 10.2f, gap, 10}};
    const vek::tools::ErrorMap map = vek::tools::DrawErrorMap(input, result);
    EXPECT_EQ(map.range, 1.0);
    EXPECT_EQ(map.beyond, 1);
    const RgbaImage& image = map.image;
    EXPECT_EQ(image.At(0, 0), (Pixel{255, 255, 255, 255}));
    // The ends of the scale, the end colours; beyond it, the same.
    const Pixel red{178, 24, 43, 255}, blue{33, 102, 172, 255};
    EXPECT_EQ(image.At(3, 0), red);
    EXPECT_EQ(image.At(0, 1), blue);
    // 0.4 either way lies 0.4 of the way from white to the end, in every
    // channel but to the rounding of a byte.
    const Pixel above = image.At(1, 0), below = image.At(2, 0);
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(255 - above[k], 0.4 * (255 - red[k]), 0.5) << k;
        EXPECT_NEAR(255 - below[k], 0.4 * (255 - blue[k]), 0.5) << k;
    }
    EXPECT_EQ(image.At(2, 1), (Pixel{128, 128, 128, 255}));
    EXPECT_EQ(image.At(3, 1)[3], 0);

    // A result equal to its input: all white, on a scale of 1.
    const vek::tools::ErrorMap same = vek::tools::DrawErrorMap(input, input);
    EXPECT_EQ(std::pair(same.range, same.beyond), std::pair(1.0, 0LL));
    EXPECT_EQ(same.image.At(1, 1), (Pixel{255, 255, 255, 255}));
}

TEST(ErrorMap, ScalesRoundUpToOneTwoOrFive)
{
    const std::vector<std::pair<double, double>> cases = {
        {0.7, 1}, {1, 1}, {1.01, 2}, {2, 2}, {3.2, 5}, {5, 5}, {7, 10}, {0.03, 0.05}, {0.2, 0.2}, {1234, 2000}, {49.9, 50},
    };
    for (const auto& [value, scale] : cases) EXPECT_DOUBLE_EQ(vek::tools::RoundScaleUp(value), scale) << value;
}

TEST(PngFile, WritesAnRgbaPngThatReadsBack)
{
    ScratchFolder folder;
    const RgbaImage image{3, 2, {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 9, 8, 7, 0, 1, 2, 3, 128, 200, 100, 50, 255}};
    if (!vek::tools::BuiltWithPng()) {
        EXPECT_THROW(vek::tools::WritePng(folder.File("p.png"), image), vek::tools::ToolError);
        return;
    }
    vek::tools::WritePng(folder.File("p.png"), image);
    const Bytes bytes = ReadBytes(folder.File("p.png"));
    // The signature, then IHDR: length 13, width 3, height 2, 8 bits, RGBA.
    const Bytes start = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R',
                         0,    0,   0,   3,   0,    0,    0,    2,    8, 6};
    ASSERT_GE(bytes.size(), start.size());
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(start.size())), start);
#ifdef VEKDLL_TOOLS_WITH_PNG
    png_image back{};
    back.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&back, folder.File("p.png").c_str())) << back.message;
    back.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(back));
    ASSERT_TRUE(png_image_finish_read(&back, nullptr, pixels.data(), 0, nullptr)) << back.message;
    EXPECT_EQ(pixels, image.rgba);
#endif
}

} // namespace
