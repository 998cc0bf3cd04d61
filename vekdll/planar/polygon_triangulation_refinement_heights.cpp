// Reading the refined triangles in space: heights of corners made by
// splitting are interpolated from the source polygon when first read.

#include "vekdll/planar/polygon_triangulation_refinement.h"

#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// Every eighth point of the source line takes part in the interpolation.
constexpr int kInterpolationStep = 8;

} // namespace

bool CHPolygonTriangulationRefinement::GetFirstTriangle3D(SSEPoint& a, SSEPoint& b, SSEPoint& c)
{
    if (Polygon == nullptr || Triangles == nullptr) return false;
    CurrentTriangle = Triangles;
    ReadTriangle3D(CurrentTriangle, a, b, c);
    return true;
}

bool CHPolygonTriangulationRefinement::GetNextTriangle3D(SSEPoint& a, SSEPoint& b, SSEPoint& c)
{
    if (Polygon == nullptr || CurrentTriangle == nullptr || CurrentTriangle->Next == nullptr) return false;
    CurrentTriangle = CurrentTriangle->Next;
    ReadTriangle3D(CurrentTriangle, a, b, c);
    return true;
}

bool CHPolygonTriangulationRefinement::GetTriangle3D(int i, SSEPoint& a, SSEPoint& b, SSEPoint& c)
{
    t_hdynamictriangle* t = GetTriangle(i);
    if (Polygon == nullptr || t == nullptr) return false;
    ReadTriangle3D(t, a, b, c);
    return true;
}

void CHPolygonTriangulationRefinement::ReadTriangle3D(t_hdynamictriangle* t, SSEPoint& a, SSEPoint& b, SSEPoint& c)
{
    if (t->Index != -1) {
        Triangulator->GetTriangle3D(t->Index, a, b, c);
        return;
    }
    SSEPoint* const corners[3] = {&a, &b, &c};
    for (int i = 0; i < 3; ++i) {
        corners[i]->x = t->Point[i].x;
        corners[i]->y = t->Point[i].y;
        corners[i]->z = CornerHeight(t, i);
    }
}

float CHPolygonTriangulationRefinement::CornerHeight(t_hdynamictriangle* t, int corner)
{
    if (!(t->Z[corner] < vek::kHeightKnownAbove)) return t->Z[corner];
    const t_h2dpoint& p = t->Point[corner];
    const float z = Polygon->InterpolateZ(p.x, p.y, kInterpolationStep, MinSharedEdge);
    // Corner 1 keeps its height in the slot of corner 0, so that it is
    // interpolated again on every reading and corner 0 reads it from then on.
    t->Z[corner == 2 ? 2 : 0] = z;
    // The neighbours known now share the corner, exactly, and need not
    // interpolate it again.
    for (t_hdynamictriangle* n : t->Neighbour) {
        if (n == nullptr) continue;
        for (int j = 0; j < 3; ++j) {
            if (n->Point[j].x == p.x && n->Point[j].y == p.y) {
                n->Z[j] = z;
                break;
            }
        }
    }
    return z;
}
