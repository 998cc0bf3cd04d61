// The refinement to a maximum error at the cell centres, checked cell by
// cell against the planes of the triangles it leaves, computed here in
// double from the vertices alone; and the two pieces it stands on, the rows
// of cells of a triangle and the heap of worst triangles.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "surface/triangulation_checks.h"
#include "vekdll/surface/cell_centre_error.h"
#include "vekdll/surface/error_heap.h"
#include "vekdll/surface/greedy_refinement.h"
#include "vekdll/surface/lattice_triangle_rows.h"

namespace vek::test {
namespace {

// Heights of width x height cells, row y = 0 first, made by a function of
// the cell.
struct Raster {
    int width;
    int height;
    std::vector<float> cells;

    template <class Height>
    Raster(int w, int h, Height heightAt) : width(w), height(h)
    {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) cells.push_back(static_cast<float>(heightAt(x, y)));
    }
    HeightGrid Grid() const { return {width, height, cells.data(), width}; }
    float At(int x, int y) const { return cells[static_cast<std::size_t>(y) * width + x]; }
};

// A triangulation refined over `r` from its four corners, and what the
// refinement said of it.
struct Refined {
    std::unique_ptr<ZrCIncrementalDelaunay2D> triangulation = std::make_unique<ZrCIncrementalDelaunay2D>();
    GreedyRefinement::Outcome outcome;
};

Refined RefineFromCorners(const Raster& r, double target, int budget)
{
    Refined refined;
    GreedyRefinement refinement(*refined.triangulation, r.Grid());
    refinement.Start();
    refined.outcome = refinement.Refine(target, budget);
    return refined;
}

struct PlaneCheck {
    double worst = 0.0;
    long long uncovered = 0;
    long long compared = 0;
};

// For every cell with data, a triangle whose closed area holds the cell's
// centre (by barycentric weights in double), and the departure of its plane
// there; the worst of them, and how many cells no triangle holds.
PlaneCheck CheckEveryCell(ZrCIncrementalDelaunay2D& d, const Raster& r)
{
    const std::vector<t_hdelaunaytriangle*> triangles =
        Triangles(d.IsFinalized() ? d.GetFinalList() : d.GetTriangleList());
    PlaneCheck check;
    for (int y = 0; y < r.height; ++y) {
        for (int x = 0; x < r.width; ++x) {
            if (!std::isfinite(r.At(x, y))) continue;
            bool covered = false;
            for (const t_hdelaunaytriangle* t : triangles) {
                const SSEPoint a = d.GetVertex(t->Vertex[0]), b = d.GetVertex(t->Vertex[1]),
                               c = d.GetVertex(t->Vertex[2]);
                // Twice the signed area of the triangle p, q, r.
                const auto twice = [](double px, double py, double qx, double qy, double rx, double ry) {
                    return (qx - px) * (ry - py) - (qy - py) * (rx - px);
                };
                const double area = twice(a.x, a.y, b.x, b.y, c.x, c.y);
                const double wa = twice(x, y, b.x, b.y, c.x, c.y) / area;
                const double wb = twice(a.x, a.y, x, y, c.x, c.y) / area;
                const double wc = 1.0 - wa - wb;
                if (area == 0.0 || wa < -1e-12 || wb < -1e-12 || wc < -1e-12) continue;
                covered = true;
                const double plane = wa * a.z + wb * b.z + wc * c.z;
                check.worst = std::max(check.worst, std::fabs(plane - r.At(x, y)));
                break;
            }
            check.uncovered += !covered;
            check.compared += covered;
        }
    }
    return check;
}

// Twice the area of every triangle is positive and they add up to the
// raster's rectangle, links are returned, and no vertex lies strictly in a
// circumcircle (exact in integers, the vertices lying on cells).
void ExpectValidDelaunayCover(ZrCIncrementalDelaunay2D& d, const Raster& r)
{
    const std::vector<t_hdelaunaytriangle*> triangles = Triangles(d.GetTriangleList());
    EXPECT_EQ(LinkFault(triangles), "");
    double twiceAreas = 0.0;
    const std::set<int> used = Corners(triangles);
    for (const t_hdelaunaytriangle* t : triangles) {
        const double area = 2.0 * SignedArea(d, t);
        EXPECT_GT(area, 0.0);
        twiceAreas += area;
        std::int64_t px[3], py[3];
        for (int k = 0; k < 3; ++k) {
            px[k] = std::llround(d.GetVertex(t->Vertex[k]).x);
            py[k] = std::llround(d.GetVertex(t->Vertex[k]).y);
        }
        for (int v : used) {
            const std::int64_t qx = std::llround(d.GetVertex(v).x), qy = std::llround(d.GetVertex(v).y);
            std::int64_t m[3][3];
            for (int k = 0; k < 3; ++k) {
                const std::int64_t dx = px[k] - qx, dy = py[k] - qy;
                m[k][0] = dx, m[k][1] = dy, m[k][2] = dx * dx + dy * dy;
            }
            const std::int64_t inCircle = m[0][0] * (m[1][1] * m[2][2] - m[2][1] * m[1][2]) -
                                          m[1][0] * (m[0][1] * m[2][2] - m[2][1] * m[0][2]) +
                                          m[2][0] * (m[0][1] * m[1][2] - m[1][1] * m[0][2]);
            EXPECT_LE(inCircle, 0) << "vertex " << v << " in a circumcircle";
        }
    }
    EXPECT_DOUBLE_EQ(twiceAreas, 2.0 * (r.width - 1) * (r.height - 1));
}

TEST(GreedyRefinement, ParaboloidAndRidgeAreWithinTheTargetAtEveryCell)
{
    const Raster paraboloid(41, 33, [](int x, int y) {
        return 0.02 * ((x - 17.3) * (x - 17.3) + (y - 14.6) * (y - 14.6));
    });
    // A sharp crest along a line the cells do not follow, on a gentle tilt.
    const Raster ridge(37, 29, [](int x, int y) { return 40.0 - 1.5 * std::fabs(x - 0.6 * y - 9.5) + 0.1 * y; });
    for (const auto& [raster, target] : {std::pair(&paraboloid, 0.25), std::pair(&ridge, 0.5)}) {
        const Refined refined = RefineFromCorners(*raster, target, 1 << 20);
        ZrCIncrementalDelaunay2D& d = *refined.triangulation;
        const GreedyRefinement::Outcome& outcome = refined.outcome;
        EXPECT_TRUE(outcome.targetReached);
        EXPECT_LE(outcome.worstError, target);
        const PlaneCheck check = CheckEveryCell(d, *raster);
        EXPECT_EQ(check.uncovered, 0);
        EXPECT_LE(check.worst, target + 1e-9);
        EXPECT_NEAR(check.worst, outcome.worstError, 1e-9);
        // Far fewer vertices than cells: the point of refining.
        EXPECT_LT(outcome.vertices, raster->width * raster->height / 4);
        EXPECT_GT(outcome.inserted, 10);
        EXPECT_EQ(outcome.vertices, d.GetNumVertices());
        EXPECT_EQ(outcome.triangles, d.GetNumTrianglesInTriangleList());
        EXPECT_FALSE(d.IsFinalized());
        ExpectValidDelaunayCover(d, *raster);
    }
}

TEST(GreedyRefinement, TheWorstCellGoesFirstAndTheBudgetStopsIt)
{
    // Flat but for one spike: the spike is the first vertex after the corners.
    const Raster spike(15, 11, [](int x, int y) { return x == 9 && y == 4 ? 10.0 : 0.0; });
    ZrCIncrementalDelaunay2D d;
    GreedyRefinement refinement(d, spike.Grid());
    refinement.Start();
    EXPECT_EQ(d.GetNumVertices(), 4);
    EXPECT_EQ(d.GetNumTrianglesInTriangleList(), 2);
    GreedyRefinement::Outcome outcome = refinement.Refine(0.1, 5);
    EXPECT_EQ(outcome.vertices, 5);
    EXPECT_EQ(outcome.inserted, 1);
    EXPECT_EQ(Lanes(d.GetVertex(4)), (Lanes4{9, 4, 10, 0}));
    EXPECT_FALSE(outcome.targetReached);
    // The fan around the spike leaves cells next to it well above 0.1.
    EXPECT_GT(outcome.worstError, 1.0);
    EXPECT_NEAR(CheckEveryCell(d, spike).worst, outcome.worstError, 1e-9);

    // A budget of 7 stops at 7, short of the target; without a budget it
    // is reached, and the worst left is always what the cells say.
    outcome = refinement.Refine(0.1, 7);
    EXPECT_EQ(outcome.vertices, 7);
    EXPECT_EQ(outcome.inserted, 2);
    EXPECT_FALSE(outcome.targetReached);
    EXPECT_NEAR(CheckEveryCell(d, spike).worst, outcome.worstError, 1e-9);
    outcome = refinement.Refine(0.1, 1000);
    EXPECT_TRUE(outcome.targetReached);
    EXPECT_GT(outcome.vertices, 7);
    EXPECT_NEAR(CheckEveryCell(d, spike).worst, outcome.worstError, 1e-9);
}

TEST(GreedyRefinement, ACellExactlyAtTheTargetIsWithinIt)
{
    // Corners at 0 below and 3 above make both first triangles the plane
    // 1.5 y, which every cell follows but (1, 1): it holds 2 where the
    // plane passes at 1.5, and departs by exactly 0.5.
    const Raster tie(3, 3, [](int x, int y) { return x == 1 && y == 1 ? 2.0 : 1.5 * y; });
    const Refined atTarget = RefineFromCorners(tie, 0.5, 100);
    EXPECT_EQ(atTarget.outcome.inserted, 0);
    EXPECT_EQ(atTarget.outcome.worstError, 0.5);
    EXPECT_TRUE(atTarget.outcome.targetReached);

    const Refined below = RefineFromCorners(tie, 0.4999, 100);
    EXPECT_EQ(below.outcome.inserted, 1);
    EXPECT_EQ(Lanes(below.triangulation->GetVertex(4)), (Lanes4{1, 1, 2, 0}));
    EXPECT_EQ(below.outcome.worstError, 0.0);
}

TEST(GreedyRefinement, GoesOnFromWhatTheTriangulationHoldsNow)
{
    const Raster waves(31, 23, [](int x, int y) { return 20.0 * std::sin(0.3 * x) * std::cos(0.25 * y); });
    ZrCIncrementalDelaunay2D d;
    GreedyRefinement refinement(d, waves.Grid());
    refinement.Start();
    const GreedyRefinement::Outcome coarse = refinement.Refine(4.0, 1 << 20);
    EXPECT_TRUE(coarse.targetReached);

    // The caller finalizes, and inserts a point of its own, with the height
    // of its cell, where the waves are high: new triangles the driver has
    // not seen and old ones gone. The next call measures what changed and
    // goes on.
    d.FinalizeTriangleList();
    d.ReallocSize(d.GetNumVertices() + 1);
    d.InsertVertexIntoTriangulation(5.0f, 0.0f, true);
    d.SetZValueInVertex(waves.At(5, 0), d.GetNumVertices() - 1);
    const GreedyRefinement::Outcome fine = refinement.Refine(1.0, 1 << 20);
    EXPECT_TRUE(fine.targetReached);
    EXPECT_GT(fine.vertices, coarse.vertices + 1);
    const PlaneCheck check = CheckEveryCell(d, waves);
    EXPECT_EQ(check.uncovered, 0);
    EXPECT_LE(check.worst, 1.0 + 1e-9);
    ExpectValidDelaunayCover(d, waves);

    // A vertex whose height is wrong cannot be mended by inserting on it:
    // its cell stays off, the target out of reach, and the call ends.
    d.InsertVertexIntoTriangulation(10.0f, 11.0f, false);
    d.SetZValueInVertex(waves.At(10, 11) + 7.0f, d.GetNumVertices() - 1);
    const GreedyRefinement::Outcome blocked = refinement.Refine(1.0, 1 << 20);
    EXPECT_FALSE(blocked.targetReached);
    EXPECT_NEAR(blocked.worstError, 7.0, 1e-5);
    EXPECT_NEAR(CheckEveryCell(d, waves).worst, 7.0, 1e-5);

    // Start throws it all away and begins again from the corners.
    refinement.Start();
    EXPECT_EQ(d.GetNumVertices(), 4);
    EXPECT_EQ(d.GetNumTrianglesInTriangleList(), 2);
}

TEST(GreedyRefinement, CellsWithoutDataAreNotComparedAndNarrowGridsHaveNoSurface)
{
    // A gap over the lower left corner: the corner takes the nearest height.
    const float gap = std::numeric_limits<float>::quiet_NaN();
    const Raster holed(20, 14, [&](int x, int y) { return x < 4 && y < 3 ? gap : 0.5f * x + 0.25f * y * y; });
    ZrCIncrementalDelaunay2D d;
    GreedyRefinement refinement(d, holed.Grid());
    refinement.Start();
    EXPECT_EQ(d.GetVertex(0).z, holed.At(0, 3));
    const GreedyRefinement::Outcome outcome = refinement.Refine(0.3, 1 << 20);
    EXPECT_TRUE(outcome.targetReached);
    const PlaneCheck check = CheckEveryCell(d, holed);
    EXPECT_EQ(check.compared, 20 * 14 - 12);
    EXPECT_LE(check.worst, 0.3 + 1e-9);

    for (const auto& [w, h] : {std::pair(1, 9), std::pair(9, 1)}) {
        const Raster line(w, h, [](int x, int y) { return x + y; });
        const Refined none = RefineFromCorners(line, 0.1, 100);
        EXPECT_EQ(none.outcome.triangles, 0);
        EXPECT_EQ(none.outcome.inserted, 0);
    }
}

TEST(CellCentreError, PlanesAtTheCentresAgainstTheRaster)
{
    // Two triangles over a 4 x 3 raster, corners at 0 but for the upper
    // right at 6: the lower triangle (0,0) (3,0) (0,2) is flat at 0, the
    // upper one (3,0) (3,2) (0,2) rises to 6 at (3,2) as 6 (x/3 + y/2 - 1).
    ZrCIncrementalDelaunay2D d(4);
    for (SSEPoint p : {P(0, 0, 0), P(3, 0, 0), P(3, 2, 3), P(0, 2, 0)}) d.AppendVertex(p);
    AddTriangle(d, 0, 1, 3);
    AddTriangle(d, 1, 2, 3);
    const Raster r(4, 3, [](int x, int y) { return x == 2 && y == 1 ? 2.0 : x == 3 && y == 2 ? 6.0 : 0.0; });
    // z is half the height here. Cells of the upper triangle: (3,1) at 3,
    // (2,1) at 1 (holds 2), (1,2) at 2, (2,2) at 4, (3,2) at 6; the rest 0.
    const CentreError e = CompareAtCellCentres(d, r.Grid(), 2.0);
    EXPECT_EQ(e.cells, 12);
    EXPECT_EQ(e.uncovered, 0);
    EXPECT_DOUBLE_EQ(e.maximum, 4.0);
    EXPECT_DOUBLE_EQ(e.rms, std::sqrt((9.0 + 1.0 + 4.0 + 16.0) / 12.0));

    // The lower triangle alone, finalized and tilted to 3 y, covers the
    // cells with x / 3 + y / 2 <= 1: four in row 0, two in row 1 at 3, and
    // (0, 2) at 6; the other five are not covered.
    ZrCIncrementalDelaunay2D half(3);
    for (SSEPoint p : {P(0, 0, 0), P(3, 0, 0), P(0, 2, 3)}) half.AppendVertex(p);
    AddTriangle(half, 0, 1, 2);
    half.FinalizeTriangleList();
    const CentreError lower = CompareAtCellCentres(half, r.Grid(), 2.0);
    EXPECT_EQ(lower.uncovered, 5);
    EXPECT_EQ(lower.cells, 7);
    EXPECT_DOUBLE_EQ(lower.maximum, 6.0);
    EXPECT_DOUBLE_EQ(lower.rms, std::sqrt((9.0 + 9.0 + 36.0) / 7.0));
}

TEST(LatticeTriangleRows, CellsAndHeightsMatchABruteForceTest)
{
    // Random corners around a 20 x 16 grid, some beyond it, some collinear:
    // the rows hold exactly the cells whose centre the closed triangle holds,
    // each once, with the plane's height there.
    std::mt19937 engine(2024);
    std::uniform_int_distribution<int> coordinate(-4, 23);
    for (int round = 0; round < 400; ++round) {
        detail::LatticeCorner c[3];
        for (auto& corner : c) corner = {coordinate(engine), coordinate(engine) - 2, double(engine() % 1000) / 8.0};
        if (round % 10 == 0) c[2] = {2 * c[1].x - c[0].x, 2 * c[1].y - c[0].y, 1.0};
        std::map<std::pair<int, int>, double> found;
        detail::ForEachRowOfCells(c[0], c[1], c[2], 20, 16,
                                  [&](int y, int first, int last, double n, double step, double area) {
                                      for (int x = first; x <= last; ++x, n += step)
                                          EXPECT_TRUE(found.emplace(std::pair(x, y), n / area).second);
                                  });
        const double area =
            double(c[1].x - c[0].x) * double(c[2].y - c[0].y) - double(c[1].y - c[0].y) * double(c[2].x - c[0].x);
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 20; ++x) {
                double w[3];
                for (int k = 0; k < 3; ++k) {
                    const auto& o = c[(k + 1) % 3];
                    const auto& q = c[(k + 2) % 3];
                    w[k] = (double(q.x - o.x) * double(y - o.y) - double(q.y - o.y) * double(x - o.x)) / area;
                }
                const bool inside = area != 0.0 && w[0] >= 0 && w[1] >= 0 && w[2] >= 0;
                const auto at = found.find({x, y});
                ASSERT_EQ(at != found.end(), inside) << "round " << round << " cell " << x << " " << y;
                if (inside) {
                    EXPECT_NEAR(at->second, w[0] * c[0].z + w[1] * c[1].z + w[2] * c[2].z, 1e-9);
                }
            }
        }
    }
}

TEST(ErrorHeap, TopIsTheLargestKeyThroughSetsAndRemovals)
{
    detail::ErrorHeap heap;
    std::map<int, double> reference;
    std::mt19937 engine(7);
    for (int step = 0; step < 3000; ++step) {
        const int id = static_cast<int>(engine() % 64);
        if (engine() % 3 == 0) {
            heap.Remove(id);
            reference.erase(id);
        } else {
            const double key = double(engine() % 50);
            heap.Set(id, key);
            reference[id] = key;
        }
        ASSERT_EQ(heap.Size(), reference.size());
        if (reference.empty()) continue;
        double largest = -1.0;
        for (const auto& [_, key] : reference) largest = std::max(largest, key);
        EXPECT_EQ(heap.TopKey(), largest);
        EXPECT_EQ(reference.at(heap.Top()), largest);
        for (int id = 0; id < 64; ++id) EXPECT_EQ(heap.Holds(id), reference.count(id) == 1);
    }
}

} // namespace
} // namespace vek::test
