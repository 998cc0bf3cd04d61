#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::FillLanes;
using vek::test::StorageRows;
using vek::test::StoredLane;
using vek::test::Tag;

std::pair<int, int> FirstPoint(CSSEMatrix& m, float t, bool above)
{
    int x = 7, y = 7; // overwritten in any case
    m.FindFirstPoint(x, y, t, above);
    return {x, y};
}

int FirstPointLined(CSSEMatrix& m, int x, float t, bool above)
{
    int y = -1;
    m.FindFirstPointLined(x, y, t, above);
    return y;
}

TEST(CSSEMatrixScans, ColumnScansKeepTheirMarginsAndDirections)
{
    // FindFirstPoint on 50 x 60 looks at columns 20 ... 29, lines 5 ... 10
    // (rows 20 ... 43), column by column, and counts a pixel equal to t.
    CSSEMatrix m;
    m.Create(50, 60);
    for (auto [x, y] : {std::pair{19, 30}, std::pair{30, 30}, std::pair{25, 19}, std::pair{25, 44}}) m.SetPoint(x, y, 2.0f);
    EXPECT_EQ(FirstPoint(m, 1.0f, true), std::pair(0, 0)) << "hits in the margin only";
    m.SetPoint(26, 41, 1.0f);
    EXPECT_EQ(FirstPoint(m, 1.0f, true), std::pair(26, 41));
    m.SetPoint(22, 38, 3.0f);
    m.SetPoint(22, 37, 3.0f);
    EXPECT_EQ(FirstPoint(m, 1.0f, true), std::pair(22, 37)) << "an earlier column, then the lowest lane";
    m.SetPoint(23, 21, -1.0f);
    EXPECT_EQ(FirstPoint(m, -1.0f, false), std::pair(23, 21));
    CSSEMatrix small; // 30 x 30: the margins meet
    small.Create(30, 30);
    small.Fill(5.0f);
    EXPECT_EQ(FirstPoint(small, 0.0f, true), std::pair(0, 0));

    // FindFirstPointLined on 6 x 30 climbs from line 6 to line 2 (rows 27 ... 8),
    // strictly beyond t, and reports the lowest lane of the first line that hits.
    CSSEMatrix c;
    c.Create(6, 30);
    c.SetPoint(3, 28, 5.0f); // line 7
    c.SetPoint(3, 7, 5.0f);  // line 1
    EXPECT_EQ(FirstPointLined(c, 3, 4.0f, true), 0);
    c.SetPoint(3, 9, 5.0f);
    c.SetPoint(3, 23, 5.0f);
    c.SetPoint(3, 22, 5.0f);
    c.SetPoint(3, 25, 4.0f);
    EXPECT_EQ(FirstPointLined(c, 3, 4.0f, true), 22);
    EXPECT_EQ(FirstPointLined(c, 3, 4.5f, false), 24);
    EXPECT_EQ(FirstPointLined(c, -1, -1.0f, true), 0) << "a column outside the field";
    EXPECT_EQ(FirstPointLined(c, 6, -1.0f, true), 0);
}

TEST(CSSEMatrixScans, RowScansRunFromTheFirstArgumentToTheSecondAndReturnItWithoutAHit)
{
    CSSEMatrix m;
    m.Create(10, 5);
    for (int x = 0; x < 10; ++x) m.SetPoint(x, 2, static_cast<float>(x));
    for (int x = 0; x < 10; ++x) m.SetPoint(x, 4, static_cast<float>(10 - x));

    EXPECT_EQ(m.FindPointFromLeft(0, 9, 2, 4.5f, true), 5);
    EXPECT_EQ(m.FindPointFromLeft(5, 9, 2, 5.0f, true), 6) << "equal is no hit";
    EXPECT_EQ(m.FindPointFromLeft(0, 4, 2, 4.5f, true), 4);
    EXPECT_EQ(m.FindPointFromLeft(6, 2, 2, 0.0f, true), 2);
    EXPECT_EQ(m.FindPointFromLeft(0, 9, 100, 4.5f, false), 6) << "row 100 is clamped to row 4";
    EXPECT_EQ(m.FindPointFromRight(9, 0, 2, 4.5f, false), 4);
    EXPECT_EQ(m.FindPointFromRight(9, 6, 2, 4.5f, false), 6);
    EXPECT_EQ(m.FindPointFromRight(2, 7, 2, 0.0f, true), 7);

    // Positions beyond the rim read the rim pixel; far ones are no slower.
    EXPECT_EQ(m.FindPointFromLeft(-3, 9, 2, 0.5f, false), -3);
    EXPECT_EQ(m.FindPointFromLeft(-3, 9, 2, 4.5f, true), 5);
    EXPECT_EQ(m.FindPointFromRight(15, 0, 2, 8.5f, true), 15);
    EXPECT_EQ(m.FindPointFromRight(15, 0, 2, 4.5f, false), 4);
    EXPECT_EQ(m.FindPointFromLeft(-2000000000, 2000000000, 2, 100.0f, true), 2000000000);
    EXPECT_EQ(m.FindPointFromRight(2000000000, -2000000000, 2, -1.0f, false), -2000000000);
}

// A 3 x 40 field: lines 0 ... 9 hold image rows, line 10 is padding. All
// tags lie below 50000 but that of row 17, when asked for.
void MakeColumnField(CSSEMatrix& m, bool peakAtRow17)
{
    m.Create(3, 40);
    FillLanes(m, [&](int x, int row) { return peakAtRow17 && row == 17 ? 90000.0f : Tag(x, row); });
}

// Column 1 holds 7 in rows firstRow ... endRow - 1 but the kept ones; all
// else is as MakeColumnField left it.
void ExpectPainted(const CSSEMatrix& m, bool peak, int firstRow, int endRow, std::vector<int> kept = {})
{
    CSSEMatrix original;
    MakeColumnField(original, peak);
    for (int row = 0; row < StorageRows(m); ++row) {
        for (int x = 0; x < 3; ++x) {
            const bool painted = x == 1 && row >= firstRow && row < endRow && std::find(kept.begin(), kept.end(), row) == kept.end();
            ASSERT_EQ(StoredLane(m, x, row), painted ? 7.0f : StoredLane(original, x, row)) << x << ", " << row;
        }
    }
}

TEST(CSSEMatrixScans, DrawFirstPointLinedPaintsWholeLinesUpToTheFirstHit)
{
    struct Case {
        bool peak;
        float t;
        bool above;
        int yStop;
        int y;                // -5: untouched
        int firstRow, endRow; // painted
    };
    const Case cases[] = {
        {true, 50000.0f, true, 0, 16, 20, 40},     // the hit in line 4 stops the paint below it
        {false, 0.0f, false, 13, -5, 20, 40},      // no hit: lines 9 down to (13 >> 2) + 2 = 5
        {false, 0.0f, false, -10, -5, 8, 40},      // a negative stop counts as row 0: lines 9 ... 2
        {false, 0.0f, false, 1000, -5, 0, 0},      // clamped to row 39: (39 >> 2) + 2 lies past line 9
        {false, Tag(1, 39), false, 0, 36, 0, 0},   // a hit in line 9 at once
        {false, Tag(1, 36), false, 29, -5, 36, 40} // equal to t is no hit
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.t << " from " << c.yStop);
        CSSEMatrix m;
        MakeColumnField(m, c.peak);
        int y = -5;
        m.DrawFirstPointLined(1, c.t, c.above, 7.0f, y, c.yStop);
        m.DrawFirstPointLined(-1, 0.0f, false, 7.0f, y, 0); // outside the field: ignored
        m.DrawFirstPointLined(3, 0.0f, false, 7.0f, y, 0);
        EXPECT_EQ(y, c.y);
        ExpectPainted(m, c.peak, c.firstRow, c.endRow);
    }
}

void ReleasePixels(CSSEMatrix& m)
{
    m.FreeImageMemoryOnly();
}

void ReleasePixels(CSSEcharMatrix& m)
{
    m.Free();
}

// Both kinds of mask, with the same pixels set, protect the same pixels.
template <class Mask, class Value>
void ExpectMaskProtects(Value set, Value tiny)
{
    CSSEMatrix m;
    MakeColumnField(m, true);
    Mask mask;
    mask.Create(3, 40);
    for (int x = 0; x < 3; ++x) mask.SetPoint(x, 25, set);
    mask.SetPoint(1, 30, tiny);
    mask.SetPoint(1, 10, set); // above the hit
    int y = -5;
    m.DrawFirstPointLinedUseMask(1, 50000.0f, true, 7.0f, y, mask, 0);
    EXPECT_EQ(y, 16);
    ExpectPainted(m, true, 20, 40, {25, 30});

    // A mask of another size, or without pixels, leaves field and y alone.
    Mask wrong[3];
    wrong[0].Create(3, 39);
    wrong[1].Create(4, 40);
    wrong[2].Create(3, 40);
    ReleasePixels(wrong[2]);
    for (Mask& other : wrong) {
        MakeColumnField(m, false);
        m.DrawFirstPointLinedUseMask(1, 0.0f, false, 7.0f, y, other, 0);
        EXPECT_EQ(y, 16);
        ExpectPainted(m, false, 0, 0);
    }
}

TEST(CSSEMatrixScans, TheMaskProtectsItsPixelsFromPaintingButDoesNotStopTheScan)
{
    ExpectMaskProtects<CSSEMatrix>(1.0f, -0.001f);
    ExpectMaskProtects<CSSEcharMatrix>(static_cast<char>(1), static_cast<char>(-128));
}

} // namespace
