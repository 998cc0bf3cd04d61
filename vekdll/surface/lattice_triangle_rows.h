#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

// The cells of a triangle whose corners lie on cell centres, row by row,
// with the height of the triangle's plane at each of them. Everything that
// decides which cell is in is integer arithmetic on the corners, so a cell
// on a side is found by both triangles that share the side, and the two
// agree on it.

namespace vek::detail {

struct LatticeCorner {
    std::int64_t x;
    std::int64_t y;
    double z;
};

// The first x at which c + s x >= 0 (s > 0), or the last (s < 0), from a
// quotient in double corrected by the exact integer test: the quotient is
// off by one at most, and a division per side and row would cost more
// than the cells of a small triangle.
inline std::int64_t FirstColumnAtOrAbove(std::int64_t c, std::int64_t s, double inverse)
{
    auto x = static_cast<std::int64_t>(std::ceil(static_cast<double>(-c) * inverse));
    while (c + s * x < 0) ++x;
    while (c + s * (x - 1) >= 0) --x;
    return x;
}

inline std::int64_t LastColumnAtOrAbove(std::int64_t c, std::int64_t s, double inverse)
{
    auto x = static_cast<std::int64_t>(std::floor(static_cast<double>(c) * -inverse));
    while (c + s * x < 0) --x;
    while (c + s * (x + 1) >= 0) ++x;
    return x;
}

// Calls row(y, xFirst, xLast, n, step, twiceArea) for every row y in which
// the closed triangle a, b, c holds cells of the grid 0 ... width - 1 by
// 0 ... height - 1. The plane's height at cell x of that row is
// (n + (x - xFirst) step) / twiceArea: n is the sum of the three corner
// heights weighed by the integer edge functions, which is exact for whole
// heights, and so a height that lies exactly half a unit off a whole input
// is found to do so rather than a rounding either side of it. A triangle
// of no area has no cells.
template <class Row>
void ForEachRowOfCells(LatticeCorner a, LatticeCorner b, LatticeCorner c, int width, int height, Row&& row)
{
    std::int64_t twiceArea = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    if (twiceArea == 0) return;
    if (twiceArea < 0) {
        std::swap(b, c);
        twiceArea = -twiceArea;
    }
    // Edge function k belongs to the side opposite corner k, from o to q:
    // (q.x - o.x)(y - o.y) - (q.y - o.y)(x - o.x), which is c[k] + s[k] x in
    // a row, and weighs corner k's height.
    const LatticeCorner p[3] = {a, b, c};
    std::int64_t perRow[3];
    std::int64_t perColumn[3];
    std::int64_t rise[3];
    double inverse[3];
    double step = 0.0;
    for (int k = 0; k < 3; ++k) {
        const LatticeCorner& o = p[(k + 1) % 3];
        const LatticeCorner& q = p[(k + 2) % 3];
        perColumn[k] = -(q.y - o.y);
        rise[k] = q.x - o.x;
        perRow[k] = rise[k] * -o.y + (q.y - o.y) * o.x;
        inverse[k] = perColumn[k] != 0 ? 1.0 / static_cast<double>(perColumn[k]) : 0.0;
        step += static_cast<double>(perColumn[k]) * p[k].z;
    }
    const std::int64_t yFirst = std::max<std::int64_t>(0, std::min({a.y, b.y, c.y}));
    const std::int64_t yLast = std::min<std::int64_t>(height - 1, std::max({a.y, b.y, c.y}));
    const std::int64_t xBoxFirst = std::max<std::int64_t>(0, std::min({a.x, b.x, c.x}));
    const std::int64_t xBoxLast = std::min<std::int64_t>(width - 1, std::max({a.x, b.x, c.x}));
    for (std::int64_t y = yFirst; y <= yLast; ++y) {
        std::int64_t first = xBoxFirst;
        std::int64_t last = xBoxLast;
        std::int64_t atZero[3];
        for (int k = 0; k < 3; ++k) {
            atZero[k] = perRow[k] + rise[k] * y;
            if (perColumn[k] > 0)
                first = std::max(first, FirstColumnAtOrAbove(atZero[k], perColumn[k], inverse[k]));
            else if (perColumn[k] < 0)
                last = std::min(last, LastColumnAtOrAbove(atZero[k], perColumn[k], inverse[k]));
            else if (atZero[k] < 0)
                last = first - 1;
        }
        if (first > last) continue;
        double n = 0.0;
        for (int k = 0; k < 3; ++k) n += static_cast<double>(atZero[k] + perColumn[k] * first) * p[k].z;
        row(static_cast<int>(y), static_cast<int>(first), static_cast<int>(last), n, step,
            static_cast<double>(twiceArea));
    }
}

} // namespace vek::detail
