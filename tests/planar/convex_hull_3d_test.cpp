#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "vekdll/planar/convex_hull_3d.h"
#include "vekdll/platform/user_hooks.h"

namespace {

// The protected counters and self-tests, opened for reading.
class OpenHull : public CHConvexHull3D {
public:
    using CHConvexHull3D::Check;
    using CHConvexHull3D::Checks;
    using CHConvexHull3D::NumEdges;
    using CHConvexHull3D::NumVertices;
    using CHConvexHull3D::VertexCount;
};

struct ExitCalled {
    int code;
};

// Replaces the process exit by an exception for the life of the object.
class ExitThrows {
public:
    ExitThrows() : previous_(vek::SetExitHandler([](int code) { throw ExitCalled{code}; })) {}
    ~ExitThrows() { vek::SetExitHandler(previous_); }

private:
    vek::ExitHandler previous_;
};

using Grid = std::array<long long, 3>;

std::vector<tFaceStructure*> FacesOf(const CHConvexHull3D& hull)
{
    std::vector<tFaceStructure*> faces;
    tFaceStructure* f = hull.GetFaces();
    if (f == nullptr) return faces;
    do {
        faces.push_back(f);
        f = f->Next;
    } while (f != hull.GetFaces() && faces.size() < 100000);
    return faces;
}

Grid Corner(const tFaceStructure* f, int i)
{
    const long long* c = f->Vertex[i]->Coordinate;
    return {c[0], c[1], c[2]};
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
// face appears once, and its reverse once, in another face; and every input
// point on or behind every face. Returns the corners the faces use.
std::set<Grid> ExpectClosedHull(const CHConvexHull3D& hull, const std::vector<Grid>& input)
{
    const std::vector<tFaceStructure*> faces = FacesOf(hull);
    EXPECT_EQ(static_cast<int>(faces.size()), hull.GetNumFaces());
    std::map<std::pair<Grid, Grid>, int> directed;
    std::set<Grid> corners;
    for (const tFaceStructure* f : faces) {
        for (int i = 0; i < 3; ++i) {
            corners.insert(Corner(f, i));
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
    // A closed surface of triangles: F = 2V - 4.
    EXPECT_EQ(faces.size(), 2 * corners.size() - 4);
    for (const Grid& c : corners) EXPECT_EQ(std::count(input.begin(), input.end(), c), 1);
    return corners;
}

TEST(CHConvexHull3D, TetrahedronHasFourFacesSixEdgesFourVertices)
{
    OpenHull hull;
    hull.AppendVertex3D(0, 0, 0, 1.0f);
    hull.AppendVertex3D(10, 0, 0, 1.0f);
    hull.AppendVertex3D(0, 10, 0, 1.0f);
    hull.AppendVertex3D(0, 0, 10, 1.0f);
    hull.CalcConvexHull();
    EXPECT_EQ(hull.GetNumFaces(), 4);
    EXPECT_EQ(hull.NumEdges, 6);
    EXPECT_EQ(hull.NumVertices, 4);
    EXPECT_EQ(hull.VertexCount, 4);
    ExpectClosedHull(hull, {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0, 0, 10}});
}

TEST(CHConvexHull3D, InputIsRoundedOntoTheGridWithoutDuplicates)
{
    OpenHull hull;
    hull.AppendVertex3D(1.0f, 2.0f, 3.0f, 10.0f);
    hull.AppendVertex3D(1.0f, 2.0f, 3.0f, 10.0f);
    hull.AppendVertex3D(1.04f, 2.0f, 3.0f, 10.0f);  // 10.4 + 0.5 truncates to 10 as well
    EXPECT_EQ(hull.VertexCount, 1);
    hull.AppendVertex3D(0.0f, 0.0f, 0.0f, 10.0f);
    hull.AppendVertex3D(0.15f, 0.0f, 0.0f, 10.0f);  // 1.5 + 0.5: grid 2
    hull.AppendVertex3D(0.0f, -0.15f, 0.0f, 10.0f);  // -1.5 + 0.5: grid -1
    hull.AppendVertex3D(0.0f, 0.0f, -0.26f, 10.0f);  // -2.6 + 0.5: grid -2
    EXPECT_EQ(hull.VertexCount, 5);
    hull.CalcConvexHull();
    const std::set<Grid> corners =
        ExpectClosedHull(hull, {{10, 20, 30}, {0, 0, 0}, {2, 0, 0}, {0, -1, 0}, {0, 0, -2}});
    EXPECT_EQ(corners.size(), 5u);

    // Corners come back divided by the scale given in each lane.
    tFaceStructure* f = hull.GetFaces();
    SSEPoint scale;
    scale.sse = _mm_setr_ps(10.0f, 10.0f, 10.0f, 1.0f);
    for (int i = 0; i < 3; ++i) {
        const SSEPoint p = hull.GetVertexFromFace3D(f, i, scale);
        const long long* c = f->Vertex[i]->Coordinate;
        EXPECT_EQ(p.x, static_cast<float>(c[0]) / 10.0f);
        EXPECT_EQ(p.y, static_cast<float>(c[1]) / 10.0f);
        EXPECT_EQ(p.z, static_cast<float>(c[2]) / 10.0f);
        EXPECT_EQ(p.w, 0.0f);
    }
    // A corner that isn't there reads as the origin.
    EXPECT_EQ(_mm_movemask_ps(_mm_cmpeq_ps(hull.GetVertexFromFace(f, 3).sse, _mm_setzero_ps())), 0xF);
    EXPECT_EQ(_mm_movemask_ps(_mm_cmpeq_ps(hull.GetVertexFromFace(nullptr, 0).sse, _mm_setzero_ps())), 0xF);
}

TEST(CHConvexHull3D, RandomPointSetsMatchABruteForceHull)
{
    std::mt19937 random(7031);
    for (int round = 0; round < 16; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const int count = 4 + static_cast<int>(random() % 27);
        std::vector<Grid> input;
        CHConvexHull3D hull;
        while (static_cast<int>(input.size()) < count) {
            const auto next = [&random] { return static_cast<long long>(random() % 1000); };
            const Grid p{next(), next(), next()};
            if (std::count(input.begin(), input.end(), p) != 0) continue;
            input.push_back(p);
            hull.AppendVertex3D(static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2]), 1.0f);
        }
        hull.CalcConvexHull();
        const std::set<Grid> corners = ExpectClosedHull(hull, input);

        // By brute force: three points whose plane has every other point
        // strictly on one side are corners of the hull.
        std::set<Grid> extreme;
        for (int i = 0; i < count; ++i) {
            for (int j = i + 1; j < count; ++j) {
                for (int k = j + 1; k < count; ++k) {
                    int above = 0, below = 0;
                    for (int l = 0; l < count; ++l) {
                        const long long o = Orientation(input[i], input[j], input[k], input[l]);
                        above += o > 0;
                        below += o < 0;
                    }
                    if (above + below == count - 3 && (above == 0 || below == 0)) {
                        extreme.insert({input[i], input[j], input[k]});
                    }
                }
            }
        }
        EXPECT_EQ(corners, extreme);
    }
}

TEST(CHConvexHull3D, GridOfPointsWithManyInFacesAndEdges)
{
    // A 5 x 5 x 5 block of points: most lie inside or in the plane of a
    // face. The tests are exact, without tolerance, so a point in a face's
    // plane but outside the face extends it and may stay as a corner.
    std::vector<Grid> input;
    OpenHull hull;
    hull.Check = true;  // the self-tests run after every added vertex
    for (int x = 0; x < 5; ++x) {
        for (int y = 0; y < 5; ++y) {
            for (int z = 0; z < 5; ++z) {
                input.push_back({x, (y * 3) % 5, z});
                hull.AppendVertex3D(static_cast<float>(x), static_cast<float>((y * 3) % 5), static_cast<float>(z), 1.0f);
            }
        }
    }
    hull.CalcConvexHull();
    ExpectClosedHull(hull, input);
    EXPECT_TRUE(hull.Checks());
    EXPECT_EQ(hull.VertexCount, hull.NumVertices);
}

TEST(CHConvexHull3D, LiftedPlanarPointsGiveADelaunayTriangulationBelow)
{
    std::mt19937 random(515);
    for (int round = 0; round < 8; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const int count = 5 + static_cast<int>(random() % 36);
        std::vector<std::array<double, 2>> points;
        CHConvexHull3D hull;
        while (static_cast<int>(points.size()) < count) {
            const std::array<double, 2> p{static_cast<double>(random() % 200), static_cast<double>(random() % 200)};
            if (std::count(points.begin(), points.end(), p) != 0) continue;
            points.push_back(p);
            hull.AppendVertex2D(static_cast<float>(p[0]), static_cast<float>(p[1]), -1, false);
        }
        hull.CalcConvexHull();

        // On the paraboloid every point is a corner of the spatial hull.
        std::vector<Grid> lifted;
        for (const auto& p : points) {
            const long long x = static_cast<long long>(p[0] * 10), y = static_cast<long long>(p[1] * 10);
            lifted.push_back({x, y, x * x + y * y});
        }
        EXPECT_EQ(ExpectClosedHull(hull, lifted).size(), points.size());

        // The faces looking down are the Delaunay triangles: no point lies
        // inside the circle through the corners of one.
        int lower = 0;
        for (tFaceStructure* f : FacesOf(hull)) {
            SSEPoint c[3];
            for (int i = 0; i < 3; ++i) c[i] = hull.GetVertexFromFace(f, i);
            const double ax = c[0].x, ay = c[0].y, bx = c[1].x, by = c[1].y, cx = c[2].x, cy = c[2].y;
            const double normalZ = (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
            if (normalZ >= 0) continue;
            ++lower;
            const double d = 2 * (ax * (by - cy) + bx * (cy - ay) + cx * (ay - by));
            const double ux = ((ax * ax + ay * ay) * (by - cy) + (bx * bx + by * by) * (cy - ay) +
                               (cx * cx + cy * cy) * (ay - by)) / d;
            const double uy = ((ax * ax + ay * ay) * (cx - bx) + (bx * bx + by * by) * (ax - cx) +
                               (cx * cx + cy * cy) * (bx - ax)) / d;
            const double r2 = (ax - ux) * (ax - ux) + (ay - uy) * (ay - uy);
            for (const auto& p : points) {
                EXPECT_GE((p[0] - ux) * (p[0] - ux) + (p[1] - uy) * (p[1] - uy), r2 * (1 - 1e-9));
            }
        }
        // A triangulation of n points with h of them on the border of their
        // hull has 2n - 2 - h triangles.
        int border = 0;
        for (const auto& p : points) {
            bool onBorder = false;
            for (const auto& q : points) {
                if (p == q) continue;
                int left = 0, right = 0;
                for (const auto& r : points) {
                    const double turn = (q[0] - p[0]) * (r[1] - p[1]) - (q[1] - p[1]) * (r[0] - p[0]);
                    left += turn > 0;
                    right += turn < 0;
                }
                if (left == 0 || right == 0) onBorder = true;
            }
            border += onBorder;
        }
        EXPECT_EQ(lower, 2 * count - 2 - border);
    }
}

TEST(CHConvexHull3D, LiftedInputKeepsTheFirstIndexAndMarkOfAGridPoint)
{
    OpenHull hull;
    hull.AppendVertex2D(0.0f, 0.0f, -1, false);   // numbered 0
    hull.AppendVertex2D(10.0f, 0.0f, 7, true);    // 7
    hull.AppendVertex2D(0.0f, 10.0f, -1, false);  // 2: numbered by the count so far
    hull.AppendVertex2D(10.0f, 10.0f, -1, false);  // 3
    hull.AppendVertex2D(1.0f, 2.0f, -1, true);    // 4
    hull.AppendVertex2D(1.04f, 2.0f, 99, false);  // the same grid point as the last: dropped
    EXPECT_EQ(hull.VertexCount, 5);
    hull.CalcConvexHull();
    std::map<Grid, std::pair<int, bool>> marks;
    for (tFaceStructure* f : FacesOf(hull)) {
        for (int i = 0; i < 3; ++i) marks[Corner(f, i)] = {f->Vertex[i]->Index, f->Vertex[i]->IsTop};
    }
    const std::map<Grid, std::pair<int, bool>> expected{
        {{0, 0, 0}, {0, false}},       {{100, 0, 10000}, {7, true}},      {{0, 100, 10000}, {2, false}},
        {{100, 100, 20000}, {3, false}}, {{10, 20, 500}, {4, true}},
    };
    EXPECT_EQ(marks, expected);

    // Read back in units of the input, the lifted height included.
    for (tFaceStructure* f : FacesOf(hull)) {
        for (int i = 0; i < 3; ++i) {
            if (f->Vertex[i]->Index != 4) continue;
            const SSEPoint p = hull.GetVertexFromFace(f, i);
            EXPECT_EQ(p.x, 1.0f);
            EXPECT_EQ(p.y, 2.0f);
            EXPECT_EQ(p.z, 50.0f);
        }
    }
}

TEST(CHConvexHull3D, FlatInputEndsThroughTheExitHook)
{
    ExitThrows exitThrows;
    const auto exitCode = [](const std::vector<std::array<float, 3>>& points) {
        CHConvexHull3D hull;
        for (const auto& p : points) hull.AppendVertex3D(p[0], p[1], p[2], 1.0f);
        try {
            hull.CalcConvexHull();
        } catch (const ExitCalled& exit) {
            return exit.code;
        }
        return -1;
    };
    EXPECT_EQ(exitCode({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {2, 1, 0}}), 0);  // coplanar
    EXPECT_EQ(exitCode({{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {5, 5, 5}}), 0);              // collinear
    EXPECT_EQ(exitCode({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}), 0);
    EXPECT_EQ(exitCode({{3, 3, 3}, {3, 3, 3}}), 0);
    EXPECT_EQ(exitCode({}), 0);
    EXPECT_EQ(exitCode({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}), -1);

    // Four corners of a square lie on one circle, so their lifts are coplanar.
    CHConvexHull3D square;
    for (float x : {0.0f, 5.0f}) {
        for (float y : {0.0f, 5.0f}) square.AppendVertex2D(x, y, -1, false);
    }
    EXPECT_THROW(square.CalcConvexHull(), ExitCalled);
}

TEST(CHConvexHull3D, FarCoordinatesStayExact)
{
    // Products of three differences near 10^15 need 150 bits; the hull
    // must still see the point beyond the slanted face and drop the one inside.
    const float far = 1e15f;
    const float tenth = 1e14f;
    CHConvexHull3D hull;
    hull.AppendVertex3D(0, 0, 0, 1.0f);
    hull.AppendVertex3D(far, 0, 0, 1.0f);
    hull.AppendVertex3D(0, far, 0, 1.0f);
    hull.AppendVertex3D(0, 0, far, 1.0f);
    hull.AppendVertex3D(tenth, tenth, tenth, 1.0f);
    hull.AppendVertex3D(4 * tenth, 4 * tenth, 3 * tenth, 1.0f);
    hull.CalcConvexHull();
    EXPECT_EQ(hull.GetNumFaces(), 6);
    std::set<Grid> corners;
    for (tFaceStructure* f : FacesOf(hull)) {
        for (int i = 0; i < 3; ++i) corners.insert(Corner(f, i));
    }
    const auto grid = [](float v) { return static_cast<long long>(static_cast<double>(v) + 0.5); };
    const std::set<Grid> expected{{0, 0, 0},
                                  {grid(far), 0, 0},
                                  {0, grid(far), 0},
                                  {0, 0, grid(far)},
                                  {grid(4 * tenth), grid(4 * tenth), grid(3 * tenth)}};
    EXPECT_EQ(corners, expected);
}

TEST(CHConvexHull3D, WildCoordinatesNeitherCrashNorHang)
{
    // Infinities, not-a-numbers and coordinates beyond the 64-bit grid all
    // land somewhere on it; the construction must come to an end there, or
    // to the exit hook.
    ExitThrows exitThrows;
    const float wild[] = {1e30f, -1e30f, std::nanf(""), 1e19f, -1e19f, 3e9f, 1e6f, 0.0f, 1.0f, -7e15f};
    std::mt19937 random(4242);
    for (int round = 0; round < 200; ++round) {
        const auto pick = [&random, &wild] {
            if (random() % 3 == 0) return wild[random() % 10];
            return static_cast<float>(static_cast<int>(random() % 2000000) - 1000000) * (random() % 2 ? 1e6f : 1.0f);
        };
        const int count = 4 + static_cast<int>(random() % 20);
        CHConvexHull3D spatial;
        CHConvexHull3D lifted;
        for (int i = 0; i < count; ++i) {
            spatial.AppendVertex3D(pick(), pick(), pick(), 1.0f);
            lifted.AppendVertex2D(pick(), pick(), -1, false);
        }
        for (CHConvexHull3D* hull : {&spatial, &lifted}) {
            try {
                hull->CalcConvexHull();
                EXPECT_EQ(static_cast<int>(FacesOf(*hull).size()), hull->GetNumFaces());
            } catch (const ExitCalled&) {
            }
        }
    }
}

// Counts the orientation tests the construction asks for, and answers them
// as the base does.
class CountingHull : public CHConvexHull3D {
public:
    int volumeTests = 0;
    int collinearTests = 0;

protected:
    int VolumeSign(tFaceStructure* f, tVertexStructure* p) override
    {
        ++volumeTests;
        return CHConvexHull3D::VolumeSign(f, p);
    }
    bool Collinear(tVertexStructure* a, tVertexStructure* b, tVertexStructure* c) override
    {
        ++collinearTests;
        return CHConvexHull3D::Collinear(a, b, c);
    }
};

TEST(CHConvexHull3D, ConstructionAsksTheReplaceableTests)
{
    CountingHull hull;
    for (int i = 0; i < 6; ++i) {
        hull.AppendVertex3D(static_cast<float>(i * i % 7), static_cast<float>(i * 3 % 5), static_cast<float>(i), 1.0f);
    }
    hull.CalcConvexHull();
    EXPECT_GT(hull.volumeTests, 0);
    EXPECT_GT(hull.collinearTests, 0);
}

} // namespace
