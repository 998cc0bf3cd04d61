// Sending a tile's triangles through a pipe, and building a surface of them.

#include "tile_exchange.h"

#include <unistd.h>

#include <cerrno>
#include <unordered_map>

namespace vek::tools {

namespace {

bool WriteAll(int fd, const void* data, std::size_t bytes)
{
    const auto* at = static_cast<const char*>(data);
    while (bytes > 0) {
        const ssize_t written = write(fd, at, bytes);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        at += written;
        bytes -= static_cast<std::size_t>(written);
    }
    return true;
}

bool ReadAll(int fd, void* data, std::size_t bytes)
{
    auto* at = static_cast<char*>(data);
    while (bytes > 0) {
        const ssize_t got = read(fd, at, bytes);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        at += got;
        bytes -= static_cast<std::size_t>(got);
    }
    return true;
}

template <class Number>
bool WriteArray(int fd, const std::vector<Number>& values)
{
    const auto count = static_cast<std::int64_t>(values.size());
    return WriteAll(fd, &count, sizeof count) && WriteAll(fd, values.data(), values.size() * sizeof(Number));
}

template <class Number>
bool ReadArray(int fd, std::vector<Number>& values)
{
    std::int64_t count = 0;
    // No tile holds anywhere near a billion numbers.
    if (!ReadAll(fd, &count, sizeof count) || count < 0 || count > (std::int64_t{1} << 30)) return false;
    values.resize(static_cast<std::size_t>(count));
    return ReadAll(fd, values.data(), values.size() * sizeof(Number));
}

} // namespace

TileMesh MeshOf(ZrCIncrementalDelaunay2D& surface, double seconds, double cpuSeconds)
{
    TileMesh mesh;
    mesh.Seconds = seconds;
    mesh.CpuSeconds = cpuSeconds;
    for (int i = 0; i < surface.GetNumVertices(); ++i) {
        const SSEPoint p = surface.GetVertex(i);
        mesh.Coordinates.insert(mesh.Coordinates.end(), {p.x, p.y, p.z});
    }
    CList<t_hdelaunaytriangle*>& triangles = surface.GetFinalList();
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* t = triangles.GetNext(pos);
        mesh.Corners.insert(mesh.Corners.end(), {t->Vertex[0], t->Vertex[1], t->Vertex[2]});
    }
    return mesh;
}

bool WriteTileMesh(int fd, const TileMesh& mesh)
{
    return WriteAll(fd, &mesh.Seconds, sizeof mesh.Seconds) && WriteAll(fd, &mesh.CpuSeconds, sizeof mesh.CpuSeconds) &&
           WriteArray(fd, mesh.Coordinates) &&
           WriteArray(fd, mesh.Corners);
}

bool ReadTileMesh(int fd, TileMesh& mesh)
{
    return ReadAll(fd, &mesh.Seconds, sizeof mesh.Seconds) && ReadAll(fd, &mesh.CpuSeconds, sizeof mesh.CpuSeconds) &&
           ReadArray(fd, mesh.Coordinates) &&
           ReadArray(fd, mesh.Corners) && mesh.Coordinates.size() % 3 == 0 && mesh.Corners.size() % 3 == 0;
}

ZrCIncrementalDelaunay2D* SurfaceOf(const TileMesh& mesh)
{
    const int vertices = static_cast<int>(mesh.Coordinates.size() / 3);
    auto* surface = new ZrCIncrementalDelaunay2D(vertices);
    for (int i = 0; i < vertices; ++i) {
        SSEPoint p;
        p.sse = _mm_setr_ps(mesh.Coordinates[3 * i], mesh.Coordinates[3 * i + 1], mesh.Coordinates[3 * i + 2], 0.0f);
        surface->AppendVertex(p);
    }
    // Each side is met once from each of its two triangles.
    std::unordered_map<std::uint64_t, std::pair<t_hdelaunaytriangle*, int>> waiting;
    const auto sideKey = [](std::int32_t a, std::int32_t b) {
        const auto lo = static_cast<std::uint32_t>(a < b ? a : b);
        const auto hi = static_cast<std::uint32_t>(a < b ? b : a);
        return (static_cast<std::uint64_t>(lo) << 32) | hi;
    };
    for (std::size_t k = 0; k + 2 < mesh.Corners.size(); k += 3) {
        t_hdelaunaytriangle* t = ZrCIncrementalDelaunay2D::InitNewTriangle();
        bool valid = true;
        for (int c = 0; c < 3; ++c) {
            t->Vertex[c] = mesh.Corners[k + static_cast<std::size_t>(c)];
            valid = valid && t->Vertex[c] >= 0 && t->Vertex[c] < vertices;
        }
        if (!valid) {
            ZrCIncrementalDelaunay2D::DeleteTriangle(t);
            continue;
        }
        for (int side = 0; side < 3; ++side) {
            const std::uint64_t key = sideKey(t->Vertex[side], t->Vertex[(side + 1) % 3]);
            const auto [match, fresh] = waiting.try_emplace(key, t, side);
            if (fresh) continue;
            t->Neighbour[side] = match->second.first;
            match->second.first->Neighbour[match->second.second] = t;
            waiting.erase(match);
        }
        surface->AppendTriangle(t);
    }
    surface->UpdateCircles();
    surface->FinalizeTriangleList();
    return surface;
}

} // namespace vek::tools
