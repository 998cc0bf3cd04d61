#pragma once

// The fields read and written by their storage layout, not through their own
// pixel functions. A float field holds four rows to a line (pixel (x, y) is
// lane y & 3 of vector x of line y >> 2), a byte field sixteen (byte y & 15).
// A storage row is an image row or, from SizeY on, a padding row. The field
// tests include this header for both rasters and the usual standard headers.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/platform/crt_random.h"

namespace vek::test {

template <class Field> struct Storage { using Cell = float; static constexpr int kRowsPerLine = 4; };
template <> struct Storage<CSSEcharMatrix> { using Cell = signed char; static constexpr int kRowsPerLine = 16; };

template <class Field>
int StorageRows(const Field& m)
{
    return Storage<Field>::kRowsPerLine * m.GetSSESizeY();
}

template <class Field>
typename Storage<Field>::Cell& Stored(const Field& m, int x, int row)
{
    constexpr int k = Storage<Field>::kRowsPerLine;
    return reinterpret_cast<typename Storage<Field>::Cell*>(m.GetMatrixDataDirectly()[row / k])[k * x + row % k];
}

// Writes value(x, row) into every cell, padding included.
template <class Field, class Value>
void FillStorage(Field& m, Value value)
{
    for (int row = 0; row < StorageRows(m); ++row)
        for (int x = 0; x < m.GetSSESizeX(); ++x) Stored(m, x, row) = static_cast<typename Storage<Field>::Cell>(value(x, row));
}

// Every cell, padding included, row by row; bytes as int, so that a failure
// prints numbers.
template <class Field>
auto AllStored(const Field& m)
{
    std::vector<decltype(+typename Storage<Field>::Cell{})> cells;
    for (int row = 0; row < StorageRows(m); ++row)
        for (int x = 0; x < m.GetSSESizeX(); ++x) cells.push_back(Stored(m, x, row));
    return cells;
}

// Values that tell every storage position apart: in float fields up to 1000
// wide, and (within a byte) between neighbouring positions of a byte field.
inline float Tag(int x, int row) { return static_cast<float>(1 + x + 1000 * row); }
inline int ByteTag(int x, int row) { return (7 * x + 3 * row) % 251 - 125; }

// A field of sizeX x sizeY whose every cell is value(x, storage row).
template <class Field = CSSEMatrix, class Value>
Field FieldOf(int sizeX, int sizeY, Value value)
{
    Field m;
    m.Create(sizeX, sizeY);
    FillStorage(m, value);
    return m;
}
template <class Value>
CSSEcharMatrix ByteField(int sizeX, int sizeY, Value value)
{
    return FieldOf<CSSEcharMatrix>(sizeX, sizeY, value);
}
inline CSSEMatrix Filled(int sizeX, int sizeY, float v)
{
    return FieldOf(sizeX, sizeY, [v](int, int) { return v; });
}
// A field of `background`, padding included, but for the given cells
// (x, storage row, value).
inline CSSEMatrix WithPoints(int sizeX, int sizeY, float background, std::initializer_list<std::tuple<int, int, float>> points)
{
    CSSEMatrix m = Filled(sizeX, sizeY, background);
    for (const auto& [x, row, v] : points) Stored(m, x, row) = v;
    return m;
}
// Gives `m` the image of `next` in place of its own. A move, like the
// assignment it stands for, releases nothing that the target held, so the old
// image (and span array) is first moved out into a field that releases it.
template <class Field>
void Replace(Field& m, Field&& next)
{
    const Field released(std::move(m));
    m = std::move(next);
}
inline CSSEMatrix CopyOf(const CSSEMatrix& m)
{
    CSSEMatrix copy;
    copy.CopyFromSSEMatrix(m);
    return copy;
}
inline void FillRandomBytes(CSSEcharMatrix& m, CrtRandom& random)
{
    FillStorage(m, [&](int, int) { return (random.Next() & 0xFF) - 128; });
}

// A float field drawn as rows of text, and back: '.' is 0, a digit d is d,
// '-' is -1; a value that is not 0 below 1 reads as '0'.
inline CSSEMatrix FromRows(const std::vector<std::string>& rows)
{
    const auto at = [&](int x, int y) { return rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)]; };
    return FieldOf(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), [&](int x, int y) {
        return y >= static_cast<int>(rows.size()) ? 0.0f : at(x, y) == '.' ? 0.0f : at(x, y) == '-' ? -1.0f : static_cast<float>(at(x, y) - '0');
    });
}
inline std::vector<std::string> RowsOf(const CSSEMatrix& m)
{
    std::vector<std::string> rows(static_cast<std::size_t>(m.GetSizeY()));
    for (int y = 0; y < m.GetSizeY(); ++y) {
        for (int x = 0; x < m.GetSizeX(); ++x) {
            const float p = m.GetPoint(x, y);
            rows[static_cast<std::size_t>(y)] += p == 0.0f ? '.' : p == -1.0f ? '-' : static_cast<char>('0' + static_cast<int>(p));
        }
    }
    return rows;
}
using Picture = std::vector<std::string>;

// Expects every lane of `after` to be expected(x, storage row), bit for bit.
template <class Expected>
void ExpectLanes(const CSSEMatrix& after, Expected expected)
{
    int mismatches = 0;
    for (int row = 0; row < StorageRows(after); ++row) {
        for (int x = 0; x < after.GetSSESizeX(); ++x) {
            const float want = expected(x, row);
            const float got = Stored(after, x, row);
            if (std::bit_cast<std::uint32_t>(got) != std::bit_cast<std::uint32_t>(want) && ++mismatches <= 5)
                ADD_FAILURE() << "lane (" << x << ", " << row << "): got " << got << ", want " << want;
        }
    }
}

} // namespace vek::test
