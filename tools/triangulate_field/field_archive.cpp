#include "field_archive.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_file.h"
#include "vekdll/platform/framework_exceptions.h"

namespace vek::tools {

namespace {

std::int32_t LittleEndianInt(const unsigned char* bytes)
{
    const std::uint32_t bits = std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 |
                               std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
    std::int32_t value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace

bool LooksLikeFieldArchive(const std::vector<unsigned char>& bytes)
{
    return LooksLikeFieldArchive(bytes.data(), bytes.size(), bytes.size());
}

bool LooksLikeFieldArchive(const unsigned char* head, std::size_t headSize, unsigned long long fileSize)
{
    if (headSize < 8 || fileSize < 8) return false;
    const long long sizeX = LittleEndianInt(head);
    const long long sizeY = LittleEndianInt(head + 4);
    if (sizeX < 1 || sizeY < 1 || sizeY > CSSEMatrix::kMaxSizeY) return false;
    // The archive has no magic number; its length, exact to the byte, is
    // what tells it apart.
    return fileSize - 8 == static_cast<unsigned long long>(sizeX * ((sizeY >> 2) + 1) * 16);
}

HeightRaster ParseFieldArchive(const std::vector<unsigned char>& bytes, const std::string& name)
{
    CSSEMatrix field;
    try {
        std::vector<unsigned char> copy(bytes);
        CMemFile file(copy.data(), static_cast<UINT>(copy.size()));
        CArchive ar(&file, CArchive::load);
        field.Serialize(ar);
    } catch (const std::exception&) {
        throw ToolError(name + ": not a readable field archive");
    }
    HeightRaster r;
    r.width = field.GetSizeX();
    r.height = field.GetSizeY();
    r.heights.resize(static_cast<std::size_t>(r.width) * r.height);
    for (int row = 0; row < r.height; ++row) {
        for (int column = 0; column < r.width; ++column) {
            const float h = field.GetPoint(column, r.height - 1 - row);
            r.At(column, row) = h == 0.0f ? std::numeric_limits<float>::quiet_NaN() : h;
        }
    }
    return r;
}

void WriteFieldArchive(const std::string& path, const HeightRaster& raster)
{
    CSSEMatrix field;
    field.Create(raster.width, raster.height);
    for (int row = 0; row < raster.height; ++row) {
        for (int column = 0; column < raster.width; ++column) {
            const float h = raster.At(column, row);
            field.SetPoint(column, raster.height - 1 - row, HeightRaster::HoldsData(h) ? h : 0.0f);
        }
    }
    if (!field.Store(path)) throw ToolError("cannot write " + path);
}

} // namespace vek::tools
