#pragma once

// Random fields for the property tests of the whole-field operations, and a
// per-lane comparison against a plain scalar computation, bit for bit.

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "fields/field_test_helpers.h"
#include "vekdll/fields/sse_matrix.h"

namespace vek::test {

// Sizes that give one block and several blocks, padding of one to four lanes.
inline const std::vector<std::pair<int, int>>& PropertySizes()
{
    static const std::vector<std::pair<int, int>> sizes{{9, 7}, {13, 12}, {5, 130}};
    return sizes;
}

// Every lane, padding included, drawn from `values`. Half of the vectors get
// one value in all four lanes, so that both the path where the lanes agree
// and the mixed path are taken.
inline void FillRandomLanes(CSSEMatrix& m, std::uint32_t seed, const std::vector<float>& values)
{
    std::mt19937 random(seed);
    const auto pick = [&] { return values[random() % values.size()]; };
    for (int line = 0; line < m.GetSSESizeY(); ++line) {
        for (int x = 0; x < m.GetSSESizeX(); ++x) {
            const bool uniform = random() % 2 == 0;
            const float common = pick();
            for (int lane = 0; lane < 4; ++lane) StoredLane(m, x, 4 * line + lane) = uniform ? common : pick();
        }
    }
}

// For each of the property sizes, a field of random lanes (a new seed each
// time) and an untouched copy of it, handed to `check`.
inline void ForEachRandomField(std::uint32_t& seed, const std::vector<float>& values, const std::function<void(CSSEMatrix&, const CSSEMatrix&)>& check)
{
    for (const auto& [sizeX, sizeY] : PropertySizes()) {
        SCOPED_TRACE(testing::Message() << sizeX << " x " << sizeY);
        CSSEMatrix m;
        m.Create(sizeX, sizeY);
        FillRandomLanes(m, ++seed, values);
        CSSEMatrix before;
        before.CopyFromSSEMatrix(m);
        check(m, before);
    }
}

inline std::uint32_t Bits(float v)
{
    return std::bit_cast<std::uint32_t>(v);
}

// Expects every lane of `after` to equal expected(x, storage row) bit for bit.
inline void ExpectLanes(const CSSEMatrix& after, const std::function<float(int, int)>& expected)
{
    int mismatches = 0;
    for (int row = 0; row < StorageRows(after); ++row) {
        for (int x = 0; x < after.GetSSESizeX(); ++x) {
            const float want = expected(x, row);
            const float got = StoredLane(after, x, row);
            if (Bits(got) != Bits(want) && ++mismatches <= 5) ADD_FAILURE() << "lane (" << x << ", " << row << "): got " << got << ", want " << want;
        }
    }
}

} // namespace vek::test
