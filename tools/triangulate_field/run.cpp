#include "run.h"

#include <chrono>
#include <filesystem>
#include <iomanip>
#include <system_error>

#include "command_line.h"
#include "field_archive.h"
#include "height_raster.h"
#include "mesh_file.h"
#include "raster_files.h"
#include "surface_road.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::tools {

namespace {

namespace fs = std::filesystem;

constexpr const char* kBundledName = "bigtujunga.pgm";

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void HeightRange(const HeightRaster& r, float& lowest, float& highest, long long& withData)
{
    lowest = highest = 0.0f;
    withData = 0;
    for (float h : r.heights) {
        if (!HeightRaster::HoldsData(h)) continue;
        if (withData++ == 0) lowest = highest = h;
        lowest = std::min(lowest, h);
        highest = std::max(highest, h);
    }
}

struct Outputs {
    std::string pfm;
    std::string pgm;
    std::string field;
    std::string obj;
};

Outputs OutputNames(const Options& options, const std::string& input)
{
    std::error_code ec;
    fs::create_directories(options.outputDirectory, ec);
    if (ec) throw ToolError("cannot make the folder " + options.outputDirectory + ": " + ec.message());
    const fs::path base = fs::path(options.outputDirectory) / fs::path(input).stem();
    return {base.string() + "_surface.pfm", base.string() + "_surface.pgm", base.string() + "_surface.field",
            base.string() + "_triangles.obj"};
}

int Run(const Options& options, std::ostream& out)
{
    const std::string input = options.input.empty() ? FindBundledInput() : options.input;
    if (input.empty())
        throw ToolError(std::string("the bundled data/") + kBundledName + " was not found; name an input file");

    auto start = std::chrono::steady_clock::now();
    const LoadedRaster loaded = ReadHeightRaster(input);
    const double readSeconds = SecondsSince(start);
    const HeightRaster& raster = loaded.raster;
    float lowest = 0.0f;
    float highest = 0.0f;
    long long withData = 0;
    HeightRange(raster, lowest, highest, withData);

    out << std::fixed << std::setprecision(2);
    out << "input       " << input << " (" << loaded.description << ")\n"
        << "            " << raster.width << " x " << raster.height << " cells, " << withData
        << " with data, heights " << lowest << " ... " << highest << ", cell size " << options.cellSize << "\n";

    const RoadSettings settings{options.points, options.cellSize, !options.keepLowest};
    const RoadResult road = RunSurfaceRoad(raster, settings);
    ZrCIncrementalDelaunay2D& d = *road.triangulation;
    out << "vertices    " << d.GetNumVertices() << ": " << road.borderVertices << " on the border, "
        << road.innerVertices << " on a staggered lattice " << road.latticeSpacing << " cells apart\n"
        << "            (at most " << options.points
        << " by --points: insertion is still quadratic, and that many keep the run to a few seconds)\n"
        << "triangles   " << road.triangles << ", scan-converted on five worker threads keeping the "
        << (settings.keepMax ? "highest" : "lowest") << " height per cell\n";

    start = std::chrono::steady_clock::now();
    const Difference diff = CompareRasters(raster, road.surface);
    const double compareSeconds = SecondsSince(start);
    out << "difference  over " << diff.cells << " cells with data: maximum " << diff.maximum << ", RMS " << diff.rms;
    if (diff.unreached > 0) out << "; " << diff.unreached << " cells with data no triangle reached";
    out << "\n";

    start = std::chrono::steady_clock::now();
    const Outputs files = OutputNames(options, input);
    WritePfm(files.pfm, road.surface);
    WritePgm16(files.pgm, road.surface);
    WriteFieldArchive(files.field, road.surface);
    WriteObj(files.obj, d, options.cellSize);
    const double writeSeconds = SecondsSince(start);

    out << std::setprecision(3) << "time s      read " << readSeconds << ", store " << road.storeSeconds
        << ", triangulate " << road.triangulateSeconds << ", scan-convert " << road.scanSeconds << ", compare "
        << compareSeconds << ", write " << writeSeconds << "\n"
        << "wrote       " << files.pfm << "\n"
        << "            " << files.pgm << "\n"
        << "            " << files.field << "\n"
        << "            " << files.obj << "\n";
    return 0;
}

} // namespace

std::string FindBundledInput()
{
    std::vector<fs::path> candidates;
#ifdef TRIANGULATE_FIELD_DATA_DIR
    candidates.push_back(fs::path(TRIANGULATE_FIELD_DATA_DIR) / kBundledName);
#endif
    std::error_code ec;
    const fs::path executable = fs::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        // build/<preset>/tools/<program>/<program> lies four folders below
        // the sources.
        fs::path folder = executable.parent_path();
        for (int up = 0; up < 5 && !folder.empty(); ++up, folder = folder.parent_path())
            candidates.push_back(folder / "data" / kBundledName);
    }
    candidates.push_back(fs::path("data") / kBundledName);
    for (const fs::path& candidate : candidates) {
        if (fs::is_regular_file(candidate, ec)) return candidate.string();
    }
    return "";
}

int RunTriangulateField(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    try {
        const Options options = ParseCommandLine(args);
        if (options.help) {
            out << HelpText();
            return 0;
        }
        return Run(options, out);
    } catch (const ToolError& e) {
        err << "triangulate_field: " << e.what() << "\n";
        return 2;
    } catch (const std::exception& e) {
        err << "triangulate_field: " << e.what() << "\n";
        return 1;
    }
}

} // namespace vek::tools
