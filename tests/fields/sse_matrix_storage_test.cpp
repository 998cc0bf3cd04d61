#include <gtest/gtest.h>

#include <cstdint>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllLanes;
using vek::test::FillLanes;
using vek::test::StoredLane;

struct Geometry {
    int sizeX;
    int sizeY;
    int lines;            // expected SSESizeY
    int blocks;           // expected Fields
    int linesInLastBlock;
};

TEST(CSSEMatrixStorage, LinesBlocksAndPaddingFollowTheRowCount)
{
    const Geometry cases[] = {
        {5, 0, 1, 1, 1},        // no rows: one line of padding
        {5, 3, 1, 1, 1},        // one padding lane
        {5, 4, 2, 1, 2},        // a multiple of 4: the whole last line is padding
        {10, 124, 32, 1, 32},   // 32 lines still fit one block
        {10, 128, 33, 2, 1},    // the 33rd line opens a second block of one line
        {3, 255, 64, 2, 32},
        {3, 256, 65, 3, 1},
        {1, 31999, 8000, 250, 32}, // the largest field the block table holds
    };
    for (const Geometry& g : cases) {
        SCOPED_TRACE(testing::Message() << g.sizeX << " x " << g.sizeY);
        CSSEMatrix m;
        m.Create(g.sizeX, g.sizeY);
        ASSERT_EQ(m.GetSizeX(), g.sizeX);
        ASSERT_EQ(m.GetSizeY(), g.sizeY);
        ASSERT_EQ(m.GetSSESizeX(), g.sizeX);
        ASSERT_EQ(m.GetSSESizeY(), g.lines);
        ASSERT_EQ(m.GetFields(), g.blocks);
        EXPECT_EQ(m.GetLinesPerField(), 32);
        if (g.blocks < CSSEMatrix::kMaxFields) {
            EXPECT_EQ(m.GetField(g.blocks), nullptr);
        }

        // Line i is line i % 32 of block i / 32; lines of a block are contiguous.
        __m128** lines = m.GetMatrixDataDirectly();
        for (int i = 0; i < g.lines; ++i) {
            ASSERT_EQ(lines[i], m.GetField(i / 32) + (i % 32) * g.sizeX) << "line " << i;
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(lines[i]) % 16, 0u);
        }
        // Writing every lane of the last line reaches the end of the last
        // block; a block allocated too short shows up under AddressSanitizer.
        m.Fill(2.5f);
        for (float lane : AllLanes(m)) ASSERT_EQ(lane, 2.5f);
    }
}

TEST(CSSEMatrixStorage, CreateClearsEveryLaneAndReplacesTheOldImage)
{
    CSSEMatrix m;
    m.CreateNoClear(7, 9);
    FillLanes(m, vek::test::Tag);
    m.SetRowProcessed(6);
    m.Create(7, 9);
    for (float lane : AllLanes(m)) ASSERT_EQ(lane, 0.0f);
    EXPECT_EQ(m.GetRowProcessed(), 6); // not touched by Create

    m.Create(3, 2); // a different size; the old blocks go (checked by the leak checker)
    EXPECT_EQ(m.GetSSESizeY(), 1);
    for (float lane : AllLanes(m)) ASSERT_EQ(lane, 0.0f);

    CSSEMatrix similar;
    m.Fill(4.0f);
    similar.CreateSimilar(m);
    EXPECT_EQ(similar.GetSizeX(), 3);
    EXPECT_EQ(similar.GetSizeY(), 2);
    for (float lane : AllLanes(similar)) ASSERT_EQ(lane, 0.0f);
}

TEST(CSSEMatrixStorage, ReleaseKeepsSizesAndResetForgetsThem)
{
    CSSEMatrix m;
    EXPECT_EQ(m.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(m.GetFields(), 0);
    EXPECT_EQ(m.GetSizeX(), 0);

    m.Create(12, 140);
    m.SetRowProcessed(17);
    m.FreeImageMemoryOnly();
    EXPECT_EQ(m.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(m.GetFields(), 0);
    EXPECT_EQ(m.GetField(0), nullptr);
    EXPECT_EQ(m.GetField(1), nullptr);
    EXPECT_EQ(m.GetSizeX(), 12);
    EXPECT_EQ(m.GetSizeY(), 140);
    EXPECT_EQ(m.GetSSESizeY(), 36);
    EXPECT_EQ(m.GetRowProcessed(), 17);
    m.FreeImageMemoryOnly(); // twice is harmless
    // Whole-field writes on a field without an image do nothing.
    m.Fill(1.0f);
    m.ClearRow(3, 1.0f);
    m.FillMatrixWithProcessedRow();

    m.Create(4, 4);
    m.Reset();
    EXPECT_EQ(m.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(m.GetSizeX(), 0);
    EXPECT_EQ(m.GetSizeY(), 0);
    EXPECT_EQ(m.GetSSESizeX(), 0);
    EXPECT_EQ(m.GetSSESizeY(), 0);
    EXPECT_EQ(m.GetRowProcessed(), 0);
}

TEST(CSSEMatrixStorage, ImpossibleSizesAreRefusedWithoutChange)
{
    CSSEMatrix m;
    m.Create(3, 5);
    m.SetPoint(1, 1, 8.0f);
    __m128** before = m.GetMatrixDataDirectly();
    EXPECT_THROW(m.Create(-1, 5), CInvalidArgException);
    EXPECT_THROW(m.Create(5, -1), CInvalidArgException);
    EXPECT_THROW(m.CreateNoClear(1, CSSEMatrix::kMaxSizeY + 1), CInvalidArgException);
    EXPECT_EQ(m.GetMatrixDataDirectly(), before);
    EXPECT_EQ(m.GetSizeX(), 3);
    EXPECT_EQ(m.GetSizeY(), 5);
    EXPECT_EQ(m.GetPoint(1, 1), 8.0f);
}

TEST(CSSEMatrixStorage, AssignmentSharesTheImageAndCopyFromSSEMatrixDuplicatesIt)
{
    CSSEMatrix a;
    a.Create(6, 260); // three blocks
    a.SetPoint(2, 259, 5.0f);
    a.SetRowProcessed(40);

    {
        CSSEMatrix b;
        b = a;
        EXPECT_EQ(b.GetMatrixDataDirectly(), a.GetMatrixDataDirectly());
        for (int i = 0; i < a.GetFields(); ++i) EXPECT_EQ(b.GetField(i), a.GetField(i));
        EXPECT_EQ(b.GetFields(), 3);
        EXPECT_EQ(b.GetSSESizeY(), 66);
        EXPECT_EQ(b.GetRowProcessed(), 40);
        b.SetPoint(1, 1, 9.0f);
        EXPECT_EQ(a.GetPoint(1, 1), 9.0f);

        // The other side of an assignment forgets the shared image by taking
        // an empty field, so that only `a` releases it.
        b = CSSEMatrix{};
        EXPECT_EQ(b.GetMatrixDataDirectly(), nullptr);
        EXPECT_EQ(b.GetField(0), nullptr);
    }
    EXPECT_EQ(a.GetPoint(2, 259), 5.0f);

    // Moving a field: the destination takes over, the source forgets.
    auto* moved = new CSSEMatrix;
    *moved = a;
    a = CSSEMatrix{};
    EXPECT_EQ(moved->GetPoint(1, 1), 9.0f);
    EXPECT_EQ(a.GetMatrixDataDirectly(), nullptr);

    // The deep copy owns new lines with the same contents, padding included.
    FillLanes(*moved, vek::test::Tag);
    CSSEMatrix deep;
    deep.CopyFromSSEMatrix(*moved);
    EXPECT_NE(deep.GetMatrixDataDirectly(), moved->GetMatrixDataDirectly());
    EXPECT_EQ(AllLanes(deep), AllLanes(*moved));
    deep.SetPoint(0, 0, -1.0f);
    EXPECT_EQ(moved->GetPoint(0, 0), vek::test::Tag(0, 0));
    delete moved;
    EXPECT_EQ(deep.GetPoint(1, 1), vek::test::Tag(1, 1));
}

} // namespace
