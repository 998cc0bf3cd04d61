#include "run.h"

#include <chrono>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <system_error>

#include "build_features.h"
#include "command_line.h"
#include "elevation_input.h"
#include "height_raster.h"
#include "mesh_file.h"
#include "progress.h"
#include "result_files.h"
#include "surface_road.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::tools {

namespace {

namespace fs = std::filesystem;

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

// The option's cell size, else the input's own on the ground, else 30.
double CellSizeFor(const Options& options, const LoadedRaster& loaded, std::string& source)
{
    if (options.cellSize > 0.0) {
        source = "by --cell-size";
        return options.cellSize;
    }
    const Georeference& g = loaded.georeference;
    if (g.placed) {
        source = g.degrees ? "from the geotransform, on the ground at the middle row" : "from the geotransform";
        return std::fabs(g.GroundSteps(0.5 * (loaded.raster.height - 1))[0]);
    }
    source = "by default";
    return kDefaultCellSize;
}

std::string Describe(const Georeference& g)
{
    std::ostringstream line;
    line << std::setprecision(10);
    if (g.placed) {
        line << "corner x " << g.originX << " y " << g.originY << ", cells " << std::fabs(g.columnStep) << " x "
             << std::fabs(g.rowStep) << (g.degrees ? " degrees" : "") << (g.rowStep > 0.0 ? ", rows run north" : "");
    } else {
        line << "no geotransform";
    }
    line << ", " << (g.projectionName.empty() ? "no coordinate system" : g.projectionName);
    if (g.noData) line << ", no data " << *g.noData;
    return line.str();
}

void ReportAdaptiveVertices(std::ostream& out, const Options& options, ZrCIncrementalDelaunay2D& d,
                            const RoadResult& road)
{
    out << "target      " << options.maxError << " at most between the surface and the input at any cell centre"
        << " (by --max-error)\n"
        << "vertices    " << d.GetNumVertices() << ": the 4 corners, then " << road.insertedVertices
        << " inserted one at a time where the surface departed most\n";
    if (road.targetReached)
        out << "            (target reached)\n";
    else
        out << "            (target not reached: the budget of " << options.maxVertices
            << " vertices by --max-vertices ran out first)\n";
}

void ReportLatticeVertices(std::ostream& out, const Options& options, ZrCIncrementalDelaunay2D& d,
                           const RoadResult& road)
{
    out << "vertices    " << d.GetNumVertices() << ": " << road.borderVertices << " on the border, "
        << road.innerVertices << " on a staggered lattice " << road.latticeSpacing << " cells apart\n"
        << "            (at most " << options.points << " by --points)\n";
}

int Run(const Options& options, std::ostream& out, Progress& progress)
{
    const std::string input = options.input.empty() ? FindBundledInput() : options.input;
    if (input.empty())
        throw ToolError("the bundled data/" + BundledInputName(BuiltWithGdal()) + " was not found; name an input file");

    progress.Stage("reading " + input);
    auto start = std::chrono::steady_clock::now();
    const LoadedRaster loaded = ReadElevationModel(input);
    const double readSeconds = SecondsSince(start);
    const HeightRaster& raster = loaded.raster;
    float lowest = 0.0f;
    float highest = 0.0f;
    long long withData = 0;
    HeightRange(raster, lowest, highest, withData);
    std::string cellSizeSource;
    const double cellSize = CellSizeFor(options, loaded, cellSizeSource);
    Georeference world = loaded.georeference;
    if (!world.placed) world.FrameInCells(cellSize, raster.height);

    out << std::fixed << std::setprecision(2);
    out << "input       " << input << " (" << loaded.description << ")\n"
        << "            " << raster.width << " x " << raster.height << " cells, " << withData
        << " with data, heights " << lowest << " ... " << highest << ", cell size " << cellSize << " "
        << cellSizeSource << "\n";
    if (loaded.format == RasterFormat::Gdal) out << "            " << Describe(loaded.georeference) << "\n";

    RoadSettings settings{options.points, cellSize, !options.keepLowest,
                          [&progress](const char* stage) { progress.Stage(stage); }, options.mode,
                          options.maxError, options.maxVertices};
    const RoadResult road = RunSurfaceRoad(raster, settings);
    ZrCIncrementalDelaunay2D& d = *road.triangulation;
    if (options.mode == SurfaceMode::Adaptive)
        ReportAdaptiveVertices(out, options, d, road);
    else
        ReportLatticeVertices(out, options, d, road);
    out << "triangles   " << road.triangles << ", scan-converted on five worker threads keeping the "
        << (settings.keepMax ? "highest" : "lowest") << " height per cell\n";
    out << "at centres  over " << road.centre.cells << " cells with data: maximum " << road.centre.maximum
        << ", RMS " << road.centre.rms << " (the triangles' own heights)";
    if (road.centre.uncovered > 0) out << "; " << road.centre.uncovered << " cells with data no triangle covers";
    out << "\n";

    progress.Stage("comparing");
    start = std::chrono::steady_clock::now();
    const Difference diff = CompareRasters(raster, road.surface);
    const double compareSeconds = SecondsSince(start);
    out << "difference  over " << diff.cells << " cells with data: maximum " << diff.maximum << ", RMS " << diff.rms
        << " (the scan-converted field)";
    if (diff.unreached > 0) out << "; " << diff.unreached << " cells with data no triangle reached";
    out << "\n            (each cell of the field keeps the " << (settings.keepMax ? "highest" : "lowest")
        << " of the samples taken across it, which on a\n"
           "            slope lie up to half a cell's rise "
        << (settings.keepMax ? "above" : "below") << " the height at its centre)\n";

    progress.Stage("writing into " + options.outputDirectory);
    start = std::chrono::steady_clock::now();
    const WorldMesh mesh = MeshInWorld(d, raster, settings, world);
    const WrittenFiles files = WriteResults(options, input, {loaded, road.surface, mesh, world});
    const double writeSeconds = SecondsSince(start);

    out << "mesh        " << mesh.vertices.size() << " vertices, " << mesh.triangles.size() << " triangles; "
        << mesh.note << (loaded.georeference.placed ? "" : ", in cells times the cell size") << "\n";
    if (files.errorRange) {
        out << "error map   result minus input: white 0, red +" << *files.errorRange << ", blue -"
            << *files.errorRange << " in height units; " << files.errorBeyond
            << " cells lie beyond and show at the ends\n";
    }
    if (!files.picturesNote.empty()) out << "pictures    " << files.picturesNote << "\n";
    out << std::setprecision(3) << "time s      read " << readSeconds;
    if (options.mode == SurfaceMode::Adaptive)
        out << ", refine " << road.refineSeconds;
    else
        out << ", store " << road.storeSeconds << ", triangulate " << road.triangulateSeconds;
    out << ", compare at centres " << road.checkSeconds << ", scan-convert " << road.scanSeconds << ", compare "
        << compareSeconds << ", write " << writeSeconds << "\n";
    for (std::size_t i = 0; i < files.paths.size(); ++i)
        out << (i == 0 ? "wrote       " : "            ") << files.paths[i] << "\n";
    return 0;
}

} // namespace

std::string FindBundledInput()
{
    const std::string name = BundledInputName(BuiltWithGdal());
    std::vector<fs::path> candidates;
#ifdef TRIANGULATE_FIELD_DATA_DIR
    candidates.push_back(fs::path(TRIANGULATE_FIELD_DATA_DIR) / name);
#endif
    std::error_code ec;
    const fs::path executable = fs::read_symlink("/proc/self/exe", ec);
    if (!ec) {
        // build/<preset>/tools/<program>/<program> lies four folders below
        // the sources, and an installed bin/<program> one below share/.
        fs::path folder = executable.parent_path();
        for (int up = 0; up < 5 && !folder.empty(); ++up, folder = folder.parent_path()) {
            candidates.push_back(folder / "data" / name);
            candidates.push_back(folder / "share" / "vekdll" / name);
        }
    }
    candidates.push_back(fs::path("data") / name);
    for (const fs::path& candidate : candidates) {
        if (fs::is_regular_file(candidate, ec)) return candidate.string();
    }
    return "";
}

int RunTriangulateField(const std::vector<std::string>& args, std::ostream& out, std::ostream& err, bool errIsTerminal)
{
    try {
        const Options options = ParseCommandLine(args);
        if (options.help) {
            out << HelpText();
            return 0;
        }
        Progress progress(err, errIsTerminal);
        return Run(options, out, progress);
    } catch (const ToolError& e) {
        err << "triangulate_field: " << e.what() << "\n";
        return 2;
    } catch (const std::exception& e) {
        err << "triangulate_field: " << e.what() << "\n";
        return 1;
    }
}

} // namespace vek::tools
