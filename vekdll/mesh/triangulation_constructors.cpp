// The constructors that build a mesh from something else, and their finish.
// Each sets the scale, runs its builder and, when a triangle came out,
// brings the derived data up to date as its kind of mesh needs it; with no
// triangle it ends at once and the box stays undefined.

#include "vekdll/mesh/triangulation.h"

// ---------------------------------------------------------------- finishing steps

// Raster corners are scaled by the builder and keep the normals of
// AppendTriangle.
void CHTriangulation::FinishRasterMesh()
{
    CalcBoundingBox();
    CalcSTV();
}

void CHTriangulation::FinishTwoFieldMesh()
{
    CalcNeighbours();
    CalcBoundingBox();
    CalcSTV();
    CalcNormalsFromVertices();
}

// Planar results come in unscaled and without normals.
void CHTriangulation::FinishPlanarMesh()
{
    ScaleTriangulation();
    CalcSTV();
    CalcNormalsFromVertices();
    CalcBoundingBox();
}

void CHTriangulation::FinishBand()
{
    CalcBoundingBox();
    CalcSTV();
    CalcNormalsFromVertices();
    CalcCenterPoint();
}

// ---------------------------------------------------------------- raster meshes

CHTriangulation::CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromSSEField(field, threshold, above);
    if (NumTriangles > 0) FinishRasterMesh();
}

CHTriangulation::CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz,
                                 int stepX, int stepY)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromSSEFieldSubSampled(field, threshold, above, stepX, stepY);
    if (NumTriangles > 0) FinishRasterMesh();
}

CHTriangulation::CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz,
                                 int stepX, int stepY, int xFrom, int xTo, int yFrom, int yTo, bool unused)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromSSEFieldSubSampled(field, threshold, above, stepX, stepY, xFrom, xTo, yFrom, yTo, unused);
    if (NumTriangles > 0) FinishRasterMesh();
}

CHTriangulation::CHTriangulation(CSSEMatrix* field, float threshold, bool above, float sx, float sy, float sz,
                                 int stepX, int stepY, CSSE3dPolygon* polygon)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromSSEFieldSubSampled(field, threshold, above, stepX, stepY, polygon);
    if (NumTriangles > 0) FinishRasterMesh();
}

CHTriangulation::CHTriangulation(CSSEMatrix* upper, CSSEMatrix* lower, bool above, float sx, float sy, float sz,
                                 int stepX, int stepY)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromSSEFieldSubSampledTwoFields(upper, lower, above, stepX, stepY);
    if (NumTriangles > 0) FinishTwoFieldMesh();
}

CHTriangulation::CHTriangulation(CSSEMatrix* upper, CSSEMatrix* lower, bool above, float sx, float sy, float sz,
                                 int stepX, int stepY, int xFrom, int xTo, int yFrom, int yTo)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromSSEFieldSubSampledTwoFields(upper, lower, above, stepX, stepY, xFrom, xTo, yFrom, yTo);
    if (NumTriangles > 0) FinishTwoFieldMesh();
}

// ---------------------------------------------------------------- planar meshes

CHTriangulation::CHTriangulation(CSSE3dPolygon* polygon, float sx, float sy, float sz, int step, float maxEdge,
                                 bool fan, bool refine)
{
    BaseInitialization(sx, sy, sz);
    if (fan) {
        CreateSimpleFanTriangulationFromPolygon(polygon);
    } else {
        CreateTriangulationFromPolygon(polygon, step, maxEdge, refine);
    }
    if (NumTriangles > 0) FinishPlanarMesh();
}

// The heights are bent towards the field before scaling, while the corners
// are still in the field's pixel units.
CHTriangulation::CHTriangulation(CSSE3dPolygon* polygon, float sx, float sy, float sz, CSSEMatrix* field,
                                 bool keepLower, float offset, int step, float maxEdge, bool refine)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromPolygon(polygon, step, maxEdge, refine);
    if (NumTriangles == 0) return;
    if (field != nullptr) ConstrainWithHeightField(keepLower, field, offset);
    FinishPlanarMesh();
}

CHTriangulation::CHTriangulation(CH2DDelaunay* delaunay, float sx, float sy, float sz, bool flatten)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFrom2DDelaunay(delaunay, flatten);
    if (NumTriangles > 0) FinishPlanarMesh();
}

CHTriangulation::CHTriangulation(CHConvexHull3D* hull, float sx, float sy, float sz, float divisor)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromHull3D(hull, divisor);
    if (NumTriangles > 0) FinishPlanarMesh();
}

// ---------------------------------------------------------------- bands between two rings

CHTriangulation::CHTriangulation(CSSE3dPolygon* a, CSSE3dPolygon* b, float sx, float sy, float sz, bool, bool)
{
    BaseInitialization(sx, sy, sz);
    CreateRuledBand(a, b);
    if (NumTriangles > 0) FinishBand();
}

CHTriangulation::CHTriangulation(CSSE3dPolygon* a, CSSE3dPolygon* b, float sx, float sy, float sz, int steps, bool,
                                 bool)
{
    BaseInitialization(sx, sy, sz);
    CreateLoftedBands(a, b, steps);
    if (NumTriangles > 0) FinishBand();
}

// ---------------------------------------------------------------- indexed meshes

CHTriangulation::CHTriangulation(Geometry::CTriangulation* mesh)
{
    BaseInitialization(1.0f, 1.0f, 1.0f);
    CreateTriangulationFromCTriangulation(mesh);
}

CHTriangulation::CHTriangulation(Geometry::CTriangulation* mesh, float sx, float sy, float sz)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromCTriangulation(mesh);
}

CHTriangulation::CHTriangulation(Geometry::CTriangulation* mesh, CSSE3dPolygon* polygon, float sx, float sy, float sz)
{
    BaseInitialization(sx, sy, sz);
    CreateTriangulationFromCTriangulation(mesh, polygon);
}
