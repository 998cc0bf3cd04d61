#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/exact_integer.h"
#include "support/sse_lanes.h"
#include "vekdll/foundation/exact_predicates.h"

using vek::test::ExactInteger;

namespace {

struct Point {
    double x;
    double y;
};

// The determinant of a square matrix by expansion along the first row.
ExactInteger Determinant(const std::vector<std::vector<ExactInteger>>& m)
{
    if (m.size() == 1) return m[0][0];
    ExactInteger sum(0);
    for (std::size_t column = 0; column < m.size(); ++column) {
        std::vector<std::vector<ExactInteger>> minor;
        for (std::size_t row = 1; row < m.size(); ++row) {
            minor.emplace_back();
            for (std::size_t c = 0; c < m.size(); ++c) {
                if (c != column) minor.back().push_back(m[row][c]);
            }
        }
        const ExactInteger term = m[0][column] * Determinant(minor);
        sum = column % 2 == 0 ? sum + term : sum - term;
    }
    return sum;
}

// The reference signs, in integers on the points' common grid: the
// orientation as (b - a) x (c - a), and the in-circle test as
// det [x y x^2+y^2 1] over the points' rows.
int ExactOrientation(Point a, Point b, Point c)
{
    return vek::test::ExactOrientation(a.x, a.y, b.x, b.y, c.x, c.y);
}

int ExactInCircle(Point a, Point b, Point c, Point d)
{
    // The constant column of the lifted rows is scaled like a squared
    // coordinate, which multiplies the determinant by a power of two only.
    const auto n = vek::test::OnCommonGrid({a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y});
    std::vector<std::vector<ExactInteger>> rows;
    for (int p = 0; p < 4; ++p) {
        const ExactInteger& x = n[2 * p];
        const ExactInteger& y = n[2 * p + 1];
        rows.push_back({x, y, x * x + y * y, ExactInteger(1)});
    }
    return Determinant(rows).Sign();
}

int SignOf(double v)
{
    return (v > 0.0) - (v < 0.0);
}

int Orientation(Point a, Point b, Point c)
{
    return SignOf(vek::Orient2D(a.x, a.y, b.x, b.y, c.x, c.y));
}

int InCircleSign(Point a, Point b, Point c, Point d)
{
    return SignOf(vek::InCircle(a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y));
}

// Checks both predicates' signs against the reference, with the point
// order turned in every way that must keep or flip the sign.
void ExpectOrientationExact(Point a, Point b, Point c)
{
    const int expected = ExactOrientation(a, b, c);
    ASSERT_EQ(Orientation(a, b, c), expected)
        << a.x << ' ' << a.y << ' ' << b.x << ' ' << b.y << ' ' << c.x << ' ' << c.y;
    EXPECT_EQ(Orientation(b, c, a), expected);
    EXPECT_EQ(Orientation(b, a, c), -expected);
    EXPECT_EQ(Orientation(a, c, b), -expected);
}

void ExpectInCircleExact(Point a, Point b, Point c, Point d)
{
    const int expected = ExactInCircle(a, b, c, d);
    ASSERT_EQ(InCircleSign(a, b, c, d), expected)
        << a.x << ' ' << a.y << ' ' << b.x << ' ' << b.y << ' ' << c.x << ' ' << c.y << ' ' << d.x << ' ' << d.y;
    EXPECT_EQ(InCircleSign(b, c, a, d), expected);
    EXPECT_EQ(InCircleSign(b, a, c, d), -expected);
    // Exchanging the query point with a circle point is an odd permutation
    // of the rows too.
    EXPECT_EQ(InCircleSign(d, b, c, a), -expected);
}

double Ulps(double v, int steps)
{
    for (; steps > 0; --steps) v = std::nextafter(v, std::numeric_limits<double>::infinity());
    for (; steps < 0; ++steps) v = std::nextafter(v, -std::numeric_limits<double>::infinity());
    return v;
}

float FloatUlps(float v, int steps)
{
    for (; steps > 0; --steps) v = std::nextafter(v, std::numeric_limits<float>::infinity());
    for (; steps < 0; ++steps) v = std::nextafter(v, -std::numeric_limits<float>::infinity());
    return v;
}

Point Scaled(Point p, double s)
{
    return {p.x * s, p.y * s};
}

// Rounded to float through memory: g++ 12 at -O2 drops a round trip from
// double to float and back when it vectorizes two of them side by side.
double ToFloat(double v)
{
    volatile float rounded = static_cast<float>(v);
    return rounded;
}

Point FloatRounded(Point p)
{
    return {ToFloat(p.x), ToFloat(p.y)};
}

TEST(ExactPredicates, RandomPointsOfMixedMagnitudeAgreeWithExactArithmetic)
{
    std::mt19937_64 random(20240521);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> exponent(-40, 40);
    const auto coordinate = [&](bool mixed) {
        return mixed ? std::ldexp(unit(random), exponent(random)) : unit(random);
    };
    for (int i = 0; i < 600; ++i) {
        const bool mixed = i % 2 == 1;
        const Point a{coordinate(mixed), coordinate(mixed)}, b{coordinate(mixed), coordinate(mixed)};
        const Point c{coordinate(mixed), coordinate(mixed)}, d{coordinate(mixed), coordinate(mixed)};
        ExpectOrientationExact(a, b, c);
        ExpectInCircleExact(a, b, c, d);
        ExpectInCircleExact(FloatRounded(a), FloatRounded(b), FloatRounded(c), FloatRounded(d));
    }
}

TEST(ExactPredicates, PointsWithinAFewUlpsOfALineAreJudgedExactly)
{
    // A point near (0.5, 0.5), shifted by i and j units in the last place,
    // against the line through (12, 12) and (24, 24): the differences to
    // the far points are not exact, and plain double arithmetic gets many
    // of these signs wrong.
    const double ulp = std::ldexp(1.0, -53);
    for (int i = 0; i < 48; ++i) {
        for (int j = 0; j < 48; ++j) ExpectOrientationExact({0.5 + i * ulp, 0.5 + j * ulp}, {12, 12}, {24, 24});
    }

    // A point on a random line, rounded, then moved by up to two ulps in
    // each coordinate; at several scales, around world coordinates of 5e5,
    // and with the points rounded to float first.
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> unit(-1.0, 1.0), along(-2.0, 3.0);
    for (double scale : {1.0, 1e-9, 1e9}) {
        for (double offset : {0.0, 5e5}) {
            for (int line = 0; line < 12; ++line) {
                const Point a{offset + unit(random) * scale, offset + unit(random) * scale};
                const Point b{offset + unit(random) * scale, offset + unit(random) * scale};
                const double t = along(random);
                const Point c{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
                for (int dx = -2; dx <= 2; ++dx) {
                    for (int dy = -2; dy <= 2; ++dy) {
                        ExpectOrientationExact(a, b, {Ulps(c.x, dx), Ulps(c.y, dy)});
                        ExpectOrientationExact(FloatRounded(a), FloatRounded(b),
                                               {FloatUlps(float(c.x), dx), FloatUlps(float(c.y), dy)});
                    }
                }
            }
        }
    }
}

TEST(ExactPredicates, PointsWithinAFewUlpsOfACircleAreJudgedExactly)
{
    // Three points on a circle, a fourth on it too but moved by up to two
    // ulps; circles far from the origin make the differences inexact.
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> angle(0.0, 6.283185307179586);
    const struct {
        Point centre;
        double radius;
    } circles[] = {{{0.0, 0.0}, 1.0},     {{0.3, 0.7}, 100.0}, {{5e5, 5e5}, 3.0},
                   {{-2e-9, 1e-9}, 3e-9}, {{7e9, -3e9}, 2e9},  {{1e-3, 1e-3}, 1e3}};
    for (const auto& circle : circles) {
        for (int round = 0; round < 6; ++round) {
            Point p[4];
            for (Point& q : p) {
                const double phi = angle(random);
                q = {circle.centre.x + circle.radius * std::cos(phi), circle.centre.y + circle.radius * std::sin(phi)};
            }
            for (int dx = -2; dx <= 2; ++dx) {
                for (int dy = -2; dy <= 2; ++dy) {
                    ExpectInCircleExact(p[0], p[1], p[2], {Ulps(p[3].x, dx), Ulps(p[3].y, dy)});
                    ExpectInCircleExact(FloatRounded(p[0]), FloatRounded(p[1]), FloatRounded(p[2]),
                                        {FloatUlps(float(p[3].x), dx), FloatUlps(float(p[3].y), dy)});
                }
            }
        }
    }
}

TEST(ExactPredicates, LatticePointsDecideDegenerateCasesExactlyAtEveryScale)
{
    // Every triple and (but for order) every quadruple of a 3 x 3 lattice: collinear runs,
    // cocircular squares and repeated points give exactly 0. Scaled by
    // powers of two far beyond what the plain products hold, the signs stay;
    // scaled by 2^52 + 1 and others, the lattice is one of long integers,
    // whose differences are exact but too long for 64-bit products.
    std::vector<Point> lattice;
    for (int x = -1; x <= 1; ++x) {
        for (int y = -1; y <= 1; ++y) lattice.push_back({double(x), double(y)});
    }
    int zeros = 0;
    const double orientScales[] = {1.0, 0x1p-600, 0x1p600, 0x1p-1060, 0x1p1000, 0x1p52 + 1, 0x1p61 + 0x1p9};
    for (const Point& a : lattice) {
        for (const Point& b : lattice) {
            for (const Point& c : lattice) {
                const int expected = ExactOrientation(a, b, c);
                zeros += expected == 0;
                for (double s : orientScales)
                    EXPECT_EQ(Orientation(Scaled(a, s), Scaled(b, s), Scaled(c, s)), expected);
            }
        }
    }
    EXPECT_EQ(vek::Orient2D(1, 1, 1, 1, 1, 1), 0.0);
    const double inCircleScales[] = {1.0, 0x1p-300, 0x1p300, 0x1p-1000, 0x1p52 + 1, 0x1p32 + 1};
    // The circle points in one order each (the symmetry of the sign under
    // reordering is checked elsewhere), the fourth point anywhere.
    for (std::size_t i = 0; i < lattice.size(); ++i) {
        for (std::size_t j = i; j < lattice.size(); ++j) {
            for (std::size_t k = j; k < lattice.size(); ++k) {
                for (const Point& d : lattice) {
                    const Point &a = lattice[i], &b = lattice[j], &c = lattice[k];
                    const int expected = ExactInCircle(a, b, c, d);
                    zeros += expected == 0;
                    for (double s : inCircleScales) {
                        EXPECT_EQ(InCircleSign(Scaled(a, s), Scaled(b, s), Scaled(c, s), Scaled(d, s)), expected);
                    }
                }
            }
        }
    }
    // Lattice points on the circle of radius 5, and one just inside and outside.
    const Point a{5, 0}, b{0, 5}, c{-3, -4};
    EXPECT_EQ(vek::InCircle(a.x, a.y, b.x, b.y, c.x, c.y, 4, -3), 0.0);
    EXPECT_EQ(vek::InCircle(a.x, a.y, b.x, b.y, c.x, c.y, -4, 3), 0.0);
    EXPECT_GT(vek::InCircle(a.x, a.y, b.x, b.y, c.x, c.y, 4, std::nextafter(-3.0, 0.0)), 0.0);
    EXPECT_LT(vek::InCircle(a.x, a.y, b.x, b.y, c.x, c.y, std::nextafter(-4.0, -5.0), 3), 0.0);
    // Clockwise, inside counts negative.
    EXPECT_LT(vek::InCircle(b.x, b.y, a.x, a.y, c.x, c.y, 0, 0), 0.0);
    EXPECT_GT(zeros, 1000); // the degenerate cases did come up
}

TEST(ExactPredicates, WideRangesOfMagnitudeWithinTheDocumentedBounds)
{
    // Coordinates spanning 2^900 for the orientation and 2^440 for the
    // in-circle test, near-degenerate by construction.
    const double big = 0x1p450, small = 0x1p-450;
    ExpectOrientationExact({big, big}, {-big, -big}, {small, small});
    ExpectOrientationExact({big, big}, {-big, -big}, {small, Ulps(small, 1)});
    ExpectOrientationExact({small, 0}, {0, small}, {Ulps(-big, 1), big});
    const double wide = 0x1p220, narrow = 0x1p-220;
    ExpectInCircleExact({wide, 0}, {0, wide}, {-wide, 0}, {narrow, Ulps(wide, -1)});
    ExpectInCircleExact({narrow, 0}, {0, narrow}, {-narrow, 0}, {0, Ulps(-narrow, 1)});
    ExpectInCircleExact({wide, narrow}, {narrow, wide}, {-wide, narrow}, {narrow, -wide});
    // Exact differences of 55 to 75 bits, and a determinant far within the
    // plain rounding error.
    for (int bits = 55; bits <= 75; ++bits) {
        const double far = std::ldexp(1.0, bits - 1);
        ExpectOrientationExact({far, far + std::ldexp(1.0, bits - 53)}, {1, 1}, {0, 0});
        ExpectOrientationExact({far, far + std::ldexp(1.0, bits - 53)}, {3, 3}, {-1, -1});
    }
    // Integer points on a circle of radius 5 (2^31 + 1) and next to it:
    // exact differences of 35 bits, whose squares take 70.
    const double unit = 0x1p31 + 1;
    for (double dx : {-1.0, 0.0, 1.0}) {
        for (double dy : {-1.0, 0.0, 1.0}) {
            ExpectInCircleExact({5 * unit, 0}, {0, 5 * unit}, {-3 * unit, -4 * unit}, {4 * unit + dx, -3 * unit + dy});
        }
    }
    // Subnormal coordinates.
    const double tiny = std::numeric_limits<double>::denorm_min();
    ExpectOrientationExact({tiny, tiny}, {3 * tiny, 2 * tiny}, {5 * tiny, 3 * tiny});
    ExpectInCircleExact({tiny, 0}, {0, tiny}, {-tiny, 0}, {0, -tiny});
}

TEST(ExactPredicates, TinyCoordinatesWhoseProductsRoundBelowTheNormalRange)
{
    // Near-cocircular points of full precision around 2^-265: the plain
    // products of four coordinates fall below the normal range, where they
    // are rounded to an absolute grid and no longer to a relative one; the
    // plain value's sign is then often wrong, and must not be trusted. The
    // same for the orientation around 2^-535.
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> angle(0.0, 6.283185307179586), unit(-1.0, 1.0), along(-2.0, 3.0);
    for (int e = -255; e >= -275; e -= 2) {
        const double s = std::ldexp(1.0, e);
        for (int round = 0; round < 3; ++round) {
            Point p[4];
            for (Point& q : p) {
                const double phi = angle(random);
                q = {s * std::cos(phi), s * std::sin(phi)};
            }
            for (int dx = -2; dx <= 2; ++dx) {
                for (int dy = -2; dy <= 2; ++dy)
                    ExpectInCircleExact(p[0], p[1], p[2], {Ulps(p[3].x, dx), Ulps(p[3].y, dy)});
            }
        }
    }
    for (int e = -525; e >= -545; e -= 2) {
        const double s = std::ldexp(1.0, e);
        const Point a{unit(random) * s, unit(random) * s}, b{unit(random) * s, unit(random) * s};
        const double t = along(random);
        const Point c{a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
        for (int dx = -2; dx <= 2; ++dx) {
            for (int dy = -2; dy <= 2; ++dy) ExpectOrientationExact(a, b, {Ulps(c.x, dx), Ulps(c.y, dy)});
        }
    }
}

TEST(ExactPredicates, FourLanePointsAndNonFiniteCoordinates)
{
    using vek::test::Sse;
    // The lanes x and y are read; z and w are not.
    EXPECT_GT(vek::Orient2D(Sse(0, 0, 5), Sse(1, 0, 6), Sse(0, 1, 7, 1)), 0.0);
    EXPECT_EQ(vek::Orient2D(Sse(0, 0, 5), Sse(1, 1, 6), Sse(2, 2, 7)), 0.0);
    EXPECT_GT(vek::InCircle(Sse(1, 0, 9), Sse(0, 1, 9), Sse(-1, 0, 9), Sse(0, 0, 9)), 0.0);
    EXPECT_EQ(vek::InCircle(Sse(1, 0, 9), Sse(0, 1, 9), Sse(-1, 0, 9), Sse(0, -1, 9)), 0.0);

    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(vek::Orient2D(0, 0, inf, 0, 0, 1)));
    EXPECT_TRUE(std::isnan(vek::Orient2D(0, 0, 1, nan, 0, 1)));
    EXPECT_TRUE(std::isnan(vek::InCircle(1, 0, 0, 1, -1, 0, inf, 0)));
    EXPECT_TRUE(std::isnan(vek::InCircle(1, 0, 0, nan, -1, 0, 0, 0)));
    // The largest finite doubles overflow the plain products, not the sign.
    const double max = std::numeric_limits<double>::max();
    EXPECT_GT(vek::Orient2D(-max, -max, max, -max, 0, max), 0.0);
    EXPECT_EQ(vek::Orient2D(-max, -max, 0, 0, max, max), 0.0);
    EXPECT_GT(vek::InCircle(max, 0, 0, max, -max, 0, 0, -max / 2), 0.0);
    EXPECT_EQ(vek::InCircle(max, 0, 0, max, -max, 0, 0, -max), 0.0);
}

} // namespace
