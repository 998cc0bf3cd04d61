// Which triangles of the refinement lie side by side, and the changing of
// those links as triangles are split.

#include "vekdll/planar/polygon_triangulation_refinement.h"

#include <cmath>

namespace {

// Corners closer than this in both coordinates are one corner.
constexpr float kSameCorner = 0.0005f;

float SquaredSide(const t_hdynamictriangle& t, int side)
{
    const t_h2dpoint& p = t.Point[side];
    const t_h2dpoint& r = t.Point[(side + 1) % 3];
    const float dx = r.x - p.x;
    const float dy = r.y - p.y;
    return dx * dx + dy * dy;
}

} // namespace

bool CHPolygonTriangulationRefinement::Equal(const t_h2dpoint& a, const t_h2dpoint& b)
{
    return std::fabs(a.x - b.x) < kSameCorner && std::fabs(a.y - b.y) < kSameCorner;
}

void CHPolygonTriangulationRefinement::CalcNeighbours()
{
    const auto isCornerOf = [](const t_h2dpoint& p, const t_hdynamictriangle* u) {
        return Equal(p, u->Point[0]) || Equal(p, u->Point[1]) || Equal(p, u->Point[2]);
    };
    for (t_hdynamictriangle* t = Triangles; t != nullptr; t = t->Next) {
        t->Neighbour[0] = t->Neighbour[1] = t->Neighbour[2] = nullptr;
        for (t_hdynamictriangle* u = Triangles; u != nullptr; u = u->Next) {
            if (u == t) continue;
            const bool a = isCornerOf(t->Point[0], u);
            const bool b = isCornerOf(t->Point[1], u);
            const bool c = isCornerOf(t->Point[2], u);
            // Of several triangles on one side the last one found stays.
            if (b && a) {
                t->Neighbour[0] = u;
            } else if (b && c) {
                t->Neighbour[1] = u;
            } else if (!b && c && a) {
                t->Neighbour[2] = u;
            }
        }
    }
    // Corners closer than the match tolerance can make a link that isn't
    // returned; it would outlive the triangle it names once that one is
    // split. Such a side counts as open. On a clean ear clipping every link
    // is mutual and nothing changes here.
    for (t_hdynamictriangle* t = Triangles; t != nullptr; t = t->Next) {
        for (t_hdynamictriangle*& u : t->Neighbour) {
            if (u != nullptr && GetSharedSide(u, t) == eSideNone) u = nullptr;
        }
    }
}

ESharedSide CHPolygonTriangulationRefinement::GetSharedSide(const t_hdynamictriangle* a, const t_hdynamictriangle* b)
{
    if (a == nullptr) return eSideNone;
    for (int side = 0; side < 3; ++side) {
        if (a->Neighbour[side] == b) return static_cast<ESharedSide>(side);
    }
    return eSideNone;
}

void CHPolygonTriangulationRefinement::ExchangeNeighbour(t_hdynamictriangle* t, t_hdynamictriangle* old,
                                                         t_hdynamictriangle* replacement)
{
    if (t == nullptr) return;
    for (t_hdynamictriangle*& u : t->Neighbour) {
        if (u == old) u = replacement;
    }
}

void CHPolygonTriangulationRefinement::SecureAssign(t_hdynamictriangle* t, int side, t_hdynamictriangle* neighbour)
{
    if (t == nullptr || side < 0 || side > 2) return;
    t->Neighbour[side] = neighbour;
}

bool CHPolygonTriangulationRefinement::CheckNeighbourTriangle(t_hdynamictriangle* neighbour,
                                                              t_hdynamictriangle* t) const
{
    const int shared = GetSharedSide(neighbour, t);
    if (shared == eSideNone) return false;
    // The shared side must be within about five per cent of the neighbour's
    // longest (0.9 on squares), so that splitting it doesn't make a sliver,
    // and longer than the shortest side worth splitting.
    const float sharedLength = SquaredSide(*neighbour, shared);
    for (int other = 1; other < 3; ++other) {
        if (SquaredSide(*neighbour, (shared + other) % 3) * 0.9 > sharedLength) return false;
    }
    return sharedLength > MinSharedEdge;
}

int CHPolygonTriangulationRefinement::SideToSplit(const t_hdynamictriangle& t) const
{
    const float s0 = SquaredSide(t, 0);
    const float s1 = SquaredSide(t, 1);
    const float s2 = SquaredSide(t, 2);
    if (s0 > s1 && s0 > s2 && s0 > MaxSquaredEdge) return 0;
    if (s1 > s0 && s1 > s2 && s1 > MaxSquaredEdge) return 1;
    // A tie of the two longest sides lands here too, and side 2 is split
    // even if it is the shorter.
    if (s2 > MaxSquaredEdge) return 2;
    return -1;
}

int CHPolygonTriangulationRefinement::CollapseSlivers()
{
    int slivers = 0;
    for (t_hdynamictriangle* t = Triangles; t != nullptr; t = t->Next) {
        const int neighbours = (t->Neighbour[0] != nullptr) + (t->Neighbour[1] != nullptr) + (t->Neighbour[2] != nullptr);
        if (neighbours < 2) continue;
        bool sliver = false;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                // A side more than twice another: 4 on the squares.
                if (i != j && static_cast<double>(SquaredSide(*t, i)) * 0.25 > static_cast<double>(SquaredSide(*t, j))) {
                    sliver = true;
                }
            }
        }
        if (sliver) ++slivers;
    }
    return slivers;
}
