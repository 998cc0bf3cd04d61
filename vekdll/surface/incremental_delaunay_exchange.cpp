// The adaptive triangulation to the indexed mesh and its file, and back.

#include <climits>

#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/mesh_exchange.h"

// FinalList's count sizes the mesh whichever list is copied: the mesh is
// made for a finalized triangulation, and a working list is cut to that
// count.
Geometry::CTriangulation* ZrCIncrementalDelaunay2D::CreateCTriangulation() const
{
    const CList<t_hdelaunaytriangle*>& source = TriangleList.IsEmpty() ? FinalList : TriangleList;
    return vek::IndexedMeshFromTriangles(*this, source, FinalList.GetCount());
}

void ZrCIncrementalDelaunay2D::ExportDelaunayTriangleNew(const CString& path) const
{
    vek::ExportIndexedMeshFile(path, [this] { return CreateCTriangulation(); });
}

void ZrCIncrementalDelaunay2D::ImportDelaunayTriangle(const CString& path)
{
    Geometry::CTriangulation mesh;
    if (!vek::ImportIndexedMeshFile(path, mesh)) return;
    CreateDelaunayTriangulationFromCTriangulation(mesh, true);
}

// A new build: whatever the object held goes first, with the state of the
// insertions before. The store is made exactly as large as the mesh; an
// insertion afterwards grows it as it does for any full store.
void ZrCIncrementalDelaunay2D::CreateDelaunayTriangulationFromCTriangulation(const Geometry::CTriangulation& mesh,
                                                                             bool finalize)
{
    const auto positions = mesh.GetPositions();
    // Vertex indices are ints: a mesh beyond them has no place in the store.
    if (positions.size() > static_cast<std::size_t>(INT_MAX)) return;
    StartNewTriangulation();
    CreateVertexArray(static_cast<int>(positions.size()));
    for (const QbVector3f& position : positions) {
        SSEPoint vertex;
        vertex.sse = _mm_setr_ps(position.x, position.y, position.z, 0.0f);
        AppendVertex(vertex);
    }
    for (t_hdelaunaytriangle* triangle : vek::LinkedTrianglesFromIndexedMesh<Base>(mesh)) {
        CalcCircumCircle(triangle);
        AppendToWorkingList(triangle);
    }
    if (finalize) FinalizeTriangleList();
}
