#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "fields/field_from_rows.h"
#include "fields/field_test_helpers.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::CreateFromRows;
using vek::test::FillLanes;
using vek::test::RowsOf;
using vek::test::StoredLane;

TEST(FieldMorphology, FourNeighbourhoodOnlyAndTheFrameBecomesZero)
{
    // A peak spreads to its four direct neighbours, not to the diagonals; a
    // pit likewise under the minimum.
    const std::vector<std::string> peakAndPit{
        "2222222",
        "2222222",
        "2229222",
        "2222222",
        "2222212",
        "2222222",
    };
    CSSEMatrix m;
    CreateFromRows(m, peakAndPit);
    StoredLane(m, 3, 7) = 5.0f;
    m.SimpleMaximumFilter();
    EXPECT_EQ(StoredLane(m, 3, 7), 0.0f); // padding lanes too
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{
                             ".......",
                             ".22922.",
                             ".29992.",
                             ".22922.",
                             ".22222.",
                             ".......",
                         }));
    CreateFromRows(m, peakAndPit);
    m.SimpleMinimumFilter();
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{
                             ".......",
                             ".22222.",
                             ".22222.",
                             ".22221.",
                             ".22211.",
                             ".......",
                         }));
}

TEST(FieldBoxFilter, VerticalSumsOfSourceOverwriteTheHorizontalMeans)
{
    // A constant 1 of 6 x 10, three lines (rows 0 to 11): the vertical stage
    // covers y = 0 to 4 * 3 - 5 = 7 and writes rows 1 to 8 (2 to 9 lower).
    for (const bool lower : {false, true}) {
        SCOPED_TRACE(lower ? "lower" : "upper");
        CSSEMatrix src;
        src.Create(6, 10);
        src.Fill(1.0f);
        CSSEMatrix m;
        m.Create(6, 10);
        m.BoxFilter(src, lower);
        const int firstSum = lower ? 2 : 1;
        for (int row = 0; row < 12; ++row) {
            for (int x = 0; x < 6; ++x) {
                const bool summed = row >= firstSum && row <= firstSum + 7;
                const float want = summed ? 4.0f : (x == 0 || x == 5) ? 0.0f : 1.0f;
                EXPECT_EQ(StoredLane(m, x, row), want) << x << ", " << row;
            }
        }
    }

    // Which rows are summed: with src(x, y) = y the sum of rows y to y + 3
    // is 4y + 6, written at row y + 1 (column 0 here; row 0 holds x). The
    // columns of row 0 are averaged as a true
    // division: (7 + 6 + 5) / 3 = 6 exactly.
    CSSEMatrix src;
    src.Create(8, 10);
    FillLanes(src, [](int x, int row) { return static_cast<float>(row) + (row == 0 ? static_cast<float>(x) : 0.0f); });
    CSSEMatrix m;
    m.Create(8, 10);
    m.BoxFilter(src, false);
    for (int row = 1; row <= 8; ++row) EXPECT_EQ(StoredLane(m, 0, row), static_cast<float>(4 * (row - 1) + 6)) << row;
    EXPECT_EQ(StoredLane(m, 6, 0), 6.0f);
    EXPECT_EQ(StoredLane(m, 2, 10), 10.0f);
}

TEST(FieldMaskFilter, CorrelatesCentredAndLeavesTheUnreachedFrame)
{
    // A 3 x 2 mask: centre offset (1, 0). At x = 1, y = 1 the field's
    // window is rows 1 and 2, columns 1 to 3.
    CSSEMatrix mask;
    CreateFromRows(mask, {"123", "-.1"});
    CSSEMatrix m;
    CreateFromRows(m, {
        "11111",
        "12341",
        "15671",
        "11111",
    });
    CSSEMatrix out;
    out.Create(5, 4);
    out.Fill(9.0f);
    m.MaskFilter(out, mask, false);
    // 1*2 + 2*3 + 3*4 - 1*5 + 0*6 + 1*7 = 22 at (1 + 1, 1 + 0).
    EXPECT_EQ(out.GetPoint(2, 1), 22.0f);
    // x runs 0 to 5 - 3 = 2, y 0 to 4 - 2 = 2: out is written at columns
    // 1 to 3 and rows 0 to 2; column 0, column 4 and row 3 keep their 9.
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(out.GetPoint(0, y), 9.0f);
        EXPECT_EQ(out.GetPoint(4, y), 9.0f);
    }
    EXPECT_EQ(out.GetPoint(2, 3), 9.0f);

    // Normalised by the absolute sum 1 + 2 + 3 + 1 + 0 + 1 = 8.
    m.MaskFilter(out, mask, true);
    EXPECT_EQ(out.GetPoint(2, 1), 22.0f / 8.0f);

    // An out of another size is made anew, and so the frame is 0.
    CSSEMatrix fresh;
    fresh.Create(2, 2);
    m.MaskFilter(fresh, mask, false);
    EXPECT_EQ(fresh.GetSizeX(), 5);
    EXPECT_EQ(fresh.GetPoint(0, 0), 0.0f);
    EXPECT_EQ(fresh.GetPoint(2, 1), 22.0f);

    // A mask as wide (or as high) as the field: out isn't even created.
    CSSEMatrix wide;
    wide.Create(5, 1);
    CSSEMatrix untouched;
    m.MaskFilter(untouched, wide, false);
    EXPECT_EQ(untouched.GetMatrixDataDirectly(), nullptr);

    // A mask of absolute sum 0, normalised, divides by 0 unguarded.
    CSSEMatrix zeroMask;
    zeroMask.Create(3, 3);
    m.MaskFilter(out, zeroMask, true);
    EXPECT_TRUE(std::isnan(out.GetPoint(2, 2)));
}

TEST(FieldFilters, FilteringAFieldIntoItselfReadsItAsItWas)
{
    CSSEMatrix field;
    field.Create(9, 10);
    FillLanes(field, [](int x, int row) { return static_cast<float>((x * 7 + row * 3) % 11); });
    CSSEMatrix mask;
    CreateFromRows(mask, {"121", "2-2"});
    const auto expectInPlace = [&](const std::function<void(CSSEMatrix& in, CSSEMatrix& out)>& filter) {
        CSSEMatrix apart;
        apart.CopyFromSSEMatrix(field);
        filter(field, apart);
        CSSEMatrix inPlace;
        inPlace.CopyFromSSEMatrix(field);
        filter(inPlace, inPlace);
        EXPECT_EQ(vek::test::AllLanes(inPlace), vek::test::AllLanes(apart));
    };
    expectInPlace([](CSSEMatrix& in, CSSEMatrix& out) { CFilters::Median3x3(in, out, 0, 9, 0, 10); });
    expectInPlace([](CSSEMatrix& in, CSSEMatrix& out) { out.BoxFilter(in, true); });
    // MaskFilter reads this field: `in` here. Written into a copy of it, or
    // into itself, the frame keeps the same values.
    expectInPlace([&](CSSEMatrix& in, CSSEMatrix& out) { in.MaskFilter(out, mask, false); });
}

TEST(FieldDerivatives, ForwardDifferencesLeaveTheLastColumnOrLine)
{
    // p = 2x + row over all lanes: the x difference is 2, the last column
    // keeps its values.
    CSSEMatrix m;
    m.Create(5, 6);
    FillLanes(m, [](int x, int row) { return static_cast<float>(2 * x + row); });
    m.CalcDerivativeX();
    for (int row = 0; row < 8; ++row) {
        for (int x = 0; x < 5; ++x) EXPECT_EQ(StoredLane(m, x, row), x == 4 ? static_cast<float>(8 + row) : 2.0f);
    }

    // p = x + 3 row: the row difference is 3 in every lane of every line but
    // the last, which keeps its values (rows 4 to 7 here).
    FillLanes(m, [](int x, int row) { return static_cast<float>(x + 3 * row); });
    m.CalcDerivativeY();
    for (int row = 0; row < 8; ++row) {
        for (int x = 0; x < 5; ++x) EXPECT_EQ(StoredLane(m, x, row), row < 4 ? 3.0f : static_cast<float>(x + 3 * row));
    }

    // With a height of 8 the last line is padding only, so the last real row
    // is differenced against the padding lane below it.
    CSSEMatrix tall;
    tall.Create(2, 8);
    tall.Fill(5.0f);
    StoredLane(tall, 0, 8) = 2.0f;
    tall.CalcDerivativeY();
    EXPECT_EQ(tall.GetPoint(0, 7), -3.0f);
    EXPECT_EQ(tall.GetPoint(0, 6), 0.0f);
    EXPECT_EQ(tall.GetPoint(1, 7), 0.0f);
}

} // namespace
