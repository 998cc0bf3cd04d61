// Meshes from closed polygons: ear clipping with optional refinement, the
// fan from the centre, and the bands between two rings.

#include <smmintrin.h>

#include "vekdll/mesh/triangulation.h"
#include "vekdll/planar/polygon_triangulation_refinement.h"
#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/planar/ring_cleanup.h"
#include "vekdll/platform/framework_exceptions.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// The passes of refinement that a polygon mesh gets.
constexpr int kRefinementPasses = 14;

// Point i of the polygon, or the origin where it has none.
SSEPoint PointOrOrigin(const CSSE3dPolygon& polygon, int i)
{
    SSEPoint p;
    p.sse = _mm_setzero_ps();
    polygon.GetPointSSE(i, p);
    return p;
}

} // namespace

void CHTriangulation::CreateTriangulationFromPolygon(CSSE3dPolygon* polygon, int step, float maxEdge, bool refine)
{
    if (polygon == nullptr) {
        CreateTriangulation(0);
        return;
    }
    // Ear clipping cannot cut at a repeated point; a ring given closed would
    // otherwise come out short or empty.
    CSSE3dPolygon ring = vek::DropRepeatedRingPoints(*polygon);
    CHPolygonTriangulator triangulator(&ring, step, 1.0f, 1.0f, 1.0f, true);
    if (!refine) {
        CreateTriangulation(triangulator.GetNumTriangles());
        for (int i = 0; i < NumTriangles; ++i) {
            t_htriangle& t = Triangles[i];
            triangulator.GetTriangle3D(i, *t.P0, *t.P1, *t.P2);
        }
        return;
    }
    CHPolygonTriangulationRefinement refinement(&triangulator, maxEdge, kRefinementPasses);
    CreateTriangulation(refinement.GetNumTriangles());
    for (int i = 0; i < NumTriangles; ++i) {
        t_htriangle& t = Triangles[i];
        if (i == 0) {
            refinement.GetFirstTriangle3D(*t.P0, *t.P1, *t.P2);
        } else {
            refinement.GetNextTriangle3D(*t.P0, *t.P1, *t.P2);
        }
    }
}

void CHTriangulation::CreateSimpleFanTriangulationFromPolygon(CSSE3dPolygon* polygon)
{
    if (polygon == nullptr) {
        CreateTriangulation(0);
        return;
    }
    CSSE3dPolygon copy;
    copy.CreateSimilar(polygon);
    copy.CalcGeometricCenter();
    const int n = copy.GetNumPoints();
    CreateTriangulation(n);
    SSEPoint centre;
    copy.GetGeometricCenter(centre);
    // The closing triangle, from the last point to the first, comes first.
    for (int i = 0; i < NumTriangles; ++i) {
        t_htriangle& t = Triangles[i];
        *t.P0 = PointOrOrigin(copy, i == 0 ? n - 1 : i - 1);
        *t.P1 = PointOrOrigin(copy, i);
        *t.P2 = centre;
    }
}

void CHTriangulation::LayRuledBand(CSSE3dPolygon& a, CSSE3dPolygon& b, int first)
{
    const int n = a.GetNumPoints();
    const __m128 scale = _mm_setr_ps(ScaleX, ScaleY, ScaleZ, 0.0f);
    const auto scaled = [scale](const CSSE3dPolygon& ring, int i) {
        SSEPoint p = PointOrOrigin(ring, i);
        p.sse = _mm_mul_ps(p.sse, scale);
        return p;
    };
    int index = first;
    // The segment that closes the ring, then the others in order.
    for (int k = 0; k < n; ++k) {
        const int i = k == 0 ? n - 1 : k - 1;
        const int next = k == 0 ? 0 : k;
        const SSEPoint pa = scaled(a, i), pb = scaled(a, next), pc = scaled(b, i), pd = scaled(b, next);
        t_htriangle& firstHalf = Triangles[index++];
        *firstHalf.P0 = pa;
        *firstHalf.P1 = pb;
        *firstHalf.P2 = pc;
        t_htriangle& secondHalf = Triangles[index++];
        *secondHalf.P0 = pc;
        *secondHalf.P1 = pb;
        *secondHalf.P2 = pd;
    }
}

void CHTriangulation::CreateRuledBand(CSSE3dPolygon* a, CSSE3dPolygon* b)
{
    if (a == nullptr || b == nullptr) {
        CreateTriangulation(0);
        return;
    }
    CreateTriangulation(2 * a->GetNumPoints());
    if (NumTriangles > 0) LayRuledBand(*a, *b, 0);
}

void CHTriangulation::CreateLoftedBands(CSSE3dPolygon* a, CSSE3dPolygon* b, int steps)
{
    if (a == nullptr || b == nullptr || steps < 0) {
        CreateTriangulation(0);
        return;
    }
    const long long perBand = 2LL * a->GetNumPoints();
    const long long total = perBand * (steps + 1LL);
    if (total > 0x7fffffff) AfxThrowMemoryException();
    CreateTriangulation(static_cast<int>(total));
    if (NumTriangles == 0) return;
    const float fraction = 1.0f / static_cast<float>(steps + 1);
    for (int level = 0; level <= steps; ++level) {
        CSSE3dPolygon lower(*a);
        CSSE3dPolygon upper(*a);
        lower.MoveTowardsPolygon(b, static_cast<float>(level) * fraction);
        upper.MoveTowardsPolygon(b, static_cast<float>(level + 1) * fraction);
        LayRuledBand(lower, upper, static_cast<int>(perBand * level));
    }
}
