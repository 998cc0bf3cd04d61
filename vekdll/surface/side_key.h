#pragma once

#include <algorithm>
#include <cstdint>

namespace vek::detail {

// A side of the graph by its two vertex indices, in either order: the key
// under which the triangles that carry it meet.
inline std::uint64_t SideKey(int a, int b)
{
    const auto low = static_cast<std::uint32_t>(std::min(a, b));
    const auto high = static_cast<std::uint32_t>(std::max(a, b));
    return (static_cast<std::uint64_t>(low) << 32) | high;
}

} // namespace vek::detail
