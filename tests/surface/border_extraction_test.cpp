// Border loops of small hand-built surfaces: which edges, in which order,
// which polygon, and how two long borders are cut into seam sections.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "triangulation_checks.h"

namespace vek::test {
namespace {

using Edge = t_hdelaunayedge;
using EdgePairs = std::vector<std::pair<int, int>>;

EdgePairs PairsOf(CList<Edge*>& edges)
{
    EdgePairs pairs;
    for (POSITION pos = edges.GetHeadPosition(); pos != nullptr;) {
        const Edge* e = edges.GetNext(pos);
        pairs.emplace_back(e->Vertex[0], e->Vertex[1]);
    }
    return pairs;
}

void Link(std::vector<t_hdelaunaytriangle*> triangles)
{
    for (auto* a : triangles)
        for (auto* b : triangles)
            if (a != b) ZrCIncrementalDelaunay2D::FindNeighbours(a, b);
}

// Corners 0..3 of the unit square counter-clockwise, the centre 4, and the
// fan of four triangles around it.
std::vector<t_hdelaunaytriangle*> SquareOfFour(ZrCIncrementalDelaunay2D& d, float z = 0.0f)
{
    for (SSEPoint p : {P(0, 0, z), P(2, 0, z), P(2, 2, z), P(0, 2, z), P(1, 1, z)}) d.AppendVertex(p);
    std::vector<t_hdelaunaytriangle*> fan;
    for (int k = 0; k < 4; ++k) fan.push_back(AddTriangle(d, k, (k + 1) % 4, 4));
    Link(fan);
    return fan;
}

TEST(BorderLoops, OneTriangleClosesOnItselfInSideOrder)
{
    ZrCIncrementalDelaunay2D d(10);
    t_hdelaunaytriangle* t = AddTriangle(d, P(0, 0), P(4, 0), P(0, 3));
    CList<Edge*> edges;
    ZrCIncrementalDelaunay2D::FindOutsideEdgesOfBorderTriang(&d.GetTriangleList(), &edges);
    EXPECT_EQ(PairsOf(edges), (EdgePairs{{0, 1}, {1, 2}, {2, 0}}));
    EXPECT_EQ(edges.GetHead()->Triangle, t);
    EXPECT_EQ(edges.GetTail()->Side, eSide2);
    ZrCIncrementalDelaunay2D::ClearEdgeList(&edges);

    CSSE3dPolygon outline;
    d.BuildBorderPolygonForTriang(outline);
    ASSERT_EQ(outline.GetNumPoints(), 3);
    float x, y, z;
    outline.GetPoint(2, x, y, z);
    EXPECT_EQ(std::pair(x, y), std::pair(0.0f, 3.0f));
    EXPECT_FLOAT_EQ(outline.CalcXYArea(), 12.0f); // twice the area, counter-clockwise
}

TEST(BorderLoops, SquareOfFourGivesOneCounterClockwiseLoopAndItsIndices)
{
    ZrCIncrementalDelaunay2D d(10);
    SquareOfFour(d);
    EdgeLists loops;
    d.FindAllBorderEdgeLists(&loops.lists);
    ASSERT_EQ(loops.lists.GetCount(), 1);
    EXPECT_EQ(PairsOf(*loops.lists.GetHead()), (EdgePairs{{0, 1}, {1, 2}, {2, 3}, {3, 0}}));

    CSSE3dPolygon outline;
    int indices[4] = {-1, -1, -1, -1};
    d.BuildPolygonFromEdgeList(loops.lists.GetHead(), outline, indices);
    EXPECT_EQ(std::vector<int>(indices, indices + 4), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_FLOAT_EQ(outline.CalcXYArea(), 8.0f);
}

TEST(BorderLoops, RingGivesOuterAndInnerLoopWithEveryOpenEdgeOnce)
{
    // A 3 x 3 square with the middle cell left open: vertices on the outer
    // and inner squares, eight triangles between them.
    ZrCIncrementalDelaunay2D d(10);
    for (SSEPoint p : {P(0, 0), P(3, 0), P(3, 3), P(0, 3), P(1, 1), P(2, 1), P(2, 2), P(1, 2)}) d.AppendVertex(p);
    std::vector<t_hdelaunaytriangle*> ring;
    for (int k = 0; k < 4; ++k) {
        const int o0 = k, o1 = (k + 1) % 4, i0 = 4 + k, i1 = 4 + (k + 1) % 4;
        ring.push_back(AddTriangle(d, o0, o1, i1));
        ring.push_back(AddTriangle(d, o0, i1, i0));
    }
    Link(ring);
    ASSERT_EQ(LinkFault(ring), "");
    EdgeLists loops;
    d.FindAllBorderEdgeLists(&loops.lists);
    ASSERT_EQ(loops.lists.GetCount(), 2);
    std::multiset<std::set<int>> seen;
    for (POSITION pos = loops.lists.GetHeadPosition(); pos != nullptr;) {
        CList<Edge*>* loop = loops.lists.GetNext(pos);
        EXPECT_EQ(loop->GetCount(), 4);
        const EdgePairs pairs = PairsOf(*loop);
        for (std::size_t k = 0; k < pairs.size(); ++k) {
            EXPECT_EQ(pairs[k].second, pairs[(k + 1) % pairs.size()].first) << "a loop runs on end to start";
            seen.insert({pairs[k].first, pairs[k].second});
        }
    }
    EXPECT_EQ(seen, (std::multiset<std::set<int>>{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}}));
}

TEST(BorderLoops, AtATouchingVertexTheEdgeNearerTheHeadWins)
{
    // Two triangles that touch at vertex 2 only: a bow tie.
    ZrCIncrementalDelaunay2D d(10);
    for (SSEPoint p : {P(0, 0), P(1, 0), P(1, 1), P(2, 2), P(1, 2)}) d.AppendVertex(p);
    AddTriangle(d, 0, 1, 2);
    AddTriangle(d, 2, 3, 4);
    EdgeLists loops;
    d.FindAllBorderEdgeLists(&loops.lists);
    ASSERT_EQ(loops.lists.GetCount(), 2);
    EXPECT_EQ(PairsOf(*loops.lists.GetHead()), (EdgePairs{{0, 1}, {1, 2}, {2, 0}}));
    EXPECT_EQ(PairsOf(*loops.lists.GetTail()), (EdgePairs{{2, 3}, {3, 4}, {4, 2}}));
}

TEST(BorderLoops, AnOutsideNeighbourLeavesItsSideOpenAndBorderFlagsFollowOpenSides)
{
    ZrCIncrementalDelaunay2D d(10);
    std::vector<t_hdelaunaytriangle*> fan = SquareOfFour(d);
    fan[2]->Outside = true;
    fan[0]->Border = true;
    t_hdelaunaytriangle* island = AddTriangle(d, P(10, 10), P(11, 10), P(10, 11));
    island->Border = true;
    CList<Edge*> edges;
    ZrCIncrementalDelaunay2D::FindOutsideEdgesOfBorderTriang(&d.GetTriangleList(), &edges);
    // Four rim edges, the sides of fan[1] and fan[3] towards fan[2], and
    // the island's three.
    EXPECT_EQ(edges.GetCount(), 9);
    ZrCIncrementalDelaunay2D::ClearEdgeList(&edges);

    // Before anything is copied in, the whole surface is the first half.
    d.SetOtherVertexStart(d.GetNumVertices());
    d.FindOutsideEdgesOfBorderTriang();
    EXPECT_EQ(d.GetBorderEdgesFirst().GetCount(), 9);
    EXPECT_TRUE(d.GetBorderEdgesSecond().IsEmpty());
    EXPECT_TRUE(fan[0]->Border) << "one open side keeps the flag";
    EXPECT_FALSE(island->Border) << "three open sides clear it";
}

TEST(BorderLoops, TheHalvesOfACombinedObjectAreSplitByTheirFirstCorner)
{
    ZrCIncrementalDelaunay2D d(20);
    SquareOfFour(d, 0.0f);
    d.SetOtherVertexStart(d.GetNumVertices());
    for (SSEPoint p : {P(0, 0, 5), P(2, 0, 5), P(2, 2, 5), P(0, 2, 5)}) d.AppendVertex(p);
    AddTriangle(d, 5, 6, 7);
    AddTriangle(d, 5, 7, 8);
    Link({d.GetTriangleList().GetTail(), d.GetTriangleList().GetAt(d.GetTriangleList().FindIndex(4))});
    d.GetBorderOfCombinedTriangulationApdated();
    // The first chain by index, the second found by position and run the
    // same way.
    EXPECT_EQ(PairsOf(d.GetOrderedBorderFirst()), (EdgePairs{{0, 1}, {1, 2}, {2, 3}, {3, 0}}));
    EXPECT_EQ(PairsOf(d.GetOrderedBorderSecond()), (EdgePairs{{5, 6}, {6, 7}, {7, 8}, {8, 5}}));

    // Moved away in x-y, the second border shares no edge with the first.
    for (int v = 5; v < 9; ++v) d.GetVertexPtr(v)->x += 10.0f;
    d.GetBorderOfCombinedTriangulationApdated();
    EXPECT_EQ(d.GetOrderedBorderFirst().GetCount(), 4);
    EXPECT_TRUE(d.GetOrderedBorderSecond().IsEmpty());
}

TEST(BorderLoops, ThePieceWithMostTrianglesGivesTheBorderAndWhatItReached)
{
    ZrCIncrementalDelaunay2D d(20);
    std::vector<t_hdelaunaytriangle*> fan = SquareOfFour(d);
    AddTriangle(d, P(10, 10), P(11, 10), P(10, 11)); // a stray island
    CList<Edge*> edges1, edges2;
    CList<t_hdelaunaytriangle*> reached;
    d.SetOtherVertexStart(1000);
    d.GetBorderOfCombinedTriangulationApdated(&edges1, &edges2, &reached);
    EXPECT_EQ(PairsOf(edges1), (EdgePairs{{0, 1}, {1, 2}, {2, 3}, {3, 0}}));
    EXPECT_TRUE(edges2.IsEmpty());
    EXPECT_EQ(Corners(Triangles(reached)), (std::set<int>{0, 1, 2, 3, 4}));
    for (t_hdelaunaytriangle* t : Triangles(d.GetTriangleList())) EXPECT_EQ(t->SortIndex, -1);
    ZrCIncrementalDelaunay2D::ClearEdgeList(&edges1);
}

// A 10 x 10 grid at height z with a random share of its triangles taken out,
// as a sheet of this object's vertices from vertex `first` on: holes, bow
// ties at shared vertices, stray islands and runs with open ends.
void HoleySheet(ZrCIncrementalDelaunay2D& d, std::uint32_t seed, float z)
{
    const int first = d.GetNumVertices();
    for (int y = 0; y <= 10; ++y)
        for (int x = 0; x <= 10; ++x) d.AppendVertex(P(static_cast<float>(x), static_cast<float>(y), z));
    std::mt19937 engine{seed};
    std::vector<t_hdelaunaytriangle*> sheet;
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) {
            const int v = first + y * 11 + x;
            sheet.push_back(AddTriangle(d, v, v + 1, v + 12));
            sheet.push_back(AddTriangle(d, v, v + 12, v + 11));
        }
    }
    Link(sheet);
    for (t_hdelaunaytriangle* t : sheet) t->Ignore = engine() % 100 < 35;
    d.KillIgnoredTrianglesFromTriangleList(true);
}

std::vector<EdgePairs> AllLoops(ZrCIncrementalDelaunay2D& d)
{
    EdgeLists loops;
    d.FindAllBorderEdgeLists(&loops.lists);
    std::vector<EdgePairs> all;
    for (POSITION pos = loops.lists.GetHeadPosition(); pos != nullptr;) all.push_back(PairsOf(*loops.lists.GetNext(pos)));
    return all;
}

TEST(BorderLoops, ChainingThroughTheVertexIndexGivesTheRescansChainsInTheSameOrder)
{
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        ZrCIncrementalDelaunay2D indexed(300), plain(300);
        plain.SetSearchMode(SearchMode::LinearScan);
        for (ZrCIncrementalDelaunay2D* d : {&indexed, &plain}) {
            HoleySheet(*d, seed, 0.0f);
            d->SetOtherVertexStart(d->GetNumVertices());
            // The second sheet, over the same places and with holes of its
            // own, is chained by position.
            HoleySheet(*d, seed / 2 + 7, 5.0f);
        }
        const std::vector<EdgePairs> loops = AllLoops(indexed);
        EXPECT_EQ(loops, AllLoops(plain));
        std::size_t edges = 0;
        for (const EdgePairs& loop : loops) edges += loop.size();
        EXPECT_EQ(edges, static_cast<std::size_t>(OpenSides(Triangles(indexed.GetTriangleList()))));

        indexed.GetBorderOfCombinedTriangulationApdated();
        plain.GetBorderOfCombinedTriangulationApdated();
        EXPECT_EQ(PairsOf(indexed.GetOrderedBorderFirst()), PairsOf(plain.GetOrderedBorderFirst()));
        EXPECT_EQ(PairsOf(indexed.GetOrderedBorderSecond()), PairsOf(plain.GetOrderedBorderSecond()));
        EXPECT_EQ(PairsOf(indexed.GetBorderEdgesSecond()), PairsOf(plain.GetBorderEdgesSecond()));
    }
}

TEST(BorderLoops, FloodFromAnEdgeSignsEveryConnectedTriangleOnce)
{
    ZrCIncrementalDelaunay2D d(20);
    std::vector<t_hdelaunaytriangle*> fan = SquareOfFour(d);
    t_hdelaunaytriangle* island = AddTriangle(d, P(10, 10), P(11, 10), P(10, 11));
    ZrCIncrementalDelaunay2D::InitSortedListFromTriangles(&d.GetTriangleList());
    CList<Edge*> edges;
    CList<t_hdelaunaytriangle*> one;
    one.AddTail(fan[2]);
    ZrCIncrementalDelaunay2D::FindOutsideEdgesOfBorderTriang(&one, &edges);
    d.GetTriangleListFromEdgeList(&edges);
    const std::vector<t_hdelaunaytriangle*> selected = Triangles(d.GetAffectedTriangleList());
    ASSERT_EQ(selected.size(), 4u);
    EXPECT_EQ(selected.front(), fan[2]);
    for (auto* t : fan) EXPECT_TRUE(t->Signed);
    EXPECT_FALSE(island->Signed);
    d.RemoveSignedTriangles();
    EXPECT_EQ(d.GetNumTriangles(), 1);
    for (auto* t : selected) ZrCIncrementalDelaunay2D::DeleteTriangle(t);
    d.ClearAffectedTriangleList();
    ZrCIncrementalDelaunay2D::ClearEdgeList(&edges);
}

// A circle of n points about (cx, cy), counter-clockwise unless `clockwise`.
CSSE3dPolygon Circle(int n, float radius, bool clockwise = false)
{
    CSSE3dPolygon circle;
    circle.Create(n);
    for (int i = 0; i < n; ++i) {
        const double a = (clockwise ? -1.0 : 1.0) * 2.0 * 3.14159265358979 * i / n;
        circle.SetPoint(i, static_cast<float>(50.0 + radius * std::cos(a)), static_cast<float>(50.0 + radius * std::sin(a)),
                        0.0f);
    }
    return circle;
}

struct Sections {
    CList<t_PolygonsForCombineDelaunay*> list;
    std::vector<std::pair<int, int>> Counts()
    {
        std::vector<std::pair<int, int>> counts;
        for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
            const t_PolygonsForCombineDelaunay* s = list.GetNext(pos);
            counts.emplace_back(s->FirstPolygon->GetNumPoints(), s->SecondPolygon->GetNumPoints());
        }
        return counts;
    }
    ~Sections()
    {
        while (!list.IsEmpty()) {
            t_PolygonsForCombineDelaunay* s = list.RemoveHead();
            delete s->FirstPolygon;
            delete s->SecondPolygon;
            delete s;
        }
    }
};

TEST(SeamSections, LongBordersAreCutIntoBlocksOfFiftyWithMatchingStretches)
{
    ZrCIncrementalDelaunay2D d(10);
    CSSE3dPolygon outer = Circle(120, 20.0f);
    CSSE3dPolygon inner = Circle(120, 16.0f);
    Sections sections;
    d.PreparePolygonsForCombine(&outer, &inner, nullptr, nullptr, &sections.list);
    const auto counts = sections.Counts();
    ASSERT_EQ(counts.size(), 3u);
    EXPECT_EQ(counts[0].second, 50);
    EXPECT_EQ(counts[1].second, 50);
    EXPECT_EQ(counts[2].second, 20);
    // Concentric circles of equal counts: each stretch of the first matches
    // its block point for point, and together they cover the first once.
    int covered = 0;
    for (const auto& [first, second] : counts) {
        EXPECT_NEAR(first, second, 1);
        covered += first;
    }
    EXPECT_EQ(covered, 120);
    EXPECT_EQ(sections.list.GetTail()->Index, 2);
    EXPECT_FALSE(d.IsFirstPolygonInverted());
}

TEST(SeamSections, AClockwiseBorderIsTurnedWithItsIndicesAndShortOnesStayWhole)
{
    ZrCIncrementalDelaunay2D d(10);
    CSSE3dPolygon first = Circle(12, 20.0f, true);
    CSSE3dPolygon second = Circle(10, 16.0f);
    std::vector<int> firstIndices{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    Sections sections;
    d.PreparePolygonsForCombine(&first, &second, firstIndices.data(), nullptr, &sections.list);
    EXPECT_TRUE(d.IsFirstPolygonInverted());
    EXPECT_FALSE(d.IsSecondPolygonInverted());
    EXPECT_EQ(firstIndices, (std::vector<int>{11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0}));
    EXPECT_GT(first.CalcXYArea(), 0.0f);
    EXPECT_EQ(sections.Counts(), (std::vector<std::pair<int, int>>{{12, 10}}));
}

} // namespace
} // namespace vek::test
