#pragma once

#include <algorithm>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/polygons/sse_3d_polygon.h"

// One step of the breadth-first walk over the triangles that lie along a
// polygon, as the deletion of an area runs it; written over the triangle
// record so that both triangulation classes take the same step.

namespace vek::detail {

// Nearest-point searches of this walk start here: a polygon point this far
// from a corner or farther counts as none.
inline constexpr float kNoPolygonPointNear = 999.9f;

// Distance to the nearest point of `polygon`, and its index; the first of
// equal distances wins, and -1 with kNoPolygonPointNear where none is nearer.
inline float NearestPolygonPoint(const CSSE3dPolygon& polygon, SSEPoint corner, int& index)
{
    index = polygon.ClosestPoint(corner);
    if (index < 0) return kNoPolygonPointNear;
    SSEPoint nearest;
    polygon.GetPointSSE(index, nearest);
    const float d = CSSEFns::euclideandistance(nearest.sse, corner.sse);
    if (d < kNoPolygonPointNear) return d;
    index = -1;
    return kNoPolygonPointNear;
}

// A triangle whose three corners all lie within distance + tolerance of the
// polygon gets Ignore and its unvisited neighbours are queued, in side
// order. On a polygon of 80 points or more the corners must also be near
// one stretch of it, at most a tenth of its points long counted either way
// round: a triangle that spans a thin part of the polygon, its corners near
// opposite shores, is left alone.
template <class Triangle>
void CheckTriangleNearPolygon(const SSEPoint* vertices, Triangle* t, CList<Triangle*>* list, float distance,
                              float tolerance, const CSSE3dPolygon& polygon)
{
    if (t == nullptr || t->Processed) return;
    t->Ignore = false;
    t->Processed = true;
    float d[3];
    int index[3];
    for (int k = 0; k < 3; ++k) d[k] = NearestPolygonPoint(polygon, vertices[t->Vertex[k]], index[k]);
    const float limit = distance + tolerance;
    if (d[0] <= limit && d[1] <= limit && d[2] <= limit) {
        const int count = polygon.GetNumPoints();
        if (count < 80) {
            t->Ignore = true;
        } else {
            const int lowest = std::min({index[0], index[1], index[2]});
            const int highest = std::max({index[0], index[1], index[2]});
            const int span = std::min(highest - lowest, count - highest + lowest);
            t->Ignore = span <= static_cast<int>(static_cast<double>(count) / 10.0 + 0.5);
        }
    }
    if (!t->Ignore || list == nullptr) return;
    for (Triangle* neighbour : t->Neighbour) {
        if (neighbour == nullptr || neighbour->Visited) continue;
        neighbour->Visited = true;
        list->AddTail(neighbour);
    }
}

} // namespace vek::detail
