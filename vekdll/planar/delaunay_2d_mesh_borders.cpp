// The loft between two meshes: the corners of their border triangles as
// vertices, and the vertices put back onto the corners they came from.

#include "vekdll/planar/delaunay_2d.h"

#include <algorithm>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/mesh/triangulation.h"
#include "vekdll/planar/grid_arithmetic.h"
#include "vekdll/planar/hull_rings.h"

using vek::detail::kPlanarGrid;

namespace {

const SSEPoint* CornerOf(const t_htriangle& t, int corner)
{
    return corner == 0 ? t.P0 : corner == 1 ? t.P1 : t.P2;
}

} // namespace

std::vector<t_h2dpoint> CH2DDelaunay::AppendMeshBorderPoints(CHTriangulation* t, bool lowerHalf, bool isTop)
{
    std::vector<t_h2dpoint> points;
    if (t == nullptr) return points;
    t->CalcCenterPoint();
    SSEPoint centre;
    t->GetCenterPoint(centre);
    // Border triangles thinner than a tenth of the finest scale have no
    // direction worth following.
    const float limit = 0.1f * std::min({t->GetScaleX(), t->GetScaleY(), t->GetScaleZ()});
    for (int i = 0; i < t->GetNumTriangles(); ++i) {
        const t_htriangle& triangle = *t->GetTriangle(i);
        if (triangle.Flag != vek::kTriangleFlagBorder) continue;
        if (!(CSSEFns::vectorlen(CSSEFns::vectorproduct(triangle.S->sse, triangle.T->sse)) > limit)) continue;
        for (int corner = 0; corner < 3; ++corner) {
            const SSEPoint& p = *CornerOf(triangle, corner);
            if (lowerHalf ? p.x <= centre.x : p.x > centre.x) {
                AppendVertex2D(p.y, p.z, 3 * i + corner, isTop);
                points.push_back({p.y, p.z});
            }
        }
    }
    return points;
}

void CH2DDelaunay::GetBorderPointsBottom(CHTriangulation* t, bool lowerHalf)
{
    const std::vector<t_h2dpoint> points = AppendMeshBorderPoints(t, lowerHalf, true);
    const auto grid = static_cast<float>(kPlanarGrid);
    BottomBorder.Create(static_cast<int>(points.size()));
    for (int i = 0; i < static_cast<int>(points.size()); ++i) {
        BottomBorder.SetPoint(i, points[i].x * grid, points[i].y * grid);
    }
}

void CH2DDelaunay::GetBorderPointsTop(CHTriangulation* t, bool lowerHalf)
{
    const int count = static_cast<int>(AppendMeshBorderPoints(t, lowerHalf, false).size());
    // The limit is read from the vertex ring's entry on, whichever call
    // put the vertices there.
    TopBorder.Create(count);
    const tVertexStructure* v = Vertices;
    for (int i = 0; i < count && v != nullptr; ++i, v = v->Next) {
        TopBorder.SetPoint(i, static_cast<float>(v->Coordinate[0]), static_cast<float>(v->Coordinate[1]));
    }
}

void CH2DDelaunay::LoftWith3DTriangulation(CHTriangulation* top, CHTriangulation* bottom)
{
    vek::detail::ForEachInRing(Vertices, [top, bottom](tVertexStructure* v) {
        const CHTriangulation* mesh = v->IsTop ? top : bottom;
        if (mesh == nullptr || v->Index < 0) return;
        const t_htriangle* triangle = mesh->GetTriangle(v->Index / 3);
        if (triangle == nullptr) return;
        const SSEPoint& p = *CornerOf(*triangle, v->Index % 3);
        v->Coordinate[0] = vek::detail::TruncateToGrid(p.x * kPlanarGrid);
        v->Coordinate[1] = vek::detail::TruncateToGrid(p.y * kPlanarGrid);
        v->Coordinate[2] = vek::detail::TruncateToGrid(p.z * kPlanarGrid);
    });
}
