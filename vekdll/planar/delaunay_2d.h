#pragma once

#include <vector>

#include "vekdll/export.h"
#include "vekdll/planar/convex_hull_3d.h"
#include "vekdll/polygons/sse_2d_polygon.h"

class CHTriangulation;
class CSSE3dPolygon;

// The Delaunay triangulation of points in the plane by lifting: each point
// goes onto the paraboloid z = x^2 + y^2 of the hull's tenth-unit grid, the
// spatial hull of the lifted points is built, and the faces that look
// downward are the Delaunay triangles. They stay in the face ring, corners
// clockwise seen from above (counter-clockwise seen from below, from
// outside the hull); the corners' Index names the points.
//
// On that stands a loft: two lines in space, or the border regions of two
// meshes, unrolled into the plane of arc length and height, triangulated
// there, and mapped back into space.
//
// What a caller must avoid: a point set with no spatial hull once lifted.
// Fewer than four distinct grid points, points all on one line, or all on
// one circle (the four corners of a rectangle alone) end the process
// through vek::ExitProgram(0), as the spatial hull does; an application
// that must survive such input installs an exit handler that throws.
//
// After the triangulation only the face ring is valid: the edges of the
// upper faces, which are released, still name them. Nothing of the hull's
// own construction may run again on the object. Each triangulation reports
// its time and vertex count through vek::ShowMessage.
//
// Copying shares the rings and the two border lines: only one of the two
// objects may then be destroyed.
class VEKDLL_API CH2DDelaunay : public CHConvexHull3D {
public:
    CH2DDelaunay() = default;
    // The base destructor releases the three rings, the members their lines.
    ~CH2DDelaunay() = default;
    CH2DDelaunay(const CH2DDelaunay& other);
    CH2DDelaunay& operator=(const CH2DDelaunay& other);

    // The point (x, y) on the grid of a tenth, lifted; see AppendVertex2D.
    void AppendVertex(float x, float y, int index, bool isTop);
    // Builds the hull and keeps its lower faces. Runs once: on an object
    // whose faces exist already it does nothing.
    void CalcDelaunayTriangulation();

    // Lofts the closed line a (bottom) to the closed line b (top): both are
    // unrolled into the plane of arc length and height, each closed at its
    // start by its last point, triangulated there, and the faces outside the
    // band between the two are dropped. The vertices then take the
    // coordinates of the lines' points, times 10, each one index further
    // along its line than the point it was unrolled from. The bool isn't
    // read. An empty line leaves the object as it is.
    void CreateTriangulationFromTwoBorderPolygons(CSSE3dPolygon* a, CSSE3dPolygon* b, bool unused);

    // The corners (y, z) of the mesh's border triangles (Flag 13, not
    // degenerate) on one side of its centre in x, lowerHalf: x at most the
    // centre's. Each becomes a vertex with Index 3 * triangle + corner;
    // Bottom marks them as top (IsTop true) and keeps them, times 10, as the
    // lower limit of the band; Top marks them false and takes as upper limit
    // as many vertices from the ring's entry as it added, which are the
    // first call's when Bottom ran first: the order of the calls counts.
    void GetBorderPointsBottom(CHTriangulation* t, bool lowerHalf);
    void GetBorderPointsTop(CHTriangulation* t, bool lowerHalf);
    // Each vertex takes the corner its Index names, times 10, from `top`
    // if it is marked as top, else from `bottom`.
    void LoftWith3DTriangulation(CHTriangulation* top, CHTriangulation* bottom);
    // Drops the faces with a third or the middle of an edge more than
    // `tolerance` above the upper or below the lower limit line, with the
    // limit read at the nearest x (every second point of each line). The
    // ring's entry is never looked at; GetNumFaces keeps the count from the
    // triangulation.
    void RemoveFacesOutOfBorderLines(float tolerance);

protected:
    // Keeps the faces whose normal points down, releasing the others from
    // the face ring. The edge ring is left as it is.
    void LowerFaces();
    // The z of the face's normal (b - a) x (c - a), exact in 64 bits within
    // the grid's working range: below 0 for a face that looks downward.
    long long NormZ(tFaceStructure* f);

    CSSE2dPolygon TopBorder;
    CSSE2dPolygon BottomBorder;

private:
    // Appends the chosen corners of the mesh's border triangles as vertices
    // and returns their (y, z).
    std::vector<t_h2dpoint> AppendMeshBorderPoints(CHTriangulation* t, bool lowerHalf, bool isTop);
    // Whether a place on one of f's edges lies outside the band.
    bool OutsideBand(const tFaceStructure* f, float tolerance) const;
};
