// The samplers of the scan conversion, called on the test's own thread, and
// the pieces of the five-band driver that can be worked out by hand.

#include <gtest/gtest.h>

#include <set>
#include <utility>
#include <vector>

#include "surface/scan_conversion_helpers.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/scan_workers.h"

namespace {

using vek::test::AddTriangle;
using vek::test::P;
using vek::test::SentinelField;
using vek::test::SentinelOf;

using Cells = std::set<std::pair<int, int>>;

// The cells that hold something other than the sentinel.
Cells Written(const CSSEMatrix& m, bool keepMax)
{
    Cells written;
    for (int y = 0; y < m.GetSizeY(); ++y)
        for (int x = 0; x < m.GetSizeX(); ++x)
            if (m.GetPoint(x, y) != SentinelOf(keepMax)) written.insert({x, y});
    return written;
}

SSEPoint Origin(float z)
{
    return P(0, 0, z);
}

TEST(ScanConversionSampler, CellsFollowTheResolutionAndValuesTheOrigin)
{
    // A flat triangle x + y <= 4 at height 4, half a unit per cell in x and
    // y and two per cell in z: a sample's value is (origin.z + z - 4) / 2.
    ZrCIncrementalDelaunay2D d(8);
    AddTriangle(d, P(0, 0, 4), P(4, 0, 4), P(0, 4, 4));
    d.CalcBoundingBox();
    d.SetScanConvResolution(0.5f, 0.5f, 2.0f);
    CSSEMatrix m;
    SentinelField(m, 12, 12, true);
    d.ScanConvertTriangulationWithLimitedArea(&m, &d.GetTriangleList(), Origin(10), 0, 0, true);

    // Cell (X, Y) spans (X - 0.5) / 2 ... (X + 0.5) / 2: those with X + Y <= 7
    // lie wholly inside the triangle, those with X + Y >= 10 wholly outside.
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 12; ++x) {
            if (x + y <= 7) {
                EXPECT_EQ(m.GetPoint(x, y), 5.0f) << x << "," << y;
            } else if (x + y >= 10) {
                EXPECT_EQ(m.GetPoint(x, y), SentinelOf(true)) << x << "," << y;
            }
        }
    }
    EXPECT_EQ(m.GetPoint(8, 0), 5.0f); // corner b, 4 / 0.5 = 8
}

TEST(ScanConversionSampler, EachCellKeepsItsHighestOrLowestSample)
{
    // The plane z = x over 0 ... 6: cell X sees the samples of x in
    // [X - 0.5, X + 0.5), so its maximum lies above X and its minimum below.
    for (bool keepMax : {true, false}) {
        ZrCIncrementalDelaunay2D d(8);
        AddTriangle(d, P(0, 0, 0), P(6, 0, 6), P(6, 6, 6));
        AddTriangle(d, P(0, 0, 0), P(6, 6, 6), P(0, 6, 0));
        d.CalcBoundingBox();
        CSSEMatrix m;
        SentinelField(m, 7, 7, keepMax);
        d.ScanConvertTriangulationWithLimitedArea(&m, &d.GetTriangleList(), Origin(0), 0, 1, keepMax);
        for (int y = 1; y <= 5; ++y) {
            for (int x = 1; x <= 5; ++x) {
                const float v = m.GetPoint(x, y);
                const float fx = static_cast<float>(x);
                if (keepMax) {
                    EXPECT_GT(v, fx) << x << "," << y;
                    EXPECT_LT(v, fx + 0.5f) << x << "," << y;
                } else {
                    EXPECT_GE(v, fx - 0.5f) << x << "," << y;
                    EXPECT_LT(v, fx) << x << "," << y;
                }
            }
        }
    }
}

TEST(ScanConversionSampler, TinyAndDegenerateTrianglesStillLeaveTheirFirstCorners)
{
    // Triangle 0 only pins the box to (0, 0, 1); the others are sampled alone.
    ZrCIncrementalDelaunay2D d(12);
    AddTriangle(d, P(0, 0, 1), P(0.1f, 0, 1), P(0, 0.1f, 1));
    // A sliver far below a cell whose corners a and b fall into two cells.
    AddTriangle(d, P(2.45f, 2, 1), P(2.55f, 2, 1), P(2.45f, 2.05f, 1));
    // All three corners in one point: an infinite step, corner a only.
    AddTriangle(d, P(5.5f, 5.5f, 1), P(5.5f, 5.5f, 1), P(5.5f, 5.5f, 1));
    d.CalcBoundingBox();
    CSSEMatrix m;

    SentinelField(m, 8, 8, true);
    d.ScanConvertTriangulationWithLimitedArea(&m, &d.GetTriangleList(), Origin(1), 1, 1, true);
    EXPECT_EQ(Written(m, true), (Cells{{2, 2}, {3, 2}}));
    EXPECT_EQ(m.GetPoint(3, 2), 1.0f);

    SentinelField(m, 8, 8, true);
    d.ScanConvertTriangulationWithLimitedArea(&m, &d.GetTriangleList(), Origin(1), 2, 2, true);
    EXPECT_EQ(Written(m, true), (Cells{{6, 6}}));
}

TEST(ScanConversionSampler, SamplesBeyondTheFieldLandInItsBorderCells)
{
    // z = x + y over a triangle ten cells wide, into a field of 3 x 3.
    ZrCIncrementalDelaunay2D d(4);
    AddTriangle(d, P(0, 0, 0), P(10, 0, 10), P(0, 10, 10));
    d.CalcBoundingBox();
    CSSEMatrix m;
    SentinelField(m, 3, 3, true);
    d.ScanConvertTriangulationWithLimitedArea(&m, &d.GetTriangleList(), Origin(0), 0, 0, true);
    EXPECT_EQ(Written(m, true).size(), 9u);
    EXPECT_EQ(m.GetPoint(2, 0), 10.0f); // corner b, clamped in from x = 10

    SentinelField(m, 3, 3, false);
    d.ScanConvertTriangulationWithLimitedArea(&m, &d.GetTriangleList(), Origin(0), 0, 0, false);
    // Everything from x, y >= 1.5 on piles into cell (2, 2); the lowest
    // lattice point there is (1.6, 1.6), the lattice being 0.2 apart.
    EXPECT_GE(m.GetPoint(2, 2), 3.0f);
    EXPECT_LT(m.GetPoint(2, 2), 3.25f);
}

TEST(ScanConversionSampler, StretchesAreIndicesIntoTheListBothInclusive)
{
    // Three triangles in cells (0..1, 0), (4..5, 0) and (8..9, 0).
    ZrCIncrementalDelaunay2D d(9);
    for (float x0 : {0.0f, 4.0f, 8.0f}) AddTriangle(d, P(x0, 0, 1), P(x0 + 1, 0, 1), P(x0, 0.4f, 1));
    d.CalcBoundingBox();
    const auto sampled = [&](int first, int last) {
        CSSEMatrix m;
        SentinelField(m, 10, 1, true);
        d.ScanConvertTriangulationWithLimitedArea(&m, &d.GetTriangleList(), Origin(1), first, last, true);
        std::set<int> triangles;
        for (const auto& [x, y] : Written(m, true)) triangles.insert(x / 4);
        return triangles;
    };
    EXPECT_EQ(sampled(0, 2), (std::set<int>{0, 1, 2}));
    EXPECT_EQ(sampled(1, 1), (std::set<int>{1}));
    EXPECT_EQ(sampled(2, 99), (std::set<int>{2}));   // the end stands for a last beyond it
    EXPECT_EQ(sampled(0, -5), (std::set<int>{0, 1, 2}));
    EXPECT_EQ(sampled(3, 5), (std::set<int>{}));     // a first beyond the end samples nothing
    EXPECT_EQ(sampled(-1, 2), (std::set<int>{}));
    EXPECT_EQ(sampled(2, 0), (std::set<int>{}));     // ends before it starts
}

// One triangle in each of the cells x = 0, 4, 8, 12 of a field one row high.
class PickedTriangles : public ::testing::Test {
protected:
    void SetUp() override
    {
        // 0 faces up at z 1, 1 faces down at z 5, 2 faces up at z 9.
        up = AddTriangle(d, P(0, 0, 1), P(1, 0, 1), P(0, 0.4f, 1));
        down = AddTriangle(d, P(4, 0, 5), P(4, 0.4f, 5), P(5, 0, 5));
        high = AddTriangle(d, P(8, 0, 9), P(9, 0, 9), P(8, 0.4f, 9));
        d.ComputeNormalVectorsOfTriangles();
        // 3 comes after the normals and has none.
        AddTriangle(d, P(12, 0, 1), P(13, 0, 1), P(12, 0.4f, 1));
        d.CalcBoundingBox();
    }

    template <class Sample>
    std::set<int> Sampled(bool keepMax, Sample sample)
    {
        CSSEMatrix m;
        SentinelField(m, 14, 1, keepMax);
        sample(&m, keepMax);
        std::set<int> triangles;
        for (const auto& [x, y] : Written(m, keepMax)) triangles.insert(x / 4);
        return triangles;
    }

    ZrCIncrementalDelaunay2D d{16};
    t_hdelaunaytriangle* up = nullptr;
    t_hdelaunaytriangle* down = nullptr;
    t_hdelaunaytriangle* high = nullptr;
};

TEST_F(PickedTriangles, VisibleAreTheFacesTowardsTheKeptExtreme)
{
    auto* list = &d.GetTriangleList();
    const auto visible = [&](CSSEMatrix* m, bool keepMax) {
        d.ScanConvertTriangulationWithLimitedAreaOnlyVisible(m, list, Origin(0), 0, 3, keepMax);
    };
    const auto unvisible = [&](CSSEMatrix* m, bool keepMax) {
        d.ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(m, list, Origin(0), 0, 3, keepMax);
    };
    EXPECT_EQ(Sampled(true, visible), (std::set<int>{0, 2}));
    EXPECT_EQ(Sampled(true, unvisible), (std::set<int>{1}));
    EXPECT_EQ(Sampled(false, visible), (std::set<int>{1}));
    EXPECT_EQ(Sampled(false, unvisible), (std::set<int>{0, 2}));
}

TEST_F(PickedTriangles, ZRangeTakesTrianglesWithACornerInIt)
{
    auto* list = &d.GetTriangleList();
    const auto inRange = [&](float zMax, float zMin) {
        return [=, this](CSSEMatrix* m, bool keepMax) {
            d.ScanConvertTriangulationWithLimitedAreaWithZRange(m, list, Origin(0), 0, 3, zMax, zMin, keepMax);
        };
    };
    EXPECT_EQ(Sampled(true, inRange(6, 4)), (std::set<int>{1}));
    EXPECT_EQ(Sampled(false, inRange(1, 1)), (std::set<int>{0, 3})); // both limits belong to the range
    EXPECT_EQ(Sampled(true, inRange(9, 5)), (std::set<int>{1, 2}));
    EXPECT_EQ(Sampled(true, inRange(4, 6)), (std::set<int>{}));
}

TEST_F(PickedTriangles, InsideLeavesOutBorderFlagsAndLinesOutsideTheBand)
{
    auto* list = &d.GetTriangleList();
    const auto inside = [&](int first, int last, bool inner) {
        return [=, this](CSSEMatrix* m, bool keepMax) {
            d.ScanConvertTriangulationWithLimitedAreaOnlyInside(m, list, Origin(0), first, last, inner, keepMax);
        };
    };
    EXPECT_EQ(Sampled(true, inside(0, 0, false)), (std::set<int>{0, 1, 2, 3}));
    // Corners lie at y 0 and 0.4: a band of lines 1 ... 5 misses them all.
    EXPECT_EQ(Sampled(true, inside(1, 5, false)), (std::set<int>{}));

    up->Outside = true;
    high->SubEdge = true;
    down->Neighbour[0] = high;
    EXPECT_EQ(Sampled(true, inside(0, 0, true)), (std::set<int>{1, 3}));
    // Without `inner` a triangle next to a SubEdge or Border one goes too.
    EXPECT_EQ(Sampled(true, inside(0, 0, false)), (std::set<int>{3}));
    down->Neighbour[0] = nullptr;
}

TEST(ScanConversionBands, TrianglesAreSharedOutInRoundedChunks)
{
    using vek::detail::ScanBandOf;
    const auto bands = [](int count, int n) {
        std::vector<std::pair<int, int>> out;
        for (int i = 0; i < n; ++i) out.push_back({ScanBandOf(i, n, count).first, ScanBandOf(i, n, count).last});
        return out;
    };
    using B = std::vector<std::pair<int, int>>;
    // 203 / 5 = 40.6 rounds to 41; the last band takes the rest.
    EXPECT_EQ(bands(203, 5), (B{{0, 40}, {41, 81}, {82, 122}, {123, 163}, {164, 202}}));
    // 8 / 5 rounds to 2, so the bands run out before the last one.
    EXPECT_EQ(bands(8, 5), (B{{0, 1}, {2, 3}, {4, 5}, {6, 7}, {8, 7}}));
    // 2 / 5 rounds to 0: only the last band holds anything.
    EXPECT_EQ(bands(2, 5), (B{{0, -1}, {0, -1}, {0, -1}, {0, -1}, {0, 1}}));
    EXPECT_EQ(bands(0, 5), (B{{0, -1}, {0, -1}, {0, -1}, {0, -1}, {0, -1}}));
    // Ten bands round 96 / 10 = 9.6 up to 10.
    EXPECT_EQ(bands(96, 10).back(), (std::pair<int, int>{90, 95}));
    EXPECT_EQ(bands(96, 10)[8], (std::pair<int, int>{80, 89}));
}

TEST(ScanConversionBands, FieldSizeCoversTheBoxPlusOneUnit)
{
    using vek::detail::ScanFieldCells;
    EXPECT_EQ(ScanFieldCells(0.0f, 10.0f, 1.0f), 11);
    EXPECT_EQ(ScanFieldCells(-2.0f, 10.0f, 0.5f), 26);   // 13 / 0.5 + 0.5
    EXPECT_EQ(ScanFieldCells(0.0f, 10.0f, 3.0f), 4);     // 11 / 3 + 0.5 = 4.17
    EXPECT_EQ(ScanFieldCells(999999.9f, -999999.9f, 1.0f), 0); // box of an empty surface
}

// ---------------------------------------------------------------- the walk along a polygon

CSSE3dPolygon Line(int n, float spacing)
{
    CSSE3dPolygon polygon;
    polygon.Create(n);
    for (int i = 0; i < n; ++i) polygon.SetPoint(i, static_cast<float>(i) * spacing, 0.0f, 0.0f);
    return polygon;
}

TEST(CheckTrianguleAndProcessList, TrianglesAlongThePolygonAreMarkedAndTheirNeighboursQueued)
{
    ZrCIncrementalDelaunay2D d(12);
    t_hdelaunaytriangle* near = AddTriangle(d, P(0, 1, 0), P(2, 1, 0), P(1, 2, 0));
    t_hdelaunaytriangle* far = AddTriangle(d, P(0, 9, 0), P(2, 9, 0), P(1, 10, 0));
    t_hdelaunaytriangle* a = AddTriangle(d, P(0, 0, 0), P(1, 0, 0), P(0, 1, 0));
    t_hdelaunaytriangle* b = AddTriangle(d, P(5, 0, 0), P(6, 0, 0), P(5, 1, 0));
    near->Neighbour[0] = b;
    near->Neighbour[2] = a;
    a->Visited = false;
    b->Visited = false;
    far->Ignore = true;
    const CSSE3dPolygon polygon = Line(10, 1.0f);
    CList<t_hdelaunaytriangle*> queue;

    // Corners at distance 1, 1 and 2 from the line's points: within 1.5 + 0.5.
    d.CheckTrianguleAndProcessList(near, nullptr, &queue, 1.5f, 0.5f, polygon);
    EXPECT_TRUE(near->Ignore);
    EXPECT_TRUE(near->Processed);
    ASSERT_EQ(queue.GetCount(), 2);
    EXPECT_EQ(queue.GetHead(), b); // side 0 before side 2
    EXPECT_EQ(queue.GetTail(), a);
    EXPECT_TRUE(a->Visited && b->Visited);

    // Processed already: nothing happens, even with a changed flag.
    near->Ignore = false;
    d.CheckTrianguleAndProcessList(near, nullptr, &queue, 1.5f, 0.5f, polygon);
    EXPECT_FALSE(near->Ignore);

    // Just beyond the limit: the mark goes, nothing is queued.
    d.CheckTrianguleAndProcessList(far, nullptr, &queue, 8.5f, 0.4f, polygon);
    EXPECT_FALSE(far->Ignore);
    EXPECT_TRUE(far->Processed);
    EXPECT_EQ(queue.GetCount(), 2);
}

TEST(CheckTrianguleAndProcessList, OnLongPolygonsCornersMustBeNearOneStretch)
{
    // A closed strip of 100 points: 0 ... 49 along y = 0, 50 ... 99 back along
    // y = 2. A triangle between the two shores is near points 10 and 89, a
    // span of 21 either way round, above 100 / 10.
    CSSE3dPolygon polygon;
    polygon.Create(100);
    for (int i = 0; i < 50; ++i) polygon.SetPoint(i, static_cast<float>(i), 0.0f, 0.0f);
    for (int i = 50; i < 100; ++i) polygon.SetPoint(i, static_cast<float>(99 - i), 2.0f, 0.0f);
    ZrCIncrementalDelaunay2D d(9);
    t_hdelaunaytriangle* across = AddTriangle(d, P(10, 0, 0), P(11, 0, 0), P(10, 2, 0));
    // Near points 98, 99 and 0, 1: the span wraps round the start, 3.
    t_hdelaunaytriangle* atStart = AddTriangle(d, P(0, 0.2f, 0), P(1, 0.2f, 0), P(0.5f, 1.8f, 0));
    t_hdelaunaytriangle* along = AddTriangle(d, P(20, 0, 0), P(22, 0, 0), P(21, 0.5f, 0));
    CList<t_hdelaunaytriangle*> queue;
    d.CheckTrianguleAndProcessList(across, nullptr, &queue, 1.0f, 0.0f, polygon);
    d.CheckTrianguleAndProcessList(atStart, nullptr, &queue, 1.0f, 0.0f, polygon);
    d.CheckTrianguleAndProcessList(along, nullptr, &queue, 1.0f, 0.0f, polygon);
    EXPECT_FALSE(across->Ignore);
    EXPECT_TRUE(atStart->Ignore);
    EXPECT_TRUE(along->Ignore);
}

} // namespace
