#pragma once

#include <functional>
#include <memory>

#include "height_raster.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/surface/cell_centre_error.h"
#include "vekdll/surface/height_grid.h"

class ZrCIncrementalDelaunay2D;

namespace vek::tools {

// How the vertices are chosen. Adaptive: one at a time where the surface
// departs most from the input, until it is within a target everywhere.
// Lattice: the border and a staggered lattice of a given count, stored
// first and triangulated in one go.
enum class SurfaceMode { Adaptive, Lattice };

// How many vertices at most, the side of a cell in height units, and which
// sheet wins where the surface folds over a cell (see Options).
struct RoadSettings {
    // The lattice mode's vertices.
    int points;
    double cellSize;
    bool keepMax;
    // Told the name of each stage as it begins; may be empty.
    std::function<void(const char*)> stage;
    SurfaceMode mode = SurfaceMode::Lattice;
    // The adaptive mode's target, in height units, and its budget.
    double maxError = 0.0;
    int maxVertices = 0;
};

// One surface through the library: vertices on cells of the input (x the
// column, y the row counted from the bottom, z the height over the cell
// size, all in cells) are triangulated, and the triangles are compared with
// the input at the cells' centres and scan-converted back onto its cells.
struct RoadResult {
    RoadResult();
    ~RoadResult();
    RoadResult(RoadResult&&) noexcept;
    RoadResult& operator=(RoadResult&&) noexcept;

    std::unique_ptr<ZrCIncrementalDelaunay2D> triangulation;
    // The scan-converted heights, in the input's units, on the input's
    // cells; cells that no triangle reached hold no data.
    HeightRaster surface;
    // The triangles' own heights at the cells' centres against the input.
    CentreError centre;
    int triangles = 0;
    // The lattice mode.
    int borderVertices = 0;
    int innerVertices = 0;
    double latticeSpacing = 0.0;
    double storeSeconds = 0.0;
    double triangulateSeconds = 0.0;
    // The adaptive mode: vertices it inserted after the corners, and
    // whether the target was reached before the budget ran out.
    int insertedVertices = 0;
    bool targetReached = false;
    double refineSeconds = 0.0;
    // Both.
    double checkSeconds = 0.0;
    double scanSeconds = 0.0;
};

// Throws ToolError for an input that cannot be triangulated.
RoadResult RunSurfaceRoad(const HeightRaster& input, const RoadSettings& settings);

// The two roads; RunSurfaceRoad takes the one that settings.mode names.
RoadResult RunLatticeRoad(const HeightRaster& input, const RoadSettings& settings);
RoadResult RunAdaptiveRoad(const HeightRaster& input, const RoadSettings& settings);

// What both roads share: the one place that makes the triangulation, and
// the last stages, which compare the finalized triangles with the input at
// the cells' centres (vertex z times the cell size being a height) and
// scan-convert them onto the input's cells.
std::unique_ptr<ZrCIncrementalDelaunay2D> NewTriangulation();
void CheckAndScanConvert(const HeightRaster& input, const RoadSettings& settings, RoadResult& result);

// The input as the library measures surfaces against it: y counts rows from
// the bottom.
HeightGrid GridOf(const HeightRaster& input);

// Where a vertex of the triangulation lies on the input: its column, its
// row counted from the top, and its height in the input's units.
struct RasterPoint {
    double column;
    double row;
    double height;
};

RasterPoint OnInput(const SSEPoint& vertex, const HeightRaster& input, const RoadSettings& settings);

// How far the result departs from the input over the cells where both hold
// data.
struct Difference {
    long long cells = 0;
    long long unreached = 0;
    double maximum = 0.0;
    double rms = 0.0;
};

Difference CompareRasters(const HeightRaster& input, const HeightRaster& result);

} // namespace vek::tools
