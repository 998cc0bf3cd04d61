// The bounded circumcircle behind the exact mode's search index.

#include "vekdll/surface/circle_bound.h"

#include <cmath>

namespace vek::detail {

namespace {

// One rounding of a double, and a generous multiple of it for the few
// operations between the inputs and each quantity below: every bound here
// errs widely on the safe side, since a disc too large costs only a test.
constexpr double kUnit = 0x1p-53;
constexpr double kSlack = 64.0 * kUnit;

} // namespace

// With b as origin, d1 = a - b and d2 = c - b, the centre is (u, v) with
// u = (d2y s1 - d1y s2) / det and v = (d1x s2 - d2x s1) / det, where
// s = |d|^2 / 2 and det = d1x d2y - d2x d1y. Each of the differences, the
// squares, the products and det carries a relative rounding error of a few
// units; det's error relative to its permanent P = |d1x d2y| + |d2x d1y|
// decides how far the quotient can move. The circle holds b, so its true
// radius is at most the distance of the computed centre from b plus the
// centre's error, and the disc around the computed centre needs twice the
// error on top.
CircleBound BoundCircumcircle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c)
{
    CircleBound bound;
    const double bx = b.x;
    const double by = b.y;
    const double d1x = a.x - bx;
    const double d1y = a.y - by;
    const double d2x = c.x - bx;
    const double d2y = c.y - by;
    const double det = d1x * d2y - d2x * d1y;
    const double permanent = std::fabs(d1x * d2y) + std::fabs(d2x * d1y);
    const double detError = kSlack * permanent;
    if (!(std::fabs(det) > 4.0 * detError) || !std::isfinite(permanent)) return bound;
    const double s1 = 0.5 * (d1x * d1x + d1y * d1y);
    const double s2 = 0.5 * (d2x * d2x + d2y * d2y);
    const double u = (d2y * s1 - d1y * s2) / det;
    const double v = (d1x * s2 - d2x * s1) / det;
    const double relativeDet = detError / std::fabs(det); // at most 1/4
    const double errorU =
        kSlack * (std::fabs(d2y) * s1 + std::fabs(d1y) * s2) / std::fabs(det) + std::fabs(u) * (2.0 * relativeDet + kSlack);
    const double errorV =
        kSlack * (std::fabs(d1x) * s2 + std::fabs(d2x) * s1) / std::fabs(det) + std::fabs(v) * (2.0 * relativeDet + kSlack);
    const double centreError = errorU + errorV;
    bound.centreX = bx + u;
    bound.centreY = by + v;
    // The shift back by b rounds once more.
    const double shiftError = kSlack * (std::fabs(bx) + std::fabs(by) + std::fabs(u) + std::fabs(v));
    bound.radius = std::hypot(u, v) * (1.0 + kSlack) + 2.0 * centreError + 2.0 * shiftError;
    bound.bounded = std::isfinite(bound.radius) && std::isfinite(bound.centreX) && std::isfinite(bound.centreY);
    return bound;
}

} // namespace vek::detail
