#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/plane_geometry.h"
#include "support/polygon_points.h"
#include "vekdll/planar/convex_hull_2d.h"

using namespace vek::test;

namespace {

std::vector<Xyz> HullOf(const std::vector<Xyz>& points)
{
    CSSE3dPolygon source, out;
    Fill(source, points);
    CHConvexHull2D(&source).ObtainConvexHull3D(&out);
    return PointsOf(out);
}

TEST(CHConvexHull2D, RandomPointSetsGiveTheirConvexHull)
{
    // A ring of distinct input points that turns strictly left at every
    // corner and has every point on or left of every edge is the hull, with
    // the points on its edges dropped.
    std::mt19937 random(20240611);
    for (int round = 0; round < 40; ++round) {
        const int count = 3 + static_cast<int>(random() % 70);
        const int range = round % 2 == 0 ? 1000 : 30;  // the small range makes collinear triples
        std::set<std::pair<float, float>> used;
        std::vector<Xyz> points;
        while (static_cast<int>(points.size()) < count) {
            const float x = static_cast<float>(random() % range), y = static_cast<float>(random() % range);
            if (used.insert({x, y}).second) points.push_back({x, y, static_cast<float>(points.size())});
        }
        SCOPED_TRACE("round " + std::to_string(round));
        const std::vector<Xyz> hull = HullOf(points);
        const size_t n = hull.size();
        ASSERT_GE(n, 2u);
        std::set<float> sources;
        for (size_t i = 0; i < n; ++i) {
            const Xyz& a = hull[i];
            EXPECT_TRUE(sources.insert(a.z).second);
            EXPECT_EQ(a, points[static_cast<size_t>(a.z)]);  // the input point, z and all
            EXPECT_GT(n > 2 ? Cross(hull[(i + n - 1) % n], a, hull[(i + 1) % n]) : 1.0, 0.0);
            for (const Xyz& c : points) EXPECT_GE(Cross(a, hull[(i + 1) % n], c), 0.0);
        }
        // It starts at the lowest point, the leftmost of those.
        for (const Xyz& p : points) EXPECT_TRUE(p.y > hull[0].y || (p.y == hull[0].y && p.x >= hull[0].x));
    }
}

TEST(CHConvexHull2D, SmallAndDegenerateSetsKeepOnlyRealCorners)
{
    using Points = std::vector<Xyz>;
    const struct {
        const char* name;
        Points points;
        Points hull;
    } cases[] = {
        // Centre (5, 5) and bottom midpoint (5, 0) lie on rays from the
        // lowest point (0, 0) and go in the sort; the top midpoint in the scan.
        {"square", {{10, 10, 1}, {5, 5, 2}, {0, 10, 3}, {5, 0, 4}, {10, 0, 5}, {0, 0, 6}, {5, 10, 7}},
         {{0, 0, 6}, {10, 0, 5}, {10, 10, 1}, {0, 10, 3}}},
        {"all on one line", {{6, 3, 0}, {0, 0, 1}, {10, 5, 2}, {2, 1, 3}, {8, 4, 4}, {4, 2, 5}}, {{0, 0, 1}, {10, 5, 2}}},
        {"three given clockwise", {{0, 0, 0}, {0, 4, 1}, {4, 0, 2}}, {{0, 0, 0}, {4, 0, 2}, {0, 4, 1}}},
        // Of two points at one place the sort drops the one with the lower
        // index; at the lowest point the first one found stays, as the pivot.
        {"points given twice", {{0, 0, 1}, {4, 0, 2}, {4, 4, 3}, {4, 4, 4}, {0, 4, 5}, {0, 0, 6}, {4, 0, 7}},
         {{0, 0, 1}, {4, 0, 7}, {4, 4, 4}, {0, 4, 5}}},
        {"one point", {{3, 4, 5}}, {{3, 4, 5}}},
        {"none", {}, {}},
    };
    for (const auto& c : cases) EXPECT_EQ(HullOf(c.points), c.hull) << c.name;

    // The planar output runs clockwise, ending at the lowest point.
    CSSE3dPolygon source;
    Fill(source, cases[0].points);
    CSSE2dPolygon planar;
    CHConvexHull2D(&source).ObtainConvexHull2D(&planar);
    EXPECT_EQ(PointsOf(planar), (std::vector<Xyz>{{0, 10}, {10, 10}, {10, 0}, {0, 0}}));

    // On one line with a point given twice: the two copies compare equal,
    // so the sort never meets the nearer copy with the far end, and both
    // survive it. The scan then pops down to the lowest point, says so and
    // leaves no hull.
    testing::internal::CaptureStdout();
    EXPECT_TRUE(HullOf({{1, 1, 0}, {1, 1, 1}, {0, 0, 2}, {2, 2, 3}}).empty());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Error\n");

    // Built from a planar polygon, the hull reads nothing and stays empty.
    CSSE2dPolygon three;
    Fill(three, {{0, 0}, {4, 0}, {0, 4}});
    CHConvexHull2D(&three).ObtainConvexHull3D(&source);
    EXPECT_EQ(source.GetNumPoints(), 0);
}

TEST(CHConvexHull2D, WildCoordinatesNeitherCrashNorLeaveTheInput)
{
    // Infinities, not-a-numbers and clusters far below the tolerance make
    // the angular order inconsistent; the sort must still stay in its array.
    const float wild[] = {1e30f, -1e30f, std::nanf(""), INFINITY, -INFINITY, 0.0f, 1e-4f, 2e-4f};
    std::mt19937 random(99);
    testing::internal::CaptureStdout();
    for (int round = 0; round < 150; ++round) {
        std::vector<Xyz> points;
        const int count = 1 + static_cast<int>(random() % 40);
        for (int i = 0; i < count; ++i) points.push_back({wild[random() % 8], wild[random() % 8], static_cast<float>(i)});
        const std::vector<Xyz> hull = HullOf(points);
        EXPECT_LE(hull.size(), points.size());
        for (const Xyz& p : hull) EXPECT_EQ(std::memcmp(&p, &points[static_cast<size_t>(p.z)], sizeof(Xyz)), 0);
    }
    testing::internal::GetCapturedStdout();
}

} // namespace
