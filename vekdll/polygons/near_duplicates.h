#pragma once

#include <vector>

namespace vek::detail {

// For each point j of a line, whether some earlier point i < j lies closer
// than 1 in |dx| + |dy|, the difference taken as x(i) - x(j), exactly as
// PointAlreadyThereInArrayXY tests it. The points are filed in cells of one
// unit, so that a point is compared with the earlier points of its own and
// the eight neighbouring cells only, not with the whole line before it.
std::vector<bool> EarlierNearDuplicatesXY(const float* xs, const float* ys, int count);

} // namespace vek::detail
