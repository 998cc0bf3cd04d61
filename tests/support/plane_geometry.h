#pragma once

// Plain planar geometry in double precision, for the tests' own checks of
// rings, hulls and inside tests. Any point type with members x and y will do.

#include <cstddef>
#include <vector>

namespace vek::test {

// Twice the signed area of the triangle a, b, c: positive when it turns left.
template <class P>
double Cross(const P& a, const P& b, const P& c)
{
    return (double(b.x) - a.x) * (double(c.y) - a.y) - (double(b.y) - a.y) * (double(c.x) - a.x);
}

// Twice the signed area of a ring, positive counter-clockwise.
template <class P>
double TwiceArea(const std::vector<P>& ring)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < ring.size(); ++i) sum += Cross(P{}, ring[i], ring[(i + 1) % ring.size()]);
    return sum;
}

// The even-odd count along a ray towards growing y; a point on the border
// may go either way.
template <class P>
bool EvenOddInside(const std::vector<P>& ring, double x, double y)
{
    bool inside = false;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const double xi = ring[i].x, yi = ring[i].y, xj = ring[j].x, yj = ring[j].y;
        if ((xi > x) != (xj > x) && yi + (x - xi) * (yj - yi) / (xj - xi) > y) inside = !inside;
    }
    return inside;
}

} // namespace vek::test
