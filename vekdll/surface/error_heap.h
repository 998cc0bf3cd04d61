#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek::detail {

// A max-heap of small integer ids keyed by a double, which knows where each
// id stands, so that an id can be re-keyed or taken out in O(log n) when
// what it names changes or goes away.
//
// It is four-ary, and the places are a compact array of their own: a
// removal moves entries down a path of the heap and writes the new place of
// each, and on a large heap those writes, not the comparisons, are what
// costs, so they go to as few cache lines as can be.
class ErrorHeap {
public:
    bool Empty() const { return entries_.empty(); }
    std::size_t Size() const { return entries_.size(); }
    int Top() const { return entries_.front().id; }
    double TopKey() const { return entries_.front().key; }
    bool Holds(int id) const
    {
        return id >= 0 && static_cast<std::size_t>(id) < places_.size() && places_[static_cast<std::size_t>(id)] >= 0;
    }

    // Room for ids below n without growing.
    void Reserve(std::size_t n)
    {
        entries_.reserve(n);
        places_.reserve(n);
    }

    void Clear()
    {
        entries_.clear();
        places_.clear();
    }

    // Puts id in with `key`, or moves it to `key` if it is in already.
    void Set(int id, double key)
    {
        const auto at = static_cast<std::size_t>(id);
        if (at >= places_.size()) places_.resize(at + 1, -1);
        if (places_[at] < 0) {
            entries_.push_back({key, id});
            Up(entries_.size() - 1);
            return;
        }
        const auto i = static_cast<std::size_t>(places_[at]);
        const double old = entries_[i].key;
        entries_[i].key = key;
        if (key > old)
            Up(i);
        else
            Down(i);
    }

    void Remove(int id)
    {
        if (!Holds(id)) return;
        const auto i = static_cast<std::size_t>(places_[static_cast<std::size_t>(id)]);
        places_[static_cast<std::size_t>(id)] = -1;
        const Entry last = entries_.back();
        entries_.pop_back();
        if (i == entries_.size()) return;
        entries_[i] = last;
        if (i > 0 && entries_[Parent(i)].key < last.key)
            Up(i);
        else
            Down(i);
    }

private:
    struct Entry {
        double key;
        int id;
    };
    static constexpr std::size_t kArity = 4;

    static std::size_t Parent(std::size_t i) { return (i - 1) / kArity; }

    void Place(std::size_t i, const Entry& e)
    {
        entries_[i] = e;
        places_[static_cast<std::size_t>(e.id)] = static_cast<std::int32_t>(i);
    }

    void Up(std::size_t i)
    {
        const Entry e = entries_[i];
        while (i > 0 && entries_[Parent(i)].key < e.key) {
            Place(i, entries_[Parent(i)]);
            i = Parent(i);
        }
        Place(i, e);
    }

    void Down(std::size_t i)
    {
        const Entry e = entries_[i];
        const std::size_t n = entries_.size();
        for (;;) {
            const std::size_t first = kArity * i + 1;
            if (first >= n) break;
            std::size_t largest = first;
            const std::size_t end = first + kArity < n ? first + kArity : n;
            for (std::size_t child = first + 1; child < end; ++child) {
                if (entries_[largest].key < entries_[child].key) largest = child;
            }
            if (!(e.key < entries_[largest].key)) break;
            Place(i, entries_[largest]);
            i = largest;
        }
        Place(i, e);
    }

    std::vector<Entry> entries_;
    std::vector<std::int32_t> places_;
};

} // namespace vek::detail
