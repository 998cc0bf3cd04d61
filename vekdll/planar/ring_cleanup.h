#pragma once

#include "vekdll/export.h"
#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

namespace vek {

// A copy of a ring without its repeated points, for ear clipping: a point
// that repeats the one before it is dropped, and so are points at the end
// that repeat the first, as a ring given closed has. Ear clipping can't cut
// at a repeated point (it makes a corner of no size), so a ring that has
// one is cut short or not at all.
//
// Points are compared in x and y, exactly: the ring is cut in the plane, so
// a point that differs from its predecessor in z alone is a repeat too; the
// first point of each run is kept, with its z and its normalised copy.
VEKDLL_API CSSE3dPolygon DropRepeatedRingPoints(const CSSE3dPolygon& ring);
VEKDLL_API CSSE2dPolygon DropRepeatedRingPoints(const CSSE2dPolygon& ring);

} // namespace vek
