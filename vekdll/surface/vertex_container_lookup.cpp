// Look-ups in the vertex store. Each answers what a walk in index order
// answers, the first vertex that passes the test; the walk itself is kept
// for the linear search mode and where the grid of vertices cannot narrow
// the question down.

#include <algorithm>

#include "vekdll/surface/vertex_container.h"
#include "vekdll/surface/vertex_index.h"

namespace {

constexpr float kNoMinimum = 999999.9f;
constexpr float kNoMaximum = -999999.9f;

} // namespace

vek::detail::VertexIndex* ZrCSSEVertexContainer::FollowedIndex() const
{
    if (Mode != vek::SearchMode::Indexed) {
        Lookup.reset();
        return nullptr;
    }
    constexpr int kWalksBeforeIndex = 8;
    if (!Lookup) {
        if (++WalkedLookups <= kWalksBeforeIndex) return nullptr;
        Lookup = std::make_unique<vek::detail::VertexIndex>();
    }
    Lookup->Follow(Vertices, NumVertices, AppendedFrom, VertexWrites);
    AppendedFrom = NumVertices;
    return Lookup.get();
}

int ZrCSSEVertexContainer::IsVertexExist(const SSEPoint& point, float tolerance) const
{
    if (tolerance == 0.0f) return IndexAtXY(point);
    const float limit = tolerance * tolerance;
    if (const vek::detail::VertexIndex* index = FollowedIndex()) {
        const int found = index->FirstWithin(Vertices, point.x, point.y, limit);
        if (found != vek::detail::VertexIndex::kUndecided) return found;
    }
    for (int i = 0; i < NumVertices; ++i) {
        const float dx = Vertices[i].x - point.x;
        const float dy = Vertices[i].y - point.y;
        if (limit >= dx * dx + dy * dy) return i;
    }
    return -1;
}

int ZrCSSEVertexContainer::PointIndex(const SSEPoint& point) const
{
    return IndexAtXY(point);
}

int ZrCSSEVertexContainer::IndexAtXY(const SSEPoint& corner) const
{
    if (const vek::detail::VertexIndex* index = FollowedIndex()) return index->FirstAtXY(Vertices, corner.x, corner.y);
    for (int i = 0; i < NumVertices; ++i) {
        if (Vertices[i].x == corner.x && Vertices[i].y == corner.y) return i;
    }
    return -1;
}

// The range is clipped to the vertices in use, so a bound beyond the store
// finds nothing there rather than reading past it.
int ZrCSSEVertexContainer::PointIndex3D(const SSEPoint& point, int first, int end) const
{
    first = std::max(first, 0);
    end = std::min(end, NumVertices);
    if (first >= end) return -1;
    if (const vek::detail::VertexIndex* index = FollowedIndex()) return index->FirstAtXYZ(Vertices, point, first, end);
    for (int i = first; i < end; ++i) {
        const SSEPoint& v = Vertices[i];
        if (v.x == point.x && v.y == point.y && v.z == point.z) return i;
    }
    return -1;
}

SSEPoint ZrCSSEVertexContainer::MinPoint() const
{
    SSEPoint result;
    result.sse = _mm_set1_ps(kNoMinimum);
    for (int i = 0; i < NumVertices; ++i) result.sse = _mm_min_ps(result.sse, Vertices[i].sse);
    return result;
}

SSEPoint ZrCSSEVertexContainer::MaxPoint() const
{
    SSEPoint result;
    result.sse = _mm_set1_ps(kNoMaximum);
    for (int i = 0; i < NumVertices; ++i) result.sse = _mm_max_ps(result.sse, Vertices[i].sse);
    return result;
}

// The vertex that sits exactly at the lower left corner of the bounding box,
// if any: Triangulate asks this to decide whether it must add that corner.
int ZrCSSEVertexContainer::MinPointIndex(SSEPoint& result) const
{
    result = MinPoint();
    return IndexAtXY(result);
}

int ZrCSSEVertexContainer::MaxPointIndex(SSEPoint& result) const
{
    result = MaxPoint();
    return IndexAtXY(result);
}
