#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "classifier/classifier_helpers.h"
#include "vekdll/classifier/klassenelement.h"

using vek::test::NewElement;

namespace {

using Element = std::unique_ptr<ZrCKlassenelement>;

TEST(ZrCKlassenelementTest, NewVectorsAreZeroAndCopiesAreDeepExceptAssignment)
{
    ZrCKlassenelement zeros(4, 2);
    EXPECT_EQ(zeros.NumFeatures, 4);
    EXPECT_EQ(zeros.ClassId, 2);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(zeros.Features[i], 0.0f);

    Element original(NewElement({1, 2, 3}, 1));
    ZrCKlassenelement copy(original.get());
    original->Features[0] = 9;
    EXPECT_EQ(copy.NumFeatures, 3);
    EXPECT_EQ(copy.ClassId, 1);
    EXPECT_EQ(copy.Features[0], 1.0f);
    EXPECT_NE(copy.Features, original->Features);

    // Assignment shares the array; the target gives it up before destruction.
    ZrCKlassenelement shared(0, 0);
    float* ownArray = shared.Features;
    shared = *original;
    EXPECT_EQ(shared.Features, original->Features);
    EXPECT_EQ(shared.NumFeatures, 3);
    shared.Features = ownArray;

    ZrCKlassenelement negative(-5, 0);
    EXPECT_EQ(negative.NumFeatures, 0);
    EXPECT_EQ(negative.ArgMax(), -1);
}

TEST(ZrCKlassenelementTest, ArgMaxAndArgMinKeepTheFirstExtreme)
{
    Element e(NewElement({1, 3, 3}, 0));
    EXPECT_EQ(e->ArgMax(), 1);
    EXPECT_EQ(e->ArgMin(), 0);
    Element f(NewElement({5, -2, 7, -2}, 0));
    EXPECT_EQ(f->ArgMax(), 2);
    EXPECT_EQ(f->ArgMin(), 1);
    ZrCKlassenelement empty(0, 0);
    EXPECT_EQ(empty.ArgMax(), -1);
    EXPECT_EQ(empty.ArgMin(), -1);
}

TEST(ZrCKlassenelementTest, NormalisationsDivideByTheExtremeOrScaleTheSumToAThousand)
{
    Element byMax(NewElement({2, 4}, 0));
    byMax->NormalizeMAX();
    EXPECT_EQ(byMax->Features[0], 0.5f);
    EXPECT_EQ(byMax->Features[1], 1.0f);

    Element byMin(NewElement({2, 4}, 0));
    byMin->NormalizeMIN();
    EXPECT_EQ(byMin->Features[0], 1.0f);
    EXPECT_EQ(byMin->Features[1], 2.0f);

    Element bySum(NewElement({1, 3}, 0));
    bySum->NormalizeSUM();
    EXPECT_EQ(bySum->Features[0], 250.0f);
    EXPECT_EQ(bySum->Features[1], 750.0f);

    // No guard against a zero divisor: plain float division.
    Element zeroSum(NewElement({1, -1}, 0));
    zeroSum->NormalizeSUM();
    EXPECT_TRUE(std::isinf(zeroSum->Features[0]));
    Element zeroMax(NewElement({0, -1}, 0));
    zeroMax->NormalizeMAX();
    EXPECT_TRUE(std::isnan(zeroMax->Features[0]));
    EXPECT_TRUE(std::isinf(zeroMax->Features[1]));
}

TEST(ZrCKlassenelementTest, NormAndSquaredDistance)
{
    Element a(NewElement({3, 4}, 0));
    Element b(NewElement({0, 6}, 0));
    EXPECT_EQ(a->d220(), 5.0f);
    EXPECT_EQ(a->d22(b.get()), 9.0f + 4.0f);
    EXPECT_EQ(a->d22(a.get()), 0.0f);
    EXPECT_TRUE(std::isnan(a->d22(nullptr)));

    // Vectors of different lengths are compared over the shorter one.
    Element longer(NewElement({0, 6, 100}, 0));
    EXPECT_EQ(a->d22(longer.get()), 13.0f);
    EXPECT_EQ(longer->d22(a.get()), 13.0f);
}

TEST(ZrCKlassenelementTest, GainOffsetDistanceUsesTheMixedCentringTerm)
{
    // Identical vectors: gain 1, offset 0, distance 0.
    Element a(NewElement({1, 2, 3}, 0));
    EXPECT_EQ(a->d22A(a.get()), 0.0f);

    // b = 2a is an exact linear fit, which the least-squares gain would find.
    // With Sa = 6, Sb = 12, Saa = 14, Sab = 28, n = 3: c = 12 * 6 / 3 = 24,
    // D = 14 - 24 = -10, g = (28 - 24) / -10 = -0.4, t = 4 + 0.4 * 2 = 4.8;
    // residuals 2.4, 0, -2.4 give 11.52.
    Element b(NewElement({2, 4, 6}, 0));
    EXPECT_NEAR(a->d22A(b.get()), 11.52f, 1e-4f);

    // When Sa equals Sb the term is the textbook one and the fit is exact:
    // a = (0, 2), b = (2, 0) gives g = -1, t = 2.
    Element rising(NewElement({0, 2}, 0));
    Element falling(NewElement({2, 0}, 0));
    EXPECT_EQ(rising->d22A(falling.get()), 0.0f);

    // D = 0 falls back to gain 1 and offset 0, the plain squared distance:
    // a = (1, 1), b = (0, 2): Saa = 2 = Sb * Sa / n.
    Element flat(NewElement({1, 1}, 0));
    Element tilted(NewElement({0, 2}, 0));
    EXPECT_EQ(flat->d22A(tilted.get()), flat->d22(tilted.get()));
    EXPECT_EQ(flat->d22A(tilted.get()), 2.0f);
}

} // namespace
