// FastScanConvertTriangulation of a regular grid of triangles over a field
// of 2048 x 2048 cells, at about 10k, 100k and 1M triangles. The triangles
// are built directly as records, since the insertion is still quadratic.
//
// Counters: the triangle count, the lattice samples per second (from the
// step of the sampler over the grid's triangle shape), the time of the
// single-threaded merge of the five worker fields and its share of the whole
// call, and the growth of the time against the size ten times smaller as an
// exponent (1 is linear in the triangles).

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>

#include "smoke_run.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/scan_workers.h"

namespace {

constexpr int kFieldCells = 2048;

struct GridSurface {
    std::unique_ptr<ZrCIncrementalDelaunay2D> triangulation;
    int quadsPerSide = 0;
    double samplesPerTriangle = 0.0;
};

// The lattice of one grid triangle, whose longer edge from its first corner
// is the diagonal of a grid square of side `leg`: a step of s = (sqrt 2 /
// (leg sqrt 2)) / 5 in u and v, rows that shorten from 1 / s samples to one,
// and the closing sample.
double LatticeSamples(double leg)
{
    const double rows = std::ceil(5.0 * leg);
    return rows * (rows + 1.0) / 2.0 + 1.0;
}

// A gentle relief, so that the lattice is set by the grid spacing in x and y.
float Height(float x, float y)
{
    return 20.0f * std::sin(x / 300.0f) * std::cos(y / 250.0f);
}

GridSurface& SurfaceWith(int triangles)
{
    static std::map<int, GridSurface> surfaces;
    GridSurface& s = surfaces[triangles];
    if (s.triangulation) return s;
    const int n = static_cast<int>(std::lround(std::sqrt(triangles / 2.0)));
    const float spacing = static_cast<float>(kFieldCells - 1) / static_cast<float>(n);
    s.quadsPerSide = n;
    s.samplesPerTriangle = LatticeSamples(spacing);
    s.triangulation = std::make_unique<ZrCIncrementalDelaunay2D>((n + 1) * (n + 1));
    ZrCIncrementalDelaunay2D& d = *s.triangulation;
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= n; ++i) {
            SSEPoint p;
            const float x = static_cast<float>(i) * spacing;
            const float y = static_cast<float>(j) * spacing;
            p.sse = _mm_setr_ps(x, y, Height(x, y), 0.0f);
            d.AppendVertex(p);
        }
    }
    const auto index = [n](int i, int j) { return j * (n + 1) + i; };
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const int corners[2][3] = {{index(i, j), index(i + 1, j), index(i + 1, j + 1)},
                                       {index(i, j), index(i + 1, j + 1), index(i, j + 1)}};
            for (const auto& c : corners) {
                t_hdelaunaytriangle* t = ZrCIncrementalDelaunay2D::InitNewTriangle();
                for (int k = 0; k < 3; ++k) t->Vertex[k] = c[k];
                d.AppendTriangle(t);
            }
        }
    }
    d.CalcBoundingBox();
    d.SetScanConvResolution(1.0f, 1.0f, 1.0f);
    return s;
}

// The merge as the driver runs it: five band fields into the result, then
// the sentinel to the background.
double MergeSeconds(int sizeX, int sizeY)
{
    CSSEMatrix result;
    CSSEMatrix bands[5];
    vek::detail::CreateScanField(result, sizeX, sizeY, true);
    for (int b = 0; b < 5; ++b) {
        vek::detail::CreateScanField(bands[b], sizeX, sizeY, true);
        for (int y = b * sizeY / 5; y < (b + 1) * sizeY / 5; ++y)
            for (int x = 0; x < sizeX; ++x) bands[b].SetPoint(x, y, static_cast<float>(x + y));
    }
    const auto start = std::chrono::steady_clock::now();
    for (CSSEMatrix& band : bands) vek::detail::MergeScanBand(result, band, true);
    vek::detail::ReplaceScanSentinel(result, true, 0.0f);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::map<int, double>& SecondsBySize()
{
    static std::map<int, double> seconds;
    return seconds;
}

void BM_FastScanConvertTriangulation(benchmark::State& state)
{
    const int wanted = static_cast<int>(state.range(0));
    GridSurface& s = SurfaceWith(wanted);
    ZrCIncrementalDelaunay2D& d = *s.triangulation;
    CSSEMatrix field;
    SSEPoint origin;
    double total = 0.0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        d.FastScanConvertTriangulation(&field, 0.0f, origin, true);
        total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        benchmark::ClobberMemory();
    }
    const double perCall = total / static_cast<double>(state.iterations());
    const double triangles = 2.0 * s.quadsPerSide * s.quadsPerSide;
    const double merge = MergeSeconds(field.GetSizeX(), field.GetSizeY());
    state.counters["triangles"] = triangles;
    state.counters["cells"] = static_cast<double>(field.GetSizeX()) * field.GetSizeY();
    state.counters["samples/s"] = benchmark::Counter(
        triangles * s.samplesPerTriangle * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["merge_ms"] = merge * 1000.0;
    state.counters["merge_share"] = merge / perCall;
    SecondsBySize()[wanted] = perCall;
    const auto smaller = SecondsBySize().find(wanted / 10);
    if (smaller != SecondsBySize().end() && smaller->second > 0.0)
        state.counters["growth"] = std::log(perCall / smaller->second) / std::log(10.0);
}

// The smoke run leaves out the million triangles, whose records alone take
// longer to build than the rest of the run.
void Sizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(10'000)->Arg(100'000);
    if (!vek::bench::IsSmokeRun()) bench->Arg(1'000'000);
    bench->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(BM_FastScanConvertTriangulation)->Apply(Sizes);

} // namespace
