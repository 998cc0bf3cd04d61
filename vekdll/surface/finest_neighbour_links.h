#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "vekdll/surface/side_key.h"

// Linking a set of triangles u with a set of candidates w by their shared
// sides: each u is held against the candidates in their order, and linked
// with each, until its three slots are filled. The plain way scans every
// candidate and is quadratic; the keyed way looks up only the candidates
// that carry a side of u, in the same order, and so makes the same links,
// since holding u against a candidate that shares no side changes nothing.

namespace vek::detail {

// Which triangle goes first into FindNeighbours: the candidate
// (FindNeighbours(w, u)) or the triangle being linked (FindNeighbours(u, w)).
enum class LinkOrder {
    CandidateFirst,
    CandidateSecond,
};

template <class T>
bool HasThreeNeighbours(const T* t)
{
    return t->Neighbour[0] != nullptr && t->Neighbour[1] != nullptr && t->Neighbour[2] != nullptr;
}

template <class T, class Link>
void LinkOne(T* u, T* w, LinkOrder order, const Link& link)
{
    if (order == LinkOrder::CandidateFirst)
        link(w, u);
    else
        link(u, w);
}

// The plain way: the reference.
template <class T, class Link>
void LinkByScan(const std::vector<T*>& us, const std::vector<T*>& ws, LinkOrder order, const Link& link)
{
    for (T* u : us) {
        for (T* w : ws) {
            if (HasThreeNeighbours(u)) break;
            if (w != u) LinkOne(u, w, order, link);
        }
    }
}

// The candidates' sides in an open-addressed table of their keys, built in
// one pass: a row of a raster has thousands of triangles, and the table is
// made once per pair of rows.
class SideTable {
public:
    template <class T>
    explicit SideTable(const std::vector<T*>& ws)
    {
        std::size_t size = 16;
        while (size < ws.size() * 6) size *= 2;
        mask_ = size - 1;
        slots_.assign(size, Slot{kEmpty, 0});
        for (std::size_t i = 0; i < ws.size(); ++i) {
            for (int side = 0; side < 3; ++side) {
                std::size_t at = Hash(SideKey(ws[i]->Vertex[side], ws[i]->Vertex[(side + 1) % 3]));
                while (slots_[at].key != kEmpty) at = (at + 1) & mask_;
                slots_[at] = Slot{SideKey(ws[i]->Vertex[side], ws[i]->Vertex[(side + 1) % 3]), i};
            }
        }
    }

    // The places of the candidates that carry a side of t, rising, each once.
    template <class T>
    void CandidatesOf(const T* t, std::vector<std::size_t>& places) const
    {
        places.clear();
        for (int side = 0; side < 3; ++side) {
            const std::uint64_t key = SideKey(t->Vertex[side], t->Vertex[(side + 1) % 3]);
            for (std::size_t at = Hash(key); slots_[at].key != kEmpty; at = (at + 1) & mask_) {
                if (slots_[at].key == key) places.push_back(slots_[at].place);
            }
        }
        std::sort(places.begin(), places.end());
        places.erase(std::unique(places.begin(), places.end()), places.end());
    }

private:
    // No side has this key: vertex indices are below 2^31.
    static constexpr std::uint64_t kEmpty = ~std::uint64_t{0};
    struct Slot {
        std::uint64_t key;
        std::size_t place;
    };
    std::size_t Hash(std::uint64_t key) const
    {
        return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15ULL) >> 32) & mask_;
    }
    std::vector<Slot> slots_;
    std::size_t mask_ = 0;
};

template <class T, class Link>
void LinkBySides(const std::vector<T*>& us, const std::vector<T*>& ws, LinkOrder order, const Link& link)
{
    const SideTable table(ws);
    std::vector<std::size_t> places;
    for (T* u : us) {
        if (HasThreeNeighbours(u)) continue;
        table.CandidatesOf(u, places);
        for (const std::size_t place : places) {
            if (HasThreeNeighbours(u)) break;
            if (ws[place] != u) LinkOne(u, ws[place], order, link);
        }
    }
}

} // namespace vek::detail
