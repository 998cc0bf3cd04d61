#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "polygon_builders.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::PointOf;
using vek::test::Xyz;

namespace {

TEST(CSSE3dPolygonReParametrize, LongSegmentsGetKPointsAStepOfDOverKPlusAHalfApart)
{
    CSSE3dPolygon polygon;
    // There 3.5 long: k = 3, step 1. Back again the same from x = 3.5.
    Fill(polygon, {{0, 0, 0}, {3.5f, 0, 7}});
    std::vector<int> indices(2, -1);
    polygon.ReParametrize(1.0f, indices.data());
    ASSERT_EQ(polygon.GetNumPoints(), 6);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{0, 0, 0}));
    EXPECT_EQ(PointOf(polygon, 1), (Xyz{1, 0, 2})) << "z is interpolated with x and y";
    EXPECT_EQ(PointOf(polygon, 2), (Xyz{2, 0, 4}));
    EXPECT_EQ(PointOf(polygon, 3), (Xyz{3.5f, 0, 7}));
    EXPECT_EQ(PointOf(polygon, 4), (Xyz{2.5f, 0, 5}));
    EXPECT_EQ(PointOf(polygon, 5), (Xyz{1.5f, 0, 3}));
    EXPECT_EQ(indices, (std::vector<int>{0, 3}));
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());

    // The larger of the x and y ratios decides. At spacing 0.5: 4.5 in y
    // gives 4 points, then 3.5 in y gives 3, and a last segment of exactly
    // the spacing keeps its start alone.
    Fill(polygon, {{0, 0, 0}, {1.125f, 2.25f, 0}, {0, 0.5f, 0}});
    polygon.ReParametrize(0.5f);
    ASSERT_EQ(polygon.GetNumPoints(), 4 + 3 + 1);
    EXPECT_EQ(PointOf(polygon, 1), (Xyz{0.25f, 0.5f, 0}));
    EXPECT_EQ(PointOf(polygon, 3), (Xyz{0.75f, 1.5f, 0}));
    EXPECT_EQ(PointOf(polygon, 4), (Xyz{1.125f, 2.25f, 0}));
    EXPECT_EQ(PointOf(polygon, 7), (Xyz{0, 0.5f, 0}));
}

TEST(CSSE3dPolygonReParametrize, SegmentsNoLongerThanTheSpacingStay)
{
    CSSE3dPolygon square;
    Fill(square, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}});
    square.CalcBoundingBox();
    std::vector<int> indices(4, -1);
    square.ReParametrize(1.0f, indices.data());
    ASSERT_EQ(square.GetNumPoints(), 4);
    EXPECT_EQ(PointOf(square, 2), (Xyz{1, 1, 0}));
    EXPECT_EQ(indices, (std::vector<int>{0, 1, 2, 3}));
    // The polygon is made anew, which leaves the box stale but in place.
    EXPECT_FALSE(square.IsBoundingBoxCalculated());
    EXPECT_EQ(square.GetTopRight().x, 1.0f);

    // A height difference alone doesn't make a segment long.
    CSSE3dPolygon steep;
    Fill(steep, {{0, 0, 0}, {0.5f, 0.5f, 40}});
    steep.ReParametrize(1.0f);
    EXPECT_EQ(steep.GetNumPoints(), 2);

    CSSE3dPolygon single;
    Fill(single, {{4, 5, 6}});
    single.ReParametrize(0.1f);
    ASSERT_EQ(single.GetNumPoints(), 1);
    EXPECT_EQ(PointOf(single, 0), (Xyz{4, 5, 6}));

    CSSE3dPolygon empty;
    empty.ReParametrize(1.0f);
    EXPECT_EQ(empty.GetNumPoints(), 0);
}

TEST(CSSE3dPolygonReParametrize, OutputStopsAt99999Points)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {150000, 0, 0}, {150000, 1, 0}});
    std::vector<int> indices(3, -1);
    polygon.ReParametrize(1.0f, indices.data());
    EXPECT_EQ(polygon.GetNumPoints(), 99999);
    // Later segments still learn where they would have begun.
    EXPECT_EQ(indices, (std::vector<int>{0, 99999, 99999}));
    float x = 0;
    polygon.GetPointX(99998, x);
    const float step = 150000.0f / 150000.5f;
    EXPECT_EQ(x, 99998.0f * step);
}

TEST(CSSE3dPolygonReParametrize, SourcePointsKeepTheirPlaceAndGapsStayBelowTwoSpacings)
{
    std::mt19937 random(31337);
    std::uniform_real_distribution<float> coordinate(-20.0f, 20.0f);
    for (int trial = 0; trial < 30; ++trial) {
        const int n = 2 + static_cast<int>(random() % 30);
        std::vector<Xyz> points(n);
        for (Xyz& p : points) p = {coordinate(random), coordinate(random), coordinate(random)};
        const float spacing = 0.25f + static_cast<float>(random() % 8) * 0.25f;

        CSSE3dPolygon polygon;
        Fill(polygon, points);
        std::vector<int> indices(n, -1);
        polygon.ReParametrize(spacing, indices.data());
        const int m = polygon.GetNumPoints();

        for (int i = 0; i < n; ++i) {
            ASSERT_EQ(PointOf(polygon, indices[i]), points[i]) << "trial " << trial << " point " << i;
            if (i > 0) {
                EXPECT_LT(indices[i - 1], indices[i]);
            }
        }
        for (int j = 0; j < m; ++j) {
            const Xyz a = PointOf(polygon, j);
            const Xyz b = PointOf(polygon, (j + 1) % m);
            EXPECT_LT(std::fabs(b.x - a.x), 2 * spacing) << "trial " << trial << " gap " << j;
            EXPECT_LT(std::fabs(b.y - a.y), 2 * spacing) << "trial " << trial << " gap " << j;
        }
    }
}

} // namespace
