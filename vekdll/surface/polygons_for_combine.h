#pragma once

#include <cstdint>

#include "vekdll/export.h"

class CSSE3dPolygon;

// One section of a seam: a stretch of each of the two border polygons that
// face each other, cut so that the seam builder works on short pieces that
// match. Both polygons are owned by the section's holder and freed with it.
struct VEKDLL_API t_PolygonsForCombineDelaunay {
    CSSE3dPolygon* FirstPolygon;
    CSSE3dPolygon* SecondPolygon;
    std::int32_t Index; // the running number of the section
};

// The finest triangulation cuts its seams into the same sections.
using t_PolygonsForCombine = t_PolygonsForCombineDelaunay;
