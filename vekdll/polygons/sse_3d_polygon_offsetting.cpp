// Growing and shrinking a line: translation, scaling and the radial push of
// every point from a centre.

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// A grown line is resampled to this spacing, dense enough for the point-wise fills.
constexpr float kGrownLineSpacing = 0.6f;

} // namespace

void CSSE3dPolygon::ShiftLine(float dx, float dy, float dz)
{
    for (int i = 0; i < NumPoints; ++i) {
        PointsX[i] += dx;
        PointsY[i] += dy;
        PointsZ[i] += dz;
    }
    CalcBoundingBox();
}

void CSSE3dPolygon::BlowLine(float sx, float sy, float sz, bool reparametrize)
{
    for (int i = 0; i < NumPoints; ++i) SetPoint(i, PointsX[i] * sx, PointsY[i] * sy, PointsZ[i] * sz);
    if (reparametrize) ReParametrize(kGrownLineSpacing);
}

void CSSE3dPolygon::BlowLineAroundCenter(float sx, float sy, float sz, bool reparametrize)
{
    CalcGeometricCenter();
    const __m128 centre = GeometricCenter->sse;
    const __m128 scale = _mm_setr_ps(sx, sy, sz, 0.0f);
    for (int i = 0; i < NumPoints; ++i) {
        SSEPoint p;
        GetPointSSE(i, p);
        p.sse = _mm_add_ps(_mm_mul_ps(_mm_sub_ps(p.sse, centre), scale), centre);
        SetPointSSE(i, p);
    }
    if (reparametrize) ReParametrize(kGrownLineSpacing);
}

void CSSE3dPolygon::PushFromCentre(const SSEPoint& centre, float distance)
{
    // An erosion is the push by the negative distance: -(d v) / |v| is the
    // negated quotient, and p + (-q) is p - q, bit for bit.
    for (int i = 0; i < NumPoints; ++i) {
        SSEPoint p;
        GetPointSSE(i, p);
        const __m128 v = _mm_sub_ps(p.sse, centre.sse);
        const __m128 length = _mm_set1_ps(CSSEFns::vectorlen(v));
        p.sse = _mm_add_ps(p.sse, _mm_div_ps(_mm_mul_ps(_mm_set1_ps(distance), v), length));
        SetPointSSE(i, p);
    }
}

void CSSE3dPolygon::DoQuasiMinkowskiDilation(float distance, bool useHull)
{
    // The centre is that of the line as it came, before any hull.
    CalcGeometricCenter();
    const SSEPoint centre = *GeometricCenter;
    if (useHull) ReplaceByConvexHullXY();
    PushFromCentre(centre, distance);
}

void CSSE3dPolygon::DoQuasiMinkowskiErosion(float distance, bool useHull)
{
    DoQuasiMinkowskiDilation(-distance, useHull);
}

void CSSE3dPolygon::DoQuasiMinkowskiDilationCenter(float distance, SSEPoint& centre)
{
    PushFromCentre(centre, distance);
}
