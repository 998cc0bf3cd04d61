// Compacting an indexed mesh: invalid and collapsed triangles out, unused
// vertices out, coincident vertices optionally merged.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <numeric>
#include <tuple>
#include <vector>

#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/indexed_mesh/c_triangulation_data.h"

namespace {

using Triangle = Geometry::CTriangulation::Triangle;

constexpr unsigned int kUnused = ~0u;

// A position as three integers that order totally, NaNs included (sorting
// floats that may be NaN would break the sort), with -0 taken as +0 since
// the two are the same place.
std::tuple<std::uint32_t, std::uint32_t, std::uint32_t> PositionKey(const QbVector3f& p)
{
    const auto bits = [](float v) { return std::bit_cast<std::uint32_t>(v == 0.0f ? 0.0f : v); };
    return {bits(p.x), bits(p.y), bits(p.z)};
}

// For each vertex the vertex it stands for: itself, or with merging the
// first vertex at the same position.
std::vector<unsigned int> Representatives(const SMemoryBlock<QbVector3f>& positions, bool merge)
{
    std::vector<unsigned int> rep(positions.size());
    std::iota(rep.begin(), rep.end(), 0u);
    if (!merge) return rep;
    std::vector<unsigned int> order = rep;
    std::ranges::sort(order, [&](unsigned int a, unsigned int b) {
        return std::tuple(PositionKey(positions[a]), a) < std::tuple(PositionKey(positions[b]), b);
    });
    for (std::size_t k = 1; k < order.size(); ++k) {
        if (PositionKey(positions[order[k]]) == PositionKey(positions[order[k - 1]])) rep[order[k]] = rep[order[k - 1]];
    }
    return rep;
}

// The triangle through the representatives, or false when it names a vertex
// outside the mesh or, after merging, one vertex twice.
bool MapTriangle(const Triangle& t, const std::vector<unsigned int>& rep, Triangle& mapped)
{
    for (int c = 0; c < 3; ++c) {
        if (t[c] >= rep.size()) return false;
        mapped[c] = rep[t[c]];
    }
    return mapped[0] != mapped[1] && mapped[1] != mapped[2] && mapped[0] != mapped[2];
}

// Keeps the elements whose new index is not kUnused, each at that index.
template <class T>
SMemoryBlock<T> Renumbered(const SMemoryBlock<T>& block, const std::vector<unsigned int>& newIndex, unsigned int count)
{
    if (block.empty()) return {};
    SMemoryBlock<T> out(count);
    for (std::size_t v = 0; v < newIndex.size(); ++v) {
        if (newIndex[v] != kUnused) out[newIndex[v]] = block[v];
    }
    return out;
}

} // namespace

namespace Geometry {

void CTriangulation::Compact(bool mergeCoincidentVertices)
{
    if (!data_) return;
    Data& data = Own();
    const std::vector<unsigned int> rep = Representatives(data.positions, mergeCoincidentVertices);

    std::vector<unsigned int> keptTriangle(data.triangles.size(), kUnused);
    std::vector<Triangle> triangles;
    std::vector<unsigned int> newVertex(data.positions.size(), kUnused);
    for (std::size_t i = 0; i < data.triangles.size(); ++i) {
        Triangle mapped;
        if (!MapTriangle(data.triangles[i], rep, mapped)) continue;
        keptTriangle[i] = static_cast<unsigned int>(triangles.size());
        triangles.push_back(mapped);
        for (unsigned int v : mapped) newVertex[v] = 0;
    }
    unsigned int numVertices = 0;
    for (unsigned int& v : newVertex) {
        if (v != kUnused) v = numVertices++;
    }

    SMemoryBlock<Triangle> renumbered(triangles.size());
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        for (int c = 0; c < 3; ++c) renumbered[i][c] = newVertex[triangles[i][c]];
    }
    // Everything is built before anything is replaced, so that running out
    // of memory leaves the mesh as it was.
    Data compacted{Renumbered(data.positions, newVertex, numVertices), std::move(renumbered),
                   Renumbered(data.attributes, keptTriangle, static_cast<unsigned int>(triangles.size())),
                   Renumbered(data.normals, newVertex, numVertices)};
    data = std::move(compacted);
}

} // namespace Geometry
