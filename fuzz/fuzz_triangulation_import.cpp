// Triangulation files from arbitrary bytes, through the adaptive
// triangulation's import. Byte 0 chooses: bit 0 puts a good magic, version
// and no flags in front of the rest, so that the search reaches the counts
// and blocks at once; bit 1 goes through a file on disk and
// ImportDelaunayTriangle, else the bytes are read in memory and handed to
// CreateDelaunayTriangulationFromCTriangulation; bit 2 leaves the result in
// the working state (memory path only). A refusal is CArchiveException, and
// must leave the triangulation as it was. A graph that is read must link
// every side both ways across the same two vertices, name only its own
// vertices, keep each mesh triangle of three distinct vertices in order, and
// give that mesh back; anything else is a fault.

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "vekdll/vekdll.h"

#include "fuzz_mesh_bytes.h"

namespace {

using vek::fuzz::ReadMesh;

const std::string& FilePath()
{
    static const std::string path = "/tmp/fuzz_triangulation_import_" + std::to_string(::getpid()) + ".bin";
    return path;
}

void WriteFile(const std::vector<BYTE>& bytes)
{
    std::FILE* file = std::fopen(FilePath().c_str(), "wb");
    if (file == nullptr) __builtin_trap();
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) __builtin_trap();
    std::fclose(file);
}

// A surface to be replaced: a refused file must leave it as it is.
void Seed(ZrCIncrementalDelaunay2D& d)
{
    d.CreateVertexArray(4);
    for (float x : {0.0f, 1.0f}) {
        for (float y : {0.0f, 1.0f}) {
            SSEPoint p;
            p.sse = _mm_setr_ps(x, y, x + y, 0.0f);
            d.AppendVertex(p);
        }
    }
    d.Triangulate(4, true, false);
}

std::vector<int> Shape(ZrCIncrementalDelaunay2D& d)
{
    std::vector<int> shape{d.GetNumVertices(), d.IsFinalized() ? 1 : 0};
    for (CList<t_hdelaunaytriangle*>* list : {&d.GetFinalList(), &d.GetTriangleList()}) {
        for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
            const t_hdelaunaytriangle* t = list->GetNext(pos);
            shape.insert(shape.end(), t->Vertex, t->Vertex + 3);
        }
        shape.push_back(-1);
    }
    return shape;
}

bool SameSide(const t_hdelaunaytriangle* a, int s, const t_hdelaunaytriangle* b, int k)
{
    const int a0 = a->Vertex[s], a1 = a->Vertex[(s + 1) % 3];
    const int b0 = b->Vertex[k], b1 = b->Vertex[(k + 1) % 3];
    return (a0 == b0 && a1 == b1) || (a0 == b1 && a1 == b0);
}

void CheckGraph(ZrCIncrementalDelaunay2D& d, const Geometry::CTriangulation& mesh, bool finalized)
{
    if (d.IsFinalized() != finalized) __builtin_trap();
    if (d.GetNumVertices() != static_cast<int>(mesh.GetNumVertices())) __builtin_trap();
    CList<t_hdelaunaytriangle*>& list = finalized ? d.GetFinalList() : d.GetTriangleList();
    std::vector<const t_hdelaunaytriangle*> triangles;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) triangles.push_back(list.GetNext(pos));

    std::size_t k = 0;
    for (const auto& corners : mesh.GetTriangles()) {
        if (!vek::IsGraphTriangle(corners, mesh.GetNumVertices())) continue;
        if (k >= triangles.size()) __builtin_trap();
        for (int c = 0; c < 3; ++c) {
            if (triangles[k]->Vertex[c] != static_cast<int>(corners[c])) __builtin_trap();
        }
        ++k;
    }
    if (k != triangles.size()) __builtin_trap();

    for (const t_hdelaunaytriangle* t : triangles) {
        for (int s = 0; s < 3; ++s) {
            const t_hdelaunaytriangle* n = t->Neighbour[s];
            if (n == nullptr) continue;
            bool returned = false;
            for (int j = 0; j < 3; ++j) returned = returned || (n->Neighbour[j] == t && SameSide(t, s, n, j));
            if (!returned) __builtin_trap();
        }
    }

    // A finalized graph gives back every triangle it took; a working one
    // none, as the mesh has room only for what FinalList holds.
    const std::unique_ptr<Geometry::CTriangulation> back(d.CreateCTriangulation());
    if (triangles.empty()) {
        if (back != nullptr) __builtin_trap();
        return;
    }
    if (back == nullptr || back->GetNumVertices() != mesh.GetNumVertices()) __builtin_trap();
    if (back->GetNumTriangles() != (finalized ? triangles.size() : 0)) __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1) return 0;
    const std::uint8_t choice = data[0];
    std::vector<BYTE> bytes = vek::fuzz::MeshFileBytes(data, size);
    const bool throughFile = (choice & 2) != 0;
    const bool finalize = throughFile || (choice & 4) == 0;

    ZrCIncrementalDelaunay2D d;
    Seed(d);
    const std::vector<int> before = Shape(d);
    Geometry::CTriangulation mesh;
    try {
        if (throughFile) {
            WriteFile(bytes);
            d.ImportDelaunayTriangle(FilePath());
        }
        mesh = ReadMesh(bytes);
    } catch (const CArchiveException&) {
        if (Shape(d) != before) __builtin_trap();
        return 0;
    }
    if (!throughFile) d.CreateDelaunayTriangulationFromCTriangulation(mesh, finalize);
    CheckGraph(d, mesh, finalize);
    return 0;
}
