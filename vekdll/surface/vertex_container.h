#pragma once

#include <cstdint>
#include <memory>

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/surface/search_mode.h"

class CSSE3dPolygon;
class CSSEMatrix;

namespace vek::detail {
class VertexIndex;
}

// The vertex store of a triangulation: a flat, 16-byte-aligned array of
// SSEPoint with a fixed capacity that only an explicit call changes.
// Triangles name their corners by index into this array, so vertices are
// never reordered and an index stays valid for the life of the
// triangulation; the only removal is dropping the last vertex.
class VEKDLL_API ZrCSSEVertexContainer {
public:
    ZrCSSEVertexContainer();
    explicit ZrCSSEVertexContainer(int n);
    // A deep copy, like operator=: two containers never share an array. The
    // search mode is copied; the index behind the look-ups is not.
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

    // ---- access; the index is not checked. A writable pointer counts as a
    // write: the look-up index is rebuilt before it answers again.
    SSEPoint GetVertex(int i) const { return Vertices[i]; }
    SSEPoint* GetVertexPtr(int i)
    {
        NoteVerticesChanged();
        return &Vertices[i];
    }
    const SSEPoint* GetVertexPtr(int i) const { return &Vertices[i]; }
    void SetZValueInVertex(float z, int i) { Vertices[i].z = z; }

    // ---- how look-ups and the triangle search of a derived triangulation
    // work: through indexes (default) or by walking everything
    void SetSearchMode(vek::SearchMode mode) { Mode = mode; }
    vek::SearchMode GetSearchMode() const { return Mode; }

    // ---- look-ups: the first match in index order wins, -1 when none
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
    void AddPolygon(const CSSE3dPolygon& polygon, bool checkDistance);
    void SetVertexZFromMatrix(const CSSEMatrix& field);
    void ResetVertexFromPolygon(const CSSE3dPolygon& polygon, const CSSE3dPolygon& other);

    // ---- projection on a plane
    static void CalcProjectionPoint(const SSEPoint& point, SSEPoint& result, const SSEPoint& planePoint,
                                    const SSEPoint& normal);
    static void CalcProjectPolygon(const SSEPoint& planePoint, const SSEPoint& normal, const CSSE3dPolygon& source,
                                   CSSE3dPolygon& result);
    static void CutProjPolygon(const CSSE3dPolygon& first, const CSSE3dPolygon& second, CSSE3dPolygon* result,
                               float limit);

    // ---- turns
    static void RotateVertexX(float angle, SSEPoint& point);
    static void MoveVertex(float angleY, float angleX, SSEPoint& point);
    static void MoveTriangulationAndPolygonWithAngle(SSEPoint* first, SSEPoint* second, SSEPoint& third,
                                                     const SSEPoint& direction, CSSE3dPolygon* polygon,
                                                     bool invert);

    // ---- matching a coarse polygon with a finer one
    static void FindClosedPolygonSafe(const CSSE3dPolygon& reference, CSSE3dPolygon& polygon, int* map);
    static int GetClosedPointSafe(const CSSE3dPolygon& coarse, const CSSE3dPolygon& fine,
                                  const CSSE3dPolygon& target, const int* map, int first, int last,
                                  int targetIndex);

protected:
    // Every write to x or y of vertices already stored, other than through
    // AppendVertex, must be followed by this, so that the look-up index does
    // not answer from old positions. Heights may change freely: the index
    // places vertices by x and y only, and reads heights as they stand.
    void NoteVerticesChanged() { ++VertexWrites; }

    SSEPoint* Vertices = nullptr;
    int NumVertices = 0;
    int MaxNumVertices = 0;

private:
    // Index of the first vertex at (x, y) of `corner`, exactly.
    int IndexAtXY(const SSEPoint& corner) const;
    // The look-up index brought up to the store as it stands, or null when
    // the look-ups walk.
    vek::detail::VertexIndex* FollowedIndex() const;

    vek::SearchMode Mode = vek::SearchMode::Indexed;
    mutable std::unique_ptr<vek::detail::VertexIndex> Lookup;
    std::uint64_t VertexWrites = 0;
    // The lowest index AppendVertex has written since the index last followed.
    mutable int AppendedFrom = 0;
    // Look-ups answered by walking before the index is built: a store asked
    // a few times (the corners of a new triangulation) never pays for one.
    mutable int WalkedLookups = 0;
};
