#pragma once

#include <vector>

// Smoothing of the integer curves that the byte field derives from its
// columns (score curves of the correlations, column profiles).

namespace vek::detail {

// out[i] becomes the mean of in[i - 2] ... in[i + 2], truncated toward zero,
// for i from 2 to n - 3; the two entries at each end are left to the caller.
// The sum is taken in 64 bits, so that scores near the int range average
// correctly.
inline void FivePointMeans(const std::vector<int>& in, std::vector<int>& out)
{
    const int n = static_cast<int>(in.size());
    for (int i = 2; i <= n - 3; ++i) {
        const long long sum = static_cast<long long>(in[i - 2]) + in[i - 1] + in[i] + in[i + 1] + in[i + 2];
        out[i] = static_cast<int>(sum / 5);
    }
}

} // namespace vek::detail
