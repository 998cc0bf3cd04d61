#pragma once

// How one raster cell is cut into triangles, for AppendTriangle and for the
// builders that must know beforehand how many triangles a cell will add.

namespace vek::detail {

// The cell's corners by name: A = (x0, y0), B = (x1, y0), C = (x0, y1), D = (x1, y1).
enum CellCorner { A = 0, B = 1, C = 2, D = 3 };

struct CellSplit {
    int count;
    CellCorner corners[2][3];
};

// Which triangles a cell yields for the valid corners of its two columns.
// Every shape runs counter-clockwise seen from +z with x to the right and y
// upward. A full cell is split along A-D; only when A or D is missing does the
// remaining triangle lie along B-C.
inline CellSplit SplitCell(int leftMask, int rightMask)
{
    if (leftMask == 3 && rightMask == 3) return {2, {{A, D, C}, {A, B, D}}};
    if (leftMask == 3 && rightMask == 1) return {1, {{A, B, C}}};
    if (leftMask == 3 && rightMask == 2) return {1, {{A, D, C}}};
    if (leftMask == 1 && rightMask == 3) return {1, {{A, B, D}}};
    if (leftMask == 2 && rightMask == 3) return {1, {{B, D, C}}};
    return {0, {}};
}

// A column with one valid corner counts as full when the cell is to be filled.
inline int FilledMask(int mask)
{
    return (mask == 1 || mask == 2) ? 3 : mask;
}

// The number of triangles AppendTriangle writes for these masks.
inline int CellTriangleCount(int leftMask, int rightMask, bool fillCell)
{
    if (fillCell) return SplitCell(FilledMask(leftMask), FilledMask(rightMask)).count;
    return SplitCell(leftMask, rightMask).count;
}

} // namespace vek::detail
