#pragma once

#include <cstddef>
#include <cstdint>

#include "vekdll/foundation/safe_alloc.h"

// The storage plan that the float and the byte raster share. A field is a
// table of lines; a line is a run of 16-byte vectors. Lines are allocated in
// blocks of 32 contiguous lines, the last block holding the rest, so that a
// large field never needs one huge allocation and a small one is a single
// block that may be copied in one transfer.

namespace vek::detail {

constexpr int kLinesPerBlock = 32;
// The block tables of the fields have this fixed length.
constexpr int kMaxBlocks = 250;
constexpr std::uint64_t kVectorAlignment = 16;

// One block below 32 lines, otherwise the line count divided by 32 and
// rounded up.
constexpr int BlocksForLines(int lines)
{
    return lines < kLinesPerBlock ? 1 : (lines + kLinesPerBlock - 1) / kLinesPerBlock;
}

// Releases the blocks and the line table; `blockCount` becomes 0 and `table`
// null. Safe on a field that holds nothing.
template <class Vector>
void ReleaseLineBlocks(Vector** blocks, int& blockCount, Vector**& table)
{
    for (int block = 0; block < blockCount; ++block) {
        SafeAlignedFree(blocks[block]);
        blocks[block] = nullptr;
    }
    blockCount = 0;
    SafeAlignedFree(table);
    table = nullptr;
}

// Allocates `lines` lines of `vectorsPerLine` vectors and returns the line
// table, entry i pointing at line i % 32 of block i / 32. The blocks are
// entered in `blocks` (which must hold BlocksForLines(lines) entries) and
// counted in `blockCount`. If an allocation fails, everything allocated here
// is released, `blockCount` is 0 and the out-of-memory exception passes on.
template <class Vector>
Vector** AllocateLineBlocks(int vectorsPerLine, int lines, Vector** blocks, int& blockCount)
{
    Vector** table = static_cast<Vector**>(SafeAlignedAlloc(sizeof(Vector*) * static_cast<std::uint64_t>(lines), kVectorAlignment));
    const int count = BlocksForLines(lines);
    const int linesInLastBlock = lines - kLinesPerBlock * (count - 1);
    try {
        // Blocks are counted as they arrive, so that a failure half-way
        // releases exactly what was allocated.
        for (int block = 0; block < count; ++block) {
            const int blockLines = block == count - 1 ? linesInLastBlock : kLinesPerBlock;
            const std::uint64_t bytes = sizeof(Vector) * static_cast<std::uint64_t>(vectorsPerLine) * static_cast<std::uint64_t>(blockLines);
            blocks[block] = static_cast<Vector*>(SafeAlignedAlloc(bytes, kVectorAlignment));
            ++blockCount;
            for (int line = 0; line < blockLines; ++line) table[block * kLinesPerBlock + line] = blocks[block] + static_cast<std::ptrdiff_t>(line) * vectorsPerLine;
        }
    } catch (...) {
        ReleaseLineBlocks(blocks, blockCount, table);
        throw;
    }
    return table;
}

} // namespace vek::detail
