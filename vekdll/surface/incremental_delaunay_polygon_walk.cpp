// The step of the walk along a polygon that the deletion of an area repeats
// until no triangle changes.

#include "vekdll/surface/incremental_delaunay.h"
#include "vekdll/surface/polygon_proximity_walk.h"

void ZrCIncrementalDelaunay2D::CheckTrianguleAndProcessList(t_hdelaunaytriangle* t, POSITION /*position*/,
                                                            CList<t_hdelaunaytriangle*>* list, float distance,
                                                            float tolerance, const CSSE3dPolygon& polygon)
{
    vek::detail::CheckTriangleNearPolygon(Vertices, t, list, distance, tolerance, polygon);
}
