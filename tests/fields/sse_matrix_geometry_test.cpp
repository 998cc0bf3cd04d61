#include <random>

#include "fields/field_storage.h"

namespace {

using namespace vek::test;

TEST(CSSEMatrixAreaFill, FillAreaMirrorsTheKeptLanesOfTheEdgeColumns)
{
    // The closing lines lane by lane, by the phase of y0 and y1: V is the
    // fill value, a number that lane of column x0 (first line) or x1 (last).
    constexpr int V = -1, N = -2;
    constexpr int kFirstLine[4][4] = {{V, V, V, V}, {V, V, V, 0}, {V, V, 1, 0}, {V, 2, 1, 0}};
    constexpr int kLastLine[4][4] = {{N, N, N, N}, {V, 2, 1, 0}, {V, V, 1, 0}, {V, V, V, 0}};
    // Every phase of both ends, lines apart and coinciding (the last line
    // wins), and rectangles reaching out: x1 is clamped to the last column,
    // which stays untouched; rows collapse onto the first or last line.
    for (const auto& [x0, x1] : {std::pair{1, 5}, {-3, 40}, {0, 1}, {4, 2}}) {
        for (int y0 = -2; y0 < 16; ++y0) {
            for (int y1 = y0; y1 < 18; ++y1) {
                CSSEMatrix field = FieldOf(7, 13, Tag);
                std::vector<float> expected = AllStored(field);
                const auto at = [&](int x, int row) -> float& { return expected[static_cast<std::size_t>(row * 7 + x)]; };
                const int c0 = std::clamp(x0, 0, 6), c1 = std::clamp(x1, 0, 6);
                const auto fillLine = [&](int line, const int (&lanes)[4], int edgeColumn) {
                    if (lanes[0] == N) return;
                    float vector[4];
                    for (int lane = 0; lane < 4; ++lane) vector[lane] = lanes[lane] == V ? 0.5f : at(edgeColumn, 4 * line + lanes[lane]);
                    for (int x = c0; x < c1; ++x)
                        for (int lane = 0; lane < 4; ++lane) at(x, 4 * line + lane) = vector[lane];
                };
                const int l0 = std::clamp(y0 >> 2, 0, 3), l1 = std::clamp(y1 >> 2, 0, 3);
                fillLine(l0, kFirstLine[y0 & 3], c0);
                fillLine(l1, kLastLine[y1 & 3], c1);
                for (int line = l0 + 1; line < l1; ++line) fillLine(line, kFirstLine[0], c0);
                field.FillArea(x0, y0, x1, y1, 0.5f);
                ASSERT_EQ(AllStored(field), expected) << "x " << x0 << " ... " << x1 << ", y " << y0 << " ... " << y1;
            }
        }
    }
}

TEST(CSSEMatrixAreaFill, ApproximateAndCylindricalFillsWriteWholeLinesAndTheFrameIsWiderAtTheFarSides)
{
    // FillAreaApprox on 6 x 30 (lines 0 ... 7): from the line after
    // (y0 >> 2) - 1 to before (y1 >> 2) + 1, both clamped first, so line 0
    // is never filled.
    for (const auto& [y0, y1, first, end] : {std::tuple{0, 29, 1, 7}, {9, 13, 2, 4}, {4, 4, 1, 2}, {3, 3, 1, 1}, {-20, 60, 1, 7}}) {
        CSSEMatrix m = FieldOf(6, 30, Tag);
        m.FillAreaApprox(1, y0, 4, y1, 2.0f);
        ExpectLanes(m, [first = first, end = end](int x, int row) { return row / 4 >= first && row / 4 < end && x >= 1 && x < 4 ? 2.0f : Tag(x, row); });
    }
    // Width 1 and step 1 over ten columns: radius 5, sampled at t = 4, 3,
    // ... -5, into lines (8 >> 2) - 1 = 1 up to before (12 >> 2) + 1 = 4.
    // Beyond the radius the root is of 0: r = 2 sampled at 0, -2, -4, -6.
    for (const bool negative : {false, true}) {
        CSSEMatrix m = FieldOf(12, 20, Tag);
        m.FillAreaZylindrical(0, 8, 10, 12, 1.0f, 1.0f, negative);
        ExpectLanes(m, [&](int x, int row) {
            const float height = std::sqrt(25.0f - static_cast<float>((4 - x) * (4 - x)));
            return row >= 4 && row < 16 && x < 10 ? (negative ? 0.0f - height : height) : Tag(x, row);
        });
        m.FillAreaZylindrical(0, 0, 4, 7, 2.0f, 1.0f, false);
        EXPECT_EQ(Stored(m, 0, 0), 2.0f);
        EXPECT_EQ(Stored(m, 3, 7), 0.0f);
    }
    // RemoveFrameArtefacts on 12 x 20 (lines 0 ... 5): nx columns on the
    // left and nx + 1 on the right, ny >> 2 lines at the top and one more at
    // the bottom.
    for (const auto& [nx, ny, left, right, top, bottom] : {std::tuple{4, 4, 4, 5, 1, 2}, {4, 3, 4, 5, 0, 1}, {-3, -8, 0, 0, 0, 0}, {20, 40, 12, 12, 6, 6}}) {
        CSSEMatrix m = FieldOf(12, 20, Tag);
        m.RemoveFrameArtefacts(nx, ny, 0.0f);
        ExpectLanes(m, [l = left, r = right, t = top, b = bottom](int x, int row) { return x < l || x >= 12 - r || row / 4 < t || row / 4 >= 6 - b ? 0.0f : Tag(x, row); });
    }
}

TEST(CSSEMatrixScans, ColumnScansKeepTheirMarginsAndRowScansReturnTheEndWithoutAHit)
{
    // FindFirstPoint on 50 x 60 looks at columns 20 ... 29, lines 5 ... 10
    // (rows 20 ... 43), column by column, and counts a pixel equal to t.
    int at[2] = {7, 7};
    CSSEMatrix m = WithPoints(50, 60, 0.0f, {{19, 30, 2}, {30, 30, 2}, {25, 19, 2}, {25, 44, 2}});
    m.FindFirstPoint(at[0], at[1], 1.0f, true);
    EXPECT_EQ(std::vector<int>(at, at + 2), (std::vector<int>{0, 0})) << "hits in the margin only";
    Replace(m, WithPoints(50, 60, 0.0f, {{19, 30, 2}, {30, 30, 2}, {25, 19, 2}, {25, 44, 2}, {22, 38, 1}, {22, 39, 3}, {26, 21, 3}}));
    m.FindFirstPoint(at[0], at[1], 1.0f, true);
    EXPECT_EQ(std::vector<int>(at, at + 2), (std::vector<int>{22, 38})) << "the first column, then the lowest lane";

    // FindFirstPointLined on 6 x 30 climbs from line 6 to line 2 (rows 27
    // ... 8), strictly beyond t, to the lowest lane of the first line that
    // hits; 0 without a hit or outside the field.
    Replace(m, FieldOf(6, 30, [](int x, int y) { return x != 3 ? 0.0f : y == 28 || y == 7 ? 9.0f : y == 9 || y == 22 || y == 23 ? 5.0f : y == 25 ? 4.0f : 0.0f; }));
    for (const auto& [x, t, above, y] : {std::tuple{3, 5.5f, true, 0}, {3, 4.0f, true, 22}, {3, 4.5f, false, 24}, {6, -1.0f, true, 0}}) {
        m.FindFirstPointLined(x, at[1], t, above);
        EXPECT_EQ(at[1], y) << x << ", " << t;
    }

    // Along a row, from the first argument to the second, both included;
    // equal is no hit; the row is clamped; positions outside read the rim.
    Replace(m, FieldOf(10, 5, [](int x, int y) { return static_cast<float>(y == 2 ? x : 10 - x); }));
    EXPECT_EQ((std::vector<int>{m.FindPointFromLeft(5, 9, 2, 5.0f, true), m.FindPointFromLeft(0, 4, 2, 4.5f, true), m.FindPointFromLeft(0, 9, 100, 4.5f, false),
                                m.FindPointFromRight(9, 6, 2, 4.5f, false), m.FindPointFromRight(2, 7, 2, 0.0f, true), m.FindPointFromLeft(-3, 9, 2, 0.5f, false),
                                m.FindPointFromRight(15, 0, 2, 4.5f, false), m.FindPointFromLeft(-2000000000, 2000000000, 2, 100.0f, true)}),
              (std::vector<int>{6, 4, 6, 6, 7, -3, 4, 2000000000}));
}

// A 3 x 40 field: lines 0 ... 9 hold image rows, line 10 is padding. All
// tags lie below 50000 but that of row 17, when asked for.
CSSEMatrix ColumnField(bool peakAtRow17)
{
    return FieldOf(3, 40, [&](int x, int row) { return peakAtRow17 && row == 17 ? 90000.0f : Tag(x, row); });
}

// Column 1 holds 7 in rows firstRow ... endRow - 1 but the kept ones; all
// else is as ColumnField made it.
void ExpectPainted(const CSSEMatrix& m, bool peak, int firstRow, int endRow, std::vector<int> kept = {})
{
    const CSSEMatrix original = ColumnField(peak);
    ExpectLanes(m, [&](int x, int row) {
        const bool painted = x == 1 && row >= firstRow && row < endRow && std::find(kept.begin(), kept.end(), row) == kept.end();
        return painted ? 7.0f : Stored(original, x, row);
    });
}

TEST(CSSEMatrixScans, DrawFirstPointLinedPaintsWholeLinesUpToTheFirstHit)
{
    // y stays -5 without a hit; from line 9 the paint goes up to the line
    // after (clamp(yStop) >> 2) + 1: the hit in line 4 stops it below; a
    // stop at 13 ends at line 5, a negative one counts as 0 (line 2), one
    // past the field as 39, where no line is left; equal to t is no hit.
    for (const auto& [peak, t, yStop, y, firstRow, endRow] : {std::tuple{true, 50000.0f, 0, 16, 20, 40}, {false, 0.0f, 13, -5, 20, 40},
                                                               {false, 0.0f, -10, -5, 8, 40}, {false, 0.0f, 1000, -5, 0, 0}, {false, Tag(1, 36), 29, -5, 36, 40}}) {
        CSSEMatrix m = ColumnField(peak);
        int hit = -5;
        m.DrawFirstPointLined(1, t, peak, 7.0f, hit, yStop);
        m.DrawFirstPointLined(3, 0.0f, false, 7.0f, hit, 0); // outside the field: ignored
        EXPECT_EQ(hit, y) << t << " from " << yStop;
        ExpectPainted(m, peak, firstRow, endRow);
    }
}

// Both kinds of mask, with the same pixels set, protect the same pixels but
// don't stop the scan; a mask of another size leaves field and y alone.
template <class Mask, class Value>
void ExpectMaskProtects(Value set, Value tiny)
{
    CSSEMatrix m = ColumnField(true);
    // Row 25 and, above the hit, (1, 10) are set; (1, 30) barely.
    Mask mask = FieldOf<Mask>(3, 40, [&](int x, int row) { return row == 25 || (x == 1 && row == 10) ? set : x == 1 && row == 30 ? tiny : Value{}; });
    int y = -5;
    m.DrawFirstPointLinedUseMask(1, 50000.0f, true, 7.0f, y, mask, 0);
    EXPECT_EQ(y, 16);
    ExpectPainted(m, true, 20, 40, {25, 30});
    for (const auto& [sizeX, sizeY] : {std::pair{3, 39}, {4, 40}}) {
        mask.Create(sizeX, sizeY);
        Replace(m, ColumnField(false));
        m.DrawFirstPointLinedUseMask(1, 0.0f, false, 7.0f, y, mask, 0);
        EXPECT_EQ(y, 16);
        ExpectPainted(m, false, 0, 0);
    }
}

TEST(CSSEMatrixScans, TheMaskProtectsItsPixelsFromPaintingButDoesNotStopTheScan)
{
    ExpectMaskProtects<CSSEMatrix>(1.0f, -0.001f);
    ExpectMaskProtects<CSSEcharMatrix>(static_cast<char>(1), static_cast<char>(-128));
}

TEST(CSSEMatrixResampling, EveryPixelIsTheBilinearBlendSummedInItsFixedOrder)
{
    // Up, down, mixed, one pixel, the same size, and fields of several blocks.
    std::mt19937 random(11);
    std::uniform_real_distribution<float> value(-100.0f, 100.0f);
    for (const auto& [oldX, oldY, newX, newY] : {std::tuple{7, 5, 13, 9}, {13, 9, 5, 3}, {6, 11, 17, 4}, {4, 4, 1, 1}, {1, 1, 3, 6}, {6, 9, 6, 9}, {9, 130, 5, 70}, {3, 40, 4, 131}}) {
        for (auto scale : {&CSSEMatrix::ScaleMatrix, &CSSEMatrix::ScaleMatrix_SSE}) {
            SCOPED_TRACE(testing::Message() << oldX << " x " << oldY << " to " << newX << " x " << newY);
            const CSSEMatrix old = FieldOf(oldX, oldY, [&](int, int) { return value(random); });
            CSSEMatrix m = CopyOf(old);
            m.SetRowProcessed(3);
            (m.*scale)(newX, newY);
            ASSERT_EQ(std::tuple(m.GetSizeX(), m.GetSizeY(), m.GetRowProcessed()), std::tuple(newX, newY, 3));
            // New pixel (x, y) lies at (x * sx, y * sy) of the old image; the
            // neighbours right and below are read clamped; the four terms are
            // summed left to right. The padding is cleared.
            const float sx = static_cast<float>(oldX) / static_cast<float>(newX), sy = static_cast<float>(oldY) / static_cast<float>(newY);
            ExpectLanes(m, [&, newY = newY](int x, int y) {
                const float fx = static_cast<float>(x) * sx, fy = static_cast<float>(y) * sy;
                const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
                const float tx = fx - static_cast<float>(ix), ty = fy - static_cast<float>(iy);
                const auto p = [&](int i, int j) { return old.GetPoint(i, j); };
                return y >= newY ? 0.0f : (1 - tx) * p(ix, iy) * (1 - ty) + p(ix + 1, iy) * tx * (1 - ty) + (1 - tx) * p(ix, iy + 1) * ty + p(ix + 1, iy + 1) * tx * ty;
            });
        }
    }
    // Sizes that cannot be a field leave it alone.
    CSSEMatrix m = Filled(3, 3, 1.0f);
    __m128** lines = m.GetMatrixDataDirectly();
    m.ScaleMatrix(-1, 4);
    m.ScaleMatrix_SSE(4, CSSEMatrix::kMaxSizeY + 1);
    EXPECT_EQ(m.GetMatrixDataDirectly(), lines);
}

TEST(CSSEMatrixResizing, NewColumnsRepeatTheRimPixelOfRowZeroAndAFrameSurroundsTheShiftedImage)
{
    // Old columns come over whole, padding lanes included.
    for (const bool left : {true, false}) {
        CSSEMatrix m = FieldOf(4, 6, Tag);
        left ? m.ElongateLeft(3) : m.ElongateRight(3);
        ASSERT_EQ(m.GetSizeX(), 7);
        ExpectLanes(m, [&, shift = left ? 3 : 0](int x, int row) { return x - shift >= 0 && x - shift < 4 ? Tag(x - shift, row) : Tag(left ? 0 : 3, 0); });
    }
    // Two rows down: every pixel changes lane; the old padding lanes (rows
    // 5 on) stay behind. Impossible frames and counts change nothing.
    CSSEMatrix m = FieldOf(3, 5, Tag);
    m.EmbedinValueFrame(2, 1, -1.0f);
    m.EmbedinValueFrame(-1, 1, 0.0f);
    m.EmbedinValueFrame(CSSEMatrix::kMaxSizeY, 0, 0.0f);
    m.ElongateRight(-2);
    ASSERT_EQ(std::pair(m.GetSizeX(), m.GetSizeY()), std::pair(5, 9));
    ExpectLanes(m, [](int x, int row) { return x >= 1 && x <= 3 && row >= 2 && row <= 6 ? Tag(x - 1, row - 2) : -1.0f; });
}

} // namespace
