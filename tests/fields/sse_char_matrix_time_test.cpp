#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "fields/field_storage.h"
#include "vekdll/fields/sse_char_matrix.h"

namespace {

using vek::test::FillRandomBytes;
using vek::test::FillStorage;
using vek::test::StorageRows;
using vek::test::Stored;

signed char Wrapped(int v)
{
    return static_cast<signed char>(static_cast<unsigned char>(v & 0xFF));
}

signed char Saturated(int v)
{
    return static_cast<signed char>(std::clamp(v, -128, 127));
}

TEST(CSSEcharMatrixTime, ColumnProfileSumsRaisedBytesOverTheLinesTaken)
{
    CSSEcharMatrix m(4, 20); // two lines, divisor 32 always
    FillStorage(m, [](int x, int row) { return x == 3 ? (row == 0 ? -33 : 0) : 30 * x + row; });
    for (int offset : {0, 40, -300}) {
        for (int maxRow : {2000000000, 31, 16, 15, -1}) {
            SCOPED_TRACE(testing::Message() << "offset " << offset << ", maxRow " << maxRow);
            const t_intvector profile = m.GetIntegralVectorFromMatrix(offset, maxRow);
            const std::unique_ptr<int[]> owned(profile.Data);
            ASSERT_EQ(profile.Length, 4);
            const int rows = 16 * std::clamp(maxRow >> 4, 0, 2);
            for (int x = 0; x < 4; ++x) {
                int sum = 0;
                for (int row = 0; row < rows; ++row) sum += Wrapped(Stored(m, x, row) + offset);
                EXPECT_EQ(profile.Data[x], sum / 32) << "column " << x; // -33 / 32 is -1: truncation
            }
        }
    }
}

TEST(CSSEcharMatrixTime, SyllablesCountRisesSeparatedByFalls)
{
    // A field of one line whose every byte in column x is the profile's value.
    const auto syllables = [](int length, std::initializer_list<std::pair<int, int>> humps, int ground, int top) {
        CSSEcharMatrix m(length, 15);
        FillStorage(m, [&](int x, int) {
            for (const auto& [from, to] : humps)
                if (x >= from && x <= to) return top;
            return ground;
        });
        return m.CalcNumSyllables();
    };
    EXPECT_EQ(syllables(60, {{10, 17}, {25, 32}, {40, 47}}, 40, 120), 3);
    EXPECT_EQ(syllables(60, {{10, 17}, {40, 47}}, -80, 100), 2); // the profile runs from -120 to 60
    EXPECT_EQ(syllables(60, {{15, 29}, {30, 59}}, 40, 80), 1);   // a staircase rises twice without a fall
    EXPECT_EQ(syllables(40, {}, 90, 90), 0);
    EXPECT_EQ(syllables(8, {{3, 4}}, 40, 120), 0); // no room between the margins
    EXPECT_EQ(syllables(30, {{0, 2}}, 40, 120), 0); // a hump in the margin
    EXPECT_EQ(CSSEcharMatrix(0, 5).CalcNumSyllables(), 0);
}

TEST(CSSEcharMatrixTime, DifferencesAlongXWrapOrSaturateAsEachOperationSays)
{
    // A byte of 120 with a difference of 11 - (-9) = 20 saturates at 127.
    CSSEcharMatrix ramp(6, 3);
    FillStorage(ramp, [](int x, int) { return x; });
    ramp.SetPoint(2, 1, 120);
    ramp.SetPoint(1, 1, -9);
    ramp.SetPoint(3, 1, 11);
    ramp.CalcPDResult();
    EXPECT_EQ(ramp.GetPoint(2, 1), 127);
    EXPECT_EQ(ramp.GetPoint(4, 2), 4 + 2);

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
        for (int row = 0; row < StorageRows(original); ++row) {
            for (int x = 0; x < width; ++x) {
                SCOPED_TRACE(testing::Message() << "width " << width << ", " << x << ", " << row);
                const bool inner = x >= 1 && x <= width - 2;
                const int here = Stored(original, x, row);
                const int difference = inner ? Stored(original, x + 1, row) - Stored(original, x - 1, row) : 0;
                ASSERT_EQ(Stored(pd, x, row), inner ? Saturated(here + Wrapped(difference)) : here);
                ASSERT_EQ(Stored(derivative, x, row), Saturated(difference));
            }
        }
    }
}

TEST(CSSEcharMatrixTime, TimeVarianceMeasuresTheFirstOfFiveSamples)
{
    // By hand: 10, 0, 0, 0, 0 has mean 2, so sqrt(5 x 64) = 17.9 gives
    // 17 - 63; the extremes clamp at 63; a flat run gives -63.
    CSSEcharMatrix samples(7, 2);
    const int rows[2][7] = {{10, 0, 0, 0, 0, 0, 0}, {-128, 127, 127, 127, 127, -5, 3}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 7; ++x) samples.SetPoint(x, y, static_cast<char>(rows[y][x]));
    CSSEcharMatrix spread;
    spread.CalcTimeVariance(samples);
    EXPECT_EQ(spread.GetPoint(2, 0), 17 - 63);
    EXPECT_EQ(spread.GetPoint(3, 0), -63);
    EXPECT_EQ(spread.GetPoint(2, 1), 63);
    EXPECT_EQ(spread.GetPoint(1, 1), 0);
    EXPECT_EQ(spread.GetPoint(5, 1), 0);

    // Random bytes, padding included, measured into the same field, against
    // the plain measure.
    vek::CrtRandom random(23);
    CSSEcharMatrix field(40, 37);
    FillRandomBytes(field, random);
    const CSSEcharMatrix original(field);
    field.CalcTimeVariance(field);
    for (int row = 0; row < StorageRows(original); ++row) {
        for (int x = 0; x < 40; ++x) {
            int expected = 0;
            if (x >= 2 && x <= 37) {
                int sum = 0;
                for (int k = -2; k <= 2; ++k) sum += Stored(original, x + k, row);
                const int deviation = Stored(original, x - 2, row) - sum / 5;
                expected = std::clamp(static_cast<int>(std::sqrt(static_cast<float>(deviation * deviation * 5))) - 63, -63, 63);
            }
            ASSERT_EQ(Stored(field, x, row), expected) << x << ", " << row;
        }
    }
}

} // namespace
