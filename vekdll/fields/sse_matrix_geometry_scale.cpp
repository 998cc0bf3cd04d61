#include <vector>

#include "vekdll/fields/sse_matrix.h"

using vek::detail::ClampIndex;

namespace {

// Where one new row or column falls in the old image: the old index below it
// and the one after, both clamped, and the fraction between them.
struct Sample {
    int low;
    int high;
    float fraction;
};

std::vector<Sample> Samples(int newSize, float step, int oldSize)
{
    std::vector<Sample> samples(static_cast<std::size_t>(newSize));
    for (int i = 0; i < newSize; ++i) {
        // Non-negative, so the conversion truncates like a floor.
        const float position = static_cast<float>(i) * step;
        const int index = static_cast<int>(position);
        samples[static_cast<std::size_t>(i)] = {ClampIndex(index, 0, oldSize - 1), ClampIndex(index + 1, 0, oldSize - 1), position - static_cast<float>(index)};
    }
    return samples;
}

// The four old rows that one new line reads, one lane each: the upper and the
// lower neighbour row with their weights.
struct LineRows {
    const float* upper[4];
    const float* lower[4];
    __m128 weightUpper; // 1 - ty
    __m128 weightLower; // ty
    __m128 imageLanes;  // all bits set in lanes that hold image rows
};

const float* RowStart(__m128* const* lines, int row)
{
    return reinterpret_cast<const float*>(lines[row >> 2]) + (row & 3);
}

LineRows RowsOfLine(__m128* const* oldLines, const std::vector<Sample>& rowSamples, int line)
{
    LineRows rows{};
    float fraction[4];
    float complement[4];
    int isImage[4];
    for (int lane = 0; lane < 4; ++lane) {
        const int row = 4 * line + lane;
        isImage[lane] = row < static_cast<int>(rowSamples.size()) ? -1 : 0;
        // A padding lane reads row 0 and is cleared afterwards.
        const Sample s = isImage[lane] != 0 ? rowSamples[static_cast<std::size_t>(row)] : Sample{0, 0, 0.0f};
        rows.upper[lane] = RowStart(oldLines, s.low);
        rows.lower[lane] = RowStart(oldLines, s.high);
        fraction[lane] = s.fraction;
        complement[lane] = 1.0f - s.fraction;
    }
    rows.weightLower = _mm_loadu_ps(fraction);
    rows.weightUpper = _mm_loadu_ps(complement);
    rows.imageLanes = _mm_castsi128_ps(_mm_loadu_si128(reinterpret_cast<const __m128i*>(isImage)));
    return rows;
}

// Column x of the four rows; pixels of one row lie four floats apart.
__m128 Gather(const float* const rows[4], int x)
{
    return _mm_setr_ps(rows[0][4 * x], rows[1][4 * x], rows[2][4 * x], rows[3][4 * x]);
}

} // namespace

void CSSEMatrix::ScaleMatrix(int newX, int newY)
{
    if (MatrixData == nullptr || SizeX < 1 || SizeY < 1) return;
    if (newX < 0 || newY < 0 || newY > kMaxSizeY) return;

    const float sx = static_cast<float>(SizeX) / static_cast<float>(newX);
    const float sy = static_cast<float>(SizeY) / static_cast<float>(newY);
    const std::vector<Sample> columns = Samples(newX, sx, SizeX);
    const std::vector<Sample> rowSamples = Samples(newY, sy, SizeY);

    CSSEMatrix scaled;
    scaled.CreateNoClear(newX, newY);
    // Four new rows at once, one per lane; each lane reads its own pair of
    // old rows. Every product and sum is the per-pixel formula
    // (1-tx)*p00*(1-ty) + p10*tx*(1-ty) + (1-tx)*p01*ty + p11*tx*ty,
    // evaluated left to right, so the vector result equals a pixel-by-pixel
    // evaluation bit for bit.
    for (int line = 0; line < scaled.SSESizeY; ++line) {
        const LineRows rows = RowsOfLine(MatrixData, rowSamples, line);
        __m128* out = scaled.MatrixData[line];
        for (int x = 0; x < newX; ++x) {
            const Sample& c = columns[static_cast<std::size_t>(x)];
            const __m128 tx = _mm_set1_ps(c.fraction);
            const __m128 oneMinusTx = _mm_set1_ps(1.0f - c.fraction);
            const __m128 p00 = Gather(rows.upper, c.low);
            const __m128 p10 = Gather(rows.upper, c.high);
            const __m128 p01 = Gather(rows.lower, c.low);
            const __m128 p11 = Gather(rows.lower, c.high);
            __m128 sum = _mm_mul_ps(_mm_mul_ps(oneMinusTx, p00), rows.weightUpper);
            sum = _mm_add_ps(sum, _mm_mul_ps(_mm_mul_ps(p10, tx), rows.weightUpper));
            sum = _mm_add_ps(sum, _mm_mul_ps(_mm_mul_ps(oneMinusTx, p01), rows.weightLower));
            sum = _mm_add_ps(sum, _mm_mul_ps(_mm_mul_ps(p11, tx), rows.weightLower));
            out[x] = _mm_and_ps(sum, rows.imageLanes);
        }
    }
    TakeImageFrom(scaled);
}

// Callers that chose the vector form get the same resampling: the one above
// already works on four rows per vector, and a second filter would give
// other values for the same request.
void CSSEMatrix::ScaleMatrix_SSE(int newX, int newY)
{
    ScaleMatrix(newX, newY);
}
