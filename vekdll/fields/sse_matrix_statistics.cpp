#include <bit>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_fns.h"

// Counts and integrals over every lane of every line. Padding lanes take
// part, so a field whose padding holds values counts and sums them too.

using vek::detail::ForEachVector;
using vek::detail::ForEachVectorPair;
using vek::detail::Greater;
using vek::detail::Less;

namespace {

int LanesSet(__m128 mask)
{
    return std::popcount(static_cast<unsigned>(_mm_movemask_ps(mask)));
}

template <class Compare>
int CountWhere(const CSSEMatrix& m, float threshold)
{
    const __m128 t = _mm_set1_ps(threshold);
    int count = 0;
    ForEachVector(m, [&](__m128 p) { count += LanesSet(Compare::Lanes(p, t)); });
    return count;
}

template <class Compare>
int CountWhere(const CSSEMatrix& m, const CSSEMatrix* q)
{
    if (q == nullptr) return 0;
    int count = 0;
    ForEachVectorPair(m, *q, [&](__m128 p, __m128 other) { count += LanesSet(Compare::Lanes(p, other)); });
    return count;
}

// Four single-precision partial sums, one per lane, of term(p) over the lines
// in order and x along each line.
template <class Term>
__m128 LaneSums(const CSSEMatrix& m, Term term)
{
    __m128 sums = _mm_setzero_ps();
    ForEachVector(m, [&](__m128 p) { sums = _mm_add_ps(sums, term(p)); });
    return sums;
}

__m128 Amount(__m128 p)
{
    return _mm_sqrt_ps(_mm_mul_ps(p, p));
}

__m128 Identity(__m128 p)
{
    return p;
}

} // namespace

int CSSEMatrix::NumValuesAbove(float threshold) const
{
    return CountWhere<Greater>(*this, threshold);
}

int CSSEMatrix::NumValuesBelow(float threshold) const
{
    return CountWhere<Less>(*this, threshold);
}

int CSSEMatrix::NumValuesAbove(const CSSEMatrix* q) const
{
    return CountWhere<Greater>(*this, q);
}

int CSSEMatrix::NumValuesBelow(const CSSEMatrix* q) const
{
    return CountWhere<Less>(*this, q);
}

float CSSEMatrix::IntegrateMatrix() const
{
    return CSSEFns::internal_addition_of_m128(LaneSums(*this, Identity));
}

float CSSEMatrix::IntegrateMatrixAbsolute() const
{
    return CSSEFns::internal_addition_of_m128(LaneSums(*this, Amount));
}

float CSSEMatrix::IntegrateMatrixAbsolute(float a, float b) const
{
    // The factor a * b is formed once; each amount is scaled before it is added.
    const __m128 factor = _mm_set1_ps(a * b);
    return CSSEFns::internal_addition_of_m128(LaneSums(*this, [&](__m128 p) { return _mm_mul_ps(Amount(p), factor); }));
}

float CSSEMatrix::CalcAbsSum() const
{
    // The same partial sums as IntegrateMatrixAbsolute, added up in lane order
    // rather than in pairs: the two results may differ in the last bits.
    SSEPoint sums;
    sums.sse = LaneSums(*this, Amount);
    return ((sums.lane[0] + sums.lane[1]) + sums.lane[2]) + sums.lane[3];
}
