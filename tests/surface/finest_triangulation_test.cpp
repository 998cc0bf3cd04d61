// The finest triangulation of small rasters worked out by hand, its copy and
// its small operations.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <vector>

#include "surface/finest_fixtures.h"

namespace {

using vek::test::Area2;
using vek::test::LinkFaults;
using vek::test::ListOf;

float Plane(float x, float y) { return 0.5f * x + 0.25f * y + 3.0f; }

// The square from (1.5, 1.5) to (6.5, 6.5) over the grid of step 1 from
// (1, 1) to (7, 7): lattice points 2 ... 6 lie inside, 16 cells are whole,
// 16 are cut along one side (half a cell each) and the 4 corner cells lose
// the corner beyond the line between their two crossings (an eighth of a
// cell left). Six cell rows: one per band for the first six bands.
struct SquareInput {
    CSSE3dPolygon polygon;
    CSSEMatrix field;
    SquareInput()
    {
        vek::test::MakePolygon(polygon, {{1.5f, 1.5f}, {6.5f, 1.5f}, {6.5f, 6.5f}, {1.5f, 6.5f}});
        vek::test::MakeField(field, 10, 10, [](int x, int y) { return Plane(float(x), float(y)); });
    }
};

TEST(FinestTriangulation, MarchedSquareWorkedOutByHand)
{
    SquareInput in;
    ZrCFinestTriangulation t;
    t.TriangulateWithMarching(in.polygon, &in.field, 1, true);

    // 7 x 7 lattice points, and two crossings on each of the five lattice
    // rows and five columns inside: the rows shared by two bands are stored once.
    EXPECT_EQ(t.GetNumVertices(), 49 + 10 + 10);
    const std::vector<t_hfinesttriangle*> triangles = ListOf(t.GetTriangleList());
    ASSERT_EQ(triangles.size(), 16u * 2 + 16 * 2 + 4);
    EXPECT_EQ(vek::test::Record(t).rowSizes, (std::vector<int>{10, 12, 12, 12, 12, 10}));

    double area2 = 0.0;
    std::map<int, std::pair<int, std::set<int>>> wholeCells;  // cell -> triangles, corners
    for (const t_hfinesttriangle* tr : triangles) {
        EXPECT_TRUE(tr->Marched);
        EXPECT_GT(Area2(t, tr), 0.0) << "counter-clockwise";
        area2 += Area2(t, tr);
        float lowX = 1e9f, lowY = 1e9f, highX = -1e9f, highY = -1e9f;
        for (const int v : tr->Vertex) {
            const SSEPoint p = t.GetVertex(v);
            lowX = std::min(lowX, p.x), lowY = std::min(lowY, p.y);
            highX = std::max(highX, p.x), highY = std::max(highY, p.y);
            EXPECT_NEAR(p.z, Plane(p.x, p.y), 1e-4f) << "heights follow the raster";
            const bool lattice = p.x == std::floor(p.x) && p.y == std::floor(p.y);
            const bool onLine = std::fabs(p.x - 1.5f) < 1e-5f || std::fabs(p.x - 6.5f) < 1e-5f ||
                                std::fabs(p.y - 1.5f) < 1e-5f || std::fabs(p.y - 6.5f) < 1e-5f;
            EXPECT_TRUE(lattice || onLine) << "a corner is a lattice point or a crossing of the polygon";
        }
        EXPECT_LE(highX - std::floor(lowX), 1.0f) << "inside one cell";
        EXPECT_LE(highY - std::floor(lowY), 1.0f) << "inside one cell";
        if (lowX >= 2.0f && highX <= 6.0f && lowY >= 2.0f && highY <= 6.0f) {
            auto& [count, corners] = wholeCells[int(lowX) * 100 + int(lowY)];
            ++count;
            corners.insert(tr->Vertex, tr->Vertex + 3);
        }
    }
    EXPECT_NEAR(area2, 2.0 * (16.0 + 16 * 0.5 + 4 * 0.125), 1e-3);
    // Each of the 16 whole cells holds two triangles over its four corners.
    EXPECT_EQ(wholeCells.size(), 16u);
    for (const auto& [cell, made] : wholeCells) {
        EXPECT_EQ(made.first, 2) << cell;
        EXPECT_EQ(made.second.size(), 4u) << cell;
    }
    // Links across every shared side, band limits included, both ways.
    EXPECT_EQ(LinkFaults(t), 0);

    // With finalize the box is ready for the scan conversion.
    EXPECT_NEAR(t.GetMinPoint().x, 1.5f, 1e-5f);
    EXPECT_NEAR(t.GetMaxPoint().y, 6.5f, 1e-5f);
}

TEST(FinestTriangulation, SquareCellsKeepOnlyWholeCells)
{
    SquareInput in;
    ZrCFinestTriangulation t;
    t.Triangulate(in.polygon, &in.field, 1, false);
    EXPECT_EQ(t.GetNumVertices(), 49);
    const std::vector<t_hfinesttriangle*> triangles = ListOf(t.GetTriangleList());
    ASSERT_EQ(triangles.size(), 32u);
    double area2 = 0.0;
    for (const t_hfinesttriangle* tr : triangles) {
        EXPECT_FALSE(tr->Marched);
        area2 += Area2(t, tr);
    }
    EXPECT_NEAR(area2, 32.0, 1e-6);
    EXPECT_EQ(LinkFaults(t), 0);

    // A step of 2 from (1, 1): lattice 1, 3, 5, 7; inside 3 and 5 only.
    t.Triangulate(in.polygon, &in.field, 2, false);
    EXPECT_EQ(t.GetNumTriangles(), 2);
    // Input that makes no grid builds nothing, and leaves nothing behind.
    t.Triangulate(in.polygon, &in.field, 0, false);
    EXPECT_EQ(t.GetNumTriangles(), 0);
    CSSE3dPolygon line;
    vek::test::MakePolygon(line, {{0.0f, 0.0f}, {5.0f, 5.0f}});
    t.TriangulateWithMarching(line, &in.field, 1, false);
    EXPECT_EQ(t.GetNumTriangles(), 0);
    EXPECT_EQ(t.GetAllRowsTriangleList() == nullptr || t.GetAllRowsTriangleList()->GetCount() == 0, true);
}

TEST(FinestTriangulation, KeyedRowLinksEqualThePlainScan)
{
    CSSE3dPolygon ring;
    vek::test::MakeWavyRing(ring, 37, 20.0f, 21.0f, 14.0f);
    CSSEMatrix field;
    vek::test::MakeField(field, 48, 48, [](int x, int y) { return std::sin(0.3f * x) * 4.0f + 0.1f * y * y; });
    ZrCFinestTriangulation keyed;
    ZrCFinestTriangulation plain;
    plain.SetSearchMode(vek::SearchMode::LinearScan);
    keyed.TriangulateWithMarching(ring, &field, 1, true);
    plain.TriangulateWithMarching(ring, &field, 1, true);
    EXPECT_GT(keyed.GetNumTriangles(), 900);
    EXPECT_EQ(vek::test::Record(keyed), vek::test::Record(plain));
    EXPECT_EQ(LinkFaults(keyed), 0);

    // The deep copy links in list order the same way by either path.
    ZrCFinestTriangulation copyKeyed;
    ZrCFinestTriangulation copyPlain;
    copyPlain.SetSearchMode(vek::SearchMode::LinearScan);
    copyKeyed.DeepCopyTriangulation(keyed, nullptr, true);
    copyPlain.DeepCopyTriangulation(keyed, nullptr, true);
    EXPECT_EQ(vek::test::Record(copyKeyed), vek::test::Record(copyPlain));
}

TEST(FinestTriangulation, DeepCopyKeepsTrianglesLinksAndRows)
{
    SquareInput in;
    ZrCFinestTriangulation source;
    source.TriangulateWithMarching(in.polygon, &in.field, 1, false);
    ZrCFinestTriangulation copy;
    copy.DeepCopyTriangulation(source, nullptr, true);
    EXPECT_EQ(vek::test::Record(copy), vek::test::Record(source));
    EXPECT_EQ(LinkFaults(copy), 0);
    // The copy is its own: no record is shared with the source.
    std::set<const t_hfinesttriangle*> sourceRecords;
    for (const t_hfinesttriangle* tr : ListOf(source.GetTriangleList())) sourceRecords.insert(tr);
    for (const t_hfinesttriangle* tr : ListOf(copy.GetTriangleList())) EXPECT_EQ(sourceRecords.count(tr), 0u);

    // With a field the copy takes its heights where the field holds data.
    CSSEMatrix flat;
    vek::test::MakeField(flat, 10, 10, [](int x, int) { return x < 4 ? 0.0f : 9.0f; });
    copy.DeepCopyTriangulation(source, &flat, false);
    EXPECT_EQ(copy.GetAllRowsTriangleList(), nullptr);
    for (int i = 0; i < copy.GetNumVertices(); ++i) {
        const SSEPoint p = copy.GetVertex(i);
        const float expected = int(p.x + 0.5f) < 4 ? source.GetVertex(i).z : 9.0f;
        EXPECT_EQ(p.z, expected);
    }
}

TEST(FinestTriangulation, OneCellAndTheSmallOperations)
{
    SquareInput in;
    ZrCFinestTriangulation t(4);
    CList<t_hfinesttriangle*> list;
    // The cell from (1, 2) to (2, 3) is cut at x = 1.5: two triangles.
    t.MarchingSquare(1, 2, 1, &in.field, nullptr, &in.polygon, &list);
    ASSERT_EQ(list.GetCount(), 2);
    double area2 = 0.0;
    for (t_hfinesttriangle* tr : ListOf(list)) {
        EXPECT_TRUE(tr->Marched);
        area2 += Area2(t, tr);
        t.AppendTriangle(tr);
    }
    EXPECT_NEAR(area2, 1.0, 1e-5);
    EXPECT_EQ(t.GetNumVertices(), 6) << "the four corners, those outside too, and two crossings";
    // Its two triangles share a side and are linked across it.
    EXPECT_EQ(LinkFaults(t), 0);
    const t_hfinesttriangle* first = ListOf(list)[0];
    const ESharedSide shared = ZrCFinestTriangulation::FindCommonSide(first, ListOf(list)[1]);
    ASSERT_NE(shared, eSideNone);
    const SSEPoint across = t.GetVertexFromNeighbourTriangle(shared, first);
    std::set<int> firstCorners(first->Vertex, first->Vertex + 3);
    int opposite = -1;
    for (const int v : ListOf(list)[1]->Vertex) {
        if (firstCorners.count(v) == 0) opposite = v;
    }
    EXPECT_EQ(across.x, t.GetVertex(opposite).x);
    EXPECT_EQ(across.y, t.GetVertex(opposite).y);
    // Flipping that side keeps both triangles linked and turning the same way.
    t_hfinesttriangle* a = ListOf(list)[0];
    EXPECT_TRUE(t.DoEdgeFlip(a, shared));
    EXPECT_EQ(LinkFaults(t), 0);
    for (t_hfinesttriangle* tr : ListOf(list)) EXPECT_GT(Area2(t, tr), 0.0);
    EXPECT_FALSE(t.DoEdgeFlip(a, (shared + 1) % 3)) << "an open side has nothing to flip with";
    list.RemoveAll();

    // A cell outside gives nothing; with a mask the mask decides.
    CList<t_hfinesttriangle*> none;
    t.MarchingSquare(8, 8, 1, &in.field, nullptr, &in.polygon, &none);
    EXPECT_EQ(none.GetCount(), 0);

    EXPECT_FALSE(ZrCFinestTriangulation::CheckIsTriangle(vek::test::Sse(0, 0, 0), vek::test::Sse(0, 0, 0.00004f),
                                                         vek::test::Sse(1, 0, 0)));
    EXPECT_TRUE(ZrCFinestTriangulation::CheckIsTriangle(vek::test::Sse(0, 0, 0), vek::test::Sse(0, 0, 0.0001f),
                                                        vek::test::Sse(1, 0, 0)));

    t_hfinestedge edge{{3, 8}, eSide1, nullptr, true, false, true};
    ZrCFinestTriangulation::FlipEdge(&edge);
    EXPECT_EQ(edge.Vertex[0], 8);
    EXPECT_EQ(edge.Vertex[1], 3);
    EXPECT_EQ(edge.Side, eSide1);
    EXPECT_FALSE(edge.Used);
    EXPECT_TRUE(edge.Mark1);
    EXPECT_TRUE(edge.Mark2);
    ZrCFinestTriangulation::FlipEdge(nullptr);
}

} // namespace

// The border and area operations come from the shared graph: on the 4 x 4
// whole cells of the square, one loop of 16 unit edges runs round [2, 6]^2,
// and the border polygon is that loop's corners.
TEST(FinestTriangulation, BorderLoopOfTheWholeCells)
{
    SquareInput in;
    ZrCFinestTriangulation t;
    t.Triangulate(in.polygon, &in.field, 1, false);
    CList<CList<t_hfinestedge*>*> loops;
    t.FindAllBorderEdgeLists(&loops);
    ASSERT_EQ(loops.GetCount(), 1);
    CList<t_hfinestedge*>* loop = loops.RemoveHead();
    EXPECT_EQ(loop->GetCount(), 16);
    std::set<std::pair<float, float>> corners;
    for (POSITION pos = loop->GetHeadPosition(); pos != nullptr;) {
        const t_hfinestedge* edge = loop->GetNext(pos);
        const SSEPoint a = t.GetVertex(edge->Vertex[0]), b = t.GetVertex(edge->Vertex[1]);
        EXPECT_FLOAT_EQ(std::fabs(a.x - b.x) + std::fabs(a.y - b.y), 1.0f) << "one cell side";
        EXPECT_TRUE(a.x == 2 || a.x == 6 || a.y == 2 || a.y == 6) << "on the rim";
        corners.insert({a.x, a.y});
    }
    EXPECT_EQ(corners.size(), 16u);
    ZrCFinestTriangulation::ClearEdgeList(loop);
    delete loop;

    CSSE3dPolygon outline;
    t.BuildBorderPolygonForTriang(outline);
    EXPECT_EQ(outline.GetNumPoints(), 16);
}
