#pragma once

#include <vector>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/polygons/resolution_data.h"

class CArchive;
class CPixelChain;
class CSSEcharMatrix;
class CSSEMatrix;

// The library's one polyline: an ordered run of points in space. Each
// coordinate lives in an array of its own, 16-byte aligned and allocated in
// whole blocks of four, so that one __m128 holds one coordinate of four
// successive points. A second copy of x, y and z scaled into world units
// (NormalizeXYZ) serves the distance scans.
//
// A polygon has no closed flag and no repeated end point; each method says
// whether it joins the last point to the first.
//
// Copying: operator= shares the arrays (a shallow member copy), the copy
// constructor and CreateSimilar make deep copies.
class VEKDLL_API CSSE3dPolygon {
public:
    // ---------------------------------------------------------------- life
    CSSE3dPolygon();
    CSSE3dPolygon(const CSSE3dPolygon& other);
    // One point per `step` pixels of the chain (every pixel for step below 2), z = 0.
    CSSE3dPolygon(CPixelChain& chain, int step);
    ~CSSE3dPolygon();
    // Shallow: afterwards both objects own the same arrays and box block, so
    // only one of them may be destroyed.
    CSSE3dPolygon& operator=(const CSSE3dPolygon& other);
    // Moving takes over every member of `other`, box block included, as the
    // shallow copy does, and leaves `other` as a new polygon with a box block
    // of its own, so that each allocation is released once: a polygon can be
    // returned from a function and assigned from a temporary. Like the copy,
    // a move releases nothing that this polygon held (it may be shared), so
    // its own box block stays allocated; both may throw CMemoryException
    // for the new box block, before anything has changed.
    CSSE3dPolygon(CSSE3dPolygon&& other);
    CSSE3dPolygon& operator=(CSSE3dPolygon&& other);

    void Create(int numPoints);
    // x, y and z of every point, the box points and the box flag of `src`.
    void CreateSimilar(CSSE3dPolygon* src);
    void Free();
    int GetNumPoints() const;
    bool IsBoundingBoxCalculated() const;
    void Serialize(CArchive& ar);

    // ---------------------------------------------------------------- point reads
    // An index outside 0 .. NumPoints-1 leaves the outputs untouched, except
    // where a form says it zeroes its SSEPoint first.
    void GetPoint(int i, float& x, float& y, float& z) const;
    void GetPointX(int i, float& x) const;
    void GetPointY(int i, float& y) const;
    void GetPointZ(int i, float& z) const;
    void GetPointXY(int i, float& x, float& y) const;
    void GetPointXZ(int i, float& x, float& z) const;
    void GetPointZY(int i, float& z, float& y) const;
    void GetPointSSE(int i, SSEPoint& p) const;
    void GetPointXYSSE(int i, SSEPoint& p) const;
    void GetPointSSEClosed(int i, SSEPoint& p) const;
    void GetPointNormalized(int i, float& x, float& y, float& z) const;
    void GetPointNormalizedXY(int i, float& x, float& y) const;
    void GetPointNormalizedSSE(int i, SSEPoint& p) const;
    void GetPointNormalizedXYSSE(int i, SSEPoint& p) const;

    // ---------------------------------------------------------------- point writes
    // An index out of range does nothing; any other write clears the box flag.
    void SetPoint(int i, float x, float y, float z);
    void SetPointSSE(int i, SSEPoint& p);
    void SetPointX(int i, float x);
    void SetPointY(int i, float y);
    void SetPointZ(int i, float z);
    void SetPointXY(int i, float x, float y);
    void SetPointXZ(int i, float x, float z);
    void SetPointZY(int i, float z, float y);
    void SetPointNormalized(int i, float x, float y, float z);
    void SetPointNormalizedSSE(int i, SSEPoint& p);

    // ---------------------------------------------------------------- whole-polygon writes
    void SetAllYValues(float y);
    void SetAllZValues(float z);
    void AddValueToAllXValues(float dx);
    void AddValueToAllYValues(float dy);
    void NormalizeXYZ(t_resolutiondata& resolution);

    // ---------------------------------------------------------------- box and centre
    void CalcBoundingBox();
    void GetBoundingBox2D(int& xmin, int& ymin, int& xmax, int& ymax);
    void GetBoundingBox3D(float& xmin, float& ymin, float& zmin, float& xmax, float& ymax, float& zmax);
    SSEPoint GetTopRight() const;
    SSEPoint GetBottomLeft() const;
    void CalcGeometricCenter();
    void GetGeometricCenter(SSEPoint& centre) const;

    // ---------------------------------------------------------------- measures of the closed line
    float CalcCircumference() const;
    // Twice the signed area in the plane, positive counter-clockwise.
    float CalcXYArea() const;
    float CalcXZArea() const;
    float CalcYZArea() const;

    // ---------------------------------------------------------------- nearest points
    // Every point, by spatial distance. -1 if none is nearer than 10000000.
    int ClosestPoint(SSEPoint& p) const;
    // Every point with from <= i < to.
    int ClosestPointWithIntervalIndex(SSEPoint& p, int from, int to) const;
    // The coordinate-wise forms look at the even indices below NumPoints-1 only.
    int ClosestPointX(float x) const;
    int ClosestPointY(float y) const;
    int ClosestPointXWithIntervalY(float x, float lo, float hi) const;
    int ClosestPointYWithIntervalX(float y, float lo, float hi) const;
    int ClosestPointXY(float x, float y) const;
    int ClosestPointYZ(float y, float z) const;
    bool PointAlreadyThereInArrayXY(int upto, SSEPoint& p, float tol) const;

    // ---------------------------------------------------------------- distance scans (normalised units)
    // Over whole blocks of four points only; after each block read, `skip`
    // further blocks are jumped over.
    float GetMinEuclDistance(float x, float y, float z, int skip) const;
    float GetMinEuclDistanceSpecial(float x, float y, float z, int skip) const;
    float GetMinEuclDistanceXY(float x, float y, int skip) const;

    // ---------------------------------------------------------------- rasterisation into fields
    // Whether (x, y) lies in the inner area of the closed line: an even-odd
    // count of the edges crossed by a ray towards growing y, testing only
    // every `step`-th chord (plus the chord that closes the thinned line).
    // Points on the box rim pass the box test; a point on an edge belongs to
    // the area the edge bounds from below. Fewer than 3 points contain nothing.
    bool PointInLineInnerArea(SSEPoint& p, int step);
    bool PointInLineInnerArea(float x, float y, int step);
    // The same count on the normalised coordinates, while the box test still
    // uses the plain box: the caller chooses a resolution and a point that the
    // plain box holds.
    bool PointInLineInnerAreaNormalized(SSEPoint& p, int step);
    bool PointInLineInnerAreaNormalized(float x, float y, int step);
    // Whether every point of `other` lies in the inner area (step 1); false
    // when either line has no point.
    bool PolygonInThisPolygon(CSSE3dPolygon& other);
    // Keeps, in order, the points of this line that lie in the inner area of
    // `other` (step 1); none survive an `other` of fewer than 3 points.
    void KeepPointsInInner(CSSE3dPolygon& other);

    // Polygon coordinates are pixel coordinates, x the column and y the row.
    // A coordinate is rounded as v + 0.5 truncated towards zero. A plain
    // pixel is clamped to the field; a splat writes the 3 x 3 pixels around
    // its centre, which is clamped to 1 ... Size - 2 so that the splat stays
    // whole in the field. A field without an image is left alone.
    //
    // Each point as a plain pixel of its own height z at the rounded (x, y).
    void DrawInMatrix(CSSEMatrix* m);
    // Each point with `value`: with drawXZ a splat at (x + offsetX, z +
    // offsetY), else with drawZY a plain pixel at (z, y) without offsets, else
    // a splat at (x + offsetX, y + offsetY). Nothing joins the points.
    void DrawInMatrix(float value, CSSEMatrix* m, bool drawZY, float offsetX, float offsetY, bool drawXZ);
    // Plots the first 4 (NumPoints >> 2) points with `value`, then from each
    // of them scans to the left of the way to the next one (the line closed
    // over those points, y pointing up) for a pixel within the tolerance of
    // `value`: 0.1 when the scan runs towards larger rows, 1.0 otherwise. The
    // pixels passed on the way to such a pixel get value + 5; a scan that
    // reaches the rim without one fills nothing. A dense counter-clockwise
    // line so fills its inside.
    void DrawInMatrixAndFill(float value, CSSEMatrix* m);
    // The even-odd fills of a band of rows: rows from the line's smallest y
    // (or yFrom, if larger) to its largest (or yTo, if smaller), with a margin
    // of 5 around the band and the line's columns, the band and the columns
    // clamped to the field first. A pixel gets `value` where its (x, y) lies
    // in the inner area of a copy of the line, subsampled by 5 if asked and
    // rid of its near-duplicate points; the line itself is not plotted, and
    // rows and columns beyond the field reach the rim pixels. The line's box
    // is recalculated. Lines of fewer than 3 points fill nothing.
    void DrawInMatrixAndFillFine(float value, CSSEMatrix* m, bool subsample, float yFrom, float yTo);
    void DrawInCharMatrixAndFillFine(char value, CSSEcharMatrix* m, bool subsample, float yFrom, float yTo);
    // The same test on every third column and row, with a margin of 9 and
    // the band not clamped to the field, each inner grid point written as a
    // splat, so that the splats touch: a cheap mask.
    void DrawInMatrixAndFillCoarse(float value, CSSEMatrix* m, bool subsample, float yFrom, float yTo);
    // Each point of the line in x and z sweeps a column of splats from row
    // z + offsetZ (rounded) towards row 1 (toLowerRows) or towards the last
    // row, in column x + offsetX (rounded, at least 1): the area between the
    // line and one rim is closed, as behind a front.
    void DrawInMatrixAndFillToOneSideFront(float value, CSSEMatrix* m, float offsetX, float offsetZ, bool toLowerRows);
    // Every pixel of `target` within 20 of `value` (a marked inner pixel)
    // becomes its distance to this line in world units: the planar distance
    // up to 0.35, beyond it blended towards the spatial distance to the
    // line, with the pixel's height from `heights`, fully from 0.5 (steepRamp)
    // or 2.0 on. Only the line's box with a margin of 4 is visited. The
    // distances run over whole blocks of four points, leaving out blocks so
    // that about every 0.1 units of the line is read; the normalised copy is
    // made anew from `res`.
    void InternalAreaDistanceTransform(float value, CSSEMatrix* heights, CSSEMatrix* target, t_resolutiondata& res, bool steepRamp);

    // ---------------------------------------------------------------- resampling
    // Most of the methods below rebuild the line: the normalised copy then
    // holds no data until the next NormalizeXYZ, and the box flag is false.
    //
    // The inserting forms put points on each segment that is longer than
    // `spacing` in x or y (or z, for ReParametrizeXYZ), so that no gap stays
    // much wider; no source point moves and a dense line isn't thinned. At
    // most 99999 points come out. `indices`, if not null, must have NumPoints
    // entries and receives the new index of each source point.
    void ReParametrize(float spacing);
    void ReParametrize(float spacing, int* indices);
    // The open line: the last point closes no segment and isn't written.
    void ReParametrizeOpen(float spacing);
    // A segment long in z alone gets no point at all, not even its start.
    void ReParametrizeXYZ(float spacing);
    // Points a `spacing` of arc length apart along the closed line in space,
    // from point 0 on.
    void ReParametrize3D(float spacing);
    // Every `step`-th point; the place after the last one taken gets the
    // mean of the first and the last taken (closeAtMean) or the last point.
    void Subsample(int step, bool closeAtMean);
    // The points of smallest x, largest x, smallest y and largest y first,
    // then the others subsampled: a sparse point set, no longer a line.
    void ResortAndSubsample(int step);
    // Drops each point that lies within 1 (city-block) of an earlier one,
    // except right after a dropped point.
    void RemoveEqualPointsXY();
    // Resamples the shorter of the two lines by index to the length of the longer.
    void AdaptPolygons(CSSE3dPolygon* other);

    // ---------------------------------------------------------------- heights
    void AdaptToHighestZValue();
    void AdaptToLowestZValue();
    // A moving mean of three heights along the closed line; every point also
    // takes x and y of its successor, so the line shifts by one index.
    void FilterZValues();
    // Inverse-distance heights from every `step`-th point, weighted by 1/d²
    // (InterpolateZ) or 1/d (InterpolateZLow); a point within eps (squared)
    // of the query gives its own height.
    float InterpolateZ(float x, float y, int step, float eps);
    float InterpolateZLow(float x, float y, int step, float eps);

    // ---------------------------------------------------------------- editing against other lines
    // Point i moves the fraction t of the way to point i of `other`.
    void MoveTowardsPolygon(CSSE3dPolygon* other, float t);
    // Replaces the part of the closed line between its smallest and largest x
    // on one side by the course of `other`.
    void ResetPointsBetweenBB(CSSE3dPolygon* other);
    // The convex hull in the plane, counter-clockwise from its lowest point.
    void ReplaceByConvexHullXY();
    // Keep the points strictly on one side of the geometric centre.
    void KeepLeftHalfPlaneX();
    void KeepRightHalfPlaneX();
    void KeepLowerHalfPlaneY();
    void KeepUpperHalfPlaneY();
    // Keeps the points whose nearest point of `other` lies at a larger y.
    void KeepPointsBelow(CSSE3dPolygon& other);
    // Indices of the points strictly inside the box lower .. upper in x and
    // y; `out` must have room for NumPoints entries.
    void GetPointsInPatch(SSEPoint& upper, SSEPoint& lower, int* out, int& count);
    void AppendPoints(CSSE3dPolygon& other);

    // ---------------------------------------------------------------- order of the points
    // Makes point `start`, or the point nearest to p, the first one; the order
    // stays. `indices`, if not null, is an array of NumPoints entries that is
    // rotated the same way.
    void ChangeStartPoint(SSEPoint& p, int* indices);
    void ChangeStartPoint(int start, int* indices);
    void InvertPolygonDirection();
    // Starts the line right of its centre, at the point nearest the centre's height.
    void RotateIndices();
    // Meant to align two lines of one length; it leaves both orders as they
    // are (see the definition) and only rebuilds them.
    void RotateIndices(CSSE3dPolygon* other);
    // Starts the line at the point of the flattest elevation angle seen from
    // the centre, among those on the positive side in the named plane.
    void RotateIndicesXY();
    void RotateIndicesXZ();
    void RotateIndicesYZ();

    // ---------------------------------------------------------------- turning, mirroring, noise
    void RotateZ(float a);
    void RotateXYZ(float a, float b, float c);
    // These two apply a fixed matrix of the angles that isn't a rotation in
    // the strict sense, and leave the box calculated.
    void TransformVertices(float a, float b);
    void TransformVerticesAboutCenter(float a, float b);
    // z becomes the centre's z (twice: twice that) minus z.
    void FlipOrientationZ(bool twice);
    void FlipOrientationAndMoveCoordsZ(float value);
    void SwapXandZCoord();
    void SwapYandZCoord();
    // `out` becomes this line mirrored at x = 0.
    void GetMirrorPolygon(CSSE3dPolygon* out);
    // The same noise on every call: the generator is seeded afresh each time.
    void AddNoiseXY(float amplitude);

    // ---------------------------------------------------------------- offsetting
    // Moves every point by (dx, dy, dz); the box is calculated afterwards.
    void ShiftLine(float dx, float dy, float dz);
    // Scales every point per coordinate, about the origin or about the
    // geometric centre; with reparametrize, ReParametrize(0.6) follows, so
    // that a grown line stays dense enough for the point-wise fills.
    void BlowLine(float sx, float sy, float sz, bool reparametrize);
    void BlowLineAroundCenter(float sx, float sy, float sz, bool reparametrize);
    // Moves every point by `distance` straight away from (Dilation) or
    // towards (Erosion) the geometric centre, taken before useHull replaces
    // the points by their convex hull in the plane. A true offset only of a
    // convex line around its centre: a point nearer to the centre than the
    // distance crosses it on erosion, and a point on the centre divides by 0.
    void DoQuasiMinkowskiDilation(float distance, bool useHull);
    void DoQuasiMinkowskiErosion(float distance, bool useHull);
    void DoQuasiMinkowskiDilationCenter(float distance, SSEPoint& centre);
    // A half disc of K samples of the given radius (K a multiple of four) is
    // laid on every point, and the samples that fall inside another point's
    // half disc, or inside the line (DilateExact) or outside it (ErodeExact),
    // are dropped: the line becomes the surviving samples, in order of their
    // points, a cloud rather than a traced outline. Dilation takes about one
    // sample per mean segment length along a full circle; erosion takes K
    // from the radius alone. A line that would lose every sample keeps its
    // points. The cost grows with n^2 K^2: meant for short lines and small
    // radii.
    void DilateExact(float radius);
    void ErodeExact(float radius);

private:
    bool InRange(int i) const { return i >= 0 && i < NumPoints; }
    void AllocateBoxBlock();
    void SwapWith(CSSE3dPolygon& other) noexcept;
    // Releases the six arrays whatever the count says, so that the zero-size
    // arrays of an empty polygon don't outlive it.
    void ReleaseArrays();
    void CopyBoxPointsFrom(const CSSE3dPolygon& src);
    // The ending of the methods that rebuild the line in a local polygon:
    // this polygon becomes similar to the first `count` points of `local`.
    void TakePointsOf(CSSE3dPolygon& local, int count);
    // Point k of the rebuilt line is old point first + k * direction, wrapping
    // at NumPoints: a rotation for direction 1, a reversal for -1.
    void ReorderPoints(int first, int direction);
    // Rebuilds the line of the points whose entry in `keep` is true, in order.
    void KeepMarkedPoints(const std::vector<bool>& keep);
    // The common end of the RotateIndicesXY/XZ/YZ searches, on the centre
    // already calculated: `lanes` masks the coordinates of the distance.
    void StartAtFlattestElevation(__m128 lanes, const std::vector<bool>& qualifies);
    // The body of the inserting resampling forms: segments of the closed or
    // the open line, judged long by x and y, or by z as well.
    void InsertPointsOnLongSegments(float spacing, bool closed, bool heightCounts, int* indices);
    // The box test and crossing count of the inner-area tests, with the
    // edges read from `xs` and `ys`.
    bool InnerAreaTest(__m128 point, const float* xs, const float* ys, int step);
    // Every point p becomes p + distance * v / |v|, v = p - centre.
    void PushFromCentre(const SSEPoint& centre, float distance);
    // The body of DilateExact and ErodeExact: half discs of `samples` points;
    // a sample survives the line's own test if it lies inside the line
    // exactly when keepInside is true.
    void KeepSamplesOfHalfDiscs(float radius, long long samples, bool keepInside);

    float* PointsX;
    float* PointsY;
    float* PointsZ;
    float* NormalizedX;
    float* NormalizedY;
    float* NormalizedZ;
    int NumPoints;
    SSEPoint* TopRight;
    SSEPoint* BottomLeft;
    SSEPoint* TopRight2D;
    SSEPoint* BottomLeft2D;
    SSEPoint* GeometricCenter;
    bool BoundingBoxCalculated;
};
