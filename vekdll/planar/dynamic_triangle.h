#pragma once

#include "vekdll/planar/h2d_point.h"

// A triangle of the refined ear clipping: a node of a doubly linked list,
// with links to the triangles across its three sides.
struct t_hdynamictriangle {
    t_h2dpoint Point[3];  // corners in the triangulator's scaled plane
    float Z[3];           // heights of the corners; -999999.0 while not known
    t_hdynamictriangle* Next;  // towards older triangles
    t_hdynamictriangle* Prev;
    // Across side 0 (corner 0-1), side 1 (corner 1-2), side 2 (corner 2-0);
    // null at the border.
    t_hdynamictriangle* Neighbour[3];
    int Index;     // the ear-clipped triangle it is; -1 once made by splitting
    int IsBorder;  // 1 once the border line found it with a side open
};

namespace vek {

// The height of a corner that hasn't been interpolated yet; any height below
// kHeightKnownAbove counts as that.
inline constexpr float kHeightNotKnown = -999999.0f;
inline constexpr float kHeightKnownAbove = -999998.0f;

} // namespace vek
