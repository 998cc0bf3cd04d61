#include "vekdll/planar/polygon_triangulator.h"

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/polygons/sse_2d_polygon.h"
#include "vekdll/polygons/sse_3d_polygon.h"

CHPolygonTriangulator::CHPolygonTriangulator(CSSE2dPolygon* p, int step, float scaleX, float scaleY,
                                             bool startBehindHead, vek::PlanarPredicates predicates)
    : Polygon2D(p), Predicates(predicates)
{
    if (p == nullptr) return;
    Prepare(p->GetNumPoints(), step, scaleX, scaleY, startBehindHead);
    if (NumVertices == 0) return;
    GetValuesFrom2DPolygon();
    LinkRing();
    Triangulate();
}

CHPolygonTriangulator::CHPolygonTriangulator(CSSE3dPolygon* p, int step, float scaleX, float scaleY, float scaleZ,
                                             bool startBehindHead, vek::PlanarPredicates predicates)
    : Polygon3D(p), ScaleZ(scaleZ), Predicates(predicates)
{
    if (p == nullptr) return;
    Prepare(p->GetNumPoints(), step, scaleX, scaleY, startBehindHead);
    if (NumVertices == 0) return;
    Create2DPolygonFrom3DPolygon();
    LinkRing();
    Triangulate();
}

CHPolygonTriangulator::~CHPolygonTriangulator()
{
    SafeFree(VertexArray);
    SafeFree(DiagonalArray);
    SafeFree(ConnectivityArray);
}

void CHPolygonTriangulator::Prepare(int sourcePoints, int step, float scaleX, float scaleY, bool startBehindHead)
{
    Step = step;
    ScaleX = scaleX;
    ScaleY = scaleY;
    StartBehindHead = startBehindHead;
    // Fewer than three points enclose nothing, and a step below 1 names no
    // thinning at all: either leaves the object empty rather than undefined.
    if (sourcePoints < 3 || step < 1) return;
    // Source points behind the last whole step are left out.
    NumVertices = sourcePoints / step;
    if (NumVertices == 0) return;
    VertexArray = static_cast<t_hvertex*>(SafeCalloc(NumVertices, sizeof(t_hvertex)));
    ConnectivityArray = static_cast<t_htriangleconnectivity*>(SafeCalloc(NumVertices, sizeof(t_htriangleconnectivity)));
    DiagonalArray = static_cast<t_hdiagonal*>(SafeCalloc(NumVertices, sizeof(t_hdiagonal)));
}

template <class ReadXY>
void CHPolygonTriangulator::FillVertices(ReadXY readXY)
{
    for (int i = 0; i < NumVertices; ++i) {
        float x = 0.0f;
        float y = 0.0f;
        readXY(i * Step, x, y);
        VertexArray[i].Point.x = x * ScaleX;
        VertexArray[i].Point.y = y * ScaleY;
    }
}

void CHPolygonTriangulator::GetValuesFrom2DPolygon()
{
    FillVertices([this](int i, float& x, float& y) { Polygon2D->GetPoint(i, x, y); });
}

void CHPolygonTriangulator::Create2DPolygonFrom3DPolygon()
{
    // The box is refreshed for later readers of the source; the vertices
    // don't depend on it.
    Polygon3D->CalcBoundingBox();
    FillVertices([this](int i, float& x, float& y) { Polygon3D->GetPointXY(i, x, y); });
}

void CHPolygonTriangulator::LinkRing()
{
    const int m = NumVertices;
    for (int i = 0; i < m; ++i) {
        t_hvertex& v = VertexArray[i];
        v.Next = &VertexArray[(i + 1) % m];
        v.Prev = &VertexArray[(i + m - 1) % m];
        v.Index = i;
    }
    Head = &VertexArray[0];
}

int CHPolygonTriangulator::GetNumTriangles() const
{
    return NumTriangles;
}

int CHPolygonTriangulator::GetNumDiagonals() const
{
    return NumDiagonals;
}

int CHPolygonTriangulator::GetNum2dPoints() const
{
    return NumVertices;
}

t_htriangleconnectivity* CHPolygonTriangulator::GetConnectivityArray() const
{
    return ConnectivityArray;
}

t_hvertex* CHPolygonTriangulator::GetVertexArray() const
{
    return VertexArray;
}

CSSE3dPolygon* CHPolygonTriangulator::GetPolygon3D() const
{
    return Polygon3D;
}

float CHPolygonTriangulator::GetScaleZ() const
{
    return ScaleZ;
}

bool CHPolygonTriangulator::Is3DTriangulation() const
{
    return Polygon3D != nullptr;
}

void CHPolygonTriangulator::GetPoint(int i, float& x, float& y) const
{
    if (!ValidVertex(i)) return;
    x = VertexArray[i].Point.x;
    y = VertexArray[i].Point.y;
}

bool CHPolygonTriangulator::DiagonalExists(int i) const
{
    if (i < 0 || i >= NumDiagonals) return false;
    return DiagonalArray[i].Exists;
}

void CHPolygonTriangulator::GetDiagonalPoints(int i, float& x1, float& y1, float& x2, float& y2) const
{
    if (i < 0 || i >= NumDiagonals) return;
    GetPoint(DiagonalArray[i].From, x1, y1);
    GetPoint(DiagonalArray[i].To, x2, y2);
}

void CHPolygonTriangulator::GetTriangle3D(int i, SSEPoint& a, SSEPoint& b, SSEPoint& c) const
{
    if (Polygon3D == nullptr || i < 0 || i >= NumTriangles) return;
    const t_htriangleconnectivity& t = ConnectivityArray[i];
    Polygon3D->GetPointSSE(t.a * Step, a);
    Polygon3D->GetPointSSE(t.b * Step, b);
    Polygon3D->GetPointSSE(t.c * Step, c);
}
