#pragma once

#include <climits>
#include <smmintrin.h>

// Small pieces of arithmetic that several rebuilding methods of the polygon share.
namespace vek::detail {

// A count of points from a float ratio, truncated: none when the ratio is
// negative or not a number, and INT_MAX when it is beyond the range of int,
// so that a caller's cap or an allocation decides rather than an undefined
// conversion.
inline int TruncatedCount(float ratio)
{
    if (!(ratio >= 0.0f)) return 0;
    if (ratio >= static_cast<float>(INT_MAX)) return INT_MAX;
    return static_cast<int>(ratio);
}

// a (1 - g) + b g in all four lanes: the blend of two points that the
// resampling by arc length, by index and the morph towards another line use.
inline __m128 Blend(__m128 a, __m128 b, float g)
{
    return _mm_add_ps(_mm_mul_ps(a, _mm_set1_ps(1.0f - g)), _mm_mul_ps(b, _mm_set1_ps(g)));
}

} // namespace vek::detail
