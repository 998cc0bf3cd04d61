#include "pictures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace vek::tools {

namespace {

using Colour = std::array<double, 3>;

constexpr unsigned char kOpaque = 255;

// Towards the sun, x east, y north, z up: azimuth 315 degrees (north-west)
// and 45 degrees above the horizon, that is cos 45 (sin 315, cos 315) across
// and sin 45 up. Light from the upper left makes ridges read as ridges
// rather than as valleys.
constexpr std::array<double, 3> kSun{-0.5, 0.5, std::numbers::sqrt2 / 2.0};

struct TintStop {
    double at;
    Colour colour;
};
constexpr TintStop kTint[] = {
    {0.0, {84, 140, 84}}, {0.3, {196, 190, 120}}, {0.6, {150, 110, 75}}, {1.0, {245, 245, 245}}};

// Even a face turned away from the sun keeps a fifth of its colour, so
// that the tint still tells its height.
constexpr double kAmbient = 0.2;

constexpr Colour kWhite{255, 255, 255};
constexpr Colour kAbove{178, 24, 43};
constexpr Colour kBelow{33, 102, 172};
constexpr unsigned char kUnreachedGrey = 128;

Colour Mix(const Colour& a, const Colour& b, double t)
{
    return {a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t, a[2] + (b[2] - a[2]) * t};
}

Colour TintAt(double fraction)
{
    for (std::size_t i = 1; i < std::size(kTint); ++i) {
        if (fraction <= kTint[i].at)
            return Mix(kTint[i - 1].colour, kTint[i].colour, (fraction - kTint[i - 1].at) / (kTint[i].at - kTint[i - 1].at));
    }
    return kTint[std::size(kTint) - 1].colour;
}

void Put(RgbaImage& image, std::size_t cell, const Colour& c, double brightness)
{
    for (int k = 0; k < 3; ++k)
        image.rgba[4 * cell + k] = static_cast<unsigned char>(std::lround(std::clamp(c[k] * brightness, 0.0, 255.0)));
    image.rgba[4 * cell + 3] = kOpaque;
}

RgbaImage ClearImage(int width, int height)
{
    return {width, height, std::vector<unsigned char>(static_cast<std::size_t>(width) * height * 4, 0)};
}

// The rise of the surface per cell from (column, row) one step along
// (dc, dr): a central difference where both neighbours hold data, a
// one-sided one where only one does, and 0 where neither does.
double RisePerCell(const HeightRaster& s, int column, int row, int dc, int dr)
{
    const auto heightAt = [&](int c, int r, double& h) {
        if (c < 0 || r < 0 || c >= s.width || r >= s.height) return false;
        h = s.At(c, r);
        return HeightRaster::HoldsData(h);
    };
    const double centre = s.At(column, row);
    double ahead = centre;
    double behind = centre;
    const bool hasAhead = heightAt(column + dc, row + dr, ahead);
    const bool hasBehind = heightAt(column - dc, row - dr, behind);
    const int span = (hasAhead ? 1 : 0) + (hasBehind ? 1 : 0);
    return span == 0 ? 0.0 : (ahead - behind) / span;
}

// The share of the sunlight a cell's face receives, 0 ... 1.
double Sunlit(const HeightRaster& s, const Georeference& g, int column, int row)
{
    const std::array<double, 2> steps = g.GroundSteps(row);
    const double east = RisePerCell(s, column, row, 1, 0) / steps[0];
    const double north = RisePerCell(s, column, row, 0, 1) / steps[1];
    // The upward normal of the face z = east * x + north * y.
    const double lit = (-east * kSun[0] - north * kSun[1] + kSun[2]) / std::sqrt(east * east + north * north + 1.0);
    return std::max(lit, 0.0);
}

double Percentile99(std::vector<double> values)
{
    if (values.empty()) return 0.0;
    const std::size_t at = static_cast<std::size_t>(0.99 * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(at), values.end());
    return values[at];
}

} // namespace

std::array<unsigned char, 4> RgbaImage::At(int column, int row) const
{
    const std::size_t at = 4 * (static_cast<std::size_t>(row) * width + column);
    return {rgba[at], rgba[at + 1], rgba[at + 2], rgba[at + 3]};
}

RgbaImage ShadedRelief(const HeightRaster& surface, const Georeference& georeference)
{
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (float h : surface.heights) {
        if (!HeightRaster::HoldsData(h)) continue;
        lowest = std::min(lowest, static_cast<double>(h));
        highest = std::max(highest, static_cast<double>(h));
    }
    const double span = highest > lowest ? highest - lowest : 1.0;
    RgbaImage image = ClearImage(surface.width, surface.height);
    for (int row = 0; row < surface.height; ++row) {
        for (int column = 0; column < surface.width; ++column) {
            const float h = surface.At(column, row);
            if (!HeightRaster::HoldsData(h)) continue;
            const double light = kAmbient + (1.0 - kAmbient) * Sunlit(surface, georeference, column, row);
            Put(image, static_cast<std::size_t>(row) * surface.width + column, TintAt((h - lowest) / span), light);
        }
    }
    return image;
}

double RoundScaleUp(double value)
{
    double power = std::pow(10.0, std::floor(std::log10(value)));
    for (;; power *= 10.0) {
        for (double mantissa : {1.0, 2.0, 5.0}) {
            // A hair of slack, so that a value that is 2 but for the last
            // bit of a float computation stays at 2 and is not pushed to 5.
            if (mantissa * power >= value * (1.0 - 1e-12)) return mantissa * power;
        }
    }
}

ErrorMap DrawErrorMap(const HeightRaster& input, const HeightRaster& result)
{
    std::vector<double> sizes;
    for (std::size_t i = 0; i < input.heights.size(); ++i) {
        if (HeightRaster::HoldsData(input.heights[i]) && HeightRaster::HoldsData(result.heights[i]))
            sizes.push_back(std::fabs(static_cast<double>(result.heights[i]) - input.heights[i]));
    }
    double typical = Percentile99(sizes);
    if (typical == 0.0 && !sizes.empty()) typical = *std::max_element(sizes.begin(), sizes.end());
    ErrorMap map;
    map.range = RoundScaleUp(typical > 0.0 ? typical : 1.0);
    map.image = ClearImage(input.width, input.height);
    for (std::size_t i = 0; i < input.heights.size(); ++i) {
        if (!HeightRaster::HoldsData(input.heights[i])) continue;
        if (!HeightRaster::HoldsData(result.heights[i])) {
            Put(map.image, i, {kUnreachedGrey, kUnreachedGrey, kUnreachedGrey}, 1.0);
            continue;
        }
        const double t = (static_cast<double>(result.heights[i]) - input.heights[i]) / map.range;
        if (std::fabs(t) > 1.0) ++map.beyond;
        Put(map.image, i, Mix(kWhite, t > 0.0 ? kAbove : kBelow, std::min(std::fabs(t), 1.0)), 1.0);
    }
    return map;
}

} // namespace vek::tools
