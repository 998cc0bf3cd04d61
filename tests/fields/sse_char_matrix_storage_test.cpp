#include <gtest/gtest.h>

#include <cstdint>

#include "fields/char_field_test_helpers.h"
#include "support/unowned_alias.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllBytes;
using vek::test::ByteTag;
using vek::test::FillBytes;
using vek::test::StoredByte;

TEST(CSSEcharMatrixStorage, SixteenRowsToALineInBlocksOf32Lines)
{
    struct Geometry {
        int sizeX, sizeY, lines, blocks;
    };
    const Geometry cases[] = {
        {3, 0, 1, 1},    // no rows: one line of padding
        {3, 15, 1, 1},   // one padding byte
        {3, 16, 2, 1},   // a multiple of 16: the second line is pure padding
        {2, 511, 32, 1}, // 32 lines still fit one block
        {2, 512, 33, 2}, // the 33rd line opens a second block
        {1, CSSEcharMatrix::kMaxSizeY, 8000, 250},
    };
    for (const Geometry& g : cases) {
        SCOPED_TRACE(testing::Message() << g.sizeX << " x " << g.sizeY);
        CSSEcharMatrix m(g.sizeX, g.sizeY);
        ASSERT_EQ(m.GetSSESizeX(), g.sizeX);
        ASSERT_EQ(m.GetSSESizeY(), g.lines);
        ASSERT_EQ(m.GetFields(), g.blocks);
        __m128i** lines = m.GetMatrixDataDirectly();
        for (int i = 0; i < g.lines; ++i) {
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(lines[i]) % 16, 0u);
            if (i % 32 != 0) {
                ASSERT_EQ(lines[i], lines[i - 1] + g.sizeX) << "lines of a block are contiguous";
            }
        }
        // Every byte, padding included, starts at 0; writing all of them
        // reaches the end of the last block (AddressSanitizer checks).
        for (int byte : AllBytes(m)) ASSERT_EQ(byte, 0);
        m.Clear(0x1FF); // the low byte, -1
        for (int byte : AllBytes(m)) ASSERT_EQ(byte, -1);
    }
}

TEST(CSSEcharMatrixStorage, PixelsAreAddressedByLineAndByteAndClamped)
{
    CSSEcharMatrix m(5, 20);
    m.SetPoint(2, 17, 'q');
    EXPECT_EQ(reinterpret_cast<char*>(m.GetMatrixDataDirectly()[1] + 2)[1], 'q'); // byte 1 of vector 2 of line 1

    FillBytes(m, ByteTag);
    EXPECT_EQ(m.GetPoint(-5, 1000), ByteTag(0, 19)); // rows 20 ... 31 are padding, never reached
    m.SetPoint(7, -2, -100);
    EXPECT_EQ(StoredByte(m, 4, 0), -100);

    // ClearRow writes one byte per column of the clamped row, nothing else.
    std::vector<int> expected = AllBytes(m);
    for (int x = 0; x < 5; ++x) expected[19 * 5 + x] = static_cast<signed char>(200);
    m.ClearRow(40, 200);
    EXPECT_EQ(AllBytes(m), expected);
}

TEST(CSSEcharMatrixStorage, LifeCycleReleasesRefusesAndCopiesDeeply)
{
    CSSEcharMatrix m;
    EXPECT_EQ(m.GetMatrixDataDirectly(), nullptr);
    m.Clear(3); // nothing to clear
    m.Create(4, 40);
    FillBytes(m, ByteTag);
    m.Create(4, 40); // no block is reused: the old image goes (leak checker)
    for (int byte : AllBytes(m)) ASSERT_EQ(byte, 0);

    // Impossible sizes are refused before anything changes.
    m.SetPoint(1, 1, 9);
    EXPECT_THROW(m.Create(-1, 5), CInvalidArgException);
    EXPECT_THROW(m.Create(1, CSSEcharMatrix::kMaxSizeY + 1), CInvalidArgException);
    EXPECT_EQ(m.GetPoint(1, 1), 9);

    // The copy constructor is deep; assignment shares the image.
    const CSSEcharMatrix copy(m);
    EXPECT_NE(copy.GetMatrixDataDirectly(), m.GetMatrixDataDirectly());
    EXPECT_EQ(AllBytes(copy), AllBytes(m));
    vek::test::UnownedAlias<CSSEcharMatrix> shared; // only m releases the image
    *shared = m;
    shared->SetPoint(3, 39, 42);
    EXPECT_EQ(m.GetPoint(3, 39), 42);

    CSSEMatrix floats;
    floats.Create(6, 17);
    m.CreateSimilar(floats);
    EXPECT_EQ(m.GetSizeX(), 6);
    EXPECT_EQ(m.GetSSESizeY(), 2);

    // Releasing keeps the sizes of the image no longer held.
    m.Free();
    EXPECT_EQ(m.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(m.GetFields(), 0);
    EXPECT_EQ(m.GetSizeX(), 6);
}

} // namespace
