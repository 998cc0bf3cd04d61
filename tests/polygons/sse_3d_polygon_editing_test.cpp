#include <gtest/gtest.h>

#include <vector>

#include "polygon_builders.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::PointOf;
using vek::test::Row;
using vek::test::Xyz;

namespace {

TEST(CSSE3dPolygonChangeStartPoint, RotatesPointsAndIndexMapAlike)
{
    CSSE3dPolygon polygon;
    Fill(polygon, Row(5));
    polygon.CalcBoundingBox();
    std::vector<int> indices = {10, 11, 12, 13, 14};
    polygon.ChangeStartPoint(2, indices.data());
    ASSERT_EQ(polygon.GetNumPoints(), 5);
    for (int k = 0; k < 5; ++k) {
        EXPECT_EQ(PointOf(polygon, k).x, static_cast<float>((2 + k) % 5));
    }
    EXPECT_EQ(indices, (std::vector<int>{12, 13, 14, 10, 11}));
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());

    polygon.ChangeStartPoint(0, nullptr);
    EXPECT_EQ(PointOf(polygon, 0).x, 2.0f);
}

TEST(CSSE3dPolygonChangeStartPoint, NearestPointFormAndStartsOutsideTheLine)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {10, 0, 0}, {10, 10, 5}, {0, 10, 0}});
    SSEPoint near = vek::test::Sse(9, 9, 4);
    polygon.ChangeStartPoint(near, nullptr);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{10, 10, 5}));
    EXPECT_EQ(PointOf(polygon, 3), (Xyz{10, 0, 0}));

    // A start outside the line is dropped, as the -1 of an empty search.
    std::vector<int> indices = {0, 1, 2, 3};
    polygon.ChangeStartPoint(4, indices.data());
    polygon.ChangeStartPoint(-1, indices.data());
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{10, 10, 5}));
    EXPECT_EQ(indices, (std::vector<int>{0, 1, 2, 3}));

    CSSE3dPolygon empty;
    empty.ChangeStartPoint(near, nullptr);
    EXPECT_EQ(empty.GetNumPoints(), 0);
}

} // namespace
