// Passes that set or clear the flags of the adaptive triangles (border,
// outside, sub-triangulation edge, search), and that take out the border,
// the outside and the selected triangles.

#include <cstring>
#include <new>

#include "vekdll/surface/incremental_delaunay.h"

namespace {

bool HasNullNeighbour(const t_hdelaunaytriangle* triangle)
{
    return triangle->Neighbour[0] == nullptr || triangle->Neighbour[1] == nullptr ||
           triangle->Neighbour[2] == nullptr;
}

// Calls `change` on every triangle of `list`.
template <class Change>
void ForEachTriangle(CList<t_hdelaunaytriangle*>& list, Change&& change)
{
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        if (t_hdelaunaytriangle* triangle = list.GetNext(pos)) change(*triangle);
    }
}

} // namespace

void ZrCIncrementalDelaunay2D::ResetBorderTriangles()
{
    ForEachTriangle(PresentList(), [](t_hdelaunaytriangle& t) { t.Border = false; });
}

void ZrCIncrementalDelaunay2D::ResetIgnoreBorderTriangles()
{
    ForEachTriangle(PresentList(), [](t_hdelaunaytriangle& t) { t.IgnoreSearch = false; });
}

// Hides exactly the border triangles from search.
void ZrCIncrementalDelaunay2D::IgnoreBorderTriangles()
{
    ForEachTriangle(PresentList(), [](t_hdelaunaytriangle& t) { t.IgnoreSearch = t.Border; });
}

void ZrCIncrementalDelaunay2D::SetIgnoreOutsideTriangule()
{
    ForEachTriangle(PresentList(), [](t_hdelaunaytriangle& t) {
        if (t.Outside) t.IgnoreSearch = true;
    });
}

void ZrCIncrementalDelaunay2D::ResetIgnoreOutsideTriangule()
{
    ForEachTriangle(PresentList(), [](t_hdelaunaytriangle& t) {
        if (t.Outside) t.IgnoreSearch = false;
    });
}

void ZrCIncrementalDelaunay2D::ResetIgnoreSubEdgeTriangule()
{
    ForEachTriangle(PresentList(), [](t_hdelaunaytriangle& t) {
        if (t.SubEdge && !t.Border && !t.Outside) t.IgnoreSearch = false;
    });
}

// A triangle with all three neighbours is inside its sub-triangulation and
// loses SubEdge; an inner triangle with an open side lies on the edge of
// it and gets SubEdge. Triangles on the edge are hidden from search.
void ZrCIncrementalDelaunay2D::CheckAndIgnoreSubTriangulation()
{
    ForEachTriangle(PresentList(), [](t_hdelaunaytriangle& t) {
        const bool open = HasNullNeighbour(&t);
        if (!open) t.SubEdge = false;
        if (!t.Outside && !t.Border && open) t.SubEdge = true;
        if (t.SubEdge) t.IgnoreSearch = true;
    });
}

// A triangle that is not outside itself but has an open side, or a
// neighbour outside, is a border triangle.
void ZrCIncrementalDelaunay2D::IsolateTrianglesWithoutNeighbour()
{
    CList<t_hdelaunaytriangle*>& present = PresentList();
    ForEachTriangle(present, [](t_hdelaunaytriangle& t) { t.Border = false; });
    ForEachTriangle(present, [](t_hdelaunaytriangle& t) {
        if (t.Outside) return;
        for (const t_hdelaunaytriangle* neighbour : t.Neighbour) {
            if (neighbour == nullptr || neighbour->Outside) t.Border = true;
        }
    });
}

// One entry per vertex: 0 for a vertex on an open side of a finalized
// triangle, otherwise every byte 1 (16843009). The caller frees the array
// with delete[]. One pass over the triangles gives the whole answer.
int* ZrCIncrementalDelaunay2D::IsolateVerticesWithoutNeighbour()
{
    const int count = NumVertices > 0 ? NumVertices : 0;
    int* marks = new (std::nothrow) int[static_cast<std::size_t>(count)];
    if (marks == nullptr) AfxThrowMemoryException();
    std::memset(marks, 1, sizeof(int) * static_cast<std::size_t>(count));
    ForEachTriangle(FinalList, [&](t_hdelaunaytriangle& t) {
        for (int side = 0; side < 3; ++side) {
            if (t.Neighbour[side] != nullptr) continue;
            marks[t.Vertex[side]] = 0;
            marks[t.Vertex[(side + 1) % 3]] = 0;
        }
    });
    return marks;
}

void ZrCIncrementalDelaunay2D::IsolateEdgesWithoutNeighbour()
{
    ClearEdgeList();
    CollectOpenEdges(PresentList(), EdgeList, false);
}

void ZrCIncrementalDelaunay2D::IsolateEdgesWithoutNeighbourAndOutsideTriangles()
{
    ClearEdgeList();
    CollectOpenEdges(PresentList(), EdgeList, true);
}

// Frees the triangles marked Outside. Every link between a freed triangle
// and a survivor is cleared on both sides, so that the survivors border on
// nothing rather than on freed records.
void ZrCIncrementalDelaunay2D::ClearOutsideTriangules()
{
    const bool wasFinalized = LeaveFinalizedState();
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        t_hdelaunaytriangle* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr || !triangle->Outside) continue;
        UnlinkFromNeighbours(triangle);
        DeleteTriangle(triangle);
        TriangleList.RemoveAt(current);
    }
    ReturnToFinalizedState(wasFinalized);
}

// Takes the triangles marked Signed out of the working list without freeing
// them (their owner is the list that selected them) and leaves the object
// finalized, whatever its state before.
void ZrCIncrementalDelaunay2D::RemoveSignedTriangles()
{
    LeaveFinalizedState();
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        t_hdelaunaytriangle* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr || !triangle->Signed) continue;
        triangle->Signed = false;
        TriangleList.RemoveAt(current);
    }
    FinalizeTriangleList();
}
