#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/plane_geometry.h"
#include "support/polygon_points.h"

using namespace vek::test;

namespace {

TEST(PointInLineInnerArea, TheRimConcaveAndThinnedLinesAndDegenerateSteps)
{
    const std::vector<Xyz> square = {{0, 4}, {4, 4}, {4, 0}, {0, 0}}, dense = DottedSquare(8); // clockwise, counter-clockwise
    const struct {
        const char* why;
        const std::vector<Xyz>& points;
        float x, y;
        int step;
        bool inside;
    } cases[] = {
        {"an edge bounding the area from below belongs to it", square, 2, 0, 1, true},
        {"an edge bounding it from above doesn't", square, 2, 4, 1, false},
        {"the column of the smallest x is outside", square, 0, 2, 1, false},
        {"the column of the largest x is inside", square, 4, 2, 1, true},
        {"a step beyond the count", square, 2, 2, 5, false},
        {"step 0", square, 2, 2, 0, false},
        {"every third chord", dense, 4, 4, 3, true},
        {"every seventh chord, closed by the chord to the last point", dense, 2, 4, 7, true},
        {"top edge, thinned", dense, 4, 8, 3, false},
    };
    for (const auto& c : cases) {
        CSSE3dPolygon polygon = PolygonOf(c.points);
        EXPECT_EQ(polygon.PointInLineInnerArea(c.x, c.y, c.step), c.inside) << c.why;
    }
}

TEST(PointInLineInnerArea, PointFormIgnoresZButNotWAndTheNormalisedFormKeepsThePlainBox)
{
    CSSE3dPolygon polygon = PolygonOf({{0, 0, 5}, {4, 0, 5}, {4, 4, 5}, {0, 4, 5}});
    SSEPoint inside = Sse(2.0f, 0.5f, 1000.0f), withW = Sse(2.0f, 0.5f, 0.0f, 1.0f);
    EXPECT_EQ(std::pair(polygon.PointInLineInnerArea(inside, 1), polygon.PointInLineInnerArea(withW, 1)), std::pair(true, false));
    // In normalised units the square is 0..8 x 0..2; the plain box stays 0..4 x 0..4.
    t_resolutiondata resolution{2.0f, 0.5f, 1.0f};
    polygon.NormalizeXYZ(resolution);
    SSEPoint p = Sse(3.0f, 1.0f, 7.0f);
    EXPECT_TRUE(polygon.PointInLineInnerAreaNormalized(p, 1));
    EXPECT_FALSE(polygon.PointInLineInnerAreaNormalized(3.0f, 3.0f, 1)); // the plain line would hold it
    EXPECT_FALSE(polygon.PointInLineInnerAreaNormalized(6.0f, 1.0f, 1)); // the scaled line would hold it
}

TEST(PointInLineInnerArea, AgreesWithAPlainEvenOddCountOnRandomStars)
{
    std::mt19937 random(20261122);
    std::uniform_real_distribution<float> radius(2.0f, 10.0f), coordinate(-12.0f, 12.0f);
    for (int n = 5; n < 25; ++n) {
        const std::vector<Xyz> star = Polar(n, n, [&](int, double) { return radius(random); });
        CSSE3dPolygon polygon = PolygonOf(star);
        for (int k = 0; k < 200; ++k) {
            // Points on a quarter lattice offset by an eighth never meet a vertex column.
            const float x = std::round(coordinate(random) * 4.0f) / 4.0f + 0.125f, y = coordinate(random);
            ASSERT_EQ(polygon.PointInLineInnerArea(x, y, 1), EvenOddInside(star, x, y)) << x << ", " << y;
        }
    }
}

} // namespace
