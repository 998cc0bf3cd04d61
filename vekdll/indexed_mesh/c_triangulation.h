#pragma once

#include <array>
#include <memory>
#include <span>

#include "vekdll/export.h"
#include "vekdll/indexed_mesh/memory_block.h"
#include "vekdll/indexed_mesh/vector3f.h"

namespace Geometry {

// An indexed triangle mesh: vertex positions, and triangles as triples of
// vertex indices, each met counter-clockwise when seen from the side its
// normal points to. Two optional blocks ride along:
//   - per-vertex normals, one unit vector per vertex (QyMpTriangulationNormals
//     computes them), or none;
//   - per-triangle attributes, one unsigned label per triangle that the mesh
//     carries through copies, Compact and files without reading it (a
//     material, a patch or the source of a triangle), or none.
//
// Copies share their data and count each other (getReferenceCounter); the
// first change to a shared mesh gives it a private copy, so a copy never
// sees what is done to the other. The triangles are taken as they come:
// indices outside the vertices are kept until Compact drops them, and every
// operation here reads past no block because of them.
class VEKDLL_API CTriangulation {
public:
    using Triangle = std::array<unsigned int, 3>;

    CTriangulation();
    // A mesh of the first `numVertices` positions and normals and the first
    // `numTriangles` triangles and attributes; longer blocks are cut to those
    // counts, so a block may be allocated before its final count is known.
    // `normals` and `attributes` may be empty for none. A block shorter than
    // its count throws CInvalidArgException: the mesh would have to invent
    // what is missing.
    CTriangulation(unsigned int numVertices, unsigned int numTriangles, SMemoryBlock<QbVector3f> positions,
                   SMemoryBlock<Triangle> triangles, SMemoryBlock<unsigned int> attributes,
                   SMemoryBlock<QbVector3f> normals);
    // Shares `other`'s data.
    CTriangulation(const CTriangulation& other);
    // Takes `other`'s data and leaves it empty.
    CTriangulation(CTriangulation&& other) noexcept;
    ~CTriangulation();
    CTriangulation& operator=(const CTriangulation& other);
    CTriangulation& operator=(CTriangulation&& other) noexcept;

    // How many meshes hold this mesh's data, itself included: 1 for a mesh
    // that shares nothing, an empty one too.
    int getReferenceCounter() const;

    unsigned int GetNumVertices() const;
    unsigned int GetNumTriangles() const;
    std::span<const QbVector3f> GetPositions() const;
    std::span<const Triangle> GetTriangles() const;
    // Empty, or one per vertex.
    std::span<const QbVector3f> GetNormals() const;
    // Empty, or one per triangle.
    std::span<const unsigned int> GetAttributes() const;
    bool HasNormals() const { return !GetNormals().empty(); }
    bool HasAttributes() const { return !GetAttributes().empty(); }
    // True when every index names one of the vertices.
    bool HasValidIndices() const;

    // Replaces the normals: a block of one normal per vertex (a longer one is
    // cut), or an empty block for none. A shorter block throws
    // CInvalidArgException.
    void SetNormals(SMemoryBlock<QbVector3f> normals);

    // Drops every triangle that names a vertex outside the mesh or one vertex
    // twice, then every vertex that no remaining triangle names, and numbers
    // the remaining vertices afresh in their old order; triangles keep their
    // order, and attributes and normals follow their triangle and vertex.
    // With `mergeCoincidentVertices`, vertices at bit-for-bit the same
    // position (+0 and -0 alike) become the first of them before that, so the
    // triangles they collapse drop too; the survivor keeps its own normal.
    // Triangles of three distinct vertices stay even when their corners are
    // collinear: dropping them would open a crack wherever a neighbour
    // names the middle corner.
    void Compact(bool mergeCoincidentVertices);

    // What the mesh holds, shared between copies; opaque outside the library.
    struct Data;

private:
    // Data for a change: a private copy when another mesh shares it.
    Data& Own();

    // Null for an empty mesh, so that a default or moved-from mesh holds
    // nothing and moving never allocates.
    std::shared_ptr<Data> data_;
};

} // namespace Geometry
