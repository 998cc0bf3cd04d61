// Correlate of a narrow template along a wide byte field. Arguments: the
// field's width, the template's width and the common height. A shift's score
// reads template width x lines vectors, so the time per shift should stay
// flat as the field grows, and grow with the template.

#include <benchmark/benchmark.h>

#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/platform/crt_random.h"

namespace {

void FillRandom(CSSEcharMatrix& m, vek::CrtRandom& random)
{
    for (int y = 0; y < m.GetSizeY(); ++y)
        for (int x = 0; x < m.GetSizeX(); ++x) m.SetPoint(x, y, static_cast<char>(random.Next() & 0xFF));
}

void BM_Correlate(benchmark::State& state)
{
    const int fieldWidth = static_cast<int>(state.range(0));
    const int templateWidth = static_cast<int>(state.range(1));
    const int height = static_cast<int>(state.range(2));
    vek::CrtRandom random(1);
    CSSEcharMatrix field(fieldWidth, height);
    FillRandom(field, random);
    // The template is cut from the middle, so that the search has an answer.
    const CSSEcharMatrix pattern(field, fieldWidth / 2, fieldWidth / 2 + templateWidth - 1);

    int minScore = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(field.Correlate(pattern, minScore, 2000000000));
        benchmark::DoNotOptimize(minScore);
    }
    const double shifts = static_cast<double>(fieldWidth - templateWidth);
    const double iterations = static_cast<double>(state.iterations());
    state.counters["shifts"] = shifts;
    state.counters["shifts/s"] = benchmark::Counter(shifts * iterations, benchmark::Counter::kIsRate);
    // Template pixels compared, padding excluded.
    state.counters["pixels/s"] = benchmark::Counter(shifts * templateWidth * height * iterations, benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(BM_Correlate)
    ->ArgNames({"field", "template", "rows"})
    ->Args({256, 64, 64})
    ->Args({1024, 64, 64})
    ->Args({4096, 64, 64})
    ->Args({16384, 64, 64})
    ->Args({4096, 16, 64})
    ->Args({4096, 64, 256})
    ->Unit(benchmark::kMillisecond);
