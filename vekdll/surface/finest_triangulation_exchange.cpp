// The finest triangulation to the indexed mesh and its file. Its records
// have no Outside flag and it has no final list, so the whole working list
// goes into the mesh.

#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/surface/finest_triangulation.h"
#include "vekdll/surface/mesh_exchange.h"

Geometry::CTriangulation* ZrCFinestTriangulation::CreateCTriangulationFromFinestTriangulation() const
{
    return vek::IndexedMeshFromTriangles(*this, TriangleList, TriangleList.GetCount());
}

void ZrCFinestTriangulation::ExportTriangulation(const CString& path) const
{
    if (TriangleList.IsEmpty()) return;
    vek::ExportIndexedMeshFile(path, [this] { return CreateCTriangulationFromFinestTriangulation(); });
}
