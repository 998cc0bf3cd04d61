#pragma once

#include "vekdll/export.h"
#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/indexed_mesh/vector3f.h"

// Normals of an indexed mesh. A triangle's normal is the right-handed one:
// its corners are met counter-clockwise when seen from where it points.
class VEKDLL_API QyMpTriangulationNormals {
public:
    // Gives every vertex the normalised sum of the normals of the triangles
    // that name it, each weighted by its triangle's area, so that a sliver
    // cannot tilt a vertex as much as a large neighbour does. A vertex that no
    // triangle of some area names, or whose sum is not finite, gets
    // (0, 0, 0). Triangles with an index outside the mesh are passed over.
    // Sums and lengths are taken in double: float coordinates can neither
    // overflow nor underflow them.
    static void Compute(Geometry::CTriangulation& mesh);

    // The unit normal of the triangle p0, p1, p2; (0, 0, 0) when its corners
    // are collinear or not finite.
    static QbVector3f FaceNormal(const QbVector3f& p0, const QbVector3f& p1, const QbVector3f& p2);
};
