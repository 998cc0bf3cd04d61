#include "mesh_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "height_raster.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::tools {

void WriteObj(const std::string& path, ZrCIncrementalDelaunay2D& triangulation, double cellSize)
{
    std::ofstream out(path, std::ios::trunc);
    if (!out) throw ToolError("cannot write " + path + ": " + std::strerror(errno));
    out << "# " << triangulation.GetNumVertices() << " vertices, " << triangulation.GetNumTriangles()
        << " triangles; x east, y north, z up\n";
    out.precision(9);
    for (int i = 0; i < triangulation.GetNumVertices(); ++i) {
        const SSEPoint p = triangulation.GetVertex(i);
        out << "v " << p.x * cellSize << ' ' << p.y * cellSize << ' ' << p.z * cellSize << '\n';
    }
    CList<t_hdelaunaytriangle*>& triangles = triangulation.GetFinalList();
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* t = triangles.GetNext(pos);
        if (t == nullptr) continue;
        out << "f " << t->Vertex[0] + 1 << ' ' << t->Vertex[1] + 1 << ' ' << t->Vertex[2] + 1 << '\n';
    }
    out.close();
    if (!out) throw ToolError("cannot write " + path);
}

} // namespace vek::tools
