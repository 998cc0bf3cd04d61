#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/planar/basis_fcns.h"
#include "vekdll/planar/planar_predicates.h"
#include "vekdll/planar/planar_records.h"

class CSSE2dPolygon;
class CSSE3dPolygon;

// Cuts the inner area of a simple planar polygon into triangles by ear
// clipping, in one pass inside the constructor. Every `step`-th source point
// becomes a vertex, scaled by (scaleX, scaleY); the ring must then run
// counter-clockwise with y pointing up (a clockwise polygon can be given
// with scaleY negative). The result is a list of index triples into the
// vertex array and, with each, the diagonal that closed the ear.
//
// The run may stop short: a polygon that is clockwise, self-intersecting or
// has corners too small for the tolerance of the predicates keeps a partial
// result, and even a good polygon may end one triangle before the last one.
// GetNumTriangles() below GetNum2dPoints() - 2 tells.
//
// With vek::PlanarPredicates::Exact as the last argument, every side test is
// exact, so the scale of the coordinates no longer matters, and the last
// three vertices make the last triangle whenever they turn left. A simple
// ring of n distinct vertices is then cut whole into n - 2 triangles; where
// the tolerance decides as the exact tests do, the exact run clips the same
// ears in the same order as the default one, and goes on where that stops
// short. Repeated points are not distinct: vek::DropRepeatedRingPoints
// removes them beforehand.
//
// The object keeps a pointer to its source polygon without owning it; the
// source must outlive it where GetTriangle3D or GetPolygon3D are used.
// Assignment copies the members as they stand and so shares the arrays: only
// one of the two objects may then be destroyed.
class VEKDLL_API CHPolygonTriangulator : public CHSimpleBasisFcns {
public:
    // A source of fewer than 3 points, a null source or a step below 1 give
    // an empty object: no vertices, no triangles.
    CHPolygonTriangulator(CSSE2dPolygon* p, int step, float scaleX, float scaleY, bool startBehindHead,
                          vek::PlanarPredicates predicates = vek::PlanarPredicates::Tolerant);
    CHPolygonTriangulator(CSSE3dPolygon* p, int step, float scaleX, float scaleY, float scaleZ,
                          bool startBehindHead, vek::PlanarPredicates predicates = vek::PlanarPredicates::Tolerant);
    ~CHPolygonTriangulator();
    CHPolygonTriangulator(const CHPolygonTriangulator&) = delete;
    CHPolygonTriangulator& operator=(const CHPolygonTriangulator& other) = default;

    int GetNumTriangles() const;
    int GetNumDiagonals() const;
    int GetNum2dPoints() const;
    t_htriangleconnectivity* GetConnectivityArray() const;
    t_hvertex* GetVertexArray() const;
    CSSE3dPolygon* GetPolygon3D() const;
    float GetScaleZ() const;
    bool Is3DTriangulation() const;
    vek::PlanarPredicates GetPredicates() const { return Predicates; }

    // Scaled coordinates of vertex i; outside 0 .. m-1 the outputs stay untouched.
    void GetPoint(int i, float& x, float& y) const;
    bool DiagonalExists(int i) const;
    // Each end is written only if its vertex exists.
    void GetDiagonalPoints(int i, float& x1, float& y1, float& x2, float& y2) const;
    // The source points of triangle i, unscaled and with their z; only for a
    // spatial source, otherwise nothing is written.
    void GetTriangle3D(int i, SSEPoint& a, SSEPoint& b, SSEPoint& c) const;

protected:
    void GetValuesFrom2DPolygon();
    void Create2DPolygonFrom3DPolygon();
    void EarInit();
    void Triangulate();
    bool Diagonal(t_hvertex* a, t_hvertex* b) const;
    bool Diagonalie(t_hvertex* a, t_hvertex* b) const;

private:
    // Stores the arguments and allocates the arrays for m vertices.
    void Prepare(int sourcePoints, int step, float scaleX, float scaleY, bool startBehindHead);
    // Vertex i from source point i * Step, read by readXY(index, x, y), scaled.
    template <class ReadXY>
    void FillVertices(ReadXY readXY);
    void LinkRing();
    t_hvertex* FindEar() const;
    // In the exact mode, the tip of the last triangle when three vertices
    // are left and they turn left, else null.
    t_hvertex* LastTriangleTip() const;
    void ClipEar(t_hvertex* tip);
    bool ValidVertex(int i) const { return i >= 0 && i < NumVertices; }

protected:
    CSSE3dPolygon* Polygon3D = nullptr;
    CSSE2dPolygon* Polygon2D = nullptr;
    int NumVertices = 0;
    int Step = 0;
    int NumDiagonals = 0;
    float ScaleX = 1.0f;
    float ScaleY = 1.0f;
    float ScaleZ = 1.0f;
    t_hvertex* VertexArray = nullptr;
    t_hdiagonal* DiagonalArray = nullptr;
    t_hvertex* Head = nullptr;
    t_htriangleconnectivity* ConnectivityArray = nullptr;
    int NumTriangles = 0;
    bool StartBehindHead = false;
    vek::PlanarPredicates Predicates = vek::PlanarPredicates::Tolerant;
};
