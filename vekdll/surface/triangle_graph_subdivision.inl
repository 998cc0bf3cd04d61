// Dividing triangles at the mid-points of their sides. A side is split for
// both triangles that share it, at one stored mid-point, so that the
// surface stays closed: a triangle with one split side becomes two, with
// two three, with three four.

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/raster_cells.h"
#include "vekdll/surface/side_key.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek {

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DevideTrianglesFromList(CList<TriangleListType*>* pieces, int limit, CSSEMatrix* field,
                                                     TriangleListType* list, int rounds)
{
    DivideListedTriangles(pieces, limit, field, list, rounds, nullptr);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DivideListedTriangles(CList<TriangleListType*>* pieces, int limit, CSSEMatrix* field,
                                                   TriangleListType* list, int rounds, std::vector<int>* freeSlots)
{
    if (list == nullptr) return;
    const bool wasFinalized = Self().LeaveFinalizedState();
    for (int round = 0; round < rounds; ++round) {
        if (!DivideOnce(pieces, limit, field, *list, freeSlots)) break;
    }
    Self().ReturnToFinalizedState(wasFinalized);
}

// A new vertex at p: the last of `freeSlots` (vertices that no triangle
// uses any more) takes its place where there is one, else it is appended.
template <class D, class T, class E>
int TriangleGraph<D, T, E>::StoreVertexAt(const SSEPoint& p, std::vector<int>* freeSlots)
{
    if (freeSlots != nullptr && !freeSlots->empty()) {
        const int slot = freeSlots->back();
        freeSlots->pop_back();
        *GetVertexPtr(slot) = p;
        return slot;
    }
    MakeRoomIfFull();
    AppendVertex(p);
    return NumVertices - 1;
}

// The pieces of `triangle` with the mid-points `mid` of its sides (-1 for
// a side that stays whole), each a copy of the record with new corners and
// no neighbours yet, in the triangle's winding.
template <class D, class T, class E>
std::vector<T*> TriangleGraph<D, T, E>::PiecesAtMidPoints(const T* triangle, const int mid[3]) const
{
    std::vector<T*> parts;
    const auto piece = [&](int a, int b, int c) {
        T* part = InitNewTriangle();
        CopyTriangle(triangle, part);
        part->Vertex[0] = a;
        part->Vertex[1] = b;
        part->Vertex[2] = c;
        part->Neighbour[0] = part->Neighbour[1] = part->Neighbour[2] = nullptr;
        parts.push_back(part);
    };
    const int* v = triangle->Vertex;
    const int split = (mid[0] >= 0) + (mid[1] >= 0) + (mid[2] >= 0);
    if (split == 3) {
        piece(v[0], mid[0], mid[2]);
        piece(mid[0], v[1], mid[1]);
        piece(mid[2], mid[1], v[2]);
        piece(mid[0], mid[1], mid[2]);
    } else if (split == 1) {
        const int s = mid[0] >= 0 ? 0 : (mid[1] >= 0 ? 1 : 2);
        piece(v[s], mid[s], v[(s + 2) % 3]);
        piece(mid[s], v[(s + 1) % 3], v[(s + 2) % 3]);
    } else if (split == 2) {
        // Side a-b stays whole; c is the corner between the two split sides.
        const int whole = mid[0] < 0 ? 0 : (mid[1] < 0 ? 1 : 2);
        const int a = v[whole];
        const int b = v[(whole + 1) % 3];
        const int c = v[(whole + 2) % 3];
        const int onBC = mid[(whole + 1) % 3];
        const int onCA = mid[(whole + 2) % 3];
        piece(onBC, c, onCA);
        // The rest is a quadrilateral a, b, onBC, onCA, cut along its
        // shorter diagonal.
        const auto length2 = [this](int p, int q) {
            const float dx = Vertices[p].x - Vertices[q].x;
            const float dy = Vertices[p].y - Vertices[q].y;
            return dx * dx + dy * dy;
        };
        if (length2(a, onBC) <= length2(b, onCA)) {
            piece(a, b, onBC);
            piece(a, onBC, onCA);
        } else {
            piece(a, b, onCA);
            piece(b, onBC, onCA);
        }
    }
    return parts;
}

// Takes `gone` out of the working list and frees them, each unlinked from
// its neighbours before the first is freed.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::FreeFromWorkingList(const std::unordered_set<T*>& gone)
{
    for (T* triangle : gone) UnlinkFromNeighbours(triangle);
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        if (gone.count(TriangleList.GetNext(pos)) != 0) TriangleList.RemoveAt(current);
    }
    for (T* triangle : gone) DeleteTriangle(triangle);
}

template <class D, class T, class E>
bool TriangleGraph<D, T, E>::DivideOnce(CList<TriangleListType*>* pieces, int limit, CSSEMatrix* field,
                                        TriangleListType& list, std::vector<int>* freeSlots)
{
    std::unordered_set<const T*> working;
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) working.insert(TriangleList.GetNext(pos));
    const auto usable = [&working](const T* t) {
        return t != nullptr && working.count(t) != 0 && !t->Ignore && t->Vertex[0] != t->Vertex[1] &&
               t->Vertex[1] != t->Vertex[2] && t->Vertex[0] != t->Vertex[2];
    };
    std::vector<T*> listed;
    std::unordered_set<T*> isListed;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        T* triangle = list.GetNext(pos);
        if (usable(triangle) && isListed.insert(triangle).second) listed.push_back(triangle);
    }

    // The sides to split, in the order they are met; a side whose
    // neighbour cannot be split with it stays whole.
    const float limit2 = static_cast<float>(limit) * static_cast<float>(limit);
    std::unordered_map<std::uint64_t, int> midOf;
    std::vector<std::pair<int, int>> sides;
    for (const T* triangle : listed) {
        for (int side = 0; side < 3; ++side) {
            const int a = triangle->Vertex[side];
            const int b = triangle->Vertex[(side + 1) % 3];
            const float dx = Vertices[a].x - Vertices[b].x;
            const float dy = Vertices[a].y - Vertices[b].y;
            if (limit > 0 && !(dx * dx + dy * dy > limit2)) continue;
            const T* across = triangle->Neighbour[side];
            if (across != nullptr && (!usable(across) || FindCommonSide(side, triangle, across) == eSideNone)) continue;
            if (midOf.emplace(detail::SideKey(a, b), -1).second) sides.emplace_back(a, b);
        }
    }
    if (sides.empty()) return false;

    // Each triangle with a split side changes, the neighbours across such
    // sides included.
    std::vector<T*> changing;
    std::unordered_set<T*> isChanging;
    const auto sideIsSplit = [&midOf](const T* t, int side) {
        return midOf.count(detail::SideKey(t->Vertex[side], t->Vertex[(side + 1) % 3])) != 0;
    };
    for (T* triangle : listed) {
        for (int side = 0; side < 3; ++side) {
            if (!sideIsSplit(triangle, side)) continue;
            for (T* t : {triangle, triangle->Neighbour[side]}) {
                if (t != nullptr && isChanging.insert(t).second) changing.push_back(t);
            }
        }
    }

    const int fromStore = static_cast<int>(sides.size()) - (freeSlots ? static_cast<int>(freeSlots->size()) : 0);
    if (fromStore > 0 && NumVertices + fromStore > MaxNumVertices) ReallocSize(NumVertices + fromStore);
    for (const auto& [a, b] : sides) {
        SSEPoint mid;
        mid.sse = _mm_mul_ps(_mm_add_ps(Vertices[a].sse, Vertices[b].sse), _mm_set1_ps(0.5f));
        if (detail::Readable(field)) {
            const float value = detail::ValueAtCell(*field, mid.x, mid.y);
            if (value != 0.0f) mid.z = value;
        }
        midOf[detail::SideKey(a, b)] = StoreVertexAt(mid, freeSlots);
    }

    // The pieces of every changing triangle, linked among themselves by
    // their sides, and with the unchanged neighbours across whole sides.
    std::vector<std::vector<T*>> piecesOf;
    std::unordered_map<std::uint64_t, std::pair<T*, int>> unmatched;
    for (const T* triangle : changing) {
        int mid[3];
        for (int side = 0; side < 3; ++side) {
            const auto found = midOf.find(detail::SideKey(triangle->Vertex[side], triangle->Vertex[(side + 1) % 3]));
            mid[side] = found == midOf.end() ? -1 : found->second;
        }
        piecesOf.push_back(PiecesAtMidPoints(triangle, mid));
        for (T* part : piecesOf.back()) {
            for (int side = 0; side < 3; ++side) {
                const std::uint64_t key = detail::SideKey(part->Vertex[side], part->Vertex[(side + 1) % 3]);
                const auto other = unmatched.find(key);
                if (other == unmatched.end()) {
                    unmatched.emplace(key, std::pair{part, side});
                    continue;
                }
                part->Neighbour[side] = other->second.first;
                other->second.first->Neighbour[other->second.second] = part;
                unmatched.erase(other);
            }
        }
    }
    for (const T* triangle : changing) {
        for (int side = 0; side < 3; ++side) {
            T* outer = triangle->Neighbour[side];
            if (outer == nullptr || isChanging.count(outer) != 0) continue;
            const auto part = unmatched.find(detail::SideKey(triangle->Vertex[side], triangle->Vertex[(side + 1) % 3]));
            const ESharedSide facing = FindCommonSide(side, triangle, outer);
            if (part == unmatched.end() || facing == eSideNone) continue;
            part->second.first->Neighbour[part->second.second] = outer;
            outer->Neighbour[facing] = part->second.first;
            unmatched.erase(part);
        }
    }

    // The pieces take the place of their triangles in `list` and in the
    // working list.
    std::unordered_map<T*, const std::vector<T*>*> replacement;
    for (std::size_t k = 0; k < changing.size(); ++k) {
        replacement.emplace(changing[k], &piecesOf[k]);
        for (T* part : piecesOf[k]) {
            RefreshCircle(part);
            TriangleList.AddTail(part);
        }
    }
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        T* triangle = list.GetNext(pos);
        const auto found = replacement.find(triangle);
        if (found == replacement.end()) continue;
        if (found->second != nullptr) {
            for (T* part : *found->second) list.InsertBefore(current, part);
            if (pieces != nullptr) {
                auto* own = new TriangleListType(10);
                for (T* part : *found->second) own->AddTail(part);
                pieces->AddTail(own);
            }
            found->second = nullptr; // a second entry of the same triangle only goes
        }
        list.RemoveAt(current);
    }
    FreeFromWorkingList(isChanging);
    return true;
}

} // namespace vek
