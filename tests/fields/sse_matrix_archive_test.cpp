#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

#include "fields/field_storage.h"
#include "support/archive_bytes.h"
#include "vekdll/fields/sse_matrix.h"

namespace {

using vek::test::AllStored;
using vek::test::AppendBytes;
using vek::test::FillStorage;
using vek::test::SerializeFromBytes;
using vek::test::SerializeToBytes;
using vek::test::Tag;

// The archive of a field whose lanes hold Tag(x, storage row), built by
// hand: the two sizes, then column by column all storage rows of that column
// (or `pixelBytes` zero bytes instead, for a header alone).
std::vector<BYTE> Archive(int sizeX, int sizeY, std::size_t pixelBytes = 0, bool tagged = false)
{
    std::vector<BYTE> bytes;
    AppendBytes(bytes, sizeX);
    AppendBytes(bytes, sizeY);
    for (int x = 0; tagged && x < sizeX; ++x)
        for (int row = 0; row < 4 * ((sizeY >> 2) + 1); ++row) AppendBytes(bytes, Tag(x, row));
    bytes.resize(bytes.size() + pixelBytes);
    return bytes;
}

TEST(CSSEMatrixArchive, StoresSizesThenEachColumnLineByLineWithItsPadding)
{
    struct Case {
        int sizeX, sizeY;
        std::size_t bytes; // by hand: 8 + SizeX * lines * 16
    };
    // The last: two blocks of lines, and more columns than go in one transfer.
    for (const Case c : {Case{5, 3, 88}, Case{5, 4, 168}, Case{2, 0, 40}, Case{0, 7, 8}, Case{17, 130, 8984}}) {
        SCOPED_TRACE(testing::Message() << c.sizeX << " x " << c.sizeY);
        CSSEMatrix m;
        m.Create(c.sizeX, c.sizeY);
        FillStorage(m, Tag);
        const std::vector<BYTE> bytes = SerializeToBytes(m);
        ASSERT_EQ(bytes.size(), c.bytes);
        EXPECT_EQ(bytes, Archive(c.sizeX, c.sizeY, 0, true));

        CSSEMatrix loaded;
        loaded.Create(1, 1);
        loaded.SetRowProcessed(9);
        SerializeFromBytes(loaded, bytes);
        EXPECT_EQ(loaded.GetSizeY(), c.sizeY);
        EXPECT_EQ(AllStored(loaded), AllStored(m));
        EXPECT_EQ(loaded.GetRowProcessed(), 9);
    }

    // A field without an image, whatever size it still reports, stores as 0 x 0.
    CSSEMatrix released;
    released.Create(5, 4);
    released.FreeImageMemoryOnly();
    EXPECT_EQ(SerializeToBytes(released), Archive(0, 0));
}

// Loads `bytes` into a tagged 3 x 5 field; the cause of the CArchiveException
// or -1 if it loaded. A refused archive leaves the field as it was.
int LoadCause(const std::vector<BYTE>& bytes)
{
    CSSEMatrix m;
    m.Create(3, 5);
    FillStorage(m, Tag);
    const std::vector<float> before = AllStored(m);
    try {
        SerializeFromBytes(m, bytes);
        return -1;
    } catch (const CArchiveException& e) {
        EXPECT_EQ(AllStored(m), before);
        EXPECT_EQ(m.GetSizeY(), 5);
        return e.m_cause;
    }
}

TEST(CSSEMatrixArchive, BadSizesTruncationsAndRandomBytesAreRefusedBeforeTheFieldChanges)
{
    constexpr int kBadIndex = CArchiveException::badIndex;
    EXPECT_EQ(LoadCause(Archive(-1, 4, 64)), kBadIndex);
    EXPECT_EQ(LoadCause(Archive(4, -1, 64)), kBadIndex);
    EXPECT_EQ(LoadCause(Archive(1, CSSEMatrix::kMaxSizeY + 1, 1 << 17)), kBadIndex);
    EXPECT_EQ(LoadCause(Archive(5, 4, 159)), kBadIndex) << "one byte short";
    EXPECT_EQ(LoadCause(Archive(0x7FFFFFFF, CSSEMatrix::kMaxSizeY, 64)), kBadIndex);

    const std::vector<BYTE> whole = Archive(5, 4, 0, true);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const int expected = size < 8 ? CArchiveException::endOfFile : kBadIndex;
        ASSERT_EQ(LoadCause(std::vector<BYTE>(whole.begin(), whole.begin() + static_cast<long>(size))), expected) << size;
    }

    // Random bytes, with small sizes now and then so that some archives are
    // whole: each loads or throws, and never reads past the stream.
    std::mt19937 random(5);
    int loaded = 0;
    for (int trial = 0; trial < 400; ++trial) {
        std::vector<BYTE> bytes(random() % 200);
        for (BYTE& b : bytes) b = static_cast<BYTE>(random());
        if (bytes.size() >= 8 && trial % 2 == 0) {
            const int sizes[2] = {static_cast<int>(random() % 4), static_cast<int>(random() % 12)};
            std::memcpy(bytes.data(), sizes, sizeof sizes);
        }
        loaded += LoadCause(bytes) == -1 ? 1 : 0;
    }
    EXPECT_GT(loaded, 20);
}

TEST(CSSEMatrixArchive, StoreAndLoadReportOnlyFilesThatCannotBeOpened)
{
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / ("vekdll_field_archive_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    const auto path = [&](const char* name) { return (folder / name).string(); };

    CSSEMatrix m;
    m.Create(70, 300); // more than the archive's 4096-byte buffer
    FillStorage(m, Tag);
    ASSERT_TRUE(m.Store(path("field.bin")));
    EXPECT_EQ(std::filesystem::file_size(path("field.bin")), 8u + 70u * 76u * 16u);
    CSSEMatrix loaded;
    ASSERT_TRUE(loaded.Load(path("field.bin")));
    EXPECT_EQ(AllStored(loaded), AllStored(m));

    m.Create(3, 5);
    FillStorage(m, Tag);
    const std::vector<float> before = AllStored(m);
    EXPECT_FALSE(m.Load(path("missing.bin")));
    EXPECT_FALSE(m.Load(folder.string())) << "a folder";
    EXPECT_FALSE(m.Store(path("no/such/folder/field.bin")));
    std::vector<BYTE> truncated = Archive(5, 4, 0, true);
    std::ofstream(path("truncated.bin"), std::ios::binary).write(reinterpret_cast<const char*>(truncated.data()), 100);
    EXPECT_THROW(m.Load(path("truncated.bin")), CArchiveException);
    EXPECT_EQ(AllStored(m), before);
    std::filesystem::remove_all(folder);
}

} // namespace
