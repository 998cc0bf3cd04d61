#pragma once

#include <cstdint>
#include <vector>

#include "vekdll/foundation/sse_point.h"

namespace vek::detail {

// A grid over the vertices of a store, so that the look-ups by position
// need not read every vertex. Each answer is the one the plain scan in
// index order gives: the lowest index that passes the same float test.
//
// The index follows the store lazily: Follow is called before each look-up
// with the store's vertices, their count, the lowest index the store has
// written by appending since the last Follow (a vertex can be dropped and
// its place filled again), and a write count that the store raises whenever
// it changes vertices in place. Vertices appended since the last look-up are
// added, a shorter count drops the tail, and a new write count, or vertices
// far outside the grid, rebuild it.
//
// Vertices sit in cells by x and y only, and every test reads the store as
// it stands, so heights may change without the index. Vertices with an x or
// y that is not finite sit in a list of their own
// that every look-up reads, since infinities compare equal to each other.
// A look-up that the grid cannot narrow down (a point or tolerance that is
// not finite, a tolerance of many cells) answers kUndecided, and the caller
// scans.
class VertexIndex {
public:
    static constexpr int kUndecided = -2;

    void Drop();
    void Follow(const SSEPoint* vertices, int count, int validBelow, std::uint64_t writes);

    // The first vertex with exactly this x and y, or -1.
    int FirstAtXY(const SSEPoint* vertices, float x, float y) const;
    // The first vertex in first <= i < end with exactly this x, y and z, or -1.
    int FirstAtXYZ(const SSEPoint* vertices, const SSEPoint& point, int first, int end) const;
    // The first vertex with limit >= dx² + dy² (dx = vertex x - x, in
    // float), or -1; kUndecided where the grid cannot narrow it down.
    int FirstWithin(const SSEPoint* vertices, float x, float y, float limit) const;

private:
    void Rebuild(const SSEPoint* vertices, int count);
    void Add(const SSEPoint* vertices, int index);
    void RemoveLast();
    bool InGrid(double x, double y) const;
    std::size_t CellOf(double x, double y) const;
    int Clamped(double cells, int count) const;
    template <class Test>
    int FirstInCells(double loX, double loY, double hiX, double hiY, Test&& test) const;

    std::vector<std::vector<std::int32_t>> cells_;
    std::vector<std::int32_t> unbounded_; // vertices with a coordinate that is not finite
    // The cell of each indexed vertex (kUnbounded for the list above), kept
    // because a vertex dropped from the store can no longer be read.
    static constexpr std::int64_t kUnbounded = -1;
    std::vector<std::int64_t> cellOf_;
    double minX_ = 0.0;
    double minY_ = 0.0;
    double maxX_ = -1.0;
    double maxY_ = -1.0;
    double cellSize_ = 1.0;
    double inverse_ = 1.0;
    int columns_ = 0;
    int rows_ = 0;
    int count_ = 0;
    int builtFor_ = 0; // the count the grid was sized for
    std::uint64_t writes_ = 0;
    bool built_ = false;
};

} // namespace vek::detail
