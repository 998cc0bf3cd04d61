// Building the finest triangulation in row bands: the driver that shares the
// cell rows out over fifteen workers and takes their sub-triangulations over
// in band order, and the worker that triangulates one band.

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/platform/sleep.h"
#include "vekdll/polygons/inner_area_scan.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/finest_cell_pattern.h"
#include "vekdll/surface/finest_triangulation.h"
// The link operations, to be inlined into the loops over every triangle.
#include "vekdll/surface/triangle_graph_links.inl"

namespace {

// The vertices of one band, in the order in which the band stores them. For
// each lattice row from the band's first to the row above its last cell
// row: the row's lattice points, then the crossings of its horizontal cell
// sides in column order, then (below the top row) the crossings of the
// vertical sides up to the next row. The top row is the first row of the
// next band, which stores its lattice points and horizontal crossings first
// and in the same order: so the band's vertices from the top row on are the
// next band's first ones, and need no mapping when the bands are joined.
class BandVertices {
public:
    BandVertices(const t_finestbandrecord& band, ZrCFinestTriangulation& store)
        : lattice_(band.Lattice), firstRow_(band.FirstRow), rows_(band.LastRow - band.FirstRow + 2),
          polygon_(*band.Polygon), field_(band.Field), marching_(band.Marching), store_(store)
    {
        const std::size_t cells = static_cast<std::size_t>(rows_) * static_cast<std::size_t>(lattice_.Columns);
        inside_.assign(cells, 0);
        rowStart_.assign(static_cast<std::size_t>(rows_), 0);
        if (marching_) {
            horizontal_.assign(cells, -1);
            vertical_.assign(cells, -1);
        }
        MarkInside();
    }

    // Stores every vertex of the band; returns how many come before the top
    // row, which the band shares with the next one.
    int StoreAll()
    {
        int own = 0;
        for (int r = 0; r < rows_; ++r) {
            if (r == rows_ - 1) own = store_.GetNumVertices();
            rowStart_[static_cast<std::size_t>(r)] = store_.GetNumVertices();
            for (int i = 0; i < lattice_.Columns; ++i) Append(Point(i, r));
            if (!marching_) continue;
            for (int i = 0; i + 1 < lattice_.Columns; ++i) {
                if (Inside(i, r) != Inside(i + 1, r))
                    horizontal_[Slot(i, r)] = AppendCrossing(i, r, i + 1, r);
            }
            if (r == rows_ - 1) break;
            for (int i = 0; i < lattice_.Columns; ++i) {
                if (Inside(i, r) != Inside(i, r + 1)) vertical_[Slot(i, r)] = AppendCrossing(i, r, i, r + 1);
            }
        }
        return own;
    }

    // The corners and crossings of cell (i, r), r counted from the band's
    // first row.
    vek::detail::FinestCellCorners Cell(int i, int r) const
    {
        vek::detail::FinestCellCorners cell{};
        const int lower = rowStart_[static_cast<std::size_t>(r)];
        const int upper = rowStart_[static_cast<std::size_t>(r + 1)];
        cell.corner[0] = lower + i;
        cell.corner[1] = lower + i + 1;
        cell.corner[2] = upper + i + 1;
        cell.corner[3] = upper + i;
        cell.inside[0] = Inside(i, r);
        cell.inside[1] = Inside(i + 1, r);
        cell.inside[2] = Inside(i + 1, r + 1);
        cell.inside[3] = Inside(i, r + 1);
        if (marching_) {
            cell.crossing[0] = horizontal_[Slot(i, r)];
            cell.crossing[1] = vertical_[Slot(i + 1, r)];
            cell.crossing[2] = horizontal_[Slot(i, r + 1)];
            cell.crossing[3] = vertical_[Slot(i, r)];
        } else {
            cell.crossing[0] = cell.crossing[1] = cell.crossing[2] = cell.crossing[3] = -1;
        }
        return cell;
    }

private:
    std::size_t Slot(int i, int r) const
    {
        return static_cast<std::size_t>(r) * static_cast<std::size_t>(lattice_.Columns) + static_cast<std::size_t>(i);
    }
    bool Inside(int i, int r) const { return inside_[Slot(i, r)] != 0; }
    int X(int i) const { return lattice_.X0 + i * lattice_.Step; }
    int Y(int r) const { return lattice_.Y0 + (firstRow_ + r) * lattice_.Step; }

    // The lattice points inside, by the polygon's column scan over the
    // band's lattice rows.
    void MarkInside()
    {
        const vek::GridAxis columns{lattice_.X0, X(lattice_.Columns - 1) + 1, lattice_.Step};
        const vek::GridAxis rows{Y(0), Y(rows_ - 1) + 1, lattice_.Step};
        vek::ScanInnerArea(polygon_, columns, rows, vek::InnerAreaScan::Crossings,
                           [this](int x, const std::vector<vek::RowRun>& runs) {
                               const int i = (x - lattice_.X0) / lattice_.Step;
                               for (const vek::RowRun& run : runs) {
                                   for (int y = run.first; y < run.end; y += lattice_.Step)
                                       inside_[Slot(i, (y - Y(0)) / lattice_.Step)] = 1;
                               }
                           });
    }

    SSEPoint Point(int i, int r) const
    {
        SSEPoint p;
        p.sse = _mm_setr_ps(static_cast<float>(X(i)), static_cast<float>(Y(r)),
                            vek::detail::LatticeHeight(field_, X(i), Y(r)), 0.0f);
        return p;
    }

    int AppendCrossing(int i, int r, int j, int s)
    {
        const bool firstInside = Inside(i, r);
        const SSEPoint a = Point(i, r);
        const SSEPoint b = Point(j, s);
        return Append(vek::detail::FindCellCrossing(polygon_, firstInside ? a : b, firstInside ? b : a));
    }

    int Append(const SSEPoint& p)
    {
        const int n = store_.GetNumVertices();
        if (n >= store_.GetMaxNumVertices()) store_.ReallocSize(n + n / 4 + 100);
        store_.AppendVertex(p);
        return n;
    }

    t_finestlattice lattice_;
    int firstRow_;
    int rows_;  // lattice rows, the top one included
    CSSE3dPolygon& polygon_;
    const CSSEMatrix* field_;
    bool marching_;
    ZrCFinestTriangulation& store_;
    std::vector<unsigned char> inside_;
    std::vector<int> rowStart_;
    std::vector<int> horizontal_;  // crossing of the side from (i, r) to (i + 1, r)
    std::vector<int> vertical_;    // crossing of the side from (i, r) to (i, r + 1)
};

} // namespace

void ZrCFinestTriangulation::TriangulateBand(t_finestbandrecord& band)
{
    band.OwnVertices = 0;
    ZrCFinestTriangulation* sub = band.SubTriangulation;
    if (sub == nullptr || band.Polygon == nullptr || band.LastRow < band.FirstRow) return;
    BandVertices vertices(band, *sub);
    const int own = vertices.StoreAll();
    const bool topIsOwn = band.LastRow + 2 == band.Lattice.Rows;
    band.OwnVertices = topIsOwn ? sub->GetNumVertices() : own;

    sub->AllRowsTriangleList = new TriangleRows(10);
    std::vector<t_hfinesttriangle*> cell;
    std::vector<t_hfinesttriangle*> previous;
    for (int r = 0; r <= band.LastRow - band.FirstRow; ++r) {
        auto* row = new CList<t_hfinesttriangle*>(10);
        sub->AllRowsTriangleList->AddTail(row);
        previous.clear();
        for (int i = 0; i + 1 < band.Lattice.Columns; ++i) {
            cell.clear();
            vek::detail::CutCell(vertices.Cell(i, r), !band.Marching, [&](int a, int b, int c) {
                if (t_hfinesttriangle* t = sub->BuildTriangleFromPoints(a, b, c, nullptr, row, band.Marching))
                    cell.push_back(t);
            });
            // Within the row: the cell's triangles with each other and with
            // those of the cell before it; the rows are linked afterwards.
            for (std::size_t k = 0; k < cell.size(); ++k) {
                for (std::size_t m = k + 1; m < cell.size(); ++m) FindNeighbours(cell[k], cell[m]);
                for (t_hfinesttriangle* left : previous) FindNeighbours(cell[k], left);
            }
            previous.swap(cell);
        }
    }
    sub->FindNeighboursFromList(sub->AllRowsTriangleList);
    for (POSITION pos = sub->AllRowsTriangleList->GetHeadPosition(); pos != nullptr;)
        sub->CheckFlipEdgesInRow(sub->AllRowsTriangleList->GetNext(pos));
}

void ZrCFinestTriangulation::Triangulate(CSSE3dPolygon& polygon, CSSEMatrix* field, int step, bool finalize)
{
    BuildInBands(polygon, field, step, finalize, false);
}

void ZrCFinestTriangulation::TriangulateWithMarching(CSSE3dPolygon& polygon, CSSEMatrix* field, int step,
                                                     bool finalize)
{
    BuildInBands(polygon, field, step, finalize, true);
}

// The workers link and flip the rows of their own band, which touches no
// other band; what is left to the driver is the link between the last row
// of one band and the first of the next, once both are taken over. That
// gives the links of one pass over all rows: a side joins the two triangles
// that carry it, whichever pass finds it.
void ZrCFinestTriangulation::BuildInBands(CSSE3dPolygon& polygon, CSSEMatrix* field, int step, bool finalize,
                                          bool marching)
{
    FreeListPointer();
    ClearTriangleList();
    FreeVertices();
    if (step < 1 || polygon.GetNumPoints() < 3) return;
    // The workers read the polygon at once; its box must be there before.
    if (!polygon.IsBoundingBoxCalculated()) polygon.CalcBoundingBox();
    int xmin = 0, ymin = 0, xmax = 0, ymax = 0;
    polygon.GetBoundingBox2D(xmin, ymin, xmax, ymax);
    float fxmin = 0, fymin = 0, fzmin = 0, fxmax = 0, fymax = 0, fzmax = 0;
    polygon.GetBoundingBox3D(fxmin, fymin, fzmin, fxmax, fymax, fzmax);
    // The grid starts at the integer box and reaches the polygon's farthest
    // point, so that the cells cover the whole polygon.
    const auto points = [step](int from, float to) {
        const double span = std::ceil((static_cast<double>(to) - from) / step);
        return span > 0.0 && span < 1.0e6 ? static_cast<int>(span) + 1 : 1;
    };
    const t_finestlattice lattice{xmin, ymin, step, points(xmin, fxmax), points(ymin, fymax)};
    (void)xmax;
    (void)ymax;
    // A grid beyond what a store can index, or whose far corner leaves the
    // integers, is no input: nothing is built.
    const auto reach = [step](int from, int points) { return std::fabs(double(from)) + double(points) * step; };
    if (static_cast<double>(lattice.Rows) * lattice.Columns > 4.0e8 || reach(xmin, lattice.Columns) > 1.0e9 ||
        reach(ymin, lattice.Rows) > 1.0e9)
        return;
    const int cellRows = lattice.Rows - 1;
    const int perBand = (cellRows + RowBands - 1) / RowBands;
    CreateVertexArray(lattice.Rows * lattice.Columns + 100);
    AllRowsTriangleList = new TriangleRows(10);

    std::array<std::thread, kRowBands> workers;
    for (int b = 0; b < kRowBands; ++b) {
        t_finestbandrecord& band = Bands[static_cast<std::size_t>(b)];
        band.FirstRow = std::min(b * perBand, cellRows);
        band.LastRow = b < RowBands ? std::min((b + 1) * perBand, cellRows) - 1 : band.FirstRow - 1;
        const int rows = std::max(0, band.LastRow - band.FirstRow + 2);
        band.SubTriangulation = new ZrCFinestTriangulation(rows * lattice.Columns + 100);
        band.SubTriangulation->SetSearchMode(GetSearchMode());
        band.Polygon = &polygon;
        band.Field = field;
        band.Lattice = lattice;
        band.Marching = marching;
        band.OwnVertices = 0;
        band.Failure = nullptr;
        band.Done.ResetEvent();
        try {
            workers[static_cast<std::size_t>(b)] = std::thread([&band] {
                try {
                    TriangulateBand(band);
                } catch (...) {
                    band.Failure = std::current_exception();
                }
                band.Done.SetEvent();
            });
        } catch (...) {
            // A thread that cannot start: those running use the records and
            // the polygon, so they are waited for before the error passes on.
            for (int k = 0; k <= b; ++k) {
                t_finestbandrecord& started = Bands[static_cast<std::size_t>(k)];
                if (k < b) started.Done.Wait();
                if (k < b) workers[static_cast<std::size_t>(k)].join();
                delete started.SubTriangulation;
                started.SubTriangulation = nullptr;
            }
            throw;
        }
    }

    int start = 0;
    int rowsBefore = 0;
    std::exception_ptr failure;
    for (int b = 0; b < kRowBands; ++b) {
        t_finestbandrecord& band = Bands[static_cast<std::size_t>(b)];
        if (!band.Done.IsSet()) {
            vek::Sleep(2);
            band.Done.Wait();
        }
        if (failure == nullptr) failure = band.Failure;
        const int rows = std::max(0, band.LastRow - band.FirstRow + 1);
        if (failure == nullptr) {
            CopyDataFromOtherTriangulation(*band.SubTriangulation, start, band.OwnVertices);
        } else {
            // The band's triangles are named only in its rows: they go to
            // its own list, which frees them with it.
            ZrCFinestTriangulation dropped;
            dropped.CopyDataFromOtherTriangulation(*band.SubTriangulation, 0, 0);
        }
        start += band.OwnVertices;
        delete band.SubTriangulation;
        band.SubTriangulation = nullptr;
        if (failure == nullptr && rows > 0 && rowsBefore > 0) LinkRowsAt(rowsBefore - 1);
        rowsBefore += rows;
    }
    for (std::thread& worker : workers) worker.join();
    if (failure != nullptr) {
        // A band that failed leaves no surface: what was taken over goes.
        FreeListPointer();
        ClearTriangleList();
        FreeVertices();
        std::rethrow_exception(failure);
    }
    if (finalize) CalcBoundingBox();
}
