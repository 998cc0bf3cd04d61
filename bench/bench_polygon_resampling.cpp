// Resampling a closed line: points inserted on long segments (ReParametrize)
// and points a spacing of arc length apart (ReParametrize3D). The rate is
// source points per second; each timed run starts from a fresh copy of the
// line, and the copy is part of the time.

#include <benchmark/benchmark.h>

#include <cmath>

#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// A wavy ring of `count` points about one unit apart, with heights.
void MakeRing(CSSE3dPolygon& polygon, int count)
{
    const float radius = static_cast<float>(count) / 6.2831853f;
    polygon.Create(count);
    for (int i = 0; i < count; ++i) {
        const float angle = 6.2831853f * static_cast<float>(i) / static_cast<float>(count);
        const float r = radius * (1.0f + 0.05f * std::sin(11.0f * angle));
        polygon.SetPoint(i, r * std::cos(angle), r * std::sin(angle), 0.1f * static_cast<float>(i % 50));
    }
}

template <class Resample>
void BM_Resample(benchmark::State& state, Resample resample)
{
    const int count = static_cast<int>(state.range(0));
    CSSE3dPolygon source;
    MakeRing(source, count);
    CSSE3dPolygon polygon;
    int produced = 0;
    for (auto _ : state) {
        polygon.CreateSimilar(&source);
        resample(polygon);
        produced = polygon.GetNumPoints();
        benchmark::ClobberMemory();
    }
    state.counters["points"] = static_cast<double>(count);
    state.counters["out"] = static_cast<double>(produced);
    state.counters["points/s"] = benchmark::Counter(static_cast<double>(count) * static_cast<double>(state.iterations()),
                                                    benchmark::Counter::kIsRate);
}

// Segments of about one unit get one or two points more; past 99999 output
// points the rest is dropped, which the largest ring reaches.
void InsertOnLongSegments(CSSE3dPolygon& polygon)
{
    polygon.ReParametrize(0.5f);
}

void ByArcLength(CSSE3dPolygon& polygon)
{
    polygon.ReParametrize3D(0.75f);
}

} // namespace

BENCHMARK_CAPTURE(BM_Resample, ReParametrize, InsertOnLongSegments)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(BM_Resample, ReParametrize3D, ByArcLength)->Arg(1000)->Arg(10000)->Arg(100000);
