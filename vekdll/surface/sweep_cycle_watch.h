#pragma once

#include <cstring>
#include <vector>

namespace vek::detail {

// Watches the Delaunay sweeps of one insertion for a cycle.
//
// The circle test is a float comparison, so on nearly cocircular corners two
// triangles can each find the other's corner inside their circle: an edge
// flips in one sweep and back in a later one, and the sweeps go on until
// their bound, as many as there are vertices. Every sweep is a function of
// the records it may write (corners, links and circles of the triangles
// it flips and of their neighbours) and of what it only reads, which stays
// as it is. So once the records written so far stand exactly as they stood
// p sweeps before, every later sweep repeats one of the last p, and the
// state at the bound is known: the caller runs only what remains of the
// last period. The result is the one all the sweeps give, bit for bit.
//
// Touch is called with every record before a flip writes it; EndOfSweep
// after each watched sweep.
template <class T>
class SweepCycleWatch {
public:
    // The longest period looked for, and the most records followed: beyond
    // either, the sweeps simply run on.
    static constexpr int kDepth = 16;
    static constexpr std::size_t kMostRecords = 1024;

    void Touch(const T* record)
    {
        if (record == nullptr || gaveUp_) return;
        for (const T* known : touched_) {
            if (known == record) return;
        }
        if (touched_.size() >= kMostRecords) {
            gaveUp_ = true;
            return;
        }
        touched_.push_back(record);
        originals_.push_back(*record);
    }

    // The period, if the records now stand as they stood 1 ... kDepth sweeps
    // ago (counting the state before the first watched sweep), else 0.
    int EndOfSweep()
    {
        if (gaveUp_) return 0;
        std::vector<T> now;
        now.reserve(touched_.size());
        for (const T* record : touched_) now.push_back(*record);
        int period = 0;
        for (int back = 1; back <= static_cast<int>(history_.size()) && period == 0; ++back) {
            if (SameAs(history_[history_.size() - static_cast<std::size_t>(back)], now)) period = back;
        }
        // Before the first watched sweep every record stood as first seen.
        if (period == 0 && static_cast<int>(history_.size()) < kDepth && SameAs({}, now))
            period = static_cast<int>(history_.size()) + 1;
        history_.push_back(std::move(now));
        if (history_.size() > static_cast<std::size_t>(kDepth)) history_.erase(history_.begin());
        return period;
    }

private:
    // `then` holds the first then.size() touched records as they stood at
    // that time; records touched later stood as first seen.
    bool SameAs(const std::vector<T>& then, const std::vector<T>& now) const
    {
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (!SameState(i < then.size() ? then[i] : originals_[i], now[i])) return false;
        }
        return true;
    }

    // What a sweep writes: corners, links and the circle, compared bit for bit.
    static bool SameState(const T& a, const T& b)
    {
        return std::memcmp(a.Vertex, b.Vertex, sizeof a.Vertex) == 0 &&
               std::memcmp(a.Neighbour, b.Neighbour, sizeof a.Neighbour) == 0 &&
               std::memcmp(&a.CircleX, &b.CircleX, sizeof a.CircleX) == 0 &&
               std::memcmp(&a.CircleY, &b.CircleY, sizeof a.CircleY) == 0 &&
               std::memcmp(&a.CircleRadius2, &b.CircleRadius2, sizeof a.CircleRadius2) == 0;
    }

    std::vector<const T*> touched_;
    std::vector<T> originals_;
    std::vector<std::vector<T>> history_;
    bool gaveUp_ = false;
};

} // namespace vek::detail
