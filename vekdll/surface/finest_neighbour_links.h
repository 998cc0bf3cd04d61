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

// The candidates' sides, sorted by key and then by the candidate's place.
class SideTable {
public:
    template <class T>
    explicit SideTable(const std::vector<T*>& ws)
    {
        entries_.reserve(ws.size() * 3);
        for (std::size_t i = 0; i < ws.size(); ++i) {
            for (int side = 0; side < 3; ++side)
                entries_.emplace_back(SideKey(ws[i]->Vertex[side], ws[i]->Vertex[(side + 1) % 3]), i);
        }
        std::sort(entries_.begin(), entries_.end());
    }

    // The places of the candidates that carry a side of t, rising, each once.
    template <class T>
    void CandidatesOf(const T* t, std::vector<std::size_t>& places) const
    {
        places.clear();
        for (int side = 0; side < 3; ++side) {
            const std::uint64_t key = SideKey(t->Vertex[side], t->Vertex[(side + 1) % 3]);
            auto it = std::lower_bound(entries_.begin(), entries_.end(), std::make_pair(key, std::size_t{0}));
            for (; it != entries_.end() && it->first == key; ++it) places.push_back(it->second);
        }
        std::sort(places.begin(), places.end());
        places.erase(std::unique(places.begin(), places.end()), places.end());
    }

private:
    std::vector<std::pair<std::uint64_t, std::size_t>> entries_;
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
