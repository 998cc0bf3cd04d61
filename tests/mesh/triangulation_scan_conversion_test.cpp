#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "mesh_builders.h"
#include "support/polygon_points.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using namespace vek::test;

namespace {

// A mesh of the given triangles with S, T, V and box, as the builders leave it.
void Prepare(CHTriangulation& mesh, const std::vector<Triangle>& triangles)
{
    Fill(mesh, triangles);
    mesh.CalcSTV();
    mesh.CalcBoundingBox();
}

// The largest |value - truth| over pixels 1 .. size-2 of the raster.
float WorstInnerError(const CSSEMatrix& raster, const std::function<float(int, int)>& truth)
{
    float worst = 0.0f;
    for (int y = 1; y < raster.GetSizeY() - 1; ++y) {
        for (int x = 1; x < raster.GetSizeX() - 1; ++x) worst = std::max(worst, std::fabs(raster.GetPoint(x, y) - truth(x, y)));
    }
    return worst;
}

TEST(ScanConversionRoundTrip, APlaneComesBackWithinOnePixelsRiseAndMaxAndMinStraddleIt)
{
    // z = 10 + x / 2 + y / 4 on 64 x 64 pixels. The unsampled mesh keeps a
    // tail of triangles at the origin, so its box starts at z = 0 and the
    // raster holds absolute heights.
    const auto plane = [](int x, int y) { return 10.0f + 0.5f * static_cast<float>(x) + 0.25f * static_cast<float>(y); };
    CSSEMatrix field, high, low;
    FillField(field, 64, 64, plane);
    CHTriangulation mesh(&field, 0.0f, true, 1.0f, 1.0f, 1.0f);
    mesh.ScanConvertTriangulationMax(&high, 0.0f);
    mesh.ScanConvertTriangulationMin(&low, 0.0f);
    ASSERT_EQ(std::pair(high.GetSizeX(), high.GetSizeY()), std::pair(63, 63));
    // A cell's triangles are sampled at their corner A, exactly, and at
    // points 0.12 of a pixel below and left of the corners of the pixels
    // beside it; the cross carries each sample one pixel on. So the maximum
    // is the height of the right neighbour's corner, and the minimum lies
    // within 0.12 (x/2 + y/4) below the left one's.
    for (int y = 1; y < 61; ++y) {
        for (int x = 2; x < 61; ++x) {
            ASSERT_EQ(high.GetPoint(x, y), plane(x + 1, y)) << x << ", " << y;
            ASSERT_LE(low.GetPoint(x, y), plane(x - 1, y)) << x << ", " << y;
            ASSERT_GE(low.GetPoint(x, y), plane(x - 1, y) - 0.1f) << x << ", " << y;
        }
    }
    // The outermost rows are reached only by the arms; the corner not at all.
    EXPECT_EQ(high.GetPoint(0, 5), plane(1, 5));
    EXPECT_EQ(std::pair(high.GetPoint(0, 0), low.GetPoint(0, 0)), std::pair(0.0f, 0.0f));

    // A level field comes back exactly, and the same from both twins.
    CSSEMatrix level;
    FillField(level, 16, 16, [](int, int) { return 3.0f; });
    CHTriangulation flat(&level, 0.0f, true, 1.0f, 1.0f, 1.0f, 1, 1);
    flat.ScanConvertTriangulationMax(&high, 3.0f);
    flat.ScanConvertTriangulationMin(&low, 3.0f);
    EXPECT_EQ(WorstInnerError(high, [](int, int) { return 3.0f; }), 0.0f);
    EXPECT_EQ(WorstInnerError(low, [](int, int) { return 3.0f; }), 0.0f);
}

TEST(ScanConversionRoundTrip, AParaboloidOnCellsOfTwoPixelsStaysWithinTheBrushReach)
{
    // A dome z = 40 - r^2 / 100 around (20, 20), sampled on cells of 2 x 2
    // pixels at a model scale of 0.5: the raster has the field's pixels back.
    const auto dome = [](float x, float y) { return 40.0f - ((x - 20) * (x - 20) + (y - 20) * (y - 20)) / 100.0f; };
    CSSEMatrix field, raster;
    FillField(field, 41, 41, [&](int x, int y) { return dome(static_cast<float>(x), static_cast<float>(y)); });
    CHTriangulation mesh(&field, 0.0f, true, 0.5f, 0.5f, 1.0f, 2, 2);
    SSEPoint min;
    mesh.GetMinPoint(min);
    mesh.ScanConvertTriangulationMax(&raster, min.z);
    ASSERT_EQ(raster.GetSizeX(), 40);
    // A sample lies within half a pixel of its pixel and the cross moves it
    // one more, so the error is bounded by 1.5 pixels of the steepest slope
    // (0.4 per pixel) in one axis and 0.5 in the other, plus the sag of a
    // plane over a cell of 2 (0.02).
    EXPECT_LT(WorstInnerError(raster, [&](int x, int y) { return dome(static_cast<float>(x), static_cast<float>(y)); }),
              2.0f * 0.4f + 0.02f);
    EXPECT_EQ(raster.NumValuesBelow(-1.0f), 0); // no sentinel is left
}

TEST(ScanConversionOverlap, TheUpperTriangleWinsWithMaxAndTheLowerWithMinInEitherOrder)
{
    const Triangle lowTriangle = {{{0, 0, 1}, {10, 0, 1}, {0, 10, 1}}};
    const Triangle highTriangle = {{{0, 0, 3}, {10, 0, 3}, {0, 10, 3}}};
    for (const auto& order : {std::vector<Triangle>{lowTriangle, highTriangle}, std::vector<Triangle>{highTriangle, lowTriangle}}) {
        CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
        Prepare(mesh, order);
        CSSEMatrix high, low;
        mesh.ScanConvertTriangulationMax(&high, 1.0f);
        mesh.ScanConvertTriangulationMin(&low, 1.0f);
        // Heights relative to the box's lowest corner, plus the offset; a
        // pixel beyond the hypotenuse holds 0.
        EXPECT_EQ(std::pair(high.GetPoint(3, 3), low.GetPoint(3, 3)), std::pair(3.0f, 1.0f));
        EXPECT_EQ(std::pair(high.GetPoint(8, 8), low.GetPoint(8, 8)), std::pair(0.0f, 0.0f));
    }

    // In the caller's frame the raster grows and the mesh moves in it.
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    Prepare(mesh, {highTriangle});
    SSEPoint min = Sse(-2, -4, 0), max = Sse(12, 12, 5);
    CSSEMatrix framed;
    mesh.ScanConvertTriangulationMax_MinMaxPoint(&framed, 0.0f, min, max);
    EXPECT_EQ(std::pair(framed.GetSizeX(), framed.GetSizeY()), std::pair(14, 16));
    EXPECT_EQ(std::tuple(framed.GetPoint(3, 5), framed.GetPoint(1, 2), framed.GetPoint(3, 2)), std::tuple(3.0f, 0.0f, 0.0f));

    // A mesh without extent or without triangles leaves the raster alone.
    CHTriangulation empty(0, 1.0f, 1.0f, 1.0f);
    empty.CalcBoundingBox();
    empty.ScanConvertTriangulationMin(&framed, 0.0f);
    EXPECT_EQ(framed.GetSizeX(), 14);
}

// A mesh of two points: one triangle shrunk to (5, 5, z) and one to (9, 9, 0)
// that only widens the box. A point has one sample, at itself.
void MakePoint(CHTriangulation& mesh, float z)
{
    Prepare(mesh, {{{{5, 5, z}, {5, 5, z}, {5, 5, z}}}, {{{9, 9, 0}, {9, 9, 0}, {9, 9, 0}}}});
}

int CountEqual(const CSSEMatrix& raster, float value)
{
    int count = 0;
    for (int y = 0; y < raster.GetSizeY(); ++y) {
        for (int x = 0; x < raster.GetSizeX(); ++x) count += raster.GetPoint(x, y) == value ? 1 : 0;
    }
    return count;
}

TEST(ScanConversionIntoARaster, TheBrushFollowsTheFlagsAndEarlierContentCounts)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    MakePoint(mesh, 3.0f);
    struct Case {
        bool box, large;
        int pixels;
    };
    for (const Case& c : {Case{false, false, 5}, Case{false, true, 5}, Case{true, false, 9}, Case{true, true, 25}}) {
        CSSEMatrix raster;
        raster.Create(12, 12);
        mesh.ScanConvertTriangulationMaxNoDelete(&raster, c.box, c.large);
        EXPECT_EQ(CountEqual(raster, 3.0f), c.pixels) << c.box << c.large;
    }

    // Higher content stays under Max, lower under Min; the sample at (9, 9)
    // lies on the mesh's own limit and is dropped.
    CSSEMatrix raster;
    raster.Create(12, 12);
    raster.SetPoint(5, 5, 4.0f);
    raster.SetPoint(9, 9, -1.0f);
    mesh.ScanConvertTriangulationMaxNoDelete(&raster, false, false);
    EXPECT_EQ(std::tuple(raster.GetPoint(5, 5), raster.GetPoint(4, 5), raster.GetPoint(9, 9)), std::tuple(4.0f, 3.0f, -1.0f));
    mesh.ScanConvertTriangulationMinNoDelete(&raster, true, false);
    EXPECT_EQ(std::tuple(raster.GetPoint(5, 5), raster.GetPoint(4, 4), raster.GetPoint(9, 9)), std::tuple(3.0f, 0.0f, -1.0f));

    // The band takes a triangle only if P0.y lies strictly inside it.
    CSSEMatrix band;
    band.Create(12, 12);
    mesh.ScanConvertTriangulationMaxNoDeleteInYArea(&band, 5.0f, 9.0f);
    EXPECT_EQ(CountEqual(band, 3.0f), 0);
    mesh.ScanConvertTriangulationMaxNoDeleteInYArea(&band, 4.9f, 9.0f);
    EXPECT_EQ(CountEqual(band, 3.0f), 5);
    band.Fill(9.0f);
    mesh.ScanConvertTriangulationMinNoDeleteInYArea(&band, 4.9f, 5.1f);
    EXPECT_EQ(CountEqual(band, 3.0f), 5);
}

TEST(ScanConversionThroughALine, OnlyTheInsideOfThePolygonKeepsValuesAndThePolygonStaysMoved)
{
    // Two stacked triangles over (2, 3) .. (12, 13); their box begins there.
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    Prepare(mesh, {{{{2, 3, 1}, {12, 3, 1}, {2, 13, 1}}}, {{{2, 3, 3}, {12, 3, 3}, {2, 13, 3}}}});
    CSSE3dPolygon square;
    Fill(square, {{3.5f, 4.5f}, {7.5f, 4.5f}, {7.5f, 8.5f}, {3.5f, 8.5f}});
    CSSEMatrix high, low;
    mesh.ScanConvertThroughLineMax(&high, &square, 0.0f);
    // Moved into raster coordinates, and left so.
    EXPECT_EQ(PointOf(square, 0), (Xyz{1.5f, 1.5f, 0}));
    // The fill just above the mesh (3.1) wins over the relative heights 0
    // and 2 with Max; outside the square all is 0.
    EXPECT_FLOAT_EQ(high.GetPoint(3, 3), 3.1f);
    EXPECT_EQ(std::pair(high.GetPoint(1, 1), high.GetPoint(8, 8)), std::pair(0.0f, 0.0f));

    Fill(square, {{3.5f, 4.5f}, {7.5f, 4.5f}, {7.5f, 8.5f}, {3.5f, 8.5f}});
    mesh.ScanConvertThroughLineMin(&low, &square, 0.5f);
    EXPECT_EQ(std::pair(low.GetPoint(3, 3), low.GetPoint(1, 1)), std::pair(0.5f, 0.0f));
}

// The chain that follows the filling, for the expected rasters.
void Smooth(CSSEMatrix& raster, bool top, float value)
{
    raster.SimpleMedianFilter();
    if (top) {
        raster.SimpleMaximumFilter();
    } else {
        raster.SimpleMinimumFilter();
    }
    raster.ReplaceValueWithValue(value, 0.0f, 1.0f);
}

TEST(ScanConversionHoles, AHoleIsFilledFromMoreThanTwoGoodNeighboursInPlace)
{
    // Heights 20 + x + 3y with holes (value 0.5, within 1 of 0): a corner
    // hole with two neighbours stays, a rim hole with three and an inner one
    // with four take their mean, and of two holes side by side the second
    // counts the first once it is filled.
    const auto height = [](int x, int y) { return 20.0f + static_cast<float>(x) + 3.0f * static_cast<float>(y); };
    for (bool top : {false, true}) {
        CSSEMatrix raster, expected;
        FillField(raster, 9, 9, height);
        for (auto [x, y] : {std::pair{0, 0}, {0, 4}, {4, 2}, {5, 6}, {6, 6}}) raster.SetPoint(x, y, 0.5f);
        expected.CopyFromSSEMatrix(raster);
        expected.SetPoint(0, 4, (height(0, 3) + height(0, 5) + height(1, 4)) / 3.0f);
        expected.SetPoint(4, 2, (((height(4, 1) + height(3, 2)) + height(4, 3)) + height(5, 2)) / 4.0f);
        const float filled = (height(5, 5) + height(4, 6) + height(5, 7)) / 3.0f;
        expected.SetPoint(5, 6, filled);
        expected.SetPoint(6, 6, (((height(6, 5) + filled) + height(6, 7)) + height(7, 6)) / 4.0f);
        Smooth(expected, top, 0.0f);
        CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
        if (top) {
            mesh.RefineScanConvImageTop(&raster, 0.0f);
        } else {
            mesh.RefineScanConvImage(&raster, 0.0f);
        }
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 9; ++x) ASSERT_EQ(raster.GetPoint(x, y), expected.GetPoint(x, y)) << x << ", " << y << " top " << top;
        }
    }
}

TEST(ScanConversionGrid, TheResolutionSetsTheDiagonalAndTheRasterSize)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    Prepare(mesh, {{{{0, 0, 1}, {12, 0, 1}, {0, 8, 1}}}});
    mesh.SetScanConvResolution(3.0f, 4.0f, 9.0f);
    EXPECT_EQ(mesh.GetScanConvDiagonal(), 5.0f);
    CSSEMatrix raster;
    mesh.ScanConvertTriangulationMax(&raster, 0.0f);
    // 12 / 3 + 0.5 and 8 / 4 + 0.5, truncated; the z resolution is never applied.
    EXPECT_EQ(std::tuple(raster.GetSizeX(), raster.GetSizeY(), raster.GetPoint(1, 1)), std::tuple(4, 2, 0.0f));
}

} // namespace
