// Filters that drop triangles by height or by direction. A mesh has no
// removal in place: each filter rebuilds it from a copy.

#include <vector>

#include "vekdll/mesh/triangulation.h"

namespace {

// The lane-wise gap up to which two normals face the same way.
constexpr float kSameOrientation = 0.05f;

// Whether no lane of a - b lies outside +-0.05 (a lane that is not a
// number lies nowhere, and so never tells two normals apart).
bool FaceAlike(const SSEPoint& a, const SSEPoint& b)
{
    const float d[4] = {a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w};
    for (float lane : d) {
        if (lane > kSameOrientation || lane < -kSameOrientation) return false;
    }
    return true;
}

} // namespace

template <class Keep>
void CHTriangulation::KeepTriangles(Keep keep)
{
    CHTriangulation old(0, ScaleX, ScaleY, ScaleZ);
    old.CopyFromHTriangulation(this);
    std::vector<int> kept;
    kept.reserve(static_cast<std::size_t>(old.NumTriangles));
    for (int i = 0; i < old.NumTriangles; ++i) {
        if (keep(old, i)) kept.push_back(i);
    }
    CreateTriangulation(static_cast<int>(kept.size()));
    // Both ends of each per-triangle box take the old minimum: MaxPoint is
    // valid again only after CalcSTV.
    for (int to = 0; to < NumTriangles; ++to) CopyTriangleData(old, kept[static_cast<std::size_t>(to)], to);
    CalcNeighbours();
}

namespace {

// Corner heights of triangle i of `mesh`.
struct CornerHeights {
    float z[3];
};

CornerHeights HeightsOf(const CHTriangulation& mesh, int i)
{
    const t_htriangle& t = *mesh.GetTriangle(i);
    return {{t.P0->z, t.P1->z, t.P2->z}};
}

} // namespace

void CHTriangulation::RemoveTrianglesAboveZ(float z)
{
    KeepTriangles([z](const CHTriangulation& mesh, int i) {
        const CornerHeights h = HeightsOf(mesh, i);
        return h.z[0] < z || h.z[1] < z || h.z[2] < z;
    });
}

void CHTriangulation::RemoveTrianglesBelowZ(float z)
{
    KeepTriangles([z](const CHTriangulation& mesh, int i) {
        const CornerHeights h = HeightsOf(mesh, i);
        return h.z[0] > z || h.z[1] > z || h.z[2] > z;
    });
}

void CHTriangulation::RemoveTrianglesBetweenZ(float low, float high)
{
    KeepTriangles([low, high](const CHTriangulation& mesh, int i) {
        const CornerHeights h = HeightsOf(mesh, i);
        for (float v : h.z) {
            if (low <= v && v <= high) return false;
        }
        return true;
    });
}

// Of each chain of triangles whose N0 turn by no more than 0.05 per lane from
// one to a later one, the first stays: a triangle already marked still marks
// those after it. A triangle that came with Flag 0 goes as well.
void CHTriangulation::RemoveTrianglesWithSameOrientation()
{
    for (int i = 0; i < NumTriangles; ++i) {
        for (int j = i + 1; j < NumTriangles; ++j) {
            if (FaceAlike(NormalArray[3 * i], NormalArray[3 * j])) Triangles[j].Flag = 0;
        }
    }
    KeepTriangles([](const CHTriangulation& mesh, int i) { return mesh.GetTriangle(i)->Flag != 0; });
}
