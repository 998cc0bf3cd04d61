#include <gtest/gtest.h>

#include <cmath>

#include "support/unowned_alias.h"
#include "vekdll/polygons/sse_2d_polygon.h"

namespace {

void FillRow(CSSE2dPolygon& polygon, int count)
{
    polygon.Create(count);
    for (int i = 0; i < count; ++i) polygon.SetPoint(i, static_cast<float>(i), 100.0f - i);
}

TEST(CSSE2dPolygon, PointsOutOfRangeAreDroppedAlsoAfterFree)
{
    CSSE2dPolygon polygon;
    EXPECT_EQ(polygon.GetNumPoints(), 0);
    polygon.Create(3);
    polygon.SetPoint(2, 5, 6);
    polygon.SetPoint(3, 7, 8);
    t_h2dpoint p{-1, -1};
    polygon.GetPoint(2, p);
    EXPECT_EQ(p.x, 5);
    EXPECT_EQ(p.y, 6);
    float x = -1, y = -1;
    polygon.GetPoint(3, x, y);
    polygon.GetPoint(-1, x, y);
    EXPECT_EQ(x, -1);
    EXPECT_EQ(y, -1);

    // Free releases the arrays but keeps the count; reads find nothing.
    polygon.Free();
    EXPECT_EQ(polygon.GetNumPoints(), 3);
    polygon.GetPoint(2, x, y);
    polygon.SetPoint(2, 1, 1);
    EXPECT_EQ(x, -1);
    EXPECT_EQ(polygon.ClosestPointX(0), -1);
    EXPECT_EQ(polygon.CalcArea(), 0.0f);
}

TEST(CSSE2dPolygon, AssignmentSharesTheArrays)
{
    CSSE2dPolygon source;
    FillRow(source, 4);
    vek::test::UnownedAlias<CSSE2dPolygon> alias; // only `source` releases the arrays
    *alias = source;
    alias->SetPoint(1, 42, 43);
    float x = 0, y = 0;
    source.GetPoint(1, x, y);
    EXPECT_EQ(x, 42);
}

TEST(CSSE2dPolygon, AreaIsTheKeptThreePlaceFormula)
{
    CSSE2dPolygon polygon;
    polygon.Create(4);
    polygon.SetPoint(0, 1, 2);
    polygon.SetPoint(1, 3, 5);
    polygon.SetPoint(2, 4, 7);
    polygon.SetPoint(3, 6, 11);
    // t1 = (1-6)(3-11) - (2-11)(3-11) = -32, t2 = (6-4)(3-7) - (11-7)(3-7) = 8.
    EXPECT_EQ(polygon.CalcArea(), -24.0f);

    polygon.Create(3);
    polygon.SetPoint(0, 0, 0);
    polygon.SetPoint(1, 1, 0);
    polygon.SetPoint(2, 0, 1);
    // t1 = 0 - (-1)(0) = 0, t2 = (-1)(1) - (1)(1) = -2.
    EXPECT_EQ(polygon.CalcArea(), -2.0f);

    polygon.Create(2);
    polygon.SetPoint(0, 0, 0);
    polygon.SetPoint(1, 5, 5);
    EXPECT_EQ(polygon.CalcArea(), 0.0f);
}

TEST(CSSE2dPolygon, ClosestPointsSeeEvenIndicesBeforeTheLast)
{
    CSSE2dPolygon polygon;
    FillRow(polygon, 7); // x = 0 .. 6, y = 100 .. 94
    EXPECT_EQ(polygon.ClosestPointX(5), 4);
    EXPECT_EQ(polygon.ClosestPointX(100), 4);
    EXPECT_EQ(polygon.ClosestPointY(94), 4);
    EXPECT_EQ(polygon.ClosestPointY(99), 0);
    FillRow(polygon, 1);
    EXPECT_EQ(polygon.ClosestPointX(0), -1);
}

TEST(CSSE2dPolygon, MinDistanceCountsTheXDifferenceTwiceOverWholeBlocks)
{
    CSSE2dPolygon polygon;
    FillRow(polygon, 7); // only x = 0 .. 3 are in a whole block
    const float d7 = 7.0f;
    EXPECT_EQ(polygon.GetMinEuclDistance(10, 1000), std::sqrt(d7 * d7 + d7 * d7));
    FillRow(polygon, 8);
    const float d3 = 3.0f;
    EXPECT_EQ(polygon.GetMinEuclDistance(10, -1000), std::sqrt(d3 * d3 + d3 * d3));
    FillRow(polygon, 3);
    EXPECT_EQ(polygon.GetMinEuclDistance(10, 0), 1000000.0f);
}

} // namespace
