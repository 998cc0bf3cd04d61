// One insertion of the refinement and what it changed.
//
// The triangulation's insertion takes every triangle whose circle holds the
// new vertex out of the working list, splits the one that holds the vertex
// (and, for a vertex on a side, the neighbour across that side), flips
// among them, and appends what is left of them and the new triangles to the
// tail of the working list; the split triangles are freed. Every removal and
// every append counts one change of the list, so the changes and the growth
// of the list tell how many triangles were taken out and how many came back
// at the tail; the records to drop are those of the triangles taken out
// that are not among them. Should the count taken out differ from the
// triangles foreseen, or the changes not add up (a list that runs empty on
// the way counts one change more, as in the first insertion), the records
// are brought in step by a walk over the whole list instead, which never
// reads a triangle that may be gone.

#include <algorithm>
#include <cstdint>

#include "vekdll/surface/greedy_refinement.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace vek {

void GreedyRefinement::InsertWorstCellOf(int slot)
{
    ZrCIncrementalDelaunay2D& d = triangulation_;
    t_hdelaunaytriangle* worst = slots_[slot].triangle;
    if (!HasCornersOf(slots_[slot], worst)) {
        // Rewritten by a flip the records did not see: measured afresh first.
        Measure(slot);
        return;
    }
    const CList<t_hdelaunaytriangle*>& list = d.GetTriangleList();
    const long long listed = list.GetCount();
    const std::uint64_t changesBefore = list.GetChangeCount();
    const int v = AppendCellVertex(slots_[slot].cellX, slots_[slot].cellY);
    d.ClearAffectedTriangleList();
    d.CalcAffectedTriangles(v);
    CollectAffected(v);
    d.ProcessAffectedTriangles(v);
    d.ClearAffectedTriangleList();

    const long long growth = list.GetCount() - listed;
    const auto changes = static_cast<long long>(list.GetChangeCount() - changesBefore);
    const long long takenOut = (changes - growth) / 2;
    if ((changes - growth) % 2 != 0 || takenOut != static_cast<long long>(affected_.size())) {
        MeasureWholeList();
    } else {
        TakeUpTail(growth + takenOut);
        for (const Affected& a : affected_) {
            if (!slots_[a.slot].seen) Release(a.slot);
        }
    }
    // A cell that found no place leaves its triangle as it was; it would be
    // picked again for ever.
    if (slots_[slot].triangle == worst && HasCornersOf(slots_[slot], worst)) {
        slots_[slot].stuck = true;
        Queue(slot);
    }
}

// The store doubles when it is full, so that no vertex is lost.
int GreedyRefinement::AppendCellVertex(int x, int y)
{
    ZrCIncrementalDelaunay2D& d = triangulation_;
    if (d.GetNumVertices() >= d.GetMaxNumVertices()) d.ReallocSize(std::max(16, 2 * d.GetMaxNumVertices()));
    SSEPoint p;
    p.sse = _mm_setr_ps(static_cast<float>(x), static_cast<float>(y), HeightAtOrNear(x, y), 0.0f);
    d.AppendVertex(p);
    return d.GetNumVertices() - 1;
}

// What the insertion of v is about to take out of the working list: the
// affected list, and the neighbour it will split along with one of them.
// Their records are read now, while all of them are alive.
void GreedyRefinement::CollectAffected(int v)
{
    affected_.clear();
    CList<t_hdelaunaytriangle*>& taken = triangulation_.GetAffectedTriangleList();
    for (POSITION pos = taken.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = taken.GetNext(pos);
        if (triangle != nullptr) affected_.push_back({triangle, SlotOf(triangle)});
    }
    if (t_hdelaunaytriangle* across = NeighbourSplitAlongWith(v)) {
        const auto same = [across](const Affected& a) { return a.triangle == across; };
        if (std::none_of(affected_.begin(), affected_.end(), same)) affected_.push_back({across, SlotOf(across)});
    }
    // A triangle the records do not know cannot be listed; it is left alone.
    std::erase_if(affected_, [](const Affected& a) { return a.slot < 0; });
    for (const Affected& a : affected_) slots_[a.slot].seen = false;
}

// The insertion places v in the first affected triangle, in list order, that
// has it inside or on a side; on a side, the neighbour across it is split as
// well and freed, whether or not its circle held v. (A foresight that is
// wrong shows in the count of triangles taken out.)
t_hdelaunaytriangle* GreedyRefinement::NeighbourSplitAlongWith(int v) const
{
    for (const Affected& a : affected_) {
        t_hdelaunaytriangle* triangle = a.triangle;
        if (triangle->Ignore) continue;
        const EPointWhere where = triangulation_.PointWhere(v, triangle);
        if (where == ePointOutside) continue;
        if (where == ePointInside) return nullptr;
        const int side = where - ePointOnSide0;
        t_hdelaunaytriangle* across = triangle->Neighbour[side];
        return ZrCIncrementalDelaunay2D::FindCommonSide(side, triangle, across) != eSideNone ? across : nullptr;
    }
    return nullptr;
}

// The last `count` triangles of the working list are what the insertion
// handed back: the affected ones that are left, measured again if a flip
// changed them, and new ones, measured for the first time.
void GreedyRefinement::TakeUpTail(long long count)
{
    CList<t_hdelaunaytriangle*>& list = triangulation_.GetTriangleList();
    POSITION pos = list.GetTailPosition();
    for (long long i = 0; i < count && pos != nullptr; ++i) {
        t_hdelaunaytriangle* triangle = list.GetPrev(pos);
        if (triangle == nullptr) continue;
        const auto same = [triangle](const Affected& a) { return a.triangle == triangle; };
        const auto found = std::find_if(affected_.begin(), affected_.end(), same);
        if (found == affected_.end()) {
            Adopt(triangle);
            continue;
        }
        Slot& s = slots_[found->slot];
        s.seen = true;
        if (!HasCornersOf(s, triangle)) Measure(found->slot);
    }
}

} // namespace vek
