#pragma once

// The exchange between a triangulation and the indexed mesh
// (Geometry::CTriangulation), and through the mesh with its binary file.
// Written once for both triangulation classes: the templates take the list
// that holds the triangles and the vertex store, and skip triangles marked
// Outside only where the record has that flag.
//
// ZrCIncrementalDelaunay2D makes its mesh from TriangleList, or FinalList
// when the working list is empty, with room for as many triangles as
// FinalList holds (incremental_delaunay_exchange.cpp); ZrCFinestTriangulation
// has only its working list and no Outside flag, and hands over the whole of
// it (finest_triangulation_exchange.cpp).

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "vekdll/export.h"
#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/indexed_mesh/triangulation_normals.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/platform/c_string.h"
#include "vekdll/surface/side_key.h"
#include "vekdll/surface/triangle_graph.h"
#include "vekdll/surface/vertex_container.h"

namespace vek {

// A new indexed mesh of every vertex of `vertices` and of the triangles of
// `triangles` in list order, each with its corners in their order, so that
// the mesh keeps the triangulation's winding; the mesh's vertex normals are
// computed. The index block has room for `room` triangles, and the copy
// stops when it is full: the count that sizes it is the caller's, and may be
// that of another list than the one copied. Triangles marked Outside are
// passed over. Null when `triangles` is empty; the caller owns the mesh.
template <class Triangle>
Geometry::CTriangulation* IndexedMeshFromTriangles(const ZrCSSEVertexContainer& vertices,
                                                   const CList<Triangle*>& triangles, INT_PTR room)
{
    if (triangles.IsEmpty()) return nullptr;
    const int numVertices = vertices.GetNumVertices() > 0 ? vertices.GetNumVertices() : 0;
    SMemoryBlock<QbVector3f> positions(static_cast<std::size_t>(numVertices));
    for (int i = 0; i < numVertices; ++i) {
        const SSEPoint p = vertices.GetVertex(i);
        positions[static_cast<std::size_t>(i)] = {p.x, p.y, p.z};
    }
    SMemoryBlock<Geometry::CTriangulation::Triangle> corners(room > 0 ? static_cast<std::size_t>(room) : 0);
    std::size_t copied = 0;
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr && copied < corners.size();) {
        const Triangle* triangle = triangles.GetNext(pos);
        if (triangle == nullptr) continue;
        if constexpr (HasOutsideFlag<Triangle>) {
            if (triangle->Outside) continue;
        }
        for (int c = 0; c < 3; ++c) corners[copied][c] = static_cast<unsigned int>(triangle->Vertex[c]);
        ++copied;
    }
    auto mesh = std::make_unique<Geometry::CTriangulation>(static_cast<unsigned int>(numVertices),
                                                           static_cast<unsigned int>(copied), std::move(positions),
                                                           std::move(corners), SMemoryBlock<unsigned int>(),
                                                           SMemoryBlock<QbVector3f>());
    QyMpTriangulationNormals::Compute(*mesh);
    return mesh.release();
}

// Whether a mesh triangle can be a triangle of the graph, whose sides are
// named by their two vertices: three distinct vertices of the store. A
// triangle that names one vertex twice has a side from a vertex to itself
// and two sides over the same pair, which no neighbour link could tell
// apart; one that names a vertex beyond the store has no corner there.
inline bool IsGraphTriangle(const Geometry::CTriangulation::Triangle& t, std::size_t numVertices)
{
    return t[0] < numVertices && t[1] < numVertices && t[2] < numVertices && t[0] != t[1] && t[1] != t[2] &&
           t[0] != t[2];
}

// New zero-filled records of `Graph`, one for each triangle of `mesh` that
// IsGraphTriangle takes, in mesh order and with the mesh's corners in their
// order, linked across every side that two of them share. Sides match as
// unordered vertex pairs, as everywhere in the graph, so triangles of either
// winding are linked. A side that more than two triangles carry links the
// first two of them and stays open in the others, so that every link is
// returned across the same side. Linear: the sides meet in a hash map
// instead of comparing each triangle with all others. The caller lists and
// owns the records.
template <class Graph>
std::vector<typename Graph::TriangleRecord*> LinkedTrianglesFromIndexedMesh(const Geometry::CTriangulation& mesh)
{
    using Triangle = typename Graph::TriangleRecord;
    struct Waiting {
        Triangle* triangle; // the first triangle on the side; null once linked
        int side;
    };
    const std::size_t numVertices = mesh.GetNumVertices();
    std::vector<Triangle*> made;
    made.reserve(mesh.GetNumTriangles());
    std::unordered_map<std::uint64_t, Waiting> sides;
    sides.reserve(3 * static_cast<std::size_t>(mesh.GetNumTriangles()) / 2 + 1);
    try {
        for (const Geometry::CTriangulation::Triangle& corners : mesh.GetTriangles()) {
            if (!IsGraphTriangle(corners, numVertices)) continue;
            Triangle* triangle = Graph::InitNewTriangle();
            made.push_back(triangle);
            for (int c = 0; c < 3; ++c) triangle->Vertex[c] = static_cast<std::int32_t>(corners[c]);
            for (int s = 0; s < 3; ++s) {
                const auto [at, first] = sides.try_emplace(
                    detail::SideKey(triangle->Vertex[s], triangle->Vertex[(s + 1) % 3]), Waiting{triangle, s});
                if (first || at->second.triangle == nullptr) continue;
                triangle->Neighbour[s] = at->second.triangle;
                at->second.triangle->Neighbour[at->second.side] = triangle;
                at->second.triangle = nullptr;
            }
        }
    } catch (...) {
        for (Triangle* triangle : made) Graph::DeleteTriangle(triangle);
        throw;
    }
    return made;
}

// Writes the mesh that `makeMesh` returns to the file at `path`, created or
// emptied, through a storing archive with a buffer of 4096 bytes, and frees
// the mesh. `makeMesh` is called only once the file is open, and may return
// null for a triangulation without triangles: the file then holds an empty
// mesh, which reads back as one, rather than nothing that a reader would
// take. A file that does not open is passed over in silence. A write that
// fails throws what the file or the archive throws.
VEKDLL_API void ExportIndexedMeshFile(const CString& path, const std::function<Geometry::CTriangulation*()>& makeMesh);

// Reads the mesh of the file at `path` into `mesh`; false, with `mesh`
// untouched, when the file does not open. A file that is not a whole mesh
// throws CArchiveException, and `mesh` is untouched then too.
VEKDLL_API bool ImportIndexedMeshFile(const CString& path, Geometry::CTriangulation& mesh);

} // namespace vek
