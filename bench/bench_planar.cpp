// Ear clipping of wavy rings, with the tolerant and the exact predicates,
// its refinement, both convex hulls of random point clouds and the lifted
// Delaunay triangulation of random points. Ear clipping and the spatial
// hull's input are quadratic by design: read the growth off the rates. The
// lifted Delaunay puts every point on the hull, so each added point visits
// about twice as many faces as there are points so far; its "growth"
// counter is the measured exponent against the size ten times smaller, from
// processor time. 100k points take minutes: set VEKDLL_BENCH_LARGE=1 to
// include them.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <map>
#include <random>

#include "smoke_run.h"
#include "vekdll/planar/convex_hull_2d.h"
#include "vekdll/planar/convex_hull_3d.h"
#include "vekdll/planar/delaunay_2d.h"
#include "vekdll/planar/polygon_triangulation_refinement.h"
#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/platform/user_hooks.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// A counter-clockwise ring with seven bays, large enough that its finest
// corners stay well above the predicates' tolerance.
void MakeWavyRing(CSSE3dPolygon& polygon, int count)
{
    polygon.Create(count);
    for (int i = 0; i < count; ++i) {
        const double angle = 6.283185307179586 * i / count;
        const double radius = 100000.0 + 20000.0 * std::sin(7.0 * angle);
        polygon.SetPoint(i, static_cast<float>(radius * std::cos(angle)), static_cast<float>(radius * std::sin(angle)),
                         0.0f);
    }
}

void MakeCloud(CSSE3dPolygon& polygon, int count)
{
    std::mt19937 random(12345);
    polygon.Create(count);
    for (int i = 0; i < count; ++i) {
        polygon.SetPoint(i, static_cast<float>(random() % 1000000), static_cast<float>(random() % 1000000),
                         static_cast<float>(random() % 1000000));
    }
}

void SetRate(benchmark::State& state, int count, const char* name)
{
    state.counters["size"] = static_cast<double>(count);
    state.counters[name] = benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                                              benchmark::Counter::kIsRate);
}

// The second argument chooses the predicates: 0 tolerant, 1 exact. The ring
// is large enough that both clip the same ears.
void BM_EarClipping(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    const auto predicates = static_cast<vek::PlanarPredicates>(state.range(1));
    CSSE3dPolygon ring;
    MakeWavyRing(ring, count);
    for (auto _ : state) {
        CHPolygonTriangulator triangulator(&ring, 1, 1.0f, 1.0f, 1.0f, true, predicates);
        benchmark::DoNotOptimize(triangulator.GetNumTriangles());
    }
    SetRate(state, count, "vertices/s");
}

void BM_ConvexHull2D(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    CSSE3dPolygon cloud;
    MakeCloud(cloud, count);
    for (auto _ : state) {
        CHConvexHull2D hull(&cloud);
        CSSE3dPolygon out;
        hull.ObtainConvexHull3D(&out);
        benchmark::DoNotOptimize(out.GetNumPoints());
    }
    SetRate(state, count, "points/s");
}

void BM_ConvexHull3D(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    CSSE3dPolygon cloud;
    MakeCloud(cloud, count);
    for (auto _ : state) {
        CHConvexHull3D hull;
        for (int i = 0; i < count; ++i) {
            float x = 0, y = 0, z = 0;
            cloud.GetPoint(i, x, y, z);
            hull.AppendVertex3D(x, y, z, 1.0f);
        }
        hull.CalcConvexHull();
        benchmark::DoNotOptimize(hull.GetNumFaces());
    }
    SetRate(state, count, "points/s");
}

// Refinement of the ear clipping of a 1k-vertex ring to a maximal side of
// twice the argument, in the ring's units (its segments are about 600 long).
void BM_Refinement(benchmark::State& state)
{
    const float maxEdge = static_cast<float>(state.range(0));
    CSSE3dPolygon ring;
    MakeWavyRing(ring, 1 << 10);
    const CHPolygonTriangulator clipped(&ring, 1, 1.0f, 1.0f, 1.0f, true);
    int triangles = 0;
    for (auto _ : state) {
        CHPolygonTriangulationRefinement refined(const_cast<CHPolygonTriangulator*>(&clipped), maxEdge, 14);
        triangles = refined.GetNumTriangles();
        benchmark::DoNotOptimize(triangles);
    }
    state.counters["max side"] = 2.0 * maxEdge;
    SetRate(state, triangles, "triangles/s");
}

// Processor seconds per triangulation, by point count, of the sizes run so far.
std::map<int, double>& SecondsBySize()
{
    static std::map<int, double> seconds;
    return seconds;
}

void BM_LiftedDelaunay(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    // The triangulation reports its time in a message box: not here.
    const vek::MessageHandler previous = vek::SetMessageHandler([](const std::string&) {});
    double seconds = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        CH2DDelaunay d;
        // Pixel coordinates of a 1000 x 1000 field in tenths: the lifted
        // orientation tests then stay within 64 bits, as the grid intends.
        std::mt19937 random(2024);
        for (int i = 0; i < count; ++i) {
            d.AppendVertex(static_cast<float>(random() % 10000) * 0.1f, static_cast<float>(random() % 10000) * 0.1f, i,
                           false);
        }
        state.ResumeTiming();
        const std::clock_t start = std::clock();
        d.CalcDelaunayTriangulation();
        seconds += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        benchmark::DoNotOptimize(d.GetNumFaces());
    }
    vek::SetMessageHandler(previous);
    SetRate(state, count, "points/s");
    const double perRun = seconds / static_cast<double>(state.iterations());
    SecondsBySize()[count] = perRun;
    const auto smaller = SecondsBySize().find(count / 10);
    if (smaller != SecondsBySize().end() && smaller->second > 0.0) {
        state.counters["growth"] = std::log(perRun / smaller->second) / std::log(10.0);
    }
}

} // namespace

// The smoke run keeps the smallest size of each: the larger ones take seconds.
void EarClippingSizes(benchmark::internal::Benchmark* bench)
{
    for (long exact : {0, 1}) {
        bench->Args({1 << 10, exact});
        if (!vek::bench::IsSmokeRun()) bench->Args({1 << 12, exact})->Args({1 << 14, exact});
    }
    bench->Unit(benchmark::kMillisecond);
}

void HullSizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(10000);
    if (!vek::bench::IsSmokeRun()) bench->Arg(100000);
    bench->Unit(benchmark::kMillisecond);
}

void RefinementLimits(benchmark::internal::Benchmark* bench)
{
    bench->Arg(8000);
    if (!vek::bench::IsSmokeRun()) bench->Arg(4000)->Arg(2000);
    bench->Unit(benchmark::kMillisecond);
}

void LiftedDelaunaySizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(1000);
    if (!vek::bench::IsSmokeRun()) bench->Arg(10000);
    const char* large = std::getenv("VEKDLL_BENCH_LARGE");
    if (large != nullptr && large[0] == '1') bench->Arg(100000);
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_EarClipping)->Apply(EarClippingSizes);
BENCHMARK(BM_Refinement)->Apply(RefinementLimits);
BENCHMARK(BM_LiftedDelaunay)->Apply(LiftedDelaunaySizes);
BENCHMARK(BM_ConvexHull2D)->Apply(HullSizes);
BENCHMARK(BM_ConvexHull3D)->Apply(HullSizes);
