#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "vekdll/platform/c_list.h"
#include "vekdll/surface/circle_grid.h"

namespace vek::detail {

// A box in x-y.
struct PlaneBox {
    double minX = 0.0;
    double minY = 0.0;
    double maxX = -1.0;
    double maxY = -1.0;
    bool IsEmpty() const { return !(minX <= maxX && minY <= maxY); }
};

// A circle as the grid keeps it: the three floats of the record's own test,
// and the centre and radius that bound every point the test can accept.
struct IndexedCircle {
    bool mayContainPoints = false;
    CircleGrid::Entry entry{};
    double centreX = 0.0;
    double centreY = 0.0;
    double radius = 0.0; // may be infinite
};

// The index kept beside a triangulation's working list, so that an
// insertion finds the triangles whose circles hold the new vertex, and the
// open sides a vertex beyond the border sees, without walking the list.
//
// It answers exactly as the walk would: it keeps for every listed triangle
// its list position and a stamp taken from a counter at every append, so
// that what it finds can be handed out in list order, and every triangle
// that can pass the caller's test is among its candidates.
//
// It trusts nothing it did not see: every change of the list that did not
// go through it shows in the list's change count, and the index then counts
// as out of step until the caller rebuilds it from the list. Changes of a
// triangle in the list are reported by the owner: a new circle by
// CircleChanged, a side that may have lost its neighbour by SideMayBeOpen.
template <class T>
class WorkingListIndex {
public:
    using List = CList<T*>;

    bool InStepWith(const List& list) const
    {
        return built_ && list.GetChangeCount() == expectedChanges_ && nextStamp_ < kLastStamp;
    }
    bool Covers(double x, double y) const { return grid_.Covers(x, y); }
    // Whether so many triangles have come on since the last rebuild that the
    // grid's cells have grown too full for their size.
    bool Overfull() const { return inUse_ > 8 * std::max<std::size_t>(designVertices_, 64); }

    // Forgets everything without looking at a triangle.
    void Drop()
    {
        built_ = false;
        nextStamp_ = 0;
        slots_.clear();
        freeSlots_.clear();
        border_.clear();
        grid_.Clear();
        inUse_ = 0;
    }

    // Registers every triangle of `list` in list order, over a grid laid on
    // `box`, with cells for `vertices` well-spread vertices in `spread`.
    // circleOf(const T*) gives the IndexedCircle of a triangle.
    template <class CircleOf>
    void Rebuild(List& list, const PlaneBox& box, const PlaneBox& spread, int vertices, CircleOf&& circleOf)
    {
        Drop();
        designVertices_ = static_cast<std::size_t>(std::max(vertices, 1));
        // A triangulation of n vertices holds about 2n triangles: room for
        // them at once, rather than a table that doubles (and for a moment
        // stands three times) as it grows.
        slots_.reserve(std::max(2 * designVertices_ + 16, static_cast<std::size_t>(list.GetCount())));
        grid_.Reset(box.minX, box.minY, box.maxX, box.maxY, CellSizeFor(box, spread, designVertices_));
        for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
            const POSITION current = pos;
            T* triangle = list.GetNext(pos);
            if (triangle != nullptr) Register(triangle, current, circleOf(triangle));
        }
        built_ = true;
        expectedChanges_ = list.GetChangeCount();
    }

    bool IsIndexed(const T* triangle) const
    {
        if (!built_ || triangle == nullptr) return false;
        const auto slot = static_cast<std::size_t>(static_cast<std::uint32_t>(triangle->SearchSlot));
        return slot < slots_.size() && slots_[slot].triangle == triangle;
    }

    // Appends to the list, and registers the triangle if the index is in step.
    template <class CircleOf>
    void Append(List& list, T* triangle, CircleOf&& circleOf)
    {
        const bool inStep = InStepWith(list);
        const POSITION position = list.AddTail(triangle);
        if (!inStep) return;
        if (triangle != nullptr) Register(triangle, position, circleOf(triangle));
        expectedChanges_ = list.GetChangeCount();
    }

    // Takes a registered triangle out of the list; false if the index cannot
    // (out of step, or the triangle is not registered).
    bool Remove(List& list, T* triangle)
    {
        if (!InStepWith(list) || !IsIndexed(triangle)) return false;
        const std::uint32_t slot = static_cast<std::uint32_t>(triangle->SearchSlot);
        list.RemoveAt(slots_[slot].position);
        Unregister(slot);
        expectedChanges_ = list.GetChangeCount();
        return true;
    }

    template <class CircleOf>
    void CircleChanged(const List& list, T* triangle, CircleOf&& circleOf)
    {
        if (!InStepWith(list) || !IsIndexed(triangle)) return;
        const std::uint32_t slot = static_cast<std::uint32_t>(triangle->SearchSlot);
        grid_.Remove(slots_[slot].place, slot);
        slots_[slot].place = Place(slot, circleOf(triangle));
    }

    void SideMayBeOpen(const List& list, T* triangle)
    {
        if (!InStepWith(list) || !IsIndexed(triangle)) return;
        const std::uint32_t slot = static_cast<std::uint32_t>(triangle->SearchSlot);
        if (HasOpenSide(triangle)) AddToBorder(slot);
    }

    // Moves to `taken`, in list order, every listed triangle that `accepts`,
    // among those whose circle may contain (x, y); `snapshotHolds(entry)`
    // is the caller's test on the circle as registered, applied first so
    // that only likely triangles are read. (x, y) must be covered.
    template <class SnapshotHolds, class Accepts>
    void TakeAffected(List& list, double x, double y, SnapshotHolds&& snapshotHolds, Accepts&& accepts,
                      std::vector<T*>& taken)
    {
        candidates_.clear();
        grid_.ForEachCandidate(x, y, [&](const CircleGrid::Entry& entry) {
            if (snapshotHolds(entry)) candidates_.push_back(entry.slot);
        });
        SortByStamp(candidates_);
        for (const std::uint32_t slot : candidates_) {
            T* triangle = slots_[slot].triangle;
            if (!accepts(triangle)) continue;
            taken.push_back(triangle);
            list.RemoveAt(slots_[slot].position);
            Unregister(slot);
        }
        expectedChanges_ = list.GetChangeCount();
    }

    // The listed triangles that have a side without neighbour, in list order.
    void OpenTriangles(std::vector<T*>& open)
    {
        for (std::size_t i = 0; i < border_.size();) {
            const std::uint32_t slot = border_[i];
            if (HasOpenSide(slots_[slot].triangle)) {
                ++i;
                continue;
            }
            RemoveFromBorder(slot);
        }
        candidates_.assign(border_.begin(), border_.end());
        SortByStamp(candidates_);
        for (const std::uint32_t slot : candidates_) open.push_back(slots_[slot].triangle);
    }

private:
    static constexpr std::int32_t kNotInBorder = -1;
    // Stamps are 32 bits, to keep a slot at 32 bytes; when they run out the
    // index counts as out of step, and the rebuild stamps afresh from 0.
    static constexpr std::uint32_t kLastStamp = 0xFFFFFFF0u;

    struct Slot {
        T* triangle = nullptr;
        POSITION position = nullptr;
        std::uint32_t stamp = 0;
        std::int32_t borderAt = kNotInBorder;
        GridPlace place;
    };

    // About two spacings of `vertices` well spread over `spread`, so that
    // most circles fit the finest level; never below the resolution of the
    // coordinates, and never so small that the grid over `box` would have
    // more cells than a few per vertex.
    static double CellSizeFor(const PlaneBox& box, const PlaneBox& spread, std::size_t vertices)
    {
        const double width = spread.maxX - spread.minX;
        const double height = spread.maxY - spread.minY;
        const double n = static_cast<double>(vertices);
        const double magnitude = std::max({std::fabs(box.minX), std::fabs(box.maxX), std::fabs(box.minY),
                                           std::fabs(box.maxY)});
        const double mostCells = 4.0 * n + 4096.0;
        const double boxWidth = box.maxX - box.minX;
        const double boxHeight = box.maxY - box.minY;
        double cell = 2.0 * std::sqrt(width * height / n);
        cell = std::max({cell, 2.0 * std::max(width, height) / n, magnitude * 1.0e-9,
                         std::sqrt(boxWidth * boxHeight / mostCells), std::max(boxWidth, boxHeight) / mostCells});
        return cell > 0.0 && std::isfinite(cell) ? cell : 1.0;
    }

    static bool HasOpenSide(const T* triangle)
    {
        return triangle->Neighbour[0] == nullptr || triangle->Neighbour[1] == nullptr ||
               triangle->Neighbour[2] == nullptr;
    }

    void Register(T* triangle, POSITION position, const IndexedCircle& circle)
    {
        std::uint32_t slot = 0;
        if (!freeSlots_.empty()) {
            slot = freeSlots_.back();
            freeSlots_.pop_back();
        } else {
            slot = static_cast<std::uint32_t>(slots_.size());
            slots_.emplace_back();
        }
        triangle->SearchSlot = static_cast<std::int32_t>(slot);
        Slot& entry = slots_[slot];
        entry.triangle = triangle;
        entry.position = position;
        entry.stamp = nextStamp_++;
        entry.borderAt = kNotInBorder;
        entry.place = Place(slot, circle);
        if (HasOpenSide(triangle)) AddToBorder(slot);
        ++inUse_;
    }

    GridPlace Place(std::uint32_t slot, const IndexedCircle& circle)
    {
        if (!circle.mayContainPoints) return GridPlace{};
        CircleGrid::Entry entry = circle.entry;
        entry.slot = slot;
        return grid_.Insert(entry, circle.centreX, circle.centreY, circle.radius);
    }

    void Unregister(std::uint32_t slot)
    {
        Slot& entry = slots_[slot];
        grid_.Remove(entry.place, slot);
        if (entry.borderAt != kNotInBorder) RemoveFromBorder(slot);
        entry.triangle = nullptr;
        entry.position = nullptr;
        entry.place = GridPlace{};
        freeSlots_.push_back(slot);
        --inUse_;
    }

    void AddToBorder(std::uint32_t slot)
    {
        if (slots_[slot].borderAt != kNotInBorder) return;
        slots_[slot].borderAt = static_cast<std::int32_t>(border_.size());
        border_.push_back(slot);
    }

    void RemoveFromBorder(std::uint32_t slot)
    {
        const auto at = static_cast<std::size_t>(slots_[slot].borderAt);
        const std::uint32_t last = border_.back();
        border_[at] = last;
        slots_[last].borderAt = static_cast<std::int32_t>(at);
        border_.pop_back();
        slots_[slot].borderAt = kNotInBorder;
    }

    void SortByStamp(std::vector<std::uint32_t>& slots) const
    {
        std::sort(slots.begin(), slots.end(),
                  [this](std::uint32_t a, std::uint32_t b) { return slots_[a].stamp < slots_[b].stamp; });
    }

    CircleGrid grid_;
    std::vector<Slot> slots_;
    std::vector<std::uint32_t> freeSlots_;
    std::vector<std::uint32_t> border_;
    std::vector<std::uint32_t> candidates_;
    std::uint32_t nextStamp_ = 0;
    std::uint64_t expectedChanges_ = 0;
    std::size_t designVertices_ = 1;
    std::size_t inUse_ = 0;
    bool built_ = false;
};

} // namespace vek::detail
