#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "fields/field_test_helpers.h"
#include "fields/lane_properties.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::StoredLane;

constexpr float kMinSentinel = 1000000.0f;
constexpr float kMaxSentinel = -1000000.0f;

TEST(FieldCounts, EveryLaneCountsPaddingIncluded)
{
    // 3 x 5: two lines, rows 5 to 7 are padding.
    CSSEMatrix m;
    m.Create(3, 5);
    m.Fill(1.0f);
    m.SetPoint(2, 4, 3.0f);
    StoredLane(m, 0, 7) = -2.0f;
    EXPECT_EQ(m.NumValuesAbove(1.0f), 1);
    EXPECT_EQ(m.NumValuesBelow(1.0f), 1);
    EXPECT_EQ(m.NumValuesAbove(0.0f), 23);

    CSSEMatrix q;
    q.Create(3, 5);
    q.Fill(2.0f);
    EXPECT_EQ(m.NumValuesAbove(&q), 1);
    EXPECT_EQ(m.NumValuesBelow(&q), 23);
    EXPECT_EQ(m.NumValuesBelow(nullptr), 0);
}

TEST(FieldSums, PartialSumsPerLaneAndTheirTwoFinalOrders)
{
    // One vector holding 1e8, 4, 4, 4 in its lanes (rows 0 to 3 of a 1 x 3
    // field, the last a padding lane). In single precision 1e8 + 4 rounds
    // back to 1e8 (ties to even, a step of 8), but 1e8 + 8 doesn't.
    CSSEMatrix m;
    m.Create(1, 3);
    StoredLane(m, 0, 0) = 1e8f;
    StoredLane(m, 0, 1) = -4.0f;
    StoredLane(m, 0, 2) = 4.0f;
    StoredLane(m, 0, 3) = 4.0f;
    // (l0 + l3) + (l2 + l1) = 1e8 + 8 for the amounts ...
    EXPECT_EQ(m.IntegrateMatrixAbsolute(), 100000008.0f);
    // ... but ((l0 + l1) + l2) + l3 loses every 4.
    EXPECT_EQ(m.CalcAbsSum(), 100000000.0f);
    // With signs: (1e8 + 4) + (4 - 4) = 1e8.
    EXPECT_EQ(m.IntegrateMatrix(), 100000000.0f);

    // Lane sums run over the lines in order: in lane 0, 1e8 followed by
    // 4 + 4 + 4 in the next lines never grows, so the order is observable.
    CSSEMatrix tall;
    tall.Create(2, 12); // four lines
    for (int line = 1; line < 4; ++line) StoredLane(tall, 0, 4 * line) = 4.0f;
    StoredLane(tall, 0, 0) = 1e8f;
    EXPECT_EQ(tall.IntegrateMatrix(), 1e8f);

    // Each amount is scaled before it is added.
    CSSEMatrix r;
    r.Create(7, 9);
    vek::test::FillRandomLanes(r, 5, {-1.5f, 0.25f, 3.0f, -7.75f});
    EXPECT_FLOAT_EQ(r.IntegrateMatrixAbsolute(2.0f, 3.0f), 6.0f * r.IntegrateMatrixAbsolute());
}

// A 10 x 10 field: three lines, of which only the middle one (rows 4 to 7)
// is searched, in columns 3 to 6.
TEST(FieldExtremes, WholeFieldSearchSkipsTheOuterLinesAndThreeColumnsEachSide)
{
    CSSEMatrix m;
    m.Create(10, 10);
    m.Fill(1.0f);
    float max = 0.0f;
    float min = 0.0f;
    // Extremes outside the window are not seen.
    m.SetPoint(2, 5, 100.0f);  // column 2
    m.SetPoint(7, 5, -100.0f); // column 7
    m.SetPoint(5, 0, 100.0f);  // row 0
    m.SetPoint(5, 3, -100.0f); // row 3, the first line
    m.SetPoint(5, 8, 100.0f);  // row 8, the last line
    m.CalcMinMaxValues(&max, &min);
    EXPECT_EQ(max, 1.0f);
    EXPECT_EQ(min, 1.0f);
    m.SetPoint(3, 4, 50.0f);
    m.SetPoint(6, 7, -50.0f);
    m.CalcMinMaxValues(&max, &min);
    EXPECT_EQ(max, 50.0f);
    EXPECT_EQ(min, -50.0f);

    // Narrower than 7 vectors or fewer than 3 lines: the sentinels.
    CSSEMatrix narrow;
    narrow.Create(6, 100);
    narrow.Fill(3.0f);
    narrow.CalcMinMaxValues(&max, &min);
    EXPECT_EQ(max, kMaxSentinel);
    EXPECT_EQ(min, kMinSentinel);
    CSSEMatrix low;
    low.Create(100, 7);
    low.Fill(3.0f);
    low.CalcMinMaxValuesExcludeZero(&max, &min);
    EXPECT_EQ(max, kMaxSentinel);
    EXPECT_EQ(min, kMinSentinel);
}

TEST(FieldExtremes, ExcludeZeroSkipsItsOwnBandAroundZero)
{
    // Whole field: -0.002 < p < 0.002 is no data.
    CSSEMatrix m;
    m.Create(7, 8); // one searched line, one searched column (x = 3)
    m.Fill(0.0f);
    float max = 0.0f;
    float min = 0.0f;
    m.CalcMinMaxValuesExcludeZero(&max, &min);
    EXPECT_EQ(max, kMaxSentinel);
    EXPECT_EQ(min, kMinSentinel);
    m.SetPoint(3, 4, 0.0019f);
    m.SetPoint(3, 5, -0.0019f);
    m.CalcMinMaxValuesExcludeZero(&max, &min);
    EXPECT_EQ(max, kMaxSentinel);
    m.SetPoint(3, 6, 0.0021f);
    m.SetPoint(3, 7, -0.0021f);
    m.CalcMinMaxValuesExcludeZero(&max, &min);
    EXPECT_EQ(max, 0.0021f);
    EXPECT_EQ(min, -0.0021f);
    m.CalcMinMaxValues(&max, &min);
    EXPECT_EQ(max, 0.0021f);

    // Patch: -0.005 < p < 0.005 is no data. The patch (0 .. 13, 0 .. 15)
    // searches line 1 (rows 4 to 7) from (0 >> 2) + 1 to (15 >> 2) - 1,
    // excluded, and vectors 3 to 9.
    CSSEMatrix patch;
    patch.Create(14, 16);
    patch.Fill(0.0049f);
    patch.SetPoint(5, 6, -0.0049f);
    patch.CalcMinValueOfPatchExcludeZero(&min, 0, 13, 0, 15);
    EXPECT_EQ(min, kMinSentinel);
    patch.SetPoint(5, 5, 0.0051f);
    patch.CalcMinValueOfPatchExcludeZero(&min, 0, 13, 0, 15);
    EXPECT_EQ(min, 0.0051f);
    patch.CalcMinValueOfPatch(&min, 0, 13, 0, 15);
    EXPECT_EQ(min, -0.0049f);
}

TEST(FieldExtremes, PatchIsShrunkByALineAndThreeColumnsAtEachSide)
{
    // 20 x 24: six lines. The patch (2 .. 15, 5 .. 21) searches lines
    // (5 >> 2) + 1 = 2 to (21 >> 2) - 1 = 4 and vectors 2 + 3 = 5 to
    // 15 - 3 = 12, the ends excluded: rows 8 to 15, columns 5 to 11.
    CSSEMatrix m;
    m.Create(20, 24);
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 20; ++x) m.SetPoint(x, y, static_cast<float>(100 * y + x));
    float max = 0.0f;
    float min = 0.0f;
    m.CalcMaxValueOfPatch(&max, 2, 15, 5, 21);
    m.CalcMinValueOfPatch(&min, 2, 15, 5, 21);
    EXPECT_EQ(max, 100.0f * 15 + 11);
    EXPECT_EQ(min, 100.0f * 8 + 5);

    // Corners are clamped to the field first: x1 = 1000 acts as 19 and
    // y1 = 1000 as 23, so columns 3 to 15 of rows 4 to 15 are searched.
    m.CalcMaxValueOfPatch(&max, -50, 1000, 0, 1000);
    EXPECT_EQ(max, 100.0f * 15 + 15);

    // A window that shrinks to nothing gives the sentinel.
    m.CalcMaxValueOfPatch(&max, 0, 6, 0, 23);
    EXPECT_EQ(max, kMaxSentinel);
    m.CalcMinValueOfPatch(&min, 0, 19, 4, 11);
    EXPECT_EQ(min, kMinSentinel);
}

TEST(FieldExtremes, SearchEqualsAPlainScanOfItsWindow)
{
    std::mt19937 random(77);
    std::uniform_real_distribution<float> value(-10.0f, 10.0f);
    CSSEMatrix m;
    m.Create(23, 70);
    for (int row = 0; row < vek::test::StorageRows(m); ++row)
        for (int x = 0; x < 23; ++x) StoredLane(m, x, row) = random() % 4 == 0 ? 0.001f : value(random);

    // The window of the whole-field search: storage rows 4 .. 4 * SSESizeY - 5,
    // columns 3 .. SizeX - 4, padding lanes included.
    float wantMax = kMaxSentinel;
    float wantMin = kMinSentinel;
    float wantMaxData = kMaxSentinel;
    float wantMinData = kMinSentinel;
    for (int row = 4; row < 4 * (m.GetSSESizeY() - 1); ++row) {
        for (int x = 3; x < 20; ++x) {
            const float p = StoredLane(m, x, row);
            wantMax = std::max(wantMax, p);
            wantMin = std::min(wantMin, p);
            if (p > -0.002f && p < 0.002f) continue;
            wantMaxData = std::max(wantMaxData, p);
            wantMinData = std::min(wantMinData, p);
        }
    }
    float max = 0.0f;
    float min = 0.0f;
    m.CalcMinMaxValues(&max, &min);
    EXPECT_EQ(max, wantMax);
    EXPECT_EQ(min, wantMin);
    m.CalcMinMaxValuesExcludeZero(&max, &min);
    EXPECT_EQ(max, wantMaxData);
    EXPECT_EQ(min, wantMinData);
}

TEST(FieldBoundingBox, ScansStartWhereTheyStartAndEndAtTheRim)
{
    CSSEMatrix m;
    m.Create(8, 6);
    int minX = -1;
    int minY = -1;
    int maxX = -1;
    int maxY = -1;
    // No hit: maxX and maxY 0, minX and minY the last column and row.
    m.CalcBoundingBox(minX, minY, maxX, maxY, 0.5f, true);
    EXPECT_EQ(minX, 7);
    EXPECT_EQ(minY, 5);
    EXPECT_EQ(maxX, 0);
    EXPECT_EQ(maxY, 0);

    // A hit in column 0 and row 0 only is invisible to minX and minY, but
    // found by maxX and maxY.
    m.SetPoint(0, 0, 1.0f);
    m.CalcBoundingBox(minX, minY, maxX, maxY, 0.5f, true);
    EXPECT_EQ(minX, 7);
    EXPECT_EQ(minY, 5);
    EXPECT_EQ(maxX, 0);
    EXPECT_EQ(maxY, 0);

    m.SetPoint(7, 2, 1.0f); // the last column counts for maxX
    m.SetPoint(3, 4, 1.0f);
    m.CalcBoundingBox(minX, minY, maxX, maxY, 0.5f, true);
    EXPECT_EQ(minX, 3);
    EXPECT_EQ(minY, 2);
    EXPECT_EQ(maxX, 7);
    EXPECT_EQ(maxY, 4);

    // Below: v > p. The padding lanes (rows 6 and 7), set to 0, are no pixels.
    m.Fill(5.0f);
    for (int x = 0; x < 8; ++x) StoredLane(m, x, 6) = StoredLane(m, x, 7) = 0.0f;
    m.SetPoint(2, 3, 1.0f);
    m.CalcBoundingBox(minX, minY, maxX, maxY, 2.0f, false);
    EXPECT_EQ(minX, 2);
    EXPECT_EQ(minY, 3);
    EXPECT_EQ(maxX, 2);
    EXPECT_EQ(maxY, 3);

    // A field of one column and one row.
    CSSEMatrix dot;
    dot.Create(1, 1);
    dot.Fill(9.0f);
    dot.CalcBoundingBox(minX, minY, maxX, maxY, 0.5f, true);
    EXPECT_EQ(minX, 0);
    EXPECT_EQ(minY, 0);
    EXPECT_EQ(maxX, 0);
    EXPECT_EQ(maxY, 0);
}

} // namespace
