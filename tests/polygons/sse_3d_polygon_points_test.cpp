#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "polygon_builders.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::PointOf;
using vek::test::Xyz;

namespace {

SSEPoint Marked()
{
    SSEPoint p;
    p.sse = _mm_setr_ps(-9, -9, -9, -9);
    return p;
}

TEST(CSSE3dPolygonPoints, ReadsOutOfRangeLeaveOutputsOrZeroThem)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 2, 3}, {4, 5, 6}});
    t_resolutiondata resolution{1, 1, 1};
    polygon.NormalizeXYZ(resolution);

    for (int i : {-1, 2}) {
        float a = -9, b = -9, c = -9;
        polygon.GetPoint(i, a, b, c);
        polygon.GetPointX(i, a);
        polygon.GetPointXY(i, a, b);
        polygon.GetPointZY(i, a, b);
        polygon.GetPointNormalized(i, a, b, c);
        EXPECT_EQ(a, -9);
        EXPECT_EQ(b, -9);
        EXPECT_EQ(c, -9);

        SSEPoint p = Marked();
        polygon.GetPointNormalizedSSE(i, p);
        EXPECT_EQ(p.x, -9) << "normalised SSE read keeps its output out of range";

        for (auto read : {&CSSE3dPolygon::GetPointSSE, &CSSE3dPolygon::GetPointXYSSE,
                          &CSSE3dPolygon::GetPointNormalizedXYSSE}) {
            p = Marked();
            (polygon.*read)(i, p);
            for (int lane = 0; lane < 4; ++lane) EXPECT_EQ(p.lane[lane], 0.0f);
        }
    }
}

TEST(CSSE3dPolygonPoints, ReadsPutEachCoordinateInItsPlace)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 2, 3}, {4, 5, 6}});
    float a = 0, b = 0;
    polygon.GetPointZY(1, a, b);
    EXPECT_EQ(a, 6);
    EXPECT_EQ(b, 5);
    polygon.GetPointXZ(1, a, b);
    EXPECT_EQ(a, 4);
    EXPECT_EQ(b, 6);

    SSEPoint p = Marked();
    polygon.GetPointSSE(1, p);
    EXPECT_EQ(p.z, 6);
    EXPECT_EQ(p.w, 0);
    polygon.GetPointXYSSE(1, p);
    EXPECT_EQ(p.y, 5);
    EXPECT_EQ(p.z, 0);

    polygon.SetPointNormalized(0, 7, 8, 9);
    p = Marked();
    polygon.GetPointNormalizedSSE(0, p);
    EXPECT_EQ(p.z, 9);
    EXPECT_EQ(p.w, -9) << "lane 3 of a normalised read is left alone";
}

TEST(CSSE3dPolygonPoints, ClosedReadWrapsForwardOnly)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
    SSEPoint p;
    polygon.GetPointSSEClosed(3, p);
    EXPECT_EQ(p.x, 1);
    polygon.GetPointSSEClosed(7, p);
    EXPECT_EQ(p.x, 2);
    p = Marked();
    polygon.GetPointSSEClosed(-1, p);
    EXPECT_EQ(p.x, 0);
    EXPECT_EQ(p.w, 0);

    CSSE3dPolygon empty;
    p = Marked();
    empty.GetPointSSEClosed(0, p);
    EXPECT_EQ(p.x, 0);
}

TEST(CSSE3dPolygonPoints, EveryWriteInRangeClearsTheBoxFlagAndNoneOutside)
{
    SSEPoint q = vek::test::Sse(7, 8, 9);
    const std::vector<std::pair<std::string, std::function<void(CSSE3dPolygon&, int)>>> writes = {
        {"SetPoint", [](CSSE3dPolygon& p, int i) { p.SetPoint(i, 7, 8, 9); }},
        {"SetPointSSE", [&](CSSE3dPolygon& p, int i) { p.SetPointSSE(i, q); }},
        {"SetPointX", [](CSSE3dPolygon& p, int i) { p.SetPointX(i, 7); }},
        {"SetPointY", [](CSSE3dPolygon& p, int i) { p.SetPointY(i, 8); }},
        {"SetPointZ", [](CSSE3dPolygon& p, int i) { p.SetPointZ(i, 9); }},
        {"SetPointXY", [](CSSE3dPolygon& p, int i) { p.SetPointXY(i, 7, 8); }},
        {"SetPointXZ", [](CSSE3dPolygon& p, int i) { p.SetPointXZ(i, 7, 9); }},
        {"SetPointZY", [](CSSE3dPolygon& p, int i) { p.SetPointZY(i, 9, 8); }},
        {"SetPointNormalized", [](CSSE3dPolygon& p, int i) { p.SetPointNormalized(i, 7, 8, 9); }},
        {"SetPointNormalizedSSE", [&](CSSE3dPolygon& p, int i) { p.SetPointNormalizedSSE(i, q); }},
    };
    for (const auto& [name, write] : writes) {
        CSSE3dPolygon polygon;
        Fill(polygon, {{1, 2, 3}, {4, 5, 6}});
        polygon.CalcBoundingBox();
        write(polygon, -1);
        write(polygon, 2);
        EXPECT_TRUE(polygon.IsBoundingBoxCalculated()) << name;
        EXPECT_EQ(PointOf(polygon, 1), (Xyz{4, 5, 6})) << name;
        write(polygon, 1);
        EXPECT_FALSE(polygon.IsBoundingBoxCalculated()) << name;
    }

    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 2, 3}});
    polygon.SetPointZY(0, 30, 20);
    polygon.SetPointXZ(0, 10, 31);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{10, 20, 31}));
}

TEST(CSSE3dPolygonPoints, WholePolygonWritesAndTheirFlagRules)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 2, 3}, {4, 5, 6}});
    polygon.AddValueToAllXValues(0.5f);
    polygon.AddValueToAllYValues(-1);
    polygon.SetAllZValues(7);
    EXPECT_EQ(PointOf(polygon, 1), (Xyz{4.5f, 4, 7}));
    polygon.SetAllYValues(3);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{1.5f, 3, 7}));

    // On an empty polygon only SetAllYValues leaves the flag alone.
    CSSE3dPolygon empty;
    empty.CalcBoundingBox();
    empty.SetAllYValues(1);
    EXPECT_TRUE(empty.IsBoundingBoxCalculated());
    empty.SetAllZValues(1);
    EXPECT_FALSE(empty.IsBoundingBoxCalculated());
    empty.CalcBoundingBox();
    empty.AddValueToAllXValues(1);
    EXPECT_FALSE(empty.IsBoundingBoxCalculated());
    empty.CalcBoundingBox();
    empty.AddValueToAllYValues(1);
    EXPECT_FALSE(empty.IsBoundingBoxCalculated());
}

TEST(CSSE3dPolygonPoints, NormalizeScalesEachAxisAndLeavesTheFlag)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {1, 1, 1}, {-2, 0.5f, 10}});
    polygon.CalcBoundingBox();
    t_resolutiondata resolution{0.5f, 2, -3};
    polygon.NormalizeXYZ(resolution);
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
    float x = 0, y = 0, z = 0;
    polygon.GetPointNormalized(4, x, y, z);
    EXPECT_EQ(x, -1.0f);
    EXPECT_EQ(y, 1.0f);
    EXPECT_EQ(z, -30.0f);
    polygon.GetPointNormalizedXY(1, x, y);
    EXPECT_EQ(x, 2.0f);
    EXPECT_EQ(y, 10.0f);
    // The plain coordinates stay.
    EXPECT_EQ(PointOf(polygon, 4), (Xyz{-2, 0.5f, 10}));
}

} // namespace
