// Incremental Delaunay triangulation from the corners of the bounding box:
// uniform random points, and a raster lattice stored row by row as a height
// field gives it (four points of every cell on one circle). Each prints the
// points, points per second and the growth exponent of the processor time
// against the size a quarter as large; near 1 means constant time per
// point. Three variants: the default (indexed search, tolerant float
// predicates), the exact predicates, and the walk over every triangle, kept
// as the reference search, at the small sizes only.
//
// 1k to 64k points run by default; VEKDLL_BENCH_LARGE=1 adds 256k and 1M.
// The CTest smoke run (VEKDLL_BENCH_SMOKE=1) stops at 4k.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <map>
#include <random>
#include <string>
#include <utility>

#include "smoke_run.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

enum Case : int { kUniform, kLattice };
enum Variant : int { kDefault, kExact, kWalk };

// Processor seconds per triangulation, by case, search mode and point count.
std::map<std::tuple<int, int, int>, double>& SecondsBySize()
{
    static std::map<std::tuple<int, int, int>, double> seconds;
    return seconds;
}

void StorePoints(ZrCIncrementalDelaunay2D& d, Case shape, int count)
{
    std::mt19937 engine(12345);
    const double scale = 1000.0 / 4294967296.0;
    if (shape == kUniform) {
        for (int i = 0; i < count; ++i) {
            SSEPoint p;
            p.sse = _mm_setr_ps(static_cast<float>(engine() * scale), static_cast<float>(engine() * scale),
                                static_cast<float>(engine() * scale * 0.1), 0.0f);
            d.AppendVertex(p);
        }
        return;
    }
    const int columns = static_cast<int>(std::lround(std::sqrt(static_cast<double>(count))));
    for (int i = 0; i < count; ++i) {
        const float x = static_cast<float>(i % columns);
        const float y = static_cast<float>(i / columns);
        SSEPoint p;
        p.sse = _mm_setr_ps(x, y, 100.0f + 20.0f * std::sin(0.05f * x) * std::cos(0.07f * y), 0.0f);
        d.AppendVertex(p);
    }
}

void BM_Triangulate(benchmark::State& state)
{
    const auto shape = static_cast<Case>(state.range(0));
    const auto variant = static_cast<Variant>(state.range(1));
    const int count = static_cast<int>(state.range(2));
    double total = 0.0;
    for (auto _ : state) {
        ZrCIncrementalDelaunay2D d(count + 4);
        if (variant == kWalk) d.SetSearchMode(vek::SearchMode::LinearScan);
        if (variant == kExact) d.SetPredicates(vek::PlanarPredicates::Exact);
        StorePoints(d, shape, count);
        const std::clock_t start = std::clock();
        d.Triangulate(count, true, true);
        total += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        benchmark::DoNotOptimize(d.GetNumTriangles());
    }
    const double perRun = total / static_cast<double>(state.iterations());
    state.counters["points"] = count;
    state.counters["points/s"] = static_cast<double>(count) / perRun;
    SecondsBySize()[{shape, variant, count}] = perRun;
    const auto smaller = SecondsBySize().find({shape, variant, count / 4});
    if (smaller != SecondsBySize().end() && smaller->second > 0.0)
        state.counters["growth"] = std::log(perRun / smaller->second) / std::log(4.0);
    static const char* const kVariantNames[] = {"", ", exact", ", walk"};
    state.SetLabel(std::string(shape == kUniform ? "uniform" : "lattice by rows") + kVariantNames[variant]);
}

void Sizes(benchmark::internal::Benchmark* bench)
{
    const char* large = std::getenv("VEKDLL_BENCH_LARGE");
    const bool withLarge = large != nullptr && large[0] == '1';
    const int most = vek::bench::IsSmokeRun() ? 1 << 12 : (withLarge ? 1 << 20 : 1 << 16);
    for (const int shape : {kUniform, kLattice}) {
        for (const int variant : {kDefault, kExact}) {
            for (int n = 1 << 10; n <= most; n *= 4) bench->Args({shape, variant, n});
        }
        for (int n = 1 << 10; n <= std::min(most, 1 << 12); n *= 4) bench->Args({shape, kWalk, n});
    }
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_Triangulate)->Apply(Sizes);

} // namespace
