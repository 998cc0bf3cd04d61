#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/surface/triangle_graph_types.h"
#include "vekdll/surface/vertex_container.h"
#include "vekdll/surface/working_list_index.h"

#include <memory>
#include <vector>

namespace vek {

// Records that carry a circumcircle, a normal pointer or the flags of the
// adaptive triangulation. The graph operations below look at these fields
// only where the record has them.
template <class T>
concept HasCircumCircle = requires(T t) { t.CircleRadius2; };
template <class T>
concept HasNormalPointer = requires(T t) { t.Normal; };
template <class T>
concept HasOutsideFlag = requires(T t) { t.Outside; };

// The triangle graph of a 2.5D triangulation: triangles in a CList, linked
// across their sides, naming their corners by index into the vertex store
// that this class derives from. Both triangulation classes derive from it,
// each with its own record type, so that every graph operation exists once.
//
// `Derived` supplies three hooks, which the triangulation without a
// finalized state need not declare:
//   bool LeaveFinalizedState()           moves the triangles back to the
//                                        working list; true if they were final
//   void ReturnToFinalizedState(bool)    undoes that when given true
//   CList<Triangle*>& PresentList()      the list that holds the triangles now
// and the constant `kAngleFlipSetsFlipState`.
//
// The member definitions live in triangle_graph_*.inl and are compiled into
// the library by one explicit instantiation per triangulation class.
template <class Derived, class Triangle, class Edge>
class VEKDLL_API TriangleGraph : public ZrCSSEVertexContainer {
public:
    using TriangleRecord = Triangle;
    using EdgeRecord = Edge;
    using TriangleListType = CList<Triangle*>;
    using EdgeListType = CList<Edge*>;

    // ---- records (triangle_graph_records.inl)
    // Records are zero-filled on allocation, and exhausted memory raises
    // CMemoryException rather than hand out null.
    static Triangle* InitNewTriangle();
    static Edge* InitNewEdge();
    static void DeleteTriangle(Triangle* triangle);
    static void DeleteEdge(Edge* edge);
    static void CopyTriangle(const Triangle* source, Triangle* destination);
    void AppendTriangle(Triangle* triangle) { TriangleList.AddTail(triangle); }
    TriangleListType& GetTriangleList() { return TriangleList; }
    int GetNumTrianglesInTriangleList() const { return static_cast<int>(TriangleList.GetCount()); }
    void ClearTriangleList();

    static void CopyTriangleListInList(TriangleListType* from, TriangleListType* to);
    static void CopyEdgeListInList(EdgeListType* from, EdgeListType* to);
    static void ClearEdgeList(EdgeListType* list);
    static void InitSortedListFromTriangles(TriangleListType* list);
    static void InvertVertexArray(int* array, int n);
    // Appends one edge record for each open side of each triangle of
    // `triangles`, in triangle order and then side order: a side is open if
    // it has no neighbour, or, with `outsideNeighbourIsOpen`, a neighbour
    // marked Outside.
    static void CollectOpenEdges(const TriangleListType& triangles, EdgeListType& edges,
                                 bool outsideNeighbourIsOpen);
    // Debugging hooks, kept in the interface; they do nothing.
    static void CheckTriangle(Triangle*) {}
    static void CheckTriangleList(TriangleListType*) {}
    static void DumpTriangle(Triangle*) {}

    // ---- neighbours, by vertex index only (triangle_graph_links.inl)
    static ESharedSide FindCommonSide(const Triangle* a, const Triangle* b);
    static ESharedSide FindCommonSide(int side, const Triangle* a, const Triangle* b);
    static bool EdgesEqual(int sideA, const Triangle* a, int sideB, const Triangle* b);
    static void FindNeighbours(Triangle* a, Triangle* b);
    static ESharedSide FindNullNeighbour(const Triangle* triangle);
    static void ReplaceMeInNeighbours(Triangle* triangle, int side, Triangle* other);
    static void ReplaceNeighbourInNeighbour(Triangle* triangle, int side, Triangle* other);
    static void ResetVertexWithVertex(int oldVertex, int newVertex, Triangle* triangle);
    static bool IsVertexInTriangle(const Triangle* triangle, int vertex);
    static bool CheckNeighbours(const Triangle* triangle);

    // ---- walks around a vertex (triangle_graph_fan_walk.inl)
    static void ResetVertexInTriangles(int oldVertex, int newVertex, Triangle* triangle, int side);
    static bool SearchAroundVertex(Triangle* triangle, int vertex, int side);
    static void FindTrianglesWithCommonVertex(int vertex, Triangle* triangle, int side, TriangleListType* list);
    static bool FindTrianglesWithCommonVertex(int vertex, Triangle* triangle, int side, int other);
    static bool CheckCommonEdge(Triangle* triangle, int a, int b);

    // ---- orientation and flips (triangle_graph_flips.inl)
    int GetOrientation(const Triangle* triangle) const;
    static void FlipTriangleOrientation(Triangle* triangle);
    static void FlipTriangleOrientationWithNeigbour(Triangle* triangle);
    void FlipAllTrianglesOrientation();
    void LegalizeEdges(Triangle* triangle, int side);
    void CheckEdgeFlip(TriangleListType* list);

    // ---- splits (triangle_graph_splits.inl)
    void SplitTriangleIntoThree(int vertex, Triangle* triangle, Triangle* t1, Triangle* t2, Triangle* t3);
    void SplitTriangleIntoTwo(int vertex, int side, Triangle* triangle, Triangle* t1, Triangle* t2);
    void BildNewTriangulesWithCenter(Triangle* triangle, int vertex, TriangleListType* list);
    void BuildNewTriangles(int vertex, Triangle* triangle, TriangleListType* list);

    // ---- the removal family and other passes (triangle_graph_removal.inl)
    void KillIgnoredTrianglesFromTriangleList(bool unlinkNeighbours);
    void KillIgnoredTrianglesFromTriangleList(TriangleListType* list);
    void KillIgnoredTrianglesAndCheckNeighbours(TriangleListType* list, bool unlinkNeighbours);
    void CheckAndKillIgnoredTrianglesFromTriangleList();
    void CheckAndKillIgnoredTrianglesFromTriangleList(TriangleListType* list);
    void CheckAndKillIgnoredTrianglesFromTriangleList(TriangleListType* list, TriangleListType* collected,
                                                      bool unlinkNeighbours);
    static void RemoveIgnoredTrianglesFromList(TriangleListType* list);
    void CopyIgnoredTrianglesToList(TriangleListType* list);
    void ResetIgnoreStateOfTriangles();
    void ResetFlipState();
    void DeleteTrianglesWithoutNeighbours();
    void DeleteAllTrianglesWithNULLNeighbour();
    void DeleteTrianglesWithTwoNULLNeighbours();
    void CheckDoubleNeighbours();

    // ---- whole-surface geometry (triangle_graph_geometry.inl)
    void MoveTriangulationX(float angle);
    void MoveTriangulationY(float angle);
    void CopyVertexArray(const ZrCSSEVertexContainer& source);

protected:
    TriangleGraph() = default;
    explicit TriangleGraph(int numVertices) : ZrCSSEVertexContainer(numVertices) {}
    ~TriangleGraph();
    TriangleGraph(const TriangleGraph&) = delete;
    TriangleGraph& operator=(const TriangleGraph&) = delete;

    // Hook defaults for a triangulation that has only its working list.
    bool LeaveFinalizedState() { return false; }
    void ReturnToFinalizedState(bool) {}
    TriangleListType& PresentList() { return TriangleList; }

    // Rewrites T and N across their shared side: T's side `side` and N's
    // side `sideOfN` carry the same two vertices, and afterwards carry the
    // other diagonal of the quadrilateral. Both records keep their place in
    // memory and their slot numbers for each other; the four outer
    // neighbours get their back pointers. Circles are not touched.
    void FlipSharedEdge(Triangle* t, int side, Triangle* n, int sideOfN);
    // The corner of `triangle` opposite `side`.
    static int OppositeCorner(const Triangle* triangle, int side) { return triangle->Vertex[(side + 2) % 3]; }
    // Clears every slot of the neighbours of `triangle` that points at it.
    void UnlinkFromNeighbours(Triangle* triangle);
    static void DeleteAllTriangles(TriangleListType& list);
    // Frees each triangle of `list` with Ignore, or hands it to `holdBack`
    // if given, and removes its node.
    void KillIgnoredIn(TriangleListType& list, bool unlinkNeighbours, std::vector<Triangle*>* holdBack = nullptr);
    // The lane-wise extremes of all corners of all triangles of `list`;
    // the sentinels 999999.9 and -999999.9 when it is empty.
    void BoxOfCorners(const TriangleListType& list, SSEPoint& min, SSEPoint& max) const;
    // The inner angle at `at` between the rays to p and q, in 3D, by acosf.
    static float InnerAngle(const SSEPoint& at, const SSEPoint& p, const SSEPoint& q);

    // Recomputes the circle of records that have one.
    void RefreshCircle(Triangle* triangle);

    Derived& Self() { return static_cast<Derived&>(*this); }

    // ---- the index beside the working list (triangle_graph_search.inl)
    // For records with a circle, in the indexed search mode: the index, in
    // step with TriangleList and covering (x, y), rebuilt first where it is
    // not. Null where the search walks the list instead.
    detail::WorkingListIndex<Triangle>* SearchIndexAt(double x, double y);
    // The index if it is in step with TriangleList as it stands, else null.
    detail::WorkingListIndex<Triangle>* SearchIndexInStep();
    // TriangleList.AddTail, registered with the index when it is in step.
    void AppendToWorkingList(Triangle* triangle);
    // Takes `triangle` out of TriangleList if it is there: at once through
    // the index, else by finding its node.
    void RemoveFromWorkingList(Triangle* triangle);
    // A listed triangle has a new circle, or a side that may have lost its
    // neighbour: the index must hear of both, since it files triangles by
    // their circles and keeps those with open sides at hand. Code that
    // clears a neighbour slot of a listed triangle by hand calls the second.
    void NoteCircleChanged(Triangle* triangle);
    void NoteSideMayBeOpen(Triangle* triangle);

    TriangleListType TriangleList{10};
    std::unique_ptr<detail::WorkingListIndex<Triangle>> WorkingIndex;

private:
    // One peeling pass over `list` (see CheckAndKillIgnored...): returns
    // whether any triangle left `list`.
    bool PeelOpenTrianglesOnce(TriangleListType& list, TriangleListType& collected, bool unlinkNeighbours);
};

} // namespace vek
