#pragma once

#include <vector>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/polygons/resolution_data.h"

class CArchive;
class CPixelChain;

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
