// The incremental Delaunay triangulation side by side with a peer library's
// planar Delaunay triangulation, on the same uniform points in one run:
// ZrCIncrementalDelaunay2D::Triangulate (from the box corners, the default
// search), the peer's range insertion (which sorts the points along a
// space-filling curve first), and the peer's insertion one by one in the
// given order without a hint, as ours inserts. Each runs in a child process
// of its own, so that its peak resident memory can be read apart.
//
//   compare_delaunay_cgal [points ...]      default: 65536 262144 1048576

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "vekdll/surface/incremental_delaunay.h"

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using PeerTriangulation = CGAL::Delaunay_triangulation_2<Kernel>;

struct Point {
    float x, y;
};

std::vector<Point> UniformPoints(int count)
{
    std::mt19937 engine(12345);
    const double scale = 1000.0 / 4294967296.0;
    std::vector<Point> points(static_cast<std::size_t>(count));
    for (Point& p : points) {
        p.x = static_cast<float>(engine() * scale);
        p.y = static_cast<float>(engine() * scale);
    }
    return points;
}

double Ours(const std::vector<Point>& points, std::size_t& triangles)
{
    ZrCIncrementalDelaunay2D d(static_cast<int>(points.size()) + 4);
    for (const Point& p : points) {
        SSEPoint v;
        v.sse = _mm_setr_ps(p.x, p.y, 0.0f, 0.0f);
        d.AppendVertex(v);
    }
    const auto start = std::chrono::steady_clock::now();
    d.Triangulate(d.GetNumVertices(), true, true);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    triangles = static_cast<std::size_t>(d.GetNumTriangles());
    return seconds;
}

std::vector<Kernel::Point_2> PeerPoints(const std::vector<Point>& points)
{
    std::vector<Kernel::Point_2> input;
    input.reserve(points.size());
    for (const Point& p : points) input.emplace_back(p.x, p.y);
    return input;
}

double PeerRange(const std::vector<Point>& points, std::size_t& triangles)
{
    const std::vector<Kernel::Point_2> input = PeerPoints(points);
    const auto start = std::chrono::steady_clock::now();
    PeerTriangulation t;
    t.insert(input.begin(), input.end());
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    triangles = t.number_of_faces();
    return seconds;
}

double PeerOneByOne(const std::vector<Point>& points, std::size_t& triangles)
{
    const std::vector<Kernel::Point_2> input = PeerPoints(points);
    const auto start = std::chrono::steady_clock::now();
    PeerTriangulation t;
    for (const Kernel::Point_2& p : input) t.insert(p);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    triangles = t.number_of_faces();
    return seconds;
}

double Nothing(const std::vector<Point>&, std::size_t& triangles)
{
    triangles = 0;
    return 0.0;
}

struct Outcome {
    double seconds = 0.0;
    std::size_t triangles = 0;
    long peakKiB = 0;
};

// Runs `method` in a child process; its time and count come back through a
// pipe, its peak resident memory from the kernel's account of the child.
Outcome InChild(const std::function<double(const std::vector<Point>&, std::size_t&)>& method,
                const std::vector<Point>& points)
{
    int channel[2];
    if (pipe(channel) != 0) std::exit(1);
    const pid_t child = fork();
    if (child == 0) {
        close(channel[0]);
        Outcome outcome;
        outcome.seconds = method(points, outcome.triangles);
        if (write(channel[1], &outcome, sizeof outcome) != sizeof outcome) _exit(1);
        _exit(0);
    }
    close(channel[1]);
    Outcome outcome;
    if (read(channel[0], &outcome, sizeof outcome) != sizeof outcome) std::fprintf(stderr, "child failed\n");
    close(channel[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    outcome.peakKiB = usage.ru_maxrss;
    return outcome;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
    if (sizes.empty()) sizes = {65536, 262144, 1048576};
    std::printf("%10s  %-28s %10s %12s %10s %12s %10s\n", "points", "method", "seconds", "points/s", "x range", "peak MiB",
                "x range");
    for (const int count : sizes) {
        const std::vector<Point> points = UniformPoints(count);
        const Outcome base = InChild(Nothing, points);
        const Outcome range = InChild(PeerRange, points);
        const Outcome single = InChild(PeerOneByOne, points);
        const Outcome ours = InChild(Ours, points);
        const auto mib = [&](const Outcome& o) { return static_cast<double>(o.peakKiB - base.peakKiB) / 1024.0; };
        const struct {
            const char* name;
            const Outcome& outcome;
        } rows[] = {{"peer, range insertion", range}, {"peer, one by one", single}, {"ZrCIncrementalDelaunay2D", ours}};
        for (const auto& row : rows) {
            std::printf("%10d  %-28s %10.3f %12.0f %10.2f %12.1f %10.2f\n", count, row.name, row.outcome.seconds,
                        count / row.outcome.seconds, row.outcome.seconds / range.seconds, mib(row.outcome),
                        mib(row.outcome) / mib(range));
        }
    }
    return 0;
}
