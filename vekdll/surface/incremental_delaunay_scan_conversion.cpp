// The surface back into a raster: the five-worker drivers and the samplers
// they run. The lattice and the worker frame are shared with the finest
// triangulation (scan_lattice.h, scan_workers.h); this file only says which
// triangles each form takes.

#include <cmath>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/scan_lattice.h"
#include "vekdll/surface/scan_workers.h"

namespace {

using vek::detail::SampleEvery;
using vek::detail::SampleInZRange;
using vek::detail::SampleStretch;
using vek::detail::SampleUnvisible;
using vek::detail::SampleVisible;
using Record = vek::detail::ScanWorkerRecord<ZrCIncrementalDelaunay2D>;
using Triangles = CList<t_hdelaunaytriangle*>;

constexpr std::size_t kScanWorkers = 5;

void SampleInside(const Record& r)
{
    r.Object->ScanConvertTriangulationWithLimitedAreaOnlyInside(r.Field, r.List, r.Origin, r.First, r.Last,
                                                                r.OnlyInside, r.KeepMax);
}

} // namespace

void ZrCIncrementalDelaunay2D::SetScanConvResolution(float x, float y, float z)
{
    ScanResolutionX = x;
    ScanResolutionY = y;
    ScanResolutionZ = z;
    ScanResolutionXY = std::sqrt(x * x + y * y);
}

vek::detail::ScanLattice ZrCIncrementalDelaunay2D::ScanLatticeFor(const SSEPoint& origin) const
{
    return vek::detail::MakeScanLattice(Vertices, *MinPoint, ScanResolutionX, ScanResolutionY, ScanResolutionZ,
                                        ScanResolutionXY, origin);
}

// ---- drivers

void ZrCIncrementalDelaunay2D::ScanConvertInFiveBands(CSSEMatrix* field, float background, SSEPoint& origin,
                                                      bool keepMax, ScanWorker worker, float zMax, float zMin)
{
    if (field == nullptr) return;
    const Triangles& list = PresentList();
    const int sizeX = vek::detail::ScanFieldCells(MinPoint->x, MaxPoint->x, ScanResolutionX);
    const int sizeY = vek::detail::ScanFieldCells(MinPoint->y, MaxPoint->y, ScanResolutionY);
    origin = *MinPoint;
    vek::detail::ScanConvertInBands<ZrCIncrementalDelaunay2D, kScanWorkers>(
        *this, list, *field, sizeX, sizeY, static_cast<int>(list.GetCount()), origin, keepMax, background, worker,
        zMax, zMin);
}

void ZrCIncrementalDelaunay2D::FastScanConvertTriangulation(CSSEMatrix* field, float background, SSEPoint& origin,
                                                            bool keepMax)
{
    ScanConvertInFiveBands(field, background, origin, keepMax, SampleEvery<ZrCIncrementalDelaunay2D>, 0.0f, 0.0f);
}

void ZrCIncrementalDelaunay2D::FastScanConvertTriangulationOnlyVisible(CSSEMatrix* field, float background,
                                                                       SSEPoint& origin, bool keepMax)
{
    ScanConvertInFiveBands(field, background, origin, keepMax, SampleVisible<ZrCIncrementalDelaunay2D>, 0.0f, 0.0f);
}

void ZrCIncrementalDelaunay2D::FastScanConvertTriangulationOnlyUnvisible(CSSEMatrix* field, float background,
                                                                         SSEPoint& origin, bool keepMax)
{
    ScanConvertInFiveBands(field, background, origin, keepMax, SampleUnvisible<ZrCIncrementalDelaunay2D>, 0.0f, 0.0f);
}

void ZrCIncrementalDelaunay2D::FastScanConvertTriangulationWithZRange(CSSEMatrix* field, float background,
                                                                      SSEPoint& origin, float zMax, float zMin,
                                                                      bool keepMax)
{
    ScanConvertInFiveBands(field, background, origin, keepMax, SampleInZRange<ZrCIncrementalDelaunay2D>, zMax, zMin);
}

// The bands are lines of `reference`, and every worker walks all triangles,
// so a triangle across a band limit is sampled by both workers; the merge
// takes the extreme and the result is the same. The heights are taken from
// the lower corner of the box, as the other forms hand it out, and no
// background is given: what no triangle reaches reads 0, the field's "no
// data".
void ZrCIncrementalDelaunay2D::FastScanConvertTriangulationOnlyInside(CSSEMatrix* field, CSSEMatrix* reference,
                                                                      bool keepMax, bool inner)
{
    if (field == nullptr || reference == nullptr) return;
    const int sizeX = reference->GetSizeX();
    const int sizeY = reference->GetSizeY();
    const SSEPoint origin = *MinPoint;
    vek::detail::ScanConvertInBands<ZrCIncrementalDelaunay2D, kScanWorkers>(
        *this, PresentList(), *field, sizeX, sizeY, sizeY, origin, keepMax, 0.0f, SampleInside, 0.0f, 0.0f, inner);
}

// ---- samplers

void ZrCIncrementalDelaunay2D::ScanConvertTriangulationWithLimitedArea(CSSEMatrix* field, const Triangles* list,
                                                                       const SSEPoint& origin, int first, int last,
                                                                       bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last, vek::detail::EveryTriangle{}, keepMax);
}

void ZrCIncrementalDelaunay2D::ScanConvertTriangulationWithLimitedAreaOnlyVisible(CSSEMatrix* field,
                                                                                  const Triangles* list,
                                                                                  const SSEPoint& origin, int first,
                                                                                  int last, bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last, vek::detail::FacingTriangles{keepMax}, keepMax);
}

void ZrCIncrementalDelaunay2D::ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(CSSEMatrix* field,
                                                                                    const Triangles* list,
                                                                                    const SSEPoint& origin, int first,
                                                                                    int last, bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last, vek::detail::FacingTriangles{!keepMax}, keepMax);
}

void ZrCIncrementalDelaunay2D::ScanConvertTriangulationWithLimitedAreaWithZRange(CSSEMatrix* field,
                                                                                 const Triangles* list,
                                                                                 const SSEPoint& origin, int first,
                                                                                 int last, float zMax, float zMin,
                                                                                 bool keepMax) const
{
    SampleStretch(ScanLatticeFor(origin), field, list, first, last,
                  vek::detail::TrianglesInZRange{Vertices, zMax, zMin}, keepMax);
}

void ZrCIncrementalDelaunay2D::ScanConvertTriangulationWithLimitedAreaOnlyInside(CSSEMatrix* field,
                                                                                 const Triangles* list,
                                                                                 const SSEPoint& origin, int first,
                                                                                 int last, bool inner,
                                                                                 bool keepMax) const
{
    if (field == nullptr || list == nullptr) return;
    const vek::detail::InsideTrianglesOfBand test{Vertices, inner, static_cast<float>(first) + MinPoint->y,
                                                  static_cast<float>(last) + MinPoint->y};
    vek::detail::SampleWholeList(ScanLatticeFor(origin), *field, *list, test, keepMax);
}
