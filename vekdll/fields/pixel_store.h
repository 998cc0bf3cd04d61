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
