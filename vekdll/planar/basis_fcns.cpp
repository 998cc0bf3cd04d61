#include "vekdll/planar/basis_fcns.h"

#include <algorithm>
#include <cmath>

#include "vekdll/foundation/exact_predicates.h"

namespace {

using vek::PlanarPredicates;

// Where a point lies against the line through two others, looking along it.
// Unordered stands for an area that is not a number: it is on neither side
// and not on the line, so a point there is "left or on" and nothing else.
enum class Side { Right, On, Left, Unordered };

[[gnu::always_inline]] inline Side SideOfArea(double area, double tolerance)
{
    if (area > tolerance) return Side::Left;
    if (area < -tolerance) return Side::Right;
    if (std::isnan(area)) return Side::Unordered;
    return Side::On;
}

// Below this magnitude twice the signed area counts as zero.
constexpr float kAreaTolerance = 0.0005f;

// Twice the signed area of a, b, c; positive when c lies left of a->b.
[[gnu::always_inline]] inline float TwiceSignedArea(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c)
{
    return (c->y - a->y) * (b->x - a->x) - (b->y - a->y) * (c->x - a->x);
}

// The closed bounding boxes of a-b and c-d overlap.
[[gnu::always_inline]] inline bool BoxesOverlap(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                                const t_h2dpoint* d)
{
    return std::max(c->x, d->x) >= std::min(a->x, b->x) && std::max(a->x, b->x) >= std::min(c->x, d->x) &&
           std::max(c->y, d->y) >= std::min(a->y, b->y) && std::max(a->y, b->y) >= std::min(c->y, d->y);
}

// The side of c against a->b, with the area in single precision judged
// against the tolerance.
struct TolerantSides {
    [[gnu::always_inline]] static Side Of(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c)
    {
        return SideOfArea(TwiceSignedArea(a, b, c), kAreaTolerance);
    }
    // Within the tolerance, segments whose boxes lie apart may still touch.
    [[gnu::always_inline]] static bool MayMeet(const t_h2dpoint*, const t_h2dpoint*, const t_h2dpoint*,
                                               const t_h2dpoint*)
    {
        return true;
    }
};

// The side of c against a->b, exactly.
struct ExactSides {
    [[gnu::always_inline]] static Side Of(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c)
    {
        return SideOfArea(vek::Orient2D(a->x, a->y, b->x, b->y, c->x, c->y), 0.0);
    }
    // Exactly, segments meet only where their boxes do; the diagonal test
    // asks this of every ring edge, and most lie far from the diagonal, so
    // the box spares the four side tests for those.
    [[gnu::always_inline]] static bool MayMeet(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                               const t_h2dpoint* d)
    {
        return BoxesOverlap(a, b, c, d);
    }
};

// Runs `decide` with the side test that `how` names. Every predicate below
// is written once on a side test and so is the same in both ways of deciding.
// The helpers are forced inline: the ring walk of ear clipping runs the
// crossing test for every edge and candidate diagonal, and as calls of
// their own they would cost the default mode a third more time.
template <class Decide>
auto WithSides(PlanarPredicates how, Decide decide)
{
    return how == PlanarPredicates::Exact ? decide(ExactSides{}) : decide(TolerantSides{});
}

// Inclusive, whichever of the two ends is the larger.
[[gnu::always_inline]] inline bool WithinClosedRange(float end0, float end1, float value)
{
    return (end0 <= value && value <= end1) || (end0 >= value && value >= end1);
}

// Between, given the side of c against a->b already.
[[gnu::always_inline]] inline bool BetweenOnSide(Side side, const t_h2dpoint* a, const t_h2dpoint* b,
                                                 const t_h2dpoint* c)
{
    if (side != Side::On) return false;
    // A vertical segment can only be measured along y.
    if (a->x == b->x) return WithinClosedRange(a->y, b->y, c->y);
    return WithinClosedRange(a->x, b->x, c->x);
}

// The four sides the crossing tests of a-b and c-d rest on. Ear clipping
// asks for them once per ring edge and candidate diagonal, so each is
// decided once and not again by every predicate that needs it.
struct CrossingSides {
    Side abc;
    Side abd;
    Side cda;
    Side cdb;
};

template <class Sides>
[[gnu::always_inline]] inline CrossingSides SidesOf(Sides, const t_h2dpoint* a, const t_h2dpoint* b,
                                                    const t_h2dpoint* c, const t_h2dpoint* d)
{
    return {Sides::Of(a, b, c), Sides::Of(a, b, d), Sides::Of(c, d, a), Sides::Of(c, d, b)};
}

[[gnu::always_inline]] inline bool CrossProperly(const CrossingSides& s)
{
    // An end on the other line is a touch, not a proper crossing.
    if (s.abc == Side::On || s.abd == Side::On || s.cda == Side::On || s.cdb == Side::On) return false;
    return (s.abc == Side::Left) != (s.abd == Side::Left) && (s.cda == Side::Left) != (s.cdb == Side::Left);
}

[[gnu::always_inline]] inline bool CrossOrTouch(const CrossingSides& s, const t_h2dpoint* a, const t_h2dpoint* b,
                                                const t_h2dpoint* c, const t_h2dpoint* d)
{
    return CrossProperly(s) || BetweenOnSide(s.abc, a, b, c) || BetweenOnSide(s.abd, a, b, d) ||
           BetweenOnSide(s.cda, c, d, a) || BetweenOnSide(s.cdb, c, d, b);
}

template <class Sides>
[[gnu::always_inline]] inline bool InnerCone(Sides, const t_hvertex* a, const t_hvertex* b)
{
    const t_h2dpoint* corner = &a->Point;
    const t_h2dpoint* before = &a->Prev->Point;
    const t_h2dpoint* after = &a->Next->Point;
    const t_h2dpoint* target = &b->Point;
    if (Sides::Of(corner, after, before) != Side::Right) {
        // Convex corner: the cone is the wedge between the two edges.
        return Sides::Of(corner, target, before) == Side::Left && Sides::Of(target, corner, after) == Side::Left;
    }
    // Reflex corner: the cone is everything outside the outer wedge.
    return !(Sides::Of(corner, target, after) != Side::Right && Sides::Of(target, corner, before) != Side::Right);
}

} // namespace

float CHSimpleBasisFcns::AreaSign(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                  PlanarPredicates how) const
{
    switch (WithSides(how, [&](auto sides) { return sides.Of(a, b, c); })) {
    case Side::Left:
        return 1.0f;
    case Side::Right:
        return -1.0f;
    case Side::On:
    case Side::Unordered:
        break;
    }
    return 0.0f;
}

bool CHSimpleBasisFcns::Left(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, PlanarPredicates how) const
{
    return WithSides(how, [&](auto sides) { return sides.Of(a, b, c) == Side::Left; });
}

bool CHSimpleBasisFcns::LeftOn(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                               PlanarPredicates how) const
{
    return WithSides(how, [&](auto sides) { return sides.Of(a, b, c) != Side::Right; });
}

bool CHSimpleBasisFcns::Collinear(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                  PlanarPredicates how) const
{
    return WithSides(how, [&](auto sides) { return sides.Of(a, b, c) == Side::On; });
}

bool CHSimpleBasisFcns::Between(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                PlanarPredicates how) const
{
    return WithSides(how, [&](auto sides) { return BetweenOnSide(sides.Of(a, b, c), a, b, c); });
}

bool CHSimpleBasisFcns::IntersectProp(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                      const t_h2dpoint* d, PlanarPredicates how) const
{
    return WithSides(
        how, [&](auto sides) { return sides.MayMeet(a, b, c, d) && CrossProperly(SidesOf(sides, a, b, c, d)); });
}

bool CHSimpleBasisFcns::Intersect(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c, const t_h2dpoint* d,
                                  PlanarPredicates how) const
{
    return WithSides(how, [&](auto sides) {
        return sides.MayMeet(a, b, c, d) && CrossOrTouch(SidesOf(sides, a, b, c, d), a, b, c, d);
    });
}

bool CHSimpleBasisFcns::InCone(const t_hvertex* a, const t_hvertex* b, PlanarPredicates how) const
{
    return WithSides(how, [&](auto sides) { return InnerCone(sides, a, b); });
}

float CHSimpleBasisFcns::AreaSign(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return AreaSign(a, b, c, PlanarPredicates::Tolerant);
}

bool CHSimpleBasisFcns::Left(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return Left(a, b, c, PlanarPredicates::Tolerant);
}

bool CHSimpleBasisFcns::LeftOn(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return LeftOn(a, b, c, PlanarPredicates::Tolerant);
}

bool CHSimpleBasisFcns::Collinear(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return Collinear(a, b, c, PlanarPredicates::Tolerant);
}

bool CHSimpleBasisFcns::Between(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c) const
{
    return Between(a, b, c, PlanarPredicates::Tolerant);
}

bool CHSimpleBasisFcns::IntersectProp(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                      const t_h2dpoint* d) const
{
    return IntersectProp(a, b, c, d, PlanarPredicates::Tolerant);
}

bool CHSimpleBasisFcns::Intersect(const t_h2dpoint* a, const t_h2dpoint* b, const t_h2dpoint* c,
                                  const t_h2dpoint* d) const
{
    return Intersect(a, b, c, d, PlanarPredicates::Tolerant);
}

bool CHSimpleBasisFcns::InCone(const t_hvertex* a, const t_hvertex* b) const
{
    return InCone(a, b, PlanarPredicates::Tolerant);
}

int CHSimpleBasisFcns::VertexAlreadyThereInArray(SSEPoint* arr, SSEPoint& p, unsigned int n)
{
    for (unsigned int i = 0; i < n; ++i) {
        if (_mm_movemask_ps(_mm_cmpeq_ps(arr[i].sse, p.sse)) == 0xF) return static_cast<int>(i);
    }
    return -1;
}
