#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "fields/field_storage.h"
#include "support/archive_bytes.h"
#include "vekdll/fields/sse_char_matrix.h"

namespace {

using vek::test::AllStored;
using vek::test::SerializeFromBytes;
using vek::test::SerializeToBytes;

TEST(CSSEcharMatrixArchive, SizesThenPixelsRowByRowWithoutPadding)
{
    CSSEcharMatrix m(3, 2);
    const int pixels[2][3] = {{1, 2, -3}, {4, 127, -128}};
    vek::test::FillStorage(m, [&](int x, int row) { return row < 2 ? pixels[row][x] : 55; }); // padding is not stored
    const std::vector<BYTE> expected{3, 0, 0, 0, 2, 0, 0, 0, 1, 2, 0xFD, 4, 0x7F, 0x80};
    EXPECT_EQ(SerializeToBytes(m), expected);

    // Loading the hand-built bytes gives the pixels, with clean padding.
    CSSEcharMatrix loaded(9, 9);
    SerializeFromBytes(loaded, expected);
    ASSERT_EQ(loaded.GetSizeX(), 3);
    std::vector<int> want{1, 2, -3, 4, 127, -128};
    want.resize(3 * 16);
    EXPECT_EQ(AllStored(loaded), want);

    // A field without an image is stored as 0 x 0.
    m.Free();
    EXPECT_EQ(SerializeToBytes(m), (std::vector<BYTE>{0, 0, 0, 0, 0, 0, 0, 0}));

    // Round trips of random pixels, over more than one block of lines too.
    vek::CrtRandom random(3);
    for (const auto& [sizeX, sizeY] : {std::pair{1, 16}, {5, 0}, {0, 7}, {33, 600}}) {
        SCOPED_TRACE(testing::Message() << sizeX << " x " << sizeY);
        CSSEcharMatrix field(sizeX, sizeY);
        for (int y = 0; y < sizeY; ++y)
            for (int x = 0; x < sizeX; ++x) field.SetPoint(x, y, static_cast<char>(random.Next() & 0xFF));
        const std::vector<BYTE> bytes = SerializeToBytes(field);
        ASSERT_EQ(bytes.size(), 8u + static_cast<std::size_t>(sizeX * sizeY));
        CSSEcharMatrix back;
        SerializeFromBytes(back, bytes);
        EXPECT_EQ(AllStored(back), AllStored(field));
    }
}

TEST(CSSEcharMatrixArchive, DamagedArchivesThrowBeforeAllocating)
{
    CSSEcharMatrix m(4, 3);
    m.Clear(7);
    const std::vector<BYTE> good = SerializeToBytes(m);
    for (std::size_t length = 0; length < good.size(); ++length) {
        CSSEcharMatrix loaded;
        EXPECT_THROW(SerializeFromBytes(loaded, std::vector<BYTE>(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length))), CArchiveException)
            << length << " bytes";
    }

    // Sizes the stream cannot hold are refused as such, however large.
    const auto header = [](int sizeX, int sizeY) {
        std::vector<BYTE> bytes(8 + 16, 1);
        std::memcpy(bytes.data(), &sizeX, 4);
        std::memcpy(bytes.data() + 4, &sizeY, 4);
        return bytes;
    };
    for (const auto& [sizeX, sizeY] : {std::pair{-1, 2}, {2, -1}, {5, 5}, {2000000000, 2000000000}, {0x7FFFFFFF, 0}, {0, CSSEcharMatrix::kMaxSizeY + 1}}) {
        CSSEcharMatrix loaded;
        try {
            SerializeFromBytes(loaded, header(sizeX, sizeY));
            ADD_FAILURE() << sizeX << " x " << sizeY << " was loaded";
        } catch (const CArchiveException& e) {
            EXPECT_EQ(e.m_cause, CArchiveException::badIndex) << sizeX << " x " << sizeY;
        }
        EXPECT_EQ(loaded.GetMatrixDataDirectly(), nullptr);
    }

    // Random bytes either load a field that the stream could hold or throw
    // an archive error.
    vek::CrtRandom random(29);
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<BYTE> bytes(static_cast<std::size_t>(random.Next() % 40));
        for (BYTE& b : bytes) b = static_cast<BYTE>(random.Next());
        if (trial % 2 == 0 && bytes.size() >= 8) { // small sizes, so that some archives are whole
            const int sizes[2] = {random.Next() % 6, random.Next() % 6};
            std::memcpy(bytes.data(), sizes, sizeof sizes);
        }
        CSSEcharMatrix loaded;
        try {
            SerializeFromBytes(loaded, bytes);
            ASSERT_LE(8u + static_cast<std::size_t>(loaded.GetSizeX()) * static_cast<std::size_t>(loaded.GetSizeY()), bytes.size());
        } catch (const CArchiveException&) {
        }
    }
}

} // namespace
