// Linear look-ups in the vertex store. They run on borders and corners
// only, so a scan is cheap enough and keeps "first match wins" obvious.

#include <algorithm>

#include "vekdll/surface/vertex_container.h"

namespace {

constexpr float kNoMinimum = 999999.9f;
constexpr float kNoMaximum = -999999.9f;

} // namespace

int ZrCSSEVertexContainer::IsVertexExist(const SSEPoint& point, float tolerance) const
{
    if (tolerance == 0.0f) return IndexAtXY(point);
    const float limit = tolerance * tolerance;
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
