// A raster larger than one triangulation should hold, triangulated in tiles:
// each tile by a process of its own, all at once, and the tiles stitched
// into one surface by CombineSubDelaunayTriangles as they come back. See
// --help.

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <ctime>
#include <time.h>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tile_exchange.h"
#include "vekdll/platform/c_event.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Processor time of the calling thread.
double ThreadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Options {
    int Width = 400;
    int Height = 100;
    int Tiles = 4;
    bool Compare = false;
};

constexpr int kSlots = 10; // CombineSubDelaunayTriangles joins ten at a time

const char* const kHelp =
    "usage: tiled_surface [--cells W H] [--tiles N] [--compare]\n"
    "  Samples a smooth height field of W x H cells (default 400 x 100) at\n"
    "  every cell corner, cuts it along x into N tiles (default 4, at most 10)\n"
    "  that share their seam column, triangulates each tile in a process of\n"
    "  its own, all at once, and stitches the tiles into one surface.\n"
    "  --compare also triangulates the whole raster in one go.\n";

bool ParseOptions(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--cells" && i + 2 < argc) {
            options.Width = std::atoi(argv[++i]);
            options.Height = std::atoi(argv[++i]);
        } else if (arg == "--tiles" && i + 1 < argc) {
            options.Tiles = std::atoi(argv[++i]);
        } else if (arg == "--compare") {
            options.Compare = true;
        } else {
            return false;
        }
    }
    return options.Tiles >= 1 && options.Tiles <= kSlots && options.Height >= 1 &&
           options.Width >= options.Tiles;
}

float HeightAt(int x, int y)
{
    return 10.0f * std::sin(static_cast<float>(x) / 17.0f) * std::cos(static_cast<float>(y) / 13.0f);
}

// The cell corners of columns from .. to, all rows, triangulated from the
// corners of their box.
std::unique_ptr<ZrCIncrementalDelaunay2D> Triangulate(int from, int to, int height)
{
    auto surface = std::make_unique<ZrCIncrementalDelaunay2D>((to - from + 1) * (height + 1) + 8);
    for (int y = 0; y <= height; ++y) {
        for (int x = from; x <= to; ++x) {
            SSEPoint p;
            p.sse = _mm_setr_ps(static_cast<float>(x), static_cast<float>(y), HeightAt(x, y), 0.0f);
            surface->AppendVertex(p);
        }
    }
    surface->Triangulate(surface->GetNumVertices(), true, true);
    return surface;
}

// The first column of tile k; tile k ends where tile k + 1 begins.
int TileStart(int k, const Options& options) { return k * options.Width / options.Tiles; }

// Forks the process that triangulates tile k and sends it back through a
// pipe; the read end, or -1 if no process could be started.
int StartTileProcess(int k, const Options& options, pid_t& child)
{
    int ends[2];
    if (pipe(ends) != 0) return -1;
    child = fork();
    if (child < 0) {
        close(ends[0]);
        close(ends[1]);
        return -1;
    }
    if (child == 0) {
        close(ends[0]);
        const Clock::time_point start = Clock::now();
        const std::clock_t cpuStart = std::clock();
        std::unique_ptr<ZrCIncrementalDelaunay2D> tile =
            Triangulate(TileStart(k, options), TileStart(k + 1, options), options.Height);
        const double cpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
        const bool sent = vek::tools::WriteTileMesh(ends[1], vek::tools::MeshOf(*tile, SecondsSince(start), cpu));
        close(ends[1]);
        _exit(sent ? 0 : 1);
    }
    close(ends[1]);
    return ends[0];
}

int OpenSides(CList<t_hdelaunaytriangle*>& triangles)
{
    int open = 0;
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) {
        for (const t_hdelaunaytriangle* n : triangles.GetNext(pos)->Neighbour) open += n == nullptr;
    }
    return open;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!ParseOptions(argc, argv, options)) {
        std::cerr << kHelp;
        return argc > 1 && std::string(argv[1]) == "--help" ? 0 : 2;
    }
    std::printf("raster of %d x %d cells in %d tiles, each triangulated by a process of its own\n", options.Width,
                options.Height, options.Tiles);
    const Clock::time_point start = Clock::now();
    std::vector<pid_t> children(static_cast<std::size_t>(options.Tiles), -1);
    std::vector<int> pipes;
    for (int k = 0; k < options.Tiles; ++k) pipes.push_back(StartTileProcess(k, options, children[static_cast<std::size_t>(k)]));

    // One reader per tile builds its surface from what the process sends
    // and signals the tile's slot; the stitching waits on the slots in order.
    ZrCIncrementalDelaunay2D* slots[kSlots] = {};
    std::vector<std::unique_ptr<CEvent>> events;
    CEvent* finished[kSlots] = {};
    for (int k = 0; k < kSlots; ++k) {
        events.push_back(std::make_unique<CEvent>(false));
        finished[k] = events.back().get();
        if (k >= options.Tiles) finished[k]->SetEvent();
    }
    std::vector<vek::tools::TileMesh> meshes(static_cast<std::size_t>(options.Tiles));
    std::vector<double> readyAt(static_cast<std::size_t>(options.Tiles), 0.0);
    std::vector<std::thread> readers;
    for (int k = 0; k < options.Tiles; ++k) {
        readers.emplace_back([&, k] {
            const auto at = static_cast<std::size_t>(k);
            if (pipes[at] >= 0 && vek::tools::ReadTileMesh(pipes[at], meshes[at])) slots[k] = vek::tools::SurfaceOf(meshes[at]);
            if (pipes[at] >= 0) close(pipes[at]);
            readyAt[at] = SecondsSince(start);
            finished[k]->SetEvent();
        });
    }
    ZrCIncrementalDelaunay2D whole;
    const double stitchStart = ThreadSeconds();
    whole.CombineSubDelaunayTriangles(slots, finished);
    const double stitchWork = ThreadSeconds() - stitchStart;
    const double stitched = SecondsSince(start);
    for (std::thread& reader : readers) reader.join();
    bool allCameBack = true;
    for (int k = 0; k < options.Tiles; ++k) {
        int status = 0;
        const auto at = static_cast<std::size_t>(k);
        allCameBack = allCameBack && children[at] > 0 && waitpid(children[at], &status, 0) == children[at] &&
                      WIFEXITED(status) && WEXITSTATUS(status) == 0 && !meshes[at].Corners.empty();
        std::printf("  tile %d: columns %d to %d, %zu triangles, %.3f s in its process (%.3f s of processor "
                    "time), back after %.3f s\n",
                    k, TileStart(k, options), TileStart(k + 1, options), meshes[at].Corners.size() / 3,
                    meshes[at].Seconds, meshes[at].CpuSeconds, readyAt[at]);
    }
    double lastReady = 0.0;
    for (double at : readyAt) lastReady = std::max(lastReady, at);
    const int triangles = whole.GetNumTrianglesInTriangleList();
    const int open = OpenSides(whole.GetTriangleList());
    const int rim = 2 * (options.Width + options.Height);
    std::printf("stitched after %.3f s (%.3f s after the last tile came back, %.3f s of processor time): %d "
                "triangles, %d vertices, %d open sides (the raster's rim has %d)\n",
                stitched, stitched - lastReady, stitchWork, triangles, whole.GetNumVertices(), open, rim);
    if (options.Compare) {
        const Clock::time_point single = Clock::now();
        const std::clock_t cpuStart = std::clock();
        std::unique_ptr<ZrCIncrementalDelaunay2D> one = Triangulate(0, options.Width, options.Height);
        std::printf("the whole raster as one triangulation: %.3f s (%.3f s of processor time), %d triangles\n",
                    SecondsSince(single), static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC,
                    one->GetNumTriangles());
    }
    return allCameBack && open == rim ? 0 : 1;
}
