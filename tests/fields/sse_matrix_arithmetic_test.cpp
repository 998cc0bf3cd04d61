#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "fields/field_storage.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::CreateFromRows;
using vek::test::ExpectLanes;
using vek::test::RowsOf;
using vek::test::Stored;

constexpr float kMinSentinel = 1000000.0f;
constexpr float kMaxSentinel = -1000000.0f;

// Every whole-field operation with a constant or with a second field, on
// random lanes that sit on every operation's no-data boundary (0.001, 0.002
// around 1, 0.005, 0.1, 5, exact 0), against the per-pixel rule. The amount
// is a root of a square, so it overflows and underflows; 0 - (-0) is +0.
TEST(FieldArithmetic, MixedAndUniformVectorsGiveThePerPixelResultAtEveryBoundary)
{
    const std::vector<float> values{-2.0f, -0.0f, 0.0f,  0.0009f, 0.001f, 0.0011f, 0.004f, 0.005f, 0.006f, 0.099f, 0.1f, 0.5f, 0.9979f, 0.9981f,
                                    1.0f,  1.0019f, 1.0021f, 1.5f, 2.0f, 3.0f, 4.99f, 5.0f, 1e20f, -1e-30f};
    using Op = std::function<void(CSSEMatrix&, const CSSEMatrix&)>;
    struct Case {
        const char* name;
        Op op;
        std::function<float(float, float)> pixel; // of p and q
    };
    const auto within = [](float d, float tolerance) { return d > -tolerance && d < tolerance; };
    const Case cases[] = {
        {"Absolute", [](CSSEMatrix& m, const CSSEMatrix&) { m.Absolute(); }, [](float p, float) { return std::sqrt(p * p); }},
        {"InvertSign", [](CSSEMatrix& m, const CSSEMatrix&) { m.InvertSign(); }, [](float p, float) { return 0.0f - p; }},
        {"OffsetMatrixAbove", [](CSSEMatrix& m, const CSSEMatrix&) { m.OffsetMatrixAbove(1.0f, 0.25f); }, [](float p, float) { return p > 1.0f ? p + 0.25f : p; }},
        {"OffsetMatrixBelow", [](CSSEMatrix& m, const CSSEMatrix&) { m.OffsetMatrixBelow(1.0f, 0.25f); }, [](float p, float) { return p < 1.0f ? p + 0.25f : p; }},
        {"LiftWhereNonZero", [](CSSEMatrix& m, const CSSEMatrix&) { m.LiftWhereNonZero(3.0f); }, [](float p, float) { return p > 0.005f ? p + 3.0f : p; }},
        {"ReplaceValueWithValue", [](CSSEMatrix& m, const CSSEMatrix&) { m.ReplaceValueWithValue(1.0f, 8.0f); },
         [&](float p, float) { return within(1.0f - p, 0.002f) ? 8.0f : p; }},
        {"ReplaceValueWithValue 0.5", [](CSSEMatrix& m, const CSSEMatrix&) { m.ReplaceValueWithValue(1.0f, 8.0f, 0.5f); },
         [&](float p, float) { return within(1.0f - p, 0.5f) ? 8.0f : p; }},
        {"TresholdAbove", [](CSSEMatrix& m, const CSSEMatrix&) { m.TresholdAbove(0.005f, 4.0f); }, [](float p, float) { return p > 0.005f ? 4.0f : 0.0f; }},
        {"TresholdBelow", [](CSSEMatrix& m, const CSSEMatrix&) { m.TresholdBelow(0.005f, 4.0f); }, [](float p, float) { return p < 0.005f ? 4.0f : 0.0f; }},
        {"TresholdAboveKeep", [](CSSEMatrix& m, const CSSEMatrix&) { m.TresholdAboveKeep(1.0f, 4.0f); }, [](float p, float) { return p > 1.0f ? 4.0f : p; }},
        {"ErasePixelsGreater", [](CSSEMatrix& m, const CSSEMatrix&) { m.ErasePixelsGreater(1.0f); }, [](float p, float) { return p > 1.0f ? 0.0f : p; }},
        {"ErasePixelsLower", [](CSSEMatrix& m, const CSSEMatrix&) { m.ErasePixelsLower(0.0f); }, [](float p, float) { return p < 0.0f ? 0.0f : p; }},
        {"AddMatrix", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrix(q); }, [](float p, float q) { return p + q; }},
        {"SubMatrix", [](CSSEMatrix& m, const CSSEMatrix& q) { m.SubMatrix(q); }, [](float p, float q) { return p - q; }},
        {"SubMatrixValidate", [](CSSEMatrix& m, const CSSEMatrix& q) { m.SubMatrixValidate(q); }, [](float p, float q) { return p > 0.0f ? p - q : p; }},
        {"AddMatrixOffseted", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffseted(q, 0.5f); }, [](float p, float q) { return p + std::max(0.0f, q - 0.5f); }},
        {"AddMatrixOffsetedNormed", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedNormed(q, 0.5f, 0.3f); },
         [](float p, float q) { return p + std::max(0.0f, q - 0.5f) * 0.3f; }},
        {"AddMatrixOffsetedConstrained", [](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedConstrained(q, 0.5f, 0.7f, 0.3f); },
         [](float p, float q) { return std::max(0.0f, (p < 0.001f ? 0.0f : q) - 0.5f) * 0.3f + p * 0.7f; }},
        // On a tie (0 and -0) the pixel stays.
        {"MaximumOf", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaximumOf(q); }, [](float p, float q) { return q > p ? q : p; }},
        {"MinimumOf", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MinimumOf(q); }, [](float p, float q) { return q < p ? q : p; }},
        {"CombineAbsolute", [](CSSEMatrix& m, const CSSEMatrix& q) { m.CombineAbsolute(q); }, [](float p, float q) { return std::sqrt(q * q + p * p); }},
        {"CombineMultiplicative", [](CSSEMatrix& m, const CSSEMatrix& q) { m.CombineMultiplicative(q); },
         [](float p, float q) { return std::sqrt((p * q) * (p * q)); }},
        {"MaskOut", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOut(q); }, [](float p, float q) { return q < 0.1f ? 0.0f : p; }},
        {"MaskOutAndValidate", [](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOutAndValidate(q); }, [](float p, float q) { return q < 0.1f && p > 0.0f ? 0.0f : p; }},
        {"Stencil", [](CSSEMatrix& m, const CSSEMatrix& q) { m.Stencil(q, 1.0f, 1.0f); }, [](float p, float q) { return q < 5.0f ? 0.0f : p; }},
        // Below is the same operation as Above under a second name.
        {"StencilThreshBelow", [](CSSEMatrix& m, const CSSEMatrix& q) { m.StencilThreshBelow(q, 1.0f); }, [](float p, float q) { return q < 1.0f ? 0.0f : p; }},
    };
    std::uint32_t seed = 11;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        vek::test::ForEachRandomField(seed, values, [&](CSSEMatrix& m, const CSSEMatrix& before) {
            CSSEMatrix q;
            q.CreateSimilar(m);
            vek::test::FillRandomLanes(q, ++seed, values);
            c.op(m, q);
            ExpectLanes(m, [&](int x, int row) { return c.pixel(Stored(before, x, row), Stored(q, x, row)); });
        });
    }
}

TEST(FieldArithmetic, RowsColumnsAndBlocksOfFourKeepTheirBounds)
{
    CSSEMatrix m;
    m.Create(6, 7);
    m.Fill(5.0f);
    m.SetPoint(4, 1, 1.0f);
    m.TresholdAbove(2.0f, 9.0f, 3); // every lane of the columns before the first becomes 0
    ExpectLanes(m, [](int x, int row) { return x < 3 || (x == 4 && row == 1) ? 0.0f : 9.0f; });
    m.TresholdBelow(20.0f, 7.0f, 100);
    ExpectLanes(m, [](int, int) { return 0.0f; });

    m.Fill(3.0f);
    m.SetPoint(2, 6, 1.0f);
    m.ReplaceLineAbove(2.0f, 8.0f, 100); // clamped to row 6
    ExpectLanes(m, [](int x, int row) { return row == 6 && x != 2 ? 8.0f : row == 6 ? 1.0f : 3.0f; });

    // Column 0: rows 0 to 3 hold 5, 5, 5, 6, so the whole vector goes.
    // Column 1: all four within the tolerance stay. Column 2: a stray value
    // in rows 4 to 7, another line, leaves rows 0 to 3 alone.
    m.Create(3, 7);
    m.Fill(5.0f);
    m.SetPoint(0, 3, 6.0f);
    m.SetPoint(1, 2, 5.09f);
    m.SetPoint(2, 4, 4.8f);
    m.EraseOtherValuePixels(5.0f, 0.1f);
    ExpectLanes(m, [](int x, int row) { return (x == 0 && row < 4) || (x == 2 && row >= 4) ? 0.0f : x == 1 && row == 2 ? 5.09f : 5.0f; });
}

TEST(FieldArithmetic, ScaledAndByteStencilsReadTheRoundedClampedMaskPixel)
{
    // An 8 x 8 field reads a 4 x 4 mask at half scale: pixel x reads mask
    // column trunc(x * 0.5 + 0.5), so columns 1 and 2 read column 1, and
    // column 7 reads column 4, clamped to 3. A stencil holds data from 5 on.
    CSSEMatrix mask;
    mask.Create(4, 4);
    mask.Fill(9.0f);
    mask.SetPoint(1, 0, 4.99f);
    mask.SetPoint(3, 3, 0.0f);
    CSSEMatrix m;
    m.Create(8, 8);
    m.Fill(1.0f);
    m.Stencil(mask, 0.5f, 0.5f);
    // The padding lanes (rows 8 to 11) are no pixels and stay.
    ExpectLanes(m, [](int x, int y) { return ((x == 1 || x == 2) && y == 0) || (x >= 5 && y >= 5 && y < 8) ? 0.0f : 1.0f; });

    // A 2 x 2 byte mask under a 4 x 3 field at scale 1, clamped: column 0
    // reads 5 and 100 and stays; the others read 4 and -3, a signed byte
    // (unsigned it would be 253).
    CSSEcharMatrix bytes(2, 2);
    bytes.SetPoint(0, 0, 5);
    bytes.SetPoint(1, 0, 4);
    bytes.SetPoint(0, 1, 100);
    bytes.SetPoint(1, 1, -3);
    m.Create(4, 3);
    m.Fill(2.0f);
    m.Stencil(bytes, 1.0f, 1.0f);
    ExpectLanes(m, [](int x, int row) { return row < 3 && x >= 1 ? 0.0f : 2.0f; });
}

TEST(FieldArithmetic, FieldsOfDifferentSizesMeetOnTheLinesTheyShare)
{
    // 6 x 5 (two lines) with 3 x 9 (three lines): columns 0 to 2 of this
    // field's lines change, padding included; columns 3 to 5 stay.
    CSSEMatrix m;
    m.Create(6, 5);
    m.Fill(1.0f);
    CSSEMatrix narrowTall;
    narrowTall.Create(3, 9);
    narrowTall.Fill(2.0f);
    m.AddMatrix(narrowTall);
    ExpectLanes(m, [](int x, int) { return x < 3 ? 3.0f : 1.0f; });
    narrowTall.FreeImageMemoryOnly();
    m.SubMatrix(narrowTall); // an operand without an image changes nothing
    ExpectLanes(m, [](int x, int) { return x < 3 ? 3.0f : 1.0f; });

    // The difference is made at the smaller size, dropping a sign if asked,
    // and this field may be one of its operands.
    CSSEMatrix a;
    a.Create(4, 6);
    a.Fill(1.0f);
    a.SetPoint(1, 1, 5.0f);
    CSSEMatrix b;
    b.Create(5, 3);
    b.Fill(2.0f);
    for (const auto& [dropNegative, dropPositive] : {std::pair{false, false}, {true, false}, {false, true}}) {
        CSSEMatrix d;
        d.CalcDifferenceMatrixConstrained(a, b, dropNegative, dropPositive);
        EXPECT_EQ(d.GetSizeX(), 4);
        EXPECT_EQ(d.GetSizeY(), 3);
        ExpectLanes(d, [&](int x, int row) { return x == 1 && row == 1 ? (dropPositive ? 0.0f : 3.0f) : (dropNegative ? 0.0f : -1.0f); });
    }
    a.CalcDifferenceMatrixConstrained(a, b, false, false);
    EXPECT_EQ(a.GetPoint(1, 1), 3.0f);
}

TEST(FieldStatistics, CountsAndSumsTakeEveryLaneAndKeepTheirOrderOfAdditions)
{
    // 3 x 5: two lines, rows 5 to 7 are padding and count too.
    CSSEMatrix m;
    m.Create(3, 5);
    m.Fill(1.0f);
    m.SetPoint(2, 4, 3.0f);
    Stored(m, 0, 7) = -2.0f;
    EXPECT_EQ(m.NumValuesAbove(1.0f), 1);
    EXPECT_EQ(m.NumValuesBelow(1.0f), 1);
    CSSEMatrix q;
    q.Create(3, 5);
    q.Fill(2.0f);
    EXPECT_EQ(m.NumValuesAbove(&q), 1);
    EXPECT_EQ(m.NumValuesBelow(&q), 23);
    EXPECT_EQ(m.NumValuesBelow(nullptr), 0);

    // One vector of 1e8, -4, 4, 4. In single precision 1e8 + 4 rounds back
    // to 1e8 (ties to even, a step of 8), but 1e8 + 8 doesn't.
    CSSEMatrix sums;
    sums.Create(1, 3);
    Stored(sums, 0, 0) = 1e8f;
    Stored(sums, 0, 1) = -4.0f;
    Stored(sums, 0, 2) = 4.0f;
    Stored(sums, 0, 3) = 4.0f;
    EXPECT_EQ(sums.IntegrateMatrixAbsolute(), 100000008.0f); // (l0 + l3) + (l2 + l1)
    EXPECT_EQ(sums.CalcAbsSum(), 100000000.0f);              // ((l0 + l1) + l2) + l3
    EXPECT_EQ(sums.IntegrateMatrix(), 100000000.0f);         // (1e8 + 4) + (4 - 4)
    EXPECT_EQ(sums.IntegrateMatrixAbsolute(2.0f, 0.5f), 100000008.0f);

    // Lane sums run over the lines in order: 1e8 first, then 4 + 4 + 4 in the
    // next lines never grows it.
    CSSEMatrix tall;
    tall.Create(2, 12);
    Stored(tall, 0, 0) = 1e8f;
    for (int line = 1; line < 4; ++line) Stored(tall, 0, 4 * line) = 4.0f;
    EXPECT_EQ(tall.IntegrateMatrix(), 1e8f);
}

TEST(FieldExtremes, WholeFieldSearchEqualsAPlainScanOfItsShrunkenWindow)
{
    std::mt19937 random(77);
    std::uniform_real_distribution<float> value(-10.0f, 10.0f);
    CSSEMatrix m;
    m.Create(23, 70);
    vek::test::FillStorage(m, [&](int, int) { return random() % 4 == 0 ? 0.0019f : value(random); });

    // All but the first and last line, all but three columns on each side,
    // padding lanes included; ExcludeZero skips -0.002 < p < 0.002.
    float want[4] = {kMaxSentinel, kMinSentinel, kMaxSentinel, kMinSentinel};
    for (int row = 4; row < 4 * (m.GetSSESizeY() - 1); ++row) {
        for (int x = 3; x < 20; ++x) {
            const float p = Stored(m, x, row);
            want[0] = std::max(want[0], p);
            want[1] = std::min(want[1], p);
            if (p > -0.002f && p < 0.002f) continue;
            want[2] = std::max(want[2], p);
            want[3] = std::min(want[3], p);
        }
    }
    float got[4];
    m.CalcMinMaxValues(&got[0], &got[1]);
    m.CalcMinMaxValuesExcludeZero(&got[2], &got[3]);
    EXPECT_EQ(std::vector<float>(got, got + 4), std::vector<float>(want, want + 4));

    // Narrower than 7 vectors or fewer than 3 lines: the sentinels.
    for (const auto& [sizeX, sizeY] : {std::pair{6, 100}, {100, 7}}) {
        m.Create(sizeX, sizeY);
        m.Fill(3.0f);
        m.CalcMinMaxValues(&got[0], &got[1]);
        EXPECT_EQ(got[0], kMaxSentinel);
        EXPECT_EQ(got[1], kMinSentinel);
    }
}

TEST(FieldExtremes, PatchIsClampedThenShrunkByALineAndThreeColumnsAtEachSide)
{
    // 20 x 24: six lines. The patch (2 .. 15, 5 .. 21) searches lines
    // (5 >> 2) + 1 = 2 to (21 >> 2) - 1 = 4 and vectors 5 to 12, the ends
    // excluded: rows 8 to 15, columns 5 to 11.
    CSSEMatrix m;
    m.Create(20, 24);
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 20; ++x) m.SetPoint(x, y, static_cast<float>(100 * y + x));
    float max = 0.0f;
    float min = 0.0f;
    m.CalcMaxValueOfPatch(&max, 2, 15, 5, 21);
    m.CalcMinValueOfPatch(&min, 2, 15, 5, 21);
    EXPECT_EQ(max, 100.0f * 15 + 11);
    EXPECT_EQ(min, 100.0f * 8 + 5);
    m.CalcMaxValueOfPatch(&max, -50, 1000, 0, 1000); // as (0 .. 19, 0 .. 23)
    EXPECT_EQ(max, 100.0f * 15 + 15);
    m.CalcMaxValueOfPatch(&max, 0, 6, 0, 23); // shrinks to nothing
    EXPECT_EQ(max, kMaxSentinel);

    // Here -0.005 < p < 0.005 is no data.
    m.Fill(0.0049f);
    m.SetPoint(5, 6, -0.0049f);
    m.CalcMinValueOfPatchExcludeZero(&min, 0, 13, 0, 15);
    EXPECT_EQ(min, kMinSentinel);
    m.SetPoint(5, 5, 0.0051f);
    m.CalcMinValueOfPatchExcludeZero(&min, 0, 13, 0, 15);
    EXPECT_EQ(min, 0.0051f);
    m.CalcMinValueOfPatch(&min, 0, 13, 0, 15);
    EXPECT_EQ(min, -0.0049f);
}

TEST(FieldBoundingBox, ScansForTheMinimaStartAtOneAndTheMaximaAtTheRim)
{
    const auto box = [](const CSSEMatrix& m, float value, bool above) {
        std::vector<int> b(4, -7);
        m.CalcBoundingBox(b[0], b[1], b[2], b[3], value, above);
        return b;
    };
    CSSEMatrix m;
    m.Create(8, 6);
    EXPECT_EQ(box(m, 0.5f, true), (std::vector<int>{7, 5, 0, 0})); // no hit
    m.SetPoint(0, 0, 1.0f); // seen by no scan: the minima start at 1, the maxima stop before 0
    EXPECT_EQ(box(m, 0.5f, true), (std::vector<int>{7, 5, 0, 0}));
    m.SetPoint(7, 2, 1.0f);
    m.SetPoint(3, 4, 1.0f);
    EXPECT_EQ(box(m, 0.5f, true), (std::vector<int>{3, 2, 7, 4}));

    // Below: value > p. The padding lanes, set to 0, are no pixels.
    m.Fill(5.0f);
    for (int x = 0; x < 8; ++x) Stored(m, x, 6) = Stored(m, x, 7) = 0.0f;
    m.SetPoint(2, 3, 1.0f);
    EXPECT_EQ(box(m, 2.0f, false), (std::vector<int>{2, 3, 2, 3}));
}

TEST(FieldEraseFrame, PeelsOnePixelOffEachAreaReadingTheFieldAsItWas)
{
    CSSEMatrix m;
    CreateFromRows(m, {"1111111", "1111111", "1122211", "1111111", "11111.."});
    CSSEMatrix removed;
    removed.Create(7, 5);
    m.EraseFrame(&removed);
    // Only the inner pixel next to the empty corner goes; the outermost
    // frame is never touched, and a pixel peeled in this pass does not peel
    // its own neighbours.
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{"1111111", "1111111", "1122211", "11111.1", "11111.."}));
    EXPECT_EQ(RowsOf(removed), (std::vector<std::string>{".......", ".......", ".......", ".....1.", "......."}));

    // An area in empty space loses its rim; a value close to 0 is data.
    CreateFromRows(m, {".......", ".33333.", ".33333.", ".33333.", "......."});
    m.SetPoint(3, 2, 1e-30f); // shown as '0'
    m.EraseFrame(nullptr);
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{".......", ".......", "..303..", ".......", "......."}));

    // With a mask its four-neighbours decide, not its centre.
    CreateFromRows(m, {"55555", "55555", "55555", "55555", "55555"});
    CSSEMatrix mask;
    CreateFromRows(mask, {"11111", "11.11", "11111", "11111", "1111."});
    m.EraseFrameWithMask(&mask);
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{"55555", "5.5.5", "55.55", "55555", "55555"}));
}

TEST(FieldEraseFrame, EraseWithMatrixSetsInnerPixelsWhereTheOtherFieldWins)
{
    CSSEMatrix other;
    CreateFromRows(other, {"99999", "93199", "99999", "99999"});
    CSSEMatrix m;
    CreateFromRows(m, {"22222", "22272", "22222", "22222"});
    CSSEMatrix forMin;
    forMin.CopyFromSSEMatrix(m);
    // Max: inner pixels where other > p and p != 7 become 7; (3, 1) already
    // holds 7 and (2, 1) has other 1 < 2.
    m.EraseWithMatrixMax(&other, 7.0f);
    EXPECT_EQ(RowsOf(m), (std::vector<std::string>{"22222", "27272", "27772", "22222"}));
    // Min: only (2, 1), where other is smaller, becomes 0.
    forMin.EraseWithMatrixMin(&other, 0.0f);
    EXPECT_EQ(RowsOf(forMin), (std::vector<std::string>{"22222", "22.72", "22222", "22222"}));
}

} // namespace
