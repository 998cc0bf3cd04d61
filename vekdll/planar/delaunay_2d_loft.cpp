// Lofting two lines by the lifted Delaunay triangulation: the lines are
// unrolled into the plane of arc length and height, triangulated there, and
// the triangles that leave the band between them are dropped.

#include "vekdll/planar/delaunay_2d.h"

#include <cmath>
#include <utility>

#include "vekdll/planar/grid_arithmetic.h"
#include "vekdll/planar/hull_rings.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::kPlanarGrid;

namespace {

// The band test of the loft lets faces reach this far beyond the limit
// lines, in grid units.
constexpr float kLoftTolerance = 250.0f;

// The line with its last point put before its first, so that it is closed
// explicitly at its start.
void ClosedAtStart(CSSE3dPolygon& line, CSSE3dPolygon& extended)
{
    const int n = line.GetNumPoints();
    extended.Create(n + 1);
    float x = 0.0f, y = 0.0f, z = 0.0f;
    line.GetPoint(n - 1, x, y, z);
    extended.SetPoint(0, x, y, z);
    for (int i = 0; i < n; ++i) {
        line.GetPoint(i, x, y, z);
        extended.SetPoint(i + 1, x, y, z);
    }
}

// y of each point becomes the planar arc length up to it; `limit` gets the
// points (arc length, z) on the grid.
void UnrollByArcLength(CSSE3dPolygon& line, CSSE2dPolygon& limit)
{
    const int n = line.GetNumPoints();
    limit.Create(n);
    float arc = 0.0f;
    float previousX = 0.0f, previousY = 0.0f;
    for (int i = 0; i < n; ++i) {
        float x = 0.0f, y = 0.0f, z = 0.0f;
        line.GetPoint(i, x, y, z);
        if (i > 0) {
            const float dx = x - previousX;
            const float dy = y - previousY;
            arc += std::sqrt(dx * dx + dy * dy);
        }
        previousX = x;
        previousY = y;
        line.SetPoint(i, x, arc, z);
        limit.SetPoint(i, static_cast<float>(kPlanarGrid) * arc, static_cast<float>(kPlanarGrid) * z);
    }
}

// The y of the limit line's point nearest in x, by the every-second-point
// rule; false for a line too short to have one.
bool LimitAt(const CSSE2dPolygon& limit, float x, float& y)
{
    const int i = limit.ClosestPointX(x);
    if (i < 0) return false;
    float px = 0.0f;
    limit.GetPoint(i, px, y);
    return true;
}

} // namespace

void CH2DDelaunay::CreateTriangulationFromTwoBorderPolygons(CSSE3dPolygon* a, CSSE3dPolygon* b, bool)
{
    if (a == nullptr || b == nullptr || a->GetNumPoints() < 1 || b->GetNumPoints() < 1) return;
    CSSE3dPolygon lineA, lineB, unrolledA, unrolledB;
    lineA.CreateSimilar(a);
    lineB.CreateSimilar(b);
    ClosedAtStart(lineA, unrolledA);
    ClosedAtStart(lineB, unrolledB);
    UnrollByArcLength(unrolledA, BottomBorder);
    UnrollByArcLength(unrolledB, TopBorder);
    for (const auto& [unrolled, isTop] : {std::pair{&unrolledA, true}, std::pair{&unrolledB, false}}) {
        for (int i = 0; i < unrolled->GetNumPoints(); ++i) {
            float x = 0.0f, arc = 0.0f, z = 0.0f;
            unrolled->GetPoint(i, x, arc, z);
            AppendVertex2D(arc, z, i, isTop);
        }
    }
    CalcDelaunayTriangulation();
    RemoveFacesOutOfBorderLines(kLoftTolerance);
    // Back into space. Extended point i was unrolled from point i - 1 but
    // takes point i (modulo the count): every vertex lands one index on
    // along its line, and both ends of the unrolled line on point 0.
    vek::detail::ForEachInRing(Vertices, [&lineA, &lineB](tVertexStructure* v) {
        const CSSE3dPolygon& line = v->IsTop ? lineA : lineB;
        if (v->Index < 0) return;
        float x = 0.0f, y = 0.0f, z = 0.0f;
        line.GetPoint(v->Index % line.GetNumPoints(), x, y, z);
        v->Coordinate[0] = vek::detail::TruncateToGrid(x * kPlanarGrid);
        v->Coordinate[1] = vek::detail::TruncateToGrid(y * kPlanarGrid);
        v->Coordinate[2] = vek::detail::TruncateToGrid(z * kPlanarGrid);
    });
}

void CH2DDelaunay::RemoveFacesOutOfBorderLines(float tolerance)
{
    if (Faces == nullptr) return;
    for (tFaceStructure* f = Faces->Next; f != Faces;) {
        tFaceStructure* next = f->Next;
        if (OutsideBand(f, tolerance)) DeleteFace(f);
        f = next;
    }
}

bool CH2DDelaunay::OutsideBand(const tFaceStructure* f, float tolerance) const
{
    for (const tEdgeStructure* e : f->Edge) {
        // Only the ends of the edge are read: after the triangulation the
        // edges' faces may be gone.
        const long long* p = e->EndPoint[0]->Coordinate;
        const long long* q = e->EndPoint[1]->Coordinate;
        const double px = static_cast<double>(p[0]), py = static_cast<double>(p[1]);
        const double qx = static_cast<double>(q[0]), qy = static_cast<double>(q[1]);
        const double places[3][2] = {{(qx + 2.0 * px) / 3.0, (qy + 2.0 * py) / 3.0},
                                     {(px + qx) * 0.5, (py + qy) * 0.5},
                                     {(px + 2.0 * qx) / 3.0, (py + 2.0 * qy) / 3.0}};
        for (const auto& [x, y] : places) {
            // A limit line too short to search limits nothing.
            float top = 0.0f, bottom = 0.0f;
            if (LimitAt(TopBorder, static_cast<float>(x), top) && y > top + tolerance) return true;
            if (LimitAt(BottomBorder, static_cast<float>(x), bottom) && bottom - tolerance > y) return true;
        }
    }
    return false;
}
