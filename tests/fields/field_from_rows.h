#pragma once

// Small fields written as rows of text, for tests that are easiest to read
// as pictures: '.' is 0, a digit d is d, '-' is -1.

#include <cstddef>
#include <string>
#include <vector>

#include "vekdll/fields/sse_matrix.h"

namespace vek::test {

inline void CreateFromRows(CSSEMatrix& m, const std::vector<std::string>& rows)
{
    m.Create(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()));
    for (int y = 0; y < m.GetSizeY(); ++y) {
        for (int x = 0; x < m.GetSizeX(); ++x) {
            const char c = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
            m.SetPoint(x, y, c == '.' ? 0.0f : c == '-' ? -1.0f : static_cast<float>(c - '0'));
        }
    }
}

// The pixels as text again; a value that is not 0 below 1 reads as '0'.
inline std::vector<std::string> RowsOf(const CSSEMatrix& m)
{
    std::vector<std::string> rows;
    for (int y = 0; y < m.GetSizeY(); ++y) {
        std::string row;
        for (int x = 0; x < m.GetSizeX(); ++x) {
            const float p = m.GetPoint(x, y);
            row += p == 0.0f ? '.' : p == -1.0f ? '-' : static_cast<char>('0' + static_cast<int>(p));
        }
        rows.push_back(row);
    }
    return rows;
}

} // namespace vek::test
