#include <algorithm>
#include <cstring>
#include <utility>

#include "vekdll/fields/byte_lanes.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/member_copy_move.h"
#include "vekdll/platform/framework_exceptions.h"

static_assert(static_cast<char>(-1) < 0, "the byte field reads its pixels as signed chars");

CSSEcharMatrix::CSSEcharMatrix(int sizeX, int sizeY)
{
    Create(sizeX, sizeY);
}

CSSEcharMatrix::CSSEcharMatrix(const CSSEcharMatrix& src)
{
    CopyFromOtherMatrix(src);
}

CSSEcharMatrix::CSSEcharMatrix(const CSSEcharMatrix& src, int x0, int x1)
{
    CopyFromOtherMatrixLimitedX(src, x0, x1);
}

CSSEcharMatrix::~CSSEcharMatrix()
{
    Free();
}

void CSSEcharMatrix::Create(int sizeX, int sizeY)
{
    // Beyond kMaxSizeY the block table would overflow; a negative size has no
    // meaning. Both are refused before anything changes.
    if (sizeX < 0 || sizeY < 0 || sizeY > kMaxSizeY) AfxThrowInvalidArgException();
    // No block is reused, even for an unchanged size.
    if (HasImage()) Free();

    SizeX = sizeX;
    SizeY = sizeY;
    SSESizeX = sizeX;
    // Not a rounded-up quotient: there is always at least one padding byte.
    SSESizeY = (sizeY >> 4) + 1;
    MatrixData = vek::detail::AllocateLineBlocks(SSESizeX, SSESizeY, Field, Fields);
    Clear(0);
}

void CSSEcharMatrix::CreateSimilar(const CSSEcharMatrix& other)
{
    Create(other.SizeX, other.SizeY);
}

void CSSEcharMatrix::CreateSimilar(const CSSEMatrix& other)
{
    Create(other.GetSizeX(), other.GetSizeY());
}

void CSSEcharMatrix::Free()
{
    vek::detail::ReleaseLineBlocks(Field, Fields, MatrixData);
}

void CSSEcharMatrix::Clear(int v)
{
    if (!HasImage()) return;
    const __m128i value = vek::detail::BroadcastByte(v);
    for (int line = 0; line < SSESizeY; ++line) {
        __m128i* vectors = MatrixData[line];
        for (int x = 0; x < SSESizeX; ++x) vectors[x] = value;
    }
}

void CSSEcharMatrix::ClearRow(int y, unsigned char v)
{
    if (!HasImage()) return;
    const int row = vek::detail::ClampIndex(y, 0, SizeY - 1);
    for (int x = 0; x < SizeX; ++x) *PixelAddress(x, row) = static_cast<char>(v);
}

CSSEcharMatrix::CSSEcharMatrix(CSSEcharMatrix&& other) noexcept
{
    vek::detail::MoveByMemberCopy(*this, other);
}

CSSEcharMatrix& CSSEcharMatrix::operator=(CSSEcharMatrix&& other) noexcept
{
    return vek::detail::MoveByMemberCopy(*this, other);
}

void CSSEcharMatrix::SwapImage(CSSEcharMatrix& other)
{
    std::swap(MatrixData, other.MatrixData);
    std::swap(Field, other.Field);
    std::swap(SizeX, other.SizeX);
    std::swap(SizeY, other.SizeY);
    std::swap(SSESizeX, other.SSESizeX);
    std::swap(SSESizeY, other.SSESizeY);
    std::swap(Fields, other.Fields);
}

void CSSEcharMatrix::CopyLinesFrom(const CSSEcharMatrix& src, int firstLine)
{
    if (!HasImage() || !src.HasImage()) return;
    const int columns = std::min(SSESizeX, src.SSESizeX);
    const int lines = std::min(src.SSESizeY, SSESizeY - firstLine);
    if (columns < 1) return;
    for (int line = 0; line < lines; ++line) {
        std::memcpy(MatrixData[firstLine + line], src.MatrixData[line], sizeof(__m128i) * static_cast<std::size_t>(columns));
    }
}
