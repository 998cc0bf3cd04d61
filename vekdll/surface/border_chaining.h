#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "vekdll/platform/c_list.h"

// Chaining border edges into lines. The rule: a chain grows at its end by
// the first entry of the unordered list, in list order, that touches the
// chain's last vertex, turned round where it touches with its end; an empty
// chain takes the first entry; taken entries leave the list. Read plainly
// the rule rescans the list from its head after every hit, which costs the
// square of a border's length. The chainer below keeps, for every vertex,
// the entries that touch it in list order, so that each step looks only at
// the entries of one vertex: the same chains in the same order, in time
// about linear in the number of edges.

namespace vek::detail {

// Lets `chain` grow at its end from the edges of `from`, rescanning `from`
// from its head after every hit: the reference form of the rule.
template <class Edge, class SameVertex>
void GrowChain(CList<Edge*>& from, CList<Edge*>& chain, SameVertex same)
{
    for (;;) {
        Edge* last = chain.IsEmpty() ? nullptr : chain.GetTail();
        POSITION taken = nullptr;
        for (POSITION pos = from.GetHeadPosition(); pos != nullptr && taken == nullptr;) {
            const POSITION current = pos;
            Edge* edge = from.GetNext(pos);
            if (edge == nullptr) continue;
            if (last == nullptr || same(edge->Vertex[0], last->Vertex[1])) {
                taken = current;
            } else if (same(edge->Vertex[1], last->Vertex[1])) {
                std::swap(edge->Vertex[0], edge->Vertex[1]);
                taken = current;
            }
        }
        if (taken == nullptr) return;
        chain.AddTail(from.GetAt(taken));
        from.RemoveAt(taken);
    }
}

// Chains edges of one list, one chain after another, by the rule above.
// `keyOf(vertex)` names the place that decides whether two vertices meet:
// two vertices meet when their keys are equal, and a vertex without a key
// meets none. With `indexed` false every step rescans the list as
// GrowChain does, with `same` as the test; both ways give the same chains,
// so `same` and `keyOf` must agree. The list must not change between
// chains other than through the chainer.
template <class Edge, class SameVertex, class KeyOf>
class EdgeChainer {
public:
    EdgeChainer(CList<Edge*>& from, SameVertex same, KeyOf keyOf, bool indexed)
        : From(from), Same(same), KeyOfVertex(keyOf), Indexed(indexed)
    {
        if (Indexed) BuildIndex();
    }

    // Grows `chain` at its end until nothing continues it.
    void Grow(CList<Edge*>& chain)
    {
        if (!Indexed) {
            GrowChain(From, chain, Same);
            return;
        }
        for (;;) {
            Edge* last = chain.IsEmpty() ? nullptr : chain.GetTail();
            int found = -1;
            std::optional<std::uint64_t> key;
            if (last == nullptr) {
                while (FirstLeft < Entries.size() && Entries[FirstLeft].Taken) ++FirstLeft;
                if (FirstLeft < Entries.size()) found = static_cast<int>(FirstLeft);
            } else {
                key = KeyOfVertex(last->Vertex[1]);
                if (key) found = FirstLeftAt(*key);
            }
            if (found < 0) return;
            Entry& entry = Entries[static_cast<std::size_t>(found)];
            if (key && KeyOfVertex(entry.Record->Vertex[0]) != key) std::swap(entry.Record->Vertex[0], entry.Record->Vertex[1]);
            entry.Taken = true;
            chain.AddTail(entry.Record);
            From.RemoveAt(entry.Position);
        }
    }

private:
    struct Entry {
        POSITION Position;
        Edge* Record;
        bool Taken;
    };
    // The entries that touch one place, as the stretch Begin .. End of
    // Touching; Begin moves past entries once they are taken.
    struct Stretch {
        std::size_t Begin;
        std::size_t End;
    };

    void BuildIndex()
    {
        std::vector<std::pair<std::uint64_t, std::size_t>> touching;
        for (POSITION pos = From.GetHeadPosition(); pos != nullptr;) {
            const POSITION current = pos;
            Edge* edge = From.GetNext(pos);
            if (edge == nullptr) continue;
            const std::size_t ordinal = Entries.size();
            Entries.push_back({current, edge, false});
            for (const int vertex : edge->Vertex) {
                if (const std::optional<std::uint64_t> key = KeyOfVertex(vertex)) touching.emplace_back(*key, ordinal);
            }
        }
        std::sort(touching.begin(), touching.end());
        // Keys that are small numbers, as vertex indices are, index an array
        // of stretches directly; others go through a hash table.
        const std::uint64_t largest = touching.empty() ? 0 : touching.back().first;
        Dense = largest < 8 * touching.size() + 1024;
        if (Dense) DenseStretches.assign(static_cast<std::size_t>(largest) + 1, Stretch{0, 0});
        else Stretches.reserve(touching.size());
        Touching.reserve(touching.size());
        for (std::size_t k = 0; k < touching.size(); ++k) {
            if (k == 0 || touching[k].first != touching[k - 1].first) StretchFor(touching[k].first, true)->Begin = k;
            StretchFor(touching[k].first, true)->End = k + 1;
            Touching.push_back(touching[k].second);
        }
    }

    // The stretch of `key`, made where `make` asks for it; null if there is
    // none.
    Stretch* StretchFor(std::uint64_t key, bool make)
    {
        if (Dense) return key < DenseStretches.size() ? &DenseStretches[static_cast<std::size_t>(key)] : nullptr;
        if (make) return &Stretches[key];
        const auto found = Stretches.find(key);
        return found == Stretches.end() ? nullptr : &found->second;
    }

    // The first entry in list order, not yet taken, that touches `key`;
    // -1 if there is none. Taken entries at the front of the stretch are
    // passed over for good.
    int FirstLeftAt(std::uint64_t key)
    {
        Stretch* found = StretchFor(key, false);
        if (found == nullptr) return -1;
        Stretch& stretch = *found;
        while (stretch.Begin < stretch.End && Entries[Touching[stretch.Begin]].Taken) ++stretch.Begin;
        for (std::size_t k = stretch.Begin; k < stretch.End; ++k) {
            if (!Entries[Touching[k]].Taken) return static_cast<int>(Touching[k]);
        }
        return -1;
    }

    CList<Edge*>& From;
    SameVertex Same;
    KeyOf KeyOfVertex;
    bool Indexed;
    std::vector<Entry> Entries;          // the non-null entries in list order
    std::size_t FirstLeft = 0;           // no entry before it is left
    std::vector<std::size_t> Touching;   // entry ordinals, grouped by place
    bool Dense = false;
    std::vector<Stretch> DenseStretches;
    std::unordered_map<std::uint64_t, Stretch> Stretches;
};

// Vertex indices meet when they are equal.
inline std::optional<std::uint64_t> IndexKey(int vertex) { return static_cast<std::uint64_t>(static_cast<std::uint32_t>(vertex)); }

// Places meet when x and y are exactly equal as floats: 0 and -0 meet, and
// not-a-number meets nothing.
inline std::optional<std::uint64_t> PlaceKey(float x, float y)
{
    if (x != x || y != y) return std::nullopt;
    const auto bits = [](float v) {
        if (v == 0.0f) v = 0.0f;
        std::uint32_t b = 0;
        std::memcpy(&b, &v, sizeof b);
        return static_cast<std::uint64_t>(b);
    };
    return bits(x) << 32 | bits(y);
}

} // namespace vek::detail
