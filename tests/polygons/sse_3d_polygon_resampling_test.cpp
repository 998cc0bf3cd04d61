#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/polygon_points.h"
#include "vekdll/foundation/sse_fns.h"

using namespace vek::test;

namespace {

TEST(CSSE3dPolygonReParametrize, LongSegmentsGetKPointsAStepOfDOverKPlusAHalfApartUpTo99999Points)
{
    // 3.5 long: k = 3 points a step of 1 apart, z along with x and y; the same way back.
    CSSE3dPolygon polygon = PolygonOf({{0, 0, 0}, {3.5f, 0, 7}});
    polygon.CalcBoundingBox();
    polygon.ReParametrize(1.0f);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, 0}, {1, 0, 2}, {2, 0, 4}, {3.5f, 0, 7}, {2.5f, 0, 5}, {1.5f, 0, 3}}));
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated()) << "the polygon is made anew";
    // The larger of the x and y ratios decides: 4.5 in y gives 4 points, 3.5
    // gives 3, and a segment of exactly the spacing keeps its start alone.
    Fill(polygon, {{0, 0, 0}, {1.125f, 2.25f, 0}, {0.25f, 0.5f, 0}});
    std::vector<int> indices(3, -1);
    polygon.ReParametrize(0.5f, indices.data());
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, 0}, {0.25f, 0.5f, 0}, {0.5f, 1, 0}, {0.75f, 1.5f, 0}, {1.125f, 2.25f, 0},
                                                   {0.875f, 1.75f, 0}, {0.625f, 1.25f, 0}, {0.25f, 0.5f, 0}}));
    EXPECT_EQ(indices, (std::vector<int>{0, 4, 7}));
    Fill(polygon, {{0, 0, 0}, {0.5f, 0.5f, 40}}); // a height difference alone doesn't make a segment long
    polygon.ReParametrize(1.0f, indices.data());
    EXPECT_EQ(polygon.GetNumPoints(), 2);
    // The output stops at 99999 points; later segments still learn where they would have begun.
    Fill(polygon, {{0, 0, 0}, {150000, 0, 0}, {150000, 1, 0}});
    polygon.ReParametrize(1.0f, indices.data());
    EXPECT_EQ(std::pair(polygon.GetNumPoints(), indices), std::pair(99999, std::vector<int>{0, 99999, 99999}));
    EXPECT_EQ(PointOf(polygon, 99998).x, 99998.0f * (150000.0f / 150000.5f));
}

TEST(CSSE3dPolygonReParametrize, TheOpenFormDropsTheLastPointAndTheHeightFormDropsSegmentsLongInZAlone)
{
    // The open line writes segment starts only: the end point is missing.
    CSSE3dPolygon polygon = PolygonOf({{0, 0, 0}, {3.5f, 0, 0}});
    polygon.ReParametrizeOpen(1.0f);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}));
    polygon.ReParametrizeOpen(1.0f); // segments of exactly the spacing keep their starts alone
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, 0}, {1, 0, 0}}));
    for (int n : {1, 0}) {
        Fill(polygon, Row(n));
        polygon.ReParametrizeOpen(1.0f);
        EXPECT_EQ(polygon.GetNumPoints(), 0) << n << " points have no segment";
    }
    // Two segments are steep only: in the closed forms neither is long in x
    // or y, and the height form writes nothing for either, not even the start.
    const std::vector<Xyz> steep = {{0, 0, 0}, {0.5f, 0, 5}, {0.5f, 0.5f, 5}};
    Fill(polygon, steep);
    polygon.ReParametrize(1.0f);
    EXPECT_EQ(PointsOf(polygon), steep);
    polygon.ReParametrizeXYZ(1.0f);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0.5f, 0, 5}}));
}

// The arc-length resampling as the line's definition reads: for each output
// the first segment whose end has travelled at least t, searched from the start.
std::vector<Xyz> ArcLengthSamples(const std::vector<Xyz>& line, float spacing)
{
    const int n = static_cast<int>(line.size());
    std::vector<float> length(n), travelled(n + 1, 0.0f);
    for (int i = 1; i <= n; ++i) {
        const Xyz a = line[i - 1], b = line[i % n];
        length[i - 1] = CSSEFns::euclideandistance(_mm_setr_ps(a.x, a.y, a.z, 0), _mm_setr_ps(b.x, b.y, b.z, 0));
        travelled[i] = travelled[i - 1] + length[i - 1];
    }
    std::vector<Xyz> out;
    float t = 0.0f;
    for (int k = 0; k < static_cast<int>(travelled[n] / spacing) + 1; ++k, t += spacing) {
        int j = 0;
        while (j < n && !(travelled[j + 1] >= t)) ++j;
        j = std::min(j, n - 1);
        const float f = (t - travelled[j]) / length[j];
        const Xyz a = line[j], b = line[(j + 1) % n];
        out.push_back({a.x * (1.0f - f) + b.x * f, a.y * (1.0f - f) + b.y * f, a.z * (1.0f - f) + b.z * f});
    }
    return out;
}

TEST(CSSE3dPolygonReParametrize3D, PointsASpacingApartAlongTheClosedLineInSpace)
{
    // The square of side 2 has a length of 8: 8 / 1.5 gives 5 gaps and 6 points
    // from point 0, the last on the closing side.
    CSSE3dPolygon polygon = PolygonOf({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}});
    polygon.ReParametrize3D(1.5f);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, 0}, {1.5f, 0, 0}, {2, 1, 0}, {1.5f, 2, 0}, {0, 2, 0}, {0, 0.5f, 0}}));
    // Lengths are spatial: 5 out and 5 back.
    Fill(polygon, {{0, 0, 0}, {3, 0, 4}});
    polygon.ReParametrize3D(4.0f);
    const std::vector<Xyz> points = PointsOf(polygon);
    ASSERT_EQ(points.size(), 3u);
    EXPECT_NEAR(points[1].x, 2.4f, 1e-6f);
    EXPECT_NEAR(points[1].z, 3.2f, 1e-6f);
    EXPECT_NEAR(points[2].x, 1.2f, 1e-6f);
    EXPECT_NEAR(points[2].z, 1.6f, 1e-6f);
    // A segment of length 0 where t falls divides 0 by 0.
    Fill(polygon, {{1, 1, 0}, {1, 1, 0}, {3, 1, 0}});
    polygon.ReParametrize3D(1.0f);
    EXPECT_TRUE(std::isnan(PointOf(polygon, 0).x));
    EXPECT_EQ(PointOf(polygon, 1), (Xyz{2, 1, 0}));
    // Nothing to start from, and a spacing that never advances: left alone.
    Fill(polygon, {});
    polygon.ReParametrize3D(1.0f);
    Fill(polygon, Row(3));
    polygon.ReParametrize3D(0.0f);
    EXPECT_EQ(PointsOf(polygon), Row(3));
}

TEST(CSSE3dPolygonReParametrize3D, FindsTheSameSegmentsAsASearchFromTheStartForEachPoint)
{
    std::mt19937 random(3303);
    std::uniform_real_distribution<float> coordinate(-20.0f, 20.0f), spacing(0.05f, 6.0f);
    for (int trial = 0; trial < 60; ++trial) {
        std::vector<Xyz> line(2 + random() % 40);
        for (Xyz& p : line) p = {coordinate(random), coordinate(random), coordinate(random)};
        const float s = spacing(random);
        CSSE3dPolygon polygon = PolygonOf(line);
        polygon.ReParametrize3D(s);
        const std::vector<Xyz> expected = ArcLengthSamples(line, s), actual = PointsOf(polygon);
        ASSERT_EQ(actual.size(), expected.size()) << trial;
        for (std::size_t k = 0; k < actual.size(); ++k) ASSERT_EQ(actual[k], expected[k]) << trial << ", point " << k;
    }
}

std::vector<Xyz> Xs(std::initializer_list<float> xs)
{
    std::vector<Xyz> points;
    for (float x : xs) points.push_back({x, 0, 0});
    return points;
}

TEST(CSSE3dPolygonSubsample, TakesEveryStepthPointAndClosesAtTheMeanOrTheLastPoint)
{
    // 100 points by 5: (100 - 5 + 1) / 5 = 19 taken, the last at 90, then the bridge.
    CSSE3dPolygon polygon = PolygonOf(Row(100));
    polygon.CalcBoundingBox();
    polygon.Subsample(5, true);
    std::vector<Xyz> expected;
    for (int k = 0; k < 19; ++k) expected.push_back({5.0f * k, 0, 0});
    expected.push_back({45, 0, 0});
    EXPECT_EQ(std::pair(PointsOf(polygon), polygon.IsBoundingBoxCalculated()), std::pair(expected, false));
    Fill(polygon, Row(100));
    polygon.Subsample(5, false);
    expected.back() = {99, 0, 0};
    EXPECT_EQ(PointsOf(polygon), expected);
    // The count undercounts: of 10 points by 3 only 0 and 3 are taken.
    Fill(polygon, Row(10));
    polygon.Subsample(3, false);
    EXPECT_EQ(PointsOf(polygon), Xs({0, 3, 9}));
    // By 1 all points stay and nothing is added.
    Fill(polygon, Row(6));
    polygon.Subsample(1, true);
    EXPECT_EQ(PointsOf(polygon), Row(6));
    // A step longer than the line leaves its last point; step 0 leaves it alone.
    for (bool mean : {true, false}) {
        Fill(polygon, Row(3));
        polygon.Subsample(5, mean);
        EXPECT_EQ(PointsOf(polygon), Xs({2}));
    }
    Fill(polygon, Row(3));
    polygon.Subsample(0, true);
    EXPECT_EQ(PointsOf(polygon), Row(3));
}

TEST(CSSE3dPolygonResortAndSubsample, ExtremesFirstThenTheRestSubsampled)
{
    const std::vector<Xyz> points = {{0, 0}, {1, 5}, {2, 1}, {3, -4}, {4, 2}, {9, 3}, {5, 1}, {6, 2}, {-2, 3}, {7, 1}, {9, 2}};
    // Smallest x, largest x (the first of the two at 9), smallest y, largest
    // y; then the seven others by 2: 0, 2, 4 and the mean of the first and last taken.
    CSSE3dPolygon polygon = PolygonOf(points);
    polygon.ResortAndSubsample(2);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{-2, 3}, {9, 3}, {3, -4}, {1, 5}, {0, 0}, {4, 2}, {6, 2}, {3, 1}}));
    // 2 * 4 exceeds the 7 points besides the extremes.
    Fill(polygon, points);
    polygon.ResortAndSubsample(4);
    EXPECT_EQ(PointsOf(polygon), points);
    // On a diagonal the ends are extreme twice each: they come twice, and
    // count twice against the rest.
    Fill(polygon, {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6}});
    polygon.ResortAndSubsample(1);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0}, {6, 6}, {0, 0}, {6, 6}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}}));
    Fill(polygon, {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}});
    polygon.ResortAndSubsample(1); // 2 > 5 - 4
    EXPECT_EQ(polygon.GetNumPoints(), 5);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{0, 0}));
}

TEST(CSSE3dPolygonRemoveEqualPointsXY, DropsNearDuplicatesButNeverTwoInARow)
{
    const struct {
        const char* why;
        std::vector<Xyz> line, kept;
    } cases[] = {
        {"the second of two successive near-duplicates stays",
         {{0, 0}, {5, 5}, {0.2f, 0.2f}, {0.3f, 0.3f}, {9, 9}}, {{0, 0}, {5, 5}, {0.3f, 0.3f}, {9, 9}}},
        {"a run of close points loses every second one",
         {{0, 0}, {0.1f, 0}, {0.2f, 0}, {0.3f, 0}, {5, 5}}, {{0, 0}, {0.2f, 0}, {5, 5}}},
        {"a dropped point still counts as an earlier point",
         {{0, 0}, {0.9f, 0}, {5, 5}, {1.7f, 0}}, {{0, 0}, {5, 5}}},
        {"a city-block distance of exactly 1 is no duplicate",
         {{0, 0}, {0.5f, 0.5f}, {0, 1, 3}}, {{0, 0}, {0.5f, 0.5f}, {0, 1, 3}}},
        {"z is not looked at", {{0, 0, 0}, {0, 0, 50}}, {{0, 0, 0}}},
        {"one point", {{4, 4}}, {{4, 4}}},
        {"no points", {}, {}},
    };
    for (const auto& c : cases) {
        CSSE3dPolygon polygon = PolygonOf(c.line);
        polygon.RemoveEqualPointsXY();
        EXPECT_EQ(PointsOf(polygon), c.kept) << c.why;
    }
}

TEST(CSSE3dPolygonAdaptPolygons, TheShorterLineIsResampledByIndexRoundingToEven)
{
    // 2 points to 4: p = 0, 0.5, 1, 1.5. 0.5 rounds down to 0 (g = 0.5),
    // 1.5 up to 2 (g = -0.5), which wraps to point 0 and extrapolates backwards.
    CSSE3dPolygon shorter = PolygonOf({{0, 0, 0}, {4, 0, 8}}), longer = PolygonOf(Row(4));
    shorter.CalcBoundingBox();
    longer.AdaptPolygons(&shorter);
    EXPECT_EQ(PointsOf(shorter), (std::vector<Xyz>{{0, 0, 0}, {2, 0, 4}, {4, 0, 8}, {-2, 0, -4}}));
    EXPECT_EQ(std::pair(PointsOf(longer), shorter.IsBoundingBoxCalculated()), std::pair(Row(4), false));
    // Of two of one length this one is rebuilt as it was; an empty line has
    // nothing to stretch.
    CSSE3dPolygon same = PolygonOf(Row(4)), empty;
    longer.CalcBoundingBox();
    longer.AdaptPolygons(&same);
    longer.AdaptPolygons(&empty);
    EXPECT_EQ(std::tuple(PointsOf(longer), longer.IsBoundingBoxCalculated(), empty.GetNumPoints()), std::tuple(Row(4), false, 0));
}

} // namespace
