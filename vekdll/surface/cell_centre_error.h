#pragma once

#include "vekdll/export.h"
#include "vekdll/surface/height_grid.h"

class ZrCIncrementalDelaunay2D;

namespace vek {

// How far a surface departs from a raster at the cells' centres, over the
// cells that hold data.
struct CentreError {
    long long cells = 0;
    // Cells with data that no triangle covers.
    long long uncovered = 0;
    double maximum = 0.0;
    double rms = 0.0;
};

// Compares the triangles of the present list (FinalList once finalized,
// else the working list) with `grid`, cell by cell: the surface's height at
// a cell is that of the plane of a triangle over the cell's centre, the
// vertex z times `heightPerZ`. The triangulation's vertices must lie on
// cell centres, x the column and y the row of the grid, as those of
// GreedyRefinement do; a corner off them counts at the nearest.
VEKDLL_API CentreError CompareAtCellCentres(ZrCIncrementalDelaunay2D& triangulation, const HeightGrid& grid,
                                            double heightPerZ = 1.0);

} // namespace vek
