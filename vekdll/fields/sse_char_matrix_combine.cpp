#include <algorithm>
#include <climits>
#include <cstring>

#include "vekdll/fields/byte_lanes.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/platform/framework_exceptions.h"

// Each operation here builds its result in a temporary field and takes it
// over at the end, so that a source may be this field itself.

namespace {

// A size grown by `extra`; a result beyond int cannot be a field.
int GrownSize(int size, long long extra)
{
    const long long grown = static_cast<long long>(size) + extra;
    if (grown > INT_MAX) AfxThrowInvalidArgException();
    return static_cast<int>(grown);
}

} // namespace

void CSSEcharMatrix::ElongateLeft(int n)
{
    Elongate(n, true);
}

void CSSEcharMatrix::ElongateRight(int n)
{
    Elongate(n, false);
}

void CSSEcharMatrix::Elongate(int n, bool left)
{
    if (n < 1 || !HasImage() || SizeX < 1) return;
    // The new columns repeat one pixel of the top row in every byte, padding
    // included, not the column beside them.
    const __m128i fill = vek::detail::BroadcastByte(left ? *PixelAddress(0, 0) : *PixelAddress(SizeX - 1, 0));
    CSSEcharMatrix longer;
    longer.Create(GrownSize(SizeX, n), SizeY);
    const int oldColumnsAt = left ? n : 0;
    const int newColumnsAt = left ? 0 : SizeX;
    for (int line = 0; line < SSESizeY; ++line) {
        __m128i* out = longer.MatrixData[line];
        std::memcpy(out + oldColumnsAt, MatrixData[line], sizeof(__m128i) * static_cast<std::size_t>(SSESizeX));
        for (int x = 0; x < n; ++x) out[newColumnsAt + x] = fill;
    }
    SwapImage(longer);
}

void CSSEcharMatrix::EmbedinValueFrame(int ny, int nx, char v)
{
    if (ny < 0 || nx < 0 || !HasImage()) return;
    CSSEcharMatrix framed;
    framed.Create(GrownSize(SizeX, 2LL * nx), GrownSize(SizeY, 2LL * ny));
    framed.Clear(v);
    for (int y = 0; y < SizeY; ++y) {
        for (int x = 0; x < SizeX; ++x) *framed.PixelAddress(x + nx, y + ny) = *PixelAddress(x, y);
    }
    SwapImage(framed);
}

void CSSEcharMatrix::CombineYDir(const CSSEcharMatrix& a, const CSSEcharMatrix& b, const CSSEcharMatrix* c)
{
    int width = std::min(a.SizeX, b.SizeX);
    int height = GrownSize(a.SizeY, b.SizeY);
    if (c != nullptr) {
        width = std::min(width, c->SizeX);
        height = GrownSize(height, c->SizeY);
    }
    CSSEcharMatrix stacked;
    stacked.Create(width, height);
    // a goes in as whole lines, its padding bytes included; the rows of b
    // then overwrite that padding.
    if (a.HasImage()) stacked.CopyLinesFrom(a, 0);
    // Of two fields, one whose first has no image stays empty.
    const bool stackB = a.HasImage() || c != nullptr;
    if (stackB && b.HasImage()) {
        for (int j = 0; j < b.SizeY; ++j) {
            for (int x = 0; x < width; ++x) *stacked.PixelAddress(x, a.SizeY + j) = *b.PixelAddress(x, j);
        }
    }
    // c is read for as many rows as b has, with clamping: a taller c is cut
    // and a lower one repeats its last row, whose surplus writes clamp onto
    // the last row of the result.
    if (c != nullptr && c->HasImage()) {
        for (int j = 0; j < b.SizeY; ++j) {
            for (int x = 0; x < width; ++x) stacked.SetPoint(x, a.SizeY + b.SizeY + j, c->GetPoint(x, j));
        }
    }
    SwapImage(stacked);
}

void CSSEcharMatrix::CombineYDirFast(const CSSEcharMatrix& a, const CSSEcharMatrix& b)
{
    CSSEcharMatrix stacked;
    const long long lines = static_cast<long long>(a.SSESizeY) + b.SSESizeY;
    if (lines > (kMaxSizeY >> 4)) AfxThrowInvalidArgException();
    stacked.Create(std::max(a.SizeX, b.SizeX), static_cast<int>(lines) << 4);
    stacked.CopyLinesFrom(a, 0);
    stacked.CopyLinesFrom(b, a.SSESizeY);
    SwapImage(stacked);
}

void CSSEcharMatrix::InterpolateUp(int newX, int newY)
{
    if (newX < 1 || newY < 1 || !HasImage() || SizeX < 1 || SizeY < 1) return;
    const float stepX = static_cast<float>(SizeX) / static_cast<float>(newX);
    const float stepY = static_cast<float>(SizeY) / static_cast<float>(newY);
    CSSEcharMatrix scaled;
    scaled.Create(newX, newY);
    scaled.Clear(*PixelAddress(0, 0));
    for (int y = 0; y < newY; ++y) {
        const float fy = static_cast<float>(y) * stepY;
        const int iy = static_cast<int>(fy);
        const float ty = fy - static_cast<float>(iy);
        for (int x = 0; x < newX; ++x) {
            const float fx = static_cast<float>(x) * stepX;
            const int ix = static_cast<int>(fx);
            const float tx = fx - static_cast<float>(ix);
            // The four terms in the order of the float field's bilinear read.
            const float mean = (1.0f - ty) * (1.0f - tx) * static_cast<float>(GetPoint(ix, iy))
                             + (1.0f - tx) * ty * static_cast<float>(GetPoint(ix, iy + 1))
                             + (1.0f - ty) * tx * static_cast<float>(GetPoint(ix + 1, iy))
                             + ty * tx * static_cast<float>(GetPoint(ix + 1, iy + 1));
            *scaled.PixelAddress(x, y) = static_cast<char>(static_cast<int>(mean));
        }
    }
    SwapImage(scaled);
}
