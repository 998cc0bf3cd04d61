// The Delaunay rule: circumcircles, the strict circle test and the sweeps
// that flip edges until no opposite corner lies inside a circle.

#include <cmath>

#include "vekdll/foundation/exact_predicates.h"
#include "vekdll/surface/circle_bound.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/sweep_cycle_watch.h"
#include "vekdll/surface/working_list_index.h"

// The circle through a, b and c in x-y. There is no guard against three
// collinear corners: the fields become infinite or not-a-number, and a
// circle test against them is false, so such a triangle never takes part
// in a location or a flip by circle.
void ZrCIncrementalDelaunay2D::CalcCircumCircle(t_hdelaunaytriangle* triangle)
{
    const SSEPoint& a = Vertices[triangle->Vertex[0]];
    const SSEPoint& b = Vertices[triangle->Vertex[1]];
    const SSEPoint& c = Vertices[triangle->Vertex[2]];
    const float d1x = a.x - b.x;
    const float d1y = a.y - b.y;
    const float d2x = c.x - b.x;
    const float d2y = c.y - b.y;
    const float s1 = ((a.x * a.x - b.x * b.x) + (a.y * a.y - b.y * b.y)) / 2.0f;
    const float s2 = ((c.x * c.x - b.x * b.x) + (c.y * c.y - b.y * b.y)) / 2.0f;
    const float det = d1x * d2y - d2x * d1y;
    triangle->CircleX = (d2y * s1 - d1y * s2) / det;
    triangle->CircleY = (d1x * s2 - d2x * s1) / det;
    const float rx = triangle->CircleX - a.x;
    const float ry = triangle->CircleY - a.y;
    triangle->CircleRadius2 = rx * rx + ry * ry;
    NoteCircleChanged(triangle);
}

// The float test `CircleRadius2 > dx² + dy²` can hold only for points within
// the radius widened by the rounding of dx, dy, their squares and their sum
// (a few units in the last place of a float), and by the squares that
// underflow to 0 near the centre. The widening here is far beyond both.
vek::detail::IndexedCircle ZrCIncrementalDelaunay2D::IndexedCircleOf(const t_hdelaunaytriangle* triangle) const
{
    if (Predicates == vek::PlanarPredicates::Exact) return ExactlyIndexedCircleOf(triangle);
    vek::detail::IndexedCircle circle;
    const float cx = triangle->CircleX;
    const float cy = triangle->CircleY;
    const float r2 = triangle->CircleRadius2;
    // Not-a-number and non-positive radii hold no point; an infinite centre
    // makes dx infinite or not-a-number, which no radius exceeds.
    if (!(r2 > 0.0f) || !std::isfinite(cx) || !std::isfinite(cy)) return circle;
    circle.mayContainPoints = true;
    circle.entry = {cx, cy, r2, 0};
    circle.centreX = cx;
    circle.centreY = cy;
    circle.radius = std::isinf(r2) ? HUGE_VAL
                                   : std::sqrt(static_cast<double>(r2)) * (1.0 + 1.0e-6) + 1.0e-18 +
                                         (std::fabs(static_cast<double>(cx)) + std::fabs(static_cast<double>(cy))) * 1.0e-15;
    return circle;
}

void ZrCIncrementalDelaunay2D::UpdateCircles()
{
    CList<t_hdelaunaytriangle*>& present = PresentList();
    for (POSITION pos = present.GetHeadPosition(); pos != nullptr;) {
        if (t_hdelaunaytriangle* triangle = present.GetNext(pos)) CalcCircumCircle(triangle);
    }
}

// In the exact mode the circle fields are not read: the circle is the one
// through the corners, decided by the exact in-circle sign, and the search
// index files each triangle by a disc that surely holds that circle. The
// float snapshot the index tests first then gets a radius widened past the
// rounding of its own float test and of the centre's rounding to float, so
// that it can only let through more than the exact test accepts.
vek::detail::IndexedCircle ZrCIncrementalDelaunay2D::ExactlyIndexedCircleOf(const t_hdelaunaytriangle* triangle) const
{
    vek::detail::IndexedCircle circle;
    const SSEPoint& a = Vertices[triangle->Vertex[0]];
    const SSEPoint& b = Vertices[triangle->Vertex[1]];
    const SSEPoint& c = Vertices[triangle->Vertex[2]];
    for (const SSEPoint* p : {&a, &b, &c}) {
        if (!std::isfinite(p->x) || !std::isfinite(p->y)) return circle; // the exact test holds nothing
    }
    circle.mayContainPoints = true;
    const vek::detail::CircleBound bound = vek::detail::BoundCircumcircle(a, b, c);
    const float cx = static_cast<float>(bound.centreX);
    const float cy = static_cast<float>(bound.centreY);
    if (!bound.bounded || !std::isfinite(cx) || !std::isfinite(cy)) {
        circle.entry = {0.0f, 0.0f, INFINITY, 0};
        circle.radius = HUGE_VAL;
        return circle;
    }
    const double reach = bound.radius + std::fabs(bound.centreX - cx) + std::fabs(bound.centreY - cy);
    const double snapshot = reach * reach * (1.0 + 1.0e-5) + 1.0e-30;
    circle.entry = {cx, cy, static_cast<float>(snapshot) * (1.0f + 1.0e-5f), 0};
    circle.centreX = cx;
    circle.centreY = cy;
    circle.radius = reach * (1.0 + 1.0e-6) + 1.0e-18 + (std::fabs(bound.centreX) + std::fabs(bound.centreY)) * 1.0e-15;
    if (std::isinf(circle.entry.radius2)) circle.radius = HUGE_VAL;
    return circle;
}

// Strict: a point on the circle is not in it, so cocircular points never
// flip back and forth.
bool ZrCIncrementalDelaunay2D::InCircumCircle(int v, const t_hdelaunaytriangle* triangle) const
{
    if (Predicates == vek::PlanarPredicates::Exact)
        return vek::InCircle(Vertices[triangle->Vertex[0]], Vertices[triangle->Vertex[1]],
                             Vertices[triangle->Vertex[2]], Vertices[v]) > 0.0;
    const float dx = Vertices[v].x - triangle->CircleX;
    const float dy = Vertices[v].y - triangle->CircleY;
    return triangle->CircleRadius2 > dx * dx + dy * dy;
}

void ZrCIncrementalDelaunay2D::LegalizeEdges()
{
    SweepAffected(false);
}

// The sweep of every insertion path: it does not flip an edge into a place
// where the fan around the corner already has that edge.
void ZrCIncrementalDelaunay2D::LegalizeEdgesWithNeighbourCheck()
{
    SweepAffected(true);
}

// Sweeps over the affected triangles, sides 0, 1, 2 of each, flipping every
// side whose neighbour's opposite corner lies strictly inside the
// triangle's circle, until a sweep flips nothing or there have been as many
// sweeps as vertices. All triangles whose circle held the new vertex are in
// the affected list, which makes the sweep local and enough. A sweep that
// does not settle leaves a valid graph that is not fully Delaunay.
//
// Sweeps that have not settled after a few rounds are watched for a cycle
// (see SweepCycleWatch): once one shows, only the rest of the last period
// before the bound is run, which ends exactly where all the sweeps would.
// The linear search mode, the reference, runs every sweep.
void ZrCIncrementalDelaunay2D::SweepAffected(bool checkFan)
{
    constexpr int kSweepsBeforeWatching = 8;
    vek::detail::SweepCycleWatch<t_hdelaunaytriangle> watch;
    const bool mayShortenCycles = GetSearchMode() == vek::SearchMode::Indexed;
    for (int sweep = 0; sweep < NumVertices; ++sweep) {
        const bool watching = mayShortenCycles && sweep >= kSweepsBeforeWatching;
        if (SweepOnce(checkFan, watching ? &watch : nullptr) == 0) return;
        if (!watching) continue;
        const int period = watch.EndOfSweep(sweep);
        if (period == 0) continue;
        for (int left = (NumVertices - 1 - sweep) % period; left > 0; --left) {
            if (SweepOnce(checkFan, nullptr) == 0) return;
        }
        return;
    }
}

// One sweep; returns the number of flips, as the sweep's bound counts them.
int ZrCIncrementalDelaunay2D::SweepOnce(bool checkFan, vek::detail::SweepCycleWatch<t_hdelaunaytriangle>* watch)
{
    int flips = 0;
    for (POSITION pos = AffectedTriangleList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = AffectedTriangleList.GetNext(pos);
        if (triangle == nullptr) continue;
        // Later sides of a flipped triangle are tested against its new record.
        for (int side = 0; side < 3; ++side) {
            t_hdelaunaytriangle* neighbour = triangle->Neighbour[side];
            if (neighbour == nullptr || neighbour->IgnoreSearch) continue;
            const ESharedSide sideOfNeighbour = FindCommonSide(side, triangle, neighbour);
            if (sideOfNeighbour == eSideNone) {
                // A link without a shared side: on sides 1 and 2 it still
                // counts as a flip, which keeps the sweep going until its
                // bound. The asymmetry is kept as the graph has it.
                if (side != 0) ++flips;
                continue;
            }
            const int opposite = OppositeCorner(neighbour, sideOfNeighbour);
            if (!InCircumCircle(opposite, triangle)) continue;
            if (checkFan) {
                const int corner = OppositeCorner(triangle, side);
                const int cornerIndex = triangle->Vertex[0] == corner ? 0 : (triangle->Vertex[1] == corner ? 1 : 2);
                if (FindTrianglesWithCommonVertex(corner, triangle, cornerIndex, opposite)) continue;
            }
            if (watch != nullptr) {
                // The flip writes both records and the back links of their neighbours.
                for (const t_hdelaunaytriangle* record : {triangle, neighbour}) {
                    watch->Touch(record);
                    for (const t_hdelaunaytriangle* around : record->Neighbour) watch->Touch(around);
                }
            }
            // A sound insertion flips only among the triangles it affects;
            // a neighbour from elsewhere means the float decisions disagree,
            // and its outer links are then beyond what the insertion checks.
            if (!LinksMayBeStale && AffectedTriangleList.Find(neighbour) == nullptr) NoteFlipOutsideAffected(triangle, neighbour);
            FlipSharedEdge(triangle, side, neighbour, sideOfNeighbour);
            CalcCircumCircle(triangle);
            CalcCircumCircle(neighbour);
            ++flips;
        }
    }
    return flips;
}
