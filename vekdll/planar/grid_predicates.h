#pragma once

// The spatial hull's orientation tests on its 64-bit integer grid, exact for
// every pair of grid points. Within the grid's working range they are plain
// 64-bit arithmetic; where a difference or product would overflow, the
// same formula is evaluated again with 256-bit integers, so the tests never
// contradict each other and the construction stays consistent even for
// wild coordinates.

namespace vek::detail {

// Sign of the determinant of (a - p, b - p, c - p): 1, -1 or 0.
int GridVolumeSign(const long long a[3], const long long b[3], const long long c[3], const long long p[3]);

// (b - a) x (c - a) is the zero vector.
bool GridCollinear(const long long a[3], const long long b[3], const long long c[3]);

} // namespace vek::detail
