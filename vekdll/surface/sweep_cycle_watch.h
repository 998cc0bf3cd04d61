#pragma once

#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace vek::detail {

// Watches the Delaunay sweeps of one insertion for a cycle.
//
// The circle test is a float comparison, so on nearly cocircular corners two
// triangles can each find the other's corner inside their circle: edges flip
// in one sweep and back in a later one, and the sweeps go on until their
// bound, as many as there are vertices. Every sweep is a function of the
// records it may write (corners, links and circles of the triangles it
// flips and of their neighbours) and of what it only reads, which stays as
// it is. So once the records written so far stand exactly as they stood p
// sweeps before, every later sweep repeats one of the last p, and the state
// at the bound is known: the caller runs only what remains of the last
// period. The result is the one all the sweeps give, bit for bit.
//
// A hash of the written records finds a repeat of any length; the repeat is
// then confirmed on the records themselves after one more period, so that
// a collision of hashes can never shorten the sweeps wrongly.
//
// Touch is called with every record before a flip writes it; EndOfSweep
// after each watched sweep.
template <class T>
class SweepCycleWatch {
public:
    // Beyond this many records or sweeps the watch gives up, and the sweeps
    // simply run on.
    static constexpr std::size_t kMostRecords = 1 << 16;
    static constexpr std::size_t kMostSweeps = 1 << 20;

    void Touch(const T* record)
    {
        if (record == nullptr || gaveUp_) return;
        if (!where_.emplace(record, touched_.size()).second) return;
        if (touched_.size() >= kMostRecords) {
            gaveUp_ = true;
            return;
        }
        touched_.push_back(record);
        originals_.push_back(*record);
    }

    // The period once the records stand as they stood that many sweeps
    // before, confirmed record by record; else 0.
    int EndOfSweep(int sweep)
    {
        if (gaveUp_) return 0;
        if (seen_.empty()) seen_.emplace(0, sweep - 1); // before the first watched sweep nothing had moved
        if (candidatePeriod_ > 0 && sweep == candidateAt_ + candidatePeriod_) {
            if (StandsAsCandidate()) return candidatePeriod_;
            candidatePeriod_ = 0;
        }
        const std::uint64_t hash = StateHash();
        const auto earlier = seen_.find(hash);
        if (earlier != seen_.end() && candidatePeriod_ == 0) {
            candidateAt_ = sweep;
            candidatePeriod_ = sweep - earlier->second;
            candidate_.clear();
            for (const T* record : touched_) candidate_.push_back(*record);
        }
        seen_[hash] = sweep;
        if (seen_.size() > kMostSweeps) gaveUp_ = true;
        return 0;
    }

private:
    // What a sweep writes: corners, links and the circle.
    static std::uint64_t Mix(std::uint64_t h, std::uint64_t value)
    {
        h ^= value + 0x9e3779b97f4a7c15ull + (h << 6) + (h >> 2);
        h ^= h >> 31;
        h *= 0xbf58476d1ce4e5b9ull;
        return h ^ (h >> 29);
    }
    static std::uint64_t Bits(float value)
    {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }
    static std::uint64_t RecordHash(const T* at, const T& state)
    {
        std::uint64_t h = Mix(0, reinterpret_cast<std::uintptr_t>(at));
        for (int i = 0; i < 3; ++i) {
            h = Mix(h, static_cast<std::uint32_t>(state.Vertex[i]));
            h = Mix(h, reinterpret_cast<std::uintptr_t>(state.Neighbour[i]));
        }
        h = Mix(h, Bits(state.CircleX));
        h = Mix(h, Bits(state.CircleY));
        return Mix(h, Bits(state.CircleRadius2));
    }
    static bool SameState(const T& a, const T& b)
    {
        return std::memcmp(a.Vertex, b.Vertex, sizeof a.Vertex) == 0 &&
               std::memcmp(a.Neighbour, b.Neighbour, sizeof a.Neighbour) == 0 && Bits(a.CircleX) == Bits(b.CircleX) &&
               Bits(a.CircleY) == Bits(b.CircleY) && Bits(a.CircleRadius2) == Bits(b.CircleRadius2);
    }

    // The sum over the written records of how their hash moved since they
    // were first touched: 0 for the state before the first watched sweep,
    // and the same for the same state however many records were touched.
    std::uint64_t StateHash() const
    {
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < touched_.size(); ++i)
            sum += RecordHash(touched_[i], *touched_[i]) - RecordHash(touched_[i], originals_[i]);
        return sum;
    }

    // Records touched after the candidate was taken stood then as first seen.
    bool StandsAsCandidate() const
    {
        for (std::size_t i = 0; i < touched_.size(); ++i) {
            if (!SameState(i < candidate_.size() ? candidate_[i] : originals_[i], *touched_[i])) return false;
        }
        return true;
    }

    std::unordered_map<const T*, std::size_t> where_;
    std::vector<const T*> touched_;
    std::vector<T> originals_;
    std::unordered_map<std::uint64_t, int> seen_;
    std::vector<T> candidate_;
    int candidateAt_ = 0;
    int candidatePeriod_ = 0;
    bool gaveUp_ = false;
};

} // namespace vek::detail
