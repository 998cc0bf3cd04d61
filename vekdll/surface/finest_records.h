#pragma once

#include <cstdint>

#include "vekdll/export.h"
#include "vekdll/surface/triangle_graph_types.h"

// The records of ZrCFinestTriangulation. They are plain data like those of
// the adaptive triangulation, without what a surface built straight from a
// raster never needs: no circumcircle, no normal or centre pointer, and none
// of the outside, border, search and sub-edge flags. The field order is part
// of the interface.

struct VEKDLL_API t_hfinesttriangle {
    std::int32_t Vertex[3];
    t_hfinesttriangle* Neighbour[3];
    bool Ignore;      // marked for removal by the KillIgnored... family
    bool RowChecked;  // already tested by CheckFlipEdgesInRow
    bool MaskArea;    // set while an area under a mask is removed
    bool Processed;   // handled by a breadth-first pass of the deletion code
    bool Marched;     // made by the marching over the raster's cells
    bool FlipState;   // must not take part in an angle flip
    bool Visited;     // already on a work list; guards every collecting walk
    bool Signed;      // selected for RemoveSignedTriangles
    std::int32_t SortIndex;
};

// One border edge: the side `Side` of `Triangle`, from Vertex[0] to Vertex[1].
struct VEKDLL_API t_hfinestedge {
    std::int32_t Vertex[2];
    ESharedSide Side;
    t_hfinesttriangle* Triangle;
    bool Used;  // already taken up into a border line
    bool Mark1;
    bool Mark2;
};

// A triangle with some corners in conflict with a raster.
struct VEKDLL_API t_AffectedTriangles {
    t_hfinesttriangle* Triangle;
    bool Corner[3];
    std::int32_t CornerCount;
};

template <>
struct vek::AffectedRecordOf<t_hfinesttriangle> {
    using type = t_AffectedTriangles;
};
