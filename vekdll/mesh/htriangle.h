#pragma once

#include "vekdll/foundation/sse_point.h"

// One triangle of a CHTriangulation. Every pointer aims at the triangle's own
// entries in the mesh's parallel arrays; the record owns none of them. The
// layout is part of the mesh's archive image: seventeen pointers, then the
// two 32-bit integers, 144 bytes on a 64-bit platform.
struct t_htriangle {
    SSEPoint* P0;
    SSEPoint* P1;
    SSEPoint* P2;
    SSEPoint* N0;
    SSEPoint* N1;
    SSEPoint* N2;
    SSEPoint* T;          // P2 - P0
    SSEPoint* S;          // P1 - P0
    SSEPoint* V;          // P2 - P1
    SSEPoint* MainNormal; // normalised N0 + N1 + N2, not the flat normal
    SSEPoint* MinPoint;   // lane-wise minimum of the corners
    SSEPoint* MaxPoint;   // lane-wise maximum of the corners
    t_htriangle* Neighbour0; // across P0-P1
    t_htriangle* Neighbour1; // across P1-P2
    t_htriangle* Neighbour2; // across P2-P0
    t_htriangle* Next;    // working list of CHTriangulation::IndexTriangleList
    t_htriangle* Prev;
    int Index;
    int Flag;
};
static_assert(sizeof(void*) != 8 || sizeof(t_htriangle) == 144);

namespace vek {

// Values of t_htriangle::Flag.
inline constexpr int kTriangleFlagNone = -1;              // as CreateTriangulation leaves it
inline constexpr int kTriangleFlagBorder = 13;            // at least one neighbour is missing
inline constexpr int kTriangleFlagPlanarDelaunay = 14;    // built from a planar Delaunay result

} // namespace vek
