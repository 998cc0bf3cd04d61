// The course of the refinement: the first two triangles, the loop over the
// worst triangle, and the driver's records of the triangles.

#include "vekdll/surface/greedy_refinement.h"

#include <algorithm>

#include "vekdll/surface/incremental_delaunay.h"

namespace vek {

namespace {

// Room for the corners and the first few hundred insertions; the store
// doubles from there.
constexpr int kFirstVertexCapacity = 1024;

} // namespace

GreedyRefinement::GreedyRefinement(ZrCIncrementalDelaunay2D& triangulation, const HeightGrid& grid)
    : triangulation_(triangulation), grid_(grid)
{
}

GreedyRefinement::~GreedyRefinement() = default;

void GreedyRefinement::Start()
{
    slots_.clear();
    freeSlots_.clear();
    heap_.Clear();
    ZrCIncrementalDelaunay2D& d = triangulation_;
    if (d.IsFinalized()) d.CopyFinalTriangleListToTriangleList();
    d.ClearAffectedTriangleList();
    d.ClearTriangleList();
    d.CreateVertexArray(kFirstVertexCapacity);
    if (grid_.width < 2 || grid_.height < 2) return;
    // Counter-clockwise from the first cell, so that the first three make a
    // triangle of the right winding and the fourth joins it from outside.
    const int right = grid_.width - 1;
    const int top = grid_.height - 1;
    for (const auto& [x, y] : {std::pair(0, 0), std::pair(right, 0), std::pair(right, top), std::pair(0, top)})
        AppendCellVertex(x, y);
    d.Triangulate(4, false, false);
}

GreedyRefinement::Outcome GreedyRefinement::Refine(double maxError, int maxVertices)
{
    ZrCIncrementalDelaunay2D& d = triangulation_;
    target_ = maxError;
    cellsMeasured_ = 0;
    if (d.IsFinalized()) d.CopyFinalTriangleListToTriangleList();
    ReserveRecords(maxVertices);
    MeasureWholeList();

    const int verticesBefore = d.GetNumVertices();
    for (;;) {
        while (!heap_.Empty() && d.GetNumVertices() < maxVertices) InsertWorstCellOf(heap_.Top());
        MeasureChangedBehindTheRecords();
        if (heap_.Empty() || d.GetNumVertices() >= maxVertices) break;
    }

    Outcome outcome;
    outcome.vertices = d.GetNumVertices();
    outcome.triangles = d.GetNumTrianglesInTriangleList();
    outcome.inserted = outcome.vertices - verticesBefore;
    outcome.worstError = WorstErrorLeft();
    outcome.targetReached = outcome.worstError <= maxError;
    outcome.cellsMeasured = cellsMeasured_;
    return outcome;
}

// A triangulation of n vertices has fewer than 2 n triangles, and there are
// no more vertices than cells. Room for them all from the start spares the
// records a copy and a fresh set of pages at every doubling; pages that are
// never written cost nothing.
void GreedyRefinement::ReserveRecords(int maxVertices)
{
    const long long cells = static_cast<long long>(grid_.width) * grid_.height;
    const long long vertices = std::max(0LL, std::min<long long>(maxVertices, cells + 4));
    const auto triangles = static_cast<std::size_t>(std::min(2 * vertices, 1LL << 28));
    slots_.reserve(triangles);
    heap_.Reserve(triangles);
}

// Brings the records in step with the working list as it is: triangles
// that are new or whose corners changed are measured, and records of
// triangles no longer listed are dropped without looking at them, since
// they may be freed.
void GreedyRefinement::MeasureWholeList()
{
    for (Slot& slot : slots_) slot.seen = false;
    CList<t_hdelaunaytriangle*>& list = triangulation_.GetTriangleList();
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = list.GetNext(pos);
        if (triangle == nullptr) continue;
        const int slot = SlotOf(triangle);
        if (slot < 0) {
            Adopt(triangle);
            continue;
        }
        slots_[slot].seen = true;
        if (HasCornersOf(slots_[slot], triangle))
            Queue(slot);
        else
            Measure(slot);
    }
    for (int slot = 0; slot < static_cast<int>(slots_.size()); ++slot) {
        if (slots_[slot].triangle != nullptr && !slots_[slot].seen) Release(slot);
    }
}

// The records name only triangles of the working list, so a walk over them
// finds every triangle whose corners a flip changed in place.
void GreedyRefinement::MeasureChangedBehindTheRecords()
{
    for (int slot = 0; slot < static_cast<int>(slots_.size()); ++slot) {
        const Slot& s = slots_[slot];
        if (s.triangle != nullptr && !HasCornersOf(s, s.triangle)) Measure(slot);
    }
}

int GreedyRefinement::SlotOf(const t_hdelaunaytriangle* triangle) const
{
    const std::int32_t slot = triangle->SortIndex;
    if (slot < 0 || slot >= static_cast<std::int32_t>(slots_.size())) return -1;
    return slots_[slot].triangle == triangle ? slot : -1;
}

bool GreedyRefinement::HasCornersOf(const Slot& slot, const t_hdelaunaytriangle* triangle) const
{
    return slot.corner[0] == triangle->Vertex[0] && slot.corner[1] == triangle->Vertex[1] &&
           slot.corner[2] == triangle->Vertex[2];
}

int GreedyRefinement::Adopt(t_hdelaunaytriangle* triangle)
{
    int slot = 0;
    if (!freeSlots_.empty()) {
        slot = freeSlots_.back();
        freeSlots_.pop_back();
    } else {
        slot = static_cast<int>(slots_.size());
        slots_.emplace_back();
    }
    slots_[slot].triangle = triangle;
    slots_[slot].seen = true;
    triangle->SortIndex = slot;
    Measure(slot);
    return slot;
}

void GreedyRefinement::Release(int slot)
{
    if (slots_[slot].queued) heap_.Remove(slot);
    slots_[slot] = Slot{};
    freeSlots_.push_back(slot);
}

// Only triangles beyond the target wait in the heap.
void GreedyRefinement::Queue(int slot)
{
    Slot& s = slots_[slot];
    const bool beyond = s.error > target_ && !s.stuck;
    if (beyond)
        heap_.Set(slot, s.error);
    else if (s.queued)
        heap_.Remove(slot);
    s.queued = beyond;
}

double GreedyRefinement::WorstErrorLeft() const
{
    double worst = 0.0;
    for (const Slot& slot : slots_) {
        if (slot.triangle != nullptr) worst = std::max(worst, slot.error);
    }
    return worst;
}

} // namespace vek
