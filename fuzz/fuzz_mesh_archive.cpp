// The mesh archive loader on arbitrary bytes. Byte 0 chooses: bit 0 writes a
// small triangle count over bytes 28 .. 31 of the rest, so that the search
// reaches the arrays at once. A refusal is CArchiveException and must leave
// the mesh as it was; a mesh that loads must point only into its own arrays,
// survive the neighbour search and a scan conversion, and store the bytes
// it was read from again, but for the record pointers and the scale.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "vekdll/vekdll.h"

namespace {

constexpr std::size_t kHeaderBytes = 32;
constexpr std::size_t kRecordBytes = sizeof(t_htriangle);

std::vector<BYTE> Store(CHTriangulation& mesh)
{
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        mesh.Serialize(ar);
        ar.Close();
    }
    return file.Detach();
}

bool PointsIntoItself(CHTriangulation& mesh)
{
    for (int i = 0; i < mesh.GetNumTriangles(); ++i) {
        const t_htriangle& t = *mesh.GetTriangle(i);
        if (t.P0 != mesh.GetEdgeArray() + 3 * i || t.N2 != mesh.GetNormalArray() + 3 * i + 2) return false;
        if (t.MainNormal != mesh.GetMainNormalArray() + i || t.MinPoint != mesh.GetMinPointArray() + i) return false;
        if (t.Neighbour0 != nullptr || t.Next != nullptr) return false;
    }
    return true;
}

// Equal bytes outside the scale fields 4 .. 27 and the pointer part of each
// record; Index and Flag must come back.
bool SameApartFromPointers(const std::vector<BYTE>& a, const std::vector<BYTE>& b, int n)
{
    if (a.size() < b.size() || std::memcmp(a.data(), b.data(), 4) != 0) return false;
    if (std::memcmp(a.data() + 28, b.data() + 28, 4) != 0) return false;
    for (int i = 0; i < n; ++i) {
        const std::size_t ints = kHeaderBytes + kRecordBytes * static_cast<std::size_t>(i) + kRecordBytes - 8;
        if (std::memcmp(a.data() + ints, b.data() + ints, 8) != 0) return false;
    }
    const std::size_t arrays = kHeaderBytes + kRecordBytes * static_cast<std::size_t>(n);
    return std::memcmp(a.data() + arrays, b.data() + arrays, b.size() - arrays) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1) return 0;
    const std::uint8_t choice = data[0];
    std::vector<BYTE> bytes(data + 1, data + size);
    if ((choice & 1) != 0 && bytes.size() >= kHeaderBytes) {
        const int count = choice >> 5;
        std::memcpy(bytes.data() + 28, &count, sizeof count);
    }

    CHTriangulation mesh(2, 3.0f, 4.0f, 5.0f);
    try {
        CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
        CArchive ar(&file, CArchive::load);
        mesh.Serialize(ar);
    } catch (const CArchiveException&) {
        if (mesh.GetNumTriangles() != 2 || mesh.GetScaleY() != 4.0f || !PointsIntoItself(mesh)) __builtin_trap();
        return 0;
    }
    const int n = mesh.GetNumTriangles();
    if (!PointsIntoItself(mesh)) __builtin_trap();
    if (!SameApartFromPointers(bytes, Store(mesh), n)) __builtin_trap();

    // Garbage corners may be of any size, and the samples of a triangle grow
    // with its length (all four lanes) over a pixel: only meshes within 64
    // units of the origin in every lane are drawn (a corner that is not a number
    // stays out of the box and gets a single sample).
    mesh.CalcSTV();
    mesh.CalcBoundingBox();
    mesh.SetScanConvResolution(1.0f, 1.0f, 1.0f);
    SSEPoint min, max;
    mesh.GetMinPoint(min);
    mesh.GetMaxPoint(max);
    bool small = true;
    for (int lane = 0; lane < 4; ++lane) small = small && min.lane[lane] > -64.0f && max.lane[lane] < 64.0f;
    if (small) {
        CSSEMatrix raster;
        mesh.ScanConvertTriangulationMax(&raster, 0.0f);
        raster.Create(64, 64);
        mesh.ScanConvertTriangulationMinNoDelete(&raster, true, true);
    }
    mesh.CalcNeighbours();
    return 0;
}
