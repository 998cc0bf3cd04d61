#pragma once

#include <functional>
#include <vector>

#include "vekdll/export.h"

class CSSE3dPolygon;

// The grid points inside a closed line, found column by column. The even-odd
// fills and the cut outside a curve of the fields all ask this one question:
// which points (x, y) of a grid pass PointInLineInnerArea(x, y, 1), the box
// test included.
namespace vek {

// How the answer is found. Crossings walks, in each grid column, the chords
// that cross the column and finds for each the first grid row from which it
// no longer passes above: the cost is the grid columns plus the crossings,
// each placed by a search over the rows. PointByPoint tests every grid point
// on its own, at a cost of grid points times chords: the plain way, kept as
// the reference that the walk must match run for run.
enum class InnerAreaScan {
    Crossings,
    PointByPoint,
};

// The integers first, first + step, ... below end; none for a step below 1.
struct GridAxis {
    int first;
    int end;
    int step;
};

// Grid rows first, first + step, ... below end of one column, all inside.
struct RowRun {
    int first;
    int end;
};

using InnerColumnVisitor = std::function<void(int x, const std::vector<RowRun>& runs)>;

// Calls visit(x, runs) for every grid column x, rising, with the maximal runs
// of its grid rows inside the closed line, rising; a run's end is one past
// its last row. The line's box is calculated first if it isn't.
VEKDLL_API void ScanInnerArea(CSSE3dPolygon& line, GridAxis columns, GridAxis rows, InnerAreaScan scan,
                              const InnerColumnVisitor& visit);

} // namespace vek
