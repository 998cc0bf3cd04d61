#include <gtest/gtest.h>

#include <cmath>

#include "fields/field_storage.h"
#include "support/polygon_points.h"

using namespace vek::test;

namespace {

CSSEMatrix Blank(int sizeX, int sizeY)
{
    return Filled(sizeX, sizeY, 0.0f);
}

std::vector<Xyz> Shifted(std::vector<Xyz> points, float dx, float dy)
{
    for (Xyz& p : points) p = {p.x + dx, p.y + dy, p.z};
    return points;
}

TEST(CSSE3dPolygonDrawInMatrix, PointsBecomePixelsOrSplatsRoundedAndClampedIntoTheField)
{
    // Heights as values: 0.49 rounds to 0, -1.4 to 0 (-0.9 truncated), 9.5
    // to 10, clamped to column 5; -6.5 truncates to -6 and clamps to row 0.
    CSSEMatrix m = Blank(6, 5);
    CSSE3dPolygon heights = PolygonOf({{0.49f, 1.5f, 3}, {-1.4f, -7, 4}, {9.5f, 2.2f, 5}});
    heights.DrawInMatrix(&m);
    EXPECT_EQ(RowsOf(m), (Picture{"4.....", "......", "3....5", "......", "......"}));

    // One point (2, 1, 4): a splat at (x + 1, y + 1); with drawZY a pixel at
    // (z, y) without offsets; with drawXZ (which wins) a splat at (x, z - 3.6),
    // row 0.4 rounding to 0 and the centre clamped to row 1.
    Replace(m, Blank(7, 5));
    CSSE3dPolygon point = PolygonOf({{2, 1, 4}});
    point.DrawInMatrix(1.0f, &m, false, 1.0f, 1.0f, false);
    point.DrawInMatrix(2.0f, &m, true, 1.0f, 1.0f, false);
    point.DrawInMatrix(3.0f, &m, true, 0.0f, -3.6f, true);
    EXPECT_EQ(RowsOf(m), (Picture{".333...", ".3332..", ".3331..", "..111..", "......."}));

    // On a field too small for a splat, the splat keeps to the field.
    Replace(m, Blank(2, 2));
    point.DrawInMatrix(3.0f, &m, false, 0.0f, 0.0f, false);
    EXPECT_EQ(RowsOf(m), (Picture{"33", "33"}));
}

TEST(DrawInMatrixAndFill, ADenseCounterClockwiseLineFillsItsInsideWithValuePlusFive)
{
    // A dotted square of side 4 at (2, 2): from each point the scan runs to
    // the left of the way on (y up) to the opposite side of the line.
    CSSEMatrix m = Blank(9, 9);
    CSSE3dPolygon square = PolygonOf(Shifted(DottedSquare(4), 2, 2));
    square.DrawInMatrixAndFill(1.0f, &m);
    EXPECT_EQ(RowsOf(m), (Picture{".........", ".........", "..11111..", "..16661..", "..16661..", "..16661..", "..11111..", ".........", "........."}));

    // Four corners and a fifth point: only the whole block of four takes
    // part, closed from point 3 to point 0. Each corner's scan runs along
    // the edge behind it to the corner before it and fills that edge.
    Replace(m, Blank(9, 9));
    CSSE3dPolygon corners = PolygonOf({{2, 2}, {6, 2}, {6, 6}, {2, 6}, {8, 8}});
    corners.DrawInMatrixAndFill(1.0f, &m);
    EXPECT_EQ(RowsOf(m), (Picture{".........", ".........", "..16661..", "..6...6..", "..6...6..", "..6...6..", "..16661..", ".........", "........."}));
}

TEST(DrawInMatrixAndFill, TheScanTowardsLargerRowsIsStricterAndAScanWithoutAHitFillsNothing)
{
    // A pixel 0.5 off the value stops the scans with tolerance 1 but not the
    // one towards larger rows, whose tolerance is 0.1.
    CSSEMatrix m = Blank(9, 9);
    m.SetPoint(2, 4, 1.5f);
    m.SetPoint(6, 4, 1.5f);
    CSSE3dPolygon corners = PolygonOf({{2, 2}, {6, 2}, {6, 6}, {2, 6}});
    corners.DrawInMatrixAndFill(1.0f, &m);
    EXPECT_EQ(m.GetPoint(2, 4), 6.0f); // passed over from (2, 2) downwards
    EXPECT_EQ(m.GetPoint(6, 4), 1.5f); // the upward scan from (6, 6) stops there
    EXPECT_EQ(std::pair(m.GetPoint(6, 5), m.GetPoint(6, 3)), std::pair(6.0f, 0.0f));

    // A straight run of four has no opposite side: only its points are drawn.
    Replace(m, Blank(9, 9));
    CSSE3dPolygon run = PolygonOf({{2, 2}, {3, 2}, {4, 2}, {5, 2}});
    run.DrawInMatrixAndFill(1.0f, &m);
    EXPECT_EQ(RowsOf(m), (Picture{".........", ".........", "..1111...", ".........", ".........", ".........", ".........", ".........", "........."}));
    // Fewer than four points draw nothing at all.
    Replace(m, Blank(9, 9));
    CSSE3dPolygon three = PolygonOf({{2, 2}, {6, 2}, {6, 6}});
    three.DrawInMatrixAndFill(1.0f, &m);
    EXPECT_EQ(m.NumValuesAbove(0.0f), 0);
    // Far beyond the rim the points land on it, and the scans from there find
    // nothing but the rim.
    Replace(m, Blank(9, 9));
    CSSE3dPolygon far = PolygonOf({{3, 1e9f}, {2, 1e9f}, {1, 1e9f}, {0, 1e9f}});
    far.DrawInMatrixAndFill(1.0f, &m);
    EXPECT_EQ(RowsOf(m).back(), "1111.....");
    EXPECT_EQ(m.NumValuesAbove(0.0f), 4);
}

TEST(DrawInMatrixAndFillToOneSideFront, EachPointSweepsSplatsToOneRim)
{
    // (2.4, z 5) towards the lower rows: splats at rows 5, 4, 3, 2 of column
    // 2; a point at row 1 sweeps nothing.
    CSSEMatrix m = Blank(7, 9);
    CSSE3dPolygon line = PolygonOf({{2.4f, 0, 5}, {5, 0, 1}});
    line.DrawInMatrixAndFillToOneSideFront(1.0f, &m, 0.0f, 0.0f, true);
    EXPECT_EQ(RowsOf(m), (Picture{".......", ".111...", ".111...", ".111...", ".111...", ".111...", ".111...", ".......", "......."}));
    // Towards the last row: from row 5 while below row 8, the column held at
    // 5 by the splat's clamp; a point at the last row sweeps nothing.
    Replace(m, Blank(7, 9));
    CSSE3dPolygon other = PolygonOf({{6.6f, 0, 4}, {-5, 0, 7}});
    other.DrawInMatrixAndFillToOneSideFront(2.0f, &m, 0.0f, 1.0f, false);
    EXPECT_EQ(RowsOf(m), (Picture{".......", ".......", ".......", ".......", "....222", "....222", "....222", "....222", "....222"}));
    // A front from far beyond the field closes its column strip down to row
    // 1 at once; x -5 is held at column 1.
    Replace(m, Blank(7, 9));
    CSSE3dPolygon high = PolygonOf({{-5, 0, 1e9f}});
    high.DrawInMatrixAndFillToOneSideFront(3.0f, &m, 0.0f, 0.0f, true);
    ExpectLanes(m, [](int x, int row) { return x <= 2 && row >= 1 && row <= 8 ? 3.0f : 0.0f; });
}

TEST(InternalAreaDistanceTransform, MarkedPixelsTakeThePlanarDistanceNearTheLineAndBlendTowardsTheSpatialOne)
{
    // Eight points (two whole blocks) around the square 2 ... 6, heights 0;
    // the height field is 3 throughout.
    const std::vector<Xyz> ring = {{2, 2}, {4, 2}, {6, 2}, {6, 4}, {6, 6}, {4, 6}, {2, 6}, {2, 4}};
    CSSEMatrix heights = Filled(14, 14, 3.0f);
    for (const bool steep : {false, true}) {
        CSSEMatrix target = Blank(14, 14);
        for (const auto& [x, y] : {std::pair{2, 2}, {2, 3}, {3, 3}, {4, 4}, {12, 12}}) target.SetPoint(x, y, 100.0f);
        target.SetPoint(5, 5, 80.0f);  // exactly 20 off: not marked
        target.SetPoint(5, 4, 119.9f); // marked
        CSSE3dPolygon line = PolygonOf(ring);
        t_resolutiondata unit{1.0f, 1.0f, 1.0f};
        line.InternalAreaDistanceTransform(100.0f, &heights, &target, unit, steep);
        // At distance d from the line the weight of the spatial distance is
        // d / 2, or 2 d, at most 1; up to 0.35 the planar distance alone.
        const auto blend = [&](float d) {
            const float w = std::min(1.0f, steep ? 2.0f * d : d / 2.0f);
            return (1.0f - w) * d + w * std::sqrt(d * d + 9.0f);
        };
        EXPECT_EQ(target.GetPoint(2, 2), 0.0f);
        EXPECT_FLOAT_EQ(target.GetPoint(2, 3), blend(1.0f));
        EXPECT_FLOAT_EQ(target.GetPoint(3, 3), blend(std::sqrt(2.0f)));
        EXPECT_FLOAT_EQ(target.GetPoint(4, 4), blend(2.0f));
        EXPECT_FLOAT_EQ(target.GetPoint(5, 4), blend(1.0f));
        EXPECT_EQ(target.GetPoint(5, 5), 80.0f);
        EXPECT_EQ(target.GetPoint(12, 12), 100.0f); // beyond the box and its margin of 4
    }
    // At 0.025 units a pixel the scan leaves out four blocks after each one
    // read, so that of these two blocks only the first is seen: pixel (2, 5)
    // finds (2, 2), three pixels away, instead of (2, 4) and (2, 6).
    CSSEMatrix target = Blank(14, 14);
    target.SetPoint(2, 5, 100.0f);
    CSSE3dPolygon line = PolygonOf(ring);
    t_resolutiondata fine{0.025f, 0.025f, 1.0f};
    line.InternalAreaDistanceTransform(100.0f, &heights, &target, fine, false);
    EXPECT_NEAR(target.GetPoint(2, 5), 0.075f, 1e-6f);
}

TEST(CSSE3dPolygonInnerArea, WholeLinesInsideAndThePointsKeptInside)
{
    CSSE3dPolygon square = PolygonOf({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    CSSE3dPolygon inner = PolygonOf({{1, 1}, {9, 1}, {10, 5}, {5, 9}}), touching = PolygonOf({{1, 1}, {0, 5}}), empty, pair = PolygonOf({{0, 0}, {10, 10}});
    EXPECT_TRUE(square.PolygonInThisPolygon(inner));
    EXPECT_FALSE(square.PolygonInThisPolygon(touching)); // the column of the smallest x is outside
    EXPECT_FALSE(square.PolygonInThisPolygon(empty));
    EXPECT_FALSE(empty.PolygonInThisPolygon(inner));
    EXPECT_FALSE(pair.PolygonInThisPolygon(inner));

    // Kept in order with their heights: on the bottom edge is inside, on the
    // top edge and at the smallest x outside.
    CSSE3dPolygon line = PolygonOf({{5, 5, 1}, {15, 5, 2}, {5, 0, 3}, {5, 10, 4}, {0, 5, 5}});
    line.CalcBoundingBox();
    line.KeepPointsInInner(square);
    EXPECT_EQ(std::pair(PointsOf(line), line.IsBoundingBoxCalculated()), std::pair(std::vector<Xyz>{{5, 5, 1}, {5, 0, 3}}, false));
    line.KeepPointsInInner(pair);
    EXPECT_EQ(line.GetNumPoints(), 0);
}

} // namespace
