// The band layout, the fields of the workers and their merge: the parts of
// the parallel scan conversion that do not depend on the triangle record.

#include <algorithm>
#include <smmintrin.h>

#include "vekdll/surface/scan_workers.h"

namespace vek::detail {

ScanBand ScanBandOf(int band, int bands, int count)
{
    const int chunk = static_cast<int>(static_cast<double>(count) / static_cast<double>(bands) + 0.5);
    const long long first = static_cast<long long>(band) * chunk;
    long long last = first + chunk - 1;
    if (last >= count - 1 || band == bands - 1) last = count - 1;
    return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(last)};
}

int ScanFieldCells(float min, float max, float resolution)
{
    const float cells = (max - min + 1.0f) / resolution + 0.5f;
    // Tested as a float, so that an empty box or a huge one cannot overflow
    // the conversion; the field itself refuses more rows than it can hold.
    if (!(cells >= 1.0f)) return 0;
    if (cells >= 2147483520.0f) return 2147483520;
    return static_cast<int>(cells);
}

void CreateScanField(CSSEMatrix& field, int sizeX, int sizeY, bool keepMax)
{
    field.CreateNoClear(sizeX, sizeY);
    field.Fill(ScanSentinel(keepMax));
}

void MergeScanBand(CSSEMatrix& result, const CSSEMatrix& band, bool keepMax)
{
    __m128** to = result.GetMatrixDataDirectly();
    __m128** from = band.GetMatrixDataDirectly();
    if (to == nullptr || from == nullptr) return;
    const int lines = std::min(result.GetSSESizeY(), band.GetSSESizeY());
    const int vectors = std::min(result.GetSSESizeX(), band.GetSSESizeX());
    const __m128 sentinel = _mm_set1_ps(ScanSentinel(keepMax));
    for (int line = 0; line < lines; ++line) {
        __m128* out = to[line];
        const __m128* in = from[line];
        for (int x = 0; x < vectors; ++x) {
            const __m128 value = in[x];
            // max(value, result) is value only where value > result, and
            // min(value, result) only where value < result: a tie or a
            // not-a-number keeps what the result holds.
            const __m128 better = keepMax ? _mm_max_ps(value, out[x]) : _mm_min_ps(value, out[x]);
            out[x] = _mm_blendv_ps(out[x], better, _mm_cmpneq_ps(value, sentinel));
        }
    }
}

void ReplaceScanSentinel(CSSEMatrix& result, bool keepMax, float background)
{
    result.ReplaceValueWithValue(ScanSentinel(keepMax), background, 1.0f);
}

} // namespace vek::detail
