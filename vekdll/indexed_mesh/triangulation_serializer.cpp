// The binary file format of the indexed mesh (laid out in the header).

#include "vekdll/indexed_mesh/triangulation_serializer.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include "vekdll/platform/framework_exceptions.h"

namespace {

using Triangle = Geometry::CTriangulation::Triangle;

static_assert(std::endian::native == std::endian::little, "blocks are written as they lie in memory");
static_assert(sizeof(Triangle) == 12, "a triangle is stored as three packed indices");

constexpr std::array<char, 8> kMagic{'V', 'E', 'K', 'M', 'E', 'S', 'H', '\x1A'};

template <class T>
void WriteBlock(QbStreamWriteBinary& stream, std::span<const T> block)
{
    stream.WriteBytes(block.data(), block.size_bytes());
}

// A block of `count` elements read whole; the caller has checked that the
// stream holds them.
template <class T>
SMemoryBlock<T> ReadBlock(QbStreamReadBinary& stream, std::uint32_t count)
{
    SMemoryBlock<T> block(count);
    stream.ReadBytes(block.data(), block.size() * sizeof(T));
    return block;
}

void RequireMagic(QbStreamReadBinary& stream)
{
    std::array<char, 8> magic{};
    stream.ReadBytes(magic.data(), magic.size());
    if (magic != kMagic) AfxThrowArchiveException(CArchiveException::badClass);
}

// The bytes behind the header that the counts and flags ask for; at most
// about 24 * 2^32, which a 64-bit count holds.
std::uint64_t BodyBytes(std::uint64_t vertices, std::uint64_t triangles, std::uint32_t flags)
{
    std::uint64_t bytes = vertices * sizeof(QbVector3f) + triangles * sizeof(Triangle);
    if (flags & CTriangulation_Serializer::kHasNormals) bytes += vertices * sizeof(QbVector3f);
    if (flags & CTriangulation_Serializer::kHasAttributes) bytes += triangles * sizeof(std::uint32_t);
    return bytes;
}

} // namespace

void CTriangulation_Serializer::Serialize(QbStreamWriteBinary& stream, const Geometry::CTriangulation& mesh)
{
    if (!mesh.HasValidIndices()) AfxThrowArchiveException(CArchiveException::badIndex);
    const std::uint32_t flags = (mesh.HasNormals() ? kHasNormals : 0u) | (mesh.HasAttributes() ? kHasAttributes : 0u);
    stream.WriteBytes(kMagic.data(), kMagic.size());
    stream.WriteUInt32(kVersion);
    stream.WriteUInt32(flags);
    stream.WriteUInt32(mesh.GetNumVertices());
    stream.WriteUInt32(mesh.GetNumTriangles());
    WriteBlock(stream, mesh.GetPositions());
    WriteBlock(stream, mesh.GetTriangles());
    WriteBlock(stream, mesh.GetNormals());
    WriteBlock(stream, mesh.GetAttributes());
}

Geometry::CTriangulation CTriangulation_Serializer::Serialize(QbStreamReadBinary& stream)
{
    RequireMagic(stream);
    if (stream.ReadUInt32() != kVersion) AfxThrowArchiveException(CArchiveException::badSchema);
    const std::uint32_t flags = stream.ReadUInt32();
    if ((flags & ~(kHasNormals | kHasAttributes)) != 0) AfxThrowArchiveException(CArchiveException::badSchema);
    const std::uint32_t numVertices = stream.ReadUInt32();
    const std::uint32_t numTriangles = stream.ReadUInt32();
    if (BodyBytes(numVertices, numTriangles, flags) > stream.GetBytesRemaining()) {
        AfxThrowArchiveException(CArchiveException::badIndex);
    }

    auto positions = ReadBlock<QbVector3f>(stream, numVertices);
    auto triangles = ReadBlock<Triangle>(stream, numTriangles);
    auto normals = (flags & kHasNormals) ? ReadBlock<QbVector3f>(stream, numVertices) : SMemoryBlock<QbVector3f>();
    auto attributes = (flags & kHasAttributes) ? ReadBlock<unsigned int>(stream, numTriangles) : SMemoryBlock<unsigned int>();
    Geometry::CTriangulation mesh(numVertices, numTriangles, std::move(positions), std::move(triangles),
                                  std::move(attributes), std::move(normals));
    if (!mesh.HasValidIndices()) AfxThrowArchiveException(CArchiveException::badIndex);
    return mesh;
}
