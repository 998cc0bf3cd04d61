#include "vekdll/fields/img_from_to_array.h"

#include <algorithm>
#include <cstdint>

#include "vekdll/fields/pixel_store.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/member_copy_move.h"
#include "vekdll/foundation/safe_alloc.h"

namespace {

// Neighbouring columns count as unchanged while their difference stays
// strictly inside this band in all four rows of the line.
constexpr float kChangeBand = 0.005f;

bool ChangesBetween(__m128 previous, __m128 current)
{
    const __m128 d = _mm_sub_ps(previous, current);
    const __m128 unchanged = _mm_and_ps(_mm_cmpgt_ps(d, _mm_set1_ps(-kChangeBand)), _mm_cmplt_ps(d, _mm_set1_ps(kChangeBand)));
    return _mm_movemask_ps(unchanged) != 0xF;
}

// The lines whose spans a query at row y with half-height h combines:
// first up to, not including, end, both clamped to the existing pairs. The
// sums are formed in 64 bits so that no coordinate can overflow them.
struct LineRange {
    int first;
    int end;
};

LineRange LinesAround(int y, int h, int numEntries)
{
    const auto clampLine = [numEntries](std::int64_t line) {
        return static_cast<int>(std::max<std::int64_t>(0, std::min<std::int64_t>(numEntries - 1, line)));
    };
    return {clampLine((static_cast<std::int64_t>(y) - h) >> 2), clampLine((static_cast<std::int64_t>(y) + h) >> 2)};
}

} // namespace

CImgFromToArray::~CImgFromToArray()
{
    FreeArray();
}

CImgFromToArray& CImgFromToArray::operator=(CImgFromToArray&& other) noexcept
{
    return vek::detail::MoveByMemberCopy(*this, other);
}

void CImgFromToArray::AllocArray(int sizeY)
{
    FreeArray();
    const int entries = (sizeY + 3) >> 2;
    if (entries <= 0) return;
    Array = static_cast<vek::FromTo*>(SafeMalloc(sizeof(vek::FromTo) * static_cast<std::uint64_t>(entries)));
    NumEntries = entries;
    std::fill_n(Array, entries, vek::FromTo{0, vek::kUnrestrictedTo});
}

void CImgFromToArray::FreeArray()
{
    SafeFree(Array);
    Array = nullptr;
    NumEntries = 0;
}

void CImgFromToArray::CalcArray(const CSSEMatrix& m, int left, int right)
{
    if (m.GetSizeX() < 1 || m.GetSizeY() < 1 || m.GetMatrixDataDirectly() == nullptr) return;
    AllocArray(m.GetSizeY());
    left = vek::detail::ClampIndex(left, 0, m.GetSizeX() - 1);
    right = vek::detail::ClampIndex(right, 0, m.GetSizeX() - 1);

    for (int line = 0; line < NumEntries; ++line) {
        const __m128* v = m.GetMatrixDataDirectly()[line];
        vek::FromTo& span = Array[line];
        for (int x = left + 1; x < right; ++x) {
            if (ChangesBetween(v[x - 1], v[x])) {
                span.from = x;
                break;
            }
        }
        for (int x = right; x > std::max(span.from, left); --x) {
            if (ChangesBetween(v[x - 1], v[x])) {
                span.to = x;
                break;
            }
        }
    }
}

void CImgFromToArray::GetFromToCoords(int& from, int& to, int y, int h) const
{
    if (h == 1 && Array != nullptr) {
        const vek::FromTo& span = Array[vek::detail::ClampIndex(y, 0, NumEntries - 1)];
        from = span.from;
        to = span.to;
        return;
    }
    // Without an array there are no lines to combine, and the range becomes
    // empty as for any empty set of lines.
    const LineRange lines = LinesAround(y, h, NumEntries);
    int lowestFrom = vek::kUnrestrictedTo;
    int highestTo = 0;
    for (int line = lines.first; line < lines.end; ++line) {
        lowestFrom = std::min(lowestFrom, Array[line].from);
        highestTo = std::max(highestTo, Array[line].to);
    }
    from = std::max(from, lowestFrom);
    to = std::min(to, highestTo);
}

bool CImgFromToArray::IsPositionInArray(int x, int y, int h) const
{
    if (Array == nullptr) return false;
    if (h == 1) {
        // A row outside the field has no span, and so no position in it.
        const int line = y >> 2;
        if (line < 0 || line >= NumEntries) return false;
        return Array[line].from <= x && x <= Array[line].to;
    }
    const LineRange lines = LinesAround(y, h, NumEntries);
    for (int line = lines.first; line < lines.end; ++line) {
        if (x < Array[line].from || x > Array[line].to) return false;
    }
    return true;
}
