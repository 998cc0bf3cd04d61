#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "planar/hull_faces.h"
#include "support/exit_guard.h"
#include "support/sse_lanes.h"
#include "vekdll/planar/convex_hull_3d.h"

namespace {

using Grid = std::array<long long, 3>;
using namespace vek::test;

// The count of distinct grid points, opened for reading.
class OpenHull : public CHConvexHull3D {
public:
    using CHConvexHull3D::VertexCount;
};

Grid Corner(const tFaceStructure* f, int i)
{
    const long long* c = f->Vertex[i]->Coordinate;
    return {c[0], c[1], c[2]};
}

std::set<Grid> CornersOf(const CHConvexHull3D& hull)
{
    std::set<Grid> corners;
    for (const tFaceStructure* f : FacesOf(hull)) corners.insert({Corner(f, 0), Corner(f, 1), Corner(f, 2)});
    return corners;
}

// Six times the signed volume of a, b, c, d: negative when d sees the
// counter-clockwise triangle a, b, c from its front.
long long Orientation(const Grid& a, const Grid& b, const Grid& c, const Grid& d)
{
    const long long ux = b[0] - a[0], uy = b[1] - a[1], uz = b[2] - a[2];
    const long long vx = c[0] - a[0], vy = c[1] - a[1], vz = c[2] - a[2];
    const long long wx = d[0] - a[0], wy = d[1] - a[1], wz = d[2] - a[2];
    return -(wx * (uy * vz - uz * vy) + wy * (uz * vx - ux * vz) + wz * (ux * vy - uy * vx));
}

// A closed, consistently oriented surface: each directed corner pair of a
// face appears once, and its reverse once, in another face; every input
// point on or behind every face; corners taken from the input once each.
// Returns the corners.
std::set<Grid> ExpectClosedHull(const CHConvexHull3D& hull, const std::vector<Grid>& input)
{
    const std::vector<tFaceStructure*> faces = FacesOf(hull);
    EXPECT_EQ(static_cast<int>(faces.size()), hull.GetNumFaces());
    std::map<std::pair<Grid, Grid>, int> directed;
    for (const tFaceStructure* f : faces) {
        for (int i = 0; i < 3; ++i) {
            ++directed[{Corner(f, i), Corner(f, (i + 1) % 3)}];
            // Edge i joins corners i and i + 1.
            const tEdgeStructure* e = f->Edge[i];
            EXPECT_TRUE((e->EndPoint[0] == f->Vertex[i] && e->EndPoint[1] == f->Vertex[(i + 1) % 3]) ||
                        (e->EndPoint[1] == f->Vertex[i] && e->EndPoint[0] == f->Vertex[(i + 1) % 3]));
        }
        for (const Grid& p : input) EXPECT_GE(Orientation(Corner(f, 0), Corner(f, 1), Corner(f, 2), p), 0);
    }
    for (const auto& [edge, count] : directed) {
        EXPECT_EQ(count, 1);
        EXPECT_EQ(directed.count({edge.second, edge.first}), 1u);
    }
    const std::set<Grid> corners = CornersOf(hull);
    EXPECT_EQ(faces.size(), 2 * corners.size() - 4);  // Euler, for a closed surface of triangles
    for (const Grid& c : corners) EXPECT_EQ(std::count(input.begin(), input.end(), c), 1);
    return corners;
}

TEST(CHConvexHull3D, InputIsRoundedOntoTheGridOnceAndReadBackInItsUnits)
{
    OpenHull hull;
    hull.AppendVertex3D(1.0f, 2.0f, 3.0f, 10.0f);
    hull.AppendVertex3D(1.0f, 2.0f, 3.0f, 10.0f);
    hull.AppendVertex3D(1.04f, 2.0f, 2.96f, 10.0f); // 10.4 + 0.5 and 29.6 + 0.5 truncate to 10 and 30 as well
    EXPECT_EQ(hull.VertexCount, 1);
    hull.AppendVertex3D(0.0f, 0.0f, 0.0f, 10.0f);
    hull.AppendVertex3D(0.15f, 0.0f, 0.0f, 10.0f);   // 1.5 + 0.5: grid 2
    hull.AppendVertex3D(0.0f, -0.15f, 0.0f, 10.0f);  // -1.5 + 0.5: grid -1
    hull.AppendVertex3D(0.0f, 0.0f, -0.26f, 10.0f);  // -2.6 + 0.5: grid -2
    hull.CalcConvexHull();
    EXPECT_EQ(ExpectClosedHull(hull, {{10, 20, 30}, {0, 0, 0}, {2, 0, 0}, {0, -1, 0}, {0, 0, -2}}).size(), 5u);
    // Corners come back divided by the scale given in each lane; a corner
    // that isn't there reads as the origin.
    SSEPoint scale = Sse(10.0f, 10.0f, 10.0f, 1.0f);
    std::set<Lanes4> read;
    for (tFaceStructure* f : FacesOf(hull)) {
        for (int i = 0; i < 3; ++i) read.insert(Lanes(hull.GetVertexFromFace3D(f, i, scale)));
    }
    EXPECT_EQ(read, (std::set<Lanes4>{{1, 2, 3, 0}, {0, 0, 0, 0}, {0.2f, 0, 0, 0}, {0, -0.1f, 0, 0}, {0, 0, -0.2f, 0}}));
    EXPECT_EQ(std::pair(Lanes(hull.GetVertexFromFace(hull.GetFaces(), 3)), Lanes(hull.GetVertexFromFace(nullptr, 0))), std::pair(Lanes4{}, Lanes4{}));

    // Planar points on a grid of a tenth, lifted: index -1 numbers a vertex
    // by the count so far, and a point already on the grid keeps the vertex
    // that was there, with its index and mark. Corners read back in units of
    // the input, the lifted height included.
    OpenHull lifted;
    for (auto [x, y, index, top] : {std::tuple{0.0f, 0.0f, -1, false}, {10.0f, 0.0f, 7, true}, {0.0f, 10.0f, -1, false},
                                    {10.0f, 10.0f, -1, false}, {1.0f, 2.0f, -1, true}, {1.04f, 2.0f, 99, false}}) {
        lifted.AppendVertex2D(x, y, index, top);
    }
    EXPECT_EQ(lifted.VertexCount, 5);
    lifted.CalcConvexHull();
    std::map<Grid, std::tuple<int, bool, Lanes4>> marks;
    for (tFaceStructure* f : FacesOf(lifted)) {
        for (int i = 0; i < 3; ++i) marks[Corner(f, i)] = {f->Vertex[i]->Index, f->Vertex[i]->IsTop, Lanes(lifted.GetVertexFromFace(f, i))};
    }
    EXPECT_EQ(marks, (std::map<Grid, std::tuple<int, bool, Lanes4>>{
                         {{0, 0, 0}, {0, false, {0, 0, 0, 0}}}, {{100, 0, 10000}, {7, true, {10, 0, 1000, 0}}},
                         {{0, 100, 10000}, {2, false, {0, 10, 1000, 0}}}, {{100, 100, 20000}, {3, false, {10, 10, 2000, 0}}},
                         {{10, 20, 500}, {4, true, {1, 2, 50, 0}}}}));
}

TEST(CHConvexHull3D, RandomSpatialAndLiftedPointSetsAreEnclosedByTheirCorners)
{
    // Spatial points at distinct grid places, and planar ones lifted onto
    // the paraboloid of the tenth-unit grid, where every point is a corner.
    std::mt19937 random(7031);
    const auto next = [&random](int range) { return static_cast<long long>(random() % range); };
    for (int round = 0; round < 16; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const int count = 5 + static_cast<int>(random() % 30);
        std::vector<Grid> spatial;
        std::vector<Grid> lifted;
        CHConvexHull3D spatialHull;
        CHConvexHull3D liftedHull;
        while (static_cast<int>(spatial.size()) < count) {
            const Grid p{next(1000), next(1000), next(1000)};
            if (std::count(spatial.begin(), spatial.end(), p) != 0) continue;
            spatial.push_back(p);
            spatialHull.AppendVertex3D(float(p[0]), float(p[1]), float(p[2]), 1.0f);
        }
        while (static_cast<int>(lifted.size()) < count) {
            const long long x = next(200), y = next(200);
            const Grid p{10 * x, 10 * y, 100 * (x * x + y * y)};
            if (std::count(lifted.begin(), lifted.end(), p) != 0) continue;
            lifted.push_back(p);
            liftedHull.AppendVertex2D(static_cast<float>(x), static_cast<float>(y), -1, false);
        }
        spatialHull.CalcConvexHull();
        ExpectClosedHull(spatialHull, spatial);
        liftedHull.CalcConvexHull();
        EXPECT_EQ(ExpectClosedHull(liftedHull, lifted).size(), lifted.size());
    }

    // A 5 x 5 x 5 block: most points lie inside or in the plane of a face.
    // The tests are exact, so a point in a face's plane but outside the face
    // extends it and may stay as a corner.
    std::vector<Grid> block;
    CHConvexHull3D hull;
    for (long long i = 0; i < 125; ++i) {
        block.push_back({i / 25, (i / 5 % 5) * 3 % 5, i % 5});
        hull.AppendVertex3D(float(block[i][0]), float(block[i][1]), float(block[i][2]), 1.0f);
    }
    hull.CalcConvexHull();
    ExpectClosedHull(hull, block);
}

TEST(CHConvexHull3D, FarCoordinatesStayExact)
{
    // Products of three differences near 10^15 need 150 bits; the hull
    // must still see the point beyond the slanted face and drop the one inside.
    const float far = 1e15f;
    const float tenth = 1e14f;
    const std::array<float, 3> points[] = {{0, 0, 0},           {far, 0, 0}, {0, far, 0}, {0, 0, far},
                                           {tenth, tenth, tenth}, {4 * tenth, 4 * tenth, 3 * tenth}};
    const auto grid = [](float v) { return static_cast<long long>(static_cast<double>(v) + 0.5); };
    CHConvexHull3D hull;
    std::set<Grid> expected;
    for (const auto& p : points) {
        hull.AppendVertex3D(p[0], p[1], p[2], 1.0f);
        if (p[0] != tenth) expected.insert({grid(p[0]), grid(p[1]), grid(p[2])});
    }
    hull.CalcConvexHull();
    EXPECT_EQ(hull.GetNumFaces(), 6);
    EXPECT_EQ(CornersOf(hull), expected);
}

TEST(CHConvexHull3D, FlatOrWildInputEndsOrReachesTheExitHook)
{
    using Points = std::vector<std::array<float, 3>>;
    // The code the construction exits with, or -1 if it comes to an end.
    const auto exitCode = [](const Points& points, bool lifted) {
        CHConvexHull3D hull;
        for (const auto& p : points) lifted ? hull.AppendVertex2D(p[0], p[1], -1, false) : hull.AppendVertex3D(p[0], p[1], p[2], 1.0f);
        const std::optional<int> code = ExitCodeOf([&] { hull.CalcConvexHull(); });
        EXPECT_TRUE(code || static_cast<int>(FacesOf(hull).size()) == hull.GetNumFaces());
        return code.value_or(-1);
    };
    EXPECT_EQ(exitCode({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {2, 1, 0}}, false), 0);  // coplanar
    EXPECT_EQ(exitCode({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {5, 5, 5}}, false), 0);              // collinear
    EXPECT_EQ(exitCode({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, false), 0);
    EXPECT_EQ(exitCode({{3, 3, 3}, {3, 3, 3}}, false), 0);
    EXPECT_EQ(exitCode({}, false), 0);
    EXPECT_EQ(exitCode({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, false), -1);
    // Four corners of a square lie on one circle, so their lifts are coplanar.
    EXPECT_EQ(exitCode({{0, 0, 0}, {0, 5, 0}, {5, 0, 0}, {5, 5, 0}}, true), 0);

    // Infinities, not-a-numbers and coordinates beyond the 64-bit grid all
    // land somewhere on it; the construction must come to an end there, or
    // to the exit hook.
    const float wild[] = {1e30f, -1e30f, std::nanf(""), 1e19f, -1e19f, 3e9f, 1e6f, 0.0f, 1.0f, -7e15f};
    std::mt19937 random(4242);
    const auto pick = [&random, &wild] {
        if (random() % 3 == 0) return wild[random() % 10];
        return static_cast<float>(static_cast<int>(random() % 2000000) - 1000000) * (random() % 2 ? 1e6f : 1.0f);
    };
    for (int round = 0; round < 100; ++round) {
        Points points(4 + random() % 20);
        for (auto& p : points) p = {pick(), pick(), pick()};
        exitCode(points, false);
        exitCode(points, true);
    }
}

} // namespace
