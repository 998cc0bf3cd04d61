#include <cstddef>
#include <cstring>

#include "vekdll/fields/sse_matrix.h"

using vek::detail::PixelStore;

void CSSEMatrix::CopyFromSSEMatrix(const CSSEMatrix& src)
{
    // A source sharing our lines (itself, or the other side of an assignment)
    // already holds what a copy would write.
    if (src.MatrixData == nullptr || src.MatrixData == MatrixData) return;
    if (src.SizeX != SizeX || src.SizeY != SizeY || MatrixData == nullptr) Create(src.SizeX, src.SizeY);

    // Only the lines of one block are known to be contiguous.
    if (Fields == 1) {
        const std::size_t bytes = static_cast<std::size_t>(SSESizeX) * static_cast<std::size_t>(SSESizeY) * sizeof(__m128);
        std::memcpy(MatrixData[0], src.MatrixData[0], bytes);
        return;
    }
    for (int line = 0; line < SSESizeY; ++line) {
        const __m128* from = src.MatrixData[line];
        __m128* to = MatrixData[line];
        for (int x = 0; x < SSESizeX; ++x) to[x] = from[x];
    }
}

void CSSEMatrix::CopyFromSSEMatrixCentered(const CSSEMatrix& src)
{
    SetAllPixelValuesToZero();
    StoreCentered(src, PixelStore::Value);
}

void CSSEMatrix::CopyFromSSEMatrixCenteredMaximum(const CSSEMatrix& src)
{
    StoreCentered(src, PixelStore::Maximum);
}

void CSSEMatrix::CopyFromSSEMatrixCenteredMinimum(const CSSEMatrix& src)
{
    StoreCentered(src, PixelStore::Minimum);
}

void CSSEMatrix::StoreCentered(const CSSEMatrix& src, PixelStore how)
{
    // Only a source that covers this field is used; an empty one never does.
    if (MatrixData == nullptr || src.MatrixData == nullptr || src.SizeX < SizeX || src.SizeY < SizeY) return;
    const int shiftX = (src.SizeX >> 1) - (SizeX >> 1);
    const int shiftY = (src.SizeY >> 1) - (SizeY >> 1);
    for (int y = 0; y < SizeY; ++y) {
        for (int x = 0; x < SizeX; ++x) vek::detail::StorePixel(*PixelAddress(x, y), src.GetPoint(x + shiftX, y + shiftY), how);
    }
}

void CSSEMatrix::CopyFromMatrix(double** src, int a, int b)
{
    if (src == nullptr) return;
    // Pixel (j, i) takes src[i][j] for `rows` source rows of `columns` values.
    const auto narrowRows = [&](int rows, int columns) {
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < columns; ++j) SetPoint(j, i, static_cast<float>(src[i][j]));
        }
    };
    if (MatrixData != nullptr) {
        narrowRows(a, b);
    } else {
        Create(b, a);
        narrowRows(b, a);
    }
}
