#include <algorithm>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"

// Pixel-wise combination of this field (p) with a second one (q), vector by
// vector over the lines and columns the two have in common.

using vek::detail::ForEachVectorPair;
using vek::detail::ReplaceLanes;

namespace {

// Below this a pixel of this field counts as holding no data for
// AddMatrixOffsetedConstrained; a negative pixel too.
constexpr float kConstrainedNoDataLimit = 0.001f;

// max(0, q - offset), written in this order of operands: a not-a-number in q
// is carried through rather than dropped.
__m128 PositivePartAbove(__m128 q, __m128 offset)
{
    return _mm_max_ps(_mm_setzero_ps(), _mm_sub_ps(q, offset));
}

} // namespace

void CSSEMatrix::AddMatrix(const CSSEMatrix& q)
{
    ForEachVectorPair(*this, q, [](__m128& p, __m128 other) { p = _mm_add_ps(p, other); });
}

void CSSEMatrix::SubMatrix(const CSSEMatrix& q)
{
    ForEachVectorPair(*this, q, [](__m128& p, __m128 other) { p = _mm_sub_ps(p, other); });
}

void CSSEMatrix::SubMatrixValidate(const CSSEMatrix& q)
{
    // Only pixels holding data are lowered, and they may go below 0.
    const __m128 zero = _mm_setzero_ps();
    ForEachVectorPair(*this, q, [&](__m128& p, __m128 other) { ReplaceLanes(p, _mm_cmpgt_ps(p, zero), _mm_sub_ps(p, other)); });
}

void CSSEMatrix::AddMatrixOffseted(const CSSEMatrix& q, float offset)
{
    const __m128 o = _mm_set1_ps(offset);
    ForEachVectorPair(*this, q, [&](__m128& p, __m128 other) { p = _mm_add_ps(p, PositivePartAbove(other, o)); });
}

void CSSEMatrix::AddMatrixOffsetedNormed(const CSSEMatrix& q, float offset, float factor)
{
    const __m128 o = _mm_set1_ps(offset);
    const __m128 s = _mm_set1_ps(factor);
    ForEachVectorPair(*this, q, [&](__m128& p, __m128 other) { p = _mm_add_ps(p, _mm_mul_ps(PositivePartAbove(other, o), s)); });
}

void CSSEMatrix::AddMatrixOffsetedConstrained(const CSSEMatrix& q, float offset, float a, float b)
{
    // Where this field holds no data, q doesn't count: with a = b = 1 and a
    // non-negative offset such a pixel stays as it is.
    const __m128 o = _mm_set1_ps(offset);
    const __m128 va = _mm_set1_ps(a);
    const __m128 vb = _mm_set1_ps(b);
    const __m128 limit = _mm_set1_ps(kConstrainedNoDataLimit);
    ForEachVectorPair(*this, q, [&](__m128& p, __m128 other) {
        const __m128 counted = _mm_andnot_ps(_mm_cmplt_ps(p, limit), other);
        p = _mm_add_ps(_mm_mul_ps(PositivePartAbove(counted, o), vb), _mm_mul_ps(p, va));
    });
}

void CSSEMatrix::MaximumOf(const CSSEMatrix& q)
{
    // max(q, p): where q is not a number, p is kept.
    ForEachVectorPair(*this, q, [](__m128& p, __m128 other) { p = _mm_max_ps(other, p); });
}

void CSSEMatrix::MinimumOf(const CSSEMatrix& q)
{
    ForEachVectorPair(*this, q, [](__m128& p, __m128 other) { p = _mm_min_ps(other, p); });
}

void CSSEMatrix::CombineAbsolute(const CSSEMatrix& q)
{
    ForEachVectorPair(*this, q, [](__m128& p, __m128 other) { p = _mm_sqrt_ps(_mm_add_ps(_mm_mul_ps(other, other), _mm_mul_ps(p, p))); });
}

void CSSEMatrix::CombineMultiplicative(const CSSEMatrix& q)
{
    ForEachVectorPair(*this, q, [](__m128& p, __m128 other) {
        const __m128 product = _mm_mul_ps(p, other);
        p = _mm_sqrt_ps(_mm_mul_ps(product, product));
    });
}

void CSSEMatrix::CalcDifferenceMatrixConstrained(const CSSEMatrix& a, const CSSEMatrix& b, bool dropNegative, bool dropPositive)
{
    // Built aside when this field is one of the operands, which Create would
    // otherwise release before it is read.
    if (&a == this || &b == this) {
        CSSEMatrix difference;
        difference.CalcDifferenceMatrixConstrained(a, b, dropNegative, dropPositive);
        CopyFromSSEMatrix(difference);
        return;
    }
    Create(std::min(a.SizeX, b.SizeX), std::min(a.SizeY, b.SizeY));
    const vek::detail::LineExtent common = vek::detail::CommonExtent(a, b);
    for (int line = 0; line < common.lines; ++line) {
        const __m128* minuend = a.MatrixData[line];
        const __m128* subtrahend = b.MatrixData[line];
        __m128* difference = MatrixData[line];
        for (int x = 0; x < common.vectors; ++x) difference[x] = _mm_sub_ps(minuend[x], subtrahend[x]);
    }
    if (dropNegative) ErasePixelsLower(0.0f);
    if (dropPositive) ErasePixelsGreater(0.0f);
}
