#include "raster_files.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>
#include <vector>

#include "field_archive.h"
#include "output_files.h"
#include "vekdll/fields/sse_matrix.h"

namespace vek::tools {

namespace {

// No row wider than this, and no more cells than this, which keeps every
// size product inside 64 bits and the heights inside a gigabyte. The rows
// are bounded by the library's fields, which the result is scan-converted
// into.
constexpr long long kMaxSide = 1'000'000;
constexpr long long kMaxCells = 1LL << 28;

std::vector<unsigned char> ReadWholeFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) throw ToolError("cannot open " + path + ": " + std::strerror(errno));
    in.seekg(0, std::ios::end);
    const std::streamoff size = in.tellg();
    if (size < 0) throw ToolError("cannot read " + path);
    if (size > kMaxCells * 4 + 4096) throw ToolError(path + " is larger than any raster this program reads");
    in.seekg(0, std::ios::beg);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    if (size > 0 && !in.read(reinterpret_cast<char*>(bytes.data()), size)) throw ToolError("cannot read " + path);
    return bytes;
}

// The whitespace-separated header of a Netpbm-style file; comments run from
// '#' to the end of the line and are kept for the PGM height mapping.
class HeaderReader {
public:
    HeaderReader(const std::vector<unsigned char>& bytes, const std::string& path) : bytes_(bytes), path_(path) {}

    std::string Token()
    {
        SkipSpaceAndComments();
        std::string token;
        while (pos_ < bytes_.size() && !IsSpace(bytes_[pos_]) && bytes_[pos_] != '#')
            token += static_cast<char>(bytes_[pos_++]);
        if (token.empty()) throw ToolError(path_ + ": header ends early");
        return token;
    }

    long long Count(const char* what, long long lo, long long hi)
    {
        const std::string token = Token();
        if (token.size() > 9 || !std::all_of(token.begin(), token.end(), [](char c) { return c >= '0' && c <= '9'; }))
            throw ToolError(path_ + ": " + what + " is not a number: " + token);
        const long long value = std::stoll(token);
        if (value < lo || value > hi)
            throw ToolError(path_ + ": " + what + " " + token + " is outside " + std::to_string(lo) + " ... " +
                            std::to_string(hi));
        return value;
    }

    // The single whitespace byte that ends the header; the samples follow.
    std::size_t DataStart()
    {
        if (pos_ >= bytes_.size() || !IsSpace(bytes_[pos_])) throw ToolError(path_ + ": header ends early");
        return pos_ + 1;
    }

    const std::string& Comments() const { return comments_; }

private:
    static bool IsSpace(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

    void SkipSpaceAndComments()
    {
        while (pos_ < bytes_.size()) {
            if (IsSpace(bytes_[pos_])) {
                ++pos_;
            } else if (bytes_[pos_] == '#') {
                while (pos_ < bytes_.size() && bytes_[pos_] != '\n') comments_ += static_cast<char>(bytes_[pos_++]);
                comments_ += ' ';
            } else {
                return;
            }
        }
    }

    const std::vector<unsigned char>& bytes_;
    const std::string& path_;
    std::size_t pos_ = 0;
    std::string comments_;
};

void RequireSamples(const std::vector<unsigned char>& bytes, std::size_t start, long long cells, int bytesPerSample,
                    const std::string& path)
{
    const long long needed = cells * bytesPerSample;
    const long long present = static_cast<long long>(bytes.size()) - static_cast<long long>(start);
    if (present < needed)
        throw ToolError(path + ": truncated, " + std::to_string(needed) + " bytes of samples expected, " +
                        std::to_string(std::max(present, 0LL)) + " present");
}

// "offset=<o> scale=<s>" anywhere in the comments; 0 and 1 when absent.
double CommentNumber(const std::string& comments, const char* key, double fallback, const std::string& path)
{
    const std::size_t at = comments.find(key);
    if (at == std::string::npos) return fallback;
    const char* text = comments.c_str() + at + std::strlen(key);
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    if (end == text || !std::isfinite(value)) throw ToolError(path + ": unreadable " + key + " in the comment");
    return value;
}

LoadedRaster ReadPgm(const std::vector<unsigned char>& bytes, const std::string& path)
{
    HeaderReader header(bytes, path);
    header.Token(); // "P5"
    const long long width = header.Count("width", 1, kMaxSide);
    const long long height = header.Count("height", 1, kMaxSide);
    RequireHoldableSize(width, height, path);
    const long long maxval = header.Count("maximum sample", 1, 65535);
    const std::size_t start = header.DataStart();
    const int bytesPerSample = maxval > 255 ? 2 : 1;
    RequireSamples(bytes, start, width * height, bytesPerSample, path);
    const double offset = CommentNumber(header.Comments(), "offset=", 0.0, path);
    const double scale = CommentNumber(header.Comments(), "scale=", 1.0, path);

    LoadedRaster loaded;
    loaded.format = RasterFormat::Pgm;
    loaded.description = "PGM, " + std::to_string(8 * bytesPerSample) + "-bit";
    if (offset != 0.0 || scale != 1.0) {
        std::ostringstream mapping;
        mapping << ", height = " << offset << " + " << scale << " x sample";
        loaded.description += mapping.str();
    }
    HeightRaster& r = loaded.raster;
    r.width = static_cast<int>(width);
    r.height = static_cast<int>(height);
    r.heights.resize(static_cast<std::size_t>(width * height));
    const unsigned char* p = bytes.data() + start;
    for (std::size_t i = 0; i < r.heights.size(); ++i) {
        const unsigned sample = bytesPerSample == 2 ? (unsigned{p[2 * i]} << 8) | p[2 * i + 1] : unsigned{p[i]};
        r.heights[i] = static_cast<float>(offset + scale * static_cast<double>(sample));
    }
    return loaded;
}

LoadedRaster ReadPfm(const std::vector<unsigned char>& bytes, const std::string& path)
{
    HeaderReader header(bytes, path);
    if (header.Token() != "Pf") throw ToolError(path + ": a colour PFM holds no height field; a grey one (Pf) does");
    const long long width = header.Count("width", 1, kMaxSide);
    const long long height = header.Count("height", 1, kMaxSide);
    RequireHoldableSize(width, height, path);
    const std::string scaleToken = header.Token();
    char* end = nullptr;
    const double scale = std::strtod(scaleToken.c_str(), &end);
    if (*end != '\0' || scale == 0.0 || !std::isfinite(scale))
        throw ToolError(path + ": the byte-order scale is not a non-zero number: " + scaleToken);
    const std::size_t start = header.DataStart();
    RequireSamples(bytes, start, width * height, 4, path);

    // A negative scale marks little-endian samples.
    const bool littleEndian = scale < 0.0;
    LoadedRaster loaded;
    loaded.format = RasterFormat::Pfm;
    loaded.description = littleEndian ? "PFM, little-endian" : "PFM, big-endian";
    HeightRaster& r = loaded.raster;
    r.width = static_cast<int>(width);
    r.height = static_cast<int>(height);
    r.heights.resize(static_cast<std::size_t>(width * height));
    const unsigned char* p = bytes.data() + start;
    for (int storedRow = 0; storedRow < r.height; ++storedRow) {
        // Rows are stored from the bottom up.
        const int row = r.height - 1 - storedRow;
        for (int column = 0; column < r.width; ++column) {
            const unsigned char* b = p + 4 * (static_cast<std::size_t>(storedRow) * r.width + column);
            const std::uint32_t bits = littleEndian
                ? std::uint32_t{b[0]} | std::uint32_t{b[1]} << 8 | std::uint32_t{b[2]} << 16 | std::uint32_t{b[3]} << 24
                : std::uint32_t{b[3]} | std::uint32_t{b[2]} << 8 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[0]} << 24;
            float h;
            std::memcpy(&h, &bits, sizeof h);
            r.At(column, row) = h;
        }
    }
    return loaded;
}

} // namespace

void RequireHoldableSize(long long width, long long height, const std::string& path)
{
    if (width > kMaxSide) throw ToolError(path + ": " + std::to_string(width) + " columns, more than the " +
                                          std::to_string(kMaxSide) + " this program reads");
    if (height > CSSEMatrix::kMaxSizeY)
        throw ToolError(path + ": " + std::to_string(height) + " rows, more than the " +
                        std::to_string(CSSEMatrix::kMaxSizeY) + " a field of the library holds");
    if (width * height > kMaxCells)
        throw ToolError(path + ": " + std::to_string(width * height) + " cells, more than the " +
                        std::to_string(kMaxCells) + " this program reads");
}

LoadedRaster ReadHeightRaster(const std::string& path)
{
    return ParseHeightRaster(ReadWholeFile(path), path);
}

LoadedRaster ParseHeightRaster(const std::vector<unsigned char>& bytes, const std::string& path)
{
    if (bytes.size() >= 2 && bytes[0] == 'P' && bytes[1] == '5') return ReadPgm(bytes, path);
    if (bytes.size() >= 2 && bytes[0] == 'P' && (bytes[1] == 'f' || bytes[1] == 'F')) return ReadPfm(bytes, path);
    if (LooksLikeFieldArchive(bytes)) {
        LoadedRaster loaded;
        loaded.format = RasterFormat::FieldArchive;
        loaded.description = "field archive";
        loaded.raster = ParseFieldArchive(bytes, path);
        return loaded;
    }
    throw ToolError(path + ": neither a PFM (Pf), a binary PGM (P5) nor a field archive");
}

void WritePfm(const std::string& path, const HeightRaster& raster)
{
    std::ofstream out = OpenForWriting(path);
    out << "Pf\n" << raster.width << ' ' << raster.height << "\n-1.0\n";
    std::vector<unsigned char> row(static_cast<std::size_t>(raster.width) * 4);
    for (int r = raster.height - 1; r >= 0; --r) {
        for (int c = 0; c < raster.width; ++c) {
            std::uint32_t bits;
            const float h = raster.At(c, r);
            std::memcpy(&bits, &h, sizeof bits);
            for (int k = 0; k < 4; ++k) row[4 * static_cast<std::size_t>(c) + k] = static_cast<unsigned char>(bits >> (8 * k));
        }
        out.write(reinterpret_cast<const char*>(row.data()), static_cast<std::streamsize>(row.size()));
    }
    FinishWriting(out, path);
}

void WritePgm16(const std::string& path, const HeightRaster& raster)
{
    float lowest = std::numeric_limits<float>::infinity();
    float highest = -std::numeric_limits<float>::infinity();
    for (float h : raster.heights) {
        if (!HeightRaster::HoldsData(h)) continue;
        lowest = std::min(lowest, h);
        highest = std::max(highest, h);
    }
    if (lowest > highest) lowest = highest = 0.0f;
    const double scale = highest > lowest ? (static_cast<double>(highest) - lowest) / 65534.0 : 1.0;
    const double offset = static_cast<double>(lowest) - scale;

    std::ofstream out = OpenForWriting(path);
    out.precision(17);
    out << "P5\n# offset=" << offset << " scale=" << scale << " height_m=offset+scale*value; 0 = no data\n"
        << raster.width << ' ' << raster.height << "\n65535\n";
    std::vector<unsigned char> row(static_cast<std::size_t>(raster.width) * 2);
    for (int r = 0; r < raster.height; ++r) {
        for (int c = 0; c < raster.width; ++c) {
            const float h = raster.At(c, r);
            long sample = 0;
            if (HeightRaster::HoldsData(h)) sample = std::clamp(std::lround((h - offset) / scale), 1L, 65535L);
            row[2 * static_cast<std::size_t>(c)] = static_cast<unsigned char>(sample >> 8);
            row[2 * static_cast<std::size_t>(c) + 1] = static_cast<unsigned char>(sample & 0xFF);
        }
        out.write(reinterpret_cast<const char*>(row.data()), static_cast<std::streamsize>(row.size()));
    }
    FinishWriting(out, path);
}

} // namespace vek::tools
