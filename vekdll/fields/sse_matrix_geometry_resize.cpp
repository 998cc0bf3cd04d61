#include <algorithm>
#include <cstdint>
#include <limits>

#include "vekdll/fields/sse_matrix.h"

namespace {

// Whether size + 2 * margin (margin 0 or more) is still a size a field can have.
bool GrowthFits(int size, int margin, int limit)
{
    return static_cast<std::int64_t>(size) + 2 * static_cast<std::int64_t>(margin) <= limit;
}

} // namespace

void CSSEMatrix::TakeImageFrom(CSSEMatrix& other)
{
    FreeImageMemoryOnly();
    SizeX = other.SizeX;
    SizeY = other.SizeY;
    SSESizeX = other.SSESizeX;
    SSESizeY = other.SSESizeY;
    Fields = other.Fields;
    std::copy(std::begin(other.Field), std::end(other.Field), std::begin(Field));
    MatrixData = other.MatrixData;

    std::fill(std::begin(other.Field), std::end(other.Field), nullptr);
    other.Fields = 0;
    other.MatrixData = nullptr;
    other.Reset();
}

void CSSEMatrix::ElongateLeft(int n)
{
    Elongate(n, true);
}

void CSSEMatrix::ElongateRight(int n)
{
    Elongate(n, false);
}

void CSSEMatrix::Elongate(int n, bool left)
{
    if (MatrixData == nullptr || SizeX < 1 || SizeY < 1 || n <= 0) return;
    if (n > std::numeric_limits<int>::max() - SizeX) return;

    // The new columns continue the image at its rim, taken from row 0 only,
    // in every lane of every line, padding included.
    const float edge = left ? *PixelAddress(0, 0) : *PixelAddress(SizeX - 1, 0);
    CSSEMatrix longer;
    longer.CreateNoClear(SizeX + n, SizeY);
    longer.Fill(edge);
    const int offset = left ? n : 0;
    for (int line = 0; line < SSESizeY; ++line) {
        const __m128* from = MatrixData[line];
        __m128* to = longer.MatrixData[line] + offset;
        for (int x = 0; x < SSESizeX; ++x) to[x] = from[x];
    }
    TakeImageFrom(longer);
}

void CSSEMatrix::EmbedinValueFrame(int ny, int nx, float v)
{
    if (MatrixData == nullptr || nx < 0 || ny < 0) return;
    if (!GrowthFits(SizeX, nx, std::numeric_limits<int>::max()) || !GrowthFits(SizeY, ny, kMaxSizeY)) return;

    CSSEMatrix framed;
    framed.CreateNoClear(SizeX + 2 * nx, SizeY + 2 * ny);
    framed.Fill(v);
    // A shift by ny rows moves pixels between lanes, so the image goes over
    // row by row; its padding lanes stay behind and the frame keeps v there.
    for (int y = 0; y < SizeY; ++y) {
        const float* from = PixelAddress(0, y);
        float* to = framed.PixelAddress(nx, y + ny);
        for (int x = 0; x < SizeX; ++x) to[4 * x] = from[4 * x];
    }
    TakeImageFrom(framed);
}
