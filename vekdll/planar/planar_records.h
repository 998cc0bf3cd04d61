#pragma once

#include "vekdll/planar/h2d_point.h"

// Records of ear clipping. The vertex ring is a doubly linked list threaded
// through one array, so indices into that array name vertices everywhere.

// A node of the ring that ear clipping shrinks. The point comes first, so a
// pointer to the node serves as a pointer to its point.
struct t_hvertex {
    t_h2dpoint Point;  // scaled coordinates
    bool IsEar;        // the segment from Prev to Next is a diagonal
    t_hvertex* Next;
    t_hvertex* Prev;
    int Index;         // position in the vertex array
};

// One clipped ear: predecessor, tip and successor at the moment of
// clipping, in the sense of the ring.
struct t_htriangleconnectivity {
    int a;
    int b;
    int c;
};

// The segment that closed a clipped ear, with the convexity of its two ends
// in the ring as it stood then.
struct t_hdiagonal {
    bool Exists;
    int From;
    bool FromConvex;
    int To;
    bool ToConvex;
};
