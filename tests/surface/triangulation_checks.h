#pragma once

// Independent checks of a triangulation, computed in double from the
// vertices alone: they do not use the library's own orientation, circle or
// neighbour operations.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "vekdll/surface/incremental_delaunay.h"

namespace vek::test {

struct Point2 {
    double x;
    double y;
};

inline std::vector<t_hdelaunaytriangle*> Triangles(CList<t_hdelaunaytriangle*>& list)
{
    std::vector<t_hdelaunaytriangle*> out;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) out.push_back(list.GetNext(pos));
    return out;
}

inline Point2 At(const ZrCIncrementalDelaunay2D& d, int i)
{
    const SSEPoint p = d.GetVertex(i);
    return {p.x, p.y};
}

inline double Cross(const Point2& o, const Point2& a, const Point2& b)
{
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

inline double SignedArea(const ZrCIncrementalDelaunay2D& d, const t_hdelaunaytriangle* t)
{
    return Cross(At(d, t->Vertex[0]), At(d, t->Vertex[1]), At(d, t->Vertex[2])) / 2.0;
}

// Area of the convex hull by the monotone chain.
inline double HullArea(std::vector<Point2> points)
{
    std::sort(points.begin(), points.end(),
              [](const Point2& a, const Point2& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    if (points.size() < 3) return 0.0;
    std::vector<Point2> hull(2 * points.size());
    std::size_t k = 0;
    for (const Point2& p : points) {
        while (k >= 2 && Cross(hull[k - 2], hull[k - 1], p) <= 0) --k;
        hull[k++] = p;
    }
    for (std::size_t i = points.size() - 1, lower = k + 1; i-- > 0;) {
        while (k >= lower && Cross(hull[k - 2], hull[k - 1], points[i]) <= 0) --k;
        hull[k++] = points[i];
    }
    double area = 0.0;
    for (std::size_t i = 0; i + 1 < k; ++i) area += hull[i].x * hull[i + 1].y - hull[i + 1].x * hull[i].y;
    return area / 2.0;
}

// Every link is returned by the neighbour, across a side with the same two
// vertices. Returns a description of the first fault, or "".
inline std::string LinkFault(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    const std::set<const t_hdelaunaytriangle*> live(triangles.begin(), triangles.end());
    for (const t_hdelaunaytriangle* t : triangles) {
        for (int s = 0; s < 3; ++s) {
            const t_hdelaunaytriangle* n = t->Neighbour[s];
            if (n == nullptr) continue;
            if (live.count(n) == 0) return "link to a triangle outside the list";
            const std::set<int> side = {t->Vertex[s], t->Vertex[(s + 1) % 3]};
            bool returned = false;
            for (int k = 0; k < 3; ++k) {
                if (n->Neighbour[k] == t && std::set<int>{n->Vertex[k], n->Vertex[(k + 1) % 3]} == side) returned = true;
            }
            if (!returned) return "link not returned across the same side";
        }
    }
    return "";
}

inline int OpenSides(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    int open = 0;
    for (const t_hdelaunaytriangle* t : triangles) {
        for (const t_hdelaunaytriangle* n : t->Neighbour) open += n == nullptr;
    }
    return open;
}

inline std::set<int> Corners(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    std::set<int> corners;
    for (const t_hdelaunaytriangle* t : triangles) corners.insert(t->Vertex, t->Vertex + 3);
    return corners;
}

// Vertices that lie strictly inside the circumcircle of some triangle by
// more than `relative` of its radius, counted over all triangles.
inline int DelaunayViolations(const ZrCIncrementalDelaunay2D& d, const std::vector<t_hdelaunaytriangle*>& triangles,
                              const std::set<int>& corners, double relative)
{
    int violations = 0;
    for (const t_hdelaunaytriangle* t : triangles) {
        const Point2 a = At(d, t->Vertex[0]);
        const Point2 b = At(d, t->Vertex[1]);
        const Point2 c = At(d, t->Vertex[2]);
        const double den = 2.0 * (a.x * (b.y - c.y) + b.x * (c.y - a.y) + c.x * (a.y - b.y));
        if (den == 0.0) continue;
        const double a2 = a.x * a.x + a.y * a.y;
        const double b2 = b.x * b.x + b.y * b.y;
        const double c2 = c.x * c.x + c.y * c.y;
        const double ux = (a2 * (b.y - c.y) + b2 * (c.y - a.y) + c2 * (a.y - b.y)) / den;
        const double uy = (a2 * (c.x - b.x) + b2 * (a.x - c.x) + c2 * (b.x - a.x)) / den;
        const double r = std::hypot(a.x - ux, a.y - uy);
        for (int v : corners) {
            const Point2 p = At(d, v);
            if (std::hypot(p.x - ux, p.y - uy) < r * (1.0 - relative)) ++violations;
        }
    }
    return violations;
}

// FNV-1a over the corner triples and neighbour slots (as list positions) in
// list order: equal for two runs only if both made the same triangles in
// the same order with the same links.
inline std::uint64_t ListHash(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    std::uint64_t hash = 1469598103934665603ull;
    auto mix = [&](std::int64_t value) {
        for (int byte = 0; byte < 8; ++byte) {
            hash ^= static_cast<std::uint64_t>(value >> (8 * byte)) & 0xFF;
            hash *= 1099511628211ull;
        }
    };
    for (const t_hdelaunaytriangle* t : triangles) {
        for (int v : t->Vertex) mix(v);
        for (const t_hdelaunaytriangle* n : t->Neighbour) {
            const auto at = std::find(triangles.begin(), triangles.end(), n);
            mix(n == nullptr ? -1 : at - triangles.begin());
        }
    }
    return hash;
}

} // namespace vek::test
