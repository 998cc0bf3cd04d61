#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "mesh_builders.h"

using vek::test::Corner;
using vek::test::Fill;
using vek::test::Sse;
using vek::test::Triangle;

namespace {

t_htriangle* NeighbourAcross(const t_htriangle& t, int edge)
{
    return edge == 0 ? t.Neighbour0 : edge == 1 ? t.Neighbour1 : t.Neighbour2;
}

bool CornerOf(const SSEPoint& p, const t_htriangle& t)
{
    const auto same = [&p](const SSEPoint& q) { return p.x == q.x && p.y == q.y && p.z == q.z && p.w == q.w; };
    return same(*t.P0) || same(*t.P1) || same(*t.P2);
}

// Runs the search and compares it with a plain search over all pairs for
// the triangle across each edge. Meant for meshes in which no two triangles
// share more than one edge and every vertex has a height of its own, so that
// matching lanes means matching corners. Triangles without an open edge keep
// the flag they had.
void CalcNeighboursAndCompareWithBruteForce(CHTriangulation& mesh)
{
    const int n = mesh.GetNumTriangles();
    std::vector<int> flagsBefore;
    for (int i = 0; i < n; ++i) flagsBefore.push_back(mesh.GetTriangle(i)->Flag);
    mesh.CalcNeighbours();
    for (int i = 0; i < n; ++i) {
        const t_htriangle& t = *mesh.GetTriangle(i);
        const SSEPoint* corners[3] = {t.P0, t.P1, t.P2};
        bool open = false;
        for (int edge = 0; edge < 3; ++edge) {
            t_htriangle* expected = nullptr;
            for (int j = 0; j < n; ++j) {
                const t_htriangle& other = *mesh.GetTriangle(j);
                if (j != i && CornerOf(*corners[edge], other) && CornerOf(*corners[(edge + 1) % 3], other)) {
                    expected = mesh.GetTriangle(j);
                }
            }
            EXPECT_EQ(NeighbourAcross(t, edge), expected) << "triangle " << i << " edge " << edge;
            open = open || expected == nullptr;
        }
        EXPECT_EQ(t.Flag, open ? 13 : flagsBefore[i]) << "triangle " << i;
    }
}

TEST(CHTriangulationNeighbours, TwoTrianglesSharingAnEdgeKnowEachOtherAndBothLieOnTheBorder)
{
    // The shared edge is P1-P2 of both.
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{0, 0, 1}, {1, 0, 2}, {0, 1, 3}}}, {{{1, 1, 4}, {0, 1, 3}, {1, 0, 2}}}});
    CalcNeighboursAndCompareWithBruteForce(mesh);
    EXPECT_EQ(mesh.GetTriangle(0)->Neighbour1, mesh.GetTriangle(1));
    EXPECT_EQ(mesh.GetTriangle(1)->Neighbour1, mesh.GetTriangle(0));
    EXPECT_EQ(mesh.GetTriangle(1)->Flag, 13);
}

TEST(CHTriangulationNeighbours, FanAroundACentreLinksEachBladeToTheNextOne)
{
    const std::vector<Corner> rim = {{2, 0, 1}, {2, 2, 2}, {0, 2, 3}, {-2, 2, 4},
                                     {-2, 0, 5}, {-2, -2, 6}, {0, -2, 7}, {2, -2, 8}};
    for (int blades : {7, 8}) { // open, then closed around the centre
        std::vector<Triangle> triangles;
        for (int k = 0; k < blades; ++k) triangles.push_back({Corner{0, 0, 0}, rim[k], rim[(k + 1) % 8]});
        CHTriangulation mesh(0, 1, 1, 1);
        Fill(mesh, triangles);
        CalcNeighboursAndCompareWithBruteForce(mesh);
        EXPECT_EQ(mesh.GetTriangle(0)->Neighbour0, blades == 8 ? mesh.GetTriangle(7) : nullptr);
        EXPECT_EQ(mesh.GetTriangle(3)->Neighbour2, mesh.GetTriangle(4));
    }
}

TEST(CHTriangulationNeighbours, GridsWithDistinctHeightsAgreeWithBruteForce)
{
    std::mt19937 random(20240611);
    for (auto [columns, rows] : {std::pair{1, 1}, {3, 2}, {2, 5}, {6, 6}, {11, 4}}) {
        SCOPED_TRACE(::testing::Message() << columns << " x " << rows << " cells");
        std::vector<int> heights((columns + 1) * (rows + 1));
        std::iota(heights.begin(), heights.end(), 1);
        std::shuffle(heights.begin(), heights.end(), random);
        const int stride = columns + 1; // a lambda may not capture a structured binding
        CHTriangulation mesh(0, 1, 1, 1);
        vek::test::FillGrid(mesh, columns, rows,
                            [&](int x, int y) { return static_cast<float>(heights[y * stride + x]); });
        CalcNeighboursAndCompareWithBruteForce(mesh);
    }
}

TEST(CHTriangulationNeighbours, ClosedSurfaceHasNoBorderAndKeepsItsFlags)
{
    // A tetrahedron, every edge shared by exactly two faces; no coordinate
    // repeats between its vertices.
    const Corner a{0, 0, 0}, b{4, 1, 2}, c{1, 5, 3}, d{2, 3, 6};
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{a, c, b}, {a, b, d}, {a, d, c}, {b, c, d}});
    mesh.GetTriangle(2)->Flag = 14;
    CalcNeighboursAndCompareWithBruteForce(mesh);
    EXPECT_EQ(mesh.GetTriangle(2)->Flag, 14);
    EXPECT_EQ(mesh.GetTriangle(3)->Flag, -1);
}

TEST(CHTriangulationNeighbours, CornersMatchLaneByLaneAcrossDifferentCorners)
{
    // No corner position is shared, but every lane of two corners of each
    // triangle is found in some corner of the other.
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{0, 0, 0}, {1, 1, 0}, {5, 5, 5}}}, {{{0, 1, 0}, {1, 0, 0}, {9, 9, 9}}}});
    mesh.CalcNeighbours();
    EXPECT_EQ(mesh.GetTriangle(0)->Neighbour0, mesh.GetTriangle(1));
    EXPECT_EQ(mesh.GetTriangle(1)->Neighbour0, mesh.GetTriangle(0));

    // Float equality: minus zero meets zero, and a corner that is not a
    // number meets nothing, not even itself.
    const float nan = std::nanf("");
    Fill(mesh, {{{{0, 0, 2}, {1, 0, 0}, {0, 1, 5}}}, {{{1, 0, -0.0f}, {0, 0, 2}, {0, -1, 7}}}});
    mesh.CalcNeighbours();
    EXPECT_EQ(mesh.GetTriangle(0)->Neighbour0, mesh.GetTriangle(1));
    Fill(mesh, {{{{0, 0, nan}, {1, 0, 0}, {0, 1, 0}}}, {{{1, 0, 0}, {0, 0, nan}, {0, -1, 0}}}});
    mesh.CalcNeighbours();
    EXPECT_EQ(mesh.GetTriangle(0)->Neighbour0, nullptr);
    EXPECT_EQ(mesh.GetTriangle(1)->Neighbour0, nullptr);
}

TEST(CHTriangulationNeighbours, LaterMatchesOverwriteAndOldPointersSurvive)
{
    // Three triangles on the one edge (0,0)-(1,0): the last one examined wins.
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
                {{{0, 0, 0}, {1, 0, 0}, {0, -1, 0}}},
                {{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}}});
    mesh.CalcNeighbours();
    EXPECT_EQ(mesh.GetTriangle(0)->Neighbour0, mesh.GetTriangle(2));
    EXPECT_EQ(mesh.GetTriangle(1)->Neighbour0, mesh.GetTriangle(2));
    EXPECT_EQ(mesh.GetTriangle(2)->Neighbour0, mesh.GetTriangle(1));

    // Pointers set before the search are not cleared; a triangle whose three
    // pointers are all set is no border triangle.
    Fill(mesh, {{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}, {{{5, 5, 5}, {6, 5, 5}, {5, 6, 5}}}});
    t_htriangle* lonely = mesh.GetTriangle(1);
    lonely->Neighbour0 = lonely->Neighbour1 = lonely->Neighbour2 = mesh.GetTriangle(0);
    mesh.CalcNeighbours();
    EXPECT_EQ(lonely->Neighbour1, mesh.GetTriangle(0));
    EXPECT_EQ(lonely->Flag, -1);
    EXPECT_EQ(mesh.GetTriangle(0)->Flag, 13);
}

TEST(CHTriangulationNeighbours, TriangleWithThreeNeighboursDropsOutOfTheSearch)
{
    // Triangle 3 (p, q, r) is completed by the three before it, one on each
    // edge, and leaves the search before it gets to compare itself with
    // triangle 4, which lies on its edge p-q as well. So triangle 4 is
    // never seen from triangle 3, and both keep triangle 0 on that edge.
    const Corner p{0, 0, 10}, q{4, 1, 11}, r{1, 5, 12};
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{p, q, Corner{2, -3, 20}},
                {q, r, Corner{6, 6, 21}},
                {r, p, Corner{-3, 3, 22}},
                {p, q, r},
                {q, p, Corner{3, -6, 23}}});
    mesh.CalcNeighbours();
    const t_htriangle* t = mesh.GetTriangles();
    EXPECT_EQ(t[3].Neighbour0, &t[0]);
    EXPECT_EQ(t[3].Neighbour1, &t[1]);
    EXPECT_EQ(t[3].Neighbour2, &t[2]);
    EXPECT_EQ(t[4].Neighbour0, &t[0]);
    EXPECT_EQ(t[0].Neighbour0, &t[4]); // the later of its two partners
    EXPECT_EQ(t[3].Flag, -1);
}

TEST(CHTriangulationNeighbours, WorkingListRunsInArrayOrderAndUnlinksAnywhere)
{
    CHTriangulation mesh(4, 1, 1, 1);
    mesh.IndexTriangleList();
    t_htriangle* t = mesh.GetTriangles();
    ASSERT_EQ(mesh.GetTriangleListHead(), &t[0]);
    EXPECT_EQ(t[3].Prev, &t[2]);
    EXPECT_EQ(t[3].Next, nullptr);
    mesh.DeleteTriangleFromList(&t[0]);
    mesh.DeleteTriangleFromList(&t[2]);
    mesh.DeleteTriangleFromList(nullptr);
    EXPECT_EQ(mesh.GetTriangleListHead(), &t[1]);
    EXPECT_EQ(t[1].Prev, nullptr);
    EXPECT_EQ(t[1].Next, &t[3]);
    EXPECT_EQ(t[3].Prev, &t[1]);

    // A lone triangle lies on the border; an empty mesh has no list at all.
    CHTriangulation single(1, 1, 1, 1);
    single.CalcNeighboursConstrained();
    EXPECT_EQ(single.GetTriangle(0)->Flag, 13);
    CHTriangulation empty(0, 1, 1, 1);
    empty.CalcNeighbours();
    EXPECT_EQ(empty.GetTriangleListHead(), nullptr);
}

} // namespace
