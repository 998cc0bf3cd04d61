// The loose grid of circles behind the triangle search.

#include "vekdll/surface/circle_grid.h"

#include <algorithm>
#include <cmath>

namespace vek::detail {

void CircleGrid::Reset(double minX, double minY, double maxX, double maxY, double cell)
{
    levels_.clear();
    entries_ = 0;
    minX_ = minX;
    minY_ = minY;
    maxX_ = maxX;
    maxY_ = maxY;
    const double width = std::max(maxX - minX, 0.0);
    const double height = std::max(maxY - minY, 0.0);
    for (double size = cell;; size *= 2.0) {
        Level level;
        level.cellSize = size;
        level.inverse = 1.0 / size;
        // One cell more than the box needs, so that its upper side lies
        // inside the grid, not on the last boundary.
        level.columns = static_cast<int>(std::min(width / size, 1.0e9)) + 1;
        level.rows = static_cast<int>(std::min(height / size, 1.0e9)) + 1;
        if (levels_.empty() || level.columns > 1 || level.rows > 1) {
            level.cells.resize(static_cast<std::size_t>(level.columns) * static_cast<std::size_t>(level.rows));
            levels_.push_back(std::move(level));
        }
        if (level.columns <= 1 && level.rows <= 1) {
            // The top: one cell that every query reads.
            if (levels_.back().cells.size() != 1) {
                Level top;
                top.cellSize = size;
                top.inverse = 1.0 / size;
                top.cells.resize(1);
                levels_.push_back(std::move(top));
            }
            break;
        }
    }
}

void CircleGrid::Clear()
{
    levels_.clear();
    entries_ = 0;
    maxX_ = minX_ - 1.0;
    maxY_ = minY_ - 1.0;
}

bool CircleGrid::Covers(double x, double y) const
{
    return x >= minX_ && x <= maxX_ && y >= minY_ && y <= maxY_;
}

int CircleGrid::Clamped(double cells, int count)
{
    if (!(cells >= 0.0)) return 0; // below the box, or NaN
    if (cells >= static_cast<double>(count - 1)) return count - 1;
    return static_cast<int>(cells);
}

GridPlace CircleGrid::Insert(const Entry& entry, double centreX, double centreY, double radius)
{
    GridPlace place;
    place.level = static_cast<int>(levels_.size()) - 1;
    if (place.level < 0) return GridPlace{};
    for (int k = 0; k + 1 < static_cast<int>(levels_.size()); ++k) {
        if (radius <= kFill * levels_[static_cast<std::size_t>(k)].cellSize) {
            place.level = k;
            break;
        }
    }
    Level& level = levels_[static_cast<std::size_t>(place.level)];
    const int column = Clamped((centreX - minX_) * level.inverse, level.columns);
    const int row = Clamped((centreY - minY_) * level.inverse, level.rows);
    place.cell = row * level.columns + column;
    Cell& cell = level.cells[static_cast<std::size_t>(place.cell)];
    if (cell.count < kInPlace) {
        cell.entries[cell.count++] = entry;
    } else {
        level.overflow[static_cast<std::uint32_t>(place.cell)].push_back(entry);
        cell.overflowing = 1;
    }
    ++level.entries;
    ++entries_;
    return place;
}

void CircleGrid::Remove(GridPlace place, std::uint32_t slot)
{
    if (place.level < 0 || place.level >= static_cast<int>(levels_.size())) return;
    Level& level = levels_[static_cast<std::size_t>(place.level)];
    Cell& cell = level.cells[static_cast<std::size_t>(place.cell)];
    const auto key = static_cast<std::uint32_t>(place.cell);
    for (std::uint32_t i = 0; i < cell.count; ++i) {
        if (cell.entries[i].slot != slot) continue;
        cell.entries[i] = cell.entries[--cell.count];
        // The place freed in the cell goes to an entry from the overflow.
        if (cell.overflowing != 0) cell.entries[cell.count++] = TakeFromOverflow(level, cell, key, nullptr);
        --level.entries;
        --entries_;
        return;
    }
    if (cell.overflowing == 0) return;
    for (Entry& entry : level.overflow.at(key)) {
        if (entry.slot != slot) continue;
        TakeFromOverflow(level, cell, key, &entry);
        --level.entries;
        --entries_;
        return;
    }
}

// Takes `entry` (or, given null, the last one) out of the cell's overflow,
// which goes when it runs empty.
CircleGrid::Entry CircleGrid::TakeFromOverflow(Level& level, Cell& cell, std::uint32_t key, Entry* entry)
{
    std::vector<Entry>& waiting = level.overflow.at(key);
    const Entry last = waiting.back();
    const Entry taken = entry != nullptr ? *entry : last;
    if (entry != nullptr) *entry = last;
    waiting.pop_back();
    if (waiting.empty()) {
        level.overflow.erase(key);
        cell.overflowing = 0;
    }
    return taken;
}

} // namespace vek::detail
