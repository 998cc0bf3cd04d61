// Refinement of a surface against raster fields, on squares whose two
// triangles, centroids and circles are known by hand.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <set>
#include <utility>
#include <vector>

#include "support/sse_lanes.h"
#include "surface/refinement_fixtures.h"

namespace vek::test {
namespace {

using Surface = ZrCIncrementalDelaunay2D;

t_hdelaunaytriangle* TriangleWith(Surface& d, int vertex)
{
    for (t_hdelaunaytriangle* t : Triangles(PresentTriangles(d))) {
        if (Corners({t}).count(vertex) != 0) return t;
    }
    return nullptr;
}

int TrianglesAround(Surface& d, int vertex)
{
    int around = 0;
    for (t_hdelaunaytriangle* t : Triangles(PresentTriangles(d))) around += static_cast<int>(Corners({t}).count(vertex));
    return around;
}

std::set<std::pair<float, float>> PositionsFrom(Surface& d, int first)
{
    std::set<std::pair<float, float>> positions;
    for (int v = first; v < d.GetNumVertices(); ++v) positions.emplace(d.GetVertex(v).x, d.GetVertex(v).y);
    return positions;
}

// The square 0 .. 6 at height 0: its lower triangle has the centroid (2, 2),
// the upper one (4, 4). A field of 8 x 8 cells, 0 but at those two cells.
CSSEMatrix AtCentroids(float at22, float at44, int size = 8, float elsewhere = 0.0f)
{
    return Field(size, size, [=](int x, int y) {
        if (x == 2 && y == 2) return at22;
        if (x == 4 && y == 4) return at44;
        return elsewhere;
    });
}

TEST(DistanceImage, EveryMaskedCellBecomesAVertexOnceAndCellsBeyondTheSurfaceAreDropped)
{
    // The 5 x 5 cells of the square 0 .. 4, and a 6 x 6 field whose last row
    // and column lie beyond it.
    for (const int size : {5, 6}) {
        Surface d(40);
        Square(d, 4.0f);
        CSSEMatrix mask = Constant(size, size, 1.0f);
        CSSEMatrix height = Field(size, size, [](int x, int y) { return static_cast<float>(x + 10 * y); });
        d.DistanceImageInsertPoints(&mask, &height, false, 1, true);
        ASSERT_EQ(d.GetNumVertices(), 25) << size;
        int v = 4;
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 5; ++x) {
                if ((x == 0 || x == 4) && (y == 0 || y == 4)) continue;  // the corners exist
                EXPECT_EQ(Lanes(d.GetVertex(v++)), Lanes(P(x, y, static_cast<float>(x + 10 * y))));
            }
        }
        EXPECT_TRUE(d.IsFinalized());
        EXPECT_EQ(d.GetNumTriangles(), 32);
        EXPECT_DOUBLE_EQ(TotalArea(d), 16.0);
        EXPECT_EQ(SurfaceFault(d), "");
    }
}

TEST(DistanceImage, CellsHalfACellFromAVertexAndAnEmptyMaskAddNothing)
{
    Surface d(40);
    for (const SSEPoint& p : {P(0, 0), P(4, 0), P(0, 4), P(4, 4), P(2.5f, 2.0f)}) d.AppendVertex(p);
    d.Triangulate(5, true, true);
    CSSEMatrix none = Constant(5, 5, 0.0f);
    CSSEMatrix height = Constant(5, 5, 1.0f);
    const std::vector<long> before = ListShape(d.GetFinalList());
    d.DistanceImageInsertPoints(&none, &height, false, 1, false);
    EXPECT_FALSE(d.IsFinalized());
    EXPECT_EQ(d.GetNumVertices(), 5);
    EXPECT_EQ(ListShape(d.GetTriangleList()), before);

    // (2, 2) and (3, 2) lie exactly 0.5 from (2.5, 2): both stay out.
    CSSEMatrix all = Constant(5, 5, 1.0f);
    d.DistanceImageInsertPoints(&all, &height, false, 1, true);
    EXPECT_EQ(d.GetNumVertices(), 25 + 1 - 2);
    EXPECT_EQ(d.PointIndex(P(2, 2)), -1);
    EXPECT_EQ(d.PointIndex(P(3, 2)), -1);
    EXPECT_GE(d.PointIndex(P(1, 2)), 0);
    EXPECT_EQ(SurfaceFault(d), "");
}

TEST(DistanceImage, CellCornerSamplesFillTheCellsWhoseFourCornersAreMasked)
{
    for (const int sampling : {1, 5}) {
        Surface d(120);
        for (const SSEPoint& p : {P(0, 0), P(4, 0), P(0, 4), P(4, 4), P(1.7f, 1.5f)}) d.AppendVertex(p);
        d.Triangulate(5, true, true);
        // Cell (3, 3) has its corner (4, 4) unmasked.
        CSSEMatrix mask = Field(5, 5, [](int x, int y) { return x == 4 && y == 4 ? 0.0f : 1.0f; });
        CSSEMatrix height = Constant(5, 5, 7.0f);
        d.DistanceImageInsertPoints(&mask, &height, true, sampling, true);
        std::set<std::pair<float, float>> expected;
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                if (x == 3 && y == 3) continue;
                // The centre (1.5, 1.5) lies 0.2 from (1.7, 1.5); the quarter
                // points of that cell lie 0.255 from it, beyond 0.249.
                if (!(x == 1 && y == 1)) expected.emplace(x + 0.5f, y + 0.5f);
                if (sampling == 1) continue;
                for (const float dx : {0.25f, 0.75f})
                    for (const float dy : {0.25f, 0.75f}) expected.emplace(x + dx, y + dy);
            }
        }
        SCOPED_TRACE(sampling);
        EXPECT_EQ(d.GetNumVertices(), 5 + static_cast<int>(expected.size()));
        EXPECT_EQ(PositionsFrom(d, 5), expected);
        for (int v = 5; v < d.GetNumVertices(); ++v) EXPECT_EQ(d.GetVertex(v).z, 7.0f);
        EXPECT_EQ(SurfaceFault(d), "");
    }
}

TEST(HighDerivation, TheCellAtTheCentroidGoesInWhereHeightsDepart)
{
    Surface d(5);
    Square(d, 6.0f);
    CSSEMatrix mask = Constant(8, 8, 1.0f);
    CSSEMatrix height = AtCentroids(3.0f, 1.5f);
    // 3² exceeds 2², 1.5² does not: only the lower triangle takes a vertex.
    d.HighDerivationInsertPoints(&height, &mask, 2.0f, true);
    ASSERT_EQ(d.GetNumVertices(), 5);
    EXPECT_EQ(Lanes(d.GetVertex(4)), Lanes(P(2, 2, 3)));
    // (2, 2) lies in the upper triangle's circle too: the Delaunay rule
    // flips the old diagonal, and four triangles meet at the new vertex.
    EXPECT_EQ(d.GetNumTriangles(), 4);
    EXPECT_EQ(TrianglesAround(d, 4), 4);
    EXPECT_EQ(SurfaceFault(d), "");

    const std::vector<std::pair<const char*, std::function<void(Surface&, CSSEMatrix&, float&)>>> alone = {
        {"mask 0 at the cell", [](Surface&, CSSEMatrix& m, float&) { m.SetPoint(2, 2, 0.0f); }},
        {"outside", [](Surface& s, CSSEMatrix&, float&) { TriangleWith(s, 0)->Outside = true; }},
        {"border", [](Surface& s, CSSEMatrix&, float&) { TriangleWith(s, 0)->Border = true; }},
        {"store full", [](Surface& s, CSSEMatrix&, float&) { s.ReallocSize(4); }},
        {"3² is not above 3²", [](Surface&, CSSEMatrix&, float& limit) { limit = 3.0f; }},
    };
    for (const auto& [name, change] : alone) {
        Surface s(5);
        Square(s, 6.0f);
        CSSEMatrix m = Constant(8, 8, 1.0f);
        float limit = 2.0f;
        change(s, m, limit);
        s.HighDerivationInsertPoints(&height, &m, limit, true);
        EXPECT_EQ(s.GetNumVertices(), 4) << name;
        EXPECT_EQ(s.GetNumTriangles(), 2) << name;
    }
}

TEST(HighDerivation, ACentroidThatRoundsOutOfItsTriangleSplitsNothing)
{
    // (0, 0), (3, 0.4), (0, 0.5): the centroid (1, 0.3) rounds to (1, 0),
    // below the side from (0, 0) to (3, 0.4). With (0, 3.4) as third
    // corner the centroid (1, 1.27) rounds to (1, 1), inside.
    CSSEMatrix mask = Constant(4, 4, 1.0f);
    CSSEMatrix height = Field(4, 4, [](int x, int) { return x == 1 ? 100.0f : 0.0f; });
    for (const auto& [apex, added] : {std::pair(P(0, 0.5f), 0), std::pair(P(0, 3.4f), 1)}) {
        Surface d(4);
        for (const SSEPoint& p : {P(0, 0), P(3, 0.4f), apex}) d.AppendVertex(p);
        d.Triangulate(3, true, false);
        d.HighDerivationInsertPoints(&height, &mask, 1.0f, true);
        EXPECT_EQ(d.GetNumVertices(), 3 + added) << apex.y;
    }
}

TEST(HighDerivationSplitting, SplitsAsItWalksWithinTheFieldBand)
{
    // 16 x 16 fields, since the extremes leave out the rim; the mask's
    // minimum, 0 at (10, 10), is its background.
    const auto mask = [](float at22) { return Field(16, 16, [=](int x, int y) {
                                           if (x == 10 && y == 10) return 0.0f;
                                           return x == 2 && y == 2 ? at22 : 1.0f;
                                       }); };
    {
        Surface d(4);
        Square(d, 6.0f);
        CSSEMatrix m = mask(1.0f);
        CSSEMatrix height = AtCentroids(3.0f, 3.0f, 16);
        d.HighDerivationInsertPoints(&height, &m, false, 2.0f, true);
        ASSERT_EQ(d.GetNumVertices(), 6);
        EXPECT_EQ(Lanes(d.GetVertex(4)), Lanes(P(2, 2, 3)));
        EXPECT_EQ(Lanes(d.GetVertex(5)), Lanes(P(4, 4, 3)));
        EXPECT_EQ(d.GetMaxNumVertices(), 54);  // grown by 50 when full
        const std::multiset<std::set<int>> split = {{1, 2, 4}, {2, 0, 4}, {0, 1, 4}, {2, 1, 5}, {1, 3, 5}, {3, 2, 5}};
        EXPECT_EQ(PresentCornerSets(d), split);
        EXPECT_EQ(SurfaceFault(d), "");
    }
    // 6 stands more than 5.0 from the centroid's 0; a mask at its
    // background (the minimum; with `legalize` the maximum) leaves the cell out.
    struct Case {
        CSSEMatrix m;
        float at22;
        bool legalize;
        int vertices;
    };
    Case cases[] = {
        {mask(1.0f), 6.0f, false, 4},
        {mask(0.0f), 3.0f, false, 4},
        {Field(16, 16, [](int x, int y) { return x == 2 && y == 2 ? 1.0f : 2.0f; }), 3.0f, true, 5},
    };
    for (Case& c : cases) {
        Surface d(4);
        Square(d, 6.0f);
        CSSEMatrix height = AtCentroids(c.at22, 0.0f, 16);
        d.HighDerivationInsertPoints(&height, &c.m, c.legalize, 2.0f, true);
        EXPECT_EQ(d.GetNumVertices(), c.vertices) << c.at22 << c.legalize;
        EXPECT_EQ(SurfaceFault(d), "");
    }
}

TEST(HighDerivationSplitting, NeighboursSplitAgainstTheListOrderAreFreedSafely)
{
    // The upper triangle, split first, still names the lower one when the
    // kill frees the lower one first, in list order.
    Surface d(6);
    Square(d, 6.0f);
    d.CopyFinalTriangleListToTriangleList();
    t_hdelaunaytriangle* lower = TriangleWith(d, 0);
    t_hdelaunaytriangle* upper = TriangleWith(d, 3);
    d.AppendVertex(P(2, 2));
    d.AppendVertex(P(4, 4));
    CList<t_hdelaunaytriangle*> pieces;
    d.BildNewTriangulesWithCenter(upper, 5, &pieces);
    d.BildNewTriangulesWithCenter(lower, 4, &pieces);
    d.KillIgnoredTrianglesFromTriangleList(true);
    Surface::CopyTriangleListInList(&pieces, &d.GetTriangleList());
    EXPECT_EQ(d.GetNumTrianglesInTriangleList(), 6);
    EXPECT_EQ(SurfaceFault(d), "");
}

TEST(SecondHighDerivation, SteepTrianglesSplitWhereTheFieldBendsAway)
{
    // z = x rises at 45 degrees; the lower centroid (2, 2) stands at 2, the
    // upper one (4, 4) at 4.
    const auto run = [](std::array<float, 4> corners, float at22, float curvature22) {
        Surface d(6);
        Square(d, 6.0f, corners);
        CSSEMatrix mask = Constant(8, 8, 1.0f);
        CSSEMatrix height = Field(8, 8, [=](int x, int y) { return x == 2 && y == 2 ? at22 : corners[1] / 6 * x; });
        CSSEMatrix curvature = AtCentroids(curvature22, 6.0f);
        const bool stored = d.SecondHighDerivationInsertPoints(&height, &mask, &curvature, 1.0f, true);
        return std::pair(stored, d.GetNumVertices() > 4 ? d.GetVertex(4) : P(-1, -1, -1));
    };
    const auto [stored, vertex] = run({0, 6, 0, 6}, 5.0f, 6.0f);
    EXPECT_TRUE(stored);
    EXPECT_EQ(Lanes(vertex), Lanes(P(2, 2, 5)));
    EXPECT_FALSE(run({0, 6, 0, 6}, 5.0f, 4.0f).first);  // the field does not bend enough
    EXPECT_FALSE(run({0, 6, 0, 6}, 4.0f, 6.0f).first);  // misses the centroid by 2.0 only
    EXPECT_FALSE(run({0, 0, 0, 0}, 5.0f, 6.0f).first);  // level: the first form's business
}

TEST(HighEdgeLength, WithoutRoundsOnlyObtusePairsFlip)
{
    Surface d(4);
    for (const SSEPoint& p : {P(0, 0), P(4, 0), P(2, 1), P(2, -1)}) d.AppendVertex(p);
    t_hdelaunaytriangle* upper = AddTriangle(d, 0, 1, 2);
    t_hdelaunaytriangle* lower = AddTriangle(d, 1, 0, 3);
    Surface::FindNeighbours(upper, lower);
    // Both are obtuse (127 degrees) at the side 0-1 they share.
    d.HighEdgeLengthInsertPoints(1.0f, 0);
    EXPECT_EQ(d.GetNumVertices(), 4);
    EXPECT_EQ(PresentCornerSets(d), (std::multiset<std::set<int>>{{0, 2, 3}, {1, 2, 3}}));
    EXPECT_FALSE(upper->FlipState || lower->FlipState);
    EXPECT_EQ(SurfaceFault(d), "");
}

TEST(HighEdgeLength, LongTrianglesSplitAtTheirCentroidsAndObtusePairsFlip)
{
    Surface d(4);
    Square(d, 6.0f);
    d.HighEdgeLengthInsertPoints(5.0f, 1, true);
    ASSERT_EQ(d.GetNumVertices(), 6);
    EXPECT_EQ(Lanes(d.GetVertex(4)), Lanes(P(2, 2, 0)));
    EXPECT_EQ(Lanes(d.GetVertex(5)), Lanes(P(4, 4, 0)));
    // The two pieces on the old diagonal are obtuse (143 degrees) at it and
    // flip to 4-5.
    const std::multiset<std::set<int>> expected = {{0, 1, 4}, {0, 2, 4}, {1, 3, 5}, {2, 3, 5}, {1, 4, 5}, {2, 4, 5}};
    EXPECT_EQ(PresentCornerSets(d), expected);
    EXPECT_TRUE(d.IsFinalized());
    EXPECT_EQ(SurfaceFault(d), "");
}

TEST(HighEdgeLength, SliversAndShortSidesStayWhole)
{
    struct Case {
        SSEPoint a, b, c;
        bool splits;
    };
    const Case cases[] = {
        {P(0, 0), P(20, 0), P(10, 0.4f), false},  // 175 degrees, apex 0.4 off the base
        {P(0, 0), P(20, 0), P(10, 1.0f), true},   // 169 degrees, apex 1.0 off the base
        {P(0, 0), P(1, 0), P(0.5f, 5), false},    // a side of exactly 1.0
        {P(0, 0), P(1.5f, 0), P(0.75f, 5), true},
    };
    for (const Case& c : cases) {
        Surface d(3);
        for (const SSEPoint& p : {c.a, c.b, c.c}) d.AppendVertex(p);
        d.Triangulate(3, true, false);
        d.HighEdgeLengthInsertPoints(5.0f, 1, true);
        EXPECT_EQ(d.GetNumVertices(), c.splits ? 4 : 3) << c.b.x << " " << c.c.y;
        EXPECT_EQ(SurfaceFault(d), "");
    }
}

TEST(HighEdgeLength, TheFieldFormSplitsAtCellCentroids)
{
    const CSSEMatrix base = Field(16, 16, [](int x, int y) { return x == 10 && y == 10 ? 0.0f : 1.0f; });
    for (const float at22 : {0.0f, 6.0f}) {
        Surface d(4);
        Square(d, 6.0f);
        CSSEMatrix mask;
        mask.CopyFromSSEMatrix(base);
        CSSEMatrix height = AtCentroids(at22, 0.0f, 16);
        d.HighEdgeLengthInsertPoints(&height, &mask, false, 5.0f, true);
        if (at22 == 0.0f) {
            ASSERT_EQ(d.GetNumVertices(), 6);
            EXPECT_EQ(PresentCornerSets(d),
                      (std::multiset<std::set<int>>{{1, 2, 4}, {2, 0, 4}, {0, 1, 4}, {2, 1, 5}, {1, 3, 5}, {3, 2, 5}}));
        } else {
            EXPECT_EQ(d.GetNumVertices(), 5);  // 6 lies beyond 5.0 from the lower centroid
        }
        EXPECT_EQ(SurfaceFault(d), "");
    }
}

TEST(RefineTriangulation, CentroidsGoInUntilARoundAddsNothing)
{
    // Only the upper triangle (0, 6, 0), (6, 0, 0), (6, 6, 6) has corners
    // apart in height; its centroid (4, 4, 2) falls into the lower one's
    // circle too, so four triangles meet there, all with a side below 5.
    Surface d(5);
    Square(d, 6.0f, {0, 0, 0, 6});
    d.RefineTriangulation(5.0f, 10, 1.0f);
    ASSERT_EQ(d.GetNumVertices(), 5);
    EXPECT_EQ(Lanes(d.GetVertex(4)), Lanes(P(4, 4, 2)));
    EXPECT_EQ(TrianglesAround(d, 4), 4);
    EXPECT_EQ(d.GetNumTriangles(), 4);
    EXPECT_EQ(d.GetMaxNumVertices(), 9);  // room for a vertex per triangle, twice
    EXPECT_TRUE(d.IsFinalized());
    EXPECT_EQ(SurfaceFault(d), "");

    // Left alone: corners 6 apart are not more than a margin of 6 apart; an
    // inner triangle only; the forms with fields want the rounded centroid
    // on non-zero cells of each.
    CSSEMatrix ones = Constant(8, 8, 1.0f);
    CSSEMatrix hole = AtCentroids(1.0f, 0.0f, 8, 1.0f);
    const std::vector<std::function<void(Surface&)>> alone = {
        [](Surface& s) { s.RefineTriangulation(5.0f, 10, 6.0f); },
        [](Surface& s) {
            TriangleWith(s, 3)->Border = true;
            s.RefineTriangulation(5.0f, 10, 1.0f);
        },
        [](Surface& s) {
            TriangleWith(s, 3)->Outside = true;
            s.RefineTriangulation(5.0f, 10, 1.0f);
        },
        [&](Surface& s) { s.RefineTriangulation(&hole, 5.0f, 10, 1.0f); },
        [&](Surface& s) { s.RefineTriangulation(&ones, &hole, 5.0f, 10, 1.0f); },
    };
    for (const auto& refine : alone) {
        Surface s(5);
        Square(s, 6.0f, {0, 0, 0, 6});
        refine(s);
        EXPECT_EQ(s.GetNumVertices(), 4);
    }
    Surface s(5);
    Square(s, 6.0f, {0, 0, 0, 6});
    s.RefineTriangulation(&ones, &ones, 5.0f, 10, 1.0f);
    EXPECT_EQ(s.GetNumVertices(), 5);
}

TEST(RefineBorder, VerticesGoAlongOpenSidesHalfACellApartAndNoMoreThanAsked)
{
    const auto refine = [](Surface& d, CSSEMatrix& mask, int count) {
        Square(d, 4.0f);
        CSSEMatrix height = Constant(5, 5, 2.0f);
        d.RefineBorderTriangulationConstrained(&height, &mask, count);
        EXPECT_TRUE(d.IsFinalized());
        EXPECT_EQ(SurfaceFault(d), "");
    };
    CSSEMatrix mask = Constant(5, 5, 1.0f);
    Surface d(4);
    refine(d, mask, 100);
    const int added = d.GetNumVertices() - 4;
    int onSide[4] = {};
    for (int v = 4; v < d.GetNumVertices(); ++v) {
        const SSEPoint p = d.GetVertex(v);
        EXPECT_EQ(p.z, 2.0f);
        onSide[0] += p.y == 0.0f;
        onSide[1] += p.x == 4.0f;
        onSide[2] += p.y == 4.0f;
        onSide[3] += p.x == 0.0f;
        for (int u = 0; u < v; ++u) {
            const SSEPoint q = d.GetVertex(u);
            EXPECT_GT(std::hypot(p.x - q.x, p.y - q.y), 0.5f) << v << " " << u;
        }
    }
    EXPECT_EQ(onSide[0] + onSide[1] + onSide[2] + onSide[3], added);  // none inside
    for (const int n : onSide) EXPECT_GE(n, 5);
    // Each new vertex splits one open side.
    EXPECT_EQ(OpenSides(Triangles(d.GetFinalList())), 4 + added);

    Surface few(4);
    refine(few, mask, 3);
    EXPECT_EQ(few.GetNumVertices(), 4 + 3);

    CSSEMatrix bottomOff = Field(5, 5, [](int, int y) { return y == 0 ? 0.0f : 1.0f; });
    Surface partial(4);
    refine(partial, bottomOff, 100);
    for (int v = 4; v < partial.GetNumVertices(); ++v) EXPECT_NE(partial.GetVertex(v).y, 0.0f);
}

TEST(EdgeDistances, ToTheLineOverFourLanesAndAlongTheDiagonalWalk)
{
    EXPECT_FLOAT_EQ(Surface::CalcDistancePointLine(P(0, 3, 4), P(-1, 0, 0), P(1, 0, 0)), 5.0f);
    EXPECT_FLOAT_EQ(Surface::CalcDistancePointLine(Sse(0, 0, 0, 2), P(-1, 0, 0), P(1, 0, 0)), 2.0f);
    EXPECT_EQ(Surface::CalcDistancePointLine(P(0, 3, 4), P(1, 0, 0), P(1.0005f, 0, 0)), -1.0f);

    Surface d(3);
    for (const SSEPoint& p : {P(0, 0), P(1, 0), P(0, 1)}) d.AppendVertex(p);
    t_hdelaunaytriangle t = Unlisted(0, 1, 2);
    // Side 0 runs from (0, 0, 0) to (1, 0, 0), but its samples step by 0.1
    // in every lane: (0.5, 0.5, 0.5) is met, and (0.5, 0, 0) is nearest to
    // the sample (0.2, 0.2, 0.2), at the root of 0.17.
    EXPECT_NEAR(d.CalcDisPointToEdge(&t, 0, P(0.5f, 0.5f, 0.5f)), 0.0f, 1e-6f);
    EXPECT_NEAR(d.CalcDisPointToEdge(&t, 0, P(0.5f, 0, 0)), std::sqrt(0.17f), 1e-6f);
    EXPECT_NEAR(d.CalcDisPointToEdge(&t, 0, P(1, 0, 0)), 0.0f, 1e-6f);  // the end vertex comes last
    EXPECT_EQ(d.CalcDisPointToEdge(nullptr, 0, P(0, 0)), -1.0f);
    EXPECT_EQ(d.CalcDisPointToEdge(&t, 3, P(0, 0)), -1.0f);
    t_hdelaunaytriangle flat = Unlisted(0, 0, 1);
    EXPECT_EQ(d.CalcDisPointToEdge(&flat, 0, P(0, 0)), -1.0f);
}

} // namespace
} // namespace vek::test
