// The planar hull's life: reading the source, the stages of the
// construction, and handing the hull out.

#include "vekdll/planar/convex_hull_2d.h"

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

CHConvexHull2D::CHConvexHull2D(CSSE3dPolygon* polygon)
{
    // Without a point there is nothing to scan; a single point is its own hull.
    if (polygon == nullptr || polygon->GetNumPoints() < 1) return;
    NumPoints = polygon->GetNumPoints();
    Points = static_cast<tPointStruc*>(SafeCalloc(NumPoints, sizeof(tPointStruc)));
    for (int i = 0; i < NumPoints; ++i) {
        tPointStruc& p = Points[i];
        p.Index = i;
        polygon->GetPoint(i, p.Coordinate[0], p.Coordinate[1], p.Coordinate[2]);
    }
    FindLowest();
    QuickSort(&Points[1], static_cast<unsigned>(NumPoints - 1), sizeof(tPointStruc));
    if (NumDeleted > 0) Squash();
    Graham();
}

CHConvexHull2D::CHConvexHull2D(CSSE2dPolygon*) {}

CHConvexHull2D::~CHConvexHull2D()
{
    while (Top != nullptr) Top = Pop(Top);
    SafeFree(Points);
}

int CHConvexHull2D::CountStackCells() const
{
    int count = 0;
    for (const tStackCell* cell = Top; cell != nullptr; cell = cell->Next) ++count;
    return count;
}

void CHConvexHull2D::ObtainConvexHull2D(CSSE2dPolygon* out)
{
    if (out == nullptr) return;
    out->Create(CountStackCells());
    int k = 0;
    for (const tStackCell* cell = Top; cell != nullptr; cell = cell->Next, ++k) {
        out->SetPoint(k, cell->Point->Coordinate[0], cell->Point->Coordinate[1]);
    }
}

void CHConvexHull2D::ObtainConvexHull3D(CSSE3dPolygon* out)
{
    if (out == nullptr) return;
    const int count = CountStackCells();
    out->Create(count);
    // Filled from the back, so that the line runs counter-clockwise from the
    // lowest point, the opposite sense of ObtainConvexHull2D.
    int k = count - 1;
    for (const tStackCell* cell = Top; cell != nullptr; cell = cell->Next, --k) {
        const float* c = cell->Point->Coordinate;
        out->SetPoint(k, c[0], c[1], c[2]);
    }
}
