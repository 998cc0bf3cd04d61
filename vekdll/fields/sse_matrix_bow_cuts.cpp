// Cutting a field along a curve: clearing what lies beyond a bow, column by
// column, or outside its inner area.

#include <algorithm>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/polygons/inner_area_scan.h"
#include "vekdll/polygons/polygon_raster.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::ColumnSpanFiller;
using vek::detail::HoldsImage;
using vek::detail::RoundedCoordinate;

namespace {

// The bow is resampled to this spacing, so that no column is skipped.
constexpr float kBowSpacing = 0.5f;

enum class BowKind { Closed, Open };
// Which rows of a column go: those from the bow's row on (the left forms),
// or as many as the bow's row from the top (the right form).
enum class CutSide { FromTheBow, UpToTheBow };

void CutBeyondBow(CSSEMatrix& m, CSSE3dPolygon& bow, float v, int shift, BowKind kind, CutSide side)
{
    bow.CalcBoundingBox();
    if (kind == BowKind::Closed) {
        bow.ReParametrize(kBowSpacing);
    } else {
        bow.ReParametrizeOpen(kBowSpacing);
    }
    int xmin = 0;
    int ymin = 0;
    int xmax = 0;
    int ymax = 0;
    bow.GetBoundingBox2D(xmin, ymin, xmax, ymax);
    if (!HoldsImage(&m)) return;
    // The bow stands k rows above where the rows processed so far end.
    const long long k = std::max<long long>(static_cast<long long>(m.GetRowProcessed()) - ymax, 1);
    const long long sizeY = m.GetSizeY();
    ColumnSpanFiller cleared(&m, v);
    for (int i = 0; i < bow.GetNumPoints(); ++i) {
        float x = 0.0f;
        float y = 0.0f;
        bow.GetPointXY(i, x, y);
        const int c = RoundedCoordinate(x);
        const long long r = RoundedCoordinate(y);
        // Rows and columns beyond the field reach its rim through the clamps.
        if (side == CutSide::FromTheBow && r < sizeY) {
            const long long first = r + k + shift;
            cleared.Add(c, first, first + (sizeY - r) - 1);
        } else if (side == CutSide::UpToTheBow && r > 0) {
            const long long first = k + shift;
            cleared.Add(c, first, first + r - 1);
        }
    }
    cleared.Flush();
}

} // namespace

void CSSEMatrix::RemoveImageValuesLeftOfBow(CSSE3dPolygon& bow, float v, int shift)
{
    CutBeyondBow(*this, bow, v, shift, BowKind::Closed, CutSide::FromTheBow);
}

void CSSEMatrix::RemoveImageValuesLeftOfOpenBow(CSSE3dPolygon& bow, float v, int shift)
{
    CutBeyondBow(*this, bow, v, shift, BowKind::Open, CutSide::FromTheBow);
}

void CSSEMatrix::RemoveImageValuesRightOfOpenBow(CSSE3dPolygon& bow, float v, int shift)
{
    CutBeyondBow(*this, bow, v, shift, BowKind::Open, CutSide::UpToTheBow);
}

void CSSEMatrix::RemoveImageValuesOutSideOfBow(CSSE3dPolygon& bow, float v, int /*shift*/)
{
    if (bow.GetNumPoints() < 1 || !HoldsImage(this)) return;
    // Column by column, the rows between the inner runs.
    ColumnSpanFiller cleared(this, v);
    vek::ScanInnerArea(bow, {0, SizeX, 1}, {0, SizeY, 1}, vek::InnerAreaScan::Crossings, [&](int x, const std::vector<vek::RowRun>& runs) {
        int y = 0;
        for (const vek::RowRun& run : runs) {
            cleared.Add(x, y, run.first - 1);
            y = run.end;
        }
        cleared.Add(x, y, SizeY - 1);
    });
    cleared.Flush();
}
