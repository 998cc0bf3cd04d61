// Whole-field arithmetic and filters of CSSEMatrix against a plain memcpy of
// the same bytes. The four-lane passes (OffsetMatrix, MaximumOf,
// CalcMinMaxValues) should run near the memcpy's rate; the filters that go
// pixel by pixel through a neighbourhood (Median3x3, Chamfer) are shown for
// their rate and growth.

#include <benchmark/benchmark.h>

#include <cmath>

#include "field_bench_support.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::bench::BM_PlainMemcpy;
using vek::bench::CreateForArgs;
using vek::bench::FieldSizes;
using vek::bench::Report;
using vek::bench::StorageBytes;

// A smooth height field with an empty (0) margin, as scan conversion leaves it.
void FillHeightField(CSSEMatrix& m)
{
    const int margin = 8;
    for (int y = margin; y < m.GetSizeY() - margin; ++y) {
        for (int x = margin; x < m.GetSizeX() - margin; ++x) {
            const float h = 100.0f + 50.0f * std::sin(0.01f * static_cast<float>(x)) * std::cos(0.013f * static_cast<float>(y));
            m.SetPoint(x, y, h);
        }
    }
}

void BM_OffsetMatrix(benchmark::State& state)
{
    CSSEMatrix m;
    CreateForArgs(state, m);
    FillHeightField(m);
    float offset = 1.0f;
    for (auto _ : state) {
        m.OffsetMatrix(offset);
        offset = -offset;
        benchmark::ClobberMemory();
    }
    Report(state, StorageBytes(m));
}

void BM_MaximumOf(benchmark::State& state)
{
    CSSEMatrix m;
    CreateForArgs(state, m);
    FillHeightField(m);
    CSSEMatrix other;
    CreateForArgs(state, other);
    other.Fill(120.0f);
    for (auto _ : state) {
        m.MaximumOf(other);
        benchmark::ClobberMemory();
    }
    // Two fields read, one written.
    Report(state, 2 * StorageBytes(m));
}

void BM_CalcMinMaxValues(benchmark::State& state)
{
    CSSEMatrix m;
    CreateForArgs(state, m);
    FillHeightField(m);
    for (auto _ : state) {
        float max = 0.0f;
        float min = 0.0f;
        m.CalcMinMaxValues(&max, &min);
        benchmark::DoNotOptimize(max);
        benchmark::DoNotOptimize(min);
    }
    Report(state, StorageBytes(m));
}

void BM_Median3x3(benchmark::State& state)
{
    CSSEMatrix src;
    CreateForArgs(state, src);
    FillHeightField(src);
    CSSEMatrix dst;
    CreateForArgs(state, dst);
    for (auto _ : state) {
        CFilters::Median3x3(src, dst, 0, src.GetSizeX(), 0, src.GetSizeY());
        benchmark::ClobberMemory();
    }
    Report(state, StorageBytes(src));
}

// A distance image from a sparse grid of seeds, one every 64 pixels.
void BM_Chamfer(benchmark::State& state)
{
    CSSEMatrix seeds;
    CreateForArgs(state, seeds);
    for (int y = 0; y < seeds.GetSizeY(); y += 64)
        for (int x = 0; x < seeds.GetSizeX(); x += 64) seeds.SetPoint(x, y, 1.0f);
    CSSEMatrix m;
    CreateForArgs(state, m);
    for (auto _ : state) {
        state.PauseTiming();
        m.CopyFromSSEMatrix(seeds);
        state.ResumeTiming();
        m.Chamfer();
        benchmark::ClobberMemory();
    }
    Report(state, StorageBytes(m));
}

} // namespace

BENCHMARK(BM_PlainMemcpy)->Apply(FieldSizes);
BENCHMARK(BM_OffsetMatrix)->Apply(FieldSizes);
BENCHMARK(BM_MaximumOf)->Apply(FieldSizes);
BENCHMARK(BM_CalcMinMaxValues)->Apply(FieldSizes);
BENCHMARK(BM_Median3x3)->Apply(FieldSizes);
BENCHMARK(BM_Chamfer)->Apply(FieldSizes);
