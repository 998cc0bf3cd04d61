// Border extraction and seams. The border loops of a grid surface of about
// 10k, 100k and (with VEKDLL_BENCH_LARGE=1) 1M triangles: collecting the
// open edges is one pass over the triangles, and chaining them goes through
// an index from each vertex to its open edges, so the whole should grow
// about linearly; "growth" is the measured exponent against the size ten
// times smaller. And a patch of about 10k triangles sewn into the opening
// of a closed skin of about 10k.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <map>

#include "smoke_run.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

// The time per run by triangle count, for each series of sizes.
std::map<int, double>& SecondsBySize(int series)
{
    static std::map<int, std::map<int, double>> seconds;
    return seconds[series];
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

// Times FindAllBorderEdgeLists on `d`, and reports the size, the rate and the
// growth against the size ten times smaller of the same `series`.
void TimeBorderLoops(benchmark::State& state, ZrCIncrementalDelaunay2D& d, int series)
{
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
    std::map<int, double>& seconds = SecondsBySize(series);
    seconds[triangles] = perRun;
    for (const auto& [size, before] : seconds) {
        if (size * 5 < triangles && size * 20 > triangles && before > 0.0)
            state.counters["growth"] = std::log(perRun / before) / std::log(static_cast<double>(triangles) / size);
    }
}

void BM_BorderLoops(benchmark::State& state)
{
    ZrCIncrementalDelaunay2D d;
    Grid(d, static_cast<int>(state.range(0)), 0.0f, 1.0f);
    d.CopyFinalTriangleListToTriangleList();
    TimeBorderLoops(state, d, 0);
}

// The same grid with a hole of one cell in every block of 3 x 3 cells: the
// border is a ninth of the cells, so chaining it is no longer small beside
// the pass over the triangles. The second argument 1 chains by the plain
// rescan of the LinearScan mode, for comparison.
void BM_HoleyBorderLoops(benchmark::State& state)
{
    ZrCIncrementalDelaunay2D d;
    Grid(d, static_cast<int>(state.range(0)), 0.0f, 1.0f);
    d.CopyFinalTriangleListToTriangleList();
    CList<t_hdelaunaytriangle*>& triangles = d.GetTriangleList();
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* t = triangles.GetNext(pos);
        SSEPoint centre;
        ZrCIncrementalDelaunay2D::ComputeCentreOfTriangle(d.GetVertex(t->Vertex[0]), d.GetVertex(t->Vertex[1]),
                                                          d.GetVertex(t->Vertex[2]), centre);
        t->Ignore = static_cast<int>(centre.x) % 3 == 1 && static_cast<int>(centre.y) % 3 == 1;
    }
    d.KillIgnoredTrianglesFromTriangleList(true);
    const bool plain = state.range(1) == 1;
    if (plain) d.SetSearchMode(vek::SearchMode::LinearScan);
    TimeBorderLoops(state, d, plain ? 2 : 1);
}

void BorderSizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(71);  // about 10k triangles
    if (!vek::bench::IsSmokeRun()) bench->Arg(224); // about 100k
    const char* large = std::getenv("VEKDLL_BENCH_LARGE");
    if (large != nullptr && large[0] == '1') bench->Arg(707); // about 1M
    bench->Unit(benchmark::kMillisecond);
}

void HoleySizes(benchmark::internal::Benchmark* bench)
{
    const char* large = std::getenv("VEKDLL_BENCH_LARGE");
    for (const int plain : {0, 1}) {
        bench->Args({71, plain});
        if (!vek::bench::IsSmokeRun()) bench->Args({224, plain});
        if (plain == 0 && large != nullptr && large[0] == '1') bench->Args({707, plain});
    }
    bench->Unit(benchmark::kMillisecond);
}

// The skin is two sheets of sheet x sheet cells, 4 apart, closed along their
// rim, with an opening cut into the upper sheet over the middle two fifths;
// the patch of side x side cells covers the opening with three quarters of
// a unit to spare on every side.
void BM_PatchSeam(benchmark::State& state)
{
    const int side = static_cast<int>(state.range(0));
    const int sheet = side * 5 / 7;
    const float cutLow = 0.3f * static_cast<float>(sheet);
    const float cutHigh = 0.7f * static_cast<float>(sheet);
    double skinTriangles = 0.0;
    double openSides = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        ZrCIncrementalDelaunay2D top, bottom, skin, patch;
        Grid(top, sheet, 0.0f, 1.0f);
        Grid(bottom, sheet, 0.0f, 1.0f);
        bottom.AddOffset(0.0f, 0.0f, -4.0f);
        skin.CombineTriangulationsMidPoint(top, bottom, false, false);
        CList<t_hdelaunaytriangle*>& triangles = skin.GetTriangleList();
        for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) {
            t_hdelaunaytriangle* t = triangles.GetNext(pos);
            SSEPoint centre;
            ZrCIncrementalDelaunay2D::ComputeCentreOfTriangle(skin.GetVertex(t->Vertex[0]), skin.GetVertex(t->Vertex[1]),
                                                              skin.GetVertex(t->Vertex[2]), centre);
            t->Ignore = centre.z > -0.5f && centre.x > cutLow && centre.x < cutHigh && centre.y > cutLow &&
                        centre.y < cutHigh;
        }
        skin.KillIgnoredTrianglesFromTriangleList(true);
        skinTriangles = skin.GetNumTrianglesInTriangleList();
        Grid(patch, side, cutLow - 0.75f, (cutHigh - cutLow + 1.5f) / static_cast<float>(side));
        state.ResumeTiming();
        skin.InsertTriangulationAndCombine(patch, nullptr, false);
        state.PauseTiming();
        openSides = 0.0;
        for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) {
            for (const t_hdelaunaytriangle* n : triangles.GetNext(pos)->Neighbour) openSides += n == nullptr;
        }
        state.ResumeTiming();
    }
    state.counters["patch triangles"] = 2.0 * side * side;
    state.counters["skin triangles"] = skinTriangles;
    state.counters["open sides after"] = openSides; // 0: the skin is closed again
}

BENCHMARK(BM_BorderLoops)->Apply(BorderSizes);
BENCHMARK(BM_HoleyBorderLoops)->Apply(HoleySizes);
BENCHMARK(BM_PatchSeam)->Arg(vek::bench::IsSmokeRun() ? 20 : 71)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
