#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllLanes;
using vek::test::FillLanes;
using vek::test::StorageRows;
using vek::test::StoredLane;
using vek::test::Tag;

// Bilinear resampling written out pixel by pixel from the old pixels, read
// through the clamped GetPoint, the four terms summed left to right.
float ResampledPixel(const CSSEMatrix& old, int newX, int newY, int x, int y)
{
    const float fx = static_cast<float>(x) * (static_cast<float>(old.GetSizeX()) / static_cast<float>(newX));
    const float fy = static_cast<float>(y) * (static_cast<float>(old.GetSizeY()) / static_cast<float>(newY));
    const int ix = static_cast<int>(fx);
    const int iy = static_cast<int>(fy);
    const float tx = fx - static_cast<float>(ix);
    const float ty = fy - static_cast<float>(iy);
    const auto p = [&](int i, int j) { return old.GetPoint(i, j); };
    return (1 - tx) * p(ix, iy) * (1 - ty) + p(ix + 1, iy) * tx * (1 - ty) + (1 - tx) * p(ix, iy + 1) * ty + p(ix + 1, iy + 1) * tx * ty;
}

TEST(CSSEMatrixResampling, EveryPixelIsTheBilinearBlendSummedInItsFixedOrder)
{
    struct Case {
        int oldX, oldY, newX, newY;
    };
    // Up, down, mixed, one pixel, the same size, and fields of several blocks.
    const Case cases[] = {{7, 5, 13, 9}, {13, 9, 5, 3}, {6, 11, 17, 4}, {4, 4, 1, 1}, {1, 1, 3, 6}, {6, 9, 6, 9}, {9, 130, 5, 70}, {3, 40, 4, 131}};
    std::mt19937 random(11);
    std::uniform_real_distribution<float> value(-100.0f, 100.0f);
    for (const Case& c : cases) {
        for (auto scale : {&CSSEMatrix::ScaleMatrix, &CSSEMatrix::ScaleMatrix_SSE}) {
            SCOPED_TRACE(testing::Message() << c.oldX << " x " << c.oldY << " to " << c.newX << " x " << c.newY);
            CSSEMatrix old;
            old.Create(c.oldX, c.oldY);
            FillLanes(old, [&](int, int) { return value(random); });
            CSSEMatrix m;
            m.CopyFromSSEMatrix(old);
            m.SetRowProcessed(3);
            (m.*scale)(c.newX, c.newY);
            ASSERT_EQ(m.GetSizeX(), c.newX);
            ASSERT_EQ(m.GetSizeY(), c.newY);
            EXPECT_EQ(m.GetRowProcessed(), 3);
            for (int row = 0; row < StorageRows(m); ++row) {
                for (int x = 0; x < c.newX; ++x) {
                    // The same size reproduces the image; the padding is cleared.
                    const float expected = row >= c.newY ? 0.0f : c.oldX == c.newX && c.oldY == c.newY ? old.GetPoint(x, row) : ResampledPixel(old, c.newX, c.newY, x, row);
                    ASSERT_EQ(StoredLane(m, x, row), expected) << x << ", " << row;
                }
            }
        }
    }

    // Sizes that cannot be a field leave it alone.
    CSSEMatrix m;
    m.Create(3, 3);
    __m128** lines = m.GetMatrixDataDirectly();
    m.ScaleMatrix(-1, 4);
    m.ScaleMatrix(4, CSSEMatrix::kMaxSizeY + 1);
    EXPECT_EQ(m.GetMatrixDataDirectly(), lines);
}

TEST(CSSEMatrixResizing, NewColumnsRepeatTheRimPixelOfRowZeroAndAFrameSurroundsTheShiftedImage)
{
    for (bool left : {true, false}) {
        CSSEMatrix m;
        m.Create(4, 6);
        FillLanes(m, Tag);
        const std::vector<float> before = AllLanes(m);
        left ? m.ElongateLeft(3) : m.ElongateRight(3);
        ASSERT_EQ(m.GetSizeX(), 7);
        ASSERT_EQ(m.GetSizeY(), 6);
        const int shift = left ? 3 : 0;
        for (int row = 0; row < StorageRows(m); ++row) {
            for (int x = 0; x < 7; ++x) {
                const int old = x - shift;
                // Old columns come over whole, padding lanes included.
                const float expected = old >= 0 && old < 4 ? before[static_cast<std::size_t>(row * 4 + old)] : Tag(left ? 0 : 3, 0);
                ASSERT_EQ(StoredLane(m, x, row), expected) << left << ": " << x << ", " << row;
            }
        }
    }

    CSSEMatrix m;
    m.Create(3, 5);
    FillLanes(m, Tag);
    m.EmbedinValueFrame(2, 1, -1.0f); // two rows down: every pixel changes lane
    ASSERT_EQ(m.GetSizeX(), 5);
    ASSERT_EQ(m.GetSizeY(), 9);
    for (int row = 0; row < StorageRows(m); ++row) {
        for (int x = 0; x < 5; ++x) {
            // The old padding lanes (rows 5 on) stay behind.
            const bool inside = x >= 1 && x <= 3 && row >= 2 && row <= 6;
            ASSERT_EQ(StoredLane(m, x, row), inside ? Tag(x - 1, row - 2) : -1.0f) << x << ", " << row;
        }
    }
    const std::vector<float> framed = AllLanes(m);
    m.EmbedinValueFrame(-1, 1, 0.0f);
    m.EmbedinValueFrame(CSSEMatrix::kMaxSizeY, 0, 0.0f);
    m.ElongateRight(-2);
    EXPECT_EQ(AllLanes(m), framed);
}

} // namespace
