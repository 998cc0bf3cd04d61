// Near-duplicate points of a line, found through cells of one unit.

#include "vekdll/polygons/near_duplicates.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <tuple>
#include <unordered_map>

namespace vek::detail {

namespace {

// Points closer than this in |dx| + |dy| are one point.
constexpr float kSamePointDistance = 1.0f;

// A point's cell, the floor of each coordinate. A city-block sum below 1
// needs |dx| below 1 in float, which only happens for an exact difference
// below 1, so such points lie in the same or in neighbouring cells. Cells
// are held to +-2^62: beyond, floats are whole numbers far apart, a pair
// closer than 1 is equal, and cells that run together only cost comparisons.
struct Cell {
    std::int64_t x;
    std::int64_t y;
    bool operator==(const Cell&) const = default;
};

std::int64_t CellOf(float v)
{
    constexpr double kLimit = 4611686018427387904.0; // 2^62
    return static_cast<std::int64_t>(std::clamp(std::floor(double{v}), -kLimit, kLimit));
}

struct CellHash {
    std::size_t operator()(const Cell& c) const
    {
        return static_cast<std::size_t>(static_cast<std::uint64_t>(c.x) * 0x9E3779B97F4A7C15ULL ^ static_cast<std::uint64_t>(c.y));
    }
};

struct Filed {
    Cell cell;
    int index;
};

} // namespace

std::vector<bool> EarlierNearDuplicatesXY(const float* xs, const float* ys, int count)
{
    std::vector<bool> near(static_cast<std::size_t>(std::max(count, 0)), false);
    // A coordinate that is not finite makes every difference with it infinite
    // or not a number, so such a point is never near another: it isn't filed.
    std::vector<Filed> filed;
    filed.reserve(near.size());
    for (int i = 0; i < count; ++i) {
        if (std::isfinite(xs[i]) && std::isfinite(ys[i])) filed.push_back({{CellOf(xs[i]), CellOf(ys[i])}, i});
    }
    // By cell, and within a cell by rising index, so that each cell's points
    // are one stretch [first, end) of the array.
    std::sort(filed.begin(), filed.end(), [](const Filed& a, const Filed& b) {
        return std::tie(a.cell.x, a.cell.y, a.index) < std::tie(b.cell.x, b.cell.y, b.index);
    });
    std::unordered_map<Cell, std::pair<std::size_t, std::size_t>, CellHash> stretches;
    for (std::size_t i = 0; i < filed.size(); ++i) {
        auto [it, added] = stretches.try_emplace(filed[i].cell, i, i + 1);
        if (!added) it->second.second = i + 1;
    }
    const auto closeTo = [&](int earlier, float x, float y) {
        return std::fabs(xs[earlier] - x) + std::fabs(ys[earlier] - y) < kSamePointDistance;
    };
    // The point before first, then the cells around, the point's own first:
    // along a dense line the earlier point found is mostly the one before.
    constexpr std::int64_t kAround[9][2] = {{0, 0}, {-1, -1}, {-1, 0}, {-1, 1}, {0, -1}, {0, 1}, {1, -1}, {1, 0}, {1, 1}};
    for (const Filed& p : filed) {
        const float x = xs[p.index];
        const float y = ys[p.index];
        bool found = p.index > 0 && closeTo(p.index - 1, x, y);
        for (const auto& [dx, dy] : kAround) {
            if (found) break;
            const auto stretch = stretches.find(Cell{p.cell.x + dx, p.cell.y + dy});
            if (stretch == stretches.end()) continue;
            // The cell's points before this one.
            for (std::size_t i = stretch->second.first; i < stretch->second.second && filed[i].index < p.index && !found; ++i)
                found = closeTo(filed[i].index, x, y);
        }
        near[static_cast<std::size_t>(p.index)] = found;
    }
    return near;
}

} // namespace vek::detail
