// Every loader of the library, and the raster readers of triangulate_field,
// on arbitrary bytes. The first byte picks the format. A loader may refuse
// the bytes with its documented exception; anything else is a fault.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "raster_files.h"
#include "vekdll/vekdll.h"

namespace {

template <class Object>
void LoadArchive(const std::uint8_t* data, std::size_t size)
{
    std::vector<BYTE> bytes(data, data + size);
    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    CArchive ar(&file, CArchive::load);
    Object object;
    try {
        object.Serialize(ar);
    } catch (const CArchiveException&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1) return 0;
    const int format = data[0] % 5;
    ++data;
    --size;
    switch (format) {
    case 0: LoadArchive<CSSEMatrix>(data, size); break;
    case 1: LoadArchive<CSSEcharMatrix>(data, size); break;
    case 2: LoadArchive<CSSE3dPolygon>(data, size); break;
    case 3: LoadArchive<ZrCBayesKlassifikator>(data, size); break;
    default:
        try {
            vek::tools::ParseHeightRaster(std::vector<unsigned char>(data, data + size), "fuzz input");
        } catch (const vek::tools::ToolError&) {
        }
    }
    return 0;
}
