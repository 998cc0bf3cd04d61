#pragma once

// Surfaces for the scan-conversion tests, built directly as triangle
// records, and an independent reading of the resulting fields.

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::test {

inline SSEPoint P(float x, float y, float z = 0.0f)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, 0.0f);
    return p;
}

// Appends vertices a, b, c and one triangle over them to the working list.
inline t_hdelaunaytriangle* AddTriangle(ZrCIncrementalDelaunay2D& d, SSEPoint a, SSEPoint b, SSEPoint c)
{
    const int first = d.GetNumVertices();
    d.AppendVertex(a);
    d.AppendVertex(b);
    d.AppendVertex(c);
    t_hdelaunaytriangle* t = ZrCIncrementalDelaunay2D::InitNewTriangle();
    t->Vertex[0] = first;
    t->Vertex[1] = first + 1;
    t->Vertex[2] = first + 2;
    d.AppendTriangle(t);
    return t;
}

// A square x0 ... x0 + size, y0 ... y0 + size at height z, as two triangles.
inline void AddSquare(ZrCIncrementalDelaunay2D& d, float x0, float y0, float size, float z)
{
    AddTriangle(d, P(x0, y0, z), P(x0 + size, y0, z), P(x0 + size, y0 + size, z));
    AddTriangle(d, P(x0, y0, z), P(x0 + size, y0 + size, z), P(x0, y0 + size, z));
}

// Stores the grid points (i, j, f(i, j)) for 0 <= i, j <= n, row by row, and
// triangulates them from the corners of the box.
inline void TriangulateGrid(ZrCIncrementalDelaunay2D& d, int n, const std::function<float(float, float)>& f)
{
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            const float x = static_cast<float>(i);
            const float y = static_cast<float>(j);
            d.AppendVertex(P(x, y, f(x, y)));
        }
    }
    d.Triangulate(d.GetNumVertices(), true, true);
    d.CalcBoundingBox();
}

inline std::uint32_t Bits(float v)
{
    std::uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}

// The image cells of a field, row by row, as bit patterns.
inline std::vector<std::uint32_t> CellBits(const CSSEMatrix& m)
{
    std::vector<std::uint32_t> bits;
    for (int y = 0; y < m.GetSizeY(); ++y)
        for (int x = 0; x < m.GetSizeX(); ++x) bits.push_back(Bits(m.GetPoint(x, y)));
    return bits;
}

inline float SentinelOf(bool keepMax)
{
    return keepMax ? -999999.9f : 999999.9f;
}

// A field of the given size with every cell the sentinel, for calling a
// sampler by hand.
inline void SentinelField(CSSEMatrix& m, int sizeX, int sizeY, bool keepMax)
{
    m.Create(sizeX, sizeY);
    for (int y = 0; y < sizeY; ++y)
        for (int x = 0; x < sizeX; ++x) m.SetPoint(x, y, SentinelOf(keepMax));
}

// What a cell reads once the untouched ones are given the background.
inline void ReplaceSentinel(CSSEMatrix& m, bool keepMax, float background)
{
    for (int y = 0; y < m.GetSizeY(); ++y) {
        for (int x = 0; x < m.GetSizeX(); ++x) {
            const float d = SentinelOf(keepMax) - m.GetPoint(x, y);
            if (-1.0f < d && d < 1.0f) m.SetPoint(x, y, background);
        }
    }
}

} // namespace vek::test
