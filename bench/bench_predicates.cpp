// The exact orientation and in-circle predicates, beside the plain
// single-precision determinants that the tolerant code paths evaluate.
// Families of input (all float coordinates but the fourth): 0 random points
// in a square of 1000 units; 1 random points around world coordinates of
// 5e5; 2 points on a line or a circle, rounded to float; 3 the same in
// double, within a unit in the last place of the line or circle; 4 points of
// a small integer lattice, where collinear and cocircular sets are frequent.
// "adaptive" is the share of calls whose plain value was undecided, so that
// the exact stages ran.

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <type_traits>
#include <vector>

#include "smoke_run.h"
#include "vekdll/foundation/exact_predicates.h"

namespace {

struct Point {
    double x;
    double y;
};

struct FloatPoint {
    float x;
    float y;
};

enum Family { kRandom, kWorld, kNearlyDegenerate, kNearlyDegenerateDouble, kLattice };

// Rounded to float through memory: g++ 12 at -O2 drops a round trip from
// double to float and back when it vectorizes two of them side by side.
double ToFloat(double v)
{
    volatile float rounded = static_cast<float>(v);
    return rounded;
}

// Four points per case: the orientation takes the first three.
std::vector<Point> MakeCases(Family family, int count)
{
    std::mt19937 random(4711);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<Point> points;
    points.reserve(static_cast<std::size_t>(count) * 4);
    for (int i = 0; i < count; ++i) {
        switch (family) {
        case kRandom:
            for (int k = 0; k < 4; ++k) {
                points.push_back({ToFloat(1000.0 * unit(random)), ToFloat(1000.0 * unit(random))});
            }
            break;
        case kWorld:
            for (int k = 0; k < 4; ++k) {
                points.push_back({ToFloat(5e5 + 100.0 * unit(random)), ToFloat(5e5 + 100.0 * unit(random))});
            }
            break;
        case kNearlyDegenerate:
        case kNearlyDegenerateDouble: {
            // Odd cases: three points on one line (and a fourth anywhere);
            // even cases: four on one circle.
            const auto rounded = [&](double v) { return family == kNearlyDegenerate ? ToFloat(v) : v; };
            const double cx = 1000.0 * unit(random), cy = 1000.0 * unit(random);
            if (i % 2 == 1) {
                const double dx = unit(random) - 0.5, dy = unit(random) - 0.5;
                for (int k = 0; k < 4; ++k) {
                    const double t = 100.0 * unit(random);
                    points.push_back({rounded(cx + t * dx), rounded(cy + t * dy)});
                }
            } else {
                const double r = 50.0 * unit(random) + 1.0;
                for (int k = 0; k < 4; ++k) {
                    const double phi = 6.283185307179586 * unit(random);
                    points.push_back({rounded(cx + r * std::cos(phi)), rounded(cy + r * std::sin(phi))});
                }
            }
            break;
        }
        case kLattice:
            for (int k = 0; k < 4; ++k) points.push_back({double(random() % 4), double(random() % 4)});
            break;
        }
    }
    return points;
}

double AdaptiveShare(const std::vector<Point>& p, bool inCircle)
{
    int undecided = 0;
    double det = 0.0;
    for (std::size_t i = 0; i < p.size(); i += 4) {
        const bool decided =
            inCircle ? vek::detail::InCirclePlain(p[i].x, p[i].y, p[i + 1].x, p[i + 1].y, p[i + 2].x, p[i + 2].y,
                                                  p[i + 3].x, p[i + 3].y, det)
                     : vek::detail::Orient2DPlain(p[i].x, p[i].y, p[i + 1].x, p[i + 1].y, p[i + 2].x, p[i + 2].y, det);
        undecided += !decided;
    }
    return static_cast<double>(undecided) / static_cast<double>(p.size() / 4);
}

// Twice the signed area and the in-circle determinant in single precision,
// as a plain evaluation without any guarantee.
float PlainOrient(const FloatPoint* p)
{
    return (p[0].x - p[2].x) * (p[1].y - p[2].y) - (p[0].y - p[2].y) * (p[1].x - p[2].x);
}

float PlainInCircle(const FloatPoint* p)
{
    const float adx = p[0].x - p[3].x, ady = p[0].y - p[3].y;
    const float bdx = p[1].x - p[3].x, bdy = p[1].y - p[3].y;
    const float cdx = p[2].x - p[3].x, cdy = p[2].y - p[3].y;
    return (adx * adx + ady * ady) * (bdx * cdy - cdx * bdy) + (bdx * bdx + bdy * bdy) * (cdx * ady - adx * cdy) +
           (cdx * cdx + cdy * cdy) * (adx * bdy - bdx * ady);
}

double ExactOrient(const Point* p)
{
    return vek::Orient2D(p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
}

double ExactInCircle(const Point* p)
{
    return vek::InCircle(p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y);
}

template <class P, class Predicate>
void Run(benchmark::State& state, Predicate predicate, bool inCircle)
{
    const int count = static_cast<int>(state.range(0));
    const std::vector<Point> cases = MakeCases(static_cast<Family>(state.range(1)), count);
    std::vector<P> points;
    for (const Point& p : cases) points.push_back({static_cast<decltype(P::x)>(p.x), static_cast<decltype(P::y)>(p.y)});
    int positive = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < points.size(); i += 4) positive += predicate(&points[i]) > 0;
        benchmark::DoNotOptimize(positive);
    }
    state.counters["size"] = count;
    state.counters["predicates/s"] = benchmark::Counter(
        static_cast<double>(count) * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    if (std::is_same_v<P, Point>) state.counters["adaptive"] = AdaptiveShare(cases, inCircle);
}

void BM_Orient2DExact(benchmark::State& state)
{
    Run<Point>(state, ExactOrient, false);
}

void BM_Orient2DPlainFloat(benchmark::State& state)
{
    Run<FloatPoint>(state, PlainOrient, false);
}

void BM_InCircleExact(benchmark::State& state)
{
    Run<Point>(state, ExactInCircle, true);
}

void BM_InCirclePlainFloat(benchmark::State& state)
{
    Run<FloatPoint>(state, PlainInCircle, true);
}

} // namespace

void PredicateCases(benchmark::internal::Benchmark* bench)
{
    const bool smoke = vek::bench::IsSmokeRun();
    for (int family : {kRandom, kWorld, kNearlyDegenerate, kNearlyDegenerateDouble, kLattice}) {
        bench->Args({1 << 10, family});
        if (!smoke) bench->Args({1 << 16, family});
    }
    bench->ArgNames({"cases", "family"});
    bench->Unit(benchmark::kMicrosecond);
}

BENCHMARK(BM_Orient2DExact)->Apply(PredicateCases);
BENCHMARK(BM_Orient2DPlainFloat)->Apply(PredicateCases);
BENCHMARK(BM_InCircleExact)->Apply(PredicateCases);
BENCHMARK(BM_InCirclePlainFloat)->Apply(PredicateCases);
