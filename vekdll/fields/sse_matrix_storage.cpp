#include "vekdll/fields/sse_matrix.h"

#include "vekdll/fields/line_blocks.h"
#include "vekdll/foundation/member_copy_move.h"
#include "vekdll/platform/framework_exceptions.h"

static_assert(CSSEMatrix::kLinesPerField == vek::detail::kLinesPerBlock && CSSEMatrix::kMaxFields == vek::detail::kMaxBlocks);

CSSEMatrix::~CSSEMatrix()
{
    FreeImageMemoryOnly();
}

CSSEMatrix::CSSEMatrix(CSSEMatrix&& other) noexcept
{
    vek::detail::MoveByMemberCopy(*this, other);
}

CSSEMatrix& CSSEMatrix::operator=(CSSEMatrix&& other) noexcept
{
    return vek::detail::MoveByMemberCopy(*this, other);
}

void CSSEMatrix::Create(int sizeX, int sizeY)
{
    AllocateStorage(sizeX, sizeY);
    SetAllPixelValuesToZero();
}

void CSSEMatrix::CreateNoClear(int sizeX, int sizeY)
{
    AllocateStorage(sizeX, sizeY);
}

void CSSEMatrix::CreateSimilar(const CSSEMatrix& other)
{
    Create(other.SizeX, other.SizeY);
}

void CSSEMatrix::AllocateStorage(int sizeX, int sizeY)
{
    // Beyond kMaxSizeY the block table would overflow; a negative size has no
    // meaning. Both are refused before anything changes.
    if (sizeX < 0 || sizeY < 0 || sizeY > kMaxSizeY) AfxThrowInvalidArgException();

    // No block is reused, even for an unchanged size.
    if (MatrixData != nullptr) FreeImageMemoryOnly();

    SizeY = sizeY;
    SizeX = sizeX;
    SSESizeX = sizeX;
    // Not a rounded-up quotient: there is always at least one padding lane.
    SSESizeY = (sizeY >> 2) + 1;

    MatrixData = vek::detail::AllocateLineBlocks(SSESizeX, SSESizeY, Field, Fields);
}

void CSSEMatrix::FreeImageMemoryOnly()
{
    vek::detail::ReleaseLineBlocks(Field, Fields, MatrixData);
}

void CSSEMatrix::Reset()
{
    FreeImageMemoryOnly();
    SizeX = 0;
    SizeY = 0;
    SSESizeX = 0;
    SSESizeY = 0;
    RowProcessed = 0;
}
