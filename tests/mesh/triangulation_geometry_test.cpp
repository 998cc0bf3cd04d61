#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include "mesh_builders.h"

using vek::test::ExpectNearPoint;
using vek::test::ExpectSamePoint;
using vek::test::Fill;
using vek::test::Sse;

namespace {

constexpr float kHalfPi = 1.57079632679f;

SSEPoint MinOf(const CHTriangulation& mesh)
{
    SSEPoint p;
    mesh.GetMinPoint(p);
    return p;
}

SSEPoint MaxOf(const CHTriangulation& mesh)
{
    SSEPoint p;
    mesh.GetMaxPoint(p);
    return p;
}

// One triangle (1, 2, 3), (4, 6, 3), (0, 5, 9) with S, T, V and its box current.
void MakeOne(CHTriangulation& mesh)
{
    Fill(mesh, {{{{1, 2, 3}, {4, 6, 3}, {0, 5, 9}}}});
    mesh.CalcSTV();
    mesh.CalcBoundingBox();
}

TEST(CHTriangulationGeometry, BoxStartsFromSentinelsThatClipIt)
{
    CHTriangulation mesh(0, 1, 1, 1);
    mesh.CalcBoundingBox();
    ExpectSamePoint(MinOf(mesh), Sse(1000000.0f, 1000000.0f, 1000000.0f, 1000000.0f));
    ExpectSamePoint(MaxOf(mesh), Sse(-1000000.0f, -1000000.0f, -1000000.0f, -1000000.0f));

    Fill(mesh, {{{{1, -2, 3}, {2000000.0f, 0, 3}, {-4, 5, -6}}}, {{{0, 0, 0}, {1, 1, 1}, {2, 2, 7}}}});
    mesh.CalcBoundingBox();
    ExpectSamePoint(MinOf(mesh), Sse(-4, -2, -6));
    ExpectSamePoint(MaxOf(mesh), Sse(2000000.0f, 5, 7));

    Fill(mesh, {{{{1500000.0f, 0, 0}, {1600000.0f, 1, 0}, {1700000.0f, 0, 1}}}});
    mesh.CalcBoundingBox();
    EXPECT_EQ(MinOf(mesh).x, 1000000.0f);
    EXPECT_EQ(MaxOf(mesh).x, 1700000.0f);
}

TEST(CHTriangulationGeometry, CentreIsTheMeanOfAllCorners)
{
    CHTriangulation mesh(0, 1, 1, 1);
    mesh.CalcCenterPoint(); // no corners: 0 / 0
    EXPECT_TRUE(std::isnan(mesh.GetPointArray()[2].x));
    Fill(mesh, {{{{0, 0, 0}, {3, 0, 6}, {0, 3, 0}}}, {{{3, 3, 3}, {6, 0, 0}, {0, 0, 9}}}});
    mesh.CalcCenterPoint();
    SSEPoint centre;
    mesh.GetCenterPoint(centre);
    ExpectSamePoint(centre, Sse(2, 1, 3));
    ExpectSamePoint(mesh.GetPointArray()[2], centre);
}

TEST(CHTriangulationGeometry, DerivedVectorsAndFlatNormalsComeFromTheCorners)
{
    CHTriangulation mesh(0, 1, 1, 1);
    MakeOne(mesh);
    const t_htriangle& t = *mesh.GetTriangle(0);
    ExpectSamePoint(*t.S, Sse(3, 4, 0));
    ExpectSamePoint(*t.T, Sse(-1, 3, 6));
    ExpectSamePoint(*t.V, Sse(-4, -1, 6));
    ExpectSamePoint(*t.MinPoint, Sse(0, 2, 3));
    ExpectSamePoint(*t.MaxPoint, Sse(4, 6, 9));

    // S x T = (4*6 - 0*3, 0*(-1) - 3*6, 3*3 - 4*(-1)) = (24, -18, 13).
    *t.MainNormal = Sse(0.5f, 0.5f, 0.5f);
    mesh.CalcNormalsFromVertices();
    const float length = static_cast<float>(std::sqrt(24.0 * 24.0 + 18.0 * 18.0 + 13.0 * 13.0));
    for (const SSEPoint* n : {t.N0, t.N1, t.N2}) {
        ExpectNearPoint(*n, Sse(24.0f / length, -18.0f / length, 13.0f / length), 1e-6f);
    }
    ExpectSamePoint(*t.MainNormal, Sse(0.5f, 0.5f, 0.5f));

    // Whichever way the triangles face, the "orienting" form gives S x T as well.
    Fill(mesh, {{{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}}, {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}, {{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}}});
    mesh.CalcSTV();
    mesh.OrientTrianglesTowardsBBoxCenter();
    ExpectSamePoint(*mesh.GetTriangle(0)->N2, Sse(0, 0, -1));
    ExpectSamePoint(*mesh.GetTriangle(1)->N0, Sse(0, 0, 1));
    EXPECT_TRUE(std::isnan(mesh.GetTriangle(2)->N1->z)); // degenerate: nothing to divide by
}

TEST(CHTriangulationGeometry, ScalingsMultiplyCornersAndRefreshOnlyWhereTheyShould)
{
    CHTriangulation mesh(0, 2, 3, 4);
    MakeOne(mesh);
    *mesh.GetTriangle(0)->P1 = Sse(4, 6, 3, 5); // a stray fourth lane is scaled to 0
    mesh.ScaleTriangulation();
    // Every MakeOne renews the records, so the triangle is looked up afresh.
    const auto t = [&mesh]() -> const t_htriangle& { return *mesh.GetTriangle(0); };
    ExpectSamePoint(*t().P0, Sse(2, 6, 12));
    ExpectSamePoint(*t().P1, Sse(8, 18, 12));
    ExpectSamePoint(*t().S, Sse(3, 4, 0)); // stale until CalcSTV
    ExpectSamePoint(MaxOf(mesh), Sse(4, 6, 9));

    mesh.ScaleTriangulationXY();
    ExpectSamePoint(*t().P2, Sse(0, 45, 36));

    // Rescaling multiplies by the new factors; it never divides by the old.
    MakeOne(mesh);
    mesh.ReScaleTriangulation(2, 2, 2);
    mesh.ReScaleTriangulation(2, 2, 2);
    ExpectSamePoint(*t().P1, Sse(16, 24, 12));
    EXPECT_EQ(mesh.GetScaleX(), 2.0f);
    ExpectSamePoint(*t().S, Sse(12, 16, 0));
    ExpectSamePoint(*t().MaxPoint, Sse(16, 24, 36));
    ExpectSamePoint(MinOf(mesh), Sse(0, 8, 12));

    MakeOne(mesh);
    *t().N0 = Sse(0, 0, 1);
    mesh.BlowTriangulation(-1, 0.5f, 10);
    ExpectSamePoint(*t().P0, Sse(-1, 1, 30));
    ExpectSamePoint(*t().V, Sse(4, -0.5f, 60));
    ExpectSamePoint(MinOf(mesh), Sse(-4, 1, 30));
    ExpectSamePoint(*t().N0, Sse(0, 0, 1));
    EXPECT_EQ(mesh.GetScaleX(), 2.0f);
    float x = 0, y = 0, z = 0;
    mesh.GetScanConvResolution(x, y, z);
    EXPECT_EQ(x, 2.0f);
}

TEST(CHTriangulationGeometry, ShiftMovesCornersAndBoxesButNotTheEdgeVectorsOrTheCentre)
{
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{0.1f, 0.2f, 0.3f}, {1.7f, 0.9f, -2.5f}, {3.3f, -1.1f, 0.7f}}}});
    mesh.CalcSTV();
    mesh.CalcBoundingBox();
    mesh.CalcCenterPoint();
    const t_htriangle& t = *mesh.GetTriangle(0);
    const SSEPoint s = *t.S, tt = *t.T, v = *t.V, centre = mesh.GetPointArray()[2];

    mesh.ShiftTriangulation(1000.5f, -3, 0.25f);
    // Differences of the moved corners could round otherwise; the shift
    // leaves the stored vectors bit for bit as they were.
    EXPECT_EQ(std::memcmp(t.S, &s, sizeof s), 0);
    EXPECT_EQ(std::memcmp(t.T, &tt, sizeof tt), 0);
    EXPECT_EQ(std::memcmp(t.V, &v, sizeof v), 0);
    ExpectSamePoint(*t.P0, Sse(0.1f + 1000.5f, 0.2f - 3, 0.3f + 0.25f));
    ExpectSamePoint(*t.MinPoint, Sse(0.1f + 1000.5f, -1.1f - 3, -2.5f + 0.25f));
    ExpectSamePoint(*t.MaxPoint, Sse(3.3f + 1000.5f, 0.9f - 3, 0.7f + 0.25f));
    ExpectSamePoint(MinOf(mesh), *t.MinPoint);
    ExpectSamePoint(MaxOf(mesh), *t.MaxPoint);
    ExpectSamePoint(mesh.GetPointArray()[2], centre);
}

TEST(CHTriangulationGeometry, QuarterTurnsMoveCornersToHandComputedPlaces)
{
    struct Case {
        const char* name;
        void (*turn)(CHTriangulation&);
        SSEPoint expected; // where (1, 2, 3) goes
    };
    static SSEPoint pivot;
    pivot = Sse(1, 1, 1);
    const Case cases[] = {
        {"first angle", [](CHTriangulation& m) { m.TransformVertices(kHalfPi, 0); }, Sse(2, -1, 3)},
        {"second angle", [](CHTriangulation& m) { m.TransformVertices(0, kHalfPi); }, Sse(3, 2, -1)},
        {"third angle", [](CHTriangulation& m) { m.TransformVertices(0, 0, kHalfPi); }, Sse(1, 3, -2)},
        {"first of three", [](CHTriangulation& m) { m.TransformVertices(kHalfPi, 0, 0); }, Sse(2, -1, 3)},
        // About (1, 1, 1): (1, 2, 3) - pivot = (0, 1, 2) turns to (1, 0, 2).
        {"about a point", [](CHTriangulation& m) { m.TransformVerticesAboutPoint(kHalfPi, 0, pivot); }, Sse(2, 1, 3)},
        {"about a point, three angles",
         [](CHTriangulation& m) { m.TransformVerticesAboutPoint(0, 0, kHalfPi, pivot); }, Sse(1, 3, 0)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CHTriangulation mesh(0, 1, 1, 1);
        Fill(mesh, {{{{1, 2, 3}, {0, 0, 0}, {1, 1, 1}}}});
        mesh.CalcCenterPoint();
        *mesh.GetTriangle(0)->N0 = Sse(0, 1, 0);
        c.turn(mesh);
        const t_htriangle& t = *mesh.GetTriangle(0);
        ExpectNearPoint(*t.P0, c.expected, 1e-6f);
        EXPECT_EQ(t.P0->w, 0.0f);
        // Box and edge vectors follow the corners, the normals and centre do not.
        ExpectNearPoint(*t.S, Sse(t.P1->x - t.P0->x, t.P1->y - t.P0->y, t.P1->z - t.P0->z), 0.0f);
        ExpectSamePoint(MaxOf(mesh), *t.MaxPoint);
        ExpectSamePoint(*t.N0, Sse(0, 1, 0));
        ExpectSamePoint(mesh.GetPointArray()[2], Sse(2.0f / 3, 1, 4.0f / 3));
    }
}

TEST(CHTriangulationGeometry, RotationsKeepLengthsAndTheTwoAngleFormIsTheThreeAngleFormWithoutTheThird)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> angle(-3.2f, 3.2f), coordinate(-50.0f, 50.0f);
    for (int round = 0; round < 20; ++round) {
        CHTriangulation mesh(0, 1, 1, 1);
        Fill(mesh, {{{{coordinate(random), coordinate(random), coordinate(random)},
                      {coordinate(random), coordinate(random), coordinate(random)},
                      {coordinate(random), coordinate(random), coordinate(random)}}}});
        mesh.CalcSTV();
        const t_htriangle& t = *mesh.GetTriangle(0);
        const auto lengths = [&t] {
            const auto length = [](const SSEPoint& e) { return std::sqrt(e.x * e.x + e.y * e.y + e.z * e.z); };
            return std::array<float, 3>{length(*t.S), length(*t.T), length(*t.V)};
        };
        const std::array<float, 3> before = lengths();
        CHTriangulation twin(&mesh);

        const float a = angle(random), b = angle(random), c = angle(random);
        mesh.TransformVertices(a, b, c);
        const std::array<float, 3> after = lengths();
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(after[k], before[k], 1e-4f * (1.0f + before[k]));

        mesh.CopyFromHTriangulation(&twin);
        mesh.TransformVertices(a, b);
        twin.TransformVertices(a, b, 0.0f);
        for (int k = 0; k < 3; ++k) ExpectNearPoint(mesh.GetEdgeArray()[k], twin.GetEdgeArray()[k], 1e-4f);
    }
}

} // namespace
