#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "fields/field_storage.h"
#include "support/plane_geometry.h"
#include "support/polygon_points.h"
#include "vekdll/polygons/inner_area_scan.h"

using namespace vek::test;

namespace {

// The square 2 ... 6 counter-clockwise (y up). By the even-odd rule of the
// line, column x counts the bottom and the top edge for 2 < x <= 6, and a
// pixel is inside while only the top edge lies above it: rows 2 ... 5.
const std::vector<Xyz> kSquare = {{2, 2}, {6, 2}, {6, 6}, {2, 6}};

const Picture kSquareInside = {
    "..........",
    "..........",
    "...7777...",
    "...7777...",
    "...7777...",
    "...7777...",
    "..........",
    "..........",
    "..........",
    "..........",
};

CSSEMatrix Blank(int sizeX, int sizeY)
{
    return Filled(sizeX, sizeY, 0.0f);
}

constexpr float kNoLimit = 1e6f;

TEST(DrawInMatrixAndFillFine, FillsTheEvenOddInsideOfABandAndNothingElse)
{
    CSSEMatrix m = Blank(10, 10);
    CSSE3dPolygon square = PolygonOf(kSquare);
    square.DrawInMatrixAndFillFine(7.0f, &m, false, -kNoLimit, kNoLimit);
    EXPECT_EQ(RowsOf(m), kSquareInside);
    EXPECT_TRUE(square.IsBoundingBoxCalculated());

    // The band: rows yFrom - 5 ... yTo + 4 of a tall rectangle (inside in
    // columns 2 ... 4, rows 1 ... 27). With yFrom beyond the line's last row
    // and yTo before it, the band is the five rows either side of the last row.
    CSSE3dPolygon tall = PolygonOf({{1, 1}, {4, 1}, {4, 28}, {1, 28}});
    for (const auto& [from, to, first, last] : {std::tuple{10.0f, 12.9f, 5, 16}, {50.0f, -3.0f, 23, 27}, {-8.0f, 0.0f, 1, 5}}) {
        CSSEMatrix band = Blank(6, 30);
        tall.DrawInMatrixAndFillFine(7.0f, &band, false, from, to);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 6; ++x)
                ASSERT_EQ(band.GetPoint(x, y), x >= 2 && x <= 4 && y >= first && y <= last && y >= 1 && y <= 27 ? 7.0f : 0.0f)
                    << from << " ... " << to << " at " << x << ", " << y;
    }
}

TEST(DrawInMatrixAndFillFine, TheMarginBeyondTheFieldReachesTheRimAndFarLinesLeaveItAlone)
{
    // A rectangle left of the field, columns -4 ... -2 inside: its columns
    // clamp to 0, and the margin of 5 reaches them, so column 0 takes its rows.
    CSSEMatrix m = Blank(6, 6);
    CSSE3dPolygon left = PolygonOf({{-4.5f, 1.5f}, {-1.5f, 1.5f}, {-1.5f, 3.5f}, {-4.5f, 3.5f}});
    left.DrawInMatrixAndFillFine(7.0f, &m, false, -kNoLimit, kNoLimit);
    EXPECT_EQ(RowsOf(m), (Picture{"......", "......", "7.....", "7.....", "......", "......"}));
    // Rows below the field pile onto its last row in the same way.
    Replace(m, Blank(6, 6));
    CSSE3dPolygon below = PolygonOf({{1.5f, 7.5f}, {3.5f, 7.5f}, {3.5f, 9.5f}, {1.5f, 9.5f}});
    below.DrawInMatrixAndFillFine(7.0f, &m, false, -kNoLimit, kNoLimit);
    EXPECT_EQ(RowsOf(m), (Picture{"......", "......", "......", "......", "......", "..77.."}));

    // Beyond the margin, and lines of fewer than 3 points, fill nothing; the
    // coarse band isn't clamped to the field, so only the short lines leave
    // it alone too.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<std::pair<std::vector<Xyz>, bool>> quiet = {
        {{{-40, 1}, {-20, 1}, {-20, 4}, {-40, 4}}, false},
        {{{1000, 1000}, {2000, 1000}, {2000, 2000}}, false},
        {{{1, 1}, {5, 5}}, true},
        {{}, true},
    };
    for (const auto& [points, coarseToo] : quiet) {
        Replace(m, Blank(6, 6));
        CSSE3dPolygon line = PolygonOf(points);
        line.DrawInMatrixAndFillFine(7.0f, &m, false, -kNoLimit, kNoLimit);
        if (coarseToo) line.DrawInMatrixAndFillCoarse(7.0f, &m, false, -kNoLimit, kNoLimit);
        EXPECT_EQ(m.NumValuesAbove(0.0f), 0) << points.size() << " points";
    }
    // Points that are not a number or far away: whatever reaches the field
    // reaches it through the clamps.
    for (const auto& points : std::vector<std::vector<Xyz>>{{{1, 1}, {nan, 2}, {5, 5}, {1, 5}}, {{-1e30f, -1e30f}, {1e30f, 0}, {0, 1e30f}}}) {
        Replace(m, Blank(6, 6));
        CSSE3dPolygon line = PolygonOf(points);
        line.DrawInMatrixAndFillFine(7.0f, &m, false, -kNoLimit, kNoLimit);
        line.DrawInMatrixAndFill(7.0f, &m);
        line.DrawInMatrix(7.0f, &m, false, 0.0f, 0.0f, false);
    }
    // A field without an image is left alone.
    CSSEMatrix none;
    CSSE3dPolygon square = PolygonOf(kSquare);
    square.DrawInMatrixAndFillFine(7.0f, &none, false, -kNoLimit, kNoLimit);
    square.DrawInMatrixAndFillCoarse(7.0f, &none, false, -kNoLimit, kNoLimit);
    square.DrawInMatrixAndFill(7.0f, &none);
    square.DrawInMatrixAndFillFine(7.0f, nullptr, false, -kNoLimit, kNoLimit);
    EXPECT_EQ(none.GetMatrixDataDirectly(), nullptr);
}

TEST(DrawInMatrixAndFillFine, ThinsTheLineAndFillsTheByteFieldAlike)
{
    // The last point lies within 1 (city-block) of the first and is cut out
    // of the copy; left in, its two chords would cross column 3 and leave
    // pixel (3, 3) outside. The line itself keeps all its points.
    CSSE3dPolygon doubled = PolygonOf({{2.6f, 2}, {6, 2}, {6, 6}, {2.6f, 6}, {3.1f, 2.3f}});
    EXPECT_FALSE(doubled.PointInLineInnerArea(3.0f, 3.0f, 1));
    CSSEMatrix m = Blank(10, 10);
    doubled.DrawInMatrixAndFillFine(7.0f, &m, false, -kNoLimit, kNoLimit);
    EXPECT_EQ(doubled.GetNumPoints(), 5);
    EXPECT_EQ(RowsOf(m), kSquareInside);

    CSSEcharMatrix bytes(10, 10);
    CSSE3dPolygon square = PolygonOf(kSquare);
    square.DrawInCharMatrixAndFillFine(5, &bytes, false, -kNoLimit, kNoLimit);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) ASSERT_EQ(bytes.GetPoint(x, y), kSquareInside[y][x] == '7' ? 5 : 0) << x << ", " << y;

    // Subsampling by 5 keeps every fifth point of a dotted square of side 10
    // (its corners among them) and the mean of the first and the last kept.
    std::vector<Xyz> dotted = DottedSquare(10);
    for (Xyz& p : dotted) p = {p.x + 1, p.y + 1};
    CSSE3dPolygon fine = PolygonOf(dotted), coarse = PolygonOf(dotted);
    CSSEMatrix a = Blank(14, 14), b = Blank(14, 14);
    fine.DrawInMatrixAndFillFine(7.0f, &a, false, -kNoLimit, kNoLimit);
    coarse.DrawInMatrixAndFillFine(7.0f, &b, true, -kNoLimit, kNoLimit);
    EXPECT_EQ(a.NumValuesAbove(0.0f), 100);      // columns 2 ... 11, rows 1 ... 10
    EXPECT_EQ(AllStored(a), AllStored(b));
}

TEST(DrawInMatrixAndFillFine, AgreesWithAPlainEvenOddCountAtEveryPixelCentre)
{
    std::mt19937 random(1411);
    // Stars within the field, so that no pixel takes what the margin piles on the rim.
    std::uniform_real_distribution<float> radius(4.0f, 25.0f), centre(28.0f, 36.0f);
    int tested = 0;
    for (int round = 0; round < 40; ++round) {
        const int n = 5 + round % 17;
        const float cx = centre(random), cy = centre(random);
        std::vector<Xyz> star = Polar(n, n, [&](int, double) { return radius(random); });
        for (Xyz& p : star) p = {p.x + cx, p.y + cy};
        // The fills thin points closer than 1 (city-block); these lines have none.
        bool spread = true;
        for (std::size_t i = 0; i < star.size(); ++i)
            for (std::size_t j = 0; j < i; ++j) spread = spread && std::fabs(star[i].x - star[j].x) + std::fabs(star[i].y - star[j].y) >= 1.0f;
        if (!spread) continue;

        CSSEMatrix m = Blank(64, 64);
        CSSE3dPolygon line = PolygonOf(star);
        line.DrawInMatrixAndFillFine(1.0f, &m, false, -kNoLimit, kNoLimit);
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                // A pixel centre within a hair of an edge may go either way.
                bool onEdge = false;
                for (std::size_t i = 0; i < star.size(); ++i) {
                    const Xyz& a = star[i];
                    const Xyz& b = star[(i + 1) % star.size()];
                    const double length = std::hypot(double(b.x) - a.x, double(b.y) - a.y);
                    onEdge = onEdge || std::fabs(Cross(a, b, Xyz{float(x), float(y)})) / length < 1e-3;
                }
                if (onEdge) continue;
                ++tested;
                ASSERT_EQ(m.GetPoint(x, y) == 1.0f, EvenOddInside(star, x, y)) << "round " << round << " at " << x << ", " << y;
            }
        }
    }
    EXPECT_GT(tested, 30 * 64 * 64);
}

TEST(DrawInMatrixAndFillCoarse, SplatsEveryThirdPixelOfAnUnclampedBand)
{
    // The square 2 ... 14: grid columns and rows run from -7 in steps of 3;
    // the grid points inside are x = 5, 8, 11, 14 and y = 2, 5, 8, 11, and
    // their splats cover columns 4 ... 15 and rows 1 ... 12.
    CSSEMatrix m = Blank(20, 20);
    CSSE3dPolygon square = PolygonOf({{2, 2}, {14, 2}, {14, 14}, {2, 14}});
    square.DrawInMatrixAndFillCoarse(7.0f, &m, false, -kNoLimit, kNoLimit);
    ExpectLanes(m, [](int x, int row) { return x >= 4 && x <= 15 && row >= 1 && row <= 12 ? 7.0f : 0.0f; });

    // The band from row 6 on: grid rows 6 - 9 = -3, 0, 3, ..., inside at 3,
    // 6, 9, 12; the splats cover rows 2 ... 13.
    Replace(m, Blank(20, 20));
    square.DrawInMatrixAndFillCoarse(7.0f, &m, false, 6.0f, kNoLimit);
    ExpectLanes(m, [](int x, int row) { return x >= 4 && x <= 15 && row >= 2 && row <= 13 ? 7.0f : 0.0f; });

    // Left of the field, columns -8 and -5 of the grid are inside (the band
    // isn't clamped): their splats land on centre column 1.
    Replace(m, Blank(8, 8));
    CSSE3dPolygon left = PolygonOf({{-8.5f, 2.5f}, {-2.5f, 2.5f}, {-2.5f, 5.5f}, {-8.5f, 5.5f}});
    left.DrawInMatrixAndFillCoarse(7.0f, &m, false, -kNoLimit, kNoLimit);
    // Grid rows from 2 - 9 = -7: inside at 5 (2 lies below the line's 2.5).
    ExpectLanes(m, [](int x, int row) { return x <= 2 && row >= 4 && row <= 6 ? 7.0f : 0.0f; });
}

// Lines that the column walk must take as the point test does: vertices on
// whole columns and rows, horizontal and vertical edges, doubled points,
// loops over themselves, spikes, and coordinates that are infinite or not a
// number.
std::vector<Xyz> AwkwardLine(std::mt19937& random, int round)
{
    std::uniform_int_distribution<int> lattice(-3, 24), count(0, 14);
    std::uniform_real_distribution<float> spread(-4.0f, 26.0f);
    std::vector<Xyz> points(static_cast<std::size_t>(count(random)));
    for (Xyz& p : points) {
        if (round % 3 == 0) {
            p = {static_cast<float>(lattice(random)), static_cast<float>(lattice(random))};
        } else if (round % 3 == 1) {
            p = {static_cast<float>(lattice(random)) * 0.5f, spread(random)};
        } else {
            p = {spread(random), spread(random)};
        }
    }
    if (round % 7 == 0 && !points.empty()) points[random() % points.size()].x = std::numeric_limits<float>::quiet_NaN();
    if (round % 11 == 0 && !points.empty()) points[random() % points.size()].y = std::numeric_limits<float>::infinity();
    if (round % 13 == 0 && points.size() > 1) points[1] = points[0];
    return points;
}

std::vector<std::pair<int, std::vector<vek::RowRun>>> RunsOf(CSSE3dPolygon& line, vek::GridAxis columns, vek::GridAxis rows, vek::InnerAreaScan scan)
{
    std::vector<std::pair<int, std::vector<vek::RowRun>>> found;
    vek::ScanInnerArea(line, columns, rows, scan, [&](int x, const std::vector<vek::RowRun>& runs) { found.emplace_back(x, runs); });
    return found;
}

TEST(ScanInnerArea, TheColumnWalkFindsTheRunsOfThePointTestOnAwkwardLines)
{
    std::mt19937 random(2026);
    std::uniform_int_distribution<int> start(-6, 8), length(0, 30), step(1, 3);
    for (int round = 0; round < 600; ++round) {
        CSSE3dPolygon line = PolygonOf(AwkwardLine(random, round));
        const vek::GridAxis columns{start(random), 0, step(random)}, rows{start(random), 0, step(random)};
        const vek::GridAxis c{columns.first, columns.first + length(random), columns.step}, r{rows.first, rows.first + length(random), rows.step};
        const auto walked = RunsOf(line, c, r, vek::InnerAreaScan::Crossings);
        const auto tested = RunsOf(line, c, r, vek::InnerAreaScan::PointByPoint);
        ASSERT_EQ(walked.size(), tested.size()) << "round " << round;
        for (std::size_t k = 0; k < walked.size(); ++k) {
            ASSERT_EQ(walked[k].first, tested[k].first);
            ASSERT_EQ(walked[k].second.size(), tested[k].second.size()) << "round " << round << ", column " << walked[k].first;
            for (std::size_t i = 0; i < walked[k].second.size(); ++i) {
                EXPECT_EQ(walked[k].second[i].first, tested[k].second[i].first) << "round " << round << ", column " << walked[k].first;
                EXPECT_EQ(walked[k].second[i].end, tested[k].second[i].end) << "round " << round << ", column " << walked[k].first;
            }
        }
    }
}

TEST(RemoveEqualPointsXY, CellsFindTheSameNearDuplicatesAsComparingWithEveryEarlierPoint)
{
    std::mt19937 random(77);
    std::uniform_real_distribution<float> coordinate(-6.0f, 6.0f);
    for (int round = 0; round < 200; ++round) {
        std::vector<Xyz> points(static_cast<std::size_t>(round % 60));
        for (Xyz& p : points) p = {coordinate(random), coordinate(random), coordinate(random)};
        if (round % 5 == 0 && points.size() > 3) points[2].x = std::numeric_limits<float>::quiet_NaN();
        if (round % 7 == 0 && points.size() > 3) points[3] = {1e30f, 1e30f};
        // The rule by hand: a point goes if an earlier one lies within 1,
        // unless the point before it went.
        std::vector<Xyz> kept;
        bool droppedLast = false;
        for (std::size_t j = 0; j < points.size(); ++j) {
            bool near = false;
            for (std::size_t i = 0; i < j; ++i) near = near || std::fabs(points[i].x - points[j].x) + std::fabs(points[i].y - points[j].y) < 1.0f;
            droppedLast = j > 0 && near && !droppedLast;
            if (!droppedLast) kept.push_back(points[j]);
        }
        CSSE3dPolygon line = PolygonOf(points);
        line.RemoveEqualPointsXY();
        const std::vector<Xyz> got = PointsOf(line);
        ASSERT_EQ(got.size(), kept.size()) << "round " << round;
        for (std::size_t i = 0; i < kept.size(); ++i) EXPECT_EQ(std::memcmp(&got[i], &kept[i], sizeof(Xyz)), 0) << "round " << round << ", point " << i;
    }
}

} // namespace
