#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"

// Thresholds and erasures over whole vectors. An erased pixel is 0, the
// value that means "no data".

using vek::detail::ForEachVector;
using vek::detail::Greater;
using vek::detail::Less;
using vek::detail::LineExtent;
using vek::detail::ReplaceLanes;
using vek::detail::SelectLanes;

namespace {

// `value` where Compare(p, threshold) holds, 0 elsewhere; every lane of the
// columns before `firstColumn` becomes 0.
template <class Compare>
void Threshold(CSSEMatrix& m, float threshold, float value, int firstColumn)
{
    const LineExtent whole = vek::detail::WholeField(m);
    const int first = vek::detail::ClampIndex(firstColumn, 0, whole.vectors);
    const __m128 t = _mm_set1_ps(threshold);
    const __m128 v = _mm_set1_ps(value);
    const __m128 zero = _mm_setzero_ps();
    __m128** lines = m.GetMatrixDataDirectly();
    for (int line = 0; line < whole.lines; ++line) {
        __m128* vectors = lines[line];
        for (int x = 0; x < first; ++x) vectors[x] = zero;
        for (int x = first; x < whole.vectors; ++x) vectors[x] = SelectLanes(Compare::Lanes(vectors[x], t), v, zero);
    }
}

// `value` in the lanes where Compare(p, threshold) holds; the others stay.
template <class Compare>
void ReplaceWhere(CSSEMatrix& m, float threshold, float value)
{
    const __m128 t = _mm_set1_ps(threshold);
    const __m128 v = _mm_set1_ps(value);
    ForEachVector(m, [&](__m128& p) { ReplaceLanes(p, Compare::Lanes(p, t), v); });
}

} // namespace

void CSSEMatrix::TresholdAbove(float threshold, float value)
{
    Threshold<Greater>(*this, threshold, value, 0);
}

void CSSEMatrix::TresholdBelow(float threshold, float value)
{
    Threshold<Less>(*this, threshold, value, 0);
}

void CSSEMatrix::TresholdAbove(float threshold, float value, int firstColumn)
{
    Threshold<Greater>(*this, threshold, value, firstColumn);
}

void CSSEMatrix::TresholdBelow(float threshold, float value, int firstColumn)
{
    Threshold<Less>(*this, threshold, value, firstColumn);
}

void CSSEMatrix::TresholdAboveKeep(float threshold, float value)
{
    ReplaceWhere<Greater>(*this, threshold, value);
}

void CSSEMatrix::ErasePixelsGreater(float threshold)
{
    ReplaceWhere<Greater>(*this, threshold, 0.0f);
}

void CSSEMatrix::ErasePixelsLower(float threshold)
{
    ReplaceWhere<Less>(*this, threshold, 0.0f);
}

void CSSEMatrix::EraseOtherValuePixels(float value, float tolerance)
{
    // Erases whole vectors: a pixel of the wanted value survives only if the
    // other three rows of its line at that column survive too. Callers use
    // this to keep solid areas of one label and drop their ragged rims.
    const __m128 upper = _mm_set1_ps(value + tolerance);
    const __m128 lower = _mm_set1_ps(value - tolerance);
    const __m128 zero = _mm_setzero_ps();
    ForEachVector(*this, [&](__m128& p) {
        const __m128 outside = _mm_or_ps(_mm_cmpgt_ps(p, upper), _mm_cmplt_ps(p, lower));
        if (_mm_movemask_ps(outside) != 0) p = zero;
    });
}
