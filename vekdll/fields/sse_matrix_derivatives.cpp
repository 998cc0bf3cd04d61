#include "vekdll/fields/sse_matrix.h"

// Forward first differences on whole vectors, in place. Each step reads a
// neighbour that the pass hasn't reached yet.

void CSSEMatrix::CalcDerivativeX()
{
    if (MatrixData == nullptr) return;
    for (int line = 0; line < SSESizeY; ++line) {
        __m128* v = MatrixData[line];
        for (int x = 0; x < SSESizeX - 1; ++x) v[x] = _mm_sub_ps(v[x + 1], v[x]);
    }
}

void CSSEMatrix::CalcDerivativeY()
{
    // The row below lane k is lane k + 1, and below lane 3 it is lane 0 of
    // the next line. All four lanes take part, so the last image row is
    // differenced against a padding lane.
    if (MatrixData == nullptr) return;
    for (int line = 0; line < SSESizeY - 1; ++line) {
        __m128* v = MatrixData[line];
        const __m128* next = MatrixData[line + 1];
        for (int x = 0; x < SSESizeX; ++x) {
            const __m128 below = _mm_castsi128_ps(_mm_alignr_epi8(_mm_castps_si128(next[x]), _mm_castps_si128(v[x]), 4));
            v[x] = _mm_sub_ps(below, v[x]);
        }
    }
}
