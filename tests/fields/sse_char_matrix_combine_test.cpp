#include <gtest/gtest.h>

#include "fields/field_storage.h"
#include "vekdll/fields/sse_char_matrix.h"

namespace {

using vek::test::ByteTag;
using vek::test::FillStorage;
using vek::test::Stored;

// A field whose pixel (x, y) is base + 10 y + x, padding 0.
CSSEcharMatrix Numbered(int sizeX, int sizeY, int base)
{
    CSSEcharMatrix m(sizeX, sizeY);
    for (int y = 0; y < sizeY; ++y)
        for (int x = 0; x < sizeX; ++x) m.SetPoint(x, y, static_cast<char>(base + 10 * y + x));
    return m;
}

TEST(CSSEcharMatrixCombine, NewColumnsRepeatOneTopPixelAndAFrameSurroundsTheImage)
{
    CSSEcharMatrix m(3, 18);
    FillStorage(m, ByteTag);
    m.ElongateLeft(2);
    m.ElongateRight(3);
    m.ElongateRight(-4);
    ASSERT_EQ(m.GetSizeX(), 8);
    ASSERT_EQ(m.GetSizeY(), 18);
    for (int row = 0; row < 32; ++row) {
        for (int x = 0; x < 8; ++x) {
            // Every byte of the new columns, padding included, is pixel (0, 0)
            // on the left and the last pixel of row 0 on the right.
            const int expected = x < 2 ? ByteTag(0, 0) : x < 5 ? ByteTag(x - 2, row) : ByteTag(2, 0);
            ASSERT_EQ(Stored(m, x, row), expected) << x << ", " << row;
        }
    }

    m = Numbered(3, 4, 0);
    m.EmbedinValueFrame(2, 1, 9);
    m.EmbedinValueFrame(-1, 2, 9);
    ASSERT_EQ(m.GetSizeX(), 5);
    ASSERT_EQ(m.GetSizeY(), 8);
    for (int row = 0; row < 16; ++row) {
        for (int x = 0; x < 5; ++x) {
            const bool image = x >= 1 && x <= 3 && row >= 2 && row <= 5;
            ASSERT_EQ(Stored(m, x, row), image ? 10 * (row - 2) + x - 1 : 9) << x << ", " << row;
        }
    }
}

TEST(CSSEcharMatrixCombine, StackingInYTakesAsManyRowsOfCAsBHas)
{
    const CSSEcharMatrix a = Numbered(4, 5, 0);
    const CSSEcharMatrix b = Numbered(5, 4, 50);
    const CSSEcharMatrix tallC = Numbered(6, 10, -120);
    CSSEcharMatrix m;
    m.CombineYDir(a, b, &tallC);
    ASSERT_EQ(m.GetSizeX(), 4);
    ASSERT_EQ(m.GetSizeY(), 19);
    for (int y = 0; y < 19; ++y) {
        for (int x = 0; x < 4; ++x) {
            // Rows 13 ... 18: c's rows beyond b's height are left out.
            const int expected = y < 5 ? 10 * y + x : y < 9 ? 50 + 10 * (y - 5) + x : y < 13 ? -120 + 10 * (y - 9) + x : 0;
            ASSERT_EQ(m.GetPoint(x, y), expected) << x << ", " << y;
        }
    }
    // A lower c repeats its last row.
    const CSSEcharMatrix lowC = Numbered(4, 2, -120);
    m.CombineYDir(a, b, &lowC);
    ASSERT_EQ(m.GetSizeY(), 11);
    EXPECT_EQ(m.GetPoint(2, 8), 50 + 30 + 2);
    EXPECT_EQ(m.GetPoint(2, 9), -120 + 2);
    EXPECT_EQ(m.GetPoint(2, 10), -120 + 10 + 2);

    // Without c: a and b over the smaller width; a may be this field.
    m.CopyFromOtherMatrix(a);
    m.CombineYDir(m, Numbered(3, 7, 60), nullptr);
    ASSERT_EQ(m.GetSizeX(), 3);
    ASSERT_EQ(m.GetSizeY(), 12);
    EXPECT_EQ(m.GetPoint(1, 4), 41);
    EXPECT_EQ(m.GetPoint(2, 11), 60 + 60 + 2);
}

TEST(CSSEcharMatrixCombine, FastStackingJoinsWholeLinesWithThePaddingBetween)
{
    CSSEcharMatrix a(3, 20); // two lines, 12 padding bytes
    CSSEcharMatrix b(3, 5);  // one line
    FillStorage(a, ByteTag);
    FillStorage(b, [](int x, int row) { return -ByteTag(x, row); });
    CSSEcharMatrix m;
    m.CombineYDirFast(a, b);
    ASSERT_EQ(m.GetSizeY(), 48);
    ASSERT_EQ(m.GetSSESizeY(), 4);
    for (int row = 0; row < 64; ++row) {
        for (int x = 0; x < 3; ++x) {
            const int expected = row < 32 ? ByteTag(x, row) : row < 48 ? -ByteTag(x, row - 32) : 0;
            ASSERT_EQ(Stored(m, x, row), expected) << x << ", " << row;
        }
    }
    // Over the larger width a narrower field leaves its missing columns 0.
    m.CombineYDirFast(CSSEcharMatrix(2, 3), b);
    ASSERT_EQ(m.GetSizeX(), 3);
    EXPECT_EQ(Stored(m, 2, 0), 0);
    EXPECT_EQ(Stored(m, 2, 16), -ByteTag(2, 0));
}

TEST(CSSEcharMatrixCombine, InterpolationReadsTheBilinearMeanTruncatedTowardZero)
{
    CSSEcharMatrix m(2, 2);
    m.SetPoint(0, 0, 8);
    m.SetPoint(1, 0, 100);
    m.SetPoint(0, 1, -101);
    m.SetPoint(1, 1, 20);
    m.InterpolateUp(4, 4); // steps of one half
    m.InterpolateUp(0, 5);
    ASSERT_EQ(m.GetSizeX(), 4);
    ASSERT_EQ(m.GetSizeY(), 4);
    EXPECT_EQ(m.GetPoint(0, 0), 8);
    EXPECT_EQ(m.GetPoint(1, 0), (8 + 100) / 2);
    EXPECT_EQ(m.GetPoint(0, 1), -46);            // -46.5
    EXPECT_EQ(m.GetPoint(1, 1), 6);              // 27 / 4
    EXPECT_EQ(m.GetPoint(2, 1), (100 + 20) / 2); // the far neighbours clamp to the rim
    EXPECT_EQ(m.GetPoint(3, 3), 20);
    for (int row = 4; row < 16; ++row) EXPECT_EQ(Stored(m, 1, row), 8) << "padding holds pixel (0, 0)";
}

} // namespace
