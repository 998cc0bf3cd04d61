#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/exact_integer.h"
#include "support/plane_geometry.h"
#include "support/polygon_points.h"
#include "vekdll/planar/polygon_triangulator.h"

using namespace vek::test;
using vek::test::ExactInteger;

namespace {

// Rings at the float precision the triangulator sees.
using Ring = std::vector<Xyz>;

Ring Regular(int corners, double radius)
{
    return Polar(corners, corners, [=](int, double) { return radius; });
}

// A back of height 2 along the x axis with `teeth` teeth of width 2 and
// height 10 standing on it, two apart; counter-clockwise.
Ring Comb(int teeth)
{
    Ring ring{{0, 0}, {4.0f * teeth - 2, 0}};
    for (float x = 4.0f * (teeth - 1); x >= 0; x -= 4) {
        ring.insert(ring.end(), {{x + 2, 10}, {x, 10}});
        if (x > 0) ring.insert(ring.end(), {{x, 2}, {x - 2, 2}});
    }
    return ring;
}

// A band of width 15 wound two and a half times around the origin: out
// along the outer rim, back along the inner one; counter-clockwise.
Ring Spiral()
{
    Ring ring = Polar(91, 36, [](int, double angle) { return 25.0 + 6.0 * angle; });
    const Ring inner = Polar(91, 36, [](int, double angle) { return 10.0 + 6.0 * angle; });
    ring.insert(ring.end(), inner.rbegin(), inner.rend());
    return ring;
}

// The ring mirrored at the x axis, which turns its sense of rotation.
Ring Mirrored(Ring ring)
{
    for (Xyz& p : ring) p.y = -p.y;
    return ring;
}

// The ring with every coordinate multiplied by `factor`.
Ring Scaled(Ring ring, float factor)
{
    for (Xyz& p : ring) p = {p.x * factor, p.y * factor};
    return ring;
}

// The corners of the triangles, three by three, from a planar source at step 1.
std::vector<int> Corners(const Ring& ring, float scale, bool behindHead,
                         vek::PlanarPredicates predicates = vek::PlanarPredicates::Tolerant)
{
    CSSE2dPolygon polygon;
    Fill(polygon, ring);
    CHPolygonTriangulator t(&polygon, 1, scale, scale, behindHead, predicates);
    std::vector<int> corners;
    for (int i = 0; i < t.GetNumTriangles(); ++i) {
        const t_htriangleconnectivity& c = t.GetConnectivityArray()[i];
        corners.insert(corners.end(), {c.a, c.b, c.c});
    }
    return corners;
}

// Walks the triangles of `t` on `ring`, which is in the triangulator's
// scaled plane: each must name vertices of the ring, clip a tip not clipped
// before, and have its centroid inside; `visit(k, triangle)` checks the
// rest. Returns which tips were clipped.
template <class Visit>
std::vector<bool> WalkTriangles(const CHPolygonTriangulator& t, const Ring& ring, Visit visit)
{
    const int m = static_cast<int>(ring.size());
    std::vector<bool> clipped(m, false);
    for (int k = 0; k < t.GetNumTriangles(); ++k) {
        const t_htriangleconnectivity& tri = t.GetConnectivityArray()[k];
        SCOPED_TRACE("triangle " + std::to_string(k));
        if (std::min({tri.a, tri.b, tri.c}) < 0 || std::max({tri.a, tri.b, tri.c}) >= m) {
            ADD_FAILURE() << "a corner outside the ring";
            continue;
        }
        EXPECT_FALSE(clipped[tri.b]) << "a tip clipped twice";
        clipped[tri.b] = true;
        const Xyz &a = ring[tri.a], &b = ring[tri.b], &c = ring[tri.c];
        EXPECT_TRUE(EvenOddInside(ring, (double(a.x) + b.x + c.x) / 3.0, (double(a.y) + b.y + c.y) / 3.0));
        visit(k, tri);
    }
    return clipped;
}

// Every triangle a positive corner of the ring clipped once, its centroid
// inside the ring, and recorded with its diagonal. A complete run leaves two
// vertices, or the last three whose triangle it doesn't write: either way
// the pieces add up to the ring's area.
void ExpectClippedInside(const CHPolygonTriangulator& t, const Ring& ring, bool complete)
{
    double covered = 0.0;
    const std::vector<bool> clipped = WalkTriangles(t, ring, [&](int k, const t_htriangleconnectivity& tri) {
        const Xyz &a = ring[tri.a], &c = ring[tri.c];
        EXPECT_GT(Cross(a, ring[tri.b], c), 0.0);
        covered += Cross(a, ring[tri.b], c);
        float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        t.GetDiagonalPoints(k, x1, y1, x2, y2);
        EXPECT_TRUE(t.DiagonalExists(k));
        EXPECT_EQ((std::vector{x1, y1, x2, y2}), (std::vector{a.x, a.y, c.x, c.y}));
    });
    Ring rest;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        if (!clipped[i]) rest.push_back(ring[i]);
    }
    EXPECT_LE(covered, TwiceArea(ring) * (1.0 + 1e-9));
    if (!complete) return;
    EXPECT_EQ(std::pair(t.GetNum2dPoints(), t.GetNumDiagonals()), std::pair(int(ring.size()), t.GetNumTriangles()));
    ASSERT_TRUE(rest.size() == 2 || rest.size() == 3) << rest.size() << " vertices left";
    EXPECT_NEAR(covered + TwiceArea(rest), TwiceArea(ring), 1e-9 * TwiceArea(ring));
}

// A run of the exact mode that cut `ring` whole: m - 2 triangles as above,
// each turning left, and twice their areas adding up exactly to twice the
// ring's area, all in integers on the coordinates' common grid.
void ExpectCutWhole(const CHPolygonTriangulator& t, const Ring& ring)
{
    const int m = static_cast<int>(ring.size());
    ASSERT_EQ(std::tuple(t.GetNum2dPoints(), t.GetNumTriangles(), t.GetNumDiagonals()), std::tuple(m, m - 2, m - 2));
    std::vector<double> coordinates;
    for (const Xyz& p : ring) coordinates.insert(coordinates.end(), {p.x, p.y});
    const std::vector<ExactInteger> n = OnCommonGrid(coordinates);
    const auto twiceArea = [&](int a, int b, int c) {
        return (n[2 * b] - n[2 * a]) * (n[2 * c + 1] - n[2 * a + 1]) -
               (n[2 * b + 1] - n[2 * a + 1]) * (n[2 * c] - n[2 * a]);
    };
    ExactInteger ringArea(0);
    for (int i = 1; i + 1 < m; ++i) ringArea = ringArea + twiceArea(0, i, i + 1);
    ExactInteger covered(0);
    WalkTriangles(t, ring, [&](int, const t_htriangleconnectivity& tri) {
        const ExactInteger area = twiceArea(tri.a, tri.b, tri.c);
        EXPECT_EQ(area.Sign(), 1);
        covered = covered + area;
    });
    EXPECT_EQ((covered - ringArea).Sign(), 0);
}

// The exact mode's run on `ring`, given counter-clockwise as it is, and
// clockwise with the y scale of -1 that mirrors it back.
void ExpectCutWholeBothWays(const Ring& ring, bool behindHead)
{
    CSSE2dPolygon counterClockwise;
    Fill(counterClockwise, ring);
    ExpectCutWhole(CHPolygonTriangulator(&counterClockwise, 1, 1.0f, 1.0f, behindHead, vek::PlanarPredicates::Exact),
                   ring);
    CSSE3dPolygon clockwise;
    Fill(clockwise, Mirrored(ring));
    ExpectCutWhole(CHPolygonTriangulator(&clockwise, 1, 1.0f, -1.0f, 1.0f, behindHead, vek::PlanarPredicates::Exact),
                   ring);
}

TEST(CHPolygonTriangulator, EarSearchStartAndSourcesThatGiveNothing)
{
    const Ring square{{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    EXPECT_EQ(Corners(square, 1.0f, false), (std::vector<int>{3, 0, 1, 1, 2, 3}));
    // Clipping 1 clears both its neighbours, and 3 never got a flag.
    EXPECT_EQ(Corners(square, 1.0f, true), (std::vector<int>{0, 1, 2}));
    // A convex hexagon: from the head the clips fan out around vertex 5,
    // which starts without a flag; one behind the head they walk the ring.
    EXPECT_EQ(Corners(Regular(6, 10.0), 1.0f, false), (std::vector<int>{5, 0, 1, 5, 1, 2, 5, 2, 3, 3, 4, 5}));
    EXPECT_EQ(Corners(Regular(6, 10.0), 1.0f, true), (std::vector<int>{0, 1, 2, 2, 3, 4, 5, 0, 2, 2, 4, 5}));
    // Scaled down far enough, no corner is a corner for the tolerance;
    // clockwise, none is an ear; a bare triangle passes no cone test.
    EXPECT_TRUE(Corners(Regular(6, 10.0), 0.001f, true).empty());
    EXPECT_TRUE(Corners(Mirrored(Regular(6, 10.0)), 1.0f, false).empty());
    EXPECT_TRUE(Corners({{0, 0}, {4, 0}, {0, 4}}, 1.0f, true).empty());

    // No source, a step below 1 or beyond the source, or fewer than three
    // points leave the object empty.
    CSSE2dPolygon polygon;
    Fill(polygon, Ring{{0, 0}, {4, 0}, {0, 4}});
    EXPECT_EQ(CHPolygonTriangulator(static_cast<CSSE2dPolygon*>(nullptr), 1, 1.0f, 1.0f, true).GetNum2dPoints(), 0);
    for (int step : {0, -2, 4}) EXPECT_EQ(CHPolygonTriangulator(&polygon, step, 1.0f, 1.0f, true).GetNum2dPoints(), 0);
    Fill(polygon, Ring{{0, 0}, {4, 0}});
    CHPolygonTriangulator empty(&polygon, 1, 1.0f, 1.0f, true);
    float x = -1, y = -1;
    empty.GetPoint(0, x, y);
    EXPECT_EQ(std::tuple(empty.GetNumTriangles(), empty.GetConnectivityArray(), x), std::tuple(0, nullptr, -1.0f));
    EXPECT_FALSE(empty.DiagonalExists(-1) || empty.DiagonalExists(0));
}

TEST(CHPolygonTriangulator, StepThinsTheSourceAndScalesApplyToTheVertices)
{
    // Seven points with step 2: vertices from points 0, 2 and 4; 6 is left out.
    CSSE2dPolygon seven;
    Fill(seven, Ring{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}});
    CHPolygonTriangulator thinned(&seven, 2, 3.0f, -1.0f, true);
    float x = 0, y = 0;
    thinned.GetPoint(2, x, y);
    EXPECT_EQ(std::tuple(thinned.GetNum2dPoints(), x, y), std::tuple(3, 6.0f, -2.0f));

    // A spatial source at step 2: the triangles come back as the source
    // points at twice their vertex index, unscaled and with their z.
    const Ring dense{{0, 0, 0}, {5, 0, 1.5f}, {10, 0, 3}, {10, 5, 4.5f}, {10, 10, 6}, {5, 10, 7.5f}, {0, 10, 9}, {0, 5, 10.5f}};
    CSSE3dPolygon spatial;
    Fill(spatial, dense);
    CHPolygonTriangulator fromSpatial(&spatial, 2, 2.0f, 2.0f, 3.0f, false);
    ASSERT_EQ(fromSpatial.GetNumTriangles(), 2);
    SSEPoint a, b, c, p = Sse(-7, -7, -7, -7);
    fromSpatial.GetTriangle3D(0, a, b, c); // (3, 0, 1): source points 6, 0, 2
    EXPECT_EQ((std::vector{Lanes(a), Lanes(b), Lanes(c)}), (std::vector<Lanes4>{{0, 10, 9, 0}, {0, 0, 0, 0}, {10, 0, 3, 0}}));

    // Out of range, or from a planar source, nothing is written.
    fromSpatial.GetTriangle3D(2, p, p, p);
    fromSpatial.GetTriangle3D(-1, p, p, p);
    CSSE2dPolygon planar;
    Fill(planar, dense);
    CHPolygonTriangulator(&planar, 2, 1.0f, 1.0f, false).GetTriangle3D(0, p, p, p);
    EXPECT_EQ(Lanes(p), (Lanes4{-7, -7, -7, -7}));
}

TEST(CHPolygonTriangulator, ClipsConvexConcaveCombAndSpiralPolygonsInBothOrientations)
{
    const Ring star = Polar(18, 18, [](int i, double) { return i % 2 == 0 ? 100.0 : 35.0; });
    for (const Ring& ring : {Regular(17, 100.0), star, Comb(12), Spiral()}) {
        for (bool behindHead : {false, true}) {
            SCOPED_TRACE(::testing::Message() << ring.size() << " points" << (behindHead ? ", behind head" : ", at head"));
            CSSE2dPolygon counterClockwise;
            Fill(counterClockwise, ring);
            ExpectClippedInside(CHPolygonTriangulator(&counterClockwise, 1, 1.0f, 1.0f, behindHead), ring, true);
            // A clockwise ring is taken back in the mirror by a y scale of -1.
            CSSE3dPolygon clockwise;
            Fill(clockwise, Mirrored(ring));
            ExpectClippedInside(CHPolygonTriangulator(&clockwise, 1, 1.0f, -1.0f, 1.0f, behindHead), ring, true);
        }
    }
}

TEST(CHPolygonTriangulator, CollinearRunsAndRepeatedPointsStayInside)
{
    // A square with a point at every unit of its edges; an L with one corner
    // given twice in a row; two squares that touch in a corner visited twice.
    const Ring repeated{{0, 0}, {6, 0}, {6, 0}, {6, 3}, {3, 3}, {3, 6}, {0, 6}};
    const Ring revisited{{0, 0}, {2, 0}, {2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}, {0, 2}};
    for (const Ring& ring : {DottedSquare(10), repeated, revisited}) {
        for (bool behindHead : {false, true}) {
            CSSE2dPolygon polygon;
            Fill(polygon, ring);
            ExpectClippedInside(CHPolygonTriangulator(&polygon, 1, 1.0f, 1.0f, behindHead), ring, false);
        }
    }
}

TEST(CHPolygonTriangulator, ExactModeCutsTinyAndDenseRingsWhole)
{
    // Rings whose corners are far below the tolerance: a square of side
    // 1e-3, a regular 17-gon, a comb and a spiral shrunk to a thousandth,
    // and rings of closely spaced points, convex and wavy.
    const std::vector<Ring> rings{
        {{0, 0}, {1e-3f, 0}, {1e-3f, 1e-3f}, {0, 1e-3f}},
        Regular(17, 1e-3),
        Scaled(Comb(6), 1e-4f),
        Scaled(Spiral(), 1e-3f),
        Regular(400, 1.0),
        Polar(300, 300, [](int, double angle) { return 1.0 + 0.2 * std::sin(7.0 * angle); }),
    };
    for (const Ring& ring : rings) {
        SCOPED_TRACE(::testing::Message() << ring.size() << " points, first at " << ring[0]);
        for (bool behindHead : {false, true}) {
            ExpectCutWholeBothWays(ring, behindHead);
            // The tolerance sees none of these rings whole.
            EXPECT_LT(Corners(ring, 1.0f, behindHead).size(), 3 * (ring.size() - 2));
        }
    }
}

TEST(CHPolygonTriangulator, ExactModeKeepsTheDefaultTrianglesAndAddsThoseItLeftOut)
{
    // Where the tolerance never decides differently, the exact run clips
    // the same ears in the same order, and goes on where the default stops
    // short: a bare triangle, the square whose last vertex never got a
    // flag, the fan that stops one triangle early, a dotted square whose
    // collinear runs stall the default.
    const Ring square{{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    EXPECT_EQ(Corners({{0, 0}, {4, 0}, {0, 4}}, 1.0f, true, vek::PlanarPredicates::Exact), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Corners(square, 1.0f, true, vek::PlanarPredicates::Exact), (std::vector<int>{0, 1, 2, 2, 3, 0}));
    EXPECT_EQ(Corners(square, 1.0f, false, vek::PlanarPredicates::Exact), (std::vector<int>{3, 0, 1, 1, 2, 3}));
    const Ring star = Polar(18, 18, [](int i, double) { return i % 2 == 0 ? 100.0 : 35.0; });
    for (const Ring& ring : {Regular(6, 10.0), Regular(17, 100.0), star, Comb(12), Spiral(), DottedSquare(10)}) {
        for (bool behindHead : {false, true}) {
            SCOPED_TRACE(::testing::Message() << ring.size() << " points, " << (behindHead ? "behind" : "at") << " head");
            const std::vector<int> tolerant = Corners(ring, 1.0f, behindHead);
            const std::vector<int> exact = Corners(ring, 1.0f, behindHead, vek::PlanarPredicates::Exact);
            ASSERT_EQ(exact.size(), 3 * (ring.size() - 2));
            EXPECT_TRUE(std::equal(tolerant.begin(), tolerant.end(), exact.begin()));
            ExpectCutWholeBothWays(ring, behindHead);
        }
    }
}

TEST(CHPolygonTriangulator, ExactModeStopsOnRingsThatAreNotSimple)
{
    // Clockwise, no vertex is an ear; a bow tie and a ring through one
    // point twice leave a partial result whose triangles still turn left.
    const Ring bowTie{{0, 0}, {4, 4}, {4, 0}, {0, 4}};
    const Ring twiceThroughOnePoint{{0, 0}, {2, 0}, {2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}, {0, 2}};
    EXPECT_TRUE(Corners(Mirrored(Regular(6, 1e-3)), 1.0f, true, vek::PlanarPredicates::Exact).empty());
    for (const Ring& ring : {bowTie, twiceThroughOnePoint, Mirrored(Comb(3))}) {
        for (bool behindHead : {false, true}) {
            const std::vector<int> corners = Corners(ring, 1.0f, behindHead, vek::PlanarPredicates::Exact);
            EXPECT_LT(corners.size(), 3 * (ring.size() - 2));
            for (std::size_t k = 0; k < corners.size(); k += 3) {
                const Xyz &a = ring[corners[k]], &b = ring[corners[k + 1]], &c = ring[corners[k + 2]];
                EXPECT_EQ(ExactOrientation(a.x, a.y, b.x, b.y, c.x, c.y), 1);
            }
        }
    }
}

} // namespace
