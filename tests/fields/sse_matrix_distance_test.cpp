#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fields/field_from_rows.h"
#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::CreateFromRows;
using vek::test::RowsOf;

constexpr float kFarAway = 99999.9f;

TEST(FieldChamfer, StepsOfThreeAndFourWithColumnMasks)
{
    // 24 x 24 with one seed at (12, 10).
    CSSEMatrix m;
    m.Create(24, 24);
    m.SetPoint(12, 10, 1.0f);
    m.Chamfer();
    const auto d = [&](int dx, int dy) { return m.GetPoint(12 + dx, 10 + dy); };
    EXPECT_EQ(d(0, 0), 0.0f);
    EXPECT_EQ(d(1, 0), 3.0f);
    EXPECT_EQ(d(-1, 0), 3.0f);
    EXPECT_EQ(d(0, 1), 3.0f);
    EXPECT_EQ(d(0, -1), 3.0f);
    EXPECT_EQ(d(1, 1), 4.0f);
    EXPECT_EQ(d(-1, -1), 4.0f);
    EXPECT_EQ(d(2, 0), 6.0f);
    EXPECT_EQ(d(2, 1), 7.0f);
    // Two diagonal steps: 8 down to the right and up to the left. Down to
    // the left and up to the right the masks, which take whole columns
    // (left forward, right backward), don't carry the diagonal through:
    // (-2, 2) is reached as (-1, 2) + 3 = 10, and (2, -2) likewise.
    EXPECT_EQ(d(2, 2), 8.0f);
    EXPECT_EQ(d(-2, -2), 8.0f);
    EXPECT_EQ(d(-2, 2), 10.0f);
    EXPECT_EQ(d(2, -2), 10.0f);

    // The frame is cleared: 4 columns on the left, 5 on the right, one line
    // at the top and two lines (rows 20 to 27) at the bottom.
    EXPECT_EQ(m.GetPoint(3, 10), 0.0f);
    EXPECT_EQ(m.GetPoint(4, 10), 24.0f);
    EXPECT_EQ(m.GetPoint(19, 10), 0.0f);
    EXPECT_EQ(m.GetPoint(18, 10), 18.0f);
    EXPECT_EQ(m.GetPoint(12, 3), 0.0f);
    EXPECT_EQ(m.GetPoint(12, 4), 18.0f);
    EXPECT_EQ(m.GetPoint(12, 20), 0.0f);
    EXPECT_EQ(m.GetPoint(12, 19), 27.0f);
}

TEST(FieldChamfer, SeedsWithinTheToleranceAndOtherValuesAsUpperBounds)
{
    CSSEMatrix m;
    m.Create(24, 16);
    m.SetPoint(6, 8, 1.0015f); // within 0.002 of 1: a seed
    m.SetPoint(9, 8, 2.0f);    // an upper bound, smaller than the 9 it would get
    m.SetPoint(10, 8, 1.003f); // neither seed nor far: 1.003 stays
    m.Chamfer();
    EXPECT_EQ(m.GetPoint(6, 8), 0.0f);
    EXPECT_EQ(m.GetPoint(7, 8), 3.0f);
    EXPECT_EQ(m.GetPoint(9, 8), 2.0f);
    EXPECT_EQ(m.GetPoint(10, 8), 1.003f);
    EXPECT_EQ(m.GetPoint(11, 8), 1.003f + 3.0f);

    // Without any seed every inner pixel stays far away.
    CSSEMatrix empty;
    empty.Create(12, 12);
    empty.Chamfer();
    EXPECT_EQ(empty.GetPoint(5, 5), kFarAway);
}

TEST(FieldThinning, LinesAndTwoNeighbourCornersStay)
{
    // A one-pixel line: its inner pixels have B = 2 and its ends B = 1, so
    // nothing goes. The triangle's pixels have B = 2 as well; the textbook
    // bound of 2 would remove (3, 4) and (4, 5). Values count above the
    // threshold only, and the outermost frame is cleared.
    CSSEMatrix m;
    CreateFromRows(m, {
        "5.........",
        "..555555..",
        "..........",
        "..........",
        "...55.....",
        "....5..2..",
        ".........5",
    });
    m.ZhangSuen(2.0f);
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{
                             "..........",
                             "..111111..",
                             "..........",
                             "..........",
                             "...11.....",
                             "....1.....",
                             "..........",
                         }));
}

TEST(FieldThinning, ThickBarsShrinkToTheirMiddleRow)
{
    // Bars of 3 and 5 rows, columns 2 to 12: what is left lies within the
    // bar, on its middle row, as one run over the bar's inner columns.
    for (const int thickness : {3, 5}) {
        SCOPED_TRACE(thickness);
        const int top = 4 - thickness / 2;
        CSSEMatrix m;
        m.Create(15, 9);
        for (int y = top; y < top + thickness; ++y)
            for (int x = 2; x <= 12; ++x) m.SetPoint(x, y, 1.0f);
        m.ZhangSuen(0.5f);
        int first = -1;
        int last = -1;
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 15; ++x) {
                if (m.GetPoint(x, y) == 0.0f) continue;
                EXPECT_EQ(m.GetPoint(x, y), 1.0f);
                EXPECT_EQ(y, 4) << x;
                if (first < 0) first = x;
                EXPECT_TRUE(last < 0 || x == last + 1) << x;
                last = x;
            }
        }
        EXPECT_LE(first, 4);
        EXPECT_GE(last, 9);
        EXPECT_GE(first, 2);
        EXPECT_LE(last, 12);
    }
}

} // namespace
