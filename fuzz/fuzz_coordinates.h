#pragma once

// Coordinates from arbitrary bytes, in the three forms the geometric fuzz
// programs share: a half-cell lattice of 32 x 32 from one byte (duplicates,
// collinear runs, vertices on whole cells), coordinates spread over +-10000
// cells from four bytes, and four bytes taken as raw float bits (NaN,
// infinities, denormals).

#include <cstdint>
#include <cstring>

namespace vek::fuzz {

enum class Form { Lattice, Wide, RawBits };

inline int BytesPerCoordinate(Form form)
{
    return form == Form::Lattice ? 1 : 4;
}

inline float Coordinate(const std::uint8_t* at, Form form)
{
    if (form == Form::Lattice) return static_cast<float>(at[0] % 32) * 0.5f;
    std::uint32_t bits = 0;
    std::memcpy(&bits, at, sizeof bits);
    if (form == Form::Wide) return static_cast<float>(static_cast<double>(bits) / 4294967296.0 * 20000.0 - 10000.0);
    float value = 0.0f;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace vek::fuzz
