#pragma once

#include "vekdll/export.h"

class CSSEMatrix;

namespace vek {

// One span of a line: the first and the last column at which the image
// changes. (0, kUnrestrictedTo) is the span of a line that showed no change.
struct FromTo {
    int from;
    int to;
};

inline constexpr int kUnrestrictedTo = 999999;

} // namespace vek

// The span array that each field carries: for every line of four rows, where
// in x its data begins and ends to change. Scan conversion and refinement use
// it to skip columns that hold nothing of interest.
class VEKDLL_API CImgFromToArray {
public:
    CImgFromToArray() = default;
    ~CImgFromToArray();

    // A shallow copy of the two members: both objects then share one array,
    // as two fields do after their own assignment. Copy construction would
    // give two owners of one array without anyone having asked for sharing,
    // so it is not offered.
    CImgFromToArray(const CImgFromToArray&) = delete;
    CImgFromToArray& operator=(const CImgFromToArray& other) = default;
    // Takes over the array of `other`, which is left empty. The array this
    // object held is not released, as by the copy: it may be shared.
    CImgFromToArray& operator=(CImgFromToArray&& other) noexcept;

    // Finds the changing span of every line of `m` that holds image rows,
    // looking at columns `left` to `right` (clamped to the field). A line
    // without change keeps (0, 999999): unrestricted, not empty.
    void CalcArray(const CSSEMatrix& m, int left, int right);

    // h == 1: overwrites from/to with pair y (a line index, clamped).
    // Otherwise narrows the caller's from/to to the union of the spans of the
    // lines (y - h) >> 2 up to, not including, (y + h) >> 2; an empty set of
    // lines gives an empty range (from >= 999999, to <= 0).
    void GetFromToCoords(int& from, int& to, int y, int h) const;

    // h == 1: whether x lies in the span of line y >> 2 (y is a row here,
    // unlike in GetFromToCoords). Otherwise whether x lies in the spans of all
    // the lines that GetFromToCoords would combine; true if there are none.
    bool IsPositionInArray(int x, int y, int h) const;

    int GetNumEntries() const { return NumEntries; }

    // Paints the spans into `m` for inspection: the start of line i as a
    // splat of 20 at (from, 4 i), its end as a splat of 30 at (to, 4 i),
    // clamped to the field (img_from_to_array_drawing.cpp).
    void DrawInMatrix(CSSEMatrix& m) const;

protected:
    // One pair per line that holds image rows, (sizeY + 3) >> 2 of them, all
    // (0, 999999); any old array is released first.
    void AllocArray(int sizeY);
    void FreeArray();

    vek::FromTo* Array = nullptr;
    int NumEntries = 0;
};
