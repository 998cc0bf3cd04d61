// The angular sort of the planar hull around its lowest point.
//
// The comparison marks the nearer of two points on one ray for deletion, so
// which pairs the sort happens to compare decides which points survive: the
// sort below is part of the hull's behaviour and is kept as it is.

#include "vekdll/planar/convex_hull_2d.h"

#include <cmath>
#include <cstddef>
#include <cstring>

namespace {

// Every sort of every planar hull swaps through this one buffer, so records
// of at most its size can be sorted, and no two hulls may sort at once.
unsigned char g_swapBuffer[64];

void SwapThroughBuffer(unsigned char* a, unsigned char* b, unsigned size)
{
    std::memcpy(g_swapBuffer, a, size);
    std::memcpy(a, b, size);
    std::memcpy(b, g_swapBuffer, size);
}

} // namespace

void CHConvexHull2D::FindLowest()
{
    // Smallest y, and among equal y the smallest x; of exact ties the first stays.
    int lowest = 0;
    for (int i = 1; i < NumPoints; ++i) {
        const float* p = Points[i].Coordinate;
        const float* m = Points[lowest].Coordinate;
        if (p[1] < m[1] || (p[1] == m[1] && p[0] < m[0])) lowest = i;
    }
    Swap(0, lowest);
}

void CHConvexHull2D::Swap(int i, int j)
{
    if (i == j) return;
    SwapThroughBuffer(reinterpret_cast<unsigned char*>(&Points[i]), reinterpret_cast<unsigned char*>(&Points[j]),
                      sizeof(tPointStruc));
}

void CHConvexHull2D::Copy(int from, int to)
{
    Points[to] = Points[from];
}

void CHConvexHull2D::Squash()
{
    int kept = 0;
    for (int i = 0; i < NumPoints; ++i) {
        if (Points[i].Delete) continue;
        Copy(i, kept);
        ++kept;
    }
    NumPoints = kept;
}

int CHConvexHull2D::Compare(const void* first, const void* second)
{
    // The records belong to this object's array; the comparison marks them.
    auto* a = static_cast<tPointStruc*>(const_cast<void*>(first));
    auto* b = static_cast<tPointStruc*>(const_cast<void*>(second));
    const t_h2dpoint origin = PlanarOf(&Points[0]);
    const t_h2dpoint pa = PlanarOf(a);
    const t_h2dpoint pb = PlanarOf(b);

    const float turn = AreaSign(&origin, &pa, &pb);
    if (turn > 0.0f) return -1;
    if (turn < 0.0f) return 1;

    // On one ray from the lowest point only the farthest can be a hull corner.
    ++NumDeleted;
    const float dx = std::fabs(pa.x - origin.x) - std::fabs(pb.x - origin.x);
    const float dy = std::fabs(pa.y - origin.y) - std::fabs(pb.y - origin.y);
    if (dx < 0.0f || dy < 0.0f) {
        a->Delete = true;
        return -1;
    }
    if (dx > 0.0f || dy > 0.0f) {
        b->Delete = true;
        return 1;
    }
    // The same place twice: the one with the lower index goes.
    if (a->Index <= b->Index) {
        a->Delete = true;
    } else {
        b->Delete = true;
    }
    return 0;
}

void CHConvexHull2D::QuickSort(void* base, unsigned n, unsigned size)
{
    if (base == nullptr || size > sizeof(g_swapBuffer)) return;
    unsigned char* first = static_cast<unsigned char*>(base);
    // Positions are counted in records from `first`; they may step one
    // before the range, which a pointer may not.
    auto at = [&first, size](std::ptrdiff_t k) { return first + k * static_cast<std::ptrdiff_t>(size); };

    while (n > 1) {
        std::ptrdiff_t lo = 0;
        std::ptrdiff_t hi = static_cast<std::ptrdiff_t>(n) - 1;
        const std::ptrdiff_t end = hi;
        std::ptrdiff_t pivot = hi >> 1;
        do {
            // The range checks matter only when near-collinear points make the
            // comparison inconsistent; an ordered comparison stops before them.
            while (lo != pivot && lo < end && Compare(at(lo), at(pivot)) < 0) ++lo;
            while (hi != pivot && hi > 0 && Compare(at(hi), at(pivot)) > 0) --hi;
            if (lo >= hi) break;
            if (Compare(at(lo), at(hi)) != 0) {
                SwapThroughBuffer(at(lo), at(hi), size);
                if (pivot == lo) {
                    pivot = hi;
                } else if (pivot == hi) {
                    pivot = lo;
                }
            }
            ++lo;
            --hi;
        } while (hi > lo);

        if (lo == hi) {
            if (lo == pivot) {
                ++lo;
            } else if (Compare(at(lo), at(pivot)) > 0) {
                --hi;
            } else {
                ++lo;
            }
        }
        if (hi > 0) QuickSort(first, static_cast<unsigned>(hi + 1), size);
        if (lo >= end) return;
        // The upper part goes on in this loop rather than by recursion.
        first = at(lo);
        n = static_cast<unsigned>(end - lo + 1);
    }
}
