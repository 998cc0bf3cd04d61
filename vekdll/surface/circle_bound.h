#pragma once

#include "vekdll/foundation/sse_point.h"

namespace vek::detail {

// A disc that surely holds the circumcircle of three points, from the
// circumcentre computed in double with a bound on its rounding error, so
// that a point outside the disc is outside the circle by the exact test.
// Where the three points are so near a line that the centre cannot be
// bounded, `bounded` is false: such a circle may reach anywhere.
struct CircleBound {
    bool bounded = false;
    double centreX = 0.0;
    double centreY = 0.0;
    double radius = 0.0;
};

CircleBound BoundCircumcircle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c);

} // namespace vek::detail
