// Single insertions into small triangulations worked out by hand, and the point queries.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <vector>

#include "surface/triangulation_checks.h"

namespace {

using vek::test::CornerSets;
using vek::test::LinkFault;
using vek::test::ListShape;
using vek::test::P;
using vek::test::Triangles;
using Sets = std::multiset<std::set<int>>;

// The square (0,0) (10,0) (10,10) (0,10) from its first three corners: the
// fourth, cocircular with them, is joined from outside and flips nothing.
void SquareOfTwo(ZrCIncrementalDelaunay2D& d)
{
    for (const SSEPoint& p : {P(0, 0), P(10, 0), P(10, 10), P(0, 10)}) d.AppendVertex(p);
    d.Triangulate(4, false, false);
    ASSERT_EQ(CornerSets(d.GetTriangleList()), (Sets{{0, 1, 2}, {0, 2, 3}}));
}

TEST(IncrementalInsertion, OnePointIntoTheSquareOfTwoTriangles)
{
    const struct {
        const char* name;
        float x, y;
        int capacity;
        Sets triangles;
        int openSides;
    } cases[] = {
        // Both triangles split; the neighbour is freed (the leak check sees to it).
        {"on the shared diagonal", 5, 5, 10, {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}}, 4},
        {"outside, seeing two edges", 20, -20, 10, {{0, 1, 2}, {0, 2, 3}, {1, 2, 4}, {0, 1, 4}}, 4},
        // On the circle of both, so in neither; vertex 2 on the new circle flips nothing.
        {"on the circle, outside", -2, 4, 10, {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}}, 5},
        {"into a full store", 5, 2, 4, {{0, 1, 2}, {0, 2, 3}}, 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ZrCIncrementalDelaunay2D d(c.capacity);
        SquareOfTwo(d);
        d.InsertVertexIntoTriangulation(c.x, c.y, true);
        EXPECT_EQ(CornerSets(d.GetFinalList()), c.triangles);
        EXPECT_EQ(LinkFault(Triangles(d.GetFinalList())), "");
        EXPECT_EQ(vek::test::OpenSides(Triangles(d.GetFinalList())), c.openSides);
        EXPECT_TRUE(d.GetAffectedTriangleList().IsEmpty());
    }

    // Triangles joined from outside follow the old ones, in the order their
    // border sides were met (side 0, then 1 of the first triangle), each
    // turned as the side it leans on; later passes walk the list this way.
    ZrCIncrementalDelaunay2D joined(10);
    SquareOfTwo(joined);
    joined.InsertVertexIntoTriangulation(20, -20, true);
    std::vector<std::vector<int>> order;
    for (const t_hdelaunaytriangle* t : Triangles(joined.GetFinalList())) order.push_back(vek::test::CornersOf(t));
    EXPECT_EQ(order, (std::vector<std::vector<int>>{{0, 1, 2}, {2, 3, 0}, {1, 0, 4}, {4, 2, 1}}));

    // Without joining from outside, a point beyond the border is taken back,
    // whether or not it lies in a triangle's circle; one inside goes in.
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    const auto before = ListShape(d.GetTriangleList());
    for (const SSEPoint& beyond : {P(40, 40), P(5, -1)}) {
        d.AppendVertex(beyond);
        d.InsertVertexIntoTriangulationNoExterior(4);
        EXPECT_EQ(d.GetNumVertices(), 4);
        EXPECT_EQ(ListShape(d.GetTriangleList()), before);
    }
    d.AppendVertex(P(7, 2));
    d.InsertVertexIntoTriangulationNoExterior(4);
    EXPECT_EQ(std::pair(d.GetNumVertices(), d.GetNumTrianglesInTriangleList()), std::pair(5, 4));
}

TEST(IncrementalInsertion, BorderPointsDuplicatesAndTooFewVertices)
{
    // Within 0.005 on twice the area a point is on the border edge: two triangles.
    ZrCIncrementalDelaunay2D border(10);
    for (const SSEPoint& p : {P(0, 0), P(10, 0), P(0, 10), P(5, 0.0002f)}) border.AppendVertex(p);
    border.Triangulate(4, true, false);
    EXPECT_EQ(CornerSets(border.GetFinalList()), (Sets{{0, 3, 2}, {3, 1, 2}}));
    EXPECT_EQ(vek::test::OpenSides(Triangles(border.GetFinalList())), 4);

    // A point at the place of another, whatever its height, stays isolated and off the border.
    ZrCIncrementalDelaunay2D d(10);
    for (const SSEPoint& p : {P(0, 0), P(10, 0), P(0, 10), P(3, 3), P(3, 3, 7), P(10, 0)}) d.AppendVertex(p);
    d.Triangulate(6, true, false);
    EXPECT_EQ(vek::test::Corners(Triangles(d.GetFinalList())), (std::set<int>{0, 1, 2, 3}));
    EXPECT_EQ(d.GetNumTriangles(), 3);
    const std::unique_ptr<int[]> onBorder(d.IsolateVerticesWithoutNeighbour());
    EXPECT_EQ(std::vector<int>(&onBorder[0], &onBorder[6]), (std::vector<int>{0, 0, 0, 16843009, 16843009, 16843009}));

    // Fewer than three vertices leave the lists alone.
    ZrCIncrementalDelaunay2D two(10);
    for (const SSEPoint& p : {P(0, 0), P(1, 0)}) two.AppendVertex(p);
    t_hdelaunaytriangle* kept = vek::test::AddTriangle(two, 0, 0, 0);
    two.Triangulate(2, true, true);
    EXPECT_EQ(Triangles(two.GetTriangleList()), (std::vector<t_hdelaunaytriangle*>{kept}));
    EXPECT_TRUE(!two.IsFinalized() && two.GetNumVertices() == 2);
}

// Where the float decisions disagree, the links of the graph stop matching
// and an insertion may meet a triangle it has dropped (a fault the address
// sanitizer reports). Whatever the triangles then are, every link of the
// finished list leads to a triangle of that list or to nothing.
TEST(IncrementalInsertion, DegeneratePointSetsLinkOnlyToListedTriangles)
{
    const std::vector<std::vector<float>> sets = {
        // Two coincident points among the first three, no box corners.
        {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0, 0, 8, 4.5f, 3, 0, 3.5f, 14, 7, 0, 8, 0, 0, 0, 0, 0, 6.5f, 6.5f, 6.5f, 6, 7},
        {0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0, 0, 8, 5.5f, 3, 0, 7.5f, 7.5f, 7.5f, 7.5f, 4, 4, 4, 7.5f, 7.5f, 0, 0, 6.5f, 6.5f, 6.5f, 6},
    };
    for (const std::vector<float>& xy : sets) {
        ZrCIncrementalDelaunay2D d(static_cast<int>(xy.size()));
        for (std::size_t i = 0; i + 1 < xy.size(); i += 2) d.AppendVertex(P(xy[i], xy[i + 1]));
        d.Triangulate(d.GetNumVertices(), true, false);
        const std::vector<t_hdelaunaytriangle*> listed = Triangles(d.GetFinalList());
        for (const t_hdelaunaytriangle* t : listed) {
            for (const t_hdelaunaytriangle* n : t->Neighbour) {
                EXPECT_TRUE(n == nullptr || std::find(listed.begin(), listed.end(), n) != listed.end());
            }
        }
    }
}

// The corners of the bounding box are added as vertices, except where a
// vertex sits already: that one is used, not a copy.
TEST(IncrementalInsertion, BoxCornersReuseAVertexAtTheCorner)
{
    ZrCIncrementalDelaunay2D d(4);
    for (const SSEPoint& p : {P(0, 0, 1), P(10, 3, 2), P(4, 10, 3), P(7, 7, 4)}) d.AppendVertex(p);
    d.Triangulate(4, true, true);
    ASSERT_EQ(d.GetNumVertices(), 7);  // the store grew for the three corners
    EXPECT_EQ(d.PointIndex(P(0, 0)), 0);
    for (const SSEPoint& corner : {P(10, 10), P(0, 10), P(10, 0)}) EXPECT_GE(d.PointIndex(corner), 4);
    // Two of the points lie on the box's border, so six vertices bound the
    // tiling of all seven, and it has 2 * 7 - 6 - 2 triangles.
    EXPECT_EQ(vek::test::Corners(Triangles(d.GetFinalList())).size(), 7u);
    EXPECT_EQ(d.GetNumTriangles(), 6);
}

TEST(IncrementalQueries, PointWhereUsesTheToleranceOnTwiceTheArea)
{
    ZrCIncrementalDelaunay2D d(10);
    for (const SSEPoint& p : {P(0, 0), P(10, 0), P(0, 10), P(0.1f, 0), P(0, 0.04f)}) d.AppendVertex(p);
    t_hdelaunaytriangle t = vek::test::Unlisted(0, 1, 2);
    const struct {
        float x, y;
        EPointWhere where;
    } cases[] = {
        {2, 2, ePointInside},           {5, 0.00049f, ePointOnSide0},  // 0.0049 < 0.005
        {5, 0.00051f, ePointInside},    {5, 5, ePointOnSide1},         // 0.0051 is beyond
        {0, 5, ePointOnSide2},          {0.0001f, 0.0001f, ePointOutside},  // on two sides
        {20, 20, ePointOutside},
    };
    for (const auto& c : cases) EXPECT_EQ(d.PointWhere(c.x, c.y, &t), c.where) << c.x << ", " << c.y;
    std::swap(t.Vertex[1], t.Vertex[2]);  // clockwise: the mirrored test
    EXPECT_EQ(d.PointWhere(2.0f, 2.0f, &t), ePointInside);
    // Counter-clockwise, but of twice the area 0.004: counted clockwise, with nothing inside.
    t_hdelaunaytriangle thin = vek::test::Unlisted(0, 3, 4);
    EXPECT_EQ(d.GetOrientation(&thin), -1);
    EXPECT_EQ(d.PointWhere(0.01f, 0.01f, &thin), ePointOutside);
}

TEST(IncrementalQueries, LocateNearestAndVisible)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfTwo(d);
    d.AppendVertex(P(5, -3));
    d.ComputeNormalVectorsOfTriangles();
    d.FinalizeTriangleList();
    d.ComputeCentresOfTriangles();

    t_hdelaunaytriangle* lower = d.FindTriangleFromCoords(2.0f, 1.0f);
    ASSERT_NE(lower, nullptr);
    EXPECT_EQ(vek::test::Corners({lower}), (std::set<int>{0, 1, 2}));
    EXPECT_EQ(d.FindTriangleFromCoords(5.0f, 5.0f), nullptr);  // on the diagonal
    EXPECT_EQ(d.FindTriangleFromCoords(15.0f, 5.0f), nullptr);

    // Without an offset a triangle is nearest to itself; shifted by the
    // difference of the centres, the other one is at distance 0.
    t_hdelaunaytriangle* upper = d.FindTriangleFromCoords(1.0f, 2.0f);
    EXPECT_FLOAT_EQ(ZrCIncrementalDelaunay2D::Visibility(lower, upper), 1.0f);
    EXPECT_EQ(d.NearestTriangle(lower, 0.5f, 1000.0f), lower);
    SSEPoint offset;
    offset.sse = _mm_sub_ps(lower->Center->sse, upper->Center->sse);
    EXPECT_EQ(d.NearestTriangle(lower, 0.5f, 1000.0f, offset), upper);
    EXPECT_EQ(d.NearestTriangle(lower, 1.0f, 1000.0f), nullptr);
    EXPECT_EQ(d.NearestTriangle(lower, 0.5f, 0.0f), nullptr);

    // The bottom edge is the open side nearest to (5, -3), and seen from it (working list).
    d.CopyFinalTriangleListToTriangleList();
    ESharedSide side = eSideNone;
    EXPECT_EQ(std::pair(d.FindNearestTriangle(4, side), side), std::pair(lower, eSide0));
    EXPECT_TRUE(d.Visible(4, lower, eSide0));
    EXPECT_FALSE(d.Visible(4, lower, eSide1) || d.Visible(4, lower, eSideNone));
    d.AppendVertex(P(5, -3, 9));
    EXPECT_EQ(std::pair(d.CompareVertexXY(4, 5), d.CompareVertexXY(0, 1)), std::pair(1, 0));
}

// A copy has its own records, linked afresh, in the source's order.
TEST(IncrementalLifetime, DeepCopyRebuildsTheSameGraph)
{
    ZrCIncrementalDelaunay2D copy;
    std::vector<long> sourceShape;
    {
        ZrCIncrementalDelaunay2D source(40);
        for (int i = 0; i < 30; ++i) source.AppendVertex(P(float(i * 37 % 23), float(i * 11 % 17)));
        source.Triangulate(30, true, true);
        sourceShape = ListShape(source.GetFinalList());
        copy.DeepCopyTriangulation(source, true);
        EXPECT_EQ(copy.GetNumVertices(), source.GetNumVertices());
    }
    EXPECT_TRUE(copy.IsFinalized());
    EXPECT_EQ(ListShape(copy.GetFinalList()), sourceShape);
}

} // namespace
