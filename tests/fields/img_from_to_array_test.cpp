#include <gtest/gtest.h>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/img_from_to_array.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::StoredLane;

// Reads pair i: GetFromToCoords with h = 1 takes y as a pair index.
vek::FromTo Pair(const CImgFromToArray& spans, int i)
{
    vek::FromTo pair{-1, -1};
    spans.GetFromToCoords(pair.from, pair.to, i, 1);
    return pair;
}

bool operator==(vek::FromTo a, vek::FromTo b)
{
    return a.from == b.from && a.to == b.to;
}

TEST(CImgFromToArray, CalcArrayFindsWhereEachLineStartsAndStopsChanging)
{
    CSSEMatrix m;
    m.Create(12, 14); // four lines hold image rows; rows 14 and 15 of line 3 are padding
    CImgFromToArray& spans = m.GetFromToArray();

    spans.CalcArray(m, 0, 11);
    ASSERT_EQ(spans.GetNumEntries(), 4); // (14 + 3) >> 2, not SSESizeY
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(Pair(spans, i) == (vek::FromTo{0, 999999})) << i;

    // Line 0: a plateau in row 1 over columns 4..7 changes at x = 4 and x = 8.
    for (int x = 4; x <= 7; ++x) m.SetPoint(x, 1, 1.0f);
    // Line 1: steps below the band don't count, a step of exactly 0.005 does.
    m.SetPoint(3, 4, 0.004f);
    m.SetPoint(6, 5, 0.005f);
    // Line 2: the only change sits at the very end of the forward scan.
    m.SetPoint(10, 10, 2.0f);
    m.SetPoint(11, 10, 2.0f);
    // Line 3: the change lies in a padding lane only; it counts all the same.
    StoredLane(m, 2, 15) = 7.0f;

    spans.CalcArray(m, 0, 11);
    EXPECT_TRUE(Pair(spans, 0) == (vek::FromTo{4, 8}));
    EXPECT_TRUE(Pair(spans, 1) == (vek::FromTo{6, 7}));
    EXPECT_TRUE(Pair(spans, 2) == (vek::FromTo{10, 999999}));
    EXPECT_TRUE(Pair(spans, 3) == (vek::FromTo{2, 3}));

    // Columns outside left ... right are not looked at; the bounds are clamped.
    spans.CalcArray(m, 5, 40);
    EXPECT_TRUE(Pair(spans, 0) == (vek::FromTo{8, 999999}));
    EXPECT_TRUE(Pair(spans, 3) == (vek::FromTo{0, 999999}));
    spans.CalcArray(m, -20, 6);
    EXPECT_TRUE(Pair(spans, 0) == (vek::FromTo{4, 999999}));

    // A field without rows or columns leaves the array alone.
    CSSEMatrix none;
    none.Create(0, 5);
    spans.CalcArray(none, 0, 3);
    EXPECT_EQ(spans.GetNumEntries(), 4);

    // Re-creating the field doesn't touch its span array.
    m.Create(3, 40);
    EXPECT_EQ(spans.GetNumEntries(), 4);
}

// Six lines with the pairs (i + 1, 10 + i): a run of 1 in the first row of
// line i from column i + 1 to column 9 + i.
void MakeStaircase(CSSEMatrix& m)
{
    m.Create(20, 24);
    for (int i = 0; i < 6; ++i)
        for (int x = i + 1; x <= 9 + i; ++x) m.SetPoint(x, 4 * i, 1.0f);
    m.GetFromToArray().CalcArray(m, 0, 19);
}

TEST(CImgFromToArray, QueriesOfHeightOneIndexPairsAndLinesDifferently)
{
    CSSEMatrix m;
    MakeStaircase(m);
    const CImgFromToArray& spans = m.GetFromToArray();
    for (int i = 0; i < 6; ++i) ASSERT_TRUE(Pair(spans, i) == (vek::FromTo{i + 1, 10 + i})) << i;

    // GetFromToCoords takes y = 5 as pair 5, clamped to the pairs there are.
    EXPECT_TRUE(Pair(spans, 5) == (vek::FromTo{6, 15}));
    EXPECT_TRUE(Pair(spans, 100) == (vek::FromTo{6, 15}));
    EXPECT_TRUE(Pair(spans, -4) == (vek::FromTo{1, 10}));

    // IsPositionInArray takes y = 5 as row 5, that is line 1 with (2, 11).
    EXPECT_FALSE(spans.IsPositionInArray(1, 5, 1));
    EXPECT_TRUE(spans.IsPositionInArray(2, 5, 1));
    EXPECT_TRUE(spans.IsPositionInArray(11, 5, 1));
    EXPECT_FALSE(spans.IsPositionInArray(12, 5, 1));
    // Rows beyond the field lie in no span.
    EXPECT_FALSE(spans.IsPositionInArray(8, 24, 1));
    EXPECT_FALSE(spans.IsPositionInArray(8, -1, 1));
}

TEST(CImgFromToArray, WiderQueriesCombineTheLinesAroundARow)
{
    CSSEMatrix m;
    MakeStaircase(m);
    const CImgFromToArray& spans = m.GetFromToArray();

    // y = 10, h = 4: lines (6 >> 2) = 1 up to, not including, (14 >> 2) = 3,
    // with (2, 11) and (3, 12). The caller's range is only ever narrowed.
    int from = 0, to = 999999;
    spans.GetFromToCoords(from, to, 10, 4);
    EXPECT_EQ(from, 2);
    EXPECT_EQ(to, 12);
    from = 5, to = 8;
    spans.GetFromToCoords(from, to, 10, 4);
    EXPECT_EQ(from, 5);
    EXPECT_EQ(to, 8);

    // Positions must lie in every span of those lines, bounds included.
    EXPECT_FALSE(spans.IsPositionInArray(2, 10, 4));
    EXPECT_TRUE(spans.IsPositionInArray(3, 10, 4));
    EXPECT_TRUE(spans.IsPositionInArray(11, 10, 4));
    EXPECT_FALSE(spans.IsPositionInArray(12, 10, 4));

    // No line at all (h = 0, or rows above the field): an empty range, and
    // every position counts as inside.
    for (int y : {5, -10}) {
        from = 0, to = 999999;
        spans.GetFromToCoords(from, to, y, y == 5 ? 0 : 2);
        EXPECT_EQ(from, 999999);
        EXPECT_EQ(to, 0);
    }
    EXPECT_TRUE(spans.IsPositionInArray(-50, 5, 0));
    EXPECT_TRUE(spans.IsPositionInArray(7, -10, 2));
}

TEST(CImgFromToArray, AnArrayNeverComputedHoldsNoPosition)
{
    const CImgFromToArray spans;
    EXPECT_EQ(spans.GetNumEntries(), 0);
    EXPECT_FALSE(spans.IsPositionInArray(0, 0, 1));
    EXPECT_FALSE(spans.IsPositionInArray(0, 0, 8));
    int from = 0, to = 999999;
    spans.GetFromToCoords(from, to, 3, 1);
    EXPECT_EQ(from, 999999);
    EXPECT_EQ(to, 0);
}

TEST(CImgFromToArray, AssignmentSharesTheArrayOfOneField)
{
    CSSEMatrix m;
    MakeStaircase(m);
    CImgFromToArray alias;
    alias = m.GetFromToArray();
    EXPECT_EQ(alias.GetNumEntries(), 6);
    EXPECT_TRUE(Pair(alias, 3) == (vek::FromTo{4, 13}));
    // `alias` gives the array up again without releasing it; the field does.
    alias = CImgFromToArray{};
    EXPECT_EQ(alias.GetNumEntries(), 0);
}

} // namespace
