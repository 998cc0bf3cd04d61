#pragma once

#include <cstdint>

// The names of the triangle graph, shared by both triangulation classes.

// A side of a triangle, and the neighbour slot across it: side i runs from
// Vertex[i] to Vertex[(i + 1) % 3].
enum ESharedSide : std::int32_t {
    eSideNone = -1,
    eSide0 = 0,
    eSide1 = 1,
    eSide2 = 2,
};

// Where a point lies against a triangle, within the on-edge tolerance.
enum EPointWhere : std::int32_t {
    ePointOutside = 0,
    ePointInside = 1,
    ePointOnSide0 = 2,
    ePointOnSide1 = 3,
    ePointOnSide2 = 4,
};

// The view from which a raster was taken; a vertex is turned about x by the
// view's angle before it is compared with that raster.
enum EDirection : std::int32_t {
    eViewStraight = 0,
    eViewMinus90 = 1,
    eViewPlus90 = 2,
};

namespace vek {

// The record that lists a triangle with corners in conflict with a raster,
// for each triangle record; the records' headers specialise it.
template <class Triangle>
struct AffectedRecordOf;

} // namespace vek
