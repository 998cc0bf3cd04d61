#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "fields/char_field_test_helpers.h"
#include "support/archive_bytes.h"
#include "vekdll/fields/sse_char_matrix.h"

namespace {

using vek::test::AllBytes;
using vek::test::IntAt;
using vek::test::LoadFromBytes;
using vek::test::StoreToBytes;

std::vector<BYTE> Stored(CSSEcharMatrix& m)
{
    return StoreToBytes([&](CArchive& ar) { m.Serialize(ar); });
}

void Load(CSSEcharMatrix& m, const std::vector<BYTE>& bytes)
{
    LoadFromBytes(bytes, [&](CArchive& ar) { m.Serialize(ar); });
}

TEST(CSSEcharMatrixArchive, SizesThenPixelsRowByRowWithoutPadding)
{
    CSSEcharMatrix m(3, 2);
    m.SetPoint(0, 0, 1);
    m.SetPoint(1, 0, 2);
    m.SetPoint(2, 0, -3);
    m.SetPoint(0, 1, 4);
    m.SetPoint(1, 1, 127);
    m.SetPoint(2, 1, -128);
    vek::test::FillBytes(m, [&](int x, int row) { return row < 2 ? m.GetPoint(x, row) : 55; }); // padding is not stored
    const std::vector<BYTE> expected{3, 0, 0, 0, 2, 0, 0, 0, 1, 2, 0xFD, 4, 0x7F, 0x80};
    EXPECT_EQ(Stored(m), expected);

    // Loading the hand-built bytes gives the pixels, with clean padding.
    CSSEcharMatrix loaded(9, 9);
    Load(loaded, expected);
    ASSERT_EQ(loaded.GetSizeX(), 3);
    ASSERT_EQ(loaded.GetSizeY(), 2);
    EXPECT_EQ(loaded.GetPoint(2, 0), -3);
    EXPECT_EQ(loaded.GetPoint(2, 1), -128);
    for (int row = 2; row < 16; ++row) EXPECT_EQ(vek::test::StoredByte(loaded, 1, row), 0);

    // A field without an image is stored as 0 x 0.
    CSSEcharMatrix empty;
    EXPECT_EQ(Stored(empty), (std::vector<BYTE>{0, 0, 0, 0, 0, 0, 0, 0}));
    m.Free();
    EXPECT_EQ(Stored(m).size(), 8u);
}

TEST(CSSEcharMatrixArchive, RoundTripsKeepEveryPixel)
{
    vek::CrtRandom random(3);
    for (auto [sizeX, sizeY] : {std::pair{8, 3}, {1, 16}, {5, 0}, {0, 7}, {33, 70}}) {
        SCOPED_TRACE(testing::Message() << sizeX << " x " << sizeY);
        CSSEcharMatrix m(sizeX, sizeY);
        for (int y = 0; y < sizeY; ++y)
            for (int x = 0; x < sizeX; ++x) m.SetPoint(x, y, static_cast<char>(random.Next() & 0xFF));
        const std::vector<BYTE> bytes = Stored(m);
        ASSERT_EQ(bytes.size(), 8u + static_cast<std::size_t>(sizeX * sizeY));
        EXPECT_EQ(IntAt(bytes, 0), sizeX);
        EXPECT_EQ(IntAt(bytes, 4), sizeY);
        CSSEcharMatrix loaded;
        Load(loaded, bytes);
        EXPECT_EQ(AllBytes(loaded), AllBytes(m));
        EXPECT_EQ(loaded.GetSSESizeY(), m.GetSSESizeY());
    }
}

TEST(CSSEcharMatrixArchive, DamagedArchivesThrowBeforeAllocating)
{
    CSSEcharMatrix m(4, 3);
    m.Clear(7);
    const std::vector<BYTE> good = Stored(m);
    for (std::size_t length = 0; length < good.size(); ++length) {
        CSSEcharMatrix loaded;
        const std::vector<BYTE> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_THROW(Load(loaded, cut), CArchiveException) << length << " bytes";
    }

    // Sizes the stream cannot hold are refused as such, however large.
    const auto header = [](int sizeX, int sizeY) {
        std::vector<BYTE> bytes(8 + 16, 1);
        std::memcpy(bytes.data(), &sizeX, 4);
        std::memcpy(bytes.data() + 4, &sizeY, 4);
        return bytes;
    };
    for (auto [sizeX, sizeY] : {std::pair{-1, 2}, {2, -1}, {5, 5}, {2000000000, 2000000000}, {0x7FFFFFFF, 0},
                                 {0, CSSEcharMatrix::kMaxSizeY + 1}, {100000, 1}}) {
        CSSEcharMatrix loaded;
        try {
            Load(loaded, header(sizeX, sizeY));
            ADD_FAILURE() << sizeX << " x " << sizeY << " was loaded";
        } catch (const CArchiveException& e) {
            EXPECT_EQ(e.m_cause, CArchiveException::badIndex) << sizeX << " x " << sizeY;
        }
        EXPECT_EQ(loaded.GetMatrixDataDirectly(), nullptr);
    }
    // What fits is read, and the rest of the stream is left.
    CSSEcharMatrix fits;
    Load(fits, header(4, 4));
    EXPECT_EQ(fits.GetPoint(3, 3), 1);

    // Random bytes either load a consistent field or throw an archive error.
    vek::CrtRandom random(29);
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<BYTE> bytes(static_cast<std::size_t>(random.Next() % 40));
        for (BYTE& b : bytes) b = static_cast<BYTE>(random.Next());
        // Small sizes in half of the trials, so that some archives are whole.
        if (trial % 2 == 0 && bytes.size() >= 8) {
            const int sizeX = random.Next() % 6;
            const int sizeY = random.Next() % 6;
            std::memcpy(bytes.data(), &sizeX, 4);
            std::memcpy(bytes.data() + 4, &sizeY, 4);
        }
        CSSEcharMatrix loaded;
        try {
            Load(loaded, bytes);
            ASSERT_LE(8u + static_cast<std::size_t>(loaded.GetSizeX()) * static_cast<std::size_t>(loaded.GetSizeY()), bytes.size());
        } catch (const CArchiveException&) {
        }
    }
}

} // namespace
