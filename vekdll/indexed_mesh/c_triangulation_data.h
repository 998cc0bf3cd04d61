#pragma once

// What a Geometry::CTriangulation holds, shared between its copies. The
// counts are the sizes of the blocks.

#include "vekdll/indexed_mesh/c_triangulation.h"

namespace Geometry {

struct CTriangulation::Data {
    SMemoryBlock<QbVector3f> positions;
    SMemoryBlock<Triangle> triangles;
    SMemoryBlock<unsigned int> attributes; // empty or one per triangle
    SMemoryBlock<QbVector3f> normals;      // empty or one per vertex
};

} // namespace Geometry
