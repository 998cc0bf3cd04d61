// Scaling, shifting and rotating the corners of a mesh. Normals, main normals
// and the scan conversion grid are never touched here.

#include <cmath>

#include <smmintrin.h>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/mesh/triangulation.h"

namespace {

// Applies `change` (__m128 -> __m128) to each of `count` points.
template <class Change>
void ChangeEach(SSEPoint* points, int count, Change change)
{
    for (int i = 0; i < count; ++i) points[i].sse = change(points[i].sse);
}

auto MultiplyBy(__m128 factors)
{
    return [factors](__m128 p) { return _mm_mul_ps(p, factors); };
}

auto Add(__m128 offset)
{
    return [offset](__m128 p) { return _mm_add_ps(p, offset); };
}

// The rows of the rotation by the angles a, b, c, each row the coefficients of
// one output coordinate; every product is formed in the order written.
t_ssematrix3 Rotation(float a, float b, float c)
{
    const float ca = std::cos(a), sa = std::sin(a);
    const float cb = std::cos(b), sb = std::sin(b);
    const float cc = std::cos(c), sc = std::sin(c);
    t_ssematrix3 m;
    m.row0 = _mm_setr_ps(ca * cb, cc * sa - sc * sb * ca, ca * sb * cc + sc * sa, 0.0f);
    m.row1 = _mm_setr_ps(-sa * cb, sa * sb * sc + cc * ca, sc * ca - cc * sa * sb, 0.0f);
    m.row2 = _mm_setr_ps(-sb, -sc * cb, cc * cb, 0.0f);
    return m;
}

// The rotation by a and b alone, written out as its own matrix: the terms
// that vanish with a third angle of 0 are left out rather than computed as
// products with zero, which could turn a zero's sign.
t_ssematrix3 Rotation(float a, float b)
{
    const float ca = std::cos(a), sa = std::sin(a);
    const float cb = std::cos(b), sb = std::sin(b);
    t_ssematrix3 m;
    m.row0 = _mm_setr_ps(ca * cb, sa, ca * sb, 0.0f);
    m.row1 = _mm_setr_ps(-sa * cb, ca, -sa * sb, 0.0f);
    m.row2 = _mm_setr_ps(-sb, 0.0f, cb, 0.0f);
    return m;
}

} // namespace

void CHTriangulation::ScaleTriangulation()
{
    ChangeEach(EdgeArray, 3 * NumTriangles, MultiplyBy(_mm_setr_ps(ScaleX, ScaleY, ScaleZ, 0.0f)));
}

void CHTriangulation::ScaleTriangulationXY()
{
    ChangeEach(EdgeArray, 3 * NumTriangles, MultiplyBy(_mm_setr_ps(ScaleX, ScaleY, 1.0f, 0.0f)));
}

void CHTriangulation::ReScaleTriangulation(float scaleX, float scaleY, float scaleZ)
{
    ScaleX = scaleX;
    ScaleY = scaleY;
    ScaleZ = scaleZ;
    ScaleTriangulation();
    CalcBoundingBox();
    CalcSTV();
}

void CHTriangulation::BlowTriangulation(float factorX, float factorY, float factorZ)
{
    ChangeEach(EdgeArray, 3 * NumTriangles, MultiplyBy(_mm_setr_ps(factorX, factorY, factorZ, 0.0f)));
    CalcBoundingBox();
    CalcSTV();
}

// S, T and V are differences of corners and stay as they are; the boxes move
// with the corners. The centre point is left where it was.
void CHTriangulation::ShiftTriangulation(float dx, float dy, float dz)
{
    const auto shift = Add(_mm_setr_ps(dx, dy, dz, 0.0f));
    ChangeEach(EdgeArray, 3 * NumTriangles, shift);
    ChangeEach(MinPointArray, NumTriangles, shift);
    ChangeEach(MaxPointArray, NumTriangles, shift);
    ChangeEach(MinPoint, 1, shift);
    ChangeEach(MaxPoint, 1, shift);
}

void CHTriangulation::RotateCorners(t_ssematrix3& rotation, const SSEPoint* centre)
{
    if (centre == nullptr) {
        ChangeEach(EdgeArray, 3 * NumTriangles, [&rotation](__m128 p) { return CSSEFns::transform(p, rotation); });
    } else {
        const __m128 c = centre->sse;
        ChangeEach(EdgeArray, 3 * NumTriangles, [&rotation, c](__m128 p) {
            return _mm_add_ps(CSSEFns::transform(_mm_sub_ps(p, c), rotation), c);
        });
    }
    CalcBoundingBox();
    CalcSTV();
}

void CHTriangulation::TransformVertices(float a, float b)
{
    t_ssematrix3 rotation = Rotation(a, b);
    RotateCorners(rotation, nullptr);
}

void CHTriangulation::TransformVertices(float a, float b, float c)
{
    t_ssematrix3 rotation = Rotation(a, b, c);
    RotateCorners(rotation, nullptr);
}

void CHTriangulation::TransformVerticesAboutPoint(float a, float b, SSEPoint& centre)
{
    t_ssematrix3 rotation = Rotation(a, b);
    RotateCorners(rotation, &centre);
}

void CHTriangulation::TransformVerticesAboutPoint(float a, float b, float c, SSEPoint& centre)
{
    t_ssematrix3 rotation = Rotation(a, b, c);
    RotateCorners(rotation, &centre);
}
