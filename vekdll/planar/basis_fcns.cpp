#include "vekdll/planar/basis_fcns.h"

namespace {

// Below this magnitude twice the signed area counts as zero.
constexpr float kAreaTolerance = 0.0005f;

// Twice the signed area of a, b, c; positive when c lies left of a->b.
float TwiceSignedArea(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c)
{
    return (c->y - a->y) * (b->x - a->x) - (b->y - a->y) * (c->x - a->x);
}

bool IsLeftArea(float area)
{
    return area > kAreaTolerance;
}

bool IsCollinearArea(float area)
{
    return area >= -kAreaTolerance && area <= kAreaTolerance;
}

// Inclusive, whichever of the two ends is the larger.
bool WithinClosedRange(float end0, float end1, float value)
{
    return (end0 <= value && value <= end1) || (end0 >= value && value >= end1);
}

// Between, given the area of a, b, c already.
bool BetweenWithArea(float area, const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c)
{
    if (!IsCollinearArea(area)) return false;
    // A vertical segment can only be measured along y.
    if (a->x == b->x) return WithinClosedRange(a->y, b->y, c->y);
    return WithinClosedRange(a->x, b->x, c->x);
}

// The four areas the crossing tests of a-b and c-d rest on. Ear clipping
// asks for them once per ring edge and candidate diagonal, so each is
// computed once and not again by every predicate that needs it.
struct CrossingAreas {
    float abc;
    float abd;
    float cda;
    float cdb;
};

CrossingAreas AreasOf(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, const t_h2dpoint* d)
{
    return {TwiceSignedArea(a, b, c), TwiceSignedArea(a, b, d), TwiceSignedArea(c, d, a), TwiceSignedArea(c, d, b)};
}

bool CrossProperly(const CrossingAreas& s)
{
    // An end on the other line is a touch, not a proper crossing.
    if (IsCollinearArea(s.abc) || IsCollinearArea(s.abd) || IsCollinearArea(s.cda) || IsCollinearArea(s.cdb)) {
        return false;
    }
    return IsLeftArea(s.abc) != IsLeftArea(s.abd) && IsLeftArea(s.cda) != IsLeftArea(s.cdb);
}

} // namespace

float CHSimpleBasisFcns::AreaSign(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    const float area = TwiceSignedArea(a, b, c);
    if (area > kAreaTolerance) return 1.0f;
    if (area < -kAreaTolerance) return -1.0f;
    return 0.0f;
}

bool CHSimpleBasisFcns::Left(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return IsLeftArea(TwiceSignedArea(a, b, c));
}

bool CHSimpleBasisFcns::LeftOn(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return !(TwiceSignedArea(a, b, c) < -kAreaTolerance);
}

bool CHSimpleBasisFcns::Collinear(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return IsCollinearArea(TwiceSignedArea(a, b, c));
}

bool CHSimpleBasisFcns::Between(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return BetweenWithArea(TwiceSignedArea(a, b, c), a, b, c);
}

bool CHSimpleBasisFcns::IntersectProp(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                      const t_h2dpoint* d) const
{
    return CrossProperly(AreasOf(a, b, c, d));
}

bool CHSimpleBasisFcns::Intersect(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                  const t_h2dpoint* d) const
{
    const CrossingAreas s = AreasOf(a, b, c, d);
    return CrossProperly(s) || BetweenWithArea(s.abc, a, b, c) || BetweenWithArea(s.abd, a, b, d) ||
           BetweenWithArea(s.cda, c, d, a) || BetweenWithArea(s.cdb, c, d, b);
}

bool CHSimpleBasisFcns::InCone(const t_hvertex* a, const t_hvertex* b) const
{
    const t_h2dpoint* corner = &a->Point;
    const t_h2dpoint* before = &a->Prev->Point;
    const t_h2dpoint* after = &a->Next->Point;
    const t_h2dpoint* target = &b->Point;
    if (LeftOn(corner, after, before)) {
        // Convex corner: the cone is the wedge between the two edges.
        return Left(corner, target, before) && Left(target, corner, after);
    }
    // Reflex corner: the cone is everything outside the outer wedge.
    return !(LeftOn(corner, target, after) && LeftOn(target, corner, before));
}

int CHSimpleBasisFcns::VertexAlreadyThereInArray(SSEPoint* arr, SSEPoint& p, unsigned int n)
{
    for (unsigned int i = 0; i < n; ++i) {
        if (_mm_movemask_ps(_mm_cmpeq_ps(arr[i].sse, p.sse)) == 0xF) return static_cast<int>(i);
    }
    return -1;
}
