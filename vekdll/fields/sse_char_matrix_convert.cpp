#include <algorithm>
#include <cstring>

#include "vekdll/fields/byte_lanes.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

void CSSEcharMatrix::CopyFromOtherMatrix(const CSSEcharMatrix& src)
{
    // A source sharing our lines (itself, or the other side of an assignment)
    // already holds what a copy would write.
    if (src.HasImage() && src.MatrixData == MatrixData) return;
    CSSEcharMatrix copy;
    copy.Create(src.SizeX, src.SizeY);
    copy.CopyLinesFrom(src, 0);
    SwapImage(copy);
}

void CSSEcharMatrix::CopyFromOtherMatrixLimitedX(const CSSEcharMatrix& src, int x0, int x1)
{
    const int first = vek::detail::ClampIndex(x0, 0, src.SizeX - 1);
    const int last = vek::detail::ClampIndex(x1, 0, src.SizeX - 1);
    if (src.SizeY < 1) return;
    CSSEcharMatrix part;
    part.Create(std::max(last - first + 1, 0), src.SizeY);
    // A source without columns clamps both ends to 0 and has no column to give.
    if (src.HasImage() && first <= last && src.SizeX > 0) {
        for (int line = 0; line < part.SSESizeY; ++line) {
            std::memcpy(part.MatrixData[line], src.MatrixData[line] + first, sizeof(__m128i) * static_cast<std::size_t>(part.SSESizeX));
        }
    }
    SwapImage(part);
}

void CSSEcharMatrix::CopyAndTresholdAbove(const CSSEMatrix& src, float t, char v)
{
    CopyThresholded(src, t, v, true);
}

void CSSEcharMatrix::CopyAndTresholdBelow(const CSSEMatrix& src, float t, char v)
{
    CopyThresholded(src, t, v, false);
}

void CSSEcharMatrix::CopyThresholded(const CSSEMatrix& src, float t, char v, bool above)
{
    CSSEcharMatrix mask;
    mask.Create(src.GetSizeX(), src.GetSizeY());
    __m128** floatLines = src.GetMatrixDataDirectly();
    if (floatLines != nullptr) {
        const __m128 threshold = _mm_set1_ps(t);
        const __m128i value = vek::detail::BroadcastByte(v);
        // One byte line covers four float lines. Every image row lies in a
        // float line that exists; the rows behind the image are masked out.
        const auto compared = [&](int floatLine, int x) {
            if (floatLine >= src.GetSSESizeY()) return _mm_setzero_si128();
            const __m128 pixels = floatLines[floatLine][x];
            return _mm_castps_si128(above ? _mm_cmpgt_ps(pixels, threshold) : _mm_cmplt_ps(pixels, threshold));
        };
        for (int line = 0; line < mask.SSESizeY; ++line) {
            const int imageRows = std::clamp(mask.SizeY - 16 * line, 0, 16);
            const __m128i written = _mm_and_si128(value, vek::detail::LeadingBytesMask(imageRows));
            __m128i* out = mask.MatrixData[line];
            for (int x = 0; x < mask.SSESizeX; ++x) {
                // Lane k of float line 4 line + j is byte 4 j + k of the result.
                const __m128i low = _mm_packs_epi32(compared(4 * line, x), compared(4 * line + 1, x));
                const __m128i high = _mm_packs_epi32(compared(4 * line + 2, x), compared(4 * line + 3, x));
                out[x] = _mm_and_si128(_mm_packs_epi16(low, high), written);
            }
        }
    }
    SwapImage(mask);
}

void CSSEcharMatrix::SubMatrix(const CSSEcharMatrix& b)
{
    if (!HasImage() || !b.HasImage()) return;
    const int lines = std::min(SSESizeY, b.SSESizeY);
    const int columns = std::min(SSESizeX, b.SSESizeX);
    for (int line = 0; line < lines; ++line) {
        __m128i* minuend = MatrixData[line];
        const __m128i* subtrahend = b.MatrixData[line];
        for (int x = 0; x < columns; ++x) minuend[x] = _mm_sub_epi8(minuend[x], subtrahend[x]);
    }
}
