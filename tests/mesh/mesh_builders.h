#pragma once

// Small meshes built by hand for the mesh tests.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <vector>

#include "support/sse_lanes.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/mesh/triangulation.h"

namespace vek::test {

struct Corner {
    float x, y, z;
};
using Triangle = std::array<Corner, 3>;

// A mesh of the given triangles, everything else as CreateTriangulation leaves it.
inline void Fill(CHTriangulation& mesh, const std::vector<Triangle>& triangles)
{
    mesh.CreateTriangulation(static_cast<int>(triangles.size()));
    for (int i = 0; i < static_cast<int>(triangles.size()); ++i) {
        t_htriangle* t = mesh.GetTriangle(i);
        SSEPoint* corners[3] = {t->P0, t->P1, t->P2};
        for (int c = 0; c < 3; ++c) *corners[c] = Sse(triangles[i][c].x, triangles[i][c].y, triangles[i][c].z);
    }
}

inline void ExpectNear(const Lanes4& actual, const Lanes4& expected, float tolerance = 1e-6f)
{
    for (int lane = 0; lane < 4; ++lane) EXPECT_NEAR(actual[lane], expected[lane], tolerance) << "lane " << lane;
}

} // namespace vek::test

namespace vek::test {

// A field of the given size with pixel (x, y) = height(x, y); padding lanes 0.
inline void FillField(CSSEMatrix& field, int width, int height, const std::function<float(int, int)>& value)
{
    field.Create(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) field.SetPoint(x, y, value(x, y));
    }
}

inline Lanes4 CornerLanes(const t_htriangle& t, int corner)
{
    const SSEPoint* corners[3] = {t.P0, t.P1, t.P2};
    return Lanes(*corners[corner]);
}

// The three corners of a triangle as one list of lanes, for comparisons.
inline std::array<Lanes4, 3> Corners(const t_htriangle& t)
{
    return {Lanes(*t.P0), Lanes(*t.P1), Lanes(*t.P2)};
}

} // namespace vek::test
