#pragma once

// Indexed meshes for the tests, built in one expression, and their blocks
// as plain lists to compare.

#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "vekdll/indexed_mesh/c_triangulation.h"

namespace vek::test {

using Triangle = Geometry::CTriangulation::Triangle;

template <class T>
SMemoryBlock<T> BlockOf(const std::vector<T>& items)
{
    SMemoryBlock<T> block(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) block[i] = items[i];
    return block;
}

inline Geometry::CTriangulation MeshOf(const std::vector<QbVector3f>& positions, const std::vector<Triangle>& triangles,
                                       const std::vector<unsigned int>& attributes = {},
                                       const std::vector<QbVector3f>& normals = {})
{
    return {static_cast<unsigned int>(positions.size()), static_cast<unsigned int>(triangles.size()), BlockOf(positions),
            BlockOf(triangles), BlockOf(attributes), BlockOf(normals)};
}

template <class T>
std::vector<T> ListOf(std::span<const T> items)
{
    return {items.begin(), items.end()};
}

// Floats as their bits, so that a round trip is checked bit for bit (NaN
// and -0 included).
inline std::vector<std::uint32_t> BitsOf(std::span<const QbVector3f> points)
{
    std::vector<std::uint32_t> bits(3 * points.size());
    if (!points.empty()) std::memcpy(bits.data(), points.data(), 4 * bits.size());
    return bits;
}

// The unit square in z = 0, counter-clockwise from above, as two triangles.
inline Geometry::CTriangulation UnitSquare()
{
    return MeshOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
}

// The corner tetrahedron O, X, Y, Z of the unit axes, every face outward.
inline Geometry::CTriangulation CornerTetrahedron()
{
    return MeshOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}});
}

// A height-field grid of nx x ny vertices with random heights, two
// triangles per cell, random attributes and arbitrary normals.
inline Geometry::CTriangulation RandomGrid(int nx, int ny, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> height(-50.0f, 50.0f);
    std::vector<QbVector3f> positions, normals;
    for (int y = 0; y < ny; ++y) {
        for (int x = 0; x < nx; ++x) {
            positions.push_back({static_cast<float>(x), static_cast<float>(y), height(random)});
            normals.push_back({height(random), height(random), height(random)});
        }
    }
    std::vector<Triangle> triangles;
    std::vector<unsigned int> attributes;
    for (int y = 0; y + 1 < ny; ++y) {
        for (int x = 0; x + 1 < nx; ++x) {
            const unsigned v = static_cast<unsigned>(y * nx + x), right = v + 1, up = v + static_cast<unsigned>(nx);
            triangles.push_back({v, right, up + 1});
            triangles.push_back({v, up + 1, up});
            attributes.push_back(random());
            attributes.push_back(random());
        }
    }
    return MeshOf(positions, triangles, attributes, normals);
}

} // namespace vek::test
