#include <climits>
#include <cstdlib>

#include "fields/field_storage.h"

namespace {

using namespace vek::test;

constexpr int kNoLimit = 2000000000;

// A one-row field whose score curve against a 1 x 1 template of 0 is `level`
// with the given valleys (0 ... 127): shift s meets pixel (s, 0) and fifteen
// padding bytes of 0. Correlate tries SizeX - 1 shifts and the limited
// search at most SizeX - 2, hence the extra columns.
struct ScoreCurve {
    CSSEcharMatrix field;
    CSSEcharMatrix pattern{1, 1};

    ScoreCurve(int length, int level, std::initializer_list<std::pair<int, int>> valleys, int extraColumns = 0) : field(length + extraColumns, 1)
    {
        for (int s = 0; s < length; ++s) field.SetPoint(s, 0, static_cast<char>(level));
        for (const auto& [at, depth] : valleys) field.SetPoint(at, 0, static_cast<char>(depth));
    }
};

// The score of one shift, byte by byte: the difference saturated to a signed
// byte, its amount formed in a byte (so that 128 reads back as -128), summed
// over every byte of the template's columns, padding included, and divided by
// the template's width.
int PlainScore(const CSSEcharMatrix& field, const CSSEcharMatrix& pattern, int shift)
{
    int sum = 0;
    for (int row = 0; row < StorageRows(field); ++row) {
        for (int x = 0; x < pattern.GetSizeX(); ++x) {
            const int difference = std::clamp(Stored(pattern, x, row) - Stored(field, x + shift, row), -128, 127);
            sum += static_cast<signed char>(static_cast<unsigned char>(std::abs(difference)));
        }
    }
    return sum / pattern.GetSizeX();
}

TEST(CSSEcharMatrixCorrelation, FindsTheShiftAtWhichTheTemplateWasCut)
{
    // Disturbed, the template still finds its place, far below the random
    // columns; the limited search finds it inside its range only.
    vek::CrtRandom random(17);
    CSSEcharMatrix field(300, 40);
    FillRandomBytes(field, random);
    CSSEcharMatrix pattern(field, 77, 77 + 31);
    int minScore = -1, ambiguity = -1;
    EXPECT_EQ(field.Correlate(pattern, minScore, kNoLimit), 77);
    EXPECT_EQ(minScore, 0);
    for (int k = 0; k < 40; ++k) pattern.SetPoint(k % 32, k, static_cast<char>(pattern.GetPoint(k % 32, k) / 2));
    EXPECT_EQ(field.CorrelateAmbiguity(pattern, minScore, ambiguity, kNoLimit), 77);
    EXPECT_TRUE(minScore > 0 && minScore < 100 && ambiguity > 3 * 1000) << minScore << ", " << ambiguity;
    EXPECT_EQ(field.CorrelateAmbiguityStartEnd(pattern, minScore, ambiguity, 50, 120, 0), 77);
    EXPECT_GE(field.CorrelateAmbiguityStartEnd(pattern, minScore, ambiguity, 78, 400, 0), 78);
}

TEST(CSSEcharMatrixCorrelation, TemplatesThatCannotSlideGiveMinusOneAndLeaveTheScore)
{
    CSSEcharMatrix field(20, 8);
    int minScore = 12345, ambiguity = 678;
    // As wide as the field or wider, another height, no columns, no image.
    for (const CSSEcharMatrix& t : {CSSEcharMatrix(20, 8), CSSEcharMatrix(25, 8), CSSEcharMatrix(5, 9), CSSEcharMatrix(0, 8), CSSEcharMatrix()}) {
        EXPECT_EQ(field.Correlate(t, minScore, kNoLimit), -1);
        EXPECT_EQ(field.CorrelateAmbiguity(t, minScore, ambiguity, kNoLimit), -1);
        EXPECT_EQ(field.CorrelateAmbiguityStartEnd(t, minScore, ambiguity, 0, 100, 0), -1);
    }
    // The limited search needs a shift below min(SizeX - t.SizeX - 1, end).
    const CSSEcharMatrix pattern(5, 8);
    for (const auto& [start, end] : {std::pair{3, 3}, {14, 100}, {0, INT_MIN}}) EXPECT_EQ(field.CorrelateAmbiguityStartEnd(pattern, minScore, ambiguity, start, end, 0), -1);
    EXPECT_EQ(std::tuple(minScore, ambiguity, field.GetLastCorrelationError()), std::tuple(12345, 678, 0));
    // Shift 13 is the last that the limited search takes; a start below 0 counts as 0.
    EXPECT_EQ(field.CorrelateAmbiguityStartEnd(pattern, minScore, ambiguity, 13, 100, 0), 13);
    EXPECT_EQ(field.CorrelateAmbiguityStartEnd(pattern, minScore, ambiguity, -30, 100, 0), 0);
}

TEST(CSSEcharMatrixCorrelation, TiesGoToTheLowerShiftAndTheLimitOnlyWithholdsTheResult)
{
    ScoreCurve c(30, 90, {{20, 40}, {9, 12}, {4, 12}, {25, 12}});
    int minScore = 0;
    // At or under the limit nothing is returned, yet the minimum is reported.
    for (int limit : {0, 12}) {
        minScore = -5;
        EXPECT_EQ(c.field.Correlate(c.pattern, minScore, limit), -1) << limit;
        EXPECT_EQ(std::pair(minScore, c.field.GetLastCorrelationError()), std::pair(12, 12));
    }
    EXPECT_EQ(c.field.Correlate(c.pattern, minScore, 13), 4);
}

TEST(CSSEcharMatrixCorrelation, ScoresAreSaturatedByteDistancesOverEveryByte)
{
    // The amount of a difference saturated to -128 counts as -128: a
    // template byte of -128 against 127 lowers the score.
    ScoreCurve c(2, 127, {{1, -128}}, 1);
    c.pattern.SetPoint(0, 0, -128);
    int minScore = 0;
    EXPECT_EQ(c.field.Correlate(c.pattern, minScore, kNoLimit), 0);
    EXPECT_EQ(minScore, -128);

    // Random bytes over the whole range, padding included, against the plain
    // byte-by-byte sum: single shifts and walks over many.
    vek::CrtRandom random(5);
    for (int trial = 0; trial < 60; ++trial) {
        const int height = 1 + random.Next() % 50;
        const int width = 1 + random.Next() % 9;
        const int shifts = trial % 2 == 0 ? 1 : 2 + random.Next() % 30;
        CSSEcharMatrix wide(width + shifts, height);
        CSSEcharMatrix pattern(width, height);
        FillRandomBytes(wide, random);
        FillRandomBytes(pattern, random);
        if (trial % 3 == 0) FillStorage(pattern, [](int, int row) { return row % 2 == 0 ? -128 : 127; });
        std::vector<int> scores;
        for (int s = 0; s < shifts; ++s) scores.push_back(PlainScore(wide, pattern, s));
        const auto best = std::min_element(scores.begin(), scores.end()); // the first of equal minima
        ASSERT_EQ(wide.Correlate(pattern, minScore, kNoLimit), best - scores.begin()) << "trial " << trial;
        ASSERT_EQ(minScore, *best) << "trial " << trial;
    }
}

TEST(CSSEcharMatrixCorrelation, AmbiguitySumsHowFarTheNextThreeValleysLieAboveTheBest)
{
    int minScore = 0, ambiguity = 0;
    // One narrow valley: each round finds nothing below the maximum.
    ScoreCurve single(80, 100, {{30, 10}});
    EXPECT_EQ(single.field.CorrelateAmbiguity(single.pattern, minScore, ambiguity, kNoLimit), 30);
    EXPECT_EQ(ambiguity, 3 * (100 - 10));
    // Valleys within 19 shifts of the one found last are covered: 10 at 49
    // lies beside the best, 40 at 50 does not; then 70 at 90, then nothing.
    ScoreCurve three(120, 100, {{30, 5}, {49, 10}, {50, 40}, {90, 70}});
    EXPECT_EQ(three.field.CorrelateAmbiguity(three.pattern, minScore, ambiguity, kNoLimit), 30);
    EXPECT_EQ(ambiguity, (40 - 5) + (70 - 5) + (100 - 5));
    // Without a result below the limit the first round covers the lowest
    // shifts (around -1, up to 18) instead: 20 at 10 goes, the best itself
    // is found again (adding 0), then 30 at 19, then 60 at 90.
    ScoreCurve missed(120, 100, {{10, 20}, {19, 30}, {50, 5}, {90, 60}});
    EXPECT_EQ(missed.field.CorrelateAmbiguity(missed.pattern, minScore, ambiguity, 5), -1);
    EXPECT_EQ(std::pair(minScore, ambiguity), std::pair(5, 0 + (30 - 5) + (60 - 5)));
}

TEST(CSSEcharMatrixCorrelation, LimitedAmbiguitySeeksFiveValleysOnTheSmoothedCurve)
{
    int minScore = 0, ambiguity = 0;
    // The best valley is covered 7 shifts wide, 20 at 17 with it. Then 50 at
    // 40 is smoothed twice by the five-point mean: to 90 over 38 ... 42, then
    // to 90 at 40 with 92, 94, 96, 98 on either side. The next round covers
    // it and the curve is flat.
    ScoreCurve two(70, 100, {{10, 0}, {17, 20}, {40, 50}}, 2);
    EXPECT_EQ(two.field.CorrelateAmbiguityStartEnd(two.pattern, minScore, ambiguity, 0, 1000, 99), 10);
    EXPECT_EQ(std::pair(minScore, ambiguity), std::pair(0, 90 + 4 * 100));
    // 0 at 18, one shift beyond the cover, is smoothed twice to 80.
    ScoreCurve beside(70, 100, {{10, 0}, {18, 0}}, 2);
    EXPECT_EQ(beside.field.CorrelateAmbiguityStartEnd(beside.pattern, minScore, ambiguity, 0, 1000, 0), 10);
    EXPECT_EQ(ambiguity, 80 + 4 * 100);
    // The same from a later start: indices are counted from the start.
    EXPECT_EQ(two.field.CorrelateAmbiguityStartEnd(two.pattern, minScore, ambiguity, 5, 1000, 0), 10);
    EXPECT_EQ(ambiguity, 90 + 4 * 100);
    // At the end of the curve the two last entries repeat the last mean: 50
    // at index 29 of 30 becomes 90 at 27 ... 29, then 94 at 27 ... 29, of
    // which the first counts.
    ScoreCurve atEnd(30, 100, {{5, 0}, {29, 50}}, 2);
    EXPECT_EQ(atEnd.field.CorrelateAmbiguityStartEnd(atEnd.pattern, minScore, ambiguity, 0, 30, 0), 5);
    EXPECT_EQ(ambiguity, 94 + 4 * 100);
    // A curve shorter than one smoothing window, 4 shifts, is covered whole
    // by the best at 2: each round adds the maximum.
    ScoreCurve shortCurve(4, 40, {{0, 30}, {1, 20}, {2, 3}}, 2);
    EXPECT_EQ(shortCurve.field.CorrelateAmbiguityStartEnd(shortCurve.pattern, minScore, ambiguity, 0, 4, 0), 2);
    EXPECT_EQ(ambiguity, 5 * (40 - 3));
}

} // namespace
