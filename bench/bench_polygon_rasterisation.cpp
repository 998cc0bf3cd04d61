// Polylines into rasters: the fine even-odd fill of a wavy ring of 10k points
// on fields of 1024² and 4096² (the rate is pixels of the band per second),
// the column walk against the point-by-point reference on a small field, and
// the half-disc dilation of rings of 250 and 1000 points (source points per
// second).

#include <benchmark/benchmark.h>

#include <cmath>

#include "smoke_run.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/polygons/inner_area_scan.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// A wavy ring of `count` points about (centre, centre), its mean radius given.
void MakeRing(CSSE3dPolygon& polygon, int count, float centre, float radius)
{
    polygon.Create(count);
    for (int i = 0; i < count; ++i) {
        const float angle = 6.2831853f * static_cast<float>(i) / static_cast<float>(count);
        const float r = radius * (1.0f + 0.1f * std::sin(13.0f * angle));
        polygon.SetPoint(i, centre + r * std::cos(angle), centre + r * std::sin(angle), 0.0f);
    }
}

// state.range(0): the field's side; the ring of 10k points fills most of it.
void BM_DrawInMatrixAndFillFine(benchmark::State& state)
{
    const int side = static_cast<int>(state.range(0));
    const float half = static_cast<float>(side) / 2.0f;
    CSSE3dPolygon ring;
    MakeRing(ring, 10000, half, 0.8f * half);
    CSSEMatrix field;
    field.Create(side, side);
    for (auto _ : state) {
        ring.DrawInMatrixAndFillFine(1.0f, &field, false, -1e6f, 1e6f);
        benchmark::ClobberMemory();
    }
    int xmin = 0, ymin = 0, xmax = 0, ymax = 0;
    ring.GetBoundingBox2D(xmin, ymin, xmax, ymax);
    const double band = static_cast<double>(xmax - xmin + 10) * static_cast<double>(ymax - ymin + 10);
    state.counters["side"] = side;
    state.counters["points"] = ring.GetNumPoints();
    state.counters["pixels/s"] = benchmark::Counter(band * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

// The two ways of finding the inner grid points, on a 256² grid and rings of
// state.range(0) points: the walk grows with the columns and crossings, the
// reference with the grid points times the points.
void BM_ScanInnerArea(benchmark::State& state, vek::InnerAreaScan scan)
{
    CSSE3dPolygon ring;
    MakeRing(ring, static_cast<int>(state.range(0)), 128.0f, 100.0f);
    ring.CalcBoundingBox();
    long long inside = 0;
    for (auto _ : state) {
        inside = 0;
        vek::ScanInnerArea(ring, {0, 256, 1}, {0, 256, 1}, scan, [&](int, const std::vector<vek::RowRun>& runs) {
            for (const vek::RowRun& run : runs) inside += run.end - run.first;
        });
        benchmark::DoNotOptimize(inside);
    }
    state.counters["points"] = static_cast<double>(state.range(0));
    state.counters["inside"] = static_cast<double>(inside);
    state.counters["pixels/s"] = benchmark::Counter(256.0 * 256.0 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

// Rings of state.range(0) points about one unit apart, grown by 2: about
// sixteen samples per point.
void BM_DilateExact(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    CSSE3dPolygon source;
    MakeRing(source, count, 0.0f, static_cast<float>(count) / 6.2831853f);
    CSSE3dPolygon ring;
    int produced = 0;
    for (auto _ : state) {
        ring.CreateSimilar(&source);
        ring.DilateExact(2.0f);
        produced = ring.GetNumPoints();
        benchmark::ClobberMemory();
    }
    state.counters["points"] = count;
    state.counters["out"] = produced;
    state.counters["points/s"] = benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void FieldSides(benchmark::internal::Benchmark* bench)
{
    bench->Arg(64)->Arg(1024);
    if (!vek::bench::IsSmokeRun()) bench->Arg(4096);
    bench->Unit(benchmark::kMillisecond);
}

void RingSizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(250)->Arg(1000);
    if (!vek::bench::IsSmokeRun()) bench->Arg(4000);
    bench->Unit(benchmark::kMillisecond);
}

} // namespace

BENCHMARK(BM_DrawInMatrixAndFillFine)->Apply(FieldSides);
BENCHMARK_CAPTURE(BM_ScanInnerArea, Crossings, vek::InnerAreaScan::Crossings)->Apply(RingSizes);
BENCHMARK_CAPTURE(BM_ScanInnerArea, PointByPoint, vek::InnerAreaScan::PointByPoint)->Apply(RingSizes);
BENCHMARK(BM_DilateExact)->Arg(250)->Arg(1000)->Unit(benchmark::kMillisecond);
