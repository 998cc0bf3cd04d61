#pragma once

#include <vector>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/planar/hull_records.h"

// The convex hull of points in space, built incrementally on an integer grid
// of 64 bits, so that every orientation test is exact. The hull is a closed
// structure of three rings, vertices, edges and faces, each face's corners
// counter-clockwise seen from outside.
//
// The orientation tests are exact for any grid points. Input is rounded to
// the nearest grid point; a lifted point's height, the sum of two squares,
// wraps around beyond about 200 million units from the origin, and the
// point then no longer lies on the paraboloid.
//
// Use: any number of AppendVertex3D or AppendVertex2D calls, then one
// CalcConvexHull, then read the faces. Afterwards only the vertices on the
// hull remain in the vertex ring.
//
// Degenerate input: points that all lie in one plane, or on one line, or
// fewer than four, have no spatial hull. CalcConvexHull then ends the
// process through vek::ExitProgram(0); an application that must survive such
// input installs an exit handler that throws (vek::SetExitHandler).
//
// The orientation tests are virtual so that a derived class can replace the
// test the construction rests on. The destructor is not virtual: don't
// delete a derived object through a pointer to this class. Copying shares
// the rings: only one of the two objects may then be destroyed.
class VEKDLL_API CHConvexHull3D {
public:
    CHConvexHull3D() = default;
    ~CHConvexHull3D();
    CHConvexHull3D(const CHConvexHull3D&) = default;
    CHConvexHull3D& operator=(const CHConvexHull3D&) = default;

    // Adds the point (coordinate * scale, rounded) unless the grid holds it already.
    void AppendVertex3D(float x, float y, float z, float scale);
    // Adds the planar point on a grid of a tenth of a unit, lifted onto the
    // paraboloid z = x^2 + y^2 of that grid. Index -1 numbers the vertex by
    // the count of vertices so far. A point already on the grid keeps the
    // vertex that was there, with its index and mark.
    void AppendVertex2D(float x, float y, int index, bool isTop);
    void CalcConvexHull();

    tFaceStructure* GetFaces() const;
    int GetNumFaces() const;
    // Corner i of f back in units of AppendVertex2D: the grid value / 10.
    SSEPoint GetVertexFromFace(tFaceStructure* f, int i) const;
    // Corner i of f divided lane-wise by s, which holds the scale given to
    // AppendVertex3D in lanes 0 to 2 and anything but 0 in lane 3.
    SSEPoint GetVertexFromFace3D(tFaceStructure* f, int i, SSEPoint& s) const;

protected:
    // 1 if p lies behind f (inside), -1 if it sees f from outside, 0 in its plane.
    virtual int VolumeSign(tFaceStructure* f, tVertexStructure* p);
    virtual bool Collinear(tVertexStructure* a, tVertexStructure* b, tVertexStructure* c);

    // construction
    void DoubleTriangle();
    void ConstructHull();
    bool AddOne(tVertexStructure* p);
    tFaceStructure* MakeFace(tVertexStructure* p, tVertexStructure* q, tVertexStructure* r, tFaceStructure* fold);
    tFaceStructure* MakeConeFace(tEdgeStructure* e, tVertexStructure* p);
    void MakeCcw(tFaceStructure* f, tEdgeStructure* e, tVertexStructure* p);
    void CleanUp(tVertexStructure** vnext);
    void CleanEdges();
    void CleanFaces();
    // Deletes the added vertices that lie on no edge any more, moving *vnext
    // on past them, and clears the marks of the step.
    void CleanVertices(tVertexStructure** vnext);
    void EdgeOrderOnFaces();
    void CalcNumFaces();
    void CalcNumEdges();
    void CalcNumVertices();

    // the rings
    tVertexStructure* MakeNullVertex();
    tEdgeStructure* MakeNullEdge();
    tFaceStructure* MakeNullFace();
    void AddVertex(tVertexStructure* v);
    void AddEdge(tEdgeStructure* e);
    void AddFace(tFaceStructure* f);
    void DeleteVertex(tVertexStructure* v);
    void DeleteEdge(tEdgeStructure* e);
    void DeleteFace(tFaceStructure* f);
    // A vertex at these grid coordinates put last in the ring, or null if
    // the ring has one there already.
    tVertexStructure* NewVertex(long long x, long long y, long long z);
    // Releases a vertex record that is in no ring.
    void FreeVertex(tVertexStructure* v);
    // c = a - b.
    static void SubVec(const long long a[3], const long long b[3], long long c[3]);

    // Self-tests of the structure, run after each added vertex while Check
    // is set: every edge bordered by the two faces that name it, and every
    // vertex behind every face. They change nothing.
    bool Checks();
    bool Convexity();
    bool Consistency();
    void CheckEuler() {}
    void CheckEndpts() {}
    void DemoVertices() {}

    tVertexStructure* Vertices = nullptr;
    tEdgeStructure* Edges = nullptr;
    tFaceStructure* Faces = nullptr;
    bool Debug = false;
    bool Check = false;
    int NumFaces = 0;
    int NumEdges = 0;
    int NumVertices = 0;
    int VertexCount = 0;

private:
    // Vertices that may have left the hull in the current step: the ends of
    // the edges that went, and the vertex just found inside. Every other
    // added vertex still lies on an edge, so the clean-up need not walk the
    // whole ring, most of which waits unprocessed.
    std::vector<tVertexStructure*> LooseVertices;
};
