// A surface against a raster at the cells' centres.

#include "vekdll/surface/cell_centre_error.h"

#include <cmath>
#include <limits>
#include <vector>

#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/lattice_triangle_rows.h"

namespace vek {

namespace {

detail::LatticeCorner CornerAt(const SSEPoint& vertex, double heightPerZ)
{
    return {static_cast<std::int64_t>(std::lround(vertex.x)), static_cast<std::int64_t>(std::lround(vertex.y)),
            static_cast<double>(vertex.z) * heightPerZ};
}

// The plane's height at every cell a triangle covers; not-a-number where
// none does. A cell on a side shared by two triangles takes the later
// one's, which is the same height but for rounding.
std::vector<double> SurfaceAtCentres(ZrCIncrementalDelaunay2D& d, const HeightGrid& grid, double heightPerZ)
{
    std::vector<double> surface(static_cast<std::size_t>(grid.width) * static_cast<std::size_t>(grid.height),
                                std::numeric_limits<double>::quiet_NaN());
    CList<t_hdelaunaytriangle*>& list = d.IsFinalized() ? d.GetFinalList() : d.GetTriangleList();
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* t = list.GetNext(pos);
        if (t == nullptr) continue;
        detail::ForEachRowOfCells(CornerAt(d.GetVertex(t->Vertex[0]), heightPerZ),
                                  CornerAt(d.GetVertex(t->Vertex[1]), heightPerZ),
                                  CornerAt(d.GetVertex(t->Vertex[2]), heightPerZ), grid.width, grid.height,
                                  [&](int y, int first, int last, double n, double step, double twiceArea) {
                                      double* row = surface.data() + static_cast<std::size_t>(y) * grid.width;
                                      for (int x = first; x <= last; ++x) {
                                          row[x] = n / twiceArea;
                                          n += step;
                                      }
                                  });
    }
    return surface;
}

} // namespace

CentreError CompareAtCellCentres(ZrCIncrementalDelaunay2D& triangulation, const HeightGrid& grid, double heightPerZ)
{
    CentreError result;
    if (grid.width < 1 || grid.height < 1) return result;
    const std::vector<double> surface = SurfaceAtCentres(triangulation, grid, heightPerZ);
    double squares = 0.0;
    for (int y = 0; y < grid.height; ++y) {
        const float* row = grid.Row(y);
        const double* plane = surface.data() + static_cast<std::size_t>(y) * grid.width;
        for (int x = 0; x < grid.width; ++x) {
            if (!HeightGrid::HoldsData(row[x])) continue;
            if (std::isnan(plane[x])) {
                ++result.uncovered;
                continue;
            }
            const double e = std::fabs(plane[x] - static_cast<double>(row[x]));
            result.maximum = std::max(result.maximum, e);
            squares += e * e;
            ++result.cells;
        }
    }
    if (result.cells > 0) result.rms = std::sqrt(squares / static_cast<double>(result.cells));
    return result;
}

} // namespace vek
