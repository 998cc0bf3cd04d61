#pragma once

// Orientation and in-circle tests whose sign is exact. Float coordinates
// are widened to double and the determinant is first evaluated plainly; a
// proven bound on its rounding error tells whether that sign can be
// trusted, which it almost always can. Only when the value lies within the
// bound does an adaptive evaluation run: in 128-bit integers where the
// coordinate differences are exact and short on a common grid (points on
// raster cells, say), else the same determinant with exact products of the
// rounded coordinate differences, and, if that is still undecided and the
// differences were not exact, with the differences' own rounding errors
// too, which is the exact value.
//
// Range: the sign is exact for every finite input whose largest coordinate
// magnitude is at most 2^985 (Orient2D) or 2^466 (InCircle) times its
// smallest non-zero one; the adaptive stages scale the coordinates by a
// power of two so that the absolute size of the numbers does not matter.
// Float coordinates always qualify: their whole range spans 2^277. A
// non-finite coordinate gives not-a-number.
//
// The value returned approximates the determinant; only its sign is
// guaranteed, and it is exactly 0 on degenerate input.

#include <cmath>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"

namespace vek {

namespace detail {

// Half a unit in the last place of 1.0, the relative rounding error of one
// operation on doubles.
inline constexpr double kRoundoff = 0x1p-53;

// Relative error bounds of the plain evaluations, as multiples of the
// permanent (the same expression with every product taken in magnitude):
// three rounded operations stand between an input and each product of the
// orientation, and the in-circle determinant is a polynomial of degree four.
inline constexpr double kOrientErrorBound = (3.0 + 16.0 * kRoundoff) * kRoundoff;
inline constexpr double kInCircleErrorBound = (10.0 + 96.0 * kRoundoff) * kRoundoff;

// A product that falls below the normal range is rounded to an absolute
// grid of 2^-1074 instead of relatively. This bounds what that adds, per
// unit of what the rounded product is multiplied by later on. It is far
// more than needed (2^-1072 would do) and so costs only inputs far smaller
// than any in practice their speed; but it is a normal number, and so is
// its product with anything at least 1, and no arithmetic of the plain
// stage meets a subnormal operand, which costs many processors a slow
// assist of a hundred cycles or more.
inline constexpr double kUnderflowErrorBound = 0x1p-1000;

// The adaptive stages: the exact sign where the plain value was undecided.
VEKDLL_API double Orient2DAdaptive(double ax, double ay, double bx, double by, double cx, double cy);
VEKDLL_API double InCircleAdaptive(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                                   double dy);

// The plain evaluations: `det` receives the determinant in plain double
// arithmetic, and the result tells whether its sign is certain.
inline bool Orient2DPlain(double ax, double ay, double bx, double by, double cx, double cy, double& det)
{
    const double left = (ax - cx) * (by - cy);
    const double right = (ay - cy) * (bx - cx);
    det = left - right;
    const double bound = kOrientErrorBound * (std::fabs(left) + std::fabs(right)) + kUnderflowErrorBound;
    // One comparison, whatever the sign, so that the branch on the result is
    // always predicted; strict, so that an overflow to infinity or
    // not-a-number is never taken for a decision.
    return std::fabs(det) > bound;
}

inline bool InCirclePlain(double ax, double ay, double bx, double by, double cx, double cy, double dx, double dy,
                          double& det)
{
    const double adx = ax - dx;
    const double ady = ay - dy;
    const double bdx = bx - dx;
    const double bdy = by - dy;
    const double cdx = cx - dx;
    const double cdy = cy - dy;

    const double bdxcdy = bdx * cdy;
    const double cdxbdy = cdx * bdy;
    const double aLift = adx * adx + ady * ady;
    const double cdxady = cdx * ady;
    const double adxcdy = adx * cdy;
    const double bLift = bdx * bdx + bdy * bdy;
    const double adxbdy = adx * bdy;
    const double bdxady = bdx * ady;
    const double cLift = cdx * cdx + cdy * cdy;

    det = aLift * (bdxcdy - cdxbdy) + bLift * (cdxady - adxcdy) + cLift * (adxbdy - bdxady);
    const double aCross = std::fabs(bdxcdy) + std::fabs(cdxbdy);
    const double bCross = std::fabs(cdxady) + std::fabs(adxcdy);
    const double cCross = std::fabs(adxbdy) + std::fabs(bdxady);
    const double permanent = aCross * aLift + bCross * bLift + cCross * cLift;
    // A product rounded below the normal range errs absolutely, and the
    // error is carried on by the lift or the cross term it is multiplied by.
    const double underflow = kUnderflowErrorBound * (aLift + bLift + cLift + aCross + bCross + cCross + 1.0);
    const double bound = kInCircleErrorBound * permanent + underflow;
    return std::fabs(det) > bound;
}

} // namespace detail

// Twice the signed area of the triangle a, b, c: positive if a, b, c run
// counter-clockwise (c lies left of the line from a to b, y pointing up),
// negative if clockwise, exactly 0 if the three are collinear.
inline double Orient2D(double ax, double ay, double bx, double by, double cx, double cy)
{
    double det = 0.0;
    if (detail::Orient2DPlain(ax, ay, bx, by, cx, cy, det)) return det;
    return detail::Orient2DAdaptive(ax, ay, bx, by, cx, cy);
}

// Positive if d lies strictly inside the circle through a, b, c when a, b,
// c run counter-clockwise, negative if strictly outside, exactly 0 if on it;
// the sign turns over when a, b, c run clockwise.
inline double InCircle(double ax, double ay, double bx, double by, double cx, double cy, double dx, double dy)
{
    double det = 0.0;
    if (detail::InCirclePlain(ax, ay, bx, by, cx, cy, dx, dy, det)) return det;
    return detail::InCircleAdaptive(ax, ay, bx, by, cx, cy, dx, dy);
}

// The same on the x and y lanes of four-lane points.
inline double Orient2D(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c)
{
    return Orient2D(a.x, a.y, b.x, b.y, c.x, c.y);
}

inline double InCircle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c, const SSEPoint& d)
{
    return InCircle(a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y);
}

} // namespace vek
