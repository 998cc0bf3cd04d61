#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "fields/field_storage.h"
#include "support/unowned_alias.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllStored;
using vek::test::FillStorage;
using vek::test::Stored;
using vek::test::StorageRows;
using vek::test::Tag;

TEST(CSSEMatrixStorage, LinesBlocksAndPaddingFollowTheRowCount)
{
    struct Geometry {
        int sizeX, sizeY, lines, blocks;
    };
    const Geometry cases[] = {
        {5, 0, 1, 1},                         // no rows: one line of padding
        {5, 4, 2, 1},                         // a multiple of 4: the whole last line is padding
        {10, 124, 32, 1},                     // 32 lines still fit one block
        {10, 128, 33, 2},                     // the 33rd line opens a second block of one line
        {3, 256, 65, 3},
        {1, CSSEMatrix::kMaxSizeY, 8000, 250}, // the largest field the block table holds
    };
    for (const Geometry& g : cases) {
        SCOPED_TRACE(testing::Message() << g.sizeX << " x " << g.sizeY);
        CSSEMatrix m;
        m.Create(g.sizeX, g.sizeY);
        ASSERT_EQ(m.GetSSESizeY(), g.lines);
        ASSERT_EQ(m.GetFields(), g.blocks);
        for (int i = 0; i < g.lines; ++i) ASSERT_EQ(m.GetMatrixDataDirectly()[i], m.GetField(i / 32) + (i % 32) * g.sizeX) << "line " << i;
        // Every lane of the last line lies inside the last block (AddressSanitizer checks).
        m.Fill(2.5f);
        for (float lane : AllStored(m)) ASSERT_EQ(lane, 2.5f);
    }
}

TEST(CSSEMatrixStorage, CreateRefusesReleasesAndTheImageChangesHandsOnlyByMove)
{
    CSSEMatrix m;
    m.CreateNoClear(7, 130); // two blocks
    FillStorage(m, Tag);
    m.SetRowProcessed(6);
    m.Create(7, 130); // no block is reused: the old image goes (leak checker)
    for (float lane : AllStored(m)) ASSERT_EQ(lane, 0.0f);
    EXPECT_EQ(m.GetRowProcessed(), 6);

    // Impossible sizes are refused before anything changes.
    m.SetPoint(1, 129, 8.0f);
    EXPECT_THROW(m.Create(-1, 5), CInvalidArgException);
    EXPECT_THROW(m.Create(5, -1), CInvalidArgException);
    EXPECT_THROW(m.CreateNoClear(1, CSSEMatrix::kMaxSizeY + 1), CInvalidArgException);
    EXPECT_EQ(m.GetPoint(1, 129), 8.0f);

    // Assignment shares the image. The alias is never destroyed, so that only
    // m releases it.
    vek::test::UnownedAlias<CSSEMatrix> alias;
    *alias = m;
    alias->SetPoint(1, 129, 9.0f);
    EXPECT_EQ(m.GetPoint(1, 129), 9.0f);

    // A move hands over image, spans and row state, releasing the target's
    // own image, and leaves the source empty but usable.
    m.GetFromToArray().CalcArray(m, 0, 6);
    CSSEMatrix target;
    target.Create(3, 3);
    target = std::move(m);
    EXPECT_EQ(target.GetPoint(1, 129), 9.0f);
    EXPECT_EQ(target.GetRowProcessed(), 6);
    EXPECT_EQ(target.GetFromToArray().GetNumEntries(), 33);
    EXPECT_EQ(m.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(m.GetSizeX(), 0);
    EXPECT_EQ(m.GetFromToArray().GetNumEntries(), 0);
    CSSEMatrix moved(std::move(target));
    m = std::move(moved);
    EXPECT_EQ(m.GetPoint(1, 129), 9.0f);

    // Releasing keeps the sizes of the image no longer held; Reset forgets them.
    m.FreeImageMemoryOnly();
    EXPECT_EQ(m.GetFields(), 0);
    EXPECT_EQ(m.GetSSESizeY(), 33);
    m.Fill(1.0f); // without an image: nothing to write
    m.Reset();
    EXPECT_EQ(m.GetSizeY(), 0);
    EXPECT_EQ(m.GetSSESizeY(), 0);
    EXPECT_EQ(m.GetRowProcessed(), 0);
}

enum class Merge { Assign, Larger, Smaller };

std::vector<std::pair<int, int>> Box(int reach, bool crossOnly = false)
{
    std::vector<std::pair<int, int>> offsets;
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            if (!crossOnly || dx == 0 || dy == 0) offsets.emplace_back(dx, dy);
    return offsets;
}

TEST(CSSEMatrixPixels, ReadsClampToTheImageAndWritesClampTheirCentreSoTheFootprintMovesInward)
{
    CSSEMatrix m;
    m.Create(9, 11); // storage row 11 is padding
    FillStorage(m, Tag);
    EXPECT_EQ(m.GetPoint(-5, 1000), Tag(0, 10)); // never the padding lane
    EXPECT_EQ(m.GetPoint(12, 4), Tag(8, 4));
    EXPECT_EQ(m.GetPointAddress(20, -3), &Stored(m, 8, 0));

    struct Write {
        const char* name;
        void (CSSEMatrix::*write)(int, int, float);
        Merge merge;
        int lowX, highX; // the centre is clamped to lowX ... SizeX-1-highX
        std::vector<std::pair<int, int>> offsets;
    };
    const std::vector<std::pair<int, int>> row{{-1, 0}, {0, 0}, {1, 0}};
    const Write writes[] = {
        {"SetPoint", &CSSEMatrix::SetPoint, Merge::Assign, 0, 0, {{0, 0}}},
        {"SetPointMax", &CSSEMatrix::SetPointMax, Merge::Larger, 0, 0, {{0, 0}}},
        {"SetPointMin", &CSSEMatrix::SetPointMin, Merge::Smaller, 0, 0, {{0, 0}}},
        {"SetPointAndLeftOfPoint", &CSSEMatrix::SetPointAndLeftOfPoint, Merge::Assign, 1, 0, {{-1, 0}, {0, 0}}},
        {"SetPointAndRightOfPoint", &CSSEMatrix::SetPointAndRightOfPoint, Merge::Assign, 0, 1, {{0, 0}, {1, 0}}},
        {"SetTriplePointMax", &CSSEMatrix::SetTriplePointMax, Merge::Larger, 1, 1, row},
        {"SetTriplePointMin", &CSSEMatrix::SetTriplePointMin, Merge::Smaller, 1, 1, row},
        {"SetCross", &CSSEMatrix::SetCross, Merge::Assign, 1, 1, Box(1, true)},
        {"SetCrossMax", &CSSEMatrix::SetCrossMax, Merge::Larger, 1, 1, Box(1, true)},
        {"SetCrossMin", &CSSEMatrix::SetCrossMin, Merge::Smaller, 1, 1, Box(1, true)},
        {"Set3x3BoxPoint", &CSSEMatrix::Set3x3BoxPoint, Merge::Assign, 1, 1, Box(1)},
        {"Set3x3BoxPointMax", &CSSEMatrix::Set3x3BoxPointMax, Merge::Larger, 1, 1, Box(1)},
        {"Set3x3BoxPointMin", &CSSEMatrix::Set3x3BoxPointMin, Merge::Smaller, 1, 1, Box(1)},
        {"Set5x5BoxPointMax", &CSSEMatrix::Set5x5BoxPointMax, Merge::Larger, 2, 2, Box(2)},
        {"Set5x5BoxPointMin", &CSSEMatrix::Set5x5BoxPointMin, Merge::Smaller, 2, 2, Box(2)},
    };
    const auto pattern = [](int x, int row) { return static_cast<float>((7 * x + 3 * row) % 10); };
    const float v = 4.5f;
    for (const Write& w : writes) {
        // Rows are clamped like columns: by the footprint's reach up and down.
        const int lowY = std::max(0, -w.offsets.front().second);
        for (int x : {-100, 0, 1, 2, 6, 7, 8, 50}) {
            for (int y : {-7, 0, 1, 2, 8, 9, 10, 11, 40}) {
                SCOPED_TRACE(testing::Message() << w.name << "(" << x << ", " << y << ")");
                FillStorage(m, pattern);
                (m.*w.write)(x, y, v);
                const int cx = std::clamp(x, w.lowX, 8 - w.highX);
                const int cy = std::clamp(y, lowY, 10 - lowY);
                vek::test::ExpectLanes(m, [&](int col, int r) {
                    const float old = pattern(col, r);
                    if (std::find(w.offsets.begin(), w.offsets.end(), std::pair(col - cx, r - cy)) == w.offsets.end()) return old;
                    return w.merge == Merge::Assign ? v : w.merge == Merge::Larger ? std::max(old, v) : std::min(old, v);
                });
            }
        }
    }
}

TEST(CSSEMatrixPixels, ClearRowAndProcessedRowFillReachOnlyTheirRows)
{
    CSSEMatrix m;
    m.Create(5, 6);
    m.Fill(3.0f);
    m.ClearRow(-8, 7.0f); // row 0
    m.ClearRow(99, 9.0f); // row 5, not a padding lane
    vek::test::ExpectLanes(m, [](int, int row) { return row == 0 ? 7.0f : row == 5 ? 9.0f : 3.0f; });

    // The row RowProcessed, clamped, is carried into every storage row below it.
    struct Case {
        int sizeY, rowProcessed, carried;
    };
    const Case cases[] = {
        {13, 5, 5},    // mid-line: the rest of line 1, then whole lines
        {13, 7, 7},    // last lane of its line: whole lines only
        {13, -3, 0},   // nothing finished yet: row 0 is carried
        {13, 100, 12}, // clamped to the last row; only padding follows
        {12, 11, 11},  // the last line is pure padding and is filled too
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "SizeY " << c.sizeY << ", RowProcessed " << c.rowProcessed);
        m.Create(3, c.sizeY);
        FillStorage(m, Tag);
        m.SetRowProcessed(c.rowProcessed);
        m.FillMatrixWithProcessedRow();
        vek::test::ExpectLanes(m, [&](int x, int row) { return Tag(x, std::min(row, c.carried)); });
    }
}

TEST(CSSEMatrixPixels, PreciseReadInterpolatesAndClampsItsCornerToOneInside)
{
    // p = 10 x + 100 y on 6 x 5 is a plane, which the bilinear weights
    // reproduce exactly at binary fractions.
    CSSEMatrix m;
    m.Create(6, 5);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) m.SetPoint(x, y, 10.0f * x + 100.0f * y);
    EXPECT_EQ(m.GetPixelPreciseFloat(2.5f, 3.25f, true), 25.0f + 325.0f);
    // Below 1 the corner stays at 1 with weight 0: column and row 0 are never read.
    EXPECT_EQ(m.GetPixelPreciseFloat(0.5f, 2.0f), 10.0f + 200.0f);
    EXPECT_EQ(m.GetPixelPreciseFloat(-3.7f, 0.25f), 10.0f + 100.0f);
    // The far corner reaches the last column and row with a weight up to 1.
    EXPECT_EQ(m.GetPixelPreciseFloat(4.75f, 2.0f), 47.5f + 200.0f);
    EXPECT_EQ(m.GetPixelPreciseFloat(9.3f, 30.0f), 50.0f + 400.0f);
    EXPECT_EQ(m.GetPixelPreciseFloat(1e30f, -1e30f), 50.0f + 100.0f);
    EXPECT_TRUE(std::isfinite(m.GetPixelPreciseFloat(std::numeric_limits<float>::quiet_NaN(), 2.0f)));

    // The terms are added as corner, below, right, diagonal: with weights of
    // 1/4, 2.5e7 + 0.25 rounds back to 2.5e7, so this order gives 0.25 where
    // adding the two large terms first would give 0.5.
    CSSEMatrix order;
    order.Create(4, 4);
    order.SetPoint(1, 1, 1e8f);
    order.SetPoint(1, 2, 1.0f);
    order.SetPoint(2, 1, -1e8f);
    order.SetPoint(2, 2, 1.0f);
    EXPECT_EQ(order.GetPixelPreciseFloat(1.5f, 1.5f), 0.25f);
}

TEST(CSSEMatrixCopy, DeepCopyTakesEveryLaneOfEveryBlockAndNothingElse)
{
    // One block (a single transfer), and several blocks (line by line).
    for (const auto& [sizeX, sizeY] : {std::pair{7, 3}, {10, 124}, {10, 128}, {3, 300}}) {
        for (const auto& [targetX, targetY] : {std::pair{0, 0}, {5, 40}, {sizeX, sizeY}}) {
            SCOPED_TRACE(testing::Message() << sizeX << " x " << sizeY << " into " << targetX << " x " << targetY);
            CSSEMatrix src;
            src.Create(sizeX, sizeY);
            FillStorage(src, Tag);
            src.SetRowProcessed(2);
            CSSEMatrix dst;
            if (targetX > 0) dst.Create(targetX, targetY);
            dst.Fill(-4.0f);
            dst.SetRowProcessed(9);
            dst.CopyFromSSEMatrix(src);
            EXPECT_EQ(dst.GetSizeY(), sizeY);
            EXPECT_NE(dst.GetMatrixDataDirectly(), src.GetMatrixDataDirectly());
            EXPECT_EQ(AllStored(dst), AllStored(src));
            EXPECT_EQ(dst.GetRowProcessed(), 9);

            // A source without an image, and the field itself, change nothing.
            __m128** lines = dst.GetMatrixDataDirectly();
            CSSEMatrix released;
            released.Create(8, 8);
            released.FreeImageMemoryOnly();
            dst.CopyFromSSEMatrix(released);
            dst.CopyFromSSEMatrix(dst);
            EXPECT_EQ(dst.GetMatrixDataDirectly(), lines);
            EXPECT_EQ(AllStored(dst), AllStored(src));
        }
    }
}

TEST(CSSEMatrixCopy, CenteredCopiesLayTheTwoCentresOnEachOther)
{
    struct Case {
        int dstX, dstY, srcX, srcY, shiftX, shiftY; // by hand: (src >> 1) - (dst >> 1)
    };
    for (const Case& c : {Case{4, 4, 7, 6, 1, 1}, Case{5, 4, 8, 9, 2, 2}, Case{6, 3, 7, 4, 0, 1}}) {
        SCOPED_TRACE(testing::Message() << c.dstX << " x " << c.dstY << " from " << c.srcX << " x " << c.srcY);
        CSSEMatrix src;
        src.Create(c.srcX, c.srcY);
        FillStorage(src, Tag);
        CSSEMatrix dst;
        dst.Create(c.dstX, c.dstY);
        dst.Fill(-9.0f);
        dst.CopyFromSSEMatrixCentered(src);
        for (int y = 0; y < c.dstY; ++y)
            for (int x = 0; x < c.dstX; ++x) ASSERT_EQ(dst.GetPoint(x, y), Tag(x + c.shiftX, y + c.shiftY));
    }

    // The merging forms don't clear: 5 with a hole of 1 at (2, 2), shifted
    // by 1 onto 3 with a peak of 8 at (3, 3).
    CSSEMatrix src;
    src.Create(6, 6);
    src.Fill(5.0f);
    src.SetPoint(2, 2, 1.0f);
    for (const bool maximum : {true, false}) {
        CSSEMatrix dst;
        dst.Create(4, 4);
        dst.Fill(3.0f);
        dst.SetPoint(3, 3, 8.0f);
        maximum ? dst.CopyFromSSEMatrixCenteredMaximum(src) : dst.CopyFromSSEMatrixCenteredMinimum(src);
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                const float here = x == 3 && y == 3 ? 8.0f : 3.0f;
                const float there = x == 1 && y == 1 ? 1.0f : 5.0f;
                ASSERT_EQ(dst.GetPoint(x, y), maximum ? std::max(here, there) : std::min(here, there)) << x << ", " << y;
            }
        }
        // A source narrower or lower than the field is not used; only the
        // plain centred copy has cleared the field before it looks.
        CSSEMatrix narrow;
        narrow.Create(3, 10);
        dst.Fill(2.0f);
        maximum ? dst.CopyFromSSEMatrixCenteredMaximum(narrow) : dst.CopyFromSSEMatrixCenteredMinimum(narrow);
        EXPECT_EQ(dst.GetPoint(3, 3), 2.0f);
        dst.CopyFromSSEMatrixCentered(narrow);
        EXPECT_EQ(dst.GetPoint(3, 3), 0.0f);
    }
}

TEST(CSSEMatrixCopy, CopyFromMatrixReadsRowsAndColumnsDifferentlyWithAndWithoutImage)
{
    // s[i][j] = 10 i + j + 0.1 over three rows of three values.
    std::vector<std::vector<double>> values(3, std::vector<double>(3));
    std::vector<double*> rows;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) values[i][j] = 10.0 * i + j + 0.1;
        rows.push_back(values[i].data());
    }
    const auto s = [](int i, int j) { return static_cast<float>(10.0 * i + j + 0.1); };

    // With an image: a = 2 source rows of b = 3 columns, pixel (j, i) = s[i][j].
    CSSEMatrix sized;
    sized.Create(3, 2);
    sized.CopyFromMatrix(rows.data(), 2, 3);
    EXPECT_EQ(vek::test::AllStored(sized), (std::vector<float>{s(0, 0), s(0, 1), s(0, 2), s(1, 0), s(1, 1), s(1, 2), 0, 0, 0, 0, 0, 0}));

    // Without: Create(b, a) = 3 x 2, then b = 3 source rows of a = 2 columns,
    // clamped, so source row 2 piles onto image row 1 and column 2 stays 0.
    CSSEMatrix fresh;
    fresh.CopyFromMatrix(rows.data(), 2, 3);
    ASSERT_EQ(fresh.GetSizeX(), 3);
    EXPECT_EQ(vek::test::AllStored(fresh), (std::vector<float>{s(0, 0), s(0, 1), 0, s(2, 0), s(2, 1), 0, 0, 0, 0, 0, 0, 0}));

    fresh.CopyFromMatrix(nullptr, 3, 3);
    EXPECT_EQ(fresh.GetPoint(0, 1), s(2, 0));
}

// Every arithmetic and filter operation on fields too small for its loops,
// on a field released but still reporting its size, and on one never
// created: under the sanitizers this shows that none reaches outside its
// storage.
TEST(CSSEMatrixSmallFields, OperationsStayInsideTheStorage)
{
    CSSEMatrix other;
    other.Create(2, 3);
    other.Fill(7.0f);
    const std::vector<std::function<void(CSSEMatrix&)>> operations{
        [](CSSEMatrix& m) { m.ReplaceLineAbove(0.5f, 2.0f, 3); },
        [](CSSEMatrix& m) { m.TresholdBelow(0.5f, 2.0f, 1); },
        [](CSSEMatrix& m) { m.EraseOtherValuePixels(1.0f, 0.1f); },
        [&](CSSEMatrix& m) { m.EraseWithMatrixMax(&other, 3.0f); },
        [&](CSSEMatrix& m) { m.EraseFrame(&other); },
        [&](CSSEMatrix& m) { m.EraseFrameWithMask(&other); },
        [&](CSSEMatrix& m) { m.Stencil(other, 0.5f, 2.0f); },
        [&](CSSEMatrix& m) { EXPECT_GE(m.NumValuesAbove(&other), 0); },
        [](CSSEMatrix& m) {
            float max = 0.0f;
            float min = 0.0f;
            m.CalcMinMaxValuesExcludeZero(&max, &min);
            m.CalcMaxValueOfPatch(&max, -5, 50, -5, 50);
            int box[4];
            m.CalcBoundingBox(box[0], box[1], box[2], box[3], 0.5f, false);
        },
        [](CSSEMatrix& m) { m.SimpleMaximumFilter(); },
        [](CSSEMatrix& m) { m.SimpleMedianFilter(); },
        [&](CSSEMatrix& m) { m.BoxFilter(other, true); },
        [&](CSSEMatrix& m) { m.MaskFilter(other, m, true); },
        [](CSSEMatrix& m) { m.Chamfer(); },
        [](CSSEMatrix& m) { m.ZhangSuen(0.5f); },
        [](CSSEMatrix& m) { m.CalcDerivativeY(); },
        [&](CSSEMatrix& m) { CFilters::Median5x5(other, m, -3, 9, -3, 9); },
    };
    for (std::size_t i = 0; i < operations.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "operation " << i);
        for (const auto& [sizeX, sizeY] : {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 1}, {1, 5}, {2, 9}}) {
            CSSEMatrix m;
            m.Create(sizeX, sizeY);
            m.Fill(1.0f);
            operations[i](m);
            m.FreeImageMemoryOnly();
            operations[i](m);
            CSSEMatrix never;
            operations[i](never);
        }
    }
}

} // namespace
