#include <limits>
#include <memory>

#include "fields/field_storage.h"
#include "support/unowned_alias.h"

namespace {

using namespace vek::test;

// A field whose pixel (x, y) is base + 10 y + x, padding 0.
CSSEcharMatrix Numbered(int sizeX, int sizeY, int base)
{
    return ByteField(sizeX, sizeY, [&](int x, int y) { return y < sizeY ? base + 10 * y + x : 0; });
}

TEST(CSSEcharMatrixStorage, SixteenRowsToALineInBlocksOf32Lines)
{
    // No rows: one line of padding; a multiple of 16: a whole line of
    // padding; 32 lines fit one block, the 33rd opens a second. Every byte
    // starts at 0 and lies inside the blocks (AddressSanitizer checks).
    for (const auto& [sizeX, sizeY, lines, blocks] : {std::tuple{3, 0, 1, 1}, {3, 16, 2, 1}, {2, 511, 32, 1}, {2, 512, 33, 2}, {1, CSSEcharMatrix::kMaxSizeY, 8000, 250}}) {
        CSSEcharMatrix m(sizeX, sizeY);
        ASSERT_EQ(std::pair(m.GetSSESizeY(), m.GetFields()), std::pair(lines, blocks)) << sizeY;
        EXPECT_EQ(AllStored(m), std::vector<int>(static_cast<std::size_t>(16 * lines * sizeX), 0)) << sizeY;
        m.Clear(0x1FF); // the low byte, -1
        EXPECT_EQ(AllStored(m), std::vector<int>(static_cast<std::size_t>(16 * lines * sizeX), -1)) << sizeY;
    }
}

TEST(CSSEcharMatrixStorage, PixelsAreClampedAndTheImageIsCopiedDeeplySharedOrMoved)
{
    CSSEcharMatrix m(5, 20);
    m.SetPoint(2, 17, 'q');
    EXPECT_EQ(reinterpret_cast<char*>(m.GetMatrixDataDirectly()[1] + 2)[1], 'q'); // byte 1 of vector 2 of line 1
    FillStorage(m, ByteTag);
    EXPECT_EQ(m.GetPoint(-5, 1000), ByteTag(0, 19)); // rows 20 ... 31 are padding, never reached
    std::vector<int> expected = AllStored(m);
    for (int x = 0; x < 5; ++x) expected[19 * 5 + x] = -56;
    m.ClearRow(40, 200); // one byte per column of the clamped row
    EXPECT_THROW(m.Create(-1, 5), CInvalidArgException);
    EXPECT_THROW(m.Create(1, CSSEcharMatrix::kMaxSizeY + 1), CInvalidArgException);
    EXPECT_EQ(AllStored(m), expected) << "refused before anything changed";

    // The copy constructor is deep; assignment shares the image (the alias is
    // never destroyed, so only m releases it); a move hands it over.
    const CSSEcharMatrix copy(m);
    UnownedAlias<CSSEcharMatrix> shared;
    *shared = m;
    shared->SetPoint(3, 19, 42);
    EXPECT_EQ(AllStored(copy), expected);
    CSSEcharMatrix target;
    target = std::move(m);
    CSSEcharMatrix moved(std::move(target));
    EXPECT_EQ(moved.GetPoint(3, 19), 42);
    moved.Free();
    EXPECT_EQ(moved.GetSizeX(), 5) << "releasing keeps the sizes";
}

TEST(CSSEcharMatrixConvert, CopiesTakeWholeVectorsAndThresholdsMarkPixelsStrictlyBeyond)
{
    CSSEcharMatrix src = ByteField(9, 21, ByteTag);
    CSSEcharMatrix part(2, 2);
    part.CopyFromOtherMatrix(src);
    EXPECT_EQ(AllStored(part), AllStored(src)); // padding included
    // Columns as whole vectors, the padding bytes along, both ends clamped;
    // reversed ends give no columns; a field may be narrowed to itself.
    for (const auto& [x0, x1, first, width] : {std::tuple{7, 50, 7, 2}, {20, 30, 8, 1}, {6, 2, 0, 0}}) {
        part.CopyFromOtherMatrixLimitedX(src, x0, x1);
        EXPECT_EQ(AllStored(part), AllStored(ByteField(width, 21, [f = first](int x, int row) { return ByteTag(x + f, row); }))) << x0 << " ... " << x1;
    }
    src.CopyFromOtherMatrixLimitedX(src, -4, 0);
    EXPECT_EQ(AllStored(src), AllStored(ByteField(1, 21, ByteTag)));

    // 3 x 37: ten float lines, three byte lines of which 11 bytes are
    // padding, which stays 0 whatever the float padding holds. The threshold
    // itself (at (0, 16)) and NaN are neither above nor below.
    const auto height = [](int x, int row) { return static_cast<float>((x * 13 + row * 7) % 20) - 10.0f; };
    CSSEMatrix floats = FieldOf(3, 37, height);
    floats.SetPoint(1, 36, std::numeric_limits<float>::quiet_NaN());
    CSSEcharMatrix above;
    above.CopyAndTresholdAbove(floats, 2.0f, -7);
    CSSEcharMatrix below;
    below.CopyAndTresholdBelow(floats, 2.0f, 5);
    const auto image = [](int x, int row) { return row < 37 && !(x == 1 && row == 36); };
    EXPECT_EQ(AllStored(above), AllStored(ByteField(3, 37, [&](int x, int row) { return image(x, row) && height(x, row) > 2.0f ? -7 : 0; })));
    EXPECT_EQ(AllStored(below), AllStored(ByteField(3, 37, [&](int x, int row) { return image(x, row) && height(x, row) < 2.0f ? 5 : 0; })));
}

TEST(CSSEcharMatrixCombine, SubtractionWrapsAndNewColumnsOrAFrameSurroundTheImage)
{
    // Byte by byte, wrapping (-128 - 1 is 127), over the common width and lines.
    const auto minuend = [](int x, int row) { return x == 0 && row == 0 ? -128 : 100 + x + row % 20; };
    CSSEcharMatrix a = ByteField(5, 40, minuend);
    const CSSEcharMatrix b = ByteField(3, 10, [](int x, int row) { return x == 0 && row == 0 ? 1 : -50 + row; });
    a.SubMatrix(b);
    EXPECT_EQ(AllStored(a), AllStored(ByteField(5, 40, [&](int x, int row) { return x < 3 && row < 16 ? static_cast<signed char>(minuend(x, row) - Stored(b, x, row)) : minuend(x, row); })));

    // Every byte of new columns, padding included, is pixel (0, 0) on the
    // left and the last pixel of row 0 on the right.
    CSSEcharMatrix m = ByteField(3, 18, ByteTag);
    m.ElongateLeft(2);
    m.ElongateRight(3);
    m.ElongateRight(-4);
    EXPECT_EQ(AllStored(m), AllStored(ByteField(8, 18, [](int x, int row) { return x < 2 ? ByteTag(0, 0) : x < 5 ? ByteTag(x - 2, row) : ByteTag(2, 0); })));
    Replace(m, Numbered(3, 4, 0));
    m.EmbedinValueFrame(2, 1, 9);
    m.EmbedinValueFrame(-1, 2, 9);
    EXPECT_EQ(AllStored(m), AllStored(ByteField(5, 8, [](int x, int row) { return x >= 1 && x <= 3 && row >= 2 && row <= 5 ? 10 * (row - 2) + x - 1 : 9; })));
}

TEST(CSSEcharMatrixCombine, StackingInYTakesAsManyRowsOfCAsBHasOrWholeLines)
{
    // Over the smallest width; c's rows beyond b's height are left out, and a
    // lower c repeats its last row.
    const CSSEcharMatrix a = Numbered(4, 5, 0);
    const CSSEcharMatrix b = Numbered(5, 4, 50);
    const auto rows = [&](int y) { return y < 5 ? 10 * y : y < 9 ? 50 + 10 * (y - 5) : y < 13 ? -120 + 10 * (y - 9) : 0; };
    for (const auto& [c, sizeY, filled] : {std::tuple{Numbered(6, 10, -120), 19, 13}, {Numbered(4, 2, -120), 11, 11}}) {
        CSSEcharMatrix m;
        m.CombineYDir(a, b, &c);
        EXPECT_EQ(AllStored(m), AllStored(ByteField(4, sizeY, [&, h = filled](int x, int y) { return y < h ? rows(y) + x : 0; })));
    }
    // Without c; a may be this field; an a that has released its image
    // leaves the result empty.
    CSSEcharMatrix m(a);
    m.CombineYDir(m, Numbered(3, 7, 60), nullptr);
    EXPECT_EQ(AllStored(m), AllStored(ByteField(3, 12, [](int x, int y) { return y < 5 ? 10 * y + x : y < 12 ? 60 + 10 * (y - 5) + x : 0; })));
    CSSEcharMatrix released(a);
    released.Free();
    m.CombineYDir(released, b, nullptr);
    EXPECT_EQ(AllStored(m), AllStored(CSSEcharMatrix(4, 9)));

    // The fast form stacks whole lines over the larger width: the padding
    // bytes of a stay between the two, missing columns stay 0.
    const CSSEcharMatrix tall = ByteField(3, 20, ByteTag); // two lines, 12 padding bytes
    m.CombineYDirFast(tall, ByteField(2, 5, [](int x, int row) { return -ByteTag(x, row); }));
    EXPECT_EQ(AllStored(m), AllStored(ByteField(3, 48, [](int x, int row) { return row < 32 ? ByteTag(x, row) : row < 48 && x < 2 ? -ByteTag(x, row - 32) : 0; })));
}

TEST(CSSEcharMatrixCombine, InterpolationReadsTheBilinearMeanTruncatedTowardZero)
{
    CSSEcharMatrix m = ByteField(2, 2, [](int x, int y) { return y == 0 ? (x == 0 ? 8 : 100) : (x == 0 ? -101 : 20); });
    m.InterpolateUp(4, 4); // steps of one half
    m.InterpolateUp(0, 5);
    // (8 + 100) / 2; -46.5; 27 / 4; the far neighbours clamp to the rim.
    const std::vector<int> expected{m.GetPoint(0, 0), m.GetPoint(1, 0), m.GetPoint(0, 1), m.GetPoint(1, 1), m.GetPoint(2, 1), m.GetPoint(3, 3)};
    EXPECT_EQ(expected, (std::vector<int>{8, 54, -46, 6, 60, 20}));
    EXPECT_EQ(Stored(m, 1, 10), 8) << "padding holds pixel (0, 0)";
}

TEST(CSSEcharMatrixTime, ColumnProfileSumsRaisedBytesOverTheLinesTakenAndHumpsAreCounted)
{
    const CSSEcharMatrix m = ByteField(4, 20, [](int x, int row) { return x == 3 ? (row == 0 ? -33 : 0) : 30 * x + row; }); // two lines, divisor 32
    for (const int offset : {0, 40, -300}) {
        for (const int maxRow : {2000000000, 31, 16, 15, -1}) {
            const t_intvector profile = m.GetIntegralVectorFromMatrix(offset, maxRow);
            const std::unique_ptr<int[]> owned(profile.Data);
            std::vector<int> want(4, 0);
            for (int x = 0; x < 4; ++x) {
                for (int row = 0; row < 16 * std::clamp(maxRow >> 4, 0, 2); ++row) want[x] += static_cast<signed char>((Stored(m, x, row) + offset) & 0xFF);
                want[x] /= 32; // -33 / 32 is -1: truncation
            }
            EXPECT_EQ(std::vector<int>(profile.Data, profile.Data + profile.Length), want) << "offset " << offset << ", maxRow " << maxRow;
        }
    }

    // One line whose every byte in column x is the profile's value + 40.
    // Below a fifth of the way up from the lowest value is ground: with a
    // profile from -128 to 87 that is -85, so a hump of -75 stands 10 above
    // it. A staircase rises twice without a fall; the margins hold no hump.
    const auto syllables = [](int length, std::initializer_list<std::tuple<int, int, int>> humps, int ground) {
        return ByteField(length, 15, [&](int x, int) {
                   for (const auto& [from, to, top] : humps)
                       if (x >= from && x <= to) return top;
                   return ground;
               }).CalcNumSyllables();
    };
    EXPECT_EQ(syllables(60, {{10, 17, 120}, {25, 32, 120}, {40, 47, 120}}, 40), 3);
    EXPECT_EQ(syllables(60, {{10, 17, -35}, {30, 37, 127}}, -88), 2);
    EXPECT_EQ(syllables(60, {{15, 29, 60}, {30, 59, 80}}, 40), 1);
    EXPECT_EQ(syllables(40, {}, 90), 0);
    EXPECT_EQ(syllables(8, {{3, 4, 120}}, 40), 0);
    EXPECT_EQ(syllables(30, {{0, 2, 120}}, 40), 0);
    // Worked through the steps with a plain model, each turning on one bound:
    // a hump in the last columns stays uncounted, both for the count ending
    // four columns before the end and for the curve being raised only from
    // 3 on; a fall needs s / 3 below -1, so these gentle dips leave one hump.
    EXPECT_EQ(syllables(20, {{18, 19, 85}}, -40), 0);
    EXPECT_EQ(syllables(20, {{17, 19, 50}}, -50), 0);
    EXPECT_EQ(syllables(30, {{2, 8, -20}, {12, 14, 20}}, 50), 1);
}

TEST(CSSEcharMatrixTime, DifferencesAndSpreadAlongXEqualAPlainByteWiseComputation)
{
    // By hand: 120 + (11 - (-9)) saturates at 127. The spread of 10, 0, 0,
    // 0, 0 (mean 2) is sqrt(5 x 64) = 17.9, so 17 - 63; of five 0 it is -63;
    // of -128, -9, 120, 11, 127 (mean 24) sqrt(5 x 152^2) - 63 clamps at 63;
    // the two outer columns on each side are 0.
    const int rows[2][7] = {{10, 0, 0, 0, 0, 0, 0}, {-128, -9, 120, 11, 127, -5, 127}};
    CSSEcharMatrix pd = ByteField(7, 2, [&](int x, int y) { return rows[std::min(y, 1)][x]; });
    CSSEcharMatrix spread;
    spread.CalcTimeVariance(pd);
    pd.CalcPDResult();
    EXPECT_EQ((std::vector<int>{pd.GetPoint(2, 1), spread.GetPoint(2, 0), spread.GetPoint(3, 0), spread.GetPoint(2, 1), spread.GetPoint(1, 1), spread.GetPoint(5, 1)}),
              (std::vector<int>{127, 17 - 63, -63, 63, 0, 0}));

    // Random bytes, padding included, from the untouched neighbours: the
    // difference wraps and the sum saturates in CalcPDResult, the derivative
    // saturates; the spread is measured into the same field.
    vek::CrtRandom random(11);
    for (const int width : {1, 2, 3, 17, 40}) {
        CSSEcharMatrix original(width, 40);
        FillRandomBytes(original, random);
        CSSEcharMatrix results[3] = {original, original, original};
        results[0].CalcPDResult();
        results[1].CalcDerivative();
        results[2].CalcTimeVariance(results[2]);
        for (int row = 0; row < StorageRows(original); ++row) {
            for (int x = 0; x < width; ++x) {
                const auto at = [&](int dx) { return static_cast<int>(Stored(original, x + dx, row)); };
                const bool inner = x >= 1 && x <= width - 2;
                const int difference = inner ? at(1) - at(-1) : 0;
                int spreadWant = 0;
                if (x >= 2 && x <= width - 3) {
                    const int deviation = at(-2) - (at(-2) + at(-1) + at(0) + at(1) + at(2)) / 5;
                    spreadWant = std::clamp(static_cast<int>(std::sqrt(static_cast<float>(deviation * deviation * 5))) - 63, -63, 63);
                }
                const int want[3] = {inner ? std::clamp(at(0) + static_cast<signed char>(difference & 0xFF), -128, 127) : at(0), std::clamp(difference, -128, 127), spreadWant};
                for (int k = 0; k < 3; ++k) ASSERT_EQ(Stored(results[k], x, row), want[k]) << "operation " << k << ", width " << width << ": " << x << ", " << row;
            }
        }
    }
}

} // namespace
