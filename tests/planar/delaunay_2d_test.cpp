#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "planar/hull_faces.h"
#include "support/exit_guard.h"
#include "support/polygon_points.h"
#include "support/recorded_hooks.h"
#include "support/sse_lanes.h"
#include "support/unowned_alias.h"
#include "vekdll/mesh/triangulation.h"
#include "vekdll/planar/delaunay_2d.h"
#include "vekdll/surface/incremental_delaunay.h"

using namespace vek::test;

namespace {

class OpenDelaunay : public CH2DDelaunay {
public:
    using CH2DDelaunay::BottomBorder;
    using CH2DDelaunay::NormZ;
    using CH2DDelaunay::NumEdges;
    using CH2DDelaunay::TopBorder;
    using CH2DDelaunay::Vertices;
};

// A point on the tenth-unit grid, in grid units.
struct GridPoint {
    long long x, y;
    auto operator<=>(const GridPoint&) const = default;
};
using Triple = std::array<int, 3>;

GridPoint At(const tFaceStructure* f, int i)
{
    return {f->Vertex[i]->Coordinate[0], f->Vertex[i]->Coordinate[1]};
}

Triple Sorted(int a, int b, int c)
{
    Triple t{a, b, c};
    std::sort(t.begin(), t.end());
    return t;
}

std::set<Triple> IndexTriples(const CH2DDelaunay& d)
{
    std::set<Triple> triples;
    for (const tFaceStructure* f : FacesOf(d)) triples.insert(Sorted(f->Vertex[0]->Index, f->Vertex[1]->Index, f->Vertex[2]->Index));
    return triples;
}

// Twice the signed area of a, b, c: positive counter-clockwise.
long long Cross(const GridPoint& a, const GridPoint& b, const GridPoint& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Above 0 when p lies inside the circle through the counter-clockwise a, b,
// c; exact in 64 bits for grid coordinates below 10000.
long long InCircle(const GridPoint& a, const GridPoint& b, const GridPoint& c, const GridPoint& p)
{
    const long long ax = a.x - p.x, ay = a.y - p.y, bx = b.x - p.x, by = b.y - p.y, cx = c.x - p.x, cy = c.y - p.y;
    return (ax * ax + ay * ay) * (bx * cy - by * cx) - (bx * bx + by * by) * (ax * cy - ay * cx) +
           (cx * cx + cy * cy) * (ax * by - ay * bx);
}

// Points of the plane given in tenths, for both triangulations.
struct PointSet {
    std::vector<GridPoint> grid;
    float X(int i) const { return static_cast<float>(grid[i].x) / 10.0f; }
    float Y(int i) const { return static_cast<float>(grid[i].y) / 10.0f; }
    int Size() const { return static_cast<int>(grid.size()); }
};

// Every triangle with no point strictly inside its circle; for points in
// general position, the Delaunay triangulation.
std::set<Triple> EmptyCircleTriangles(const PointSet& s)
{
    std::set<Triple> triples;
    for (int i = 0; i < s.Size(); ++i) {
        for (int j = i + 1; j < s.Size(); ++j) {
            for (int k = j + 1; k < s.Size(); ++k) {
                const long long turn = Cross(s.grid[i], s.grid[j], s.grid[k]);
                if (turn == 0) continue;
                const GridPoint &a = s.grid[i], &b = turn > 0 ? s.grid[j] : s.grid[k], &c = turn > 0 ? s.grid[k] : s.grid[j];
                bool empty = true;
                for (const GridPoint& p : s.grid) empty = empty && InCircle(a, b, c, p) <= 0;
                if (empty) triples.insert({i, j, k});
            }
        }
    }
    return triples;
}

// The faces as triangles of the plane: clockwise seen from above, nothing
// strictly inside a circle; `cocircular` counts the other points on one.
void ExpectEmptyCircles(const CH2DDelaunay& d, const PointSet& s, int& cocircular)
{
    cocircular = 0;
    for (const tFaceStructure* f : FacesOf(d)) {
        const GridPoint a = At(f, 0), b = At(f, 2), c = At(f, 1);  // reversed: counter-clockwise
        ASSERT_GT(Cross(a, b, c), 0);
        for (const GridPoint& p : s.grid) {
            const long long inside = InCircle(a, b, c, p);
            EXPECT_LE(inside, 0) << "a point inside a circumcircle";
            cocircular += inside == 0 && p != a && p != b && p != c;
        }
    }
}

void Triangulate(CH2DDelaunay& d, const PointSet& s)
{
    for (int i = 0; i < s.Size(); ++i) d.AppendVertex(s.X(i), s.Y(i), i, false);
    d.CalcDelaunayTriangulation();
}

// An undirected side, its ends in order.
template <class T>
std::pair<T, T> Side(const T& a, const T& b)
{
    return a < b ? std::pair(a, b) : std::pair(b, a);
}

TEST(CH2DDelaunay, FivePointsLeaveTheirDelaunayTrianglesAndTheUpperHullsEdges)
{
    const PointSet five{{{0, 0}, {100, 10}, {110, 90}, {10, 100}, {50, 40}}};
    RecordedHooks hooks;
    OpenDelaunay d;
    Triangulate(d, five);
    // Only lower faces stay, each a Delaunay triangle, clockwise from above.
    EXPECT_EQ(IndexTriples(d), EmptyCircleTriangles(five));
    EXPECT_EQ(IndexTriples(d).size(), 4u);
    for (tFaceStructure* f : FacesOf(d)) EXPECT_TRUE(f->Lower && d.NormZ(f) < 0);
    // The edge ring still holds every edge of the hull: 3 * 5 - 6.
    EXPECT_EQ(std::tuple(d.GetNumFaces(), d.NumEdges), std::tuple(4, 9));
    ASSERT_EQ(hooks.messages.size(), 1u);
    EXPECT_TRUE(std::regex_match(hooks.messages[0], std::regex("Time for 2D-Delaunay ms: [0-9]+\n Vertices: 5")))
        << hooks.messages[0];
    // It runs once.
    tFaceStructure* entry = d.GetFaces();
    d.CalcDelaunayTriangulation();
    EXPECT_EQ(std::tuple(hooks.messages.size(), d.GetFaces(), FacesOf(d).size()), std::tuple(1u, entry, 4u));
}

TEST(CH2DDelaunay, RandomPointsGiveTheTrianglesOfTheIncrementalTriangulation)
{
    std::mt19937 random(5501);
    RecordedHooks hooks;
    for (const int count : {6, 40, 120, 120}) {
        SCOPED_TRACE(std::to_string(count) + " points");
        PointSet s;
        std::set<GridPoint> seen;
        while (s.Size() < count) {
            const GridPoint p{static_cast<long long>(random() % 5000), static_cast<long long>(random() % 5000)};
            if (seen.insert(p).second) s.grid.push_back(p);
        }
        // General position: no three on a line (and, checked below, no
        // four on the circle of a triangle).
        for (int i = 0; i < count; ++i) {
            for (int j = i + 1; j < count; ++j) {
                for (int k = j + 1; k < count; ++k) ASSERT_NE(Cross(s.grid[i], s.grid[j], s.grid[k]), 0);
            }
        }
        CH2DDelaunay lifted;
        Triangulate(lifted, s);
        int cocircular = 0;
        ExpectEmptyCircles(lifted, s, cocircular);
        ASSERT_EQ(cocircular, 0) << "not in general position: pick another seed";

        ZrCIncrementalDelaunay2D incremental(count);
        for (int i = 0; i < count; ++i) incremental.AppendVertex(Sse(s.X(i), s.Y(i), 0.0f));
        incremental.Triangulate(count, true, false);
        std::set<Triple> expected;
        for (POSITION pos = incremental.GetFinalList().GetHeadPosition(); pos != nullptr;) {
            const t_hdelaunaytriangle* t = incremental.GetFinalList().GetNext(pos);
            expected.insert(Sorted(t->Vertex[0], t->Vertex[1], t->Vertex[2]));
        }
        EXPECT_EQ(IndexTriples(lifted), expected);
        if (count < 10) {
            EXPECT_EQ(IndexTriples(lifted), EmptyCircleTriangles(s));
        }
    }
}

TEST(CH2DDelaunay, GridPointsOnCommonCirclesGiveATriangulationOfTheirSquare)
{
    // A shuffled 7 x 7 grid: each cell's corners lie on one circle and their
    // lifts in one plane, so each cell may be cut either way, but 2 * 36
    // triangles must cover the square once, with no point inside a circle.
    const int side = 7;
    PointSet s;
    for (int i = 0; i < side * side; ++i) s.grid.push_back({30 * (i % side) + 20, 30 * (i / side) + 10});
    std::shuffle(s.grid.begin(), s.grid.end(), std::mt19937(77));
    RecordedHooks hooks;
    CH2DDelaunay d;
    Triangulate(d, s);
    int cocircular = 0;
    ExpectEmptyCircles(d, s, cocircular);
    EXPECT_GT(cocircular, 0);
    const std::vector<tFaceStructure*> faces = FacesOf(d);
    EXPECT_EQ(faces.size(), 2u * (side - 1) * (side - 1));
    long long area = 0;
    std::map<std::pair<GridPoint, GridPoint>, int> sides;
    for (const tFaceStructure* f : faces) {
        area -= Cross(At(f, 0), At(f, 1), At(f, 2));
        for (int i = 0; i < 3; ++i) ++sides[Side(At(f, i), At(f, (i + 1) % 3))];
    }
    EXPECT_EQ(area, 2LL * (30 * (side - 1)) * (30 * (side - 1)));
    int open = 0;
    for (const auto& [segment, uses] : sides) {
        EXPECT_LE(uses, 2);
        open += uses == 1;
    }
    EXPECT_EQ(open, 4 * (side - 1));
}

TEST(CH2DDelaunay, PointSetsWithoutASpatialHullReachTheExitHook)
{
    using Points = std::vector<std::pair<float, float>>;
    RecordedHooks hooks;
    const auto exitCode = [](const Points& points) {
        CH2DDelaunay d;
        for (const auto& [x, y] : points) d.AppendVertex(x, y, -1, false);
        return ExitCodeOf([&d] { d.CalcDelaunayTriangulation(); }).value_or(-1);
    };
    EXPECT_EQ(exitCode({{0, 0}, {5, 0}, {0, 5}, {5, 5}}), 0);            // one circle
    EXPECT_EQ(exitCode({{13, 14}, {7, 14}, {15, 10}, {10, 15}, {14, 7}}), 0);  // one circle
    EXPECT_EQ(exitCode({{0, 0}, {1, 1}, {2, 2}, {7, 7}, {3, 3}}), 0);    // one line
    EXPECT_EQ(exitCode({{0, 0}, {4, 0}, {0, 3}}), 0);                    // three points
    EXPECT_EQ(exitCode({{0, 0}, {4, 0}, {0, 3}, {4.01f, 0}, {0, 3.04f}}), 0);  // three on the grid
    EXPECT_EQ(exitCode({}), 0);
    EXPECT_TRUE(hooks.messages.empty());
    EXPECT_EQ(exitCode({{0, 0}, {4, 0}, {0, 3}, {4, 3.1f}}), -1);
    // Rounding onto the grid adds half a tenth and truncates towards zero,
    // so negative coordinates move up by a tenth: (-3, 4) is not on the
    // circle of (3, 4) any more.
    EXPECT_EQ(exitCode({{3, 4}, {-3, 4}, {5, 0}, {0, 5}}), -1);
}

// A circle of `count` points in space, counter-clockwise seen from above.
CSSE3dPolygon Circle(int count, double radius, float height)
{
    std::vector<Xyz> points = Polar(count, count, [radius](int, double) { return radius; });
    for (Xyz& p : points) p.z = height;
    return PolygonOf(points);
}

TEST(CH2DDelaunay, LoftOfTwoCirclesIsAClosedBandWhoseTrianglesJoinTheLines)
{
    const int bottomCount = 24, topCount = 16;
    CSSE3dPolygon bottom = Circle(bottomCount, 20.0, 0.0f), top = Circle(topCount, 12.0, 15.0f);
    RecordedHooks hooks;
    CH2DDelaunay d;
    d.CreateTriangulationFromTwoBorderPolygons(&bottom, &top, false);

    // Each corner is a point of its line, times 10 and truncated; a corner
    // is named (line, point) by its Index modulo the line's count.
    const auto grid = [](float v) { return static_cast<long long>(static_cast<double>(v) * 10.0); };
    using Name = std::pair<bool, int>;
    const std::vector<tFaceStructure*> faces = FacesOf(d);
    ASSERT_EQ(faces.size(), static_cast<std::size_t>(bottomCount + topCount));
    EXPECT_EQ(d.GetNumFaces(), bottomCount + topCount);
    std::map<std::pair<Name, Name>, int> sides;
    for (const tFaceStructure* f : faces) {
        int onBottom = 0;
        Name names[3];
        for (int i = 0; i < 3; ++i) {
            const tVertexStructure* v = f->Vertex[i];
            const CSSE3dPolygon& line = v->IsTop ? bottom : top;
            names[i] = {v->IsTop, v->Index % line.GetNumPoints()};
            const Xyz p = PointOf(line, names[i].second);
            EXPECT_EQ((std::array{v->Coordinate[0], v->Coordinate[1], v->Coordinate[2]}), (std::array{grid(p.x), grid(p.y), grid(p.z)}));
            onBottom += v->IsTop;
        }
        EXPECT_TRUE(onBottom == 1 || onBottom == 2) << "a triangle on one line only";
        for (int i = 0; i < 3; ++i) ++sides[Side(names[i], names[(i + 1) % 3])];
    }
    // Closed: every segment of each line, the closing one included, is the
    // side of one triangle, and every side between the lines of two.
    int segments = 0;
    for (const auto& [side, uses] : sides) {
        const auto& [a, b] = side;
        if (a.first != b.first) {
            EXPECT_EQ(uses, 2);
            continue;
        }
        const int count = a.first ? bottomCount : topCount;
        EXPECT_TRUE((b.second - a.second + count) % count == 1 || (a.second - b.second + count) % count == 1);
        EXPECT_EQ(uses, 1);
        ++segments;
    }
    EXPECT_EQ(segments, bottomCount + topCount);
}

TEST(CH2DDelaunay, BandTestDropsFacesBeyondTheLimitLinesButNeverTheEntry)
{
    // (10, 1) inside the triangle (0, 0), (20, 0), (10, 10): three faces
    // around it. With limit lines at 0 and 5 units (0 and 50 on the grid)
    // and no tolerance, the two faces that reach (10, 10) have an edge
    // place above 50; the flat one stays.
    const PointSet four{{{0, 0}, {100, 10}, {200, 0}, {100, 100}}};
    const auto limitLine = [](CSSE2dPolygon& line, float y) {
        line.Create(6);
        for (int i = 0; i < 6; ++i) line.SetPoint(i, 50.0f * i, y);
    };
    RecordedHooks hooks;
    OpenDelaunay d;
    Triangulate(d, four);
    ASSERT_EQ(FacesOf(d).size(), 3u);
    tFaceStructure* entry = d.GetFaces();
    limitLine(d.BottomBorder, 0.0f);
    limitLine(d.TopBorder, 50.0f);
    d.RemoveFacesOutOfBorderLines(0.0f);
    std::set<Triple> expected{{0, 1, 2}};
    expected.insert(Sorted(entry->Vertex[0]->Index, entry->Vertex[1]->Index, entry->Vertex[2]->Index));
    EXPECT_EQ(IndexTriples(d), expected);
    EXPECT_EQ(std::tuple(d.GetFaces(), d.GetNumFaces()), std::tuple(entry, 3));
    // Copies share the rings and the limit lines.
    UnownedAlias<OpenDelaunay> alias;
    *alias = d;
    alias->TopBorder.SetPoint(0, 1.0f, 2.0f);
    EXPECT_EQ(std::tuple(alias->GetFaces(), PointsOf(d.TopBorder)[0]), std::tuple(entry, Xyz{1, 2}));

    // An upper limit below everything drops every face but the ring's entry.
    OpenDelaunay all;
    Triangulate(all, four);
    limitLine(all.TopBorder, -1000.0f);
    all.RemoveFacesOutOfBorderLines(0.0f);
    EXPECT_EQ(FacesOf(all).size(), 1u);
    // A limit line of fewer than two points limits nothing.
    OpenDelaunay unlimited;
    Triangulate(unlimited, four);
    unlimited.TopBorder.Create(1);
    unlimited.TopBorder.SetPoint(0, 0.0f, -1000.0f);
    unlimited.RemoveFacesOutOfBorderLines(0.0f);
    EXPECT_EQ(FacesOf(unlimited).size(), 3u);
}

// A mesh of the given triangles, with S and T, and the flags given.
CHTriangulation Mesh(const std::vector<std::array<Xyz, 3>>& triangles, const std::vector<int>& flags)
{
    CHTriangulation mesh(static_cast<int>(triangles.size()), 1.0f, 1.0f, 1.0f);
    for (int i = 0; i < static_cast<int>(triangles.size()); ++i) {
        t_htriangle* t = mesh.GetTriangle(i);
        SSEPoint* corners[3] = {t->P0, t->P1, t->P2};
        for (int c = 0; c < 3; ++c) *corners[c] = Sse(triangles[i][c].x, triangles[i][c].y, triangles[i][c].z);
    }
    mesh.CalcSTV();
    for (int i = 0; i < static_cast<int>(flags.size()); ++i) mesh.GetTriangle(i)->Flag = flags[i];
    return mesh;
}

TEST(CH2DDelaunay, MeshBorderCornersBecomeVerticesLimitLinesAndLoftedCorners)
{
    // Border triangle 0 has corners at x 0, 5 and 1; triangle 1 is a border
    // triangle without area; triangle 2 isn't on the border. The centre's
    // x is 39 / 9 = 4.33.
    CHTriangulation lower = Mesh({{{{0, 1, 2}, {5, 3, 5}, {1, 6, 7}}},
                                  {{{9, 0, 0}, {9, 1, 1}, {9, 2, 2}}},
                                  {{{2, 0, 0}, {2, 1, 0}, {2, 0, 1}}}},
                                 {13, 13, -1});
    OpenDelaunay d;
    // x up to the centre: corners 0 and 2 of triangle 0, as top vertices
    // with Index 3 * 0 + corner, and (y, z) * 10 as the lower limit.
    d.GetBorderPointsBottom(&lower, true);
    EXPECT_EQ(PointsOf(d.BottomBorder), (std::vector<Xyz>{{10, 20}, {60, 70}}));
    // x beyond it: corner 1. The upper limit is read from the ring's entry,
    // which holds the first call's vertex.
    d.GetBorderPointsTop(&lower, false);
    EXPECT_EQ(PointsOf(d.TopBorder), (std::vector<Xyz>{{10, 20}}));
    std::vector<std::tuple<long long, long long, int, bool>> vertices;
    const tVertexStructure* v = d.Vertices;
    do {
        vertices.push_back({v->Coordinate[0], v->Coordinate[1], v->Index, v->IsTop});
        v = v->Next;
    } while (v != d.Vertices);
    EXPECT_EQ(vertices, (std::vector<std::tuple<long long, long long, int, bool>>{
                            {10, 20, 0, true}, {60, 70, 2, true}, {30, 50, 1, false}}));

    // Lofted: top vertices from the first mesh, the others from the second,
    // corner Index % 3 of triangle Index / 3, times 10, truncated.
    CHTriangulation upper = Mesh({{{{-1, -1, -1}, {0.26f, -0.26f, 3}, {-1, -1, -1}}}}, {13});
    d.LoftWith3DTriangulation(&lower, &upper);
    std::vector<std::array<long long, 3>> lofted;
    do {
        lofted.push_back({v->Coordinate[0], v->Coordinate[1], v->Coordinate[2]});
        v = v->Next;
    } while (v != d.Vertices);
    EXPECT_EQ(lofted, (std::vector<std::array<long long, 3>>{{0, 10, 20}, {10, 60, 70}, {2, -2, 30}}));

    // No border triangle, nothing added.
    CHTriangulation inner = Mesh({{{{0, 1, 2}, {5, 3, 5}, {1, 6, 7}}}}, {-1});
    OpenDelaunay none;
    none.GetBorderPointsBottom(&inner, true);
    EXPECT_EQ(std::tuple(none.BottomBorder.GetNumPoints(), none.Vertices), std::tuple(0, nullptr));
}

} // namespace
