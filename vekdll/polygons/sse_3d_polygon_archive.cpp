// The archive format of a polygon: the point count, then for each block of
// four points its four x, four y and four z, as little-endian floats. No
// version, no box, no normalised copy.

#include "vekdll/platform/c_archive.h"
#include "vekdll/polygons/polygon_blocks.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

constexpr unsigned kBlockBytes = static_cast<unsigned>(vek::detail::kBytesPerBlock);
constexpr unsigned kBytesPerStoredBlock = 3 * kBlockBytes;

// Lanes behind the last point carry no meaning and are never initialised;
// they are stored as zeros so that one polygon always gives the same bytes.
void StoreBlock(CArchive& ar, const float* block, int usedLanes)
{
    float lanes[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    for (int lane = 0; lane < usedLanes && lane < 4; ++lane) lanes[lane] = block[lane];
    ar.Write(lanes, kBlockBytes);
}

} // namespace

void CSSE3dPolygon::Serialize(CArchive& ar)
{
    const long long blocks = static_cast<long long>(vek::detail::BlocksForPoints(NumPoints));
    if (ar.IsStoring()) {
        ar << NumPoints;
        for (long long k = 0; k < blocks; ++k) {
            const int usedLanes = static_cast<int>(NumPoints - 4 * k);
            StoreBlock(ar, PointsX + 4 * k, usedLanes);
            StoreBlock(ar, PointsY + 4 * k, usedLanes);
            StoreBlock(ar, PointsZ + 4 * k, usedLanes);
        }
        return;
    }

    Free();
    int count = 0;
    ar >> count;
    // The count must fit the bytes that are left before anything is allocated.
    if (count < 0) AfxThrowArchiveException(CArchiveException::badIndex);
    const long long storedBlocks = static_cast<long long>(vek::detail::BlocksForPoints(count));
    ar.RequireReadable(storedBlocks, kBytesPerStoredBlock);
    Create(count);
    for (long long k = 0; k < storedBlocks; ++k) {
        ar.Read(PointsX + 4 * k, kBlockBytes);
        ar.Read(PointsY + 4 * k, kBlockBytes);
        ar.Read(PointsZ + 4 * k, kBlockBytes);
    }
    // A loaded line ends in a doubled point: the last point stored gives way
    // to a copy of the one before it. A single point has no predecessor and
    // is kept as read.
    if (NumPoints >= 2) SetPoint(NumPoints - 1, PointsX[NumPoints - 2], PointsY[NumPoints - 2], PointsZ[NumPoints - 2]);
    BoundingBoxCalculated = false;
}
