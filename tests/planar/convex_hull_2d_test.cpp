#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "planar/planar_shapes.h"
#include "vekdll/planar/convex_hull_2d.h"

namespace {

using vek::test::Ring;
using vek::test::Xy;

struct Xyz {
    float x;
    float y;
    float z;
    bool operator==(const Xyz&) const = default;
};

void Fill(CSSE3dPolygon& polygon, const std::vector<Xyz>& points)
{
    polygon.Create(static_cast<int>(points.size()));
    for (int i = 0; i < static_cast<int>(points.size()); ++i) polygon.SetPoint(i, points[i].x, points[i].y, points[i].z);
}

std::vector<Xyz> HullOf(const std::vector<Xyz>& points)
{
    CSSE3dPolygon source;
    Fill(source, points);
    CHConvexHull2D hull(&source);
    CSSE3dPolygon out;
    hull.ObtainConvexHull3D(&out);
    std::vector<Xyz> result(out.GetNumPoints());
    for (int i = 0; i < out.GetNumPoints(); ++i) out.GetPoint(i, result[i].x, result[i].y, result[i].z);
    return result;
}

double Cross(const Xyz& a, const Xyz& b, const Xyz& c)
{
    return vek::test::Cross(Xy{a.x, a.y}, Xy{b.x, b.y}, Xy{c.x, c.y});
}

// The corners of the hull by brute force: a is a corner if for some b every
// other point lies strictly left of a->b or on the segment between them.
// Needs points at distinct places.
std::set<std::pair<float, float>> BruteForceCorners(const std::vector<Xyz>& points)
{
    std::set<std::pair<float, float>> corners;
    for (const Xyz& a : points) {
        for (const Xyz& b : points) {
            if (a == b) continue;
            bool edge = true;
            for (const Xyz& c : points) {
                const double turn = Cross(a, b, c);
                const bool onSegment = turn == 0 && std::min(a.x, b.x) <= c.x && c.x <= std::max(a.x, b.x) &&
                                       std::min(a.y, b.y) <= c.y && c.y <= std::max(a.y, b.y);
                if (turn < 0 || (turn == 0 && !onSegment)) edge = false;
            }
            if (edge) {
                corners.insert({a.x, a.y});
                corners.insert({b.x, b.y});
            }
        }
    }
    return corners;
}

TEST(CHConvexHull2D, SquareLosesItsCentreAndEdgePointsAndRunsBothWays)
{
    // Centre (5, 5) and bottom midpoint (5, 0) lie on rays from the lowest
    // point (0, 0) and go in the sort; the top midpoint goes in the scan.
    const std::vector<Xyz> points{{10, 10, 1}, {5, 5, 2}, {0, 10, 3}, {5, 0, 4}, {10, 0, 5}, {0, 0, 6}, {5, 10, 7}};
    EXPECT_EQ(HullOf(points), (std::vector<Xyz>{{0, 0, 6}, {10, 0, 5}, {10, 10, 1}, {0, 10, 3}}));

    CSSE3dPolygon source;
    Fill(source, points);
    CHConvexHull2D hull(&source);
    CSSE2dPolygon planar;
    hull.ObtainConvexHull2D(&planar);
    ASSERT_EQ(planar.GetNumPoints(), 4);
    std::vector<float> xy;
    for (int i = 0; i < 4; ++i) {
        float x = 0, y = 0;
        planar.GetPoint(i, x, y);
        xy.push_back(x);
        xy.push_back(y);
    }
    // Clockwise, ending at the lowest point.
    EXPECT_EQ(xy, (std::vector<float>{0, 10, 10, 10, 10, 0, 0, 0}));
}

TEST(CHConvexHull2D, RandomPointSetsMatchABruteForceHull)
{
    std::mt19937 random(20240611);
    for (int round = 0; round < 40; ++round) {
        const int count = 3 + static_cast<int>(random() % 70);
        const int range = round % 2 == 0 ? 1000 : 30;  // the small range makes collinear triples
        std::set<std::pair<float, float>> used;
        std::vector<Xyz> points;
        while (static_cast<int>(points.size()) < count) {
            const float x = static_cast<float>(random() % range);
            const float y = static_cast<float>(random() % range);
            if (used.insert({x, y}).second) points.push_back({x, y, static_cast<float>(points.size())});
        }
        SCOPED_TRACE("round " + std::to_string(round));
        const std::vector<Xyz> hull = HullOf(points);
        const std::set<std::pair<float, float>> corners = BruteForceCorners(points);
        ASSERT_EQ(hull.size(), corners.size());
        for (size_t i = 0; i < hull.size(); ++i) {
            const Xyz& a = hull[i];
            const Xyz& b = hull[(i + 1) % hull.size()];
            EXPECT_EQ(corners.count({a.x, a.y}), 1u);
            // The input point that this corner came from, z and all.
            EXPECT_EQ(a, points[static_cast<size_t>(a.z)]);
            // Counter-clockwise with every point on or left of every edge.
            for (const Xyz& c : points) EXPECT_GE(Cross(a, b, c), 0.0);
        }
        // It starts at the lowest point, the leftmost of those.
        for (const Xyz& p : points) {
            EXPECT_TRUE(p.y > hull[0].y || (p.y == hull[0].y && p.x >= hull[0].x));
        }
    }
}

TEST(CHConvexHull2D, DegenerateSetsKeepOnlyRealCorners)
{
    // All on one line: the two ends remain.
    std::vector<Xyz> line;
    for (int i : {3, 0, 5, 1, 4, 2}) line.push_back({2.0f * i, 1.0f * i, 0});
    EXPECT_EQ(HullOf(line), (std::vector<Xyz>{{0, 0, 0}, {10, 5, 0}}));

    // Three points, given clockwise, come back counter-clockwise.
    EXPECT_EQ(HullOf({{0, 0, 0}, {0, 4, 1}, {4, 0, 2}}), (std::vector<Xyz>{{0, 0, 0}, {4, 0, 2}, {0, 4, 1}}));
    EXPECT_EQ(HullOf({{0, 0, 0}, {2, 2, 1}, {4, 4, 2}}), (std::vector<Xyz>{{0, 0, 0}, {4, 4, 2}}));

    // Of two points at one place the sort drops the one with the lower
    // index; at the lowest point the first one found stays, as the pivot.
    const std::vector<Xyz> twice{{0, 0, 1}, {4, 0, 2}, {4, 4, 3}, {4, 4, 4}, {0, 4, 5}, {0, 0, 6}, {4, 0, 7}};
    const std::vector<Xyz> hull = HullOf(twice);
    ASSERT_EQ(hull.size(), 4u);
    EXPECT_EQ(hull[0], (Xyz{0, 0, 1}));
    EXPECT_EQ(hull[1], (Xyz{4, 0, 7}));
    EXPECT_EQ(hull[2], (Xyz{4, 4, 4}));

    // On one line with a point given twice: the two copies compare equal,
    // so the sort never meets the nearer copy with the far end, and both
    // survive it. The scan then pops down to the lowest point, says so and
    // leaves no hull.
    testing::internal::CaptureStdout();
    EXPECT_TRUE(HullOf({{1, 1, 0}, {1, 1, 1}, {0, 0, 2}, {2, 2, 3}}).empty());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error\n");

    // One point is its own hull; none gives none.
    EXPECT_EQ(HullOf({{3, 4, 5}}), (std::vector<Xyz>{{3, 4, 5}}));
    EXPECT_TRUE(HullOf({}).empty());

    // Built from a planar polygon, the hull reads nothing and stays empty.
    CSSE2dPolygon planar;
    planar.Create(3);
    CHConvexHull2D idle(&planar);
    CSSE3dPolygon out;
    idle.ObtainConvexHull3D(&out);
    EXPECT_EQ(out.GetNumPoints(), 0);
}

TEST(CHConvexHull2D, WildCoordinatesNeitherCrashNorLeaveTheInput)
{
    // Infinities, not-a-numbers and clusters far below the tolerance make
    // the angular order inconsistent; the sort must still stay in its array.
    const float wild[] = {1e30f, -1e30f, std::nanf(""), INFINITY, -INFINITY, 0.0f, 1e-4f, 2e-4f};
    std::mt19937 random(99);
    testing::internal::CaptureStdout();
    for (int round = 0; round < 300; ++round) {
        std::vector<Xyz> points;
        const int count = 1 + static_cast<int>(random() % 40);
        for (int i = 0; i < count; ++i) points.push_back({wild[random() % 8], wild[random() % 8], static_cast<float>(i)});
        const std::vector<Xyz> hull = HullOf(points);
        EXPECT_LE(hull.size(), points.size());
        for (const Xyz& p : hull) {
            const Xyz& source = points[static_cast<size_t>(p.z)];
            EXPECT_TRUE(std::memcmp(&p, &source, sizeof(Xyz)) == 0);
        }
    }
    testing::internal::GetCapturedStdout();
}

} // namespace
