#pragma once

#include <cstdint>

#include "vekdll/foundation/sse_point.h"

class CSSE3dPolygon;
class CSSEMatrix;

// How one cell of the finest grid is cut into triangles. The corners run
// counter-clockwise from the lower left, c0 = (x, y), c1 = (x + s, y),
// c2 = (x + s, y + s), c3 = (x, y + s), and side k runs from corner k to
// corner k + 1. A side whose two corners differ, one inside the polygon and
// one not, carries the point where it crosses the polygon.

namespace vek::detail {

struct FinestCellCorners {
    int corner[4];  // vertex indices
    bool inside[4];
    int crossing[4];  // vertex index of the crossing on side k, or -1
};

// The part of the cell inside the polygon, walked counter-clockwise from c0:
// each inside corner, and after corner k the crossing of side k where there
// is one. All its points lie on the rim of the square in order, so it is
// convex, and it is cut into a fan from its first inside corner:
// emit(a, b, c) once for each triangle, counter-clockwise. A cell with all
// four corners inside gives (c0, c1, c2) and (c0, c2, c3). With `wholeOnly`
// a cell with a corner outside gives nothing; a cell with no corner inside
// never gives anything, even where a thin part of the polygon crosses it.
template <class Emit>
void CutCell(const FinestCellCorners& cell, bool wholeOnly, const Emit& emit)
{
    const bool whole = cell.inside[0] && cell.inside[1] && cell.inside[2] && cell.inside[3];
    if (wholeOnly && !whole) return;
    int ring[8];
    int count = 0;
    int fanStart = -1;
    for (int k = 0; k < 4; ++k) {
        if (cell.inside[k]) {
            if (fanStart < 0) fanStart = count;
            ring[count++] = cell.corner[k];
        }
        if (cell.inside[k] != cell.inside[(k + 1) % 4] && cell.crossing[k] >= 0) ring[count++] = cell.crossing[k];
    }
    if (fanStart < 0 || count < 3) return;
    for (int i = 1; i + 1 < count; ++i)
        emit(ring[fanStart], ring[(fanStart + i) % count], ring[(fanStart + i + 1) % count]);
}

// The place where the segment from `in` (inside the polygon) to `out`
// crosses its rim, by halving the segment 24 times against the inner-area
// test, at heights between those of the two ends. The same ends always give
// the same point, so that two cells, or two bands, that meet at a side find
// the same crossing.
SSEPoint FindCellCrossing(CSSE3dPolygon& polygon, const SSEPoint& in, const SSEPoint& out);

// The height of the raster at a lattice point: 0 without a field.
float LatticeHeight(const CSSEMatrix* field, int x, int y);

} // namespace vek::detail
