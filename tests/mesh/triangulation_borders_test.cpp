#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "mesh_builders.h"
#include "vekdll/platform/user_hooks.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::ExpectSamePoint;
using vek::test::Fill;
using vek::test::Sse;

namespace {

// The stretches left in the list, released on the way.
std::vector<t_stretch> TakeStretches(CHTriangulation& mesh)
{
    std::vector<t_stretch> left;
    while (t_stretch* head = mesh.GetStretchListHead()) {
        left.push_back(*head);
        mesh.DeleteStretchFromList(head);
    }
    return left;
}

SSEPoint PolygonPoint(const CSSE3dPolygon& polygon, int i)
{
    SSEPoint p = Sse(-7, -7, -7);
    polygon.GetPointSSE(i, p);
    return p;
}

struct ExitCalled {
    int code;
};

TEST(CHTriangulationBorders, BorderLineTakesOneOpenEdgePerTriangleAndJumpsPastEverySecondStretch)
{
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{7, 7, 7}, {6, 5, 5}, {9, 9, 9}}},
                {{{5, 5, 5}, {6, 5, 5}, {8, 8, 8}}},
                {{{3, 3, 3}, {4, 4, 4}, {3, 4, 3}}},
                {{{9, 1, 1}, {1, 0, 0}, {2, 0, 0}}},
                {{{0, 0, 0}, {1, 0, 0}, {0, 5, 0}}}});
    t_htriangle* t = mesh.GetTriangles();
    t[2].Neighbour0 = t[2].Neighbour1 = t[2].Neighbour2 = &t[0]; // closed: no stretch
    t[3].Neighbour0 = &t[0];                                       // first open edge P1-P2
    t[4].Neighbour1 = &t[0];                                       // still P0-P1 first

    // In list order the stretches are those of triangles 4, 3, 1, 0. The walk
    // writes triangle 4's edge, goes on from its end into triangle 3's
    // stretch, then starts over at triangle 1, whose end meets triangle 0's
    // stretch at that stretch's P1.
    CSSE3dPolygon polygon;
    mesh.FindBorderLine(&polygon);
    ASSERT_EQ(polygon.GetNumPoints(), 4);
    ExpectSamePoint(PolygonPoint(polygon, 0), Sse(0, 0, 0));
    ExpectSamePoint(PolygonPoint(polygon, 1), Sse(1, 0, 0));
    ExpectSamePoint(PolygonPoint(polygon, 2), Sse(2, 0, 0));
    ExpectSamePoint(PolygonPoint(polygon, 3), Sse(7, 7, 7));

    // The stretches jumped over stay, and alias the corners of their triangles.
    const std::vector<t_stretch> left = TakeStretches(mesh);
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0].P0, t[3].P1);
    EXPECT_EQ(left[0].P1, t[3].P2);
    EXPECT_EQ(left[1].P0, t[0].P0);
    EXPECT_EQ(left[1].P1, t[0].P1);
}

TEST(CHTriangulationBorders, BorderLineOfNothingIsEmpty)
{
    CHTriangulation mesh(1, 1, 1, 1);
    t_htriangle* t = mesh.GetTriangle(0);
    t->Neighbour0 = t->Neighbour1 = t->Neighbour2 = t;
    CSSE3dPolygon polygon;
    polygon.Create(3);
    mesh.FindBorderLine(&polygon);
    EXPECT_EQ(polygon.GetNumPoints(), 0);
    EXPECT_EQ(mesh.GetStretchListHead(), nullptr);
    mesh.FindBorderLine(nullptr);
    EXPECT_EQ(mesh.GetStretchListHead(), nullptr);

    // A single open triangle: its edge gives the first two points, and the
    // count of one stretch leaves no room for more.
    Fill(mesh, {{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}});
    mesh.FindBorderLine(&polygon);
    ASSERT_EQ(polygon.GetNumPoints(), 1);
    ExpectSamePoint(PolygonPoint(polygon, 0), Sse(1, 2, 3));
    EXPECT_EQ(TakeStretches(mesh).size(), 1u);
}

TEST(CHTriangulationBorders, BorderLineThatCannotGoOnEndsInsteadOfSpinning)
{
    // Two triangles across one edge: the two open edges that come first do
    // not touch, so the walk has nowhere to go.
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{0, 0, 1}, {1, 0, 2}, {0, 1, 3}}}, {{{1, 1, 4}, {0, 1, 3}, {1, 0, 2}}}});
    mesh.CalcNeighbours();

    const vek::ExitHandler previous = vek::SetExitHandler([](int code) { throw ExitCalled{code}; });
    CSSE3dPolygon polygon;
    int code = -1;
    try {
        mesh.FindBorderLine(&polygon);
    } catch (const ExitCalled& exit) {
        code = exit.code;
    }
    vek::SetExitHandler(previous);
    EXPECT_EQ(code, EXIT_FAILURE);
    ExpectSamePoint(PolygonPoint(polygon, 0), Sse(1, 1, 4));
    ExpectSamePoint(PolygonPoint(polygon, 1), Sse(0, 1, 3));
    EXPECT_EQ(TakeStretches(mesh).size(), 2u);
}

} // namespace
