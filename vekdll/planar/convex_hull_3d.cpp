// The spatial hull's input, its one computation and the reading of faces.

#include "vekdll/planar/convex_hull_3d.h"

#include "vekdll/planar/grid_arithmetic.h"
#include "vekdll/planar/hull_rings.h"

using vek::detail::kPlanarGrid;
using vek::detail::TruncateToGrid;

namespace {

bool IsCorner(const tFaceStructure* f, int i)
{
    return f != nullptr && i >= 0 && i < 3 && f->Vertex[i] != nullptr;
}

} // namespace

CHConvexHull3D::~CHConvexHull3D()
{
    vek::detail::ReleaseRing(Edges);
    vek::detail::ReleaseRing(Vertices);
    vek::detail::ReleaseRing(Faces);
}

void CHConvexHull3D::AppendVertex3D(float x, float y, float z, float scale)
{
    // The product is taken in single precision, the rounding half in double.
    const long long gx = TruncateToGrid(static_cast<double>(x * scale) + 0.5);
    const long long gy = TruncateToGrid(static_cast<double>(y * scale) + 0.5);
    const long long gz = TruncateToGrid(static_cast<double>(z * scale) + 0.5);
    if (NewVertex(gx, gy, gz) != nullptr) ++VertexCount;
}

void CHConvexHull3D::AppendVertex2D(float x, float y, int index, bool isTop)
{
    const long long gx = TruncateToGrid(x * kPlanarGrid + 0.5);
    const long long gy = TruncateToGrid(y * kPlanarGrid + 0.5);
    using vek::detail::GridAdd;
    using vek::detail::GridMul;
    tVertexStructure* v = NewVertex(gx, gy, GridAdd(GridMul(gx, gx), GridMul(gy, gy)));
    if (v == nullptr) return;
    v->Index = index == -1 ? VertexCount : index;
    v->IsTop = isTop;
    ++VertexCount;
}

void CHConvexHull3D::CalcConvexHull()
{
    DoubleTriangle();
    ConstructHull();
    EdgeOrderOnFaces();
    CalcNumFaces();
    CalcNumEdges();
    CalcNumVertices();
    VertexCount = NumVertices;
}

void CHConvexHull3D::CalcNumFaces()
{
    NumFaces = vek::detail::CountRing(Faces);
}

void CHConvexHull3D::CalcNumEdges()
{
    NumEdges = vek::detail::CountRing(Edges);
}

void CHConvexHull3D::CalcNumVertices()
{
    NumVertices = vek::detail::CountRing(Vertices);
}

tFaceStructure* CHConvexHull3D::GetFaces() const
{
    return Faces;
}

int CHConvexHull3D::GetNumFaces() const
{
    return NumFaces;
}

SSEPoint CHConvexHull3D::GetVertexFromFace(tFaceStructure* f, int i) const
{
    // A missing face or corner reads as the origin.
    SSEPoint p;
    p.sse = _mm_setzero_ps();
    if (!IsCorner(f, i)) return p;
    const long long* c = f->Vertex[i]->Coordinate;
    // Converted to float first, then divided in double precision.
    p.x = static_cast<float>(static_cast<float>(c[0]) / kPlanarGrid);
    p.y = static_cast<float>(static_cast<float>(c[1]) / kPlanarGrid);
    p.z = static_cast<float>(static_cast<float>(c[2]) / kPlanarGrid);
    return p;
}

SSEPoint CHConvexHull3D::GetVertexFromFace3D(tFaceStructure* f, int i, SSEPoint& s) const
{
    SSEPoint p;
    p.sse = _mm_setzero_ps();
    if (!IsCorner(f, i)) return p;
    const long long* c = f->Vertex[i]->Coordinate;
    p.sse = _mm_div_ps(
        _mm_setr_ps(static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2]), 0.0f), s.sse);
    return p;
}
