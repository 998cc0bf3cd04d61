#include "result_files.h"

#include <filesystem>
#include <system_error>

#include "build_features.h"
#include "field_archive.h"
#include "gdal_rasters.h"
#include "output_files.h"
#include "png_file.h"

namespace vek::tools {

namespace {

namespace fs = std::filesystem;

class Writer {
public:
    Writer(const Options& options, const std::string& inputPath)
    {
        std::error_code ec;
        fs::create_directories(options.outputDirectory, ec);
        if (ec) throw ToolError("cannot make the folder " + options.outputDirectory + ": " + ec.message());
        base_ = (fs::path(options.outputDirectory) / fs::path(inputPath).stem()).string();
    }

    template <typename Write>
    void File(const std::string& suffix, Write write)
    {
        const std::string path = base_ + suffix;
        WriteAtomically(path, write);
        written_.paths.push_back(path);
    }

    WrittenFiles& Written() { return written_; }

private:
    std::string base_;
    WrittenFiles written_;
};

void WriteSurface(Writer& writer, const Results& r)
{
    if (r.input.format == RasterFormat::Gdal) {
        writer.File("_surface.tif", [&](const std::string& to) { WriteGeoTiff(to, r.surface, r.world); });
    } else {
        writer.File("_surface.pfm", [&](const std::string& to) { WritePfm(to, r.surface); });
        writer.File("_surface.pgm", [&](const std::string& to) { WritePgm16(to, r.surface); });
    }
    writer.File("_surface.field", [&](const std::string& to) { WriteFieldArchive(to, r.surface); });
}

void WritePictures(Writer& writer, const Results& r)
{
    if (!BuiltWithPng()) {
        writer.Written().picturesNote = WithoutPngNote();
        return;
    }
    const RgbaImage relief = ShadedRelief(r.surface, r.world);
    writer.File("_relief.png", [&](const std::string& to) { WritePng(to, relief); });
    const ErrorMap error = DrawErrorMap(r.input.raster, r.surface);
    writer.File("_error.png", [&](const std::string& to) { WritePng(to, error.image); });
    writer.Written().errorRange = error.range;
    writer.Written().errorBeyond = error.beyond;
}

} // namespace

WrittenFiles WriteResults(const Options& options, const std::string& inputPath, const Results& results)
{
    Writer writer(options, inputPath);
    WriteSurface(writer, results);
    if (options.meshFormat == MeshFormat::Ply) {
        writer.File("_triangles.ply", [&](const std::string& to) { WritePly(to, results.mesh); });
    } else {
        writer.File("_triangles.obj", [&](const std::string& to) { WriteObj(to, results.mesh); });
    }
    if (options.images) WritePictures(writer, results);
    return writer.Written();
}

} // namespace vek::tools
