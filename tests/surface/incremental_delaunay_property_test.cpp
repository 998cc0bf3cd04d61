// Properties of whole triangulations over families of random point sets.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "surface/triangulation_checks.h"

namespace {

using vek::test::At;
using vek::test::Point2;
using PointSet = std::vector<Point2>;

// Area of the convex hull by the monotone chain.
double HullArea(PointSet points)
{
    std::sort(points.begin(), points.end(),
              [](const Point2& a, const Point2& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    PointSet hull(2 * points.size());
    std::size_t k = 0;
    for (const Point2& p : points) {
        while (k >= 2 && vek::test::Cross(hull[k - 2], hull[k - 1], p) <= 0) --k;
        hull[k++] = p;
    }
    for (std::size_t i = points.size() - 1, lower = k + 1; i-- > 0;) {
        while (k >= lower && vek::test::Cross(hull[k - 2], hull[k - 1], points[i]) <= 0) --k;
        hull[k++] = points[i];
    }
    double area = 0.0;
    for (std::size_t i = 0; i + 1 < k; ++i) area += hull[i].x * hull[i + 1].y - hull[i + 1].x * hull[i].y;
    return area / 2.0;
}

// Corners inside a triangle's circumcircle by more than `relative` of its radius.
int DelaunayViolations(const ZrCIncrementalDelaunay2D& d, const std::vector<t_hdelaunaytriangle*>& triangles,
                       const std::set<int>& corners, double relative)
{
    int violations = 0;
    for (const t_hdelaunaytriangle* t : triangles) {
        const Point2 a = At(d, t->Vertex[0]), b = At(d, t->Vertex[1]), c = At(d, t->Vertex[2]);
        const double den = 2.0 * (a.x * (b.y - c.y) + b.x * (c.y - a.y) + c.x * (a.y - b.y));
        const double a2 = a.x * a.x + a.y * a.y, b2 = b.x * b.x + b.y * b.y, c2 = c.x * c.x + c.y * c.y;
        const double ux = (a2 * (b.y - c.y) + b2 * (c.y - a.y) + c2 * (a.y - b.y)) / den;
        const double uy = (a2 * (c.x - b.x) + b2 * (a.x - c.x) + c2 * (b.x - a.x)) / den;
        const double r = std::hypot(a.x - ux, a.y - uy);
        for (int v : corners) {
            const Point2 p = At(d, v);
            violations += std::hypot(p.x - ux, p.y - uy) < r * (1.0 - relative);
        }
    }
    return violations;
}

// Uniform, clustered, on a shuffled grid (cocircular quadruples), with repeats,
// and with collinear runs; converted by hand, the same with every library.
struct Families {
    std::mt19937 engine{20240611};
    double Between(double lo, double hi) { return lo + (hi - lo) * (engine() / 4294967296.0); }
    int Index(int n) { return static_cast<int>(engine() % static_cast<std::uint32_t>(n)); }

    PointSet Uniform(int n)
    {
        PointSet points;
        for (int i = 0; i < n; ++i) points.push_back({Between(0, 100), Between(0, 100)});
        return points;
    }
    PointSet Clustered(int n)
    {
        PointSet points;
        for (int cluster = 0; cluster < 4; ++cluster) {
            const double cx = Between(15, 85), cy = Between(15, 85);
            for (int i = 0; i < n / 4; ++i) points.push_back({cx + Between(-8, 8), cy + Between(-8, 8)});
        }
        return points;
    }
    PointSet Grid(int side)
    {
        PointSet points;
        for (int i = 0; i < side * side; ++i) points.push_back({5.0 * (i % side) + 3, 5.0 * (i / side) + 7});
        for (int i = static_cast<int>(points.size()) - 1; i > 0; --i) std::swap(points[i], points[Index(i + 1)]);
        return points;
    }
    PointSet WithDuplicates(int n)
    {
        PointSet points = Uniform(n);
        for (int i = 0; i < n / 5; ++i) points.push_back(points[Index(n)]);
        return points;
    }
    PointSet WithCollinearRuns(int n)  // along a row, a column and a diagonal
    {
        PointSet points = Uniform(n);
        for (int i = 0; i < 12; ++i) {
            points.insert(points.end(), {{4 + 7.5 * i, 50}, {33, 6 + 7.0 * i}, {10 + 6.0 * i, 12 + 6.0 * i}});
        }
        return points;
    }
};

void Store(ZrCIncrementalDelaunay2D& d, const PointSet& points)
{
    for (const Point2& p : points) d.AppendVertex(vek::test::P(static_cast<float>(p.x), static_cast<float>(p.y)));
}

// FNV-1a over a list's shape, so that a whole triangulation compares as one number.
std::uint64_t Fingerprint(const std::vector<long>& shape)
{
    std::uint64_t hash = 14695981039346656037ull;
    for (const long value : shape) hash = (hash ^ static_cast<std::uint64_t>(value)) * 1099511628211ull;
    return hash;
}

void ExpectValidDelaunay(ZrCIncrementalDelaunay2D& d)
{
    ASSERT_TRUE(d.IsFinalized());
    const std::vector<t_hdelaunaytriangle*> triangles = vek::test::Triangles(d.GetFinalList());
    ASSERT_FALSE(triangles.empty());
    EXPECT_EQ(vek::test::LinkFault(triangles), "");

    double area = 0.0;  // one winding: every triangle counter-clockwise
    for (const t_hdelaunaytriangle* t : triangles) {
        EXPECT_GT(vek::test::SignedArea(d, t), 0.0);
        area += vek::test::SignedArea(d, t);
    }
    // Every vertex is a corner, except for a repeat of an earlier position.
    const std::set<int> corners = vek::test::Corners(triangles);
    PointSet all;
    std::set<std::pair<float, float>> seen;
    for (int i = 0; i < d.GetNumVertices(); ++i) {
        const SSEPoint v = d.GetVertex(i);
        all.push_back({v.x, v.y});
        EXPECT_EQ(corners.count(i) == 1, seen.insert({v.x, v.y}).second) << "vertex " << i;
    }
    // A disk (T = 2V - B - 2, B border edges) of the hull's area: covered without overlap.
    const int open = vek::test::OpenSides(triangles);
    EXPECT_EQ(static_cast<int>(triangles.size()), 2 * static_cast<int>(corners.size()) - open - 2);
    const double hull = HullArea(all);
    EXPECT_NEAR(area, hull, 1e-6 * hull);
    EXPECT_EQ(DelaunayViolations(d, triangles, corners, 1e-4), 0);
}

TEST(IncrementalDelaunayProperties, BothFormsTileTheHullUnderTheDelaunayRule)
{
    Families f;
    const struct {
        const char* name;
        PointSet points;
    } families[] = {
        {"uniform", f.Uniform(300)},          {"clustered", f.Clustered(240)},
        {"grid", f.Grid(15)},                 {"duplicates", f.WithDuplicates(200)},
        {"collinear runs", f.WithCollinearRuns(150)},
    };
    for (const auto& family : families) {
        for (const bool addCorners : {true, false}) {
            SCOPED_TRACE(std::string(family.name) + (addCorners ? ", from the box corners" : ", plain"));
            const int capacity = static_cast<int>(family.points.size()) + (addCorners ? 4 : 0);
            ZrCIncrementalDelaunay2D d(capacity), again(capacity);
            for (ZrCIncrementalDelaunay2D* run : {&d, &again}) {
                Store(*run, family.points);
                run->Triangulate(run->GetNumVertices(), true, addCorners);
            }
            ExpectValidDelaunay(d);
            // Later passes walk the lists: the same input gives the same order every run.
            EXPECT_EQ(vek::test::ListShape(d.GetFinalList()), vek::test::ListShape(again.GetFinalList()));
            // ... and in every build type, optimised or instrumented: the value
            // was recorded once and each build's test run must meet it.
            if (&family == &families[0] && addCorners) {
                EXPECT_EQ(Fingerprint(vek::test::ListShape(d.GetFinalList())), 0x1232672ee6e82ae4ull);
            }
        }
    }

    // Points inserted one by one into a finished triangulation keep it valid.
    ZrCIncrementalDelaunay2D d(60 + 60 + 4);
    Store(d, f.Uniform(60));
    d.Triangulate(d.GetNumVertices(), false, true);
    for (const Point2& p : f.Uniform(60)) d.InsertVertexIntoTriangulation(float(p.x), float(p.y), false);
    d.FinalizeTriangleList();
    ExpectValidDelaunay(d);
}

} // namespace
