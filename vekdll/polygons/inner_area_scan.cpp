// The grid points inside a closed line: by the crossings of each grid column,
// or point by point.

#include "vekdll/polygons/inner_area_scan.h"

#include <algorithm>
#include <cmath>

#include "vekdll/polygons/inner_area_chords.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::Chord;

namespace {

using Index = long long;

// Positions first + i * step of a grid axis, i in [0, count).
struct Axis {
    Index first;
    Index step;
    Index count;

    explicit Axis(vek::GridAxis g)
        : first(g.first), step(g.step), count(g.step >= 1 && g.end > g.first ? (Index{g.end} - g.first + g.step - 1) / g.step : 0)
    {
    }
    int At(Index i) const { return static_cast<int>(first + i * step); }
    // The coordinate as the point test sees it.
    float CoordinateAt(Index i) const { return static_cast<float>(At(i)); }
};

// The first i in [lo, hi) for which holds(i), where `holds` is false up to
// some index and true from there on; hi if it never holds.
template <class Holds>
Index FirstHolding(Index lo, Index hi, Holds holds)
{
    while (lo < hi) {
        const Index mid = lo + (hi - lo) / 2;
        if (holds(mid)) {
            hi = mid;
        } else {
            lo = mid + 1;
        }
    }
    return lo;
}

// The run of grid indices [first, end) of one column, merged with the run
// before it when the two touch.
void AppendRun(std::vector<vek::RowRun>& runs, const Axis& rows, Index first, Index end, Index& lastEnd)
{
    if (first >= end) return;
    if (!runs.empty() && lastEnd == first) {
        runs.back().end = rows.At(end - 1) + 1;
    } else {
        runs.push_back({rows.At(first), rows.At(end - 1) + 1});
    }
    lastEnd = end;
}

void ScanPointByPoint(CSSE3dPolygon& line, const Axis& columns, const Axis& rows, const vek::InnerColumnVisitor& visit)
{
    std::vector<vek::RowRun> runs;
    for (Index k = 0; k < columns.count; ++k) {
        runs.clear();
        Index lastEnd = -1;
        Index open = -1;
        for (Index j = 0; j <= rows.count; ++j) {
            const bool inside = j < rows.count && line.PointInLineInnerArea(columns.CoordinateAt(k), rows.CoordinateAt(j), 1);
            if (inside && open < 0) open = j;
            if (!inside && open >= 0) {
                AppendRun(runs, rows, open, j, lastEnd);
                open = -1;
            }
        }
        visit(columns.At(k), runs);
    }
}

// A chord with the grid columns at which it is counted, [firstColumn, endColumn).
struct ColumnChord {
    Chord chord;
    Index firstColumn;
    Index endColumn;
};

// The chords that can toggle the count, with their columns. A chord with a
// coordinate that is not a number is counted at no column or never passes
// above, and a vertical chord is never counted: none of them can toggle.
std::vector<ColumnChord> ChordsOf(const CSSE3dPolygon& line, const Axis& columns)
{
    const int n = line.GetNumPoints();
    std::vector<ColumnChord> chords;
    chords.reserve(static_cast<std::size_t>(n));
    float prevX = 0.0f;
    float prevY = 0.0f;
    line.GetPointXY(n - 1, prevX, prevY);
    for (int i = 0; i < n; ++i) {
        float curX = 0.0f;
        float curY = 0.0f;
        line.GetPointXY(i, curX, curY);
        const bool finite = !std::isnan(prevX) && !std::isnan(prevY) && !std::isnan(curX) && !std::isnan(curY);
        if (finite && curX != prevX) {
            const Chord c = vek::detail::OrderedChord(prevX, prevY, curX, curY);
            // Counted where a.x < x <= b.x.
            const Index first = FirstHolding(0, columns.count, [&](Index k) { return columns.CoordinateAt(k) > c.ax; });
            const Index end = FirstHolding(0, columns.count, [&](Index k) { return columns.CoordinateAt(k) > c.bx; });
            if (first < end) chords.push_back({c, first, end});
        }
        prevX = curX;
        prevY = curY;
    }
    std::sort(chords.begin(), chords.end(), [](const ColumnChord& a, const ColumnChord& b) { return a.firstColumn < b.firstColumn; });
    return chords;
}

void ScanByCrossings(CSSE3dPolygon& line, const Axis& columns, const Axis& rows, const vek::InnerColumnVisitor& visit)
{
    std::vector<vek::RowRun> runs;
    if (line.GetNumPoints() < 3) {
        for (Index k = 0; k < columns.count; ++k) visit(columns.At(k), runs);
        return;
    }
    if (!line.IsBoundingBoxCalculated()) line.CalcBoundingBox();
    const SSEPoint low = line.GetBottomLeft();
    const SSEPoint high = line.GetTopRight();
    // The box test: only grid points within the box, its rim included, can be inside.
    const Index boxFirstColumn = FirstHolding(0, columns.count, [&](Index k) { return columns.CoordinateAt(k) >= low.x; });
    const Index boxEndColumn = FirstHolding(0, columns.count, [&](Index k) { return columns.CoordinateAt(k) > high.x; });
    const Index boxFirstRow = FirstHolding(0, rows.count, [&](Index j) { return rows.CoordinateAt(j) >= low.y; });
    const Index boxEndRow = FirstHolding(0, rows.count, [&](Index j) { return rows.CoordinateAt(j) > high.y; });

    const std::vector<ColumnChord> chords = ChordsOf(line, columns);
    std::size_t nextChord = 0;
    std::vector<const ColumnChord*> counted;
    // For each counted chord the first row from which it no longer passes
    // above; below that row it toggles the count.
    std::vector<Index> limits;
    for (Index k = 0; k < columns.count; ++k) {
        while (nextChord < chords.size() && chords[nextChord].firstColumn <= k) counted.push_back(&chords[nextChord++]);
        std::erase_if(counted, [k](const ColumnChord* c) { return c->endColumn <= k; });
        runs.clear();
        if (k >= boxFirstColumn && k < boxEndColumn && boxFirstRow < boxEndRow) {
            const float x = columns.CoordinateAt(k);
            limits.clear();
            for (const ColumnChord* c : counted) {
                limits.push_back(FirstHolding(boxFirstRow, boxEndRow, [&](Index j) {
                    return !vek::detail::ChordPassesAbove(c->chord, x, rows.CoordinateAt(j));
                }));
            }
            std::sort(limits.begin(), limits.end());
            // Row j is inside where an odd number of limits lie beyond it.
            Index lastEnd = -1;
            Index from = boxFirstRow;
            std::size_t beyond = limits.size();
            for (std::size_t i = 0; i <= limits.size(); ++i) {
                const Index to = i < limits.size() ? limits[i] : boxEndRow;
                if (beyond % 2 == 1) AppendRun(runs, rows, from, to, lastEnd);
                from = std::max(from, to);
                if (beyond > 0) --beyond;
            }
        }
        visit(columns.At(k), runs);
    }
}

} // namespace

namespace vek {

void ScanInnerArea(CSSE3dPolygon& line, GridAxis columns, GridAxis rows, InnerAreaScan scan, const InnerColumnVisitor& visit)
{
    if (scan == InnerAreaScan::PointByPoint) {
        ScanPointByPoint(line, Axis(columns), Axis(rows), visit);
    } else {
        ScanByCrossings(line, Axis(columns), Axis(rows), visit);
    }
}

} // namespace vek
