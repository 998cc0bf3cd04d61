// Point sets from arbitrary bytes through the triangulations and hulls.
// Byte 0 picks the algorithm, byte 1 the coordinate form and a flag; the rest
// are the points. The forms: a half-cell lattice of 32 x 32 (duplicates,
// collinear and cocircular runs), coordinates spread over +-10000 cells, and
// raw float bits (NaN, infinities, denormals).
//
// The incremental triangulation runs with both searches, and in its exact
// mode, whose result must be a Delaunay triangulation of the hull on every
// input: checked with the library's exact predicates (themselves checked
// against integer arithmetic in the tests). On the lattice,
// the sound input that rasters give, the indexed search must build exactly
// the lists of the walk; on every form each link of the result must lead to
// a listed triangle. A difference aborts the run.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <unordered_map>
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

// The corners and the links (as list positions) of every triangle in list
// order, or an empty shape if a link leads outside the list.
std::vector<long> Shape(CList<t_hdelaunaytriangle*>& list, bool& linksListed)
{
    std::unordered_map<const t_hdelaunaytriangle*, long> at;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) at.emplace(list.GetNext(pos), static_cast<long>(at.size()));
    std::vector<long> shape;
    linksListed = true;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* t = list.GetNext(pos);
        shape.insert(shape.end(), t->Vertex, t->Vertex + 3);
        for (const t_hdelaunaytriangle* n : t->Neighbour) {
            const auto found = at.find(n);
            if (n != nullptr && found == at.end()) linksListed = false;
            shape.push_back(n == nullptr ? -1 : (found == at.end() ? -2 : found->second));
        }
    }
    return shape;
}

std::vector<long> Delaunay(const std::vector<SSEPoint>& points, bool addCorners, vek::SearchMode mode)
{
    const int n = static_cast<int>(points.size());
    ZrCIncrementalDelaunay2D surface(n + 8);
    surface.SetSearchMode(mode);
    for (const SSEPoint& p : points) surface.AppendVertex(p);
    surface.Triangulate(surface.GetNumVertices(), false, addCorners);
    surface.FinalizeTriangleList();
    if (n > 0) surface.InsertVertexIntoTriangulation(points[0].x + 0.25f, points[n - 1].y, true);
    bool linksListed = true;
    std::vector<long> shape = Shape(surface.GetFinalList(), linksListed);
    if (!linksListed) std::abort();
    return shape;
}

// Without the box corners, two coincident points among the first three make
// the first triangle a point, and the float decisions that follow disagree
// with each other: the searches need not agree there.
bool FirstTriangleIsSound(const std::vector<SSEPoint>& points, bool addCorners)
{
    if (addCorners || points.size() < 3) return true;
    const auto same = [&](int i, int j) { return points[i].x == points[j].x && points[i].y == points[j].y; };
    return !same(0, 1) && !same(0, 2) && !same(1, 2);
}

void BothSearches(const std::vector<SSEPoint>& points, bool addCorners, Form form)
{
    const std::vector<long> indexed = Delaunay(points, addCorners, vek::SearchMode::Indexed);
    if (form != Form::Lattice || !FirstTriangleIsSound(points, addCorners)) return;
    if (indexed != Delaunay(points, addCorners, vek::SearchMode::LinearScan)) std::abort();
}

// Links returned and listed, every triangle counter-clockwise, no vertex
// strictly inside a neighbour's circle, every open side on the hull, every
// distinct point a corner, and as many triangles as a triangulation of the
// hull has (2V - B - 2 for V corners and B open sides), so no second sheet.
void ExactDelaunay(const std::vector<SSEPoint>& points, bool addCorners)
{
    const int n = static_cast<int>(points.size());
    ZrCIncrementalDelaunay2D surface(n + 8);
    surface.SetPredicates(vek::PlanarPredicates::Exact);
    for (const SSEPoint& p : points) surface.AppendVertex(p);
    surface.Triangulate(surface.GetNumVertices(), true, addCorners);
    CList<t_hdelaunaytriangle*>& list = surface.GetFinalList();
    bool linksListed = true;
    Shape(list, linksListed);
    if (!linksListed) std::abort();
    const auto at = [&](int i) { return surface.GetVertex(i); };
    std::unordered_map<long long, int> corners;
    int open = 0;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* t = list.GetNext(pos);
        const SSEPoint a = at(t->Vertex[0]), b = at(t->Vertex[1]), c = at(t->Vertex[2]);
        if (!(vek::Orient2D(a, b, c) > 0.0)) std::abort();
        for (int s = 0; s < 3; ++s) {
            corners[t->Vertex[s]] = 1;
            const t_hdelaunaytriangle* nb = t->Neighbour[s];
            if (nb == nullptr) {
                ++open;
                for (int v = 0; v < surface.GetNumVertices(); ++v) {
                    if (std::isfinite(at(v).x) && std::isfinite(at(v).y) &&
                        vek::Orient2D(at(t->Vertex[s]), at(t->Vertex[(s + 1) % 3]), at(v)) < 0.0)
                        std::abort();
                }
                continue;
            }
            bool returned = false;
            for (const t_hdelaunaytriangle* back : nb->Neighbour) returned = returned || back == t;
            if (!returned) std::abort();
            for (const int v : nb->Vertex) {
                if (v != t->Vertex[0] && v != t->Vertex[1] && v != t->Vertex[2] && vek::InCircle(a, b, c, at(v)) > 0.0)
                    std::abort();
            }
        }
    }
    if (list.GetCount() > 0 && list.GetCount() != 2 * static_cast<long>(corners.size()) - open - 2) std::abort();
    // Every finite distinct point is a corner, once there is a triangle.
    if (list.GetCount() == 0) return;
    std::unordered_map<long long, bool> placeCovered;
    const auto key = [](const SSEPoint& p) {
        std::uint32_t x = 0, y = 0;
        const float fx = p.x == 0.0f ? 0.0f : p.x, fy = p.y == 0.0f ? 0.0f : p.y;
        std::memcpy(&x, &fx, 4);
        std::memcpy(&y, &fy, 4);
        return static_cast<long long>((static_cast<std::uint64_t>(x) << 32) | y);
    };
    for (const auto& corner : corners) placeCovered[key(at(static_cast<int>(corner.first)))] = true;
    for (int v = 0; v < surface.GetNumVertices(); ++v) {
        if (std::isfinite(at(v).x) && std::isfinite(at(v).y) && !placeCovered.count(key(at(v)))) std::abort();
    }
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
    // Enough points for the search index to spread over many cells.
    const std::size_t most = algorithm <= 1 || algorithm == 5 ? 600 : 40;
    for (std::size_t at = 0; at + stride <= size && points.size() < most; at += stride) {
        const int step = BytesPerCoordinate(form);
        points.push_back(Point(Coordinate(data + at, form), Coordinate(data + at + step, form), Coordinate(data + at + 2 * step, form)));
    }
    try {
        switch (algorithm) {
        case 0: BothSearches(points, true, form); break;
        case 1: BothSearches(points, false, form); break;
        case 2: {
            CSSE3dPolygon polygon = Polygon(points);
            CHPolygonTriangulator ears(&polygon, 1, 1.0f, 1.0f, 1.0f, flag);
            break;
        }
        case 5: ExactDelaunay(points, flag); break;
        case 3: {
            CSSE3dPolygon polygon = Polygon(points);
            CHConvexHull2D hull(&polygon);
            CSSE2dPolygon outline;
            hull.ObtainConvexHull2D(&outline);
            break;
        }
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
