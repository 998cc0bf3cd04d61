#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

#include "fields/field_storage.h"
#include "support/unowned_alias.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllStored;
using vek::test::ByteTag;
using vek::test::FillStorage;
using vek::test::Stored;

TEST(CSSEcharMatrixStorage, SixteenRowsToALineInBlocksOf32Lines)
{
    struct Geometry {
        int sizeX, sizeY, lines, blocks;
    };
    const Geometry cases[] = {
        {3, 0, 1, 1},    // no rows: one line of padding
        {3, 16, 2, 1},   // a multiple of 16: the second line is pure padding
        {2, 511, 32, 1}, // 32 lines still fit one block
        {2, 512, 33, 2}, // the 33rd line opens a second block
        {1, CSSEcharMatrix::kMaxSizeY, 8000, 250},
    };
    for (const Geometry& g : cases) {
        SCOPED_TRACE(testing::Message() << g.sizeX << " x " << g.sizeY);
        CSSEcharMatrix m(g.sizeX, g.sizeY);
        ASSERT_EQ(m.GetSSESizeY(), g.lines);
        ASSERT_EQ(m.GetFields(), g.blocks);
        for (int i = 1; i < g.lines; ++i) {
            if (i % 32 != 0) {
                ASSERT_EQ(m.GetMatrixDataDirectly()[i], m.GetMatrixDataDirectly()[i - 1] + g.sizeX) << "lines of a block are contiguous";
            }
        }
        // Every byte starts at 0, padding included, and all of them lie
        // inside the blocks (AddressSanitizer checks).
        for (int byte : AllStored(m)) ASSERT_EQ(byte, 0);
        m.Clear(0x1FF); // the low byte, -1
        for (int byte : AllStored(m)) ASSERT_EQ(byte, -1);
    }
}

TEST(CSSEcharMatrixStorage, PixelsAreClampedAndTheImageIsCopiedDeeplyOrSharedOrMoved)
{
    CSSEcharMatrix m(5, 20);
    m.SetPoint(2, 17, 'q');
    EXPECT_EQ(reinterpret_cast<char*>(m.GetMatrixDataDirectly()[1] + 2)[1], 'q'); // byte 1 of vector 2 of line 1
    FillStorage(m, ByteTag);
    EXPECT_EQ(m.GetPoint(-5, 1000), ByteTag(0, 19)); // rows 20 ... 31 are padding, never reached
    m.SetPoint(7, -2, -100);
    EXPECT_EQ(Stored(m, 4, 0), -100);
    std::vector<int> expected = AllStored(m);
    for (int x = 0; x < 5; ++x) expected[19 * 5 + x] = static_cast<signed char>(200);
    m.ClearRow(40, 200); // one byte per column of the clamped row
    EXPECT_EQ(AllStored(m), expected);

    // Impossible sizes are refused before anything changes.
    EXPECT_THROW(m.Create(-1, 5), CInvalidArgException);
    EXPECT_THROW(m.Create(1, CSSEcharMatrix::kMaxSizeY + 1), CInvalidArgException);
    EXPECT_EQ(AllStored(m), expected);

    // The copy constructor is deep; assignment shares the image (the alias is
    // never destroyed, so only m releases it); a move hands it over.
    const CSSEcharMatrix copy(m);
    EXPECT_NE(copy.GetMatrixDataDirectly(), m.GetMatrixDataDirectly());
    EXPECT_EQ(AllStored(copy), AllStored(m));
    vek::test::UnownedAlias<CSSEcharMatrix> shared;
    *shared = m;
    shared->SetPoint(3, 19, 42);
    EXPECT_EQ(m.GetPoint(3, 19), 42);
    CSSEcharMatrix target(4, 4);
    target = std::move(m);
    CSSEcharMatrix moved(std::move(target));
    EXPECT_EQ(moved.GetPoint(3, 19), 42);

    // Releasing keeps the sizes of the image no longer held.
    moved.Free();
    EXPECT_EQ(moved.GetMatrixDataDirectly(), nullptr);
    EXPECT_EQ(moved.GetSizeX(), 5);
}

TEST(CSSEcharMatrixConvert, CopiesTakeWholeVectorsAndNarrowedCopiesClampTheirColumns)
{
    CSSEcharMatrix src(9, 21);
    FillStorage(src, ByteTag);
    CSSEcharMatrix copy(2, 2);
    copy.CopyFromOtherMatrix(src);
    EXPECT_EQ(AllStored(copy), AllStored(src)); // padding included

    // Columns 3 ... 5 as whole vectors: the padding bytes come along.
    CSSEcharMatrix part(src, 3, 5);
    ASSERT_EQ(part.GetSizeX(), 3);
    for (int row = 0; row < 32; ++row)
        for (int x = 0; x < 3; ++x) ASSERT_EQ(Stored(part, x, row), ByteTag(x + 3, row));
    // Both ends are clamped; reversed ends give no columns; a source without
    // rows leaves the field as it is; a field may be narrowed to itself.
    part.CopyFromOtherMatrixLimitedX(src, 7, 50);
    EXPECT_EQ(part.GetSizeX(), 2);
    EXPECT_EQ(part.GetPoint(1, 4), ByteTag(8, 4));
    part.CopyFromOtherMatrixLimitedX(src, 6, 2);
    EXPECT_EQ(part.GetSizeX(), 0);
    part.CopyFromOtherMatrixLimitedX(CSSEcharMatrix(4, 0), 0, 3);
    EXPECT_EQ(part.GetSizeY(), 21);
    src.CopyFromOtherMatrixLimitedX(src, -4, 0);
    ASSERT_EQ(src.GetSizeX(), 1);
    EXPECT_EQ(src.GetPoint(0, 9), ByteTag(0, 9));
}

TEST(CSSEcharMatrixConvert, ThresholdsMarkFloatPixelsStrictlyBeyondAndSubtractionWraps)
{
    // 3 x 37: ten float lines, three byte lines of which 11 bytes are padding.
    CSSEMatrix floats;
    floats.Create(3, 37);
    const auto height = [](int x, int row) { return static_cast<float>((x * 13 + row * 7) % 20) - 10.0f; };
    FillStorage(floats, height); // the float padding holds values too
    floats.SetPoint(1, 36, std::numeric_limits<float>::quiet_NaN());
    ASSERT_EQ(height(0, 16), 2.0f); // the threshold itself is neither
    CSSEcharMatrix above;
    above.CopyAndTresholdAbove(floats, 2.0f, -7);
    CSSEcharMatrix below;
    below.CopyAndTresholdBelow(floats, 2.0f, 5);
    ASSERT_EQ(above.GetSizeY(), 37);
    for (int row = 0; row < 48; ++row) {
        for (int x = 0; x < 3; ++x) {
            SCOPED_TRACE(testing::Message() << x << ", " << row);
            // Padding stays 0; NaN is neither above nor below.
            const bool image = row < 37 && !(x == 1 && row == 36);
            ASSERT_EQ(Stored(above, x, row), image && height(x, row) > 2.0f ? -7 : 0);
            ASSERT_EQ(Stored(below, x, row), image && height(x, row) < 2.0f ? 5 : 0);
        }
    }

    // Byte by byte, wrapping, over the common width and lines.
    CSSEcharMatrix a(5, 40); // three lines
    CSSEcharMatrix b(3, 10); // one line
    FillStorage(a, [](int x, int row) { return x == 0 && row == 0 ? -128 : 100 + x + row % 20; });
    FillStorage(b, [](int x, int row) { return x == 0 && row == 0 ? 1 : -50 + row; });
    const CSSEcharMatrix before(a);
    a.SubMatrix(b);
    for (int row = 0; row < 48; ++row) {
        for (int x = 0; x < 5; ++x) {
            const int old = Stored(before, x, row);
            ASSERT_EQ(Stored(a, x, row), x < 3 && row < 16 ? static_cast<signed char>(old - Stored(b, x, row)) : old) << x << ", " << row;
        }
    }
    EXPECT_EQ(a.GetPoint(0, 0), 127); // -128 - 1 wraps
}

} // namespace
