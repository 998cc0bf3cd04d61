// Meshes from height rasters: the cells of one field cut by a threshold, or
// of two fields where one lies above the other, each cell to triangles by
// AppendTriangle.

#include <algorithm>
#include <climits>

#include <smmintrin.h>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/mesh/cell_split.h"
#include "vekdll/mesh/triangulation.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace {

bool HasImage(const CSSEMatrix* field)
{
    return field != nullptr && field->GetMatrixDataDirectly() != nullptr;
}

// Room for twice `valid` corners over cells of stepX x stepY pixels, in int
// range; a count beyond it fails like exhausted memory in CreateTriangulation.
long long SampledRoom(long long valid, int stepX, int stepY)
{
    return std::min<long long>(2 * valid / (static_cast<long long>(stepX) * stepY), INT_MAX);
}

struct CornerValue {
    bool valid;
    float z;
};

// One field compared strictly with a threshold; the mesh lies on the field.
struct ThresholdCorners {
    const CSSEMatrix& field;
    float threshold;
    bool above;

    CornerValue operator()(int x, int y) const
    {
        const float v = field.GetPoint(x, y);
        return {above ? v > threshold : v < threshold, v};
    }
    bool FlipNormals() const { return !above; }
};

// The threshold, and then the polygon's inner area at the corner's raster
// coordinates; a corner that fails the threshold is not shown to the polygon.
struct ThresholdInPolygonCorners {
    ThresholdCorners threshold;
    CSSE3dPolygon& polygon;

    CornerValue operator()(int x, int y) const
    {
        CornerValue corner = threshold(x, y);
        if (corner.valid) corner.valid = polygon.PointInLineInnerArea(static_cast<float>(x), static_cast<float>(y), 4);
        return corner;
    }
    bool FlipNormals() const { return threshold.FlipNormals(); }
};

// Valid where upper lies strictly above lower; the mesh lies on upper with
// `above` and on lower, facing down, without.
struct TwoFieldCorners {
    const CSSEMatrix& upper;
    const CSSEMatrix& lower;
    bool above;

    CornerValue operator()(int x, int y) const
    {
        const float u = upper.GetPoint(x, y);
        const float l = lower.GetPoint(x, y);
        return {u > l, above ? u : l};
    }
    bool FlipNormals() const { return !above; }
};

long long ValidPixels(const CSSEMatrix& field, float threshold, bool above)
{
    return above ? field.NumValuesAbove(threshold) : field.NumValuesBelow(threshold);
}

long long UpperAboveLower(const CSSEMatrix& upper, const CSSEMatrix& lower, bool above)
{
    return above ? upper.NumValuesAbove(&lower) : lower.NumValuesBelow(&upper);
}

// The bits of the lanes in which `values` passes the threshold.
int LaneMask(__m128 values, __m128 threshold, bool above)
{
    return _mm_movemask_ps(above ? _mm_cmpgt_ps(values, threshold) : _mm_cmplt_ps(values, threshold));
}

float Lane(__m128 v, int lane)
{
    alignas(16) float lanes[4];
    _mm_store_ps(lanes, v);
    return lanes[lane];
}

} // namespace

// ---------------------------------------------------------------- one field, four rows at a time

void CHTriangulation::CreateTriangulationFromSSEField(CSSEMatrix* field, float threshold, bool above)
{
    if (!HasImage(field)) return;
    const long long count = 2 * ValidPixels(*field, threshold, above);
    if (count < 1) return;
    CreateTriangulation(static_cast<int>(std::min<long long>(count, INT_MAX)));

    // Every triangle has three valid corners and a pixel is a corner of at
    // most six triangles of the cells around it, so twice the valid pixels
    // (padding lanes counted as the loop reads them) is always room enough.
    __m128** lines = field->GetMatrixDataDirectly();
    const int vectors = field->GetSSESizeX();
    const int blocks = field->GetSSESizeY();
    const __m128 t = _mm_set1_ps(threshold);
    const bool flip = !above;
    int index = 0;
    for (int c = 0; c + 1 < vectors; ++c) {
        const float x0 = ScaleX * static_cast<float>(c);
        const float x1 = ScaleX + x0;
        for (int k = 0; k + 1 < blocks; ++k) {
            const __m128 left = lines[k][c];
            const __m128 right = lines[k][c + 1];
            const int m0 = LaneMask(left, t, above);
            const int m1 = LaneMask(right, t, above);
            // y runs on by repeated addition from the block's first row.
            float y0 = ScaleY * static_cast<float>(4 * k);
            float y1 = ScaleY + y0;
            for (int lane = 0; lane < 3; ++lane) {
                AppendTriangle((m0 >> lane) & 3, (m1 >> lane) & 3, x0, x1, y0, y1, Lane(left, lane),
                               Lane(left, lane + 1), Lane(right, lane), Lane(right, lane + 1), index, flip, false);
                y0 += ScaleY;
                y1 += ScaleY;
            }
            // The cell from lane 3 of this block to lane 0 of the next. Below
            // the threshold its masks keep bit 0 alone, which no cell shape
            // accepts: that mesh has a gap at every fourth row of cells, as
            // its callers have always had it.
            const __m128 nextLeft = lines[k + 1][c];
            const __m128 nextRight = lines[k + 1][c + 1];
            const int n0 = LaneMask(nextLeft, t, above);
            const int n1 = LaneMask(nextRight, t, above);
            const int leftMask = above ? (n0 & 1) * 2 + ((m0 >> 3) & 1) : (n0 | (m0 >> 3)) & 1;
            const int rightMask = above ? (n1 & 1) * 2 + ((m1 >> 3) & 1) : (n1 | (m1 >> 3)) & 1;
            AppendTriangle(leftMask, rightMask, x0, x1, y0, y1, Lane(left, 3), Lane(nextLeft, 0), Lane(right, 3),
                           Lane(nextRight, 0), index, flip, false);
        }
    }
}

// ---------------------------------------------------------------- cells of several pixels

template <class Corners>
void CHTriangulation::CreateSampled(Corners& corners, int count, int stepX, int stepY, long long xFirst,
                                    long long xLast, long long yFirst, long long yLast)
{
    if (count < 1) {
        CreateTriangulation(0);
        return;
    }
    CreateTriangulation(count);
    // The room is an estimate; a cell that would not fit ends the build
    // instead of writing past the array.
    int index = 0;
    for (long long xx = xFirst; xx <= xLast; xx += stepX) {
        const int x = static_cast<int>(xx);
        const float x0 = ScaleX * static_cast<float>(x);
        const float x1 = ScaleX * static_cast<float>(stepX) + x0;
        for (long long yy = yFirst; yy <= yLast; yy += stepY) {
            const int y = static_cast<int>(yy);
            const CornerValue a = corners(x, y);
            const CornerValue c = corners(x, y + stepY);
            const CornerValue b = corners(x + stepX, y);
            const CornerValue d = corners(x + stepX, y + stepY);
            const int leftMask = (a.valid ? 1 : 0) | (c.valid ? 2 : 0);
            const int rightMask = (b.valid ? 1 : 0) | (d.valid ? 2 : 0);
            if (vek::detail::CellTriangleCount(leftMask, rightMask, false) > count - index) {
                NumTriangles = index;
                return;
            }
            const float y0 = ScaleY * static_cast<float>(y);
            const float y1 = ScaleY * static_cast<float>(stepY) + y0;
            AppendTriangle(leftMask, rightMask, x0, x1, y0, y1, a.z, c.z, b.z, d.z, index, corners.FlipNormals(),
                           false);
        }
    }
    NumTriangles = index;
}

// The plain forms are the area forms over the whole raster.
void CHTriangulation::CreateTriangulationFromSSEFieldSubSampled(CSSEMatrix* field, float threshold, bool above,
                                                                int stepX, int stepY)
{
    if (!HasImage(field)) {
        CreateTriangulation(0);
        return;
    }
    CreateTriangulationFromSSEFieldSubSampled(field, threshold, above, stepX, stepY, 0, field->GetSizeX() - 1, 0,
                                              field->GetSizeY() - 1, false);
}

void CHTriangulation::CreateTriangulationFromSSEFieldSubSampled(CSSEMatrix* field, float threshold, bool above,
                                                                int stepX, int stepY, int xFrom, int xTo, int yFrom,
                                                                int yTo, bool)
{
    if (!HasImage(field) || stepX < 1 || stepY < 1) {
        CreateTriangulation(0);
        return;
    }
    ThresholdCorners corners{*field, threshold, above};
    const int room = static_cast<int>(SampledRoom(ValidPixels(*field, threshold, above), stepX, stepY));
    CreateSampled(corners, room, stepX, stepY, xFrom, static_cast<long long>(xTo) - stepX, yFrom,
                  static_cast<long long>(yTo) - stepY);
}

void CHTriangulation::CreateTriangulationFromSSEFieldSubSampled(CSSEMatrix* field, float threshold, bool above,
                                                                int stepX, int stepY, CSSE3dPolygon* polygon)
{
    if (!HasImage(field) || polygon == nullptr || stepX < 1 || stepY < 1) {
        CreateTriangulation(0);
        return;
    }
    ThresholdInPolygonCorners corners{{*field, threshold, above}, *polygon};
    const int room = static_cast<int>(SampledRoom(ValidPixels(*field, threshold, above), stepX, stepY));
    CreateSampled(corners, room, stepX, stepY, 0, static_cast<long long>(field->GetSizeX()) - stepX - 1, 0,
                  static_cast<long long>(field->GetSizeY()) - stepY - 1);
}

void CHTriangulation::CreateTriangulationFromSSEFieldSubSampledTwoFields(CSSEMatrix* upper, CSSEMatrix* lower,
                                                                         bool above, int stepX, int stepY)
{
    if (!HasImage(upper) || !HasImage(lower)) {
        CreateTriangulation(0);
        return;
    }
    CreateTriangulationFromSSEFieldSubSampledTwoFields(upper, lower, above, stepX, stepY, 0, upper->GetSizeX() - 1,
                                                       0, upper->GetSizeY() - 1);
}

void CHTriangulation::CreateTriangulationFromSSEFieldSubSampledTwoFields(CSSEMatrix* upper, CSSEMatrix* lower,
                                                                         bool above, int stepX, int stepY, int xFrom,
                                                                         int xTo, int yFrom, int yTo)
{
    if (!HasImage(upper) || !HasImage(lower) || stepX < 1 || stepY < 1) {
        CreateTriangulation(0);
        return;
    }
    TwoFieldCorners corners{*upper, *lower, above};
    const int room = static_cast<int>(SampledRoom(UpperAboveLower(*upper, *lower, above), stepX, stepY));
    CreateSampled(corners, room, stepX, stepY, xFrom, static_cast<long long>(xTo) - stepX, yFrom,
                  static_cast<long long>(yTo) - stepY);
}
