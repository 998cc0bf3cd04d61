// Turning, mirroring and disturbing the points of a polygon in place.

#include <cmath>
#include <utility>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/platform/crt_random.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// AddNoiseXY seeds afresh on every call, so the noise is the same each time.
constexpr std::uint32_t kNoiseSeed = 43211;
// The middle of the generator's range and its width.
constexpr int kNoiseMiddle = 16383;
constexpr double kNoiseRange = 32767.0;

// Every point p becomes M p, or M (p - about) + about. The products are the
// library's four-lane sums, with the points' w of 0.
void ApplyMatrix(CSSE3dPolygon& polygon, t_ssematrix3& m, const SSEPoint* about)
{
    for (int i = 0; i < polygon.GetNumPoints(); ++i) {
        SSEPoint p;
        polygon.GetPointSSE(i, p);
        if (about == nullptr) {
            p.sse = CSSEFns::transform(p.sse, m);
        } else {
            p.sse = _mm_add_ps(CSSEFns::transform(_mm_sub_ps(p.sse, about->sse), m), about->sse);
        }
        polygon.SetPointSSE(i, p);
    }
}

// The matrix of TransformVertices. Its entries are not those of a rotation
// (the first row mixes in -sin a twice); they are kept as they are, since
// the surfaces laid out with it depend on them.
t_ssematrix3 VertexTransform(float a, float b)
{
    const float ca = std::cos(a);
    const float sa = std::sin(a);
    const float cb = std::cos(b);
    const float sb = std::sin(b);
    t_ssematrix3 m;
    m.row0 = _mm_setr_ps(ca * cb, -sa, -cb * sa, 0.0f);
    m.row1 = _mm_setr_ps(sa * cb, ca, -sb * sa, 0.0f);
    m.row2 = _mm_setr_ps(sb, 0.0f, cb, 0.0f);
    return m;
}

// Every z becomes value - z.
void MirrorHeights(CSSE3dPolygon& polygon, float value)
{
    for (int i = 0; i < polygon.GetNumPoints(); ++i) {
        float z = 0.0f;
        polygon.GetPointZ(i, z);
        polygon.SetPointZ(i, value - z);
    }
}

} // namespace

void CSSE3dPolygon::RotateZ(float a)
{
    const float c = std::cos(a);
    const float s = std::sin(a);
    for (int i = 0; i < NumPoints; ++i) {
        const float x = PointsX[i];
        const float y = PointsY[i];
        SetPointXY(i, c * x + s * y, -s * x + c * y);
    }
}

void CSSE3dPolygon::RotateXYZ(float a, float b, float c)
{
    const float ca = std::cos(a);
    const float sa = std::sin(a);
    const float cb = std::cos(b);
    const float sb = std::sin(b);
    const float cc = std::cos(c);
    const float sc = std::sin(c);
    t_ssematrix3 m;
    m.row0 = _mm_setr_ps(cc * cb, ca * sc - sa * sb * cc, cc * sb * ca + sa * sc, 0.0f);
    m.row1 = _mm_setr_ps(-sc * cb, sc * sb * sa + ca * cc, sa * cc - ca * sc * sb, 0.0f);
    m.row2 = _mm_setr_ps(-sb, -sa * cb, ca * cb, 0.0f);
    ApplyMatrix(*this, m, nullptr);
}

void CSSE3dPolygon::TransformVertices(float a, float b)
{
    t_ssematrix3 m = VertexTransform(a, b);
    ApplyMatrix(*this, m, nullptr);
    CalcBoundingBox();
}

void CSSE3dPolygon::TransformVerticesAboutCenter(float a, float b)
{
    CalcGeometricCenter();
    t_ssematrix3 m = VertexTransform(a, b);
    ApplyMatrix(*this, m, GeometricCenter);
    CalcBoundingBox();
}

void CSSE3dPolygon::FlipOrientationZ(bool twice)
{
    CalcGeometricCenter();
    MirrorHeights(*this, twice ? 2.0f * GeometricCenter->z : GeometricCenter->z);
}

void CSSE3dPolygon::FlipOrientationAndMoveCoordsZ(float value)
{
    MirrorHeights(*this, value);
}

void CSSE3dPolygon::SwapXandZCoord()
{
    for (int i = 0; i < NumPoints; ++i) SetPoint(i, PointsZ[i], PointsY[i], PointsX[i]);
}

void CSSE3dPolygon::SwapYandZCoord()
{
    for (int i = 0; i < NumPoints; ++i) SetPoint(i, PointsX[i], PointsZ[i], PointsY[i]);
}

void CSSE3dPolygon::GetMirrorPolygon(CSSE3dPolygon* out)
{
    if (out == nullptr) return;
    // Mirrored into itself, the line is read from a copy taken first.
    CSSE3dPolygon copy;
    const CSSE3dPolygon* source = this;
    if (out == this) {
        copy.CreateSimilar(this);
        source = &copy;
    }
    const int n = source->NumPoints;
    out->Free();
    out->Create(n);
    for (int i = 0; i < n; ++i) out->SetPoint(i, -source->PointsX[i], source->PointsY[i], source->PointsZ[i]);
}

void CSSE3dPolygon::AddNoiseXY(float amplitude)
{
    vek::CrtRandom random(kNoiseSeed);
    const auto draw = [&] {
        return static_cast<double>(random.Next() - kNoiseMiddle) / kNoiseRange * static_cast<double>(amplitude);
    };
    for (int i = 0; i < NumPoints; ++i) {
        // The offsets are in double and each sum is rounded back to float, x first.
        const float x = static_cast<float>(static_cast<double>(PointsX[i]) + draw());
        const float y = static_cast<float>(static_cast<double>(PointsY[i]) + draw());
        SetPointXY(i, x, y);
    }
}
