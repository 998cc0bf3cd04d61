// Open edges of a mesh as a list of stretches, and their chaining into a polygon.

#include <cstdlib>

#include <smmintrin.h>

#include "vekdll/mesh/linked_nodes.h"
#include "vekdll/mesh/triangulation.h"
#include "vekdll/platform/user_hooks.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

bool SamePoint(const SSEPoint& p, const SSEPoint& q)
{
    return _mm_movemask_ps(_mm_cmpeq_ps(p.sse, q.sse)) == 0xF;
}

// The first open edge of a triangle as a new stretch, or null if it has none.
t_stretch* FirstOpenEdge(const t_htriangle& t)
{
    if (t.Neighbour0 == nullptr) return new t_stretch{t.P0, t.P1, nullptr, nullptr};
    if (t.Neighbour1 == nullptr) return new t_stretch{t.P1, t.P2, nullptr, nullptr};
    if (t.Neighbour2 == nullptr) return new t_stretch{t.P2, t.P0, nullptr, nullptr};
    return nullptr;
}

} // namespace

void CHTriangulation::AppendStretchToList(t_stretch* stretch)
{
    if (stretch == nullptr) return;
    vek::detail::PushFront(StretchListHead, stretch);
}

void CHTriangulation::DeleteStretchFromList(t_stretch* stretch)
{
    if (stretch == nullptr) return;
    vek::detail::Unlink(StretchListHead, stretch);
    delete stretch;
}

void CHTriangulation::ReleaseStretches()
{
    while (StretchListHead != nullptr) DeleteStretchFromList(StretchListHead);
}

// Each triangle gives at most one stretch, its first open edge, and each is
// pushed at the front, so the list runs against the array order. The walk
// then trusts that order: it only ever looks at the next stretch, takes the
// end of it that does not touch the current one, and jumps past it. It thus
// writes about half as many points as there are stretches, and the stretches
// it jumped over stay in the list.
void CHTriangulation::FindBorderLine(CSSE3dPolygon* polygon)
{
    if (polygon == nullptr) return;
    int count = 0;
    for (int i = 0; i < NumTriangles; ++i) {
        if (t_stretch* stretch = FirstOpenEdge(Triangles[i])) {
            AppendStretchToList(stretch);
            ++count;
        }
    }
    polygon->Create(count);
    t_stretch* current = StretchListHead;
    if (current == nullptr) return;

    polygon->SetPointSSE(0, *current->P0);
    polygon->SetPointSSE(1, *current->P1);
    int write = 2;
    while (current != nullptr && current->Next != nullptr) {
        t_stretch* const next = current->Next;
        SSEPoint* point = nullptr;
        if (SamePoint(*current->P1, *next->P0)) {
            point = next->P1;
        } else if (SamePoint(*current->P1, *next->P1)) {
            point = next->P0;
        } else {
            // The chain breaks here, and looking again at the same pair
            // would never change the answer.
            vek::ExitProgram(EXIT_FAILURE);
        }
        polygon->SetPointSSE(write, *point);
        DeleteStretchFromList(current);
        current = next->Next;
        ++write;
    }
}
