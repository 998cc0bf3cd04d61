// Joining the sub-triangulations that worker threads built, one per slot,
// into this object.

#include <cstdint>
#include <cstring>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "vekdll/platform/c_event.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

constexpr int kSlots = 10;

// A place in space, compared bit for bit: equal positions are one vertex.
using PlaceKey = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>;

std::uint32_t Bits(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

PlaceKey KeyOf(const SSEPoint& p) { return {Bits(p.x), Bits(p.y), Bits(p.z)}; }

// An undirected side, smaller vertex first.
std::uint64_t SideKey(int a, int b)
{
    const auto lo = static_cast<std::uint32_t>(a < b ? a : b);
    const auto hi = static_cast<std::uint32_t>(a < b ? b : a);
    return (static_cast<std::uint64_t>(lo) << 32) | hi;
}

} // namespace

void ZrCIncrementalDelaunay2D::CombineSubDelaunayTriangles(ZrCIncrementalDelaunay2D** subTriangulations,
                                                           CEvent** finishedEvents)
{
    LeaveFinalizedState();
    ClearTriangleList();
    AffectedTriangleList.RemoveAll();
    CreateVertexArray(1000000);
    std::map<PlaceKey, int> vertexAt;
    // Open sides of the triangles taken so far, waiting for a partner from
    // another slot.
    std::unordered_map<std::uint64_t, t_hdelaunaytriangle*> openSides;
    for (int slot = 0; slot < kSlots; ++slot) {
        if (finishedEvents != nullptr && finishedEvents[slot] != nullptr) finishedEvents[slot]->Wait();
        if (subTriangulations == nullptr || subTriangulations[slot] == nullptr) continue;
        ZrCIncrementalDelaunay2D* sub = subTriangulations[slot];
        // Finalizing again would free what a finalized sub-triangulation holds.
        if (!sub->IsFinalized()) sub->FinalizeTriangleList();
        const int count = sub->GetNumVertices();
        std::vector<int> newIndex(static_cast<std::size_t>(count));
        if (NumVertices + count > MaxNumVertices) ReallocSize(NumVertices + count);
        for (int i = 0; i < count; ++i) {
            const SSEPoint p = sub->GetVertex(i);
            const auto [found, added] = vertexAt.try_emplace(KeyOf(p), NumVertices);
            if (added) AppendVertex(p);
            newIndex[static_cast<std::size_t>(i)] = found->second;
        }
        std::unordered_map<const t_hdelaunaytriangle*, t_hdelaunaytriangle*> copyOf;
        std::vector<t_hdelaunaytriangle*> copies;
        for (POSITION pos = sub->FinalList.GetHeadPosition(); pos != nullptr;) {
            const t_hdelaunaytriangle* original = sub->FinalList.GetNext(pos);
            if (original == nullptr) continue;
            t_hdelaunaytriangle* copy = InitNewTriangle();
            CopyTriangle(original, copy);
            for (int& corner : copy->Vertex) corner = newIndex[static_cast<std::size_t>(corner)];
            copy->Normal = nullptr;
            copy->Center = nullptr;
            copyOf[original] = copy;
            copies.push_back(copy);
        }
        for (t_hdelaunaytriangle* copy : copies) {
            for (t_hdelaunaytriangle*& neighbour : copy->Neighbour) {
                const auto found = copyOf.find(neighbour);
                neighbour = found == copyOf.end() ? nullptr : found->second;
            }
        }
        // A side left open in its slot meets the open side of an earlier
        // slot that carries the same two vertices: the cut between them.
        for (t_hdelaunaytriangle* copy : copies) {
            for (int side = 0; side < 3; ++side) {
                if (copy->Neighbour[side] != nullptr) continue;
                const std::uint64_t key = SideKey(copy->Vertex[side], copy->Vertex[(side + 1) % 3]);
                const auto match = openSides.find(key);
                if (match == openSides.end()) {
                    openSides.emplace(key, copy);
                    continue;
                }
                FindNeighbours(copy, match->second);
                openSides.erase(match);
            }
        }
        for (t_hdelaunaytriangle* copy : copies) {
            if (FindNullNeighbour(copy) == eSideNone) copy->SubEdge = false;
            CalcCircumCircle(copy);
            TriangleList.AddTail(copy);
        }
        delete sub;
        subTriangulations[slot] = nullptr;
    }
}
