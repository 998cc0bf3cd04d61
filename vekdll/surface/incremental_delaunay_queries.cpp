// Questions to the triangulation: where a point lies, which triangle holds
// or is nearest to it, and what sees what.

#include <algorithm>
#include <cmath>
#include <limits>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/side_test.h"

namespace {

using vek::detail::kOnEdgeTolerance;

// The three cross values of p against the sides 0, 1, 2 of a triangle.
struct SideValues {
    float f[3];
};

SideValues SideValuesOf(const ZrCIncrementalDelaunay2D& d, const t_hdelaunaytriangle* triangle, const SSEPoint& p)
{
    const SSEPoint& a = *d.GetVertexPtr(triangle->Vertex[0]);
    const SSEPoint& b = *d.GetVertexPtr(triangle->Vertex[1]);
    const SSEPoint& c = *d.GetVertexPtr(triangle->Vertex[2]);
    return {{d.SideTest(a, b, p), d.SideTest(b, c, p), d.SideTest(c, a, p)}};
}

bool WithinTolerance(float f)
{
    return -kOnEdgeTolerance < f && f < kOnEdgeTolerance;
}

} // namespace

EPointWhere ZrCIncrementalDelaunay2D::PointWhere(int v, const t_hdelaunaytriangle* triangle) const
{
    return PointWhere(Vertices[v].x, Vertices[v].y, triangle);
}

// Inside, on one side, or outside, with the absolute tolerance 0.005 on
// twice the area. A point within tolerance of a corner is on two sides at
// once and so comes out outside: a duplicate vertex finds no triangle.
EPointWhere ZrCIncrementalDelaunay2D::PointWhere(float x, float y, const t_hdelaunaytriangle* triangle) const
{
    if (triangle == nullptr) return ePointOutside;
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, 0.0f, 0.0f);
    const SideValues values = SideValuesOf(*this, triangle, p);
    const bool counterClockwise = GetOrientation(triangle) == 1;
    bool beyond[3];
    bool on[3];
    for (int i = 0; i < 3; ++i) {
        const float f = values.f[i];
        beyond[i] = counterClockwise ? f > kOnEdgeTolerance : f < -kOnEdgeTolerance;
        on[i] = WithinTolerance(f);
    }
    if (beyond[0] && beyond[1] && beyond[2]) return ePointInside;
    if (on[0] && beyond[1] && beyond[2]) return ePointOnSide0;
    if (on[1] && beyond[0] && beyond[2]) return ePointOnSide1;
    if (on[2] && beyond[0] && beyond[1]) return ePointOnSide2;
    return ePointOutside;
}

// The first finalized triangle that holds (x, y) strictly, beyond the
// tolerance; a point on an edge or a corner belongs to none.
t_hdelaunaytriangle* ZrCIncrementalDelaunay2D::FindTriangleFromCoords(float x, float y)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, 0.0f, 0.0f);
    for (POSITION pos = FinalList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = FinalList.GetNext(pos);
        if (triangle == nullptr) continue;
        const SideValues v = SideValuesOf(*this, triangle, p);
        const bool insideCounterClockwise =
            v.f[0] > kOnEdgeTolerance && v.f[1] > kOnEdgeTolerance && v.f[2] > kOnEdgeTolerance;
        const bool insideClockwise =
            v.f[0] < -kOnEdgeTolerance && v.f[1] < -kOnEdgeTolerance && v.f[2] < -kOnEdgeTolerance;
        if (insideCounterClockwise || insideClockwise) return triangle;
    }
    return nullptr;
}

// The border triangle whose open side has its mid-point nearest to vertex
// v (squared distance over four lanes); the first found wins a tie.
t_hdelaunaytriangle* ZrCIncrementalDelaunay2D::FindNearestTriangle(int v, ESharedSide& side)
{
    const __m128 p = Vertices[v].sse;
    float best = 999999.9f;
    t_hdelaunaytriangle* nearest = nullptr;
    ESharedSide nearestSide = eSideNone;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        for (int s = 0; s < 3; ++s) {
            if (triangle->Neighbour[s] != nullptr) continue;
            const __m128 start = Vertices[triangle->Vertex[s]].sse;
            const __m128 end = Vertices[triangle->Vertex[(s + 1) % 3]].sse;
            const __m128 mid = _mm_mul_ps(_mm_add_ps(start, end), _mm_set1_ps(0.5f));
            const float distance = CSSEFns::euclideansqr(p, mid);
            if (distance < best) {
                best = distance;
                nearest = triangle;
                nearestSide = static_cast<ESharedSide>(s);
            }
        }
    }
    if (nearest != nullptr) side = nearestSide;
    return nearest;
}

t_hdelaunaytriangle* ZrCIncrementalDelaunay2D::NearestTriangle(const t_hdelaunaytriangle* triangle, float minDot,
                                                               float maxDist2)
{
    SSEPoint noOffset;
    noOffset.sse = _mm_setzero_ps();
    return NearestTriangle(triangle, minDot, maxDist2, noOffset);
}

// Among the finalized triangles that face nearly the same way as `triangle`
// (dot product of the normals above minDot), the one whose centre, moved by
// `offset`, lies nearest to the centre of `triangle`, closer than maxDist2
// (squared). Needs the centres and the normals computed; a triangle without
// them is passed over.
t_hdelaunaytriangle* ZrCIncrementalDelaunay2D::NearestTriangle(const t_hdelaunaytriangle* triangle, float minDot,
                                                               float maxDist2, const SSEPoint& offset)
{
    if (!Finalized || triangle == nullptr || triangle->Center == nullptr || triangle->Normal == nullptr) return nullptr;
    float best = maxDist2;
    t_hdelaunaytriangle* nearest = nullptr;
    for (POSITION pos = FinalList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* candidate = FinalList.GetNext(pos);
        if (candidate == nullptr || candidate->Center == nullptr || candidate->Normal == nullptr) continue;
        const __m128 moved = _mm_add_ps(candidate->Center->sse, offset.sse);
        const float distance = CSSEFns::euclideansqr(triangle->Center->sse, moved);
        if (distance < best && Visibility(candidate, triangle) > minDot) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

// True if vertex v lies strictly beyond side `side`, seen from inside a
// counter-clockwise triangle.
bool ZrCIncrementalDelaunay2D::Visible(int v, const t_hdelaunaytriangle* triangle, int side) const
{
    if (triangle == nullptr || side < 0 || side > 2) return false;
    const SSEPoint& start = Vertices[triangle->Vertex[side]];
    const SSEPoint& end = Vertices[triangle->Vertex[(side + 1) % 3]];
    return SideTest(start, end, Vertices[v]) < 0.0f;
}

float ZrCIncrementalDelaunay2D::Visibility(const t_hdelaunaytriangle* a, const t_hdelaunaytriangle* b)
{
    return CSSEFns::scalarproduct(a->Normal->sse, b->Normal->sse);
}

bool ZrCIncrementalDelaunay2D::CheckAcrossEdge(const SSEPoint& a, const SSEPoint& b, CSSE3dPolygon& polygon)
{
    const __m128 delta = _mm_sub_ps(b.sse, a.sse);
    const float length = CSSEFns::vectorlen(delta);
    // A zero or non-finite length gives no sample (and no 0 / 0 count).
    if (!(length > 0.0f) || !std::isfinite(length)) return false;
    const float step = std::min(length / 10.0f, 0.1f);
    const float samples = length / step;
    const int n = samples < static_cast<float>(std::numeric_limits<int>::max()) ? static_cast<int>(samples)
                                                                                : std::numeric_limits<int>::max();
    const __m128 direction = _mm_div_ps(delta, _mm_set1_ps(length));
    for (int i = 1; i <= n; ++i) {
        SSEPoint sample;
        sample.sse = _mm_add_ps(a.sse, _mm_mul_ps(_mm_set1_ps(static_cast<float>(i) * step), direction));
        if (polygon.PointInLineInnerArea(sample.x, sample.y, 1)) return true;
    }
    return false;
}
