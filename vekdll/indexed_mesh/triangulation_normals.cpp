// Area-weighted vertex normals of an indexed mesh.

#include "vekdll/indexed_mesh/triangulation_normals.h"

#include <cmath>
#include <vector>

namespace {

struct Sum3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

// (p1 - p0) x (p2 - p0): the normal scaled to twice the triangle's area.
Sum3 AreaNormal(const QbVector3f& p0, const QbVector3f& p1, const QbVector3f& p2)
{
    const double sx = double(p1.x) - p0.x, sy = double(p1.y) - p0.y, sz = double(p1.z) - p0.z;
    const double tx = double(p2.x) - p0.x, ty = double(p2.y) - p0.y, tz = double(p2.z) - p0.z;
    return {sy * tz - sz * ty, sz * tx - sx * tz, sx * ty - sy * tx};
}

QbVector3f Normalised(const Sum3& v)
{
    const double length = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
    if (!(length > 0.0) || !std::isfinite(length)) return {};
    return {static_cast<float>(v.x / length), static_cast<float>(v.y / length), static_cast<float>(v.z / length)};
}

} // namespace

void QyMpTriangulationNormals::Compute(Geometry::CTriangulation& mesh)
{
    const auto positions = mesh.GetPositions();
    std::vector<Sum3> sums(positions.size());
    for (const auto& t : mesh.GetTriangles()) {
        if (t[0] >= sums.size() || t[1] >= sums.size() || t[2] >= sums.size()) continue;
        const Sum3 n = AreaNormal(positions[t[0]], positions[t[1]], positions[t[2]]);
        for (unsigned int v : t) {
            sums[v].x += n.x;
            sums[v].y += n.y;
            sums[v].z += n.z;
        }
    }
    SMemoryBlock<QbVector3f> normals(sums.size());
    for (std::size_t v = 0; v < sums.size(); ++v) normals[v] = Normalised(sums[v]);
    mesh.SetNormals(std::move(normals));
}

QbVector3f QyMpTriangulationNormals::FaceNormal(const QbVector3f& p0, const QbVector3f& p1, const QbVector3f& p2)
{
    return Normalised(AreaNormal(p0, p1, p2));
}
