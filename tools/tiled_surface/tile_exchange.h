#pragma once

// How a tile's triangulation travels from the process that built it to the
// one that stitches: its vertices and the corners of its triangles, as raw
// 4-byte numbers through a file descriptor (a pipe). The links between the
// triangles are not sent; the receiver finds them again from shared sides.

#include <cstdint>
#include <vector>

#include "vekdll/surface/incremental_delaunay.h"

namespace vek::tools {

struct TileMesh {
    std::vector<float> Coordinates;  // x, y, z of each vertex
    std::vector<std::int32_t> Corners; // three vertex indices per triangle
    double Seconds = 0.0;            // how long the tile took to triangulate
    double CpuSeconds = 0.0;         // and how much processor time
};

// The finalized triangles of `surface` and all its vertices.
TileMesh MeshOf(ZrCIncrementalDelaunay2D& surface, double seconds, double cpuSeconds);

// Writes the whole mesh to `fd`; false if the descriptor fails.
bool WriteTileMesh(int fd, const TileMesh& mesh);
// Reads one mesh from `fd`; false on a short read or impossible counts.
bool ReadTileMesh(int fd, TileMesh& mesh);

// A new finalized triangulation of the mesh, its triangles linked across
// every side that two of them share.
ZrCIncrementalDelaunay2D* SurfaceOf(const TileMesh& mesh);

} // namespace vek::tools
