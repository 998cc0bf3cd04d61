#include "elevation_input.h"

#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "build_features.h"
#include "field_archive.h"
#include "gdal_rasters.h"

namespace vek::tools {

namespace {

struct FileStart {
    unsigned char bytes[8] = {};
    std::size_t count = 0;
    unsigned long long size = 0;
};

FileStart ReadFileStart(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) throw ToolError("cannot open " + path + ": " + std::strerror(errno));
    FileStart start;
    in.read(reinterpret_cast<char*>(start.bytes), sizeof start.bytes);
    start.count = static_cast<std::size_t>(in.gcount());
    std::error_code ec;
    start.size = std::filesystem::file_size(path, ec);
    if (ec) throw ToolError("cannot read " + path + ": " + ec.message());
    return start;
}

bool OwnFormat(const FileStart& s)
{
    const bool netpbm = s.count >= 2 && s.bytes[0] == 'P' && (s.bytes[1] == '5' || s.bytes[1] == 'f' || s.bytes[1] == 'F');
    return netpbm || LooksLikeFieldArchive(s.bytes, s.count, s.size);
}

// Classic TIFF and BigTIFF, in either byte order, or a file named so.
bool LooksLikeTiff(const std::string& path, const FileStart& s)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (extension == ".tif" || extension == ".tiff") return true;
    if (s.count < 4) return false;
    const bool intel = s.bytes[0] == 'I' && s.bytes[1] == 'I' && (s.bytes[2] == 42 || s.bytes[2] == 43) && s.bytes[3] == 0;
    const bool motorola = s.bytes[0] == 'M' && s.bytes[1] == 'M' && s.bytes[2] == 0 && (s.bytes[3] == 42 || s.bytes[3] == 43);
    return intel || motorola;
}

} // namespace

LoadedRaster ReadElevationModel(const std::string& path)
{
    const FileStart start = ReadFileStart(path);
    if (OwnFormat(start)) return ReadHeightRaster(path);
    if (BuiltWithGdal()) return ReadGdalRaster(path);
    if (LooksLikeTiff(path, start)) throw ToolError(WithoutGdalError(path));
    return ReadHeightRaster(path);
}

} // namespace vek::tools
