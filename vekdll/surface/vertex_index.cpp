// The grid behind the vertex look-ups of the store.

#include "vekdll/surface/vertex_index.h"

#include <algorithm>
#include <cmath>

namespace vek::detail {

namespace {

bool IsFinitePoint(const SSEPoint& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// More cells than this for one tolerance query, and a scan is as cheap.
constexpr double kMostCellsPerQuery = 64.0;

} // namespace

void VertexIndex::Drop()
{
    cells_.clear();
    unbounded_.clear();
    cellOf_.clear();
    count_ = 0;
    built_ = false;
}

void VertexIndex::Follow(const SSEPoint* vertices, int count, int validBelow, std::uint64_t writes)
{
    count = std::max(count, 0);
    if (!built_ || writes != writes_ || count > 4 * std::max(builtFor_, 64)) {
        writes_ = writes;
        Rebuild(vertices, count);
        return;
    }
    const int kept = std::min({count_, count, std::max(validBelow, 0)});
    while (count_ > kept) RemoveLast();
    while (count_ < count) {
        const SSEPoint& v = vertices[count_];
        if (IsFinitePoint(v) && !InGrid(v.x, v.y)) {
            Rebuild(vertices, count);
            return;
        }
        Add(vertices, count_);
    }
}

// The grid is laid over the finite vertices with a margin of half its size
// on every side, so that a surface that grows a little stays inside.
void VertexIndex::Rebuild(const SSEPoint* vertices, int count)
{
    Drop();
    double lowX = HUGE_VAL, lowY = HUGE_VAL, highX = -HUGE_VAL, highY = -HUGE_VAL;
    for (int i = 0; i < count; ++i) {
        if (!IsFinitePoint(vertices[i])) continue;
        lowX = std::min(lowX, static_cast<double>(vertices[i].x));
        lowY = std::min(lowY, static_cast<double>(vertices[i].y));
        highX = std::max(highX, static_cast<double>(vertices[i].x));
        highY = std::max(highY, static_cast<double>(vertices[i].y));
    }
    if (lowX > highX) lowX = highX = lowY = highY = 0.0;
    const double width = highX - lowX;
    const double height = highY - lowY;
    minX_ = lowX - 0.5 * width;
    maxX_ = highX + 0.5 * width;
    minY_ = lowY - 0.5 * height;
    maxY_ = highY + 0.5 * height;
    builtFor_ = std::max(count, 1);
    // About one vertex to a cell, but never more cells than vertices in a
    // row, and never below the resolution of the coordinates.
    const double n = static_cast<double>(builtFor_);
    const double magnitude = std::max({std::fabs(minX_), std::fabs(maxX_), std::fabs(minY_), std::fabs(maxY_)});
    double cell = std::sqrt(4.0 * width * height / n);
    cell = std::max({cell, 2.0 * std::max(width, height) / n, magnitude * 1.0e-9, 1.0e-30});
    cellSize_ = cell;
    inverse_ = 1.0 / cell;
    columns_ = static_cast<int>(std::min((maxX_ - minX_) / cell, 1.0e8)) + 1;
    rows_ = static_cast<int>(std::min((maxY_ - minY_) / cell, 1.0e8)) + 1;
    cells_.assign(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_), {});
    built_ = true;
    for (int i = 0; i < count; ++i) Add(vertices, i);
}

bool VertexIndex::InGrid(double x, double y) const
{
    return x >= minX_ && x <= maxX_ && y >= minY_ && y <= maxY_;
}

int VertexIndex::Clamped(double cells, int count) const
{
    if (!(cells >= 0.0)) return 0;
    if (cells >= static_cast<double>(count - 1)) return count - 1;
    return static_cast<int>(cells);
}

std::size_t VertexIndex::CellOf(double x, double y) const
{
    const int column = Clamped((x - minX_) * inverse_, columns_);
    const int row = Clamped((y - minY_) * inverse_, rows_);
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column);
}

void VertexIndex::Add(const SSEPoint* vertices, int index)
{
    const SSEPoint& v = vertices[index];
    if (IsFinitePoint(v)) {
        const std::size_t cell = CellOf(v.x, v.y);
        cells_[cell].push_back(index);
        cellOf_.push_back(static_cast<std::int64_t>(cell));
    } else {
        unbounded_.push_back(index);
        cellOf_.push_back(kUnbounded);
    }
    count_ = index + 1;
}

// The last vertex is the last entry of its cell, since cells fill in index order.
void VertexIndex::RemoveLast()
{
    const std::int64_t cell = cellOf_.back();
    std::vector<std::int32_t>& holder = cell == kUnbounded ? unbounded_ : cells_[static_cast<std::size_t>(cell)];
    holder.pop_back();
    cellOf_.pop_back();
    --count_;
}

// The lowest index that passes `test` in the cells that the box lo ... hi
// meets, and among the vertices outside the grid; kUndecided for a box of
// too many cells.
template <class Test>
int VertexIndex::FirstInCells(double loX, double loY, double hiX, double hiY, Test&& test) const
{
    int best = -1;
    const auto consider = [&](std::int32_t index) {
        if ((best < 0 || index < best) && test(index)) best = index;
    };
    for (const std::int32_t index : unbounded_) consider(index);
    if (!(hiX >= minX_ && loX <= maxX_ && hiY >= minY_ && loY <= maxY_)) return best;
    const double spanX = (std::min(hiX, maxX_) - std::max(loX, minX_)) * inverse_;
    const double spanY = (std::min(hiY, maxY_) - std::max(loY, minY_)) * inverse_;
    if ((spanX + 2.0) * (spanY + 2.0) > kMostCellsPerQuery) return kUndecided;
    const int c0 = Clamped((loX - minX_) * inverse_, columns_);
    const int c1 = Clamped((hiX - minX_) * inverse_, columns_);
    const int r0 = Clamped((loY - minY_) * inverse_, rows_);
    const int r1 = Clamped((hiY - minY_) * inverse_, rows_);
    for (int row = r0; row <= r1; ++row) {
        for (int column = c0; column <= c1; ++column) {
            const std::vector<std::int32_t>& cell =
                cells_[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) +
                       static_cast<std::size_t>(column)];
            for (const std::int32_t index : cell) {
                if (best >= 0 && index >= best) break; // cells hold indices in rising order
                if (test(index)) best = index;
            }
        }
    }
    return best;
}

int VertexIndex::FirstAtXY(const SSEPoint* vertices, float x, float y) const
{
    const auto matches = [&](std::int32_t i) { return vertices[i].x == x && vertices[i].y == y; };
    return FirstInCells(x, y, x, y, matches);
}

int VertexIndex::FirstAtXYZ(const SSEPoint* vertices, const SSEPoint& point, int first, int end) const
{
    const auto matches = [&](std::int32_t i) {
        const SSEPoint& v = vertices[i];
        return i >= first && i < end && v.x == point.x && v.y == point.y && v.z == point.z;
    };
    return FirstInCells(point.x, point.y, point.x, point.y, matches);
}

// A vertex that passes the float test lies within sqrt(limit) of (x, y) up
// to the rounding of the test, which the widened reach covers.
int VertexIndex::FirstWithin(const SSEPoint* vertices, float x, float y, float limit) const
{
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(limit)) return kUndecided;
    const double reach = std::sqrt(std::max(static_cast<double>(limit), 0.0)) * (1.0 + 1.0e-6) + 1.0e-18;
    const auto within = [&](std::int32_t i) {
        const float dx = vertices[i].x - x;
        const float dy = vertices[i].y - y;
        return limit >= dx * dx + dy * dy;
    };
    return FirstInCells(x - reach, y - reach, x + reach, y + reach, within);
}

} // namespace vek::detail
