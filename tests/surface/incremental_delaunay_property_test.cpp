// Properties of whole triangulations over families of random point sets.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "surface/triangulation_checks.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

using vek::test::Point2;

// Uniform floats from a fixed-seed Mersenne twister, converted by hand so
// that the sets are the same with every standard library.
class Sampler {
public:
    explicit Sampler(std::uint32_t seed) : engine_(seed) {}
    double Uniform(double lo, double hi) { return lo + (hi - lo) * (engine_() / 4294967296.0); }
    int Index(int n) { return static_cast<int>(engine_() % static_cast<std::uint32_t>(n)); }

private:
    std::mt19937 engine_;
};

using PointSet = std::vector<Point2>;

PointSet UniformSet(Sampler& s, int n)
{
    PointSet points;
    for (int i = 0; i < n; ++i) points.push_back({s.Uniform(0, 100), s.Uniform(0, 100)});
    return points;
}

PointSet ClusteredSet(Sampler& s, int n)
{
    PointSet points;
    for (int cluster = 0; cluster < 4; ++cluster) {
        const double cx = s.Uniform(15, 85);
        const double cy = s.Uniform(15, 85);
        for (int i = 0; i < n / 4; ++i) points.push_back({cx + s.Uniform(-8, 8), cy + s.Uniform(-8, 8)});
    }
    return points;
}

// A grid in shuffled order: many cocircular quadruples.
PointSet GridSet(Sampler& s, int side)
{
    PointSet points;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) points.push_back({5.0 * x + 3, 5.0 * y + 7});
    }
    for (int i = static_cast<int>(points.size()) - 1; i > 0; --i) std::swap(points[i], points[s.Index(i + 1)]);
    return points;
}

PointSet WithDuplicates(Sampler& s, int n)
{
    PointSet points = UniformSet(s, n);
    for (int i = 0; i < n / 5; ++i) points.push_back(points[s.Index(n)]);
    return points;
}

// Uniform points with runs of collinear points along rows, columns and a
// diagonal mixed in.
PointSet WithCollinearRuns(Sampler& s, int n)
{
    PointSet points = UniformSet(s, n);
    for (int i = 0; i < 12; ++i) {
        points.push_back({4.0 + 7.5 * i, 50.0});
        points.push_back({33.0, 6.0 + 7.0 * i});
        points.push_back({10.0 + 6.0 * i, 12.0 + 6.0 * i});
    }
    return points;
}

struct Family {
    const char* name;
    PointSet points;
};

std::vector<Family> Families()
{
    Sampler s(20240611);
    return {
        {"uniform", UniformSet(s, 300)},
        {"clustered", ClusteredSet(s, 240)},
        {"grid", GridSet(s, 15)},
        {"duplicates", WithDuplicates(s, 200)},
        {"collinear runs", WithCollinearRuns(s, 150)},
    };
}

void Store(ZrCIncrementalDelaunay2D& d, const PointSet& points)
{
    for (const Point2& p : points) {
        SSEPoint v;
        v.sse = _mm_setr_ps(static_cast<float>(p.x), static_cast<float>(p.y), 0.0f, 0.0f);
        d.AppendVertex(v);
    }
}

// Checks everything that a finalized triangulation of the stored vertices
// must satisfy; `label` names the case in failure messages.
void ExpectValidDelaunay(ZrCIncrementalDelaunay2D& d, const std::string& label)
{
    SCOPED_TRACE(label);
    ASSERT_TRUE(d.IsFinalized());
    const std::vector<t_hdelaunaytriangle*> triangles = vek::test::Triangles(d.GetFinalList());
    ASSERT_FALSE(triangles.empty());
    EXPECT_EQ(vek::test::LinkFault(triangles), "");

    // One winding: every triangle counter-clockwise.
    double area = 0.0;
    for (const t_hdelaunaytriangle* t : triangles) {
        const double a = vek::test::SignedArea(d, t);
        EXPECT_GT(a, 0.0);
        area += a;
    }

    // Every vertex is a corner, except for a repeat of an earlier position.
    const std::set<int> corners = vek::test::Corners(triangles);
    std::vector<Point2> all;
    std::set<std::pair<float, float>> seen;
    for (int i = 0; i < d.GetNumVertices(); ++i) {
        const SSEPoint v = d.GetVertex(i);
        all.push_back({v.x, v.y});
        const bool repeat = !seen.insert({v.x, v.y}).second;
        EXPECT_EQ(corners.count(i) == 1, !repeat) << "vertex " << i;
    }

    // The triangles tile a disk (Euler: T = 2V - B - 2 with B border edges)
    // whose area is that of the convex hull: the hull is covered without
    // overlap.
    const int open = vek::test::OpenSides(triangles);
    EXPECT_EQ(static_cast<int>(triangles.size()), 2 * static_cast<int>(corners.size()) - open - 2);
    const double hull = vek::test::HullArea(all);
    EXPECT_NEAR(area, hull, 1e-6 * hull);

    EXPECT_EQ(vek::test::DelaunayViolations(d, triangles, corners, 1e-4), 0);
}

TEST(IncrementalDelaunayProperties, BoxCornerFormTilesTheBoxUnderTheDelaunayRule)
{
    for (const Family& family : Families()) {
        ZrCIncrementalDelaunay2D d(static_cast<int>(family.points.size()) + 4);
        Store(d, family.points);
        d.Triangulate(d.GetNumVertices(), true, true);
        ExpectValidDelaunay(d, family.name);
    }
}

TEST(IncrementalDelaunayProperties, PlainFormTilesTheHullUnderTheDelaunayRule)
{
    for (const Family& family : Families()) {
        ZrCIncrementalDelaunay2D d(static_cast<int>(family.points.size()));
        Store(d, family.points);
        d.Triangulate(d.GetNumVertices(), true, false);
        ExpectValidDelaunay(d, family.name);
    }
}

// The list order is part of the behaviour, since later passes walk it: the
// same input gives the same triangles, links and order on every run.
TEST(IncrementalDelaunayProperties, SameInputGivesTheSameListOnEveryRun)
{
    for (const bool addCorners : {true, false}) {
        std::uint64_t hashes[2];
        for (std::uint64_t& hash : hashes) {
            Sampler s(77);
            const PointSet points = WithDuplicates(s, 150);
            ZrCIncrementalDelaunay2D d(static_cast<int>(points.size()) + 4);
            Store(d, points);
            d.Triangulate(d.GetNumVertices(), true, addCorners);
            hash = vek::test::ListHash(vek::test::Triangles(d.GetFinalList()));
        }
        EXPECT_EQ(hashes[0], hashes[1]);
    }
}

// Inserting one by one into a finished triangulation keeps it valid.
TEST(IncrementalDelaunayProperties, LaterInsertionsKeepTheTriangulationValid)
{
    Sampler s(5);
    const PointSet first = UniformSet(s, 60);
    const PointSet later = UniformSet(s, 60);
    ZrCIncrementalDelaunay2D d(static_cast<int>(first.size() + later.size()) + 4);
    Store(d, first);
    d.Triangulate(d.GetNumVertices(), false, true);
    for (const Point2& p : later) d.InsertVertexIntoTriangulation(static_cast<float>(p.x), static_cast<float>(p.y), false);
    d.FinalizeTriangleList();
    ExpectValidDelaunay(d, "point by point");
}

} // namespace
