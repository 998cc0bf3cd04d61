#pragma once

// Plain arithmetic on the spatial hull's 64-bit integer grid, for lifting
// points and for derived classes. Beyond the 64-bit range sums and products
// wrap around as the processor's do, rather than being undefined.

#include <cstdint>

namespace vek::detail {

// The grid of lifted planar points: a tenth of a unit, which keeps the
// squares of pixel coordinates far from overflow.
inline constexpr double kPlanarGrid = 10.0;

inline long long GridAdd(long long a, long long b)
{
    return static_cast<long long>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

inline long long GridSub(long long a, long long b)
{
    return static_cast<long long>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

inline long long GridMul(long long a, long long b)
{
    return static_cast<long long>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

// Truncation towards zero. A value outside the 64-bit range, or not a
// number, gives the lowest value, which is what the processor's conversion
// yields there.
inline long long TruncateToGrid(double value)
{
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (!(value >= -kLimit && value < kLimit)) return INT64_MIN;
    return static_cast<long long>(value);
}

} // namespace vek::detail
