#include <algorithm>

#include "vekdll/fields/sse_matrix.h"

// Whole-field and whole-row writes. A field without an image (after
// FreeImageMemoryOnly its sizes remain) is left alone rather than written
// through a null line table.

void CSSEMatrix::Fill(float v)
{
    if (MatrixData == nullptr) return;
    const __m128 value = _mm_set1_ps(v);
    for (int line = 0; line < SSESizeY; ++line) {
        __m128* vectors = MatrixData[line];
        for (int x = 0; x < SSESizeX; ++x) vectors[x] = value;
    }
}

void CSSEMatrix::SetAllPixelValuesToZero()
{
    Fill(0.0f);
}

void CSSEMatrix::ClearRow(int y, float v)
{
    if (MatrixData == nullptr) return;
    const int row = vek::detail::ClampIndex(y, 0, SizeY - 1);
    for (int x = 0; x < SizeX; ++x) *PixelAddress(x, row) = v;
}

void CSSEMatrix::FillMatrixWithProcessedRow()
{
    if (SizeX < 1 || SizeY < 1 || MatrixData == nullptr) return;
    // A producer that has not finished any row yet counts as having finished
    // row 0, which is then the row carried downwards.
    const int source = std::max(std::min(RowProcessed, SizeY - 1), 0);
    const int sourceLine = source >> 2;

    // The remaining lanes of the source's own line, one row at a time.
    for (int row = source + 1; row < (sourceLine + 1) * 4; ++row) {
        for (int x = 0; x < SizeX; ++x) *PixelAddress(x, row) = *PixelAddress(x, source);
    }
    // Every later line, padding included, as whole vectors of the broadcast row.
    for (int line = sourceLine + 1; line < SSESizeY; ++line) {
        __m128* vectors = MatrixData[line];
        for (int x = 0; x < SizeX; ++x) vectors[x] = _mm_set1_ps(*PixelAddress(x, source));
    }
}
