#pragma once

// What the field benchmarks share: a field of the benchmark's size, the
// report of size and rates, the sizes themselves, and the floor that every
// whole-field pass is measured against, a plain memcpy of the same bytes.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/safe_alloc.h"

namespace vek::bench {

inline std::int64_t StorageBytes(const CSSEMatrix& m)
{
    return static_cast<std::int64_t>(m.GetSSESizeX()) * m.GetSSESizeY() * static_cast<std::int64_t>(sizeof(__m128));
}

// A cleared field of the benchmark's width and height.
inline void CreateForArgs(const benchmark::State& state, CSSEMatrix& m)
{
    m.Create(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
}

// Size, pixels per second and bytes per second of `bytes` moved per iteration.
inline void Report(benchmark::State& state, std::int64_t bytes)
{
    const double pixels = static_cast<double>(state.range(0)) * static_cast<double>(state.range(1));
    state.counters["pixels"] = pixels;
    state.counters["pixels/s"] = benchmark::Counter(pixels * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.SetBytesProcessed(bytes * static_cast<std::int64_t>(state.iterations()));
}

// The floor for a pass over a field: one memcpy of as many bytes as the
// field's storage.
inline void BM_PlainMemcpy(benchmark::State& state)
{
    CSSEMatrix shape;
    CreateForArgs(state, shape);
    const std::int64_t bytes = StorageBytes(shape);
    shape.Reset();
    void* src = SafeAlignedAlloc(static_cast<std::uint64_t>(bytes), 16);
    void* dst = SafeAlignedAlloc(static_cast<std::uint64_t>(bytes), 16);
    std::memset(src, 1, static_cast<std::size_t>(bytes));
    std::memset(dst, 0, static_cast<std::size_t>(bytes));
    for (auto _ : state) {
        std::memcpy(dst, src, static_cast<std::size_t>(bytes));
        benchmark::DoNotOptimize(dst);
        benchmark::ClobberMemory();
    }
    Report(state, bytes);
    SafeAlignedFree(src);
    SafeAlignedFree(dst);
}

// One small field (a single block) and the sizes of real height fields.
inline void FieldSizes(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"x", "y"});
    b->Args({256, 124});
    b->Args({1024, 1024});
    b->Args({4096, 4096});
    b->Unit(benchmark::kMicrosecond);
}

} // namespace vek::bench
