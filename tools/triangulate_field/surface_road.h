#pragma once

#include <functional>
#include <memory>

#include "height_raster.h"
#include "vekdll/foundation/sse_point.h"

class ZrCIncrementalDelaunay2D;

namespace vek::tools {

// How many vertices at most, the side of a cell in height units, and which
// sheet wins where the surface folds over a cell (see Options).
struct RoadSettings {
    int points;
    double cellSize;
    bool keepMax;
    // Told the name of each stage as it begins; may be empty.
    std::function<void(const char*)> stage;
};

// One surface through the library: the input's border and a staggered
// lattice of its cells become vertices (x the column, y the row counted from
// the bottom, z the height over the cell size, all in cells), are
// triangulated, and the triangles are scan-converted back onto the input's
// cells.
struct RoadResult {
    RoadResult();
    ~RoadResult();
    RoadResult(RoadResult&&) noexcept;
    RoadResult& operator=(RoadResult&&) noexcept;

    std::unique_ptr<ZrCIncrementalDelaunay2D> triangulation;
    // The scan-converted heights, in the input's units, on the input's
    // cells; cells that no triangle reached hold no data.
    HeightRaster surface;
    int borderVertices = 0;
    int innerVertices = 0;
    double latticeSpacing = 0.0;
    int triangles = 0;
    double storeSeconds = 0.0;
    double triangulateSeconds = 0.0;
    double scanSeconds = 0.0;
};

// Throws ToolError for an input that cannot be triangulated.
RoadResult RunSurfaceRoad(const HeightRaster& input, const RoadSettings& settings);

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
