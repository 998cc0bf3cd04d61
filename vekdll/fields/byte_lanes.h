#pragma once

#include <smmintrin.h>

// Vector steps on sixteen signed bytes that the byte field's whole-field
// operations share.

namespace vek::detail {

// Every byte of a vector holding `v`, wrapping to its low byte.
inline __m128i BroadcastByte(int v)
{
    return _mm_set1_epi8(static_cast<char>(v));
}

// The sums of the low and of the high eight bytes of v read as signed, each
// raised by 8 x 128, in the two 64-bit halves. Flipping the sign bit maps a
// signed byte s onto the unsigned s + 128, which the unsigned sum of absolute
// differences against zero adds up; subtract kSignedByteSumBias per vector.
inline __m128i BiasedSignedByteSums(__m128i v)
{
    return _mm_sad_epu8(_mm_xor_si128(v, BroadcastByte(0x80)), _mm_setzero_si128());
}
constexpr int kSignedByteSumBias = 16 * 128;

// Adds the two 64-bit halves.
inline long long AddHalves(__m128i sums)
{
    return _mm_cvtsi128_si64(sums) + _mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums));
}

} // namespace vek::detail

namespace vek::detail {

// All ones in the first `rows` bytes (0 ... 16) and zero in the rest: the
// image rows of a line whose remaining bytes are padding.
inline __m128i LeadingBytesMask(int rows)
{
    const __m128i index = _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    return _mm_cmpgt_epi8(BroadcastByte(rows), index);
}

} // namespace vek::detail
