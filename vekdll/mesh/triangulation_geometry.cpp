// The global box and centre, and the per-triangle vectors and normals derived
// from the corners.

#include <smmintrin.h>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/mesh/triangulation.h"

namespace {

// Starting values of the global box. A corner beyond them in the wrong
// direction does not move the box, so a mesh wholly above 1000000 in x keeps
// 1000000 as its minimum x.
constexpr float kBoxStartMinimum = 1000000.0f;
constexpr float kBoxStartMaximum = -1000000.0f;

} // namespace

void CHTriangulation::CalcBoundingBox()
{
    __m128 lowest = _mm_set1_ps(kBoxStartMinimum);
    __m128 highest = _mm_set1_ps(kBoxStartMaximum);
    const int corners = 3 * NumTriangles;
    for (int i = 0; i < corners; ++i) {
        lowest = _mm_min_ps(EdgeArray[i].sse, lowest);
        highest = _mm_max_ps(EdgeArray[i].sse, highest);
    }
    MinPoint->sse = lowest;
    MaxPoint->sse = highest;
}

void CHTriangulation::CalcCenterPoint()
{
    __m128 sum = _mm_setzero_ps();
    const int corners = 3 * NumTriangles;
    for (int i = 0; i < corners; ++i) sum = _mm_add_ps(sum, EdgeArray[i].sse);
    // With no corners this is 0 / 0: the centre of an empty mesh is not a number.
    CenterPoint->sse = _mm_div_ps(sum, _mm_set1_ps(static_cast<float>(corners)));
}

void CHTriangulation::CalcSTV()
{
    for (int i = 0; i < NumTriangles; ++i) {
        const __m128 p0 = EdgeArray[3 * i].sse;
        const __m128 p1 = EdgeArray[3 * i + 1].sse;
        const __m128 p2 = EdgeArray[3 * i + 2].sse;
        SArray[i].sse = _mm_sub_ps(p1, p0);
        TArray[i].sse = _mm_sub_ps(p2, p0);
        VArray[i].sse = _mm_sub_ps(p2, p1);
        MinPointArray[i].sse = _mm_min_ps(p2, _mm_min_ps(p1, p0));
        MaxPointArray[i].sse = _mm_max_ps(p2, _mm_max_ps(p1, p0));
    }
}

void CHTriangulation::CalcNormalsFromVertices()
{
    for (int i = 0; i < NumTriangles; ++i) {
        const __m128 flat = CSSEFns::normalizevector(CSSEFns::vectorproduct(SArray[i].sse, TArray[i].sse));
        for (int corner = 0; corner < 3; ++corner) NormalArray[3 * i + corner].sse = flat;
    }
}

// Despite its name this neither looks at the box nor turns a triangle over:
// it gives every triangle its S x T normal, which way ever that faces.
void CHTriangulation::OrientTrianglesTowardsBBoxCenter()
{
    CalcNormalsFromVertices();
}
