#include "png_file.h"

#include "build_features.h"
#include "height_raster.h"

#ifdef VEKDLL_TOOLS_WITH_PNG
#include <png.h>
#endif

namespace vek::tools {

void WritePng(const std::string& path, const RgbaImage& image)
{
#ifdef VEKDLL_TOOLS_WITH_PNG
    // libpng's simplified interface reports failures in the record instead
    // of jumping out of C++ frames with longjmp.
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = PNG_FORMAT_RGBA;
    // Without it libpng tries every row filter on every row, which costs a
    // second for an elevation model of a million cells; the file grows by
    // about a quarter.
    png.flags = PNG_IMAGE_FLAG_FAST;
    const int written = png_image_write_to_file(&png, path.c_str(), 0, image.rgba.data(), 0, nullptr);
    const std::string reason = png.message;
    png_image_free(&png);
    if (!written) throw ToolError("cannot write " + path + ": " + reason);
#else
    (void)image;
    throw ToolError(path + ": " + WithoutPngNote());
#endif
}

} // namespace vek::tools
