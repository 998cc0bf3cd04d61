#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>

#include <unistd.h>

#include "fields/field_storage.h"
#include "support/archive_bytes.h"

namespace {

using namespace vek::test;

// A float field's archive by hand: the two sizes, then column by column all
// storage rows of that column (tagged as FieldOf(sizeX, sizeY, Tag) holds
// them), or else `zeroBytes` bytes of 0.
std::vector<BYTE> Archive(int sizeX, int sizeY, bool tagged, std::size_t zeroBytes = 0)
{
    std::vector<BYTE> bytes;
    AppendBytes(bytes, sizeX);
    AppendBytes(bytes, sizeY);
    for (int x = 0; tagged && x < sizeX; ++x)
        for (int row = 0; row < 4 * ((sizeY >> 2) + 1); ++row) AppendBytes(bytes, Tag(x, row));
    bytes.resize(bytes.size() + zeroBytes);
    return bytes;
}

// Random archives of fewer than maxSize bytes; in every second one the sizes
// in front are small (below maxX and maxY), so that some archives are whole.
template <class Load>
void ForRandomArchives(std::size_t maxSize, int maxX, int maxY, Load load)
{
    std::mt19937 random(5);
    for (int trial = 0; trial < 400; ++trial) {
        std::vector<BYTE> bytes(random() % maxSize);
        for (BYTE& b : bytes) b = static_cast<BYTE>(random());
        const int sizes[2] = {static_cast<int>(random() % maxX), static_cast<int>(random() % maxY)};
        if (bytes.size() >= 8 && trial % 2 == 0) std::memcpy(bytes.data(), sizes, sizeof sizes);
        load(bytes);
    }
}

TEST(CSSEMatrixArchive, StoresSizesThenEachColumnLineByLineWithItsPadding)
{
    // 8 + SizeX * lines * 16 bytes; the last field has two blocks of lines
    // and more columns than go in one transfer.
    for (const auto& [sizeX, sizeY, size] : {std::tuple{5, 3, 88u}, {5, 4, 168u}, {2, 0, 40u}, {0, 7, 8u}, {17, 130, 8984u}}) {
        CSSEMatrix m = FieldOf(sizeX, sizeY, Tag);
        const std::vector<BYTE> bytes = SerializeToBytes(m);
        ASSERT_EQ(bytes.size(), size);
        EXPECT_EQ(bytes, Archive(sizeX, sizeY, true));
        CSSEMatrix loaded = FieldOf(1, 1, Tag);
        loaded.SetRowProcessed(9);
        SerializeFromBytes(loaded, bytes);
        EXPECT_EQ(AllStored(loaded), AllStored(m));
        EXPECT_EQ(loaded.GetRowProcessed(), 9);
    }
    // A field without an image, whatever size it still reports, stores as 0 x 0.
    CSSEMatrix released = FieldOf(5, 4, Tag);
    released.FreeImageMemoryOnly();
    EXPECT_EQ(SerializeToBytes(released), Archive(0, 0, false));
}

TEST(CSSEMatrixArchive, BadSizesTruncationsAndRandomBytesAreRefusedBeforeTheFieldChanges)
{
    // A refused archive leaves the tagged 3 x 5 field as it was.
    const auto loadCause = [](const std::vector<BYTE>& bytes) {
        CSSEMatrix m = FieldOf(3, 5, Tag);
        const int cause = LoadFailureCause(m, bytes);
        if (cause != CArchiveException::none) {
            EXPECT_EQ(AllStored(m), AllStored(FieldOf(3, 5, Tag)));
        }
        return cause;
    };
    constexpr int kMaxY = CSSEMatrix::kMaxSizeY;
    for (const auto& [sizeX, sizeY, zeroBytes] : {std::tuple{-1, 4, 64}, {4, -1, 64}, {1, kMaxY + 1, 1 << 17}, {5, 4, 159}, {0x7FFFFFFF, kMaxY, 64}})
        EXPECT_EQ(loadCause(Archive(sizeX, sizeY, false, zeroBytes)), CArchiveException::badIndex) << sizeX << " x " << sizeY << " in " << zeroBytes;
    const std::vector<BYTE> whole = Archive(5, 4, true);
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_EQ(loadCause({whole.begin(), whole.begin() + static_cast<long>(size)}), size < 8 ? CArchiveException::endOfFile : CArchiveException::badIndex) << size;
    int loaded = 0;
    ForRandomArchives(200, 4, 12, [&](const std::vector<BYTE>& bytes) { loaded += loadCause(bytes) == CArchiveException::none ? 1 : 0; });
    EXPECT_GT(loaded, 20);
}

TEST(CSSEMatrixArchive, StoreAndLoadReportOnlyFilesThatCannotBeOpened)
{
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / ("vekdll_field_archive_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    const auto path = [&](const char* name) { return (folder / name).string(); };
    CSSEMatrix m = FieldOf(70, 300, Tag); // more than the archive's 4096-byte buffer
    ASSERT_TRUE(m.Store(path("field.bin")));
    EXPECT_EQ(std::filesystem::file_size(path("field.bin")), 8u + 70u * 76u * 16u);
    CSSEMatrix loaded;
    ASSERT_TRUE(loaded.Load(path("field.bin")));
    EXPECT_EQ(AllStored(loaded), AllStored(m));

    Replace(m, FieldOf(3, 5, Tag));
    EXPECT_FALSE(m.Load(path("missing.bin")));
    EXPECT_FALSE(m.Load(folder.string())) << "a folder";
    EXPECT_FALSE(m.Store(path("no/such/folder/field.bin")));
    const std::vector<BYTE> truncated = Archive(5, 4, true);
    std::ofstream(path("truncated.bin"), std::ios::binary).write(reinterpret_cast<const char*>(truncated.data()), 100);
    EXPECT_THROW(m.Load(path("truncated.bin")), CArchiveException);
    EXPECT_EQ(AllStored(m), AllStored(FieldOf(3, 5, Tag)));
    std::filesystem::remove_all(folder);
}

TEST(CSSEcharMatrixArchive, SizesThenPixelsRowByRowWithoutPadding)
{
    const int pixels[2][3] = {{1, 2, -3}, {4, 127, -128}};
    CSSEcharMatrix m = ByteField(3, 2, [&](int x, int row) { return row < 2 ? pixels[row][x] : 55; }); // padding is not stored
    const std::vector<BYTE> expected{3, 0, 0, 0, 2, 0, 0, 0, 1, 2, 0xFD, 4, 0x7F, 0x80};
    EXPECT_EQ(SerializeToBytes(m), expected);
    // Loading the hand-built bytes gives the pixels, with clean padding.
    CSSEcharMatrix loaded(9, 9);
    SerializeFromBytes(loaded, expected);
    std::vector<int> want{1, 2, -3, 4, 127, -128};
    want.resize(3 * 16);
    EXPECT_EQ(AllStored(loaded), want);
    m.Free();
    EXPECT_EQ(SerializeToBytes(m), Archive(0, 0, false)) << "a field without an image";

    // Round trips, over more than one block of lines too.
    for (const auto& [sizeX, sizeY] : {std::pair{5, 0}, {0, 7}, {33, 600}}) {
        CSSEcharMatrix field = ByteField(sizeX, sizeY, [h = sizeY](int x, int row) { return row < h ? ByteTag(x, row) : 0; });
        const std::vector<BYTE> bytes = SerializeToBytes(field);
        ASSERT_EQ(bytes.size(), 8u + static_cast<std::size_t>(sizeX * sizeY));
        CSSEcharMatrix back;
        SerializeFromBytes(back, bytes);
        EXPECT_EQ(AllStored(back), AllStored(field)) << sizeX << " x " << sizeY;
    }
}

TEST(CSSEcharMatrixArchive, DamagedArchivesThrowBeforeAllocating)
{
    CSSEcharMatrix m(4, 3);
    const std::vector<BYTE> good = SerializeToBytes(m);
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_NE(LoadFailureCause(m, {good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)}), CArchiveException::none) << length;
    // Sizes the stream cannot hold are refused as such, however large.
    for (const auto& [sizeX, sizeY] : {std::pair{-1, 2}, {2, -1}, {5, 5}, {2000000000, 2000000000}, {0x7FFFFFFF, 0}, {0, CSSEcharMatrix::kMaxSizeY + 1}}) {
        CSSEcharMatrix loaded;
        EXPECT_EQ(LoadFailureCause(loaded, Archive(sizeX, sizeY, false, 16)), CArchiveException::badIndex) << sizeX << " x " << sizeY;
        EXPECT_EQ(loaded.GetMatrixDataDirectly(), nullptr);
    }
    ForRandomArchives(40, 6, 6, [](const std::vector<BYTE>& bytes) {
        CSSEcharMatrix loaded;
        if (LoadFailureCause(loaded, bytes) == CArchiveException::none) {
            ASSERT_LE(8u + static_cast<std::size_t>(loaded.GetSizeX()) * static_cast<std::size_t>(loaded.GetSizeY()), bytes.size());
        }
    });
}

} // namespace
