#include <algorithm>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"

// Box and mask filters: sums over a window of the source field.

void CSSEMatrix::BoxFilter(const CSSEMatrix& src, bool lower)
{
    // Filtering a field into itself reads it as it was.
    if (&src == this) {
        CSSEMatrix before;
        before.CopyFromSSEMatrix(*this);
        BoxFilter(before, lower);
        return;
    }
    const vek::detail::LineExtent common = vek::detail::CommonExtent(*this, src);
    const int w = common.vectors;
    const int l = common.lines;

    // Horizontal stage, on whole vectors: the mean of three columns.
    const __m128 three = _mm_set1_ps(3.0f);
    for (int line = 0; line < l; ++line) {
        const __m128* from = src.MatrixData[line];
        __m128* to = MatrixData[line];
        for (int x = 1; x < w - 1; ++x) to[x] = _mm_div_ps(_mm_add_ps(_mm_add_ps(from[x + 1], from[x]), from[x - 1]), three);
    }

    // Vertical stage, from src again and not from the horizontal result: the
    // undivided sum of four rows, which may span two lines. It overwrites the
    // horizontal means in every row it reaches; those survive only in the
    // rows above and below.
    const int shift = lower ? 2 : 1;
    for (int y = 0; y <= 4 * l - 5; ++y) {
        for (int x = 0; x < w; ++x) {
            const float sum = ((*src.PixelAddress(x, y) + *src.PixelAddress(x, y + 1)) + *src.PixelAddress(x, y + 2)) + *src.PixelAddress(x, y + 3);
            *PixelAddress(x, y + shift) = sum;
        }
    }
}

void CSSEMatrix::MaskFilter(CSSEMatrix& out, const CSSEMatrix& mask, bool normalize)
{
    if (MatrixData == nullptr || mask.MatrixData == nullptr) return;
    // The mask must fit inside the field, and an empty mask has no centre.
    if (mask.SizeX >= SizeX || mask.SizeY >= SizeY || mask.SizeX < 1 || mask.SizeY < 1) return;
    // An out of the right size keeps its contents in the frame the mask
    // doesn't reach.
    if (&out == this || &out == &mask) {
        // Written into this field or the mask itself: computed aside from
        // the inputs as they were, into what out held.
        CSSEMatrix result;
        result.CopyFromSSEMatrix(out);
        MaskFilter(result, mask, normalize);
        out.CopyFromSSEMatrix(result);
        return;
    }
    if (out.SizeX != SizeX || out.SizeY != SizeY || out.MatrixData == nullptr) out.Create(SizeX, SizeY);

    const float absSum = mask.CalcAbsSum();
    const int halfWidth = (mask.SizeX - 1) / 2;
    const int halfHeight = (mask.SizeY - 1) / 2;
    for (int x = 0; x <= SizeX - mask.SizeX; ++x) {
        for (int y = 0; y <= SizeY - mask.SizeY; ++y) {
            // The mask is run through row by row, left to right in each row.
            float sum = 0.0f;
            for (int j = 0; j < mask.SizeY; ++j) {
                for (int i = 0; i < mask.SizeX; ++i) sum += *mask.PixelAddress(i, j) * *PixelAddress(x + i, y + j);
            }
            if (normalize) sum /= absSum;
            *out.PixelAddress(x + halfWidth, y + halfHeight) = sum;
        }
    }
}
