#include "vekdll/fields/sse_matrix.h"

#include <cstddef>
#include <cstdint>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/platform/framework_exceptions.h"

namespace {

constexpr std::uint64_t kVectorBytes = sizeof(__m128);
constexpr std::uint64_t kVectorAlignment = 16;

// One block of `lines` lines of `vectorsPerLine` vectors, contiguous.
__m128* AllocateBlock(int vectorsPerLine, int lines)
{
    const std::uint64_t bytes = static_cast<std::uint64_t>(vectorsPerLine) * static_cast<std::uint64_t>(lines) * kVectorBytes;
    return static_cast<__m128*>(SafeAlignedAlloc(bytes, kVectorAlignment));
}

} // namespace

CSSEMatrix::~CSSEMatrix()
{
    FreeImageMemoryOnly();
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

    auto** lines = static_cast<__m128**>(SafeAlignedAlloc(sizeof(__m128*) * static_cast<std::uint64_t>(SSESizeY), kVectorAlignment));
    const int blocks = SSESizeY < kLinesPerField ? 1 : (SSESizeY + kLinesPerField - 1) / kLinesPerField;
    const int linesInLastBlock = SSESizeY - kLinesPerField * (blocks - 1);
    try {
        // Fields counts the blocks as they arrive, so that a failure half-way
        // releases exactly what was allocated.
        for (int block = 0; block < blocks; ++block) {
            const int blockLines = block == blocks - 1 ? linesInLastBlock : kLinesPerField;
            Field[block] = AllocateBlock(SSESizeX, blockLines);
            ++Fields;
            for (int line = 0; line < blockLines; ++line) lines[block * kLinesPerField + line] = Field[block] + static_cast<std::ptrdiff_t>(line) * SSESizeX;
        }
    } catch (...) {
        SafeAlignedFree(lines);
        FreeImageMemoryOnly();
        throw;
    }
    MatrixData = lines;
}

void CSSEMatrix::FreeImageMemoryOnly()
{
    for (int block = 0; block < Fields; ++block) {
        SafeAlignedFree(Field[block]);
        Field[block] = nullptr;
    }
    Fields = 0;
    SafeAlignedFree(MatrixData);
    MatrixData = nullptr;
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
