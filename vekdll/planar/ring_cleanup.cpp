#include "vekdll/planar/ring_cleanup.h"

#include <vector>

namespace vek {
namespace {

struct PlanePoint {
    float x;
    float y;
};

PlanePoint PlanePointOf(const CSSE3dPolygon& ring, int i)
{
    PlanePoint p{0.0f, 0.0f};
    ring.GetPointXY(i, p.x, p.y);
    return p;
}

PlanePoint PlanePointOf(const CSSE2dPolygon& ring, int i)
{
    PlanePoint p{0.0f, 0.0f};
    ring.GetPoint(i, p.x, p.y);
    return p;
}

bool SamePlace(PlanePoint a, PlanePoint b)
{
    return a.x == b.x && a.y == b.y;
}

// The indices of the points to keep, in ring order.
template <class Ring>
std::vector<int> KeptPoints(const Ring& ring)
{
    std::vector<int> kept;
    kept.reserve(static_cast<std::size_t>(ring.GetNumPoints()));
    for (int i = 0; i < ring.GetNumPoints(); ++i) {
        if (kept.empty() || !SamePlace(PlanePointOf(ring, kept.back()), PlanePointOf(ring, i))) kept.push_back(i);
    }
    // A closing point, given once or more, repeats the first.
    while (kept.size() > 1 && SamePlace(PlanePointOf(ring, kept.back()), PlanePointOf(ring, kept.front()))) {
        kept.pop_back();
    }
    return kept;
}

} // namespace

CSSE3dPolygon DropRepeatedRingPoints(const CSSE3dPolygon& ring)
{
    const std::vector<int> kept = KeptPoints(ring);
    CSSE3dPolygon cleaned;
    cleaned.Create(static_cast<int>(kept.size()));
    for (int k = 0; k < static_cast<int>(kept.size()); ++k) {
        float x = 0.0f, y = 0.0f, z = 0.0f;
        ring.GetPoint(kept[k], x, y, z);
        cleaned.SetPoint(k, x, y, z);
        ring.GetPointNormalized(kept[k], x, y, z);
        cleaned.SetPointNormalized(k, x, y, z);
    }
    return cleaned;
}

CSSE2dPolygon DropRepeatedRingPoints(const CSSE2dPolygon& ring)
{
    const std::vector<int> kept = KeptPoints(ring);
    CSSE2dPolygon cleaned;
    cleaned.Create(static_cast<int>(kept.size()));
    for (int k = 0; k < static_cast<int>(kept.size()); ++k) {
        const PlanePoint p = PlanePointOf(ring, kept[k]);
        cleaned.SetPoint(k, p.x, p.y);
    }
    return cleaned;
}

} // namespace vek
