#include <gtest/gtest.h>

#include <limits>

#include "fields/char_field_test_helpers.h"
#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllBytes;
using vek::test::ByteTag;
using vek::test::FillBytes;
using vek::test::StoredByte;

TEST(CSSEcharMatrixConvert, CopiesTakeWholeVectorsAndNarrowedCopiesClampTheirColumns)
{
    CSSEcharMatrix src(9, 21);
    FillBytes(src, ByteTag);
    CSSEcharMatrix copy(2, 2);
    copy.CopyFromOtherMatrix(src);
    EXPECT_EQ(copy.GetSizeY(), 21);
    EXPECT_EQ(AllBytes(copy), AllBytes(src)); // padding included

    // Columns 3 ... 5 as whole vectors: the padding bytes come along.
    CSSEcharMatrix part(src, 3, 5);
    ASSERT_EQ(part.GetSizeX(), 3);
    for (int row = 0; row < 32; ++row)
        for (int x = 0; x < 3; ++x) ASSERT_EQ(StoredByte(part, x, row), ByteTag(x + 3, row));

    // Both ends are clamped; reversed ends give no columns; a source without
    // rows leaves the field as it is.
    part.CopyFromOtherMatrixLimitedX(src, 7, 50);
    EXPECT_EQ(part.GetSizeX(), 2);
    EXPECT_EQ(part.GetPoint(1, 4), ByteTag(8, 4));
    part.CopyFromOtherMatrixLimitedX(src, 6, 2);
    EXPECT_EQ(part.GetSizeX(), 0);
    part.CopyFromOtherMatrixLimitedX(CSSEcharMatrix(4, 0), 0, 3);
    EXPECT_EQ(part.GetSizeY(), 21);
    // A field narrowed to a part of itself.
    src.CopyFromOtherMatrixLimitedX(src, -4, 0);
    ASSERT_EQ(src.GetSizeX(), 1);
    EXPECT_EQ(src.GetPoint(0, 9), ByteTag(0, 9));
}

TEST(CSSEcharMatrixConvert, ThresholdsMarkTheFloatPixelsStrictlyAboveOrBelow)
{
    // 3 x 37: ten float lines, three byte lines of which 11 bytes are padding.
    CSSEMatrix floats;
    floats.Create(3, 37);
    const auto height = [](int x, int row) { return static_cast<float>((x * 13 + row * 7) % 20) - 10.0f; };
    vek::test::FillLanes(floats, height); // the float padding holds values too
    floats.SetPoint(1, 36, std::numeric_limits<float>::quiet_NaN());
    ASSERT_EQ(height(0, 16), 2.0f);       // the threshold itself is neither

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
            ASSERT_EQ(StoredByte(above, x, row), image && height(x, row) > 2.0f ? -7 : 0);
            ASSERT_EQ(StoredByte(below, x, row), image && height(x, row) < 2.0f ? 5 : 0);
        }
    }
}

TEST(CSSEcharMatrixConvert, SubtractionWrapsOverTheCommonWidthAndLines)
{
    CSSEcharMatrix a(5, 40); // three lines
    CSSEcharMatrix b(3, 10); // one line
    FillBytes(a, [](int x, int row) { return x == 0 && row == 0 ? -128 : 100 + x + row % 20; });
    FillBytes(b, [](int x, int row) { return x == 0 && row == 0 ? 1 : -50 + row; });
    const std::vector<int> before = AllBytes(a);
    a.SubMatrix(b);
    for (int row = 0; row < 48; ++row) {
        for (int x = 0; x < 5; ++x) {
            const int old = before[row * 5 + x];
            const int expected = x < 3 && row < 16 ? static_cast<signed char>(old - StoredByte(b, x, row)) : old;
            ASSERT_EQ(StoredByte(a, x, row), expected) << x << ", " << row;
        }
    }
    EXPECT_EQ(a.GetPoint(0, 0), 127); // -128 - 1 wraps
}

} // namespace
