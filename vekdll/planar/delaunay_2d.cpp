// The lifted Delaunay triangulation: the hull of the lifted points, cut down
// to its lower faces.

#include "vekdll/planar/delaunay_2d.h"

#include <cstdint>
#include <cstdio>

#include "vekdll/planar/grid_arithmetic.h"
#include "vekdll/planar/hull_rings.h"
#include "vekdll/platform/clock.h"
#include "vekdll/platform/user_hooks.h"

CH2DDelaunay::CH2DDelaunay(const CH2DDelaunay& other) : CHConvexHull3D(other)
{
    TopBorder = other.TopBorder;
    BottomBorder = other.BottomBorder;
}

CH2DDelaunay& CH2DDelaunay::operator=(const CH2DDelaunay& other)
{
    CHConvexHull3D::operator=(other);
    TopBorder = other.TopBorder;
    BottomBorder = other.BottomBorder;
    return *this;
}

void CH2DDelaunay::AppendVertex(float x, float y, int index, bool isTop)
{
    AppendVertex2D(x, y, index, isTop);
}

long long CH2DDelaunay::NormZ(tFaceStructure* f)
{
    using vek::detail::GridMul;
    using vek::detail::GridSub;
    const long long* a = f->Vertex[0]->Coordinate;
    const long long* b = f->Vertex[1]->Coordinate;
    const long long* c = f->Vertex[2]->Coordinate;
    return GridSub(GridMul(GridSub(c[1], a[1]), GridSub(b[0], a[0])),
                   GridMul(GridSub(b[1], a[1]), GridSub(c[0], a[0])));
}

void CH2DDelaunay::LowerFaces()
{
    int count = 0;
    vek::detail::ForEachInRing(Faces, [this, &count](tFaceStructure* f) {
        ++count;
        if (static_cast<double>(NormZ(f)) < 0.0) f->Lower = true;
    });
    // The edges stay: those of the released faces name them still, and are
    // never read again.
    tFaceStructure* f = Faces;
    for (int i = 0; i < count; ++i) {
        tFaceStructure* next = f->Next;
        if (!f->Lower) DeleteFace(f);
        f = next;
    }
}

void CH2DDelaunay::CalcDelaunayTriangulation()
{
    // Once lowered the structure is no hull: building again would walk
    // edges whose faces are gone.
    if (Faces != nullptr) return;
    const std::uint32_t start = vek::TimeGetTime();
    DoubleTriangle();
    ConstructHull();
    EdgeOrderOnFaces();
    LowerFaces();
    CalcNumFaces();
    CalcNumEdges();
    CalcNumVertices();
    const std::uint32_t elapsed = vek::TimeGetTime() - start;
    char text[96];
    std::snprintf(text, sizeof text, "Time for 2D-Delaunay ms: %d\n Vertices: %d", static_cast<int>(elapsed),
                  NumVertices);
    vek::ShowMessage(text);
}
