#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllLanes;
using vek::test::FillLanes;
using vek::test::StorageRows;
using vek::test::StoredLane;
using vek::test::Tag;

constexpr int V = -1; // the lane takes the fill value
constexpr int N = -2; // the line is not written

// The closing lines of FillArea, lane by lane, as the field's users know
// them: either the fill value or the named lane of the edge column.
constexpr int kFirstLine[4][4] = {{V, V, V, V}, {V, V, V, 0}, {V, V, 1, 0}, {V, 2, 1, 0}};
constexpr int kLastLine[4][4] = {{N, N, N, N}, {V, 2, 1, 0}, {V, V, 1, 0}, {V, V, V, 0}};

int Clamp(int v, int low, int high)
{
    return std::max(low, std::min(high, v));
}

// FillArea on a copy of the lanes, step by step from the two tables.
std::vector<float> ExpectedFillArea(const CSSEMatrix& m, int x0, int y0, int x1, int y1, float v)
{
    std::vector<float> lanes = AllLanes(m);
    const int width = m.GetSizeX();
    const auto at = [&](int x, int row) -> float& { return lanes[static_cast<std::size_t>(row * width + x)]; };
    const int c0 = Clamp(x0, 0, width - 1);
    const int c1 = Clamp(x1, 0, width - 1);
    const auto closeLine = [&](int line, const int (&table)[4], int edgeColumn) {
        if (table[0] == N) return;
        float vector[4];
        for (int lane = 0; lane < 4; ++lane) vector[lane] = table[lane] == V ? v : at(edgeColumn, 4 * line + table[lane]);
        for (int x = c0; x < c1; ++x)
            for (int lane = 0; lane < 4; ++lane) at(x, 4 * line + lane) = vector[lane];
    };
    const int l0 = Clamp(y0 >> 2, 0, m.GetSSESizeY() - 1);
    const int l1 = Clamp(y1 >> 2, 0, m.GetSSESizeY() - 1);
    closeLine(l0, kFirstLine[y0 & 3], c0);
    closeLine(l1, kLastLine[y1 & 3], c1);
    for (int line = l0 + 1; line < l1; ++line)
        for (int x = c0; x < c1; ++x)
            for (int lane = 0; lane < 4; ++lane) at(x, 4 * line + lane) = v;
    return lanes;
}

TEST(CSSEMatrixAreaFill, FillAreaMirrorsTheKeptLanesOfTheEdgeColumns)
{
    // Every phase of both ends, lines apart and coinciding (there the last
    // line wins: FillArea(0, 1, 3, 1, v) leaves (v, old 2, old 1, old 0) of
    // column 3 in line 0), and rectangles reaching out of the field (x1 is
    // clamped to the last column, which thus stays untouched; rows collapse
    // onto the first or last line).
    struct Columns {
        int x0, x1;
    };
    for (Columns columns : {Columns{1, 5}, Columns{-3, 40}, Columns{0, 1}, Columns{4, 2}}) {
        for (int y0 = -2; y0 < 16; ++y0) {
            for (int y1 = y0; y1 < 18; ++y1) {
                SCOPED_TRACE(testing::Message() << "x " << columns.x0 << " ... " << columns.x1 << ", y " << y0 << " ... " << y1);
                CSSEMatrix field;
                field.Create(7, 13);
                FillLanes(field, Tag);
                const std::vector<float> expected = ExpectedFillArea(field, columns.x0, y0, columns.x1, y1, 0.5f);
                field.FillArea(columns.x0, y0, columns.x1, y1, 0.5f);
                ASSERT_EQ(AllLanes(field), expected);
            }
        }
    }
}

TEST(CSSEMatrixAreaFill, FillAreaApproxCoversWholeLinesAndNeverLineZero)
{
    struct Case {
        int y0, y1;
        int firstLine, endLine; // by hand
    };
    // A 6 x 30 field has lines 0 ... 7.
    const Case cases[] = {
        {0, 29, 1, 7},  // (0 >> 2) - 1 clamps to 0, the fill starts after it; (29 >> 2) + 1 = 8 clamps to 7
        {9, 13, 2, 4},  // rows 8 ... 15: the rectangle grows to whole lines
        {8, 8, 2, 3},   // a single row fills its whole line
        {4, 4, 1, 2},   // line 1 is the first that can be filled
        {3, 3, 1, 1},   // a rectangle in line 0 fills nothing
        {-20, 60, 1, 7} // clamped at both ends
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.y0 << " ... " << c.y1);
        CSSEMatrix m;
        m.Create(6, 30);
        FillLanes(m, Tag);
        m.FillAreaApprox(1, c.y0, 4, c.y1, 2.0f);
        for (int row = 0; row < StorageRows(m); ++row) {
            const bool lineFilled = row / 4 >= c.firstLine && row / 4 < c.endLine;
            for (int x = 0; x < 6; ++x) ASSERT_EQ(StoredLane(m, x, row), lineFilled && x >= 1 && x < 4 ? 2.0f : Tag(x, row)) << x << ", " << row;
        }
    }
}

TEST(CSSEMatrixAreaFill, FillAreaZylindricalLaysAHalfCylinderAlongY)
{
    for (bool negative : {false, true}) {
        CSSEMatrix m;
        m.Create(12, 20);
        FillLanes(m, Tag);
        // Width 1 and step 1 over ten columns: radius 5, sampled at t = 4, 3, ... -5.
        // Lines (8 >> 2) - 1 = 1 up to but not including (12 >> 2) + 1 = 4.
        m.FillAreaZylindrical(0, 8, 10, 12, 1.0f, 1.0f, negative);
        for (int row = 0; row < StorageRows(m); ++row) {
            for (int x = 0; x < 12; ++x) {
                const float t = static_cast<float>(4 - x);
                const float height = std::sqrt(25.0f - t * t);
                const bool written = row >= 4 && row < 16 && x < 10;
                ASSERT_EQ(StoredLane(m, x, row), written ? (negative ? -height : height) : Tag(x, row)) << x << ", " << row;
            }
        }
    }

    // Samples beyond the radius take the root of 0; x0 not below x1 writes nothing.
    CSSEMatrix m;
    m.Create(8, 8);
    FillLanes(m, Tag);
    m.FillAreaZylindrical(0, 0, 4, 7, 2.0f, 1.0f, false); // r = 2; t = 0, -2, -4, -6
    m.FillAreaZylindrical(6, 0, 2, 7, 1.0f, 1.0f, false);
    EXPECT_EQ(StoredLane(m, 0, 0), 2.0f);
    EXPECT_EQ(StoredLane(m, 3, 7), 0.0f);
    EXPECT_EQ(StoredLane(m, 0, 8), Tag(0, 8)) << "line 2 is (7 >> 2) + 1, the first one not written";
    EXPECT_EQ(StoredLane(m, 6, 0), Tag(6, 0));
}

TEST(CSSEMatrixAreaFill, FrameArtefactsAreOneColumnAndOneLineWiderOnTheFarSides)
{
    struct Case {
        int nx, ny;
        int leftColumns, rightColumns, topLines, bottomLines; // by hand, on 12 x 20 (lines 0 ... 5)
    };
    const Case cases[] = {
        {4, 4, 4, 5, 1, 2},
        {4, 3, 4, 5, 0, 1}, // three rows are no whole line at the top
        {0, 0, 0, 1, 0, 1},
        {-3, -8, 0, 0, 0, 0},
        {20, 40, 12, 12, 6, 6},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.nx << ", " << c.ny);
        CSSEMatrix m;
        m.Create(12, 20);
        FillLanes(m, Tag);
        m.RemoveFrameArtefacts(c.nx, c.ny, 0.0f);
        for (int row = 0; row < StorageRows(m); ++row) {
            for (int x = 0; x < 12; ++x) {
                const int line = row / 4;
                const bool frame = x < c.leftColumns || x >= 12 - c.rightColumns || line < c.topLines || line >= 6 - c.bottomLines;
                ASSERT_EQ(StoredLane(m, x, row), frame ? 0.0f : Tag(x, row)) << x << ", " << row;
            }
        }
    }
}

} // namespace
