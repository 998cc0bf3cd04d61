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

// An option of the other mode would be ignored in silence; it is refused
// instead, naming the mode it belongs to.
void CheckModeOptions(const Options& options, const std::string& latticeOption, const std::string& adaptiveOption)
{
    if (options.mode == SurfaceMode::Adaptive && !latticeOption.empty())
        throw ToolError(latticeOption + " belongs to --mode lattice");
    if (options.mode == SurfaceMode::Lattice && !adaptiveOption.empty())
        throw ToolError(adaptiveOption + " belongs to the adaptive mode, not --mode lattice");
}

} // namespace

Options ParseCommandLine(const std::vector<std::string>& args)
{
    Options options;
    std::string latticeOption;
    std::string adaptiveOption;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "-h" || arg == "--help") {
            options.help = true;
        } else if (arg == "--mode") {
            const std::string& mode = ValueOf(args, i);
            if (mode != "adaptive" && mode != "lattice")
                throw ToolError(arg + " takes adaptive or lattice, not '" + mode + "'");
            options.mode = mode == "lattice" ? SurfaceMode::Lattice : SurfaceMode::Adaptive;
        } else if (arg == "-e" || arg == "--max-error") {
            options.maxError = PositiveNumber(arg, ValueOf(args, i));
            adaptiveOption = arg;
        } else if (arg == "--max-vertices") {
            options.maxVertices = PositiveInt(arg, ValueOf(args, i), 4, 100'000'000);
            adaptiveOption = arg;
        } else if (arg == "-n" || arg == "--points") {
            options.points = PositiveInt(arg, ValueOf(args, i), 3, 10'000'000);
            latticeOption = arg;
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
    CheckModeOptions(options, latticeOption, adaptiveOption);
    return options;
}

std::string HelpText()
{
    const std::string pictures = BuiltWithPng() ? "" : "\n                     (" + WithoutPngNote() + ")";
    return R"(Usage: triangulate_field [options] [INPUT]

Triangulates a height field and scan-converts the triangles back into a field.
By default the surface grows from the field's four corners one vertex at a
time under the Delaunay rule, each vertex at the cell where the surface departs
most from the input, until no cell centre departs by more than the target.
The surface is scan-converted on five worker threads, and the program tells how
far it departs from the input, at the cell centres and as scan-converted.

)" + InputHelp(BuiltWithGdal()) +
           R"(
Options:
  -e, --max-error E  the largest departure from the input allowed at any cell
                     centre, in the units of the heights (default 10: for the
                     bundled model's metres about the accuracy of its SRTM
                     heights; a closer fit mostly traces their noise, and 2
                     takes six times the triangles of 10).
  --max-vertices N   stop inserting at N vertices even if the target is not
                     reached (default 5000000, which bounds the memory).
  --mode M           adaptive (default), or lattice: the border and a staggered
                     lattice of cells, stored first and triangulated in one go.
  -n, --points N     the lattice mode's vertices, about (default 60000, which
                     the insertion triangulates in about a second).
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
