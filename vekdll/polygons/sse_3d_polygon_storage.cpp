// Life of a polygon: construction, the arrays, the box block and copies.

#include <cstring>
#include <utility>

#include "vekdll/pixelchains/pixel_chain.h"
#include "vekdll/polygons/polygon_blocks.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::AllocateBlocks;
using vek::detail::BlocksForPoints;
using vek::detail::ReleaseBlocks;

namespace {

constexpr int kBoxPoints = 5;

void CopyFloats(float* to, const float* from, int count)
{
    if (count > 0) std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(float));
}

} // namespace

CSSE3dPolygon::CSSE3dPolygon()
    : PointsX(nullptr), PointsY(nullptr), PointsZ(nullptr),
      NormalizedX(nullptr), NormalizedY(nullptr), NormalizedZ(nullptr),
      NumPoints(0),
      TopRight(nullptr), BottomLeft(nullptr), TopRight2D(nullptr), BottomLeft2D(nullptr), GeometricCenter(nullptr),
      BoundingBoxCalculated(false)
{
    AllocateBoxBlock();
}

CSSE3dPolygon::CSSE3dPolygon(const CSSE3dPolygon& other) : CSSE3dPolygon()
{
    CopyBoxPointsFrom(other);
    // Create leaves the box flag false, although the copied box points are right.
    Create(other.NumPoints);
    CopyFloats(PointsX, other.PointsX, NumPoints);
    CopyFloats(PointsY, other.PointsY, NumPoints);
    CopyFloats(PointsZ, other.PointsZ, NumPoints);
    CopyFloats(NormalizedX, other.NormalizedX, NumPoints);
    CopyFloats(NormalizedY, other.NormalizedY, NumPoints);
    CopyFloats(NormalizedZ, other.NormalizedZ, NumPoints);
}

CSSE3dPolygon::CSSE3dPolygon(CPixelChain& chain, int step) : CSSE3dPolygon()
{
    const int pixels = chain.GetCount();
    if (pixels < 1) return;
    if (step < 2) step = 1;
    const int count = pixels / step;
    if (count < 1) return;
    Create(count);
    for (int i = 0; i < count; ++i) {
        int x = 0;
        int y = 0;
        chain.GetPixel(i * step, x, y);
        SetPoint(i, static_cast<float>(x), static_cast<float>(y), 0.0f);
    }
}

CSSE3dPolygon::~CSSE3dPolygon()
{
    Free();
    ReleaseArrays();
    SafeAlignedFree(TopRight);
}

CSSE3dPolygon& CSSE3dPolygon::operator=(const CSSE3dPolygon& other) = default;

CSSE3dPolygon::CSSE3dPolygon(CSSE3dPolygon&& other) : CSSE3dPolygon()
{
    // `other` is left with the box block just made and no points.
    SwapWith(other);
}

CSSE3dPolygon& CSSE3dPolygon::operator=(CSSE3dPolygon&& other)
{
    if (this == &other) return *this;
    // What this polygon held may be shared through an earlier assignment, so
    // it is not handed to `other` for release: `other` gets a new box block.
    CSSE3dPolygon emptied; // allocates before anything changes
    *this = other;
    other = emptied;
    // `emptied` has no arrays; without its box block it releases nothing.
    emptied.TopRight = emptied.BottomLeft = emptied.GeometricCenter = emptied.TopRight2D = emptied.BottomLeft2D = nullptr;
    return *this;
}

void CSSE3dPolygon::SwapWith(CSSE3dPolygon& other) noexcept
{
    std::swap(PointsX, other.PointsX);
    std::swap(PointsY, other.PointsY);
    std::swap(PointsZ, other.PointsZ);
    std::swap(NormalizedX, other.NormalizedX);
    std::swap(NormalizedY, other.NormalizedY);
    std::swap(NormalizedZ, other.NormalizedZ);
    std::swap(NumPoints, other.NumPoints);
    std::swap(TopRight, other.TopRight);
    std::swap(BottomLeft, other.BottomLeft);
    std::swap(TopRight2D, other.TopRight2D);
    std::swap(BottomLeft2D, other.BottomLeft2D);
    std::swap(GeometricCenter, other.GeometricCenter);
    std::swap(BoundingBoxCalculated, other.BoundingBoxCalculated);
}

void CSSE3dPolygon::AllocateBoxBlock()
{
    // One allocation in the order TopRight, BottomLeft, GeometricCenter,
    // TopRight2D, BottomLeft2D; the first pointer is the one to release.
    auto* box = static_cast<SSEPoint*>(SafeAlignedAlloc(kBoxPoints * sizeof(SSEPoint), 16));
    std::memset(static_cast<void*>(box), 0, kBoxPoints * sizeof(SSEPoint));
    TopRight = box;
    BottomLeft = box + 1;
    GeometricCenter = box + 2;
    TopRight2D = box + 3;
    BottomLeft2D = box + 4;
}

void CSSE3dPolygon::CopyBoxPointsFrom(const CSSE3dPolygon& src)
{
    *TopRight = *src.TopRight;
    *BottomLeft = *src.BottomLeft;
    *GeometricCenter = *src.GeometricCenter;
    *TopRight2D = *src.TopRight2D;
    *BottomLeft2D = *src.BottomLeft2D;
}

void CSSE3dPolygon::Create(int numPoints)
{
    Free();
    ReleaseArrays();
    // A negative count is taken as an empty polygon.
    const int count = numPoints > 0 ? numPoints : 0;
    const std::uint64_t blocks = BlocksForPoints(count);
    PointsX = AllocateBlocks(blocks);
    PointsY = AllocateBlocks(blocks);
    PointsZ = AllocateBlocks(blocks);
    NormalizedX = AllocateBlocks(blocks);
    NormalizedY = AllocateBlocks(blocks);
    NormalizedZ = AllocateBlocks(blocks);
    NumPoints = count;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::CreateSimilar(CSSE3dPolygon* src)
{
    // A polygon is already similar to itself; re-creating it from itself
    // would release the very points that are to be copied.
    if (src == nullptr || src == this) return;
    Create(src->NumPoints);
    CopyFloats(PointsX, src->PointsX, NumPoints);
    CopyFloats(PointsY, src->PointsY, NumPoints);
    CopyFloats(PointsZ, src->PointsZ, NumPoints);
    CopyBoxPointsFrom(*src);
    BoundingBoxCalculated = src->BoundingBoxCalculated;
}

void CSSE3dPolygon::Free()
{
    // An empty polygon keeps its zero-size arrays and its box flag.
    if (NumPoints < 1) return;
    ReleaseArrays();
    NumPoints = 0;
    BoundingBoxCalculated = false;
}

void CSSE3dPolygon::ReleaseArrays()
{
    ReleaseBlocks(PointsX);
    ReleaseBlocks(PointsY);
    ReleaseBlocks(PointsZ);
    ReleaseBlocks(NormalizedX);
    ReleaseBlocks(NormalizedY);
    ReleaseBlocks(NormalizedZ);
}

int CSSE3dPolygon::GetNumPoints() const
{
    return NumPoints;
}

bool CSSE3dPolygon::IsBoundingBoxCalculated() const
{
    return BoundingBoxCalculated;
}
