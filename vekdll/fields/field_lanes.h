#pragma once

#include <smmintrin.h>

#include <algorithm>
#include <cstddef>

#include "vekdll/fields/sse_matrix.h"

// Walking a CSSEMatrix vector by vector, and the lane tests that the
// whole-field operations share. Internal to the library's field code.

namespace vek::detail {

// Lane-wise comparisons, so that an Above/Below or Max/Min pair is one body
// instantiated with either of them. A not-a-number lane fails both tests.
struct Greater {
    static __m128 Lanes(__m128 a, __m128 b) { return _mm_cmpgt_ps(a, b); }
    static bool Scalar(float a, float b) { return a > b; }
};
struct Less {
    static __m128 Lanes(__m128 a, __m128 b) { return _mm_cmplt_ps(a, b); }
    static bool Scalar(float a, float b) { return a < b; }
};

inline constexpr int kAllLanes = 0xF;

// Lanes where lower < p < upper, both bounds excluded.
inline __m128 StrictlyBetween(__m128 p, __m128 lower, __m128 upper)
{
    return _mm_and_ps(_mm_cmpgt_ps(p, lower), _mm_cmplt_ps(p, upper));
}

// The lanes of `mask` taken from `ifTrue`, the others from `ifFalse`. One
// mask extraction decides; a vector whose four lanes agree is taken whole.
inline __m128 SelectLanes(__m128 mask, __m128 ifTrue, __m128 ifFalse)
{
    switch (_mm_movemask_ps(mask)) {
    case kAllLanes: return ifTrue;
    case 0: return ifFalse;
    default: return _mm_blendv_ps(ifFalse, ifTrue, mask);
    }
}

// Writes `replacement` into the lanes of `mask`. A vector with no lane to
// change isn't stored at all, one with four is stored whole.
inline void ReplaceLanes(__m128& p, __m128 mask, __m128 replacement)
{
    const int lanes = _mm_movemask_ps(mask);
    if (lanes == 0) return;
    p = lanes == kAllLanes ? replacement : _mm_blendv_ps(p, replacement, mask);
}

// One row of a field as the lane layout lays it out: pixel x + 1 lies four
// floats after pixel x. Filters that go pixel by pixel take their rows once
// and index them by column. No clamp: y must lie in the field's storage.
class RowOf {
public:
    RowOf() = default;
    RowOf(const CSSEMatrix& m, int y) : first_(reinterpret_cast<float*>(m.GetMatrixDataDirectly()[y >> 2]) + (y & 3)) {}
    float& operator[](int x) const { return first_[4 * static_cast<std::ptrdiff_t>(x)]; }

private:
    float* first_ = nullptr;
};

// How far a whole-field walk goes: `lines` lines of `vectors` vectors each.
struct LineExtent {
    int lines;
    int vectors;
};

// All lines of a field, padding included; nothing for a field without image.
inline LineExtent WholeField(const CSSEMatrix& m)
{
    if (m.GetMatrixDataDirectly() == nullptr) return {0, 0};
    return {m.GetSSESizeY(), m.GetSSESizeX()};
}

// The lines and vectors that two fields have in common.
inline LineExtent CommonExtent(const CSSEMatrix& a, const CSSEMatrix& b)
{
    const LineExtent ea = WholeField(a);
    const LineExtent eb = WholeField(b);
    if (ea.lines == 0 || eb.lines == 0) return {0, 0};
    return {std::min(ea.lines, eb.lines), std::min(ea.vectors, eb.vectors)};
}

// Calls op(vector) for every vector of `extent`, line by line and x along the
// line, the order in which running sums are defined.
template <class Op>
void ForEachVector(__m128* const* lines, LineExtent extent, Op&& op)
{
    for (int line = 0; line < extent.lines; ++line) {
        __m128* vectors = lines[line];
        for (int x = 0; x < extent.vectors; ++x) op(vectors[x]);
    }
}

// A const field is walked for reading: its ops take the vectors by value.
template <class Field, class Op>
void ForEachVector(Field& m, Op&& op)
{
    ForEachVector(m.GetMatrixDataDirectly(), WholeField(m), op);
}

// Calls op(vector of a, vector of b) for every vector that the two fields
// have in common, or over `extent` if one is given. `a` is the field that is
// written, unless it is const.
template <class Field, class Op>
void ForEachVectorPair(Field& a, const CSSEMatrix& b, LineExtent extent, Op&& op)
{
    __m128* const* linesA = a.GetMatrixDataDirectly();
    __m128* const* linesB = b.GetMatrixDataDirectly();
    for (int line = 0; line < extent.lines; ++line) {
        __m128* vectorsA = linesA[line];
        const __m128* vectorsB = linesB[line];
        for (int x = 0; x < extent.vectors; ++x) op(vectorsA[x], vectorsB[x]);
    }
}

template <class Field, class Op>
void ForEachVectorPair(Field& a, const CSSEMatrix& b, Op&& op)
{
    ForEachVectorPair(a, b, CommonExtent(a, b), op);
}

} // namespace vek::detail
