// Life of a mesh: construction, the parallel arrays and their release.

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/mesh/triangulation.h"

namespace {

constexpr int kBoxEntries = 3; // minimum, maximum, centre

SSEPoint* AllocatePoints(int count)
{
    return static_cast<SSEPoint*>(SafeAlignedAlloc(static_cast<std::uint64_t>(count) * sizeof(SSEPoint), 16));
}

void ZeroPoints(SSEPoint* points, int count)
{
    std::memset(static_cast<void*>(points), 0, static_cast<std::size_t>(count) * sizeof(SSEPoint));
}

template <class T>
void ReleaseAligned(T*& array)
{
    SafeAlignedFree(array);
    array = nullptr;
}

} // namespace

CHTriangulation::CHTriangulation(int n, float scaleX, float scaleY, float scaleZ)
{
    BaseInitialization(scaleX, scaleY, scaleZ);
    CreateTriangulation(n);
}

CHTriangulation::CHTriangulation(const CHTriangulation* other)
{
    if (other == nullptr) {
        BaseInitialization(1.0f, 1.0f, 1.0f);
        return;
    }
    BaseInitialization(other->ScaleX, other->ScaleY, other->ScaleZ);
    CopyFromHTriangulation(other);
}

CHTriangulation::CHTriangulation(const CHTriangulation& other) : CHTriangulation(&other)
{
}

CHTriangulation::~CHTriangulation()
{
    FreeTriangulation();
    ReleaseAligned(PointArray);
}

CHTriangulation& CHTriangulation::operator=(const CHTriangulation& other) = default;

void CHTriangulation::BaseInitialization(float scaleX, float scaleY, float scaleZ)
{
    FreeTriangulation();
    ReleaseStretches();
    ReleaseAligned(PointArray);

    ScaleX = scaleX;
    ScaleY = scaleY;
    ScaleZ = scaleZ;
    ScanConvResolutionX = scaleX;
    ScanConvResolutionY = scaleY;
    ScanConvResolutionZ = scaleZ;
    ScanConvDiagonal = std::sqrt(scaleX * scaleX + scaleY * scaleY);

    // The box block means nothing until a box is computed; it starts at 0 so
    // that a mesh stored before that writes the same bytes each time.
    PointArray = AllocatePoints(kBoxEntries);
    ZeroPoints(PointArray, kBoxEntries);
    MinPoint = PointArray;
    MaxPoint = PointArray + 1;
    CenterPoint = PointArray + 2;
}

void CHTriangulation::CreateTriangulation(int n)
{
    FreeTriangulation();
    if (n < 1) return;
    // Three corners per triangle must stay countable in an int; a mesh that
    // large could not be held anyway.
    if (n > std::numeric_limits<int>::max() / 3) AfxThrowMemoryException();

    // Each array is stored as soon as it exists and the count only once all
    // do, so that an allocation failing half-way leaves an empty mesh that
    // still releases what it got.
    Triangles = static_cast<t_htriangle*>(SafeMalloc(static_cast<std::uint64_t>(n) * sizeof(t_htriangle)));
    EdgeArray = AllocatePoints(3 * n);
    NormalArray = AllocatePoints(3 * n);
    MainNormalArray = AllocatePoints(n);
    TArray = AllocatePoints(n);
    SArray = AllocatePoints(n);
    VArray = AllocatePoints(n);
    MinPointArray = AllocatePoints(n);
    MaxPointArray = AllocatePoints(n);
    NumTriangles = n;

    ZeroPoints(EdgeArray, 3 * n);
    ZeroPoints(NormalArray, 3 * n);
    ZeroPoints(MainNormalArray, n);
    ZeroPoints(TArray, n);
    ZeroPoints(SArray, n);
    ZeroPoints(VArray, n);
    for (int i = 0; i < n; ++i) AimTriangleAtEntries(i);
}

void CHTriangulation::AimTriangleAtEntries(int i)
{
    t_htriangle& t = Triangles[i];
    t.P0 = &EdgeArray[3 * i];
    t.P1 = &EdgeArray[3 * i + 1];
    t.P2 = &EdgeArray[3 * i + 2];
    t.N0 = &NormalArray[3 * i];
    t.N1 = &NormalArray[3 * i + 1];
    t.N2 = &NormalArray[3 * i + 2];
    t.T = &TArray[i];
    t.S = &SArray[i];
    t.V = &VArray[i];
    t.MainNormal = &MainNormalArray[i];
    t.MinPoint = &MinPointArray[i];
    t.MaxPoint = &MaxPointArray[i];
    t.Neighbour0 = nullptr;
    t.Neighbour1 = nullptr;
    t.Neighbour2 = nullptr;
    t.Next = nullptr;
    t.Prev = nullptr;
    t.Index = i;
    t.Flag = vek::kTriangleFlagNone;
}

void CHTriangulation::FreeTriangulation()
{
    SafeFree(Triangles);
    Triangles = nullptr;
    ReleaseAligned(EdgeArray);
    ReleaseAligned(NormalArray);
    ReleaseAligned(MainNormalArray);
    ReleaseAligned(TArray);
    ReleaseAligned(SArray);
    ReleaseAligned(VArray);
    ReleaseAligned(MinPointArray);
    ReleaseAligned(MaxPointArray);
    TriangleListHead = nullptr;
    NumTriangles = 0;
}

t_htriangle* CHTriangulation::GetTriangle(int i) const
{
    if (i < 0 || i >= NumTriangles) return nullptr;
    return &Triangles[i];
}
