// Point sets from arbitrary bytes through the triangulations, the border
// chains of a triangulation with holes (both search modes must agree) and
// the hulls.
// Byte 0 picks the algorithm, byte 1 the coordinate form and a flag; the rest
// are the points. The forms: a half-cell lattice of 32 x 32 (duplicates,
// collinear and cocircular runs), coordinates spread over +-10000 cells, and
// raw float bits (NaN, infinities, denormals).

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "fuzz_coordinates.h"
#include "vekdll/vekdll.h"

namespace {

struct ProcessExit {};

using vek::fuzz::BytesPerCoordinate;
using vek::fuzz::Coordinate;
using vek::fuzz::Form;

SSEPoint Point(float x, float y, float z)
{
    SSEPoint p;
    p.x = x;
    p.y = y;
    p.z = z;
    p.w = 0.0f;
    return p;
}

void Delaunay(const std::vector<SSEPoint>& points, bool addCorners)
{
    const int n = static_cast<int>(points.size());
    ZrCIncrementalDelaunay2D surface(n + 8);
    for (const SSEPoint& p : points) surface.AppendVertex(p);
    surface.Triangulate(surface.GetNumVertices(), false, addCorners);
    surface.FinalizeTriangleList();
    if (n > 0) surface.InsertVertexIntoTriangulation(points[0].x + 0.25f, points[n - 1].y, true);
}

// The border loops of a triangulation of the points with every third
// triangle taken out, chained in the given search mode.
std::vector<std::vector<std::pair<int, int>>> BorderLoops(const std::vector<SSEPoint>& points, bool addCorners,
                                                          vek::SearchMode mode)
{
    const int n = static_cast<int>(points.size());
    ZrCIncrementalDelaunay2D surface(n + 8);
    for (const SSEPoint& p : points) surface.AppendVertex(p);
    surface.Triangulate(surface.GetNumVertices(), false, addCorners);
    int k = 0;
    CList<t_hdelaunaytriangle*>& triangles = surface.GetTriangleList();
    for (POSITION pos = triangles.GetHeadPosition(); pos != nullptr;) triangles.GetNext(pos)->Ignore = k++ % 3 == 1;
    surface.KillIgnoredTrianglesFromTriangleList(true);
    surface.SetSearchMode(mode);
    CList<CList<t_hdelaunayedge*>*> lists;
    surface.FindAllBorderEdgeLists(&lists);
    std::vector<std::vector<std::pair<int, int>>> loops;
    while (!lists.IsEmpty()) {
        CList<t_hdelaunayedge*>* list = lists.RemoveHead();
        loops.emplace_back();
        for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
            const t_hdelaunayedge* edge = list->GetNext(pos);
            loops.back().emplace_back(edge->Vertex[0], edge->Vertex[1]);
        }
        ZrCIncrementalDelaunay2D::ClearEdgeList(list);
        delete list;
    }
    return loops;
}

CSSE3dPolygon Polygon(const std::vector<SSEPoint>& points)
{
    CSSE3dPolygon polygon;
    polygon.Create(static_cast<int>(points.size()));
    for (int i = 0; i < static_cast<int>(points.size()); ++i) polygon.SetPoint(i, points[i].x, points[i].y, points[i].z);
    return polygon;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Coplanar input ends the process by contract; here it ends the run.
    vek::SetExitHandler([](int) { throw ProcessExit{}; });
    vek::SetMessageHandler([](const std::string&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) return 0;
    const int algorithm = data[0] % 6;
    const Form form = static_cast<Form>((data[1] & 0x7F) % 3);
    const bool flag = (data[1] & 0x80) != 0;
    data += 2;
    size -= 2;
    const std::size_t stride = static_cast<std::size_t>(3 * BytesPerCoordinate(form));
    std::vector<SSEPoint> points;
    for (std::size_t at = 0; at + stride <= size && points.size() < 40; at += stride) {
        const int step = BytesPerCoordinate(form);
        points.push_back(Point(Coordinate(data + at, form), Coordinate(data + at + step, form), Coordinate(data + at + 2 * step, form)));
    }
    try {
        switch (algorithm) {
        case 0: Delaunay(points, true); break;
        case 1: Delaunay(points, false); break;
        case 2: {
            CSSE3dPolygon polygon = Polygon(points);
            CHPolygonTriangulator ears(&polygon, 1, 1.0f, 1.0f, 1.0f, flag);
            break;
        }
        case 3: {
            CSSE3dPolygon polygon = Polygon(points);
            CHConvexHull2D hull(&polygon);
            CSSE2dPolygon outline;
            hull.ObtainConvexHull2D(&outline);
            break;
        }
        case 5:
            // The chains through the vertex index must be those of the rescan.
            if (BorderLoops(points, flag, vek::SearchMode::Indexed) != BorderLoops(points, flag, vek::SearchMode::LinearScan))
                __builtin_trap();
            break;
        default: {
            CHConvexHull3D hull;
            for (const SSEPoint& p : points) hull.AppendVertex3D(p.x, p.y, p.z, 1.0f);
            hull.CalcConvexHull();
        }
        }
    } catch (const ProcessExit&) {
    }
    return 0;
}
