#pragma once

#include "vekdll/export.h"

class CSSEMatrix;

// The median filters of the fields. Both compute a partial median: a bubble
// pass carries the largest value of the neighbourhood to the end, a second
// pass runs only if the last comparison of the first exchanged, and the
// middle position is taken from that partly sorted list. The result is often
// but not always the true median; the filter is defined this way and
// results depend on it, so no full sort may replace it.
class VEKDLL_API CFilters {
public:
    CFilters() = default;

    // Over x0 <= x < x1, y0 <= y < y1 of src into dst. dst is cleared first;
    // the rim of the range (one pixel wide for 3 x 3, two for 5 x 5) is
    // copied from src unchanged and the inner pixels are filtered.
    // Coordinates are clamped to the fields, so a range larger than a field
    // reads and writes its border pixels. src and dst may be one field.
    static void Median3x3(const CSSEMatrix& src, CSSEMatrix& dst, int x0, int x1, int y0, int y1);
    static void Median5x5(const CSSEMatrix& src, CSSEMatrix& dst, int x0, int x1, int y0, int y1);
};
