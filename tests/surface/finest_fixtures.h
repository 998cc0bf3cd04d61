#pragma once

// Inputs of the finest triangulation, and a record of its result that two
// builds can be compared by, with a check of its links against the sides
// that its triangles share, counted here from the corners alone.

#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "support/sse_lanes.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/finest_triangulation.h"

namespace vek::test {

inline void MakePolygon(CSSE3dPolygon& polygon, const std::vector<std::pair<float, float>>& points)
{
    polygon.Create(static_cast<int>(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i)
        polygon.SetPoint(static_cast<int>(i), points[i].first, points[i].second, 0.0f);
    polygon.CalcBoundingBox();
}

// A closed line of n points round (cx, cy), its radius swinging by a fifth,
// so that the cells along it are cut in every way.
inline void MakeWavyRing(CSSE3dPolygon& polygon, int n, float cx, float cy, float radius)
{
    std::vector<std::pair<float, float>> points;
    for (int i = 0; i < n; ++i) {
        const double a = 2.0 * 3.14159265358979 * i / n;
        const double r = radius * (1.0 + 0.2 * std::sin(5.0 * a));
        points.emplace_back(static_cast<float>(cx + r * std::cos(a)), static_cast<float>(cy + r * std::sin(a)));
    }
    MakePolygon(polygon, points);
}

template <class Height>
void MakeField(CSSEMatrix& field, int sizeX, int sizeY, Height height)
{
    field.Create(sizeX, sizeY);
    for (int y = 0; y < sizeY; ++y) {
        for (int x = 0; x < sizeX; ++x) field.SetPoint(x, y, height(x, y));
    }
}

inline std::vector<t_hfinesttriangle*> ListOf(CList<t_hfinesttriangle*>& list)
{
    std::vector<t_hfinesttriangle*> out;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) out.push_back(list.GetNext(pos));
    return out;
}

// Everything a build leaves: the vertices bit for bit, and per triangle in
// list order its corners, flags and the list places of its neighbours.
struct BuildRecord {
    std::vector<std::uint32_t> vertexBits;
    std::vector<std::vector<int>> triangles;
    std::vector<int> rowSizes;
    bool operator==(const BuildRecord&) const = default;
};

inline BuildRecord Record(ZrCFinestTriangulation& t)
{
    BuildRecord r;
    for (int i = 0; i < t.GetNumVertices(); ++i) {
        const SSEPoint p = t.GetVertex(i);
        for (int lane = 0; lane < 4; ++lane) {
            std::uint32_t bits;
            std::memcpy(&bits, &p.lane[lane], 4);
            r.vertexBits.push_back(bits);
        }
    }
    const std::vector<t_hfinesttriangle*> list = ListOf(t.GetTriangleList());
    std::unordered_map<const t_hfinesttriangle*, int> place;
    for (std::size_t i = 0; i < list.size(); ++i) place[list[i]] = static_cast<int>(i);
    for (const t_hfinesttriangle* tr : list) {
        std::vector<int> row{tr->Vertex[0], tr->Vertex[1], tr->Vertex[2], tr->Marched, tr->RowChecked};
        for (const t_hfinesttriangle* n : tr->Neighbour) row.push_back(n == nullptr ? -1 : place.at(n));
        r.triangles.push_back(row);
    }
    if (auto* rows = t.GetAllRowsTriangleList()) {
        for (POSITION pos = rows->GetHeadPosition(); pos != nullptr;)
            r.rowSizes.push_back(static_cast<int>(rows->GetNext(pos)->GetCount()));
    }
    return r;
}

// The number of link faults: a side that two triangles carry must link
// them both ways in the slots of that side, a side that one carries must be
// open; no side may be carried by more than two.
inline int LinkFaults(ZrCFinestTriangulation& t)
{
    std::map<std::pair<int, int>, std::vector<std::pair<t_hfinesttriangle*, int>>> carriers;
    for (t_hfinesttriangle* tr : ListOf(t.GetTriangleList())) {
        for (int s = 0; s < 3; ++s) {
            const int a = tr->Vertex[s];
            const int b = tr->Vertex[(s + 1) % 3];
            carriers[{std::min(a, b), std::max(a, b)}].emplace_back(tr, s);
        }
    }
    int faults = 0;
    for (const auto& [side, list] : carriers) {
        if (list.size() == 1) {
            faults += list[0].first->Neighbour[list[0].second] != nullptr;
        } else if (list.size() == 2) {
            faults += list[0].first->Neighbour[list[0].second] != list[1].first;
            faults += list[1].first->Neighbour[list[1].second] != list[0].first;
        } else {
            ++faults;
        }
    }
    return faults;
}

// Twice the signed area in x-y.
inline double Area2(ZrCFinestTriangulation& t, const t_hfinesttriangle* tr)
{
    const SSEPoint a = t.GetVertex(tr->Vertex[0]);
    const SSEPoint b = t.GetVertex(tr->Vertex[1]);
    const SSEPoint c = t.GetVertex(tr->Vertex[2]);
    return (double(b.x) - a.x) * (double(c.y) - a.y) - (double(b.y) - a.y) * (double(c.x) - a.x);
}

} // namespace vek::test
