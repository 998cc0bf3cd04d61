#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "vekdll/export.h"

namespace vek::detail {

// Where a circle sits in a CircleGrid: its level and the one cell there.
struct GridPlace {
    std::int32_t level = -1; // -1: not in the grid
    std::int32_t cell = 0;
};

// A loose multi-level grid of circles over a box, for finding every circle
// that may contain a point without looking at all of them.
//
// Level 0 has square cells of the size given to Reset; each level above has
// cells twice as large, up to a top level of one cell. A circle of radius r
// is kept once, at the finest level whose cells are at least r / kFill wide,
// in the cell that holds its centre (clamped to the box). Such a circle
// reaches at most half a cell beyond its own cell, so a point meets every
// circle that can contain it in the 2 x 2 cells around it on each level.
// Circles too large for every level, and circles of infinite radius, go to
// the top cell, which every query reads.
//
// The grid decides nothing: it hands out candidates, and the caller applies
// its own test. The radius given to Insert must therefore already be wide
// enough to cover every point that the caller's test could accept.
class VEKDLL_API CircleGrid {
public:
    // What a query hands back: the circle as it was inserted, and the
    // caller's number for it.
    struct Entry {
        float centreX;
        float centreY;
        float radius2;
        std::uint32_t slot;
    };

    // Empties the grid and lays it over the box, whose sides must be finite;
    // `cell` is the side of a level-0 cell.
    void Reset(double minX, double minY, double maxX, double maxY, double cell);
    void Clear();
    bool IsEmpty() const { return entries_ == 0; }
    // True if (x, y) lies in the box the grid covers; false for NaN.
    bool Covers(double x, double y) const;
    double MinX() const { return minX_; }
    double MinY() const { return minY_; }
    double MaxX() const { return maxX_; }
    double MaxY() const { return maxY_; }

    // Keeps `entry` for a circle about (centreX, centreY) of the given
    // radius; an infinite radius goes to the top cell. Returns its place.
    GridPlace Insert(const Entry& entry, double centreX, double centreY, double radius);
    void Remove(GridPlace place, std::uint32_t slot);

    // Calls visit(const Entry&) for every circle that may contain (x, y),
    // which must lie in the box.
    template <class Visit>
    void ForEachCandidate(double x, double y, Visit&& visit) const;

private:
    static constexpr double kFill = 0.45; // of a cell: the largest radius a level keeps

    // A cell holds its first entries in place, two cache lines in all, so
    // that a query reads the 2 x 2 cells of a level as two short runs of
    // memory; entries beyond those wait in an overflow list of the level.
    static constexpr int kInPlace = 7;
    struct alignas(64) Cell {
        std::uint32_t count = 0; // entries in place, the overflow not counted
        std::uint32_t overflowing = 0;
        Entry entries[kInPlace];
    };

    struct Level {
        double cellSize = 1.0;
        double inverse = 1.0; // 1 / cellSize
        int columns = 1;
        int rows = 1;
        std::size_t entries = 0;
        std::vector<Cell> cells;
        std::unordered_map<std::uint32_t, std::vector<Entry>> overflow;
    };

    // The cell index of a coordinate already measured in cells from the
    // box's lower side, clamped to 0 ... count - 1 (0 for NaN).
    static int Clamped(double cells, int count);
    template <class Visit>
    static void VisitCell(const Level& level, std::size_t cell, Visit& visit);
    static Entry TakeFromOverflow(Level& level, Cell& cell, std::uint32_t key, Entry* entry);

    std::vector<Level> levels_;
    double minX_ = 0.0;
    double minY_ = 0.0;
    double maxX_ = -1.0;
    double maxY_ = -1.0;
    std::size_t entries_ = 0;
};

template <class Visit>
void CircleGrid::ForEachCandidate(double x, double y, Visit&& visit) const
{
    for (const Level& level : levels_) {
        if (level.entries == 0) continue;
        // The cells whose loose reach (half a cell around them) holds the
        // point: the one it is in and the neighbour on its nearer side.
        const int column = Clamped((x - minX_) * level.inverse + 0.5, level.columns);
        const int row = Clamped((y - minY_) * level.inverse + 0.5, level.rows);
        const int columns[2] = {column > 0 ? column - 1 : column, column};
        const int rows[2] = {row > 0 ? row - 1 : row, row};
        for (int r = 0; r < (rows[0] != rows[1] ? 2 : 1); ++r) {
            for (int c = 0; c < (columns[0] != columns[1] ? 2 : 1); ++c) {
                VisitCell(level,
                          static_cast<std::size_t>(rows[r]) * static_cast<std::size_t>(level.columns) +
                              static_cast<std::size_t>(columns[c]),
                          visit);
            }
        }
    }
}

template <class Visit>
void CircleGrid::VisitCell(const Level& level, std::size_t index, Visit& visit)
{
    const Cell& cell = level.cells[index];
    for (std::uint32_t i = 0; i < cell.count; ++i) visit(cell.entries[i]);
    if (cell.overflowing == 0) return;
    for (const Entry& entry : level.overflow.at(static_cast<std::uint32_t>(index))) visit(entry);
}

} // namespace vek::detail
