#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"

// Arithmetic of a field with a constant, in place, over every lane of every
// line. Padding lanes are computed like the rest.

using vek::detail::ForEachVector;
using vek::detail::ReplaceLanes;

namespace {

// Below this a pixel counts as holding no data for LiftWhereNonZero.
constexpr float kLiftNoDataLimit = 0.005f;
// The default tolerance of ReplaceValueWithValue.
constexpr float kReplaceTolerance = 0.002f;

// p + offset in the lanes where Compare(p, threshold) holds.
template <class Compare>
void OffsetWhere(CSSEMatrix& m, float threshold, float offset)
{
    const __m128 t = _mm_set1_ps(threshold);
    const __m128 o = _mm_set1_ps(offset);
    ForEachVector(m, [&](__m128& p) { ReplaceLanes(p, Compare::Lanes(p, t), _mm_add_ps(p, o)); });
}

} // namespace

void CSSEMatrix::Absolute()
{
    // The root of the square, as callers have always had it: it overflows to
    // infinity for huge values and underflows to 0 for tiny ones, where a
    // cleared sign bit would not.
    ForEachVector(*this, [](__m128& p) { p = _mm_sqrt_ps(_mm_mul_ps(p, p)); });
}

void CSSEMatrix::InvertSign()
{
    const __m128 zero = _mm_setzero_ps();
    ForEachVector(*this, [&](__m128& p) { p = _mm_sub_ps(zero, p); });
}

void CSSEMatrix::OffsetMatrix(float offset)
{
    const __m128 o = _mm_set1_ps(offset);
    ForEachVector(*this, [&](__m128& p) { p = _mm_add_ps(p, o); });
}

void CSSEMatrix::OffsetMatrixAbove(float threshold, float offset)
{
    OffsetWhere<vek::detail::Greater>(*this, threshold, offset);
}

void CSSEMatrix::OffsetMatrixBelow(float threshold, float offset)
{
    OffsetWhere<vek::detail::Less>(*this, threshold, offset);
}

void CSSEMatrix::LiftWhereNonZero(float offset)
{
    OffsetMatrixAbove(kLiftNoDataLimit, offset);
}

void CSSEMatrix::ScalarMultiply(float factor)
{
    const __m128 s = _mm_set1_ps(factor);
    ForEachVector(*this, [&](__m128& p) { p = _mm_mul_ps(p, s); });
}

void CSSEMatrix::ReplaceValueWithValue(float value, float replacement)
{
    ReplaceValueWithValue(value, replacement, kReplaceTolerance);
}

void CSSEMatrix::ReplaceValueWithValue(float value, float replacement, float tolerance)
{
    // The difference is value - p, tested against the open interval.
    const __m128 a = _mm_set1_ps(value);
    const __m128 b = _mm_set1_ps(replacement);
    const __m128 upper = _mm_set1_ps(tolerance);
    const __m128 lower = _mm_set1_ps(-tolerance);
    ForEachVector(*this, [&](__m128& p) { ReplaceLanes(p, vek::detail::StrictlyBetween(_mm_sub_ps(a, p), lower, upper), b); });
}

void CSSEMatrix::ReplaceLineAbove(float threshold, float value, int y)
{
    // One image row is one lane of each vector: pixel by pixel.
    if (MatrixData == nullptr) return;
    const int row = vek::detail::ClampIndex(y, 0, SizeY - 1);
    for (int x = 0; x < SizeX; ++x) {
        float* p = PixelAddress(x, row);
        if (*p > threshold) *p = value;
    }
}
