#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllLanes;
using vek::test::FillLanes;
using vek::test::StorageRows;
using vek::test::StoredLane;
using vek::test::Tag;

TEST(CSSEMatrixPixels, ReadsClampEachCoordinateToTheImageNotThePadding)
{
    CSSEMatrix m;
    m.Create(10, 10);
    FillLanes(m, Tag);
    EXPECT_EQ(m.GetPoint(-5, 1000), Tag(0, 9));
    EXPECT_EQ(m.GetPointValue(-5, 1000), Tag(0, 9));
    EXPECT_EQ(m.GetPoint(3, 10), Tag(3, 9)); // row 10 is a padding lane, never read
    EXPECT_EQ(m.GetPoint(12, 4), Tag(9, 4));
    EXPECT_EQ(m.GetPoint(6, 7), Tag(6, 7));
    EXPECT_EQ(m.GetPointAddress(20, -3), &StoredLane(m, 9, 0));
    EXPECT_EQ(m.GetPointAddress(4, 6), &StoredLane(m, 4, 6));
}

enum class Merge { Assign, Larger, Smaller };

struct FootprintCase {
    const char* name;
    void (CSSEMatrix::*write)(int, int, float);
    Merge merge;
    // The centre is clamped to lowX ... SizeX-1-highX and lowY ... SizeY-1-highY.
    int lowX, highX, lowY, highY;
    std::vector<std::pair<int, int>> offsets;
};

std::vector<std::pair<int, int>> Box(int reach)
{
    std::vector<std::pair<int, int>> offsets;
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) offsets.emplace_back(dx, dy);
    return offsets;
}

TEST(CSSEMatrixPixels, EachWriteClampsItsCentreSoThatTheFootprintMovesInward)
{
    const std::vector<std::pair<int, int>> cross{{0, -1}, {-1, 0}, {0, 0}, {1, 0}, {0, 1}};
    const FootprintCase cases[] = {
        {"SetPoint", &CSSEMatrix::SetPoint, Merge::Assign, 0, 0, 0, 0, {{0, 0}}},
        {"SetPointMax", &CSSEMatrix::SetPointMax, Merge::Larger, 0, 0, 0, 0, {{0, 0}}},
        {"SetPointMin", &CSSEMatrix::SetPointMin, Merge::Smaller, 0, 0, 0, 0, {{0, 0}}},
        {"SetPointAndLeftOfPoint", &CSSEMatrix::SetPointAndLeftOfPoint, Merge::Assign, 1, 0, 0, 0, {{-1, 0}, {0, 0}}},
        {"SetPointAndRightOfPoint", &CSSEMatrix::SetPointAndRightOfPoint, Merge::Assign, 0, 1, 0, 0, {{0, 0}, {1, 0}}},
        {"SetTriplePointMax", &CSSEMatrix::SetTriplePointMax, Merge::Larger, 1, 1, 0, 0, {{-1, 0}, {0, 0}, {1, 0}}},
        {"SetTriplePointMin", &CSSEMatrix::SetTriplePointMin, Merge::Smaller, 1, 1, 0, 0, {{-1, 0}, {0, 0}, {1, 0}}},
        {"SetCross", &CSSEMatrix::SetCross, Merge::Assign, 1, 1, 1, 1, cross},
        {"SetCrossMax", &CSSEMatrix::SetCrossMax, Merge::Larger, 1, 1, 1, 1, cross},
        {"SetCrossMin", &CSSEMatrix::SetCrossMin, Merge::Smaller, 1, 1, 1, 1, cross},
        {"Set3x3BoxPoint", &CSSEMatrix::Set3x3BoxPoint, Merge::Assign, 1, 1, 1, 1, Box(1)},
        {"Set3x3BoxPointMax", &CSSEMatrix::Set3x3BoxPointMax, Merge::Larger, 1, 1, 1, 1, Box(1)},
        {"Set3x3BoxPointMin", &CSSEMatrix::Set3x3BoxPointMin, Merge::Smaller, 1, 1, 1, 1, Box(1)},
        {"Set5x5BoxPointMax", &CSSEMatrix::Set5x5BoxPointMax, Merge::Larger, 2, 2, 2, 2, Box(2)},
        {"Set5x5BoxPointMin", &CSSEMatrix::Set5x5BoxPointMin, Merge::Smaller, 2, 2, 2, 2, Box(2)},
    };
    const int sizeX = 9, sizeY = 11; // storage row 11 is padding
    const auto pattern = [](int x, int row) { return static_cast<float>((7 * x + 3 * row) % 10); };
    const float v = 4.5f;

    CSSEMatrix m;
    m.Create(sizeX, sizeY);
    for (const FootprintCase& c : cases) {
        for (int x : {-100, -1, 0, 1, 2, 4, 6, 7, 8, 9, 50}) {
            for (int y : {-7, 0, 1, 2, 5, 8, 9, 10, 11, 40}) {
                SCOPED_TRACE(testing::Message() << c.name << "(" << x << ", " << y << ")");
                FillLanes(m, pattern);
                (m.*c.write)(x, y, v);

                const int cx = std::max(c.lowX, std::min(sizeX - 1 - c.highX, x));
                const int cy = std::max(c.lowY, std::min(sizeY - 1 - c.highY, y));
                std::vector<float> expected;
                for (int row = 0; row < StorageRows(m); ++row) {
                    for (int col = 0; col < sizeX; ++col) {
                        float value = pattern(col, row);
                        const bool touched = std::find(c.offsets.begin(), c.offsets.end(), std::make_pair(col - cx, row - cy)) != c.offsets.end();
                        if (touched) {
                            if (c.merge == Merge::Assign) value = v;
                            if (c.merge == Merge::Larger) value = value > v ? value : v;
                            if (c.merge == Merge::Smaller) value = value < v ? value : v;
                        }
                        expected.push_back(value);
                    }
                }
                ASSERT_EQ(AllLanes(m), expected);
            }
        }
    }
}

TEST(CSSEMatrixPixels, FillReachesThePaddingAndClearRowOneLaneOfOneRow)
{
    CSSEMatrix m;
    m.Create(5, 6); // rows 6 and 7 are padding
    m.Fill(3.0f);
    for (float lane : AllLanes(m)) ASSERT_EQ(lane, 3.0f);

    m.ClearRow(1, -1.0f);
    m.ClearRow(-8, 7.0f);  // clamps to row 0
    m.ClearRow(99, 9.0f);  // clamps to row 5, not to a padding lane
    for (int row = 0; row < StorageRows(m); ++row) {
        const float expected = row == 0 ? 7.0f : row == 1 ? -1.0f : row == 5 ? 9.0f : 3.0f;
        for (int x = 0; x < 5; ++x) ASSERT_EQ(StoredLane(m, x, row), expected) << x << ", " << row;
    }

    m.SetAllPixelValuesToZero();
    for (float lane : AllLanes(m)) ASSERT_EQ(lane, 0.0f);
}

TEST(CSSEMatrixPixels, FillMatrixWithProcessedRowCarriesThatRowDownIntoThePadding)
{
    struct Case {
        int sizeY;
        int rowProcessed;
        int carried; // the row whose values fill every storage row below it
    };
    const Case cases[] = {
        {13, 5, 5},    // mid-line: the rest of line 1, then whole lines
        {13, 7, 7},    // last lane of its line: whole lines only
        {13, 0, 0},
        {13, -3, 0},   // nothing finished yet: row 0 is carried
        {13, 100, 12}, // clamped to the last row; only padding follows
        {12, 11, 11},  // the last line is pure padding and is filled too
        {1, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "SizeY " << c.sizeY << ", RowProcessed " << c.rowProcessed);
        CSSEMatrix m;
        m.Create(3, c.sizeY);
        FillLanes(m, Tag);
        m.SetRowProcessed(c.rowProcessed);
        m.FillMatrixWithProcessedRow();
        EXPECT_EQ(m.GetRowProcessed(), c.rowProcessed);
        for (int row = 0; row < StorageRows(m); ++row)
            for (int x = 0; x < 3; ++x) ASSERT_EQ(StoredLane(m, x, row), Tag(x, std::min(row, c.carried))) << x << ", " << row;
    }

    CSSEMatrix empty;
    empty.Create(4, 0);
    FillLanes(empty, Tag);
    empty.FillMatrixWithProcessedRow(); // no rows: nothing to carry
    EXPECT_EQ(StoredLane(empty, 2, 1), Tag(2, 1));
}

TEST(CSSEMatrixPixels, PreciseReadInterpolatesInsideAndClampsItsCornerAtTheRim)
{
    // On a plane the bilinear weights reproduce the plane exactly (all
    // values below are exact binary fractions).
    CSSEMatrix plane;
    plane.Create(8, 7);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 8; ++x) plane.SetPoint(x, y, 1.0f + 2.0f * x + 8.0f * y);
    EXPECT_EQ(plane.GetPixelPreciseFloat(2.5f, 3.25f, false), 1.0f + 5.0f + 26.0f);
    EXPECT_EQ(plane.GetPixelPreciseFloat(4.75f, 1.5f, true), 1.0f + 9.5f + 12.0f);
    EXPECT_EQ(plane.GetPixelPreciseFloat(3.0f, 2.0f), 1.0f + 6.0f + 16.0f);

    // A field in which every pixel is told apart: p = 10 x + 100 y.
    CSSEMatrix m;
    m.Create(6, 5);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) m.SetPoint(x, y, 10.0f * x + 100.0f * y);
    // Below 1 the corner stays at 1 with weight 0: column and row 0 are never read.
    EXPECT_EQ(m.GetPixelPreciseFloat(0.5f, 2.0f), 10.0f + 200.0f);
    EXPECT_EQ(m.GetPixelPreciseFloat(-3.7f, 0.25f), 10.0f + 100.0f);
    // The far corner reaches the last column and row with weight up to 1.
    EXPECT_EQ(m.GetPixelPreciseFloat(4.75f, 2.0f), 47.5f + 200.0f);
    EXPECT_EQ(m.GetPixelPreciseFloat(5.0f, 4.0f), 50.0f + 400.0f);
    EXPECT_EQ(m.GetPixelPreciseFloat(9.3f, 30.0f), 50.0f + 400.0f);
    EXPECT_EQ(m.GetPixelPreciseFloat(1e30f, -1e30f), 50.0f + 100.0f);
    EXPECT_TRUE(std::isfinite(m.GetPixelPreciseFloat(std::numeric_limits<float>::quiet_NaN(), 2.0f)));

    // The four terms are added in the order corner, below, right, diagonal:
    // with weights of 1/4, (2.5e7 + 0.25) rounds back to 2.5e7, so this order
    // gives 0.25 where adding the two large terms first would give 0.5.
    CSSEMatrix order;
    order.Create(4, 4);
    order.SetPoint(1, 1, 1e8f);
    order.SetPoint(1, 2, 1.0f);
    order.SetPoint(2, 1, -1e8f);
    order.SetPoint(2, 2, 1.0f);
    EXPECT_EQ(order.GetPixelPreciseFloat(1.5f, 1.5f), 0.25f);
}

} // namespace
