#include "surface_road.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::tools {

namespace {

struct Cell {
    int column;
    int up; // row counted from the bottom, the triangulation's y
};

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// 0, step, 2 step, ... rounded to cells, and always the last cell.
std::vector<int> AlongSide(int cells, double step)
{
    std::vector<int> at;
    for (int k = 0;; ++k) {
        const int i = static_cast<int>(std::lround(k * step));
        if (i >= cells - 1) break;
        at.push_back(i);
    }
    at.push_back(cells - 1);
    return at;
}

// The rim of the raster once round, counter-clockwise from the lower left
// corner, a point every `step` cells and one on every corner.
std::vector<Cell> BorderRing(int width, int height, double step)
{
    const std::vector<int> across = AlongSide(width, step);
    const std::vector<int> upwards = AlongSide(height, step);
    std::vector<Cell> ring;
    for (std::size_t k = 0; k + 1 < across.size(); ++k) ring.push_back({across[k], 0});
    for (std::size_t k = 0; k + 1 < upwards.size(); ++k) ring.push_back({width - 1, upwards[k]});
    for (std::size_t k = 0; k + 1 < across.size(); ++k) ring.push_back({width - 1 - across[k], height - 1});
    for (std::size_t k = 0; k + 1 < upwards.size(); ++k) ring.push_back({0, height - 1 - upwards[k]});
    return ring;
}

// Rows `step` apart, every other one shifted by half a step: a lattice of
// near-equilateral triangles with no four points on a circle, kept half a
// step clear of the rim.
std::vector<Cell> InnerLattice(int width, int height, double step)
{
    std::vector<Cell> cells;
    for (int j = 1;; ++j) {
        const double y = j * step;
        if (y > height - 1 - 0.5 * step) break;
        const double shift = j % 2 == 1 ? 0.5 * step : 0.0;
        for (int k = 1;; ++k) {
            const double x = k * step - shift;
            if (x > width - 1 - 0.5 * step) break;
            cells.push_back({static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))});
        }
    }
    return cells;
}

std::size_t CountAt(int width, int height, double step)
{
    return BorderRing(width, height, step).size() + InnerLattice(width, height, step).size();
}

// The smallest spacing whose border and lattice together stay within
// `points`, by bisection; one cell at the least.
double SpacingFor(int width, int height, int points)
{
    double dense = 1.0;
    double sparse = std::max(width, height);
    if (CountAt(width, height, dense) <= static_cast<std::size_t>(points)) return dense;
    for (int i = 0; i < 40; ++i) {
        const double mid = 0.5 * (dense + sparse);
        (CountAt(width, height, mid) <= static_cast<std::size_t>(points) ? sparse : dense) = mid;
    }
    return sparse;
}

SSEPoint VertexOf(const HeightRaster& input, const Cell& cell, double cellSize)
{
    const float h = input.At(cell.column, input.height - 1 - cell.up);
    SSEPoint p;
    p.sse = _mm_setr_ps(static_cast<float>(cell.column), static_cast<float>(cell.up),
                        static_cast<float>(h / cellSize), 0.0f);
    return p;
}

bool HasData(const HeightRaster& input, const Cell& cell)
{
    return HeightRaster::HoldsData(input.At(cell.column, input.height - 1 - cell.up));
}

// The border goes in as one polygon, the lattice point by point; cells
// without data are left out.
void StoreVertices(ZrCIncrementalDelaunay2D& d, const HeightRaster& input, double step, double cellSize,
                   RoadResult& result)
{
    std::vector<Cell> border = BorderRing(input.width, input.height, step);
    std::vector<Cell> inner = InnerLattice(input.width, input.height, step);
    const auto noData = [&](const Cell& c) { return !HasData(input, c); };
    border.erase(std::remove_if(border.begin(), border.end(), noData), border.end());
    inner.erase(std::remove_if(inner.begin(), inner.end(), noData), inner.end());

    d.CreateVertexArray(static_cast<int>(border.size() + inner.size()) + 4);
    CSSE3dPolygon ring;
    ring.Create(static_cast<int>(border.size()));
    for (std::size_t i = 0; i < border.size(); ++i) {
        SSEPoint p = VertexOf(input, border[i], cellSize);
        ring.SetPointSSE(static_cast<int>(i), p);
    }
    d.AddPolygon(ring, false);
    for (const Cell& c : inner) d.AppendVertex(VertexOf(input, c, cellSize));
    result.borderVertices = static_cast<int>(border.size());
    result.innerVertices = static_cast<int>(inner.size());
    result.latticeSpacing = step;
}

// Field cell (X, Y) lies at column X + origin.x and at row Y + origin.y
// counted from the bottom, the scan resolution being one cell.
HeightRaster OntoInputCells(const CSSEMatrix& field, const SSEPoint& origin, int width, int height)
{
    HeightRaster surface;
    surface.width = width;
    surface.height = height;
    surface.heights.assign(static_cast<std::size_t>(width) * height, std::numeric_limits<float>::quiet_NaN());
    const int ox = static_cast<int>(std::lround(origin.x));
    const int oy = static_cast<int>(std::lround(origin.y));
    for (int Y = 0; Y < field.GetSizeY(); ++Y) {
        const int row = height - 1 - (Y + oy);
        for (int X = 0; X < field.GetSizeX(); ++X) {
            const int column = X + ox;
            if (row < 0 || row >= height || column < 0 || column >= width) continue;
            surface.At(column, row) = field.GetPoint(X, Y);
        }
    }
    return surface;
}

} // namespace

RoadResult::RoadResult() = default;
RoadResult::~RoadResult() = default;
RoadResult::RoadResult(RoadResult&&) noexcept = default;
RoadResult& RoadResult::operator=(RoadResult&&) noexcept = default;

// Exact predicates: a raster's rim puts whole-cell points hundreds of cells
// apart on long lines, where the float decisions contradict each other. The
// vertices are in cells of the raster from its lower left corner, so no
// world coordinate meets the arithmetic; the writers apply the georeference.
std::unique_ptr<ZrCIncrementalDelaunay2D> NewTriangulation()
{
    auto triangulation = std::make_unique<ZrCIncrementalDelaunay2D>();
    triangulation->SetPredicates(vek::PlanarPredicates::Exact);
    return triangulation;
}

HeightGrid GridOf(const HeightRaster& input)
{
    return {input.width, input.height,
            input.heights.data() + static_cast<std::ptrdiff_t>(input.height - 1) * input.width, -input.width};
}

RoadResult RunSurfaceRoad(const HeightRaster& input, const RoadSettings& settings)
{
    if (input.width < 2 || input.height < 2) throw ToolError("a raster of at least 2 x 2 cells is needed");
    return settings.mode == SurfaceMode::Adaptive ? RunAdaptiveRoad(input, settings) : RunLatticeRoad(input, settings);
}

RoadResult RunLatticeRoad(const HeightRaster& input, const RoadSettings& settings)
{
    RoadResult result;
    result.triangulation = NewTriangulation();
    ZrCIncrementalDelaunay2D& d = *result.triangulation;

    const auto stage = [&](const char* name) {
        if (settings.stage) settings.stage(name);
    };
    stage("storing vertices");
    auto start = std::chrono::steady_clock::now();
    StoreVertices(d, input, SpacingFor(input.width, input.height, settings.points), settings.cellSize, result);
    result.storeSeconds = SecondsSince(start);
    if (d.GetNumVertices() < 3) throw ToolError("fewer than 3 cells hold data");

    stage("triangulating");
    start = std::chrono::steady_clock::now();
    d.Triangulate(d.GetNumVertices(), true, true);
    result.triangulateSeconds = SecondsSince(start);
    CheckAndScanConvert(input, settings, result);
    return result;
}

void CheckAndScanConvert(const HeightRaster& input, const RoadSettings& settings, RoadResult& result)
{
    ZrCIncrementalDelaunay2D& d = *result.triangulation;
    if (!d.IsFinalized()) d.FinalizeTriangleList();
    result.triangles = d.GetNumTriangles();
    const auto stage = [&](const char* name) {
        if (settings.stage) settings.stage(name);
    };

    stage("comparing at the cell centres");
    auto start = std::chrono::steady_clock::now();
    result.centre = CompareAtCellCentres(d, GridOf(input), settings.cellSize);
    result.checkSeconds = SecondsSince(start);

    // Heights were divided by the cell size; a z cell of 1 / size brings
    // them back. Cells that no triangle reaches get not-a-number, the
    // program's "no data", so that a true height of 0 stays one.
    stage("scan-converting");
    start = std::chrono::steady_clock::now();
    d.CalcBoundingBox();
    d.SetScanConvResolution(1.0f, 1.0f, static_cast<float>(1.0 / settings.cellSize));
    CSSEMatrix field;
    SSEPoint origin;
    d.FastScanConvertTriangulation(&field, std::numeric_limits<float>::quiet_NaN(), origin, settings.keepMax);
    result.surface = OntoInputCells(field, origin, input.width, input.height);
    result.scanSeconds = SecondsSince(start);
}

RasterPoint OnInput(const SSEPoint& vertex, const HeightRaster& input, const RoadSettings& settings)
{
    return {vertex.x, input.height - 1 - static_cast<double>(vertex.y), vertex.z * settings.cellSize};
}

Difference CompareRasters(const HeightRaster& input, const HeightRaster& result)
{
    Difference d;
    double squares = 0.0;
    for (std::size_t i = 0; i < input.heights.size(); ++i) {
        if (!HeightRaster::HoldsData(input.heights[i])) continue;
        if (!HeightRaster::HoldsData(result.heights[i])) {
            ++d.unreached;
            continue;
        }
        const double e = std::fabs(static_cast<double>(result.heights[i]) - input.heights[i]);
        d.maximum = std::max(d.maximum, e);
        squares += e * e;
        ++d.cells;
    }
    if (d.cells > 0) d.rms = std::sqrt(squares / static_cast<double>(d.cells));
    return d;
}

} // namespace vek::tools
