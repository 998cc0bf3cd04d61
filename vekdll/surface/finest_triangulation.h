#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <vector>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/platform/c_event.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/platform/c_string.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/border_chain_count.h"
#include "vekdll/surface/finest_records.h"
#include "vekdll/surface/triangle_graph.h"

class CSSEMatrix;
class ZrCFinestTriangulation;
namespace Geometry {
class CTriangulation;
}

namespace vek::detail {
struct ScanLattice;
template <class Owner>
struct ScanWorkerRecord;
struct FinestCellCorners;
} // namespace vek::detail

namespace vek {
using FinestGraph = TriangleGraph<ZrCFinestTriangulation, t_hfinesttriangle, t_hfinestedge>;
}

using t_CountTrianglesThreadParams = vek::CountTrianglesParams<t_hfinesttriangle, t_hfinestedge>;

// The grid that a finest triangulation lays over a raster: lattice points
// (X0 + i Step, Y0 + j Step) for i < Columns and j < Rows. A cell lies
// between lattice rows j and j + 1 and is named by its lower left point.
struct VEKDLL_API t_finestlattice {
    std::int32_t X0;
    std::int32_t Y0;
    std::int32_t Step;
    std::int32_t Columns;
    std::int32_t Rows;
};

// One band of cell rows and the worker that triangulates it into a
// sub-triangulation of its own.
struct VEKDLL_API t_finestbandrecord {
    std::int32_t FirstRow = 0;  // cell rows of the band, inclusive; empty if LastRow < FirstRow
    std::int32_t LastRow = -1;
    ZrCFinestTriangulation* SubTriangulation = nullptr;
    CSSE3dPolygon* Polygon = nullptr;
    CSSEMatrix* Field = nullptr;
    CEvent Done;
    // What the worker needs beyond the inputs: the grid, whether cells
    // crossed by the polygon are cut (the marching) or left out, and, on
    // return, how many of the sub-triangulation's vertices are its own. The
    // rest, the band's upper lattice row, belongs to the next band.
    t_finestlattice Lattice{};
    bool Marching = false;
    std::int32_t OwnVertices = 0;
    // What stopped the worker (exhausted memory), for the driver to pass on.
    std::exception_ptr Failure;
};

// The 2.5D triangulation of a raster at its finest grid: every cell of the
// grid inside a polygon becomes triangles over the cell's corners, built in
// fifteen row bands on as many threads, each band a sub-triangulation of its
// own, and joined in band order. It shares the triangle graph with the
// adaptive triangulation, on a lighter record, and has no finalized state:
// its triangles live in TriangleList.
class VEKDLL_API ZrCFinestTriangulation : public vek::FinestGraph {
public:
    using Base = vek::FinestGraph;
    using Base::ClearEdgeList;
    using Base::HighEdgeLengthInsertPoints;
    using TriangleRows = CList<CList<t_hfinesttriangle*>*>;

    static constexpr int kRowBands = 15;
    // The angle flip leaves FlipState alone here.
    static constexpr bool kAngleFlipSetsFlipState = false;
    // Rims of a combination are farther apart on a raster of the finest
    // grid, so the middle line and the extra ring start later.
    static constexpr float kMidPointNearGap = 5.0f;
    static constexpr float kMidPointWideGap = 10.0f;
    static constexpr float kBorderDistanceSearchStart = 9999.9f;

    ZrCFinestTriangulation();
    explicit ZrCFinestTriangulation(int numVertices);
    ~ZrCFinestTriangulation();
    ZrCFinestTriangulation(const ZrCFinestTriangulation&) = delete;
    ZrCFinestTriangulation& operator=(const ZrCFinestTriangulation&) = delete;

    // ---- life (finest_triangulation_lifetime.cpp)
    void ClearEdgeList() { ClearEdgeList(&EdgeList); }
    // A debugging hook; it changes nothing.
    void CheckConsistency() const {}
    // Swaps the two vertices, and Used with Mark1.
    static void FlipEdge(t_hfinestedge* edge);
    static void FlipTriangleOrientationAndNeighbours(t_hfinesttriangle* triangle)
    {
        FlipTriangleOrientationWithNeigbour(triangle);
    }
    // Copies the vertices and the triangles of `source`, linking the copies
    // afresh by their vertices in list order. With `field`, every vertex
    // takes its height from the field's cell under it where the field holds
    // data (not 0). With `flag` the rows of `source` are copied too, naming
    // the copies. The copy links by its own search mode.
    void DeepCopyTriangulation(const ZrCFinestTriangulation& source, CSSEMatrix* field, bool flag);
    // In `iterations` rounds splits at the centroid every triangle with a
    // side of at least `limit` (see the graph's form).
    void HighEdgeLengthInsertPoints(float limit, int iterations) { Base::HighEdgeLengthInsertPoints(limit, iterations); }

    CList<t_hfinesttriangle*>* GetTriangleListPointer() { return &TriangleList; }
    int GetNumTriangles() const { return static_cast<int>(TriangleList.GetCount()); }
    CList<t_hfinestedge*>& GetEdgeList() { return EdgeList; }
    SSEPoint GetMinPoint() const { return *MinPoint; }
    SSEPoint GetMaxPoint() const { return *MaxPoint; }

    // ---- the rows of the last build
    // One list of triangles per cell row, in row order; null when freed.
    TriangleRows*& GetAllRowsTriangleList() { return AllRowsTriangleList; }
    // Destroys each row list and the list of rows; the triangles stay.
    void FreeListPointer();
    // Moves the row lists of `from` to the tail of `to`, in order.
    static void CopyTrianglesInTriangleList(TriangleRows* from, TriangleRows* to);
    // Takes band `other` over: its first `count` vertices go to this store
    // from index `start` on, its triangles (renumbered by `start`) to
    // TriangleList and its rows to the tail of this object's rows. The
    // other's vertices from `count` on must be those that this store holds,
    // or is about to take, from index start + count on.
    void CopyDataFromOtherTriangulation(ZrCFinestTriangulation& other, int start, int count);

    // ---- building (finest_triangulation_bands.cpp)
    // The grid of `step` over the polygon's box, in fifteen bands of cell
    // rows. Triangulate keeps the cells whose four corners lie inside the
    // polygon, two triangles each; TriangulateWithMarching cuts the cells
    // crossed by the polygon at it as well, every triangle marked Marched.
    // Heights come from `field` at the lattice points (0 without a field).
    // Links are made across all rows, and each row's diagonals are flipped
    // towards the surface. With `finalize` the bounding box is calculated,
    // ready for the scan conversion.
    void Triangulate(CSSE3dPolygon& polygon, CSSEMatrix* field, int step, bool finalize);
    void TriangulateWithMarching(CSSE3dPolygon& polygon, CSSEMatrix* field, int step, bool finalize);
    // Measuring aid, not part of the building rule: the number of bands the
    // two builds use, 1 to 15 (15 unless set), so that one band can be
    // timed against fifteen. The result does not depend on it.
    void SetRowBands(int bands);
    int GetRowBands() const { return RowBands; }

    // ---- one cell (finest_triangulation_cells.cpp)
    // The triangles of the cell with lower left corner (x, y) and side
    // `step`, appended to `list`, each marked Marched. A corner is inside
    // where `mask` is not 0 at it, or without a mask where it lies in the
    // polygon's inner area. The inside corners and the points where the
    // cell's sides cross the polygon bound the part of the cell inside; it
    // is cut into a fan from its first inside corner. Corners and crossings
    // are taken from the vertex store where they are (0.0001 in 3D), and
    // appended otherwise, at heights from `field`.
    void MarchingSquare(int x, int y, int step, CSSEMatrix* field, CSSEMatrix* mask, CSSE3dPolygon* polygon,
                        CList<t_hfinesttriangle*>* list);
    // A new triangle over vertices a, b, c at the tail of `list`, with
    // Marched set to `flag`, unless CheckIsTriangle refuses the corners;
    // with `field` the corners first take its heights under them.
    t_hfinesttriangle* BuildTriangleFromPoints(int a, int b, int c, CSSEMatrix* field,
                                               CList<t_hfinesttriangle*>* list, bool flag);
    // True only if the three distances, over four lanes, exceed 0.00005.
    static bool CheckIsTriangle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c);

    // ---- rows (finest_triangulation_rows.cpp)
    // Links the triangles of each pair of consecutive rows: every triangle
    // u of a row against every w of the next, FindNeighbours(w, u), until u
    // has three neighbours. In the indexed search mode the candidates w are
    // found by their sides rather than by the scan, in the scan's order,
    // which gives the same links.
    void FindNeighboursFromList(TriangleRows* rows);
    // Flips, within each cell, the diagonal of two triangles of `list`
    // towards the one whose ends differ less in height, where the four
    // corners are in convex position; marks each triangle RowChecked.
    void CheckFlipEdgesInRow(CList<t_hfinesttriangle*>* list);
    // Flips the side `side` of `triangle` with its neighbour, the four outer
    // neighbours keeping their back pointers. False if there is none.
    bool DoEdgeFlip(t_hfinesttriangle* triangle, int side);
    // The corner of the neighbour across `side` opposite the shared side;
    // the zero point if there is none.
    SSEPoint GetVertexFromNeighbourTriangle(int side, const t_hfinesttriangle* triangle) const;

    // ---- geometry (finest_triangulation_lifetime.cpp)
    void CalcBoundingBox();
    void CalcCenterPoint(SSEPoint& result) const;
    // The unit normal of (V1 - V0) x (V2 - V0); the division is skipped for
    // a cross product of zero.
    void ComputeNormalVectorOfTriangle(const t_hfinesttriangle& triangle, SSEPoint& result) const;
    // The records keep no normal: the seam code's request for them does
    // nothing, and the facing of the whole is summed from computed ones.
    void ComputeNormalVectorsOfTriangles() {}
    bool CalcNormalDirection() const;

    // ---- exchange with the indexed mesh (finest_triangulation_exchange.cpp)
    // A new indexed mesh of all vertices and of every triangle of
    // TriangleList, in list order, with vertex normals; null when the list is
    // empty. The caller owns the mesh.
    Geometry::CTriangulation* CreateCTriangulationFromFinestTriangulation() const;
    // Writes that mesh to the file at `path`, created or emptied; does nothing
    // for an empty TriangleList, and a file that does not open is passed over
    // in silence.
    void ExportTriangulation(const CString& path) const;

    // ---- scan conversion (finest_triangulation_scan_conversion.cpp)
    // As in the adaptive triangulation, on TriangleList, over ten bands and
    // ten fields. The facing forms compute each triangle's normal.
    void SetScanConvResolution(float x, float y, float z);
    void FastScanConvertTriangulation(CSSEMatrix* field, float background, SSEPoint& origin, bool keepMax);
    void FastScanConvertTriangulationOnlyVisible(CSSEMatrix* field, float background, SSEPoint& origin, bool keepMax);
    void FastScanConvertTriangulationOnlyUnvisible(CSSEMatrix* field, float background, SSEPoint& origin,
                                                   bool keepMax);
    void FastScanConvertTriangulationWithZRange(CSSEMatrix* field, float background, SSEPoint& origin, float zMax,
                                                float zMin, bool keepMax);
    void ScanConvertTriangulationWithLimitedArea(CSSEMatrix* field, const CList<t_hfinesttriangle*>* list,
                                                 const SSEPoint& origin, int first, int last, bool keepMax) const;
    void ScanConvertTriangulationWithLimitedAreaOnlyVisible(CSSEMatrix* field, const CList<t_hfinesttriangle*>* list,
                                                            const SSEPoint& origin, int first, int last,
                                                            bool keepMax) const;
    void ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(CSSEMatrix* field,
                                                              const CList<t_hfinesttriangle*>* list,
                                                              const SSEPoint& origin, int first, int last,
                                                              bool keepMax) const;
    void ScanConvertTriangulationWithLimitedAreaWithZRange(CSSEMatrix* field, const CList<t_hfinesttriangle*>* list,
                                                           const SSEPoint& origin, int first, int last, float zMax,
                                                           float zMin, bool keepMax) const;

protected:
    friend Base;

    CList<t_hfinesttriangle*>& SelectionList() { return CombineTriangleListFirst; }

    TriangleRows* AllRowsTriangleList = nullptr;
    // TriangleList comes from the graph.
    float ScanResolutionX = 1.0f;
    float ScanResolutionY = 1.0f;
    float ScanResolutionZ = 1.0f;
    float ScanResolutionXY = 1.4142135f;
    // One aligned block of two points, made by the constructor.
    SSEPoint* MinPoint = nullptr;
    SSEPoint* MaxPoint = nullptr;
    CSSE3dPolygon CombinePolygon;
    int FirstVertexCount = 0;
    CList<t_hfinestedge*> EdgeList{10};
    CList<t_hfinestedge*> EdgeForMergeList{10};
    CList<t_hfinestedge*> BorderEdgeList{10};
    CList<t_hfinestedge*> CombinedEdgeList{10};
    CList<t_hfinesttriangle*> CombineTriangleListFirst{10};
    CList<t_hfinesttriangle*> CombineTriangleListSecond{10};
    std::array<t_finestbandrecord, kRowBands> Bands;

private:
    void AllocatePointBlock();
    void BuildInBands(CSSE3dPolygon& polygon, CSSEMatrix* field, int step, bool finalize, bool marching);
    // The worker of one band.
    static void TriangulateBand(t_finestbandrecord& band);
    // Links row `first` of AllRowsTriangleList with the row after it.
    void LinkRowsAt(int first);

    using ScanWorker = void (*)(const vek::detail::ScanWorkerRecord<ZrCFinestTriangulation>&);
    vek::detail::ScanLattice ScanLatticeFor(const SSEPoint& origin) const;
    void ScanConvertInTenBands(CSSEMatrix* field, float background, SSEPoint& origin, bool keepMax,
                               ScanWorker worker, float zMax, float zMin);

    int RowBands = kRowBands;
};
