#pragma once

#include <smmintrin.h>

#include "vekdll/fields/pixel_store.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_point.h"

// How the refinement and the deletion read a raster at a vertex, and the
// small pieces of point arithmetic they share.

namespace vek::detail {

// Whether a raster can be read: given, and holding at least one cell. An
// empty field has no cell that a clamped read could fall on.
inline bool Readable(const CSSEMatrix* field)
{
    return field != nullptr && field->GetSizeX() > 0 && field->GetSizeY() > 0 &&
           field->GetMatrixDataDirectly() != nullptr;
}

// The field at the cell of (x, y): each coordinate plus 0.5, truncated, and
// clamped to the field.
inline float ValueAtCell(const CSSEMatrix& field, float x, float y)
{
    return field.GetPoint(RoundedCoordinate(x), RoundedCoordinate(y));
}

// The same where the surface is centred on the field: its (0, 0) lies at the
// field's middle cell, half the size in from the lower corner.
inline float ValueAtCentredCell(const CSSEMatrix& field, float x, float y)
{
    return field.GetPoint(RoundedCoordinate(x) + field.GetSizeX() / 2, RoundedCoordinate(y) + field.GetSizeY() / 2);
}

// The whole cell coordinate that a position rounds to, as a float.
inline float RoundedToCell(float v)
{
    return static_cast<float>(RoundedCoordinate(v));
}

// The value a raster of maxima holds where it has no data is its least
// one, that of a raster of minima its greatest (as CalcMinMaxValues finds
// them).
inline float RasterBackground(const CSSEMatrix& raster, bool maxImage)
{
    float maxValue = 0.0f;
    float minValue = 0.0f;
    raster.CalcMinMaxValues(&maxValue, &minValue);
    return maxImage ? minValue : maxValue;
}

inline SSEPoint PointAt(float x, float y, float z)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, 0.0f);
    return p;
}

// (a + b + c) / 3 in all four lanes.
inline SSEPoint CentroidOf(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c)
{
    SSEPoint centroid;
    centroid.sse = _mm_div_ps(_mm_add_ps(_mm_add_ps(a.sse, b.sse), c.sse), _mm_set1_ps(3.0f));
    return centroid;
}

// The height a raster gives a point between cells: bilinear where the
// field is large enough for that (3 x 3), else the value at its cell.
inline float HeightBetweenCells(const CSSEMatrix& field, float x, float y)
{
    if (field.GetSizeX() < 3 || field.GetSizeY() < 3) return ValueAtCell(field, x, y);
    return field.GetPixelPreciseFloat(x, y);
}

} // namespace vek::detail
