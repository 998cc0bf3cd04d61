#include <gtest/gtest.h>

#include <cstdint>

#include "fields/field_test_helpers.h"
#include "support/unowned_alias.h"
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

TEST(CSSEMatrixStorage, LifeCycleClearsReleasesAndRefuses)
{
    CSSEMatrix m;
    m.CreateNoClear(7, 9);
    FillLanes(m, vek::test::Tag);
    m.SetRowProcessed(6);
    m.Create(7, 9); // no block is reused: the old image goes (leak checker)
    for (float lane : AllLanes(m)) ASSERT_EQ(lane, 0.0f);
    EXPECT_EQ(m.GetRowProcessed(), 6);

    // Impossible sizes are refused before anything changes.
    m.SetPoint(1, 1, 8.0f);
    __m128** lines = m.GetMatrixDataDirectly();
    EXPECT_THROW(m.Create(-1, 5), CInvalidArgException);
    EXPECT_THROW(m.Create(5, -1), CInvalidArgException);
    EXPECT_THROW(m.CreateNoClear(1, CSSEMatrix::kMaxSizeY + 1), CInvalidArgException);
    EXPECT_EQ(m.GetMatrixDataDirectly(), lines);
    EXPECT_EQ(m.GetPoint(1, 1), 8.0f);

    CSSEMatrix similar;
    similar.CreateSimilar(m);
    EXPECT_EQ(similar.GetSizeX(), 7);
    EXPECT_EQ(similar.GetSizeY(), 9);
    EXPECT_EQ(similar.GetPoint(1, 1), 0.0f);

    // Releasing keeps the sizes of the image no longer held; Reset forgets them.
    m.FreeImageMemoryOnly();
    EXPECT_EQ(m.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(m.GetFields(), 0);
    EXPECT_EQ(m.GetField(0), nullptr);
    EXPECT_EQ(m.GetSizeX(), 7);
    EXPECT_EQ(m.GetSSESizeY(), 3);
    EXPECT_EQ(m.GetRowProcessed(), 6);
    m.Fill(1.0f); // whole-field writes without an image do nothing
    m.FillMatrixWithProcessedRow();
    m.Reset();
    EXPECT_EQ(m.GetSizeX(), 0);
    EXPECT_EQ(m.GetSizeY(), 0);
    EXPECT_EQ(m.GetSSESizeX(), 0);
    EXPECT_EQ(m.GetSSESizeY(), 0);
    EXPECT_EQ(m.GetRowProcessed(), 0);
}

TEST(CSSEMatrixStorage, AssignmentSharesTheImageWithoutCopyingIt)
{
    CSSEMatrix a;
    a.Create(6, 260); // three blocks
    a.SetRowProcessed(40);
    // The alias is never destroyed, so that only `a` releases the image.
    vek::test::UnownedAlias<CSSEMatrix> b;
    *b = a;
    EXPECT_EQ(b->GetMatrixDataDirectly(), a.GetMatrixDataDirectly());
    for (int i = 0; i < 3; ++i) EXPECT_EQ(b->GetField(i), a.GetField(i));
    EXPECT_EQ(b->GetRowProcessed(), 40);
    b->SetPoint(1, 1, 9.0f);
    EXPECT_EQ(a.GetPoint(1, 1), 9.0f);
}

} // namespace
