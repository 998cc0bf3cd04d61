// Meshes from the faces of a spatial hull or of a lifted planar Delaunay
// triangulation; indexed meshes are accepted and not converted here.

#include <smmintrin.h>

#include "vekdll/mesh/triangulation.h"
#include "vekdll/planar/convex_hull_3d.h"
#include "vekdll/planar/delaunay_2d.h"

namespace {

// The hull keeps its grid coordinates in tenths of the planar unit.
constexpr float kDelaunayDivisor = 10.0f;

} // namespace

void CHTriangulation::CopyFaces(const CHConvexHull3D& hull, float divisor)
{
    CreateTriangulation(hull.GetNumFaces());
    // Lane 3 of the divisor is 1, so that the corners keep a fourth lane of 0.
    SSEPoint divisors;
    divisors.sse = _mm_setr_ps(divisor, divisor, divisor, 1.0f);
    tFaceStructure* const entry = hull.GetFaces();
    tFaceStructure* face = entry;
    // A count above the faces left in the ring (a triangulation that dropped
    // faces keeps its count) leaves the rest of the triangles at the origin.
    for (int i = 0; i < NumTriangles && face != nullptr; ++i) {
        t_htriangle& t = Triangles[i];
        *t.P0 = hull.GetVertexFromFace3D(face, 0, divisors);
        *t.P1 = hull.GetVertexFromFace3D(face, 1, divisors);
        *t.P2 = hull.GetVertexFromFace3D(face, 2, divisors);
        face = face->Next == entry ? nullptr : face->Next;
    }
}

void CHTriangulation::CreateTriangulationFromHull3D(CHConvexHull3D* hull, float divisor)
{
    if (hull == nullptr) {
        CreateTriangulation(0);
        return;
    }
    CopyFaces(*hull, divisor);
}

void CHTriangulation::CreateTriangulationFrom2DDelaunay(CH2DDelaunay* delaunay, bool flatten)
{
    if (delaunay == nullptr) {
        CreateTriangulation(0);
        return;
    }
    CopyFaces(*delaunay, kDelaunayDivisor);
    for (int i = 0; i < NumTriangles; ++i) {
        t_htriangle& t = Triangles[i];
        if (flatten) t.P0->z = t.P1->z = t.P2->z = 0.0f;
        t.Flag = vek::kTriangleFlagPlanarDelaunay;
    }
}

void CHTriangulation::CreateTriangulationFromCTriangulation(Geometry::CTriangulation*)
{
}

void CHTriangulation::CreateTriangulationFromCTriangulation(Geometry::CTriangulation*, CSSE3dPolygon*)
{
}
