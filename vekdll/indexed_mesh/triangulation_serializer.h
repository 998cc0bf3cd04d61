#pragma once

#include "vekdll/export.h"
#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/indexed_mesh/stream_read_binary.h"
#include "vekdll/indexed_mesh/stream_write_binary.h"

// Writes and reads an indexed mesh in its binary file format. All numbers
// are little-endian; floats are IEEE 754 single precision.
//
//   offset        bytes  content
//   0             8      magic: the letters "VEKMESH" and the byte 0x1A
//   8             4      format version, uint32: 1
//   12            4      flags, uint32: bit 0 vertex normals follow,
//                        bit 1 triangle attributes follow; other bits 0
//   16            4      vertex count V, uint32
//   20            4      triangle count T, uint32
//   24            12 V   positions: x, y, z of each vertex, float
//   24 + 12 V     12 T   triangles: three vertex indices each, uint32, < V
//   then          12 V   normals x, y, z of each vertex, float (flag bit 0)
//   then          4 T    attributes, one uint32 per triangle (flag bit 1)
//
// The mesh ends there; whatever follows in the stream is left for the next
// reader. The byte 0x1A ends the magic so that a file mangled by a text-mode
// transfer fails at once. Every block starts on a 4-byte boundary.
//
// The reader refuses, with CArchiveException: a wrong magic (badClass), a
// version other than 1 or an unknown flag (badSchema), counts that need more
// bytes than the stream has left, checked before anything is allocated, and
// an index outside the vertices (badIndex), and a stream that ends inside
// the header (endOfFile).
class VEKDLL_API CTriangulation_Serializer {
public:
    static constexpr unsigned int kVersion = 1;
    static constexpr unsigned int kHasNormals = 1;
    static constexpr unsigned int kHasAttributes = 2;

    // Throws CArchiveException(badIndex), before it writes a byte, for a mesh
    // with an index outside its vertices: no reader would take the file.
    static void Serialize(QbStreamWriteBinary& stream, const Geometry::CTriangulation& mesh);
    static Geometry::CTriangulation Serialize(QbStreamReadBinary& stream);
};
