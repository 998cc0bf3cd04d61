#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "polygon_builders.h"
#include "support/archive_bytes.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::test::Fill;
using vek::test::FloatAt;
using vek::test::IntAt;
using vek::test::LoadFromBytes;
using vek::test::PointOf;
using vek::test::StoreToBytes;
using vek::test::Xyz;

namespace {

template <class T>
void Append(std::vector<BYTE>& bytes, T value)
{
    const std::size_t at = bytes.size();
    bytes.resize(at + sizeof value);
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

// An archive of the given count followed by the given floats.
std::vector<BYTE> Archive(int count, const std::vector<float>& floats)
{
    std::vector<BYTE> bytes;
    Append(bytes, count);
    for (float f : floats) Append(bytes, f);
    return bytes;
}

std::vector<BYTE> Store(CSSE3dPolygon& polygon)
{
    return StoreToBytes([&](CArchive& ar) { polygon.Serialize(ar); });
}

void Load(CSSE3dPolygon& polygon, const std::vector<BYTE>& bytes)
{
    LoadFromBytes(bytes, [&](CArchive& ar) { polygon.Serialize(ar); });
}

TEST(CSSE3dPolygonArchive, StoresCountThenXYZOfEachBlockOfFour)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}, {13, 14, 15}});
    t_resolutiondata resolution{2, 2, 2};
    polygon.NormalizeXYZ(resolution); // not stored
    polygon.CalcBoundingBox();        // not stored

    const std::vector<BYTE> bytes = Store(polygon);
    const std::vector<BYTE> expected = Archive(5, {1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12, //
                                                   13, 0, 0, 0, 14, 0, 0, 0, 15, 0, 0, 0});
    ASSERT_EQ(bytes.size(), 4u + 48 * 2);
    EXPECT_EQ(IntAt(bytes, 0), 5);
    EXPECT_EQ(FloatAt(bytes, 4 + 16), 2.0f) << "y of point 0 follows the four x of block 0";
    EXPECT_EQ(FloatAt(bytes, 4 + 48 + 32), 15.0f);
    // The lanes behind the last point carry no meaning; they are written as zeros.
    EXPECT_EQ(bytes, expected);

    CSSE3dPolygon empty;
    EXPECT_EQ(Store(empty), Archive(0, {}));
}

TEST(CSSE3dPolygonArchive, LoadingDoublesThePointBeforeTheLast)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{7, 7, 7}});
    polygon.CalcBoundingBox();
    Load(polygon, Archive(3, {0, 1, 2, 99, 0, 0, 0, 99, 0, 0, 0, 99}));
    ASSERT_EQ(polygon.GetNumPoints(), 3);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{0, 0, 0}));
    EXPECT_EQ(PointOf(polygon, 1), (Xyz{1, 0, 0}));
    EXPECT_EQ(PointOf(polygon, 2), (Xyz{1, 0, 0}));
    EXPECT_FALSE(polygon.IsBoundingBoxCalculated());

    // A store and a load lose the last point the same way.
    CSSE3dPolygon source;
    Fill(source, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}, {13, 14, 15}});
    Load(polygon, Store(source));
    ASSERT_EQ(polygon.GetNumPoints(), 5);
    EXPECT_EQ(PointOf(polygon, 3), (Xyz{10, 11, 12}));
    EXPECT_EQ(PointOf(polygon, 4), (Xyz{10, 11, 12}));

    // A single point has nothing before it and stays as read.
    Load(polygon, Archive(1, {5, 0, 0, 0, 6, 0, 0, 0, 7, 0, 0, 0}));
    ASSERT_EQ(polygon.GetNumPoints(), 1);
    EXPECT_EQ(PointOf(polygon, 0), (Xyz{5, 6, 7}));

    Load(polygon, Archive(0, {}));
    EXPECT_EQ(polygon.GetNumPoints(), 0);
}

void ExpectRefused(const std::vector<BYTE>& bytes, const char* what)
{
    CSSE3dPolygon polygon;
    Fill(polygon, {{1, 1, 1}});
    try {
        Load(polygon, bytes);
        ADD_FAILURE() << what << ": loaded";
    } catch (const CArchiveException&) {
    }
}

TEST(CSSE3dPolygonArchive, ImpossibleCountsAreRefusedBeforeAllocating)
{
    std::vector<BYTE> bytes = Archive(1 << 30, std::vector<float>(9, 0.0f)); // 40 bytes
    ASSERT_EQ(bytes.size(), 40u);
    CSSE3dPolygon polygon;
    try {
        Load(polygon, bytes);
        FAIL() << "a count of 2^30 points in 40 bytes was accepted";
    } catch (const CArchiveException& e) {
        EXPECT_EQ(e.m_cause, CArchiveException::badIndex);
    }
    EXPECT_EQ(polygon.GetNumPoints(), 0);

    ExpectRefused(Archive(-1, {}), "negative count");
    ExpectRefused(Archive(0x7FFFFFFF, std::vector<float>(12, 0.0f)), "largest int");
}

TEST(CSSE3dPolygonArchive, TruncatedAndRandomArchivesThrowOrLoad)
{
    CSSE3dPolygon source;
    Fill(source, vek::test::Row(9));
    const std::vector<BYTE> whole = Store(source);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        ExpectRefused(std::vector<BYTE>(whole.begin(), whole.begin() + static_cast<long>(size)), "truncated");
    }

    // Random bytes either load (a count that fits the rest) or throw; they
    // never read past the stream.
    std::mt19937 random(7);
    int loaded = 0;
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<BYTE> bytes(random() % 120);
        for (BYTE& b : bytes) b = static_cast<BYTE>(random());
        // Small counts now and then, so that some archives are whole.
        if (bytes.size() >= 4 && trial % 3 == 0) {
            const int count = static_cast<int>(random() % 4);
            std::memcpy(bytes.data(), &count, sizeof count);
        }
        CSSE3dPolygon polygon;
        try {
            Load(polygon, bytes);
            ++loaded;
            EXPECT_LE(4u + 48 * ((polygon.GetNumPoints() + 3u) / 4), bytes.size());
        } catch (const CArchiveException&) {
        }
    }
    EXPECT_GT(loaded, 0);
}

} // namespace
