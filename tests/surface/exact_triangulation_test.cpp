// The exact mode of the incremental triangulation on the point sets that
// defeat float arithmetic, checked with integer arithmetic of any size: the
// result must tile the convex hull (or the box), use every distinct point,
// keep its links returned and leave no vertex strictly inside a circle.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/exact_integer.h"
#include "surface/triangulation_checks.h"

namespace {

using vek::test::ExactInteger;
using vek::test::OnCommonGrid;
using Point = std::pair<double, double>;
using PointSet = std::vector<Point>;

int ExactInCircle(const Point& a, const Point& b, const Point& c, const Point& d)
{
    const std::vector<ExactInteger> n = OnCommonGrid({a.first, a.second, b.first, b.second, c.first, c.second,
                                                      d.first, d.second});
    const ExactInteger adx = n[0] - n[6], ady = n[1] - n[7], bdx = n[2] - n[6], bdy = n[3] - n[7];
    const ExactInteger cdx = n[4] - n[6], cdy = n[5] - n[7];
    const ExactInteger al = adx * adx + ady * ady, bl = bdx * bdx + bdy * bdy, cl = cdx * cdx + cdy * cdy;
    return (al * (bdx * cdy - bdy * cdx) + bl * (cdx * ady - cdy * adx) + cl * (adx * bdy - ady * bdx)).Sign();
}

// Twice the signed area of the triangle, as an exact integer on the grid of
// all the points' coordinates (so that sums over triangles stay exact).
ExactInteger TwiceArea(const std::vector<ExactInteger>& grid, int a, int b, int c)
{
    return (grid[2 * b] - grid[2 * a]) * (grid[2 * c + 1] - grid[2 * a + 1]) -
           (grid[2 * b + 1] - grid[2 * a + 1]) * (grid[2 * c] - grid[2 * a]);
}

// The convex hull's corners, counter-clockwise, by the monotone chain with
// exact turns; collinear points left out.
std::vector<int> Hull(const PointSet& points)
{
    std::vector<int> order(points.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
    std::sort(order.begin(), order.end(), [&](int a, int b) { return points[a] < points[b]; });
    order.erase(std::unique(order.begin(), order.end(), [&](int a, int b) { return points[a] == points[b]; }),
                order.end());
    if (order.size() < 3) return order;
    const auto turn = [&](int o, int a, int b) {
        return vek::test::ExactOrientation(points[o].first, points[o].second, points[a].first, points[a].second,
                                           points[b].first, points[b].second);
    };
    std::vector<int> hull(2 * order.size());
    std::size_t k = 0;
    for (int p : order) {
        while (k >= 2 && turn(hull[k - 2], hull[k - 1], p) <= 0) --k;
        hull[k++] = p;
    }
    for (std::size_t i = order.size() - 1, lower = k + 1; i-- > 0;) {
        while (k >= lower && turn(hull[k - 2], hull[k - 1], order[i]) <= 0) --k;
        hull[k++] = order[i];
    }
    hull.resize(k - 1);
    return hull;
}

// Everything the exact mode promises of a finished triangulation. Returns a
// description of the first fault, or "".
std::string Fault(ZrCIncrementalDelaunay2D& d)
{
    const std::vector<t_hdelaunaytriangle*> triangles = vek::test::Triangles(d.GetFinalList());
    PointSet points;
    std::vector<double> coordinates;
    PointSet finitePoints; // a point at infinity belongs to no triangle and bounds no hull
    for (int i = 0; i < d.GetNumVertices(); ++i) {
        points.push_back({d.GetVertex(i).x, d.GetVertex(i).y});
        const bool finite = std::isfinite(points.back().first) && std::isfinite(points.back().second);
        coordinates.insert(coordinates.end(), {finite ? points.back().first : 0.0, finite ? points.back().second : 0.0});
        if (finite) finitePoints.push_back(points.back());
    }
    const std::vector<ExactInteger> grid = OnCommonGrid(coordinates);
    std::vector<int> hull;
    for (const int h : Hull(finitePoints))
        hull.push_back(static_cast<int>(std::find(points.begin(), points.end(), finitePoints[h]) - points.begin()));
    if (hull.size() < 3) return triangles.empty() ? "" : "triangles on points without area";

    if (const std::string links = vek::test::LinkFault(triangles); !links.empty()) return links;
    ExactInteger area;
    for (const t_hdelaunaytriangle* t : triangles) {
        const ExactInteger twice = TwiceArea(grid, t->Vertex[0], t->Vertex[1], t->Vertex[2]);
        if (twice.Sign() <= 0) return "a triangle that is not counter-clockwise";
        area = area + twice;
        for (int s = 0; s < 3; ++s) {
            const t_hdelaunaytriangle* n = t->Neighbour[s];
            if (n == nullptr) {
                // An open side lies on the hull: no point to its right.
                const Point& a = points[t->Vertex[s]];
                const Point& b = points[t->Vertex[(s + 1) % 3]];
                for (int h : hull) {
                    if (vek::test::ExactOrientation(a.first, a.second, b.first, b.second, points[h].first,
                                                    points[h].second) < 0)
                        return "an open side inside the hull";
                }
                continue;
            }
            int opposite = -1;
            for (int k = 0; k < 3; ++k) {
                const int v = n->Vertex[k];
                if (v != t->Vertex[0] && v != t->Vertex[1] && v != t->Vertex[2]) opposite = v;
            }
            if (opposite >= 0 && ExactInCircle(points[t->Vertex[0]], points[t->Vertex[1]], points[t->Vertex[2]],
                                               points[opposite]) > 0)
                return "a vertex strictly inside a neighbour's circle";
        }
    }
    ExactInteger hullArea;
    for (std::size_t i = 1; i + 1 < hull.size(); ++i) hullArea = hullArea + TwiceArea(grid, hull[0], hull[i], hull[i + 1]);
    if ((area - hullArea).Sign() != 0) return "the triangles do not add up to the hull";
    const std::set<int> corners = vek::test::Corners(triangles);
    std::set<Point> covered;
    for (int c : corners) covered.insert(points[c]);
    for (const Point& p : finitePoints) {
        if (covered.count(p) == 0) return "a distinct point left out";
    }
    return "";
}

std::string TriangulateExactly(const PointSet& points, bool addCorners, bool shuffleInsertion = false)
{
    ZrCIncrementalDelaunay2D d(static_cast<int>(points.size()) + 8);
    d.SetPredicates(vek::PlanarPredicates::Exact);
    for (const Point& p : points) d.AppendVertex(vek::test::P(static_cast<float>(p.first), static_cast<float>(p.second)));
    if (shuffleInsertion) {
        // The first three through Triangulate, the rest one by one.
        d.Triangulate(3, false, false);
        for (int i = 3; i < d.GetNumVertices(); ++i) d.InsertVertexIntoTriangulation(i);
        d.FinalizeTriangleList();
    } else {
        d.Triangulate(d.GetNumVertices(), true, addCorners);
    }
    return Fault(d);
}

void ExpectValid(const std::string& name, const PointSet& points)
{
    for (const bool addCorners : {true, false}) {
        SCOPED_TRACE(name + (addCorners ? ", from the box corners" : ", plain"));
        EXPECT_EQ(TriangulateExactly(points, addCorners), "");
    }
}

TEST(ExactTriangulation, TheSetsThatDefeatFloatArithmetic)
{
    // Whole-cell points thousands of cells apart, as on the rim of a large raster.
    ExpectValid("rim with corners", {{10345, 14331}, {8320, 19999}, {1255, 20000}, {7131, 19998}, {19480, 19999}});
    ExpectValid("rim", {{16182, 9807}, {7028, 20000}, {12140, 19999}, {18735, 19998}, {14949, 19998}});
    // A vertex the tolerant mode loses.
    ExpectValid("near pair", {{22043.3, 12360.0}, {22043.4, 12376.4}, {21122.4, 12783.3}, {996.8, 2827.3}});
    // Collinear first points.
    ExpectValid("collinear start", {{0, 0}, {0, 1}, {0, 2}, {0, 3}, {4, 1}});
    ExpectValid("collinear start, out of order", {{0, 0}, {0, 2}, {0, 1}, {4, 1}});
    ExpectValid("only collinear", {{0, 0}, {1, 1}, {3, 3}, {2, 2}});
    ExpectValid("duplicates first", {{5, 5}, {5, 5}, {5, 5}, {1, 2}, {5, 5}, {9, 1}, {1, 2}});
    // Circles far beyond the float range: their squared distances overflow
    // a float, and the search must still hand them to the exact test.
    ExpectValid("float extremes", {{-6.515823e35, -6.515823e35}, {-6.515823e35, -6.515823e35}, {-2.3048907e-38, -2.9774709e38}});
    // A point at infinity stays out of the box and of every triangle.
    ExpectValid("a point at infinity", {{-1.7130389e38, 2.5742365e-35}, {-1.5170831e23, 3.2482457e-38},
                                        {2.5578757e-35, -INFINITY}, {3.2482457e-38, -6.413116e18}});
}

TEST(ExactTriangulation, FamiliesAtEveryScale)
{
    std::mt19937 engine(2024);
    const auto between = [&](double lo, double hi) { return lo + (hi - lo) * (engine() / 4294967296.0); };
    for (const double span : {1e3, 1e4, 1e5}) {
        // Integer points on long lines, and near them.
        PointSet line;
        for (int i = 0; i < 60; ++i) line.push_back({std::round(between(0, span)), std::round(between(0, 3))});
        ExpectValid("points on a long line, span " + std::to_string(span), line);
    }
    for (const double scale : {1e-9, 1.0, 1e9}) {
        PointSet cloud;
        for (int i = 0; i < 300; ++i) cloud.push_back({scale * between(-1, 1), scale * between(-1, 1)});
        // Float-rounded, as the store holds them.
        for (Point& p : cloud) p = {float(p.first), float(p.second)};
        ExpectValid("uniform, scale " + std::to_string(scale), cloud);
    }
    PointSet lattice;
    for (int y = 0; y < 18; ++y) {
        for (int x = 0; x < 22; ++x) lattice.push_back({x, y});
    }
    ExpectValid("lattice by rows", lattice);
    PointSet shuffled = lattice;
    std::shuffle(shuffled.begin(), shuffled.end(), engine);
    ExpectValid("lattice shuffled", shuffled);
    PointSet far = lattice;
    for (Point& p : far) p = {float(500000.0 + 30.0 * p.first), float(4000000.0 - 30.0 * p.second)};
    ExpectValid("lattice in world coordinates", far);
    PointSet repeats = lattice;
    for (int i = 0; i < 80; ++i) repeats.push_back(lattice[engine() % lattice.size()]);
    ExpectValid("lattice with repeats", repeats);
    PointSet dense;
    for (int i = 0; i < 400; ++i) dense.push_back({float(1000.0 + between(0, 1)), float(1000.0 + between(0, 1))});
    ExpectValid("dense far out", dense);
    EXPECT_EQ(TriangulateExactly(shuffled, false, true), "") << "inserted one by one";
}

// The tolerant default stays as it was: the exact mode is per object.
TEST(ExactTriangulation, DefaultModeIsUntouched)
{
    ZrCIncrementalDelaunay2D tolerant(8), exact(8);
    exact.SetPredicates(vek::PlanarPredicates::Exact);
    EXPECT_EQ(tolerant.GetPredicates(), vek::PlanarPredicates::Tolerant);
    for (ZrCIncrementalDelaunay2D* d : {&tolerant, &exact}) {
        for (const Point& p : PointSet{{22043.3, 12360.0}, {22043.4, 12376.4}, {21122.4, 12783.3}, {996.8, 2827.3}})
            d->AppendVertex(vek::test::P(float(p.first), float(p.second)));
        d->Triangulate(d->GetNumVertices(), true, true);
    }
    // The tolerant mode loses vertex 1 in a triangle thinner than its tolerance.
    EXPECT_EQ(vek::test::Corners(vek::test::Triangles(tolerant.GetFinalList())).count(1), 0u);
    EXPECT_EQ(vek::test::Corners(vek::test::Triangles(exact.GetFinalList())).count(1), 1u);
}

} // namespace
