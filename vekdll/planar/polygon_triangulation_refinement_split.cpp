// One pass of the refinement: triangles with a side too long are split at
// its midpoint, together with the triangle across it.

#include "vekdll/planar/polygon_triangulation_refinement.h"

namespace {

// How a triangle splits on one side into two: which corner of each half
// becomes the midpoint, the sides by which the halves face each other, and
// the sides that keep the old triangle's neighbours there (the same side
// in the half and in the old triangle). Both halves have the split side's
// halves on the split side itself.
struct SplitRule {
    int firstTakesMidpoint;
    int secondTakesMidpoint;
    int firstFacesSecond;
    int secondFacesFirst;
    int firstKeeps;
    int secondKeeps;
};

// Side 0: (P0, q, P2) and (q, P1, P2). Side 1: (P0, P1, q) and (P0, q, P2).
// Side 2: (P0, P1, q) and (q, P1, P2): here the first half holds the end
// of the side rather than its start.
constexpr SplitRule kSplitRules[3] = {
    {1, 0, 1, 2, 2, 1},
    {2, 1, 2, 0, 0, 2},
    {2, 0, 1, 0, 0, 1},
};

t_h2dpoint Midpoint(const t_hdynamictriangle& t, int side)
{
    const t_h2dpoint& p = t.Point[side];
    const t_h2dpoint& r = t.Point[(side + 1) % 3];
    return {p.x + 0.5f * (r.x - p.x), p.y + 0.5f * (r.y - p.y)};
}

} // namespace

bool CHPolygonTriangulationRefinement::Refinement()
{
    // New triangles go to the head, before the walk's start: a pass sees
    // only the triangles there were when it began.
    t_hdynamictriangle* t = Triangles;
    while (t != nullptr) {
        t_hdynamictriangle* next = t->Next;
        const int side = SideToSplit(*t);
        if (side >= 0) {
            t_hdynamictriangle* neighbour = t->Neighbour[side];
            if (neighbour == nullptr || CheckNeighbourTriangle(neighbour, t)) {
                if (neighbour != nullptr && neighbour == next) next = neighbour->Next;
                SplitWithNeighbour(t, side, neighbour);
            }
        }
        t = next;
    }
    return true;
}

void CHPolygonTriangulationRefinement::SplitOnSide(t_hdynamictriangle* t, int side, t_hdynamictriangle*& first,
                                                   t_hdynamictriangle*& second)
{
    const SplitRule& rule = kSplitRules[side];
    const t_h2dpoint q = Midpoint(*t, side);
    first = CreateTriangle();
    second = CreateTriangle();
    for (int i = 0; i < 3; ++i) {
        first->Point[i] = i == rule.firstTakesMidpoint ? q : t->Point[i];
        second->Point[i] = i == rule.secondTakesMidpoint ? q : t->Point[i];
    }
    first->Neighbour[rule.firstFacesSecond] = second;
    second->Neighbour[rule.secondFacesFirst] = first;
    first->Neighbour[rule.firstKeeps] = t->Neighbour[rule.firstKeeps];
    second->Neighbour[rule.secondKeeps] = t->Neighbour[rule.secondKeeps];
    ExchangeNeighbour(t->Neighbour[rule.firstKeeps], t, first);
    ExchangeNeighbour(t->Neighbour[rule.secondKeeps], t, second);
}

void CHPolygonTriangulationRefinement::SplitWithNeighbour(t_hdynamictriangle* t, int side,
                                                          t_hdynamictriangle* neighbour)
{
    t_hdynamictriangle* first = nullptr;
    t_hdynamictriangle* second = nullptr;
    SplitOnSide(t, side, first, second);
    if (neighbour == nullptr) {
        AppendNewTrianglesAndRemoveOld(t, first, second);
        return;
    }
    const int shared = GetSharedSide(neighbour, t);
    t_hdynamictriangle* neighbourFirst = nullptr;
    t_hdynamictriangle* neighbourSecond = nullptr;
    SplitOnSide(neighbour, shared, neighbourFirst, neighbourSecond);
    // First half with first half, second with second, by position only.
    SecureAssign(first, side, neighbourFirst);
    SecureAssign(second, side, neighbourSecond);
    SecureAssign(neighbourFirst, shared, first);
    SecureAssign(neighbourSecond, shared, second);
    AppendNewTrianglesAndRemoveOld(t, first, second);
    AppendNewTrianglesAndRemoveOld(neighbour, neighbourFirst, neighbourSecond);
}
