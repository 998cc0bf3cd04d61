#pragma once

#include <algorithm>
#include <vector>

#include "vekdll/fields/pixel_store.h"
#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"

// How the polygons write into the fields: plain pixels, splats and runs of a
// column, each held inside the field by its clamps.
namespace vek::detail {

template <class Field>
bool HoldsImage(const Field* m)
{
    return m != nullptr && m->GetMatrixDataDirectly() != nullptr && m->GetSizeX() > 0 && m->GetSizeY() > 0;
}

// The clamp of a splat's centre on one axis: to 1 ... size - 2, the lower
// bound first. On a field below 3 pixels the upper bound wins.
inline int SplatCentre(int v, int size)
{
    return std::min(size - 2, std::max(1, v));
}

// A 3 x 3 splat around the clamped centre. On a field of at least 3 x 3 the
// splat lies whole in the field; on a smaller one the pixels beyond the
// field are left out rather than written outside it.
inline void Splat(CSSEMatrix& m, int c, int r, float v)
{
    if (m.GetSizeX() >= 3 && m.GetSizeY() >= 3) {
        m.Set3x3BoxPoint(c, r, v);
        return;
    }
    const int cx = SplatCentre(c, m.GetSizeX());
    const int cy = SplatCentre(r, m.GetSizeY());
    for (int y = std::max(cy - 1, 0); y <= std::min(cy + 1, m.GetSizeY() - 1); ++y)
        for (int x = std::max(cx - 1, 0); x <= std::min(cx + 1, m.GetSizeX() - 1); ++x) m.SetPoint(x, y, v);
}

// Calls visit(v) for each value that the positions first, first + step, ...
// up to and including last reach once clamped to lo ... hi: the positions
// below lo all reach lo and those above hi all reach hi, so each of those
// runs is visited once however long it is. For idempotent writes this is the
// same as visiting every position.
template <class Visit>
void ForEachClampedPosition(long long first, long long last, long long step, int lo, int hi, Visit visit)
{
    if (first > last || step < 1) return;
    last = first + (last - first) / step * step;
    if (first < lo) {
        visit(lo);
        first += (lo - first + step - 1) / step * step;
    }
    for (long long v = first; v <= std::min<long long>(last, hi); v += step) visit(static_cast<int>(v));
    if (last > hi && hi >= lo) visit(hi);
}

// The rows first ... last once clamped to a field of sizeY rows: rows beyond
// the field reach its first or last row.
struct RowSpan {
    int lo;
    int hi;
};

inline RowSpan ClampedRows(long long first, long long last, int sizeY)
{
    const auto clampRow = [sizeY](long long y) { return static_cast<int>(std::clamp<long long>(y, 0, sizeY - 1)); };
    return {clampRow(first), clampRow(last)};
}

// Spans of rows of single columns that get one value, gathered and written a
// strip of columns at a time, line by line: the writes of neighbouring
// columns then land side by side in memory, where a column written on its
// own would touch a new line, far from the last, every four rows. Rows and
// columns beyond the field reach its rim through the clamps. Call Flush
// after the last span. The field must hold an image once a span is added.
class ColumnSpanFiller {
public:
    ColumnSpanFiller(CSSEMatrix* m, float v) : m_(m), lanes_(_mm_set1_ps(v)), v_(v) { spans_.reserve(kStrip); }

    // Rows first ... last of column x.
    void Add(int x, long long first, long long last)
    {
        if (first > last) return;
        const RowSpan rows = ClampedRows(first, last, m_->GetSizeY());
        spans_.push_back({ClampIndex(x, 0, m_->GetSizeX() - 1), rows});
        if (spans_.size() == kStrip) Flush();
    }

    void Flush()
    {
        if (spans_.empty()) return;
        int lo = spans_.front().rows.lo;
        int hi = spans_.front().rows.hi;
        for (const Span& s : spans_) {
            lo = std::min(lo, s.rows.lo);
            hi = std::max(hi, s.rows.hi);
        }
        for (int line = lo >> 2; line <= hi >> 2; ++line) {
            const int top = 4 * line;
            for (const Span& s : spans_) {
                const int a = std::max(s.rows.lo, top);
                const int b = std::min(s.rows.hi, top + 3);
                if (a == top && b == top + 3) {
                    _mm_store_ps(m_->GetPointAddress(s.x, top), lanes_);
                } else {
                    for (int y = a; y <= b; ++y) m_->SetPoint(s.x, y, v_);
                }
            }
        }
        spans_.clear();
    }

private:
    static constexpr std::size_t kStrip = 128;
    struct Span {
        int x;
        RowSpan rows;
    };
    CSSEMatrix* m_;
    __m128 lanes_;
    float v_;
    std::vector<Span> spans_;
};

// The same for a byte field, written at once and pixel by pixel: the byte
// masks are small beside the height fields.
class ByteColumnSpanFiller {
public:
    ByteColumnSpanFiller(CSSEcharMatrix* m, char v) : m_(m), v_(v) {}

    void Add(int x, long long first, long long last)
    {
        if (first > last) return;
        const RowSpan rows = ClampedRows(first, last, m_->GetSizeY());
        for (int y = rows.lo; y <= rows.hi; ++y) m_->SetPoint(x, y, v_);
    }
    void Flush() {}

private:
    CSSEcharMatrix* m_;
    char v_;
};

} // namespace vek::detail
