#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "support/sse_lanes.h"
#include "vekdll/planar/basis_fcns.h"

namespace {

const CHSimpleBasisFcns kFns;

TEST(CHSimpleBasisFcns, OrientationIsJudgedAgainstTheFixedTolerance)
{
    // With a = origin and b = (1, 0), twice the signed area is c.y exactly;
    // it is compared with 0.0005 strictly.
    const t_h2dpoint a{0.0f, 0.0f};
    const t_h2dpoint b{1.0f, 0.0f};
    const struct {
        float y;
        float sign;
    } cases[] = {{0.0006f, 1}, {0.0005f, 0}, {-0.0004f, 0}, {-0.0005f, 0}, {-0.0006f, -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.y);
        const t_h2dpoint p{0.5f, c.y};
        EXPECT_EQ(kFns.AreaSign(&a, &b, &p), c.sign);
        EXPECT_EQ(kFns.Left(&a, &b, &p), c.sign > 0);
        EXPECT_EQ(kFns.LeftOn(&a, &b, &p), c.sign >= 0);
        EXPECT_EQ(kFns.Collinear(&a, &b, &p), c.sign == 0);
    }
    // The scale of the coordinates decides: the same shallow corner ten
    // times larger is a corner.
    const t_h2dpoint b10{10.0f, 0.0f};
    const t_h2dpoint c10{5.0f, 0.0004f};
    EXPECT_TRUE(kFns.Left(&a, &b10, &c10));
}

TEST(CHSimpleBasisFcns, ExactSidesHoldAtAnyScaleAndNotANumberIsOnNoSide)
{
    using vek::PlanarPredicates;
    // c = (0.5, y) against the line from the origin to (1, 0): the exact
    // tests see the smallest departure that the tolerance takes for none.
    const t_h2dpoint a{0.0f, 0.0f};
    const t_h2dpoint b{1.0f, 0.0f};
    for (float y : {1e-30f, 0.0f, -1e-30f}) {
        SCOPED_TRACE(y);
        const t_h2dpoint c{0.5f, y};
        const float sign = static_cast<float>((y > 0) - (y < 0));
        EXPECT_EQ(kFns.AreaSign(&a, &b, &c, PlanarPredicates::Exact), sign);
        EXPECT_EQ(kFns.Left(&a, &b, &c, PlanarPredicates::Exact), sign > 0);
        EXPECT_EQ(kFns.LeftOn(&a, &b, &c, PlanarPredicates::Exact), sign >= 0);
        EXPECT_EQ(kFns.Collinear(&a, &b, &c, PlanarPredicates::Exact), sign == 0);
        EXPECT_EQ(kFns.Between(&a, &b, &c, PlanarPredicates::Exact), sign == 0);
        EXPECT_TRUE(kFns.Collinear(&a, &b, &c, PlanarPredicates::Tolerant));
    }
    // A tiny convex corner of a counter-clockwise ring: the cone at it holds
    // the point across the corner, and the tolerance sees a straight line.
    const t_h2dpoint corners[3] = {{0, 0}, {1e-4f, 0}, {0, 1e-4f}};
    t_hvertex ring[3] = {};
    for (int i = 0; i < 3; ++i) {
        ring[i].Point = corners[i];
        ring[i].Next = &ring[(i + 1) % 3];
        ring[i].Prev = &ring[(i + 2) % 3];
    }
    t_hvertex across = {};
    across.Point = {1e-4f, 1e-4f};
    EXPECT_TRUE(kFns.InCone(&ring[0], &across, PlanarPredicates::Exact));
    EXPECT_FALSE(kFns.InCone(&ring[0], &across));
    // An area that is not a number is neither left nor right nor on the
    // line, in both modes.
    const t_h2dpoint nan{std::nanf(""), 0.0f};
    for (PlanarPredicates how : {PlanarPredicates::Tolerant, PlanarPredicates::Exact}) {
        EXPECT_EQ(kFns.AreaSign(&a, &b, &nan, how), 0.0f);
        EXPECT_EQ(std::tuple(kFns.Left(&a, &b, &nan, how), kFns.LeftOn(&a, &b, &nan, how),
                             kFns.Collinear(&a, &b, &nan, how), kFns.Between(&a, &b, &nan, how)),
                  std::tuple(false, true, false, false));
    }
}

TEST(CHSimpleBasisFcns, SegmentsCrossTouchOrMiss)
{
    const struct {
        const char* name;
        t_h2dpoint a, b, c, d;
        bool proper, any;
    } crossings[] = {
        {"an X", {0, 0}, {4, 4}, {0, 4}, {4, 0}, true, true},
        {"c touches a-b", {0, 0}, {4, 4}, {2, 2}, {0, 4}, false, true},
        {"d touches a-b", {0, 0}, {4, 4}, {0, 4}, {2, 2}, false, true},
        {"a touches c-d", {2, 2}, {0, 4}, {0, 0}, {4, 4}, false, true},
        {"b touches c-d", {0, 4}, {2, 2}, {0, 0}, {4, 4}, false, true},
        {"sharing an end", {0, 0}, {4, 4}, {4, 4}, {6, 0}, false, true},
        {"overlap on one line", {0, 0}, {4, 4}, {3, 3}, {6, 6}, false, true},
        {"apart on one line", {0, 0}, {2, 2}, {3, 3}, {5, 5}, false, false},
        {"parallel", {0, 0}, {4, 4}, {1, 0}, {5, 4}, false, false},
        {"lines cross beyond the ends", {0, 0}, {2, 2}, {4, 0}, {3, 0}, false, false},
        // Along an upright segment the ends are compared in y.
        {"touching an upright", {2, 8}, {2, 4}, {2, 6}, {5, 6}, false, true},
        {"beyond an upright", {2, 8}, {2, 4}, {2, 9}, {5, 1}, false, false},
    };
    for (const auto& c : crossings) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(kFns.IntersectProp(&c.a, &c.b, &c.c, &c.d), c.proper);
        EXPECT_EQ(kFns.Intersect(&c.a, &c.b, &c.c, &c.d), c.any);
        // The exact tests agree, also on the segments shrunk a millionfold
        // (by a power of two, so that the points stay exactly where they were
        // relative to each other), where the tolerance sees every end on
        // every line.
        for (float scale : {1.0f, 0x1p-20f}) {
            const auto shrunk = [scale](t_h2dpoint p) { return t_h2dpoint{p.x * scale, p.y * scale}; };
            const t_h2dpoint a = shrunk(c.a), b = shrunk(c.b), cc = shrunk(c.c), d = shrunk(c.d);
            EXPECT_EQ(kFns.IntersectProp(&a, &b, &cc, &d, vek::PlanarPredicates::Exact), c.proper);
            EXPECT_EQ(kFns.Intersect(&a, &b, &cc, &d, vek::PlanarPredicates::Exact), c.any);
            EXPECT_EQ(kFns.IntersectProp(&a, &b, &cc, &d), c.proper && scale == 1.0f);
        }
    }
}

TEST(CHSimpleBasisFcns, VertexAlreadyThereComparesAllFourLanes)
{
    using vek::test::Sse;
    SSEPoint points[4] = {Sse(1, 2, 3), Sse(4, 5, 6), Sse(4, 5, 6, 1), Sse(4, 5, 6)};
    SSEPoint p = Sse(4, 5, 6);
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 4), 1);
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 1), -1);
    p.w = 1;
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 4), 2);
    // A coordinate that is not a number equals nothing, not even itself.
    points[0].x = std::nanf("");
    p = points[0];
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 4), -1);
}

} // namespace
