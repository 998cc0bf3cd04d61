#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>

#include "support/polygon_points.h"

using namespace vek::test;

namespace {

constexpr float kQuarterTurn = static_cast<float>(std::numbers::pi / 2);

void ExpectNear(const std::vector<Xyz>& actual, const std::vector<Xyz>& expected, const char* why)
{
    ASSERT_EQ(actual.size(), expected.size()) << why;
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i].x, expected[i].x, 1e-5f) << why << ", point " << i;
        EXPECT_NEAR(actual[i].y, expected[i].y, 1e-5f) << why << ", point " << i;
        EXPECT_NEAR(actual[i].z, expected[i].z, 1e-5f) << why << ", point " << i;
    }
}

TEST(CSSE3dPolygonChangeStartPoint, RotatesPointsAndIndicesAlikeAndDropsAStartOutsideTheLine)
{
    CSSE3dPolygon polygon = PolygonOf({{0, 0, 0}, {10, 0, 0}, {10, 10, 5}, {0, 10, 0}});
    polygon.CalcBoundingBox();
    std::vector<int> indices = {10, 11, 12, 13};
    polygon.ChangeStartPoint(1, indices.data());
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{10, 0, 0}, {10, 10, 5}, {0, 10, 0}, {0, 0, 0}}));
    EXPECT_EQ(std::pair(indices, polygon.IsBoundingBoxCalculated()), std::pair(std::vector<int>{11, 12, 13, 10}, false));
    // The nearest-point form; then starts outside the line, as the -1 of an empty search.
    SSEPoint near = Sse(1, -1, 0);
    polygon.ChangeStartPoint(near, indices.data());
    for (int start : {4, -1}) polygon.ChangeStartPoint(start, indices.data());
    EXPECT_EQ(PointsOf(polygon)[0], (Xyz{0, 0, 0}));
    EXPECT_EQ(indices, (std::vector<int>{10, 11, 12, 13}));
}


TEST(CSSE3dPolygonInvertPolygonDirection, ReversesAndLeavesAnEmptyLineAlone)
{
    CSSE3dPolygon polygon = PolygonOf({{1, 0, 0}, {2, 0, 1}, {3, 0, 2}});
    polygon.InvertPolygonDirection();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{3, 0, 2}, {2, 0, 1}, {1, 0, 0}}));
    CSSE3dPolygon empty;
    empty.CalcBoundingBox();
    empty.InvertPolygonDirection();
    EXPECT_TRUE(empty.IsBoundingBoxCalculated());
}

TEST(CSSE3dPolygonRotateIndices, StartsRightOfTheCentreAtItsHeightStrictlyAndWithinTheStartValue)
{
    const struct {
        const char* why;
        std::vector<Xyz> line;
        int start;
    } cases[] = {
        {"the one point right of the centre", {{-4, 0}, {0, -4}, {4, 1}, {0, 3}}, 2},
        {"the first of two equally near; a point on the centre's column isn't right of it", {{-4, 0}, {2, -1}, {2, 1}, {0, 0}}, 1},
        {"two million from the centre's height is beyond the start value", {{-1, -2e6f}, {1, 2e6f}}, 0},
        {"nothing right of the centre", {{3, 0}, {3, 1}, {3, 2}}, 0},
    };
    for (const auto& c : cases) {
        CSSE3dPolygon polygon = PolygonOf(c.line);
        polygon.RotateIndices();
        std::vector<Xyz> expected(c.line.begin() + c.start, c.line.end());
        expected.insert(expected.end(), c.line.begin(), c.line.begin() + c.start);
        EXPECT_EQ(PointsOf(polygon), expected) << c.why;
    }
}

TEST(CSSE3dPolygonRotateIndices, AgainstASecondLineBothOffsetsStayZeroForRealData)
{
    // Lines of one length are only rebuilt, so their box flags fall.
    CSSE3dPolygon polygon = PolygonOf(Row(3)), other = PolygonOf({{5, 5, 5}, {0, 0, 0}, {9, 1, 2}});
    polygon.CalcBoundingBox();
    other.CalcBoundingBox();
    polygon.RotateIndices(&other);
    EXPECT_EQ(std::tuple(PointsOf(polygon), PointsOf(other), polygon.IsBoundingBoxCalculated(), other.IsBoundingBoxCalculated()),
              std::tuple(Row(3), std::vector<Xyz>{{5, 5, 5}, {0, 0, 0}, {9, 1, 2}}, false, false));
    // Lines of two lengths: nothing at all.
    CSSE3dPolygon shorter = PolygonOf(Row(2));
    polygon.CalcBoundingBox();
    polygon.RotateIndices(&shorter);
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
    // Only points more than 10^7 apart move the start: to the first of the
    // largest distances, while the other line keeps its order.
    Fill(polygon, {{0, 0, 1}, {0, 0, 2}, {0, 0, 3}, {0, 0, 4}});
    Fill(other, {{0, 0, 1}, {2e7f, 0, 0}, {3e7f, 0, 0}, {3e7f, 0, 4}});
    polygon.RotateIndices(&other);
    EXPECT_EQ(std::pair(PointsOf(polygon), PointOf(other, 0)), std::pair(std::vector<Xyz>{{0, 0, 3}, {0, 0, 4}, {0, 0, 1}, {0, 0, 2}}, Xyz{0, 0, 1}));
}

TEST(CSSE3dPolygonRotateIndices, PlaneFormsStartAtTheFlattestElevationOnTheirSide)
{
    // Centre (0, 0, 0); y spreads more, so the points above the centre's y
    // qualify: elevation angles 41.8, 24.1 and 26.6 degrees, the second wins.
    CSSE3dPolygon polygon = PolygonOf({{0, -3, 0}, {0.5f, 1, 1}, {-0.5f, 1, -0.5f}, {0, 1, -0.5f}});
    polygon.RotateIndicesXY();
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{-0.5f, 1, -0.5f}));
    // The same points with x and y exchanged: now x spreads more.
    Fill(polygon, {{-3, 0, 0}, {1, 0.5f, 1}, {1, -0.5f, -0.5f}, {1, 0, -0.5f}});
    polygon.RotateIndicesXY();
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{1, -0.5f, -0.5f}));
    // The XZ radius leaves y out: 31 degrees beat 33.7, although with y in
    // the radius the first point would be far flatter.
    Fill(polygon, {{-3, -5, -1.9f}, {1, 5, 1}, {1, 0, 0.9f}, {-1, 0, 0}});
    polygon.RotateIndicesXZ();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 0, 0.9f}, {-1, 0, 0}, {-3, -5, -1.9f}, {1, 5, 1}}));
    Fill(polygon, {{-5, -3, -1.9f}, {5, 1, 1}, {0, 1, 0.9f}, {0, -1, 0}});
    polygon.RotateIndicesYZ();
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{0, 1, 0.9f}));
}

TEST(CSSE3dPolygonRotate, TurnsAboutZAndAboutEachAxisAndKeepsLengths)
{
    // x' = c x + s y, y' = -s x + c y: a quarter turn takes (1, 0) to (0, -1).
    CSSE3dPolygon polygon = PolygonOf({{1, 0, 5}, {0, 2, 0}});
    polygon.CalcBoundingBox();
    polygon.RotateZ(kQuarterTurn);
    ExpectNear(PointsOf(polygon), {{0, -1, 5}, {2, 0, 0}}, "RotateZ");
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());
    const struct {
        float a, b, c;
        Xyz turned;
    } turns[] = {{kQuarterTurn, 0, 0, {1, 3, -2}}, {0, kQuarterTurn, 0, {3, 2, -1}}, {0, 0, kQuarterTurn, {2, -1, 3}}};
    for (const auto& t : turns) {
        Fill(polygon, {{1, 2, 3}});
        polygon.RotateXYZ(t.a, t.b, t.c);
        ExpectNear(PointsOf(polygon), {t.turned}, "RotateXYZ");
    }
    // Any three angles make a rotation: lengths stay.
    std::mt19937 random(33);
    std::uniform_real_distribution<float> angle(-3.2f, 3.2f), coordinate(-5.0f, 5.0f);
    for (int trial = 0; trial < 20; ++trial) {
        const Xyz p{coordinate(random), coordinate(random), coordinate(random)};
        Fill(polygon, {p});
        polygon.RotateXYZ(angle(random), angle(random), angle(random));
        const Xyz q = PointOf(polygon, 0);
        EXPECT_NEAR(std::hypot(q.x, q.y, q.z), std::hypot(p.x, p.y, p.z), 1e-4f) << trial;
    }
}

TEST(CSSE3dPolygonTransformVertices, TheFixedMatrixLeavesTheBoxCalculated)
{
    // With a a quarter turn the first row is (0, -1, -1): not a rotation.
    CSSE3dPolygon polygon = PolygonOf({{1, 2, 3}});
    polygon.TransformVertices(kQuarterTurn, 0);
    ExpectNear(PointsOf(polygon), {{-5, 1, 3}}, "TransformVertices");
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
    // About the centre (1, 2, 3).
    Fill(polygon, {{0, 0, 0}, {2, 4, 6}});
    polygon.TransformVerticesAboutCenter(kQuarterTurn, 0);
    ExpectNear(PointsOf(polygon), {{6, 1, 0}, {-4, 3, 6}}, "TransformVerticesAboutCenter");
    const SSEPoint top = polygon.GetTopRight(), bottom = polygon.GetBottomLeft();
    ExpectNear({{top.x, top.y, top.z}, {bottom.x, bottom.y, bottom.z}}, {{6, 3, 6}, {-4, 1, 0}}, "box");
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
}

// The classic 15-bit generator, written out here to check the noise against.
struct Classic15Bit {
    std::uint32_t state;
    int Next()
    {
        state = state * 214013u + 2531011u;
        return static_cast<int>((state >> 16) & 0x7FFF);
    }
};

TEST(CSSE3dPolygonAddNoiseXY, TheSameNoiseOnEveryCallFromSeed43211XThenY)
{
    const std::vector<Xyz> line = {{10, 20, 1}, {-3, 4, 2}, {0, 0, 3}};
    CSSE3dPolygon polygon = PolygonOf(line);
    polygon.AddNoiseXY(2.5f);
    Classic15Bit random{43211};
    const auto offset = [&] { return static_cast<double>(random.Next() - 16383) / 32767.0 * 2.5; };
    std::vector<Xyz> expected;
    for (const Xyz& p : line) {
        const float x = static_cast<float>(p.x + offset());
        expected.push_back({x, static_cast<float>(p.y + offset()), p.z});
    }
    EXPECT_EQ(PointsOf(polygon), expected);
    Fill(polygon, line);
    polygon.AddNoiseXY(2.5f);
    EXPECT_EQ(PointsOf(polygon), expected) << "seeded afresh";
}

// Every whole-line method, for lines that may have no, one or two points.
const std::vector<std::pair<const char*, std::function<void(CSSE3dPolygon&, CSSE3dPolygon&)>>>& AllEdits()
{
    static const std::vector<std::pair<const char*, std::function<void(CSSE3dPolygon&, CSSE3dPolygon&)>>> edits = {
        {"ReParametrize", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.ReParametrize(0.5f); }},
        {"ReParametrizeOpen", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.ReParametrizeOpen(0.5f); }},
        {"ReParametrizeXYZ", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.ReParametrizeXYZ(0.5f); }},
        {"ReParametrize3D", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.ReParametrize3D(0.5f); }},
        {"Subsample", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.Subsample(2, true); }},
        {"ResortAndSubsample", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.ResortAndSubsample(1); }},
        {"RemoveEqualPointsXY", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.RemoveEqualPointsXY(); }},
        {"AdaptPolygons", [](CSSE3dPolygon& p, CSSE3dPolygon& o) { p.AdaptPolygons(&o); }},
        {"AdaptToHighestZValue", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.AdaptToHighestZValue(); }},
        {"FilterZValues", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.FilterZValues(); }},
        {"InterpolateZ", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.InterpolateZ(1, 1, 0, 0); }},
        {"InterpolateZLow", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.InterpolateZLow(1, 1, 3, 0); }},
        {"MoveTowardsPolygon", [](CSSE3dPolygon& p, CSSE3dPolygon& o) { p.MoveTowardsPolygon(&o, 0.5f); }},
        {"ResetPointsBetweenBB", [](CSSE3dPolygon& p, CSSE3dPolygon& o) { p.ResetPointsBetweenBB(&o); }},
        {"ReplaceByConvexHullXY", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.ReplaceByConvexHullXY(); }},
        {"KeepLeftHalfPlaneX", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.KeepLeftHalfPlaneX(); }},
        {"KeepPointsBelow", [](CSSE3dPolygon& p, CSSE3dPolygon& o) { p.KeepPointsBelow(o); }},
        {"ChangeStartPoint", [](CSSE3dPolygon& p, CSSE3dPolygon&) { SSEPoint q = Sse(1, 1, 1); p.ChangeStartPoint(q, nullptr); }},
        {"InvertPolygonDirection", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.InvertPolygonDirection(); }},
        {"RotateIndices", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.RotateIndices(); }},
        {"RotateIndices(other)", [](CSSE3dPolygon& p, CSSE3dPolygon& o) { p.RotateIndices(&o); }},
        {"RotateIndicesXY", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.RotateIndicesXY(); }},
        {"RotateIndicesYZ", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.RotateIndicesYZ(); }},
        {"TransformVerticesAboutCenter", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.TransformVerticesAboutCenter(1, 2); }},
        {"FlipOrientationZ", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.FlipOrientationZ(true); }},
        {"GetMirrorPolygon", [](CSSE3dPolygon& p, CSSE3dPolygon& o) { p.GetMirrorPolygon(&o); }},
        {"GetPointsInPatch", [](CSSE3dPolygon& p, CSSE3dPolygon&) {
             int out[2], count = 0;
             SSEPoint upper = Sse(9, 9, 0), lower = Sse(-9, -9, 0);
             p.GetPointsInPatch(upper, lower, out, count);
         }},
        {"AppendPoints", [](CSSE3dPolygon& p, CSSE3dPolygon& o) { p.AppendPoints(o); }},
        {"AddNoiseXY", [](CSSE3dPolygon& p, CSSE3dPolygon&) { p.AddNoiseXY(1); }},
    };
    return edits;
}

TEST(CSSE3dPolygonEditing, LinesOfNoneOneOrTwoPointsPassEveryMethodAndStepZeroIsHarmless)
{
    for (int n = 0; n <= 2; ++n) {
        for (int m = 0; m <= 2; ++m) {
            for (const auto& [name, edit] : AllEdits()) {
                CSSE3dPolygon polygon = PolygonOf(Row(n)), other = PolygonOf(Row(m));
                edit(polygon, other);
                EXPECT_LE(polygon.GetNumPoints(), 2 * (n + m) + 2) << name << " on " << n << " and " << m;
            }
        }
    }
    // The methods that do nothing below one point leave even the flag alone.
    CSSE3dPolygon empty;
    empty.CalcBoundingBox();
    empty.ChangeStartPoint(0, nullptr);
    empty.InvertPolygonDirection();
    empty.ReParametrize3D(1.0f);
    empty.RemoveEqualPointsXY();
    EXPECT_TRUE(empty.IsBoundingBoxCalculated());
}

} // namespace
