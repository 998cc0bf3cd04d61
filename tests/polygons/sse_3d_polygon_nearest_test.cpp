#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "polygon_builders.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::Row;
using vek::test::Sse;
using vek::test::Xyz;

namespace {

void FillNormalized(CSSE3dPolygon& polygon, const std::vector<Xyz>& points)
{
    Fill(polygon, points);
    t_resolutiondata unit{1, 1, 1};
    polygon.NormalizeXYZ(unit);
}

TEST(CSSE3dPolygonClosestPoint, EveryPointByDistanceFirstOfEqualWins)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {4, 0, 0}, {2, 3, 0}, {2, -3, 0}, {2, 0, 5}});
    SSEPoint q = Sse(2, 0, 0);
    EXPECT_EQ(polygon.ClosestPoint(q), 0) << "points 0 and 1 tie at 2";
    q = Sse(2, 1, 1);
    EXPECT_EQ(polygon.ClosestPoint(q), 2);
    q = Sse(2, 0, 4);
    EXPECT_EQ(polygon.ClosestPoint(q), 4) << "z counts";

    Fill(polygon, {{9, 9, 9}});
    EXPECT_EQ(polygon.ClosestPoint(q), 0);
    // A point at the start distance or beyond is never found.
    Fill(polygon, {{1e7f, 0, 0}, {2e7f, 0, 0}});
    q = Sse(0, 0, 0);
    EXPECT_EQ(polygon.ClosestPoint(q), -1);
    CSSE3dPolygon empty;
    EXPECT_EQ(empty.ClosestPoint(q), -1);
}

TEST(CSSE3dPolygonClosestPoint, IndexIntervalIncludesFromAndExcludesTo)
{
    CSSE3dPolygon polygon;
    Fill(polygon, Row(6));
    SSEPoint q = Sse(10, 0, 0);
    EXPECT_EQ(polygon.ClosestPointWithIntervalIndex(q, 0, 6), 5);
    EXPECT_EQ(polygon.ClosestPointWithIntervalIndex(q, 1, 5), 4);
    q = Sse(-10, 0, 0);
    EXPECT_EQ(polygon.ClosestPointWithIntervalIndex(q, 2, 5), 2);
    for (auto [from, to] : {std::pair{3, 3}, {4, 2}, {-1, 3}, {0, 7}, {7, 7}, {2, -1}}) {
        EXPECT_EQ(polygon.ClosestPointWithIntervalIndex(q, from, to), -1) << from << " .. " << to;
    }
}

TEST(CSSE3dPolygonClosestPoint, CoordinateFormsSeeEvenIndicesBeforeTheLast)
{
    CSSE3dPolygon polygon;
    // x = 0 .. 6: the odd points and the last (6) are never returned.
    Fill(polygon, Row(7));
    EXPECT_EQ(polygon.ClosestPointX(3), 2) << "3 is odd; 2 and 4 tie, the first wins";
    EXPECT_EQ(polygon.ClosestPointX(100), 4) << "6 is the last point";
    EXPECT_EQ(polygon.ClosestPointXY(100, 0), 4);

    Fill(polygon, Row(2));
    EXPECT_EQ(polygon.ClosestPointX(1), 0);
    Fill(polygon, Row(1));
    EXPECT_EQ(polygon.ClosestPointX(0), -1);
    SSEPoint q = Sse(0, 0, 0);
    EXPECT_EQ(polygon.ClosestPoint(q), 0);

    // The same rule on the other axes.
    Fill(polygon, {{0, 0, 0}, {0, 5, 5}, {0, 1, 9}, {0, 9, 1}, {0, 4, 4}, {0, 5, 5}});
    EXPECT_EQ(polygon.ClosestPointY(5), 4);
    EXPECT_EQ(polygon.ClosestPointYZ(5, 5), 4);
}

TEST(CSSE3dPolygonClosestPoint, IntervalFormsTakeOnlyPointsStrictlyInside)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{5, 1, 0}, {0, 0, 0}, {6, 2, 0}, {0, 0, 0}, {7, 3, 0}, {0, 0, 0}});
    EXPECT_EQ(polygon.ClosestPointXWithIntervalY(5, 1, 3), 2) << "y = 1 and y = 3 are on the bounds";
    EXPECT_EQ(polygon.ClosestPointXWithIntervalY(5, 0.5f, 3.5f), 0);
    EXPECT_EQ(polygon.ClosestPointXWithIntervalY(5, 2, 3), -1);

    Fill(polygon, {{1, 5, 0}, {0, 0, 0}, {2, 6, 0}, {0, 0, 0}, {3, 7, 0}, {0, 0, 0}});
    EXPECT_EQ(polygon.ClosestPointYWithIntervalX(5, 1, 3), 2);
    EXPECT_EQ(polygon.ClosestPointYWithIntervalX(8, 1.5f, 3.5f), 4);
}

TEST(CSSE3dPolygonClosestPoint, PlanarFormsCompareSquaresWithTheStartValue)
{
    CSSE3dPolygon polygon;
    // Distance 3200 lies below 10000000, its square 10240000 doesn't.
    Fill(polygon, {{3200, 0, 0}, {0, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(polygon.ClosestPointXY(0, 0), -1);
    EXPECT_EQ(polygon.ClosestPointX(0), 0) << "the single-coordinate form takes no square";
    Fill(polygon, {{0, 3000, 0}, {0, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(polygon.ClosestPointYZ(0, 0), 0);
}

TEST(CSSE3dPolygonClosestPoint, PointAlreadyThereIsACityBlockTestBelowUpto)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {10, 10, 0}, {20, 20, 0}});
    SSEPoint q = Sse(0.6f, 0.6f, 50);
    // Euclidean 0.85 would pass the tolerance 1; the city-block 1.2 doesn't.
    EXPECT_FALSE(polygon.PointAlreadyThereInArrayXY(3, q, 1.0f));
    EXPECT_TRUE(polygon.PointAlreadyThereInArrayXY(3, q, 1.3f));
    EXPECT_FALSE(polygon.PointAlreadyThereInArrayXY(0, q, 1.3f));

    // upto is clamped to n-1, so the last point is never compared.
    q = Sse(20, 20, 0);
    EXPECT_FALSE(polygon.PointAlreadyThereInArrayXY(100, q, 0.5f));
    q = Sse(10, 10, 0);
    EXPECT_TRUE(polygon.PointAlreadyThereInArrayXY(100, q, 0.5f));
    EXPECT_FALSE(polygon.PointAlreadyThereInArrayXY(1, q, 0.5f));
}

TEST(CSSE3dPolygonDistanceScan, OnlyWholeBlocksOfFourAreSeen)
{
    CSSE3dPolygon polygon;
    FillNormalized(polygon, Row(3));
    EXPECT_EQ(polygon.GetMinEuclDistance(0, 0, 0, 0), 1000000.0f);
    EXPECT_EQ(polygon.GetMinEuclDistanceXY(0, 0, 0), 1000000.0f);

    // Of 7 points only 0 .. 3 are seen: the nearest is 3, not 6.
    FillNormalized(polygon, Row(7));
    EXPECT_EQ(polygon.GetMinEuclDistance(6, 0, 0, 0), 3.0f);
    FillNormalized(polygon, Row(8));
    EXPECT_EQ(polygon.GetMinEuclDistance(6, 0, 0, 0), 0.0f);

    CSSE3dPolygon empty;
    EXPECT_EQ(empty.GetMinEuclDistanceSpecial(0, 0, 5, 0), 1000000.0f);
}

TEST(CSSE3dPolygonDistanceScan, SkipJumpsOverWholeBlocks)
{
    CSSE3dPolygon polygon;
    FillNormalized(polygon, Row(16)); // blocks at x 0..3, 4..7, 8..11, 12..15
    // skip 1 reads blocks 0 and 2.
    EXPECT_EQ(polygon.GetMinEuclDistance(5.5f, 0, 0, 1), 2.5f);
    EXPECT_EQ(polygon.GetMinEuclDistance(13, 0, 0, 1), 2.0f);
    // skip 2 reads blocks 0 and 3.
    EXPECT_EQ(polygon.GetMinEuclDistance(9, 0, 0, 2), 3.0f);
    EXPECT_EQ(polygon.GetMinEuclDistance(9, 0, 0, 0), 0.0f);
    // A negative skip reads every block.
    EXPECT_EQ(polygon.GetMinEuclDistance(9, 0, 0, -5), 0.0f);
}

TEST(CSSE3dPolygonDistanceScan, FormsDifferInTheCoordinatesTheyMeasure)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{0, 0, 0}, {10, 0, 0}, {20, 0, 0}, {30, 0, 0}});
    // The scans read the normalised copy: x counts twice here.
    t_resolutiondata resolution{2, 1, 1};
    polygon.NormalizeXYZ(resolution);
    EXPECT_EQ(polygon.GetMinEuclDistance(23, 4, 0, 0), 5.0f);
    EXPECT_EQ(polygon.GetMinEuclDistanceXY(23, 4, 0), 5.0f);
    EXPECT_EQ(polygon.GetMinEuclDistance(20, 0, 3, 0), 3.0f);
    EXPECT_EQ(polygon.GetMinEuclDistanceXY(20, 0, 0), 0.0f);

    // Special: a z of magnitude above 0.001 is a height, anything else is
    // none. The test is made in double, where the float 0.001f lies just
    // above 0.001 and so counts as a height.
    EXPECT_EQ(polygon.GetMinEuclDistanceSpecial(20, 0, 0.0009f, 0), 0.0f);
    EXPECT_EQ(polygon.GetMinEuclDistanceSpecial(20, 0, -0.0009f, 0), 0.0f);
    EXPECT_EQ(polygon.GetMinEuclDistanceSpecial(20, 0, 0.001f, 0), 0.001f);
    EXPECT_EQ(polygon.GetMinEuclDistanceSpecial(20, 0, -0.001f, 0), 0.001f);
    EXPECT_EQ(polygon.GetMinEuclDistanceSpecial(20, 0, -3, 0), 3.0f);
}

TEST(CSSE3dPolygonDistanceScan, AgreesBitForBitWithAPlainLoop)
{
    std::mt19937 random(20240611);
    std::uniform_real_distribution<float> coordinate(-500.0f, 500.0f);
    for (int trial = 0; trial < 40; ++trial) {
        const int n = 1 + static_cast<int>(random() % 200);
        std::vector<Xyz> points(n);
        for (Xyz& p : points) p = {coordinate(random), coordinate(random), coordinate(random)};
        CSSE3dPolygon polygon;
        FillNormalized(polygon, points);
        const float qx = coordinate(random), qy = coordinate(random), qz = coordinate(random);
        const int skip = static_cast<int>(random() % 3);

        float expected3d = 1000000.0f;
        float expected2d = 1000000.0f;
        for (int block = 0; block < n / 4; block += skip + 1) {
            for (int i = 4 * block; i < 4 * block + 4; ++i) {
                const float dx = points[i].x - qx, dy = points[i].y - qy, dz = points[i].z - qz;
                expected3d = std::min(expected3d, std::sqrt(dx * dx + dy * dy + dz * dz));
                expected2d = std::min(expected2d, std::sqrt(dx * dx + dy * dy));
            }
        }
        EXPECT_EQ(polygon.GetMinEuclDistance(qx, qy, qz, skip), expected3d) << "trial " << trial;
        EXPECT_EQ(polygon.GetMinEuclDistanceXY(qx, qy, skip), expected2d) << "trial " << trial;
    }
}

} // namespace
