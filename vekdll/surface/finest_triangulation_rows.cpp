// The rows of the finest triangulation: their links, the flip of the cells'
// diagonals, and the look across a side.

#include <cmath>
#include <vector>

#include "vekdll/surface/finest_neighbour_links.h"
#include "vekdll/surface/finest_triangulation.h"
// The link operations, to be inlined into the loops over every triangle.
#include "vekdll/surface/triangle_graph_links.inl"

namespace {

std::vector<t_hfinesttriangle*> TrianglesOf(const CList<t_hfinesttriangle*>& row)
{
    std::vector<t_hfinesttriangle*> triangles;
    triangles.reserve(static_cast<std::size_t>(row.GetCount()));
    for (POSITION pos = row.GetHeadPosition(); pos != nullptr;) {
        if (t_hfinesttriangle* t = row.GetNext(pos)) triangles.push_back(t);
    }
    return triangles;
}

float Cross(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

float LengthXY2(const SSEPoint& a, const SSEPoint& b)
{
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    return dx * dx + dy * dy;
}

// Whether side `side` is the longest of the triangle in x-y (ties count).
bool IsLongestSide(const t_hfinesttriangle* t, int side, const SSEPoint* v)
{
    const float own = LengthXY2(v[t->Vertex[side]], v[t->Vertex[(side + 1) % 3]]);
    for (int other = 0; other < 3; ++other) {
        if (LengthXY2(v[t->Vertex[other]], v[t->Vertex[(other + 1) % 3]]) > own) return false;
    }
    return true;
}

} // namespace

void ZrCFinestTriangulation::FindNeighboursFromList(TriangleRows* rows)
{
    if (rows == nullptr) return;
    const auto link = [](t_hfinesttriangle* a, t_hfinesttriangle* b) { FindNeighbours(a, b); };
    const bool byScan = GetSearchMode() == vek::SearchMode::LinearScan;
    std::vector<t_hfinesttriangle*> lower;
    bool haveLower = false;
    for (POSITION pos = rows->GetHeadPosition(); pos != nullptr;) {
        const CList<t_hfinesttriangle*>* row = rows->GetNext(pos);
        if (row == nullptr) {
            haveLower = false;
            continue;
        }
        std::vector<t_hfinesttriangle*> upper = TrianglesOf(*row);
        if (haveLower) {
            if (byScan)
                vek::detail::LinkByScan(lower, upper, vek::detail::LinkOrder::CandidateFirst, link);
            else
                vek::detail::LinkBySides(lower, upper, vek::detail::LinkOrder::CandidateFirst, link);
        }
        lower.swap(upper);
        haveLower = true;
    }
}

void ZrCFinestTriangulation::LinkRowsAt(int first)
{
    if (AllRowsTriangleList == nullptr || first < 0) return;
    POSITION pos = AllRowsTriangleList->GetHeadPosition();
    for (int i = 0; i < first && pos != nullptr; ++i) AllRowsTriangleList->GetNext(pos);
    if (pos == nullptr) return;
    TriangleRows pair(10);
    pair.AddTail(AllRowsTriangleList->GetNext(pos));
    if (pos == nullptr) return;
    pair.AddTail(AllRowsTriangleList->GetNext(pos));
    FindNeighboursFromList(&pair);
}

bool ZrCFinestTriangulation::DoEdgeFlip(t_hfinesttriangle* triangle, int side)
{
    if (triangle == nullptr || side < 0 || side > 2) return false;
    t_hfinesttriangle* neighbour = triangle->Neighbour[side];
    const ESharedSide sideOfN = FindCommonSide(side, triangle, neighbour);
    if (sideOfN == eSideNone) return false;
    FlipSharedEdge(triangle, side, neighbour, sideOfN);
    return true;
}

// A pair of triangles of the row is flipped when their shared side is the
// longest side of both, as a cell's diagonal is, so that no flip reaches
// across a side between two cells; when the four corners are in strictly
// convex position, so that no triangle folds over; and when the other
// diagonal joins corners of closer heights, so that the diagonals follow
// ridges and valleys of the raster. The row's triangles are marked Visited
// while the pass runs to know them from their neighbours in other rows.
void ZrCFinestTriangulation::CheckFlipEdgesInRow(CList<t_hfinesttriangle*>* list)
{
    if (list == nullptr) return;
    const std::vector<t_hfinesttriangle*> row = TrianglesOf(*list);
    for (t_hfinesttriangle* t : row) t->Visited = true;
    for (t_hfinesttriangle* t : row) {
        if (t->RowChecked) continue;
        t->RowChecked = true;
        for (int side = 0; side < 3; ++side) {
            t_hfinesttriangle* n = t->Neighbour[side];
            if (n == nullptr || !n->Visited || n->RowChecked) continue;
            const ESharedSide sideOfN = FindCommonSide(side, t, n);
            if (sideOfN == eSideNone) continue;
            if (!IsLongestSide(t, side, Vertices) || !IsLongestSide(n, sideOfN, Vertices)) continue;
            const SSEPoint& u = Vertices[t->Vertex[side]];
            const SSEPoint& w = Vertices[t->Vertex[(side + 1) % 3]];
            const SSEPoint& x = Vertices[OppositeCorner(t, side)];
            const SSEPoint& d = Vertices[OppositeCorner(n, sideOfN)];
            // t = (u, w, x) turns one way; the flipped (x, u, d) and
            // (x, d, w) must turn the same way.
            const float turn = Cross(u, w, x);
            if (!(Cross(x, u, d) * turn > 0.0f) || !(Cross(x, d, w) * turn > 0.0f)) continue;
            if (!(std::fabs(x.z - d.z) < std::fabs(u.z - w.z))) continue;
            FlipSharedEdge(t, side, n, sideOfN);
            n->RowChecked = true;
            break;
        }
    }
    for (t_hfinesttriangle* t : row) t->Visited = false;
}

SSEPoint ZrCFinestTriangulation::GetVertexFromNeighbourTriangle(int side, const t_hfinesttriangle* triangle) const
{
    SSEPoint zero;
    zero.sse = _mm_setzero_ps();
    if (triangle == nullptr || side < 0 || side > 2) return zero;
    const t_hfinesttriangle* neighbour = triangle->Neighbour[side];
    if (neighbour == nullptr) return zero;
    switch (FindCommonSide(side, triangle, neighbour)) {
    case eSide0:
        return Vertices[neighbour->Vertex[2]];
    case eSide1:
        return Vertices[neighbour->Vertex[0]];
    case eSide2:
        return Vertices[neighbour->Vertex[1]];
    default:
        return zero;
    }
}
