// The finest triangulation of a raster inside a polygon that covers most of
// it: an octagon, the square field with its corners cut, 8 cells in from
// the rim. Square cells (Triangulate) and cells cut at the polygon
// (TriangulateWithMarching), each in one row band and in fifteen, on
// 512^2, 1024^2 and 2048^2 fields. Each prints the field size, the
// triangles, triangles per second in wall time, and for fifteen bands the
// speed-up over one band on this machine's cores. One band is set with
// SetRowBands, a measuring aid of the class; the result is the same.
//
// The CTest smoke run (VEKDLL_BENCH_SMOKE=1) stops at 512^2.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <map>
#include <string>
#include <tuple>

#include "smoke_run.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/finest_triangulation.h"

namespace {

enum Kind : int { kSquareCells, kMarching };

// Wall seconds per build, by kind, size and bands.
std::map<std::tuple<int, int, int>, double>& SecondsBy()
{
    static std::map<std::tuple<int, int, int>, double> seconds;
    return seconds;
}

void MakeOctagon(CSSE3dPolygon& polygon, int size)
{
    const float lo = 8.0f;
    const float hi = static_cast<float>(size) - 9.0f;
    const float cut = 0.15f * static_cast<float>(size);
    const float points[8][2] = {{lo + cut, lo}, {hi - cut, lo}, {hi, lo + cut}, {hi, hi - cut},
                                {hi - cut, hi}, {lo + cut, hi}, {lo, hi - cut}, {lo, lo + cut}};
    polygon.Create(8);
    for (int i = 0; i < 8; ++i) polygon.SetPoint(i, points[i][0], points[i][1], 0.0f);
    polygon.CalcBoundingBox();
}

void MakeField(CSSEMatrix& field, int size)
{
    field.Create(size, size);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x)
            field.SetPoint(x, y, 100.0f + 20.0f * std::sin(0.05f * x) * std::cos(0.07f * y));
    }
}

void BM_Finest(benchmark::State& state)
{
    const auto kind = static_cast<Kind>(state.range(0));
    const int size = static_cast<int>(state.range(1));
    const int bands = static_cast<int>(state.range(2));
    CSSE3dPolygon polygon;
    MakeOctagon(polygon, size);
    CSSEMatrix field;
    MakeField(field, size);
    double total = 0.0;
    int triangles = 0;
    for (auto _ : state) {
        ZrCFinestTriangulation t;
        t.SetRowBands(bands);
        const auto start = std::chrono::steady_clock::now();
        if (kind == kMarching)
            t.TriangulateWithMarching(polygon, &field, 1, true);
        else
            t.Triangulate(polygon, &field, 1, true);
        const auto end = std::chrono::steady_clock::now();
        total += std::chrono::duration<double>(end - start).count();
        triangles = t.GetNumTriangles();
        benchmark::DoNotOptimize(triangles);
    }
    const double perRun = total / static_cast<double>(state.iterations());
    state.counters["size"] = size;
    state.counters["triangles"] = triangles;
    state.counters["triangles/s"] = static_cast<double>(triangles) / perRun;
    SecondsBy()[{kind, size, bands}] = perRun;
    const auto one = SecondsBy().find({kind, size, 1});
    if (bands > 1 && one != SecondsBy().end() && perRun > 0.0) state.counters["speed-up"] = one->second / perRun;
    state.SetLabel(std::string(kind == kMarching ? "marching" : "square cells") + ", " + std::to_string(bands) +
                   (bands == 1 ? " band" : " bands"));
}

void Sizes(benchmark::internal::Benchmark* bench)
{
    const int most = vek::bench::IsSmokeRun() ? 512 : 2048;
    for (const int kind : {kSquareCells, kMarching}) {
        for (int size = 512; size <= most; size *= 2) {
            bench->Args({kind, size, 1});
            bench->Args({kind, size, ZrCFinestTriangulation::kRowBands});
        }
    }
    bench->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(BM_Finest)->Apply(Sizes);

} // namespace
