#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "fields/field_test_helpers.h"
#include "fields/lane_properties.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::ExpectLanes;
using vek::test::FillRandomLanes;
using vek::test::StoredLane;

// Two 3 x 3 fields (one line each) with p at (0, 0) of this and q at (0, 0)
// of the other; the result at (0, 0) after `op`.
float Combined(float p, float q, const std::function<void(CSSEMatrix&, const CSSEMatrix&)>& op)
{
    CSSEMatrix m;
    m.Create(3, 3);
    m.SetPoint(0, 0, p);
    CSSEMatrix other;
    other.Create(3, 3);
    other.SetPoint(0, 0, q);
    op(m, other);
    return m.GetPoint(0, 0);
}

TEST(FieldCombination, EachOperationKeepsItsOwnNoDataBoundary)
{
    // SubMatrixValidate lowers only pixels above 0, possibly below 0.
    const auto subValidate = [](CSSEMatrix& m, const CSSEMatrix& q) { m.SubMatrixValidate(q); };
    EXPECT_EQ(Combined(0.0f, 5.0f, subValidate), 0.0f);
    EXPECT_EQ(Combined(-1.0f, 5.0f, subValidate), -1.0f);
    EXPECT_EQ(Combined(2.0f, 5.0f, subValidate), -3.0f);

    // AddMatrixOffsetedConstrained ignores q where p < 0.001.
    const auto constrained = [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedConstrained(q, 1.0f, 1.0f, 1.0f); };
    EXPECT_EQ(Combined(0.0f, 50.0f, constrained), 0.0f);
    EXPECT_EQ(Combined(-2.0f, 50.0f, constrained), -2.0f);
    EXPECT_EQ(Combined(0.0009f, 50.0f, constrained), 0.0009f);
    EXPECT_EQ(Combined(0.0011f, 50.0f, constrained), 49.0f + 0.0011f);
    // max(0, q - o) * b + p * a
    EXPECT_EQ(Combined(2.0f, 5.0f, [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedConstrained(q, 1.0f, 3.0f, 0.5f); }), 8.0f);
    EXPECT_EQ(Combined(2.0f, 0.5f, [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedConstrained(q, 1.0f, 3.0f, 0.5f); }), 6.0f);

    // A mask holds data from 0.1 on; the validating form spares p <= 0.
    const auto maskOut = [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOut(q); };
    EXPECT_EQ(Combined(4.0f, 0.099f, maskOut), 0.0f);
    EXPECT_EQ(Combined(4.0f, 0.1f, maskOut), 4.0f);
    const auto maskValidate = [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOutAndValidate(q); };
    EXPECT_EQ(Combined(4.0f, 0.099f, maskValidate), 0.0f);
    EXPECT_EQ(Combined(-4.0f, 0.0f, maskValidate), -4.0f);
    EXPECT_EQ(Combined(4.0f, 0.1f, maskValidate), 4.0f);

    // A stencil holds data from 5 on.
    const auto stencil = [](CSSEMatrix& m, const CSSEMatrix& q) { m.Stencil(q, 1.0f, 1.0f); };
    EXPECT_EQ(Combined(4.0f, 4.99f, stencil), 0.0f);
    EXPECT_EQ(Combined(4.0f, 5.0f, stencil), 4.0f);
}

TEST(FieldCombination, StencilThreshBelowIsTheSameOperationAsAbove)
{
    for (float q : {-1.0f, 2.9f, 3.0f, 3.1f}) {
        const float above = Combined(8.0f, q, [](CSSEMatrix& m, const CSSEMatrix& mask) { m.StencilThreshAbove(mask, 3.0f); });
        const float below = Combined(8.0f, q, [](CSSEMatrix& m, const CSSEMatrix& mask) { m.StencilThreshBelow(mask, 3.0f); });
        EXPECT_EQ(above, q < 3.0f ? 0.0f : 8.0f);
        EXPECT_EQ(below, above);
    }
}

TEST(FieldCombination, ScaledStencilReadsTheRoundedScaledMaskPixel)
{
    // A 4 x 4 mask that is 9 (keep) except at (1, 0) and (3, 3); this field
    // of 8 x 8 reads it at half scale: pixel x reads mask column
    // trunc(x * 0.5 + 0.5), so columns 1 and 2 read column 1, and columns 7
    // read column 4, clamped to 3.
    CSSEMatrix mask;
    mask.Create(4, 4);
    mask.Fill(9.0f);
    mask.SetPoint(1, 0, 4.0f);
    mask.SetPoint(3, 3, 0.0f);
    CSSEMatrix m;
    m.Create(8, 8);
    m.Fill(1.0f);
    m.Stencil(mask, 0.5f, 0.5f);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool erased = ((x == 1 || x == 2) && y == 0) || (x >= 5 && y >= 5);
            EXPECT_EQ(m.GetPoint(x, y), erased ? 0.0f : 1.0f) << x << ", " << y;
        }
    }
    // The padding lane of the last line is not a pixel and stays.
    EXPECT_EQ(StoredLane(m, 0, 8), 1.0f);
}

TEST(FieldCombination, ByteStencilReadsSignedBytesAtClampedPositions)
{
    // A 2 x 2 byte mask under a 4 x 3 field at scale 1: columns 2 and 3 read
    // mask column 1, row 2 reads mask row 1. A byte of -3 is below 5 (as an
    // unsigned byte it would be 253).
    CSSEcharMatrix mask;
    mask.Create(2, 2);
    mask.SetPoint(0, 0, 5);
    mask.SetPoint(1, 0, 4);
    mask.SetPoint(0, 1, 100);
    mask.SetPoint(1, 1, -3);
    CSSEMatrix m;
    m.Create(4, 3);
    m.Fill(2.0f);
    m.Stencil(mask, 1.0f, 1.0f);
    // Column 0 reads 5 and 100 and stays; the others read 4 and -3. The
    // padding lane (row 3) is no pixel.
    ExpectLanes(m, [](int x, int row) { return row < 3 && x >= 1 ? 0.0f : 2.0f; });
}

TEST(FieldCombination, MixedAndUniformVectorsGiveThePerPixelResult)
{
    const std::vector<float> values{-2.0f, -0.5f, 0.0f, 0.0005f, 0.05f, 0.1f, 1.0f, 3.0f, 6.0f};
    struct Case {
        const char* name;
        std::function<void(CSSEMatrix&, const CSSEMatrix&)> op;
        std::function<float(float, float)> pixel;
    };
    const Case cases[] = {
        {"AddMatrix", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrix(q); }, [](float p, float q) { return p + q; }},
        {"SubMatrix", [](CSSEMatrix& m, const CSSEMatrix& q) { m.SubMatrix(q); }, [](float p, float q) { return p - q; }},
        {"SubMatrixValidate", [](CSSEMatrix& m, const CSSEMatrix& q) { m.SubMatrixValidate(q); }, [](float p, float q) { return p > 0.0f ? p - q : p; }},
        {"AddMatrixOffseted", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffseted(q, 0.5f); },
         [](float p, float q) { return p + std::max(0.0f, q - 0.5f); }},
        {"AddMatrixOffsetedNormed", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedNormed(q, 0.5f, 0.3f); },
         [](float p, float q) { return p + std::max(0.0f, q - 0.5f) * 0.3f; }},
        {"AddMatrixOffsetedConstrained", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedConstrained(q, 0.5f, 0.7f, 0.3f); },
         [](float p, float q) { return std::max(0.0f, (p < 0.001f ? 0.0f : q) - 0.5f) * 0.3f + p * 0.7f; }},
        {"MaximumOf", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaximumOf(q); }, [](float p, float q) { return std::max(q, p); }},
        {"MinimumOf", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MinimumOf(q); }, [](float p, float q) { return std::min(q, p); }},
        {"CombineAbsolute", [](CSSEMatrix& m, const CSSEMatrix& q) { m.CombineAbsolute(q); }, [](float p, float q) { return std::sqrt(q * q + p * p); }},
        {"CombineMultiplicative", [](CSSEMatrix& m, const CSSEMatrix& q) { m.CombineMultiplicative(q); },
         [](float p, float q) { return std::sqrt((p * q) * (p * q)); }},
        {"MaskOut", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOut(q); }, [](float p, float q) { return q < 0.1f ? 0.0f : p; }},
        {"MaskOutAndValidate", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOutAndValidate(q); },
         [](float p, float q) { return q < 0.1f && p > 0.0f ? 0.0f : p; }},
        {"Stencil", [](CSSEMatrix& m, const CSSEMatrix& q) { m.Stencil(q, 1.0f, 1.0f); }, [](float p, float q) { return q < 5.0f ? 0.0f : p; }},
    };
    std::uint32_t seed = 101;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        vek::test::ForEachRandomField(seed, values, [&](CSSEMatrix& m, const CSSEMatrix& before) {
            CSSEMatrix q;
            q.CreateSimilar(m);
            FillRandomLanes(q, ++seed, values);
            c.op(m, q);
            ExpectLanes(m, [&](int x, int row) { return c.pixel(StoredLane(before, x, row), StoredLane(q, x, row)); });
        });
    }
}

TEST(FieldCombination, FieldsOfDifferentSizesMeetOnTheLinesTheyShare)
{
    // 6 x 5 (two lines) with 3 x 9 (three lines): columns 0 to 2 of the two
    // lines of this field change, padding lanes included; columns 3 to 5 stay.
    CSSEMatrix m;
    m.Create(6, 5);
    m.Fill(1.0f);
    CSSEMatrix narrowTall;
    narrowTall.Create(3, 9);
    narrowTall.Fill(2.0f);
    m.AddMatrix(narrowTall);
    m.MaximumOf(narrowTall);
    ExpectLanes(m, [](int x, int) { return x < 3 ? 3.0f : 1.0f; });

    // An operand without image changes nothing.
    CSSEMatrix released;
    released.Create(6, 5);
    released.FreeImageMemoryOnly();
    m.SubMatrix(released);
    ExpectLanes(m, [](int x, int) { return x < 3 ? 3.0f : 1.0f; });
}

TEST(FieldCombination, DifferenceIsMadeAtTheSmallerSizeAndDropsTheUnwantedSign)
{
    CSSEMatrix a;
    a.Create(4, 6);
    a.Fill(1.0f);
    a.SetPoint(1, 1, 5.0f);
    CSSEMatrix b;
    b.Create(5, 3);
    b.Fill(2.0f);

    CSSEMatrix d;
    d.Create(20, 20);
    d.CalcDifferenceMatrixConstrained(a, b, false, false);
    EXPECT_EQ(d.GetSizeX(), 4);
    EXPECT_EQ(d.GetSizeY(), 3);
    ExpectLanes(d, [](int x, int row) { return x == 1 && row == 1 ? 3.0f : -1.0f; });

    d.CalcDifferenceMatrixConstrained(a, b, true, false);
    ExpectLanes(d, [](int x, int row) { return x == 1 && row == 1 ? 3.0f : 0.0f; });
    d.CalcDifferenceMatrixConstrained(a, b, false, true);
    ExpectLanes(d, [](int x, int row) { return x == 1 && row == 1 ? 0.0f : -1.0f; });

    // This field may be one of the operands.
    a.CalcDifferenceMatrixConstrained(a, b, false, false);
    EXPECT_EQ(a.GetSizeY(), 3);
    ExpectLanes(a, [](int x, int row) { return x == 1 && row == 1 ? 3.0f : -1.0f; });
}

} // namespace
