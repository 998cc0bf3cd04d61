#pragma once

#include <string>

class ZrCIncrementalDelaunay2D;

namespace vek::tools {

// Writes the stored vertices and the finalized triangles as a Wavefront OBJ,
// x and y scaled by the cell size so that the surface keeps its true shape
// and z back in the units of the heights.
void WriteObj(const std::string& path, ZrCIncrementalDelaunay2D& triangulation, double cellSize);

} // namespace vek::tools
