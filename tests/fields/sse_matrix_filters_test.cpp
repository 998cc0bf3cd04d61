#include <numeric>

#include "fields/field_storage.h"
#include "vekdll/fields/filters.h"

namespace {

using namespace vek::test;

TEST(FieldMorphology, FourNeighbourhoodOnlyAndTheFrameBecomesZero)
{
    // A peak spreads to its four direct neighbours, not to the diagonals; a
    // pit likewise under the minimum. The frame and the padding become 0.
    const Picture peakAndPit{"2222222", "2229222", "2222222", "2222212", "2222222"};
    CSSEMatrix m = FromRows(peakAndPit);
    Stored(m, 3, 7) = 5.0f;
    m.SimpleMaximumFilter();
    EXPECT_EQ(Stored(m, 3, 7), 0.0f);
    EXPECT_EQ(RowsOf(m), (Picture{".......", ".29992.", ".22922.", ".22222.", "......."}));
    Replace(m, FromRows(peakAndPit));
    m.SimpleMinimumFilter();
    EXPECT_EQ(RowsOf(m), (Picture{".......", ".22222.", ".22221.", ".22211.", "......."}));
}

// The filtered centre of a side x side neighbourhood holding `values` in row
// order, as the only inner pixel of a side x side field.
float CentreAfter(const std::vector<float>& values, int side)
{
    const CSSEMatrix src = FieldOf(side, side, [&](int x, int y) { return y < side ? values[static_cast<std::size_t>(y * side + x)] : 0.0f; });
    CSSEMatrix dst = Filled(side, side, 0.0f);
    side == 3 ? CFilters::Median3x3(src, dst, 0, 3, 0, 3) : CFilters::Median5x5(src, dst, 0, 5, 0, 5);
    return dst.GetPoint(side / 2, side / 2);
}

TEST(PartialMedian, SecondPassOnlyAfterAnExchangeAtTheLastComparison)
{
    // Two passes: 9 then 8 travel up; 1 to 4 move down only two places, so
    // position 4 holds 2 though the median is 5. Where the last comparison
    // (8 against 9) exchanges nothing, one pass leaves 5, 6, 1, 2, 3, 4, 7,
    // 8, 9 and so 3.
    EXPECT_EQ(CentreAfter({5, 6, 7, 8, 9, 1, 2, 3, 4}, 3), 2.0f);
    EXPECT_EQ(CentreAfter({5, 6, 7, 1, 2, 3, 4, 8, 9}, 3), 3.0f);
    // 5 x 5: positions 0 to 11 hold 13 to 24, positions 12 to 23 hold 1 to
    // 12. With 25 at the end one pass carries 24 to position 23 and stops:
    // position 12 holds 2, where the median is 13.
    std::vector<float> v(25);
    std::iota(v.begin(), v.begin() + 12, 13.0f);
    std::iota(v.begin() + 12, v.begin() + 24, 1.0f);
    v[24] = 25.0f;
    EXPECT_EQ(CentreAfter(v, 5), 2.0f);
    // With 0 at the end the first pass exchanges at its last comparison; the
    // second carries 23 up and leaves 13..22, 1..12, 0, 23, 24: position 12
    // holds 3, where the median is 12.
    v[24] = 0.0f;
    EXPECT_EQ(CentreAfter(v, 5), 3.0f);
}

TEST(PartialMedian, RimOfTheRangeIsCopiedAndTheRestOfTheTargetCleared)
{
    CSSEMatrix src = FromRows({"1111111", "1291311", "1999911", "1191111", "1111111", "1111111"});
    CSSEMatrix dst = Filled(7, 6, 7.0f);
    // Range columns 1 to 4, rows 1 to 3: its rim is copied, pixels (2, 2)
    // and (3, 2) are filtered, all else is 0. (2, 2) sees 2 9 1 / 9 9 9 /
    // 1 9 1: two passes leave 1 2 9 9 1 9 1 9 9, so 1 where the median is 9.
    CFilters::Median3x3(src, dst, 1, 5, 1, 4);
    EXPECT_EQ(RowsOf(dst), (Picture{".......", ".2913..", ".9199..", ".1911..", ".......", "......."}));
    EXPECT_EQ(Stored(dst, 0, 7), 0.0f); // padding too
    // 5 x 5 over the whole field: the two-pixel rim is copied. At (2, 2) the
    // 25 values hold six 9s, one 2 and one 3: the passes end with a 9 in the
    // middle.
    CFilters::Median5x5(src, dst, 0, 7, 0, 6);
    EXPECT_EQ(RowsOf(dst), (Picture{"1111111", "1291311", "1991111", "1111111", "1111111", "1111111"}));

    // The whole-field median keeps the rim, unlike the morphology filters.
    // At (1, 2) the neighbourhood 5 5 9 / 5 9 9 / 5 5 9 has the median 5,
    // but the partial sort leaves a 9 in the middle.
    Replace(src, FromRows({"55555", "55955", "59995", "55955", "55555"}));
    src.SimpleMedianFilter();
    EXPECT_EQ(RowsOf(src), (Picture{"55555", "55555", "59595", "55555", "55555"}));
}

TEST(FieldBoxFilter, VerticalSumsOfTheSourceOverwriteTheHorizontalMeans)
{
    // A constant 1 of 6 x 10, three lines (rows 0 to 11): the vertical stage
    // covers y = 0 to 4 * 3 - 5 = 7 and writes rows 1 to 8 (2 to 9 lower).
    for (const int shift : {1, 2}) {
        CSSEMatrix m = Filled(6, 10, 0.0f);
        m.BoxFilter(Filled(6, 10, 1.0f), shift == 2);
        ExpectLanes(m, [&](int x, int row) { return row >= shift && row <= shift + 7 ? 4.0f : (x == 0 || x == 5) ? 0.0f : 1.0f; });
    }
    // Which rows are summed: with src(x, y) = y the sum of rows y to y + 3
    // is 4y + 6, written at row y + 1. Row 0 keeps the mean of three columns
    // as a true division: (7 + 6 + 5) / 3 = 6 exactly.
    CSSEMatrix m = Filled(8, 10, 0.0f);
    m.BoxFilter(FieldOf(8, 10, [](int x, int row) { return static_cast<float>(row == 0 ? x : row); }), false);
    for (int row = 1; row <= 8; ++row) EXPECT_EQ(Stored(m, 0, row), static_cast<float>(4 * (row - 1) + 6)) << row;
    EXPECT_EQ(Stored(m, 6, 0), 6.0f);
}

TEST(FieldMaskFilter, CorrelatesCentredAndLeavesTheUnreachedFrame)
{
    // A 3 x 2 mask: centre offset (1, 0). At x = 1, y = 1 the field's
    // window is rows 1 and 2, columns 1 to 3: 1*2 + 2*3 + 3*4 - 1*5 + 0*6 +
    // 1*7 = 22, written at (2, 1). x runs 0 to 5 - 3, y 0 to 4 - 2, so
    // columns 0 and 4 and row 3 keep what `out` held.
    const CSSEMatrix mask = FromRows({"123", "-.1"});
    CSSEMatrix m = FromRows({"11111", "12341", "15671", "11111"});
    CSSEMatrix out = Filled(5, 4, 9.0f);
    m.MaskFilter(out, mask, false);
    const Picture filtered = RowsOf(out);
    EXPECT_EQ(out.GetPoint(2, 1), 22.0f);
    EXPECT_EQ(filtered[3] + filtered[0][0] + filtered[2][4], "9999999");
    m.MaskFilter(out, mask, true); // divided by the absolute sum 8
    EXPECT_EQ(out.GetPoint(2, 1), 22.0f / 8.0f);
    // An out of another size is made anew, and so its frame is 0.
    Replace(out, Filled(2, 2, 9.0f));
    m.MaskFilter(out, mask, false);
    EXPECT_EQ(RowsOf(out)[3], ".....");
    // A mask of absolute sum 0, normalised, divides by 0 unguarded.
    m.MaskFilter(out, Filled(3, 3, 0.0f), true);
    EXPECT_TRUE(std::isnan(out.GetPoint(2, 2)));
    // A mask as wide as the field: out isn't even created.
    CSSEMatrix untouched;
    m.MaskFilter(untouched, Filled(5, 1, 1.0f), false);
    EXPECT_EQ(untouched.GetMatrixDataDirectly(), nullptr);
}

TEST(FieldFilters, FilteringAFieldIntoItselfReadsItAsItWas)
{
    const CSSEMatrix field = FieldOf(9, 10, [](int x, int row) { return static_cast<float>((x * 7 + row * 3) % 11); });
    const CSSEMatrix mask = FromRows({"121", "2-2"});
    const auto expectInPlace = [&](const std::function<void(CSSEMatrix& in, CSSEMatrix& out)>& filter) {
        CSSEMatrix apart = CopyOf(field), in = CopyOf(field);
        filter(in, apart);
        filter(in, in);
        EXPECT_EQ(AllStored(in), AllStored(apart));
    };
    expectInPlace([](CSSEMatrix& in, CSSEMatrix& out) { CFilters::Median3x3(in, out, 0, 9, 0, 10); });
    expectInPlace([](CSSEMatrix& in, CSSEMatrix& out) { out.BoxFilter(in, true); });
    expectInPlace([&](CSSEMatrix& in, CSSEMatrix& out) { in.MaskFilter(out, mask, false); });
}

TEST(FieldDerivatives, ForwardDifferencesOverAllLanesLeaveTheLastColumnOrLine)
{
    CSSEMatrix m = FieldOf(5, 6, [](int x, int row) { return static_cast<float>(2 * x + row); });
    m.CalcDerivativeX();
    ExpectLanes(m, [](int x, int row) { return x == 4 ? static_cast<float>(8 + row) : 2.0f; });
    // Rows 0 to 3 take the row below, row 3 from the next line; the last
    // line (rows 4 to 7) keeps its values.
    Replace(m, FieldOf(5, 6, [](int x, int row) { return static_cast<float>(x + 3 * row); }));
    m.CalcDerivativeY();
    ExpectLanes(m, [](int x, int row) { return row < 4 ? 3.0f : static_cast<float>(x + 3 * row); });
    // With a height of 8 the last line is padding only, so the last image
    // row is differenced against the padding lane below it.
    Replace(m, FieldOf(1, 8, [](int, int row) { return row == 8 ? 2.0f : 5.0f; }));
    m.CalcDerivativeY();
    EXPECT_EQ(m.GetPoint(0, 7), -3.0f);
}

TEST(FieldChamfer, StepsOfThreeAndFourWithWholeColumnMasksAndAClearedFrame)
{
    // One seed at (12, 10). Two diagonal steps give 8 down to the right and
    // up to the left. The masks take whole columns (left forward, right
    // backward), which don't carry the other diagonal through: (-2, 2) is
    // (-1, 2) + 3 = 10.
    CSSEMatrix m = WithPoints(24, 24, 0.0f, {{12, 10, 1.0f}});
    m.Chamfer();
    const auto d = [&](int dx, int dy) { return m.GetPoint(12 + dx, 10 + dy); };
    EXPECT_EQ((std::vector<float>{d(0, 0), d(-1, 0), d(0, 1), d(-1, -1), d(2, 1), d(2, 2), d(-2, -2), d(-2, 2), d(2, -2)}), (std::vector<float>{0, 3, 3, 4, 7, 8, 8, 10, 10}));
    // The frame is cleared: 4 columns on the left, 5 on the right, one line
    // at the top and two lines (rows 20 to 27) at the bottom.
    EXPECT_EQ((std::vector<float>{m.GetPoint(3, 10), m.GetPoint(4, 10), m.GetPoint(19, 10), m.GetPoint(18, 10), m.GetPoint(12, 3), m.GetPoint(12, 4), m.GetPoint(12, 20), m.GetPoint(12, 19)}),
              (std::vector<float>{0, 24, 0, 18, 0, 18, 0, 27}));

    // Seeds lie within 0.002 of 1; 0 is far away; other values are upper
    // bounds: 2 where 9 would come, and 1.003, neither seed nor far.
    Replace(m, FieldOf(24, 16, [](int x, int y) { return y != 8 ? 0.0f : x == 6 ? 1.0015f : x == 9 ? 2.0f : x == 10 ? 1.003f : 0.0f; }));
    m.Chamfer();
    EXPECT_EQ((std::vector<float>{m.GetPoint(7, 8), m.GetPoint(9, 8), m.GetPoint(11, 8)}), (std::vector<float>{3.0f, 2.0f, 1.003f + 3.0f}));
    // A seed in the outermost column reaches the row below it, 4 then 3 a
    // step to the left, but no row further down: only the backward pass
    // carries it, and that climbs away from it.
    Replace(m, WithPoints(24, 24, 0.0f, {{23, 10, 1.0f}}));
    m.Chamfer();
    EXPECT_EQ((std::vector<float>{m.GetPoint(18, 11), m.GetPoint(18, 12)}), (std::vector<float>{4 + 4 * 3, 99999.9f}));
    Replace(m, Filled(12, 12, 0.0f)); // no seed at all
    m.Chamfer();
    EXPECT_EQ(m.GetPoint(5, 5), 99999.9f);
}

TEST(FieldThinning, LinesAndTwoNeighbourCornersStayAndThickBarsShrinkToTheirMiddle)
{
    // A one-pixel line: its inner pixels have B = 2 and its ends B = 1, so
    // nothing goes. The corner pixels have B = 2 as well; the textbook bound
    // of 2 would remove (3, 3) and (4, 4). Only values above the threshold
    // count, and the outermost frame is cleared.
    CSSEMatrix m = FromRows({"5.........", "..555555..", "..........", "...55.....", "....5..2..", ".........5"});
    m.ZhangSuen(2.0f);
    EXPECT_EQ(RowsOf(m), (Picture{"..........", "..111111..", "..........", "...11.....", "....1.....", ".........."}));

    // (3, 2), beside the notch, has seven neighbours set, one more than a
    // pixel that goes may have.
    Replace(m, FromRows({"......", ".1111.", ".111..", ".1111.", "......"}));
    m.ZhangSuen(0.5f);
    EXPECT_EQ(RowsOf(m), (Picture{"......", "...11.", ".111..", "...11.", "......"}));
    // Bars of 3 and 5 rows over columns 2 to 12 leave one run on the middle
    // row. The first sub-iteration takes pixels off the south and east rims,
    // the second off the north and west ones: the runs end unevenly.
    for (const auto& [half, middle] : {std::pair{1, "..111111111...."}, {2, "...1111111....."}}) {
        Replace(m, FieldOf(15, 9, [h = half](int x, int y) { return x >= 2 && x <= 12 && std::abs(y - 4) <= h ? 1.0f : 0.0f; }));
        m.ZhangSuen(0.5f);
        Picture expected(9, std::string(15, '.'));
        expected[4] = middle;
        EXPECT_EQ(RowsOf(m), expected) << half;
    }
}

} // namespace
