// The border line of the refined triangles: their open sides chained into a polygon.

#include "vekdll/planar/polygon_triangulation_refinement.h"

#include <utility>
#include <vector>

#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

struct BorderSide {
    SSEPoint Start;
    SSEPoint End;
    BorderSide* Link;  // the side that goes on from this one's end
};

SSEPoint CornerInSpace(const t_hdynamictriangle& t, int corner)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(t.Point[corner].x, t.Point[corner].y, t.Z[corner], 0.0f);
    return p;
}

bool SamePoint(const SSEPoint& a, const SSEPoint& b)
{
    return _mm_movemask_ps(_mm_cmpeq_ps(a.sse, b.sse)) == 0xF;
}

int NeighbourCount(const t_hdynamictriangle& t)
{
    return (t.Neighbour[0] != nullptr) + (t.Neighbour[1] != nullptr) + (t.Neighbour[2] != nullptr);
}

// Each side links to the first other side that starts where it ends, or
// else to the first that ends where it starts, which is then turned round.
void ChainSides(std::vector<BorderSide>& sides)
{
    for (BorderSide& side : sides) {
        for (BorderSide& other : sides) {
            if (&other == &side) continue;
            if (SamePoint(side.End, other.Start)) {
                side.Link = &other;
                break;
            }
            if (SamePoint(side.Start, other.End)) {
                std::swap(other.Start, other.End);
                side.Link = &other;
                break;
            }
        }
    }
}

// The start points along the links from the first side, at most `capacity`
// of them; where a side has no link its end point follows, if `openEnd`.
void WriteChain(const std::vector<BorderSide>& sides, CSSE3dPolygon* out, int capacity, bool openEnd)
{
    int written = 0;
    for (const BorderSide* side = &sides[0]; side != nullptr && written < capacity; side = side->Link) {
        SSEPoint start = side->Start;
        out->SetPointSSE(written++, start);
        if (side->Link == nullptr && openEnd && written < capacity) {
            SSEPoint end = side->End;
            out->SetPointSSE(written++, end);
        }
    }
}

} // namespace

void CHPolygonTriangulationRefinement::GetBorderLinePolygon(CSSE3dPolygon* out)
{
    if (out == nullptr) return;
    int openSides = 0;
    for (t_hdynamictriangle* t = Triangles; t != nullptr; t = t->Next) {
        const int neighbours = NeighbourCount(*t);
        if (neighbours == 0) {
            // A triangle on its own is the whole border.
            out->Create(3);
            for (int i = 0; i < 3; ++i) out->SetPoint(i, t->Point[i].x, t->Point[i].y, t->Z[i]);
            return;
        }
        if (neighbours < 3) {
            t->IsBorder = 1;
            openSides += 3 - neighbours;
        }
    }
    if (openSides == 0) {
        out->Create(0);
        return;
    }
    std::vector<BorderSide> sides;
    sides.reserve(static_cast<std::size_t>(openSides));
    for (t_hdynamictriangle* t = Triangles; t != nullptr; t = t->Next) {
        if (t->IsBorder != 1) continue;
        for (int side = 0; side < 3; ++side) {
            if (t->Neighbour[side] == nullptr && static_cast<int>(sides.size()) < openSides) {
                sides.push_back({CornerInSpace(*t, side), CornerInSpace(*t, (side + 1) % 3), nullptr});
            }
        }
    }
    ChainSides(sides);
    const int count = static_cast<int>(sides.size());
    const bool closed = sides.back().Link != nullptr;
    out->Create(closed ? count : count + 1);
    WriteChain(sides, out, closed ? count : count + 1, !closed);
}
