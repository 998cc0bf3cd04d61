// The refinement's list of triangles: building it from the ear clipping,
// putting records in and taking them out.

#include "vekdll/planar/polygon_triangulation_refinement.h"

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/planar/polygon_triangulator.h"

CHPolygonTriangulationRefinement::CHPolygonTriangulationRefinement(CHPolygonTriangulator* t, float maxEdge,
                                                                   int iterations)
    : Triangulator(t)
{
    MaxSquaredEdge = (maxEdge + maxEdge) * (maxEdge + maxEdge);
    if (t == nullptr) return;
    Polygon = t->GetPolygon3D();
    ScaleZ = t->GetScaleZ();
    MinSharedEdge = 4.0f * ScaleZ;
    for (int i = 0; i < t->GetNumTriangles(); ++i) AppendTriangle(i);
    CalcNeighbours();
    for (int pass = 0; pass < iterations; ++pass) Refinement();
}

CHPolygonTriangulationRefinement::~CHPolygonTriangulationRefinement()
{
    RemoveTriangles();
}

int CHPolygonTriangulationRefinement::GetNumTriangles() const
{
    return NumTriangles;
}

int CHPolygonTriangulationRefinement::GetNum2dPoints() const
{
    return Triangulator != nullptr ? Triangulator->GetNum2dPoints() : 0;
}

t_hdynamictriangle* CHPolygonTriangulationRefinement::GetTriangle(int i) const
{
    if (i < 0) return nullptr;
    t_hdynamictriangle* t = Triangles;
    for (; t != nullptr && i > 0; --i) t = t->Next;
    return t;
}

t_hdynamictriangle* CHPolygonTriangulationRefinement::CreateTriangle()
{
    auto* t = static_cast<t_hdynamictriangle*>(SafeCalloc(1, sizeof(t_hdynamictriangle)));
    t->Index = -1;
    for (float& z : t->Z) z = vek::kHeightNotKnown;
    t->IsBorder = 0;
    return t;
}

void CHPolygonTriangulationRefinement::AppendTriangle(int index)
{
    // The heights stay 0 from the zeroed allocation: an ear-clipped triangle
    // reads its heights from the source polygon, never from these.
    auto* t = static_cast<t_hdynamictriangle*>(SafeCalloc(1, sizeof(t_hdynamictriangle)));
    const t_htriangleconnectivity& corners = Triangulator->GetConnectivityArray()[index];
    const t_hvertex* vertices = Triangulator->GetVertexArray();
    t->Point[0] = vertices[corners.a].Point;
    t->Point[1] = vertices[corners.b].Point;
    t->Point[2] = vertices[corners.c].Point;
    t->Index = index;
    t->IsBorder = 0;
    AppendOwnTriangle(t);
}

void CHPolygonTriangulationRefinement::AppendOwnTriangle(t_hdynamictriangle* t)
{
    t->Prev = nullptr;
    t->Next = Triangles;
    if (Triangles != nullptr) Triangles->Prev = t;
    Triangles = t;
    ++NumTriangles;
}

void CHPolygonTriangulationRefinement::AppendNewTrianglesAndRemoveOld(t_hdynamictriangle* old,
                                                                      t_hdynamictriangle* first,
                                                                      t_hdynamictriangle* second)
{
    AppendOwnTriangle(first);
    AppendOwnTriangle(second);
    FreeTriangle(old);
}

void CHPolygonTriangulationRefinement::FreeTriangle(t_hdynamictriangle* t)
{
    if (t == nullptr) return;
    if (t->Prev != nullptr) t->Prev->Next = t->Next;
    if (t->Next != nullptr) t->Next->Prev = t->Prev;
    if (Triangles == t) Triangles = t->Next;
    if (CurrentTriangle == t) CurrentTriangle = nullptr;
    SafeFree(t);
    --NumTriangles;
}

void CHPolygonTriangulationRefinement::RemoveTriangles()
{
    while (Triangles != nullptr) FreeTriangle(Triangles);
    NumTriangles = 0;
    CurrentTriangle = nullptr;
}
