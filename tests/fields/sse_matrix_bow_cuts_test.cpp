#include <limits>
#include <random>

#include "fields/field_storage.h"
#include "support/polygon_points.h"

namespace {

using namespace vek::test;

CSSEMatrix Ones(int sizeX, int sizeY)
{
    return Filled(sizeX, sizeY, 1.0f);
}

// A picture of `sizeY` rows: `cleared[x]` gives the first and last row of
// column x that are 0, the rest 1.
Picture Columns(int sizeX, int sizeY, const std::vector<std::pair<int, int>>& cleared)
{
    Picture rows(static_cast<std::size_t>(sizeY), std::string(static_cast<std::size_t>(sizeX), '1'));
    for (int x = 0; x < static_cast<int>(cleared.size()); ++x)
        for (int y = cleared[x].first; y <= cleared[x].second; ++y) rows[y][x] = '.';
    return rows;
}

constexpr std::pair<int, int> kKept{0, -1};

TEST(CSSEMatrixBowCuts, TheLeftFormsClearFromTheBowDownAndTheRightFormDownToIt)
{
    // A straight bow along row 3 of a 10 x 12 field; k = max(0 - 3, 1) = 1.
    // Open, it loses its last point: column 9 is never reached. Each column
    // clears 12 - 3 rows from row 3 + 1 + shift, the rest piling on row 11.
    CSSEMatrix m = Ones(10, 12);
    CSSE3dPolygon bow = PolygonOf({{0, 3}, {9, 3}});
    m.RemoveImageValuesLeftOfOpenBow(bow, 0.0f, 0);
    EXPECT_EQ(RowsOf(m), Columns(10, 12, std::vector<std::pair<int, int>>(9, {4, 11})));
    EXPECT_EQ(bow.GetNumPoints(), 18); // resampled in place to a spacing of 0.5

    Replace(m, Ones(10, 12));
    Fill(bow, {{0, 3}, {9, 3}});
    m.RemoveImageValuesLeftOfOpenBow(bow, 0.0f, -2);
    EXPECT_EQ(RowsOf(m), Columns(10, 12, std::vector<std::pair<int, int>>(9, {2, 10})));
    // With 10 rows processed the bow stands k = 7 rows higher up.
    Replace(m, Ones(10, 12));
    m.SetRowProcessed(10);
    Fill(bow, {{0, 3}, {9, 3}});
    m.RemoveImageValuesLeftOfOpenBow(bow, 0.0f, 0);
    EXPECT_EQ(RowsOf(m), Columns(10, 12, std::vector<std::pair<int, int>>(9, {10, 11})));

    // The right form: 3 rows from row k + shift = 1.
    Replace(m, Ones(10, 12));
    Fill(bow, {{0, 3}, {9, 3}});
    m.RemoveImageValuesRightOfOpenBow(bow, 0.0f, 0);
    EXPECT_EQ(RowsOf(m), Columns(10, 12, std::vector<std::pair<int, int>>(9, {1, 3})));

    // Closed, the way back reaches column 9 too.
    Replace(m, Ones(10, 12));
    Fill(bow, {{0, 3}, {9, 3}});
    m.RemoveImageValuesLeftOfBow(bow, 0.0f, 0);
    EXPECT_EQ(RowsOf(m), Columns(10, 12, std::vector<std::pair<int, int>>(10, {4, 11})));
    EXPECT_EQ(bow.GetNumPoints(), 36);
}

TEST(CSSEMatrixBowCuts, AStepInTheBowClearsEachColumnFromItsHighestPoint)
{
    // Resampled open: (0 ... 2.3, 2) in columns 0 ... 2, (3, 2 ... 4.3) in
    // column 3 at rows 2, 3 and 4, (3 ... 6.3, 5) in columns 3 ... 6; the end
    // point (7, 5) goes. k = max(0 - 5, 1) = 1; column 3 clears from its
    // highest point, row 2.
    CSSEMatrix m = Ones(10, 12);
    CSSE3dPolygon bow = PolygonOf({{0, 2}, {3, 2}, {3, 5}, {7, 5}});
    m.RemoveImageValuesLeftOfOpenBow(bow, 0.0f, 0);
    EXPECT_EQ(RowsOf(m), Columns(10, 12, {{3, 11}, {3, 11}, {3, 11}, {3, 11}, {6, 11}, {6, 11}, {6, 11}}));
}

TEST(CSSEMatrixBowCuts, OutsideTheInnerAreaEveryPixelGoes)
{
    // Inside the square 2 ... 6 lie columns 3 ... 6, rows 2 ... 5.
    CSSEMatrix m = Ones(10, 10);
    CSSE3dPolygon square = PolygonOf({{2, 2}, {6, 2}, {6, 6}, {2, 6}});
    m.RemoveImageValuesOutSideOfBow(square, 0.0f, 7);
    ExpectLanes(m, [](int x, int row) { return row >= 10 ? 1.0f : x >= 3 && x <= 6 && row >= 2 && row <= 5 ? 1.0f : 0.0f; });
    EXPECT_EQ(square.GetNumPoints(), 4); // not resampled

    // Two points hold nothing, so everything goes; no point at all, nothing.
    Replace(m, Ones(10, 10));
    CSSE3dPolygon pair = PolygonOf({{2, 2}, {6, 6}}), none;
    m.RemoveImageValuesOutSideOfBow(none, 0.0f, 0);
    EXPECT_EQ(m.NumValuesBelow(0.5f), 0);
    m.RemoveImageValuesOutSideOfBow(pair, 0.0f, 0);
    EXPECT_EQ(m.NumValuesBelow(0.5f), 100);

    // Pixel for pixel what the point test says, on a star with a hole's worth of dents.
    std::mt19937 random(9);
    std::uniform_real_distribution<float> radius(3.0f, 14.0f);
    std::vector<Xyz> star = Polar(23, 23, [&](int, double) { return radius(random); });
    for (Xyz& p : star) p = {p.x + 15.5f, p.y + 14.25f};
    CSSE3dPolygon line = PolygonOf(star);
    Replace(m, Ones(31, 29));
    m.RemoveImageValuesOutSideOfBow(line, 0.0f, 0);
    for (int y = 0; y < 29; ++y)
        for (int x = 0; x < 31; ++x)
            ASSERT_EQ(m.GetPoint(x, y), line.PointInLineInnerArea(static_cast<float>(x), static_cast<float>(y), 1) ? 1.0f : 0.0f) << x << ", " << y;
}

TEST(CSSEMatrixBowCuts, BowsFarAwayOrNotANumberStayInTheFieldAndEmptyBowsChangeNothing)
{
    // Far right and far below: the column is held at 9, the 1000 rows from
    // row 1 pile up at row 11; the left form finds no row above the last.
    CSSEMatrix m = Ones(10, 12);
    CSSE3dPolygon far = PolygonOf({{5000, 1000}, {5001, 1000}});
    m.RemoveImageValuesRightOfOpenBow(far, 0.0f, 0);
    std::vector<std::pair<int, int>> cleared(10, kKept);
    cleared[9] = {1, 11};
    EXPECT_EQ(RowsOf(m), Columns(10, 12, cleared));
    Replace(m, Ones(10, 12));
    Fill(far, {{5000, 1000}, {5001, 1000}});
    m.RemoveImageValuesLeftOfBow(far, 0.0f, 0);
    EXPECT_EQ(m.NumValuesBelow(0.5f), 0);

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<Xyz> broken = {{nan, 2}, {4, nan}, {8, 3}, {1, 9}};
    CSSE3dPolygon left = PolygonOf(broken), right = PolygonOf(broken), closed = PolygonOf(broken), outside = PolygonOf(broken);
    Replace(m, Ones(10, 12));
    m.RemoveImageValuesLeftOfOpenBow(left, 0.0f, 0);
    m.RemoveImageValuesRightOfOpenBow(right, 0.0f, 3);
    m.RemoveImageValuesLeftOfBow(closed, 0.0f, -3);
    m.RemoveImageValuesOutSideOfBow(outside, 0.0f, 0);

    CSSE3dPolygon none;
    Replace(m, Ones(10, 12));
    m.RemoveImageValuesLeftOfBow(none, 0.0f, 0);
    m.RemoveImageValuesLeftOfOpenBow(none, 0.0f, 0);
    m.RemoveImageValuesRightOfOpenBow(none, 0.0f, 0);
    EXPECT_EQ(m.NumValuesBelow(0.5f), 0);
    // A field without an image is left alone.
    CSSEMatrix empty;
    CSSE3dPolygon bow = PolygonOf({{0, 3}, {9, 3}, {9, 9}});
    empty.RemoveImageValuesLeftOfBow(bow, 0.0f, 0);
    empty.RemoveImageValuesOutSideOfBow(bow, 0.0f, 0);
    EXPECT_EQ(empty.GetMatrixDataDirectly(), nullptr);
}

TEST(CImgFromToArrayDrawInMatrix, EachLineStartAndEndBecomeASplatAtItsFirstRow)
{
    // Line 0 changes from column 3 to column 8 (the step up at 3 and down
    // after 7); line 1 doesn't change and keeps (0, 999999).
    CSSEMatrix source = FieldOf(12, 8, [](int x, int row) { return row < 4 && x >= 3 && x <= 7 ? 5.0f : 0.0f; });
    source.GetFromToArray().CalcArray(source, 0, 11);
    CSSEMatrix picture = FieldOf(12, 8, [](int, int) { return 0.0f; });
    source.GetFromToArray().DrawInMatrix(picture);
    // Splat centres held at row 1 and inside columns 1 ... 10.
    ExpectLanes(picture, [](int x, int row) {
        if (row <= 2 && x >= 2 && x <= 4) return 20.0f; // (3, 0)
        if (row <= 2 && x >= 7 && x <= 9) return 30.0f; // (8, 0)
        if (row >= 3 && row <= 5 && x <= 2) return 20.0f; // (0, 4)
        if (row >= 3 && row <= 5 && x >= 9) return 30.0f; // (999999, 4)
        return 0.0f;
    });
    CSSEMatrix blank;
    blank.GetFromToArray().DrawInMatrix(picture); // no spans, nothing drawn
    EXPECT_EQ(picture.NumValuesAbove(0.0f), 4 * 9);
}

} // namespace
