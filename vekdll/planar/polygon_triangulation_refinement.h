#pragma once

#include "vekdll/export.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/planar/dynamic_triangle.h"
#include "vekdll/surface/triangle_graph_types.h"

class CHPolygonTriangulator;
class CSSE3dPolygon;

// Subdivides the triangles of an ear clipping until no side is longer than
// twice maxEdge. A triangle is split at the midpoint of its longest side,
// together with the triangle across that side, so that no corner comes to
// lie on the middle of another triangle's side; the neighbour takes part
// only if the shared side is nearly its own longest and longer than the
// polygon's shortest shared side. A triangle whose neighbour refuses stays
// as it is: the count of passes is the only stop.
//
// The two halves on either side of a split side are paired by position, the
// first half of one with the first half of the other, whatever the direction
// of the side; where the directions differ the links cross. Links stay
// mutual either way, and every split still cuts its triangle exactly in two.
//
// Heights of the corners that splitting makes are interpolated from the
// triangulator's spatial source on reading (GetFirstTriangle3D and
// GetNextTriangle3D) and kept in the records.
//
// The object keeps its triangulator and that one's source polygon without
// owning them: both must outlive it. Assignment copies the members as they
// stand and so shares the list: only one of the two objects may then be
// destroyed.
class VEKDLL_API CHPolygonTriangulationRefinement {
public:
    // Takes the ear-clipped triangles of t, finds their neighbours and runs
    // `iterations` passes of splitting. A null triangulator gives no triangles.
    CHPolygonTriangulationRefinement(CHPolygonTriangulator* t, float maxEdge, int iterations);
    ~CHPolygonTriangulationRefinement();
    CHPolygonTriangulationRefinement(const CHPolygonTriangulationRefinement&) = delete;
    CHPolygonTriangulationRefinement& operator=(const CHPolygonTriangulationRefinement&) = default;

    int GetNumTriangles() const;
    // The triangulator's count of vertices.
    int GetNum2dPoints() const;
    // The i-th record from the head of the list, or null.
    t_hdynamictriangle* GetTriangle(int i) const;

    // The corners of the head triangle, and then of each following one, in
    // space: an ear-clipped triangle as the triangulator gives it (source
    // points with their z), a split one with x and y in the triangulator's
    // plane and interpolated heights. Lane 3 of the outputs isn't written.
    // False, with the outputs untouched, past the end or when the
    // triangulator has no spatial source.
    bool GetFirstTriangle3D(SSEPoint& a, SSEPoint& b, SSEPoint& c);
    bool GetNextTriangle3D(SSEPoint& a, SSEPoint& b, SSEPoint& c);
    // The same for the i-th record; it doesn't move the iteration.
    bool GetTriangle3D(int i, SSEPoint& a, SSEPoint& b, SSEPoint& c);

    // Chains the open sides of the triangles, with their corners' stored
    // heights, into `out`. Each side links to the first other side, in list
    // order, that starts where it ends, or else ends where it starts, that
    // one being turned round; a walk from the first side writes start
    // points. If the last side has a link the line is closed, with one point
    // per side; otherwise it has room for one more and ends with the end
    // point of the side without a link. Sides met head to tail in list order
    // turn each other round, so the walk may double back and leave places
    // unwritten. A triangle without any neighbour is the border by itself;
    // no open side gives an empty polygon.
    void GetBorderLinePolygon(CSSE3dPolygon* out);

protected:
    void CalcNeighbours();
    // One pass over the triangles there were at its start. Always true.
    bool Refinement();
    // Whether `neighbour` may be split together with t on the side they share.
    bool CheckNeighbourTriangle(t_hdynamictriangle* neighbour, t_hdynamictriangle* t) const;
    // A record in no list: Index -1, heights not known, no neighbours.
    t_hdynamictriangle* CreateTriangle();
    // A record of the ear-clipped triangle `index`, put at the head.
    void AppendTriangle(int index);
    // Puts t at the head of the list.
    void AppendOwnTriangle(t_hdynamictriangle* t);
    // `first`, then `second` go to the head; `old` leaves the list and is released.
    void AppendNewTrianglesAndRemoveOld(t_hdynamictriangle* old, t_hdynamictriangle* first,
                                        t_hdynamictriangle* second);
    // t, if there is one, links `replacement` where it linked `old`.
    static void ExchangeNeighbour(t_hdynamictriangle* t, t_hdynamictriangle* old, t_hdynamictriangle* replacement);
    // The side of a on which b stands, or eSideNone.
    static ESharedSide GetSharedSide(const t_hdynamictriangle* a, const t_hdynamictriangle* b);
    // Both coordinates differ by less than 0.0005.
    static bool Equal(const t_h2dpoint& a, const t_h2dpoint& b);
    // Links `neighbour` on `side` of t, if t exists and the side is one.
    static void SecureAssign(t_hdynamictriangle* t, int side, t_hdynamictriangle* neighbour);
    // Takes t out of the list and releases it.
    void FreeTriangle(t_hdynamictriangle* t);
    void RemoveTriangles();
    // Counts the slivers among the triangles with two or three neighbours:
    // a squared side more than four times another. Changes nothing.
    int CollapseSlivers();

private:
    // The side that the rules choose to split, or -1.
    int SideToSplit(const t_hdynamictriangle& t) const;
    // Splits t on `side` into two new records linked to each other and to
    // t's neighbours on the other sides; the halves of the split side stay
    // open. The neighbours outside learn the new records.
    void SplitOnSide(t_hdynamictriangle* t, int side, t_hdynamictriangle*& first, t_hdynamictriangle*& second);
    // Splits t, and `neighbour` if there is one, on the side they share.
    void SplitWithNeighbour(t_hdynamictriangle* t, int side, t_hdynamictriangle* neighbour);
    // Writes the corners of t in space, interpolating unknown heights.
    void ReadTriangle3D(t_hdynamictriangle* t, SSEPoint& a, SSEPoint& b, SSEPoint& c);
    float CornerHeight(t_hdynamictriangle* t, int corner);

protected:
    CHPolygonTriangulator* Triangulator = nullptr;
    int NumTriangles = 0;
    float MaxSquaredEdge = 0.0f;
    t_hdynamictriangle* Triangles = nullptr;
    t_hdynamictriangle* CurrentTriangle = nullptr;
    float ScaleZ = 1.0f;
    float MinSharedEdge = 4.0f;
    CSSE3dPolygon* Polygon = nullptr;
};
