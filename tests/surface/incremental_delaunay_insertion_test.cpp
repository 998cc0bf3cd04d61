// Insertion of single vertices into small triangulations whose result can be
// worked out by hand.

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "surface/triangulation_checks.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

using vek::test::Triangles;

SSEPoint P(float x, float y, float z = 0.0f)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, 0.0f);
    return p;
}

std::set<int> CornerSet(const t_hdelaunaytriangle* t)
{
    return {t->Vertex[0], t->Vertex[1], t->Vertex[2]};
}

std::multiset<std::set<int>> CornerSets(CList<t_hdelaunaytriangle*>& list)
{
    std::multiset<std::set<int>> sets;
    for (const t_hdelaunaytriangle* t : Triangles(list)) sets.insert(CornerSet(t));
    return sets;
}

// The square (0,0) (10,0) (10,10) (0,10), triangulated from its first three
// corners: the fourth is joined from outside, and being cocircular with the
// others it does not flip the diagonal 0-2.
void SquareOfTwo(ZrCIncrementalDelaunay2D& d)
{
    d.AppendVertex(P(0, 0));
    d.AppendVertex(P(10, 0));
    d.AppendVertex(P(10, 10));
    d.AppendVertex(P(0, 10));
    d.Triangulate(4, false, false);
}

TEST(IncrementalInsertion, CocircularPointsDoNotFlip)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    EXPECT_EQ(CornerSets(d.GetTriangleList()), (std::multiset<std::set<int>>{{0, 1, 2}, {0, 2, 3}}));
    EXPECT_EQ(vek::test::LinkFault(Triangles(d.GetTriangleList())), "");
}

TEST(IncrementalInsertion, FewerThanThreeVerticesLeaveTheListsAlone)
{
    ZrCIncrementalDelaunay2D d(10);
    d.AppendVertex(P(0, 0));
    d.AppendVertex(P(1, 0));
    t_hdelaunaytriangle* kept = ZrCIncrementalDelaunay2D::InitNewTriangle();
    d.AppendTriangle(kept);
    d.Triangulate(2, true, true);
    EXPECT_FALSE(d.IsFinalized());
    ASSERT_EQ(d.GetNumTrianglesInTriangleList(), 1);
    EXPECT_EQ(d.GetTriangleList().GetHead(), kept);
    EXPECT_EQ(d.GetNumVertices(), 2);
}

// A point on the shared diagonal splits both triangles: four triangles
// around it, the neighbour marked and freed (the leak check of the
// sanitizer build sees to the freeing).
TEST(IncrementalInsertion, PointOnASharedEdgeGivesFourTriangles)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    d.InsertVertexIntoTriangulation(5.0f, 5.0f, true);
    EXPECT_EQ(CornerSets(d.GetFinalList()),
              (std::multiset<std::set<int>>{{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}}));
    const auto triangles = Triangles(d.GetFinalList());
    EXPECT_EQ(vek::test::LinkFault(triangles), "");
    EXPECT_EQ(vek::test::OpenSides(triangles), 4);
    EXPECT_TRUE(d.GetAffectedTriangleList().IsEmpty());
}

// Within the tolerance of 0.005 on twice the area, a point counts as on the
// border edge: two triangles, their outer sides open.
TEST(IncrementalInsertion, PointOnABorderEdgeGivesTwoTriangles)
{
    ZrCIncrementalDelaunay2D d(10);
    d.AppendVertex(P(0, 0));
    d.AppendVertex(P(10, 0));
    d.AppendVertex(P(0, 10));
    d.AppendVertex(P(5, 0.0002f));  // twice the area against side 0: 0.002
    d.Triangulate(4, true, false);
    EXPECT_EQ(CornerSets(d.GetFinalList()), (std::multiset<std::set<int>>{{0, 3, 2}, {3, 1, 2}}));
    for (const t_hdelaunaytriangle* t : Triangles(d.GetFinalList())) {
        const int open = (t->Neighbour[0] == nullptr) + (t->Neighbour[1] == nullptr) + (t->Neighbour[2] == nullptr);
        EXPECT_EQ(open, 2);
    }
}

// A point beyond the border sees the right and the bottom edge of the square
// and is joined by one triangle on each, open towards the outside.
TEST(IncrementalInsertion, PointOutsideGetsOneTrianglePerVisibleBorderEdge)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    d.InsertVertexIntoTriangulation(20.0f, -20.0f, true);
    EXPECT_EQ(CornerSets(d.GetFinalList()),
              (std::multiset<std::set<int>>{{0, 1, 2}, {0, 2, 3}, {1, 2, 4}, {0, 1, 4}}));
    const auto triangles = Triangles(d.GetFinalList());
    EXPECT_EQ(vek::test::LinkFault(triangles), "");
    for (const t_hdelaunaytriangle* t : triangles) {
        if (CornerSet(t).count(4) == 0) continue;
        EXPECT_NE(ZrCIncrementalDelaunay2D::FindNullNeighbour(t), eSideNone);
    }
}

TEST(IncrementalInsertion, DuplicatesStayIsolated)
{
    ZrCIncrementalDelaunay2D d(10);
    d.AppendVertex(P(0, 0));
    d.AppendVertex(P(10, 0));
    d.AppendVertex(P(0, 10));
    d.AppendVertex(P(3, 3));
    d.AppendVertex(P(3, 3, 7));   // same place, other height
    d.AppendVertex(P(10, 0));     // a corner again
    d.Triangulate(6, true, false);
    const std::set<int> corners = vek::test::Corners(Triangles(d.GetFinalList()));
    EXPECT_EQ(corners, (std::set<int>{0, 1, 2, 3}));
    EXPECT_EQ(d.GetNumTriangles(), 3);

    // The isolated vertices are not on the border, like the inner one.
    int* onBorder = d.IsolateVerticesWithoutNeighbour();
    EXPECT_EQ(std::vector<int>(onBorder, onBorder + 6), (std::vector<int>{0, 0, 0, 16843009, 16843009, 16843009}));
    delete[] onBorder;
}

TEST(IncrementalInsertion, NoExteriorInsertionOutsideTakesTheVertexBack)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    const std::uint64_t before = vek::test::ListHash(Triangles(d.GetTriangleList()));
    d.AppendVertex(P(40, 40));
    d.InsertVertexIntoTriangulationNoExterior(4);
    EXPECT_EQ(d.GetNumVertices(), 4);
    EXPECT_EQ(vek::test::ListHash(Triangles(d.GetTriangleList())), before);

    // Inside, the same call inserts.
    d.AppendVertex(P(7, 2));
    d.InsertVertexIntoTriangulationNoExterior(4);
    EXPECT_EQ(d.GetNumVertices(), 5);
    EXPECT_EQ(d.GetNumTrianglesInTriangleList(), 4);
}

// The corners of the bounding box are added as vertices, except where a
// vertex sits already: that one is used, not a copy.
TEST(IncrementalInsertion, BoxCornersReuseAVertexAtTheCorner)
{
    ZrCIncrementalDelaunay2D d(4);
    d.AppendVertex(P(0, 0, 1));
    d.AppendVertex(P(10, 3, 2));
    d.AppendVertex(P(4, 10, 3));
    d.AppendVertex(P(7, 7, 4));
    d.Triangulate(4, true, true);
    ASSERT_EQ(d.GetNumVertices(), 7);  // the store grew for the three corners
    EXPECT_EQ(d.PointIndex(P(0, 0)), 0);
    EXPECT_GE(d.PointIndex(P(10, 10)), 4);
    EXPECT_GE(d.PointIndex(P(0, 10)), 4);
    EXPECT_GE(d.PointIndex(P(10, 0)), 4);
    EXPECT_EQ(vek::test::Corners(Triangles(d.GetFinalList())).size(), 7u);
    // Two of the points lie on the box's border, so six vertices bound the
    // tiling and it has 2 * 7 - 6 - 2 triangles.
    EXPECT_EQ(d.GetNumTriangles(), 6);
}

TEST(IncrementalInsertion, InsertingIntoAFullStoreLosesOnlyThePoint)
{
    ZrCIncrementalDelaunay2D d(4);
    SquareOfTwo(d);
    d.InsertVertexIntoTriangulation(5.0f, 2.0f, true);
    EXPECT_EQ(d.GetNumVertices(), 4);
    EXPECT_EQ(d.GetNumTriangles(), 2);
}

TEST(IncrementalQueries, PointWhereUsesTheToleranceOnTwiceTheArea)
{
    ZrCIncrementalDelaunay2D d(10);
    d.AppendVertex(P(0, 0));
    d.AppendVertex(P(10, 0));
    d.AppendVertex(P(0, 10));
    t_hdelaunaytriangle t{};
    t.Vertex[0] = 0;
    t.Vertex[1] = 1;
    t.Vertex[2] = 2;
    EXPECT_EQ(d.PointWhere(2.0f, 2.0f, &t), ePointInside);
    EXPECT_EQ(d.PointWhere(5.0f, 0.0004f, &t), ePointOnSide0);  // 0.004 < 0.005
    EXPECT_EQ(d.PointWhere(5.0f, 0.0006f, &t), ePointInside);   // 0.006 is beyond
    EXPECT_EQ(d.PointWhere(5.0f, 5.0f, &t), ePointOnSide1);
    EXPECT_EQ(d.PointWhere(0.0f, 5.0f, &t), ePointOnSide2);
    EXPECT_EQ(d.PointWhere(0.0001f, 0.0001f, &t), ePointOutside);  // on two sides
    EXPECT_EQ(d.PointWhere(20.0f, 20.0f, &t), ePointOutside);

    // A clockwise triangle classifies by the mirrored test.
    std::swap(t.Vertex[1], t.Vertex[2]);
    EXPECT_EQ(d.PointWhere(2.0f, 2.0f, &t), ePointInside);

    // A counter-clockwise triangle of twice the area 0.004 counts as
    // clockwise, and nothing lies inside it.
    d.AppendVertex(P(0.1f, 0));
    d.AppendVertex(P(0, 0.04f));
    t_hdelaunaytriangle thin{};
    thin.Vertex[0] = 0;
    thin.Vertex[1] = 3;
    thin.Vertex[2] = 4;
    EXPECT_EQ(d.GetOrientation(&thin), -1);
    EXPECT_EQ(d.PointWhere(0.01f, 0.01f, &thin), ePointOutside);
}

TEST(IncrementalQueries, LocateBorderAndVisibility)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    d.AppendVertex(P(5, -3));
    d.FinalizeTriangleList();

    const t_hdelaunaytriangle* lower = d.FindTriangleFromCoords(2.0f, 1.0f);
    ASSERT_NE(lower, nullptr);
    EXPECT_EQ(CornerSet(lower), (std::set<int>{0, 1, 2}));
    EXPECT_EQ(d.FindTriangleFromCoords(5.0f, 5.0f), nullptr);  // on the diagonal
    EXPECT_EQ(d.FindTriangleFromCoords(15.0f, 5.0f), nullptr);

    // The bottom edge is the open side nearest to (5, -3) and the one that
    // it sees; the working list is what this query walks.
    d.CopyFinalTriangleListToTriangleList();
    ESharedSide side = eSideNone;
    const t_hdelaunaytriangle* nearest = d.FindNearestTriangle(4, side);
    ASSERT_EQ(nearest, lower);
    EXPECT_EQ(side, eSide0);
    EXPECT_TRUE(d.Visible(4, nearest, side));
    EXPECT_FALSE(d.Visible(4, nearest, eSide1));
    EXPECT_FALSE(d.Visible(4, nearest, eSideNone));

    d.AppendVertex(P(5, -3, 9));
    EXPECT_EQ(d.CompareVertexXY(4, 5), 1);
    EXPECT_EQ(d.CompareVertexXY(0, 1), 0);
}

TEST(IncrementalQueries, NearestTriangleComparesCentresAndNormals)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    d.ComputeNormalVectorsOfTriangles();
    d.FinalizeTriangleList();
    d.ComputeCentresOfTriangles();
    const auto triangles = Triangles(d.GetFinalList());
    t_hdelaunaytriangle* first = triangles[0];
    t_hdelaunaytriangle* second = triangles[1];
    EXPECT_FLOAT_EQ(ZrCIncrementalDelaunay2D::Visibility(first, second), 1.0f);

    // Without an offset a triangle is nearest to itself; shifted by the
    // difference of the centres, the other one is at distance 0.
    EXPECT_EQ(d.NearestTriangle(first, 0.5f, 1000.0f), first);
    SSEPoint offset;
    offset.sse = _mm_sub_ps(first->Center->sse, second->Center->sse);
    EXPECT_EQ(d.NearestTriangle(first, 0.5f, 1000.0f, offset), second);
    EXPECT_EQ(d.NearestTriangle(first, 1.0f, 1000.0f), nullptr);
    EXPECT_EQ(d.NearestTriangle(first, 0.5f, 0.0f), nullptr);
}

// A copy has its own records, linked afresh, in the source's order.
TEST(IncrementalLifetime, DeepCopyRebuildsTheSameGraph)
{
    ZrCIncrementalDelaunay2D copy;
    std::uint64_t sourceHash = 0;
    {
        ZrCIncrementalDelaunay2D source(40);
        for (int i = 0; i < 30; ++i) source.AppendVertex(P(static_cast<float>((i * 37) % 23), static_cast<float>((i * 11) % 17)));
        source.Triangulate(30, true, true);
        sourceHash = vek::test::ListHash(Triangles(source.GetFinalList()));
        copy.DeepCopyTriangulation(source, true);
        EXPECT_EQ(copy.GetNumVertices(), source.GetNumVertices());
    }
    EXPECT_TRUE(copy.IsFinalized());
    EXPECT_EQ(vek::test::ListHash(Triangles(copy.GetFinalList())), sourceHash);
    EXPECT_EQ(vek::test::LinkFault(Triangles(copy.GetFinalList())), "");
}

} // namespace
