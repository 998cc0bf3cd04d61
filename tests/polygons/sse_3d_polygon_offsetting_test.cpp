#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "support/polygon_points.h"
#include "vekdll/platform/framework_exceptions.h"

using namespace vek::test;

namespace {

void ExpectNear(const std::vector<Xyz>& got, const std::vector<Xyz>& want, float tolerance)
{
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        EXPECT_NEAR(got[i].x, want[i].x, tolerance) << "point " << i;
        EXPECT_NEAR(got[i].y, want[i].y, tolerance) << "point " << i;
        EXPECT_NEAR(got[i].z, want[i].z, tolerance) << "point " << i;
    }
}

// A ring of `count` points of the given radius about (cx, cy).
std::vector<Xyz> Circle(int count, float radius, float cx, float cy)
{
    std::vector<Xyz> points = Polar(count, count, [=](int, double) { return radius; });
    for (Xyz& p : points) p = {p.x + cx, p.y + cy};
    return points;
}

TEST(CSSE3dPolygonOffsetting, ShiftAndScaleAboutTheOriginOrTheCentre)
{
    CSSE3dPolygon line = PolygonOf({{1, 1, 1}, {3, -2, 0}});
    line.ShiftLine(1, 2, 3);
    EXPECT_EQ(std::pair(PointsOf(line), line.IsBoundingBoxCalculated()), std::pair(std::vector<Xyz>{{2, 3, 4}, {4, 0, 3}}, true));
    EXPECT_EQ(line.GetTopRight().y, 3.0f);
    CSSE3dPolygon empty;
    empty.ShiftLine(1, 1, 1);
    EXPECT_TRUE(empty.IsBoundingBoxCalculated());

    Fill(line, {{1, 1, 1}});
    line.BlowLine(2, 2, 1, false);
    EXPECT_EQ(PointsOf(line), (std::vector<Xyz>{{2, 2, 1}}));
    // About the centre (5, 5, 1) of a square; the flag ends false.
    Fill(line, {{4, 4, 1}, {6, 4, 1}, {6, 6, 1}, {4, 6, 1}});
    line.CalcBoundingBox();
    line.BlowLineAroundCenter(2, 3, 5, false);
    EXPECT_EQ(std::pair(PointsOf(line), line.IsBoundingBoxCalculated()),
              std::pair(std::vector<Xyz>{{3, 2, 1}, {7, 2, 1}, {7, 8, 1}, {3, 8, 1}}, false));
    // Grown to side 3, each side is longer than 0.6 and gets trunc(3 / 0.6) points.
    Fill(line, {{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    line.BlowLine(3, 3, 1, true);
    EXPECT_EQ(line.GetNumPoints(), 4 * static_cast<int>(3.0f / 0.6f));
    EXPECT_EQ(PointOf(line, 0), (Xyz{0, 0, 0}));
}

TEST(CSSE3dPolygonQuasiMinkowski, EveryPointMovesTheDistanceStraightFromTheCentre)
{
    const float cx = 20.0f, cy = 30.0f;
    const auto radii = [&](const CSSE3dPolygon& line) {
        std::vector<float> r;
        for (const Xyz& p : PointsOf(line)) r.push_back(std::hypot(p.x - cx, p.y - cy));
        return r;
    };
    CSSE3dPolygon circle = PolygonOf(Circle(64, 10.0f, cx, cy));
    circle.DoQuasiMinkowskiDilation(2.0f, false);
    for (float r : radii(circle)) ASSERT_NEAR(r, 12.0f, 1e-4f);
    circle.DoQuasiMinkowskiErosion(5.0f, false);
    for (float r : radii(circle)) ASSERT_NEAR(r, 7.0f, 1e-4f);
    // Eroded by more than its radius, each point crosses the centre and
    // ends 3 beyond it, on the opposite side.
    const std::vector<Xyz> before = PointsOf(circle);
    circle.DoQuasiMinkowskiErosion(10.0f, false);
    const std::vector<Xyz> after = PointsOf(circle);
    for (std::size_t i = 0; i < after.size(); ++i) {
        EXPECT_NEAR(std::hypot(after[i].x - cx, after[i].y - cy), 3.0f, 1e-4f);
        EXPECT_LT((after[i].x - cx) * (before[i].x - cx) + (after[i].y - cy) * (before[i].y - cy), 0.0f);
    }

    // A square's corners move along the diagonals: no true offset.
    const float s = 5.0f + 2.0f / std::numbers::sqrt2_v<float>;
    CSSE3dPolygon square = PolygonOf({{-5, -5}, {5, -5}, {5, 5}, {-5, 5}});
    square.DoQuasiMinkowskiDilation(2.0f, false);
    ExpectNear(PointsOf(square), {{-s, -s}, {s, -s}, {s, s}, {-s, s}}, 1e-5f);

    // The given centre, not the line's own, and no hull.
    CSSE3dPolygon offCentre = PolygonOf(Circle(16, 10.0f, cx, cy));
    SSEPoint origin = Sse(0.0f, 0.0f, 0.0f);
    offCentre.DoQuasiMinkowskiDilationCenter(2.0f, origin);
    const std::vector<Xyz> source = Circle(16, 10.0f, cx, cy), moved = PointsOf(offCentre);
    for (std::size_t i = 0; i < moved.size(); ++i) {
        const float r = std::hypot(source[i].x, source[i].y);
        EXPECT_NEAR(std::hypot(moved[i].x, moved[i].y), r + 2.0f, 1e-4f);
    }
}

TEST(CSSE3dPolygonQuasiMinkowski, TheHullReplacesTheLineAfterItsCentreIsTaken)
{
    // The centre of the five points is (2, 1.8); the dent at (2, 1) is not on the hull.
    CSSE3dPolygon dented = PolygonOf({{0, 0}, {4, 0}, {4, 4}, {2, 1}, {0, 4}});
    dented.DoQuasiMinkowskiDilation(1.0f, true);
    std::vector<Xyz> got = PointsOf(dented), want;
    for (const Xyz& corner : {Xyz{0, 0}, Xyz{4, 0}, Xyz{4, 4}, Xyz{0, 4}}) {
        const float dx = corner.x - 2.0f, dy = corner.y - 1.8f, length = std::hypot(dx, dy);
        want.push_back({corner.x + dx / length, corner.y + dy / length});
    }
    const auto byPosition = [](const Xyz& a, const Xyz& b) { return std::pair(a.x, a.y) < std::pair(b.x, b.y); };
    std::sort(got.begin(), got.end(), byPosition);
    std::sort(want.begin(), want.end(), byPosition);
    ExpectNear(got, want, 1e-5f);
}

// radius (cos t, sin t, 0) for t = k pi / samples, as the half disc is sampled.
Xyz OnHalfDisc(const Xyz& centre, float radius, int k, int samples)
{
    const float t = static_cast<float>(k) * 3.1415927f / static_cast<float>(samples);
    return {centre.x + radius * std::cos(t), centre.y + radius * std::sin(t), centre.z};
}

TEST(CSSE3dPolygonExactOffsets, DilationKeepsTheHalfDiscSamplesOutsideTheLine)
{
    // Two points 10 apart: the mean segment is 10, so radius 1 gives four
    // samples per point, none inside the other's half disc, and a line of two
    // points holds none of them.
    CSSE3dPolygon pair = PolygonOf({{0, 0, 2}, {10, 0, 3}});
    pair.DilateExact(1.0f);
    std::vector<Xyz> want;
    for (const Xyz& p : {Xyz{0, 0, 2}, Xyz{10, 0, 3}})
        for (int k = 0; k < 4; ++k) want.push_back(OnHalfDisc(p, 1.0f, k, 4));
    ExpectNear(PointsOf(pair), want, 1e-6f);
    EXPECT_FALSE(pair.IsBoundingBoxCalculated());

    // The square of side 10, radius 2: four samples at each corner, at 0,
    // 45, 90 and 135 degrees. Inside the square, and gone: (2, 0) and (1.4,
    // 1.4) of the first corner, (10, 2) and (8.6, 1.4) of the second. The
    // first corner's (0, 2) lies on the column of the smallest x and the last
    // corner's (2, 10) on the top edge: both outside, and kept.
    const std::vector<Xyz> corners = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    CSSE3dPolygon square = PolygonOf(corners);
    square.DilateExact(2.0f);
    want = {OnHalfDisc(corners[0], 2, 2, 4), OnHalfDisc(corners[0], 2, 3, 4), OnHalfDisc(corners[1], 2, 0, 4), OnHalfDisc(corners[1], 2, 1, 4)};
    for (int c = 2; c < 4; ++c)
        for (int k = 0; k < 4; ++k) want.push_back(OnHalfDisc(corners[c], 2, k, 4));
    ExpectNear(PointsOf(square), want, 1e-5f);

    // A dense circle: every survivor lies outside the line and at most the
    // radius beyond it, and the sample straight above the top point survives.
    const float r = 12.0f, grow = 3.0f, apothem = r * std::cos(std::numbers::pi_v<float> / 48.0f);
    CSSE3dPolygon circle = PolygonOf(Circle(48, r, 0.0f, 0.0f));
    circle.DilateExact(grow);
    float highest = -1.0f;
    for (const Xyz& p : PointsOf(circle)) {
        const float d = std::hypot(p.x, p.y);
        EXPECT_GT(d, apothem - 1e-4f);
        EXPECT_LT(d, r + grow + 1e-4f);
        highest = std::max(highest, p.y);
    }
    EXPECT_NEAR(highest, r + grow, 1e-4f);
}

TEST(CSSE3dPolygonExactOffsets, ErosionKeepsTheSamplesInsideAndALineThatLosesAllKeepsItsPoints)
{
    // Radius 2: 4 (1 - trunc(-3.14)) = 16 samples per point. Inside the
    // square of side 10 lie the first eight of the first corner (up to just
    // below 90 degrees; at 90 the sample falls a hair left of x = 0) and the
    // last eight of the second (from 90 degrees on, x = 10 being inside).
    const std::vector<Xyz> corners = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    CSSE3dPolygon square = PolygonOf(corners);
    square.ErodeExact(2.0f);
    std::vector<Xyz> want;
    for (int k = 0; k < 8; ++k) want.push_back(OnHalfDisc(corners[0], 2, k, 16));
    for (int k = 8; k < 16; ++k) want.push_back(OnHalfDisc(corners[1], 2, k, 16));
    ExpectNear(PointsOf(square), want, 1e-5f);

    // Beyond the inradius: on the square of side 2, radius 3 reaches past
    // the far sides from every corner, nothing is inside, and the line stays.
    const std::vector<Xyz> small = {{0, 0}, {2, 0}, {2, 2}, {0, 2}};
    CSSE3dPolygon shrunk = PolygonOf(small);
    shrunk.ErodeExact(3.0f);
    EXPECT_EQ(PointsOf(shrunk), small);
    // A line of fewer than 3 points holds nothing and stays as well.
    CSSE3dPolygon pair = PolygonOf({{0, 0}, {5, 0}});
    pair.ErodeExact(1.0f);
    EXPECT_EQ(pair.GetNumPoints(), 2);
    // A radius far enough below 0 gives no samples at all.
    pair.DilateExact(-10.0f);
    EXPECT_EQ(pair.GetNumPoints(), 2);
}

TEST(CSSE3dPolygonExactOffsets, MoreSamplesThanALineCanHoldRaiseTheMemoryException)
{
    CSSE3dPolygon square = PolygonOf({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    EXPECT_THROW(square.ErodeExact(1e9f), CMemoryException);
    EXPECT_THROW(square.DilateExact(1e12f), CMemoryException);
    EXPECT_EQ(PointsOf(square), (std::vector<Xyz>{{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
}

} // namespace
