#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <thread>

#include "vekdll/export.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/platform/c_event.h"
#include "vekdll/platform/c_list.h"

// The parallel frame of the scan conversion, shared by both triangulation
// classes: the triangles are shared out in bands over a fixed number of
// workers (five or ten), each samples its band into a field of its own, so
// that no cell is ever written by two threads and no lock is needed, and
// the caller's thread merges the fields band by band when all are done.

namespace vek::detail {

// The record handed to one worker. The driver keeps all of them on its
// stack and waits for every worker before it returns, so they outlive the
// threads.
template <class Owner>
struct ScanWorkerRecord {
    using Triangle = typename Owner::TriangleRecord;

    const Owner* Object = nullptr;
    CSSEMatrix* Field = nullptr;
    const CList<Triangle*>* List = nullptr;
    SSEPoint Origin{};
    // First and last triangle of the band, both inclusive; lines of the
    // field for the inside variant.
    std::int32_t First = 0;
    std::int32_t Last = -1;
    float ZMin = 0.0f;
    float ZMax = 0.0f;
    bool KeepMax = false;
    bool OnlyInside = false;
    CEvent Done;
};

// The worker bodies of the drivers, alike in both triangulations: each runs
// the owner's sampler of one kind on the record's band.
template <class Owner>
void SampleEvery(const ScanWorkerRecord<Owner>& r)
{
    r.Object->ScanConvertTriangulationWithLimitedArea(r.Field, r.List, r.Origin, r.First, r.Last, r.KeepMax);
}

template <class Owner>
void SampleVisible(const ScanWorkerRecord<Owner>& r)
{
    r.Object->ScanConvertTriangulationWithLimitedAreaOnlyVisible(r.Field, r.List, r.Origin, r.First, r.Last,
                                                                 r.KeepMax);
}

template <class Owner>
void SampleUnvisible(const ScanWorkerRecord<Owner>& r)
{
    r.Object->ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(r.Field, r.List, r.Origin, r.First, r.Last,
                                                                   r.KeepMax);
}

template <class Owner>
void SampleInZRange(const ScanWorkerRecord<Owner>& r)
{
    r.Object->ScanConvertTriangulationWithLimitedAreaWithZRange(r.Field, r.List, r.Origin, r.First, r.Last, r.ZMax,
                                                                r.ZMin, r.KeepMax);
}

// The cell value that stands for "no sample yet": every sample beats it.
inline constexpr float kScanSentinelForMaximum = -999999.9f;
inline constexpr float kScanSentinelForMinimum = 999999.9f;

inline float ScanSentinel(bool keepMax)
{
    return keepMax ? kScanSentinelForMaximum : kScanSentinelForMinimum;
}

// Band i of `bands` over `count` items: chunk = truncate(count / bands +
// 0.5) items each, the last band taking the rest. A band that would reach
// the last item ends there, so bands beyond the items come out empty.
struct ScanBand {
    std::int32_t first;
    std::int32_t last;
};
VEKDLL_API ScanBand ScanBandOf(int band, int bands, int count);

// Size of the field over the bounding box: truncate((max - min + 1) /
// resolution + 0.5) cells along x and along y. A box that is empty (the
// sentinels of an empty triangulation) or not a number gives 0.
VEKDLL_API int ScanFieldCells(float min, float max, float resolution);

// Creates `field` with the given size, every lane the sentinel.
VEKDLL_API void CreateScanField(CSSEMatrix& field, int sizeX, int sizeY, bool keepMax);

// Takes one band's field into the result, cell by cell: a cell of the band
// that still holds the sentinel is skipped, any other replaces the result
// cell if it is greater (keepMax) or smaller. Equal values keep the result,
// so the earlier band wins a tie as the earlier triangle does within one
// field, and merged bands give the same bits as one field sampled by one
// thread.
VEKDLL_API void MergeScanBand(CSSEMatrix& result, const CSSEMatrix& band, bool keepMax);

// Every cell within 1.0 of the sentinel, that no triangle reached, becomes
// `background`.
VEKDLL_API void ReplaceScanSentinel(CSSEMatrix& result, bool keepMax, float background);

// Starts one thread per record running `work(record)`, each setting its
// record's Done when it ends; waits for the events in order, with no
// time-out, and joins the threads. If a thread cannot be started, those
// already running are waited for before the error passes on, since they
// use the records.
template <class Record, std::size_t Count, class Work>
void RunScanWorkers(std::array<Record, Count>& records, const Work& work)
{
    std::array<std::thread, Count> threads;
    std::size_t started = 0;
    std::exception_ptr failure;
    for (; started < Count; ++started) {
        Record& record = records[started];
        record.Done.ResetEvent();
        try {
            threads[started] = std::thread([&record, &work] {
                work(record);
                record.Done.SetEvent();
            });
        } catch (...) {
            failure = std::current_exception();
            break;
        }
    }
    for (std::size_t i = 0; i < started; ++i) records[i].Done.Wait();
    for (std::size_t i = 0; i < started; ++i) threads[i].join();
    if (failure) std::rethrow_exception(failure);
}

// The driver of every FastScanConvertTriangulation... form. `owner` gives
// the sampler: work(record) samples the record's band into the record's
// field. The result field has the given size and, when all bands are
// merged, holds `background` where no triangle reached.
template <class Owner, std::size_t Bands, class Work>
void ScanConvertInBands(const Owner& owner, const CList<typename Owner::TriangleRecord*>& list, CSSEMatrix& field,
                        int sizeX, int sizeY, int itemCount, const SSEPoint& origin, bool keepMax, float background,
                        const Work& work, float zMax = 0.0f, float zMin = 0.0f, bool onlyInside = false)
{
    CreateScanField(field, sizeX, sizeY, keepMax);
    std::array<CSSEMatrix, Bands> fields;
    std::array<ScanWorkerRecord<Owner>, Bands> records;
    for (std::size_t i = 0; i < Bands; ++i) {
        CreateScanField(fields[i], sizeX, sizeY, keepMax);
        const ScanBand band = ScanBandOf(static_cast<int>(i), static_cast<int>(Bands), itemCount);
        ScanWorkerRecord<Owner>& record = records[i];
        record.Object = &owner;
        record.Field = &fields[i];
        record.List = &list;
        record.Origin = origin;
        record.First = band.first;
        record.Last = band.last;
        record.ZMin = zMin;
        record.ZMax = zMax;
        record.KeepMax = keepMax;
        record.OnlyInside = onlyInside;
    }
    RunScanWorkers(records, work);
    for (std::size_t i = 0; i < Bands; ++i) MergeScanBand(field, fields[i], keepMax);
    ReplaceScanSentinel(field, keepMax, background);
}

} // namespace vek::detail
