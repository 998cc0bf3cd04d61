// Polygons returned from functions and assigned from temporaries: moving
// exchanges the arrays, so each is released once.

#include <gtest/gtest.h>

#include <utility>

#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

CSSE3dPolygon Line(int n)
{
    CSSE3dPolygon line;
    line.Create(n);
    for (int i = 0; i < n; ++i) line.SetPoint(i, static_cast<float>(i), 2.0f * i, 3.0f);
    line.CalcBoundingBox();
    return line;
}

TEST(PolygonMoves, SpatialPolygonTakesOverPointsAndBox)
{
    CSSE3dPolygon target = Line(3);
    target = Line(9);
    EXPECT_EQ(target.GetNumPoints(), 9);
    float x = 0, y = 0, z = 0;
    target.GetPoint(8, x, y, z);
    EXPECT_EQ(y, 16.0f);
    EXPECT_TRUE(target.IsBoundingBoxCalculated());
    EXPECT_EQ(target.GetTopRight().x, 8.0f);

    CSSE3dPolygon moved(std::move(target));
    EXPECT_EQ(moved.GetNumPoints(), 9);
    EXPECT_EQ(target.GetNumPoints(), 0);
    target.Create(2); // the source keeps a usable box block
    target.SetPoint(0, 0, 0, 0);
    target.SetPoint(1, 1, 1, 1);
    target.CalcBoundingBox();
    EXPECT_EQ(target.GetTopRight().z, 1.0f);
}

TEST(PolygonMoves, PlanarPolygonTakesOverItsArrays)
{
    CSSE2dPolygon target;
    target.Create(2);
    CSSE2dPolygon source;
    source.Create(5);
    source.SetPoint(4, 1.5f, 2.5f);
    target = std::move(source);
    float x = 0, y = 0;
    target.GetPoint(4, x, y);
    EXPECT_EQ(y, 2.5f);
    CSSE2dPolygon moved(std::move(target));
    moved.GetPoint(4, x, y);
    EXPECT_EQ(x, 1.5f);
}

} // namespace
