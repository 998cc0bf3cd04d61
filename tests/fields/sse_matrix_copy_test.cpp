#include <gtest/gtest.h>

#include <vector>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllLanes;
using vek::test::FillLanes;
using vek::test::Tag;

TEST(CSSEMatrixCopy, DeepCopyTakesEveryLaneInEveryBlockAndNothingElse)
{
    struct Size {
        int x;
        int y;
    };
    // One block (a single transfer), and several blocks (line by line).
    const Size sizes[] = {{7, 3}, {1, 0}, {10, 124}, {10, 128}, {4, 129}, {3, 300}};
    enum class Target { Empty, OtherSize, SameSize };
    for (const Size& size : sizes) {
        for (Target target : {Target::Empty, Target::OtherSize, Target::SameSize}) {
            SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << ", target " << static_cast<int>(target));
            CSSEMatrix src;
            src.Create(size.x, size.y);
            FillLanes(src, Tag);
            src.SetRowProcessed(2);
            src.GetFromToArray().CalcArray(src, 0, size.x - 1);

            CSSEMatrix dst;
            if (target == Target::OtherSize) dst.Create(5, 40);
            if (target == Target::SameSize) dst.Create(size.x, size.y);
            if (target != Target::Empty) dst.Fill(-4.0f);
            const int spans = dst.GetFromToArray().GetNumEntries();
            dst.SetRowProcessed(9);

            dst.CopyFromSSEMatrix(src);
            EXPECT_EQ(dst.GetSizeX(), size.x);
            EXPECT_EQ(dst.GetSizeY(), size.y);
            EXPECT_EQ(dst.GetFields(), src.GetFields());
            EXPECT_NE(dst.GetMatrixDataDirectly(), src.GetMatrixDataDirectly());
            EXPECT_EQ(AllLanes(dst), AllLanes(src));
            EXPECT_EQ(dst.GetRowProcessed(), 9);
            EXPECT_EQ(dst.GetFromToArray().GetNumEntries(), spans);

            // A source without image (never created, or released but still
            // reporting a size) and the field itself change nothing.
            __m128** lines = dst.GetMatrixDataDirectly();
            CSSEMatrix released;
            released.Create(8, 8);
            released.FreeImageMemoryOnly();
            dst.CopyFromSSEMatrix(released);
            dst.CopyFromSSEMatrix(CSSEMatrix{});
            dst.CopyFromSSEMatrix(dst);
            EXPECT_EQ(dst.GetMatrixDataDirectly(), lines);
            EXPECT_EQ(AllLanes(dst), AllLanes(src));
        }
    }
}

// p = 1 + x + 100 y, so that every source pixel is told apart.
void FillRamp(CSSEMatrix& m)
{
    for (int y = 0; y < m.GetSizeY(); ++y)
        for (int x = 0; x < m.GetSizeX(); ++x) m.SetPoint(x, y, static_cast<float>(1 + x + 100 * y));
}

TEST(CSSEMatrixCopy, CenteredCopiesLayTheTwoCentresOnEachOther)
{
    struct Case {
        int dstX, dstY, srcX, srcY;
        int shiftX, shiftY; // by hand: (src >> 1) - (dst >> 1)
    };
    const Case cases[] = {
        {4, 4, 7, 6, 1, 1},
        {5, 4, 8, 9, 2, 2},
        {3, 5, 3, 5, 0, 0},
        {6, 3, 7, 4, 0, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.dstX << " x " << c.dstY << " from " << c.srcX << " x " << c.srcY);
        CSSEMatrix src;
        src.Create(c.srcX, c.srcY);
        FillRamp(src);
        CSSEMatrix dst;
        dst.Create(c.dstX, c.dstY);
        dst.Fill(-9.0f);
        dst.CopyFromSSEMatrixCentered(src);
        for (int y = 0; y < c.dstY; ++y)
            for (int x = 0; x < c.dstX; ++x) ASSERT_EQ(dst.GetPoint(x, y), static_cast<float>(1 + (x + c.shiftX) + 100 * (y + c.shiftY)));
    }
}

TEST(CSSEMatrixCopy, CenteredMaximumAndMinimumMergeWithoutClearingAndNeedALargerSource)
{
    CSSEMatrix src;
    src.Create(6, 6); // shift 1 onto a 4 x 4 field
    src.Fill(5.0f);
    src.SetPoint(2, 2, 1.0f); // lands on (1, 1)

    CSSEMatrix high;
    high.Create(4, 4);
    high.Fill(3.0f);
    high.SetPoint(3, 3, 8.0f);
    high.CopyFromSSEMatrixCenteredMaximum(src);
    CSSEMatrix low;
    low.Create(4, 4);
    low.Fill(3.0f);
    low.SetPoint(3, 3, 8.0f);
    low.CopyFromSSEMatrixCenteredMinimum(src);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            const bool hole = x == 1 && y == 1;
            const bool peak = x == 3 && y == 3;
            EXPECT_EQ(high.GetPoint(x, y), peak ? 8.0f : hole ? 3.0f : 5.0f) << x << ", " << y;
            EXPECT_EQ(low.GetPoint(x, y), hole ? 1.0f : peak ? 5.0f : 3.0f) << x << ", " << y;
        }
    }

    // A source narrower or lower than this field is not used; only the plain
    // centred copy has cleared the field before it looks.
    CSSEMatrix narrow, lowSource;
    narrow.Create(3, 10);
    lowSource.Create(10, 3);
    for (const CSSEMatrix* tooSmall : {&narrow, &lowSource}) {
        CSSEMatrix dst;
        dst.Create(4, 4);
        dst.Fill(2.0f);
        dst.CopyFromSSEMatrixCenteredMaximum(*tooSmall);
        dst.CopyFromSSEMatrixCenteredMinimum(*tooSmall);
        EXPECT_EQ(dst.GetPoint(3, 3), 2.0f);
        dst.CopyFromSSEMatrixCentered(*tooSmall);
        for (float lane : AllLanes(dst)) ASSERT_EQ(lane, 0.0f);
    }
}

// Rows of doubles with s[i][j] = 10 i + j + 0.1, and the row pointers to them.
struct DoubleRows {
    std::vector<std::vector<double>> values;
    std::vector<double*> rows;
    DoubleRows(int count, int length)
    {
        for (int i = 0; i < count; ++i) {
            values.emplace_back();
            for (int j = 0; j < length; ++j) values.back().push_back(10.0 * i + j + 0.1);
        }
        for (auto& row : values) rows.push_back(row.data());
    }
    static float At(int i, int j) { return static_cast<float>(10.0 * i + j + 0.1); }
};

TEST(CSSEMatrixCopy, CopyFromMatrixReadsRowsAndColumnsDifferentlyWithAndWithoutImage)
{
    // With an image: a = 2 source rows of b = 3 columns, pixel (j, i) = s[i][j].
    DoubleRows wide(2, 3);
    CSSEMatrix sized;
    sized.Create(3, 2);
    sized.CopyFromMatrix(wide.rows.data(), 2, 3);
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_EQ(sized.GetPoint(j, i), DoubleRows::At(i, j));

    // Without: Create(b, a) = 3 x 2, then b = 3 source rows of a = 2 columns,
    // clamped, so source row 2 piles onto image row 1 and column 2 stays 0.
    DoubleRows tall(3, 2);
    CSSEMatrix fresh;
    fresh.CopyFromMatrix(tall.rows.data(), 2, 3);
    ASSERT_EQ(fresh.GetSizeX(), 3);
    ASSERT_EQ(fresh.GetSizeY(), 2);
    const float expected[2][3] = {{DoubleRows::At(0, 0), DoubleRows::At(0, 1), 0.0f},
                                  {DoubleRows::At(2, 0), DoubleRows::At(2, 1), 0.0f}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(fresh.GetPoint(x, y), expected[y][x]) << x << ", " << y;

    // A larger source piles up in the last row and column: the last write wins.
    DoubleRows big(3, 3);
    CSSEMatrix small;
    small.Create(2, 2);
    small.CopyFromMatrix(big.rows.data(), 3, 3);
    EXPECT_EQ(small.GetPoint(0, 0), DoubleRows::At(0, 0));
    EXPECT_EQ(small.GetPoint(1, 0), DoubleRows::At(0, 2));
    EXPECT_EQ(small.GetPoint(0, 1), DoubleRows::At(2, 0));
    EXPECT_EQ(small.GetPoint(1, 1), DoubleRows::At(2, 2));

    small.CopyFromMatrix(nullptr, 3, 3);
    EXPECT_EQ(small.GetPoint(1, 1), DoubleRows::At(2, 2));
    CSSEMatrix untouched;
    untouched.CopyFromMatrix(nullptr, 3, 3);
    EXPECT_EQ(untouched.GetMatrixDataDirectly(), nullptr);
}

} // namespace
