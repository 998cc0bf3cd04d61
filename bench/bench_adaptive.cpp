// The adaptive surface of the bundled elevation model (data/bigtujunga.pgm,
// 1197 x 643 cells of 30 m, whole metres): refinement from the four corners
// to a maximum error of 10, 2 and 0.5 m at the cell centres. Each prints the
// triangles and vertices it needed, the maximum and RMS error at the cell
// centres, the same for the field the five-worker scan conversion makes of
// the surface, and the seconds of the refinement alone ("seconds", from the
// first two triangles to the last insertion) and of the whole road with the
// scan conversion and both checks ("all seconds"), and how many cells the
// refinement compared in all, over every triangle it made.
//
// The CTest smoke run (VEKDLL_BENCH_SMOKE=1) refines to 10 m only.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "smoke_run.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/cell_centre_error.h"
#include "vekdll/surface/greedy_refinement.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

// The bundled PGM: "P5", a comment "# offset=<o> scale=<s> ...", the size,
// 65535, then big-endian 16-bit samples, top row first. Kept to that one
// file; the program's own readers take every form.
struct Raster {
    int width = 0;
    int height = 0;
    std::vector<float> heights; // top row first
};

Raster ReadBundledPgm()
{
    const std::string path = std::string(VEKDLL_BENCH_DATA_DIR) + "/bigtujunga.pgm";
    std::ifstream in(path, std::ios::binary);
    std::string magic, comment;
    in >> magic >> std::ws;
    std::getline(in, comment);
    double offset = 0.0, scale = 1.0;
    if (std::sscanf(comment.c_str(), "# offset=%lf scale=%lf", &offset, &scale) != 2) offset = 0.0, scale = 1.0;
    Raster r;
    int maxValue = 0;
    in >> r.width >> r.height >> maxValue;
    in.get();
    const std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::size_t cells = static_cast<std::size_t>(r.width) * static_cast<std::size_t>(r.height);
    if (magic != "P5" || maxValue != 65535 || bytes.size() < 2 * cells) throw std::runtime_error("cannot read " + path);
    for (std::size_t i = 0; i < cells; ++i)
        r.heights.push_back(static_cast<float>(offset + scale * (bytes[2 * i] * 256 + bytes[2 * i + 1])));
    return r;
}

const Raster& Bundled()
{
    static const Raster raster = ReadBundledPgm();
    return raster;
}

// y counts rows from the bottom, as the program has it.
vek::HeightGrid GridOf(const Raster& r)
{
    return {r.width, r.height, r.heights.data() + static_cast<std::ptrdiff_t>(r.height - 1) * r.width, -r.width};
}

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The side of the model's cells in metres.
constexpr float kCellSize = 30.0f;

// The five-worker scan conversion onto the input's cells, against the
// input. As in triangulate_field, z is brought to cells first, so that the
// sampler sees the slopes true: it steps along a triangle's longer side in
// three dimensions.
void ScanConvertedError(ZrCIncrementalDelaunay2D& d, const vek::HeightGrid& grid, double& maximum, double& rms)
{
    for (int i = 0; i < d.GetNumVertices(); ++i) d.SetZValueInVertex(d.GetVertex(i).z / kCellSize, i);
    d.CalcBoundingBox();
    d.SetScanConvResolution(1.0f, 1.0f, 1.0f / kCellSize);
    CSSEMatrix field;
    SSEPoint origin;
    d.FastScanConvertTriangulation(&field, std::numeric_limits<float>::quiet_NaN(), origin, true);
    const int ox = static_cast<int>(std::lround(origin.x));
    const int oy = static_cast<int>(std::lround(origin.y));
    double squares = 0.0;
    long long cells = 0;
    maximum = 0.0;
    for (int y = 0; y < grid.height; ++y) {
        for (int x = 0; x < grid.width; ++x) {
            const float surface = field.GetPoint(x - ox, y - oy);
            const double e = std::fabs(static_cast<double>(surface) - grid.At(x, y));
            maximum = std::max(maximum, e);
            squares += e * e;
            ++cells;
        }
    }
    rms = std::sqrt(squares / static_cast<double>(cells));
}

void BM_AdaptiveBundledModel(benchmark::State& state)
{
    const double target = static_cast<double>(state.range(0)) / 10.0;
    const vek::HeightGrid grid = GridOf(Bundled());
    vek::GreedyRefinement::Outcome outcome;
    vek::CentreError centre;
    double refineSeconds = 0.0, allSeconds = 0.0, scanMax = 0.0, scanRms = 0.0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        ZrCIncrementalDelaunay2D d;
        vek::GreedyRefinement refinement(d, grid);
        refinement.Start();
        outcome = refinement.Refine(target, std::numeric_limits<int>::max());
        refineSeconds = SecondsSince(start);
        d.FinalizeTriangleList();
        centre = vek::CompareAtCellCentres(d, grid);
        ScanConvertedError(d, grid, scanMax, scanRms);
        allSeconds = SecondsSince(start);
    }
    state.counters["target m"] = target;
    state.counters["triangles"] = outcome.triangles;
    state.counters["vertices"] = outcome.vertices;
    state.counters["max m"] = centre.maximum;
    state.counters["RMS m"] = centre.rms;
    state.counters["scan max m"] = scanMax;
    state.counters["scan RMS m"] = scanRms;
    state.counters["seconds"] = refineSeconds;
    state.counters["all seconds"] = allSeconds;
    state.counters["cells measured"] = static_cast<double>(outcome.cellsMeasured);
    // The counters round to three figures; the counts in full, for a table.
    std::fprintf(stderr,
                 "%5.1f m: %d triangles, %d vertices, at the centres max %.3f m RMS %.3f m, scan-converted max %.2f m "
                 "RMS %.2f m, refine %.3f s, all %.3f s\n",
                 target, outcome.triangles, outcome.vertices, centre.maximum, centre.rms, scanMax, scanRms,
                 refineSeconds, allSeconds);
}

void Targets(benchmark::internal::Benchmark* b)
{
    b->Arg(100);
    if (vek::bench::IsSmokeRun()) return;
    b->Arg(20)->Arg(5);
}

BENCHMARK(BM_AdaptiveBundledModel)->Apply(Targets)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
