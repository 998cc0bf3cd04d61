#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "vekdll/fields/sse_matrix.h"

using vek::detail::ClampIndex;

// Fills of rectangles and frames. They write whole vectors, four rows at a
// time, which is why their row bounds are lines.

namespace {

// Columns from `first` up to but not including `end`.
struct Columns {
    int first;
    int end;
};

// Both ends are clamped to the field, so x1 never reaches past the last
// column and the last column is never written.
Columns ClampedColumns(int x0, int x1, int sizeX)
{
    return {ClampIndex(x0, 0, sizeX - 1), ClampIndex(x1, 0, sizeX - 1)};
}

void StoreInColumns(__m128* line, Columns columns, __m128 value)
{
    for (int x = columns.first; x < columns.end; ++x) line[x] = value;
}

// The vector that closes a fill at its first or last line: lanes below
// `firstKept` take the fill value, the others the lanes of `old` in reverse
// order (lane i gets old lane 3 - i). Rows outside the rectangle thus come
// back mirrored within the line, which callers have long relied on.
__m128 MirroredEdge(__m128 old, __m128 value, int firstKept)
{
    const __m128 reversed = _mm_shuffle_ps(old, old, _MM_SHUFFLE(0, 1, 2, 3));
    const __m128i lane = _mm_setr_epi32(0, 1, 2, 3);
    const __m128 takesValue = _mm_castsi128_ps(_mm_cmplt_epi32(lane, _mm_set1_epi32(firstKept)));
    return _mm_blendv_ps(reversed, value, takesValue);
}

} // namespace

void CSSEMatrix::FillArea(int x0, int y0, int x1, int y1, float v)
{
    if (MatrixData == nullptr || SizeX < 1) return;
    const Columns columns = ClampedColumns(x0, x1, SizeX);
    if (columns.first >= columns.end) return;
    const int firstLine = ClampIndex(y0 >> 2, 0, SSESizeY - 1);
    const int lastLine = ClampIndex(y1 >> 2, 0, SSESizeY - 1);
    const __m128 value = _mm_set1_ps(v);

    // The kept lanes come from column x0 (first line) and x1 (last line)
    // alone. Column x1 lies outside the range, so the first line's writes
    // never reach what the last line reads, even when the two coincide; the
    // last line is then written second and wins.
    __m128* first = MatrixData[firstLine];
    StoreInColumns(first, columns, MirroredEdge(first[columns.first], value, 4 - (y0 & 3)));
    if ((y1 & 3) != 0) {
        __m128* last = MatrixData[lastLine];
        StoreInColumns(last, columns, MirroredEdge(last[columns.end], value, y1 & 3));
    }
    for (int line = firstLine + 1; line < lastLine; ++line) StoreInColumns(MatrixData[line], columns, value);
}

void CSSEMatrix::FillAreaApprox(int x0, int y0, int x1, int y1, float v)
{
    if (MatrixData == nullptr || SizeX < 1) return;
    const Columns columns = ClampedColumns(x0, x1, SizeX);
    // The line before the first is clamped and then stepped over, so the
    // fill never starts at line 0.
    const int firstLine = ClampIndex((y0 >> 2) - 1, 0, SSESizeY - 1) + 1;
    const int endLine = ClampIndex((y1 >> 2) + 1, 0, SSESizeY - 1);
    const __m128 value = _mm_set1_ps(v);
    for (int line = firstLine; line < endLine; ++line) StoreInColumns(MatrixData[line], columns, value);
}

void CSSEMatrix::FillAreaZylindrical(int x0, int y0, int x1, int y1, float step, float width, bool negative)
{
    if (MatrixData == nullptr || SizeX < 1) return;
    const Columns columns = ClampedColumns(x0, x1, SizeX);
    if (columns.first >= columns.end) return;

    // The cross-section: a circle of radius r sampled at t = r - step,
    // r - 2 step, ... one column after the other.
    const float radius = static_cast<float>(columns.end - columns.first) * width * 0.5f;
    std::vector<float> profile;
    profile.reserve(static_cast<std::size_t>(columns.end - columns.first));
    float t = radius;
    for (int x = columns.first; x < columns.end; ++x) {
        t = t - step;
        const float height = std::sqrt(std::max(0.0f, radius * radius - t * t));
        profile.push_back(negative ? 0.0f - height : height);
    }

    const int firstLine = ClampIndex((y0 >> 2) - 1, 0, SSESizeY - 1);
    const int endLine = ClampIndex((y1 >> 2) + 1, 0, SSESizeY - 1);
    for (int line = firstLine; line < endLine; ++line) {
        __m128* vectors = MatrixData[line];
        for (int x = columns.first; x < columns.end; ++x) vectors[x] = _mm_set1_ps(profile[static_cast<std::size_t>(x - columns.first)]);
    }
}

void CSSEMatrix::RemoveFrameArtefacts(int nx, int ny, float v)
{
    if (MatrixData == nullptr) return;
    const __m128 value = _mm_set1_ps(v);
    // The right-hand frame is one column wider than the left-hand one, and
    // the bottom one line higher than the top one; rows count in whole lines.
    const int leftEnd = std::min(nx, SizeX);
    const int rightFirst = static_cast<int>(std::max<std::int64_t>(static_cast<std::int64_t>(SizeX) - nx - 1, 0));
    const int frameLines = ny >> 2;
    const int topEnd = std::min(frameLines, SSESizeY);
    const int bottomFirst = std::max(SSESizeY - frameLines - 1, 0);

    for (int line = 0; line < SSESizeY; ++line) {
        StoreInColumns(MatrixData[line], {0, leftEnd}, value);
        StoreInColumns(MatrixData[line], {rightFirst, SizeX}, value);
    }
    for (int line = 0; line < topEnd; ++line) StoreInColumns(MatrixData[line], {0, SizeX}, value);
    for (int line = bottomFirst; line < SSESizeY; ++line) StoreInColumns(MatrixData[line], {0, SizeX}, value);
}
