// Life and capacity of the vertex store.

#include "vekdll/surface/vertex_container.h"

#include <algorithm>
#include <cstring>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/surface/vertex_index.h"

namespace {

SSEPoint* AllocateVertices(int n)
{
    if (n < 1) return nullptr;
    return static_cast<SSEPoint*>(SafeAlignedAlloc(static_cast<std::uint64_t>(n) * sizeof(SSEPoint), 16));
}

} // namespace

ZrCSSEVertexContainer::ZrCSSEVertexContainer() = default;

// The capacity is recorded whatever its sign; a capacity below 1 simply
// holds nothing, since AppendVertex never stores beyond it.
ZrCSSEVertexContainer::ZrCSSEVertexContainer(int n) : Vertices(AllocateVertices(n)), MaxNumVertices(n) {}

ZrCSSEVertexContainer::ZrCSSEVertexContainer(const ZrCSSEVertexContainer& other)
{
    *this = other;
}

ZrCSSEVertexContainer::~ZrCSSEVertexContainer()
{
    FreeVertices();
}

ZrCSSEVertexContainer& ZrCSSEVertexContainer::operator=(const ZrCSSEVertexContainer& other)
{
    if (this == &other) return *this;
    FreeVertices();
    Vertices = AllocateVertices(other.MaxNumVertices);
    MaxNumVertices = other.MaxNumVertices;
    if (other.NumVertices > 0) std::memcpy(Vertices, other.Vertices, sizeof(SSEPoint) * other.NumVertices);
    NumVertices = other.NumVertices;
    Mode = other.Mode;
    return *this;
}

void ZrCSSEVertexContainer::FreeVertices()
{
    NoteVerticesChanged();
    NumVertices = 0;
    MaxNumVertices = 0;
    SafeAlignedFree(Vertices);
    Vertices = nullptr;
}

void ZrCSSEVertexContainer::CreateVertexArray(int n)
{
    FreeVertices();
    Vertices = AllocateVertices(n);
    MaxNumVertices = n;
}

// Grows (or shrinks) to exactly n entries, keeping the vertices in use. There
// is no doubling: callers ask for what they need. A request below the number
// in use keeps only the first n vertices rather than leave counts that point
// past the array.
void ZrCSSEVertexContainer::ReallocSize(int n)
{
    if (n < 1) {
        FreeVertices();
        return;
    }
    SSEPoint* grown = AllocateVertices(n);
    const int kept = std::min(NumVertices, n);
    if (kept > 0) std::memcpy(grown, Vertices, sizeof(SSEPoint) * kept);
    SafeAlignedFree(Vertices);
    Vertices = grown;
    NumVertices = kept;
    MaxNumVertices = n;
}

// For an object whose bytes were copied raw: forget the array without
// freeing it, since it belongs to the original.
void ZrCSSEVertexContainer::InitializeObject()
{
    (void)Lookup.release(); // the original's, like the array
    NoteVerticesChanged();
    Vertices = nullptr;
    NumVertices = 0;
    MaxNumVertices = 0;
}

// Never grows: on a full store the point is lost, and a caller that must
// keep it calls ReallocSize first.
void ZrCSSEVertexContainer::AppendVertex(const SSEPoint& point)
{
    if (NumVertices >= MaxNumVertices) return;
    AppendedFrom = std::min(AppendedFrom, NumVertices);
    Vertices[NumVertices] = point;
    ++NumVertices;
}
