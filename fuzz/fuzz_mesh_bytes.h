#pragma once

// Bytes for the programs that read indexed mesh files: byte 0 chooses, and
// its lowest bit puts the file's magic and version in front of the rest, so
// that the fuzzer reaches the counts and blocks behind the header at once.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vekdll/vekdll.h"

namespace vek::fuzz {

inline constexpr std::uint8_t kMeshHeader[12] = {'V', 'E', 'K', 'M', 'E', 'S', 'H', 0x1A, 1, 0, 0, 0};

// The file bytes of an input of at least one byte, byte 0 being the choice.
inline std::vector<BYTE> MeshFileBytes(const std::uint8_t* data, std::size_t size)
{
    std::vector<BYTE> bytes;
    if (data[0] & 1) bytes.assign(kMeshHeader, kMeshHeader + sizeof kMeshHeader);
    bytes.insert(bytes.end(), data + 1, data + size);
    return bytes;
}

inline Geometry::CTriangulation ReadMesh(std::vector<BYTE> bytes)
{
    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    CArchive ar(&file, CArchive::load);
    QyStreamReadBinaryFile stream(ar);
    return CTriangulation_Serializer::Serialize(stream);
}

} // namespace vek::fuzz
