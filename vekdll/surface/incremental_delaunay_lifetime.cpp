// Life of the adaptive triangulation: construction, the working and the
// finalized state, the lists' hand-over and the deep copy.

#include <cstring>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/surface/incremental_delaunay.h"

ZrCIncrementalDelaunay2D::ZrCIncrementalDelaunay2D()
{
    AllocatePointBlock();
}

ZrCIncrementalDelaunay2D::ZrCIncrementalDelaunay2D(int numVertices) : Base(numVertices)
{
    AllocatePointBlock();
}

// The edge records of EdgeList and the other edge lists stay with whoever
// filled them and are freed by ClearEdgeList; only the two lists of a
// combination are emptied here.
ZrCIncrementalDelaunay2D::~ZrCIncrementalDelaunay2D()
{
    ReleaseRetiredTriangles();
    ClearFinalTriangleList();
    ClearTriangleList();
    AffectedTriangleList.RemoveAll();
    ClearEdgeList(&CombinedEdgeListFirst);
    ClearEdgeList(&CombinedEdgeListSecond);
    SafeAlignedFree(MinPoint);
    ClearTriangleCenters();
    ClearTriangleNormals();
}

void ZrCIncrementalDelaunay2D::AllocatePointBlock()
{
    MinPoint = static_cast<SSEPoint*>(SafeAlignedAlloc(3 * sizeof(SSEPoint), 16));
    std::memset(static_cast<void*>(MinPoint), 0, 3 * sizeof(SSEPoint));
    MaxPoint = MinPoint + 1;
    CenterPoint = MinPoint + 2;
}

// For an object whose bytes were copied raw: forget the arrays of the
// original without freeing them.
void ZrCIncrementalDelaunay2D::InitializeObject()
{
    (void)WorkingIndex.release(); // the original's, like the arrays
    Finalized = false;
    TriangleCenters = nullptr;
    TriangleNormals = nullptr;
}

bool ZrCIncrementalDelaunay2D::LeaveFinalizedState()
{
    if (!Finalized) return false;
    CopyFinalTriangleListToTriangleList();
    return true;
}

void ZrCIncrementalDelaunay2D::ReturnToFinalizedState(bool wasFinalized)
{
    if (wasFinalized) FinalizeTriangleList();
}

// Whatever FinalList still holds is freed; the working triangles move over
// in their order.
void ZrCIncrementalDelaunay2D::FinalizeTriangleList()
{
    // The search index serves the working list only; it is rebuilt when the
    // triangles come back, so its memory goes now, before the lists move.
    WorkingIndex.reset();
    ReleaseRetiredTriangles();
    ClearFinalTriangleList();
    CopyTriangleListInList(&TriangleList, &FinalList);
    TriangleList.RemoveAll();
    Finalized = true;
}

void ZrCIncrementalDelaunay2D::CopyFinalTriangleListToTriangleList()
{
    CopyTriangleListInList(&FinalList, &TriangleList);
    FinalList.RemoveAll();
    Finalized = false;
}

void ZrCIncrementalDelaunay2D::ClearFinalTriangleList()
{
    DeleteAllTriangles(FinalList);
}

// Ends an insertion: the triangles it marked are freed, the others join the
// working list, and the affected list is left empty.
void ZrCIncrementalDelaunay2D::AddNewTrianglesToList()
{
    while (!AffectedTriangleList.IsEmpty()) {
        t_hdelaunaytriangle* triangle = AffectedTriangleList.RemoveHead();
        if (triangle == nullptr) continue;
        if (triangle->Ignore)
            RetireTriangle(triangle);
        else
            AppendToWorkingList(triangle);
    }
}

// Frees the marked triangles of the affected list. Their neighbours are not
// touched: an insertion has already pointed them at the new triangles.
void ZrCIncrementalDelaunay2D::KillIgnoredTriangles()
{
    KillIgnoredIn(AffectedTriangleList, false, &Retired);
}

// A debugging walk; it leaves the object finalized.
void ZrCIncrementalDelaunay2D::CheckConsistency()
{
    LeaveFinalizedState();
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) CheckTriangle(TriangleList.GetNext(pos));
    FinalizeTriangleList();
}

// Copies the vertices and the finalized triangles of `source`, and links the
// copies afresh by their vertices: each triangle is compared with the others
// in list order until its three slots are filled. Quadratic, which is
// accepted for a copy. The copies point at no normal or centre, since those
// arrays belong to `source`.
void ZrCIncrementalDelaunay2D::DeepCopyTriangulation(const ZrCIncrementalDelaunay2D& source, bool finalize)
{
    if (&source == this) return;
    ReleaseRetiredTriangles();
    ClearFinalTriangleList();
    ClearTriangleList();
    ClearAffectedTriangleList();
    Finalized = false;
    LinksMayBeStale = false;
    ZrCSSEVertexContainer::operator=(source);
    for (POSITION pos = source.FinalList.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* original = source.FinalList.GetNext(pos);
        if (original == nullptr) continue;
        t_hdelaunaytriangle* copy = InitNewTriangle();
        CopyTriangle(original, copy);
        copy->Neighbour[0] = copy->Neighbour[1] = copy->Neighbour[2] = nullptr;
        copy->Normal = nullptr;
        copy->Center = nullptr;
        TriangleList.AddTail(copy);
    }
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        t_hdelaunaytriangle* triangle = TriangleList.GetNext(pos);
        for (POSITION other = TriangleList.GetHeadPosition(); other != nullptr;) {
            if (FindNullNeighbour(triangle) == eSideNone) break;
            t_hdelaunaytriangle* candidate = TriangleList.GetNext(other);
            if (candidate != triangle) FindNeighbours(triangle, candidate);
        }
    }
    if (finalize) FinalizeTriangleList();
}

// Edges of this class keep an odd swap: the end vertex trades places with
// the side number, and the two marks trade places.
void ZrCIncrementalDelaunay2D::FlipEdge(t_hdelaunayedge* edge)
{
    if (edge == nullptr) return;
    const int end = edge->Vertex[1];
    edge->Vertex[1] = edge->Side;
    edge->Side = static_cast<ESharedSide>(end);
    std::swap(edge->Mark1, edge->Mark2);
}
