#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "support/sse_lanes.h"
#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// A point of a ring, at the float precision the triangulator sees.
struct Xy {
    Xy(double px, double py) : x(static_cast<float>(px)), y(static_cast<float>(py)) {}
    double x;
    double y;
};
using Ring = std::vector<Xy>;

double Cross(const Xy& a, const Xy& b, const Xy& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Twice the signed area, positive counter-clockwise.
double TwiceArea(const Ring& ring)
{
    double sum = 0.0;
    for (size_t i = 0; i < ring.size(); ++i) sum += Cross({0, 0}, ring[i], ring[(i + 1) % ring.size()]);
    return sum;
}

// Even-odd rule; points on the border may go either way.
bool Inside(const Ring& ring, double px, double py)
{
    bool inside = false;
    for (size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const Xy& a = ring[i];
        const Xy& b = ring[j];
        if ((a.y > py) != (b.y > py) && px < (b.x - a.x) * (py - a.y) / (b.y - a.y) + a.x) inside = !inside;
    }
    return inside;
}

// Points at the angles 2 pi i / perTurn, i = 0 ... count - 1, each at the
// distance radius(i, angle) from the origin.
template <class Radius>
Ring Polar(int count, int perTurn, Radius radius)
{
    Ring ring;
    for (int i = 0; i < count; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / perTurn;
        ring.push_back({radius(i, angle) * std::cos(angle), radius(i, angle) * std::sin(angle)});
    }
    return ring;
}

Ring Regular(int corners, double radius)
{
    return Polar(corners, corners, [=](int, double) { return radius; });
}

// A back of height 2 along the x axis with `teeth` teeth of width 2 and
// height 10 standing on it, two apart; counter-clockwise.
Ring Comb(int teeth)
{
    Ring ring{{0, 0}, {4.0 * teeth - 2.0, 0}};
    for (int i = teeth - 1; i >= 0; --i) {
        ring.insert(ring.end(), {{4.0 * i + 2.0, 10.0}, {4.0 * i, 10.0}});
        if (i > 0) ring.insert(ring.end(), {{4.0 * i, 2.0}, {4.0 * i - 2.0, 2.0}});
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

void Fill(CSSE2dPolygon& polygon, const Ring& ring)
{
    polygon.Create(static_cast<int>(ring.size()));
    for (int i = 0; i < polygon.GetNumPoints(); ++i) polygon.SetPoint(i, float(ring[i].x), float(ring[i].y));
}

void Fill(CSSE3dPolygon& polygon, const Ring& ring)
{
    polygon.Create(static_cast<int>(ring.size()));
    for (int i = 0; i < polygon.GetNumPoints(); ++i) polygon.SetPoint(i, float(ring[i].x), float(ring[i].y), 0.0f);
}

// The ring mirrored at the x axis, which turns its sense of rotation.
Ring Mirrored(Ring ring)
{
    for (Xy& p : ring) p.y = -p.y;
    return ring;
}

std::vector<int> Corners(const CHPolygonTriangulator& t)
{
    std::vector<int> corners;
    const t_htriangleconnectivity* c = t.GetConnectivityArray();
    for (int i = 0; i < t.GetNumTriangles(); ++i) corners.insert(corners.end(), {c[i].a, c[i].b, c[i].c});
    return corners;
}

// Every triangle a positive corner of the ring clipped once, its centroid
// inside the ring, and recorded with its diagonal;
// `ring` is in the triangulator's scaled plane. A complete run leaves two
// vertices, or the last three whose triangle it doesn't write: either way
// the pieces add up to the ring's area.
void ExpectClippedInside(const CHPolygonTriangulator& t, const Ring& ring, bool complete)
{
    const int m = static_cast<int>(ring.size());
    std::vector<bool> clipped(m, false);
    double covered = 0.0;
    for (int k = 0; k < t.GetNumTriangles(); ++k) {
        const t_htriangleconnectivity& tri = t.GetConnectivityArray()[k];
        SCOPED_TRACE("triangle " + std::to_string(k));
        ASSERT_TRUE(std::min({tri.a, tri.b, tri.c}) >= 0 && std::max({tri.a, tri.b, tri.c}) < m);
        EXPECT_FALSE(clipped[tri.b]) << "a tip clipped twice";
        clipped[tri.b] = true;
        const Xy& a = ring[tri.a];
        const Xy& b = ring[tri.b];
        const Xy& c = ring[tri.c];
        EXPECT_GT(Cross(a, b, c), 0.0);
        covered += Cross(a, b, c);
        EXPECT_TRUE(Inside(ring, (a.x + b.x + c.x) / 3.0, (a.y + b.y + c.y) / 3.0));
        EXPECT_TRUE(t.DiagonalExists(k));
        float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        t.GetDiagonalPoints(k, x1, y1, x2, y2);
        EXPECT_EQ((std::vector<double>{x1, y1, x2, y2}), (std::vector<double>{a.x, a.y, c.x, c.y}));
    }
    Ring rest;
    for (int i = 0; i < m; ++i) {
        if (!clipped[i]) rest.push_back(ring[i]);
    }
    EXPECT_LE(covered, TwiceArea(ring) * (1.0 + 1e-9));
    if (!complete) return;
    EXPECT_EQ(t.GetNum2dPoints(), m);
    EXPECT_EQ(t.GetNumDiagonals(), t.GetNumTriangles());
    ASSERT_TRUE(rest.size() == 2 || rest.size() == 3) << rest.size() << " vertices left";
    EXPECT_NEAR(covered + TwiceArea(rest), TwiceArea(ring), 1e-9 * TwiceArea(ring));
}

TEST(CHPolygonTriangulator, EarSearchStartAndSourcesThatGiveNothing)
{
    CSSE2dPolygon square;
    Fill(square, Ring{{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    CHPolygonTriangulator atHead(&square, 1, 1.0f, 1.0f, false);
    EXPECT_EQ(Corners(atHead), (std::vector<int>{3, 0, 1, 1, 2, 3}));
    EXPECT_FALSE(atHead.DiagonalExists(-1));
    EXPECT_FALSE(atHead.DiagonalExists(2));
    // Clipping 1 clears both its neighbours, and 3 never got a flag.
    EXPECT_EQ(Corners(CHPolygonTriangulator(&square, 1, 1.0f, 1.0f, true)), (std::vector<int>{0, 1, 2}));
    // A convex hexagon: from the head the clips fan out around vertex 5,
    // which starts without a flag; one behind the head they walk the ring.
    CSSE2dPolygon polygon;
    Fill(polygon, Regular(6, 10.0));
    EXPECT_EQ(Corners(CHPolygonTriangulator(&polygon, 1, 1.0f, 1.0f, false)),
              (std::vector<int>{5, 0, 1, 5, 1, 2, 5, 2, 3, 3, 4, 5}));
    EXPECT_EQ(Corners(CHPolygonTriangulator(&polygon, 1, 1.0f, 1.0f, true)),
              (std::vector<int>{0, 1, 2, 2, 3, 4, 5, 0, 2, 2, 4, 5}));
    // Scaled down far enough, no corner is a corner for the tolerance;
    // clockwise, none is an ear; a bare triangle passes no cone test.
    EXPECT_EQ(CHPolygonTriangulator(&polygon, 1, 0.001f, 0.001f, true).GetNumTriangles(), 0);
    Fill(polygon, Mirrored(Regular(6, 10.0)));
    EXPECT_EQ(CHPolygonTriangulator(&polygon, 1, 1.0f, 1.0f, false).GetNumTriangles(), 0);
    Fill(polygon, Ring{{0, 0}, {4, 0}, {0, 4}});
    EXPECT_EQ(CHPolygonTriangulator(&polygon, 1, 1.0f, 1.0f, true).GetNumTriangles(), 0);

    // No source, a step below 1 or beyond the source, or fewer than three
    // points leave the object empty.
    EXPECT_EQ(CHPolygonTriangulator(static_cast<CSSE2dPolygon*>(nullptr), 1, 1.0f, 1.0f, true).GetNum2dPoints(), 0);
    for (int step : {0, -2, 4}) EXPECT_EQ(CHPolygonTriangulator(&polygon, step, 1.0f, 1.0f, true).GetNum2dPoints(), 0);
    Fill(polygon, Ring{{0, 0}, {4, 0}});
    CHPolygonTriangulator empty(&polygon, 1, 1.0f, 1.0f, true);
    EXPECT_EQ(empty.GetNumTriangles(), 0);
    EXPECT_EQ(empty.GetConnectivityArray(), nullptr);
    float x = -1, y = -1;
    empty.GetPoint(0, x, y);
    EXPECT_EQ(x, -1);
}

TEST(CHPolygonTriangulator, StepThinsTheSourceAndScalesApplyToTheVertices)
{
    // Seven points with step 2: vertices from points 0, 2 and 4; 6 is left out.
    CSSE2dPolygon seven;
    Fill(seven, Ring{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}});
    CHPolygonTriangulator thinned(&seven, 2, 3.0f, -1.0f, true);
    float x = 0, y = 0;
    thinned.GetPoint(2, x, y);
    EXPECT_EQ(thinned.GetNum2dPoints(), 3);
    EXPECT_EQ((std::vector<float>{x, y}), (std::vector<float>{6, -2}));

    // A spatial source at step 2: the triangles come back as the source
    // points at twice their vertex index, unscaled and with their z.
    const Ring dense{{0, 0}, {5, 0}, {10, 0}, {10, 5}, {10, 10}, {5, 10}, {0, 10}, {0, 5}};
    CSSE3dPolygon spatial;
    Fill(spatial, dense);
    for (int i = 0; i < 8; ++i) spatial.SetPointZ(i, 1.5f * i);
    CHPolygonTriangulator fromSpatial(&spatial, 2, 2.0f, 2.0f, 3.0f, false);
    ASSERT_EQ(fromSpatial.GetNumTriangles(), 2);
    SSEPoint a, b, c;
    fromSpatial.GetTriangle3D(0, a, b, c);  // (3, 0, 1): source points 6, 0, 2
    using vek::test::Lanes;
    using vek::test::Lanes4;
    EXPECT_EQ((std::vector<Lanes4>{Lanes(a), Lanes(b), Lanes(c)}),
              (std::vector<Lanes4>{{0, 10, 9, 0}, {0, 0, 0, 0}, {10, 0, 3, 0}}));

    // Out of range, or from a planar source, nothing is written.
    SSEPoint p = vek::test::Sse(-7, -7, -7, -7);
    fromSpatial.GetTriangle3D(2, p, p, p);
    fromSpatial.GetTriangle3D(-1, p, p, p);
    CSSE2dPolygon planar;
    Fill(planar, dense);
    CHPolygonTriangulator(&planar, 2, 1.0f, 1.0f, false).GetTriangle3D(0, p, p, p);
    EXPECT_EQ(Lanes(p), (Lanes4{-7, -7, -7, -7}));
}

TEST(CHPolygonTriangulator, ClipsConvexConcaveCombAndSpiralPolygonsInBothOrientations)
{
    const struct {
        const char* name;
        Ring ring;
    } shapes[] = {
        {"convex", Regular(17, 100.0)},
        {"star", Polar(18, 18, [](int i, double) { return i % 2 == 0 ? 100.0 : 35.0; })},
        {"comb", Comb(12)},
        {"spiral", Spiral()},
    };
    for (const auto& shape : shapes) {
        for (bool behindHead : {false, true}) {
            SCOPED_TRACE(std::string(shape.name) + (behindHead ? ", behind head" : ", at head"));
            CSSE2dPolygon counterClockwise;
            Fill(counterClockwise, shape.ring);
            ExpectClippedInside(CHPolygonTriangulator(&counterClockwise, 1, 1.0f, 1.0f, behindHead), shape.ring, true);

            // A clockwise ring is taken back in the mirror by a y scale of -1.
            CSSE3dPolygon clockwise;
            Fill(clockwise, Mirrored(shape.ring));
            ExpectClippedInside(CHPolygonTriangulator(&clockwise, 1, 1.0f, -1.0f, 1.0f, behindHead), shape.ring, true);
        }
    }
}

TEST(CHPolygonTriangulator, CollinearRunsAndRepeatedPointsStayInside)
{
    // A square with a point at every unit of its edges.
    Ring dotted;
    for (double i = 0; i < 10; ++i) dotted.push_back({i, 0});
    for (double i = 0; i < 10; ++i) dotted.push_back({10, i});
    for (double i = 0; i < 10; ++i) dotted.push_back({10 - i, 10});
    for (double i = 0; i < 10; ++i) dotted.push_back({0, 10 - i});
    // An L with one corner given twice in a row, and two squares that touch
    // in a corner visited twice on the way round.
    const Ring repeated{{0, 0}, {6, 0}, {6, 0}, {6, 3}, {3, 3}, {3, 6}, {0, 6}};
    const Ring revisited{{0, 0}, {2, 0}, {2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}, {0, 2}};
    for (const Ring* ring : std::initializer_list<const Ring*>{&dotted, &repeated, &revisited}) {
        for (bool behindHead : {false, true}) {
            CSSE2dPolygon polygon;
            Fill(polygon, *ring);
            ExpectClippedInside(CHPolygonTriangulator(&polygon, 1, 1.0f, 1.0f, behindHead), *ring, false);
        }
    }
}

} // namespace
