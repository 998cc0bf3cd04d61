#pragma once

#include "vekdll/foundation/sse_point.h"

namespace vek::detail {

// The cross test of a point p against the side from s to e:
// (p.y - s.y)(e.x - s.x) - (e.y - s.y)(p.x - s.x), which is twice the signed
// area of (s, e, p) in x-y. It is positive when p lies to the left of the
// side, so inside a counter-clockwise triangle. Evaluated in this order
// wherever the triangulation decides on which side a point lies.
inline float SideValue(const SSEPoint& s, const SSEPoint& e, const SSEPoint& p)
{
    return (p.y - s.y) * (e.x - s.x) - (e.y - s.y) * (p.x - s.x);
}

// The absolute tolerance of every on-edge decision: twice an area, in the
// squared unit of the data.
inline constexpr float kOnEdgeTolerance = 0.005f;

} // namespace vek::detail
