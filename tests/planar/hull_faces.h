#pragma once

// The face ring of a spatial hull, or of what remains of one, as a list.

#include <vector>

#include "vekdll/planar/convex_hull_3d.h"

namespace vek::test {

// The faces from the ring's entry round to it, at most a million.
inline std::vector<tFaceStructure*> FacesOf(const CHConvexHull3D& hull)
{
    std::vector<tFaceStructure*> faces;
    for (tFaceStructure* f = hull.GetFaces(); f != nullptr && faces.size() < 1000000; f = f->Next) {
        faces.push_back(f);
        if (f->Next == hull.GetFaces()) break;
    }
    return faces;
}

} // namespace vek::test
