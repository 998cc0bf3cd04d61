#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"

// Erasures that look at neighbours or at a second field pixel by pixel. They
// run over the inner pixels only, so that every four-neighbour exists.

namespace {

// Narrower than this, a field has no inner pixels to work on.
constexpr int kMinimumWidth = 3;

// True if a four-neighbour of (x, y) in `f` is exactly 0, tested in the order
// right, left, below, above. `f` is read with clamped coordinates, so a mask
// of another size than the field it guards is still read safely.
bool HasEmptyFourNeighbour(const CSSEMatrix& f, int x, int y)
{
    return f.GetPoint(x + 1, y) == 0.0f || f.GetPoint(x - 1, y) == 0.0f || f.GetPoint(x, y + 1) == 0.0f || f.GetPoint(x, y - 1) == 0.0f;
}

// Inner pixels other than `value` become `value` where Compare(other, p).
template <class Compare>
void EraseWithMatrix(CSSEMatrix& m, const CSSEMatrix* other, float value)
{
    if (other == nullptr || m.GetMatrixDataDirectly() == nullptr || other->GetMatrixDataDirectly() == nullptr) return;
    if (m.GetSizeX() < kMinimumWidth) return;
    for (int x = 1; x < m.GetSizeX() - 1; ++x) {
        for (int y = 1; y < m.GetSizeY() - 1; ++y) {
            float* p = m.GetPointAddress(x, y);
            if (*p != value && Compare::Scalar(other->GetPoint(x, y), *p)) *p = value;
        }
    }
}

} // namespace

void CSSEMatrix::EraseWithMatrixMax(const CSSEMatrix* other, float value)
{
    EraseWithMatrix<vek::detail::Greater>(*this, other, value);
}

void CSSEMatrix::EraseWithMatrixMin(const CSSEMatrix* other, float value)
{
    EraseWithMatrix<vek::detail::Less>(*this, other, value);
}

void CSSEMatrix::EraseFrame(CSSEMatrix* removed)
{
    if (MatrixData == nullptr) return;
    // The tests read the field as it was before this pass.
    CSSEMatrix before;
    before.CopyFromSSEMatrix(*this);
    const bool keepRemoved = removed != nullptr && removed->MatrixData != nullptr && removed->SizeX == SizeX && removed->SizeY == SizeY;
    for (int x = 1; x < SizeX - 1; ++x) {
        for (int y = 1; y < SizeY - 1; ++y) {
            const float value = *before.PixelAddress(x, y);
            if (value == 0.0f || !HasEmptyFourNeighbour(before, x, y)) continue;
            *PixelAddress(x, y) = 0.0f;
            if (keepRemoved) *removed->PixelAddress(x, y) = value;
        }
    }
}

void CSSEMatrix::EraseFrameWithMask(const CSSEMatrix* mask)
{
    // The mask isn't changed, so it is read directly and no copy is needed.
    if (mask == nullptr || mask->MatrixData == nullptr || MatrixData == nullptr || SizeX < kMinimumWidth) return;
    for (int x = 1; x < SizeX - 1; ++x) {
        for (int y = 1; y < SizeY - 1; ++y) {
            if (HasEmptyFourNeighbour(*mask, x, y)) *PixelAddress(x, y) = 0.0f;
        }
    }
}
