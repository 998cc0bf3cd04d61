#include "mesh_file.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "output_files.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::tools {

namespace {

// Twice the signed area of a triangle in x-y: positive counter-clockwise.
double TwiceArea(const WorldMesh& mesh, const std::array<int, 3>& t)
{
    const auto& a = mesh.vertices[t[0]];
    const auto& b = mesh.vertices[t[1]];
    const auto& c = mesh.vertices[t[2]];
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

template <typename T>
void PutLittleEndian(std::string& bytes, T value)
{
    unsigned char raw[sizeof(T)];
    std::memcpy(raw, &value, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) std::reverse(raw, raw + sizeof(T));
    bytes.append(reinterpret_cast<const char*>(raw), sizeof(T));
}

} // namespace

WorldMesh MeshInWorld(ZrCIncrementalDelaunay2D& triangulation, const HeightRaster& input,
                      const RoadSettings& settings, const Georeference& georeference)
{
    std::vector<const t_hdelaunaytriangle*> finals;
    std::vector<int> renumbered(static_cast<std::size_t>(triangulation.GetNumVertices()), -1);
    CList<t_hdelaunaytriangle*>& list = triangulation.GetFinalList();
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* t = list.GetNext(pos);
        if (t == nullptr) continue;
        finals.push_back(t);
        for (int corner : t->Vertex) renumbered[static_cast<std::size_t>(corner)] = 0;
    }

    WorldMesh mesh;
    for (std::size_t i = 0; i < renumbered.size(); ++i) {
        if (renumbered[i] < 0) continue;
        renumbered[i] = static_cast<int>(mesh.vertices.size());
        const RasterPoint p = OnInput(triangulation.GetVertex(static_cast<int>(i)), input, settings);
        mesh.vertices.push_back({georeference.X(p.column), georeference.Y(p.row), p.height});
    }
    for (const t_hdelaunaytriangle* t : finals) {
        std::array<int, 3> corners{renumbered[static_cast<std::size_t>(t->Vertex[0])],
                                   renumbered[static_cast<std::size_t>(t->Vertex[1])],
                                   renumbered[static_cast<std::size_t>(t->Vertex[2])]};
        if (TwiceArea(mesh, corners) < 0.0) std::swap(corners[1], corners[2]);
        mesh.triangles.push_back(corners);
    }
    mesh.note = "x east, y north, z up";
    if (!georeference.projectionName.empty()) mesh.note += "; " + georeference.projectionName;
    return mesh;
}

void WriteObj(const std::string& path, const WorldMesh& mesh)
{
    std::ofstream out = OpenForWriting(path, std::ios::openmode{});
    out << "# " << mesh.vertices.size() << " vertices, " << mesh.triangles.size() << " triangles; " << mesh.note
        << "\n";
    // Twelve digits keep a northing in the millions to the hundredth.
    out.precision(12);
    for (const auto& v : mesh.vertices) out << "v " << v[0] << ' ' << v[1] << ' ' << v[2] << '\n';
    for (const auto& t : mesh.triangles) out << "f " << t[0] + 1 << ' ' << t[1] + 1 << ' ' << t[2] + 1 << '\n';
    FinishWriting(out, path);
}

void WritePly(const std::string& path, const WorldMesh& mesh)
{
    std::string bytes = "ply\nformat binary_little_endian 1.0\ncomment " + mesh.note + "\nelement vertex " +
                        std::to_string(mesh.vertices.size()) +
                        "\nproperty double x\nproperty double y\nproperty double z\nelement face " +
                        std::to_string(mesh.triangles.size()) +
                        "\nproperty list uchar int vertex_indices\nend_header\n";
    bytes.reserve(bytes.size() + mesh.vertices.size() * 24 + mesh.triangles.size() * 13);
    for (const auto& v : mesh.vertices) {
        for (double c : v) PutLittleEndian(bytes, c);
    }
    for (const auto& t : mesh.triangles) {
        bytes.push_back(3);
        for (int i : t) PutLittleEndian(bytes, static_cast<std::int32_t>(i));
    }
    std::ofstream out = OpenForWriting(path);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    FinishWriting(out, path);
}

} // namespace vek::tools
