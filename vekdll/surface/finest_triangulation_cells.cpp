// One cell of the finest grid: the cut into triangles, the crossing of its
// sides with the polygon, and the triangle that the cut hands out.

#include <cmath>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/polygons/sse_3d_polygon.h"
#include "vekdll/surface/finest_cell_pattern.h"
#include "vekdll/surface/finest_triangulation.h"

namespace vek::detail {

SSEPoint FindCellCrossing(CSSE3dPolygon& polygon, const SSEPoint& in, const SSEPoint& out)
{
    float low = 0.0f;  // inside
    float high = 1.0f; // outside
    for (int i = 0; i < 24; ++i) {
        const float mid = 0.5f * (low + high);
        const float x = in.x + mid * (out.x - in.x);
        const float y = in.y + mid * (out.y - in.y);
        if (polygon.PointInLineInnerArea(x, y, 1))
            low = mid;
        else
            high = mid;
    }
    const float t = 0.5f * (low + high);
    SSEPoint p;
    p.sse = _mm_add_ps(in.sse, _mm_mul_ps(_mm_set1_ps(t), _mm_sub_ps(out.sse, in.sse)));
    p.w = 0.0f;
    return p;
}

float LatticeHeight(const CSSEMatrix* field, int x, int y)
{
    if (field == nullptr || field->GetMatrixDataDirectly() == nullptr) return 0.0f;
    return field->GetPoint(x, y);
}

} // namespace vek::detail

namespace {

SSEPoint LatticePoint(int x, int y, const CSSEMatrix* field)
{
    SSEPoint p;
    p.sse = _mm_setr_ps(static_cast<float>(x), static_cast<float>(y), vek::detail::LatticeHeight(field, x, y), 0.0f);
    return p;
}

} // namespace

bool ZrCFinestTriangulation::CheckIsTriangle(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c)
{
    return CSSEFns::euclideandistance(a.sse, b.sse) > 0.00005f && CSSEFns::euclideandistance(b.sse, c.sse) > 0.00005f &&
           CSSEFns::euclideandistance(c.sse, a.sse) > 0.00005f;
}

t_hfinesttriangle* ZrCFinestTriangulation::BuildTriangleFromPoints(int a, int b, int c, CSSEMatrix* field,
                                                                   CList<t_hfinesttriangle*>* list, bool flag)
{
    if (list == nullptr) return nullptr;
    for (const int v : {a, b, c}) {
        if (v < 0 || v >= NumVertices) return nullptr;
    }
    if (field != nullptr && field->GetMatrixDataDirectly() != nullptr) {
        for (const int v : {a, b, c}) {
            SSEPoint& p = Vertices[v];
            p.z = field->GetPoint(static_cast<int>(p.x + 0.5f), static_cast<int>(p.y + 0.5f));
        }
        NoteVerticesChanged();
    }
    if (!CheckIsTriangle(Vertices[a], Vertices[b], Vertices[c])) return nullptr;
    t_hfinesttriangle* triangle = InitNewTriangle();
    triangle->Vertex[0] = a;
    triangle->Vertex[1] = b;
    triangle->Vertex[2] = c;
    triangle->Marched = flag;
    list->AddTail(triangle);
    return triangle;
}

// The stand-alone form finds its corners and crossings in the store, or
// adds them; the band builder knows them by their place instead and cuts
// the cell with the same CutCell.
void ZrCFinestTriangulation::MarchingSquare(int x, int y, int step, CSSEMatrix* field, CSSEMatrix* mask,
                                           CSSE3dPolygon* polygon, CList<t_hfinesttriangle*>* list)
{
    if (list == nullptr || step < 1 || (mask == nullptr && polygon == nullptr)) return;
    if (polygon != nullptr && !polygon->IsBoundingBoxCalculated()) polygon->CalcBoundingBox();
    const int cx[4] = {x, x + step, x + step, x};
    const int cy[4] = {y, y, y + step, y + step};
    SSEPoint corner[4];
    vek::detail::FinestCellCorners cell{};
    const auto indexOf = [this](const SSEPoint& p) {
        const int found = IsVertexExist(p, 0.0001f);
        if (found >= 0) return found;
        if (NumVertices >= MaxNumVertices) ReallocSize(NumVertices + 100);
        AppendVertex(p);
        return NumVertices - 1;
    };
    for (int k = 0; k < 4; ++k) {
        corner[k] = LatticePoint(cx[k], cy[k], field);
        cell.inside[k] = mask != nullptr ? mask->GetPoint(cx[k], cy[k]) != 0.0f
                                         : polygon->PointInLineInnerArea(corner[k].x, corner[k].y, 1);
    }
    for (int k = 0; k < 4; ++k) {
        cell.corner[k] = indexOf(corner[k]);
        cell.crossing[k] = -1;
        const int next = (k + 1) % 4;
        if (cell.inside[k] == cell.inside[next]) continue;
        const SSEPoint& in = cell.inside[k] ? corner[k] : corner[next];
        const SSEPoint& out = cell.inside[k] ? corner[next] : corner[k];
        SSEPoint crossing;
        if (polygon != nullptr) {
            crossing = vek::detail::FindCellCrossing(*polygon, in, out);
        } else {
            crossing.sse = _mm_mul_ps(_mm_add_ps(in.sse, out.sse), _mm_set1_ps(0.5f));
        }
        cell.crossing[k] = indexOf(crossing);
    }
    std::vector<t_hfinesttriangle*> made;
    vek::detail::CutCell(cell, false, [&](int a, int b, int c) {
        if (t_hfinesttriangle* t = BuildTriangleFromPoints(a, b, c, nullptr, list, true)) made.push_back(t);
    });
    for (std::size_t i = 0; i < made.size(); ++i) {
        for (std::size_t j = i + 1; j < made.size(); ++j) FindNeighbours(made[i], made[j]);
    }
}
