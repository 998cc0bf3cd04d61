#include <gtest/gtest.h>

#include <random>
#include <tuple>

#include "support/polygon_points.h"
#include "support/archive_bytes.h"
#include "support/unowned_alias.h"
#include "vekdll/pixelchains/pixel_chain.h"

using namespace vek::test;

namespace {

TEST(CSSE3dPolygonLife, CreateAndFreeKeepTheBoxBlockAndTheirFlagRules)
{
    CSSE3dPolygon polygon;
    polygon.Create(-3); // a negative count makes an empty polygon
    polygon.CalcBoundingBox();
    polygon.Free(); // of an empty polygon keeps the flag
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
    Fill(polygon, {{1, 2, 3}, {4, 5, 6}});
    polygon.CalcBoundingBox();
    polygon.CalcGeometricCenter();
    polygon.Free();
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());
    polygon.Create(7); // the box points outlive Free and Create
    SSEPoint centre;
    polygon.GetGeometricCenter(centre);
    EXPECT_EQ((std::array{Lanes(polygon.GetBottomLeft()), Lanes(polygon.GetTopRight()), Lanes(centre)}),
              (std::array<Lanes4, 3>{{{1, 2, 3, 0}, {4, 5, 6, 0}, {2.5f, 3.5f, 4.5f, 0}}}));

    CPixelChain chain; // one point per `step` pixels: 10 / 3 points, pixel 9 never reached
    for (int i = 0; i < 10; ++i) chain.AddPixel(i, 100 + i);
    EXPECT_EQ(PointsOf(CSSE3dPolygon(chain, 3)), (std::vector<Xyz>{{0, 100, 0}, {3, 103, 0}, {6, 106, 0}}));
}

// A polygon along the x axis with its box: TopRight (n - 1, 0, 0).
CSSE3dPolygon Line(int n)
{
    CSSE3dPolygon line = PolygonOf(Row(n));
    line.CalcBoundingBox();
    return line;
}

TEST(CSSE3dPolygonLife, CopiesAreDeepAndAssignmentShares)
{
    CSSE3dPolygon source = PolygonOf({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    t_resolutiondata resolution{2, 3, 4};
    source.NormalizeXYZ(resolution);
    source.CalcBoundingBox();
    // The copy constructor takes the normalised copy and the box points, but leaves the box stale.
    CSSE3dPolygon copy(source);
    SSEPoint normalized;
    copy.GetPointNormalizedSSE(2, normalized);
    EXPECT_EQ(std::tuple(copy.IsBoundingBoxCalculated(), Lanes(copy.GetTopRight()), normalized.z), std::tuple(false, Lanes4{7, 8, 9, 0}, 36.0f));
    // CreateSimilar takes the flag as it is; from itself it changes nothing.
    CSSE3dPolygon similar = Line(9);
    similar.CreateSimilar(&source);
    similar.CreateSimilar(&similar);
    EXPECT_TRUE(similar.IsBoundingBoxCalculated());
    source.SetPoint(0, -1, -1, -1);
    EXPECT_EQ(std::pair(PointOf(copy, 0), PointOf(similar, 0)), std::pair(Xyz{1, 2, 3}, Xyz{1, 2, 3}));

    CSSE3dPolygon alias;
    WithOwnBytesKept(alias, [&] {
        alias = source;
        alias.SetPoint(1, 50, 6, 7);
        alias.CalcBoundingBox();
        // One set of points and one box block, but the flag is a copied value.
        EXPECT_EQ(std::pair(source.GetTopRight().x, source.IsBoundingBoxCalculated()), std::pair(50.0f, false));
    });
}

// Under AddressSanitizer a read of points or box released by the wrong party
// would report, and so would a second release at the end.
TEST(CSSE3dPolygonLife, MovesReleaseNothingTheTargetSharedAndLeaveTheSourceANewPolygon)
{
    const CSSE3dPolygon source = Line(5);
    // Handed on by assignment, then given another polygon: points and box stay
    // the source's. The target's own box block went with the assignment, so
    // the test keeps it aside.
    CSSE3dPolygon target;
    WithOwnBytesKeptAndTakenReleased(target, [&] {
        target = source;
        target = Line(3);
        EXPECT_EQ(std::pair(PointsOf(target), Lanes(target.GetTopRight())), std::pair(Row(3), Lanes4{2, 0, 0, 0}));
    });
    EXPECT_EQ(std::tuple(PointsOf(source), Lanes(source.GetTopRight()), source.IsBoundingBoxCalculated()), std::tuple(Row(5), Lanes4{4, 0, 0, 0}, true));

    // Moved from, a polygon is a new one: no points, a zeroed box block of its
    // own to compute, copy and release.
    CSSE3dPolygon made = Line(4);
    CSSE3dPolygon moved(std::move(made));
    WithOwnBytesKeptAndTakenReleased(target, [&] {
        target = std::move(moved);
        CSSE3dPolygon& same = target;
        target = std::move(same); // onto itself: nothing changes
        EXPECT_EQ(std::pair(PointsOf(target), Lanes(target.GetTopRight())), std::pair(Row(4), Lanes4{3, 0, 0, 0}));
    });
    for (CSSE3dPolygon* emptied : {&made, &moved}) {
        EXPECT_EQ(std::tuple(emptied->GetNumPoints(), emptied->IsBoundingBoxCalculated(), Lanes(emptied->GetTopRight())), std::tuple(0, false, Lanes4{}));
        Fill(*emptied, {{1, 2, 3}});
        emptied->CalcBoundingBox();
        const CSSE3dPolygon copy(*emptied);
        EXPECT_EQ(Lanes(copy.GetTopRight()), (Lanes4{1, 2, 3, 0}));
    }
}

TEST(CSSE3dPolygonPoints, OutOfRangeReadsLeaveOrZeroAndOnlyWritesThatTakeEffectClearTheFlag)
{
    CSSE3dPolygon polygon = PolygonOf({{1, 2, 3}, {4, 5, 6}});
    polygon.CalcBoundingBox();
    for (int i : {-1, 2}) {
        SSEPoint whole = Sse(-9, -9, -9, -9), normalized = whole;
        polygon.GetPointSSE(i, whole); // the forms that fill an SSEPoint whole zero it first
        polygon.GetPointNormalizedSSE(i, normalized);
        EXPECT_EQ(std::tuple(Lanes(whole), Lanes(normalized), PointOf(polygon, i)), std::tuple(Lanes4{}, Lanes4{-9, -9, -9, -9}, Xyz{-7, -7, -7}));
        polygon.SetPointZY(i, 0, 0);
        polygon.SetPointNormalized(i, 0, 0, 0);
    }
    EXPECT_TRUE(polygon.IsBoundingBoxCalculated());
    polygon.SetPointZY(0, 9, 8);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{1, 8, 9}));
    polygon.CalcBoundingBox();
    polygon.SetPointNormalized(1, 7, 8, 9); // a write to the normalised copy marks the box stale too
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());
    SSEPoint normalized = Sse(-9, -9, -9, -9);
    polygon.GetPointNormalizedSSE(1, normalized);
    EXPECT_EQ(Lanes(normalized), (Lanes4{7, 8, 9, -9})) << "lane 3 is left alone";
    for (auto [i, expected] : {std::pair{2, Lanes4{1, 8, 9, 0}}, {-1, Lanes4{0, 0, 0, 0}}}) {
        polygon.GetPointSSEClosed(i, normalized); // wraps forward only
        EXPECT_EQ(Lanes(normalized), expected) << "closed read of " << i;
    }
    // Of the whole-polygon writes only SetAllYValues leaves the flag of an empty polygon alone.
    for (auto [write, flagStays] : {std::pair<void (*)(CSSE3dPolygon&), bool>{[](CSSE3dPolygon& p) { p.SetAllYValues(3); }, true},
                                    {[](CSSE3dPolygon& p) { p.SetAllZValues(7); }, false},
                                    {[](CSSE3dPolygon& p) { p.AddValueToAllXValues(0.5f); }, false},
                                    {[](CSSE3dPolygon& p) { p.AddValueToAllYValues(-1); }, false}}) {
        CSSE3dPolygon empty;
        empty.CalcBoundingBox();
        write(empty);
        EXPECT_EQ(empty.IsBoundingBoxCalculated(), flagStays);
        write(polygon);
    }
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{1.5f, 2, 7}, {4.5f, 2, 7}}));
}

using Floats = std::vector<float>;

TEST(CSSE3dPolygonArchive, StoresCountThenXYZOfEachBlockOfFourAndLoadingDoublesThePointBeforeTheLast)
{
    CSSE3dPolygon polygon = PolygonOf({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}, {13, 14, 15}});
    t_resolutiondata resolution{2, 2, 2};
    polygon.NormalizeXYZ(resolution); // neither the normalised copy nor the box is stored
    polygon.CalcBoundingBox();
    // The lanes behind the last point carry no meaning; they are written as zeros.
    const std::vector<BYTE> bytes = SerializeToBytes(polygon);
    EXPECT_EQ(bytes, BytesOf(5, Floats{1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12, 13, 0, 0, 0, 14, 0, 0, 0, 15, 0, 0, 0}));

    SerializeFromBytes(polygon, bytes);
    EXPECT_EQ(std::pair(PointsOf(polygon), polygon.IsBoundingBoxCalculated()),
              std::pair(std::vector<Xyz>{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}, {10, 11, 12}}, false));
    // A single point has nothing before it and stays as read.
    SerializeFromBytes(polygon, BytesOf(1, Floats{5, 0, 0, 0, 6, 0, 0, 0, 7, 0, 0, 0}));
    EXPECT_EQ(PointsOf(polygon), (std::vector<Xyz>{{5, 6, 7}}));
    polygon.Free();
    EXPECT_EQ(SerializeToBytes(polygon), BytesOf(0));
}

// The cause of the refusal, or none if the bytes loaded.
int Refused(const std::vector<BYTE>& bytes)
{
    CSSE3dPolygon polygon;
    const int cause = LoadFailureCause(polygon, bytes);
    EXPECT_TRUE(cause != CArchiveException::none || 4u + 48 * ((polygon.GetNumPoints() + 3u) / 4) <= bytes.size()) << "loaded more than the stream holds";
    return cause;
}

TEST(CSSE3dPolygonArchive, ImpossibleTruncatedAndRandomArchivesThrowOrLoad)
{
    // 2^30 points in 40 bytes are refused before anything is allocated.
    for (const auto& bytes : {BytesOf(1 << 30, Floats(9)), BytesOf(-1), BytesOf(0x7FFFFFFF, Floats(12))}) {
        EXPECT_EQ(Refused(bytes), CArchiveException::badIndex) << bytes.size() << " bytes";
    }

    CSSE3dPolygon source = PolygonOf(Row(9));
    const std::vector<BYTE> whole = SerializeToBytes(source);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_NE(Refused(std::vector<BYTE>(whole.begin(), whole.begin() + static_cast<long>(size))), CArchiveException::none) << size;
    }
    // Random bytes, with a small count now and then so that some archives are whole.
    std::mt19937 random(7);
    int loaded = 0;
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<BYTE> bytes(random() % 120);
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = i < 4 && trial % 3 == 0 ? (i == 0 ? random() % 4 : 0) : static_cast<BYTE>(random());
        loaded += Refused(bytes) == CArchiveException::none ? 1 : 0;
    }
    EXPECT_GT(loaded, 0);
}

} // namespace
