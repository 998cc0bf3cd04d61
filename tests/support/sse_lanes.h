#pragma once

// Four-lane points for the tests: built from literals, and read back as an
// array, so that one comparison checks all four lanes and prints them.

#include <array>

#include "vekdll/foundation/sse_point.h"

namespace vek::test {

inline SSEPoint Sse(float x, float y, float z, float w = 0.0f)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, w);
    return p;
}

using Lanes4 = std::array<float, 4>;

inline Lanes4 Lanes(const SSEPoint& p)
{
    return {p.lane[0], p.lane[1], p.lane[2], p.lane[3]};
}

} // namespace vek::test
