#pragma once

// Surfaces and rasters for the refinement and deletion tests: squares and
// grids triangulated from their corners, fields filled by a rule, and the
// checks that a surface is still one valid graph.

#include <array>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "surface/triangulation_checks.h"
#include "vekdll/fields/sse_matrix.h"

namespace vek::test {

inline CList<t_hdelaunaytriangle*>& PresentTriangles(ZrCIncrementalDelaunay2D& d)
{
    return d.IsFinalized() ? d.GetFinalList() : d.GetTriangleList();
}

// A field of sizeX x sizeY cells with value(x, y) in every cell.
inline CSSEMatrix Field(int sizeX, int sizeY, const std::function<float(int, int)>& value)
{
    CSSEMatrix field;
    field.Create(sizeX, sizeY);
    for (int y = 0; y < sizeY; ++y)
        for (int x = 0; x < sizeX; ++x) field.SetPoint(x, y, value(x, y));
    return field;
}

inline CSSEMatrix Constant(int sizeX, int sizeY, float value)
{
    return Field(sizeX, sizeY, [value](int, int) { return value; });
}

// The square 0 .. s with corners 0 (0, 0), 1 (s, 0), 2 (0, s), 3 (s, s) at
// the given heights, finalized as two triangles: (1, 2, 0) with centroid
// (s/3, s/3) and (2, 1, 3) with centroid (2s/3, 2s/3).
inline void Square(ZrCIncrementalDelaunay2D& d, float s, const std::array<float, 4>& z = {0, 0, 0, 0})
{
    d.AppendVertex(P(0, 0, z[0]));
    d.AppendVertex(P(s, 0, z[1]));
    d.AppendVertex(P(0, s, z[2]));
    d.AppendVertex(P(s, s, z[3]));
    d.Triangulate(d.GetNumVertices(), true, true);
}

// The lattice x0 .. x0 + n by y0 .. y0 + n at unit steps, height(x, y),
// triangulated and finalized; vertex (i, j) has index j * (n + 1) + i.
inline void Grid(ZrCIncrementalDelaunay2D& d, int x0, int y0, int n,
                 const std::function<float(float, float)>& height = [](float, float) { return 0.0f; })
{
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i <= n; ++i) {
            const float x = static_cast<float>(x0 + i), y = static_cast<float>(y0 + j);
            d.AppendVertex(P(x, y, height(x, y)));
        }
    d.Triangulate(d.GetNumVertices(), true, true);
}

inline double TotalArea(ZrCIncrementalDelaunay2D& d)
{
    double area = 0.0;
    for (const t_hdelaunaytriangle* t : Triangles(PresentTriangles(d))) area += SignedArea(d, t);
    return area;
}

// "" when every link is returned across the same side and every triangle
// turns counter-clockwise; else the first fault.
inline std::string SurfaceFault(ZrCIncrementalDelaunay2D& d)
{
    const std::vector<t_hdelaunaytriangle*> all = Triangles(PresentTriangles(d));
    const std::string links = LinkFault(all);
    if (!links.empty()) return links;
    for (const t_hdelaunaytriangle* t : all) {
        if (!(SignedArea(d, t) > 0.0)) return "a triangle turns clockwise or is flat";
    }
    return "";
}

inline std::multiset<std::set<int>> PresentCornerSets(ZrCIncrementalDelaunay2D& d)
{
    return CornerSets(PresentTriangles(d));
}

} // namespace vek::test
