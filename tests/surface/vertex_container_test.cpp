// The vertex store: capacity, look-ups, whole-array changes and turns.

#include <gtest/gtest.h>

#include <cmath>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/vertex_container.h"

namespace {

SSEPoint P(float x, float y, float z = 0.0f, float w = 0.0f)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, w);
    return p;
}

void ExpectPoint(const SSEPoint& p, float x, float y, float z, float w = 0.0f)
{
    EXPECT_FLOAT_EQ(p.x, x);
    EXPECT_FLOAT_EQ(p.y, y);
    EXPECT_FLOAT_EQ(p.z, z);
    EXPECT_FLOAT_EQ(p.w, w);
}

TEST(VertexContainerCapacity, GrowsOnlyWhenAskedAndKeepsIndices)
{
    ZrCSSEVertexContainer store(2);
    store.AppendVertex(P(1, 2, 3));
    store.AppendVertex(P(4, 5, 6));
    store.AppendVertex(P(7, 8, 9));  // full: lost without a word
    EXPECT_EQ(store.GetNumVertices(), 2);
    EXPECT_EQ(store.GetMaxNumVertices(), 2);

    store.ReallocSize(3);
    store.AppendVertex(P(7, 8, 9));
    EXPECT_EQ(store.GetNumVertices(), 3);
    EXPECT_EQ(store.GetMaxNumVertices(), 3);
    ExpectPoint(store.GetVertex(0), 1, 2, 3);
    ExpectPoint(store.GetVertex(2), 7, 8, 9);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(store.GetVertexPtr(0)) % 16, 0u);

    // A deep copy: changing the copy leaves the original alone.
    ZrCSSEVertexContainer copy;
    copy = store;
    copy.SetZValueInVertex(100, 0);
    EXPECT_EQ(store.GetVertex(0).z, 3.0f);
    EXPECT_EQ(copy.GetMaxNumVertices(), 3);

    store.ReallocSize(0);
    EXPECT_EQ(store.GetNumVertices(), 0);
    EXPECT_EQ(store.GetMaxNumVertices(), 0);
    store.AppendVertex(P(1, 1));
    EXPECT_EQ(store.GetNumVertices(), 0);

    // A negative capacity is recorded as it is and stores nothing.
    ZrCSSEVertexContainer negative(-3);
    negative.AppendVertex(P(1, 1));
    EXPECT_EQ(negative.GetMaxNumVertices(), -3);
    EXPECT_EQ(negative.GetNumVertices(), 0);
}

TEST(VertexContainerLookup, FirstMatchWinsAndZIsAskedOnlyIn3D)
{
    ZrCSSEVertexContainer store(10);
    store.AppendVertex(P(1, 1, 5));
    store.AppendVertex(P(3, 4, 0));
    store.AppendVertex(P(3, 4, 7));
    store.AppendVertex(P(6, 0, 0));

    EXPECT_EQ(store.IsVertexExist(P(3, 4, 99), 0.0f), 1);
    EXPECT_EQ(store.IsVertexExist(P(3.5f, 4, 0), 0.0f), -1);
    // With a tolerance, tolerance^2 >= dx^2 + dy^2: (3, 4) is 5 from (0, 0).
    EXPECT_EQ(store.IsVertexExist(P(0, 0), 5.0f), 0);
    EXPECT_EQ(store.IsVertexExist(P(6, 3), 3.0f), 3);  // exactly 3 from (6, 0)
    EXPECT_EQ(store.IsVertexExist(P(20, 20), 3.0f), -1);

    EXPECT_EQ(store.PointIndex(P(3, 4, 7)), 1);
    EXPECT_EQ(store.PointIndex3D(P(3, 4, 7), 0, 4), 2);
    EXPECT_EQ(store.PointIndex3D(P(3, 4, 7), 0, 2), -1);
    EXPECT_EQ(store.PointIndex3D(P(3, 4, 7), 3, 3), -1);
    EXPECT_EQ(store.PointIndex3D(P(3, 4, 7), 0, 1000), 2);

    ZrCSSEVertexContainer empty;
    EXPECT_EQ(empty.IsVertexExist(P(0, 0), 1.0f), -1);
    SSEPoint extreme;
    EXPECT_EQ(empty.MinPointIndex(extreme), -1);
    ExpectPoint(extreme, 999999.9f, 999999.9f, 999999.9f, 999999.9f);
    ExpectPoint(empty.MaxPoint(), -999999.9f, -999999.9f, -999999.9f, -999999.9f);
}

TEST(VertexContainerLookup, ExtremesAreLaneWiseAndMayMissEveryVertex)
{
    ZrCSSEVertexContainer store(10);
    store.AppendVertex(P(0, 5, 2));
    store.AppendVertex(P(5, 0, -1));
    store.AppendVertex(P(5, 5, 3));
    SSEPoint extreme;
    // No vertex at the lower left corner (0, 0), but the extreme is stored.
    EXPECT_EQ(store.MinPointIndex(extreme), -1);
    ExpectPoint(extreme, 0, 0, -1);
    EXPECT_EQ(store.MaxPointIndex(extreme), 2);
    ExpectPoint(extreme, 5, 5, 3);
}

TEST(VertexContainerGeometry, OffsetsProjectionAndTurns)
{
    ZrCSSEVertexContainer store(4);
    store.AppendVertex(P(1, 2, 3, 9));
    store.AddOffset(1, 1, 1);
    store.AddError(P(0.5f, 0, -1, 100));
    ExpectPoint(store.GetVertex(0), 2.5f, 3, 3, 9);  // w stays

    // Onto the plane z = 2: the point drops straight down.
    SSEPoint projected;
    ZrCSSEVertexContainer::CalcProjectionPoint(P(3, 4, 7), projected, P(0, 0, 2), P(0, 0, 1));
    ExpectPoint(projected, 3, 4, 2);
    // Onto the plane x + y = 0 with unit normal (1, 1, 0) / sqrt(2).
    const float h = 1.0f / std::sqrt(2.0f);
    ZrCSSEVertexContainer::CalcProjectionPoint(P(2, 0, 1), projected, P(0, 0, 0), P(h, h, 0));
    EXPECT_NEAR(projected.x, 1.0f, 1e-6);
    EXPECT_NEAR(projected.y, -1.0f, 1e-6);
    EXPECT_EQ(projected.z, 1.0f);

    // A quarter turn about x takes (x, y, z) to (x, z, -y).
    SSEPoint p = P(1, 2, 3);
    ZrCSSEVertexContainer::RotateVertexX(1.5707964f, p);
    EXPECT_NEAR(p.y, 3.0f, 1e-6);
    EXPECT_NEAR(p.z, -2.0f, 1e-6);
    EXPECT_EQ(p.x, 1.0f);

    // A quarter turn about y takes (x, y, z) to (z, y, -x); then a quarter
    // turn about x in the other sense to (z, x, y).
    p = P(1, 2, 3);
    ZrCSSEVertexContainer::MoveVertex(1.5707964f, 0.0f, p);
    EXPECT_NEAR(p.x, 3.0f, 1e-6);
    EXPECT_NEAR(p.z, -1.0f, 1e-6);
    p = P(1, 2, 3);
    ZrCSSEVertexContainer::MoveVertex(1.5707964f, 1.5707964f, p);
    EXPECT_NEAR(p.x, 3.0f, 1e-6);
    EXPECT_NEAR(p.y, 1.0f, 1e-6);
    EXPECT_NEAR(p.z, 2.0f, 1e-6);
}

CSSE3dPolygon Polygon(std::initializer_list<SSEPoint> points)
{
    CSSE3dPolygon polygon;
    polygon.Create(static_cast<int>(points.size()));
    int i = 0;
    for (SSEPoint p : points) polygon.SetPointSSE(i++, p);
    return polygon;
}

SSEPoint PointOf(const CSSE3dPolygon& polygon, int i)
{
    SSEPoint p;
    polygon.GetPointSSE(i, p);
    return p;
}

TEST(VertexContainerPolygons, StoringPolygonsAndTakingHeights)
{
    // Room for three; the second point lies within 1.0 of the first.
    ZrCSSEVertexContainer store(3);
    store.AddPolygon(Polygon({P(0, 0, 1), P(0.6f, 0.8f, 2), P(5, 0, 3), P(9, 9, 4), P(20, 0, 5)}), true);
    EXPECT_EQ(store.GetNumVertices(), 3);
    ExpectPoint(store.GetVertex(1), 5, 0, 3);
    ExpectPoint(store.GetVertex(2), 9, 9, 4);

    // Heights from a second line, matched by nearest point (in 3D, like
    // the polygon's ClosestPoint); a polygon point without an equal vertex
    // changes nothing.
    store.ResetVertexFromPolygon(Polygon({P(5, 0, 3), P(1, 1, 1)}), Polygon({P(5, 0.5f, 4), P(0, 0, 10)}));
    EXPECT_EQ(store.GetVertex(1).z, 4.0f);
    EXPECT_EQ(store.GetVertex(0).z, 1.0f);

    // Cell (x, y) is truncate(coordinate + 0.5), clamped to the field.
    CSSEMatrix field;
    field.Create(4, 3);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 4; ++x) field.SetPoint(x, y, 10.0f * x + y);
    }
    ZrCSSEVertexContainer cells(4);
    cells.AppendVertex(P(0.4f, 0.6f));
    cells.AppendVertex(P(-5, 100));
    cells.AppendVertex(P(2.5f, 1.49f));
    cells.AppendVertex(P(1e30f, -1e30f));
    cells.SetVertexZFromMatrix(field);
    EXPECT_EQ(cells.GetVertex(0).z, 1.0f);
    EXPECT_EQ(cells.GetVertex(1).z, 2.0f);
    EXPECT_EQ(cells.GetVertex(2).z, 31.0f);
    EXPECT_EQ(cells.GetVertex(3).z, 30.0f);
}

TEST(VertexContainerPolygons, ProjectionAndCutOfPolygons)
{
    const CSSE3dPolygon source = Polygon({P(1, 2, 5), P(3, 4, -1)});
    CSSE3dPolygon projected;
    ZrCSSEVertexContainer::CalcProjectPolygon(P(0, 0, 2), P(0, 0, 1), source, projected);
    ASSERT_EQ(projected.GetNumPoints(), 2);
    ExpectPoint(PointOf(projected, 1), 3, 4, 2);

    // Points 0 and 2 are closer than 1.5 to their partners.
    const CSSE3dPolygon first = Polygon({P(0, 0), P(5, 5), P(9, 9)});
    const CSSE3dPolygon second = Polygon({P(1, 0), P(5, 7), P(9, 10)});
    CSSE3dPolygon cut;
    ZrCSSEVertexContainer::CutProjPolygon(first, second, &cut, 1.5f);
    ASSERT_EQ(cut.GetNumPoints(), 2);
    ExpectPoint(PointOf(cut, 1), 9, 9, 0);
    ZrCSSEVertexContainer::CutProjPolygon(first, source, &cut, 100.0f);  // lengths differ
    EXPECT_EQ(cut.GetNumPoints(), 2);
    ZrCSSEVertexContainer::CutProjPolygon(first, second, nullptr, 1.5f);
}

TEST(VertexContainerPolygons, TurnIntoTheViewDirection)
{
    // Along +z nothing turns.
    SSEPoint a = P(1, 2, 3);
    SSEPoint b = P(-4, 5, 6);
    SSEPoint c = P(7, -8, 9);
    CSSE3dPolygon polygon = Polygon({P(1, 1, 1)});
    ZrCSSEVertexContainer::MoveTriangulationAndPolygonWithAngle(&a, &b, c, P(0, 0, 5), &polygon, false);
    ExpectPoint(a, 1, 2, 3);
    ExpectPoint(c, 7, -8, 9);
    ExpectPoint(PointOf(polygon, 0), 1, 1, 1);

    // Any direction, turned with the rest, ends on the target axis with its
    // length; inverted, on the negative axis.
    for (const bool invert : {false, true}) {
        const SSEPoint direction = P(2, -3, 6);  // length 7
        SSEPoint turned = direction;
        CSSE3dPolygon line = Polygon({direction});
        ZrCSSEVertexContainer::MoveTriangulationAndPolygonWithAngle(nullptr, nullptr, turned, direction, &line, invert);
        EXPECT_NEAR(turned.x, 0.0f, 1e-5);
        EXPECT_NEAR(turned.y, 0.0f, 1e-5);
        EXPECT_NEAR(turned.z, invert ? -7.0f : 7.0f, 1e-5);
        EXPECT_NEAR(PointOf(line, 0).z, turned.z, 1e-6);
    }
}

// The square (0,0) (10,0) (10,10) (0,10), with a map that numbers its points.
struct SquareMatch {
    CSSE3dPolygon square = Polygon({P(0, 0), P(10, 0), P(10, 10), P(0, 10)});
    int map[4] = {0, 1, 2, 3};
};

TEST(VertexContainerMatching, ClosedPolygonStartsNearTheReference)
{
    // (9, 1) is nearest to the bottom side, and of its ends to (10, 0).
    SquareMatch m;
    ZrCSSEVertexContainer::FindClosedPolygonSafe(Polygon({P(9, 1)}), m.square, m.map);
    ExpectPoint(PointOf(m.square, 0), 10, 0, 0);
    ExpectPoint(PointOf(m.square, 3), 0, 0, 0);
    EXPECT_EQ(std::vector<int>(m.map, m.map + 4), (std::vector<int>{1, 2, 3, 0}));

    // On the closing side (0,10)-(0,0), nearer to (0, 0).
    SquareMatch closing;
    ZrCSSEVertexContainer::FindClosedPolygonSafe(Polygon({P(-1, 2)}), closing.square, closing.map);
    ExpectPoint(PointOf(closing.square, 0), 0, 0, 0);
    EXPECT_EQ(closing.map[0], 0);
}

TEST(VertexContainerMatching, ClosedPointOfACoarseLine)
{
    // The fine line is the square resampled, and `map` says where each
    // corner went; the target is the square itself.
    const CSSE3dPolygon coarse = Polygon({P(0, 0), P(10, 0), P(10, 10), P(0, 10)});
    CSSE3dPolygon fine(coarse);
    int map[4];
    fine.ReParametrize(0.5f, map);
    for (int corner = 1; corner < 4; ++corner)
        EXPECT_EQ(ZrCSSEVertexContainer::GetClosedPointSafe(coarse, fine, coarse, map, 0, 3, corner), corner);

    // A target whose every nearest point is its point 0 gives no match for
    // its point 1, and the search answers with `first`.
    const CSSE3dPolygon far = Polygon({P(100, 100), P(200, 200)});
    EXPECT_EQ(ZrCSSEVertexContainer::GetClosedPointSafe(coarse, fine, far, map, 1, 3, 1), 1);
    EXPECT_EQ(ZrCSSEVertexContainer::GetClosedPointSafe(coarse, fine, coarse, map, 0, 7, 1), -1);
}

} // namespace
