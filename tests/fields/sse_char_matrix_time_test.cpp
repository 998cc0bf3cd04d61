#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "fields/char_field_test_helpers.h"
#include "vekdll/fields/sse_char_matrix.h"

namespace {

using vek::test::AllBytes;
using vek::test::ByteStorageRows;
using vek::test::FillBytes;
using vek::test::FillRandomBytes;
using vek::test::StoredByte;

signed char Wrapped(int v)
{
    return static_cast<signed char>(static_cast<unsigned char>(v & 0xFF));
}

signed char Saturated(int v)
{
    return static_cast<signed char>(std::clamp(v, -128, 127));
}

// A field of one line (15 rows and a padding byte) whose every byte in
// column x is profile[x], so that the column profile with offset -40 is
// exactly profile[x] - 40.
CSSEcharMatrix FieldWithProfile(const std::vector<int>& profile)
{
    CSSEcharMatrix m(static_cast<int>(profile.size()), 15);
    FillBytes(m, [&](int x, int) { return profile[x]; });
    return m;
}

std::vector<int> Humps(int length, std::initializer_list<std::pair<int, int>> spans, int ground, int top)
{
    std::vector<int> profile(static_cast<std::size_t>(length), ground);
    for (auto [from, to] : spans)
        for (int x = from; x <= to; ++x) profile[x] = top;
    return profile;
}

TEST(CSSEcharMatrixTime, ColumnProfileSumsRaisedBytesOverTheLinesTaken)
{
    CSSEcharMatrix m(4, 20); // two lines, divisor 32 always
    FillBytes(m, [](int x, int row) { return x == 3 ? (row == 0 ? -33 : 0) : 30 * x + row; });

    for (int offset : {0, 40, -300}) {
        for (int maxRow : {2000000000, 31, 16, 15, -1}) {
            SCOPED_TRACE(testing::Message() << "offset " << offset << ", maxRow " << maxRow);
            const t_intvector profile = m.GetIntegralVectorFromMatrix(offset, maxRow);
            const std::unique_ptr<int[]> owned(profile.Data);
            ASSERT_EQ(profile.Length, 4);
            const int lines = std::min(maxRow >> 4, 2);
            for (int x = 0; x < 4; ++x) {
                int sum = 0;
                for (int row = 0; row < 16 * std::max(lines, 0); ++row) sum += Wrapped(StoredByte(m, x, row) + offset);
                EXPECT_EQ(profile.Data[x], sum / 32) << "column " << x;
            }
        }
    }
    // Truncation toward zero: -33 / 32 is -1.
    const t_intvector profile = m.GetIntegralVectorFromMatrix(0, 2000000000);
    const std::unique_ptr<int[]> owned(profile.Data);
    EXPECT_EQ(profile.Data[3], -1);
}

TEST(CSSEcharMatrixTime, SyllablesCountRisesSeparatedByFalls)
{
    // Three humps of 8 columns on flat ground.
    EXPECT_EQ(FieldWithProfile(Humps(60, {{10, 17}, {25, 32}, {40, 47}}, 40, 120)).CalcNumSyllables(), 3);
    // Two humps on negative ground: the profile runs from -120 to 60.
    EXPECT_EQ(FieldWithProfile(Humps(60, {{10, 17}, {40, 47}}, -80, 100)).CalcNumSyllables(), 2);
    // A staircase rises twice without falling between: one syllable.
    EXPECT_EQ(FieldWithProfile(Humps(60, {{15, 29}, {30, 59}}, 40, 80)).CalcNumSyllables(), 1);
    // Nothing changes along x.
    EXPECT_EQ(FieldWithProfile(std::vector<int>(40, 90)).CalcNumSyllables(), 0);
    // Fewer than 9 columns leave no room between the margins.
    EXPECT_EQ(FieldWithProfile(Humps(8, {{3, 4}}, 40, 120)).CalcNumSyllables(), 0);
    EXPECT_EQ(CSSEcharMatrix(0, 5).CalcNumSyllables(), 0);
    // A hump in the margins is not counted.
    EXPECT_EQ(FieldWithProfile(Humps(30, {{0, 2}}, 40, 120)).CalcNumSyllables(), 0);
}

TEST(CSSEcharMatrixTime, DifferencesAlongXWrapOrSaturateAsEachOperationSays)
{
    // A ramp rising by 1 per column gains 2 in every inner column; a byte
    // of 120 with a difference of 20 saturates at 127.
    CSSEcharMatrix ramp(6, 3);
    FillBytes(ramp, [](int x, int) { return x; });
    ramp.SetPoint(2, 1, 120);
    ramp.SetPoint(1, 1, -9);
    ramp.SetPoint(3, 1, 11);
    ramp.CalcPDResult();
    EXPECT_EQ(ramp.GetPoint(0, 0), 0);
    EXPECT_EQ(ramp.GetPoint(1, 0), 1 + 2);
    EXPECT_EQ(ramp.GetPoint(4, 2), 4 + 2);
    EXPECT_EQ(ramp.GetPoint(5, 0), 5);
    EXPECT_EQ(ramp.GetPoint(2, 1), 127);

    // Random bytes, padding included, against a plain byte-wise computation
    // from the untouched neighbours.
    vek::CrtRandom random(11);
    for (int width : {1, 2, 3, 17}) {
        CSSEcharMatrix original(width, 40);
        FillRandomBytes(original, random);
        CSSEcharMatrix pd(original);
        pd.CalcPDResult();
        CSSEcharMatrix derivative(original);
        derivative.CalcDerivative();
        for (int row = 0; row < ByteStorageRows(original); ++row) {
            for (int x = 0; x < width; ++x) {
                SCOPED_TRACE(testing::Message() << "width " << width << ", " << x << ", " << row);
                const bool inner = x >= 1 && x <= width - 2;
                const int here = StoredByte(original, x, row);
                const int difference = inner ? StoredByte(original, x + 1, row) - StoredByte(original, x - 1, row) : 0;
                ASSERT_EQ(StoredByte(pd, x, row), inner ? Saturated(here + Wrapped(difference)) : here);
                ASSERT_EQ(StoredByte(derivative, x, row), Saturated(difference));
            }
        }
    }
}

// The spread at a position from its five samples, plainly.
int PlainSpread(int a, int b, int c, int d, int e)
{
    const int mean = (a + b + c + d + e) / 5;
    const float scaledSquare = static_cast<float>((a - mean) * (a - mean) * 5);
    return std::clamp(static_cast<int>(std::sqrt(scaledSquare)) - 63, -63, 63);
}

TEST(CSSEcharMatrixTime, TimeVarianceMeasuresTheFirstOfFiveSamples)
{
    // By hand: 10, 0, 0, 0, 0 has mean 2, so sqrt(5 x 64) = 17.9 gives 17 - 63;
    // the extremes clamp at 63; a flat run gives -63.
    CSSEcharMatrix samples(7, 2);
    const int rows[2][7] = {{10, 0, 0, 0, 0, 0, 0}, {-128, 127, 127, 127, 127, -5, 3}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 7; ++x) samples.SetPoint(x, y, static_cast<char>(rows[y][x]));
    CSSEcharMatrix spread;
    spread.CalcTimeVariance(samples);
    ASSERT_EQ(spread.GetSizeX(), 7);
    EXPECT_EQ(spread.GetPoint(2, 0), 17 - 63);
    EXPECT_EQ(spread.GetPoint(3, 0), -63);
    EXPECT_EQ(spread.GetPoint(2, 1), 63);
    for (int x : {0, 1, 5, 6}) EXPECT_EQ(spread.GetPoint(x, 1), 0) << x;
    EXPECT_EQ(StoredByte(spread, 3, 5), -63); // padding is measured too

    // Random bytes, padding included, and a field measured into itself.
    vek::CrtRandom random(23);
    CSSEcharMatrix field(40, 37);
    FillRandomBytes(field, random);
    const CSSEcharMatrix original(field);
    field.CalcTimeVariance(field);
    for (int row = 0; row < ByteStorageRows(original); ++row) {
        for (int x = 0; x < 40; ++x) {
            const auto at = [&](int dx) { return static_cast<int>(StoredByte(original, x + dx, row)); };
            const int expected = x >= 2 && x <= 37 ? PlainSpread(at(-2), at(-1), at(0), at(1), at(2)) : 0;
            ASSERT_EQ(StoredByte(field, x, row), expected) << x << ", " << row;
        }
    }
}

} // namespace
