#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/platform/c_string.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/delaunay_records.h"
#include "vekdll/surface/triangle_graph.h"

#include <vector>

class CEvent;
class CSSE3dPolygon;
class CSSEMatrix;
class ZrCIncrementalDelaunay2D;

namespace Geometry {
class CTriangulation;
}

namespace vek::detail {
struct IndexedCircle;
template <class T>
class SweepCycleWatch;
struct ScanLattice;
template <class Owner>
struct ScanWorkerRecord;
} // namespace vek::detail

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
    // Where the rim walk of CombineTriangulationsMidPoint lays a middle line
    // (gaps in z from the near gap on) and an extra ring (from the wide gap
    // on), and where the distance searches along a rim start.
    static constexpr float kMidPointNearGap = 1.0f;
    static constexpr float kMidPointWideGap = 2.0f;
    static constexpr float kBorderDistanceSearchStart = 9999.0f;

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
    // Triangulates the first `count` stored vertices, the first of which are
    // the points of `polygon` in order, starting from the polygon's extreme
    // points; triangles whose centroid lies outside the polygon are marked
    // Outside. Finalizes when `finalize` is 1.
    void Triangulate(CSSE3dPolygon& polygon, int count, int finalize);
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
    // Sets the circle fields; a listed triangle is filed anew in the search
    // index, which is why records in the working list get their circles
    // only through this.
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
    // Whether the polygon's inner area holds a sample of the segment a-b,
    // taken every min(length / 10, 0.1) from a, excluding a itself.
    static bool CheckAcrossEdge(const SSEPoint& a, const SSEPoint& b, CSSE3dPolygon& polygon);

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

    // ---- scan conversion into a raster (incremental_delaunay_scan_conversion.cpp)
    // Units per raster cell in x, y and z; the diagonal of a cell follows.
    void SetScanConvResolution(float x, float y, float z);
    // The surface as a field of heights in z cells over its bounding box,
    // which CalcBoundingBox must have set: cell (0, 0) is the box's lower
    // corner, handed out in `origin`. Five workers sample a band of the
    // triangles each into a field of their own; where the surface folds
    // over a cell, the highest sample wins with `keepMax`, else the lowest.
    // Cells that no triangle reaches read `background`. The field is
    // re-created with the size of the box.
    void FastScanConvertTriangulation(CSSEMatrix* field, float background, SSEPoint& origin, bool keepMax);
    // Only the triangles that face the viewer of the kept extreme (up for a
    // maximum, down for a minimum), or only the others. They read each
    // triangle's Normal: ComputeNormalVectorsOfTriangles must have run.
    void FastScanConvertTriangulationOnlyVisible(CSSEMatrix* field, float background, SSEPoint& origin, bool keepMax);
    void FastScanConvertTriangulationOnlyUnvisible(CSSEMatrix* field, float background, SSEPoint& origin,
                                                   bool keepMax);
    // Only the triangles with a corner at a height zMin ... zMax.
    void FastScanConvertTriangulationWithZRange(CSSEMatrix* field, float background, SSEPoint& origin, float zMax,
                                                float zMin, bool keepMax);
    // Only the inner triangles (no Outside, Border or SubEdge; unless
    // `inner`, no neighbour with Border or SubEdge either), into a field of
    // the size of `reference`, shared out over the workers by bands of
    // lines rather than of triangles. Heights are absolute, as from the
    // other forms; cells that no triangle reaches read 0, no data.
    void FastScanConvertTriangulationOnlyInside(CSSEMatrix* field, CSSEMatrix* reference, bool keepMax, bool inner);

    // The samplers of the workers, to be called on the caller's thread too:
    // the triangles first ... last of `list` (both inclusive) are sampled
    // into `field`, which keeps its size and contents, each sample keeping
    // the higher (keepMax) or the lower of its value and the cell's. In the
    // inside form first and last are lines of the field, the whole list is
    // walked, and a triangle is taken if a corner lies in those lines.
    void ScanConvertTriangulationWithLimitedArea(CSSEMatrix* field, const CList<t_hdelaunaytriangle*>* list,
                                                 const SSEPoint& origin, int first, int last, bool keepMax) const;
    void ScanConvertTriangulationWithLimitedAreaOnlyVisible(CSSEMatrix* field,
                                                            const CList<t_hdelaunaytriangle*>* list,
                                                            const SSEPoint& origin, int first, int last,
                                                            bool keepMax) const;
    void ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(CSSEMatrix* field,
                                                              const CList<t_hdelaunaytriangle*>* list,
                                                              const SSEPoint& origin, int first, int last,
                                                              bool keepMax) const;
    void ScanConvertTriangulationWithLimitedAreaWithZRange(CSSEMatrix* field, const CList<t_hdelaunaytriangle*>* list,
                                                           const SSEPoint& origin, int first, int last, float zMax,
                                                           float zMin, bool keepMax) const;
    void ScanConvertTriangulationWithLimitedAreaOnlyInside(CSSEMatrix* field, const CList<t_hdelaunaytriangle*>* list,
                                                           const SSEPoint& origin, int first, int last, bool inner,
                                                           bool keepMax) const;

    // One step of the breadth-first walk over the triangles near `polygon`
    // (incremental_delaunay_polygon_walk.cpp): marks t Ignore when its three
    // corners lie within distance + tolerance of the polygon, and then queues
    // its unvisited neighbours on `list`. `position` is the caller's place
    // in `list` and is not read.
    void CheckTrianguleAndProcessList(t_hdelaunaytriangle* t, POSITION position, CList<t_hdelaunaytriangle*>* list,
                                      float distance, float tolerance, const CSSE3dPolygon& polygon);

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

    // ---- joining sub-triangulations (incremental_delaunay_sub_combination.cpp)
    // Waits for event i of ten slots in order, and takes the triangles of
    // sub-triangulation i into this object, emptied first: equal vertices
    // become one, and triangles of different slots are linked across the
    // cut where they share a side. Each sub-triangulation is destroyed and
    // its slot set null. A null slot is still waited for.
    void CombineSubDelaunayTriangles(ZrCIncrementalDelaunay2D** subTriangulations, CEvent** finishedEvents);

    // ---- exchange with the indexed mesh (incremental_delaunay_exchange.cpp)
    // A new indexed mesh of all vertices and of the triangles without
    // Outside, with vertex normals; null when both lists are empty. The
    // triangles come from the working list when it has any, else from
    // FinalList, but the mesh has room for only as many as FinalList holds:
    // a working list is taken whole only if the object was finalized before
    // (mesh_exchange.h). The caller owns the mesh.
    Geometry::CTriangulation* CreateCTriangulation() const;
    // Writes CreateCTriangulation's mesh to the file at `path`, created or
    // emptied; a file that does not open is passed over in silence. A
    // triangulation without triangles writes an empty mesh.
    void ExportDelaunayTriangleNew(const CString& path) const;
    // Replaces the triangulation by the mesh of the file at `path` and
    // finalizes. A file that does not open is passed over in silence; one
    // that holds no whole mesh throws CArchiveException and leaves the
    // triangulation as it was.
    void ImportDelaunayTriangle(const CString& path);
    // Replaces the vertices and triangles by those of `mesh`: a vertex for
    // each position, a triangle with its circle for each mesh triangle of
    // three distinct vertices (in mesh order, corners in their order), linked
    // across each side that two of them share. Finalizes with `finalize`.
    void CreateDelaunayTriangulationFromCTriangulation(const Geometry::CTriangulation& mesh, bool finalize);

protected:
    friend Base;

    // Hooks of the graph operations: the finalized state and its list.
    bool LeaveFinalizedState();
    void ReturnToFinalizedState(bool wasFinalized);
    CList<t_hdelaunaytriangle*>& PresentList() { return Finalized ? FinalList : TriangleList; }
    // Where GetTriangleListFromEdgeList lists the triangles it selects.
    CList<t_hdelaunaytriangle*>& SelectionList() { return AffectedTriangleList; }
    // How the search index files a triangle: by the circle of its record,
    // widened by what the float circle test can still accept beyond it.
    vek::detail::IndexedCircle IndexedCircleOf(const t_hdelaunaytriangle* triangle) const;
    vek::detail::IndexedCircle ExactlyIndexedCircleOf(const t_hdelaunaytriangle* triangle) const;

    // TriangleList, the working list, comes first, from the graph.
    CList<t_hdelaunaytriangle*> AffectedTriangleList{10};
    CList<t_hdelaunaytriangle*> FinalList{10};
    CList<t_hdelaunayedge*> EdgeList{10};
    CList<t_hdelaunayedge*> EdgeForMergeList{10};
    CList<t_hdelaunayedge*> BorderEdgeList{10};
    // The open edges, border chains, seam lists, middle ring and vertex
    // boundary of a combination belong to the graph (OtherVertexStart and
    // what follows it there).
    bool Finalized = false;
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
    int SweepOnce(bool checkFan, vek::detail::SweepCycleWatch<t_hdelaunaytriangle>* watch);
    // Triangles an insertion frees are retired, not freed: on a point set
    // where the float decisions disagree with each other (points a few
    // thousandths of a cell apart far from the origin, coincident corners of
    // the first triangle) the links of the graph stop matching, and a later
    // step of the same insertion may still follow a link to a triangle it
    // has dropped. A retired record stays readable until the release clears
    // every link to it and frees it. On a sound graph no link leads to a
    // retired triangle, so the release changes nothing there.
    void RetireTriangle(t_hdelaunaytriangle* triangle) { Retired.push_back(triangle); }
    // Ends an insertion: the affected triangles join the working list, and
    // the retired ones are freed at once while every link around the
    // insertion is returned and none leads to a retired triangle. Once that
    // fails the graph is held to be unsound until the next build, and
    // retired triangles wait for the release walk.
    void SettleInsertion();
    bool LinksAroundInsertionAreSound() const;
    void NoteFlipOutsideAffected(t_hdelaunaytriangle* triangle, t_hdelaunaytriangle* neighbour);
    void FreeRetiredTriangles();
    // Releases once the retired triangles outnumber half the working ones,
    // so that the walk over all triangles costs each insertion O(1).
    void ReleaseRetiredTrianglesIfMany();
    void ReleaseRetiredTriangles();
    // Adds a corner of the bounding box as a vertex unless one sits there.
    int CornerIndex(const SSEPoint& corner);
    void InsertStoredVertex(int index, bool checkFan);
    // Inserts vertex i of a Triangulate run: locate, place, legalize.
    void InsertDuringTriangulate(int i);
    void StartNewTriangulation();
    bool StartFromBoxCorners(int corners[4]);
    bool FiniteBox(SSEPoint& min, SSEPoint& max) const;
    bool StartFromFirstTriangle(int count, int corners[4]);
    void InsertAllVerticesExcept(int first, int count, const int* skip, int numSkip);
    // The walk of CalcAffectedTriangles over the whole working list.
    int ScanAffectedTriangles(int v);
    // Puts a new triangle on each open side of `triangle` that v sees.
    void JoinSidesSeenFrom(int v, t_hdelaunaytriangle* triangle, std::vector<t_hdelaunaytriangle*>& made);
    void MarkTrianglesOutsidePolygon(CSSE3dPolygon& polygon);

    // The scan conversion's view of this surface, and its five-band driver
    // with the sampler each worker runs.
    using ScanWorker = void (*)(const vek::detail::ScanWorkerRecord<ZrCIncrementalDelaunay2D>&);
    vek::detail::ScanLattice ScanLatticeFor(const SSEPoint& origin) const;
    void ScanConvertInFiveBands(CSSEMatrix* field, float background, SSEPoint& origin, bool keepMax,
                                ScanWorker worker, float zMax, float zMin);

    std::vector<t_hdelaunaytriangle*> Retired;
    // Set when an insertion left links that are not returned, or lead to a
    // retired triangle; cleared by a new build.
    bool LinksMayBeStale = false;
    // The records that the sweeps' flips with a triangle outside the
    // affected list may have written: both triangles and their neighbours
    // before each such flip.
    std::vector<t_hdelaunaytriangle*> FlipTouched;
    std::vector<t_hdelaunaytriangle*> SearchScratch;
};
