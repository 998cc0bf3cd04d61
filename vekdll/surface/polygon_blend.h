#pragma once

#include <vector>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/polygons/sse_3d_polygon.h"

// The line that lies a given fraction of the way between two lines that
// face each other, such as the two rims of a seam. One line is walked in
// small steps of arc length (`Step` units), and each place on it is paired
// with the nearest place on the other line; the blend lies the fraction of
// the way along each pair. So the blend is much denser than either line,
// and evenly spaced along the walked one; a caller thins it to the density
// it needs. The pairings
// of both lines are found on two worker threads, one per line, and the
// constructor waits for both.
class VEKDLL_API PolygonBlend {
public:
    // Both lines need at least 3 points, otherwise nothing is paired and
    // every blend is empty. `closed` joins the last point of each line to
    // its first, both where a line is walked and where nearest places are
    // looked for. `fraction` is kept as the default of Blend().
    PolygonBlend(const CSSE3dPolygon& first, const CSSE3dPolygon& second, float fraction, bool closed);
    PolygonBlend(const PolygonBlend&) = delete;
    PolygonBlend& operator=(const PolygonBlend&) = delete;

    bool IsValid() const { return Valid; }
    // The line at `fraction` (clamped to 0 .. 1) between the first line (0)
    // and the second (1), as a polygon owned by this object and replaced by
    // the next call; empty when the blend is not valid. The longer line in
    // space is walked: when that is the second, the roles change and the
    // fraction is counted from the second line's side as 1 - f.
    const CSSE3dPolygon& Blend(float fraction);
    const CSSE3dPolygon& Blend() { return Blend(Fraction); }

    // The place on `line` nearest in space to p, found on each segment by
    // projection; `closed` includes the segment from the last point back
    // to the first. `line` has at least one point.
    static SSEPoint NearestPlaceOnLine(const CSSE3dPolygon& line, const SSEPoint& p, bool closed);
    // The length of the line in space, with the closing segment if `closed`.
    static float LineLength(const CSSE3dPolygon& line, bool closed);

private:
    // The work of one thread: the places of `from` every `step` units of
    // arc length from its first point (its last point too where the line is
    // open), and for each its nearest place on `to`.
    static void PairPlaces(const CSSE3dPolygon& from, const CSSE3dPolygon& to, float step, bool closed,
                           std::vector<SSEPoint>& places, std::vector<SSEPoint>& partners);

    CSSE3dPolygon First;
    CSSE3dPolygon Second;
    CSSE3dPolygon Result;
    float Fraction;
    // The walk along a line, in units of length.
    float Step = 0.05f;
    bool Closed;
    bool Valid = false;
    std::vector<SSEPoint> FirstPlaces;    // along First
    std::vector<SSEPoint> FirstPartners;  // on Second, one per place of First
    std::vector<SSEPoint> SecondPlaces;   // along Second
    std::vector<SSEPoint> SecondPartners; // on First, one per place of Second
};
