#include <algorithm>

#include "vekdll/fields/sse_matrix.h"

using vek::detail::ClampIndex;
using vek::detail::Footprint;
using vek::detail::PixelStore;
using vek::detail::TruncatedIndex;

namespace {

constexpr Footprint kWithLeftNeighbour{1, 0, 0, 0, false};
constexpr Footprint kWithRightNeighbour{0, 1, 0, 0, false};
constexpr Footprint kRowTriple{1, 1, 0, 0, false};
constexpr Footprint kCross{1, 1, 1, 1, true};
constexpr Footprint kBox3x3{1, 1, 1, 1, false};
constexpr Footprint kBox5x5{2, 2, 2, 2, false};

float UnitFraction(float f)
{
    return std::max(0.0f, std::min(1.0f, f));
}

} // namespace

void CSSEMatrix::StoreInFootprint(int x, int y, const Footprint& shape, float v, PixelStore how)
{
    const int cx = ClampIndex(x, shape.left, SizeX - 1 - shape.right);
    const int cy = ClampIndex(y, shape.up, SizeY - 1 - shape.down);
    for (int dy = -shape.up; dy <= shape.down; ++dy) {
        for (int dx = -shape.left; dx <= shape.right; ++dx) {
            if (shape.crossOnly && dx != 0 && dy != 0) continue;
            vek::detail::StorePixel(*PixelAddress(cx + dx, cy + dy), v, how);
        }
    }
}

void CSSEMatrix::SetPointAndLeftOfPoint(int x, int y, float v) { StoreInFootprint(x, y, kWithLeftNeighbour, v, PixelStore::Value); }
void CSSEMatrix::SetPointAndRightOfPoint(int x, int y, float v) { StoreInFootprint(x, y, kWithRightNeighbour, v, PixelStore::Value); }
void CSSEMatrix::SetTriplePointMax(int x, int y, float v) { StoreInFootprint(x, y, kRowTriple, v, PixelStore::Maximum); }
void CSSEMatrix::SetTriplePointMin(int x, int y, float v) { StoreInFootprint(x, y, kRowTriple, v, PixelStore::Minimum); }
void CSSEMatrix::SetCross(int x, int y, float v) { StoreInFootprint(x, y, kCross, v, PixelStore::Value); }
void CSSEMatrix::SetCrossMax(int x, int y, float v) { StoreInFootprint(x, y, kCross, v, PixelStore::Maximum); }
void CSSEMatrix::SetCrossMin(int x, int y, float v) { StoreInFootprint(x, y, kCross, v, PixelStore::Minimum); }
void CSSEMatrix::Set3x3BoxPoint(int x, int y, float v) { StoreInFootprint(x, y, kBox3x3, v, PixelStore::Value); }
void CSSEMatrix::Set3x3BoxPointMax(int x, int y, float v) { StoreInFootprint(x, y, kBox3x3, v, PixelStore::Maximum); }
void CSSEMatrix::Set3x3BoxPointMin(int x, int y, float v) { StoreInFootprint(x, y, kBox3x3, v, PixelStore::Minimum); }
void CSSEMatrix::Set5x5BoxPointMax(int x, int y, float v) { StoreInFootprint(x, y, kBox5x5, v, PixelStore::Maximum); }
void CSSEMatrix::Set5x5BoxPointMin(int x, int y, float v) { StoreInFootprint(x, y, kBox5x5, v, PixelStore::Minimum); }

float CSSEMatrix::GetPixelPreciseFloat(float x, float y, bool /*ignored*/) const
{
    const int ix = TruncatedIndex(x, 1, SizeX - 2);
    const int iy = TruncatedIndex(y, 1, SizeY - 2);
    const float fx = UnitFraction(x - static_cast<float>(ix));
    const float fy = UnitFraction(y - static_cast<float>(iy));
    // The four terms are added in this order, left to right.
    return (1.0f - fy) * (1.0f - fx) * *PixelAddress(ix, iy)
         + (1.0f - fx) * fy * *PixelAddress(ix, iy + 1)
         + (1.0f - fy) * fx * *PixelAddress(ix + 1, iy)
         + fy * fx * *PixelAddress(ix + 1, iy + 1);
}
