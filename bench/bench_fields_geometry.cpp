// Resampling and archiving of CSSEMatrix. ScaleMatrix takes the old width
// and height and the new ones and counts new pixels; Serialize takes width
// and height and counts the pixels stored and loaded again through memory.

#include <benchmark/benchmark.h>


#include "vekdll/fields/sse_matrix.h"
#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_file.h"

namespace {

void CountPixels(benchmark::State& state, double pixels)
{
    state.counters["pixels"] = pixels;
    state.counters["pixels/s"] = benchmark::Counter(pixels * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

// A field with a value that changes in both directions, so that no blend
// degenerates to a copy; written straight into the lines.
void CreateRamp(CSSEMatrix& m, int sizeX, int sizeY)
{
    m.Create(sizeX, sizeY);
    for (int line = 0; line < m.GetSSESizeY(); ++line) {
        __m128* vectors = m.GetMatrixDataDirectly()[line];
        const __m128 rows = _mm_setr_ps(0.0f, 0.25f, 0.5f, 0.75f);
        for (int x = 0; x < sizeX; ++x) vectors[x] = _mm_add_ps(_mm_set1_ps(static_cast<float>(x % 97 + line % 15)), rows);
    }
}

void BM_ScaleMatrix(benchmark::State& state)
{
    const int oldX = static_cast<int>(state.range(0));
    const int oldY = static_cast<int>(state.range(1));
    const int newX = static_cast<int>(state.range(2));
    const int newY = static_cast<int>(state.range(3));
    CSSEMatrix original;
    CreateRamp(original, oldX, oldY);
    CSSEMatrix m;
    for (auto _ : state) {
        state.PauseTiming();
        m.CopyFromSSEMatrix(original);
        state.ResumeTiming();
        m.ScaleMatrix(newX, newY);
        benchmark::ClobberMemory();
    }
    CountPixels(state, static_cast<double>(newX) * static_cast<double>(newY));
}

void BM_SerializeRoundTrip(benchmark::State& state)
{
    const int sizeX = static_cast<int>(state.range(0));
    const int sizeY = static_cast<int>(state.range(1));
    CSSEMatrix original;
    CreateRamp(original, sizeX, sizeY);
    CSSEMatrix loaded;
    for (auto _ : state) {
        CMemFile file;
        {
            CArchive ar(&file, CArchive::store);
            original.Serialize(ar);
            ar.Close();
        }
        file.SeekToBegin();
        CArchive ar(&file, CArchive::load);
        loaded.Serialize(ar);
        benchmark::ClobberMemory();
    }
    CountPixels(state, static_cast<double>(sizeX) * static_cast<double>(sizeY));
}

} // namespace

BENCHMARK(BM_ScaleMatrix)
    ->ArgNames({"x", "y", "newX", "newY"})
    ->Args({256, 124, 384, 186})
    ->Args({1024, 1024, 1536, 1536})
    ->Args({1024, 1024, 512, 512})
    ->Args({4096, 4096, 3072, 3072})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SerializeRoundTrip)
    ->ArgNames({"x", "y"})
    ->Args({256, 124})
    ->Args({1024, 1024})
    ->Args({2048, 2048})
    ->Unit(benchmark::kMillisecond);
