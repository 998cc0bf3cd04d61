#pragma once

#include <vector>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/polygons/sse_3d_polygon.h"

// The line that lies a given fraction of the way between two lines that
// face each other, such as the two rims of a seam. Each point of one line
// is paired with the nearest place on the other; the blend walks the longer
// of the two, so that it has as many points as the finer rim and no stretch
// of either is skipped. The pairings are found on two worker threads, one
// per line, and the constructor waits for both.
class VEKDLL_API PolygonBlend {
public:
    // Both lines need at least 3 points, otherwise nothing is paired and
    // every blend is empty. `closed` joins the last point of each line to
    // its first when nearest places are looked for. `fraction` is kept as
    // the default of Blend().
    PolygonBlend(const CSSE3dPolygon& first, const CSSE3dPolygon& second, float fraction, bool closed);
    PolygonBlend(const PolygonBlend&) = delete;
    PolygonBlend& operator=(const PolygonBlend&) = delete;

    bool IsValid() const { return Valid; }
    // The line at `fraction` (clamped to 0 .. 1) between the first line (0)
    // and the second (1), as a polygon owned by this object and replaced by
    // the next call; empty when the blend is not valid.
    const CSSE3dPolygon& Blend(float fraction);
    const CSSE3dPolygon& Blend() { return Blend(Fraction); }

    // The place on `line`, sampled every `step` of each segment, nearest in
    // space to p; `closed` includes the segment from the last point back to
    // the first. `line` has at least one point.
    static SSEPoint NearestPlaceOnLine(const CSSE3dPolygon& line, const SSEPoint& p, float step, bool closed);
    // The length of the line in space, with the closing segment if `closed`.
    static float LineLength(const CSSE3dPolygon& line, bool closed);

private:
    // The work of one thread: for every point of `from`, its partner on `to`.
    static void PairPoints(const CSSE3dPolygon& from, const CSSE3dPolygon& to, float step, bool closed,
                           std::vector<SSEPoint>& partners);

    CSSE3dPolygon First;
    CSSE3dPolygon Second;
    CSSE3dPolygon Result;
    float Fraction;
    // Samples per segment in the nearest-place search: every twentieth of it.
    float Step = 0.05f;
    bool Closed;
    bool Valid = false;
    std::vector<SSEPoint> FirstPartners;  // on Second, one per point of First
    std::vector<SSEPoint> SecondPartners; // on First, one per point of Second
};
