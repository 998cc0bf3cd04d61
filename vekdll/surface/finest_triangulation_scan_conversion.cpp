// The finest surface back into a raster: the drivers over ten bands and the
// samplers they run, on the lattice and worker frame that the adaptive
// triangulation uses with five (scan_lattice.h, scan_workers.h).

#include <cmath>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/finest_triangulation.h"
#include "vekdll/surface/scan_lattice.h"
#include "vekdll/surface/scan_workers.h"

namespace {

using Record = vek::detail::ScanWorkerRecord<ZrCFinestTriangulation>;
using Triangles = CList<t_hfinesttriangle*>;

constexpr std::size_t kScanWorkers = 10;

template <class Test>
void SampleBand(const vek::detail::ScanLattice& lattice, CSSEMatrix* field, const Triangles* list, int first,
                int last, const Test& test, bool keepMax)
{
    if (field == nullptr || list == nullptr) return;
    vek::detail::SampleStretch(lattice, *field, *list, first, last, test, keepMax);
}

void SampleEvery(const Record& r)
{
    r.Object->ScanConvertTriangulationWithLimitedArea(r.Field, r.List, r.Origin, r.First, r.Last, r.KeepMax);
}

void SampleVisible(const Record& r)
{
    r.Object->ScanConvertTriangulationWithLimitedAreaOnlyVisible(r.Field, r.List, r.Origin, r.First, r.Last,
                                                                 r.KeepMax);
}

void SampleUnvisible(const Record& r)
{
    r.Object->ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(r.Field, r.List, r.Origin, r.First, r.Last,
                                                                   r.KeepMax);
}

void SampleInZRange(const Record& r)
{
    r.Object->ScanConvertTriangulationWithLimitedAreaWithZRange(r.Field, r.List, r.Origin, r.First, r.Last, r.ZMax,
                                                                r.ZMin, r.KeepMax);
}

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
    ScanConvertInTenBands(field, background, origin, keepMax, SampleEvery, 0.0f, 0.0f);
}

void ZrCFinestTriangulation::FastScanConvertTriangulationOnlyVisible(CSSEMatrix* field, float background,
                                                                     SSEPoint& origin, bool keepMax)
{
    ScanConvertInTenBands(field, background, origin, keepMax, SampleVisible, 0.0f, 0.0f);
}

void ZrCFinestTriangulation::FastScanConvertTriangulationOnlyUnvisible(CSSEMatrix* field, float background,
                                                                       SSEPoint& origin, bool keepMax)
{
    ScanConvertInTenBands(field, background, origin, keepMax, SampleUnvisible, 0.0f, 0.0f);
}

void ZrCFinestTriangulation::FastScanConvertTriangulationWithZRange(CSSEMatrix* field, float background,
                                                                    SSEPoint& origin, float zMax, float zMin,
                                                                    bool keepMax)
{
    ScanConvertInTenBands(field, background, origin, keepMax, SampleInZRange, zMax, zMin);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedArea(CSSEMatrix* field, const Triangles* list,
                                                                     const SSEPoint& origin, int first, int last,
                                                                     bool keepMax) const
{
    SampleBand(ScanLatticeFor(origin), field, list, first, last, vek::detail::EveryTriangle{}, keepMax);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedAreaOnlyVisible(CSSEMatrix* field,
                                                                                const Triangles* list,
                                                                                const SSEPoint& origin, int first,
                                                                                int last, bool keepMax) const
{
    SampleBand(ScanLatticeFor(origin), field, list, first, last,
               vek::detail::FacingTrianglesByCorners{Vertices, keepMax}, keepMax);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(CSSEMatrix* field,
                                                                                  const Triangles* list,
                                                                                  const SSEPoint& origin, int first,
                                                                                  int last, bool keepMax) const
{
    SampleBand(ScanLatticeFor(origin), field, list, first, last,
               vek::detail::FacingTrianglesByCorners{Vertices, !keepMax}, keepMax);
}

void ZrCFinestTriangulation::ScanConvertTriangulationWithLimitedAreaWithZRange(CSSEMatrix* field,
                                                                               const Triangles* list,
                                                                               const SSEPoint& origin, int first,
                                                                               int last, float zMax, float zMin,
                                                                               bool keepMax) const
{
    SampleBand(ScanLatticeFor(origin), field, list, first, last, vek::detail::TrianglesInZRange{Vertices, zMax, zMin},
               keepMax);
}
