#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"

// The vertex store of a triangulation: a flat, 16-byte-aligned array of
// SSEPoint with a fixed capacity that only an explicit call changes.
// Triangles name their corners by index into this array, so vertices are
// never reordered and an index stays valid for the life of the
// triangulation; the only removal is dropping the last vertex.
class VEKDLL_API ZrCSSEVertexContainer {
public:
    ZrCSSEVertexContainer();
    explicit ZrCSSEVertexContainer(int n);
    // A deep copy, like operator=: two containers never share an array.
    ZrCSSEVertexContainer(const ZrCSSEVertexContainer& other);
    ~ZrCSSEVertexContainer();

    ZrCSSEVertexContainer& operator=(const ZrCSSEVertexContainer& other);

    // ---- life and capacity
    void FreeVertices();
    void CreateVertexArray(int n);
    void ReallocSize(int n);
    void InitializeObject();
    void AppendVertex(const SSEPoint& point);

    int GetNumVertices() const { return NumVertices; }
    int GetMaxNumVertices() const { return MaxNumVertices; }

    // ---- access; the index is not checked
    SSEPoint GetVertex(int i) const { return Vertices[i]; }
    SSEPoint* GetVertexPtr(int i) { return &Vertices[i]; }
    const SSEPoint* GetVertexPtr(int i) const { return &Vertices[i]; }
    void SetZValueInVertex(float z, int i) { Vertices[i].z = z; }

    // ---- look-ups: linear, first match wins, -1 when none
    int IsVertexExist(const SSEPoint& point, float tolerance) const;
    int PointIndex(const SSEPoint& point) const;
    int PointIndex3D(const SSEPoint& point, int first, int end) const;
    SSEPoint MinPoint() const;
    SSEPoint MaxPoint() const;
    int MinPointIndex(SSEPoint& result) const;
    int MaxPointIndex(SSEPoint& result) const;

    // ---- whole-array changes
    void AddError(const SSEPoint& point);
    void AddOffset(float x, float y, float z);

    // ---- projection on a plane
    static void CalcProjectionPoint(const SSEPoint& point, SSEPoint& result, const SSEPoint& planePoint,
                                    const SSEPoint& normal);

    // ---- turns
    static void RotateVertexX(float angle, SSEPoint& point);
    static void MoveVertex(float angleY, float angleX, SSEPoint& point);

protected:
    SSEPoint* Vertices = nullptr;
    int NumVertices = 0;
    int MaxNumVertices = 0;

private:
    // Index of the first vertex at (x, y) of `corner`, exactly.
    int IndexAtXY(const SSEPoint& corner) const;
};
