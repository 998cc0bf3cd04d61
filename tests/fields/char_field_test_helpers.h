#pragma once

// Reading and writing a CSSEcharMatrix by its documented storage layout,
// without going through the class's own pixel functions: pixel (x, y) is byte
// y & 15 of vector x of line y >> 4. A storage row is an image row or, from
// SizeY on, a padding byte.

#include <functional>
#include <vector>

#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/platform/crt_random.h"

namespace vek::test {

inline int ByteStorageRows(const CSSEcharMatrix& m)
{
    return 16 * m.GetSSESizeY();
}

inline signed char& StoredByte(const CSSEcharMatrix& m, int x, int storageRow)
{
    auto* line = reinterpret_cast<signed char*>(m.GetMatrixDataDirectly()[storageRow / 16]);
    return line[16 * x + storageRow % 16];
}

// Writes value(x, row) into every byte of every line, padding included.
inline void FillBytes(CSSEcharMatrix& m, const std::function<int(int, int)>& value)
{
    for (int row = 0; row < ByteStorageRows(m); ++row)
        for (int x = 0; x < m.GetSSESizeX(); ++x) StoredByte(m, x, row) = static_cast<signed char>(value(x, row));
}

// Every byte of every line, padding included, storage row by storage row.
inline std::vector<int> AllBytes(const CSSEcharMatrix& m)
{
    std::vector<int> bytes;
    for (int row = 0; row < ByteStorageRows(m); ++row)
        for (int x = 0; x < m.GetSSESizeX(); ++x) bytes.push_back(StoredByte(m, x, row));
    return bytes;
}

// A value that differs for neighbouring storage positions and fits a byte.
inline int ByteTag(int x, int row)
{
    return (7 * x + 3 * row) % 251 - 125;
}

// A field of sizeX x sizeY whose every byte, padding included, is random in
// -128 ... 127.
inline void FillRandomBytes(CSSEcharMatrix& m, CrtRandom& random)
{
    FillBytes(m, [&](int, int) { return (random.Next() & 0xFF) - 128; });
}

} // namespace vek::test
