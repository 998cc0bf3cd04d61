// The even-odd fills of a polygon's inner area into a float or byte field.

#include <algorithm>

#include "vekdll/polygons/inner_area_scan.h"
#include "vekdll/polygons/polygon_raster.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::ClampIndex;
using vek::detail::HoldsImage;
using vek::detail::TruncatedCoordinate;

namespace {

// The fine fills look this far beyond their band and the line's columns,
// the coarse fill further, in steps of its grid.
constexpr int kFineMargin = 5;
constexpr int kCoarseMargin = 9;
constexpr int kCoarseStep = 3;
// The fills may thin a long line to every fifth point first.
constexpr int kSubsampleStep = 5;

// The line's box, truncated: the calculated corners, not reordered.
struct TruncatedBox {
    int xmin;
    int ymin;
    int xmax;
    int ymax;
};

TruncatedBox BoxOf(CSSE3dPolygon& line)
{
    line.CalcBoundingBox();
    const SSEPoint low = line.GetBottomLeft();
    const SSEPoint high = line.GetTopRight();
    return {TruncatedCoordinate(low.x), TruncatedCoordinate(low.y), TruncatedCoordinate(high.x), TruncatedCoordinate(high.y)};
}

// The first row of the band: the line's first row, or yFrom if that is
// later, but not past the line's last row.
int BandStart(const TruncatedBox& box, float yFrom)
{
    return std::min(std::max(box.ymin, TruncatedCoordinate(yFrom)), box.ymax);
}

// The grid of the fine fills: the band and the line's columns clamped to
// the field, then widened by the margin, so that the margin beyond the field
// reaches the rim pixels through the writes' clamps. A band that would end
// before it starts is the one row it starts at.
struct FillGrid {
    vek::GridAxis columns;
    vek::GridAxis rows;
};

FillGrid FineGrid(const TruncatedBox& box, float yFrom, float yTo, int sizeX, int sizeY)
{
    const int start = BandStart(box, yFrom);
    const int end = std::max(start, std::min(box.ymax, TruncatedCoordinate(yTo)));
    const int yLo = ClampIndex(start, 0, sizeY - 1);
    const int yHi = ClampIndex(end, 0, sizeY - 1);
    const int xLo = ClampIndex(box.xmin, 0, sizeX - 1);
    const int xHi = ClampIndex(box.xmax, 0, sizeX - 1);
    return {{xLo - kFineMargin, xHi + kFineMargin, 1}, {yLo - kFineMargin, yHi + kFineMargin, 1}};
}

// The coarse grid is not clamped to the field: its splats are.
FillGrid CoarseGrid(const TruncatedBox& box, float yFrom, float yTo)
{
    const int start = BandStart(box, yFrom);
    const int end = std::max(start, std::min(box.ymax, TruncatedCoordinate(yTo)));
    return {{box.xmin - kCoarseMargin, box.xmax + kCoarseMargin, kCoarseStep},
            {start - kCoarseMargin, end + kCoarseMargin, kCoarseStep}};
}

// The line as the fills test it: a copy, subsampled if asked, without its
// near-duplicate points (which cuts the doubled points out of a line that
// passes over itself), with its box calculated.
void PrepareCopy(CSSE3dPolygon& copy, CSSE3dPolygon& line, bool subsample)
{
    copy.CreateSimilar(&line);
    if (subsample) copy.Subsample(kSubsampleStep, true);
    copy.RemoveEqualPointsXY();
    copy.CalcBoundingBox();
}

// The common course of the even-odd fills: the line's box, the grid made
// from it, the prepared copy, and each run of inner grid points handed to
// the writer, which is flushed at the end.
template <class Field, class MakeGrid, class Writer>
void FillInnerArea(CSSE3dPolygon& line, Field* m, bool subsample, MakeGrid makeGrid, Writer&& writer)
{
    const TruncatedBox box = BoxOf(line);
    if (!HoldsImage(m)) return;
    const FillGrid grid = makeGrid(box);
    CSSE3dPolygon copy;
    PrepareCopy(copy, line, subsample);
    vek::ScanInnerArea(copy, grid.columns, grid.rows, vek::InnerAreaScan::Crossings, [&](int x, const std::vector<vek::RowRun>& runs) {
        for (const vek::RowRun& run : runs) writer.Add(x, run.first, run.end - 1);
    });
    writer.Flush();
}

// The coarse fill's writer: a splat on every grid row of a run. Grid rows
// beyond the field all splat onto its outermost splat row.
class GridSplatter {
public:
    GridSplatter(CSSEMatrix* m, float v) : m_(m), v_(v) {}
    void Add(int x, long long first, long long last)
    {
        const int lowestCentre = std::min(1, m_->GetSizeY() - 2);
        const int highestCentre = m_->GetSizeY() - 2;
        vek::detail::ForEachClampedPosition(first, last, kCoarseStep, lowestCentre, highestCentre,
                                            [&](int y) { vek::detail::Splat(*m_, x, y, v_); });
    }
    void Flush() {}

private:
    CSSEMatrix* m_;
    float v_;
};

} // namespace

void CSSE3dPolygon::DrawInMatrixAndFillFine(float value, CSSEMatrix* m, bool subsample, float yFrom, float yTo)
{
    FillInnerArea(
        *this, m, subsample, [&](const TruncatedBox& box) { return FineGrid(box, yFrom, yTo, m->GetSizeX(), m->GetSizeY()); },
        vek::detail::ColumnSpanFiller(m, value));
}

void CSSE3dPolygon::DrawInCharMatrixAndFillFine(char value, CSSEcharMatrix* m, bool subsample, float yFrom, float yTo)
{
    FillInnerArea(
        *this, m, subsample, [&](const TruncatedBox& box) { return FineGrid(box, yFrom, yTo, m->GetSizeX(), m->GetSizeY()); },
        vek::detail::ByteColumnSpanFiller(m, value));
}

void CSSE3dPolygon::DrawInMatrixAndFillCoarse(float value, CSSEMatrix* m, bool subsample, float yFrom, float yTo)
{
    FillInnerArea(*this, m, subsample, [&](const TruncatedBox& box) { return CoarseGrid(box, yFrom, yTo); }, GridSplatter(m, value));
}
