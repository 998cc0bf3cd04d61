#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "support/polygon_points.h"

using namespace vek::test;

namespace {

TEST(CSSE3dPolygonHeights, LevelledAtTheBoxAndFilteredWithAShiftAlongTheLine)
{
    const std::vector<Xyz> line = {{0, 0, 1}, {1, 0, 5}, {2, 0, -3}};
    CSSE3dPolygon polygon = PolygonOf(line);
    polygon.AdaptToHighestZValue();
    EXPECT_EQ(std::pair(PointsOf(polygon), polygon.IsBoundingBoxCalculated()), std::pair(std::vector<Xyz>{{0, 0, 5}, {1, 0, 5}, {2, 0, 5}}, false));
    Fill(polygon, line);
    polygon.AdaptToLowestZValue();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, -3}, {1, 0, -3}, {2, 0, -3}}));

    // i = 0: point 1 gets (0 + 3 + 6) / 3 and x, y of point 2; i = 1: point 2
    // gets (3 + 6 + 9) / 3, reading the filtered 3, and x, y of point 3; i = 2:
    // point 3 gets (6 + 9 + 0) / 3; i = 3: point 0 gets (5 + 0 + 3) / 3 and x,
    // y of point 1, which already holds those of point 2.
    Fill(polygon, {{0, 0, 0}, {1, 0, 3}, {1, 1, 6}, {0, 1, 9}});
    polygon.FilterZValues();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 1, 8.0f / 3.0f}, {1, 1, 3}, {0, 1, 6}, {0, 0, 5}}));
    Fill(polygon, {{2, 3, 3}});
    polygon.FilterZValues();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{2, 3, 3}}));
}

TEST(CSSE3dPolygonInterpolateZ, InverseSquareOrInverseDistanceWeightsOverEveryStepthPoint)
{
    // From 0.5 the squared distances are 0.25 and 2.25: weights 4 and 4/9
    // give 1.2; the weights 2 and 2/3 of the lower power give 1.5.
    CSSE3dPolygon polygon = PolygonOf({{0, 0, 1}, {2, 0, 3}});
    EXPECT_NEAR(polygon.InterpolateZ(0.5f, 0, 1, 0), 1.2f, 1e-6f);
    EXPECT_NEAR(polygon.InterpolateZLow(0.5f, 0, 1, 0), 1.5f, 1e-6f);
    // Within eps of a point (squared distance 0.0025 here) its own height comes back.
    EXPECT_EQ(polygon.InterpolateZ(2.05f, 0, 1, 0.01f), 3.0f);
    EXPECT_EQ(polygon.InterpolateZLow(0, 0, 1, 0), 1.0f);
    // Step 2 over 5 points reads points 0 and 2 only, while i < 5 - 2 + 1.
    Fill(polygon, {{0, 0, 4}, {1, 0, 100}, {2, 0, 4}, {3, 0, 100}, {4, 0, 100}});
    EXPECT_EQ(polygon.InterpolateZ(4, 0, 2, 0), 4.0f);
    EXPECT_GT(polygon.InterpolateZ(4, 0, 1, 0.5f), 99.0f);
    // No point considered: 0 / 0.
    Fill(polygon, {});
    EXPECT_TRUE(std::isnan(polygon.InterpolateZ(0, 0, 1, 0)));
}

TEST(CSSE3dPolygonEditing, MoveAppendAndKeepAgainstASecondLine)
{
    // Halfway towards a line of two points: the third goes halfway to zero.
    CSSE3dPolygon polygon = PolygonOf({{0, 0, 0}, {2, 2, 2}, {4, 0, 0}}), other = PolygonOf({{2, 0, 0}, {2, 4, 2}});
    polygon.MoveTowardsPolygon(&other, 0.5f);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 0, 0}, {2, 3, 2}, {2, 0, 0}}));

    polygon.AppendPoints(other);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 0, 0}, {2, 3, 2}, {2, 0, 0}, {2, 0, 0}, {2, 4, 2}}));
    // An empty line takes the other one whole, box flag included; nothing is appended from an empty one.
    CSSE3dPolygon empty;
    other.CalcBoundingBox();
    empty.AppendPoints(other);
    EXPECT_EQ(std::pair(PointsOf(empty), empty.IsBoundingBoxCalculated()), std::pair(PointsOf(other), true));
    CSSE3dPolygon none;
    empty.AppendPoints(none);
    EXPECT_TRUE(empty.IsBoundingBoxCalculated());

    // Kept where the nearest point of the other line lies strictly higher in y.
    Fill(other, {{0, 5, 0}, {10, 5, 0}});
    Fill(polygon, {{1, 0, 0}, {2, 6, 0}, {9, 5, 0}, {8, 4, 0}});
    polygon.KeepPointsBelow(other);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 0, 0}, {8, 4, 0}}));
    polygon.KeepPointsBelow(none);
    EXPECT_EQ(polygon.GetNumPoints(), 0);
}

TEST(CSSE3dPolygonCutting, HalfPlanesOfTheCentreAreStrictAndPatchesOpen)
{
    const std::vector<Xyz> ring = {{0, 0}, {2, 0}, {4, 0}, {4, 2}, {4, 4}, {2, 4}, {0, 4}, {0, 2}}; // centre (2, 2)
    const struct {
        void (CSSE3dPolygon::*keep)();
        std::vector<Xyz> kept;
    } cases[] = {
        {&CSSE3dPolygon::KeepLeftHalfPlaneX, {{0, 0}, {0, 4}, {0, 2}}},
        {&CSSE3dPolygon::KeepRightHalfPlaneX, {{4, 0}, {4, 2}, {4, 4}}},
        {&CSSE3dPolygon::KeepLowerHalfPlaneY, {{0, 0}, {2, 0}, {4, 0}}},
        {&CSSE3dPolygon::KeepUpperHalfPlaneY, {{4, 4}, {2, 4}, {0, 4}}},
    };
    for (const auto& c : cases) {
        CSSE3dPolygon polygon = PolygonOf(ring);
        polygon.CalcBoundingBox();
        (polygon.*c.keep)();
        EXPECT_EQ(std::pair(PointsOf(polygon), polygon.IsBoundingBoxCalculated()), std::pair(c.kept, false));
    }
    CSSE3dPolygon column = PolygonOf({{3, 0}, {3, 1}, {3, 2}});
    column.KeepLeftHalfPlaneX();
    EXPECT_EQ(column.GetNumPoints(), 0);

    CSSE3dPolygon polygon = PolygonOf({{0, 0, 9}, {1, 1, 9}, {2, 2, 9}, {1, 5, 9}, {3, 1, 9}});
    SSEPoint upper = Sse(3, 3, -100), lower = Sse(0, 0, 100);
    int out[5] = {-1, -1, -1, -1, -1}, count = -1;
    polygon.GetPointsInPatch(upper, lower, out, count);
    EXPECT_EQ(std::tuple(count, out[0], out[1], out[2]), std::tuple(2, 1, 2, -1));
}

TEST(CSSE3dPolygonReplaceByConvexHullXY, CounterClockwiseFromTheLowestPointWithHeights)
{
    CSSE3dPolygon polygon = PolygonOf({{0, 2, 5}, {1, 1, 2}, {2, 2, 4}, {2, 0, 3}, {0, 0, 1}});
    polygon.ReplaceByConvexHullXY();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, 1}, {2, 0, 3}, {2, 2, 4}, {0, 2, 5}}));
}

// The course of the other line at y = 3 (counter-clockwise case) or -3.
std::vector<Xyz> Course(float y, std::initializer_list<float> xs)
{
    std::vector<Xyz> points;
    for (float x : xs) points.push_back({x, y, 0});
    return points;
}

TEST(CSSE3dPolygonResetPointsBetweenBB, ReplacesOneRunBetweenTheXExtremesByTheOtherLine)
{
    CSSE3dPolygon flat = PolygonOf({{-1, 3}, {3, 3}}), flatBelow = PolygonOf({{-1, -3}, {3, -3}});
    // Counter-clockwise, starting at (2, 1): the start moves to the leftmost
    // of every second point, (0, 1); points 0 .. 4 run to (2, 1), then the
    // course follows from x = 2 down in half steps while x > 0, at z 0.
    CSSE3dPolygon polygon = PolygonOf({{2, 1, 7}, {1, 1, 7}, {0, 1, 7}, {0, 0, 7}, {1, 0, 7}, {2, 0, 7}});
    polygon.ResetPointsBetweenBB(&flat);
    std::vector<Xyz> expected = {{0, 1, 7}, {0, 0, 7}, {1, 0, 7}, {2, 0, 7}, {2, 1, 7}};
    for (const Xyz& p : Course(3, {2, 1.5f, 1, 0.5f})) expected.push_back(p);
    EXPECT_EQ(PointsOf(polygon), expected);
    // Clockwise: the course first, from x = 0 up while x < 2, then points
    // j = 2 ... n, the last read past the line as the zero point.
    Fill(polygon, {{0, 1, 7}, {1, 1, 7}, {2, 1, 7}, {2, 0, 7}, {1, 0, 7}, {0, 0, 7}});
    polygon.ResetPointsBetweenBB(&flatBelow);
    expected = Course(-3, {0, 0.5f, 1, 1.5f});
    for (const Xyz& p : std::vector<Xyz>{{2, 1, 7}, {2, 0, 7}, {1, 0, 7}, {0, 0, 7}, {0, 0, 0}}) expected.push_back(p);
    EXPECT_EQ(PointsOf(polygon), expected);
    // No width: nothing from the course, and the room of n points leaves the zero point out.
    const std::vector<Xyz> upright = {{0, 0, 1}, {0, 1, 1}, {0, 2, 1}};
    Fill(polygon, upright);
    polygon.ResetPointsBetweenBB(&flat);
    EXPECT_EQ(PointsOf(polygon), upright);
}

TEST(CSSE3dPolygonMirrorAndSwaps, HeightsMirroredAtTheCentreOrAValueAndCoordinatesExchanged)
{
    CSSE3dPolygon polygon = PolygonOf({{1, 2, 1}, {3, 4, 3}}); // centre z 2
    polygon.FlipOrientationZ(false);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 2, 1}, {3, 4, -1}}));
    Fill(polygon, {{1, 2, 1}, {3, 4, 3}});
    polygon.FlipOrientationZ(true);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 2, 3}, {3, 4, 1}}));
    polygon.FlipOrientationAndMoveCoordsZ(10);
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1, 2, 7}, {3, 4, 9}}));
    polygon.SwapXandZCoord();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{7, 2, 1}, {9, 4, 3}}));
    polygon.SwapYandZCoord();
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{7, 1, 2}, {9, 3, 4}}));

    // The mirror at x = 0 goes to the other polygon; mirrored into itself, it reads a copy.
    CSSE3dPolygon mirror = PolygonOf(Row(5));
    polygon.GetMirrorPolygon(&mirror);
    EXPECT_EQ(std::pair(PointsOf(mirror), PointsOf(polygon)), std::pair(std::vector<Xyz>{{-7, 1, 2}, {-9, 3, 4}}, std::vector<Xyz>{{7, 1, 2}, {9, 3, 4}}));
    polygon.GetMirrorPolygon(&polygon);
    EXPECT_EQ(PointsOf(polygon), PointsOf(mirror));
}

} // namespace
