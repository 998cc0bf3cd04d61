// Deep copies of a mesh and the joining of two meshes.

#include "vekdll/mesh/triangulation.h"

void CHTriangulation::CopyTriangleData(const CHTriangulation& src, int from, int to)
{
    for (int corner = 0; corner < 3; ++corner) {
        EdgeArray[3 * to + corner] = src.EdgeArray[3 * from + corner];
        NormalArray[3 * to + corner] = src.NormalArray[3 * from + corner];
    }
    MainNormalArray[to] = src.MainNormalArray[from];
    TArray[to] = src.TArray[from];
    SArray[to] = src.SArray[from];
    VArray[to] = src.VArray[from];
    // Both ends of the copied box take the source's minimum: a copy's
    // per-triangle maxima are rebuilt by CalcSTV, as after every copy.
    MinPointArray[to] = src.MinPointArray[from];
    MaxPointArray[to] = src.MinPointArray[from];
    Triangles[to].Index = src.Triangles[from].Index;
    Triangles[to].Flag = src.Triangles[from].Flag;
}

void CHTriangulation::CopyTrianglesFrom(const CHTriangulation& src, int offset)
{
    for (int i = 0; i < src.NumTriangles; ++i) {
        CopyTriangleData(src, i, offset + i);
        // Neighbour pointers are taken over as they are: they keep pointing
        // at the source's records until the next CalcNeighbours.
        Triangles[offset + i].Neighbour0 = src.Triangles[i].Neighbour0;
        Triangles[offset + i].Neighbour1 = src.Triangles[i].Neighbour1;
        Triangles[offset + i].Neighbour2 = src.Triangles[i].Neighbour2;
    }
}

void CHTriangulation::CopyFromHTriangulation(const CHTriangulation* other)
{
    if (other == nullptr || other == this) return;
    CreateTriangulation(other->NumTriangles);
    CopyTrianglesFrom(*other, 0);
    *MinPoint = *other->MinPoint;
    *MaxPoint = *other->MaxPoint;
    *CenterPoint = *other->CenterPoint;
    ScanConvResolutionX = other->ScanConvResolutionX;
    ScanConvResolutionY = other->ScanConvResolutionY;
    ScanConvResolutionZ = other->ScanConvResolutionZ;
    ScanConvDiagonal = other->ScanConvDiagonal;
}

void CHTriangulation::AppendTriangulation(const CHTriangulation* other)
{
    if (other == nullptr) return;
    const CHTriangulation front(this);
    // Appending a mesh to itself appends the copy taken before renewal.
    const CHTriangulation& back = (other == this) ? front : *other;
    CreateTriangulation(front.NumTriangles + back.NumTriangles);
    CopyTrianglesFrom(front, 0);
    CopyTrianglesFrom(back, front.NumTriangles);
    CalcBoundingBox();
}
