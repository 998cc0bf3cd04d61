#pragma once

#include <cstdint>

#include "vekdll/foundation/safe_alloc.h"

// Coordinate arrays of the polygons are handed out in 16-byte-aligned blocks
// of four floats, so that one aligned __m128 load reads one coordinate of
// four successive points.
namespace vek::detail {

inline constexpr std::uint64_t kBytesPerBlock = 4 * sizeof(float);

// Blocks that hold `numPoints` points: the last one may be partly used. A
// negative count is taken as none.
inline std::uint64_t BlocksForPoints(int numPoints)
{
    return numPoints > 0 ? (static_cast<std::uint64_t>(numPoints) + 3) >> 2 : 0;
}

inline float* AllocateBlocks(std::uint64_t blocks)
{
    return static_cast<float*>(SafeAlignedAlloc(blocks * kBytesPerBlock, 16));
}

inline void ReleaseBlocks(float*& array)
{
    if (array != nullptr) SafeAlignedFree(array);
    array = nullptr;
}

} // namespace vek::detail
