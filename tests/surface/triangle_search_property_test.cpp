// The indexed search against the walk over every triangle: the same point
// sets, inserted both ways, must give the same lists, link for link.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "surface/triangulation_checks.h"
#include "vekdll/surface/circle_grid.h"

namespace {

using vek::SearchMode;
using PointSet = std::vector<SSEPoint>;

struct Families {
    std::mt19937 engine{77031};
    float Between(float lo, float hi) { return lo + (hi - lo) * static_cast<float>(engine() / 4294967296.0); }
    int Index(int n) { return static_cast<int>(engine() % static_cast<std::uint32_t>(n)); }

    PointSet Uniform(int n, float side = 100.0f)
    {
        PointSet points;
        for (int i = 0; i < n; ++i) points.push_back(vek::test::P(Between(0, side), Between(0, side), Between(0, 9)));
        return points;
    }
    PointSet Clustered(int n)
    {
        PointSet points;
        for (int cluster = 0; cluster < 5; ++cluster) {
            const float cx = Between(10, 90), cy = Between(10, 90), spread = Between(0.05f, 6.0f);
            for (int i = 0; i < n / 5; ++i)
                points.push_back(vek::test::P(cx + Between(-spread, spread), cy + Between(-spread, spread)));
        }
        return points;
    }
    // Whole cells, row by row as a raster gives them: four points of every
    // cell on one circle.
    PointSet Lattice(int columns, int rows)
    {
        PointSet points;
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < columns; ++x) points.push_back(vek::test::P(float(x), float(y), float((x * y) % 7)));
        }
        return points;
    }
    PointSet Shuffled(PointSet points)
    {
        for (int i = static_cast<int>(points.size()) - 1; i > 0; --i) std::swap(points[i], points[Index(i + 1)]);
        return points;
    }
    PointSet WithDuplicates(PointSet points)
    {
        const int n = static_cast<int>(points.size());
        for (int i = 0; i < n / 4; ++i) points.push_back(points[Index(n)]);
        return points;
    }
    PointSet WithCollinearRuns(int n)
    {
        PointSet points = Uniform(n);
        for (int i = 0; i < 15; ++i) {
            points.push_back(vek::test::P(3 + 6.0f * i, 40));
            points.push_back(vek::test::P(61, 2 + 6.5f * i));
            points.push_back(vek::test::P(5 + 5.5f * i, 7 + 5.5f * i));
        }
        return points;
    }
};

struct Built {
    std::vector<long> shape;
    int vertices = 0;
};

// Triangulates, then inserts `later` one by one into the working state in
// the three ways a refinement does, and finalizes.
Built Build(const PointSet& points, const PointSet& later, bool addCorners, SearchMode mode)
{
    ZrCIncrementalDelaunay2D d(static_cast<int>(points.size() + 2 * later.size()) + 8);
    d.SetSearchMode(mode);
    for (const SSEPoint& p : points) d.AppendVertex(p);
    d.Triangulate(d.GetNumVertices(), false, addCorners);
    for (std::size_t i = 0; i < later.size(); ++i) {
        switch (i % 3) {
        case 0: d.InsertVertexIntoTriangulation(later[i].x, later[i].y, false); break;
        case 1:
            d.AppendVertex(later[i]);
            d.InsertVertexIntoTriangulation(d.GetNumVertices() - 1);
            break;
        default:
            d.AppendVertex(later[i]);
            d.InsertVertexIntoTriangulationNoExterior(d.GetNumVertices() - 1);
        }
    }
    d.FinalizeTriangleList();
    return {vek::test::ListShape(d.GetFinalList()), d.GetNumVertices()};
}

void ExpectSameBothWays(const std::string& name, const PointSet& points, const PointSet& later)
{
    for (const bool addCorners : {true, false}) {
        SCOPED_TRACE(name + (addCorners ? ", from the box corners" : ", plain"));
        const Built indexed = Build(points, later, addCorners, SearchMode::Indexed);
        const Built walked = Build(points, later, addCorners, SearchMode::LinearScan);
        EXPECT_EQ(indexed.vertices, walked.vertices);
        ASSERT_EQ(indexed.shape.size(), walked.shape.size());
        EXPECT_TRUE(indexed.shape == walked.shape) << "the lists differ";
    }
}

TEST(TriangleSearch, IndexedAndWalkedInsertionGiveTheSameLists)
{
    Families f;
    ExpectSameBothWays("uniform", f.Uniform(600), f.Uniform(90));
    ExpectSameBothWays("clustered", f.Clustered(500), f.Clustered(60));
    ExpectSameBothWays("lattice by rows", f.Lattice(23, 17), f.Uniform(40, 22.0f));
    ExpectSameBothWays("lattice shuffled", f.Shuffled(f.Lattice(20, 20)), f.Shuffled(f.Lattice(20, 3)));
    ExpectSameBothWays("duplicates", f.WithDuplicates(f.Uniform(300)), f.WithDuplicates(f.Uniform(40)));
    ExpectSameBothWays("lattice with duplicates", f.WithDuplicates(f.Lattice(15, 15)), f.Lattice(15, 2));
    ExpectSameBothWays("collinear runs", f.WithCollinearRuns(200), f.Uniform(30));
    // Points inserted later far outside the first ones make the index grow
    // its grid; world-like coordinates test its cell arithmetic.
    ExpectSameBothWays("growing outwards", f.Uniform(200), f.Uniform(60, 1000.0f));
    PointSet world = f.Lattice(12, 12);
    for (SSEPoint& p : world) p = vek::test::P(376313.66f + 30.0f * p.x, 3807917.8f - 30.0f * p.y);
    ExpectSameBothWays("world coordinates", world, {});
    // Dense points far from the origin, where the float circle test
    // contradicts itself and edges flip back and forth until the sweeps'
    // bound: the indexed mode cuts such cycles short, the walk runs them.
    PointSet dense = f.Uniform(500, 2.0f);
    for (SSEPoint& p : dense) p = vek::test::P(1000.0f + p.x, 1000.0f + p.y);
    ExpectSameBothWays("dense far out", dense, {});
}

// Two coincident points among the first three, without box corners: the
// float decisions that follow disagree with each other, a sweep flips with a
// triangle outside the insertion's reach, and the triangles the insertion
// drops must not be freed while a link may still lead to them (found by the
// fuzz program; the sanitizer builds read freed memory otherwise).
TEST(TriangleSearch, ContradictoryDecisionsLeaveOnlyLinksToListedTriangles)
{
    const std::vector<std::pair<float, float>> points = {
        {1.5, 3},   {1.5, 3},    {15.5, 11.5}, {15.5, 1.5}, {0, 3},    {13.5, 4},   {4, 4},   {2.5, 4},
        {4, 13.5},  {2.5, 13},   {6.5, 6.5},   {6.5, 6.5},  {0.5, 0.5}, {7.5, 8},   {8, 8},   {8, 15.5},
        {6.5, 0},   {0.5, 4.5},  {4, 5},       {6.5, 6.5},  {15.5, 15.5}, {6.5, 0}, {4, 8.5}, {6.5, 2.5},
        {15.5, 5},  {0, 0},      {8.5, 6.5},   {0, 0},      {0, 0},    {5, 15.5}};
    for (const SearchMode mode : {SearchMode::Indexed, SearchMode::LinearScan}) {
        ZrCIncrementalDelaunay2D d(static_cast<int>(points.size()) + 8);
        d.SetSearchMode(mode);
        for (const auto& [x, y] : points) d.AppendVertex(vek::test::P(x, y));
        d.Triangulate(d.GetNumVertices(), true, false);
        const std::vector<t_hdelaunaytriangle*> triangles = vek::test::Triangles(d.GetFinalList());
        for (const t_hdelaunaytriangle* t : triangles) {
            for (const t_hdelaunaytriangle* n : t->Neighbour)
                EXPECT_TRUE(n == nullptr || std::find(triangles.begin(), triangles.end(), n) != triangles.end());
        }
    }
}

// The grid must hand out every circle that holds a point by the float test
// the triangulation applies, for circles of every size, at the rim of the
// box and beyond it.
TEST(TriangleSearch, CircleGridMissesNoCircleThatHoldsAPoint)
{
    std::mt19937 engine(515);
    const auto between = [&](double lo, double hi) { return lo + (hi - lo) * (engine() / 4294967296.0); };
    vek::detail::CircleGrid grid;
    grid.Reset(-50.0, -20.0, 150.0, 60.0, 0.7);
    struct Circle {
        float x, y, r2;
    };
    std::vector<Circle> circles;
    for (std::uint32_t i = 0; i < 3000; ++i) {
        const float radius = static_cast<float>(std::pow(10.0, between(-4.0, 3.0)));
        Circle c{static_cast<float>(between(-80, 180)), static_cast<float>(between(-50, 90)), radius * radius};
        if (i % 500 == 0) c.r2 = INFINITY;
        circles.push_back(c);
        const double reach = std::isinf(c.r2) ? HUGE_VAL : std::sqrt(double(c.r2)) * (1.0 + 1.0e-6) + 1.0e-18;
        grid.Insert({c.x, c.y, c.r2, i}, c.x, c.y, reach);
    }
    // Circles removed again must not come back.
    for (std::uint32_t i = 1; i < 3000; i += 7) {
        const Circle& c = circles[i];
        const double reach = std::isinf(c.r2) ? HUGE_VAL : std::sqrt(double(c.r2)) * (1.0 + 1.0e-6) + 1.0e-18;
        vek::detail::GridPlace place{};
        // Re-inserting gives the place; the copy sits beside the first one.
        place = grid.Insert({c.x, c.y, c.r2, i}, c.x, c.y, reach);
        grid.Remove(place, i);
        grid.Remove(place, i);
        circles[i].r2 = -1.0f; // gone
    }
    int missed = 0, found = 0;
    for (int q = 0; q < 4000; ++q) {
        // Points on circles' rims as well as anywhere in the box.
        float x = static_cast<float>(between(-50, 150)), y = static_cast<float>(between(-20, 60));
        if (q % 2 == 1) {
            const Circle& c = circles[engine() % circles.size()];
            const double angle = between(0, 6.283185307), r = std::sqrt(std::max(double(c.r2), 0.0));
            if (!std::isfinite(r)) continue;
            x = static_cast<float>(std::clamp(c.x + r * std::cos(angle), -50.0, 150.0));
            y = static_cast<float>(std::clamp(c.y + r * std::sin(angle), -20.0, 60.0));
        }
        std::vector<bool> candidate(circles.size(), false);
        grid.ForEachCandidate(x, y, [&](const vek::detail::CircleGrid::Entry& e) { candidate[e.slot] = true; });
        for (std::size_t i = 0; i < circles.size(); ++i) {
            const float dx = x - circles[i].x, dy = y - circles[i].y;
            if (!(circles[i].r2 > dx * dx + dy * dy)) continue;
            ++found;
            missed += !candidate[i];
        }
    }
    EXPECT_GT(found, 4000);
    EXPECT_EQ(missed, 0);
}

// The vertex look-ups through the grid answer what the walk answers, also
// after the store was moved, cut back and filled again.
TEST(TriangleSearch, VertexLookupsMatchTheWalk)
{
    std::mt19937 engine(99);
    const auto coordinate = [&] { return static_cast<float>(engine() % 2000) * 0.05f; };
    ZrCSSEVertexContainer indexed(4000), walked(4000);
    walked.SetSearchMode(SearchMode::LinearScan);
    const auto append = [&](const SSEPoint& p) {
        indexed.AppendVertex(p);
        walked.AppendVertex(p);
    };
    for (int i = 0; i < 1500; ++i) append(vek::test::P(coordinate(), coordinate(), float(engine() % 3)));
    append(vek::test::P(INFINITY, 3.0f));
    append(vek::test::P(NAN, 3.0f));
    const auto compare = [&](const char* stage) {
        SCOPED_TRACE(stage);
        for (int q = 0; q < 600; ++q) {
            const SSEPoint stored = indexed.GetVertex(static_cast<int>(engine() % indexed.GetNumVertices()));
            const SSEPoint fresh = vek::test::P(coordinate(), coordinate(), float(engine() % 3));
            for (const SSEPoint& p : {stored, fresh}) {
                for (const float tolerance : {0.0f, 0.01f, 0.05f, 0.5f, 3.0f, -0.3f, 400.0f, INFINITY}) {
                    ASSERT_EQ(indexed.IsVertexExist(p, tolerance), walked.IsVertexExist(p, tolerance));
                }
                ASSERT_EQ(indexed.PointIndex(p), walked.PointIndex(p));
                const int first = static_cast<int>(engine() % 800), end = first + static_cast<int>(engine() % 1200);
                ASSERT_EQ(indexed.PointIndex3D(p, first, end), walked.PointIndex3D(p, first, end));
            }
        }
        const SSEPoint odd = vek::test::P(INFINITY, 3.0f);
        EXPECT_EQ(indexed.PointIndex(odd), walked.PointIndex(odd));
    };
    compare("as stored");
    indexed.AddOffset(0.5f, -7.0f, 0.0f);
    walked.AddOffset(0.5f, -7.0f, 0.0f);
    compare("moved");
    indexed.ReallocSize(900);
    walked.ReallocSize(900);
    for (int i = 0; i < 300; ++i) append(vek::test::P(coordinate() * 3.0f, coordinate(), 1.0f));
    compare("cut back and filled again, further out");
    *indexed.GetVertexPtr(5) = indexed.GetVertex(17);
    *walked.GetVertexPtr(5) = walked.GetVertex(17);
    compare("written through a pointer");
}

} // namespace
