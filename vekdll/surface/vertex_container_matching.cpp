// Matching a coarse polygon with a finer one: where the two meet, and which
// coarse point corresponds to a point of a third line. The combination of
// triangulations stands on these.

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/vertex_container.h"

namespace {

SSEPoint PointOf(const CSSE3dPolygon& polygon, int i)
{
    SSEPoint p;
    polygon.GetPointSSE(i, p);
    return p;
}

float DistanceTo(const CSSE3dPolygon& polygon, int i, const SSEPoint& q)
{
    return CSSEFns::euclideandistance(PointOf(polygon, i).sse, q.sse);
}

// Of the ends `start` and `end` of a segment of `polygon`, the one nearer
// to q; on a tie the end.
int NearerEnd(const CSSE3dPolygon& polygon, int start, int end, const SSEPoint& q)
{
    return DistanceTo(polygon, start, q) < DistanceTo(polygon, end, q) ? start : end;
}

// A best distance and the index that holds it, -1 while there is none.
struct Best {
    float distance = 999.9f;
    int index = -1;

    void Offer(float d, int i)
    {
        if (distance >= d) {
            distance = d;
            index = i;
        }
    }
};

} // namespace

// Lets the closed `polygon` start at the end of its segment that is nearest
// to the first point of `reference`. The segment is found on a copy
// resampled at 0.2, so that a long segment is not passed over for a short
// one nearby; `map` is rotated with the points.
void ZrCSSEVertexContainer::FindClosedPolygonSafe(const CSSE3dPolygon& reference, CSSE3dPolygon& polygon, int* map)
{
    const int count = polygon.GetNumPoints();
    if (reference.GetNumPoints() < 1 || count < 1) return;
    SSEPoint start = PointOf(reference, 0);

    CSSE3dPolygon fine(polygon);
    int* fineIndexOf = static_cast<int*>(SafeMalloc(sizeof(int) * static_cast<std::uint64_t>(count)));
    fine.ReParametrize(0.2f, fineIndexOf);
    const int nearest = fine.ClosestPoint(start);

    int segment = -1;
    for (int i = 0; i < count && segment < 0 && nearest >= 0; ++i) {
        const bool closing = i == count - 1;  // the last segment wraps to point 0
        if (fineIndexOf[i] <= nearest && (closing || nearest <= fineIndexOf[i + 1])) segment = i;
    }
    SafeFree(fineIndexOf);
    if (segment < 0) return;
    polygon.ChangeStartPoint(NearerEnd(polygon, segment, (segment + 1) % count, start), map);
}

// The index in `coarse`, between `first` and `last`, that corresponds best
// to point `targetIndex` of `target`. `map` gives for each coarse point its
// index in `fine`. The fine points between the two ends are projected on
// `target` by nearest point: of those that land on the target point, the
// nearest to it wins (the last one on a tie); failing them, of those that
// land before it (but not on its point 0). The coarse segment that holds the
// winner gives its end nearer to the target point. -1 where there is none;
// `first` where no fine point lands near enough. First and last must be
// coarse indices.
int ZrCSSEVertexContainer::GetClosedPointSafe(const CSSE3dPolygon& coarse, const CSSE3dPolygon& fine,
                                              const CSSE3dPolygon& target, const int* map, int first, int last,
                                              int targetIndex)
{
    const int coarseCount = coarse.GetNumPoints();
    if (map == nullptr || first < 0 || last < 0 || first >= coarseCount || last >= coarseCount) return -1;
    const SSEPoint q = PointOf(target, targetIndex);

    Best primary;
    Best secondary;
    for (int i = map[first]; i <= map[last]; ++i) {
        SSEPoint r = PointOf(fine, i);
        const int landing = target.ClosestPoint(r);
        const float distance = CSSEFns::euclideandistance(r.sse, q.sse);
        if (landing == targetIndex)
            primary.Offer(distance, i);
        else if (primary.index >= 0 && landing > targetIndex)
            break;
        else if (primary.index < 0 && landing < targetIndex && landing != 0)
            secondary.Offer(distance, i);
    }
    if (primary.index < 0) {
        if (secondary.index == -1) return first;
        primary = secondary;
    }
    if (primary.index < 0 || first > last) return -1;

    for (int k = first; k <= last; ++k) {
        const bool closing = k + 1 == coarseCount;
        if (closing && primary.index >= map[k]) return NearerEnd(coarse, k, 0, q);
        if (!closing && map[k] <= primary.index && primary.index <= map[k + 1])
            return NearerEnd(coarse, k, k + 1, q);
    }
    return -1;
}
