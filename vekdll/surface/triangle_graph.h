#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/planar/planar_predicates.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/border_chain_count.h"
#include "vekdll/surface/polygons_for_combine.h"
#include "vekdll/surface/triangle_graph_types.h"
#include "vekdll/surface/vertex_container.h"
#include "vekdll/surface/working_list_index.h"

#include <cstdint>
#include <memory>
#include <unordered_set>
#include <vector>

class CSSEMatrix;

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
// and the constant `kAngleFlipSetsFlipState`. The border and seam operations
// further need SelectionList() (where a flood lists what it selects),
// ComputeNormalVectorsOfTriangles, CalcNormalDirection and
// the constants kMidPointNearGap, kMidPointWideGap and
// kBorderDistanceSearchStart, in which the two triangulations differ. The
// record type names its record of corners in conflict with a raster by a
// specialisation of AffectedRecordOf. For records with a circle, the
// refinement further calls PointWhere(x, y, triangle),
// InsertVertexIntoTriangulation(index),
// InsertVertexIntoTriangulationNoExterior(index) and
// IsolateTrianglesWithoutNeighbour.
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
    // The same for one triangle; returns how many of its sides are open.
    static int AppendOpenSidesOf(Triangle* triangle, EdgeListType& edges, bool outsideNeighbourIsOpen);
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

    // ---- how geometric decisions are taken (triangle_graph_predicates.inl)
    // Tolerant (the default): float arithmetic against the absolute on-edge
    // tolerance of 0.005 on twice an area, and the float circle of each
    // record. Exact: the exact signs of the orientation and in-circle
    // determinants of the float coordinates, so that the decisions never
    // contradict each other and the result is a Delaunay triangulation of
    // any input. Triangles are then counter-clockwise, and a point on a
    // circle is not inside it. Setting the mode between insertions is safe;
    // the search index is rebuilt for it.
    void SetPredicates(vek::PlanarPredicates how);
    vek::PlanarPredicates GetPredicates() const { return Predicates; }
    // The side test of p against the side from s to e: in the tolerant mode
    // the float cross value (twice the signed area, positive to the left);
    // in the exact mode its exact sign as -1, 0 or 1, which every use of
    // the value (beyond the tolerance, within it) then reads exactly.
    float SideTest(const SSEPoint& s, const SSEPoint& e, const SSEPoint& p) const;

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

    // ---- where the surface ends (triangle_graph_borders.inl)
    using CountParams = CountTrianglesParams<Triangle, Edge>;
    // The open edges of the present list, in BorderEdgesFirst or, for
    // triangles whose first corner is at or above OtherVertexStart,
    // BorderEdgesSecond. A triangle with no or three open sides loses Border.
    void FindOutsideEdgesOfBorderTriang();
    // The open sides of `triangles` (a null or an Outside neighbour) as new
    // edge records at the tail of `edges`.
    static void FindOutsideEdgesOfBorderTriang(TriangleListType* triangles, EdgeListType* edges);
    // The open edges of this surface in BorderEdgesFirst, of `other` in
    // BorderEdgesSecond.
    void FindOutsideEdgesOfBorderTriang(Derived& other);
    // Every open edge of the surface, chained by vertex index into loops or
    // runs: one new list each, appended to `lists`, which the caller owns
    // with its lists and edges.
    void FindAllBorderEdgeLists(CList<EdgeListType*>* lists);
    // The two border chains of a combined object, side by side in x-y, in
    // OrderedBorderFirst and OrderedBorderSecond.
    void GetBorderOfCombinedTriangulationApdated();
    // The border loop of each half of a combined object, chosen among its
    // loops, in `edges1` and `edges2`; the triangles the choice reached go
    // to `triangles`.
    void GetBorderOfCombinedTriangulationApdated(EdgeListType* edges1, EdgeListType* edges2,
                                                 TriangleListType* triangles);
    // The same for this object (`edges1`, `triangles`) and `other` (`edges2`).
    void GetBorderOfCombinedTriangulationApdated(Derived& other, EdgeListType* edges1, EdgeListType* edges2,
                                                 TriangleListType* triangles);
    // Clears this surface away from the rim of `other` (given as `edges2`)
    // before `other` is laid in: triangles along the rim go, corners near it
    // move off, and what lies under `other` is peeled away from the opening.
    void CheckAndGetBorderOfCombinedTriangulation(Derived& other, EdgeListType* edges1, EdgeListType* edges2,
                                                  TriangleListType* triangles, bool flag);
    // One point per edge, the edge's first vertex, in chain order.
    static void BuildPolygonFromEdgeList(EdgeListType* edges, CSSE3dPolygon& polygon,
                                         const ZrCSSEVertexContainer& vertexSource);
    void BuildPolygonFromEdgeList(EdgeListType* edges, CSSE3dPolygon& polygon, int* vertexIndices);
    // The first border loop of the surface as a polygon.
    void BuildBorderPolygonForTriang(CSSE3dPolygon& polygon);
    // Floods from the triangles of `edges` into the surface, over triangles
    // whose SortIndex is -1, marking each Signed and listing it in the
    // derived class's selection list.
    void GetTriangleListFromEdgeList(EdgeListType* edges);
    // Cuts two border polygons into matching sections of about 50 points of
    // `second`; both are turned counter-clockwise first, their index arrays
    // with them.
    void PreparePolygonsForCombine(CSSE3dPolygon* first, CSSE3dPolygon* second, int* firstIndices,
                                   int* secondIndices, CList<t_PolygonsForCombineDelaunay*>* sections);
    // Advances the front of loop `index` by `steps` breadth-first steps over
    // triangles that no front has reached (SortIndex -1); returns how many
    // triangles the loop has reached in all.
    int CountInnerTrianglesFromEdgeList(int steps, CountParams* params, int index);

    // The state that the border and seam operations leave behind.
    EdgeListType& GetBorderEdgesFirst() { return BorderEdgesFirst; }
    EdgeListType& GetBorderEdgesSecond() { return BorderEdgesSecond; }
    EdgeListType& GetOrderedBorderFirst() { return OrderedBorderFirst; }
    EdgeListType& GetOrderedBorderSecond() { return OrderedBorderSecond; }
    int GetOtherVertexStart() const { return OtherVertexStart; }
    void SetOtherVertexStart(int start) { OtherVertexStart = start; }
    bool IsFirstPolygonInverted() const { return FirstPolygonInverted; }
    bool IsSecondPolygonInverted() const { return SecondPolygonInverted; }
    const CSSE3dPolygon& GetCombinedMidPolygon() const { return CombinedMidPolygon; }

    // ---- joining two surfaces (triangle_graph_combination.inl)
    // Appends the vertices of `other` and copies of its triangles, linked
    // as they were; the copies' corners are shifted by the old vertex count.
    void CopyAndInsertOtherTriangulation(Derived& other, bool finalize);
    // Replaces this surface by `second` and `first` closed along their
    // common outline into one skin. The third argument is not read.
    void CombineTriangulationsMidPoint(Derived& first, Derived& second, bool, bool finalize);
    // Lays `other` into this surface: clears room for it, copies it in,
    // stitches the opening's rim to its rim and peels away every triangle
    // with an open side. Made for a skin closed but for the opening that
    // `other` covers; the peel leaves nothing of a surface with an open
    // outer rim (see the definition).
    void InsertTriangulationAndCombine(Derived& other, CSSEMatrix* matrix, bool flag);
    // Links the triangles of a new seam with each other and with the
    // triangles behind the edges of its two rims.
    void LinkSeamToRims(TriangleListType& seam, EdgeListType& rim1, EdgeListType& rim2);
    // Builds the seam between two border polygons whose points are vertices
    // of this object (their indices in the two arrays): two zippers from
    // the borders to rings at 0.2 and 0.8 of the way, and the middle ring
    // in CombinedMidPolygon for CombineMergeTriangulations.
    void CombineTriangulations(CSSE3dPolygon* first, CSSE3dPolygon* second, TriangleListType* triangles,
                               CSSEMatrix* matrix, int* firstIndices, int* secondIndices);
    // Zips the closed line `a`, whose points are vertices of this object,
    // to the closed line `b`, whose vertex indices are `indices`; `b` and
    // `indices` are turned to start opposite the start of `a`.
    void BildNewTriangulationsWithTwoPolygon(CSSE3dPolygon* a, CSSE3dPolygon* b, TriangleListType* triangles,
                                             TriangleListType* seamTriangles, int* indices, bool flagA, bool flagB);
    // Closes the band between the two rings of the last CombineTriangulations
    // through the middle ring.
    void CombineMergeTriangulations();

    // ---- clearing a surface for a seam (triangle_graph_seam_clearance.inl)
    void CheckTrianglesForDelete(TriangleListType* triangles, CSSE3dPolygon* polygon);
    void CheckIfDeleteTriangles(CSSEMatrix* lower, CSSEMatrix* upper, bool aboutX);
    static bool CanDeleteTriangle(Triangle* triangle);
    static bool CheckDistanceForNoDeleteTriangle(SSEPoint& c0, SSEPoint& c1, SSEPoint& c2, CSSE3dPolygon& polygon,
                                                 CSSE3dPolygon& projected, float nearLimit, float farLimit);
    void BildAffectedTriangleListForDeleteAndShift(TriangleListType* in, TriangleListType* out, float distance,
                                                   CSSE3dPolygon& polygon);
    // Walks from `from` towards `to` and takes the first place at least
    // `distance` from the polygon points around `index`; `to` - 0.5 if none.
    static void ShiftVertexWithDistanceInInterval(SSEPoint& from, SSEPoint& result, SSEPoint& to, float distance,
                                                  CSSE3dPolygon& polygon, int index);
    // The same walk, but of the places at least `distance` away it takes the
    // one that comes nearest to `distance`: the corner keeps as close to the
    // polygon as the clearance allows.
    static void ShiftVertexWithDistanceInIntervalMinimize(SSEPoint& from, SSEPoint& result, SSEPoint& to,
                                                          float distance, CSSE3dPolygon& polygon, int index);
    // Collapses the shortest side of each triangle of `triangles` that is
    // neither all short nor all long; true if any was collapsed.
    bool CheckCollaborateTriangles(TriangleListType* triangles, float minLength, float maxLength);
    void CollaborateTrianglesOnEdge(Triangle* triangle, ESharedSide side);

    // ---- refinement against raster fields (triangle_graph_refinement.inl)
    // Each operation walks the triangles of the moment and inserts what it
    // found afterwards (or into a list of its own), so that it never changes
    // the list it walks. Fields are read at cells: a coordinate plus 0.5,
    // truncated and clamped to the field. Those that insert through the
    // circumcircle search exist for records with a circle and do nothing for
    // others. `finalize` leaves the object finalized at the end.
    //
    // Every cell with a non-zero mask becomes a vertex at the height of
    // `height` there, unless a vertex lies within 0.5 in x-y; one that no
    // triangle takes is dropped again. With `cellCorners` the samples lie
    // inside the cells whose four corners carry the mask: the cell's centre,
    // or with `sampling` other than 1 also the points a quarter in from its
    // corners, kept 0.249 apart, at bilinear heights. The store must have
    // room: a vertex it cannot take is lost.
    void DistanceImageInsertPoints(CSSEMatrix* mask, CSSEMatrix* height, bool cellCorners, int sampling,
                                   bool finalize);
    // Stores, for each inner triangle (neither Outside nor Border) whose
    // centroid, rounded to a cell, lies inside it on a non-zero mask cell,
    // the point at that cell with the field's height when two corners, or a
    // corner and the field, differ in height by more than `limit`; then
    // inserts them. The store must have room.
    void HighDerivationInsertPoints(CSSEMatrix* height, CSSEMatrix* mask, float limit, bool finalize);
    // The same test, splitting at once into three around the cell point,
    // the store grown by 50 where full. A triangle is left alone where the
    // mask holds its background value (its maximum with `legalize`, else its
    // minimum) or where the field stands more than 5.0 away from the
    // centroid. With `legalize` obtuse pairs are flipped afterwards.
    void HighDerivationInsertPoints(CSSEMatrix* height, CSSEMatrix* mask, bool legalize, float limit,
                                    bool finalize);
    // For triangles steeper than 20 degrees, whose corners a height test as
    // above would always split: only where the field bends away from the
    // triangle, that is where `curvature` (a second derivative of the
    // field) exceeds 5.0 in magnitude and the field misses the centroid by
    // more than 2.0, besides the test with `limit`. True if any vertex was
    // stored; no vertex is stored twice.
    bool SecondHighDerivationInsertPoints(CSSEMatrix* height, CSSEMatrix* mask, CSSEMatrix* curvature, float limit,
                                          bool finalize);
    // In `iterations` rounds splits at the centroid every triangle with a
    // side of at least `limit` in 3D and all sides longer than 1.0, except
    // thin slivers; before and after each round obtuse pairs are flipped and
    // sides that have shrunk to nothing are collapsed.
    void HighEdgeLengthInsertPoints(float limit, int iterations, bool finalize = false);
    // The side test above, at a cell centroid with the field tests of the
    // second HighDerivationInsertPoints.
    void HighEdgeLengthInsertPoints(CSSEMatrix* height, CSSEMatrix* mask, bool legalize, float limit,
                                    bool finalize);
    // Rounds of centroid insertion into inner triangles whose sides are all
    // longer than `limit` in x-y and whose corners differ in height by more
    // than `margin`, until a round adds nothing. The forms with fields also
    // want the rounded centroid inside the triangle on non-zero cells.
    void RefineTriangulation(float limit, int iterations, float margin);
    void RefineTriangulation(CSSEMatrix* field, float limit, int iterations, float margin);
    void RefineTriangulation(CSSEMatrix* first, CSSEMatrix* second, float limit, int iterations, float margin);
    // Lays vertices along the open sides of Border triangles, every
    // min(length / 10, 0.1) where the mask is set and no vertex lies within
    // 0.5, at the field's height; at most `count` of them.
    void RefineBorderTriangulationConstrained(CSSEMatrix* height, CSSEMatrix* mask, int count);
    // The distance over four lanes from `point` to the line through the two
    // others; -1 where those lie closer than 0.001.
    static float CalcDistancePointLine(const SSEPoint& point, const SSEPoint& lineStart, const SSEPoint& lineEnd);
    // The least 3D distance from `point` to samples that start at the side's
    // first vertex and step by min(length / 10, 0.1) in every lane at once
    // (a diagonal of the axes, not the side), and to the side's end vertex;
    // -1 for no triangle, no such side or a side of no length.
    float CalcDisPointToEdge(const Triangle* triangle, int side, const SSEPoint& point) const;

    // ---- subdivision (triangle_graph_subdivision.inl)
    // Splits each side of the listed triangles (of the working list) that
    // is longer than `limit` in x-y (every side for a limit of 0 or less) at
    // its mid-point, which is stored once and takes its height from `field`
    // where that holds a value. Each triangle with split sides is replaced
    // by two, three or four; a neighbour across a split side is split too,
    // so that no vertex hangs on a side. `list` then names the pieces of its
    // triangles, and `pieces`, if given, receives one new list of the pieces
    // of each listed triangle (the caller owns them). Repeats for at most
    // `rounds` rounds while a side is longer than `limit`.
    void DevideTrianglesFromList(CList<TriangleListType*>* pieces, int limit, CSSEMatrix* field,
                                 TriangleListType* list, int rounds);

    // ---- triangles that meet a newer raster (triangle_graph_critical.inl)
    using AffectedRecord = typename AffectedRecordOf<Triangle>::type;
    using AffectedListType = CList<AffectedRecord*>;
    // Sorts the triangles near the box of `polygon` (grown by 2.0) by a
    // raster of heights taken from above (MaxImg) or below (MinImg), read
    // in coordinates centred on the field. A corner is critical where the
    // raster holds data, the mask is set and the corner stands near the
    // raster's surface. Triangles steeper than 50 degrees against
    // `direction` (lane 0 of both left out with `flag`, else lane 1) and
    // those without a critical corner go to `clean`; with all three corners
    // critical a triangle is marked Ignore; otherwise a new record with its
    // critical corners goes to `affected`. The y of every critical corner
    // widens minZ .. maxZ.
    void FindCriticalTriangleListMaxImg(TriangleListType* clean, AffectedListType* affected, float& minZ,
                                        float& maxZ, CSSEMatrix* height, CSSEMatrix* mask, CSSE3dPolygon* polygon,
                                        const SSEPoint& direction, bool flag);
    void FindCriticalTriangleListMinImg(TriangleListType* clean, AffectedListType* affected, float& minZ,
                                        float& maxZ, CSSEMatrix* height, CSSEMatrix* mask, CSSE3dPolygon* polygon,
                                        const SSEPoint& direction, bool flag);
    // The same test for the triangles of `clean`, on corners turned about x
    // by `angle`, for a raster taken from another view: a triangle that is
    // critical there leaves `clean`. `view` names that view; the turn is
    // `angle`.
    void CheckCriticalTriangleListMaxImg(float angle, AffectedListType* affected, CSSEMatrix* field,
                                         CSSEMatrix* mask, const SSEPoint& direction, TriangleListType* clean,
                                         float& minZ, float& maxZ, EDirection view, bool flag);
    void CheckCriticalTriangleListMinImg(float angle, AffectedListType* affected, CSSEMatrix* field,
                                         CSSEMatrix* mask, const SSEPoint& direction, TriangleListType* clean,
                                         float& minZ, float& maxZ, EDirection view, bool flag);
    // Tests the corners of the records in `affected` that are not critical
    // yet against this raster, and marks the flags of those that are; a
    // triangle with all three flags is marked Ignore.
    void CheckAffectedTrianglesMaxImg(AffectedListType* affected, CSSEMatrix* field, CSSEMatrix* mask,
                                      const SSEPoint& direction, bool flag);
    void CheckAffectedTrianglesMinImg(AffectedListType* affected, CSSEMatrix* field, CSSEMatrix* mask,
                                      const SSEPoint& direction, bool flag);
    // The three views in order: straight, then turned by +1.5707964 and by
    // -1.5707964 about x, each with its own entries (eViewMinus90 = 1,
    // eViewPlus90 = 2) of minima and maxima, which start at 99999.9 and
    // -99999.9.
    void FindAffectedTriangles(AffectedListType* affected, TriangleListType* clean, CSSE3dPolygon* polygon,
                               CSSEMatrix* heightStraight, CSSEMatrix* heightMinus, CSSEMatrix* heightPlus,
                               CSSEMatrix* maskStraight, CSSEMatrix* maskMinus, CSSEMatrix* maskPlus, float* minima,
                               float* maxima, bool useMax, bool flag);
    // Frees the records of `affected` (not their triangles) and empties it.
    static void ClearAffectedList(AffectedListType* affected);

    // ---- deleting what a newer raster contradicts (triangle_graph_area_deletion.inl)
    // The three rasters of each kind come in the order straight, minus 90,
    // plus 90. Triangles near the rasters' data are found as by
    // FindAffectedTriangles; in the band of y they span in each view, the
    // triangles whose corner stands beyond the newer surface (above it for
    // maxima, below for minima) are confirmed by masks of the rasters and go
    // out, and what is left sticking out is peeled away. `flag` serves as in
    // FindAffectedTriangles and chooses the sense of the turns.
    void DeleteTrianglesInArea(CSSE3dPolygon polygon, CSSEMatrix* heightStraight, CSSEMatrix* heightMinus,
                               CSSEMatrix* heightPlus, CSSEMatrix* maskStraight, CSSEMatrix* maskMinus,
                               CSSEMatrix* maskPlus, bool useMax, bool flag);
    // For the views at 0, -1.5707964 and +1.5707964 in turn, the area test
    // on `triangles` and then on `affected`, between from[k] and to[k].
    void FindAffectedTrianglesInArea(AffectedListType* affected, TriangleListType* triangles,
                                     CSSEMatrix* heightStraight, CSSEMatrix* heightMinus, CSSEMatrix* heightPlus,
                                     CSSEMatrix* maskStraight, CSSEMatrix* maskMinus, CSSEMatrix* maskPlus,
                                     float* from, float* to, bool useMax, bool turnForward);
    // With all vertices turned about x by `angle` (in the sense of
    // RotateVertexX with `turnForward`, else the other), the first corner of
    // each triangle with from < y < to is tested: where the raster holds
    // data, the mask is set and the corner stands more than 0.001 beyond the
    // raster's surface, the triangle is marked Ignore, or, in the Affected
    // forms, the corner is recorded. The vertices are turned back at the end.
    void DeleteInAreaTrianglesMaxImg(TriangleListType* triangles, CSSEMatrix* field, CSSEMatrix* mask, float from,
                                     float to, float angle, bool turnForward);
    void DeleteInAreaTrianglesMinImg(TriangleListType* triangles, CSSEMatrix* field, CSSEMatrix* mask, float from,
                                     float to, float angle, bool turnForward);
    void DeleteInAreaAffectedTrianglesMaxImg(AffectedListType* affected, CSSEMatrix* field, CSSEMatrix* mask,
                                             float from, float to, float angle, EDirection view, bool turnForward);
    void DeleteInAreaAffectedTrianglesMinImg(AffectedListType* affected, CSSEMatrix* field, CSSEMatrix* mask,
                                             float from, float to, float angle, EDirection view, bool turnForward);
    // 1.0 where `source` exceeds its minimum (below its maximum with
    // `flag`), 0 elsewhere; minimum and maximum as CalcMinMaxValues finds them.
    static void BuildMaskFromMatrix(CSSEMatrix* source, CSSEMatrix* mask, bool flag);

    // ---- cutting by a mask or a cap (triangle_graph_mask_removal.inl)
    // Takes out every triangle with a corner on a non-zero cell of `mask`,
    // and closes each hole that is bounded by the remaining surface alone
    // again with flat triangles over its rim, divided where sides are longer
    // than 10; a cut that reaches the outer border stays open.
    void RemoveAllTrianglesInMaskAreaAndRetriangulate(CSSEMatrix* mask);
    // Takes out the triangles under a cap outlined by `polygon` in space:
    // near its box (10.0), turned with the polygon projected on them into
    // the polygon's plane (`flag` turns towards -z), and sampled against its
    // inner area; with `other`, only those that face the way `other` faces.
    // CheckTrianglesForDelete finishes the cut.
    void DeleteTrianglesInCap(CSSE3dPolygon* polygon, Derived* other, bool flag);

    // 1 if vertices i and j lie at the same x and y, else 0.
    int CompareVertexXY(int i, int j) const
    {
        return Vertices[i].x == Vertices[j].x && Vertices[i].y == Vertices[j].y ? 1 : 0;
    }

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
    void DropOneWayLinksToMarked(TriangleListType& list);
    // The lane-wise extremes of all corners of all triangles of `list`;
    // the sentinels 999999.9 and -999999.9 when it is empty.
    void BoxOfCorners(const TriangleListType& list, SSEPoint& min, SSEPoint& max) const;
    // The unit normal of (V1 - V0) x (V2 - V0) over four lanes; a degenerate
    // triangle keeps the zero vector instead of a division by zero.
    __m128 UnitNormalOf(const Triangle& triangle) const;
    // The mean of all stored vertices, those of no triangle included,
    // summed as vertex / count one by one.
    __m128 MeanOfVertices() const;
    // The inner angle at `at` between the rays to p and q, in 3D, by acosf.
    static float InnerAngle(const SSEPoint& at, const SSEPoint& p, const SSEPoint& q);
    // Its cosine, from the two unit rays over four lanes; rounding may carry
    // it a little beyond -1 .. 1.
    static float InnerAngleCosine(const SSEPoint& at, const SSEPoint& p, const SSEPoint& q);

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
    vek::PlanarPredicates Predicates = vek::PlanarPredicates::Tolerant;

    // ---- state of a combination of two surfaces
    // The first vertex of the surface copied in last: below it the vertices
    // of the first half, from it on those of the second.
    int OtherVertexStart = 0;
    EdgeListType BorderEdgesFirst{10};
    EdgeListType BorderEdgesSecond{10};
    EdgeListType OrderedBorderFirst{10};
    EdgeListType OrderedBorderSecond{10};
    bool FirstPolygonInverted = false;
    bool SecondPolygonInverted = false;
    // The ring halfway across the last seam, and the seam's new triangles on
    // either side of it.
    CSSE3dPolygon CombinedMidPolygon;
    TriangleListType SeamTrianglesFirst{10};
    TriangleListType SeamTrianglesSecond{10};
    // Where the vertices of the seam's lower ring (at 0.2, next to the first
    // border) and upper ring (at 0.8) start, and how many each has.
    int LowerRingStart = 0;
    int LowerRingCount = 0;
    int UpperRingStart = 0;
    int UpperRingCount = 0;

    // ---- helpers of the joining and the clearing
    Triangle* NewSeamTriangle(int a, int b, int c);
    // Lays the triangles between side i of a zipper's line b and the
    // stretch s .. e of its line a; A and B give the vertex of a point.
    template <class IndexA, class IndexB, class Lay>
    void LaySpan(int s, int e, int i, IndexA A, IndexB B, Lay lay);
    // AppendVertex after growing the store by one where it is full; the
    // new vertex's index.
    int AppendVertexGrowing(const SSEPoint& point);
    static void LinkAmong(const std::vector<Triangle*>& triangles);
    void LayRimStep(int a, int b, int c, int d, int s, int e, bool wide, std::vector<Triangle*>& made);
    static void LinkToRim(const Edge* edge, const std::vector<Triangle*>& made);
    static std::vector<Triangle*> TrianglesAroundVertex(Triangle* triangle, int vertex);
    bool MoveVertexIfNoFold(Triangle* triangle, int vertex, const SSEPoint& place);
    bool MoveCornerOffRim(Triangle* triangle, int k, int f, int farIndex, CSSE3dPolygon& rim, bool fromFar);
    // The clearing that CheckTrianglesForDelete and CheckAndGetBorder...
    // share, over the triangles of `list` and the resampled rim.
    void ClearSeamArea(TriangleListType& list, CSSE3dPolygon& rim, bool fromFar);
    // Frees, among `rimTriangles` and the neighbours their freeing exposes,
    // every triangle with an open side that reaches into the clearance of
    // `rim`, and every one left with two or three open sides.
    void PeelOpeningRim(TriangleListType& rimTriangles, const CSSE3dPolygon& rim);

    // Chainers of border edges (border_chaining.h) that compare vertices
    // by index or by place in x-y; they rescan the list as the plain rule
    // reads in the LinearScan search mode.
    auto ChainerByIndex(EdgeListType& from);
    auto ChainerByPlace(EdgeListType& from);

    // Chains every loop of `open` (emptying it) and moves the chosen one to
    // `result`; see GetBorderOfCombinedTriangulationApdated.
    void ChooseBorderLoop(EdgeListType& open, EdgeListType* result, TriangleListType* triangles);
    // Walks from `from` towards `to` for ShiftVertexWithDistanceInInterval
    // (the first clear place) and its Minimize form (`closest`).
    static void ShiftAlongInterval(SSEPoint& from, SSEPoint& result, SSEPoint& to, float distance,
                                   CSSE3dPolygon& polygon, int index, bool closest);

    // ---- helpers of the refinement
    std::vector<Triangle*> TrianglesOfTheMoment() const;
    // Neither Outside nor Border, for records that have those flags.
    static bool IsInnerTriangle(const Triangle* triangle);
    // Grows the store by 50 where it is full.
    void MakeRoomIfFull();
    void InsertStoredVerticesFrom(int first);
    bool InsertSampleInside(const SSEPoint& p, float tolerance);
    bool CellCentroidInside(const Triangle* triangle, SSEPoint& centroid, float& cellX, float& cellY) const;
    template <class Wants>
    void SplitAtCellCentroids(CSSEMatrix* height, CSSEMatrix* mask, bool legalize, bool finalize, Wants wants);
    bool HasLongSides(const Triangle* triangle, float limit) const;
    void FlipObtusePairs(TriangleListType& list);
    void CollapseSlivers();
    bool AllSidesLongerXY(const Triangle* triangle, float limit2) const;
    void RefineInRounds(const CSSEMatrix* first, const CSSEMatrix* second, float limit, int iterations, float margin);

    // ---- helpers of the subdivision; `freeSlots` names vertices that no
    // triangle uses, to be taken for new points (the last first)
    void DivideListedTriangles(CList<TriangleListType*>* pieces, int limit, CSSEMatrix* field, TriangleListType* list,
                               int rounds, std::vector<int>* freeSlots);
    bool DivideOnce(CList<TriangleListType*>* pieces, int limit, CSSEMatrix* field, TriangleListType& list,
                    std::vector<int>* freeSlots);
    int StoreVertexAt(const SSEPoint& p, std::vector<int>* freeSlots);
    std::vector<Triangle*> PiecesAtMidPoints(const Triangle* triangle, const int mid[3]) const;
    void FreeFromWorkingList(const std::unordered_set<Triangle*>& gone);

    // ---- helpers of the raster tests; `maxImage` chooses the Max twin
    static void ListAffected(AffectedListType& affected, Triangle* triangle, const bool (&critical)[3]);
    void FindCriticalTriangles(bool maxImage, TriangleListType* clean, AffectedListType* affected, float& minZ,
                               float& maxZ, CSSEMatrix* height, CSSEMatrix* mask, CSSE3dPolygon* polygon,
                               const SSEPoint& direction, bool flag);
    void CheckCriticalTriangles(bool maxImage, float angle, AffectedListType* affected, CSSEMatrix* field,
                                CSSEMatrix* mask, const SSEPoint& direction, TriangleListType* clean, float& minZ,
                                float& maxZ, bool flag);
    void CheckAffectedTriangles(bool maxImage, AffectedListType* affected, CSSEMatrix* field, CSSEMatrix* mask,
                                const SSEPoint& direction, bool flag);
    void TurnVerticesAboutX(float angle, bool forward);
    int ContradictedCornerInArea(const Triangle* triangle, float from, float to, const CSSEMatrix& field,
                                 const CSSEMatrix& mask, float background, bool maxImage) const;
    template <class Visit>
    void InViewArea(bool maxImage, CSSEMatrix* field, CSSEMatrix* mask, float from, float to, float angle,
                    bool turnForward, Visit visit);
    void DeleteInAreaTriangles(bool maxImage, TriangleListType* triangles, CSSEMatrix* field, CSSEMatrix* mask,
                               float from, float to, float angle, bool turnForward);
    void DeleteInAreaAffectedTriangles(bool maxImage, AffectedListType* affected, CSSEMatrix* field,
                                       CSSEMatrix* mask, float from, float to, float angle, bool turnForward);
    void MarkConfirmedByMasks(TriangleListType& candidates, CSSEMatrix (&masks)[3], bool turnForward);

    // ---- helpers of the cuts by a mask or a cap
    static bool IsClosedHoleOf(const EdgeListType& loop, const std::unordered_set<std::uint64_t>& opened);
    void CloseHole(const EdgeListType& loop, std::vector<int>& freeSlots);
    SSEPoint UnitNormalOf(const Triangle* triangle) const;
    static bool CapCoversTriangle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c, const SSEPoint& normal,
                                  const CSSE3dPolygon& cap, bool invert);

private:
    // One peeling pass over `list` (see CheckAndKillIgnored...): returns
    // whether any triangle left `list`.
    bool PeelOpenTrianglesOnce(TriangleListType& list, TriangleListType& collected, bool unlinkNeighbours);
};

} // namespace vek
