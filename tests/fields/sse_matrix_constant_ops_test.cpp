#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "fields/field_test_helpers.h"
#include "fields/lane_properties.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::Bits;
using vek::test::ExpectLanes;
using vek::test::StoredLane;

// A 3 x 3 field (one line: rows 0 to 2 and one padding lane) whose pixel
// (0, 0) is `v`; the rest is 0.
float AfterOnePixel(float v, const std::function<void(CSSEMatrix&)>& op)
{
    CSSEMatrix m;
    m.Create(3, 3);
    m.SetPoint(0, 0, v);
    op(m);
    return m.GetPoint(0, 0);
}

TEST(FieldWithConstant, EachOperationKeepsItsOwnNoDataBoundary)
{
    // LiftWhereNonZero treats everything up to 0.005 as empty, negatives too.
    const auto lift = [](CSSEMatrix& m) { m.LiftWhereNonZero(1.0f); };
    EXPECT_EQ(AfterOnePixel(0.004f, lift), 0.004f);
    EXPECT_EQ(AfterOnePixel(0.005f, lift), 0.005f);
    EXPECT_EQ(AfterOnePixel(0.006f, lift), 0.006f + 1.0f);
    EXPECT_EQ(AfterOnePixel(-3.0f, lift), -3.0f);

    // ReplaceValueWithValue: b where -0.002 < a - p < 0.002.
    const auto replaceOne = [](CSSEMatrix& m) { m.ReplaceValueWithValue(1.0f, 7.0f); };
    EXPECT_EQ(AfterOnePixel(1.0019f, replaceOne), 7.0f);
    EXPECT_EQ(AfterOnePixel(0.9981f, replaceOne), 7.0f);
    EXPECT_EQ(AfterOnePixel(1.0021f, replaceOne), 1.0021f);
    EXPECT_EQ(AfterOnePixel(0.9979f, replaceOne), 0.9979f);
    const auto replaceWide = [](CSSEMatrix& m) { m.ReplaceValueWithValue(1.0f, 7.0f, 0.5f); };
    EXPECT_EQ(AfterOnePixel(1.4f, replaceWide), 7.0f);
    EXPECT_EQ(AfterOnePixel(1.5f, replaceWide), 1.5f); // the interval is open
    EXPECT_EQ(AfterOnePixel(0.5f, replaceWide), 0.5f);

    // The thresholded offsets are strict.
    EXPECT_EQ(AfterOnePixel(2.0f, [](CSSEMatrix& m) { m.OffsetMatrixAbove(2.0f, 1.0f); }), 2.0f);
    EXPECT_EQ(AfterOnePixel(2.5f, [](CSSEMatrix& m) { m.OffsetMatrixAbove(2.0f, 1.0f); }), 3.5f);
    EXPECT_EQ(AfterOnePixel(2.0f, [](CSSEMatrix& m) { m.OffsetMatrixBelow(2.0f, 1.0f); }), 2.0f);
    EXPECT_EQ(AfterOnePixel(1.5f, [](CSSEMatrix& m) { m.OffsetMatrixBelow(2.0f, 1.0f); }), 2.5f);
}

TEST(FieldWithConstant, SignAndAmountAreArithmeticNotBitTricks)
{
    const auto invert = [](CSSEMatrix& m) { m.InvertSign(); };
    EXPECT_EQ(Bits(AfterOnePixel(0.0f, invert)), Bits(0.0f));
    EXPECT_EQ(Bits(AfterOnePixel(-0.0f, invert)), Bits(0.0f)); // 0 - (-0) is +0
    EXPECT_EQ(AfterOnePixel(2.5f, invert), -2.5f);

    // The amount is the root of the square: it overflows and underflows.
    const auto absolute = [](CSSEMatrix& m) { m.Absolute(); };
    EXPECT_EQ(AfterOnePixel(-3.0f, absolute), 3.0f);
    EXPECT_EQ(AfterOnePixel(-1e20f, absolute), std::numeric_limits<float>::infinity());
    EXPECT_EQ(AfterOnePixel(-1e-30f, absolute), 0.0f);

    EXPECT_EQ(AfterOnePixel(-1.5f, [](CSSEMatrix& m) { m.ScalarMultiply(-2.0f); }), 3.0f);
}

TEST(FieldWithConstant, ReplaceLineAboveTouchesOneClampedRow)
{
    CSSEMatrix m;
    m.Create(4, 6);
    m.Fill(3.0f);
    m.SetPoint(2, 5, 1.0f);
    m.ReplaceLineAbove(2.0f, 9.0f, 100); // clamped to row 5
    ExpectLanes(m, [](int x, int row) {
        if (row != 5) return 3.0f;
        return x == 2 ? 1.0f : 9.0f;
    });
}

TEST(FieldWithConstant, MixedAndUniformVectorsGiveThePerPixelResult)
{
    const std::vector<float> values{-1.0f, 0.0f, 0.004f, 0.006f, 1.0f, 1.0015f, 2.0f, 2.5f};
    struct Case {
        const char* name;
        std::function<void(CSSEMatrix&)> op;
        std::function<float(float)> pixel;
    };
    const Case cases[] = {
        {"OffsetMatrixAbove", [](CSSEMatrix& m) { m.OffsetMatrixAbove(1.0f, 0.25f); }, [](float p) { return p > 1.0f ? p + 0.25f : p; }},
        {"OffsetMatrixBelow", [](CSSEMatrix& m) { m.OffsetMatrixBelow(1.0f, 0.25f); }, [](float p) { return p < 1.0f ? p + 0.25f : p; }},
        {"LiftWhereNonZero", [](CSSEMatrix& m) { m.LiftWhereNonZero(3.0f); }, [](float p) { return p > 0.005f ? p + 3.0f : p; }},
        {"ReplaceValueWithValue", [](CSSEMatrix& m) { m.ReplaceValueWithValue(1.0f, 8.0f); },
         [](float p) {
             const float d = 1.0f - p;
             return d > -0.002f && d < 0.002f ? 8.0f : p;
         }},
        {"TresholdAbove", [](CSSEMatrix& m) { m.TresholdAbove(0.005f, 4.0f); }, [](float p) { return p > 0.005f ? 4.0f : 0.0f; }},
        {"TresholdBelow", [](CSSEMatrix& m) { m.TresholdBelow(0.005f, 4.0f); }, [](float p) { return p < 0.005f ? 4.0f : 0.0f; }},
        {"TresholdAboveKeep", [](CSSEMatrix& m) { m.TresholdAboveKeep(1.0f, 4.0f); }, [](float p) { return p > 1.0f ? 4.0f : p; }},
        {"ErasePixelsGreater", [](CSSEMatrix& m) { m.ErasePixelsGreater(1.0f); }, [](float p) { return p > 1.0f ? 0.0f : p; }},
        {"ErasePixelsLower", [](CSSEMatrix& m) { m.ErasePixelsLower(0.0f); }, [](float p) { return p < 0.0f ? 0.0f : p; }},
    };
    std::uint32_t seed = 11;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        vek::test::ForEachRandomField(seed, values, [&](CSSEMatrix& m, const CSSEMatrix& before) {
            c.op(m);
            ExpectLanes(m, [&](int x, int row) { return c.pixel(StoredLane(before, x, row)); });
        });
    }
}

TEST(FieldThresholds, ColumnsBeforeTheFirstBecomeZeroInEveryLane)
{
    CSSEMatrix m;
    m.Create(6, 3);
    m.Fill(5.0f);
    m.SetPoint(4, 1, 1.0f);
    m.TresholdAbove(2.0f, 9.0f, 3);
    ExpectLanes(m, [](int x, int row) {
        if (x < 3) return 0.0f;
        return x == 4 && row == 1 ? 0.0f : 9.0f;
    });
    m.Fill(1.0f);
    m.TresholdBelow(2.0f, 7.0f, 100); // a first column beyond the field clears everything
    ExpectLanes(m, [](int, int) { return 0.0f; });
    m.Fill(1.0f);
    m.TresholdBelow(2.0f, 7.0f, -4);
    ExpectLanes(m, [](int, int) { return 7.0f; });
}

TEST(FieldThresholds, OtherValuesAreErasedInBlocksOfFourRows)
{
    // Column 0: rows 0 to 3 hold 5, 5, 5, 6, so the whole vector goes. Column
    // 1: all four within the tolerance, so all stay. Column 2: rows 4 to 7
    // are another line; a stray value there leaves rows 0 to 3 alone.
    CSSEMatrix m;
    m.Create(3, 7);
    m.Fill(5.0f);
    m.SetPoint(0, 3, 6.0f);
    m.SetPoint(1, 2, 5.09f);
    m.SetPoint(2, 4, 4.8f);
    m.EraseOtherValuePixels(5.0f, 0.1f);
    ExpectLanes(m, [](int x, int row) {
        if (x == 0 && row < 4) return 0.0f;
        if (x == 2 && row >= 4) return 0.0f;
        return x == 1 && row == 2 ? 5.09f : 5.0f;
    });
}

} // namespace
