#pragma once

#include <cstdint>
#include <vector>

#include "vekdll/export.h"
#include "vekdll/surface/error_heap.h"
#include "vekdll/surface/height_grid.h"

class ZrCIncrementalDelaunay2D;
struct t_hdelaunaytriangle;

namespace vek {

// Builds a surface that departs from a raster of heights by no more than a
// given amount at any cell centre, with few triangles: starting from the
// raster's four corners, it inserts one vertex at a time, always at the
// cell where the surface is worst, until every cell is within the target or
// a budget of vertices is spent.
//
// Each triangle's worst cell is found once, when the triangle is made, and
// the triangles wait in a max-heap keyed by that error. An insertion goes
// through the triangulation's own Delaunay insertion, which hands every
// triangle it made or changed to the tail of the working list; only those
// are looked at again. So an insertion costs about the cells of the few new
// triangles, however large the surface has grown. Once no triangle is
// beyond the target, one pass over the records makes sure of it, since a
// flip may rewrite a triangle that the insertion did not hand back (on the
// bundled elevation model up to two insertions in a thousand do).
//
// Vertices lie on cell centres: x the column, y the row of the grid, z the
// height of that cell as given (a corner without data takes the nearest
// height there is). A cell within the target is one where the plane of a
// triangle over it is no further from the cell's height than the target;
// cells without data are not compared.
//
// While the driver works, each triangle's SortIndex names the driver's
// record of it; the border walks of the triangulation set that field afresh
// before they read it.
class VEKDLL_API GreedyRefinement {
public:
    struct Outcome {
        int vertices = 0;
        // In the working list.
        int triangles = 0;
        // Vertices this call added.
        int inserted = 0;
        // The largest departure left at a cell centre, in height units.
        double worstError = 0.0;
        bool targetReached = false;
        // Cells compared by this call, over all the triangles it measured.
        long long cellsMeasured = 0;
    };

    // Both must outlive the driver; the grid's heights are read, never
    // copied.
    GreedyRefinement(ZrCIncrementalDelaunay2D& triangulation, const HeightGrid& grid);
    ~GreedyRefinement();
    GreedyRefinement(const GreedyRefinement&) = delete;
    GreedyRefinement& operator=(const GreedyRefinement&) = delete;

    // Replaces the triangulation's vertices and triangles by the four
    // corner cells of the grid and the two triangles over them. A grid
    // narrower or lower than two cells leaves the triangulation empty.
    void Start();

    // Inserts the worst cell, one at a time, while some cell departs by more
    // than `maxError` and the store holds fewer than `maxVertices`. Leaves the
    // triangulation in the working state, so that a later call with a
    // smaller target goes on from here; a finalized triangulation is moved
    // back first. A call after other changes to the triangulation measures
    // what changed before it goes on.
    Outcome Refine(double maxError, int maxVertices);

private:
    // The driver's record of one triangle of the working list. While
    // Refine runs, every listed triangle has one, named by its SortIndex.
    struct Slot {
        t_hdelaunaytriangle* triangle = nullptr; // null while free
        std::int32_t corner[3] = {-1, -1, -1};
        double error = 0.0;
        std::int32_t cellX = 0;
        std::int32_t cellY = 0;
        bool seen = false;
        // Waits in the heap.
        bool queued = false;
        // Its worst cell found no place in the triangulation.
        bool stuck = false;
    };
    // A triangle taken out by an insertion, and its record.
    struct Affected {
        t_hdelaunaytriangle* triangle;
        int slot;
    };

    int SlotOf(const t_hdelaunaytriangle* triangle) const;
    bool HasCornersOf(const Slot& slot, const t_hdelaunaytriangle* triangle) const;
    int Adopt(t_hdelaunaytriangle* triangle);
    void Measure(int slot);
    void Release(int slot);
    void Queue(int slot);
    void ReserveRecords(int maxVertices);
    void MeasureWholeList();
    void MeasureChangedBehindTheRecords();

    // One vertex at the worst cell of `slot`, and the records brought up to
    // date with what the insertion changed.
    void InsertWorstCellOf(int slot);
    int AppendCellVertex(int x, int y);
    void CollectAffected(int v);
    t_hdelaunaytriangle* NeighbourSplitAlongWith(int v) const;
    void TakeUpTail(long long count);
    float HeightAtOrNear(int x, int y) const;
    double WorstErrorLeft() const;

    ZrCIncrementalDelaunay2D& triangulation_;
    HeightGrid grid_;
    std::vector<Slot> slots_;
    std::vector<int> freeSlots_;
    detail::ErrorHeap heap_;
    double target_ = 0.0;
    long long cellsMeasured_ = 0;
    // Scratch of one insertion: the triangles it took out.
    std::vector<Affected> affected_;
};

} // namespace vek
