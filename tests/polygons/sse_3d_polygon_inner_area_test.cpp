#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "polygon_builders.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::Sse;
using vek::test::Xyz;

namespace {

// The square 0..4 in x and y, counter-clockwise.
void Square(CSSE3dPolygon& polygon)
{
    Fill(polygon, {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}});
}

TEST(PointInLineInnerAreaTest, InteriorExteriorAndTheRim)
{
    CSSE3dPolygon square;
    Square(square);
    EXPECT_TRUE(square.PointInLineInnerArea(2.0f, 2.0f, 1));
    EXPECT_FALSE(square.PointInLineInnerArea(5.0f, 2.0f, 1)); // beyond the box
    EXPECT_FALSE(square.PointInLineInnerArea(2.0f, -0.5f, 1));
    // An edge that bounds the area from below belongs to it, one that bounds
    // it from above doesn't.
    EXPECT_TRUE(square.PointInLineInnerArea(2.0f, 0.0f, 1));
    EXPECT_FALSE(square.PointInLineInnerArea(2.0f, 4.0f, 1));
    // Vertical edges go by columns: the smallest x is outside, the largest inside.
    EXPECT_FALSE(square.PointInLineInnerArea(0.0f, 2.0f, 1));
    EXPECT_TRUE(square.PointInLineInnerArea(4.0f, 2.0f, 1));
    // The orientation of the line doesn't matter.
    CSSE3dPolygon clockwise;
    Fill(clockwise, {{0, 4, 0}, {4, 4, 0}, {4, 0, 0}, {0, 0, 0}});
    EXPECT_TRUE(clockwise.PointInLineInnerArea(1.0f, 3.0f, 1));
    EXPECT_FALSE(clockwise.PointInLineInnerArea(-1.0f, 3.0f, 1));
}

TEST(PointInLineInnerAreaTest, ConcaveLinesAndTheSpatialForm)
{
    // A U open towards growing y: the notch 1..3 x 1..4 is outside.
    CSSE3dPolygon u;
    Fill(u, {{0, 0, 5}, {4, 0, 5}, {4, 4, 5}, {3, 4, 5}, {3, 1, 5}, {1, 1, 5}, {1, 4, 5}, {0, 4, 5}});
    EXPECT_TRUE(u.PointInLineInnerArea(0.5f, 3.0f, 1));
    EXPECT_TRUE(u.PointInLineInnerArea(2.0f, 0.5f, 1));
    EXPECT_FALSE(u.PointInLineInnerArea(2.0f, 3.0f, 1));
    EXPECT_TRUE(u.PointInLineInnerArea(3.5f, 3.9f, 1));

    // The SSEPoint form ignores z but not w.
    SSEPoint inside = Sse(2.0f, 0.5f, 1000.0f);
    EXPECT_TRUE(u.PointInLineInnerArea(inside, 1));
    inside.w = 1.0f;
    EXPECT_FALSE(u.PointInLineInnerArea(inside, 1));
    EXPECT_EQ(inside.z, 1000.0f); // the caller's point is left alone
}

TEST(PointInLineInnerAreaTest, DegenerateLinesAndSteps)
{
    CSSE3dPolygon two;
    Fill(two, {{0, 0, 0}, {4, 4, 0}});
    EXPECT_FALSE(two.PointInLineInnerArea(2.0f, 1.0f, 1));
    CSSE3dPolygon square;
    Square(square);
    EXPECT_FALSE(square.PointInLineInnerArea(2.0f, 2.0f, 5)); // step beyond the count
    EXPECT_FALSE(square.PointInLineInnerArea(2.0f, 2.0f, 0));
    EXPECT_FALSE(square.PointInLineInnerArea(2.0f, 2.0f, -3));

    // A dense square thinned to every second point, closed to the last point.
    std::vector<Xyz> dense;
    for (int i = 0; i < 8; ++i) dense.push_back({static_cast<float>(i), 0, 0});
    for (int i = 0; i < 8; ++i) dense.push_back({8, static_cast<float>(i), 0});
    for (int i = 8; i > 0; --i) dense.push_back({static_cast<float>(i), 8, 0});
    for (int i = 8; i > 0; --i) dense.push_back({0, static_cast<float>(i), 0});
    CSSE3dPolygon line;
    Fill(line, dense);
    for (int step : {1, 2, 3, 5}) {
        EXPECT_TRUE(line.PointInLineInnerArea(4.0f, 4.0f, step)) << step;
        EXPECT_FALSE(line.PointInLineInnerArea(4.0f, 8.0f, step)) << step;
    }
}

TEST(PointInLineInnerAreaTest, NormalizedFormCountsOnTheScaledLineInsideThePlainBox)
{
    CSSE3dPolygon square;
    Square(square);
    t_resolutiondata resolution{0.5f, 0.5f, 1.0f};
    square.NormalizeXYZ(resolution);
    // In normalised units the square is 0..2.
    EXPECT_TRUE(square.PointInLineInnerAreaNormalized(1.5f, 1.5f, 1));
    EXPECT_FALSE(square.PointInLineInnerAreaNormalized(3.0f, 1.5f, 1));  // plain box holds it, scaled line doesn't
    EXPECT_FALSE(square.PointInLineInnerAreaNormalized(1.5f, -1.0f, 1)); // outside the plain box
    SSEPoint p = Sse(1.0f, 1.0f, 0.0f);
    EXPECT_TRUE(square.PointInLineInnerAreaNormalized(p, 1));
}

// An independent even-odd count in double precision, for points that lie on
// no edge.
bool EvenOdd(const std::vector<Xyz>& poly, double x, double y)
{
    bool inside = false;
    for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++) {
        const double xi = poly[i].x, yi = poly[i].y, xj = poly[j].x, yj = poly[j].y;
        if ((xi > x) != (xj > x)) {
            const double yCross = yi + (x - xi) * (yj - yi) / (xj - xi);
            if (yCross > y) inside = !inside;
        }
    }
    return inside;
}

TEST(PointInLineInnerAreaTest, AgreesWithAPlainEvenOddCountOnRandomStars)
{
    std::mt19937 random(20261122);
    std::uniform_real_distribution<float> radius(2.0f, 10.0f);
    std::uniform_real_distribution<float> coordinate(-12.0f, 12.0f);
    for (int shape = 0; shape < 20; ++shape) {
        std::vector<Xyz> star;
        const int n = 5 + shape;
        for (int i = 0; i < n; ++i) {
            const double angle = 2.0 * 3.14159265358979 * i / n;
            const float r = radius(random);
            star.push_back({static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle)), 0});
        }
        CSSE3dPolygon polygon;
        Fill(polygon, star);
        for (int k = 0; k < 200; ++k) {
            // Points on a quarter lattice offset by an eighth never meet a vertex column.
            const float x = std::round(coordinate(random) * 4.0f) / 4.0f + 0.125f;
            const float y = coordinate(random);
            ASSERT_EQ(polygon.PointInLineInnerArea(x, y, 1), EvenOdd(star, x, y)) << x << ", " << y;
        }
    }
}

} // namespace
