#pragma once

// The sampler behind the scan conversion of a CHTriangulation: each triangle
// is walked in its own parameters s (along S) and t (along T), on a grid
// whose step moves at most one pixel diagonal along the longer of the two
// edges, so every pixel the triangle covers gets a sample or a brush arm.
// Nothing here needs a plane equation or clipping; S and T come precomputed.

#include <algorithm>

#include <smmintrin.h>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/mesh/htriangle.h"

namespace vek::detail {

// Calls visit(p) for p = t T + P0 + s S, summed in that order, for s = 0,
// step, 2 step ... while s < 1 and, for each s, t = 0, step ... while
// t < 1 - s; both run on by repeated addition. The far edge V and the
// corners P1 and P2 are reached only as near as the step allows. A triangle
// with S = T = 0 has an infinite step and gives the one sample at P0.
template <class Visit>
void SampleMeshTriangle(const t_htriangle& triangle, float diagonal, Visit&& visit)
{
    const __m128 p0 = triangle.P0->sse;
    const __m128 s = triangle.S->sse;
    const __m128 t = triangle.T->sse;
    const float step = diagonal / std::max(CSSEFns::vectorlen(s), CSSEFns::vectorlen(t));
    for (float u = 0.0f; 1.0f > u; u += step) {
        const __m128 alongS = _mm_mul_ps(_mm_set1_ps(u), s);
        const float limit = 1.0f - u;
        for (float v = 0.0f; limit > v; v += step) {
            visit(_mm_add_ps(_mm_add_ps(_mm_mul_ps(_mm_set1_ps(v), t), p0), alongS));
            // A step too small to move the parameter (a triangle millions of
            // pixels long) would never end the row.
            if (v + step == v) break;
        }
        if (u + step == u) break;
    }
}

struct RasterCell {
    int col;
    int row;
};

// truncate(q / unit + 0.5) in x and y, toward zero; a coordinate beyond the
// int range or not a number gives INT_MIN, which every bound refuses.
inline RasterCell CellOf(__m128 q, __m128 unit)
{
    const __m128 scaled = _mm_add_ps(_mm_div_ps(q, unit), _mm_setr_ps(0.5f, 0.5f, 0.0f, 0.0f));
    const __m128i cell = _mm_cvttps_epi32(scaled);
    return {_mm_cvtsi128_si32(cell), _mm_extract_epi32(cell, 1)};
}

inline float ZOf(__m128 p)
{
    return _mm_cvtss_f32(_mm_movehl_ps(p, p));
}

} // namespace vek::detail
