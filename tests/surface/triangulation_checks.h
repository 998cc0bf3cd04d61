#pragma once

// Small surfaces built by hand, and checks of a triangulation computed in
// double from the vertices alone, independent of the library's own operations.

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "support/sse_lanes.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::test {

inline SSEPoint P(float x, float y, float z = 0.0f) { return Sse(x, y, z); }

// A triangle over existing vertices a, b, c, appended to the working list.
inline t_hdelaunaytriangle* AddTriangle(ZrCIncrementalDelaunay2D& d, int a, int b, int c)
{
    t_hdelaunaytriangle* t = ZrCIncrementalDelaunay2D::InitNewTriangle();
    std::tie(t->Vertex[0], t->Vertex[1], t->Vertex[2]) = std::tuple(a, b, c);
    d.AppendTriangle(t);
    return t;
}

// A record over vertices a, b, c that belongs to no list.
inline t_hdelaunaytriangle Unlisted(int a, int b, int c)
{
    t_hdelaunaytriangle t{};
    std::tie(t.Vertex[0], t.Vertex[1], t.Vertex[2]) = std::tuple(a, b, c);
    return t;
}

// Appends vertices a, b, c and one triangle over them.
inline t_hdelaunaytriangle* AddTriangle(ZrCIncrementalDelaunay2D& d, SSEPoint a, SSEPoint b, SSEPoint c)
{
    const int first = d.GetNumVertices();
    for (const SSEPoint& p : {a, b, c}) d.AppendVertex(p);
    return AddTriangle(d, first, first + 1, first + 2);
}

struct Point2 {
    double x, y;
};

inline std::vector<int> CornersOf(const t_hdelaunaytriangle* t) { return {t->Vertex[0], t->Vertex[1], t->Vertex[2]}; }

inline std::vector<t_hdelaunaytriangle*> Triangles(CList<t_hdelaunaytriangle*>& list)
{
    std::vector<t_hdelaunaytriangle*> out;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) out.push_back(list.GetNext(pos));
    return out;
}

inline Point2 At(const ZrCIncrementalDelaunay2D& d, int i) { return {d.GetVertex(i).x, d.GetVertex(i).y}; }

inline double Cross(const Point2& o, const Point2& a, const Point2& b)
{
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

inline double SignedArea(const ZrCIncrementalDelaunay2D& d, const t_hdelaunaytriangle* t)
{
    return Cross(At(d, t->Vertex[0]), At(d, t->Vertex[1]), At(d, t->Vertex[2])) / 2.0;
}

inline std::set<int> Corners(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    std::set<int> corners;
    for (const t_hdelaunaytriangle* t : triangles) corners.insert(t->Vertex, t->Vertex + 3);
    return corners;
}

inline std::multiset<std::set<int>> CornerSets(CList<t_hdelaunaytriangle*>& list)
{
    std::multiset<std::set<int>> sets;
    for (t_hdelaunaytriangle* t : Triangles(list)) sets.insert(Corners({t}));
    return sets;
}

// Every link is returned by the neighbour, across a side with the same two
// vertices. Returns a description of the first fault, or "".
inline std::string LinkFault(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    const std::set<const t_hdelaunaytriangle*> live(triangles.begin(), triangles.end());
    const auto side = [](const auto* r, int k) { return std::set{r->Vertex[k], r->Vertex[(k + 1) % 3]}; };
    for (const t_hdelaunaytriangle* t : triangles) {
        for (int s = 0; s < 3; ++s) {
            const t_hdelaunaytriangle* n = t->Neighbour[s];
            if (n == nullptr) continue;
            if (live.count(n) == 0) return "link to a triangle outside the list";
            bool returned = false;
            for (int k = 0; k < 3; ++k) returned = returned || (n->Neighbour[k] == t && side(n, k) == side(t, s));
            if (!returned) return "link not returned across the same side";
        }
    }
    return "";
}

inline int OpenSides(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    int open = 0;
    for (const t_hdelaunaytriangle* t : triangles) open += static_cast<int>(std::ranges::count(t->Neighbour, nullptr));
    return open;
}

// Lists of border edges that free their edges and themselves.
struct EdgeLists {
    CList<CList<t_hdelaunayedge*>*> lists;
    ~EdgeLists()
    {
        while (!lists.IsEmpty()) {
            CList<t_hdelaunayedge*>* list = lists.RemoveHead();
            ZrCIncrementalDelaunay2D::ClearEdgeList(list);
            delete list;
        }
    }
};

// The corners and the neighbour slots (as list positions, -1 for none) of
// every triangle in list order: equal for two lists only if both hold the
// same triangles in the same order with the same links.
inline std::vector<long> ListShape(CList<t_hdelaunaytriangle*>& list)
{
    const std::vector<t_hdelaunaytriangle*> triangles = Triangles(list);
    std::vector<long> shape;
    for (const t_hdelaunaytriangle* t : triangles) {
        shape.insert(shape.end(), t->Vertex, t->Vertex + 3);
        for (const t_hdelaunaytriangle* n : t->Neighbour) {
            shape.push_back(n == nullptr ? -1 : std::find(triangles.begin(), triangles.end(), n) - triangles.begin());
        }
    }
    return shape;
}

} // namespace vek::test
