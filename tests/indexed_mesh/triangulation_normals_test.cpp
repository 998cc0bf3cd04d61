#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "indexed_mesh/indexed_meshes.h"
#include "vekdll/indexed_mesh/triangulation_normals.h"

using namespace vek::test;
using Geometry::CTriangulation;

namespace {

void ExpectNear(const QbVector3f& got, const QbVector3f& want, const char* what)
{
    EXPECT_NEAR(got.x, want.x, 1e-6f) << what;
    EXPECT_NEAR(got.y, want.y, 1e-6f) << what;
    EXPECT_NEAR(got.z, want.z, 1e-6f) << what;
}

TEST(TriangulationNormals, AFlatSquareFacesTheSideItsCornersTurnCounterClockwiseFrom)
{
    CTriangulation square = UnitSquare();
    QyMpTriangulationNormals::Compute(square);
    EXPECT_EQ(ListOf(square.GetNormals()), std::vector<QbVector3f>(4, {0, 0, 1}));

    CTriangulation below = MeshOf(ListOf(square.GetPositions()), {{0, 2, 1}, {0, 3, 2}});
    QyMpTriangulationNormals::Compute(below);
    EXPECT_EQ(ListOf(below.GetNormals()), std::vector<QbVector3f>(4, {0, 0, -1}));

    // A vertex named by no triangle, and one named only by a triangle of no
    // area, get no direction; a triangle past the vertices is passed over.
    CTriangulation loose = MeshOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {7, 7, 7}, {2, 0, 0}},
                                  {{0, 1, 2}, {0, 1, 4}, {0, 2, 9}});
    QyMpTriangulationNormals::Compute(loose);
    EXPECT_EQ(ListOf(loose.GetNormals()),
              (std::vector<QbVector3f>{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 0}, {0, 0, 0}}));

    const float inf = std::numeric_limits<float>::infinity();
    CTriangulation far = MeshOf({{0, 0, 0}, {inf, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
    QyMpTriangulationNormals::Compute(far);
    EXPECT_EQ(ListOf(far.GetNormals()), std::vector<QbVector3f>(3, {0, 0, 0}));
}

TEST(TriangulationNormals, TetrahedronCornersWeighTheirFacesByArea)
{
    // The three faces on the axis planes have area 1/2 and point along -x,
    // -y, -z; the slanted face has area sqrt(3)/2 and points along (1, 1, 1).
    // Weighted by area, X sums (0, 0, -1) + (0, -1, 0) + (1, 1, 1) = (1, 0, 0);
    // with unit face normals it would lean away from the x axis.
    CTriangulation tetrahedron = CornerTetrahedron();
    QyMpTriangulationNormals::Compute(tetrahedron);
    const auto normals = tetrahedron.GetNormals();
    ASSERT_EQ(normals.size(), 4u);
    const float r = 1.0f / std::sqrt(3.0f);
    ExpectNear(normals[0], {-r, -r, -r}, "O");
    ExpectNear(normals[1], {1, 0, 0}, "X");
    ExpectNear(normals[2], {0, 1, 0}, "Y");
    ExpectNear(normals[3], {0, 0, 1}, "Z");

    ExpectNear(QyMpTriangulationNormals::FaceNormal({1, 0, 0}, {0, 1, 0}, {0, 0, 1}), {r, r, r}, "slanted face");
    ExpectNear(QyMpTriangulationNormals::FaceNormal({0, 0, 0}, {0, 3, 0}, {2, 0, 0}), {0, 0, -1}, "axis face");
    ExpectNear(QyMpTriangulationNormals::FaceNormal({0, 0, 0}, {1, 1, 1}, {3, 3, 3}), {0, 0, 0}, "collinear");

    // Tiny and huge meshes give the same directions: no square of a float
    // coordinate underflows or overflows.
    for (float scale : {1e-30f, 1e30f}) {
        CTriangulation scaled = MeshOf({{0, 0, 0}, {scale, 0, 0}, {0, scale, 0}, {0, 0, scale}},
                                       ListOf(tetrahedron.GetTriangles()));
        QyMpTriangulationNormals::Compute(scaled);
        ExpectNear(scaled.GetNormals()[0], {-r, -r, -r}, "O, scaled");
        ExpectNear(scaled.GetNormals()[3], {0, 0, 1}, "Z, scaled");
    }
}

} // namespace
