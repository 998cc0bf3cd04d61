#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "planar/planar_shapes.h"
#include "vekdll/planar/polygon_triangulator.h"

namespace {

using vek::test::Ring;
using vek::test::Xy;

struct Triangle {
    int a;
    int b;
    int c;
};

std::vector<Triangle> TrianglesOf(const CHPolygonTriangulator& t)
{
    std::vector<Triangle> out;
    const t_htriangleconnectivity* c = t.GetConnectivityArray();
    for (int i = 0; i < t.GetNumTriangles(); ++i) out.push_back({c[i].a, c[i].b, c[i].c});
    return out;
}

// Every triangle a positive corner of the ring clipped once, lying inside
// the ring and crossing none of its edges, and recorded with its diagonal.
// `ring` is in the triangulator's scaled plane. Returns twice the area the
// triangles cover.
double ExpectTrianglesInside(const CHPolygonTriangulator& t, const Ring& ring)
{
    const int m = static_cast<int>(ring.size());
    std::vector<bool> clipped(m, false);
    double covered = 0.0;
    const std::vector<Triangle> triangles = TrianglesOf(t);
    for (size_t k = 0; k < triangles.size(); ++k) {
        const Triangle& tri = triangles[k];
        SCOPED_TRACE("triangle " + std::to_string(k));
        for (int i : {tri.a, tri.b, tri.c}) {
            EXPECT_TRUE(i >= 0 && i < m);
            if (i < 0 || i >= m) return covered;
        }
        EXPECT_FALSE(clipped[tri.b]) << "a tip clipped twice";
        clipped[tri.b] = true;
        const Xy& a = ring[tri.a];
        const Xy& b = ring[tri.b];
        const Xy& c = ring[tri.c];
        const double area = vek::test::Cross(a, b, c);
        EXPECT_GT(area, 0.0);
        covered += area;
        EXPECT_TRUE(vek::test::Inside(ring, Xy{(a.x + b.x + c.x) / 3.0, (a.y + b.y + c.y) / 3.0}));
        for (int e = 0; e < m; ++e) {
            const Xy& p = ring[e];
            const Xy& q = ring[(e + 1) % m];
            EXPECT_FALSE(vek::test::CrossProperly(a, c, p, q)) << "diagonal crosses edge " << e;
        }
        EXPECT_TRUE(t.DiagonalExists(static_cast<int>(k)));
        float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
        t.GetDiagonalPoints(static_cast<int>(k), x1, y1, x2, y2);
        EXPECT_EQ(x1, static_cast<float>(a.x));
        EXPECT_EQ(y1, static_cast<float>(a.y));
        EXPECT_EQ(x2, static_cast<float>(c.x));
        EXPECT_EQ(y2, static_cast<float>(c.y));
    }
    EXPECT_LE(covered, vek::test::TwiceArea(ring) * (1.0 + 1e-9));
    return covered;
}

// A complete run: m - 2 triangles, or m - 3 with the last three vertices
// left standing; either way the pieces add up to the ring's area.
void ExpectComplete(const CHPolygonTriangulator& t, const Ring& ring)
{
    const int m = static_cast<int>(ring.size());
    ASSERT_EQ(t.GetNum2dPoints(), m);
    const int n = t.GetNumTriangles();
    ASSERT_TRUE(n == m - 2 || n == m - 3) << n << " triangles of " << m << " vertices";
    EXPECT_EQ(t.GetNumDiagonals(), n);
    double covered = ExpectTrianglesInside(t, ring);
    if (n == m - 3) {
        std::vector<bool> clipped(m, false);
        for (const Triangle& tri : TrianglesOf(t)) clipped[tri.b] = true;
        std::vector<Xy> rest;
        for (int i = 0; i < m; ++i) {
            if (!clipped[i]) rest.push_back(ring[i]);
        }
        ASSERT_EQ(rest.size(), 3u);
        covered += vek::test::Cross(rest[0], rest[1], rest[2]);
    }
    const double area = vek::test::TwiceArea(ring);
    EXPECT_NEAR(covered, area, 1e-9 * area);
}

TEST(CHPolygonTriangulator, SquareClipsWhereTheEarSearchStarts)
{
    CSSE2dPolygon square;
    vek::test::Fill(square, Ring{{0, 0}, {1, 0}, {1, 1}, {0, 1}});

    CHPolygonTriangulator atHead(&square, 1, 1.0f, 1.0f, false);
    ASSERT_EQ(atHead.GetNumTriangles(), 2);
    const t_htriangleconnectivity* c = atHead.GetConnectivityArray();
    EXPECT_EQ((std::vector<int>{c[0].a, c[0].b, c[0].c, c[1].a, c[1].b, c[1].c}),
              (std::vector<int>{3, 0, 1, 1, 2, 3}));
    float x1 = -1, y1 = -1, x2 = -1, y2 = -1;
    atHead.GetDiagonalPoints(0, x1, y1, x2, y2);
    EXPECT_EQ((std::vector<float>{x1, y1, x2, y2}), (std::vector<float>{0, 1, 1, 0}));
    EXPECT_FALSE(atHead.DiagonalExists(-1));
    EXPECT_FALSE(atHead.DiagonalExists(2));

    // Clipping 1 clears both its neighbours, and 3 never got a flag.
    CHPolygonTriangulator behindHead(&square, 1, 1.0f, 1.0f, true);
    ASSERT_EQ(behindHead.GetNumTriangles(), 1);
    c = behindHead.GetConnectivityArray();
    EXPECT_EQ((std::vector<int>{c[0].a, c[0].b, c[0].c}), (std::vector<int>{0, 1, 2}));

    // Clockwise, no corner is an ear.
    CSSE2dPolygon clockwise;
    vek::test::Fill(clockwise, Ring{{0, 0}, {0, 1}, {1, 1}, {1, 0}});
    EXPECT_EQ(CHPolygonTriangulator(&clockwise, 1, 1.0f, 1.0f, false).GetNumTriangles(), 0);
    EXPECT_EQ(CHPolygonTriangulator(&clockwise, 1, 1.0f, 1.0f, true).GetNumTriangles(), 0);
}

TEST(CHPolygonTriangulator, ShortOrUnusableSourcesGiveEmptyOrPartialResults)
{
    // A bare triangle: neither neighbour pair of a corner passes the cone test.
    CSSE2dPolygon triangle;
    vek::test::Fill(triangle, Ring{{0, 0}, {4, 0}, {0, 4}});
    CHPolygonTriangulator bare(&triangle, 1, 1.0f, 1.0f, true);
    EXPECT_EQ(bare.GetNum2dPoints(), 3);
    EXPECT_EQ(bare.GetNumTriangles(), 0);

    CSSE2dPolygon two;
    vek::test::Fill(two, Ring{{0, 0}, {4, 0}});
    CHPolygonTriangulator empty(&two, 1, 1.0f, 1.0f, true);
    EXPECT_EQ(empty.GetNum2dPoints(), 0);
    EXPECT_EQ(empty.GetNumTriangles(), 0);
    EXPECT_EQ(empty.GetConnectivityArray(), nullptr);
    EXPECT_EQ(empty.GetVertexArray(), nullptr);
    float x = -1, y = -1;
    empty.GetPoint(0, x, y);
    EXPECT_EQ(x, -1);

    const Ring octagon = vek::test::RegularPolygon(8, 10.0);
    CSSE2dPolygon source;
    vek::test::Fill(source, octagon);
    EXPECT_EQ(CHPolygonTriangulator(static_cast<CSSE2dPolygon*>(nullptr), 1, 1.0f, 1.0f, true).GetNum2dPoints(), 0);
    EXPECT_EQ(CHPolygonTriangulator(&source, 0, 1.0f, 1.0f, true).GetNum2dPoints(), 0);
    EXPECT_EQ(CHPolygonTriangulator(&source, -2, 1.0f, 1.0f, true).GetNum2dPoints(), 0);
    // A step longer than the source leaves no vertex.
    EXPECT_EQ(CHPolygonTriangulator(&source, 9, 1.0f, 1.0f, true).GetNum2dPoints(), 0);

    // Scaled down far enough, no corner is a corner for the tolerance.
    EXPECT_GE(CHPolygonTriangulator(&source, 1, 1.0f, 1.0f, true).GetNumTriangles(), 5);
    EXPECT_EQ(CHPolygonTriangulator(&source, 1, 0.001f, 0.001f, true).GetNumTriangles(), 0);
}

TEST(CHPolygonTriangulator, StepThinsTheSourceAndScalesApplyToTheVertices)
{
    // Seven points with step 2: vertices from points 0, 2 and 4; 6 is left out.
    CSSE2dPolygon seven;
    vek::test::Fill(seven, Ring{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}});
    CHPolygonTriangulator thinned(&seven, 2, 3.0f, -1.0f, true);
    ASSERT_EQ(thinned.GetNum2dPoints(), 3);
    std::vector<float> xy;
    for (int i = 0; i < 3; ++i) {
        float x = 0, y = 0;
        thinned.GetPoint(i, x, y);
        xy.push_back(x);
        xy.push_back(y);
    }
    EXPECT_EQ(xy, (std::vector<float>{0, 0, 6, 0, 6, -2}));
    EXPECT_FALSE(thinned.Is3DTriangulation());

    // A spatial source at step 2: the triangles come back as the source
    // points at twice their vertex index, unscaled and with their z.
    const Ring dense{{0, 0}, {5, 0}, {10, 0}, {10, 5}, {10, 10}, {5, 10}, {0, 10}, {0, 5}};
    CSSE3dPolygon spatial;
    vek::test::Fill(spatial, dense);
    for (int i = 0; i < 8; ++i) spatial.SetPointZ(i, 1.5f * i);
    CHPolygonTriangulator fromSpatial(&spatial, 2, 2.0f, 2.0f, 3.0f, false);
    EXPECT_TRUE(fromSpatial.Is3DTriangulation());
    EXPECT_EQ(fromSpatial.GetPolygon3D(), &spatial);
    EXPECT_EQ(fromSpatial.GetScaleZ(), 3.0f);
    ASSERT_EQ(fromSpatial.GetNumTriangles(), 2);
    float x = 0, y = 0;
    fromSpatial.GetPoint(1, x, y);
    EXPECT_EQ(x, 20.0f);
    EXPECT_EQ(y, 0.0f);
    SSEPoint a, b, c;
    fromSpatial.GetTriangle3D(0, a, b, c);  // (3, 0, 1): source points 6, 0, 2
    EXPECT_EQ((std::vector<float>{a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z}),
              (std::vector<float>{0, 10, 9, 0, 0, 0, 10, 0, 3}));

    // Out of range, or from a planar source, nothing is written.
    SSEPoint untouched;
    untouched.sse = _mm_set1_ps(-7.0f);
    SSEPoint p = untouched, q = untouched, r = untouched;
    fromSpatial.GetTriangle3D(2, p, q, r);
    fromSpatial.GetTriangle3D(-1, p, q, r);
    CSSE2dPolygon planar;
    vek::test::Fill(planar, dense);
    CHPolygonTriangulator fromPlanar(&planar, 2, 1.0f, 1.0f, false);
    ASSERT_EQ(fromPlanar.GetNumTriangles(), 2);
    fromPlanar.GetTriangle3D(0, p, q, r);
    EXPECT_EQ(p.x, -7.0f);
    EXPECT_EQ(q.y, -7.0f);
    EXPECT_EQ(r.z, -7.0f);
}

TEST(CHPolygonTriangulator, ClipsConvexConcaveCombAndSpiralPolygonsInBothOrientations)
{
    const struct {
        const char* name;
        Ring ring;
    } shapes[] = {
        {"convex", vek::test::RegularPolygon(17, 100.0)},
        {"star", vek::test::Star(9, 100.0, 35.0)},
        {"comb", vek::test::Comb(12)},
        {"spiral", vek::test::Spiral(2.5, 36)},
    };
    for (const auto& shape : shapes) {
        for (bool behindHead : {false, true}) {
            SCOPED_TRACE(std::string(shape.name) + (behindHead ? ", behind head" : ", at head"));
            CSSE2dPolygon counterClockwise;
            vek::test::Fill(counterClockwise, shape.ring);
            ExpectComplete(CHPolygonTriangulator(&counterClockwise, 1, 1.0f, 1.0f, behindHead),
                           vek::test::AsFloats(shape.ring, 1.0f, 1.0f));

            // A clockwise ring is taken in the mirror, by a negative y scale.
            const Ring reversed = vek::test::Reversed(shape.ring);
            CSSE3dPolygon clockwise;
            vek::test::Fill(clockwise, reversed);
            ExpectComplete(CHPolygonTriangulator(&clockwise, 1, 1.0f, -1.0f, 1.0f, behindHead),
                           vek::test::AsFloats(reversed, 1.0f, -1.0f));
        }
    }
    // Unmirrored, a clockwise convex ring offers no ear at all.
    CSSE2dPolygon clockwise;
    vek::test::Fill(clockwise, vek::test::Reversed(vek::test::RegularPolygon(17, 100.0)));
    EXPECT_EQ(CHPolygonTriangulator(&clockwise, 1, 1.0f, 1.0f, true).GetNumTriangles(), 0);
}

TEST(CHPolygonTriangulator, CollinearRunsAndRepeatedPointsStayInside)
{
    // A square with a point at every unit of its edges.
    Ring dotted;
    for (int i = 0; i < 10; ++i) dotted.push_back({static_cast<double>(i), 0});
    for (int i = 0; i < 10; ++i) dotted.push_back({10, static_cast<double>(i)});
    for (int i = 10; i > 0; --i) dotted.push_back({static_cast<double>(i), 10});
    for (int i = 10; i > 0; --i) dotted.push_back({0, static_cast<double>(i)});
    // An L with one corner given twice in a row, and two squares that touch
    // in a corner visited twice on the way round.
    const Ring repeated{{0, 0}, {6, 0}, {6, 0}, {6, 3}, {3, 3}, {3, 6}, {0, 6}};
    const Ring revisited{{0, 0}, {2, 0}, {2, 2}, {4, 2}, {4, 4}, {2, 4}, {2, 2}, {0, 2}};

    for (const Ring* ring : std::vector<const Ring*>{&dotted, &repeated, &revisited}) {
        for (bool behindHead : {false, true}) {
            CSSE2dPolygon polygon;
            vek::test::Fill(polygon, *ring);
            CHPolygonTriangulator t(&polygon, 1, 1.0f, 1.0f, behindHead);
            EXPECT_LE(t.GetNumTriangles(), static_cast<int>(ring->size()) - 2);
            ExpectTrianglesInside(t, vek::test::AsFloats(*ring, 1.0f, 1.0f));
        }
    }
    // Along a straight edge the middle points make no ear while their
    // neighbours stand: searching on from vertex 1, the first ear is the
    // corner at 10.
    CSSE2dPolygon polygon;
    vek::test::Fill(polygon, dotted);
    CHPolygonTriangulator t(&polygon, 1, 1.0f, 1.0f, true);
    ASSERT_GT(t.GetNumTriangles(), 0);
    EXPECT_EQ(t.GetConnectivityArray()[0].b, 10);
}

} // namespace
