// The indexed mesh reader on arbitrary bytes. Byte 0 chooses: bit 0 puts a
// good magic and version in front of the rest, so that the search reaches the
// counts and blocks at once; bit 1 merges coincident vertices in Compact. A
// refusal is CArchiveException. A mesh that is read must name only its own
// vertices, survive normals and Compact, and come back whole from a file of
// its own; anything else is a fault.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "vekdll/vekdll.h"

#include "fuzz_mesh_bytes.h"

namespace {

using vek::fuzz::ReadMesh;

std::vector<BYTE> Write(const Geometry::CTriangulation& mesh)
{
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        QyStreamWriteBinaryFile stream(ar);
        CTriangulation_Serializer::Serialize(stream, mesh);
        ar.Close();
    }
    return file.Detach();
}

template <class T>
bool SameBytes(std::span<const T> a, std::span<const T> b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size_bytes()) == 0);
}

bool SameMesh(const Geometry::CTriangulation& a, const Geometry::CTriangulation& b)
{
    return SameBytes(a.GetPositions(), b.GetPositions()) && SameBytes(a.GetTriangles(), b.GetTriangles()) &&
           SameBytes(a.GetNormals(), b.GetNormals()) && SameBytes(a.GetAttributes(), b.GetAttributes());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1) return 0;
    const std::uint8_t choice = data[0];
    std::vector<BYTE> bytes = vek::fuzz::MeshFileBytes(data, size);

    Geometry::CTriangulation mesh;
    try {
        mesh = ReadMesh(bytes);
    } catch (const CArchiveException&) {
        return 0;
    }
    if (!mesh.HasValidIndices()) __builtin_trap();
    if (!SameMesh(ReadMesh(Write(mesh)), mesh)) __builtin_trap();

    const Geometry::CTriangulation original(mesh);
    QyMpTriangulationNormals::Compute(mesh);
    mesh.Compact((choice & 2) != 0);
    if (mesh.GetNumVertices() > original.GetNumVertices() || mesh.GetNumTriangles() > original.GetNumTriangles()) {
        __builtin_trap();
    }
    if (!SameMesh(ReadMesh(Write(mesh)), mesh)) __builtin_trap();
    // The copy taken before is untouched by what was done to the mesh.
    if (original.getReferenceCounter() != 1 || !SameMesh(original, ReadMesh(bytes))) __builtin_trap();
    return 0;
}
