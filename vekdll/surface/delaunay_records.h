#pragma once

#include <cstdint>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/surface/triangle_graph_types.h"

// The records of ZrCIncrementalDelaunay2D. They are plain data: the field
// order is part of the interface, and a record is copied whole by
// CopyTriangle and by every flip. They carry the export mark only so that
// the graph operations instantiated over them stay visible outside the
// library.

// One triangle of the graph. Corners are indices into the vertex store;
// Neighbour[i] is the triangle across side i, or null at a border.
struct VEKDLL_API t_hdelaunaytriangle {
    std::int32_t Vertex[3];
    float CircleX;
    float CircleY;
    float CircleRadius2;
    t_hdelaunaytriangle* Neighbour[3];
    bool Ignore;        // marked for removal by the KillIgnored... family
    bool Outside;       // outside the bounding polygon, or marked so
    bool Border;        // has a null or an Outside neighbour
    bool IgnoreSearch;  // hidden from point location, circle tests and flips
    bool SubEdge;       // on the edge of a sub-triangulation
    bool MaskArea;      // set while an area under a mask is removed
    bool Processed;     // handled by a breadth-first pass of the deletion code
    bool FlipState;     // must not take part in an angle flip
    bool Visited;       // already on a work list; guards every collecting walk
    bool Signed;        // selected for RemoveSignedTriangles
    SSEPoint* Normal;   // into the object's normals array, or null
    SSEPoint* Center;   // into the object's centres array, or null
    std::int32_t SortIndex;
    // Bookkeeping of the search index beside the working list; a copied
    // record carries a stale value, which the index recognises.
    std::int32_t SearchSlot;
};

// One border edge: the side `Side` of `Triangle`, from Vertex[0] to Vertex[1].
struct VEKDLL_API t_hdelaunayedge {
    std::int32_t Vertex[2];
    ESharedSide Side;
    t_hdelaunaytriangle* Triangle;
    bool Used;   // already taken up into a border line
    bool Mark1;
    bool Mark2;
};

// A triangle with some corners in conflict with a raster.
struct VEKDLL_API t_AffectedDelaunayTriangles {
    t_hdelaunaytriangle* Triangle;
    bool Corner[3];
    std::int32_t CornerCount;
};

template <>
struct vek::AffectedRecordOf<t_hdelaunaytriangle> {
    using type = t_AffectedDelaunayTriangles;
};
