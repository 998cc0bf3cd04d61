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
BENCHMARK(BM_PatchSeam)->Arg(vek::bench::IsSmokeRun() ? 20 : 71)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
