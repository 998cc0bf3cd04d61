// Plotting the points of a polygon into a float field: pixels, splats, the
// directional fill from a dense line, and the sweep of a front to one rim.

#include <algorithm>
#include <cmath>

#include "vekdll/polygons/polygon_raster.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::HoldsImage;
using vek::detail::RoundedCoordinate;
using vek::detail::Splat;

namespace {

// DrawInMatrixAndFill scans for the opposite line with these tolerances: the
// scan towards larger rows is stricter than the other three.
constexpr float kOppositeLineTolerance = 1.0f;
constexpr float kOppositeLineToleranceDownwards = 0.1f;
// The filled pixels differ from the line by this much, so that later scans
// don't take them for the line.
constexpr float kFillAboveLine = 5.0f;

// One scan of DrawInMatrixAndFill: from a point along a row or a column,
// one pixel at a time in `direction`.
struct OppositeLineScan {
    bool alongColumns; // the scan moves x at a fixed row
    int direction;     // +1 or -1
    float tolerance;
};

// The side to the left of the way from a point to the next one, y pointing
// up: (-dy, dx), taken along the axis in which the way moves less.
OppositeLineScan ScanToTheLeftOf(float dx, float dy)
{
    if (std::fabs(dx) > std::fabs(dy)) {
        return dx < 0.0f ? OppositeLineScan{false, -1, kOppositeLineTolerance} : OppositeLineScan{false, 1, kOppositeLineToleranceDownwards};
    }
    return dy < 0.0f ? OppositeLineScan{true, 1, kOppositeLineTolerance} : OppositeLineScan{true, -1, kOppositeLineTolerance};
}

// Scans from (px, py), the rounded and unclamped point, for a pixel within
// the tolerance of `value`, and gives every pixel passed on the way value +
// 5. Pixels are read and written through the field's clamps. The scan is
// skipped when the point already lies on or beyond the rim it runs to, and
// gives up after the rim pixel.
void FillToOppositeLine(CSSEMatrix& m, int px, int py, const OppositeLineScan& scan, float value)
{
    const int size = scan.alongColumns ? m.GetSizeX() : m.GetSizeY();
    const int from = scan.alongColumns ? px : py;
    const int rim = scan.direction > 0 ? size - 1 : 0;
    if (scan.direction > 0 ? from >= rim : from < 1) return;
    const auto at = [&](int t) { return scan.alongColumns ? m.GetPoint(t, py) : m.GetPoint(px, t); };
    const auto hits = [&](int t) { return std::fabs(at(t) - value) < scan.tolerance; };

    int t = from + scan.direction;
    // A start beyond the far side of the field reads the pixel of that side
    // until the scan enters the field: one look stands for all those steps.
    const int nearSide = scan.direction > 0 ? 0 : size - 1;
    if ((t - nearSide) * scan.direction < 0) {
        if (!hits(nearSide)) t = nearSide;
    }
    while (!hits(t)) {
        if (t == rim) return;
        t += scan.direction;
    }
    // The pixels strictly between the point and the hit, through the clamp:
    // those beyond the field pile up on its side.
    const int last = t - scan.direction;
    if ((last - from) * scan.direction < 1) return;
    const int lo = vek::detail::ClampIndex(std::min(from + scan.direction, last), 0, size - 1);
    const int hi = vek::detail::ClampIndex(std::max(from + scan.direction, last), 0, size - 1);
    const float filled = value + kFillAboveLine;
    for (int u = lo; u <= hi; ++u) {
        if (scan.alongColumns) {
            m.SetPoint(u, py, filled);
        } else {
            m.SetPoint(px, u, filled);
        }
    }
}

} // namespace

void CSSE3dPolygon::DrawInMatrix(CSSEMatrix* m)
{
    if (!HoldsImage(m)) return;
    for (int i = 0; i < NumPoints; ++i) m->SetPoint(RoundedCoordinate(PointsX[i]), RoundedCoordinate(PointsY[i]), PointsZ[i]);
}

void CSSE3dPolygon::DrawInMatrix(float value, CSSEMatrix* m, bool drawZY, float offsetX, float offsetY, bool drawXZ)
{
    if (!HoldsImage(m)) return;
    for (int i = 0; i < NumPoints; ++i) {
        if (drawXZ) {
            Splat(*m, RoundedCoordinate(PointsX[i] + offsetX), RoundedCoordinate(PointsZ[i] + offsetY), value);
        } else if (drawZY) {
            m->SetPoint(RoundedCoordinate(PointsZ[i]), RoundedCoordinate(PointsY[i]), value);
        } else {
            Splat(*m, RoundedCoordinate(PointsX[i] + offsetX), RoundedCoordinate(PointsY[i] + offsetY), value);
        }
    }
}

void CSSE3dPolygon::DrawInMatrixAndFill(float value, CSSEMatrix* m)
{
    // Only whole blocks of four points take part, and the line is closed
    // over them: the points behind the last whole block are left out.
    const int count = 4 * (NumPoints >> 2);
    if (count < 4 || !HoldsImage(m)) return;
    for (int i = 0; i < count; ++i) m->SetPoint(RoundedCoordinate(PointsX[i]), RoundedCoordinate(PointsY[i]), value);
    for (int i = 0; i < count; ++i) {
        const int next = i + 1 == count ? 0 : i + 1;
        const OppositeLineScan scan = ScanToTheLeftOf(PointsX[next] - PointsX[i], PointsY[next] - PointsY[i]);
        FillToOppositeLine(*m, RoundedCoordinate(PointsX[i]), RoundedCoordinate(PointsY[i]), scan, value);
    }
}

void CSSE3dPolygon::DrawInMatrixAndFillToOneSideFront(float value, CSSEMatrix* m, float offsetX, float offsetZ, bool toLowerRows)
{
    if (!HoldsImage(m)) return;
    // The splats of rows beyond the field all land on its outermost splat
    // row, so each such stretch of the sweep is written once.
    const int lowestCentre = std::min(1, m->GetSizeY() - 2);
    const int highestCentre = m->GetSizeY() - 2;
    for (int i = 0; i < NumPoints; ++i) {
        const int c = std::max(1, RoundedCoordinate(PointsX[i] + offsetX));
        const long long r = RoundedCoordinate(PointsZ[i] + offsetZ);
        const auto splat = [&](int row) { Splat(*m, c, row, value); };
        if (toLowerRows) {
            // r, r - 1, ... while above row 1.
            vek::detail::ForEachClampedPosition(2, r, 1, lowestCentre, highestCentre, splat);
        } else {
            // r, r + 1, ... while below the last row.
            vek::detail::ForEachClampedPosition(r, m->GetSizeY() - 2, 1, lowestCentre, highestCentre, splat);
        }
    }
}
