#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <unistd.h>

#include "indexed_mesh/indexed_meshes.h"
#include "support/archive_bytes.h"
#include "vekdll/indexed_mesh/stream_read_binary_file.h"
#include "vekdll/indexed_mesh/stream_write_binary_file.h"
#include "vekdll/indexed_mesh/triangulation_serializer.h"

using namespace vek::test;
using Geometry::CTriangulation;

namespace {

const std::vector<BYTE> kMagic{'V', 'E', 'K', 'M', 'E', 'S', 'H', 0x1A};

std::vector<BYTE> FileOf(const CTriangulation& mesh)
{
    return StoreToBytes([&](CArchive& ar) {
        QyStreamWriteBinaryFile stream(ar);
        CTriangulation_Serializer::Serialize(stream, mesh);
    });
}

CTriangulation MeshFrom(std::vector<BYTE> bytes)
{
    CTriangulation mesh;
    LoadFromBytes(std::move(bytes), [&](CArchive& ar) {
        QyStreamReadBinaryFile stream(ar);
        mesh = CTriangulation_Serializer::Serialize(stream);
    });
    return mesh;
}

// The cause of the CArchiveException that reading `bytes` throws, or none
// when they give a mesh, which must then name only its own vertices.
int RefusalOf(std::vector<BYTE> bytes)
{
    try {
        EXPECT_TRUE(MeshFrom(std::move(bytes)).HasValidIndices());
    } catch (const CArchiveException& e) {
        return e.m_cause;
    }
    return CArchiveException::none;
}

void ExpectSameMesh(const CTriangulation& got, const CTriangulation& want)
{
    EXPECT_EQ(BitsOf(got.GetPositions()), BitsOf(want.GetPositions()));
    EXPECT_EQ(ListOf(got.GetTriangles()), ListOf(want.GetTriangles()));
    EXPECT_EQ(BitsOf(got.GetNormals()), BitsOf(want.GetNormals()));
    EXPECT_EQ(ListOf(got.GetAttributes()), ListOf(want.GetAttributes()));
}

TEST(IndexedMeshFile, HeaderCountsThenBlocksLittleEndian)
{
    const CTriangulation full = MeshOf({{1, 2, 3}, {4, 5, 6}, {7, 8, -0.5f}}, {{0, 1, 2}}, {0xA1B2C3D4u},
                                       {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}});
    const std::vector<BYTE> expected = BytesOf(kMagic, 1u, 3u, 3u, 1u,                                 // header
                                               std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, -0.5f},      // positions
                                               std::vector<unsigned>{0, 1, 2},                        // triangle
                                               std::vector<float>{0, 0, 1, 0, 1, 0, 1, 0, 0},         // normals
                                               0xA1B2C3D4u);                                          // attribute
    ASSERT_EQ(expected.size(), 24u + 36 + 12 + 36 + 4);
    EXPECT_EQ(FileOf(full), expected);
    EXPECT_EQ(std::vector<BYTE>(expected.begin() + 56, expected.begin() + 60), (std::vector<BYTE>{0, 0, 0, 0xBF}))
        << "-0.5f, little-endian";
    ExpectSameMesh(MeshFrom(expected), full);

    const CTriangulation bare = MeshOf({{1, 2, 3}, {4, 5, 6}, {7, 8, -0.5f}}, {{0, 1, 2}});
    const std::vector<BYTE> bareFile(expected.begin(), expected.begin() + 24 + 36 + 12);
    std::vector<BYTE> flagsCleared = bareFile;
    flagsCleared[12] = 0;
    EXPECT_EQ(FileOf(bare), flagsCleared);
    EXPECT_EQ(FileOf(CTriangulation()), BytesOf(kMagic, 1u, 0u, 0u, 0u));

    // A mesh that names a vertex it lacks is refused before a byte is written.
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        QyStreamWriteBinaryFile stream(ar);
        EXPECT_THROW(CTriangulation_Serializer::Serialize(stream, MeshOf({{0, 0, 0}}, {{0, 0, 1}})), CArchiveException);
        ar.Close();
    }
    EXPECT_EQ(file.GetLength(), 0u);
}

TEST(IndexedMeshFile, MeshesComeBackBitForBitThroughMemoryAndDisk)
{
    const CTriangulation grid = RandomGrid(40, 30, 7); // some 40 kB, ten archive buffers
    ExpectSameMesh(MeshFrom(FileOf(grid)), grid);

    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const CTriangulation odd = MeshOf({{nan, -0.0f, inf}, {-inf, 1e-45f, 0}, {1, 1, 1}}, {{2, 1, 0}, {0, 0, 0}}, {},
                                      {{-0.0f, nan, 0}, {0, 0, 0}, {1, 0, 0}});
    ExpectSameMesh(MeshFrom(FileOf(odd)), odd);

    // Two meshes in one archive: each reader takes its own bytes only.
    const std::vector<BYTE> both = StoreToBytes([&](CArchive& ar) {
        QyStreamWriteBinaryFile stream(ar);
        CTriangulation_Serializer::Serialize(stream, grid);
        CTriangulation_Serializer::Serialize(stream, odd);
    });
    LoadFromBytes(both, [&](CArchive& ar) {
        QyStreamReadBinaryFile stream(ar);
        ExpectSameMesh(CTriangulation_Serializer::Serialize(stream), grid);
        ExpectSameMesh(CTriangulation_Serializer::Serialize(stream), odd);
        EXPECT_EQ(stream.GetBytesRemaining(), 0u);
    });

    // On disk, opened as the triangulations open their files.
    const std::string path =
        (std::filesystem::temp_directory_path() / ("vekdll_indexed_mesh_" + std::to_string(::getpid()) + ".bin")).string();
    {
        CFile file(path, CFile::modeCreate | CFile::modeWrite);
        CArchive ar(&file, CArchive::store, 4096);
        QyStreamWriteBinaryFile stream(ar);
        CTriangulation_Serializer::Serialize(stream, grid);
        ar.Close();
        file.Close();
    }
    EXPECT_EQ(std::filesystem::file_size(path), FileOf(grid).size());
    {
        CFile file(path, CFile::modeRead);
        CArchive ar(&file, CArchive::load, 4096);
        QyStreamReadBinaryFile stream(ar);
        ExpectSameMesh(CTriangulation_Serializer::Serialize(stream), grid);
    }
    std::filesystem::remove(path);
}

TEST(IndexedMeshFile, DamagedFilesAreRefusedWithArchiveExceptions)
{
    const std::vector<BYTE> good = FileOf(RandomGrid(3, 2, 1)); // 6 vertices, 4 triangles, normals, attributes
    ASSERT_EQ(good.size(), 24u + 6 * 24 + 4 * 16);
    for (std::size_t length = 0; length < good.size(); ++length) {
        const int want = length < 24 ? CArchiveException::endOfFile : CArchiveException::badIndex;
        ASSERT_EQ(RefusalOf({good.begin(), good.begin() + static_cast<long>(length)}), want) << length;
    }

    const auto header = [](unsigned version, unsigned flags, unsigned vertices, unsigned triangles) {
        return BytesOf(kMagic, version, flags, vertices, triangles);
    };
    const std::vector<BYTE> oneTriangle = BytesOf(std::vector<float>(9, 1.0f), std::vector<unsigned>{0, 1, 2});
    EXPECT_EQ(RefusalOf(BytesOf(header(1, 0, 3, 1), oneTriangle)), CArchiveException::none);
    EXPECT_EQ(RefusalOf(BytesOf(std::vector<BYTE>{'V', 'E', 'K', 'M', 'E', 'S', 'H', 0x0A}, 1u, 0u, 0u, 0u)),
              CArchiveException::badClass);
    EXPECT_EQ(RefusalOf(BytesOf(header(2, 0, 3, 1), oneTriangle)), CArchiveException::badSchema);
    EXPECT_EQ(RefusalOf(BytesOf(header(1, 4, 3, 1), oneTriangle)), CArchiveException::badSchema);
    EXPECT_EQ(RefusalOf(BytesOf(header(1, 1, 3, 1), oneTriangle)), CArchiveException::badIndex) << "normals missing";
    EXPECT_EQ(RefusalOf(BytesOf(header(1, 0, 0xFFFFFFFFu, 0xFFFFFFFFu), oneTriangle)), CArchiveException::badIndex);
    EXPECT_EQ(RefusalOf(BytesOf(header(1, 0, 3, 1), std::vector<float>(9), std::vector<unsigned>{0, 3, 2})),
              CArchiveException::badIndex);

    // Every byte of a good file turned over, and random bytes behind a good
    // header or none: refused or read as a mesh of its own vertices, never
    // anything else.
    for (std::size_t at = 0; at < good.size(); ++at) {
        std::vector<BYTE> garbled = good;
        garbled[at] ^= 0xFF;
        RefusalOf(garbled);
    }
    std::mt19937 random(11);
    int refused = 0;
    for (int k = 0; k < 400; ++k) {
        std::vector<BYTE> bytes = k % 2 ? header(1, random() % 4, random() % 9, random() % 5) : std::vector<BYTE>{};
        for (int n = static_cast<int>(random() % 200); n > 0; --n) bytes.push_back(static_cast<BYTE>(random() % 11));
        refused += RefusalOf(bytes) != CArchiveException::none ? 1 : 0;
    }
    EXPECT_GT(refused, 200);
    EXPECT_LT(refused, 400) << "some random bodies behind a good header must load";
}

} // namespace
