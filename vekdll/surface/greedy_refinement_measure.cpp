// How far a triangle departs from the raster: its worst cell.

#include <algorithm>
#include <cmath>

#include "vekdll/surface/greedy_refinement.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/lattice_triangle_rows.h"

namespace vek {

namespace {

detail::LatticeCorner CornerAt(const SSEPoint& vertex)
{
    return {static_cast<std::int64_t>(std::lround(vertex.x)), static_cast<std::int64_t>(std::lround(vertex.y)),
            static_cast<double>(vertex.z)};
}

} // namespace

// The departure at a cell is |n - h twiceArea| / twiceArea, so that for whole
// heights it is found exactly and a cell exactly at the target counts as
// within it. A cell without data gives not-a-number, which is never the
// worst. Of equal departures the first in row order wins.
void GreedyRefinement::Measure(int slot)
{
    Slot& s = slots_[slot];
    const t_hdelaunaytriangle* triangle = s.triangle;
    std::copy(triangle->Vertex, triangle->Vertex + 3, s.corner);
    double worst = -1.0;
    double worstArea = 1.0;
    int worstX = 0;
    int worstY = 0;
    long long cells = 0;
    detail::ForEachRowOfCells(
        CornerAt(triangulation_.GetVertex(s.corner[0])), CornerAt(triangulation_.GetVertex(s.corner[1])),
        CornerAt(triangulation_.GetVertex(s.corner[2])), grid_.width, grid_.height,
        [&](int y, int first, int last, double n, double step, double twiceArea) {
            const float* row = grid_.Row(y);
            for (int x = first; x <= last; ++x) {
                const double e = std::fabs(n - static_cast<double>(row[x]) * twiceArea);
                if (e > worst) {
                    worst = e;
                    worstX = x;
                    worstY = y;
                }
                n += step;
            }
            worstArea = twiceArea;
            cells += last - first + 1;
        });
    cellsMeasured_ += cells;
    s.error = worst > 0.0 ? worst / worstArea : 0.0;
    s.cellX = worstX;
    s.cellY = worstY;
    s.stuck = false;
    Queue(slot);
}

// A corner cell without data takes the height of the nearest cell with
// data, searched ring by ring, so that the surface over a gap at the rim
// is drawn from what lies next to it; 0 if the grid holds none.
float GreedyRefinement::HeightAtOrNear(int x, int y) const
{
    if (HeightGrid::HoldsData(grid_.At(x, y))) return grid_.At(x, y);
    const int rings = std::max(grid_.width, grid_.height);
    for (int r = 1; r < rings; ++r) {
        for (int j = std::max(0, y - r); j <= std::min(grid_.height - 1, y + r); ++j) {
            const int step = j == y - r || j == y + r ? 1 : 2 * r;
            for (int i = x - r; i <= x + r; i += step) {
                if (i >= 0 && i < grid_.width && HeightGrid::HoldsData(grid_.At(i, j))) return grid_.At(i, j);
            }
        }
    }
    return 0.0f;
}

} // namespace vek
