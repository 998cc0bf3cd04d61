#include "command_line.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "build_features.h"
#include "height_raster.h"

namespace vek::tools {

namespace {

const std::string& ValueOf(const std::vector<std::string>& args, std::size_t& i)
{
    if (i + 1 >= args.size()) throw ToolError(args[i] + " needs a value");
    return args[++i];
}

int PositiveInt(const std::string& option, const std::string& text, int lo, int hi)
{
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || value < lo || value > hi)
        throw ToolError(option + " takes a whole number from " + std::to_string(lo) + " to " + std::to_string(hi) +
                        ", not '" + text + "'");
    return static_cast<int>(value);
}

double PositiveNumber(const std::string& option, const std::string& text)
{
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(value) || value <= 0.0)
        throw ToolError(option + " takes a number above 0, not '" + text + "'");
    return value;
}

} // namespace

Options ParseCommandLine(const std::vector<std::string>& args)
{
    Options options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "-h" || arg == "--help") {
            options.help = true;
        } else if (arg == "-n" || arg == "--points") {
            options.points = PositiveInt(arg, ValueOf(args, i), 3, 10'000'000);
        } else if (arg == "--cell-size") {
            options.cellSize = PositiveNumber(arg, ValueOf(args, i));
        } else if (arg == "-o" || arg == "--output") {
            options.outputDirectory = ValueOf(args, i);
            if (options.outputDirectory.empty()) throw ToolError(arg + " needs a folder");
        } else if (arg == "--lowest") {
            options.keepLowest = true;
        } else if (arg == "--mesh-format") {
            const std::string& format = ValueOf(args, i);
            if (format != "obj" && format != "ply") throw ToolError(arg + " takes obj or ply, not '" + format + "'");
            options.meshFormat = format == "ply" ? MeshFormat::Ply : MeshFormat::Obj;
        } else if (arg == "--no-images") {
            options.images = false;
        } else if (arg.size() > 1 && arg[0] == '-') {
            throw ToolError("unknown option " + arg + " (see --help)");
        } else if (options.input.empty()) {
            options.input = arg;
        } else {
            throw ToolError("one input at a time: " + options.input + " and " + arg);
        }
    }
    return options;
}

std::string HelpText()
{
    const std::string pictures = BuiltWithPng() ? "" : "\n                     (" + WithoutPngNote() + ")";
    return R"(Usage: triangulate_field [options] [INPUT]

Triangulates a height field and scan-converts the triangles back into a field:
stores border and sample points, triangulates them under the Delaunay rule,
scan-converts the surface on five worker threads, and tells how far the result
departs from the input.

)" + InputHelp(BuiltWithGdal()) +
           R"(
Options:
  -n, --points N     vertices to store, about (default 16000). The insertion is
                     still quadratic in the vertices: 16000 take a few seconds.
  --cell-size S      side of a cell in the units of the heights, so that slopes
                     are true (default: the input's own from its geotransform,
                     else 30, the bundled model's 30 m cells).
  --lowest           where the surface folds over a cell keep the lowest
                     height; the default keeps the highest.
  --mesh-format F    obj (default) or ply for the triangles.
  --no-images        write no pictures.
  -o, --output DIR   folder for the results (default out), made if missing:
                       <name>_surface.tif   the scan-converted heights as a
                                            GeoTIFF with the input's georeference
                                            and no-data value (inputs read
                                            through GDAL)
                       <name>_surface.pfm   the same as a PFM and as a 16-bit
                       <name>_surface.pgm   grey PGM (other inputs)
                       <name>_surface.field the same as a field archive
                       <name>_triangles.obj the triangles, Wavefront OBJ, or
                       <name>_triangles.ply binary PLY; x, y in world units
                                            where the input has a georeference
                       <name>_relief.png    the result in shaded relief
                       <name>_error.png     the result minus the input: red
                                            above, blue below, white alike)" +
           pictures + R"(
                     Each file appears under its name only once it is whole.
  -h, --help         this text.

At a terminal, a run that takes longer than a second names each stage on
stderr as it begins.

Exit codes: 0 done, 2 bad arguments or a file that cannot be read or written,
1 anything else.
)";
}

} // namespace vek::tools
