// The archive of a mesh: no magic and no version; scale, scan grid, the
// count, the triangle records as memory images, then the arrays.

#include <algorithm>
#include <cstddef>
#include <utility>

#include "vekdll/mesh/triangulation.h"
#include "vekdll/platform/c_archive.h"

namespace {

constexpr int kBoxEntries = 3; // minimum, maximum, centre
constexpr ULONGLONG kBoxBytes = kBoxEntries * sizeof(SSEPoint);
// The record, three corners, three normals, main normal, T, S, V and the two
// ends of the per-triangle box.
constexpr ULONGLONG kBytesPerTriangle = sizeof(t_htriangle) + 3 * sizeof(SSEPoint) + 3 * sizeof(SSEPoint) +
                                        6 * sizeof(SSEPoint);
static_assert(sizeof(void*) != 8 || kBytesPerTriangle == 336);

// The archive moves at most what a UINT counts at once.
constexpr std::size_t kChunk = std::size_t{1} << 30;

void WriteBytes(CArchive& ar, const void* data, std::size_t bytes)
{
    const auto* p = static_cast<const unsigned char*>(data);
    for (std::size_t done = 0; done < bytes; done += kChunk) {
        ar.Write(p + done, static_cast<UINT>(std::min(kChunk, bytes - done)));
    }
}

void ReadBytes(CArchive& ar, void* data, std::size_t bytes)
{
    auto* p = static_cast<unsigned char*>(data);
    for (std::size_t done = 0; done < bytes; done += kChunk) {
        ar.Read(p + done, static_cast<UINT>(std::min(kChunk, bytes - done)));
    }
}

std::size_t Points(int count)
{
    return static_cast<std::size_t>(count) * sizeof(SSEPoint);
}

} // namespace

void CHTriangulation::Serialize(CArchive& ar)
{
    if (ar.IsStoring()) {
        StoreTo(ar);
    } else {
        LoadFrom(ar);
    }
}

void CHTriangulation::StoreTo(CArchive& ar) const
{
    const int n = NumTriangles;
    ar << ScaleX << ScaleY << ScaleZ;
    ar << ScanConvResolutionX << ScanConvResolutionY << ScanConvResolutionZ;
    ar << ScanConvDiagonal;
    ar << n;
    // The records as they lie in memory, pointers of this process included.
    WriteBytes(ar, Triangles, static_cast<std::size_t>(n) * sizeof(t_htriangle));
    WriteBytes(ar, EdgeArray, Points(3 * n));
    WriteBytes(ar, NormalArray, Points(3 * n));
    WriteBytes(ar, MainNormalArray, Points(n));
    WriteBytes(ar, TArray, Points(n));
    WriteBytes(ar, SArray, Points(n));
    WriteBytes(ar, VArray, Points(n));
    WriteBytes(ar, PointArray, Points(kBoxEntries));
    WriteBytes(ar, MinPointArray, Points(n));
    WriteBytes(ar, MaxPointArray, Points(n));
}

// The mesh is read into a new one and exchanged with this only when whole,
// so that a stream that fails leaves this mesh as it was.
void CHTriangulation::LoadFrom(CArchive& ar)
{
    float scaleX = 0.0f, scaleY = 0.0f, scaleZ = 0.0f;
    float resolutionX = 0.0f, resolutionY = 0.0f, resolutionZ = 0.0f, diagonal = 0.0f;
    int n = 0;
    ar >> scaleX >> scaleY >> scaleZ >> resolutionX >> resolutionY >> resolutionZ >> diagonal >> n;
    const ULONGLONG left = ar.GetBytesRemaining();
    if (n < 0 || left < kBoxBytes || (left - kBoxBytes) / kBytesPerTriangle < static_cast<ULONGLONG>(n)) {
        AfxThrowArchiveException(CArchiveException::badIndex);
    }

    // The stored ScaleX stands for ScaleY too, and the stored scan grid gives
    // way to the one the scale implies: loaded meshes have always been so.
    CHTriangulation loaded(0, scaleX, scaleX, scaleZ);
    loaded.CreateTriangulation(n);
    ReadBytes(ar, loaded.Triangles, static_cast<std::size_t>(n) * sizeof(t_htriangle));
    ReadBytes(ar, loaded.EdgeArray, Points(3 * n));
    ReadBytes(ar, loaded.NormalArray, Points(3 * n));
    ReadBytes(ar, loaded.MainNormalArray, Points(n));
    ReadBytes(ar, loaded.TArray, Points(n));
    ReadBytes(ar, loaded.SArray, Points(n));
    ReadBytes(ar, loaded.VArray, Points(n));
    ReadBytes(ar, loaded.PointArray, Points(kBoxEntries));
    ReadBytes(ar, loaded.MinPointArray, Points(n));
    ReadBytes(ar, loaded.MaxPointArray, Points(n));

    // The stored pointers name memory of the storing process and are never
    // followed: each record is aimed at its own entries again, keeping its
    // Index and Flag. Neighbours and list links are gone with them.
    for (int i = 0; i < n; ++i) {
        const int index = loaded.Triangles[i].Index;
        const int flag = loaded.Triangles[i].Flag;
        loaded.AimTriangleAtEntries(i);
        loaded.Triangles[i].Index = index;
        loaded.Triangles[i].Flag = flag;
    }
    SwapContents(loaded);
    ReleaseStretches();
}

void CHTriangulation::SwapContents(CHTriangulation& other)
{
    std::swap(EdgeArray, other.EdgeArray);
    std::swap(NormalArray, other.NormalArray);
    std::swap(MainNormalArray, other.MainNormalArray);
    std::swap(TArray, other.TArray);
    std::swap(SArray, other.SArray);
    std::swap(VArray, other.VArray);
    std::swap(Triangles, other.Triangles);
    std::swap(NumTriangles, other.NumTriangles);
    std::swap(TriangleListHead, other.TriangleListHead);
    std::swap(ScaleX, other.ScaleX);
    std::swap(ScaleY, other.ScaleY);
    std::swap(ScaleZ, other.ScaleZ);
    std::swap(ScanConvResolutionX, other.ScanConvResolutionX);
    std::swap(ScanConvResolutionY, other.ScanConvResolutionY);
    std::swap(ScanConvResolutionZ, other.ScanConvResolutionZ);
    std::swap(PointArray, other.PointArray);
    std::swap(MinPoint, other.MinPoint);
    std::swap(MaxPoint, other.MaxPoint);
    std::swap(CenterPoint, other.CenterPoint);
    std::swap(MinPointArray, other.MinPointArray);
    std::swap(MaxPointArray, other.MaxPointArray);
    std::swap(ScanConvDiagonal, other.ScanConvDiagonal);
}
