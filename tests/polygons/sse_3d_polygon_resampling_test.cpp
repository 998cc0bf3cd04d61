#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "polygon_builders.h"

using vek::test::Fill;
using vek::test::PointOf;
using vek::test::PointsOf;
using vek::test::Xyz;

namespace {

TEST(CSSE3dPolygonReParametrize, LongSegmentsGetKPointsAStepOfDOverKPlusAHalfApart)
{
    const struct {
        const char* why;
        std::vector<Xyz> points;
        float spacing;
        std::vector<Xyz> expected;
        std::vector<int> indices;
    } cases[] = {
        // 3.5 long: k = 3 points a step of 1 apart, z along with x and y; the same way back.
        {"there and back", {{0, 0, 0}, {3.5f, 0, 7}}, 1.0f,
         {{0, 0, 0}, {1, 0, 2}, {2, 0, 4}, {3.5f, 0, 7}, {2.5f, 0, 5}, {1.5f, 0, 3}}, {0, 3}},
        // The larger of the x and y ratios decides: 4.5 in y gives 4 points,
        // 3.5 gives 3, and a segment of exactly the spacing keeps its start alone.
        {"by the larger ratio", {{0, 0, 0}, {1.125f, 2.25f, 0}, {0.25f, 0.5f, 0}}, 0.5f,
         {{0, 0, 0}, {0.25f, 0.5f, 0}, {0.5f, 1, 0}, {0.75f, 1.5f, 0}, {1.125f, 2.25f, 0}, {0.875f, 1.75f, 0},
          {0.625f, 1.25f, 0}, {0.25f, 0.5f, 0}},
         {0, 4, 7}},
        {"a height difference alone doesn't make a segment long", {{0, 0, 0}, {0.5f, 0.5f, 40}}, 1.0f,
         {{0, 0, 0}, {0.5f, 0.5f, 40}}, {0, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        CSSE3dPolygon polygon;
        Fill(polygon, c.points);
        polygon.CalcBoundingBox();
        std::vector<int> indices(c.points.size(), -1);
        polygon.ReParametrize(c.spacing, indices.data());
        EXPECT_EQ(PointsOf(polygon), c.expected);
        EXPECT_EQ(indices, c.indices);
        EXPECT_FALSE(polygon.IsBoundingBoxCalculated()) << "the polygon is made anew";
    }
}

TEST(CSSE3dPolygonReParametrize, OutputStopsAt99999Points)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {150000, 0, 0}, {150000, 1, 0}});
    std::vector<int> indices(3, -1);
    polygon.ReParametrize(1.0f, indices.data());
    EXPECT_EQ(polygon.GetNumPoints(), 99999);
    EXPECT_EQ(indices, (std::vector<int>{0, 99999, 99999})) << "later segments learn where they would have begun";
    EXPECT_EQ(PointOf(polygon, 99998).x, 99998.0f * (150000.0f / 150000.5f));
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
            EXPECT_TRUE(i == 0 || indices[i - 1] < indices[i]) << "trial " << trial << " point " << i;
        }
        for (int j = 0; j < m; ++j) {
            const Xyz a = PointOf(polygon, j), b = PointOf(polygon, (j + 1) % m);
            EXPECT_LT(std::fabs(b.x - a.x), 2 * spacing) << "trial " << trial << " gap " << j;
            EXPECT_LT(std::fabs(b.y - a.y), 2 * spacing) << "trial " << trial << " gap " << j;
        }
    }
}

TEST(CSSE3dPolygonChangeStartPoint, RotatesPointsAndIndicesAlikeAndDropsAStartOutsideTheLine)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {10, 0, 0}, {10, 10, 5}, {0, 10, 0}});
    polygon.CalcBoundingBox();
    std::vector<int> indices = {10, 11, 12, 13};
    polygon.ChangeStartPoint(1, indices.data());
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{10, 0, 0}, {10, 10, 5}, {0, 10, 0}, {0, 0, 0}}));
    EXPECT_EQ(indices, (std::vector<int>{11, 12, 13, 10}));
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());
    // The nearest-point form; then starts outside the line, as the -1 of an empty search.
    SSEPoint near = vek::test::Sse(1, -1, 0);
    polygon.ChangeStartPoint(near, indices.data());
    for (int start : {4, -1}) polygon.ChangeStartPoint(start, indices.data());
    EXPECT_EQ(PointsOf(polygon)[0], (Xyz{0, 0, 0}));
    EXPECT_EQ(indices, (std::vector<int>{10, 11, 12, 13}));
}

} // namespace
