#include <limits>

#include "fields/field_storage.h"
#include "support/unowned_alias.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/img_from_to_array.h"

namespace {

using namespace vek::test;

TEST(CSSEMatrixStorage, LinesBlocksAndPaddingFollowTheRowCount)
{
    // No rows: one line of padding; a multiple of 4: a whole line of padding;
    // 32 lines fit one block, the 33rd opens a second; the largest field.
    for (const auto& [sizeX, sizeY, lines, blocks] : {std::tuple{5, 0, 1, 1}, {5, 4, 2, 1}, {10, 124, 32, 1}, {10, 128, 33, 2}, {1, CSSEMatrix::kMaxSizeY, 8000, 250}}) {
        const CSSEMatrix m = Filled(sizeX, sizeY, 2.5f); // every lane lies inside a block (AddressSanitizer checks)
        ASSERT_EQ(std::pair(m.GetSSESizeY(), m.GetFields()), std::pair(lines, blocks)) << sizeY;
        for (int i = 0; i < lines; ++i) ASSERT_EQ(m.GetMatrixDataDirectly()[i], m.GetField(i / 32) + (i % 32) * sizeX) << sizeY << ", line " << i;
    }
}

TEST(CSSEMatrixStorage, CreateRefusesAssignmentSharesAndMoveHandsTheImageOver)
{
    CSSEMatrix m = FieldOf(7, 130, Tag); // two blocks
    m.SetRowProcessed(6);
    m.Create(7, 130); // no block is reused: the old image goes (leak checker)
    ExpectLanes(m, [](int, int) { return 0.0f; });
    EXPECT_THROW(m.Create(-1, 5), CInvalidArgException);
    EXPECT_THROW(m.CreateNoClear(1, CSSEMatrix::kMaxSizeY + 1), CInvalidArgException);
    EXPECT_EQ(m.GetSizeX(), 7) << "refused before anything changed";
    // The alias is never destroyed, so that only m releases the shared image.
    UnownedAlias<CSSEMatrix> alias;
    *alias = m;
    alias->SetPoint(1, 129, 9.0f);
    // A move takes image, spans and row state and leaves the source empty.
    m.GetFromToArray().CalcArray(m, 0, 6);
    CSSEMatrix target;
    target = std::move(m);
    EXPECT_EQ(std::pair(m.GetMatrixDataDirectly() == nullptr, m.GetFromToArray().GetNumEntries()), std::pair(true, 0));
    CSSEMatrix moved(std::move(target));
    EXPECT_EQ(std::tuple(moved.GetPoint(1, 129), moved.GetRowProcessed(), moved.GetFromToArray().GetNumEntries()), std::tuple(9.0f, 6, 33));
    // Releasing keeps the sizes of the image no longer held.
    moved.FreeImageMemoryOnly();
    moved.Fill(1.0f);
    EXPECT_EQ(moved.GetSSESizeY(), 33);
}

TEST(CSSEMatrixPixels, ReadsClampToTheImageAndWritesClampTheirCentreSoTheFootprintMovesInward)
{
    CSSEMatrix m = FieldOf(9, 11, Tag); // storage row 11 is padding
    EXPECT_EQ(m.GetPoint(-5, 1000), Tag(0, 10));
    EXPECT_EQ(m.GetPointAddress(20, -3), &Stored(m, 8, 0));

    enum Merge { Assign, Larger, Smaller };
    struct Write {
        void (CSSEMatrix::*write)(int, int, float);
        Merge merge;
        int left, right, reach; // columns left and right of the centre; rows up and down
        bool cross;
    };
    const Write writes[] = {
        {&CSSEMatrix::SetPoint, Assign, 0, 0, 0, false},        {&CSSEMatrix::SetPointMax, Larger, 0, 0, 0, false},
        {&CSSEMatrix::SetPointMin, Smaller, 0, 0, 0, false},    {&CSSEMatrix::SetPointAndLeftOfPoint, Assign, 1, 0, 0, false},
        {&CSSEMatrix::SetPointAndRightOfPoint, Assign, 0, 1, 0, false}, {&CSSEMatrix::SetTriplePointMax, Larger, 1, 1, 0, false},
        {&CSSEMatrix::SetTriplePointMin, Smaller, 1, 1, 0, false}, {&CSSEMatrix::SetCross, Assign, 1, 1, 1, true},
        {&CSSEMatrix::SetCrossMax, Larger, 1, 1, 1, true},      {&CSSEMatrix::SetCrossMin, Smaller, 1, 1, 1, true},
        {&CSSEMatrix::Set3x3BoxPoint, Assign, 1, 1, 1, false},  {&CSSEMatrix::Set3x3BoxPointMax, Larger, 1, 1, 1, false},
        {&CSSEMatrix::Set3x3BoxPointMin, Smaller, 1, 1, 1, false}, {&CSSEMatrix::Set5x5BoxPointMax, Larger, 2, 2, 2, false},
        {&CSSEMatrix::Set5x5BoxPointMin, Smaller, 2, 2, 2, false},
    };
    const auto pattern = [](int x, int row) { return static_cast<float>((7 * x + 3 * row) % 10); };
    for (const Write& w : writes) {
        for (int x : {-100, 0, 1, 2, 6, 7, 8, 50}) {
            for (int y : {-7, 0, 1, 2, 8, 9, 10, 11, 40}) {
                SCOPED_TRACE(testing::Message() << "write " << (&w - writes) << " at (" << x << ", " << y << ")");
                Replace(m, FieldOf(9, 11, pattern));
                (m.*w.write)(x, y, 4.5f);
                const int cx = std::clamp(x, w.left, 8 - w.right);
                const int cy = std::clamp(y, w.reach, 10 - w.reach);
                ExpectLanes(m, [&](int col, int row) {
                    const int dx = col - cx, dy = row - cy;
                    const float old = pattern(col, row), merged = w.merge == Assign ? 4.5f : w.merge == Larger ? std::max(old, 4.5f) : std::min(old, 4.5f);
                    return dx < -w.left || dx > w.right || std::abs(dy) > w.reach || (w.cross && dx != 0 && dy != 0) ? old : merged;
                });
            }
        }
    }
}

TEST(CSSEMatrixPixels, ClearRowAndProcessedRowFillReachOnlyTheirRows)
{
    CSSEMatrix m = Filled(5, 6, 3.0f);
    m.ClearRow(-8, 7.0f);
    m.ClearRow(99, 9.0f); // row 5, not a padding lane
    ExpectLanes(m, [](int, int row) { return row == 0 ? 7.0f : row == 5 ? 9.0f : 3.0f; });
    // The row RowProcessed, clamped, is carried into every storage row below
    // it: from mid-line, from the last lane of a line, before any row, past
    // the last row, and into a last line of pure padding.
    for (const auto& [sizeY, rowProcessed, carried] : {std::tuple{13, 5, 5}, {13, 7, 7}, {13, -3, 0}, {13, 100, 12}, {12, 11, 11}}) {
        Replace(m, FieldOf(3, sizeY, Tag));
        m.SetRowProcessed(rowProcessed);
        m.FillMatrixWithProcessedRow();
        ExpectLanes(m, [carried = carried](int x, int row) { return Tag(x, std::min(row, carried)); });
    }
}

TEST(CSSEMatrixPixels, PreciseReadInterpolatesAndClampsItsCornerToOneInside)
{
    // A plane, reproduced exactly at binary fractions. The corner is clamped
    // to 1 ... Size - 2: row and column 0 are never read, the last ones only
    // as the far corner.
    const CSSEMatrix m = FieldOf(6, 5, [](int x, int y) { return 10.0f * x + 100.0f * y; });
    EXPECT_EQ((std::vector<float>{m.GetPixelPreciseFloat(2.5f, 3.25f, true), m.GetPixelPreciseFloat(-3.7f, 0.25f), m.GetPixelPreciseFloat(4.75f, 4.5f), m.GetPixelPreciseFloat(1e30f, -1e30f)}),
              (std::vector<float>{25 + 325, 10 + 100, 47.5f + 400, 50 + 100}));
    EXPECT_TRUE(std::isfinite(m.GetPixelPreciseFloat(std::numeric_limits<float>::quiet_NaN(), 2.0f)));
    // The terms are added as corner, below, right, diagonal: with weights of
    // 1/4, 2.5e7 + 0.25 rounds back to 2.5e7, so this order gives 0.25 where
    // adding the two large terms first would give 0.5.
    const CSSEMatrix order = FieldOf(4, 4, [](int x, int y) { return y == 1 ? (x == 1 ? 1e8f : x == 2 ? -1e8f : 0.0f) : y == 2 && (x == 1 || x == 2) ? 1.0f : 0.0f; });
    EXPECT_EQ(order.GetPixelPreciseFloat(1.5f, 1.5f), 0.25f);
}

TEST(CSSEMatrixCopy, DeepCopyTakesEveryLaneOfEveryBlockAndNothingElse)
{
    // One block (a single transfer) and several (line by line), into fields
    // of no, another width, another height and the same size; an empty
    // source, and the field itself, change nothing.
    for (const auto& [sizeX, sizeY] : {std::pair{7, 3}, {10, 124}, {10, 128}, {3, 300}}) {
        for (const auto& [targetX, targetY] : {std::pair{0, 40}, {5, 40}, {sizeX, 40}, {sizeX, sizeY}}) {
            const CSSEMatrix src = FieldOf(sizeX, sizeY, Tag);
            CSSEMatrix dst = Filled(targetX, targetY, -4.0f);
            dst.SetRowProcessed(9);
            dst.CopyFromSSEMatrix(src);
            dst.CopyFromSSEMatrix(CSSEMatrix());
            dst.CopyFromSSEMatrix(dst);
            EXPECT_EQ(AllStored(dst), AllStored(src)) << sizeX << " x " << sizeY << " into " << targetX << " x " << targetY;
            EXPECT_EQ(std::pair(dst.GetSizeY(), dst.GetRowProcessed()), std::pair(sizeY, 9));
        }
    }
}

TEST(CSSEMatrixCopy, CenteredCopiesLayTheTwoCentresOnEachOther)
{
    // The shift is (src >> 1) - (dst >> 1) in each direction.
    for (const auto& [dstX, dstY, srcX, srcY, shiftX, shiftY] : {std::tuple{4, 4, 7, 6, 1, 1}, {5, 4, 8, 9, 2, 2}, {6, 3, 7, 4, 0, 1}}) {
        CSSEMatrix dst = Filled(dstX, dstY, -9.0f);
        dst.CopyFromSSEMatrixCentered(FieldOf(srcX, srcY, Tag));
        ExpectLanes(dst, [h = dstY, sx = shiftX, sy = shiftY](int x, int y) { return y < h ? Tag(x + sx, y + sy) : 0.0f; });
    }
    // The merging forms don't clear: 5 with a hole of 1 at (2, 2), shifted
    // by 1 onto 3 with a peak of 8 at (3, 3). A source narrower than the
    // field is not used; only the plain centred copy clears before it looks.
    const CSSEMatrix src = FromRows({"555555", "555555", "551555", "555555", "555555", "555555"});
    const CSSEMatrix narrow = Filled(3, 10, 9.0f);
    for (const bool maximum : {true, false}) {
        CSSEMatrix dst = FieldOf(4, 4, [](int x, int y) { return x == 3 && y == 3 ? 8.0f : 3.0f; });
        for (const CSSEMatrix* from : {&src, &narrow}) maximum ? dst.CopyFromSSEMatrixCenteredMaximum(*from) : dst.CopyFromSSEMatrixCenteredMinimum(*from);
        ExpectLanes(dst, [&](int x, int y) {
            const float here = x == 3 && y == 3 ? 8.0f : 3.0f, there = x == 1 && y == 1 ? 1.0f : 5.0f;
            return y >= 4 ? 3.0f : maximum ? std::max(here, there) : std::min(here, there);
        });
        dst.CopyFromSSEMatrixCentered(narrow);
        ExpectLanes(dst, [](int, int) { return 0.0f; });
    }
}

TEST(CSSEMatrixCopy, CopyFromMatrixReadsRowsAndColumnsDifferentlyWithAndWithoutImage)
{
    double values[3][3] = {{0.5, 1.5, 2.5}, {10.5, 11.5, 12.5}, {20.5, 21.5, 22.5}};
    double* rows[3] = {values[0], values[1], values[2]};
    // With an image: a = 2 source rows of b = 3 columns, pixel (j, i) = s[i][j].
    CSSEMatrix m = Filled(3, 2, 0.0f);
    m.CopyFromMatrix(rows, 2, 3);
    EXPECT_EQ(AllStored(m), (std::vector<float>{0.5f, 1.5f, 2.5f, 10.5f, 11.5f, 12.5f, 0, 0, 0, 0, 0, 0}));
    // Without: Create(b, a) = 3 x 2, then b = 3 source rows of a = 2 columns,
    // clamped, so source row 2 piles onto image row 1 and column 2 stays 0.
    m.Reset();
    m.CopyFromMatrix(rows, 2, 3);
    EXPECT_EQ(AllStored(m), (std::vector<float>{0.5f, 1.5f, 0, 20.5f, 21.5f, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(CImgFromToArray, SpansOfChangeAreFoundPerLineAndCombinedAroundARow)
{
    // 12 x 14: (14 + 3) >> 2 pairs, not SSESizeY; no change keeps (0, 999999).
    using Span = std::pair<int, int>;
    const auto coords = [](const CImgFromToArray& spans, int y, int h, Span range = {0, 999999}) {
        spans.GetFromToCoords(range.first, range.second, y, h);
        return range;
    };
    // Line 0: a plateau; line 1: a change inside the band of 0.005 and one on
    // it, which counts; line 2: a change that ends the forward scan and none
    // behind it for the backward scan; line 3: a padding lane counts too.
    CSSEMatrix m = WithPoints(12, 14, 0.0f, {{4, 1, 1}, {5, 1, 1}, {6, 1, 1}, {7, 1, 1}, {3, 4, 0.004f}, {6, 5, 0.005f}, {10, 10, 2}, {11, 10, 2}, {2, 15, 7}});
    CImgFromToArray& spans = m.GetFromToArray();
    spans.CalcArray(m, 0, 11);
    ASSERT_EQ(spans.GetNumEntries(), 4);
    const std::vector<Span> found{coords(spans, 0, 1), coords(spans, 1, 1), coords(spans, 2, 1), coords(spans, 3, 1)};
    EXPECT_EQ(found, (std::vector<Span>{{4, 8}, {6, 7}, {10, 999999}, {2, 3}}));
    spans.CalcArray(m, 5, 40); // columns outside left ... right, clamped, are not looked at
    EXPECT_EQ(coords(spans, 0, 1), Span(8, 999999));
    spans.CalcArray(m, 0, 6); // the change at the right end is left to the backward scan
    EXPECT_EQ(coords(spans, 1, 1), Span(0, 6));

    // Six lines with the pairs (i + 1, 10 + i). With h = 1, GetFromToCoords
    // takes y as a pair index (clamped) and IsPositionInArray as a row (5 is
    // in line 1, (2, 11)); a row outside the field lies in no span.
    Replace(m, FieldOf(20, 24, [](int x, int row) { return row % 4 == 0 && row < 24 && x > row / 4 && x <= 9 + row / 4 ? 1.0f : 0.0f; }));
    spans.CalcArray(m, 0, 19);
    EXPECT_EQ(coords(spans, 100, 1), Span(6, 15));
    EXPECT_EQ(coords(spans, -4, 1), Span(1, 10));
    EXPECT_EQ((std::vector<bool>{spans.IsPositionInArray(1, 5, 1), spans.IsPositionInArray(2, 5, 1), spans.IsPositionInArray(11, 5, 1),
                                 spans.IsPositionInArray(12, 5, 1), spans.IsPositionInArray(8, 24, 1), spans.IsPositionInArray(8, -1, 1)}),
              (std::vector<bool>{false, true, true, false, false, false}));
    // y = 10, h = 4: lines 6 >> 2 = 1 and 2, (2, 11) and (3, 12): their union
    // narrows the caller's range, a position must lie in each. No line at
    // all: an empty range, and every position inside.
    EXPECT_EQ(coords(spans, 10, 4), Span(2, 12));
    EXPECT_EQ(coords(spans, 10, 4, Span(5, 8)), Span(5, 8));
    EXPECT_EQ((std::vector<bool>{spans.IsPositionInArray(2, 10, 4), spans.IsPositionInArray(3, 10, 4), spans.IsPositionInArray(11, 10, 4),
                                 spans.IsPositionInArray(12, 10, 4), spans.IsPositionInArray(7, -10, 2)}),
              (std::vector<bool>{false, true, true, false, true}));
    EXPECT_EQ(coords(spans, 5, 0), Span(999999, 0));
    EXPECT_EQ(coords(CImgFromToArray(), 3, 1), Span(999999, 0));
}

// The operations with inner loops, on fields too small for them, released
// but still reporting a size, or never created: under the sanitizers this
// shows that none reaches outside its storage.
TEST(CSSEMatrixSmallFields, OperationsStayInsideTheStorage)
{
    CSSEMatrix other = Filled(2, 3, 7.0f);
    float v[2];
    int b[4];
    const std::function<void(CSSEMatrix&)> operations[] = {
        [&](CSSEMatrix& m) { m.EraseFrame(&other); m.EraseWithMatrixMax(&other, 3.0f); m.Stencil(other, 0.5f, 2.0f); },
        [&](CSSEMatrix& m) { m.CalcMinMaxValuesExcludeZero(&v[0], &v[1]); m.CalcMaxValueOfPatch(&v[0], -5, 50, -5, 50); },
        [&](CSSEMatrix& m) { m.CalcBoundingBox(b[0], b[1], b[2], b[3], 0.5f, false); },
        [&](CSSEMatrix& m) { m.SimpleMaximumFilter(); m.BoxFilter(other, true); m.MaskFilter(other, m, true); },
        [&](CSSEMatrix& m) { m.Chamfer(); m.ZhangSuen(0.5f); m.CalcDerivativeY(); CFilters::Median5x5(other, m, -3, 9, -3, 9); },
    };
    for (const auto& operation : operations) {
        for (const auto& [sizeX, sizeY] : {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 1}, {1, 5}, {2, 9}}) {
            CSSEMatrix m = Filled(sizeX, sizeY, 1.0f);
            operation(m);
            m.FreeImageMemoryOnly();
            operation(m);
            CSSEMatrix never;
            operation(never);
        }
    }
}

} // namespace
