#include <gtest/gtest.h>

#include <cmath>

#include "polygon_builders.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::Xyz;

namespace {

TEST(CSSE3dPolygonBox, EmptyPolygonKeepsTheInvertedSentinelBox)
{
    CSSE3dPolygon polygon;
    polygon.CalcBoundingBox();
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
    const SSEPoint top = polygon.GetTopRight();
    const SSEPoint bottom = polygon.GetBottomLeft();
    for (int lane = 0; lane < 3; ++lane) {
        EXPECT_EQ(top.lane[lane], -1000000.0f);
        EXPECT_EQ(bottom.lane[lane], 1000000.0f);
    }
    EXPECT_EQ(top.w, 0.0f);
    EXPECT_EQ(bottom.w, 0.0f);

    float xmin, ymin, zmin, xmax, ymax, zmax;
    polygon.GetBoundingBox3D(xmin, ymin, zmin, xmax, ymax, zmax);
    EXPECT_EQ(xmin, -1000000.0f);
    EXPECT_EQ(zmin, -1000000.0f);
    EXPECT_EQ(ymax, 1000000.0f);
}

TEST(CSSE3dPolygonBox, SentinelsLimitTheBox)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{2e6f, -3e6f, 5}, {3e6f, -2e6f, 6}});
    polygon.CalcBoundingBox();
    // Every x lies above the start value of the smaller corner, every y below
    // that of the larger one.
    EXPECT_EQ(polygon.GetBottomLeft().x, 1000000.0f);
    EXPECT_EQ(polygon.GetTopRight().x, 3e6f);
    EXPECT_EQ(polygon.GetTopRight().y, -1000000.0f);
    EXPECT_EQ(polygon.GetBottomLeft().y, -3e6f);
}

TEST(CSSE3dPolygonBox, BoxIsRecomputedOnlyWhenStale)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{-1.7f, 2.9f, 4}, {3.5f, -0.5f, -2}});

    int xmin, ymin, xmax, ymax;
    polygon.GetBoundingBox2D(xmin, ymin, xmax, ymax);
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
    // Truncation towards zero, not the floor.
    EXPECT_EQ(xmin, -1);
    EXPECT_EQ(ymin, 0);
    EXPECT_EQ(xmax, 3);
    EXPECT_EQ(ymax, 2);

    // The 2D copies carry z = 0; the corners keep lane 3 at 0.
    SSEPoint top = polygon.GetTopRight();
    EXPECT_EQ(top.z, 4.0f);
    EXPECT_EQ(top.w, 0.0f);

    // A write makes the box stale; the plain getters don't recompute it,
    // GetBoundingBox3D does.
    polygon.SetPoint(0, 10, 20, 30);
    EXPECT_EQ(polygon.GetTopRight().x, 3.5f);
    float x0, y0, z0, x1, y1, z1;
    polygon.GetBoundingBox3D(x0, y0, z0, x1, y1, z1);
    EXPECT_EQ(x1, 10.0f);
    EXPECT_EQ(z1, 30.0f);
    EXPECT_EQ(z0, -2.0f);
    EXPECT_EQ(polygon.GetTopRight().x, 10.0f);
}

TEST(CSSE3dPolygonCentre, EachPointIsDividedBeforeItIsAdded)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0.7f, 1, 0}, {7.1f, 2, 0}, {7.1f, 4, 0}});
    polygon.CalcGeometricCenter();
    SSEPoint centre;
    polygon.GetGeometricCenter(centre);

    const float n = 3.0f;
    const float dividedFirst = ((0.0f + 0.7f / n) + 7.1f / n) + 7.1f / n;
    const float dividedLast = ((0.7f + 7.1f) + 7.1f) / n;
    ASSERT_NE(dividedFirst, dividedLast) << "the data must tell the two orders apart";
    EXPECT_EQ(centre.x, dividedFirst);
    EXPECT_EQ(centre.w, 0.0f);

    CSSE3dPolygon empty;
    empty.CalcGeometricCenter();
    empty.GetGeometricCenter(centre);
    EXPECT_EQ(centre.x, 0.0f);
}

TEST(CSSE3dPolygonMeasures, CircumferenceClosesTheLine)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {3, 0, 0}, {3, 4, 0}});
    EXPECT_EQ(polygon.CalcCircumference(), 12.0f);

    Fill(polygon, {{0, 0, 0}, {1, 2, 2}});
    EXPECT_EQ(polygon.CalcCircumference(), 6.0f); // 3 there and 3 back

    Fill(polygon, {{5, 5, 5}});
    EXPECT_EQ(polygon.CalcCircumference(), 0.0f);
    CSSE3dPolygon empty;
    EXPECT_EQ(empty.CalcCircumference(), 0.0f);
}

TEST(CSSE3dPolygonMeasures, AreasAreTwiceSignedAndPositiveCounterClockwise)
{
    CSSE3dPolygon square;
    Fill(square, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    EXPECT_EQ(square.CalcXYArea(), 2.0f);
    Fill(square, {{0, 1, 0}, {1, 1, 0}, {1, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(square.CalcXYArea(), -2.0f);

    // A triangle off the origin, so that the closing edge contributes.
    CSSE3dPolygon triangle;
    Fill(triangle, {{2, 0, 1}, {6, 0, 1}, {2, 3, 4}});
    EXPECT_EQ(triangle.CalcXYArea(), 12.0f);
    // In XZ: (2,1), (6,1), (2,4): the same triangle.
    EXPECT_EQ(triangle.CalcXZArea(), 12.0f);
    // In YZ: (0,1), (0,1), (3,4): degenerate.
    EXPECT_EQ(triangle.CalcYZArea(), 0.0f);

    CSSE3dPolygon upright;
    Fill(upright, {{0, 0, 0}, {0, 2, 0}, {0, 2, 2}});
    EXPECT_EQ(upright.CalcYZArea(), 4.0f);

    Fill(upright, {{3, 3, 3}});
    EXPECT_EQ(upright.CalcXYArea(), 0.0f);
}

} // namespace
