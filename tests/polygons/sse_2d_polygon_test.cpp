#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <utility>

#include "support/polygon_points.h"
#include "support/unowned_alias.h"

using namespace vek::test;

namespace {

TEST(CSSE2dPolygon, AssignmentSharesMovesHandOverAndFreeKeepsTheCountButDropsThePoints)
{
    CSSE2dPolygon polygon;
    Fill(polygon, {{0, 0}, {1, 1}, {2, 2}});
    UnownedAlias<CSSE2dPolygon> alias; // only `polygon` releases the arrays
    *alias = polygon;
    alias->SetPoint(1, 42, 43);
    {
        // Handed on by assignment, then given another polygon: a move releases
        // nothing the target held, so the points stay `polygon`'s
        // (AddressSanitizer checks the reads below).
        CSSE2dPolygon shared;
        shared = polygon;
        shared = CSSE2dPolygon();
        EXPECT_EQ(shared.GetNumPoints(), 0);
    }
    // Moved on, the points leave empty polygons behind that take points again.
    CSSE2dPolygon moved(std::move(polygon)), target;
    target = std::move(moved);
    EXPECT_EQ(std::pair(polygon.GetNumPoints(), moved.GetNumPoints()), std::pair(0, 0));
    Fill(moved, {{5, 6}});
    t_h2dpoint refilled{-1, -1};
    moved.GetPoint(0, refilled);
    EXPECT_EQ(std::pair(refilled.x, refilled.y), std::pair(5.0f, 6.0f));
    t_h2dpoint p{-1, -1};
    target.GetPoint(1, p);
    EXPECT_EQ(std::pair(p.x, p.y), std::pair(42.0f, 43.0f));

    target.Free();
    EXPECT_EQ(target.GetNumPoints(), 3);
    target.GetPoint(2, p);
    EXPECT_EQ(std::pair(p.x, p.y), std::pair(42.0f, 43.0f)) << "nothing is read after Free";
    EXPECT_EQ(std::tuple(target.ClosestPointX(0), target.CalcArea(), target.GetMinEuclDistance(0, 0)), std::tuple(-1, 0.0f, 1000000.0f));
}

TEST(CSSE2dPolygon, AreaIsTheKeptFormulaAndNearestPointsAndDistancesThoseOfTheSpatialPolygon)
{
    // With L the last point and M the one before:
    // t1 = (x0 - xL)(x1 - yL) - (y0 - yL)(x1 - yL), t2 = (xL - xM)(x1 - yM) - (yL - yM)(x1 - yM).
    // Here t1 = (1-6)(3-11) - (2-11)(3-11) = -32, t2 = (6-4)(3-7) - (11-7)(3-7) = 8.
    CSSE2dPolygon polygon;
    Fill(polygon, {{1, 2}, {3, 5}, {4, 7}, {6, 11}});
    EXPECT_EQ(polygon.CalcArea(), -24.0f);
    // Nearest points among the even indices before the last; the scan over
    // whole blocks (x = 0 .. 3 here) counts the x difference twice and reads no y.
    Fill(polygon, {{0, 100}, {1, 99}, {2, 98}, {3, 97}, {4, 96}, {5, 95}, {6, 94}});
    EXPECT_EQ(std::pair(polygon.ClosestPointX(5), polygon.ClosestPointY(99.5f)), std::pair(4, 0));
    const float d7 = 7.0f;
    EXPECT_EQ(polygon.GetMinEuclDistance(10, 1000), std::sqrt(d7 * d7 + d7 * d7));
}

} // namespace
