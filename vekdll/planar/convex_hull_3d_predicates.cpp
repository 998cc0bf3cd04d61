// The exact orientation tests of the spatial hull and its self-tests.

#include "vekdll/planar/convex_hull_3d.h"

#include "vekdll/planar/grid_arithmetic.h"
#include "vekdll/planar/hull_rings.h"

using vek::detail::GridAdd;
using vek::detail::GridMul;
using vek::detail::GridSub;

void CHConvexHull3D::SubVec(const long long a[3], const long long b[3], long long c[3])
{
    for (int i = 0; i < 3; ++i) c[i] = GridSub(a[i], b[i]);
}

int CHConvexHull3D::VolumeSign(tFaceStructure* f, tVertexStructure* p)
{
    long long a[3];
    long long b[3];
    long long c[3];
    SubVec(f->Vertex[0]->Coordinate, p->Coordinate, a);
    SubVec(f->Vertex[1]->Coordinate, p->Coordinate, b);
    SubVec(f->Vertex[2]->Coordinate, p->Coordinate, c);
    const long long volume =
        GridAdd(GridAdd(GridMul(a[0], GridSub(GridMul(b[1], c[2]), GridMul(b[2], c[1]))),
                        GridMul(a[1], GridSub(GridMul(b[2], c[0]), GridMul(b[0], c[2])))),
                GridMul(a[2], GridSub(GridMul(b[0], c[1]), GridMul(b[1], c[0]))));
    if (volume > 0) return 1;
    if (volume < 0) return -1;
    return 0;
}

bool CHConvexHull3D::Collinear(tVertexStructure* a, tVertexStructure* b, tVertexStructure* c)
{
    long long ab[3];
    long long ac[3];
    SubVec(b->Coordinate, a->Coordinate, ab);
    SubVec(c->Coordinate, a->Coordinate, ac);
    return GridSub(GridMul(ab[1], ac[2]), GridMul(ab[2], ac[1])) == 0 &&
           GridSub(GridMul(ab[2], ac[0]), GridMul(ab[0], ac[2])) == 0 &&
           GridSub(GridMul(ab[0], ac[1]), GridMul(ab[1], ac[0])) == 0;
}

bool CHConvexHull3D::Checks()
{
    const bool consistent = Consistency();
    const bool convex = Convexity();
    CheckEuler();
    CheckEndpts();
    return consistent && convex;
}

bool CHConvexHull3D::Consistency()
{
    // Each edge must be named by both faces it borders.
    bool consistent = true;
    vek::detail::ForEachInRing(Edges, [&consistent](const tEdgeStructure* e) {
        for (const tFaceStructure* f : e->AdjacentFace) {
            if (f == nullptr || (f->Edge[0] != e && f->Edge[1] != e && f->Edge[2] != e)) consistent = false;
        }
    });
    return consistent;
}

bool CHConvexHull3D::Convexity()
{
    // No vertex added so far may see a face from outside.
    bool convex = true;
    vek::detail::ForEachInRing(Faces, [this, &convex](tFaceStructure* f) {
        vek::detail::ForEachInRing(Vertices, [this, f, &convex](tVertexStructure* v) {
            if (v->Processed && VolumeSign(f, v) < 0) convex = false;
        });
    });
    return convex;
}
