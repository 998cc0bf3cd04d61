#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "classifier/classifier_helpers.h"

using vek::test::NewElement;

namespace {

using Element = std::unique_ptr<ZrCKlassenelement>;

std::vector<float> FeaturesOf(const ZrCKlassenelement& e)
{
    return std::vector<float>(e.Features, e.Features + e.NumFeatures);
}

TEST(ZrCKlassenelement, CopiesAreDeepAssignmentSharesExtremesAndNormalisations)
{
    Element original(NewElement({1, 3, 3, 1}, 1)), zeroSum(NewElement({1, -1}, 0));
    ZrCKlassenelement copy(original.get()), shared(0, 0);
    original->Features[0] = 9;
    EXPECT_EQ(FeaturesOf(copy), (std::vector<float>{1, 3, 3, 1}));
    float* own = shared.Features;
    shared = *original;
    EXPECT_EQ(shared.Features, original->Features);
    shared.Features = own; // gives the shared array up before both are destroyed

    EXPECT_EQ(std::tuple(copy.ArgMax(), copy.ArgMin(), ZrCKlassenelement(0, 0).ArgMax()), std::tuple(1, 0, -1)); // the first of equal extremes
    copy.NormalizeSUM();
    EXPECT_EQ(FeaturesOf(copy), (std::vector<float>{125, 375, 375, 125}));
    copy.NormalizeMAX();
    EXPECT_EQ(FeaturesOf(copy), (std::vector<float>{1.0f / 3, 1, 1, 1.0f / 3}));
    zeroSum->NormalizeSUM(); // no guard against a zero divisor
    EXPECT_TRUE(std::isinf(zeroSum->Features[0]));
}

TEST(ZrCKlassenelement, DistancesAndTheGainFitWithItsMixedCentringTerm)
{
    Element a(NewElement({1, 2, 3}, 0)), b(NewElement({2, 4, 6}, 0));
    EXPECT_EQ(std::tuple(a->d220(), a->d22(b.get()), a->d22A(a.get())), std::tuple(std::sqrt(14.0f), 1.0f + 4.0f + 9.0f, 0.0f));
    // b = 2a is an exact linear fit, which the least-squares gain would find.
    // The centring term pairs Sb with Sa instead: Sa = 6, Sb = 12, Saa = 14,
    // Sab = 28, n = 3: c = 24, D = -10, g = -0.4, t = 4 + 0.4 * 2 = 4.8;
    // residuals 2.4, 0, -2.4 give 11.52.
    EXPECT_NEAR(a->d22A(b.get()), 11.52f, 1e-4f);
    // With Sa equal to Sb the term is the textbook one: (0, 2) maps onto (2, 0).
    Element rising(NewElement({0, 2}, 0)), falling(NewElement({2, 0}, 0)), flat(NewElement({1, 1}, 0));
    EXPECT_EQ(rising->d22A(falling.get()), 0.0f);
    // D = 0 (Saa = 2 = Sb * Sa / n) falls back to the plain squared distance.
    EXPECT_EQ(flat->d22A(rising.get()), 2.0f);
}

} // namespace
