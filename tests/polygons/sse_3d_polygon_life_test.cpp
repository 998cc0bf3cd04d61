#include <gtest/gtest.h>

#include <cstring>

#include "polygon_builders.h"
#include "vekdll/pixelchains/pixel_chain.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::PointOf;
using vek::test::Xyz;

namespace {

void ExpectSamePoint(const SSEPoint& a, const SSEPoint& b)
{
    for (int lane = 0; lane < 4; ++lane) EXPECT_EQ(a.lane[lane], b.lane[lane]) << "lane " << lane;
}

TEST(CSSE3dPolygonLife, CreateAndFreeMoveBetweenEmptyAndCreated)
{
    CSSE3dPolygon polygon;
    EXPECT_EQ(polygon.GetNumPoints(), 0);
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());
    ExpectSamePoint(polygon.GetTopRight(), vek::test::Sse(0, 0, 0));

    polygon.Create(5);
    EXPECT_EQ(polygon.GetNumPoints(), 5);
    polygon.SetPoint(4, 1, 2, 3);
    EXPECT_EQ(PointOf(polygon, 4), (Xyz{1, 2, 3}));

    polygon.Free();
    EXPECT_EQ(polygon.GetNumPoints(), 0);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{-7, -7, -7}));

    // A negative count makes an empty polygon.
    polygon.Create(-3);
    EXPECT_EQ(polygon.GetNumPoints(), 0);
}

TEST(CSSE3dPolygonLife, FreeOfAnEmptyPolygonKeepsTheBoxFlag)
{
    CSSE3dPolygon polygon;
    polygon.Create(0);
    polygon.CalcBoundingBox();
    polygon.Free();
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());

    Fill(polygon, {{1, 1, 1}});
    polygon.CalcBoundingBox();
    polygon.Free();
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());
}

TEST(CSSE3dPolygonLife, BoxPointsOutliveCreateAndFree)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 2, 3}, {4, 5, 6}});
    polygon.CalcBoundingBox();
    polygon.CalcGeometricCenter();
    polygon.Free();
    polygon.Create(7);
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());
    ExpectSamePoint(polygon.GetTopRight(), vek::test::Sse(4, 5, 6));
    ExpectSamePoint(polygon.GetBottomLeft(), vek::test::Sse(1, 2, 3));
    SSEPoint centre;
    polygon.GetGeometricCenter(centre);
    ExpectSamePoint(centre, vek::test::Sse(2.5f, 3.5f, 4.5f));
}

TEST(CSSE3dPolygonLife, CopyConstructorCopiesDeeplyAndLeavesTheBoxStale)
{
    CSSE3dPolygon source;
    Fill(source, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    t_resolutiondata resolution{2, 3, 4};
    source.NormalizeXYZ(resolution);
    source.CalcBoundingBox();

    CSSE3dPolygon copy(source);
    EXPECT_EQ(copy.GetNumPoints(), 3);
    EXPECT_FALSE(copy.IsBoundingBoxCalculated());
    ExpectSamePoint(copy.GetTopRight(), source.GetTopRight());
    ExpectSamePoint(copy.GetBottomLeft(), source.GetBottomLeft());
    float nx = 0, ny = 0, nz = 0;
    copy.GetPointNormalized(2, nx, ny, nz);
    EXPECT_EQ(nx, 14.0f);
    EXPECT_EQ(ny, 24.0f);
    EXPECT_EQ(nz, 36.0f);

    source.SetPoint(0, -1, -1, -1);
    source.CalcBoundingBox();
    EXPECT_EQ(PointOf(copy, 0), (Xyz{1, 2, 3}));
    EXPECT_EQ(copy.GetBottomLeft().x, 1.0f);

    CSSE3dPolygon empty;
    CSSE3dPolygon emptyCopy(empty);
    EXPECT_EQ(emptyCopy.GetNumPoints(), 0);
}

TEST(CSSE3dPolygonLife, CreateSimilarCopiesPointsBoxAndFlag)
{
    CSSE3dPolygon source;
    Fill(source, {{1, 2, 3}, {-4, 5, 0}});
    source.CalcBoundingBox();

    CSSE3dPolygon target;
    Fill(target, vek::test::Row(9));
    target.CreateSimilar(&source);
    EXPECT_EQ(target.GetNumPoints(), 2);
    EXPECT_EQ(PointOf(target, 1), (Xyz{-4, 5, 0}));
    EXPECT_TRUE(target.IsBoundingBoxCalculated());
    ExpectSamePoint(target.GetBottomLeft(), vek::test::Sse(-4, 2, 0));

    source.SetPoint(1, 0, 0, 0); // clears the source's flag
    target.CreateSimilar(&source);
    EXPECT_FALSE(target.IsBoundingBoxCalculated());
    // The box points come along as they are, stale or not.
    ExpectSamePoint(target.GetBottomLeft(), vek::test::Sse(-4, 2, 0));

    source.SetPoint(0, 9, 9, 9);
    EXPECT_EQ(PointOf(target, 0), (Xyz{1, 2, 3}));

    target.CreateSimilar(&target);
    EXPECT_EQ(PointOf(target, 1), (Xyz{0, 0, 0}));
}

TEST(CSSE3dPolygonLife, AssignmentSharesArraysAndBoxBlock)
{
    CSSE3dPolygon source;
    Fill(source, {{1, 1, 1}, {2, 2, 2}});

    CSSE3dPolygon alias;
    // The assignment leaves the target's own box block without an owner and
    // makes the two objects release the same arrays. The test keeps the
    // target's bytes and hands them back before the target is destroyed.
    alignas(CSSE3dPolygon) unsigned char own[sizeof(CSSE3dPolygon)];
    std::memcpy(own, static_cast<void*>(&alias), sizeof own);

    alias = source;
    EXPECT_EQ(alias.GetNumPoints(), 2);
    alias.SetPoint(0, 5, 6, 7);
    EXPECT_EQ(PointOf(source, 0), (Xyz{5, 6, 7}));
    alias.CalcBoundingBox();
    EXPECT_EQ(source.GetTopRight().x, 5.0f);
    EXPECT_FALSE(source.IsBoundingBoxCalculated()); // the flag itself is a copied value

    std::memcpy(static_cast<void*>(&alias), own, sizeof own);
}

TEST(CSSE3dPolygonLife, PixelChainGivesOnePointPerStepPixels)
{
    CPixelChain chain;
    for (int i = 0; i < 10; ++i) chain.AddPixel(i, 100 + i);

    for (int step : {-1, 0, 1}) {
        CSSE3dPolygon all(chain, step);
        ASSERT_EQ(all.GetNumPoints(), 10) << "step " << step;
        EXPECT_EQ(PointOf(all, 9), (Xyz{9, 109, 0}));
    }

    CSSE3dPolygon third(chain, 3); // 10 / 3 = 3 points: pixels 0, 3, 6, never 9
    ASSERT_EQ(third.GetNumPoints(), 3);
    EXPECT_EQ(PointOf(third, 0), (Xyz{0, 100, 0}));
    EXPECT_EQ(PointOf(third, 1), (Xyz{3, 103, 0}));
    EXPECT_EQ(PointOf(third, 2), (Xyz{6, 106, 0}));

    CSSE3dPolygon tooLong(chain, 11);
    EXPECT_EQ(tooLong.GetNumPoints(), 0);

    CPixelChain empty;
    CSSE3dPolygon none(empty, 1);
    EXPECT_EQ(none.GetNumPoints(), 0);

    int x = -5, y = -5;
    chain.GetPixel(10, x, y);
    EXPECT_EQ(x, -5);
    EXPECT_EQ(y, -5);
}

} // namespace
