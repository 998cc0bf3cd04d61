#pragma once

// Reading and writing a CSSEMatrix by its documented storage layout, without
// going through the class's own pixel functions: a line read as floats holds
// pixel (0, 4k), (0, 4k+1), (0, 4k+2), (0, 4k+3), (1, 4k), ... A storage row
// is an image row or, from SizeY on, a padding lane.

#include <functional>
#include <vector>

#include "vekdll/fields/sse_matrix.h"

namespace vek::test {

inline int StorageRows(const CSSEMatrix& m)
{
    return 4 * m.GetSSESizeY();
}

inline float& StoredLane(const CSSEMatrix& m, int x, int storageRow)
{
    float* line = reinterpret_cast<float*>(m.GetMatrixDataDirectly()[storageRow / 4]);
    return line[4 * x + storageRow % 4];
}

// Writes value(x, row) into every lane of every line, padding included.
inline void FillLanes(CSSEMatrix& m, const std::function<float(int, int)>& value)
{
    for (int row = 0; row < StorageRows(m); ++row)
        for (int x = 0; x < m.GetSSESizeX(); ++x) StoredLane(m, x, row) = value(x, row);
}

// Every lane of every line, padding included, storage row by storage row.
inline std::vector<float> AllLanes(const CSSEMatrix& m)
{
    std::vector<float> lanes;
    for (int row = 0; row < StorageRows(m); ++row)
        for (int x = 0; x < m.GetSSESizeX(); ++x) lanes.push_back(StoredLane(m, x, row));
    return lanes;
}

// A value that differs for every storage position of fields up to 1000 wide.
inline float Tag(int x, int row)
{
    return static_cast<float>(1 + x + 1000 * row);
}

} // namespace vek::test
