// The distance image of a marked inner area to the line around it.

#include <algorithm>
#include <climits>
#include <cmath>

#include "vekdll/polygons/polygon_raster.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::HoldsImage;
using vek::detail::TruncatedCoordinate;

namespace {

// Pixels of the target within this of the marking value are inner pixels.
constexpr float kMarkTolerance = 20.0f;
// The visited pixels reach this far beyond the line's box.
constexpr int kBoxMargin = 4;
// Up to this planar distance a pixel takes the planar distance alone.
constexpr float kPlanarReach = 0.35f;
// The nearer scan reads about every this many length units of the line.
constexpr float kScanSpacing = 0.1f;

// The number of blocks of four points the nearer scan leaves out after each
// block it reads, from the resolution in x. It stays far enough below the
// range of int that the farther scan may leave out twice as many; a
// resolution of 0 or not a number leaves out none at all or as many as
// possible, whatever the conversion gives, and never fails.
int BlocksToSkip(float resolutionX)
{
    return std::min(TruncatedCoordinate(kScanSpacing / resolutionX + 0.5f), INT_MAX / 2);
}

} // namespace

void CSSE3dPolygon::InternalAreaDistanceTransform(float value, CSSEMatrix* heights, CSSEMatrix* target, t_resolutiondata& res, bool steepRamp)
{
    NormalizeXYZ(res);
    CalcBoundingBox();
    if (!HoldsImage(target)) return;
    const int xLo = std::max(0, TruncatedCoordinate(BottomLeft->x) - kBoxMargin);
    const int xHi = std::min(target->GetSizeX(), TruncatedCoordinate(TopRight->x) + kBoxMargin);
    const int yLo = std::max(0, TruncatedCoordinate(BottomLeft->y) - kBoxMargin);
    const int yHi = std::min(target->GetSizeY(), TruncatedCoordinate(TopRight->y) + kBoxMargin);
    if (yLo >= yHi) return;
    const int skip = BlocksToSkip(res.ResolutionX);
    // A height field without an image gives no heights: the distances stay planar.
    const bool withHeights = HoldsImage(heights);

    // The world coordinates grow by repeated addition, row by row and column
    // by column.
    float wy = static_cast<float>(yLo) * res.ResolutionY;
    for (int y = yLo; y < yHi; ++y, wy += res.ResolutionY) {
        float wx = static_cast<float>(xLo) * res.ResolutionX;
        for (int x = xLo; x < xHi; ++x, wx += res.ResolutionX) {
            float* pixel = target->GetPointAddress(x, y);
            if (!(std::fabs(*pixel - value) < kMarkTolerance)) continue;
            const float d = GetMinEuclDistanceXY(wx, wy, skip);
            if (d <= kPlanarReach) {
                *pixel = d;
                continue;
            }
            // The weight of the spatial distance grows with the planar one,
            // steeply or gently, up to 1.
            const float w = std::min(1.0f, steepRamp ? 2.0f * d : d / 2.0f);
            const float z = withHeights ? heights->GetPoint(x, y) : 0.0f;
            const float d3 = GetMinEuclDistanceSpecial(wx, wy, z, 2 * skip);
            *pixel = (1.0f - w) * d + w * d3;
        }
    }
}
