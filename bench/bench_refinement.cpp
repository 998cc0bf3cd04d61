// Refinement of a surface against rasters: DistanceImageInsertPoints puts
// a vertex on every masked cell of an N x N field into the two triangles of
// its bounding square, and HighEdgeLengthInsertPoints splits a coarse grid
// with a wavy height at its long sides for three rounds. Each prints the
// vertices inserted, vertices inserted per second and the growth exponent
// of the processor time against the vertex count of the next smaller size
// (near 1: constant time per vertex).
//
// Fields of 64 to 512 cells on a side run by default; the CTest smoke run
// (VEKDLL_BENCH_SMOKE=1) stops at 128.

#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>
#include <map>
#include <utility>

#include "smoke_run.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

enum Case : int { kDistanceImage, kHighEdgeLength };

// Processor seconds and vertices inserted per run, by case and size.
std::map<std::pair<int, int>, std::pair<double, double>>& Runs()
{
    static std::map<std::pair<int, int>, std::pair<double, double>> runs;
    return runs;
}

float Wave(float x, float y)
{
    return 40.0f * std::sin(0.11f * x) * std::cos(0.07f * y);
}

SSEPoint Point(float x, float y, float z)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, 0.0f);
    return p;
}

// The field's bounding square as two triangles, with room for every cell.
void SquareFor(ZrCIncrementalDelaunay2D& d, int size)
{
    const float far = static_cast<float>(size - 1);
    for (const auto& [x, y] : {std::pair(0.0f, 0.0f), std::pair(far, 0.0f), std::pair(0.0f, far), std::pair(far, far)})
        d.AppendVertex(Point(x, y, Wave(x, y)));
    d.Triangulate(4, true, true);
}

// A grid with a side of 8 cells over the field, finalized.
void CoarseGridFor(ZrCIncrementalDelaunay2D& d, int size)
{
    for (int y = 0; y < size; y += 8)
        for (int x = 0; x < size; x += 8) {
            const float fx = static_cast<float>(x), fy = static_cast<float>(y);
            d.AppendVertex(Point(fx, fy, Wave(fx, fy)));
        }
    d.Triangulate(d.GetNumVertices(), true, true);
}

void BM_Refinement(benchmark::State& state)
{
    const auto shape = static_cast<Case>(state.range(0));
    const int size = static_cast<int>(state.range(1));
    CSSEMatrix mask;
    CSSEMatrix height;
    mask.Create(size, size);
    height.Create(size, size);
    mask.Fill(1.0f);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) height.SetPoint(x, y, Wave(static_cast<float>(x), static_cast<float>(y)));
    double seconds = 0.0;
    double inserted = 0.0;
    for (auto _ : state) {
        ZrCIncrementalDelaunay2D d(size * size + 4);
        if (shape == kDistanceImage)
            SquareFor(d, size);
        else
            CoarseGridFor(d, size);
        const int before = d.GetNumVertices();
        const std::clock_t start = std::clock();
        if (shape == kDistanceImage)
            d.DistanceImageInsertPoints(&mask, &height, false, 1, true);
        else
            d.HighEdgeLengthInsertPoints(4.0f, 3, true);
        seconds += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        inserted += d.GetNumVertices() - before;
        benchmark::DoNotOptimize(d.GetNumTriangles());
    }
    const double runs = static_cast<double>(state.iterations());
    const double perRun = seconds / runs;
    const double perRunInserted = inserted / runs;
    state.counters["cells"] = static_cast<double>(size) * size;
    state.counters["inserted"] = perRunInserted;
    state.counters["inserted/s"] = perRun > 0.0 ? perRunInserted / perRun : 0.0;
    Runs()[{shape, size}] = {perRun, perRunInserted};
    const auto smaller = Runs().find({shape, size / 2});
    if (smaller != Runs().end() && smaller->second.first > 0.0 && perRunInserted > smaller->second.second)
        state.counters["growth"] =
            std::log(perRun / smaller->second.first) / std::log(perRunInserted / smaller->second.second);
    state.SetLabel(shape == kDistanceImage ? "distance image, every cell" : "long sides, 3 rounds");
}

void Sizes(benchmark::internal::Benchmark* bench)
{
    const int most = vek::bench::IsSmokeRun() ? 128 : 512;
    for (const int shape : {kDistanceImage, kHighEdgeLength})
        for (int size = 64; size <= most; size *= 2) bench->Args({shape, size});
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_Refinement)->Apply(Sizes);

} // namespace
