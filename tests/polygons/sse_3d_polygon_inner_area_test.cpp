#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "polygon_builders.h"

using vek::test::Fill;
using vek::test::Sse;
using vek::test::Xyz;

namespace {

TEST(PointInLineInnerArea, TheRimConcaveAndThinnedLinesAndDegenerateSteps)
{
    const std::vector<Xyz> square = {{0, 4, 0}, {4, 4, 0}, {4, 0, 0}, {0, 0, 0}}; // clockwise
    // A U open towards growing y: the notch 1..3 x 1..4 is outside.
    const std::vector<Xyz> u = {{0, 0, 5}, {4, 0, 5}, {4, 4, 5}, {3, 4, 5}, {3, 1, 5}, {1, 1, 5}, {1, 4, 5}, {0, 4, 5}};
    std::vector<Xyz> dense; // the square 0..8 with a point at every unit
    for (int i = 0; i < 32; ++i) {
        const float t = static_cast<float>(i % 8), side = static_cast<float>(i / 8);
        dense.push_back(side == 0 ? Xyz{t, 0, 0} : side == 1 ? Xyz{8, t, 0} : side == 2 ? Xyz{8 - t, 8, 0} : Xyz{0, 8 - t, 0});
    }
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
        {"notch of the U", u, 2, 3, 1, false},
        {"a step beyond the count", square, 2, 2, 5, false},
        {"step 0", square, 2, 2, 0, false},
        {"every third chord", dense, 4, 4, 3, true},
        {"every seventh chord, closed by the chord to the last point", dense, 2, 4, 7, true},
        {"top edge, thinned", dense, 4, 8, 3, false},
    };
    for (const auto& c : cases) {
        CSSE3dPolygon polygon;
        Fill(polygon, c.points);
        EXPECT_EQ(polygon.PointInLineInnerArea(c.x, c.y, c.step), c.inside) << c.why;
    }
}

TEST(PointInLineInnerArea, PointFormIgnoresZButNotWAndTheNormalisedFormKeepsThePlainBox)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 5}, {4, 0, 5}, {4, 4, 5}, {0, 4, 5}});
    SSEPoint inside = Sse(2.0f, 0.5f, 1000.0f), withW = Sse(2.0f, 0.5f, 0.0f, 1.0f);
    EXPECT_TRUE(polygon.PointInLineInnerArea(inside, 1));
    EXPECT_FALSE(polygon.PointInLineInnerArea(withW, 1));
    // In normalised units the square is 0..8 x 0..2; the plain box stays 0..4 x 0..4.
    t_resolutiondata resolution{2.0f, 0.5f, 1.0f};
    polygon.NormalizeXYZ(resolution);
    SSEPoint p = Sse(3.0f, 1.0f, 7.0f);
    EXPECT_TRUE(polygon.PointInLineInnerAreaNormalized(p, 1));
    EXPECT_FALSE(polygon.PointInLineInnerAreaNormalized(3.0f, 3.0f, 1)); // the plain line would hold it
    EXPECT_FALSE(polygon.PointInLineInnerAreaNormalized(6.0f, 1.0f, 1)); // the scaled line would hold it
}

// An independent even-odd count in double precision, for points on no edge.
bool EvenOdd(const std::vector<Xyz>& poly, double x, double y)
{
    bool inside = false;
    for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++) {
        const double xi = poly[i].x, yi = poly[i].y, xj = poly[j].x, yj = poly[j].y;
        if ((xi > x) != (xj > x) && yi + (x - xi) * (yj - yi) / (xj - xi) > y) inside = !inside;
    }
    return inside;
}

TEST(PointInLineInnerArea, AgreesWithAPlainEvenOddCountOnRandomStars)
{
    std::mt19937 random(20261122);
    std::uniform_real_distribution<float> radius(2.0f, 10.0f), coordinate(-12.0f, 12.0f);
    for (int n = 5; n < 25; ++n) {
        std::vector<Xyz> star;
        for (int i = 0; i < n; ++i) {
            const double angle = 2.0 * 3.14159265358979 * i / n, r = radius(random);
            star.push_back({static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle)), 0});
        }
        CSSE3dPolygon polygon;
        Fill(polygon, star);
        for (int k = 0; k < 200; ++k) {
            // Points on a quarter lattice offset by an eighth never meet a vertex column.
            const float x = std::round(coordinate(random) * 4.0f) / 4.0f + 0.125f, y = coordinate(random);
            ASSERT_EQ(polygon.PointInLineInnerArea(x, y, 1), EvenOdd(star, x, y)) << x << ", " << y;
        }
    }
}

} // namespace
