#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/pixel_store.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

// Masks and stencils: a second field decides which pixels of this one are
// erased. The limits differ on purpose: a mask holds data from 0.1, a stencil
// from 5.

using vek::detail::ForEachVectorPair;
using vek::detail::ReplaceLanes;

namespace {

constexpr float kMaskLimit = 0.1f;
constexpr float kStencilLimit = 5.0f;

// The mask pixel that a scaled stencil reads for pixel `i` of this field:
// i * scale rounded to the nearest index, then clamped to the mask.
int ScaledMaskIndex(int i, float scale, int maskSize)
{
    return vek::detail::TruncatedIndex(static_cast<float>(i) * scale + 0.5f, 0, maskSize - 1);
}

// A mask pixel as a number: bytes are read as signed.
float MaskValue(float v)
{
    return v;
}

float MaskValue(char v)
{
    return static_cast<float>(static_cast<signed char>(v));
}

// Pixel by pixel, row by row: 0 where the mask pixel at the scaled position
// is below the stencil limit. Written for any mask with clamped GetPoint.
template <class Mask>
void StencilScaled(CSSEMatrix& m, const Mask& mask, float scaleX, float scaleY)
{
    if (m.GetMatrixDataDirectly() == nullptr || mask.GetMatrixDataDirectly() == nullptr) return;
    for (int y = 0; y < m.GetSizeY(); ++y) {
        const int maskY = ScaledMaskIndex(y, scaleY, mask.GetSizeY());
        for (int x = 0; x < m.GetSizeX(); ++x) {
            const int maskX = ScaledMaskIndex(x, scaleX, mask.GetSizeX());
            if (kStencilLimit > MaskValue(mask.GetPoint(maskX, maskY))) m.SetPoint(x, y, 0.0f);
        }
    }
}

} // namespace

void CSSEMatrix::MaskOut(const CSSEMatrix& q)
{
    StencilThreshAbove(q, kMaskLimit);
}

void CSSEMatrix::MaskOutAndValidate(const CSSEMatrix& q)
{
    // Pixels at or below 0 hold no data and are left as they are.
    const __m128 limit = _mm_set1_ps(kMaskLimit);
    const __m128 zero = _mm_setzero_ps();
    ForEachVectorPair(*this, q, [&](__m128& p, __m128 mask) {
        ReplaceLanes(p, _mm_and_ps(_mm_cmplt_ps(mask, limit), _mm_cmpgt_ps(p, zero)), zero);
    });
}

void CSSEMatrix::StencilThreshAbove(const CSSEMatrix& q, float threshold)
{
    const __m128 t = _mm_set1_ps(threshold);
    const __m128 zero = _mm_setzero_ps();
    ForEachVectorPair(*this, q, [&](__m128& p, __m128 mask) { ReplaceLanes(p, _mm_cmplt_ps(mask, t), zero); });
}

void CSSEMatrix::StencilThreshBelow(const CSSEMatrix& q, float threshold)
{
    // Long-standing callers rely on this erasing below the threshold too.
    StencilThreshAbove(q, threshold);
}

void CSSEMatrix::Stencil(const CSSEMatrix& q, float scaleX, float scaleY)
{
    // At scale 1 the stencil is a mask with another limit, applied to whole
    // vectors over the common lines, padding lanes included.
    if (scaleX == 1.0f && scaleY == 1.0f) {
        StencilThreshAbove(q, kStencilLimit);
        return;
    }
    StencilScaled(*this, q, scaleX, scaleY);
}

void CSSEMatrix::Stencil(const CSSEcharMatrix& q, float scaleX, float scaleY)
{
    // At scale 1, x * 1 + 0.5 truncates to x itself, so the scaled reading
    // reads the mask at (x, y).
    StencilScaled(*this, q, scaleX, scaleY);
}
