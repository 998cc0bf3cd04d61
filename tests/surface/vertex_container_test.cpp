// The vertex store: capacity, look-ups, whole-array changes and turns.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "support/polygon_points.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/vertex_container.h"

namespace {

using vek::test::Lanes;
using vek::test::PolygonOf;
using vek::test::Lanes4;
using vek::test::Sse;
using vek::test::Xyz;

void ExpectNear(const SSEPoint& p, const Lanes4& expected)
{
    for (int lane = 0; lane < 4; ++lane) EXPECT_NEAR(p.lane[lane], expected[lane], 1e-5) << "lane " << lane;
}

void ExpectNear(const CSSE3dPolygon& polygon, int i, const Lanes4& expected)
{
    SSEPoint p;
    polygon.GetPointSSE(i, p);
    ExpectNear(p, expected);
}

TEST(VertexContainer, CapacityGrowsOnlyWhenAskedAndKeepsIndices)
{
    ZrCSSEVertexContainer store(2);
    for (const SSEPoint& p : {Sse(1, 2, 3), Sse(4, 5, 6), Sse(7, 8, 9)}) store.AppendVertex(p);
    EXPECT_EQ(store.GetNumVertices(), 2);  // full: the third is lost without a word

    store.ReallocSize(3);
    store.AppendVertex(Sse(7, 8, 9));
    EXPECT_EQ(Lanes(store.GetVertex(0)), (Lanes4{1, 2, 3, 0}));
    EXPECT_EQ(Lanes(store.GetVertex(2)), (Lanes4{7, 8, 9, 0}));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(store.GetVertexPtr(0)) % 16, 0u);

    // A deep copy: changing the copy leaves the original alone.
    ZrCSSEVertexContainer copy;
    copy = store;
    copy.SetZValueInVertex(100, 0);
    EXPECT_EQ(std::pair(store.GetVertex(0).z, copy.GetMaxNumVertices()), std::pair(3.0f, 3));

    store.ReallocSize(0);
    store.AppendVertex(Sse(1, 1, 0));
    EXPECT_EQ(std::pair(store.GetNumVertices(), store.GetMaxNumVertices()), std::pair(0, 0));
    // A negative capacity is recorded as it is and stores nothing.
    ZrCSSEVertexContainer negative(-3);
    negative.AppendVertex(Sse(1, 1, 0));
    EXPECT_EQ(std::pair(negative.GetNumVertices(), negative.GetMaxNumVertices()), std::pair(0, -3));
}

TEST(VertexContainer, LookupsTakeTheFirstMatchAndZOnlyIn3D)
{
    ZrCSSEVertexContainer store(10);
    for (const SSEPoint& p : {Sse(1, 1, 5), Sse(3, 4, 0), Sse(3, 4, 7), Sse(6, 0, 0)}) store.AppendVertex(p);
    EXPECT_EQ(store.IsVertexExist(Sse(3, 4, 99), 0.0f), 1);
    EXPECT_EQ(store.IsVertexExist(Sse(3.5f, 4, 0), 0.0f), -1);
    // With a tolerance, tolerance^2 >= dx^2 + dy^2: (3, 4) is 5 from (0, 0).
    EXPECT_EQ(store.IsVertexExist(Sse(0, 0, 0), 5.0f), 0);
    EXPECT_EQ(store.IsVertexExist(Sse(6, 3, 0), 3.0f), 3);  // exactly 3 from (6, 0)
    EXPECT_EQ(store.PointIndex(Sse(3, 4, 7)), 1);
    EXPECT_EQ(store.PointIndex3D(Sse(3, 4, 7), 0, 4), 2);
    EXPECT_EQ(store.PointIndex3D(Sse(3, 4, 7), 0, 2), -1);
    EXPECT_EQ(store.PointIndex3D(Sse(3, 4, 7), 0, 1000), 2);

    // Extremes are lane-wise: no vertex sits at the lower left corner (1, 0),
    // but the extreme is stored; an empty store gives the sentinels.
    SSEPoint extreme;
    EXPECT_EQ(store.MinPointIndex(extreme), -1);
    EXPECT_EQ(Lanes(extreme), (Lanes4{1, 0, 0, 0}));
    EXPECT_EQ(store.MaxPointIndex(extreme), -1);
    store.AppendVertex(Sse(6, 4, 1));
    EXPECT_EQ(store.MaxPointIndex(extreme), 4);
    EXPECT_EQ(Lanes(extreme), (Lanes4{6, 4, 7, 0}));
    ZrCSSEVertexContainer empty;
    EXPECT_EQ(empty.IsVertexExist(Sse(0, 0, 0), 1.0f), -1);
    EXPECT_EQ(empty.MinPointIndex(extreme), -1);
    EXPECT_EQ(Lanes(extreme), (Lanes4{999999.9f, 999999.9f, 999999.9f, 999999.9f}));
    EXPECT_EQ(Lanes(empty.MaxPoint()), (Lanes4{-999999.9f, -999999.9f, -999999.9f, -999999.9f}));
}

TEST(VertexContainer, PolygonsAndFieldsGiveVerticesAndHeights)
{
    // Room for three; the second point lies within 1.0 of the first.
    ZrCSSEVertexContainer store(3);
    store.AddPolygon(PolygonOf({{0, 0, 1}, {0.6f, 0.8f, 2}, {5, 0, 3}, {9, 9, 4}, {20, 0, 5}}), true);
    ASSERT_EQ(store.GetNumVertices(), 3);
    EXPECT_EQ(Lanes(store.GetVertex(1)), (Lanes4{5, 0, 3, 0}));
    store.AddOffset(1, 1, 1);
    store.AddError(Sse(0.5f, 0, -1, 100));
    EXPECT_EQ(Lanes(store.GetVertex(2)), (Lanes4{10.5f, 10, 4, 0}));  // w stays

    // Heights from a second line, matched by nearest point; only vertices
    // equal to a polygon point in x, y and z change.
    store.ResetVertexFromPolygon(PolygonOf({{6.5f, 1, 3}, {1.5f, 1, 2}}), PolygonOf({{6.5f, 1.5f, 4}, {0, 0, 10}}));
    EXPECT_EQ(std::pair(store.GetVertex(0).z, store.GetVertex(1).z), std::pair(1.0f, 4.0f));

    // Cell (x, y) is truncate(coordinate + 0.5), clamped to the field.
    CSSEMatrix field;
    field.Create(4, 3);
    for (int i = 0; i < 12; ++i) field.SetPoint(i % 4, i / 4, 10.0f * float(i % 4) + float(i / 4));
    ZrCSSEVertexContainer cells(4);
    for (const SSEPoint& p : {Sse(0.4f, 0.6f, 0), Sse(-5, 100, 0), Sse(2.5f, 1.49f, 0), Sse(1e30f, -1e30f, 0)}) {
        cells.AppendVertex(p);
    }
    cells.SetVertexZFromMatrix(field);
    EXPECT_EQ((Lanes4{cells.GetVertex(0).z, cells.GetVertex(1).z, cells.GetVertex(2).z, cells.GetVertex(3).z}),
              (Lanes4{1, 2, 31, 30}));
}

TEST(VertexContainer, ProjectionCutAndTurns)
{
    // Onto the plane x + y = 0 with unit normal (1, 1, 0) / sqrt(2).
    const float h = 1.0f / std::sqrt(2.0f);
    CSSE3dPolygon projected;
    ZrCSSEVertexContainer::CalcProjectPolygon(Sse(0, 0, 0), Sse(h, h, 0), PolygonOf({{5, 5, 1}, {2, 0, 1}}), projected);
    ASSERT_EQ(projected.GetNumPoints(), 2);
    ExpectNear(projected, 0, {0, 0, 1, 0});
    ExpectNear(projected, 1, {1, -1, 1, 0});

    // Points 0 and 2 are nearer than 1.5 to their partners, point 1 just 1.5
    // away; polygons of different lengths leave the result alone.
    const CSSE3dPolygon first = PolygonOf({{0, 0, 0}, {5, 5, 0}, {9, 9, 0}});
    CSSE3dPolygon cut;
    ZrCSSEVertexContainer::CutProjPolygon(first, PolygonOf({{1, 0, 0}, {5, 6.5f, 0}, {9, 10, 0}}), &cut, 1.5f);
    EXPECT_EQ(vek::test::PointsOf(cut), (std::vector<Xyz>{{0, 0, 0}, {9, 9, 0}}));
    ZrCSSEVertexContainer::CutProjPolygon(first, projected, &cut, 100.0f);
    EXPECT_EQ(cut.GetNumPoints(), 2);

    // A quarter turn about x takes (x, y, z) to (x, z, -y); MoveVertex turns
    // about y to (z, y, -x), then about x the other way round: (z, x, y).
    SSEPoint p = Sse(1, 2, 3), q = Sse(1, 2, 3);
    ZrCSSEVertexContainer::RotateVertexX(1.5707964f, p);
    ZrCSSEVertexContainer::MoveVertex(1.5707964f, 1.5707964f, q);
    ExpectNear(p, {1, 3, -2, 0});
    ExpectNear(q, {3, 1, 2, 0});
}

TEST(VertexContainer, TurnIntoTheViewDirection)
{
    // The direction, and every point along it that is turned with it, ends
    // on the target axis with its length; inverted, on the negative axis.
    for (const bool invert : {false, true}) {
        const SSEPoint direction = Sse(2, -3, 6);  // length 7
        SSEPoint first = direction, second = Sse(4, -6, 12), third = direction;
        CSSE3dPolygon line = PolygonOf({{-2, 3, -6}});
        ZrCSSEVertexContainer::MoveTriangulationAndPolygonWithAngle(&first, &second, third, direction, &line, invert);
        const float z = invert ? -7.0f : 7.0f;
        for (const SSEPoint& p : {first, third}) ExpectNear(p, {0, 0, z, 0});
        ExpectNear(second, {0, 0, 2 * z, 0});
        ExpectNear(line, 0, {0, 0, -z, 0});
    }
}

TEST(VertexContainer, MatchingACoarseClosedPolygonWithAFineOne)
{
    // (5, -1) is nearest to the bottom side, midway: the later end wins the
    // tie. (-1, 2), by the closing side, is nearest to (0, 0).
    const std::vector<Xyz> corners{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}};
    CSSE3dPolygon square = PolygonOf(corners);
    int map[4] = {0, 1, 2, 3};
    ZrCSSEVertexContainer::FindClosedPolygonSafe(PolygonOf({{5, -1, 0}}), square, map);
    EXPECT_EQ(vek::test::PointsOf(square), (std::vector<Xyz>{corners[1], corners[2], corners[3], corners[0]}));
    EXPECT_EQ(std::vector<int>(map, map + 4), (std::vector<int>{1, 2, 3, 0}));
    CSSE3dPolygon unturned = PolygonOf(corners);
    int fresh[4] = {0, 1, 2, 3};
    ZrCSSEVertexContainer::FindClosedPolygonSafe(PolygonOf({{-1, 2, 0}}), unturned, fresh);
    EXPECT_EQ(std::pair(vek::test::PointOf(unturned, 0), fresh[0]), std::pair(corners[0], 0));

    // The fine line is the square resampled, `map` where each corner went.
    const CSSE3dPolygon coarse = PolygonOf(corners);
    CSSE3dPolygon fine(coarse);
    fine.ReParametrize(0.5f, map);
    for (int corner = 1; corner < 4; ++corner) {
        EXPECT_EQ(ZrCSSEVertexContainer::GetClosedPointSafe(coarse, fine, coarse, map, 0, 3, corner), corner);
    }
    // No match in a target whose nearest point is always its point 0: `first`.
    const CSSE3dPolygon far = PolygonOf({{100, 100, 0}, {200, 200, 0}});
    EXPECT_EQ(ZrCSSEVertexContainer::GetClosedPointSafe(coarse, fine, far, map, 1, 3, 1), 1);
    EXPECT_EQ(ZrCSSEVertexContainer::GetClosedPointSafe(coarse, fine, coarse, map, 0, 7, 1), -1);
}

} // namespace
