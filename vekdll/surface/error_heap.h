#pragma once

#include <cstddef>
#include <vector>

namespace vek::detail {

// A binary max-heap of small integer ids keyed by a double, which keeps
// where each id stands in a place of the caller's (`placeOf(id)` gives an
// int&, -1 while the id is out), so that an id can be re-keyed or taken out
// in O(log n) when what it names changes or goes away. The place lives
// beside the caller's other data of that id, where it is read anyway.
template <class PlaceOf>
class ErrorHeap {
public:
    explicit ErrorHeap(PlaceOf placeOf) : placeOf_(placeOf) {}

    bool Empty() const { return entries_.empty(); }
    std::size_t Size() const { return entries_.size(); }
    int Top() const { return entries_.front().id; }
    double TopKey() const { return entries_.front().key; }

    // Forgets every entry; the caller's places are not reset.
    void Clear() { entries_.clear(); }

    // Puts id in with `key`, or moves it to `key` if it is in already.
    void Set(int id, double key)
    {
        const int at = placeOf_(id);
        if (at < 0) {
            entries_.push_back({key, id});
            Up(entries_.size() - 1);
            return;
        }
        const std::size_t i = static_cast<std::size_t>(at);
        const double old = entries_[i].key;
        entries_[i].key = key;
        if (key > old)
            Up(i);
        else
            Down(i);
    }

    void Remove(int id)
    {
        int& at = placeOf_(id);
        if (at < 0) return;
        const std::size_t i = static_cast<std::size_t>(at);
        at = -1;
        const Entry last = entries_.back();
        entries_.pop_back();
        if (i == entries_.size()) return;
        entries_[i] = last;
        Up(i);
        Down(static_cast<std::size_t>(placeOf_(last.id)));
    }

private:
    struct Entry {
        double key;
        int id;
    };

    void Place(std::size_t i, const Entry& e)
    {
        entries_[i] = e;
        placeOf_(e.id) = static_cast<int>(i);
    }

    void Up(std::size_t i)
    {
        const Entry e = entries_[i];
        while (i > 0) {
            const std::size_t parent = (i - 1) / 2;
            if (!(entries_[parent].key < e.key)) break;
            Place(i, entries_[parent]);
            i = parent;
        }
        Place(i, e);
    }

    void Down(std::size_t i)
    {
        const Entry e = entries_[i];
        const std::size_t n = entries_.size();
        for (;;) {
            std::size_t child = 2 * i + 1;
            if (child >= n) break;
            if (child + 1 < n && entries_[child].key < entries_[child + 1].key) ++child;
            if (!(e.key < entries_[child].key)) break;
            Place(i, entries_[child]);
            i = child;
        }
        Place(i, e);
    }

    PlaceOf placeOf_;
    std::vector<Entry> entries_;
};

} // namespace vek::detail
