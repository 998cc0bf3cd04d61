// Triangulating the points of a border polygon and what lies inside it.

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "support/polygon_points.h"
#include "surface/triangulation_checks.h"

namespace {

using vek::test::AddTriangle;
using vek::test::P;
using vek::test::PolygonOf;
using vek::test::Triangles;

// Inside the L: the square 0..20 without its upper right quarter.
bool InsideL(double x, double y) { return x > 0 && y > 0 && x < 20 && y < 20 && (x < 10 || y < 10); }

TEST(PolygonTriangulation, MarksTrianglesOutsideTheBorderPolygon)
{
    CSSE3dPolygon border = PolygonOf({{0, 0, 1}, {20, 0, 1}, {20, 10, 1}, {10, 10, 1}, {10, 20, 1}, {0, 20, 1}});
    ZrCIncrementalDelaunay2D d(100);
    d.AddPolygon(border, false);
    for (int i = 0; i < 16; ++i) {
        const float x = 2.5f + 5.0f * float(i / 4), y = 2.5f + 5.0f * float(i % 4);
        if (InsideL(x, y)) d.AppendVertex(P(x, y, 2.0f));
    }
    d.Triangulate(border, d.GetNumVertices(), 1);

    const std::vector<t_hdelaunaytriangle*> triangles = Triangles(d.GetFinalList());
    ASSERT_TRUE(d.GetTriangleList().IsEmpty() && !triangles.empty());  // finalized
    EXPECT_EQ(vek::test::LinkFault(triangles), "");
    int outside = 0;  // the hull of the L spans the notch, which only Outside triangles fill
    for (const t_hdelaunaytriangle* t : triangles) {
        const auto at = [&](int k) { return vek::test::At(d, t->Vertex[k]); };
        const double cx = (at(0).x + at(1).x + at(2).x) / 3, cy = (at(0).y + at(1).y + at(2).y) / 3;
        EXPECT_EQ(t->Outside, !InsideL(cx, cy)) << cx << ", " << cy;
        outside += t->Outside;
    }
    EXPECT_GT(outside, 0);
    EXPECT_EQ(vek::test::Corners(triangles).size(), static_cast<std::size_t>(d.GetNumVertices()));
}

TEST(PolygonTriangulation, StartsFromTheExtremePointsAndStaysInTheWorkingList)
{
    // Each point takes one role, max x first: 0, 1, 2 raise it in turn, 3
    // becomes min x, and max y falls to vertex 0, so the first triangle is
    // (3, 2, 0). Vertex 3 lies well inside the circle through 0, 1 and 2
    // (centre (5, 12), radius 13), so the diagonal is 1-3.
    CSSE3dPolygon border = PolygonOf({{0, 0, 0}, {5, -1, 0}, {10, 0, 0}, {5, 8, 0}});
    ZrCIncrementalDelaunay2D d(10);
    d.AddPolygon(border, false);
    d.Triangulate(border, 3, 0);

    EXPECT_TRUE(d.GetFinalList().IsEmpty());  // not finalized
    const std::vector<t_hdelaunaytriangle*> triangles = Triangles(d.GetTriangleList());
    for (const t_hdelaunaytriangle* t : triangles) EXPECT_GT(vek::test::SignedArea(d, t), 0.0);  // counter-clockwise
    EXPECT_EQ(vek::test::CornerSets(d.GetTriangleList()), (std::multiset<std::set<int>>{{0, 1, 3}, {1, 2, 3}}));
    EXPECT_EQ(vek::test::LinkFault(triangles), "");
}

TEST(PolygonTriangulation, CheckAcrossEdgeSamplesTheSegment)
{
    CSSE3dPolygon square = PolygonOf({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}});
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(-2, 2), P(2, 2), square));
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(-3, 2), P(7, 2), square));
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(-3, 5), P(7, 5), square));
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(2, 2), P(2, 2), square)); // no samples
    // Samples every 0.1 from the start, the start itself excluded.
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(3.8f, 2), P(8, 2), square));
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(3.95f, 2), P(8, 2), square));
}

TEST(CheckTrianguleAndProcessList, TrianglesNearThePolygonAreMarkedAndTheirNeighboursQueued)
{
    ZrCIncrementalDelaunay2D d(24);
    t_hdelaunaytriangle* near = AddTriangle(d, P(0, 1, 0), P(2, 1, 0), P(1, 2, 0));
    t_hdelaunaytriangle* far = AddTriangle(d, P(0, 9, 0), P(2, 9, 0), P(1, 10, 0));
    t_hdelaunaytriangle* a = AddTriangle(d, P(0, 0, 0), P(1, 0, 0), P(0, 1, 0));
    t_hdelaunaytriangle* b = AddTriangle(d, P(5, 0, 0), P(6, 0, 0), P(5, 1, 0));
    near->Neighbour[0] = b;
    near->Neighbour[2] = a;
    far->Ignore = true;
    CSSE3dPolygon line = PolygonOf(vek::test::Row(10));
    CList<t_hdelaunaytriangle*> queue;

    // Corners at distance 1, 1 and 2 from the line's points: within 1.5 + 0.5.
    d.CheckTrianguleAndProcessList(near, nullptr, &queue, 1.5f, 0.5f, line);
    EXPECT_TRUE(near->Ignore && near->Processed);
    EXPECT_EQ(vek::test::Triangles(queue), (std::vector<t_hdelaunaytriangle*>{b, a}));  // side 0 before side 2
    EXPECT_TRUE(a->Visited && b->Visited);
    near->Ignore = false;  // processed already: nothing happens
    d.CheckTrianguleAndProcessList(near, nullptr, &queue, 1.5f, 0.5f, line);
    EXPECT_FALSE(near->Ignore);
    // Just beyond the limit: the mark goes, nothing is queued.
    d.CheckTrianguleAndProcessList(far, nullptr, &queue, 8.5f, 0.4f, line);
    EXPECT_TRUE(!far->Ignore && far->Processed);
    EXPECT_EQ(queue.GetCount(), 2);

    // A closed strip: points 0 ... 49 along y = 0, 50 ... 99 back along y = 2.
    // The corners must be near one stretch of at most 100 / 10 points: not
    // near 10 and 89, nor 35 ... 46; but near 98 ... 1 round the start, or 20 ... 30.
    std::vector<vek::test::Xyz> strip = vek::test::Row(50);
    for (int i = 49; i >= 0; --i) strip.push_back({static_cast<float>(i), 2.0f, 0.0f});
    const CSSE3dPolygon closedStrip = PolygonOf(strip);
    const std::pair<t_hdelaunaytriangle*, bool> stretches[] = {
        {AddTriangle(d, P(10, 0, 0), P(11, 0, 0), P(10, 2, 0)), false},
        {AddTriangle(d, P(35, 0, 0), P(46, 0, 0), P(40, 0.5f, 0)), false},
        {AddTriangle(d, P(0, 0.2f, 0), P(1, 0.2f, 0), P(0.5f, 1.8f, 0)), true},
        {AddTriangle(d, P(20, 0, 0), P(30, 0, 0), P(25, 0.5f, 0)), true},
    };
    for (const auto& [t, near] : stretches) {
        d.CheckTrianguleAndProcessList(t, nullptr, &queue, 1.0f, 0.0f, closedStrip);
        EXPECT_EQ(t->Ignore, near) << t->Vertex[0];
    }
}

} // namespace
