#pragma once

#include <cmath>
#include <smmintrin.h>

#include "vekdll/foundation/sse_fns.h"

// The nearest-point and distance scans that the spatial and the planar
// polygon share.
namespace vek::detail {

// Start value of every nearest-point search: a point at this distance or
// beyond is never found.
inline constexpr float kNoNearestPoint = 10000000.0f;

// Start value of the running minima of the block scans.
inline constexpr float kNoBlockDistance = 1000000.0f;

// The index among first <= i < end, stepping by `stride`, whose measure is
// strictly smallest and below kNoNearestPoint, and which `accept` lets pass;
// -1 if there is none. Being strict, the first of equal candidates wins.
template <class Measure, class Accept>
int ClosestIndex(int first, int end, int stride, Measure measure, Accept accept)
{
    float best = kNoNearestPoint;
    int found = -1;
    for (int i = first; i < end; i += stride) {
        const float d = measure(i);
        if (d < best && accept(i)) {
            best = d;
            found = i;
        }
    }
    return found;
}

template <class Measure>
int ClosestIndex(int first, int end, int stride, Measure measure)
{
    return ClosestIndex(first, end, stride, measure, [](int) { return true; });
}

// The coordinate-wise searches look at every second point and stop before
// the last one: the lines they serve are dense, and they locate the region
// where a line starts or ends, not an exact vertex.
template <class Measure, class Accept>
int ClosestOfEverySecondPoint(int numPoints, Measure measure, Accept accept)
{
    return ClosestIndex(0, numPoints - 1, 2, measure, accept);
}

template <class Measure>
int ClosestOfEverySecondPoint(int numPoints, Measure measure)
{
    return ClosestIndex(0, numPoints - 1, 2, measure);
}

inline int ClosestInOneCoordinate(const float* values, int numPoints, float target)
{
    return ClosestOfEverySecondPoint(numPoints, [=](int i) { return std::fabs(values[i] - target); });
}

// Smallest distance from a query point to the points of the whole blocks of
// four, reading one block and then jumping over `skip` blocks. The up to
// three points behind the last whole block are not seen: the scan runs on
// aligned vectors only, with no test per point. With WithZ false, zs is not
// read and the distance is planar.
template <bool WithZ>
float MinDistanceOverWholeBlocks(const float* xs, const float* ys, const float* zs, int numPoints,
                                 float x, float y, float z, int skip)
{
    const long long blocks = numPoints >> 2;
    // A negative skip reads every block rather than walking backwards.
    const long long stride = skip > 0 ? static_cast<long long>(skip) + 1 : 1;
    const __m128 qx = _mm_set1_ps(x);
    const __m128 qy = _mm_set1_ps(y);
    const __m128 qz = _mm_set1_ps(z);
    __m128 minima = _mm_set1_ps(kNoBlockDistance);
    for (long long k = 0; k < blocks; k += stride) {
        const __m128 dx = _mm_sub_ps(_mm_load_ps(xs + 4 * k), qx);
        const __m128 dy = _mm_sub_ps(_mm_load_ps(ys + 4 * k), qy);
        __m128 squares = _mm_add_ps(_mm_mul_ps(dx, dx), _mm_mul_ps(dy, dy));
        if constexpr (WithZ) {
            const __m128 dz = _mm_sub_ps(_mm_load_ps(zs + 4 * k), qz);
            squares = _mm_add_ps(squares, _mm_mul_ps(dz, dz));
        }
        // The new distances go first: min returns its second operand when
        // either is not-a-number, so such a point is passed over.
        minima = _mm_min_ps(_mm_sqrt_ps(squares), minima);
    }
    float smallest;
    CSSEFns::min_of_m128(minima, &smallest);
    return smallest;
}

} // namespace vek::detail
