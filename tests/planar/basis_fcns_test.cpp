#include <gtest/gtest.h>

#include <cmath>

#include "vekdll/planar/basis_fcns.h"

namespace {

const CHSimpleBasisFcns kFns;

TEST(CHSimpleBasisFcns, OrientationIsJudgedAgainstTheFixedTolerance)
{
    // With a = origin and b = (1, 0), twice the signed area is c.y exactly.
    const t_h2dpoint a{0.0f, 0.0f};
    const t_h2dpoint b{1.0f, 0.0f};
    const t_h2dpoint above{0.5f, 0.0006f};
    const t_h2dpoint atTolerance{0.5f, 0.0005f};
    const t_h2dpoint within{0.5f, -0.0004f};
    const t_h2dpoint below{0.5f, -0.0006f};

    EXPECT_EQ(kFns.AreaSign(&a, &b, &above), 1.0f);
    EXPECT_EQ(kFns.AreaSign(&a, &b, &atTolerance), 0.0f);  // the comparison is strict
    EXPECT_EQ(kFns.AreaSign(&a, &b, &within), 0.0f);
    EXPECT_EQ(kFns.AreaSign(&a, &b, &below), -1.0f);

    EXPECT_TRUE(kFns.Left(&a, &b, &above));
    EXPECT_FALSE(kFns.Left(&a, &b, &atTolerance));
    EXPECT_TRUE(kFns.LeftOn(&a, &b, &within));
    EXPECT_FALSE(kFns.LeftOn(&a, &b, &below));
    EXPECT_TRUE(kFns.Collinear(&a, &b, &atTolerance));
    EXPECT_TRUE(kFns.Collinear(&a, &b, &within));
    EXPECT_FALSE(kFns.Collinear(&a, &b, &above));

    // The scale of the coordinates decides: the same shallow corner ten
    // times larger is a corner.
    const t_h2dpoint b10{10.0f, 0.0f};
    const t_h2dpoint within10{5.0f, 0.0004f};
    EXPECT_TRUE(kFns.Left(&a, &b10, &within10));
}

TEST(CHSimpleBasisFcns, BetweenMeasuresAlongXOrAlongYForAVerticalSegment)
{
    const t_h2dpoint a{1.0f, 1.0f};
    const t_h2dpoint b{5.0f, 3.0f};
    const t_h2dpoint mid{3.0f, 2.0f};
    const t_h2dpoint beyond{7.0f, 4.0f};
    const t_h2dpoint off{3.0f, 2.5f};
    EXPECT_TRUE(kFns.Between(&a, &b, &mid));
    EXPECT_TRUE(kFns.Between(&b, &a, &mid));
    EXPECT_TRUE(kFns.Between(&a, &b, &a));
    EXPECT_TRUE(kFns.Between(&a, &b, &b));
    EXPECT_FALSE(kFns.Between(&a, &b, &beyond));
    EXPECT_FALSE(kFns.Between(&a, &b, &off));

    const t_h2dpoint top{2.0f, 8.0f};
    const t_h2dpoint bottom{2.0f, 4.0f};
    const t_h2dpoint inside{2.0f, 6.0f};
    const t_h2dpoint outside{2.0f, 9.0f};
    EXPECT_TRUE(kFns.Between(&top, &bottom, &inside));
    EXPECT_FALSE(kFns.Between(&top, &bottom, &outside));
}

TEST(CHSimpleBasisFcns, ProperCrossingsAndTouches)
{
    const t_h2dpoint a{0.0f, 0.0f};
    const t_h2dpoint b{4.0f, 4.0f};
    const t_h2dpoint c{0.0f, 4.0f};
    const t_h2dpoint d{4.0f, 0.0f};
    EXPECT_TRUE(kFns.IntersectProp(&a, &b, &c, &d));
    EXPECT_TRUE(kFns.Intersect(&a, &b, &c, &d));

    // A T: the end of one segment on the other touches without crossing.
    const t_h2dpoint foot{2.0f, 2.0f};
    EXPECT_FALSE(kFns.IntersectProp(&a, &b, &c, &foot));
    EXPECT_TRUE(kFns.Intersect(&a, &b, &c, &foot));

    // Overlapping pieces of one line, and two apart on it.
    const t_h2dpoint e{3.0f, 3.0f};
    const t_h2dpoint f{6.0f, 6.0f};
    const t_h2dpoint g{5.0f, 5.0f};
    EXPECT_TRUE(kFns.Intersect(&a, &b, &e, &f));
    EXPECT_FALSE(kFns.Intersect(&a, &foot, &e, &g));

    // Parallel and apart, and crossing lines whose segments stop short.
    const t_h2dpoint h{1.0f, 0.0f};
    const t_h2dpoint i{5.0f, 4.0f};
    EXPECT_FALSE(kFns.Intersect(&a, &b, &h, &i));
    const t_h2dpoint j{3.0f, 0.0f};
    EXPECT_FALSE(kFns.Intersect(&a, &foot, &d, &j));
}

TEST(CHSimpleBasisFcns, InConeAtConvexAndReflexCorners)
{
    // An L-shaped ring, counter-clockwise: corner 3 at (2, 2) is reflex.
    const float xy[6][2] = {{0, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 4}, {0, 4}};
    t_hvertex ring[6] = {};
    for (int i = 0; i < 6; ++i) {
        ring[i].Point = t_h2dpoint{xy[i][0], xy[i][1]};
        ring[i].Next = &ring[(i + 1) % 6];
        ring[i].Prev = &ring[(i + 5) % 6];
        ring[i].Index = i;
    }
    // At the convex corner 0 the cone is the quarter towards (1, 1).
    EXPECT_TRUE(kFns.InCone(&ring[0], &ring[3]));
    EXPECT_FALSE(kFns.InCone(&ring[0], &ring[1]));  // along an edge is not inside

    // At the reflex corner 3 the cone spans three quarters: towards the
    // origin and along the arms, but not into the notch at (4, 4).
    t_hvertex notch = {};
    notch.Point = t_h2dpoint{4.0f, 4.0f};
    EXPECT_TRUE(kFns.InCone(&ring[3], &ring[0]));
    EXPECT_TRUE(kFns.InCone(&ring[3], &ring[1]));
    EXPECT_FALSE(kFns.InCone(&ring[3], &notch));
}

TEST(CHSimpleBasisFcns, VertexAlreadyThereComparesAllFourLanes)
{
    SSEPoint points[4];
    points[0].sse = _mm_setr_ps(1, 2, 3, 0);
    points[1].sse = _mm_setr_ps(4, 5, 6, 0);
    points[2].sse = _mm_setr_ps(4, 5, 6, 1);
    points[3].sse = _mm_setr_ps(4, 5, 6, 0);
    SSEPoint p;
    p.sse = _mm_setr_ps(4, 5, 6, 0);
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 4), 1);
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 1), -1);
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 0), -1);
    p.w = 1;
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 4), 2);
    // A coordinate that is not a number equals nothing, not even itself.
    points[0].x = std::nanf("");
    p = points[0];
    EXPECT_EQ(CHSimpleBasisFcns::VertexAlreadyThereInArray(points, p, 4), -1);
}

} // namespace
