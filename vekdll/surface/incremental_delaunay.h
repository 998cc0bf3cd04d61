#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/delaunay_records.h"
#include "vekdll/surface/triangle_graph.h"

class ZrCIncrementalDelaunay2D;

namespace vek {
using DelaunayGraph = TriangleGraph<ZrCIncrementalDelaunay2D, t_hdelaunaytriangle, t_hdelaunayedge>;
}

// The adaptive 2.5D triangulation: built one vertex at a time under the
// Delaunay rule in x-y, with z carried along. Vertices live in the inherited
// store, triangles in the inherited graph.
//
// The object is in one of two states. Working: the triangles are in
// TriangleList, and every insertion and change of the graph happens there.
// Finalized: they are in FinalList, where the queries and the scan
// conversion read them. An operation that changes the graph of a finalized
// object moves the triangles back first and, where it says so, finalizes
// again at its end. Each triangle record is owned by the one list that
// holds it, and freed by it.
class VEKDLL_API ZrCIncrementalDelaunay2D : public vek::DelaunayGraph {
public:
    using Base = vek::DelaunayGraph;
    using Base::ClearEdgeList;
    using Base::LegalizeEdges;

    // The angle flip marks both triangles so that they take part in no
    // further angle flip until ResetFlipState.
    static constexpr bool kAngleFlipSetsFlipState = true;

    ZrCIncrementalDelaunay2D();
    explicit ZrCIncrementalDelaunay2D(int numVertices);
    ~ZrCIncrementalDelaunay2D();
    // Copies are made explicitly, by DeepCopyTriangulation.
    ZrCIncrementalDelaunay2D(const ZrCIncrementalDelaunay2D&) = delete;
    ZrCIncrementalDelaunay2D& operator=(const ZrCIncrementalDelaunay2D&) = delete;

    // ---- life and state (incremental_delaunay_lifetime.cpp)
    void InitializeObject();
    bool IsFinalized() const { return Finalized; }
    void FinalizeTriangleList();
    void CopyFinalTriangleListToTriangleList();
    void ClearFinalTriangleList();
    void ClearAffectedTriangleList() { AffectedTriangleList.RemoveAll(); }
    void AddNewTrianglesToList();
    void KillIgnoredTriangles();
    void ClearEdgeList() { ClearEdgeList(&EdgeList); }
    void CheckConsistency();
    void DeepCopyTriangulation(const ZrCIncrementalDelaunay2D& source, bool finalize);
    static void FlipEdge(t_hdelaunayedge* edge);

    CList<t_hdelaunaytriangle*>& GetFinalList() { return FinalList; }
    CList<t_hdelaunaytriangle*>* GetFinalTriangleList() { return &FinalList; }
    int GetNumTriangles() const { return static_cast<int>(FinalList.GetCount()); }
    CList<t_hdelaunaytriangle*>& GetAffectedTriangleList() { return AffectedTriangleList; }
    CList<t_hdelaunayedge*>& GetEdgeList() { return EdgeList; }
    CList<t_hdelaunayedge*>& GetEdgeForMergeList() { return EdgeForMergeList; }
    CList<t_hdelaunayedge*>& GetTriangulationBorder() { return BorderEdgeList; }
    SSEPoint GetMinPoint() const { return *MinPoint; }
    SSEPoint GetMaxPoint() const { return *MaxPoint; }
    SSEPoint GetCenterPoint() const { return *CenterPoint; }

    // ---- building (incremental_delaunay_insertion.cpp)
    // Triangulates the first `count` stored vertices. With `addCorners` the
    // triangulation starts from the four corners of the bounding box (added
    // as vertices where none sits), otherwise from vertices 0, 1 and 2.
    void Triangulate(int count, bool finalize, bool addCorners);
    void InsertVertexIntoTriangulation(int index);
    void InsertVertexIntoTriangulation(float x, float y, bool finalize);
    void InsertVertexIntoTriangulationNoExterior(int index);

    // Moves every triangle of the working list whose circumcircle strictly
    // contains vertex v, and that is neither marked Ignore nor IgnoreSearch,
    // to the (emptied) affected list, keeping the order of the working list;
    // returns how many moved. This is the one place that locates a vertex:
    // a faster search may replace its inside but must move the same
    // triangles in the same order.
    int CalcAffectedTriangles(int v);
    void ProcessAffectedTriangles(int v);
    void ProcessAffectedTrianglesNoExterior(int v);
    void AppendExteriorPoint(int v);

    // ---- Delaunay rule (incremental_delaunay_legalization.cpp)
    void CalcCircumCircle(t_hdelaunaytriangle* triangle);
    void UpdateCircles();
    bool InCircumCircle(int v, const t_hdelaunaytriangle* triangle) const;
    void LegalizeEdges();
    void LegalizeEdgesWithNeighbourCheck();

    // ---- queries (incremental_delaunay_queries.cpp)
    EPointWhere PointWhere(int v, const t_hdelaunaytriangle* triangle) const;
    EPointWhere PointWhere(float x, float y, const t_hdelaunaytriangle* triangle) const;
    t_hdelaunaytriangle* FindTriangleFromCoords(float x, float y);
    t_hdelaunaytriangle* FindNearestTriangle(int v, ESharedSide& side);
    t_hdelaunaytriangle* NearestTriangle(const t_hdelaunaytriangle* triangle, float minDot, float maxDist2);
    t_hdelaunaytriangle* NearestTriangle(const t_hdelaunaytriangle* triangle, float minDot, float maxDist2,
                                         const SSEPoint& offset);
    bool Visible(int v, const t_hdelaunaytriangle* triangle, int side) const;
    static float Visibility(const t_hdelaunaytriangle* a, const t_hdelaunaytriangle* b);
    int CompareVertexXY(int i, int j) const;

    // ---- geometry of the surface (incremental_delaunay_geometry.cpp)
    void CalcBoundingBox();
    void CalcCenterPoint();
    void CalcGeometricCenterOfBorderLine(CList<t_hdelaunayedge*>* list, SSEPoint& result) const;
    static void ComputeCentreOfTriangle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c, SSEPoint& result);
    void ComputeCentresOfTriangles();
    void ComputeNormalVectorOfTriangle(t_hdelaunaytriangle* triangle);
    void ComputeNormalVectorOfTriangle(const t_hdelaunaytriangle* triangle, SSEPoint* result) const;
    void ComputeNormalVectorsOfTriangles();
    bool CalcNormalDirection();
    void CreateNormalVectorField(int n);
    void CreateTriangleCentersField(int n);
    void ClearTriangleCenters();
    void ClearTriangleNormals();
    static void NormalizeVector(SSEPoint& point);

    // ---- flag passes (incremental_delaunay_passes.cpp)
    void ResetBorderTriangles();
    void ResetIgnoreBorderTriangles();
    void IgnoreBorderTriangles();
    void SetIgnoreOutsideTriangule();
    void ResetIgnoreOutsideTriangule();
    void ResetIgnoreSubEdgeTriangule();
    void CheckAndIgnoreSubTriangulation();
    void IsolateTrianglesWithoutNeighbour();
    int* IsolateVerticesWithoutNeighbour();
    void IsolateEdgesWithoutNeighbour();
    void IsolateEdgesWithoutNeighbourAndOutsideTriangles();
    void ClearOutsideTriangules();
    void RemoveSignedTriangles();

protected:
    friend Base;

    // Hooks of the graph operations: the finalized state and its list.
    bool LeaveFinalizedState();
    void ReturnToFinalizedState(bool wasFinalized);
    CList<t_hdelaunaytriangle*>& PresentList() { return Finalized ? FinalList : TriangleList; }

    // TriangleList, the working list, comes first, from the graph.
    CList<t_hdelaunaytriangle*> AffectedTriangleList{10};
    CList<t_hdelaunaytriangle*> FinalList{10};
    CList<t_hdelaunayedge*> EdgeList{10};
    CList<t_hdelaunayedge*> EdgeForMergeList{10};
    CList<t_hdelaunayedge*> BorderEdgeList{10};
    CList<t_hdelaunayedge*> OutsideEdgeListFirst{10};
    CList<t_hdelaunayedge*> OutsideEdgeListSecond{10};
    CList<t_hdelaunayedge*> CombinedEdgeListFirst{10};
    CList<t_hdelaunayedge*> CombinedEdgeListSecond{10};
    CList<t_hdelaunaytriangle*> CombineTriangleListFirst{10};
    CList<t_hdelaunaytriangle*> CombineTriangleListSecond{10};
    CSSE3dPolygon CombinePolygon;
    bool Finalized = false;
    bool FirstPolygonOpen = false;
    bool SecondPolygonOpen = false;
    int FirstVertexCount = 0;
    // Units per raster cell of the scan conversion; one unit per cell until
    // the caller sets them.
    float ScanResolutionX = 1.0f;
    float ScanResolutionY = 1.0f;
    float ScanResolutionZ = 1.0f;
    float ScanResolutionXY = 1.4142135f;
    // One aligned block of three points, made by the constructor. Note that
    // the member MinPoint hides the vertex store's MinPoint() in this class;
    // MinPointIndex gives the same extreme.
    SSEPoint* MinPoint = nullptr;
    SSEPoint* MaxPoint = nullptr;
    SSEPoint* CenterPoint = nullptr;
    SSEPoint* TriangleCenters = nullptr;
    SSEPoint* TriangleNormals = nullptr;

private:
    void AllocatePointBlock();
    // The common course of ProcessAffectedTriangles and its NoExterior form:
    // a vertex that no triangle takes is joined from outside, or taken back.
    void ProcessAffected(int v, bool joinFromOutside);
    // Places v in the first affected triangle that has it inside or on a
    // side; false if none does.
    bool PlaceInAffectedTriangle(int v);
    // Splits T and, across the side, its neighbour at a vertex on that side.
    void SplitAcrossSide(int v, t_hdelaunaytriangle* triangle, int side, t_hdelaunaytriangle* made[4]);
    bool IsStoredVertex(int v) const;
    // Takes back the last vertex if it is v.
    void DropIfLastVertex(int v);
    // The two Delaunay sweeps; with `checkFan` a flip that would make an
    // edge twice is not done.
    void SweepAffected(bool checkFan);
    // Adds a corner of the bounding box as a vertex unless one sits there.
    int CornerIndex(const SSEPoint& corner);
    void InsertStoredVertex(int index, bool checkFan);
    // Inserts vertex i of a Triangulate run: locate, place, legalize.
    void InsertDuringTriangulate(int i);
};
