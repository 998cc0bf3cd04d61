#include <algorithm>
#include <cstddef>
#include <utility>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

// One compare-and-exchange of a bubble pass; true if it exchanged. Written
// as a minimum and a maximum rather than a branch, since the exchanges of a
// neighbourhood are unpredictable: min(b, a) is a > b ? b : a.
inline bool CompareExchange(float& a, float& b)
{
    const bool exchange = a > b;
    const float low = std::min(b, a);
    b = std::max(b, a);
    a = low;
    return exchange;
}

// One bubble pass over v, unrolled so that v can live in registers. Returns
// whether its last comparison exchanged.
template <std::size_t N>
bool BubblePass(float (&v)[N])
{
    bool lastExchanged = false;
    [&]<std::size_t... I>(std::index_sequence<I...>) { ((lastExchanged = CompareExchange(v[I], v[I + 1])), ...); }(std::make_index_sequence<N - 1>{});
    return lastExchanged;
}

// Passes are repeated while the last comparison of a pass exchanged. Since
// a pass carries the largest value to the end, that is one or two passes,
// and the middle position is then not always the median.
template <std::size_t N>
void PartialBubbleSort(float (&v)[N])
{
    while (BubblePass(v)) {
    }
}

// Copies the rows and columns of the rim, `width` deep on each side of the
// range, from src to dst: rows first, then columns.
void CopyRim(const CSSEMatrix& src, CSSEMatrix& dst, int width, int x0, int x1, int y0, int y1)
{
    for (int k = 0; k < width; ++k) {
        for (const int y : {y0 + k, y1 - 1 - k}) {
            for (int x = x0; x < x1; ++x) dst.SetPoint(x, y, src.GetPoint(x, y));
        }
    }
    for (int k = 0; k < width; ++k) {
        for (const int x : {x0 + k, x1 - 1 - k}) {
            for (int y = y0; y < y1; ++y) dst.SetPoint(x, y, src.GetPoint(x, y));
        }
    }
}

// The 3 x 3 and 5 x 5 filters, one body over the radius of the neighbourhood.
template <int Radius>
void PartialMedian(const CSSEMatrix& src, CSSEMatrix& dst, int x0, int x1, int y0, int y1)
{
    // Filtering a field into itself reads it as it was.
    if (&src == &dst) {
        CSSEMatrix before;
        before.CopyFromSSEMatrix(src);
        PartialMedian<Radius>(before, dst, x0, x1, y0, y1);
        return;
    }
    constexpr int kSide = 2 * Radius + 1;
    constexpr std::size_t kCount = static_cast<std::size_t>(kSide) * kSide;
    dst.SetAllPixelValuesToZero();
    // Clamped pixel access needs at least one pixel on each side.
    const auto hasPixels = [](const CSSEMatrix& m) { return m.GetMatrixDataDirectly() != nullptr && m.GetSizeX() > 0 && m.GetSizeY() > 0; };
    if (!hasPixels(src) || !hasPixels(dst)) return;
    CopyRim(src, dst, Radius, x0, x1, y0, y1);
    // Neighbours outside the fields are read at their border, as the
    // clamped pixel access of the fields would.
    const auto clampX = [&](int x) { return vek::detail::ClampIndex(x, 0, src.GetSizeX() - 1); };
    const auto clampY = [&](int y) { return vek::detail::ClampIndex(y, 0, src.GetSizeY() - 1); };
    for (int y = y0 + Radius; y < y1 - Radius; ++y) {
        const vek::detail::RowOf target(dst, vek::detail::ClampIndex(y, 0, dst.GetSizeY() - 1));
        vek::detail::RowOf rows[kSide];
        for (int k = 0; k < kSide; ++k) rows[k] = vek::detail::RowOf(src, clampY(y - Radius + k));
        for (int x = x0 + Radius; x < x1 - Radius; ++x) {
            int columns[kSide];
            for (int k = 0; k < kSide; ++k) columns[k] = clampX(x - Radius + k);
            // In row order, from (x - r, y - r) to (x + r, y + r).
            float v[kCount];
            [&]<std::size_t... I>(std::index_sequence<I...>) { ((v[I] = rows[I / kSide][columns[I % kSide]]), ...); }(std::make_index_sequence<kCount>{});
            PartialBubbleSort(v);
            target[vek::detail::ClampIndex(x, 0, dst.GetSizeX() - 1)] = v[kCount / 2];
        }
    }
}

} // namespace

void CFilters::Median3x3(const CSSEMatrix& src, CSSEMatrix& dst, int x0, int x1, int y0, int y1)
{
    PartialMedian<1>(src, dst, x0, x1, y0, y1);
}

void CFilters::Median5x5(const CSSEMatrix& src, CSSEMatrix& dst, int x0, int x1, int y0, int y1)
{
    PartialMedian<2>(src, dst, x0, x1, y0, y1);
}
