#include <gtest/gtest.h>

#include <utility>

#include "fields/field_storage.h"
#include "vekdll/fields/img_from_to_array.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using Span = std::pair<int, int>;
constexpr Span kUnrestricted{0, 999999};

// GetFromToCoords narrows the caller's range, or with h = 1 overwrites it
// with pair y as it stands.
Span Coords(const CImgFromToArray& spans, int y, int h, Span range = kUnrestricted)
{
    spans.GetFromToCoords(range.first, range.second, y, h);
    return range;
}

TEST(CImgFromToArray, CalcArrayFindsWhereEachLineStartsAndStopsChanging)
{
    CSSEMatrix m;
    m.Create(12, 14); // four lines hold image rows; rows 14 and 15 are padding
    CImgFromToArray& spans = m.GetFromToArray();
    spans.CalcArray(m, 0, 11);
    ASSERT_EQ(spans.GetNumEntries(), 4); // (14 + 3) >> 2, not SSESizeY
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Coords(spans, i, 1), kUnrestricted) << i;

    for (int x = 4; x <= 7; ++x) m.SetPoint(x, 1, 1.0f); // line 0: a plateau
    m.SetPoint(3, 4, 0.004f);                          // line 1: inside the band of 0.005 ...
    m.SetPoint(6, 5, 0.005f);                          // ... and exactly on it, which counts
    m.SetPoint(10, 10, 2.0f);                          // line 2: a change at the end of the forward scan only
    m.SetPoint(11, 10, 2.0f);
    vek::test::Stored(m, 2, 15) = 7.0f; // line 3: a padding lane counts too
    spans.CalcArray(m, 0, 11);
    EXPECT_EQ(Coords(spans, 0, 1), Span(4, 8));
    EXPECT_EQ(Coords(spans, 1, 1), Span(6, 7));
    EXPECT_EQ(Coords(spans, 2, 1), Span(10, 999999));
    EXPECT_EQ(Coords(spans, 3, 1), Span(2, 3));

    // Columns outside left ... right (clamped to the field) are not looked at.
    spans.CalcArray(m, 5, 40);
    EXPECT_EQ(Coords(spans, 0, 1), Span(8, 999999));
    EXPECT_EQ(Coords(spans, 3, 1), kUnrestricted);
    spans.CalcArray(m, -20, 6);
    EXPECT_EQ(Coords(spans, 0, 1), Span(4, 999999));
}

TEST(CImgFromToArray, QueriesReadPairsByIndexOrCombineTheLinesAroundARow)
{
    // Six lines with the pairs (i + 1, 10 + i): a run of 1 in the first row
    // of line i from column i + 1 to column 9 + i.
    CSSEMatrix m;
    m.Create(20, 24);
    for (int i = 0; i < 6; ++i)
        for (int x = i + 1; x <= 9 + i; ++x) m.SetPoint(x, 4 * i, 1.0f);
    CImgFromToArray& spans = m.GetFromToArray();
    spans.CalcArray(m, 0, 19);

    // h = 1: GetFromToCoords takes y as a pair index (clamped),
    // IsPositionInArray as a row (5 is in line 1 with (2, 11)), and a row
    // outside the field lies in no span.
    EXPECT_EQ(Coords(spans, 100, 1), Span(6, 15));
    EXPECT_EQ(Coords(spans, -4, 1), Span(1, 10));
    EXPECT_FALSE(spans.IsPositionInArray(1, 5, 1));
    EXPECT_TRUE(spans.IsPositionInArray(2, 5, 1));
    EXPECT_TRUE(spans.IsPositionInArray(11, 5, 1));
    EXPECT_FALSE(spans.IsPositionInArray(12, 5, 1));
    EXPECT_FALSE(spans.IsPositionInArray(8, 24, 1));
    EXPECT_FALSE(spans.IsPositionInArray(8, -1, 1));

    // y = 10, h = 4: lines 6 >> 2 = 1 up to, not including, 14 >> 2 = 3, with
    // (2, 11) and (3, 12): their union narrows the caller's range, and a
    // position must lie in every one of them, bounds included.
    EXPECT_EQ(Coords(spans, 10, 4), Span(2, 12));
    EXPECT_EQ(Coords(spans, 10, 4, Span(5, 8)), Span(5, 8));
    EXPECT_FALSE(spans.IsPositionInArray(2, 10, 4));
    EXPECT_TRUE(spans.IsPositionInArray(3, 10, 4));
    EXPECT_TRUE(spans.IsPositionInArray(11, 10, 4));
    EXPECT_FALSE(spans.IsPositionInArray(12, 10, 4));

    // No line to combine: an empty range, and every position inside. An
    // array never computed holds no position.
    EXPECT_EQ(Coords(spans, 5, 0), Span(999999, 0));
    EXPECT_EQ(Coords(spans, -10, 2), Span(999999, 0));
    EXPECT_TRUE(spans.IsPositionInArray(7, -10, 2));
    const CImgFromToArray never;
    EXPECT_FALSE(never.IsPositionInArray(0, 0, 8));
    EXPECT_EQ(Coords(never, 3, 1), Span(999999, 0));
}

} // namespace
