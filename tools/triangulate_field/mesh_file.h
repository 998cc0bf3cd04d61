#pragma once

#include <array>
#include <string>
#include <vector>

#include "georeference.h"
#include "height_raster.h"
#include "surface_road.h"

class ZrCIncrementalDelaunay2D;

namespace vek::tools {

// A triangle mesh as it is written: world coordinates, x east, y north and
// z the height, and triangles as indices into the vertices, counter-clockwise
// seen from above so that their normals point up.
struct WorldMesh {
    std::vector<std::array<double, 3>> vertices;
    std::vector<std::array<int, 3>> triangles;
    // One line for the file's comment: what the coordinates are.
    std::string note;
};

// The finalized triangles of the surface road and the vertices they use, in
// the order the triangulation stored them, placed by `georeference`.
// Vertices no triangle uses (a corner of the bounding box, a point that
// found no place) are left out, so that a viewer frames the surface alone.
WorldMesh MeshInWorld(ZrCIncrementalDelaunay2D& triangulation, const HeightRaster& input,
                      const RoadSettings& settings, const Georeference& georeference);

// Wavefront OBJ: "v x y z" lines, then "f a b c" with indices from 1.
void WriteObj(const std::string& path, const WorldMesh& mesh);

// PLY, binary little-endian: the vertices as doubles, which keep world
// coordinates in the millions to the millimetre, and each face as a byte
// count 3 and three 32-bit indices.
void WritePly(const std::string& path, const WorldMesh& mesh);

} // namespace vek::tools
