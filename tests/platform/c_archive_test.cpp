#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <vector>

#include "support/archive_bytes.h"
#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_file.h"

using vek::test::LoadFromBytes;
using vek::test::StoreToBytes;

namespace {

TEST(CArchiveTest, ValuesTravelAsLittleEndianBytesOfTheirOwnWidth)
{
    const std::vector<BYTE> bytes = StoreToBytes([](CArchive& ar) {
        ar << 0x04030201 << 1.0f << static_cast<BYTE>(0xAB) << -2.0 << static_cast<short>(-2);
    });
    const std::vector<BYTE> expected = {
        0x01, 0x02, 0x03, 0x04,                         // int
        0x00, 0x00, 0x80, 0x3F,                         // float 1.0
        0xAB,                                           // byte
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, // double -2.0
        0xFE, 0xFF                                      // short -2
    };
    EXPECT_EQ(bytes, expected);

    LoadFromBytes(bytes, [](CArchive& ar) {
        int i = 0;
        float f = 0;
        BYTE b = 0;
        double d = 0;
        short s = 0;
        ar >> i >> f >> b >> d >> s;
        EXPECT_EQ(i, 0x04030201);
        EXPECT_EQ(f, 1.0f);
        EXPECT_EQ(b, 0xAB);
        EXPECT_EQ(d, -2.0);
        EXPECT_EQ(s, -2);
        EXPECT_EQ(ar.GetBytesRemaining(), 0u);
    });
}

TEST(CArchiveTest, LargeStreamsCrossTheBufferBoundaryIntact)
{
    std::vector<int> values(5000);
    for (int i = 0; i < 5000; ++i) values[i] = i * 7919;
    const std::vector<BYTE> bytes = StoreToBytes([&](CArchive& ar) {
        ar << static_cast<BYTE>(1); // misalign every later value against the 4096-byte buffer
        for (int v : values) ar << v;
        ar.Write(values.data(), 3 * 4096);
    });
    ASSERT_EQ(bytes.size(), 1u + 4 * 5000 + 3 * 4096);
    LoadFromBytes(bytes, [&](CArchive& ar) {
        BYTE first = 0;
        ar >> first;
        for (int expected : values) {
            int v = 0;
            ar >> v;
            ASSERT_EQ(v, expected);
        }
        std::vector<int> block(3 * 1024);
        ar.Read(block.data(), 3 * 4096);
        EXPECT_TRUE(std::equal(block.begin(), block.end(), values.begin()));
    });
}

TEST(CArchiveTest, MisuseAndTruncationThrowArchiveExceptions)
{
    const std::vector<BYTE> bytes = StoreToBytes([](CArchive& ar) { ar << 1 << 2; });
    // A read past the end, also in the middle of a value.
    LoadFromBytes(bytes, [](CArchive& ar) {
        int a = 0, b = 0;
        double c = 0;
        ar >> a >> b;
        try {
            ar >> c;
            FAIL() << "read past the end";
        } catch (const CArchiveException& e) {
            EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
        }
    });
    LoadFromBytes({1, 2, 3}, [](CArchive& ar) {
        int a = 0;
        EXPECT_THROW(ar >> a, CArchiveException);
    });
    // Writing to a loading archive and reading from a storing one.
    LoadFromBytes(bytes, [](CArchive& ar) {
        try {
            ar << 5;
            FAIL() << "write to a loading archive";
        } catch (const CArchiveException& e) {
            EXPECT_EQ(e.m_cause, CArchiveException::readOnly);
        }
    });
    StoreToBytes([](CArchive& ar) {
        int a = 0;
        try {
            ar >> a;
            FAIL() << "read from a storing archive";
        } catch (const CArchiveException& e) {
            EXPECT_EQ(e.m_cause, CArchiveException::writeOnly);
        }
    });
    // Archive exceptions are standard runtime errors too.
    LoadFromBytes({}, [](CArchive& ar) {
        float f = 0;
        EXPECT_THROW(ar >> f, std::runtime_error);
    });
}

TEST(CArchiveTest, RequireReadableRefusesCountsTheStreamCannotHold)
{
    LoadFromBytes(std::vector<BYTE>(40), [](CArchive& ar) {
        int n = 0;
        ar >> n;
        EXPECT_EQ(ar.GetBytesRemaining(), 36u);
        EXPECT_NO_THROW(ar.RequireReadable(3, 12));
        EXPECT_NO_THROW(ar.RequireReadable(36, 1));
        EXPECT_THROW(ar.RequireReadable(37, 1), CArchiveException);
        EXPECT_THROW(ar.RequireReadable(1 << 30, 48), CArchiveException);
        EXPECT_THROW(ar.RequireReadable(-1, 4), CArchiveException);
        EXPECT_NO_THROW(ar.RequireReadable(0, 48));
    });
}

TEST(CArchiveTest, RoundTripThroughAFileOnDisk)
{
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "vekdll_archive_roundtrip.bin";
    {
        CFile file;
        ASSERT_TRUE(file.Open(path.string(), CFile::modeCreate | CFile::modeWrite | CFile::typeBinary));
        CArchive ar(&file, CArchive::store);
        for (int i = 0; i < 3000; ++i) ar << static_cast<float>(i) * 0.5f;
        ar.Close();
        file.Close();
    }
    CFileStatus status;
    ASSERT_TRUE(CFile::GetStatus(path.string(), status));
    EXPECT_EQ(status.m_size, 12000u);
    {
        CFile file(path.string(), CFile::modeRead | CFile::typeBinary);
        EXPECT_EQ(file.GetLength(), 12000u);
        CArchive ar(&file, CArchive::load);
        EXPECT_EQ(ar.GetBytesRemaining(), 12000u);
        float v = 0;
        for (int i = 0; i < 3000; ++i) {
            ar >> v;
            ASSERT_EQ(v, static_cast<float>(i) * 0.5f);
        }
        EXPECT_THROW(ar >> v, CArchiveException);
    }
    std::filesystem::remove(path);
}

TEST(CFileTest, OpenReportsMissingFilesAndStatusOfUnknownPaths)
{
    CFile file;
    CFileException error;
    EXPECT_FALSE(file.Open("/nonexistent/dir/file.bin", CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_THROW(CFile("/nonexistent/file.bin", CFile::modeRead), CFileException);
    CFileStatus status;
    EXPECT_FALSE(CFile::GetStatus("/nonexistent/file.bin", status));
    EXPECT_FALSE(file.Open(std::filesystem::temp_directory_path().string(), CFile::modeRead, &error));
}

TEST(CMemFileTest, AttachedBufferIsFixedAndSeekable)
{
    std::vector<BYTE> buffer(8, 0);
    CMemFile file(buffer.data(), 8);
    EXPECT_EQ(file.GetLength(), 8u);
    const BYTE data[4] = {1, 2, 3, 4};
    file.Seek(2, CFile::begin);
    file.Write(data, 4);
    EXPECT_EQ(buffer, (std::vector<BYTE>{0, 0, 1, 2, 3, 4, 0, 0}));
    EXPECT_THROW(file.Write(data, 4), CFileException);
    file.SeekToBegin();
    BYTE back[10] = {};
    EXPECT_EQ(file.Read(back, 10), 8u);
    EXPECT_EQ(back[5], 4);
}

} // namespace
