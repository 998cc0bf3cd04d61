// The vertex store: capacity, look-ups, whole-array changes and turns.

#include <gtest/gtest.h>

#include <cmath>

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

    store.SetZValueInVertex(-1, 1);
    ExpectPoint(store.GetVertex(1), 4, 5, -1);

    // A deep copy: changing the copy leaves the original alone.
    ZrCSSEVertexContainer copy;
    copy = store;
    copy.SetZValueInVertex(100, 0);
    EXPECT_EQ(store.GetVertex(0).z, 3.0f);
    EXPECT_EQ(copy.GetMaxNumVertices(), 3);
    ZrCSSEVertexContainer constructed(store);
    EXPECT_EQ(constructed.GetNumVertices(), 3);

    store.ReallocSize(0);
    EXPECT_EQ(store.GetNumVertices(), 0);
    EXPECT_EQ(store.GetMaxNumVertices(), 0);
    store.AppendVertex(P(1, 1));
    EXPECT_EQ(store.GetNumVertices(), 0);

    store.CreateVertexArray(5);
    EXPECT_EQ(store.GetMaxNumVertices(), 5);
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

} // namespace
