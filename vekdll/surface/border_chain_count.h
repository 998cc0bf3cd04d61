#pragma once

#include "vekdll/platform/c_list.h"
#include "vekdll/surface/delaunay_records.h"

namespace vek {

// The state of one border loop while the loops of a surface are compared:
// its edges, the front that advances from them into the surface, the
// triangles the front has reached, and whether the front still grows. The
// lists hold pointers only; the triangles belong to the surface.
template <class Triangle, class Edge>
struct CountTrianglesParams {
    CList<Edge*>* EdgeList = nullptr;
    CList<Triangle*> FrontList{10};
    CList<Triangle*> FoundList{10};
    bool Growing = true;
};

} // namespace vek

using t_CountTrianglesThreadParamsDelaunay = vek::CountTrianglesParams<t_hdelaunaytriangle, t_hdelaunayedge>;
