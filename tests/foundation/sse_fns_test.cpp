#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "support/sse_lanes.h"
#include "vekdll/foundation/sse_fns.h"

using vek::test::Lanes4;

namespace {

__m128 V(float x, float y, float z, float w = 0.0f)
{
    return _mm_setr_ps(x, y, z, w);
}

Lanes4 LanesOf(__m128 v)
{
    return std::bit_cast<Lanes4>(v);
}

TEST(CSSEFns, LaneSumsRunInTheFixedOrderAndProductsAndExtremesUseAllFourLanes)
{
    // (l0 + l3) + (l2 + l1) = (1e8 - 1e8) + (3 + 1) = 4, while left to right
    // ((1e8 + 1) + 3) - 1e8 gives 0 in single precision.
    const __m128 a = V(1e8f, 1.0f, 3.0f, -1e8f);
    EXPECT_EQ(CSSEFns::internal_addition_of_m128(a), 4.0f);
    EXPECT_EQ(CSSEFns::scalarproduct(a, V(1, 1, 1, 1)), 4.0f);
    const __m128 pairs = V(0.1f, 0.7f, 0.3f, 0.9f);
    const float squares = (0.1f * 0.1f + 0.9f * 0.9f) + (0.3f * 0.3f + 0.7f * 0.7f);
    EXPECT_EQ(CSSEFns::euclideansqr(pairs, _mm_setzero_ps()), squares);
    EXPECT_EQ(CSSEFns::euclideandistance(pairs, _mm_setzero_ps()), std::sqrt(squares));
    EXPECT_EQ(CSSEFns::vectorlen(V(3, 4, 0, 12)), 13.0f);
    EXPECT_EQ(LanesOf(CSSEFns::normalizevector(V(0, 3, 0, 4))), (Lanes4{0, 0.6f, 0, 0.8f}));
    EXPECT_TRUE(std::isnan(LanesOf(CSSEFns::normalizevector(_mm_setzero_ps()))[2]));
    // (row . a) for each row, lane 3 cleared.
    t_ssematrix3 m{V(1, 0, 0, 10), V(0, 2, 0, 20), V(0, 0, 3, 30)};
    EXPECT_EQ(LanesOf(CSSEFns::transform(V(1, 1, 1, 1), m)), (Lanes4{11, 22, 33, 0}));
    EXPECT_EQ(LanesOf(CSSEFns::vectorproduct(V(2, 3, 4, 5), V(5, 6, 7, 8))), (Lanes4{3 * 7 - 4 * 6, 4 * 5 - 2 * 7, 2 * 6 - 3 * 5, 0}));
    EXPECT_EQ(CSSEFns::volume(V(0, 1, 0), V(1, 0, 0), V(0, 0, 1)), -1.0f);
    for (int lane = 0; lane < 4; ++lane) {
        SSEPoint high, low;
        high.sse = low.sse = V(1, -2, 3, -1);
        high.lane[lane] = 9.0f, low.lane[lane] = -9.0f;
        float largest = 0, smallest = 0;
        CSSEFns::max_of_m128(high.sse, &largest), CSSEFns::min_of_m128(low.sse, &smallest);
        EXPECT_EQ(std::pair(largest, smallest), std::pair(9.0f, -9.0f)) << "lane " << lane;
    }
}

} // namespace
