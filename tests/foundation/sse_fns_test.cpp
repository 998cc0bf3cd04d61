#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "vekdll/foundation/sse_fns.h"

namespace {

__m128 V(float x, float y, float z, float w = 0.0f)
{
    return _mm_setr_ps(x, y, z, w);
}

SSEPoint P(__m128 v)
{
    SSEPoint p;
    p.sse = v;
    return p;
}

bool SameBits(float a, float b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(CSSEFnsTest, LaneSumsRunInTheFixedOrder)
{
    // Chosen so that every other order of the four additions rounds
    // differently: (l0 + l3) + (l2 + l1) = (1e8 - 1e8) + (1 + 3) = 4, while
    // the left-to-right order ((1e8 + 1) + 3) - 1e8 gives 0 in single precision.
    const __m128 a = V(1e8f, 1.0f, 3.0f, -1e8f);
    const float expected = (1e8f + -1e8f) + (3.0f + 1.0f);
    EXPECT_TRUE(SameBits(CSSEFns::internal_addition_of_m128(a), expected));
    EXPECT_EQ(CSSEFns::internal_addition_of_m128(a), 4.0f);
    const float leftToRight = ((1e8f + 1.0f) + 3.0f) + -1e8f;
    EXPECT_NE(CSSEFns::internal_addition_of_m128(a), leftToRight);

    // The same order carries through the products and squares.
    const __m128 b = V(1.0f, 1.0f, 1.0f, 1.0f);
    EXPECT_TRUE(SameBits(CSSEFns::scalarproduct(a, b), expected));
    const __m128 pairs = V(0.1f, 0.7f, 0.3f, 0.9f);
    const float sq = (0.1f * 0.1f + 0.9f * 0.9f) + (0.3f * 0.3f + 0.7f * 0.7f);
    EXPECT_TRUE(SameBits(CSSEFns::euclideansqr(pairs, _mm_setzero_ps()), sq));
    EXPECT_TRUE(SameBits(CSSEFns::euclideandistance(pairs, _mm_setzero_ps()), std::sqrt(sq)));
}

TEST(CSSEFnsTest, LengthsAndProductsCountTheFourthLane)
{
    EXPECT_EQ(CSSEFns::vectorlen(V(3, 4, 0)), 5.0f);
    EXPECT_EQ(CSSEFns::vectorlen(V(3, 4, 0, 12)), 13.0f);
    EXPECT_EQ(CSSEFns::scalarproduct(V(1, 0, 0, 1), V(1, 0, 0, 1)), 2.0f);
    EXPECT_EQ(CSSEFns::euclideandistance(V(1, 1, 1, 1), V(1, 1, 1, 3)), 2.0f);

    const SSEPoint n = P(CSSEFns::normalizevector(V(0, 3, 0, 4)));
    EXPECT_EQ(n.x, 0.0f);
    EXPECT_EQ(n.y, 0.6f);
    EXPECT_EQ(n.w, 0.8f);
    const SSEPoint zero = P(CSSEFns::normalizevector(_mm_setzero_ps()));
    for (float lane : zero.lane) EXPECT_TRUE(std::isnan(lane));
}

TEST(CSSEFnsTest, CrossProductAndVolumeAreRightHanded)
{
    const SSEPoint z = P(CSSEFns::vectorproduct(V(1, 0, 0), V(0, 1, 0)));
    EXPECT_EQ(z.x, 0.0f);
    EXPECT_EQ(z.y, 0.0f);
    EXPECT_EQ(z.z, 1.0f);
    EXPECT_EQ(z.w, 0.0f);
    const SSEPoint c = P(CSSEFns::vectorproduct(V(2, 3, 4, 5), V(5, 6, 7, 8)));
    EXPECT_EQ(c.x, 3 * 7 - 4 * 6);
    EXPECT_EQ(c.y, 4 * 5 - 2 * 7);
    EXPECT_EQ(c.z, 2 * 6 - 3 * 5);
    EXPECT_EQ(c.w, 0.0f); // aw*bw - aw*bw
    EXPECT_EQ(CSSEFns::volume(V(1, 0, 0), V(0, 1, 0), V(0, 0, 1)), 1.0f);
    EXPECT_EQ(CSSEFns::volume(V(0, 1, 0), V(1, 0, 0), V(0, 0, 1)), -1.0f);
}

TEST(CSSEFnsTest, MaxAndMinSeeAllFourLanes)
{
    float out = 0;
    CSSEFns::max_of_m128(V(1, -2, 3, 9), &out);
    EXPECT_EQ(out, 9.0f);
    CSSEFns::max_of_m128(V(-5, 7, -3, -1), &out);
    EXPECT_EQ(out, 7.0f);
    CSSEFns::min_of_m128(V(1, -2, 3, -9), &out);
    EXPECT_EQ(out, -9.0f);
    CSSEFns::min_of_m128(V(4, 2, -3, 8), &out);
    EXPECT_EQ(out, -3.0f);
}

TEST(CSSEFnsTest, TransformSumsEachRowAndClearsTheFourthLane)
{
    t_ssematrix3 m;
    m.row0 = V(1, 0, 0, 10); // x + 10 w
    m.row1 = V(0, 2, 0, 20);
    m.row2 = V(0, 0, 3, 30);
    const SSEPoint moved = P(CSSEFns::transform(V(1, 1, 1, 1), m));
    EXPECT_EQ(moved.x, 11.0f);
    EXPECT_EQ(moved.y, 22.0f);
    EXPECT_EQ(moved.z, 33.0f);
    EXPECT_EQ(moved.w, 0.0f);
    const SSEPoint linear = P(CSSEFns::transform(V(1, 1, 1, 0), m));
    EXPECT_EQ(linear.x, 1.0f);
    EXPECT_EQ(linear.z, 3.0f);
    const SSEPoint nanIn = P(CSSEFns::transform(V(NAN, 1, 1, 7), m));
    EXPECT_TRUE(SameBits(nanIn.w, 0.0f));
}

TEST(SSEPointTest, LanesOverlayTheNamedCoordinates)
{
    SSEPoint p;
    p.sse = V(1, 2, 3, 4);
    EXPECT_EQ(p.x, 1.0f);
    EXPECT_EQ(p.y, 2.0f);
    EXPECT_EQ(p.z, 3.0f);
    EXPECT_EQ(p.w, 4.0f);
    p.lane[2] = 9.0f;
    EXPECT_EQ(p.z, 9.0f);
    EXPECT_EQ(sizeof(SSEPoint), 16u);
    EXPECT_EQ(alignof(t_ssematrix3), 16u);
}

} // namespace
