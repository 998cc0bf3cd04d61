// The Graham scan over the angularly sorted points, on a linked stack.

#include "vekdll/planar/convex_hull_2d.h"

#include <cstdio>

#include "vekdll/foundation/safe_alloc.h"

tStackCell* CHConvexHull2D::Push(tPointStruc* p, tStackCell* top)
{
    auto* cell = static_cast<tStackCell*>(SafeMalloc(sizeof(tStackCell)));
    cell->Point = p;
    cell->Next = top;
    return cell;
}

tStackCell* CHConvexHull2D::Pop(tStackCell* top)
{
    tStackCell* below = top->Next;
    SafeFree(top);
    return below;
}

void CHConvexHull2D::Graham()
{
    if (NumPoints < 1) return;
    Top = Push(&Points[0], Top);
    if (NumPoints < 2) return;
    Top = Push(&Points[1], Top);

    int i = 2;
    while (i < NumPoints) {
        if (Top->Next == nullptr) {
            // Popped down to the lowest point: the sort left the points in an
            // order no convex chain can follow. There is no hull.
            std::fputs("Error\n", stdout);
            Top = Pop(Top);
            return;
        }
        const t_h2dpoint below = PlanarOf(Top->Next->Point);
        const t_h2dpoint top = PlanarOf(Top->Point);
        const t_h2dpoint next = PlanarOf(&Points[i]);
        // A point on the line of the two below counts as a right turn and is
        // popped, so the hull keeps no collinear corners.
        if (Left(&below, &top, &next)) {
            Top = Push(&Points[i], Top);
            ++i;
        } else {
            Top = Pop(Top);
        }
    }
}
