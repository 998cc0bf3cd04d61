#include <gtest/gtest.h>

#include <cstdlib>

#include "mesh_builders.h"
#include "support/polygon_points.h"
#include "support/exit_guard.h"

using namespace vek::test;

namespace {

// Runs the search and compares it with a plain search over all pairs for the
// triangle across each edge, on meshes in which no two triangles share more
// than one edge and no two vertices share a height. Triangles with an open
// edge become border triangles, the others keep their flag.
void ExpectNeighboursOfBruteForce(CHTriangulation& mesh)
{
    const int n = mesh.GetNumTriangles();
    const auto cornerOf = [](const SSEPoint* p, const t_htriangle& t) {
        return Lanes(*p) == Lanes(*t.P0) || Lanes(*p) == Lanes(*t.P1) || Lanes(*p) == Lanes(*t.P2);
    };
    std::vector<int> flagsBefore;
    for (int i = 0; i < n; ++i) flagsBefore.push_back(mesh.GetTriangle(i)->Flag);
    mesh.CalcNeighbours();
    for (int i = 0; i < n; ++i) {
        const t_htriangle& t = *mesh.GetTriangle(i);
        const SSEPoint* corners[3] = {t.P0, t.P1, t.P2};
        const t_htriangle* found[3] = {t.Neighbour0, t.Neighbour1, t.Neighbour2};
        bool open = false;
        for (int edge = 0; edge < 3; ++edge) {
            t_htriangle* expected = nullptr;
            for (int j = 0; j < n; ++j) {
                const t_htriangle& other = *mesh.GetTriangle(j);
                if (j != i && cornerOf(corners[edge], other) && cornerOf(corners[(edge + 1) % 3], other)) expected = mesh.GetTriangle(j);
            }
            EXPECT_EQ(found[edge], expected) << "triangle " << i << " edge " << edge;
            open = open || expected == nullptr;
        }
        EXPECT_EQ(t.Flag, open ? 13 : flagsBefore[i]) << "triangle " << i;
    }
}

TEST(CHTriangulationNeighbours, FansAndGridsAgreeWithBruteForce)
{
    CHTriangulation mesh(0, 1, 1, 1);
    const std::vector<Corner> rim = {{2, 0, 1}, {2, 2, 2}, {0, 2, 3}, {-2, 2, 4}, {-2, 0, 5}, {-2, -2, 6}, {0, -2, 7}, {2, -2, 8}};
    for (int blades : {7, 8}) { // a fan open on one side, then closed around the centre
        std::vector<Triangle> fan;
        for (int k = 0; k < blades; ++k) fan.push_back({Corner{0, 0, 0}, rim[k], rim[(k + 1) % 8]});
        Fill(mesh, fan);
        ExpectNeighboursOfBruteForce(mesh);
    }
    for (auto [columns, rows] : {std::pair{1, 1}, {3, 2}, {6, 6}, {11, 4}}) {
        SCOPED_TRACE(::testing::Message() << columns << " x " << rows << " cells");
        const auto h = [stride = columns + 1](int x, int y) { return static_cast<float>(y * stride + x + 1); };
        mesh.CreateTriangulation(2 * columns * rows);
        for (int cell = 0, index = 0; cell < columns * rows; ++cell) {
            const int x = cell % columns, y = cell / columns;
            mesh.AppendTriangle(3, 3, float(x), float(x + 1), float(y), float(y + 1), h(x, y), h(x, y + 1), h(x + 1, y), h(x + 1, y + 1), index, false, false);
        }
        ExpectNeighboursOfBruteForce(mesh);
    }
}

TEST(CHTriangulationNeighbours, LanesMatchLooselyLaterMatchesOverwriteAndCompleteTrianglesDropOut)
{
    // No corner is shared, but every lane of two corners of each triangle is
    // found in some corner of the other.
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{0, 0, 0}, {1, 1, 0}, {5, 5, 5}}}, {{{0, 1, 0}, {1, 0, 0}, {9, 9, 9}}}});
    mesh.CalcNeighbours();
    EXPECT_EQ(mesh.GetTriangle(1)->Neighbour0, mesh.GetTriangle(0));

    // The triangle (p, q, r) is completed by three others and leaves the
    // search, as the one compared or as the one comparing, before it meets
    // the fifth on its edge p-q; the others take the later of two partners.
    const Corner p{0, 0, 10}, q{4, 1, 11}, r{1, 5, 12}, x{2, -3, 20}, y{6, 6, 21}, z{-3, 3, 22}, w{3, -6, 23};
    Fill(mesh, {{p, q, x}, {q, r, y}, {r, p, z}, {p, q, r}, {q, p, w}});
    mesh.CalcNeighbours();
    t_htriangle* t = mesh.GetTriangles();
    EXPECT_EQ((std::vector{t[3].Neighbour0, t[3].Neighbour1, t[3].Neighbour2, t[4].Neighbour0, t[0].Neighbour0}),
              (std::vector{&t[0], &t[1], &t[2], &t[0], &t[4]}));
    EXPECT_EQ(t[3].Flag, -1);
    Fill(mesh, {{p, q, r}, {p, q, x}, {q, r, y}, {r, p, z}, {q, p, w}});
    mesh.CalcNeighbours();
    t = mesh.GetTriangles();
    EXPECT_EQ((std::vector{t[0].Neighbour0, t[1].Neighbour0, t[4].Neighbour0}), (std::vector{&t[1], &t[4], &t[1]}));

    // Pointers set before the search are not cleared: with all three set a
    // lone triangle is no border triangle.
    Fill(mesh, {{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}, {{{5, 5, 5}, {6, 5, 5}, {5, 6, 5}}}});
    t_htriangle* lonely = mesh.GetTriangle(1);
    lonely->Neighbour0 = lonely->Neighbour1 = lonely->Neighbour2 = mesh.GetTriangle(0);
    mesh.CalcNeighboursConstrained();
    EXPECT_EQ(std::pair(lonely->Flag, mesh.GetTriangle(0)->Flag), std::pair(-1, 13));
}

// The stretches left in the list, released on the way.
std::vector<t_stretch> TakeStretches(CHTriangulation& mesh)
{
    std::vector<t_stretch> left;
    for (t_stretch* head; (head = mesh.GetStretchListHead()) != nullptr; mesh.DeleteStretchFromList(head)) left.push_back(*head);
    return left;
}

TEST(CHTriangulationBorders, BorderLineTakesOneOpenEdgePerTriangleJumpsPastEverySecondStretchAndEndsWhereItBreaks)
{
    CHTriangulation mesh(0, 1, 1, 1);
    Fill(mesh, {{{{7, 7, 7}, {6, 5, 5}, {9, 9, 9}}}, {{{5, 5, 5}, {6, 5, 5}, {8, 8, 8}}}, {{{3, 3, 3}, {4, 4, 4}, {3, 4, 3}}},
                {{{9, 1, 1}, {1, 0, 0}, {2, 0, 0}}}, {{{0, 0, 0}, {1, 0, 0}, {0, 5, 0}}}});
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
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {7, 7, 7}}));
    // The stretches jumped over stay, and alias the corners of their triangles.
    const std::vector<t_stretch> left = TakeStretches(mesh);
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ((std::vector{left[0].P0, left[0].P1, left[1].P0, left[1].P1}), (std::vector{t[3].P1, t[3].P2, t[0].P0, t[0].P1}));

    // Two triangles across one edge: the two open edges that come first do
    // not touch, so the walk has nowhere to go and ends through the hook.
    Fill(mesh, {{{{0, 0, 1}, {1, 0, 2}, {0, 1, 3}}}, {{{1, 1, 4}, {0, 1, 3}, {1, 0, 2}}}});
    mesh.CalcNeighbours();
    EXPECT_EQ(ExitCodeOf([&] { mesh.FindBorderLine(&polygon); }), EXIT_FAILURE);
    EXPECT_EQ(PointOf(polygon, 1), (Xyz{0, 1, 3}));
    EXPECT_EQ(TakeStretches(mesh).size(), 2u);
}

} // namespace
