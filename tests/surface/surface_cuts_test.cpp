// Division of triangles at side mid-points, and the cuts of a surface by a
// mask, with its holes closed, and by a cap: each leaves one valid graph.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "support/sse_lanes.h"
#include "surface/refinement_fixtures.h"

namespace vek::test {
namespace {

using Surface = ZrCIncrementalDelaunay2D;
using TriangleList = CList<t_hdelaunaytriangle*>;
using CornerSetList = std::multiset<std::set<int>>;

t_hdelaunaytriangle* TriangleWith(Surface& d, int vertex)
{
    for (t_hdelaunaytriangle* t : Triangles(PresentTriangles(d))) {
        if (Corners({t}).count(vertex) != 0) return t;
    }
    return nullptr;
}

std::set<int> UsedVertices(Surface& d)
{
    return Corners(Triangles(PresentTriangles(d)));
}

float LongestSideXY(Surface& d, const std::vector<t_hdelaunaytriangle*>& triangles)
{
    float longest = 0.0f;
    for (const t_hdelaunaytriangle* t : triangles) {
        for (int s = 0; s < 3; ++s) {
            const SSEPoint a = d.GetVertex(t->Vertex[s]), b = d.GetVertex(t->Vertex[(s + 1) % 3]);
            longest = std::max(longest, std::hypot(a.x - b.x, a.y - b.y));
        }
    }
    return longest;
}

void DeleteLists(CList<TriangleList*>& lists)
{
    for (POSITION pos = lists.GetHeadPosition(); pos != nullptr;) delete lists.GetNext(pos);
    lists.RemoveAll();
}

TEST(Subdivision, AListedTriangleSplitsInFourAndItsNeighbourAcrossInTwo)
{
    // The square 0 .. 4: lower triangle (1, 2, 0), upper (2, 1, 3).
    Surface d(4);
    Square(d, 4.0f);
    TriangleList list;
    list.AddTail(TriangleWith(d, 0));
    CList<TriangleList*> pieces;
    d.DevideTrianglesFromList(&pieces, 0, nullptr, &list, 1);
    ASSERT_EQ(d.GetNumVertices(), 7);
    // The mid-points in the order of the lower triangle's sides 1-2, 2-0, 0-1;
    // the one on the shared diagonal is stored once.
    EXPECT_EQ(Lanes(d.GetVertex(4)), Lanes(P(2, 2)));
    EXPECT_EQ(Lanes(d.GetVertex(5)), Lanes(P(0, 2)));
    EXPECT_EQ(Lanes(d.GetVertex(6)), Lanes(P(2, 0)));
    const CornerSetList expected = {{1, 4, 6}, {2, 4, 5}, {0, 5, 6}, {4, 5, 6}, {2, 3, 4}, {1, 3, 4}};
    EXPECT_EQ(PresentCornerSets(d), expected);
    EXPECT_TRUE(d.IsFinalized());
    EXPECT_DOUBLE_EQ(TotalArea(d), 16.0);
    EXPECT_EQ(OpenSides(Triangles(d.GetFinalList())), 6);
    EXPECT_EQ(SurfaceFault(d), "");
    // `list` names the four pieces, and so does the one list of pieces.
    EXPECT_EQ(CornerSets(list), (CornerSetList{{1, 4, 6}, {2, 4, 5}, {0, 5, 6}, {4, 5, 6}}));
    ASSERT_EQ(pieces.GetCount(), 1);
    EXPECT_EQ(Triangles(*pieces.GetHead()), Triangles(list));
    DeleteLists(pieces);
}

TEST(Subdivision, LimitFieldAndRoundsDecideWhatSplits)
{
    // Only the diagonal (5.66) is longer than 5: two halves on each side.
    {
        Surface d(4);
        Square(d, 4.0f);
        TriangleList list;
        list.AddTail(TriangleWith(d, 0));
        CSSEMatrix field = Field(5, 5, [](int x, int y) { return x == 2 && y == 2 ? 9.0f : 0.0f; });
        d.DevideTrianglesFromList(nullptr, 5, &field, &list, 4);
        ASSERT_EQ(d.GetNumVertices(), 5);
        EXPECT_EQ(Lanes(d.GetVertex(4)), Lanes(P(2, 2, 9)));  // the field holds a value there
        EXPECT_EQ(PresentCornerSets(d), (CornerSetList{{0, 1, 4}, {0, 2, 4}, {2, 3, 4}, {1, 3, 4}}));
        EXPECT_EQ(SurfaceFault(d), "");
    }
    // Rounds go on until no listed side is longer than 1.
    {
        Surface d(4);
        Square(d, 4.0f);
        TriangleList list;
        list.AddTail(TriangleWith(d, 0));
        d.DevideTrianglesFromList(nullptr, 1, nullptr, &list, 10);
        EXPECT_LE(LongestSideXY(d, Triangles(list)), 1.0f);
        EXPECT_DOUBLE_EQ(TotalArea(d), 16.0);
        EXPECT_EQ(SurfaceFault(d), "");
    }
    // No rounds, no list, or a triangle of no working list: nothing changes.
    Surface d(4);
    Square(d, 4.0f);
    const std::vector<long> before = ListShape(d.GetFinalList());
    TriangleList list;
    list.AddTail(TriangleWith(d, 0));
    d.DevideTrianglesFromList(nullptr, 0, nullptr, &list, 0);
    d.DevideTrianglesFromList(nullptr, 0, nullptr, nullptr, 3);
    t_hdelaunaytriangle stray = Unlisted(0, 1, 2);
    TriangleList strayList;
    strayList.AddTail(&stray);
    d.DevideTrianglesFromList(nullptr, 0, nullptr, &strayList, 3);
    EXPECT_EQ(d.GetNumVertices(), 4);
    EXPECT_EQ(ListShape(d.GetFinalList()), before);
}

TEST(MaskRemoval, ASpikeUnderTheMaskGoesAndItsHoleClosesFlat)
{
    Surface d(60);
    Grid(d, 0, 0, 6, [](float x, float y) { return x == 3 && y == 3 ? 5.0f : 0.0f; });
    const int before = d.GetNumTriangles();
    CSSEMatrix mask = Field(7, 7, [](int x, int y) { return x == 3 && y == 3 ? 1.0f : 0.0f; });
    d.RemoveAllTrianglesInMaskAreaAndRetriangulate(&mask);
    EXPECT_TRUE(d.IsFinalized());
    EXPECT_EQ(d.GetNumVertices(), 49);
    EXPECT_EQ(UsedVertices(d).count(24), 0u);
    // The fan of n triangles around (3, 3) gives way to n - 2 over its rim.
    EXPECT_EQ(d.GetNumTriangles(), before - 2);
    for (const int v : UsedVertices(d)) EXPECT_EQ(d.GetVertex(v).z, 0.0f);
    EXPECT_DOUBLE_EQ(TotalArea(d), 36.0);
    EXPECT_EQ(OpenSides(Triangles(d.GetFinalList())), 24);
    EXPECT_EQ(SurfaceFault(d), "");

    // An empty mask changes nothing.
    const std::vector<long> shape = ListShape(d.GetFinalList());
    CSSEMatrix none = Constant(7, 7, 0.0f);
    d.RemoveAllTrianglesInMaskAreaAndRetriangulate(&none);
    EXPECT_EQ(ListShape(d.GetFinalList()), shape);
}

TEST(MaskRemoval, ACutThroughTheOuterBorderStaysOpen)
{
    Surface d(60);
    Grid(d, 0, 0, 6);
    const int before = d.GetNumTriangles();
    CSSEMatrix mask = Field(7, 7, [](int x, int y) { return x == 0 && y == 3 ? 1.0f : 0.0f; });
    d.RemoveAllTrianglesInMaskAreaAndRetriangulate(&mask);
    EXPECT_EQ(d.GetNumVertices(), 49);
    EXPECT_EQ(UsedVertices(d).count(21), 0u);  // (0, 3)
    EXPECT_LT(d.GetNumTriangles(), before);
    EXPECT_LT(TotalArea(d), 36.0);
    EXPECT_EQ(SurfaceFault(d), "");
}

TEST(MaskRemoval, ALargeHoleIsDividedIntoShortSidesOnTheFreedVertices)
{
    // A block 50 high over the cells 5 .. 25 of a flat 30 x 30 grid.
    const auto inBlock = [](float x, float y) { return x >= 5 && x <= 25 && y >= 5 && y <= 25; };
    Surface d(1000);
    Grid(d, 0, 0, 30, [&](float x, float y) { return inBlock(x, y) ? 50.0f : 0.0f; });
    CSSEMatrix mask = Field(31, 31, [&](int x, int y) { return inBlock(x, y) ? 1.0f : 0.0f; });
    d.RemoveAllTrianglesInMaskAreaAndRetriangulate(&mask);
    // The new points took the places of the 441 vertices under the mask.
    EXPECT_EQ(d.GetNumVertices(), 961);
    for (const int v : UsedVertices(d)) EXPECT_EQ(d.GetVertex(v).z, 0.0f) << v;
    EXPECT_LE(LongestSideXY(d, Triangles(d.GetFinalList())), 10.0f);
    EXPECT_DOUBLE_EQ(TotalArea(d), 900.0);
    EXPECT_EQ(OpenSides(Triangles(d.GetFinalList())), 120);
    EXPECT_EQ(SurfaceFault(d), "");
}

CSSE3dPolygon SquareRing(float low, float high, float z)
{
    std::vector<SSEPoint> points;
    for (float t = low; t < high; t += 0.5f) points.push_back(P(t, low, z));
    for (float t = low; t < high; t += 0.5f) points.push_back(P(high, t, z));
    for (float t = high; t > low; t -= 0.5f) points.push_back(P(t, high, z));
    for (float t = high; t > low; t -= 0.5f) points.push_back(P(low, t, z));
    CSSE3dPolygon ring;
    ring.Create(static_cast<int>(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) ring.SetPointSSE(static_cast<int>(i), points[i]);
    return ring;
}

int TrianglesLeftOf(Surface& d, float x)
{
    int count = 0;
    for (const t_hdelaunaytriangle* t : Triangles(PresentTriangles(d))) {
        bool left = true;
        for (const int v : t->Vertex) left = left && d.GetVertex(v).x < x;
        count += left;
    }
    return count;
}

TEST(CapCut, TrianglesUnderTheCapGoAndFarOnesStay)
{
    Surface d(2000);
    Grid(d, 0, 0, 40);
    const int farBefore = TrianglesLeftOf(d, 5.0f);
    const int before = d.GetNumTriangles();
    CSSE3dPolygon cap = SquareRing(18.0f, 22.0f, 0.0f);
    d.DeleteTrianglesInCap(&cap, nullptr, false);
    EXPECT_TRUE(d.IsFinalized());
    EXPECT_LT(d.GetNumTriangles(), before);
    EXPECT_EQ(TrianglesLeftOf(d, 5.0f), farBefore);
    for (const t_hdelaunaytriangle* t : Triangles(d.GetFinalList())) {
        double cx = 0.0, cy = 0.0;
        for (const int v : t->Vertex) {
            cx += d.GetVertex(v).x / 3.0;
            cy += d.GetVertex(v).y / 3.0;
        }
        EXPECT_FALSE(cx > 18.5 && cx < 21.5 && cy > 18.5 && cy < 21.5) << cx << " " << cy;
    }
    EXPECT_EQ(SurfaceFault(d), "");
}

TEST(CapCut, ACapBeyondTheSurfaceOrFacingTheOtherWayCutsNothing)
{
    Surface d(200);
    Grid(d, 0, 0, 10);
    const std::vector<long> shape = ListShape(d.GetFinalList());
    CSSE3dPolygon far = SquareRing(25.0f, 29.0f, 0.0f);  // all corners more than 10 from its box
    d.DeleteTrianglesInCap(&far, nullptr, false);
    EXPECT_EQ(ListShape(d.GetFinalList()), shape);

    Surface down(4);
    Square(down, 1.0f);
    down.FlipAllTrianglesOrientation();
    CSSE3dPolygon near = SquareRing(4.0f, 6.0f, 0.0f);
    d.DeleteTrianglesInCap(&near, &down, false);
    EXPECT_EQ(ListShape(d.GetFinalList()), shape);
}

TEST(DeleteAndShiftList, TheBandAlongTheLineIsMarkedAndItsRimListed)
{
    // The line y = 5 in points 0.5 apart over the grid 0 .. 10; corners on
    // the rows 4 to 6 lie within 1.0 of it.
    Surface d(200);
    Grid(d, 0, 0, 10);
    CSSE3dPolygon line;
    line.Create(21);
    for (int i = 0; i < 21; ++i) {
        SSEPoint p = P(0.5f * i, 5.0f);
        line.SetPointSSE(i, p);
    }
    const auto inBand = [&d](const t_hdelaunaytriangle* t) {
        bool band = true;
        for (const int v : t->Vertex) band = band && d.GetVertex(v).y >= 4 && d.GetVertex(v).y <= 6;
        return band;
    };
    TriangleList in, out;
    for (t_hdelaunaytriangle* t : Triangles(d.GetFinalList())) {
        if (inBand(t) && in.IsEmpty()) in.AddTail(t);
    }
    d.BildAffectedTriangleListForDeleteAndShift(&in, &out, 1.0f, line);
    EXPECT_TRUE(in.IsEmpty());
    std::set<const t_hdelaunaytriangle*> rim;
    for (const t_hdelaunaytriangle* t : Triangles(d.GetFinalList())) {
        EXPECT_EQ(t->Ignore, inBand(t));
        if (inBand(t)) {
            EXPECT_FALSE(t->Visited);
            for (const t_hdelaunaytriangle* n : t->Neighbour) {
                if (n != nullptr && !inBand(n)) rim.insert(n);
            }
        }
    }
    const std::vector<t_hdelaunaytriangle*> listed = Triangles(out);
    EXPECT_EQ(std::set<const t_hdelaunaytriangle*>(listed.begin(), listed.end()), rim);
    for (const t_hdelaunaytriangle* t : listed) EXPECT_TRUE(t->Visited && !t->Processed && !t->Ignore);
}

TEST(ShiftAlongInterval, TheMinimizeFormTakesTheLeastClearPlace)
{
    CSSE3dPolygon one;
    one.Create(1);
    SSEPoint origin = P(0, 0, 0);
    one.SetPointSSE(0, origin);
    SSEPoint from = P(10, 0, 0), to = P(0, 0, 0), first, least;
    // Steps of 0.1 from x = 10 towards 0; the first is already 3.0 clear,
    // the last one clear stands at 3.0 to 3.1.
    Surface::ShiftVertexWithDistanceInInterval(from, first, to, 3.0f, one, 0);
    Surface::ShiftVertexWithDistanceInIntervalMinimize(from, least, to, 3.0f, one, 0);
    EXPECT_NEAR(first.x, 9.9f, 1e-5f);
    EXPECT_GE(least.x, 3.0f);
    EXPECT_LE(least.x, 3.1f + 1e-5f);
    EXPECT_EQ(least.y, 0.0f);
    // The result may be the start itself.
    SSEPoint same = from;
    Surface::ShiftVertexWithDistanceInIntervalMinimize(same, same, to, 3.0f, one, 0);
    EXPECT_EQ(Lanes(same), Lanes(least));
    // With no place clear enough: `to` - 0.5 in every lane.
    Surface::ShiftVertexWithDistanceInIntervalMinimize(from, least, to, 20.0f, one, 0);
    EXPECT_EQ(Lanes(least), Lanes(Sse(-0.5f, -0.5f, -0.5f, -0.5f)));
}

TEST(EmptyRasters, AreReadAsNoRasterAndChangeNothing)
{
    Surface d(30);
    Grid(d, -2, -2, 4);
    const std::vector<long> shape = ListShape(d.GetFinalList());
    CSSEMatrix empty;
    CSSEMatrix ones = Constant(8, 8, 1.0f);
    CSSE3dPolygon ring = SquareRing(-1.0f, 1.0f, 0.0f);
    d.DistanceImageInsertPoints(&empty, &ones, false, 1, true);
    d.HighDerivationInsertPoints(&ones, &empty, 0.0f, true);
    d.HighDerivationInsertPoints(&empty, &ones, false, 0.0f, true);
    d.RefineBorderTriangulationConstrained(&ones, &empty, 10);
    d.RemoveAllTrianglesInMaskAreaAndRetriangulate(&empty);
    d.DeleteTrianglesInArea(ring, &empty, &empty, &empty, &ones, &ones, &ones, true, true);
    CSSEMatrix mask = Constant(4, 4, 1.0f);
    Surface::BuildMaskFromMatrix(&empty, &mask, false);
    EXPECT_EQ(mask.GetSizeX(), 0);
    EXPECT_TRUE(d.IsFinalized());
    EXPECT_EQ(d.GetNumVertices(), 25);
    EXPECT_EQ(ListShape(d.GetFinalList()), shape);
}

TEST(MaskFromField, OneWhereTheFieldLeavesItsBackground)
{
    const auto marked = [](CSSEMatrix& mask) {
        std::set<std::pair<int, int>> cells;
        for (int y = 0; y < mask.GetSizeY(); ++y)
            for (int x = 0; x < mask.GetSizeX(); ++x) {
                const float v = mask.GetPoint(x, y);
                EXPECT_TRUE(v == 0.0f || v == 1.0f);
                if (v == 1.0f) cells.emplace(x, y);
            }
        return cells;
    };
    const std::set<std::pair<int, int>> data = {{5, 5}, {6, 9}};
    const auto with = [&](float background, float value) {
        return Field(16, 16, [&](int x, int y) { return data.count({x, y}) != 0 ? value : background; });
    };
    CSSEMatrix mask;
    CSSEMatrix low = with(-5.0f, 3.0f);
    Surface::BuildMaskFromMatrix(&low, &mask, false);  // background at the minimum
    EXPECT_EQ(mask.GetSizeX(), 16);
    EXPECT_EQ(marked(mask), data);
    CSSEMatrix high = with(7.0f, -1.0f);
    Surface::BuildMaskFromMatrix(&high, &mask, true);  // background at the maximum
    EXPECT_EQ(marked(mask), data);
    CSSEMatrix flat = Constant(16, 16, 2.0f);
    Surface::BuildMaskFromMatrix(&flat, &mask, false);
    EXPECT_TRUE(marked(mask).empty());
    Surface::BuildMaskFromMatrix(nullptr, &mask, false);
}

} // namespace
} // namespace vek::test
