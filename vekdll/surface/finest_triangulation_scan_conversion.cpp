// The finest surface back into a raster: the drivers over ten bands and the
// samplers they run, on the lattice and worker frame that the adaptive
// triangulation uses with five (scan_lattice.h, scan_workers.h).

#include <cmath>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/finest_triangulation.h"
#include "vekdll/surface/scan_lattice.h"
#include "vekdll/surface/scan_workers.h"

namespace {

using vek::detail::SampleEvery;
using vek::detail::SampleInZRange;
using vek::detail::SampleStretch;
using vek::detail::SampleUnvisible;
using vek::detail::SampleVisible;
using Triangles = CList<t_hfinesttriangle*>;

constexpr std::size_t kScanWorkers = 10;

} // namespace

void ZrCFinestTriangulation::SetScanConvResolution(float x, float y, float z)
{
    ScanResolutionX = x;
    ScanResolutionY = y;
    ScanResolutionZ = z;
    ScanResolutionXY = std::sqrt(x * x + y * y);
}

vek::detail::ScanLattice ZrCFinestTriangulation::ScanLatticeFor(const SSEPoint& origin) const
{
    return vek::detail::MakeScanLattice(Vertices, *MinPoint, ScanResolutionX, ScanResolutionY, ScanResolutionZ,
                                        ScanResolutionXY, origin);
}

void ZrCFinestTriangulation::ScanConvertInTenBands(CSSEMatrix* field, float background, SSEPoint& origin,
                                                   bool keepMax, ScanWorker worker, float zMax, float zMin)
{
    if (field == nullptr) return;
    const int sizeX = vek::detail::ScanFieldCells(MinPoint->x, MaxPoint->x, ScanResolutionX);
    const int sizeY = vek::detail::ScanFieldCells(MinPoint->y, MaxPoint->y, ScanResolutionY);
    origin = *MinPoint;
    vek::detail::ScanConvertInBands<ZrCFinestTriangulation, kScanWorkers>(
        *this, TriangleList, *field, sizeX, sizeY, static_cast<int>(TriangleList.GetCount()), origin, keepMax,
        background, worker, zMax, zMin);
}

void ZrCFinestTriangulation::FastScanConvertTriangulation(CSSEMatrix* field, float background, SSEPoint& origin,
                                                          bool keepMax)
{
    ScanConvertInTenBands(field, background, origin, keepMax, SampleEvery<ZrCFinestTriangulation>, 0.0f, 0.0f);
}

void ZrCFinestTriangulation::FastScanConvertTriangulationOnlyVisible(CSSEMatrix* field, float background,
                                                                     SSEPoint& origin, bool keepMax)
{
    ScanConvertInTenBands(field, background, origin, keepMax, SampleVisible<ZrCFinestTriangulation>, 0.0f, 0.0f);
}

void ZrCFinestTriangulation::FastScanConvertTriangulationOnlyUnvisible(CSSEMatrix* field, float background,
                                                                       SSEPoint& origin, bool keepMax)
{
    ScanConvertInTenBands(field, background, origin, keepMax, SampleUnvisible<ZrCFinestTriangulation>, 0.0f, 0.0f);
}

void ZrCFinestTriangulation::FastScanConvertTriangulationWithZRange(CSSEMatrix* field, float background,
                                                                    SSEPoint& origin, float zMax, float zMin,
                                                                    bool keepMax)
{
    ScanConvertInTenBands(field, background, origin, keepMax, SampleInZRange<ZrCFinestTriangulation>, zMax, zMin);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedArea(CSSEMatrix* field, const Triangles* list,
                                                                     const SSEPoint& origin, int first, int last,
                                                                     bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last, vek::detail::EveryTriangle{}, keepMax);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedAreaOnlyVisible(CSSEMatrix* field,
                                                                                const Triangles* list,
                                                                                const SSEPoint& origin, int first,
                                                                                int last, bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last,
                  vek::detail::FacingTrianglesByCorners{Vertices, keepMax}, keepMax);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(CSSEMatrix* field,
                                                                                  const Triangles* list,
                                                                                  const SSEPoint& origin, int first,
                                                                                  int last, bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last,
                  vek::detail::FacingTrianglesByCorners{Vertices, !keepMax}, keepMax);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedAreaWithZRange(CSSEMatrix* field,
                                                                               const Triangles* list,
                                                                               const SSEPoint& origin, int first,
                                                                               int last, float zMax, float zMin,
                                                                               bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last,
                  vek::detail::TrianglesInZRange{Vertices, zMax, zMin}, keepMax);
}
