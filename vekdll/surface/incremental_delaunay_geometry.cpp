// Geometry of the surface as a whole: its box and centre, and the arrays of
// triangle centres and normals that the triangles point into.

#include <cstring>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

SSEPoint* AllocatePoints(int n)
{
    if (n < 1) return nullptr;
    return static_cast<SSEPoint*>(SafeAlignedAlloc(static_cast<std::uint64_t>(n) * sizeof(SSEPoint), 16));
}

} // namespace

// The box of the corners of the present triangles, and its centre.
void ZrCIncrementalDelaunay2D::CalcBoundingBox()
{
    BoxOfCorners(PresentList(), *MinPoint, *MaxPoint);
    CenterPoint->sse = _mm_mul_ps(_mm_add_ps(MinPoint->sse, MaxPoint->sse), _mm_set1_ps(0.5f));
}

// The mean of all stored vertices, those of no triangle included, summed as
// vertex / count one by one.
void ZrCIncrementalDelaunay2D::CalcCenterPoint()
{
    CenterPoint->sse = MeanOfVertices();
}

// The mean of the start vertices of the edges; an empty list gives 0 / 0.
void ZrCIncrementalDelaunay2D::CalcGeometricCenterOfBorderLine(CList<t_hdelaunayedge*>* list, SSEPoint& result) const
{
    __m128 sum = _mm_setzero_ps();
    int count = 0;
    if (list != nullptr) {
        for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
            const t_hdelaunayedge* edge = list->GetNext(pos);
            if (edge == nullptr) continue;
            sum = _mm_add_ps(sum, Vertices[edge->Vertex[0]].sse);
            ++count;
        }
    }
    result.sse = _mm_div_ps(sum, _mm_set1_ps(static_cast<float>(count)));
}

void ZrCIncrementalDelaunay2D::ComputeCentreOfTriangle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c,
                                                       SSEPoint& result)
{
    result.sse = _mm_div_ps(_mm_add_ps(_mm_add_ps(a.sse, b.sse), c.sse), _mm_set1_ps(3.0f));
}

// Only a finalized surface has its centres computed: one per triangle of
// FinalList, in list order, each triangle pointing at its own.
void ZrCIncrementalDelaunay2D::ComputeCentresOfTriangles()
{
    if (!Finalized) return;
    CreateTriangleCentersField(static_cast<int>(FinalList.GetCount()));
    int i = 0;
    for (POSITION pos = FinalList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = FinalList.GetNext(pos);
        SSEPoint& centre = TriangleCenters[i++];
        if (triangle == nullptr) continue;
        ComputeCentreOfTriangle(Vertices[triangle->Vertex[0]], Vertices[triangle->Vertex[1]],
                                Vertices[triangle->Vertex[2]], centre);
        triangle->Center = &centre;
    }
}

// Writes the unit normal through the triangle's own Normal pointer, if it
// has one.
void ZrCIncrementalDelaunay2D::ComputeNormalVectorOfTriangle(t_hdelaunaytriangle* triangle)
{
    if (triangle == nullptr || triangle->Normal == nullptr) return;
    ComputeNormalVectorOfTriangle(triangle, triangle->Normal);
}

// The unit normal of (P1 - P0) x (P2 - P0). A degenerate triangle has the
// zero vector as its normal instead of a division by zero.
void ZrCIncrementalDelaunay2D::ComputeNormalVectorOfTriangle(const t_hdelaunaytriangle* triangle,
                                                             SSEPoint* result) const
{
    if (triangle == nullptr || result == nullptr) return;
    result->sse = UnitNormalOf(*triangle);
}

// Normals are computed on the working list, which the object keeps.
void ZrCIncrementalDelaunay2D::ComputeNormalVectorsOfTriangles()
{
    LeaveFinalizedState();
    CreateNormalVectorField(static_cast<int>(TriangleList.GetCount()));
    int i = 0;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = TriangleList.GetNext(pos);
        SSEPoint& normal = TriangleNormals[i++];
        if (triangle == nullptr) continue;
        triangle->Normal = &normal;
        ComputeNormalVectorOfTriangle(triangle);
    }
}

// True if the surface as a whole faces up: the mean of all normals has a z
// of at least 0. The object ends finalized.
bool ZrCIncrementalDelaunay2D::CalcNormalDirection()
{
    ComputeNormalVectorsOfTriangles();
    const int count = static_cast<int>(TriangleList.GetCount());
    __m128 sum = _mm_setzero_ps();
    for (int i = 0; i < count; ++i) sum = _mm_add_ps(sum, TriangleNormals[i].sse);
    FinalizeTriangleList();
    SSEPoint mean;
    mean.sse = _mm_div_ps(sum, _mm_set1_ps(static_cast<float>(count)));
    return mean.z >= 0.0f;
}

// The triangles' Normal and Center pointers are left as they are: the
// caller recomputes before reading them again.
void ZrCIncrementalDelaunay2D::CreateNormalVectorField(int n)
{
    ClearTriangleNormals();
    TriangleNormals = AllocatePoints(n);
}

void ZrCIncrementalDelaunay2D::CreateTriangleCentersField(int n)
{
    ClearTriangleCenters();
    TriangleCenters = AllocatePoints(n);
}

void ZrCIncrementalDelaunay2D::ClearTriangleCenters()
{
    SafeAlignedFree(TriangleCenters);
    TriangleCenters = nullptr;
}

void ZrCIncrementalDelaunay2D::ClearTriangleNormals()
{
    SafeAlignedFree(TriangleNormals);
    TriangleNormals = nullptr;
}

void ZrCIncrementalDelaunay2D::NormalizeVector(SSEPoint& point)
{
    point.sse = CSSEFns::normalizevector(point.sse);
}
