// The files of the exchange between a triangulation and the indexed mesh.

#include <memory>

#include "vekdll/indexed_mesh/stream_read_binary_file.h"
#include "vekdll/indexed_mesh/stream_write_binary_file.h"
#include "vekdll/indexed_mesh/triangulation_serializer.h"
#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_file.h"
#include "vekdll/surface/mesh_exchange.h"

namespace vek {

namespace {

// The archives of the exchange buffer this many bytes.
constexpr int kArchiveBuffer = 4096;

} // namespace

void ExportIndexedMeshFile(const CString& path, const std::function<Geometry::CTriangulation*()>& makeMesh)
{
    CFile file;
    if (!file.Open(path, CFile::modeCreate | CFile::modeWrite)) return;
    CArchive archive(&file, CArchive::store, kArchiveBuffer);
    QyStreamWriteBinaryFile stream(archive);
    const std::unique_ptr<Geometry::CTriangulation> mesh(makeMesh());
    CTriangulation_Serializer::Serialize(stream, mesh ? *mesh : Geometry::CTriangulation());
    archive.Close();
    file.Close();
}

bool ImportIndexedMeshFile(const CString& path, Geometry::CTriangulation& mesh)
{
    CFile file;
    if (!file.Open(path, CFile::modeRead)) return false;
    CArchive archive(&file, CArchive::load, kArchiveBuffer);
    QyStreamReadBinaryFile stream(archive);
    Geometry::CTriangulation read = CTriangulation_Serializer::Serialize(stream);
    archive.Close();
    file.Close();
    mesh = std::move(read);
    return true;
}

} // namespace vek
