// Triangulating the points of a border polygon and what lies inside it.

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "surface/triangulation_checks.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

using vek::test::Triangles;

SSEPoint P(float x, float y, float z = 0.0f)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(x, y, z, 0.0f);
    return p;
}

// An L: the square 0..20 without its upper right quarter 10..20 x 10..20.
void LShape(CSSE3dPolygon& polygon)
{
    const float corners[6][2] = {{0, 0}, {20, 0}, {20, 10}, {10, 10}, {10, 20}, {0, 20}};
    polygon.Create(6);
    for (int i = 0; i < 6; ++i) polygon.SetPoint(i, corners[i][0], corners[i][1], 1.0f);
}

bool InsideL(double x, double y)
{
    return x > 0 && y > 0 && x < 20 && y < 20 && (x < 10 || y < 10);
}

TEST(PolygonTriangulation, MarksTrianglesOutsideTheBorderPolygon)
{
    CSSE3dPolygon border;
    LShape(border);
    ZrCIncrementalDelaunay2D d(100);
    d.AddPolygon(border, false);
    for (float x = 2.5f; x < 20.0f; x += 5.0f) {
        for (float y = 2.5f; y < 20.0f; y += 5.0f) {
            if (InsideL(x, y)) d.AppendVertex(P(x, y, 2.0f));
        }
    }
    d.Triangulate(border, d.GetNumVertices(), 1);

    const std::vector<t_hdelaunaytriangle*> triangles = Triangles(d.GetFinalList());
    ASSERT_FALSE(triangles.empty());
    EXPECT_TRUE(d.GetTriangleList().IsEmpty()); // finalized
    EXPECT_EQ(vek::test::LinkFault(triangles), "");
    int outside = 0;
    for (const t_hdelaunaytriangle* t : triangles) {
        double cx = 0, cy = 0;
        for (int k = 0; k < 3; ++k) {
            cx += vek::test::At(d, t->Vertex[k]).x / 3.0;
            cy += vek::test::At(d, t->Vertex[k]).y / 3.0;
        }
        EXPECT_EQ(t->Outside, !InsideL(cx, cy)) << cx << ", " << cy;
        outside += t->Outside ? 1 : 0;
    }
    // The hull of the L spans the notch, which only Outside triangles fill.
    EXPECT_GT(outside, 0);
    EXPECT_EQ(vek::test::Corners(triangles).size(), static_cast<std::size_t>(d.GetNumVertices()));
}

TEST(PolygonTriangulation, StartsFromTheExtremePointsAndStaysInTheWorkingList)
{
    // Each point takes at most one role, max x first: points 0, 1 and 2 each
    // raise the max x in turn, so point 3, below the starting min x, becomes
    // the min-x point and no point is left for max y, which falls to vertex 0.
    // The first triangle is thus (3, 2, 0). Vertex 1 lies in its circle, and
    // the Delaunay rule then takes the diagonal 1-3 of the quadrilateral:
    // vertex 3 lies well inside the circle through 0, 1 and 2 (centre (5, 12),
    // radius 13).
    CSSE3dPolygon border;
    const float points[4][2] = {{0, 0}, {5, -1}, {10, 0}, {5, 8}};
    border.Create(4);
    for (int i = 0; i < 4; ++i) border.SetPoint(i, points[i][0], points[i][1], 0.0f);
    ZrCIncrementalDelaunay2D d(10);
    d.AddPolygon(border, false);
    d.Triangulate(border, 3, 0);

    EXPECT_TRUE(d.GetFinalList().IsEmpty()); // not finalized
    const std::vector<t_hdelaunaytriangle*> triangles = Triangles(d.GetTriangleList());
    std::multiset<std::set<int>> corners;
    for (const t_hdelaunaytriangle* t : triangles) {
        corners.insert(std::set<int>(t->Vertex, t->Vertex + 3));
        EXPECT_GT(vek::test::SignedArea(d, t), 0.0); // counter-clockwise
    }
    EXPECT_EQ(corners, (std::multiset<std::set<int>>{{0, 1, 3}, {1, 2, 3}}));
    EXPECT_EQ(vek::test::LinkFault(triangles), "");
}

TEST(PolygonTriangulation, CheckAcrossEdgeSamplesTheSegment)
{
    CSSE3dPolygon square;
    square.Create(4);
    square.SetPoint(0, 0, 0, 0);
    square.SetPoint(1, 4, 0, 0);
    square.SetPoint(2, 4, 4, 0);
    square.SetPoint(3, 0, 4, 0);
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(-2, 2), P(2, 2), square));
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(-3, 2), P(7, 2), square));
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(-3, 5), P(7, 5), square));
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(2, 2), P(2, 2), square)); // no samples
    // Samples every 0.1 from the start, the start itself excluded.
    EXPECT_TRUE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(3.8f, 2), P(8, 2), square));
    EXPECT_FALSE(ZrCIncrementalDelaunay2D::CheckAcrossEdge(P(3.95f, 2), P(8, 2), square));
}

} // namespace
