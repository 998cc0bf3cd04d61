// The adaptive road: the surface grows from the raster's corners one vertex
// at a time, each at the cell where it departs most from the input, until
// every cell centre is within the target or the budget of vertices is spent.

#include <chrono>

#include "surface_road.h"
#include "vekdll/surface/greedy_refinement.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek::tools {

RoadResult RunAdaptiveRoad(const HeightRaster& input, const RoadSettings& settings)
{
    RoadResult result;
    result.triangulation = NewTriangulation();
    ZrCIncrementalDelaunay2D& d = *result.triangulation;
    if (settings.stage) settings.stage("refining");
    const auto start = std::chrono::steady_clock::now();
    GreedyRefinement refinement(d, GridOf(input));
    refinement.Start();
    const GreedyRefinement::Outcome outcome = refinement.Refine(settings.maxError, settings.maxVertices);
    // The refinement puts heights as given in z; the road keeps them over
    // the cell size, as the lattice does, for the scan conversion and the
    // mesh.
    for (int i = 0; i < d.GetNumVertices(); ++i)
        d.SetZValueInVertex(static_cast<float>(d.GetVertex(i).z / settings.cellSize), i);
    result.refineSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.insertedVertices = outcome.inserted;
    result.targetReached = outcome.targetReached;
    CheckAndScanConvert(input, settings, result);
    return result;
}

} // namespace vek::tools
