// The operations of the triangle graph on small graphs built by hand.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "surface/triangulation_checks.h"

namespace {

using Graph = ZrCIncrementalDelaunay2D;
using vek::test::AddTriangle;
using vek::test::CornersOf;
using vek::test::LinkFault;
using vek::test::P;
using vek::test::Triangles;
using Fan = std::vector<t_hdelaunaytriangle*>;

void LinkAll(const Fan& triangles)
{
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        for (std::size_t j = i + 1; j < triangles.size(); ++j) Graph::FindNeighbours(triangles[i], triangles[j]);
    }
}

// Fan triangle i is (0, i, i + 1) around the centre vertex 0: side 0 faces
// fan triangle i - 1, side 2 fan triangle i + 1. Only a closed fan has (0, 6, 1).
Fan MakeFan(Graph& g, bool closed)
{
    g.AppendVertex(P(0, 0));
    for (int i = 0; i < 6; ++i) g.AppendVertex(P(10 * std::cos(1.0471976f * i), 10 * std::sin(1.0471976f * i)));
    Fan fan;
    for (int i = 1; i <= 5; ++i) fan.push_back(AddTriangle(g, 0, i, i + 1));
    if (closed) fan.push_back(AddTriangle(g, 0, 6, 1));
    LinkAll(fan);
    return fan;
}

TEST(TriangleGraph, SidesAreComparedByVertexIndex)
{
    Graph g(10);
    t_hdelaunaytriangle* a = AddTriangle(g, 0, 1, 2);
    t_hdelaunaytriangle* b = AddTriangle(g, 2, 1, 3);
    t_hdelaunaytriangle* lone = AddTriangle(g, 4, 5, 6);
    EXPECT_EQ(Graph::FindCommonSide(a, a), eSide0);
    EXPECT_EQ(Graph::FindCommonSide(a, b), eSide1);
    EXPECT_EQ(Graph::FindCommonSide(1, a, b), eSide0);  // 1-2 is b's 2-1
    EXPECT_EQ(Graph::FindCommonSide(0, a, b), eSideNone);
    EXPECT_TRUE(Graph::EdgesEqual(1, a, 7, b));  // side 7 is read as side 0

    Graph::FindNeighbours(a, b);
    EXPECT_EQ(std::pair(a->Neighbour[1], b->Neighbour[0]), std::pair(b, a));
    EXPECT_EQ(Graph::FindNullNeighbour(a), eSide0);
    a->Neighbour[0] = a->Neighbour[2] = lone;
    EXPECT_EQ(Graph::FindNullNeighbour(a), eSideNone);
    EXPECT_FALSE(Graph::CheckNeighbours(a));  // lone does not carry 0-1

    // b's slot that faces a is rewritten, by pointer or by vertices.
    Graph::ReplaceMeInNeighbours(a, 1, lone);
    EXPECT_EQ(b->Neighbour[0], lone);
    Graph::ReplaceNeighbourInNeighbour(a, 1, a);
    EXPECT_EQ(b->Neighbour[0], a);
}

TEST(TriangleGraph, FanWalksGoOnceAroundOrFinishInASecondPhase)
{
    Graph g(20);
    const Fan fan = MakeFan(g, true);
    CList<t_hdelaunaytriangle*> found;
    // From fan triangle 3 towards 4: the start and its first neighbour are
    // the caller's own; a second walk finds the others visited already.
    Graph::FindTrianglesWithCommonVertex(0, fan[2], 2, &found);
    EXPECT_EQ(Triangles(found), (Fan{fan[4], fan[5], fan[0], fan[1]}));
    Graph::FindTrianglesWithCommonVertex(0, fan[2], 2, &found);
    EXPECT_EQ(found.GetCount(), 4);
    EXPECT_TRUE(Graph::FindTrianglesWithCommonVertex(0, fan[2], 2, 6));
    EXPECT_FALSE(Graph::FindTrianglesWithCommonVertex(0, fan[2], 2, 42));
    EXPECT_TRUE(Graph::CheckCommonEdge(fan[2], 0, 5) && !Graph::CheckCommonEdge(fan[2], 7, 5));  // 7 is no corner
    EXPECT_FALSE(Graph::SearchAroundVertex(fan[2], 0, 2));
    fan[5]->Ignore = true;
    EXPECT_TRUE(Graph::SearchAroundVertex(fan[2], 0, 2));
    // Renaming spares the start and its first neighbour.
    Graph::ResetVertexInTriangles(0, 9, fan[0], 2);
    EXPECT_EQ(std::vector({fan[0]->Vertex[0], fan[1]->Vertex[0], fan[2]->Vertex[0], fan[5]->Vertex[0]}),
              std::vector({0, 0, 9, 9}));

    // Open: the first phase meets the border at fan triangle 5, the second sets out across side 0.
    Graph open(20);
    const Fan part = MakeFan(open, false);
    EXPECT_TRUE(Graph::SearchAroundVertex(part[2], 0, 2));
    CList<t_hdelaunaytriangle*> walked;
    Graph::FindTrianglesWithCommonVertex(0, part[2], 2, &walked);
    EXPECT_EQ(Triangles(walked), (Fan{part[4], part[1], part[0]}));
    // Across side 0 first, the second phase, still remembering where it came
    // from, steps back onto the start and ends: vertex 6 is never reached.
    EXPECT_FALSE(Graph::FindTrianglesWithCommonVertex(0, part[2], 0, 6));
    EXPECT_TRUE(Graph::FindTrianglesWithCommonVertex(0, part[2], 2, 6));
}

// Triangles upper A B C, lower B A D and outer B E C of a diamond: D, and C
// unless raised, sees A-B under almost 160 degrees, so the angle flip turns it.
std::array<t_hdelaunaytriangle*, 3> Diamond(Graph& g, float cy = 1.0f)
{
    for (const SSEPoint& p : {P(0, 0), P(10, 0), P(5, cy), P(5, -1), P(10, 5)}) g.AppendVertex(p);  // A B C D E
    const std::array t = {AddTriangle(g, 0, 1, 2), AddTriangle(g, 1, 0, 3), AddTriangle(g, 1, 4, 2)};
    LinkAll({t.begin(), t.end()});
    return t;
}

TEST(TriangleGraph, AngleFlipTurnsTheDiagonalOnceAndKeepsTheLinks)
{
    Graph g(10);
    const auto [upper, lower, outer] = Diamond(g);
    upper->CircleX = 123.0f;
    g.LegalizeEdges(upper, 0);
    EXPECT_EQ(std::pair(CornersOf(upper), CornersOf(lower)), std::pair(std::vector{3, 2, 0}, std::vector{2, 3, 1}));
    EXPECT_EQ(std::pair(upper->Neighbour[0], lower->Neighbour[2]), std::pair(lower, outer));  // B-C moved down
    EXPECT_EQ(LinkFault(Triangles(g.GetTriangleList())), "");
    EXPECT_TRUE(upper->FlipState && lower->FlipState && upper->CircleX == 123.0f);  // circles stay stale
    g.LegalizeEdges(upper, 0);  // marked, the pair takes part in no further flip
    EXPECT_EQ(upper->Vertex[0], 3);
    // From below: C at (5, 5.05) sees A-B under 89.4 degrees and keeps it;
    // at (5, 4.95), under 90.6 degrees, the diagonal turns.
    for (const float cy : {5.05f, 4.95f}) {
        Graph steep(10);
        t_hdelaunaytriangle* below = Diamond(steep, cy)[1];
        steep.LegalizeEdges(below, 0);
        EXPECT_EQ(CornersOf(below), (cy > 5 ? std::vector<int>{1, 0, 3} : std::vector<int>{2, 3, 1})) << cy;
    }

    // FlipState on the neighbour blocks the flip; CheckEdgeFlip flips the side facing obtuse C.
    Graph e(10);
    const auto [eUpper, eLower, eOuter] = Diamond(e);
    eLower->FlipState = true;
    const auto before = vek::test::ListShape(e.GetTriangleList());
    e.LegalizeEdges(eUpper, 0);
    EXPECT_EQ(vek::test::ListShape(e.GetTriangleList()), before);
    eLower->FlipState = false;
    e.CheckEdgeFlip(&e.GetTriangleList());
    EXPECT_EQ(eUpper->Vertex[0], 3);
}

TEST(TriangleGraph, MarkedAndOpenTrianglesGoOrComeBack)
{
    // A closed fan with an ear hanging on its outer side 1-2.
    const auto fanWithEar = [](Graph& g) {
        Fan fan = MakeFan(g, true);
        g.AppendVertex(P(12, 5));
        Graph::FindNeighbours(fan[0], AddTriangle(g, 1, 7, 2));
        return fan;
    };
    // An enclosed marked triangle is taken back, one at the border freed and
    // unlinked; then what has two open sides is peeled, layer by layer.
    Graph g(20);
    Fan fan = fanWithEar(g);
    fan[0]->Ignore = fan[3]->Ignore = true;
    g.CheckAndKillIgnoredTrianglesFromTriangleList();
    EXPECT_EQ(Triangles(g.GetTriangleList()).size(), 6u);
    EXPECT_TRUE(!fan[0]->Ignore && fan[2]->Neighbour[2] == nullptr);
    EXPECT_EQ(LinkFault(Triangles(g.GetTriangleList())), "");
    g.DeleteTrianglesWithTwoNULLNeighbours();
    EXPECT_EQ(g.GetNumTrianglesInTriangleList(), 0);

    // Peeling stops at the closed fan, whose triangles each have one open side.
    Graph h(20);
    fan = fanWithEar(h);
    h.DeleteTrianglesWithTwoNULLNeighbours();
    EXPECT_EQ(Triangles(h.GetTriangleList()), fan);
    EXPECT_EQ(fan[0]->Neighbour[1], nullptr);
    h.DeleteAllTrianglesWithNULLNeighbour();
    EXPECT_EQ(h.GetNumTrianglesInTriangleList(), 0);
    Graph closed(20);
    fanWithEar(closed);
    closed.DeleteAllTrianglesWithNULLNeighbour();  // fan triangle 1, closed by the ear, goes in a second pass
    EXPECT_EQ(closed.GetNumTrianglesInTriangleList(), 0);
    AddTriangle(h, 0, 1, 2);  // a lone triangle has no neighbour at all
    h.FinalizeTriangleList();
    h.DeleteTrianglesWithoutNeighbours();
    EXPECT_TRUE(!h.IsFinalized() && h.GetTriangleList().IsEmpty());
}

// Coincident points among the first three, without box corners, leave one
// triangle naming a neighbour that does not name it back (found by
// fuzz_triangulation). Freeing every third triangle must clear that link too:
// the border walk after it read the freed neighbour.
TEST(TriangleGraph, KillingMarkedTrianglesClearsOneWayLinksToThem)
{
    const float points[][2] = {{4.5f, 1.5f}, {7.5f, 7.5f}, {7.5f, 7.5f}, {15.5f, 8.5f}, {4.0f, 9.0f},
                               {7.5f, 15.5f}, {11.5f, 0.0f}, {0.0f, 14.5f}, {14.5f, 14.5f}, {0.0f, 0.0f}};
    Graph g(20);
    for (const auto& p : points) g.AppendVertex(P(p[0], p[1]));
    g.Triangulate(g.GetNumVertices(), false, false);
    int k = 0;
    for (t_hdelaunaytriangle* t : Triangles(g.GetTriangleList())) t->Ignore = k++ % 3 == 1;
    g.KillIgnoredTrianglesFromTriangleList(true);
    const auto left = Triangles(g.GetTriangleList());
    for (const t_hdelaunaytriangle* t : left) {
        for (const t_hdelaunaytriangle* n : t->Neighbour) EXPECT_TRUE(n == nullptr || std::ranges::count(left, n) == 1);
    }
}

// The triangles of `list` that are open are peeled, and that opens the next
// ones of `list`; the neighbours met outside `list` are collected.
TEST(TriangleGraph, CheckAndKillPeelsAListFromItsBorder)
{
    Graph g(40);
    for (int i = 0; i < 16; ++i) g.AppendVertex(P(10.0f * (i % 4) + 0.1f * (i / 4), 10.0f * (i / 4) + 0.1f * (i % 4)));
    g.Triangulate(16, false, false);
    const auto all = Triangles(g.GetTriangleList());
    CList<t_hdelaunaytriangle*> strip, collected;
    for (t_hdelaunaytriangle* t : all) {
        if (std::ranges::any_of(t->Vertex, [](int v) { return v % 4 == 0; })) strip.AddTail(t);  // a corner at x < 5
    }
    const std::size_t stripCount = strip.GetCount();
    g.CheckAndKillIgnoredTrianglesFromTriangleList(&strip, &collected, true);
    EXPECT_TRUE(strip.IsEmpty());
    const auto left = Triangles(g.GetTriangleList());
    EXPECT_EQ(left.size() + stripCount, all.size());
    EXPECT_EQ(LinkFault(left), "");
    ASSERT_FALSE(collected.IsEmpty());
    for (const auto* t : Triangles(collected)) EXPECT_TRUE(t->Visited && std::ranges::count(left, t) == 1);
}

TEST(TriangleGraph, PinchedPairsSignedAndOutsideTriangles)
{
    // A folded pair, each the other's neighbour twice, is marked and bypassed.
    Graph g(10);
    t_hdelaunaytriangle* t = AddTriangle(g, 0, 1, 2);
    t_hdelaunaytriangle* x = AddTriangle(g, 1, 0, 2);
    t_hdelaunaytriangle* z = AddTriangle(g, 0, 2, 3);
    t_hdelaunaytriangle* y = AddTriangle(g, 2, 0, 4);
    std::tie(t->Neighbour[0], t->Neighbour[1], t->Neighbour[2]) = std::tuple(x, x, z);
    std::tie(x->Neighbour[0], x->Neighbour[1], x->Neighbour[2]) = std::tuple(t, y, t);
    std::tie(z->Neighbour[0], y->Neighbour[0]) = std::tuple(t, x);
    g.CheckDoubleNeighbours();
    EXPECT_TRUE(t->Ignore && x->Ignore);
    g.KillIgnoredTrianglesFromTriangleList(true);
    EXPECT_EQ(std::pair(z->Neighbour[0], y->Neighbour[0]), std::pair(y, z));

    // Signed triangles leave the list unfreed; marked ones are copied out.
    Graph s(10);
    t_hdelaunaytriangle* kept = AddTriangle(s, 0, 1, 2);
    t_hdelaunaytriangle* chosen = AddTriangle(s, 2, 1, 3);
    chosen->Signed = true;
    s.RemoveSignedTriangles();
    EXPECT_EQ(Triangles(s.GetFinalList()), (Fan{kept}));
    EXPECT_TRUE(s.IsFinalized() && !chosen->Signed);
    Graph::DeleteTriangle(chosen);  // the caller owns it now
    kept->Ignore = true;
    CList<t_hdelaunaytriangle*> marked;
    s.CopyIgnoredTrianglesToList(&marked);
    EXPECT_EQ(Triangles(marked), (Fan{kept}));
    EXPECT_FALSE(kept->Ignore);

    // The outside triangle is no border; freeing it leaves its neighbours open.
    Graph h(10);
    const Fan fan = MakeFan(h, true);
    fan[0]->Outside = true;
    h.IsolateTrianglesWithoutNeighbour();
    EXPECT_FALSE(fan[0]->Border);
    EXPECT_TRUE(std::all_of(fan.begin() + 1, fan.end(), [](const t_hdelaunaytriangle* f) { return f->Border; }));
    h.ClearOutsideTriangules();
    EXPECT_EQ(Triangles(h.GetTriangleList()), (Fan{fan[1], fan[2], fan[3], fan[4], fan[5]}));
    EXPECT_TRUE(fan[1]->Neighbour[0] == nullptr && fan[5]->Neighbour[2] == nullptr);
}

TEST(TriangleGraph, OpenSidesBecomeEdges)
{
    // In triangle, then side order; the outside rule counts sides to Outside triangles too.
    Graph g(10);
    t_hdelaunaytriangle* inner = AddTriangle(g, 0, 1, 2);
    t_hdelaunaytriangle* beyond = AddTriangle(g, 2, 1, 3);
    Graph::FindNeighbours(inner, beyond);
    beyond->Outside = true;
    g.IsolateEdgesWithoutNeighbour();
    EXPECT_EQ(g.GetEdgeList().GetCount(), 4);
    g.IsolateEdgesWithoutNeighbourAndOutsideTriangles();
    ASSERT_EQ(g.GetEdgeList().GetCount(), 5);
    const t_hdelaunayedge* second = g.GetEdgeList().GetAt(g.GetEdgeList().FindIndex(1));
    EXPECT_EQ(std::tuple(second->Vertex[0], second->Vertex[1], second->Side, second->Triangle),
              std::tuple(1, 2, eSide1, inner));

    // The edge flip of this class trades the end vertex with the side.
    t_hdelaunayedge* edge = g.GetEdgeList().GetHead();
    edge->Mark1 = true;
    Graph::FlipEdge(edge);
    EXPECT_EQ(std::pair(edge->Vertex[1], edge->Side), std::pair(0, eSide1));
    EXPECT_TRUE(edge->Mark2 && !edge->Mark1);
    g.ClearEdgeList();
    EXPECT_TRUE(g.GetEdgeList().IsEmpty());
}

// The three triangles of a centre split go to the caller's list, the old one
// is marked; joined to the working list and purged, the graph is whole.
TEST(TriangleGraph, CentreSplitHandsThreeTrianglesToTheList)
{
    Graph g(10);
    for (const SSEPoint& p : {P(0, 0), P(10, 0), P(10, 10), P(0, 10), P(7, 3)}) g.AppendVertex(p);
    t_hdelaunaytriangle* lower = AddTriangle(g, 0, 1, 2);
    t_hdelaunaytriangle* upper = AddTriangle(g, 0, 2, 3);
    Graph::FindNeighbours(lower, upper);
    CList<t_hdelaunaytriangle*> made;
    g.BuildNewTriangles(4, lower, &made);
    g.BuildNewTriangles(4, lower, &made);  // marked already: not split again
    std::vector<std::vector<int>> corners;
    for (const t_hdelaunaytriangle* t : Triangles(made)) {
        corners.push_back(CornersOf(t));
        EXPECT_GT(t->CircleRadius2, 0.0f);
    }
    EXPECT_EQ(corners, (std::vector<std::vector<int>>{{0, 1, 4}, {1, 2, 4}, {2, 0, 4}}));
    EXPECT_EQ(upper->Neighbour[0], made.GetTail());
    Graph::CopyTriangleListInList(&made, &g.GetTriangleList());
    g.KillIgnoredTrianglesFromTriangleList(false);
    EXPECT_EQ(Triangles(g.GetTriangleList()).size(), 4u);
    EXPECT_EQ(LinkFault(Triangles(g.GetTriangleList())), "");
}

TEST(TriangleGraph, ReindexingBoxOrientationAndNormals)
{
    // Corners of another store become the same points in the graph's own.
    ZrCSSEVertexContainer source(10);
    for (const SSEPoint& p : {P(9, 9, 9), P(0, 0), P(1, 0), P(0, 1), P(1, 1)}) source.AppendVertex(p);
    Graph r(1);
    AddTriangle(r, 1, 2, 3);
    AddTriangle(r, 3, 2, 4);
    r.CopyVertexArray(source);
    EXPECT_EQ(std::pair(r.GetNumVertices(), r.GetMaxNumVertices()), std::pair(4, 5));
    EXPECT_EQ(CornersOf(Triangles(r.GetTriangleList())[1]), (std::vector<int>{2, 1, 3}));
    EXPECT_EQ(vek::test::Lanes(r.GetVertex(3)), (vek::test::Lanes4{1, 1, 0, 0}));

    // The plane z = x, unit normal (-1, 0, 1) / sqrt(2); a collinear triangle is not counter-clockwise.
    Graph g(10);
    g.CalcBoundingBox();
    EXPECT_EQ(std::pair(g.GetMinPoint().x, g.GetMaxPoint().w), std::pair(999999.9f, -999999.9f));
    for (const SSEPoint& p : {P(0, 0, 0), P(4, 0, 4), P(0, 6, 0), P(4, 6, 4), P(8, 0, 8)}) g.AppendVertex(p);
    t_hdelaunaytriangle* a = AddTriangle(g, 0, 1, 2);
    t_hdelaunaytriangle* b = AddTriangle(g, 2, 1, 3);
    Graph::FindNeighbours(a, b);
    t_hdelaunaytriangle flat = vek::test::Unlisted(0, 1, 4);
    EXPECT_EQ(std::tuple(g.GetOrientation(a), g.GetOrientation(b), g.GetOrientation(&flat)), std::tuple(1, 1, -1));
    g.ComputeNormalVectorsOfTriangles();
    const float h = 1.0f / std::sqrt(2.0f);
    for (const t_hdelaunaytriangle* t : {a, b}) {
        for (int lane = 0; lane < 3; ++lane) EXPECT_NEAR(t->Normal->lane[lane], (std::array{-h, 0.0f, h})[lane], 1e-6);
    }
    EXPECT_TRUE(g.CalcNormalDirection() && g.IsFinalized());
    // The box spans the triangles' corners; the centre is the mean of all vertices.
    g.CalcBoundingBox();
    EXPECT_EQ(std::pair(g.GetMaxPoint().y, g.GetCenterPoint().x), std::pair(6.0f, 2.0f));
    g.CalcCenterPoint();
    EXPECT_FLOAT_EQ(g.GetCenterPoint().z, 3.2f);

    // Turning one triangle keeps each slot across its side; turning all keeps the finalized state.
    Graph::FlipTriangleOrientationWithNeigbour(a);
    EXPECT_EQ(g.GetOrientation(a), -1);
    EXPECT_EQ(std::pair(a->Neighbour[2], Graph::FindCommonSide(2, a, b)), std::pair(b, eSide0));
    g.FlipAllTrianglesOrientation();
    EXPECT_TRUE(g.IsFinalized());
    EXPECT_EQ(g.GetOrientation(a), 1);
    EXPECT_TRUE(g.CalcNormalDirection());  // one up, one down: a mean z of 0 faces up
    Graph::FlipTriangleOrientationWithNeigbour(a);
    EXPECT_FALSE(g.CalcNormalDirection());
}

} // namespace
