#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "fields/field_from_rows.h"
#include "fields/field_test_helpers.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::CreateFromRows;
using vek::test::RowsOf;

// The filtered centre of a side x side neighbourhood holding `values` in row
// order, as the only inner pixel of a side x side field.
float CentreAfter(const std::vector<float>& values, int side)
{
    CSSEMatrix src;
    src.Create(side, side);
    for (int i = 0; i < side * side; ++i) src.SetPoint(i % side, i / side, values[static_cast<std::size_t>(i)]);
    CSSEMatrix dst;
    dst.Create(side, side);
    if (side == 3) CFilters::Median3x3(src, dst, 0, 3, 0, 3);
    else CFilters::Median5x5(src, dst, 0, 5, 0, 5);
    return dst.GetPoint(side / 2, side / 2);
}

TEST(PartialMedian, SecondPassOnlyAfterAnExchangeAtTheLastComparison)
{
    // 9 travels to the end, exchanging at the last comparison; the second
    // pass exchanges nothing more at the end, and the list is sorted.
    EXPECT_EQ(CentreAfter({9, 1, 2, 3, 4, 5, 6, 7, 8}, 3), 5.0f);
    // Two passes: 9 then 8 travel up; 1 to 4 move down only two places, so
    // position 4 holds 2 though the median is 5.
    EXPECT_EQ(CentreAfter({5, 6, 7, 8, 9, 1, 2, 3, 4}, 3), 2.0f);
    // The last comparison (8 against 9) exchanges nothing: one pass, which
    // leaves 5, 6, 1, 2, 3, 4, 7, 8, 9 and so 3.
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
    CSSEMatrix src;
    CreateFromRows(src, {
        "1111111",
        "1291311",
        "1999911",
        "1191111",
        "1111111",
        "1111111",
    });
    CSSEMatrix dst;
    dst.Create(7, 6);
    dst.Fill(7.0f);
    // Range columns 1 to 4, rows 1 to 3: rows 1 and 3 and columns 1 and 4 of
    // it are copied, pixels (2, 2) and (3, 2) are filtered, all else is 0.
    // (2, 2) sees 2 9 1 / 9 9 9 / 1 9 1: two passes leave
    // 1 2 9 9 1 9 1 9 9, so 1 where the median is 9. (3, 2) sees
    // 9 1 3 / 9 9 9 / 9 1 1 and gets 9.
    CFilters::Median3x3(src, dst, 1, 5, 1, 4);
    EXPECT_EQ(RowsOf(dst), (std::vector<std::string>{
                               ".......",
                               ".2913..",
                               ".9199..",
                               ".1911..",
                               ".......",
                               ".......",
                           }));
    EXPECT_EQ(vek::test::StoredLane(dst, 0, 7), 0.0f); // padding too

    // 5 x 5 over the whole 7 x 6 field: the two-pixel rim is copied, rows
    // 2 and 3 are filtered in columns 2 to 4. At (2, 2) the 25 values hold
    // six 9s, one 2 and one 3: the passes end with a 9 at position 12.
    CFilters::Median5x5(src, dst, 0, 7, 0, 6);
    EXPECT_EQ(RowsOf(dst), (std::vector<std::string>{"1111111", "1291311", "1991111", "1111111", "1111111", "1111111"}));
}

TEST(PartialMedian, SimpleMedianFilterKeepsTheRimUnlikeTheMorphologyFilters)
{
    CSSEMatrix m;
    CreateFromRows(m, {
        "55555",
        "55955",
        "59995",
        "55955",
        "55555",
    });
    // At (1, 2) the neighbourhood 5 5 9 / 5 9 9 / 5 5 9 has the median 5,
    // but the partial sort leaves a 9 in the middle.
    m.SimpleMedianFilter();
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{"55555", "55555", "59595", "55555", "55555"}));
}

} // namespace
