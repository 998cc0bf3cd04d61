#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "classifier/classifier_helpers.h"
#include "vekdll/classifier/klassenelement.h"

using vek::test::NewElement;

namespace {

using Element = std::unique_ptr<ZrCKlassenelement>;

TEST(ZrCKlassenelementTest, CopiesAreDeepExceptAssignment)
{
    Element original(NewElement({1, 2, 3}, 1));
    ZrCKlassenelement copy(original.get());
    original->Features[0] = 9;
    EXPECT_EQ(copy.NumFeatures, 3);
    EXPECT_EQ(copy.ClassId, 1);
    EXPECT_EQ(copy.Features[0], 1.0f);

    // Assignment shares the array; the target gives it up before destruction.
    ZrCKlassenelement shared(0, 0);
    float* ownArray = shared.Features;
    shared = *original;
    EXPECT_EQ(shared.Features, original->Features);
    shared.Features = ownArray;
}

TEST(ZrCKlassenelementTest, ExtremesAndNormalisations)
{
    Element e(NewElement({1, 3, 3, 1}, 0));
    EXPECT_EQ(e->ArgMax(), 1); // the first of equal extremes
    EXPECT_EQ(e->ArgMin(), 0);
    EXPECT_EQ(ZrCKlassenelement(0, 0).ArgMax(), -1);

    Element byMax(NewElement({2, 4}, 0));
    byMax->NormalizeMAX();
    EXPECT_EQ(byMax->Features[0], 0.5f);
    EXPECT_EQ(byMax->Features[1], 1.0f);
    Element byMin(NewElement({2, 4}, 0));
    byMin->NormalizeMIN();
    EXPECT_EQ(byMin->Features[1], 2.0f);
    Element bySum(NewElement({1, 3}, 0));
    bySum->NormalizeSUM();
    EXPECT_EQ(bySum->Features[0], 250.0f);
    EXPECT_EQ(bySum->Features[1], 750.0f);

    // No guard against a zero divisor: plain float division.
    Element zeroSum(NewElement({1, -1}, 0));
    zeroSum->NormalizeSUM();
    EXPECT_TRUE(std::isinf(zeroSum->Features[0]));
}

TEST(ZrCKlassenelementTest, DistancesWithAndWithoutGainAndOffset)
{
    Element a(NewElement({1, 2, 3}, 0));
    Element b(NewElement({2, 4, 6}, 0));
    EXPECT_EQ(a->d220(), std::sqrt(14.0f));
    EXPECT_EQ(a->d22(b.get()), 1.0f + 4.0f + 9.0f);
    EXPECT_EQ(a->d22A(a.get()), 0.0f);

    // b = 2a is an exact linear fit, which the least-squares gain would find.
    // The centring term pairs Sb with Sa instead: Sa = 6, Sb = 12, Saa = 14,
    // Sab = 28, n = 3: c = 24, D = -10, g = -0.4, t = 4 + 0.4 * 2 = 4.8;
    // residuals 2.4, 0, -2.4 give 11.52.
    EXPECT_NEAR(a->d22A(b.get()), 11.52f, 1e-4f);

    // With Sa equal to Sb the term is the textbook one: (0, 2) maps onto
    // (2, 0) by g = -1, t = 2.
    Element rising(NewElement({0, 2}, 0));
    Element falling(NewElement({2, 0}, 0));
    EXPECT_EQ(rising->d22A(falling.get()), 0.0f);

    // D = 0 (Saa = 2 = Sb * Sa / n) falls back to the plain squared distance.
    Element flat(NewElement({1, 1}, 0));
    EXPECT_EQ(flat->d22A(rising.get()), 2.0f);
}

} // namespace
