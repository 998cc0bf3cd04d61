// Whole-field copy and fill of CSSEMatrix against a plain memcpy of the same
// bytes. Each benchmark takes width and height; 256 x 124 is one block (a
// single transfer), the larger sizes span many blocks (line by line).

#include <benchmark/benchmark.h>

#include "field_bench_support.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::bench::BM_PlainMemcpy;
using vek::bench::CreateForArgs;
using vek::bench::FieldSizes;
using vek::bench::Report;
using vek::bench::StorageBytes;

void BM_CopyFromSSEMatrix(benchmark::State& state)
{
    CSSEMatrix src;
    CreateForArgs(state, src);
    src.Fill(1.5f);
    CSSEMatrix dst;
    CreateForArgs(state, dst);
    for (auto _ : state) {
        dst.CopyFromSSEMatrix(src);
        benchmark::ClobberMemory();
    }
    Report(state, StorageBytes(src));
}

void BM_Fill(benchmark::State& state)
{
    CSSEMatrix m;
    CreateForArgs(state, m);
    float v = 0.0f;
    for (auto _ : state) {
        m.Fill(v);
        v += 1.0f;
        benchmark::ClobberMemory();
    }
    Report(state, StorageBytes(m));
}

} // namespace

BENCHMARK(BM_CopyFromSSEMatrix)->Apply(FieldSizes);
BENCHMARK(BM_Fill)->Apply(FieldSizes);
BENCHMARK(BM_PlainMemcpy)->Apply(FieldSizes);
