// Two surfaces of one outline closed into a skin, the deletion tests around
// a seam, and the collapse of slivers.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "support/sse_lanes.h"
#include "triangulation_checks.h"

namespace vek::test {
namespace {

// A grid of n x n cells of size 1 at height z, triangulated.
void Grid(ZrCIncrementalDelaunay2D& d, int n, float z, float offset = 0.0f)
{
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x) d.AppendVertex(P(offset + static_cast<float>(x), offset + static_cast<float>(y), z));
    d.Triangulate(d.GetNumVertices(), true, true);
}

// How many triangles of `list` carry each undirected side.
std::map<std::pair<int, int>, int> SideUse(CList<t_hdelaunaytriangle*>& list)
{
    std::map<std::pair<int, int>, int> use;
    for (const t_hdelaunaytriangle* t : Triangles(list)) {
        for (int s = 0; s < 3; ++s) {
            const int a = t->Vertex[s], b = t->Vertex[(s + 1) % 3];
            ++use[{std::min(a, b), std::max(a, b)}];
        }
    }
    return use;
}

struct SkinCase {
    float height;
    int newVerticesPerBorderEdge;
    int trianglesPerBorderEdge;
};

TEST(ClosingTwoRims, TheGapDecidesMidVerticesAndTheSkinIsClosed)
{
    // Heights 0 and h over the same 2 x 2 grid: its rim has 8 edges.
    for (const SkinCase c : {SkinCase{0.0f, 0, 2}, SkinCase{0.5f, 0, 2}, SkinCase{1.0f, 1, 4}, SkinCase{1.5f, 1, 4},
                             SkinCase{2.0f, 3, 8}, SkinCase{3.0f, 3, 8}}) {
        SCOPED_TRACE(c.height);
        ZrCIncrementalDelaunay2D bottom(20), top(20), skin;
        Grid(bottom, 2, 0.0f);
        Grid(top, 2, c.height);
        skin.CombineTriangulationsMidPoint(top, bottom, false, false);
        ASSERT_FALSE(skin.IsFinalized());
        EXPECT_EQ(skin.GetOtherVertexStart(), 9);
        EXPECT_EQ(skin.GetNumVertices(), 18 + 8 * c.newVerticesPerBorderEdge);
        EXPECT_EQ(skin.GetNumTrianglesInTriangleList(), 16 + 8 * c.trianglesPerBorderEdge);
        const std::vector<t_hdelaunaytriangle*> all = Triangles(skin.GetTriangleList());
        EXPECT_EQ(LinkFault(all), "");
        EXPECT_EQ(OpenSides(all), 0);
        for (const auto& [side, use] : SideUse(skin.GetTriangleList())) EXPECT_EQ(use, 2) << side.first << "-" << side.second;
        // Mid vertices stand halfway up; the extra ring a quarter and three
        // quarters of the way.
        for (int v = 18; v < skin.GetNumVertices(); ++v) {
            const float z = skin.GetVertex(v).z;
            EXPECT_TRUE(z == c.height / 2 || z == c.height / 4 || z == 3 * c.height / 4) << z;
        }
    }
}

TEST(ClosingTwoRims, DegenerateInputsLeaveValidSurfaces)
{
    ZrCIncrementalDelaunay2D empty1, empty2, result;
    result.CombineTriangulationsMidPoint(empty1, empty2, false, true);
    EXPECT_EQ(result.GetNumTriangles(), 0);

    ZrCIncrementalDelaunay2D one(5), apart(20), joined;
    AddTriangle(one, P(0, 0), P(1, 0), P(0, 1));
    Grid(apart, 2, 5.0f, 10.0f);
    joined.CombineTriangulationsMidPoint(one, apart, false, true);
    // The rims share no edge: both surfaces lie side by side, unjoined.
    EXPECT_EQ(joined.GetNumTriangles(), 1 + 8);
    EXPECT_EQ(LinkFault(Triangles(joined.GetFinalList())), "");
    EXPECT_EQ(apart.GetNumTriangles(), 8) << "the inputs stay as they were";

    joined.CombineTriangulationsMidPoint(joined, apart, false, true);
    EXPECT_EQ(joined.GetNumTriangles(), 9) << "a surface is not combined with itself";
}

TEST(CopyingIn, TheCopyKeepsItsLinksAndShiftsItsCorners)
{
    ZrCIncrementalDelaunay2D base(20), other(20);
    Grid(base, 1, 0.0f);
    Grid(other, 2, 1.0f, 5.0f);
    base.CopyAndInsertOtherTriangulation(other, false);
    EXPECT_EQ(base.GetNumVertices(), 4 + 9);
    const std::vector<t_hdelaunaytriangle*> all = Triangles(base.GetTriangleList());
    ASSERT_EQ(all.size(), 2u + 8u);
    EXPECT_EQ(LinkFault(all), "");
    EXPECT_EQ(OpenSides(all), 4 + 8);
    for (std::size_t k = 2; k < all.size(); ++k)
        for (int v : all[k]->Vertex) EXPECT_GE(v, 4);
    EXPECT_TRUE(other.IsFinalized());
}

// `perSide` points on each side of the square [low, high]^2, counter-clockwise
// from (low, low).
std::vector<SSEPoint> SquarePoints(float low, float high, int perSide)
{
    std::vector<SSEPoint> points;
    const float step = (high - low) / static_cast<float>(perSide);
    for (int side = 0; side < 4; ++side) {
        for (int i = 0; i < perSide; ++i) {
            const float t = low + step * static_cast<float>(i);
            const float u = high - (t - low);
            const SSEPoint p[4] = {P(t, low), P(high, t), P(u, high), P(low, u)};
            points.push_back(p[side]);
        }
    }
    return points;
}

CSSE3dPolygon PolygonOf(const std::vector<SSEPoint>& points)
{
    CSSE3dPolygon polygon;
    polygon.Create(static_cast<int>(points.size()));
    for (int i = 0; i < static_cast<int>(points.size()); ++i) {
        SSEPoint p = points[static_cast<std::size_t>(i)];
        polygon.SetPointSSE(i, p);
    }
    return polygon;
}

TEST(Zipper, EverySideOfBothLinesGetsOneTriangleAndTheBandClosesWithoutOverlap)
{
    // The outer line a (vertices of the surface, each held by a frame
    // triangle outside it) is zipped to the inner line b, once coarser and
    // once finer than b, so that stretches of one, none and several sides of
    // a fall on a side of b.
    for (const auto& [outerPerSide, innerPerSide] : {std::pair{2, 3}, std::pair{4, 1}, std::pair{3, 5}}) {
        SCOPED_TRACE(outerPerSide * 10 + innerPerSide);
        ZrCIncrementalDelaunay2D d(100);
        const std::vector<SSEPoint> outer = SquarePoints(0.0f, 8.0f, outerPerSide);
        const int na = static_cast<int>(outer.size());
        // A vertex that no triangle uses stands at the place of a's first
        // point, before it: the zipper must join the one the frame uses.
        d.AppendVertex(outer[0]);
        for (const SSEPoint& p : outer) d.AppendVertex(p);
        std::vector<t_hdelaunaytriangle*> frame;
        for (int k = 0; k < na; ++k) {
            const SSEPoint a = outer[static_cast<std::size_t>(k)], b = outer[static_cast<std::size_t>((k + 1) % na)];
            d.AppendVertex(P((a.x + b.x) / 2 + (b.y - a.y) / 2, (a.y + b.y) / 2 - (b.x - a.x) / 2));
            frame.push_back(AddTriangle(d, 1 + k, 1 + (k + 1) % na, d.GetNumVertices() - 1));
        }
        const std::vector<SSEPoint> inner = SquarePoints(2.0f, 6.0f, innerPerSide);
        std::vector<int> indices;
        for (const SSEPoint& p : inner) {
            indices.push_back(d.GetNumVertices());
            d.AppendVertex(p);
        }
        CSSE3dPolygon a = PolygonOf(outer);
        CSSE3dPolygon b = PolygonOf(inner);
        CList<t_hdelaunaytriangle*> band, seam;
        d.BildNewTriangulationsWithTwoPolygon(&a, &b, &band, &seam, indices.data(), false, true);
        const std::vector<t_hdelaunaytriangle*> made = Triangles(band);
        EXPECT_EQ(made.size(), outer.size() + inner.size()) << "one triangle on each side of both lines";
        EXPECT_EQ(Triangles(seam), made);
        EXPECT_FALSE(Corners(made).contains(0)) << "the unused twin stays out";
        double area = 0.0;
        for (const t_hdelaunaytriangle* t : made) {
            EXPECT_GT(SignedArea(d, t), 0.0) << "counter-clockwise";
            area += SignedArea(d, t);
        }
        EXPECT_NEAR(area, 64.0 - 16.0, 1e-3) << "the band between the squares, no more and no less";
        // Linked with the frame through the frame's open edges, the band is
        // open only across the sides of b.
        CList<t_hdelaunaytriangle*> frameList;
        for (t_hdelaunaytriangle* t : frame) frameList.AddTail(t);
        CList<t_hdelaunayedge*> frameEdges, none;
        ZrCIncrementalDelaunay2D::FindOutsideEdgesOfBorderTriang(&frameList, &frameEdges);
        d.LinkSeamToRims(band, frameEdges, none);
        ZrCIncrementalDelaunay2D::ClearEdgeList(&frameEdges);
        EXPECT_EQ(LinkFault(Triangles(d.GetTriangleList())), "");
        EXPECT_EQ(OpenSides(made), static_cast<int>(inner.size()));
    }
}

// Corners 0..3 of a square and its centre 4, and a fan of four around it.
std::vector<t_hdelaunaytriangle*> Fan(ZrCIncrementalDelaunay2D& d)
{
    for (SSEPoint p : {P(0, 0), P(2, 0), P(2, 2), P(0, 2), P(1, 1)}) d.AppendVertex(p);
    std::vector<t_hdelaunaytriangle*> fan;
    for (int k = 0; k < 4; ++k) fan.push_back(AddTriangle(d, k, (k + 1) % 4, 4));
    for (auto* a : fan)
        for (auto* b : fan)
            if (a != b) ZrCIncrementalDelaunay2D::FindNeighbours(a, b);
    return fan;
}

TEST(DeletionTests, ATriangleGoesOnlyIfNoCornerIsPinched)
{
    ZrCIncrementalDelaunay2D d(20);
    std::vector<t_hdelaunaytriangle*> fan = Fan(d);
    // Each fan triangle has one open side (the rim), and the fan around
    // the centre closes: removing one leaves no pinch.
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CanDeleteTriangle(fan[0]));
    fan[2]->Ignore = true;
    // Now fan[1] has two open sides, and fan[0]'s walk around the centre
    // meets the marked triangle.
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CanDeleteTriangle(fan[1]));
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CanDeleteTriangle(fan[0]));
    fan[2]->Ignore = false;
    // An inner triangle with three good neighbours.
    ZrCIncrementalDelaunay2D grid(20);
    Grid(grid, 3, 0.0f);
    int inner = 0;
    for (t_hdelaunaytriangle* t : Triangles(grid.GetFinalList())) {
        if (ZrCIncrementalDelaunay2D::FindNullNeighbour(t) != eSideNone) continue;
        ++inner;
        EXPECT_TRUE(ZrCIncrementalDelaunay2D::CanDeleteTriangle(t));
    }
    EXPECT_GT(inner, 0);
}

TEST(DeletionTests, DistanceToARimDecidesWhatLiesUnderIt)
{
    CSSE3dPolygon rim;
    rim.Create(4);
    rim.SetPoint(0, 10, 10, 0), rim.SetPoint(1, 20, 10, 0), rim.SetPoint(2, 20, 20, 0), rim.SetPoint(3, 10, 20, 0);
    CSSE3dPolygon projected(rim);
    SSEPoint a = P(14, 14), b = P(16, 14), c = P(15, 16);
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckDistanceForNoDeleteTriangle(a, b, c, rim, projected, 1.0f, 7.0f))
        << "inside the rim";
    SSEPoint fa = P(40, 40), fb = P(42, 40), fc = P(41, 42);
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CheckDistanceForNoDeleteTriangle(fa, fb, fc, rim, projected, 1.0f, 7.0f));
    SSEPoint na = P(5, 5), nb = P(9.5f, 5), nc = P(9.5f, 9.5f);
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckDistanceForNoDeleteTriangle(na, nb, nc, rim, projected, 1.0f, 7.0f))
        << "a corner within the near limit of a rim point";
    SSEPoint ba = P(0, 0), bb = P(40, 0), bc = P(0, 40);
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckDistanceForNoDeleteTriangle(ba, bb, bc, rim, projected, 1.0f, 7.0f))
        << "a large triangle that holds the rim";
}

TEST(DeletionTests, AShiftWithNoPlaceFarEnoughFallsBackHalfAUnitInEveryLane)
{
    CSSE3dPolygon rim;
    rim.Create(1);
    rim.SetPoint(0, 0, 0, 0);
    SSEPoint from = P(1, 0), to = P(2, 0), result;
    ZrCIncrementalDelaunay2D::ShiftVertexWithDistanceInInterval(from, result, to, 5.0f, rim, 0);
    EXPECT_EQ(Lanes(result), (Lanes4{1.5f, -0.5f, -0.5f, -0.5f}));
    ZrCIncrementalDelaunay2D::ShiftVertexWithDistanceInInterval(from, result, to, 1.15f, rim, 0);
    EXPECT_NEAR(result.x, 1.2f, 1e-5f) << "the first step of a fifth of the length that is far enough";
}

TEST(DeletionTests, ClearingAroundARimOpensTheSurfaceAndKeepsItValid)
{
    ZrCIncrementalDelaunay2D d(200);
    Grid(d, 12, 0.0f);
    CSSE3dPolygon rim;
    rim.Create(4);
    rim.SetPoint(0, 5, 5, 0), rim.SetPoint(1, 7, 5, 0), rim.SetPoint(2, 7, 7, 0), rim.SetPoint(3, 5, 7, 0);
    d.CopyFinalTriangleListToTriangleList();
    CList<t_hdelaunaytriangle*> start;
    start.AddTail(d.GetTriangleList().GetHead());
    d.CheckTrianglesForDelete(&start, &rim);
    const std::vector<t_hdelaunaytriangle*> left = Triangles(d.GetTriangleList());
    EXPECT_EQ(LinkFault(left), "");
    double area = 0.0;
    for (const t_hdelaunaytriangle* t : left) {
        EXPECT_GT(SignedArea(d, t), 0.0) << "no triangle turned over";
        area += SignedArea(d, t);
        // Every corner that stays keeps the clearance of 3 from the square
        // [5, 7]^2 (less the little by which the rim's samples, half a unit
        // apart, stand off its sides).
        for (int v : t->Vertex) {
            const double dx = std::max({5.0 - d.GetVertex(v).x, 0.0, d.GetVertex(v).x - 7.0});
            const double dy = std::max({5.0 - d.GetVertex(v).y, 0.0, d.GetVertex(v).y - 7.0});
            EXPECT_GE(std::hypot(dx, dy), 2.98) << v;
        }
    }
    // Nothing of the square and of the bands 3 wide along its sides is left,
    // and the opening is one hole: no island stays in it, no hole beside it.
    EXPECT_LT(area, 144.0 - 4.0 - 4.0 * 6.0);
    EdgeLists loops;
    d.FindAllBorderEdgeLists(&loops.lists);
    EXPECT_EQ(loops.lists.GetCount(), 2);
}

TEST(Slivers, TheShortestSideCollapsesAndTheFanStaysLinked)
{
    ZrCIncrementalDelaunay2D d(20);
    std::vector<t_hdelaunaytriangle*> fan = Fan(d);
    // Pull the centre close to corner 1: the side 1-4 of fan[0] and fan[1]
    // is the shortest.
    d.GetVertexPtr(4)->x = 1.9f;
    d.GetVertexPtr(4)->y = 0.2f;
    CList<t_hdelaunaytriangle*> one;
    one.AddTail(fan[0]);
    EXPECT_TRUE(d.CheckCollaborateTriangles(&one, 0.0f, 100.0f));
    EXPECT_TRUE(fan[0]->Ignore);
    EXPECT_TRUE(fan[1]->Ignore);
    d.KillIgnoredTrianglesFromTriangleList(true);
    const std::vector<t_hdelaunaytriangle*> left = Triangles(d.GetTriangleList());
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(LinkFault(left), "");
    EXPECT_EQ(OpenSides(left), 4);
    EXPECT_EQ(Corners(left), (std::set<int>{0, 1, 2, 3}));

    ZrCIncrementalDelaunay2D twice(10);
    t_hdelaunaytriangle* flat = AddTriangle(twice, P(0, 0), P(1, 0), P(0, 1));
    flat->Vertex[2] = flat->Vertex[1];
    one.RemoveAll();
    one.AddTail(flat);
    EXPECT_FALSE(twice.CheckCollaborateTriangles(&one, 0.0f, 100.0f)) << "two equal corners";
    one.RemoveAll();
    one.AddTail(twice.GetTriangleList().GetHead());
    flat->Vertex[2] = 2;
    EXPECT_FALSE(twice.CheckCollaborateTriangles(&one, 5.0f, 100.0f)) << "all sides short";
    EXPECT_FALSE(twice.CheckCollaborateTriangles(&one, 0.0f, 0.5f)) << "all sides long";
}

} // namespace
} // namespace vek::test
