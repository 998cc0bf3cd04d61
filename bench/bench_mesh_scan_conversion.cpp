// The road of a height field through a plain mesh and back: the unsampled
// builder, which reads the field four rows at a time, and the scan
// conversion of its mesh into a raster by maximum. Both should grow with
// the pixels, so 2048^2 should take about 16 times as long as 512^2.

#include <benchmark/benchmark.h>

#include <cmath>

#include "smoke_run.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/mesh/triangulation.h"

namespace {

// Rolling hills above 0, so that every pixel is valid above the threshold 0.
void MakeHills(CSSEMatrix& field, int size)
{
    field.Create(size, size);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const float fx = static_cast<float>(x) / 37.0f, fy = static_cast<float>(y) / 53.0f;
            field.SetPoint(x, y, 50.0f + 10.0f * std::sin(fx) * std::cos(fy));
        }
    }
}

void ReportPixels(benchmark::State& state, double pixels, double triangles)
{
    const double runs = static_cast<double>(state.iterations());
    state.counters["pixels"] = pixels;
    state.counters["triangles"] = triangles;
    state.counters["pixels/s"] = benchmark::Counter(pixels * runs, benchmark::Counter::kIsRate);
    state.counters["triangles/s"] = benchmark::Counter(triangles * runs, benchmark::Counter::kIsRate);
}

void BM_CreateTriangulationFromSSEField(benchmark::State& state)
{
    const int size = static_cast<int>(state.range(0));
    CSSEMatrix field;
    MakeHills(field, size);
    double triangles = 0.0;
    for (auto _ : state) {
        CHTriangulation mesh(&field, 0.0f, true, 1.0f, 1.0f, 1.0f);
        triangles = mesh.GetNumTriangles();
        benchmark::DoNotOptimize(mesh.GetTriangle(0));
    }
    ReportPixels(state, static_cast<double>(size) * size, triangles);
}

void BM_ScanConvertTriangulationMax(benchmark::State& state)
{
    const int size = static_cast<int>(state.range(0));
    CSSEMatrix field, raster;
    MakeHills(field, size);
    CHTriangulation mesh(&field, 0.0f, true, 1.0f, 1.0f, 1.0f);
    for (auto _ : state) {
        mesh.ScanConvertTriangulationMax(&raster, 0.0f);
        benchmark::DoNotOptimize(raster.GetMatrixDataDirectly());
    }
    ReportPixels(state, static_cast<double>(raster.GetSizeX()) * raster.GetSizeY(), mesh.GetNumTriangles());
}

void Sizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(128);
    if (!vek::bench::IsSmokeRun()) bench->Arg(512)->Arg(1024)->Arg(2048);
    bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_CreateTriangulationFromSSEField)->Apply(Sizes);
BENCHMARK(BM_ScanConvertTriangulationMax)->Apply(Sizes);

} // namespace
