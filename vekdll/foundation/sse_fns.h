#pragma once

#include <smmintrin.h>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"

// Vector functions on four-lane registers. Every sum over lanes is taken in
// the one order (l0 + l3) + (l2 + l1): the vector is added to its lane-reversed
// self and lanes 0 and 2 of that are added. The library's own loops spell the
// same arithmetic out inline, so results agree to the last bit.
class VEKDLL_API CSSEFns {
public:
    static float internal_addition_of_m128(__m128 a)
    {
        const __m128 pairs = _mm_add_ps(a, _mm_shuffle_ps(a, a, _MM_SHUFFLE(0, 1, 2, 3)));
        return _mm_cvtss_f32(_mm_add_ss(pairs, _mm_movehl_ps(pairs, pairs)));
    }

    static float euclideansqr(__m128 a, __m128 b)
    {
        const __m128 d = _mm_sub_ps(a, b);
        return internal_addition_of_m128(_mm_mul_ps(d, d));
    }

    static float euclideandistance(__m128 a, __m128 b) { return SingleSqrt(euclideansqr(a, b)); }

    static float scalarproduct(__m128 a, __m128 b) { return internal_addition_of_m128(_mm_mul_ps(a, b)); }

    static float vectorlen(__m128 a) { return SingleSqrt(scalarproduct(a, a)); }

    // Divides by the length itself, not by a reciprocal; the zero vector gives
    // not-a-number in every lane.
    static __m128 normalizevector(__m128 a) { return _mm_div_ps(a, _mm_set1_ps(vectorlen(a))); }

    // Pairs l0/l2 and l1/l3 first, then the two winners.
    static void max_of_m128(__m128 a, float* out)
    {
        const __m128 pairs = _mm_max_ps(a, _mm_movehl_ps(a, a));
        *out = _mm_cvtss_f32(_mm_max_ss(pairs, _mm_shuffle_ps(pairs, pairs, _MM_SHUFFLE(1, 1, 1, 1))));
    }

    static void min_of_m128(__m128 a, float* out)
    {
        const __m128 pairs = _mm_min_ps(a, _mm_movehl_ps(a, a));
        *out = _mm_cvtss_f32(_mm_min_ss(pairs, _mm_shuffle_ps(pairs, pairs, _MM_SHUFFLE(1, 1, 1, 1))));
    }

    // The right-handed cross product; lane 3 is aw*bw - aw*bw, 0 for finite input.
    static __m128 vectorproduct(__m128 a, __m128 b)
    {
        const __m128 aYZXW = _mm_shuffle_ps(a, a, _MM_SHUFFLE(3, 0, 2, 1));
        const __m128 bZXYW = _mm_shuffle_ps(b, b, _MM_SHUFFLE(3, 1, 0, 2));
        const __m128 aZXYW = _mm_shuffle_ps(a, a, _MM_SHUFFLE(3, 1, 0, 2));
        const __m128 bYZXW = _mm_shuffle_ps(b, b, _MM_SHUFFLE(3, 0, 2, 1));
        return _mm_sub_ps(_mm_mul_ps(aYZXW, bZXYW), _mm_mul_ps(aZXYW, bYZXW));
    }

    // The signed scalar triple product a . (b x c), not divided by 6.
    static float volume(__m128 a, __m128 b, __m128 c) { return scalarproduct(a, vectorproduct(b, c)); }

    // (row0 . a, row1 . a, row2 . a, 0), each a full four-lane sum.
    static __m128 transform(__m128 a, t_ssematrix3& m)
    {
        return _mm_setr_ps(scalarproduct(m.row0, a), scalarproduct(m.row1, a), scalarproduct(m.row2, a), 0.0f);
    }

private:
    static float SingleSqrt(float v) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(v))); }
};
