// Border extraction and seams. The border loops of a grid surface of about
// 10k, 100k and (with VEKDLL_BENCH_LARGE=1) 1M triangles: collecting the
// open edges is one pass over the triangles, chaining them rescans the
// border, which is about the square root of the surface, so the whole
// should grow about linearly; "growth" is the measured exponent against
// the size ten times smaller. And a patch of about 10k triangles laid into
// a surface of about 10k.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <map>

#include "smoke_run.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

std::map<int, double>& SecondsBySize()
{
    static std::map<int, double> seconds;
    return seconds;
}

// A grid of side x side cells of size `spacing` from `low`, triangulated:
// 2 side² triangles.
void Grid(ZrCIncrementalDelaunay2D& d, int side, float low, float spacing)
{
    d.CreateVertexArray((side + 1) * (side + 1) + 8);
    for (int y = 0; y <= side; ++y) {
        for (int x = 0; x <= side; ++x) {
            SSEPoint p;
            p.sse = _mm_setr_ps(low + spacing * static_cast<float>(x), low + spacing * static_cast<float>(y),
                                0.01f * static_cast<float>((x * 7 + y * 3) % 5), 0.0f);
            d.AppendVertex(p);
        }
    }
    d.Triangulate(d.GetNumVertices(), true, true);
}

void BM_BorderLoops(benchmark::State& state)
{
    const int side = static_cast<int>(state.range(0));
    ZrCIncrementalDelaunay2D d;
    Grid(d, side, 0.0f, 1.0f);
    double total = 0.0;
    for (auto _ : state) {
        CList<CList<t_hdelaunayedge*>*> loops;
        const std::clock_t start = std::clock();
        d.FindAllBorderEdgeLists(&loops);
        total += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        while (!loops.IsEmpty()) {
            CList<t_hdelaunayedge*>* loop = loops.RemoveHead();
            ZrCIncrementalDelaunay2D::ClearEdgeList(loop);
            delete loop;
        }
    }
    const int triangles = d.GetNumTrianglesInTriangleList();
    const double perRun = total / static_cast<double>(state.iterations());
    state.counters["triangles"] = triangles;
    state.counters["triangles/s"] = benchmark::Counter(
        static_cast<double>(triangles) * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    SecondsBySize()[triangles] = perRun;
    for (const auto& [size, seconds] : SecondsBySize()) {
        if (size * 5 < triangles && size * 20 > triangles && seconds > 0.0)
            state.counters["growth"] = std::log(perRun / seconds) / std::log(static_cast<double>(triangles) / size);
    }
}

void BorderSizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(71);  // about 10k triangles
    if (!vek::bench::IsSmokeRun()) bench->Arg(224); // about 100k
    const char* large = std::getenv("VEKDLL_BENCH_LARGE");
    if (large != nullptr && large[0] == '1') bench->Arg(707); // about 1M
    bench->Unit(benchmark::kMillisecond);
}

void BM_PatchSeam(benchmark::State& state)
{
    const int side = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        ZrCIncrementalDelaunay2D surface, patch;
        Grid(surface, side, 0.0f, 1.0f);
        const float low = static_cast<float>(side) * 0.3f + 0.25f;
        Grid(patch, side, low, 0.4f * static_cast<float>(side) / static_cast<float>(side));
        state.ResumeTiming();
        surface.InsertTriangulationAndCombine(patch, nullptr, false);
        benchmark::DoNotOptimize(surface.GetNumTriangles());
    }
    state.counters["triangles"] = 2.0 * side * side;
}

BENCHMARK(BM_BorderLoops)->Apply(BorderSizes);
BENCHMARK(BM_PatchSeam)->Arg(vek::bench::IsSmokeRun() ? 20 : 71)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
