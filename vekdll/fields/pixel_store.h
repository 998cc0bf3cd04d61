#pragma once

#include <algorithm>

// Rules shared by the raster fields for reaching and writing single pixels.

namespace vek::detail {

// The fields clamp every coordinate instead of rejecting it. The order
// max(lower, min(upper, v)) matters on fields too small for a footprint: there
// upper < lower and the lower bound wins, where std::clamp would be undefined.
inline int ClampIndex(int v, int lower, int upper)
{
    return std::max(lower, std::min(upper, v));
}

// Truncation towards zero followed by the field's clamp. The float is tested
// before it is converted, so that a coordinate far outside the field reaches
// the rim instead of overflowing the conversion; not-a-number goes to the
// lower bound.
inline int TruncatedIndex(float v, int lower, int upper)
{
    if (!(v > static_cast<float>(lower))) return lower;
    if (v >= static_cast<float>(upper)) return std::max(lower, upper);
    return static_cast<int>(v);
}

// The rasterisers' conversion of a coordinate to a pixel index, before the
// field's clamp: truncation towards zero. It saturates at +-kCoordinateLimit,
// far beyond any field but with room for the margins and single steps that
// callers add, so that a coordinate far outside the field or not a number
// (which goes to the lower limit) reaches the rim through the clamp instead
// of overflowing the conversion.
inline constexpr int kCoordinateLimit = 1 << 30;

inline int TruncatedCoordinate(float v)
{
    if (!(v > -static_cast<float>(kCoordinateLimit))) return -kCoordinateLimit;
    if (v >= static_cast<float>(kCoordinateLimit)) return kCoordinateLimit;
    return static_cast<int>(v);
}

// Rounding is the coordinate plus 0.5, truncated towards zero: everything
// from above -1.5 up to below 0.5 goes to 0.
inline int RoundedCoordinate(float v)
{
    return TruncatedCoordinate(v + 0.5f);
}

// How a value is merged into a pixel: written over it, or kept only where it
// is larger (Maximum) or smaller (Minimum) than what is there.
enum class PixelStore { Value, Maximum, Minimum };

inline void StorePixel(float& pixel, float v, PixelStore how)
{
    switch (how) {
    case PixelStore::Value: pixel = v; break;
    case PixelStore::Maximum: pixel = std::max(pixel, v); break;
    case PixelStore::Minimum: pixel = std::min(pixel, v); break;
    }
}

// The pixels a write touches around its centre: `left` and `right` columns to
// either side, `up` and `down` rows above and below. The centre is clamped so
// that the whole footprint stays inside the field; a cross keeps only the
// centre row and the centre column of the rectangle.
struct Footprint {
    int left;
    int right;
    int up;
    int down;
    bool crossOnly;
};

} // namespace vek::detail
