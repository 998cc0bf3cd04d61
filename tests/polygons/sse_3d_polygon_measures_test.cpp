#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "support/polygon_points.h"

using namespace vek::test;

namespace {

std::array<float, 6> Box3D(CSSE3dPolygon& polygon)
{
    std::array<float, 6> box{};
    polygon.GetBoundingBox3D(box[0], box[1], box[2], box[3], box[4], box[5]);
    return box;
}

TEST(CSSE3dPolygonBox, StartsInvertedAtTheSentinelsAndIsRecomputedOnlyWhenStale)
{
    // An empty polygon keeps the inverted box; the 3D read orders the corners.
    CSSE3dPolygon polygon;
    polygon.CalcBoundingBox();
    EXPECT_EQ(Lanes(polygon.GetTopRight()), (Lanes4{-1e6f, -1e6f, -1e6f, 0}));
    EXPECT_EQ(Box3D(polygon), (std::array<float, 6>{-1e6f, -1e6f, -1e6f, 1e6f, 1e6f, 1e6f}));
    // No coordinate beyond the start values widens the box past them.
    Fill(polygon, {{2e6f, -3e6f, 5}, {3e6f, -2e6f, 6}});
    polygon.CalcBoundingBox();
    EXPECT_EQ(std::pair(Lanes(polygon.GetBottomLeft()), Lanes(polygon.GetTopRight())), std::pair(Lanes4{1e6f, -3e6f, 5, 0}, Lanes4{3e6f, -1e6f, 6, 0}));
    // The 2D box truncates towards zero, not to the floor.
    Fill(polygon, {{-1.7f, 2.9f, 4}, {3.5f, -0.5f, -2}});
    int xmin, ymin, xmax, ymax;
    polygon.GetBoundingBox2D(xmin, ymin, xmax, ymax);
    EXPECT_EQ((std::array<int, 4>{xmin, ymin, xmax, ymax}), (std::array<int, 4>{-1, 0, 3, 2}));
    // After a write the plain getters keep the stale box, the box reads recompute it.
    polygon.SetPoint(0, 10, 20, 30);
    EXPECT_EQ(polygon.GetTopRight().x, 3.5f);
    EXPECT_EQ(Box3D(polygon), (std::array<float, 6>{3.5f, -0.5f, -2, 10, 20, 30}));
}

TEST(CSSE3dPolygonMeasures, CentreDividesBeforeAddingAndTheClosedLineGivesLengthAndTwiceTheAreas)
{
    CSSE3dPolygon polygon = PolygonOf({{0.7f, 1, 0}, {7.1f, 2, 0}, {7.1f, 4, 0}});
    polygon.CalcGeometricCenter();
    SSEPoint centre;
    polygon.GetGeometricCenter(centre);
    const float n = 3.0f, dividedFirst = ((0.0f + 0.7f / n) + 7.1f / n) + 7.1f / n;
    ASSERT_NE(dividedFirst, ((0.7f + 7.1f) + 7.1f) / n) << "the data must tell the two orders apart";
    EXPECT_EQ(Lanes(centre), (Lanes4{dividedFirst, ((0.0f + 1 / n) + 2 / n) + 4 / n, 0, 0}));

    const struct {
        std::vector<Xyz> points;
        float circumference, xy, xz, yz;
    } cases[] = {
        {{{0, 0, 0}, {1, 2, 2}}, 6, 0, 0, 0}, // 3 there and 3 back
        {{{0, 1, 0}, {1, 1, 0}, {1, 0, 0}, {0, 0, 0}}, 4, -2, 0, 0}, // clockwise
        // Off the origin, so that the closing edge contributes.
        {{{2, 0, 1}, {6, 0, 1}, {2, 3, 4}}, 4 + std::sqrt(34.0f) + std::sqrt(18.0f), 12, 12, 0},
        {{{0, 0, 0}, {0, 2, 0}, {0, 2, 2}}, 4 + std::sqrt(8.0f), 0, 0, 4},
        {{}, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "case " << &c - cases);
        Fill(polygon, c.points);
        EXPECT_FLOAT_EQ(polygon.CalcCircumference(), c.circumference);
        EXPECT_EQ((std::array{polygon.CalcXYArea(), polygon.CalcXZArea(), polygon.CalcYZArea()}), (std::array{c.xy, c.xz, c.yz}));
    }
}

using Query = std::function<int(const CSSE3dPolygon&)>;

Query Nearest(float x, float y, float z, int from = 0, int to = -1)
{
    return [=](const CSSE3dPolygon& p) {
        SSEPoint q = Sse(x, y, z);
        return to < 0 ? p.ClosestPoint(q) : p.ClosestPointWithIntervalIndex(q, from, to);
    };
}

Query AlreadyThere(int upto, float x, float y, float tol)
{
    return [=](const CSSE3dPolygon& p) { SSEPoint q = Sse(x, y, 50); return p.PointAlreadyThereInArrayXY(upto, q, tol) ? 1 : 0; };
}

TEST(CSSE3dPolygonClosestPoint, EachFormByItsMeasureItsPointsAndItsStartValue)
{
    const std::vector<Xyz> diagonal = {{0, 0, 0}, {10, 10, 0}, {20, 20, 0}};
    const struct {
        const char* why;
        std::vector<Xyz> points;
        Query query;
        int expected;
    } cases[] = {
        {"points 0 and 1 tie at 2, the first wins", {{0, 0, 0}, {4, 0, 0}, {2, 3, 0}, {2, -3, 0}, {2, 0, 5}}, Nearest(2, 0, 0), 0},
        {"a point at the start distance is never found", {{1e7f, 0, 0}}, Nearest(0, 0, 0), -1},
        {"from is included", Row(6), Nearest(-10, 0, 0, 2, 5), 2},
        {"to is excluded", Row(6), Nearest(10, 0, 0, 1, 5), 4},
        {"3 is odd; 2 and 4 tie, the first wins", Row(7), [](const CSSE3dPolygon& p) { return p.ClosestPointX(3); }, 2},
        {"6 is the last point", Row(7), [](const CSSE3dPolygon& p) { return p.ClosestPointXY(100, 0); }, 4},
        {"one point is the last", Row(1), [](const CSSE3dPolygon& p) { return p.ClosestPointX(0); }, -1},
        {"y = 1 and y = 3 lie on the bounds", {{5, 1, 0}, {5, 2, 0}, {6, 2, 0}, {5, 2, 0}, {7, 3, 0}, {5, 2, 0}},
         [](const CSSE3dPolygon& p) { return p.ClosestPointXWithIntervalY(5, 1, 3); }, 2},
        {"the planar forms compare squares: 3200 < 1e7 < 3200^2", {{3200, 0, 0}, {0, 0, 0}, {0, 0, 0}},
         [](const CSSE3dPolygon& p) { return p.ClosestPointXY(0, 0); }, -1},
        // A city-block test of the points below upto, upto clamped to n - 1.
        {"Euclidean 0.85 would pass 1, city-block 1.2 doesn't", diagonal, AlreadyThere(3, 0.6f, 0.6f, 1.0f), 0},
        {"the last point is never compared", diagonal, AlreadyThere(100, 20, 20, 0.5f), 0},
    };
    for (const auto& c : cases) {
        CSSE3dPolygon polygon = PolygonOf(c.points);
        EXPECT_EQ(c.query(polygon), c.expected) << c.why;
    }
}

TEST(CSSE3dPolygonDistanceScan, SeesOnlyWholeBlocksOfTheNormalisedCopyAndAgreesBitForBitWithAPlainLoop)
{
    std::mt19937 random(20240611);
    std::uniform_real_distribution<float> coordinate(-500.0f, 500.0f);
    for (int trial = 0; trial < 60; ++trial) {
        const int n = static_cast<int>(random() % 40);
        std::vector<Xyz> points(n);
        for (Xyz& p : points) p = {coordinate(random), coordinate(random), coordinate(random)};
        t_resolutiondata r{0.5f * (1 + random() % 4), 0.5f * (1 + random() % 4), 0.5f * (1 + random() % 4)};
        CSSE3dPolygon polygon = PolygonOf(points);
        polygon.NormalizeXYZ(r);
        const float qx = coordinate(random), qy = coordinate(random), qz = coordinate(random);
        const int skip = static_cast<int>(random() % 5) - 2; // a negative skip reads every block
        float expected3d = 1000000.0f, expected2d = 1000000.0f;
        for (int block = 0; block < n / 4; block += std::max(skip, 0) + 1) {
            for (int i = 4 * block; i < 4 * block + 4; ++i) {
                const float dx = points[i].x * r.ResolutionX - qx, dy = points[i].y * r.ResolutionY - qy, dz = points[i].z * r.ResolutionZ - qz;
                expected3d = std::min(expected3d, std::sqrt(dx * dx + dy * dy + dz * dz));
                expected2d = std::min(expected2d, std::sqrt(dx * dx + dy * dy));
            }
        }
        EXPECT_EQ(polygon.GetMinEuclDistance(qx, qy, qz, skip), expected3d) << "trial " << trial;
        EXPECT_EQ(polygon.GetMinEuclDistanceXY(qx, qy, skip), expected2d) << "trial " << trial;
    }
    // Special measures in the plane unless |z| exceeds 0.001. The test is made
    // in double, where the float 0.001f lies just above 0.001 and so counts.
    CSSE3dPolygon polygon = PolygonOf(Row(4));
    t_resolutiondata unit{1, 1, 1};
    polygon.NormalizeXYZ(unit);
    for (auto [z, distance] : {std::pair{0.0009f, 0.0f}, {-0.0009f, 0.0f}, {0.001f, 0.001f}, {-0.001f, 0.001f}}) {
        EXPECT_EQ(polygon.GetMinEuclDistanceSpecial(2, 0, z, 0), distance) << "z " << z;
    }
}

} // namespace
