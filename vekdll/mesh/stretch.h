#pragma once

#include "vekdll/foundation/sse_point.h"

// One border edge of a mesh, a node of CHTriangulation's stretch list. The
// two points alias corner entries of the mesh and own nothing. Nodes are
// allocated with new, one by one, and released by
// CHTriangulation::DeleteStretchFromList.
struct t_stretch {
    SSEPoint* P0;
    SSEPoint* P1;
    t_stretch* Next;
    t_stretch* Prev;
};
