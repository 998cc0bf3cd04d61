#include <random>

#include "fields/field_storage.h"

namespace {

using namespace vek::test;

constexpr float kMinSentinel = 1000000.0f;
constexpr float kMaxSentinel = -1000000.0f;

// Every whole-field operation with a constant or with a second field, on
// random lanes that sit on every operation's no-data boundary (0.001, 0.002
// around 1, 0.005, 0.1, 5, exact 0), against the per-pixel rule. Half of the
// vectors hold one value in all four lanes, so that both the fast path where
// the lanes agree and the mixed path are taken. The amount is a root of a
// square, so it overflows and underflows; 0 - (-0) is +0.
TEST(FieldArithmetic, MixedAndUniformVectorsGiveThePerPixelResultAtEveryBoundary)
{
    const std::vector<float> values{-2.0f, -0.0f, 0.0f,    0.0009f, 0.001f,  0.0011f, 0.004f, 0.005f, 0.006f, 0.099f, 0.1f,  0.5f,
                                    0.9979f, 0.9981f, 1.0f, 1.0019f, 1.0021f, 1.5f,    2.0f,   3.0f,   4.99f,  5.0f,   1e20f, -1e-30f};
    std::mt19937 random(11);
    const auto randomField = [&](int sizeX, int sizeY) {
        CSSEMatrix m = Filled(sizeX, sizeY, 0.0f);
        for (int row = 0; row < StorageRows(m); row += 4) {
            for (int x = 0; x < sizeX; ++x) {
                const bool uniform = random() % 2 == 0;
                const float common = values[random() % values.size()];
                for (int lane = 0; lane < 4; ++lane) Stored(m, x, row + lane) = uniform ? common : values[random() % values.size()];
            }
        }
        return m;
    };
    using Op = std::function<void(CSSEMatrix&, const CSSEMatrix&)>;
    using Pixel = std::function<float(float, float)>; // of p and q
    const auto within = [](float d, float tolerance) { return d > -tolerance && d < tolerance; };
    const std::pair<Op, Pixel> cases[] = {
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.Absolute(); }, [](float p, float) { return std::sqrt(p * p); }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.InvertSign(); }, [](float p, float) { return 0.0f - p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.OffsetMatrixAbove(1.0f, 0.25f); }, [](float p, float) { return p > 1.0f ? p + 0.25f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.OffsetMatrixBelow(1.0f, 0.25f); }, [](float p, float) { return p < 1.0f ? p + 0.25f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.LiftWhereNonZero(3.0f); }, [](float p, float) { return p > 0.005f ? p + 3.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.ReplaceValueWithValue(1.0f, 8.0f); }, [&](float p, float) { return within(1.0f - p, 0.002f) ? 8.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.ReplaceValueWithValue(1.0f, 8.0f, 0.5f); }, [&](float p, float) { return within(1.0f - p, 0.5f) ? 8.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.TresholdAbove(0.005f, 4.0f); }, [](float p, float) { return p > 0.005f ? 4.0f : 0.0f; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.TresholdBelow(0.005f, 4.0f); }, [](float p, float) { return p < 0.005f ? 4.0f : 0.0f; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.TresholdAboveKeep(1.0f, 4.0f); }, [](float p, float) { return p > 1.0f ? 4.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.ErasePixelsGreater(1.0f); }, [](float p, float) { return p > 1.0f ? 0.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix&) { m.ErasePixelsLower(0.0f); }, [](float p, float) { return p < 0.0f ? 0.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrix(q); }, [](float p, float q) { return p + q; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.SubMatrix(q); }, [](float p, float q) { return p - q; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.SubMatrixValidate(q); }, [](float p, float q) { return p > 0.0f ? p - q : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffseted(q, 0.5f); }, [](float p, float q) { return p + std::max(0.0f, q - 0.5f); }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedNormed(q, 0.5f, 0.3f); }, [](float p, float q) { return p + std::max(0.0f, q - 0.5f) * 0.3f; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.AddMatrixOffsetedConstrained(q, 0.5f, 0.7f, 0.3f); },
         [](float p, float q) { return std::max(0.0f, (p < 0.001f ? 0.0f : q) - 0.5f) * 0.3f + p * 0.7f; }},
        // On a tie (0 and -0) the pixel stays.
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.MaximumOf(q); }, [](float p, float q) { return q > p ? q : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.MinimumOf(q); }, [](float p, float q) { return q < p ? q : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.CombineAbsolute(q); }, [](float p, float q) { return std::sqrt(q * q + p * p); }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.CombineMultiplicative(q); }, [](float p, float q) { return std::sqrt((p * q) * (p * q)); }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOut(q); }, [](float p, float q) { return q < 0.1f ? 0.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.MaskOutAndValidate(q); }, [](float p, float q) { return q < 0.1f && p > 0.0f ? 0.0f : p; }},
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.Stencil(q, 1.0f, 1.0f); }, [](float p, float q) { return q < 5.0f ? 0.0f : p; }},
        // Below is the same operation as Above under a second name.
        {[](CSSEMatrix& m, const CSSEMatrix& q) { m.StencilThreshBelow(q, 1.0f); }, [](float p, float q) { return q < 1.0f ? 0.0f : p; }},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        // One block and several, with one to four lanes of padding.
        for (const auto& [sizeX, sizeY] : {std::pair{9, 7}, {13, 12}, {5, 130}}) {
            SCOPED_TRACE(testing::Message() << "operation " << i << " on " << sizeX << " x " << sizeY);
            CSSEMatrix m = randomField(sizeX, sizeY);
            const CSSEMatrix q = randomField(sizeX, sizeY), before = CopyOf(m);
            cases[i].first(m, q);
            ExpectLanes(m, [&](int x, int row) { return cases[i].second(Stored(before, x, row), Stored(q, x, row)); });
        }
    }
}

TEST(FieldArithmetic, RowsColumnsAndBlocksOfFourKeepTheirBounds)
{
    CSSEMatrix m = WithPoints(6, 7, 5.0f, {{4, 1, 1.0f}});
    m.TresholdAbove(2.0f, 9.0f, 3); // every lane of the columns before the first becomes 0
    ExpectLanes(m, [](int x, int row) { return x < 3 || (x == 4 && row == 1) ? 0.0f : 9.0f; });
    Replace(m, WithPoints(6, 7, 3.0f, {{2, 6, 1.0f}}));
    m.ReplaceLineAbove(2.0f, 8.0f, 100); // clamped to row 6
    ExpectLanes(m, [](int x, int row) { return row != 6 ? 3.0f : x == 2 ? 1.0f : 8.0f; });

    // Column 0: rows 0 to 3 hold 5, 5, 5, 6, so the whole vector goes.
    // Column 1: all four within the tolerance stay. Column 2: a stray value
    // in rows 4 to 7, another line, leaves rows 0 to 3 alone.
    Replace(m, WithPoints(3, 7, 5.0f, {{0, 3, 6.0f}, {1, 2, 5.09f}, {2, 4, 4.8f}}));
    m.EraseOtherValuePixels(5.0f, 0.1f);
    ExpectLanes(m, [](int x, int row) { return (x == 0 && row < 4) || (x == 2 && row >= 4) ? 0.0f : x == 1 && row == 2 ? 5.09f : 5.0f; });
}

TEST(FieldArithmetic, ScaledAndByteStencilsReadTheRoundedClampedMaskPixel)
{
    // An 8 x 8 field reads a 4 x 4 mask at half scale: pixel x reads mask
    // column trunc(x * 0.5 + 0.5), so columns 1 and 2 read column 1, and
    // column 7 reads column 4, clamped to 3. A stencil holds data from 5 on.
    const CSSEMatrix mask = FieldOf(4, 4, [](int x, int y) { return x == 1 && y == 0 ? 4.99f : x == 3 && y == 3 ? 0.0f : 9.0f; });
    CSSEMatrix m = Filled(8, 8, 1.0f);
    m.Stencil(mask, 0.5f, 0.5f);
    // The padding lanes (rows 8 to 11) are no pixels and stay.
    ExpectLanes(m, [](int x, int y) { return ((x == 1 || x == 2) && y == 0) || (x >= 5 && y >= 5 && y < 8) ? 0.0f : 1.0f; });

    // A 2 x 2 byte mask under a 4 x 3 field at scale 1, clamped: column 0
    // reads 5 and 100 and stays; the others read 4 and -3, a signed byte.
    Replace(m, Filled(4, 3, 2.0f));
    m.Stencil(FieldOf<CSSEcharMatrix>(2, 2, [](int x, int row) { return row == 0 ? 5 - x : x == 0 ? 100 : -3; }), 1.0f, 1.0f);
    ExpectLanes(m, [](int x, int row) { return row < 3 && x >= 1 ? 0.0f : 2.0f; });
}

TEST(FieldArithmetic, FieldsOfDifferentSizesMeetOnTheLinesTheyShare)
{
    // 6 x 5 (two lines) with 3 x 9 (three lines): columns 0 to 2 of this
    // field's lines change, padding included; columns 3 to 5 stay. An
    // operand without an image changes nothing.
    CSSEMatrix m = Filled(6, 5, 1.0f);
    CSSEMatrix narrowTall = Filled(3, 9, 2.0f);
    m.AddMatrix(narrowTall);
    narrowTall.FreeImageMemoryOnly();
    m.SubMatrix(narrowTall);
    ExpectLanes(m, [](int x, int) { return x < 3 ? 3.0f : 1.0f; });

    // The difference is made at the smaller size, dropping a sign if asked;
    // this field may be one of its operands.
    CSSEMatrix a = WithPoints(4, 6, 1.0f, {{1, 1, 5.0f}});
    const CSSEMatrix b = Filled(5, 3, 2.0f);
    for (const auto& [dropNegative, dropPositive] : {std::pair{false, false}, {true, false}, {false, true}}) {
        m.CalcDifferenceMatrixConstrained(a, b, dropNegative, dropPositive);
        EXPECT_EQ(std::pair(m.GetSizeX(), m.GetSizeY()), std::pair(4, 3));
        ExpectLanes(m, [n = dropNegative, p = dropPositive](int x, int row) { return x == 1 && row == 1 ? (p ? 0.0f : 3.0f) : (n ? 0.0f : -1.0f); });
    }
    a.CalcDifferenceMatrixConstrained(a, b, false, false);
    EXPECT_EQ(a.GetPoint(1, 1), 3.0f);
}

TEST(FieldStatistics, CountsAndSumsTakeEveryLaneAndKeepTheirOrderOfAdditions)
{
    // 3 x 5: two lines, rows 5 to 7 are padding and count too.
    CSSEMatrix m = FieldOf(3, 5, [](int x, int row) { return x == 2 && row == 4 ? 3.0f : x == 0 && row == 7 ? -2.0f : 1.0f; });
    const CSSEMatrix q = Filled(3, 5, 2.0f);
    EXPECT_EQ((std::vector<int>{m.NumValuesAbove(1.0f), m.NumValuesBelow(1.0f), m.NumValuesBelow(2.0f), m.NumValuesAbove(&q), m.NumValuesBelow(&q), m.NumValuesBelow(nullptr)}),
              (std::vector<int>{1, 1, 23, 1, 23, 0}));

    // One vector of 1e8, -4, 4, 4. In single precision 1e8 + 4 rounds back
    // to 1e8 (ties to even, a step of 8), but 1e8 + 8 doesn't; at 3e8 the
    // step is 32.
    Replace(m, FieldOf(1, 3, [](int, int row) { return row == 0 ? 1e8f : row == 1 ? -4.0f : 4.0f; }));
    EXPECT_EQ(m.IntegrateMatrixAbsolute(), 100000008.0f);             // (l0 + l3) + (l2 + l1)
    EXPECT_EQ(m.CalcAbsSum(), 100000000.0f);                          // ((l0 + l1) + l2) + l3
    EXPECT_EQ(m.IntegrateMatrix(), 100000000.0f);                     // (1e8 + 4) + (4 - 4)
    EXPECT_EQ(m.IntegrateMatrixAbsolute(2.0f, 1.5f), 300000032.0f); // (3e8 + 12) + (12 + 12)
    EXPECT_EQ(m.IntegrateMatrixAbsolute(-1.0f, 1.0f), -100000008.0f); // the amounts are scaled, not the pixels
    // Lane sums run over the lines in order: 1e8 first, then 4 + 4 + 4 in
    // the next lines never grows it.
    Replace(m, FieldOf(2, 12, [](int x, int row) { return x == 0 && row % 4 == 0 ? (row == 0 ? 1e8f : 4.0f) : 0.0f; }));
    EXPECT_EQ(m.IntegrateMatrix(), 1e8f);
}

TEST(FieldExtremes, SearchesEqualAPlainScanOfTheirShrunkenWindows)
{
    // All but the first and last line, all but three columns on each side,
    // padding lanes included; ExcludeZero skips -0.002 < p < 0.002.
    std::mt19937 random(77);
    std::uniform_real_distribution<float> value(-10.0f, 10.0f);
    CSSEMatrix m = FieldOf(23, 70, [&](int x, int row) { return x < 3 || x >= 20 || row < 4 || row >= 68 ? (row % 2 == 0 ? 99.0f : -99.0f) : random() % 4 == 0 ? 0.0019f : value(random); });
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
    const auto maxMin = [](const CSSEMatrix& f, void (CSSEMatrix::*search)(float*, float*) const) {
        std::vector<float> got(2);
        (f.*search)(&got[0], &got[1]);
        return got;
    };
    EXPECT_EQ(maxMin(m, &CSSEMatrix::CalcMinMaxValues), std::vector<float>(want, want + 2));
    EXPECT_EQ(maxMin(m, &CSSEMatrix::CalcMinMaxValuesExcludeZero), std::vector<float>(want + 2, want + 4));
    // 7 x 12 is searched in column 3 of rows 4 to 11.
    Replace(m, WithPoints(7, 12, 0.0019f, {{3, 5, -0.0019f}}));
    EXPECT_EQ(maxMin(m, &CSSEMatrix::CalcMinMaxValuesExcludeZero), (std::vector<float>{kMaxSentinel, kMinSentinel}));
    Replace(m, WithPoints(7, 12, 0.0019f, {{3, 6, 0.004f}, {3, 7, -0.00201f}}));
    EXPECT_EQ(maxMin(m, &CSSEMatrix::CalcMinMaxValuesExcludeZero), (std::vector<float>{0.004f, -0.00201f}));

    // 20 x 24: six lines. The patch (2 .. 15, 5 .. 21) searches lines
    // (5 >> 2) + 1 = 2 to (21 >> 2) - 1 = 4 and vectors 5 to 12, the ends
    // excluded: rows 8 to 15, columns 5 to 11. Clamped first, (-50 .. 1000,
    // 0 .. 1000) is (0 .. 19, 0 .. 23); (0 .. 6, 0 .. 23) shrinks to nothing.
    const auto patch = [&](void (CSSEMatrix::*search)(float*, int, int, int, int) const, int x0, int x1, int y0, int y1) {
        float got = 0.0f;
        (m.*search)(&got, x0, x1, y0, y1);
        return got;
    };
    Replace(m, FieldOf(20, 24, [](int x, int y) { return static_cast<float>(100 * y + x); }));
    EXPECT_EQ((std::vector<float>{patch(&CSSEMatrix::CalcMaxValueOfPatch, 2, 15, 5, 21), patch(&CSSEMatrix::CalcMinValueOfPatch, 2, 15, 5, 21),
                                  patch(&CSSEMatrix::CalcMaxValueOfPatch, -50, 1000, 0, 1000), patch(&CSSEMatrix::CalcMaxValueOfPatch, 0, 6, 0, 23)}),
              (std::vector<float>{1511, 805, 1515, kMaxSentinel}));
    // In a patch -0.005 < p < 0.005 is no data.
    Replace(m, WithPoints(20, 24, 0.0049f, {{5, 6, -0.0049f}}));
    EXPECT_EQ(patch(&CSSEMatrix::CalcMinValueOfPatchExcludeZero, 0, 13, 0, 15), kMinSentinel);
    Replace(m, WithPoints(20, 24, 0.0049f, {{5, 5, 0.0051f}}));
    EXPECT_EQ(patch(&CSSEMatrix::CalcMinValueOfPatchExcludeZero, 0, 13, 0, 15), 0.0051f);
}

TEST(FieldBoundingBox, ScansForTheMinimaStartAtOneAndTheMaximaStopBeforeZero)
{
    const auto box = [](const CSSEMatrix& m, float value, bool above) {
        std::vector<int> b(4, -7);
        m.CalcBoundingBox(b[0], b[1], b[2], b[3], value, above);
        return b;
    };
    // Pixel (0, 0) is seen by no scan. Below: value > p; the padding lanes,
    // set to 0, are no pixels.
    EXPECT_EQ(box(Filled(8, 6, 0.0f), 0.5f, true), (std::vector<int>{7, 5, 0, 0}));
    EXPECT_EQ(box(WithPoints(8, 6, 0.0f, {{0, 0, 1.0f}}), 0.5f, true), (std::vector<int>{7, 5, 0, 0}));
    EXPECT_EQ(box(WithPoints(8, 6, 0.0f, {{0, 0, 1.0f}, {7, 2, 1.0f}, {3, 4, 1.0f}}), 0.5f, true), (std::vector<int>{3, 2, 7, 4}));
    EXPECT_EQ(box(FieldOf(8, 6, [](int x, int row) { return row >= 6 ? 0.0f : x == 2 && row == 3 ? 1.0f : 5.0f; }), 2.0f, false), (std::vector<int>{2, 3, 2, 3}));
}

TEST(FieldEraseFrame, PeelsOnePixelOffEachAreaReadingTheFieldAsItWas)
{
    // Only the inner pixel next to the empty corner goes; the outermost
    // frame is never touched, and a pixel peeled in this pass does not peel
    // its own neighbours.
    CSSEMatrix m = FromRows({"1111111", "1111111", "1122211", "1111111", "11111.."});
    CSSEMatrix removed = Filled(7, 5, 0.0f);
    m.EraseFrame(&removed);
    EXPECT_EQ(RowsOf(m), (Picture{"1111111", "1111111", "1122211", "11111.1", "11111.."}));
    EXPECT_EQ(RowsOf(removed), (Picture{".......", ".......", ".......", ".....1.", "......."}));
    // An area in empty space loses its rim; a value close to 0 is data.
    Replace(m, FromRows({".......", ".33333.", ".33333.", ".33333.", "......."}));
    m.SetPoint(3, 2, 1e-30f); // shown as '0'
    m.EraseFrame(nullptr);
    EXPECT_EQ(RowsOf(m), (Picture{".......", ".......", "..303..", ".......", "......."}));
    // With a mask its four-neighbours decide, not its centre.
    Replace(m, Filled(5, 5, 5.0f));
    const CSSEMatrix mask = FromRows({"11111", "11.11", "11111", "11111", "1111."});
    m.EraseFrameWithMask(&mask);
    EXPECT_EQ(RowsOf(m), (Picture{"55555", "5.5.5", "55.55", "55555", "55555"}));

    // Inner pixels other than 7 become 7 where the other field is greater
    // (Max), or 0 where it is smaller (Min).
    const CSSEMatrix other = FromRows({"99999", "93199", "99999", "99999"});
    Replace(m, FromRows({"22222", "22272", "22222", "22222"}));
    m.EraseWithMatrixMax(&other, 7.0f);
    EXPECT_EQ(RowsOf(m), (Picture{"22222", "27272", "27772", "22222"}));
    Replace(m, FromRows({"22222", "22272", "22222", "22222"}));
    m.EraseWithMatrixMin(&other, 0.0f);
    EXPECT_EQ(RowsOf(m), (Picture{"22222", "22.72", "22222", "22222"}));
}

} // namespace
