#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/mesh/htriangle.h"
#include "vekdll/mesh/stretch.h"

class CSSE3dPolygon;

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

    // ---------------------------------------------------------------- combination and persistence

private:
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
