// Distance scans of a polygon against a query point: whole blocks of four
// points per step on the normalised copy.

#include <benchmark/benchmark.h>

#include <cmath>

#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// A closed wavy ring of `count` points, normalised at a resolution of 0.5.
void MakeRing(CSSE3dPolygon& polygon, int count)
{
    polygon.Create(count);
    for (int i = 0; i < count; ++i) {
        const float angle = 6.2831853f * static_cast<float>(i) / static_cast<float>(count);
        const float radius = 1000.0f + 50.0f * std::sin(7.0f * angle);
        polygon.SetPoint(i, radius * std::cos(angle), radius * std::sin(angle), 0.1f * static_cast<float>(i % 97));
    }
    t_resolutiondata resolution{0.5f, 0.5f, 0.5f};
    polygon.NormalizeXYZ(resolution);
}

// One scan, timed over a moving query so that no result can be kept.
template <class Scan>
void BM_DistanceScan(benchmark::State& state, Scan scan)
{
    const int count = static_cast<int>(state.range(0));
    CSSE3dPolygon polygon;
    MakeRing(polygon, count);
    float x = 3.0f;
    for (auto _ : state) {
        benchmark::DoNotOptimize(scan(polygon, x));
        x += 0.25f;
    }
    state.counters["points"] = static_cast<double>(count);
    state.counters["points/s"] = benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                                                    benchmark::Counter::kIsRate);
}

float Spatial(const CSSE3dPolygon& polygon, float x)
{
    return polygon.GetMinEuclDistance(x, 7.0f, 2.0f, 0);
}

float Planar(const CSSE3dPolygon& polygon, float x)
{
    return polygon.GetMinEuclDistanceXY(x, 7.0f, 0);
}

} // namespace

BENCHMARK_CAPTURE(BM_DistanceScan, GetMinEuclDistance, Spatial)->Arg(1 << 10)->Arg(1 << 13)->Arg(1 << 16);
BENCHMARK_CAPTURE(BM_DistanceScan, GetMinEuclDistanceXY, Planar)->Arg(1 << 10)->Arg(1 << 13)->Arg(1 << 16);
