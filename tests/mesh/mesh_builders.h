#pragma once

// Building small meshes by hand for the mesh tests.

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "vekdll/mesh/triangulation.h"

namespace vek::test {

struct Corner {
    float x;
    float y;
    float z;
};
using Triangle = std::array<Corner, 3>;

inline SSEPoint Sse(float x, float y, float z, float w = 0.0f)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, w);
    return p;
}

inline SSEPoint Sse(const Corner& c)
{
    return Sse(c.x, c.y, c.z);
}

// A mesh of the given triangles, corners as listed, everything else as
// CreateTriangulation leaves it.
inline void Fill(CHTriangulation& mesh, const std::vector<Triangle>& triangles)
{
    mesh.CreateTriangulation(static_cast<int>(triangles.size()));
    for (int i = 0; i < static_cast<int>(triangles.size()); ++i) {
        t_htriangle* t = mesh.GetTriangle(i);
        *t->P0 = Sse(triangles[i][0]);
        *t->P1 = Sse(triangles[i][1]);
        *t->P2 = Sse(triangles[i][2]);
    }
}

inline void ExpectSamePoint(const SSEPoint& actual, const SSEPoint& expected, const char* what = "")
{
    for (int lane = 0; lane < 4; ++lane) EXPECT_EQ(actual.lane[lane], expected.lane[lane]) << what << " lane " << lane;
}

inline void ExpectNearPoint(const SSEPoint& actual, const SSEPoint& expected, float tolerance, const char* what = "")
{
    for (int lane = 0; lane < 4; ++lane) {
        EXPECT_NEAR(actual.lane[lane], expected.lane[lane], tolerance) << what << " lane " << lane;
    }
}

// A grid of columns x rows full cells of unit size, each split by
// AppendTriangle, heights from `height(x, y)` at the grid points.
template <class Height>
void FillGrid(CHTriangulation& mesh, int columns, int rows, Height height)
{
    mesh.CreateTriangulation(2 * columns * rows);
    int index = 0;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const float x0 = static_cast<float>(x), x1 = x0 + 1.0f;
            const float y0 = static_cast<float>(y), y1 = y0 + 1.0f;
            mesh.AppendTriangle(3, 3, x0, x1, y0, y1, height(x, y), height(x, y + 1), height(x + 1, y),
                                height(x + 1, y + 1), index, false, false);
        }
    }
}

} // namespace vek::test
