#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/mesh/htriangle.h"
#include "vekdll/mesh/stretch.h"

class CArchive;
class CH2DDelaunay;
class CHConvexHull3D;
class CSSE3dPolygon;
class CSSEMatrix;
class ZrCFieldRange;
namespace Geometry {
class CTriangulation;
}

// The library's plain triangle mesh: an unindexed triangle soup. Every
// triangle owns three private corners, three private corner normals and its
// own derived vectors, each kept in a structure-of-arrays block aligned to 16
// bytes so that one of them is one four-lane load. Nothing is shared between
// triangles; connectivity is rediscovered by comparing corner positions.
//
// Derived data is refreshed only on request: after corners change, S, T, V,
// the per-triangle boxes, the global box, the centre, the neighbours and the
// flags stay as they were until CalcSTV, CalcBoundingBox, CalcCenterPoint or
// CalcNeighbours runs.
//
// Copying: operator= shares the arrays (a shallow member copy: only one of the
// two meshes may then be destroyed); the copy constructor,
// CHTriangulation(CHTriangulation*) and CopyFromHTriangulation copy deeply.
class VEKDLL_API CHTriangulation {
public:
    // ---------------------------------------------------------------- life
    // A mesh of n triangles with all corners at the origin; scaleX..Z are the
    // grid-to-model factors and the first scan conversion resolution.
    CHTriangulation(int n, float scaleX, float scaleY, float scaleZ);
    // A deep copy of `other`, scaled like it.
    explicit CHTriangulation(const CHTriangulation* other);
    CHTriangulation(const CHTriangulation& other);

    // Meshes built from something else. Each constructor sets the scale
    // (sx, sy, sz) and runs one builder below; when that yields no triangle
    // it ends at once, otherwise it finishes the mesh as the builder's kind
    // needs (see the builders). Meshes of one field keep the smooth corner
    // normals of AppendTriangle and no neighbours beyond each cell's pair.
    //
    // One field cut by a threshold: box and S, T, V.
    CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz);
    CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz, int stepX,
                    int stepY);
    // The trailing flag is not read.
    CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz, int stepX, int stepY,
                    int xFrom, int xTo, int yFrom, int yTo, bool unused);
    CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz, int stepX, int stepY,
                    CSSE3dPolygon* polygon);
    // Two fields: neighbours, box, S, T, V and flat normals.
    CHTriangulation(CSSEMatrix* upper, CSSEMatrix* lower, bool above, float sx, float sy, float sz, int stepX,
                    int stepY);
    CHTriangulation(CSSEMatrix* upper, CSSEMatrix* lower, bool above, float sx, float sy, float sz, int stepX,
                    int stepY, int xFrom, int xTo, int yFrom, int yTo);
    // A polygon, a planar Delaunay result or a spatial hull: scaled by
    // (sx, sy, sz), then S, T, V, flat normals and box. `step` takes every
    // step-th polygon point; maxEdge is the refinement's side length.
    CHTriangulation(CSSE3dPolygon* polygon, float sx, float sy, float sz, int step, float maxEdge, bool fan,
                    bool refine);
    // The same, with each corner then held below (keepLower) or above the
    // heights of `field` plus `offset` where the field has data.
    CHTriangulation(CSSE3dPolygon* polygon, float sx, float sy, float sz, CSSEMatrix* field, bool keepLower,
                    float offset, int step, float maxEdge, bool refine);
    CHTriangulation(CH2DDelaunay* delaunay, float sx, float sy, float sz, bool flatten);
    CHTriangulation(CHConvexHull3D* hull, float sx, float sy, float sz, float divisor);
    // Bands between two rings: box, S, T, V with the per-triangle boxes,
    // flat normals and centre. The flags are not read.
    CHTriangulation(CSSE3dPolygon* a, CSSE3dPolygon* b, float sx, float sy, float sz, bool unused1, bool unused2);
    CHTriangulation(CSSE3dPolygon* a, CSSE3dPolygon* b, float sx, float sy, float sz, int steps, bool unused1,
                    bool unused2);
    // Indexed meshes are not converted here (they come in through the
    // incremental triangulation): these give an empty mesh of scale
    // (1, 1, 1) or the one given.
    explicit CHTriangulation(Geometry::CTriangulation* mesh);
    CHTriangulation(Geometry::CTriangulation* mesh, float sx, float sy, float sz);
    CHTriangulation(Geometry::CTriangulation* mesh, CSSE3dPolygon* polygon, float sx, float sy, float sz);
    ~CHTriangulation();
    // Shallow: afterwards both meshes use the same arrays.
    CHTriangulation& operator=(const CHTriangulation& other);

    // Empties the mesh, releasing what it held, and sets scale and scan
    // conversion resolution.
    void BaseInitialization(float scaleX, float scaleY, float scaleZ);
    // Discards the content and makes room for n triangles: corners, normals,
    // S, T and V zero, Index = position, Flag = -1, no neighbours. The
    // per-triangle boxes are left uninitialised. A count below 1 leaves the
    // mesh empty.
    void CreateTriangulation(int n);
    // Releases the triangle arrays; scale, box block and stretch list stay.
    void FreeTriangulation();

    // ---------------------------------------------------------------- access
    int GetNumTriangles() const { return NumTriangles; }
    t_htriangle* GetTriangles() const { return Triangles; }
    // Null for an index outside 0 .. n-1.
    t_htriangle* GetTriangle(int i) const;
    SSEPoint* GetEdgeArray() const { return EdgeArray; } // the corners, 3 per triangle
    SSEPoint* GetNormalArray() const { return NormalArray; }
    SSEPoint* GetMainNormalArray() const { return MainNormalArray; }
    SSEPoint* GetTArray() const { return TArray; }
    SSEPoint* GetSArray() const { return SArray; }
    SSEPoint* GetVArray() const { return VArray; }
    // Both return the per-triangle minima; the maxima are reached through
    // each triangle's MaxPoint.
    SSEPoint* GetMinPointArray() const { return MinPointArray; }
    SSEPoint* GetMaxPointArray() const { return MinPointArray; }
    // The box block: minimum, maximum, centre.
    SSEPoint* GetPointArray() const { return PointArray; }
    void GetMinPoint(SSEPoint& p) const { p = *MinPoint; }
    void GetMaxPoint(SSEPoint& p) const { p = *MaxPoint; }
    void GetCenterPoint(SSEPoint& p) const { p = *CenterPoint; }
    float GetScaleX() const { return ScaleX; }
    float GetScaleY() const { return ScaleY; }
    float GetScaleZ() const { return ScaleZ; }
    // Head of the working list; meaningful only after IndexTriangleList.
    t_htriangle* GetTriangleListHead() const { return TriangleListHead; }
    // Head of the border stretches that FindBorderLine leaves behind. The mesh
    // never releases them itself: a caller does so with DeleteStretchFromList.
    t_stretch* GetStretchListHead() const { return StretchListHead; }

    // ---------------------------------------------------------------- copies and joining
    // A deep copy of src's triangles, box block and scan conversion grid, not
    // of its scale. Neighbour pointers are copied as they are, so they still
    // point into src, and each MaxPoint holds src's MinPoint until CalcSTV.
    void CopyFromHTriangulation(const CHTriangulation* other);
    // Appends other's triangles behind this mesh's, with the same copying rule
    // for both halves, and recomputes the global box. Neighbour pointers of
    // both halves are stale afterwards.
    void AppendTriangulation(const CHTriangulation* other);

    // ---------------------------------------------------------------- construction from fields and polygons
    // Raster builders. A pixel (x, y) becomes the model point
    // (x * ScaleX, y * ScaleY, value): heights go in raw. A corner is valid
    // where its value lies strictly above (`above`) or below the threshold;
    // cells go to triangles by AppendTriangle, with the normals flipped for
    // `below`. Nothing is made when no pixel is valid.
    //
    // The unsampled builder reads the field four rows at a time. It makes
    // room for twice the valid pixels and keeps that count, so a zeroed tail
    // of triangles at the origin follows the real ones. Below the threshold
    // the cells between rows 4k+3 and 4k+4 stay empty.
    void CreateTriangulationFromSSEField(CSSEMatrix* field, float threshold, bool above);
    // Cells of stepX x stepY pixels, corners read with clamped coordinates;
    // the count is that of the triangles written. Room is estimated as twice
    // the valid pixels over the cell area; a mask of scattered pixels may
    // want more, and the build then stops where the room ends. A step below
    // 1 makes nothing.
    void CreateTriangulationFromSSEFieldSubSampled(CSSEMatrix* field, float threshold, bool above, int stepX,
                                                   int stepY);
    // Cells whose top-left corner lies in xFrom .. xTo - stepX and
    // yFrom .. yTo - stepY, both ends inclusive. The flag is not read.
    void CreateTriangulationFromSSEFieldSubSampled(CSSEMatrix* field, float threshold, bool above, int stepX,
                                                   int stepY, int xFrom, int xTo, int yFrom, int yTo, bool unused);
    // A corner is valid only if it also lies in the polygon's inner area.
    void CreateTriangulationFromSSEFieldSubSampled(CSSEMatrix* field, float threshold, bool above, int stepX,
                                                   int stepY, CSSE3dPolygon* polygon);
    // A corner is valid where upper lies strictly above lower; the mesh lies
    // on upper with `above`, else on lower with flipped normals.
    void CreateTriangulationFromSSEFieldSubSampledTwoFields(CSSEMatrix* upper, CSSEMatrix* lower, bool above,
                                                            int stepX, int stepY);
    void CreateTriangulationFromSSEFieldSubSampledTwoFields(CSSEMatrix* upper, CSSEMatrix* lower, bool above,
                                                            int stepX, int stepY, int xFrom, int xTo, int yFrom,
                                                            int yTo);
    // Ear clipping of the closed polygon (every step-th point), optionally
    // refined until no side is longer than about 2 * maxEdge. Corners only,
    // unscaled. A ring given closed, or with repeated points, is cut without
    // its repeats.
    void CreateTriangulationFromPolygon(CSSE3dPolygon* polygon, int step, float maxEdge, bool refine);
    // A fan from the polygon's geometric centre: (point n-1, point 0, centre)
    // first, then (point i-1, point i, centre).
    void CreateSimpleFanTriangulationFromPolygon(CSSE3dPolygon* polygon);
    // The hull's faces in ring order, grid coordinates divided by `divisor`.
    void CreateTriangulationFromHull3D(CHConvexHull3D* hull, float divisor);
    // The Delaunay faces, grid coordinates divided by 10, z set to 0 with
    // `flatten`; Flag 14 on every triangle.
    void CreateTriangulationFrom2DDelaunay(CH2DDelaunay* delaunay, bool flatten);
    // Accepted and ignored: indexed meshes are converted by the incremental
    // triangulation, not here.
    void CreateTriangulationFromCTriangulation(Geometry::CTriangulation* mesh);
    void CreateTriangulationFromCTriangulation(Geometry::CTriangulation* mesh, CSSE3dPolygon* polygon);

    // ---------------------------------------------------------------- raster cells
    // Turns the raster cell with corners A = (x0, y0, zA), B = (x1, y0, zB),
    // C = (x0, y1, zC), D = (x1, y1, zD) into none, one or two triangles
    // written from Triangles[index] on; index advances once per triangle.
    // leftMask says which of A (bit 0) and C (bit 1) are valid, rightMask
    // which of B (bit 0) and D (bit 1). The array must have room.
    void AppendTriangle(int leftMask, int rightMask, float x0, float x1, float y0, float y1, float zA, float zC,
                        float zB, float zD, int& index, bool flipNormals, bool fillCell);

    // ---------------------------------------------------------------- working list and neighbours
    // Links all triangles in array order through Next and Prev.
    void IndexTriangleList();
    void DeleteTriangleFromList(t_htriangle* triangle);
    // Finds for each triangle the triangles across its three edges by exact
    // comparison of corners, then flags those left with an open edge as
    // border triangles. Consumes the working list.
    void CalcNeighbours();
    void CalcNeighboursConstrained();
    // Flags every triangle with a missing neighbour as a border triangle.
    void FindBorderTriangles();

    // ---------------------------------------------------------------- borders
    // Chains the open edges into `polygon`. The walk only follows immediate
    // successors in the stretch list; when a stretch does not touch its
    // successor at either end the chain cannot go on, and rather than loop for
    // ever the call ends the program through vek::ExitProgram(EXIT_FAILURE),
    // which an application may replace with a handler that throws.
    void FindBorderLine(CSSE3dPolygon* polygon);
    void AppendStretchToList(t_stretch* stretch);
    // Unlinks the stretch and deletes it.
    void DeleteStretchFromList(t_stretch* stretch);

    // ---------------------------------------------------------------- box, centre and derived vectors
    void CalcBoundingBox();
    void CalcCenterPoint();
    // S, T, V and the per-triangle boxes from the corners.
    void CalcSTV();
    // Sets all three corner normals to the normalised S x T; MainNormal stays.
    void CalcNormalsFromVertices();
    // The same computation as CalcNormalsFromVertices, and nothing more.
    void OrientTrianglesTowardsBBoxCenter();

    // ---------------------------------------------------------------- scaling, shifting, rotating
    // Normals, main normals and the scan conversion grid never change here.
    void ScaleTriangulation();
    void ScaleTriangulationXY();
    // Stores the factors as scale and multiplies by them (it does not undo
    // the old scale), then box and derived vectors.
    void ReScaleTriangulation(float scaleX, float scaleY, float scaleZ);
    // Multiplies by the factors, keeping the scale, then box and derived vectors.
    void BlowTriangulation(float factorX, float factorY, float factorZ);
    // Moves corners, per-triangle boxes and the global box; the centre stays.
    void ShiftTriangulation(float dx, float dy, float dz);
    // Rotations by two or three angles in radians, about the origin or about
    // `centre`; then box and derived vectors. The centre point stays.
    void TransformVertices(float a, float b);
    void TransformVertices(float a, float b, float c);
    void TransformVerticesAboutPoint(float a, float b, SSEPoint& centre);
    void TransformVerticesAboutPoint(float a, float b, float c, SSEPoint& centre);

    // ---------------------------------------------------------------- scan conversion
    void GetScanConvResolution(float& x, float& y, float& z) const
    {
        x = ScanConvResolutionX;
        y = ScanConvResolutionY;
        z = ScanConvResolutionZ;
    }
    float GetScanConvDiagonal() const { return ScanConvDiagonal; }
    // The raster grid of the scan conversion, in model units per pixel.
    void SetScanConvResolution(float x, float y, float z);

    // Each triangle is sampled in its own parameters on a grid fine enough
    // to hit every pixel it covers, and each sample is stamped with a brush
    // that keeps the higher (Max) or lower (Min) value per pixel, whatever
    // the order of the triangles. S and T must be current.
    //
    // Into a raster made anew from the box, anchored at MinPoint, heights
    // relative to MinPoint.z plus offset, with a cross brush whose centre
    // stays off the outermost rows and columns; pixels no triangle reached
    // hold 0. A box taller than a field can hold throws CInvalidArgException
    // from the field's allocation.
    void ScanConvertTriangulationMax(CSSEMatrix* field, float offset);
    void ScanConvertTriangulationMin(CSSEMatrix* field, float offset);
    // The same in the frame of the box (min, max), so that several meshes
    // can share one raster layout.
    void ScanConvertTriangulationMax_MinMaxPoint(CSSEMatrix* field, float offset, SSEPoint& min, SSEPoint& max);
    void ScanConvertTriangulationMin_MinMaxPoint(CSSEMatrix* field, float offset, SSEPoint& min, SSEPoint& max);
    // Into the raster as it is, in absolute coordinates, up to the mesh's
    // maximum corner: a cross, or with `box` a 3 x 3 brush, or with `box`
    // and `large` a 5 x 5 one.
    void ScanConvertTriangulationMaxNoDelete(CSSEMatrix* field, bool box, bool large);
    void ScanConvertTriangulationMinNoDelete(CSSEMatrix* field, bool box, bool large);
    // As NoDelete with the cross, for the triangles whose P0 lies strictly
    // between yLow and yHigh.
    void ScanConvertTriangulationMaxNoDeleteInYArea(CSSEMatrix* field, float yLow, float yHigh);
    void ScanConvertTriangulationMinNoDeleteInYArea(CSSEMatrix* field, float yLow, float yHigh);
    // Single pixels over a fill just above the mesh, then 0 outside the
    // polygon. The polygon is left moved into raster coordinates.
    void ScanConvertThroughLineMax(CSSEMatrix* field, CSSE3dPolygon* polygon, float offset);
    void ScanConvertThroughLineMin(CSSEMatrix* field, CSSE3dPolygon* polygon, float offset);
    // Fills pixels within 1 of `value` that more than two direct neighbours
    // outside that band surround, with their mean; then a median and a
    // minimum (Top: maximum) filter, and what is left of `value` becomes 0.
    void RefineScanConvImage(CSSEMatrix* field, float value);
    void RefineScanConvImageTop(CSSEMatrix* field, float value);

    // ---------------------------------------------------------------- combination and persistence
    // Appends other's triangles, turned over with `flip`, and rebuilds S, T,
    // V, the per-triangle boxes, flat normals, box and centre; the per-
    // triangle maxima take the minima as after every copy, and no neighbour
    // is found. The scan conversion grid goes back to the scale.
    void Combine(CHTriangulation& other, bool flip);
    // Holds each corner at or below (keepLower) or at or above the field's
    // height plus offset where the field reads above 0.1. Derived data goes
    // stale.
    void ConstrainWithHeightField(bool keepLower, CSSEMatrix* field, float offset);
    // Entry points kept for callers; they change nothing.
    void ConstrainWithHeightField(bool keepLower, const ZrCFieldRange& range, float offset);
    void CutWithTriangulation(CHTriangulation* other);
    void MinimumZTriangulation(CHTriangulation* other);
    // Each filter rebuilds the mesh from the triangles it keeps, in order,
    // and finds the neighbours anew. Above/Below keep a triangle with a
    // corner strictly below/above z; Between drops one with a corner in
    // [low, high].
    void RemoveTrianglesAboveZ(float z);
    void RemoveTrianglesBelowZ(float z);
    void RemoveTrianglesBetweenZ(float low, float high);
    // Drops every triangle whose N0 lies within 0.05 in each lane of an
    // earlier triangle's N0. Quadratic.
    void RemoveTrianglesWithSameOrientation();
    // Stores or loads by the archive's mode: scale, scan grid and diagonal,
    // the count, the triangle records as memory images, then the arrays. A
    // loaded mesh has ScaleY = ScaleX and the scan grid of its scale; its
    // records point at its own arrays and have no neighbours or list links
    // (CalcNeighbours finds them again). A stream too short for its count
    // throws CArchiveException and leaves the mesh as it was.
    void Serialize(CArchive& ar);

private:
    // The cell loop of the sampled raster builders over the top-left corners
    // x = xFirst, xFirst + stepX, ... while x <= xLast (and the same in y);
    // `corners` says whether a pixel is valid and what height it gives.
    template <class Corners>
    void CreateSampled(Corners& corners, int count, int stepX, int stepY, long long xFirst, long long xLast,
                       long long yFirst, long long yLast);
    // Keeps the triangles for which keep(i) holds, in order, and finds the
    // neighbours anew.
    template <class Keep>
    void KeepTriangles(Keep keep);
    // The band between two rings: for each segment of a (b read with a's
    // count, scaled by the mesh's scale) the pair (a_i, a_i+1, b_i) and
    // (b_i, a_i+1, b_i+1), the closing segment first, written from `first` on.
    void LayRuledBand(CSSE3dPolygon& a, CSSE3dPolygon& b, int first);
    void CreateRuledBand(CSSE3dPolygon* a, CSSE3dPolygon* b);
    // steps + 1 bands between rings moved from a towards b.
    void CreateLoftedBands(CSSE3dPolygon* a, CSSE3dPolygon* b, int steps);
    // A triangle for each face counted by the hull, along its face ring from
    // the entry, each corner divided by `divisor`.
    void CopyFaces(const CHConvexHull3D& hull, float divisor);
    // Exchanges every member but the stretch list with `other`.
    void SwapContents(CHTriangulation& other);
    void StoreTo(CArchive& ar) const;
    void LoadFrom(CArchive& ar);
    // Finishing steps of the constructors.
    void FinishRasterMesh();
    void FinishTwoFieldMesh();
    void FinishPlanarMesh();
    void FinishBand();
    // Corners, normals, main normal, T, S, V and Index and Flag of src's
    // triangle `from` into this mesh's triangle `to`; the per-triangle box
    // takes src's MinPoint in both its entries.
    void CopyTriangleData(const CHTriangulation& src, int from, int to);
    // All of src's triangles, neighbour pointers included, from triangle
    // `offset` of this mesh on.
    void CopyTrianglesFrom(const CHTriangulation& src, int offset);
    // Every corner p becomes rotation . (p - centre) + centre, or rotation . p
    // without a centre; then box and derived vectors.
    void RotateCorners(t_ssematrix3& rotation, const SSEPoint* centre);
    void AimTriangleAtEntries(int i);
    void ReleaseStretches();

    // Null until the constructors' BaseInitialization, so that it may release
    // whatever the object holds whether it runs first or again.
    SSEPoint* EdgeArray = nullptr;
    SSEPoint* NormalArray = nullptr;
    SSEPoint* MainNormalArray = nullptr;
    SSEPoint* TArray = nullptr;
    SSEPoint* SArray = nullptr;
    SSEPoint* VArray = nullptr;
    t_htriangle* Triangles = nullptr;
    int NumTriangles = 0;
    t_htriangle* TriangleListHead = nullptr;
    float ScaleX = 1.0f;
    float ScaleY = 1.0f;
    float ScaleZ = 1.0f;
    float ScanConvResolutionX = 1.0f;
    float ScanConvResolutionY = 1.0f;
    float ScanConvResolutionZ = 1.0f;
    SSEPoint* PointArray = nullptr; // minimum, maximum, centre
    SSEPoint* MinPoint = nullptr;
    SSEPoint* MaxPoint = nullptr;
    SSEPoint* CenterPoint = nullptr;
    SSEPoint* MinPointArray = nullptr;
    SSEPoint* MaxPointArray = nullptr;
    float ScanConvDiagonal = 0.0f;
    t_stretch* StretchListHead = nullptr;
};
