// Walks around a vertex from triangle to triangle through the neighbour
// slots: the fan walk that several operations share.

#include <climits>

#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

enum class FanEnd { Border, Closed, Stopped, Exhausted };

// The walk keeps the triangle it came from, so that it never steps back.
// Each step scans the current triangle's slots 0, 1, 2 for the first
// neighbour that is not null, is not the previous triangle and has `vertex`
// as a corner. A walk ends at a border (no such neighbour), when it comes
// back to the start triangle (closed), when `visit` asks it to stop, or
// after `maxSteps` steps.
template <class T>
class FanWalk {
public:
    FanWalk(int vertex, T* start) : vertex_(vertex), start_(start), previous_(start) {}

    // Walks one phase from `first`, the start triangle's neighbour. `visit`
    // sees `first` with stepped == false and every triangle stepped onto
    // with stepped == true, and returns false to stop the walk. The previous
    // triangle carries over from an earlier phase on purpose: a second phase
    // that still remembers the first one's last triangle may step straight
    // back onto the start triangle and end there.
    template <class Visit>
    FanEnd Phase(T* first, int maxSteps, Visit&& visit)
    {
        if (first == nullptr) return FanEnd::Border;
        T* current = first;
        if (!visit(current, false)) return FanEnd::Stopped;
        for (int steps = 0;; ++steps) {
            if (steps >= maxSteps) return FanEnd::Exhausted;
            T* next = NextAround(current);
            if (next == nullptr) return FanEnd::Border;
            if (next == start_) return FanEnd::Closed;
            previous_ = current;
            current = next;
            if (!visit(current, true)) return FanEnd::Stopped;
        }
    }

    // The side of the start triangle from which a second phase sets out after
    // the first, started across `side`, ended at a border: the other side of
    // the start triangle that has the vertex. -1 if there is none.
    int SecondPhaseSide(int side) const
    {
        const int* corner = start_->Vertex;
        switch (side) {
        case 0: return corner[0] == vertex_ ? 2 : (corner[1] == vertex_ ? 1 : -1);
        case 1: return corner[1] == vertex_ ? 0 : (corner[2] == vertex_ ? 2 : -1);
        case 2: return corner[2] == vertex_ ? 1 : (corner[0] == vertex_ ? 0 : -1);
        default: return -1;
        }
    }

private:
    T* NextAround(T* current) const
    {
        for (T* candidate : current->Neighbour) {
            if (candidate == nullptr || candidate == previous_) continue;
            const int* c = candidate->Vertex;
            if (c[0] == vertex_ || c[1] == vertex_ || c[2] == vertex_) return candidate;
        }
        return nullptr;
    }

    int vertex_;
    T* start_;
    T* previous_;
};

// The neighbour of `triangle` across `side`, or null for a side out of range.
template <class T>
T* NeighbourAcross(T* triangle, int side)
{
    return side >= 0 && side <= 2 ? triangle->Neighbour[side] : nullptr;
}

// The two-phase walk: if the walk across `side` ends at a border, it goes on
// from the start triangle's other side at the vertex.
template <class T, class Visit>
FanEnd TwoPhaseWalk(int vertex, T* start, int side, int maxSteps, Visit&& visit)
{
    FanWalk<T> walk(vertex, start);
    const FanEnd end = walk.Phase(NeighbourAcross(start, side), maxSteps, visit);
    if (end != FanEnd::Border) return end;
    const int otherSide = walk.SecondPhaseSide(side);
    if (otherSide < 0) return end;
    return walk.Phase(start->Neighbour[otherSide], maxSteps, visit);
}

} // namespace vek::detail

namespace vek {

// Replaces oldVertex by newVertex in every triangle the walk steps onto; the
// start triangle and its neighbour across `side` stay as they are.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::ResetVertexInTriangles(int oldVertex, int newVertex, T* triangle, int side)
{
    if (triangle == nullptr) return;
    detail::FanWalk<T> walk(oldVertex, triangle);
    walk.Phase(detail::NeighbourAcross(triangle, side), INT_MAX, [&](T* current, bool stepped) {
        if (stepped) ResetVertexWithVertex(oldVertex, newVertex, current);
        return true;
    });
}

// True if the fan around `vertex` is open (the walk reaches a border) or
// runs into a triangle marked Ignore; false if it closes.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::SearchAroundVertex(T* triangle, int vertex, int side)
{
    if (triangle == nullptr) return true;
    detail::FanWalk<T> walk(vertex, triangle);
    const detail::FanEnd end =
        walk.Phase(detail::NeighbourAcross(triangle, side), INT_MAX,
                   [](T* current, bool stepped) { return !(stepped && current->Ignore); });
    return end != detail::FanEnd::Closed;
}

// Appends the triangles around `vertex` that have no Visited yet, and marks
// them. The start triangle and its neighbour across `side` are the caller's
// own and are not appended; the triangle where a second phase sets out is
// appended, since the caller cannot know it.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindTrianglesWithCommonVertex(int vertex, T* triangle, int side, TriangleListType* list)
{
    if (triangle == nullptr || list == nullptr) return;
    T* first = detail::NeighbourAcross(triangle, side);
    detail::TwoPhaseWalk(vertex, triangle, side, INT_MAX, [&](T* current, bool) {
        if (current != first && !current->Visited) {
            current->Visited = true;
            list->AddTail(current);
        }
        return true;
    });
}

// True if a triangle of the fan around `vertex`, the first neighbour
// included, has `other` as a corner: then the edge vertex-other exists
// already. A phase gives up after 10000 steps, and the answer is then false.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::FindTrianglesWithCommonVertex(int vertex, T* triangle, int side, int other)
{
    if (triangle == nullptr) return false;
    constexpr int kMaxStepsPerPhase = 10000;
    bool found = false;
    detail::TwoPhaseWalk(vertex, triangle, side, kMaxStepsPerPhase, [&](T* current, bool) {
        found = IsVertexInTriangle(current, other);
        return !found;
    });
    return found;
}

// Whether the edge a-b already exists in the fan around a.
template <class D, class T, class E>
bool TriangleGraph<D, T, E>::CheckCommonEdge(T* triangle, int a, int b)
{
    if (triangle == nullptr) return false;
    for (int corner = 0; corner < 3; ++corner) {
        if (triangle->Vertex[corner] == a) return FindTrianglesWithCommonVertex(a, triangle, corner, b);
    }
    return false;
}

} // namespace vek
