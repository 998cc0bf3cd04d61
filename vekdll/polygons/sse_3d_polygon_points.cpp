// Reads and writes of single points and of one coordinate of all points.
// Reads never recompute anything; every write that takes effect marks the box
// as stale, also a write to the normalised copy, which doesn't move the box.

#include "vekdll/polygons/polygon_blocks.h"
#include "vekdll/polygons/sse_3d_polygon.h"

// ---------------------------------------------------------------- reads

void CSSE3dPolygon::GetPoint(int i, float& x, float& y, float& z) const
{
    if (!InRange(i)) return;
    x = PointsX[i];
    y = PointsY[i];
    z = PointsZ[i];
}

void CSSE3dPolygon::GetPointX(int i, float& x) const
{
    if (InRange(i)) x = PointsX[i];
}

void CSSE3dPolygon::GetPointY(int i, float& y) const
{
    if (InRange(i)) y = PointsY[i];
}

void CSSE3dPolygon::GetPointZ(int i, float& z) const
{
    if (InRange(i)) z = PointsZ[i];
}

void CSSE3dPolygon::GetPointXY(int i, float& x, float& y) const
{
    if (!InRange(i)) return;
    x = PointsX[i];
    y = PointsY[i];
}

void CSSE3dPolygon::GetPointXZ(int i, float& x, float& z) const
{
    if (!InRange(i)) return;
    x = PointsX[i];
    z = PointsZ[i];
}

void CSSE3dPolygon::GetPointZY(int i, float& z, float& y) const
{
    if (!InRange(i)) return;
    z = PointsZ[i];
    y = PointsY[i];
}

void CSSE3dPolygon::GetPointSSE(int i, SSEPoint& p) const
{
    p.sse = _mm_setzero_ps();
    if (InRange(i)) p.sse = _mm_setr_ps(PointsX[i], PointsY[i], PointsZ[i], 0.0f);
}

void CSSE3dPolygon::GetPointXYSSE(int i, SSEPoint& p) const
{
    p.sse = _mm_setzero_ps();
    if (InRange(i)) p.sse = _mm_setr_ps(PointsX[i], PointsY[i], 0.0f, 0.0f);
}

void CSSE3dPolygon::GetPointSSEClosed(int i, SSEPoint& p) const
{
    // The remainder truncates, so a negative index stays out of range and
    // gives the zero point. An empty polygon has no point to wrap onto and
    // gives the zero point too.
    if (NumPoints < 1) {
        p.sse = _mm_setzero_ps();
        return;
    }
    GetPointSSE(i % NumPoints, p);
}

void CSSE3dPolygon::GetPointNormalized(int i, float& x, float& y, float& z) const
{
    if (!InRange(i)) return;
    x = NormalizedX[i];
    y = NormalizedY[i];
    z = NormalizedZ[i];
}

void CSSE3dPolygon::GetPointNormalizedXY(int i, float& x, float& y) const
{
    if (!InRange(i)) return;
    x = NormalizedX[i];
    y = NormalizedY[i];
}

void CSSE3dPolygon::GetPointNormalizedSSE(int i, SSEPoint& p) const
{
    if (!InRange(i)) return;
    p.x = NormalizedX[i];
    p.y = NormalizedY[i];
    p.z = NormalizedZ[i];
}

void CSSE3dPolygon::GetPointNormalizedXYSSE(int i, SSEPoint& p) const
{
    p.sse = _mm_setzero_ps();
    if (InRange(i)) p.sse = _mm_setr_ps(NormalizedX[i], NormalizedY[i], 0.0f, 0.0f);
}

// ---------------------------------------------------------------- writes

void CSSE3dPolygon::SetPoint(int i, float x, float y, float z)
{
    if (!InRange(i)) return;
    PointsX[i] = x;
    PointsY[i] = y;
    PointsZ[i] = z;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointSSE(int i, SSEPoint& p)
{
    SetPoint(i, p.x, p.y, p.z);
}

void CSSE3dPolygon::SetPointX(int i, float x)
{
    if (!InRange(i)) return;
    PointsX[i] = x;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointY(int i, float y)
{
    if (!InRange(i)) return;
    PointsY[i] = y;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointZ(int i, float z)
{
    if (!InRange(i)) return;
    PointsZ[i] = z;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointXY(int i, float x, float y)
{
    if (!InRange(i)) return;
    PointsX[i] = x;
    PointsY[i] = y;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointXZ(int i, float x, float z)
{
    if (!InRange(i)) return;
    PointsX[i] = x;
    PointsZ[i] = z;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointZY(int i, float z, float y)
{
    if (!InRange(i)) return;
    PointsZ[i] = z;
    PointsY[i] = y;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointNormalized(int i, float x, float y, float z)
{
    if (!InRange(i)) return;
    NormalizedX[i] = x;
    NormalizedY[i] = y;
    NormalizedZ[i] = z;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetPointNormalizedSSE(int i, SSEPoint& p)
{
    SetPointNormalized(i, p.x, p.y, p.z);
}

// ---------------------------------------------------------------- one coordinate of all points

namespace {

void Fill(float* values, int count, float v)
{
    for (int i = 0; i < count; ++i) values[i] = v;
}

void AddToAll(float* values, int count, float v)
{
    for (int i = 0; i < count; ++i) values[i] += v;
}

} // namespace

void CSSE3dPolygon::SetAllYValues(float y)
{
    // Only this one of the whole-polygon writes leaves the flag of an empty
    // polygon alone.
    Fill(PointsY, NumPoints, y);
    if (NumPoints > 0) BoundingBoxCalculated = false;
}

void CSSE3dPolygon::SetAllZValues(float z)
{
    Fill(PointsZ, NumPoints, z);
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::AddValueToAllXValues(float dx)
{
    AddToAll(PointsX, NumPoints, dx);
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::AddValueToAllYValues(float dy)
{
    AddToAll(PointsY, NumPoints, dy);
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::NormalizeXYZ(t_resolutiondata& resolution)
{
    // Whole blocks, the unused lanes of the last one included: one multiply
    // per coordinate and four points.
    const long long blocks = static_cast<long long>(vek::detail::BlocksForPoints(NumPoints));
    const __m128 rx = _mm_set1_ps(resolution.ResolutionX);
    const __m128 ry = _mm_set1_ps(resolution.ResolutionY);
    const __m128 rz = _mm_set1_ps(resolution.ResolutionZ);
    for (long long k = 0; k < 4 * blocks; k += 4) {
        _mm_store_ps(NormalizedX + k, _mm_mul_ps(_mm_load_ps(PointsX + k), rx));
        _mm_store_ps(NormalizedY + k, _mm_mul_ps(_mm_load_ps(PointsY + k), ry));
        _mm_store_ps(NormalizedZ + k, _mm_mul_ps(_mm_load_ps(PointsZ + k), rz));
    }
}
