// Neighbour search on a height-field mesh. The search compares pairs of
// triangles and only drops a triangle once its three neighbours are found, so
// the time grows with the square of the count: four times the triangles take
// up to sixteen times as long.

#include <benchmark/benchmark.h>

#include "vekdll/mesh/triangulation.h"

namespace {

// A grid of cells, two triangles each, over a gently varying surface.
void MakeGrid(CHTriangulation& mesh, int columns, int rows)
{
    const auto height = [](int x, int y) { return static_cast<float>((x * 7 + y * 13) % 29); };
    mesh.CreateTriangulation(2 * columns * rows);
    int index = 0;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            mesh.AppendTriangle(3, 3, static_cast<float>(x), static_cast<float>(x + 1), static_cast<float>(y),
                                static_cast<float>(y + 1), height(x, y), height(x, y + 1), height(x + 1, y),
                                height(x + 1, y + 1), index, false, false);
        }
    }
}

// Found neighbours would let the next search drop triangles early, so every
// run starts from none.
void ForgetNeighbours(CHTriangulation& mesh)
{
    for (int i = 0; i < mesh.GetNumTriangles(); ++i) {
        t_htriangle* t = mesh.GetTriangle(i);
        t->Neighbour0 = t->Neighbour1 = t->Neighbour2 = nullptr;
    }
}

void BM_CalcNeighbours(benchmark::State& state)
{
    const int columns = static_cast<int>(state.range(0));
    const int rows = static_cast<int>(state.range(1));
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    MakeGrid(mesh, columns, rows);
    for (auto _ : state) {
        state.PauseTiming();
        ForgetNeighbours(mesh);
        state.ResumeTiming();
        mesh.CalcNeighbours();
        benchmark::DoNotOptimize(mesh.GetTriangle(0)->Neighbour0);
    }
    const double triangles = mesh.GetNumTriangles();
    state.counters["triangles"] = triangles;
    state.counters["triangles/s"] =
        benchmark::Counter(triangles * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

} // namespace

// 1k, 4k and 16k triangles.
BENCHMARK(BM_CalcNeighbours)->Args({16, 32})->Args({32, 64})->Args({64, 128})->Unit(benchmark::kMillisecond);
