// The finest triangulation on its fifteen band workers and its ten scan
// workers: the result may not depend on the threads.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "surface/finest_fixtures.h"

namespace {

float Bumps(int x, int y) { return 3.0f * std::sin(0.37f * x) + 2.0f * std::cos(0.23f * y) + 0.05f * x * y; }

TEST(FinestTriangulationThreads, SameResultOnEveryRunAndForAnyBandCount)
{
    CSSE3dPolygon ring;
    vek::test::MakeWavyRing(ring, 61, 40.0f, 38.0f, 30.0f);
    CSSEMatrix field;
    vek::test::MakeField(field, 80, 80, Bumps);
    for (const bool marching : {false, true}) {
        ZrCFinestTriangulation first;
        if (marching)
            first.TriangulateWithMarching(ring, &field, 1, true);
        else
            first.Triangulate(ring, &field, 1, true);
        const vek::test::BuildRecord expected = vek::test::Record(first);
        EXPECT_EQ(vek::test::LinkFaults(first), 0);
        ASSERT_GT(first.GetNumTriangles(), 3000);
        for (const int bands : {15, 15, 1, 4, 15}) {
            ZrCFinestTriangulation again;
            again.SetRowBands(bands);
            if (marching)
                again.TriangulateWithMarching(ring, &field, 1, true);
            else
                again.Triangulate(ring, &field, 1, true);
            EXPECT_EQ(vek::test::Record(again), expected) << bands << " bands, marching " << marching;
        }
    }
}

// A plane comes back from the ten-band scan conversion as the plane: every
// cell the surface covers holds a sample taken within half a cell of its
// centre, and the bands give the bits of one sampler over the whole list.
TEST(FinestTriangulationThreads, ScanConversionReproducesAPlane)
{
    const auto plane = [](float x, float y) { return 0.75f * x - 0.5f * y + 40.0f; };
    CSSE3dPolygon square;
    vek::test::MakePolygon(square, {{2.0f, 3.0f}, {61.0f, 3.0f}, {61.0f, 58.0f}, {2.0f, 58.0f}});
    CSSEMatrix field;
    vek::test::MakeField(field, 64, 64, [&](int x, int y) { return plane(float(x), float(y)); });
    ZrCFinestTriangulation t;
    t.TriangulateWithMarching(square, &field, 1, true);
    t.SetScanConvResolution(1.0f, 1.0f, 1.0f);
    for (const bool keepMax : {false, true}) {
        CSSEMatrix result;
        SSEPoint origin;
        t.FastScanConvertTriangulation(&result, -5.0f, origin, keepMax);
        ASSERT_EQ(result.GetSizeX(), 60);
        ASSERT_EQ(result.GetSizeY(), 56);
        EXPECT_EQ(origin.x, 2.0f);
        EXPECT_EQ(origin.y, 3.0f);
        // A cell's samples lie within half a cell of its centre in x and y.
        // The rim cells are left out: the marching cuts the square's corners
        // off along the line between two crossings.
        const float slack = 0.5f * (0.75f + 0.5f) + 1e-4f;
        for (int y = 1; y + 1 < result.GetSizeY(); ++y) {
            for (int x = 1; x + 1 < result.GetSizeX(); ++x)
                EXPECT_NEAR(result.GetPoint(x, y), plane(x + 2.0f, y + 3.0f), slack) << x << "," << y;
        }
        // One sampler on this thread over the whole list.
        CSSEMatrix single;
        single.Create(result.GetSizeX(), result.GetSizeY());
        single.Fill(keepMax ? -999999.9f : 999999.9f);
        t.ScanConvertTriangulationWithLimitedArea(&single, &t.GetTriangleList(), origin, 0, t.GetNumTriangles() - 1,
                                                  keepMax);
        single.ReplaceValueWithValue(keepMax ? -999999.9f : 999999.9f, -5.0f, 1.0f);
        for (int y = 0; y < result.GetSizeY(); ++y) {
            for (int x = 0; x < result.GetSizeX(); ++x) ASSERT_EQ(result.GetPoint(x, y), single.GetPoint(x, y));
        }
    }
    // The facing forms compute the normals themselves: the plane faces up.
    CSSEMatrix up;
    CSSEMatrix down;
    SSEPoint origin;
    t.FastScanConvertTriangulationOnlyVisible(&up, -5.0f, origin, true);
    t.FastScanConvertTriangulationOnlyUnvisible(&down, -5.0f, origin, true);
    EXPECT_NEAR(up.GetPoint(10, 10), plane(12.0f, 13.0f), 0.7f);
    EXPECT_EQ(down.GetPoint(10, 10), -5.0f);
}

} // namespace
