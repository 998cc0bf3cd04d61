#include <algorithm>

#include "vekdll/fields/field_lanes.h"
#include "vekdll/fields/sse_matrix.h"

// The 3-4 chamfer distance: 3 for a step along a row or column, 4 for a
// diagonal step, so that distances are in units of a third of a pixel.

namespace {

// What a pixel starts as when it is far from every seed.
constexpr float kFarAway = 99999.9f;
constexpr float kStraightStep = 3.0f;
constexpr float kDiagonalStep = 4.0f;

// One pass over the inner pixels, forward for d = -1, backward for d = +1.
void ChamferPass(CSSEMatrix& m, int d)
{
    // Forward (d = -1) the mask is the whole left column of the 3 x 3
    // neighbourhood and the pixel above; backward (d = +1) the whole right
    // column and the pixel below. The pass runs in place, so a value it has
    // just computed is used at once: in its own row, and in the row it has
    // finished before.
    const int sizeX = m.GetSizeX();
    const int sizeY = m.GetSizeY();
    const int yFirst = d < 0 ? 1 : sizeY - 2;
    const int xFirst = d < 0 ? 1 : sizeX - 2;
    const auto inside = [](int i, int size) { return i >= 1 && i <= size - 2; };
    for (int y = yFirst; inside(y, sizeY); y -= d) {
        const vek::detail::RowOf row(m, y);
        const vek::detail::RowOf finished(m, y + d);
        const vek::detail::RowOf pending(m, y - d);
        for (int x = xFirst; inside(x, sizeX); x -= d) {
            // The neighbour just computed in this row comes last, so that
            // the chain from pixel to pixel is one addition and one minimum.
            const float fromOtherRows = std::min(std::min(finished[x] + kStraightStep, finished[x + d] + kDiagonalStep), pending[x + d] + kDiagonalStep);
            row[x] = std::min(std::min(row[x], fromOtherRows), row[x + d] + kStraightStep);
        }
    }
}

} // namespace

void CSSEMatrix::Chamfer()
{
    if (MatrixData == nullptr) return;
    CSSEMatrix distance;
    distance.CopyFromSSEMatrix(*this);
    // Pixels at 1 are the seeds and pixels at 0 far away; any other value
    // stays as an upper bound of the distance.
    distance.ReplaceValueWithValue(0.0f, kFarAway);
    distance.ReplaceValueWithValue(1.0f, 0.0f);
    ChamferPass(distance, -1);
    ChamferPass(distance, +1);
    distance.RemoveFrameArtefacts(4, 4, 0.0f);
    CopyFromSSEMatrix(distance);
}
