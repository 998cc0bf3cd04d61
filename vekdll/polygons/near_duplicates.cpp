// Near-duplicate points of a line, found through cells of one unit.

#include "vekdll/polygons/near_duplicates.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace vek::detail {

namespace {

// Points closer than this in |dx| + |dy| are one point.
constexpr float kSamePointDistance = 1.0f;

// A point's cell. A city-block sum below 1 needs |dx| below 1 in float, which
// only happens for an exact difference below 1, so such points lie in the same
// or in neighbouring cells. Beyond 2^53, where a neighbour's cell number in
// double is the cell's own, only the cell itself is searched, and no pair is
// lost: floats there are whole numbers far apart, so a pair closer than 1 is
// equal.
struct Filed {
    double cellX;
    double cellY;
    int index;
};

bool operator<(const Filed& a, const Filed& b)
{
    return std::tie(a.cellX, a.cellY, a.index) < std::tie(b.cellX, b.cellY, b.index);
}

} // namespace

std::vector<bool> EarlierNearDuplicatesXY(const float* xs, const float* ys, int count)
{
    std::vector<bool> near(static_cast<std::size_t>(std::max(count, 0)), false);
    // A coordinate that is not finite makes every difference with it infinite
    // or not a number, so such a point is never near another: it isn't filed.
    std::vector<Filed> filed;
    filed.reserve(near.size());
    for (int i = 0; i < count; ++i) {
        if (std::isfinite(xs[i]) && std::isfinite(ys[i])) filed.push_back({std::floor(double{xs[i]}), std::floor(double{ys[i]}), i});
    }
    std::sort(filed.begin(), filed.end());
    for (const Filed& p : filed) {
        const float x = xs[p.index];
        const float y = ys[p.index];
        bool found = false;
        for (int dx = -1; dx <= 1 && !found; ++dx) {
            for (int dy = -1; dy <= 1 && !found; ++dy) {
                // The cell's points in rising index, up to the point itself.
                auto it = std::lower_bound(filed.begin(), filed.end(), Filed{p.cellX + dx, p.cellY + dy, 0});
                for (; it != filed.end() && it->cellX == p.cellX + dx && it->cellY == p.cellY + dy && it->index < p.index; ++it) {
                    if (std::fabs(xs[it->index] - x) + std::fabs(ys[it->index] - y) < kSamePointDistance) {
                        found = true;
                        break;
                    }
                }
            }
        }
        near[static_cast<std::size_t>(p.index)] = found;
    }
    return near;
}

} // namespace vek::detail
