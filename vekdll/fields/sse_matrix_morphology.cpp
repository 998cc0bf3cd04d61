#include <algorithm>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/filters.h"
#include "vekdll/fields/sse_matrix.h"

// Four-neighbourhood morphology and the median of a whole field. Each
// computes into a cleared temporary field and copies it back, so that the
// outermost frame, which isn't computed, becomes 0.

namespace {

struct Larger {
    static float Of(float a, float b) { return std::max(a, b); }
};
struct Smaller {
    static float Of(float a, float b) { return std::min(a, b); }
};

// The larger (smaller) of each inner pixel and the largest (smallest) of its
// neighbours above, below, left and right; the diagonals don't count.
template <class Pick>
void FourNeighbourhoodFilter(CSSEMatrix& m)
{
    if (m.GetMatrixDataDirectly() == nullptr) return;
    CSSEMatrix result;
    result.CreateSimilar(m);
    for (int y = 1; y < m.GetSizeY() - 1; ++y) {
        const vek::detail::RowOf above(m, y - 1);
        const vek::detail::RowOf row(m, y);
        const vek::detail::RowOf below(m, y + 1);
        const vek::detail::RowOf target(result, y);
        for (int x = 1; x < m.GetSizeX() - 1; ++x) {
            const float neighbours = Pick::Of(Pick::Of(Pick::Of(above[x], below[x]), row[x - 1]), row[x + 1]);
            target[x] = Pick::Of(row[x], neighbours);
        }
    }
    m.CopyFromSSEMatrix(result);
}

} // namespace

void CSSEMatrix::SimpleMaximumFilter()
{
    FourNeighbourhoodFilter<Larger>(*this);
}

void CSSEMatrix::SimpleMinimumFilter()
{
    FourNeighbourhoodFilter<Smaller>(*this);
}

void CSSEMatrix::SimpleMedianFilter()
{
    if (MatrixData == nullptr) return;
    CSSEMatrix result;
    result.CreateSimilar(*this);
    CFilters::Median3x3(*this, result, 0, SizeX, 0, SizeY);
    CopyFromSSEMatrix(result);
}
