// Ear clipping of wavy rings, with the tolerant and the exact predicates,
// and both convex hulls of random point clouds.
// Ear clipping and the spatial hull's input are quadratic by design: read
// the growth off the rates.

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

#include "smoke_run.h"
#include "vekdll/planar/convex_hull_2d.h"
#include "vekdll/planar/convex_hull_3d.h"
#include "vekdll/planar/polygon_triangulator.h"
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

BENCHMARK(BM_EarClipping)->Apply(EarClippingSizes);
BENCHMARK(BM_ConvexHull2D)->Apply(HullSizes);
BENCHMARK(BM_ConvexHull3D)->Apply(HullSizes);
