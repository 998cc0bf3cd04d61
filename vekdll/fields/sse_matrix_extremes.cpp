#include <algorithm>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_fns.h"

// Extreme values and the bounding box of a field. The value searches keep
// away from the rim: scan conversion leaves artefacts in the outermost line
// and columns, and the searches were made not to see them.

namespace {

constexpr float kMinimumSentinel = 1000000.0f;
constexpr float kMaximumSentinel = -1000000.0f;
// Bands around 0 that count as no data in the ...ExcludeZero searches.
constexpr float kWholeFieldZeroBand = 0.002f;
constexpr float kPatchZeroBand = 0.005f;
// Every patch and whole-field search leaves out this many columns at each side.
constexpr int kColumnsLeftOut = 3;

// A rectangle of lines and vectors, begin included, end excluded.
struct VectorRange {
    int lineBegin;
    int lineEnd;
    int xBegin;
    int xEnd;
};

struct LaneExtremes {
    __m128 max;
    __m128 min;
};

// Which lanes a search leaves out: none, ...
struct AllLanes {
    static __m128 Excluded(__m128) { return _mm_setzero_ps(); }
};

// ... or those with -band < p < band, which count as the sentinel.
struct ZeroBand {
    __m128 lower;
    __m128 upper;
    explicit ZeroBand(float band) : lower(_mm_set1_ps(-band)), upper(_mm_set1_ps(band)) {}
    __m128 Excluded(__m128 p) const { return vek::detail::StrictlyBetween(p, lower, upper); }
};

// Lane-wise maxima and minima over `range`. A not-a-number lane takes no
// part either, since the pixel is the first operand of max and min.
template <class Exclusion>
LaneExtremes ScanExtremes(const CSSEMatrix& m, VectorRange range, const Exclusion& exclusion)
{
    const __m128 maxSentinel = _mm_set1_ps(kMaximumSentinel);
    const __m128 minSentinel = _mm_set1_ps(kMinimumSentinel);
    LaneExtremes found{maxSentinel, minSentinel};
    __m128** lines = m.GetMatrixDataDirectly();
    if (lines == nullptr) return found;
    for (int line = range.lineBegin; line < range.lineEnd; ++line) {
        const __m128* vectors = lines[line];
        for (int x = range.xBegin; x < range.xEnd; ++x) {
            const __m128 p = vectors[x];
            const __m128 excluded = exclusion.Excluded(p);
            found.max = _mm_max_ps(_mm_blendv_ps(p, maxSentinel, excluded), found.max);
            found.min = _mm_min_ps(_mm_blendv_ps(p, minSentinel, excluded), found.min);
        }
    }
    return found;
}

float MaxOf(const LaneExtremes& e)
{
    float v;
    CSSEFns::max_of_m128(e.max, &v);
    return v;
}

float MinOf(const LaneExtremes& e)
{
    float v;
    CSSEFns::min_of_m128(e.min, &v);
    return v;
}

// Every line but the first and the last, every vector but three at each side.
VectorRange InnerRange(const CSSEMatrix& m)
{
    return {1, m.GetSSESizeY() - 1, kColumnsLeftOut, m.GetSSESizeX() - kColumnsLeftOut};
}

// The patch between the clamped corners, shrunk by one line at the top and
// bottom and three columns at each side.
VectorRange PatchRange(const CSSEMatrix& m, int x0, int x1, int y0, int y1)
{
    using vek::detail::ClampIndex;
    x0 = ClampIndex(x0, 0, m.GetSizeX() - 1);
    x1 = ClampIndex(x1, 0, m.GetSizeX() - 1);
    y0 = ClampIndex(y0, 0, m.GetSizeY() - 1);
    y1 = ClampIndex(y1, 0, m.GetSizeY() - 1);
    return {(y0 >> 2) + 1, (y1 >> 2) - 1, x0 + kColumnsLeftOut, x1 - kColumnsLeftOut};
}

void WriteIfGiven(float* out, float v)
{
    if (out != nullptr) *out = v;
}

// The lanes of `line` that hold image rows, as a movemask pattern.
int ImageLanesOfLine(const CSSEMatrix& m, int line)
{
    const int rows = std::clamp(m.GetSizeY() - 4 * line, 0, 4);
    return (1 << rows) - 1;
}

// Whether column x holds an image pixel passing the test.
bool ColumnHasHit(const CSSEMatrix& m, int x, __m128 value, bool above)
{
    __m128** lines = m.GetMatrixDataDirectly();
    for (int line = 0; line < m.GetSSESizeY(); ++line) {
        const __m128 p = lines[line][x];
        const __m128 pass = above ? _mm_cmpgt_ps(p, value) : _mm_cmplt_ps(p, value);
        if ((_mm_movemask_ps(pass) & ImageLanesOfLine(m, line)) != 0) return true;
    }
    return false;
}

bool RowHasHit(const CSSEMatrix& m, int y, float value, bool above)
{
    for (int x = 0; x < m.GetSizeX(); ++x) {
        const float p = *m.GetPointAddress(x, y);
        if (above ? p > value : value > p) return true;
    }
    return false;
}

// The first index from `start` towards `last` (excluded) in steps of `step`
// that `hit` accepts; `last` if none does, or if `start` is already past it.
template <class Hit>
int FirstHit(int start, int last, int step, Hit hit)
{
    for (int i = start; step > 0 ? i < last : i > last; i += step) {
        if (hit(i)) return i;
    }
    return last;
}

} // namespace

void CSSEMatrix::CalcMinMaxValues(float* max, float* min) const
{
    const LaneExtremes found = ScanExtremes(*this, InnerRange(*this), AllLanes{});
    WriteIfGiven(max, MaxOf(found));
    WriteIfGiven(min, MinOf(found));
}

void CSSEMatrix::CalcMinMaxValuesExcludeZero(float* max, float* min) const
{
    const LaneExtremes found = ScanExtremes(*this, InnerRange(*this), ZeroBand(kWholeFieldZeroBand));
    WriteIfGiven(max, MaxOf(found));
    WriteIfGiven(min, MinOf(found));
}

void CSSEMatrix::CalcMaxValueOfPatch(float* out, int x0, int x1, int y0, int y1) const
{
    WriteIfGiven(out, MaxOf(ScanExtremes(*this, PatchRange(*this, x0, x1, y0, y1), AllLanes{})));
}

void CSSEMatrix::CalcMinValueOfPatch(float* out, int x0, int x1, int y0, int y1) const
{
    WriteIfGiven(out, MinOf(ScanExtremes(*this, PatchRange(*this, x0, x1, y0, y1), AllLanes{})));
}

void CSSEMatrix::CalcMinValueOfPatchExcludeZero(float* out, int x0, int x1, int y0, int y1) const
{
    WriteIfGiven(out, MinOf(ScanExtremes(*this, PatchRange(*this, x0, x1, y0, y1), ZeroBand(kPatchZeroBand))));
}

void CSSEMatrix::CalcBoundingBox(int& minX, int& minY, int& maxX, int& maxY, float value, bool above) const
{
    // Four independent scans, each stopping at its first hit. The scans for
    // minX and minY start at 1: column 0 and row 0 are never tested. A field
    // without image has no hits.
    const bool hasImage = MatrixData != nullptr;
    const __m128 v = _mm_set1_ps(value);
    const auto column = [&](int x) { return hasImage && ColumnHasHit(*this, x, v, above); };
    const auto row = [&](int y) { return hasImage && RowHasHit(*this, y, value, above); };
    maxX = FirstHit(SizeX - 1, 0, -1, column);
    minX = SizeX <= 1 ? 0 : FirstHit(1, SizeX - 1, 1, column);
    minY = SizeY <= 1 ? 0 : FirstHit(1, SizeY - 1, 1, row);
    maxY = FirstHit(SizeY - 1, 0, -1, row);
}
