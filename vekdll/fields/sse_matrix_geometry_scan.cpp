#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

using vek::detail::ClampIndex;
using vek::detail::Greater;
using vek::detail::Less;
using vek::detail::ReplaceLanes;

// Scans for the first pixel beyond a threshold, by whole vectors where the
// scan runs along a column.

namespace {

// Which pixels end a scan: those below t, or above it when `above` is set.
// Most scans want the pixel strictly beyond t; FindFirstPoint counts t itself.
class Threshold {
public:
    Threshold(float t, bool above, bool inclusive) : t_(_mm_set1_ps(t)), above_(above), inclusive_(inclusive) {}

    // One bit per lane that is a hit, lane 0 in bit 0.
    int Hits(__m128 p) const
    {
        if (inclusive_) return _mm_movemask_ps(above_ ? _mm_cmpge_ps(p, t_) : _mm_cmple_ps(p, t_));
        return _mm_movemask_ps(above_ ? Greater::Lanes(p, t_) : Less::Lanes(p, t_));
    }
    bool IsHit(float p) const { return Hits(_mm_set1_ps(p)) != 0; }

private:
    __m128 t_;
    bool above_;
    bool inclusive_;
};

int LowestLane(int hits)
{
    return std::countr_zero(static_cast<unsigned>(hits));
}

// Along one row from x0 to x1 inclusive, stepping by +1 or -1; x1 if nothing
// hits. Outside the field every position reads the pixel at the rim, so once
// that pixel has failed, the positions still outside are skipped.
int ScanRow(const CSSEMatrix& field, int x0, int x1, int row, const Threshold& threshold, int step)
{
    const int lastColumn = field.GetSizeX() - 1;
    for (std::int64_t x = x0; step > 0 ? x <= x1 : x >= x1; x += step) {
        const int column = static_cast<int>(std::max<std::int64_t>(0, std::min<std::int64_t>(lastColumn, x)));
        if (threshold.IsHit(field.GetPoint(column, row))) return static_cast<int>(x);
        if (x == column) continue;
        const bool leavingField = (step > 0) == (x > column);
        if (leavingField) break;
        x = column - step; // re-enter the field at the rim
    }
    return x1;
}

// The masks say which lanes of vector x in a line may be painted. Without a
// mask every lane may, and whole vectors are painted.
struct NoMask {
    __m128 Paintable(int /*line*/, int /*x*/) const { return _mm_castsi128_ps(_mm_set1_epi32(-1)); }
};

// A float mask of the field's size protects the pixels where it is not 0.
class FloatMask {
public:
    explicit FloatMask(const CSSEMatrix& mask) : lines_(mask.GetMatrixDataDirectly()) {}
    __m128 Paintable(int line, int x) const { return _mm_cmpeq_ps(lines_[line][x], _mm_setzero_ps()); }

private:
    __m128* const* lines_;
};

// A byte mask: the four rows of float line L are bytes 4 (L & 3) ... + 3 of
// the vector in byte line L >> 2.
class ByteMask {
public:
    explicit ByteMask(const CSSEcharMatrix& mask) : lines_(mask.GetMatrixDataDirectly()) {}
    __m128 Paintable(int line, int x) const
    {
        std::int32_t four;
        std::memcpy(&four, reinterpret_cast<const char*>(lines_[line >> 2] + x) + 4 * (line & 3), sizeof four);
        const __m128i widened = _mm_cvtepi8_epi32(_mm_cvtsi32_si128(four));
        return _mm_castsi128_ps(_mm_cmpeq_epi32(widened, _mm_setzero_si128()));
    }

private:
    __m128i* const* lines_;
};

template <class MaskField>
bool MaskFits(const CSSEMatrix& field, const MaskField& mask)
{
    return mask.GetMatrixDataDirectly() != nullptr && mask.GetSizeX() == field.GetSizeX() && mask.GetSizeY() == field.GetSizeY();
}

// Paints column x upward in whole vectors until the first vector with a hit,
// whose first row goes to y. Lanes the mask protects keep their values.
template <class Mask>
void PaintUpward(CSSEMatrix& field, int x, const Threshold& threshold, float v, int& y, int yStop, const Mask& mask)
{
    if (field.GetMatrixDataDirectly() == nullptr || x < 0 || x >= field.GetSizeX()) return;
    // The lines stop short of the one holding yStop by one more line, so the
    // painting ends some rows above the requested stop.
    const int stopLine = (std::max(std::min(yStop, field.GetSizeY() - 1), 0) >> 2) + 1;
    const __m128 value = _mm_set1_ps(v);
    __m128* const* lines = field.GetMatrixDataDirectly();
    for (int line = field.GetSSESizeY() - 2; line >= stopLine + 1; --line) {
        __m128& vector = lines[line][x];
        if (threshold.Hits(vector) != 0) {
            y = 4 * line;
            return;
        }
        ReplaceLanes(vector, mask.Paintable(line, x), value);
    }
}

} // namespace

void CSSEMatrix::FindFirstPoint(int& x, int& y, float t, bool above)
{
    x = 0;
    y = 0;
    if (MatrixData == nullptr) return;
    const Threshold threshold(t, above, true);
    for (int column = 20; column < SSESizeX - 20; ++column) {
        for (int line = 5; line < SSESizeY - 5; ++line) {
            const int hits = threshold.Hits(MatrixData[line][column]);
            if (hits == 0) continue;
            y = 4 * line + LowestLane(hits);
            x = column;
            return;
        }
    }
}

void CSSEMatrix::FindFirstPointLined(int x, int& y, float t, bool above)
{
    y = 0;
    // A column outside the field has nothing to find.
    if (MatrixData == nullptr || x < 0 || x >= SizeX) return;
    const Threshold threshold(t, above, false);
    for (int line = SSESizeY - 2; line >= 2; --line) {
        const int hits = threshold.Hits(MatrixData[line][x]);
        if (hits == 0) continue;
        y = 4 * line + LowestLane(hits);
        return;
    }
}

int CSSEMatrix::FindPointFromLeft(int x0, int x1, int y, float t, bool above)
{
    if (MatrixData == nullptr || SizeX < 1 || SizeY < 1) return x1;
    return ScanRow(*this, x0, x1, ClampIndex(y, 0, SizeY - 1), Threshold(t, above, false), +1);
}

int CSSEMatrix::FindPointFromRight(int x0, int x1, int y, float t, bool above)
{
    if (MatrixData == nullptr || SizeX < 1 || SizeY < 1) return x1;
    return ScanRow(*this, x0, x1, ClampIndex(y, 0, SizeY - 1), Threshold(t, above, false), -1);
}

void CSSEMatrix::DrawFirstPointLined(int x, float t, bool above, float v, int& y, int yStop)
{
    PaintUpward(*this, x, Threshold(t, above, false), v, y, yStop, NoMask{});
}

void CSSEMatrix::DrawFirstPointLinedUseMask(int x, float t, bool above, float v, int& y, CSSEMatrix& mask, int yStop)
{
    if (!MaskFits(*this, mask)) return;
    PaintUpward(*this, x, Threshold(t, above, false), v, y, yStop, FloatMask(mask));
}

void CSSEMatrix::DrawFirstPointLinedUseMask(int x, float t, bool above, float v, int& y, CSSEcharMatrix& mask, int yStop)
{
    if (!MaskFits(*this, mask)) return;
    PaintUpward(*this, x, Threshold(t, above, false), v, y, yStop, ByteMask(mask));
}
