// The spans of a field painted into a field, for inspection.

#include "vekdll/fields/img_from_to_array.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

// The values of the two ends of a span in the picture.
constexpr float kSpanStart = 20.0f;
constexpr float kSpanEnd = 30.0f;

} // namespace

void CImgFromToArray::DrawInMatrix(CSSEMatrix& m) const
{
    CSSE3dPolygon starts;
    CSSE3dPolygon ends;
    starts.Create(NumEntries);
    ends.Create(NumEntries);
    for (int i = 0; i < NumEntries; ++i) {
        // Line i begins at row 4 i.
        const float row = static_cast<float>(4 * i);
        starts.SetPoint(i, static_cast<float>(Array[i].from), row, 0.0f);
        ends.SetPoint(i, static_cast<float>(Array[i].to), row, 0.0f);
    }
    starts.DrawInMatrix(kSpanStart, &m, false, 0.0f, 0.0f, false);
    ends.DrawInMatrix(kSpanEnd, &m, false, 0.0f, 0.0f, false);
}
