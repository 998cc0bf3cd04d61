// Incremental Delaunay triangulation of uniform random points, from the
// corners of the bounding box. Each insertion scans all triangles, so the
// time grows about quadratically; the "growth" counter shows the measured
// exponent against the size a quarter as large. It is taken from processor
// time, so that other load on a shared machine does not bend it.
//
// 1k, 4k and 16k points run by default. 64k points take minutes while the
// search is linear: set VEKDLL_BENCH_LARGE=1 to include them. The CTest smoke
// run (VEKDLL_BENCH_SMOKE=1) stops at 4k.

#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>
#include <cstdlib>
#include <map>
#include <random>

#include "smoke_run.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

// Processor seconds per triangulation, by point count, of the sizes run so far.
std::map<int, double>& SecondsBySize()
{
    static std::map<int, double> seconds;
    return seconds;
}

void StoreUniformPoints(ZrCIncrementalDelaunay2D& d, int count)
{
    std::mt19937 engine(12345);
    const double scale = 1000.0 / 4294967296.0;
    for (int i = 0; i < count; ++i) {
        SSEPoint p;
        p.sse = _mm_setr_ps(static_cast<float>(engine() * scale), static_cast<float>(engine() * scale),
                            static_cast<float>(engine() * scale * 0.1), 0.0f);
        d.AppendVertex(p);
    }
}

void BM_TriangulateUniform(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    double total = 0.0;
    for (auto _ : state) {
        ZrCIncrementalDelaunay2D d(count + 4);
        StoreUniformPoints(d, count);
        const std::clock_t start = std::clock();
        d.Triangulate(count, true, true);
        total += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        benchmark::DoNotOptimize(d.GetNumTriangles());
    }
    const double perRun = total / static_cast<double>(state.iterations());
    state.counters["points"] = count;
    state.counters["points/s"] =
        benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
    SecondsBySize()[count] = perRun;
    const auto smaller = SecondsBySize().find(count / 4);
    if (smaller != SecondsBySize().end() && smaller->second > 0.0)
        state.counters["growth"] = std::log(perRun / smaller->second) / std::log(4.0);
}

void Sizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(1 << 10)->Arg(1 << 12);
    if (!vek::bench::IsSmokeRun()) bench->Arg(1 << 14);
    const char* large = std::getenv("VEKDLL_BENCH_LARGE");
    if (large != nullptr && large[0] == '1') bench->Arg(1 << 16);
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_TriangulateUniform)->Apply(Sizes);

} // namespace
