#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <tuple>
#include <utility>

#include "mesh_builders.h"
#include "support/unowned_alias.h"
#include "vekdll/platform/framework_exceptions.h"

using namespace vek::test;

namespace {

// Two triangles across the edge (1,0,2)-(0,1,3), with every derived datum computed.
void MakeSquare(CHTriangulation& mesh)
{
    Fill(mesh, {{{{0, 0, 1}, {1, 0, 2}, {0, 1, 3}}}, {{{1, 0, 2}, {1, 1, 4}, {0, 1, 3}}}});
    for (auto calc : {&CHTriangulation::CalcSTV, &CHTriangulation::CalcNormalsFromVertices, &CHTriangulation::CalcBoundingBox,
                      &CHTriangulation::CalcCenterPoint, &CHTriangulation::CalcNeighbours})
        (mesh.*calc)();
}

TEST(CHTriangulationLife, FreeKeepsScaleAndBoxAndImpossibleCountsLeaveTheMeshEmpty)
{
    CHTriangulation mesh(3, 3.0f, 4.0f, 0.5f);
    SSEPoint* const box = mesh.GetPointArray();
    mesh.FreeTriangulation();
    EXPECT_EQ(std::pair(mesh.GetPointArray(), mesh.GetScaleY()), std::pair(box, 4.0f));
    // Below one triangle the mesh is empty; a count past what an int can
    // index by corner fails like exhausted memory.
    mesh.CreateTriangulation(-4);
    EXPECT_EQ(mesh.GetTriangle(0), nullptr);
    EXPECT_THROW(mesh.CreateTriangulation(0x7fffffff), CMemoryException);
    EXPECT_EQ(mesh.GetNumTriangles(), 0);
}

TEST(CHTriangulationLife, CopiesAreDeepWithTheMinimumInBothBoxEndsAndAssignmentShares)
{
    CHTriangulation source(0, 2.0f, 2.0f, 2.0f), target(7, 5.0f, 5.0f, 5.0f), alias(1, 1.0f, 1.0f, 1.0f);
    MakeSquare(source);
    CHTriangulation copy(&source);
    EXPECT_EQ(std::pair(copy.GetScaleX(), copy.GetScanConvDiagonal()), std::pair(2.0f, source.GetScanConvDiagonal()));
    for (int i = 0; i < 2; ++i) {
        const t_htriangle &s = *source.GetTriangle(i), &c = *copy.GetTriangle(i);
        // The maximum takes the source's minimum; neighbours still point into the source.
        EXPECT_EQ(std::tuple(c.P0, Lanes(*c.N1), Lanes(*c.MaxPoint), c.Neighbour1, c.Flag),
                  std::tuple(copy.GetEdgeArray() + 3 * i, Lanes(*s.N1), Lanes(*s.MinPoint), s.Neighbour1, 13));
    }
    copy.CalcSTV();
    EXPECT_EQ(Lanes(*copy.GetTriangle(1)->MaxPoint), (Lanes4{1, 1, 4, 0}));

    // Into an existing mesh the box block and the scan conversion grid come
    // along, the scale does not; a copy from itself changes nothing.
    target.CopyFromHTriangulation(&source);
    target.CopyFromHTriangulation(&target);
    EXPECT_EQ(std::pair(target.GetScaleX(), target.GetScanConvDiagonal()), std::pair(5.0f, source.GetScanConvDiagonal()));
    for (int k = 0; k < 3; ++k) EXPECT_EQ(Lanes(target.GetPointArray()[k]), Lanes(source.GetPointArray()[k])) << "box point " << k;
    const CHTriangulation second = source; // the C++ copy is deep as well
    EXPECT_NE(second.GetEdgeArray(), source.GetEdgeArray());
    WithOwnBytesKept(alias, [&] {
        alias = source;
        EXPECT_EQ(std::pair(alias.GetTriangles(), alias.GetPointArray()), std::pair(source.GetTriangles(), source.GetPointArray()));
    });
}

TEST(CHTriangulationLife, AppendPutsTheOtherMeshBehindAndRecomputesOnlyTheBox)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f), other(0, 1.0f, 1.0f, 1.0f);
    MakeSquare(mesh);
    const Lanes4 centre = Lanes(mesh.GetPointArray()[2]);
    Fill(other, {{{{5, 6, 7}, {8, 6, 7}, {5, 9, -7}}}});
    other.GetTriangle(0)->Flag = 14;

    mesh.AppendTriangulation(&other);
    ASSERT_EQ(mesh.GetNumTriangles(), 3);
    const t_htriangle* t = mesh.GetTriangles();
    EXPECT_EQ(Lanes(*t[2].P2), (Lanes4{5, 9, -7, 0}));
    EXPECT_EQ((std::array{t[1].Index, t[2].Index, t[0].Flag, t[2].Flag}), (std::array{1, 0, 13, 14}));
    const SSEPoint* box = mesh.GetPointArray();
    EXPECT_EQ((std::array{Lanes(box[0]), Lanes(box[1]), Lanes(box[2])}), (std::array{Lanes4{0, 0, -7, 0}, Lanes4{8, 9, 7, 0}, centre}));

    mesh.AppendTriangulation(&mesh); // doubles
    ASSERT_EQ(mesh.GetNumTriangles(), 6);
    for (int k = 0; k < 9; ++k) EXPECT_EQ(Lanes(mesh.GetEdgeArray()[9 + k]), Lanes(mesh.GetEdgeArray()[k]));
}

// One triangle, by default (1, 2, 3), (4, 6, 3), (0, 5, 9), with S, T, V and the boxes current.
void MakeOne(CHTriangulation& mesh, const Triangle& corners = {{{1, 2, 3}, {4, 6, 3}, {0, 5, 9}}})
{
    Fill(mesh, {corners});
    mesh.CalcSTV();
    mesh.CalcBoundingBox();
}

TEST(CHTriangulationGeometry, BoxCentreDerivedVectorsAndFlatNormalsComeFromTheCorners)
{
    CHTriangulation mesh(0, 1, 1, 1);
    mesh.CalcBoundingBox();
    mesh.CalcCenterPoint(); // no corners: 0 / 0
    EXPECT_EQ(Lanes(mesh.GetPointArray()[0]), (Lanes4{1e6f, 1e6f, 1e6f, 1e6f}));
    EXPECT_TRUE(std::isnan(mesh.GetPointArray()[2].x));
    // The start values clip the box: no corner moves the minimum above 1000000.
    Fill(mesh, {{{{1500000.0f, 0, 3}, {1600000.0f, 1, 0}, {1700000.0f, 0, 9}}}, {{{1500000.0f, 3, 3}, {1600000.0f, 0, 6}, {1500000.0f, 2, 3}}}});
    mesh.CalcBoundingBox();
    mesh.CalcCenterPoint();
    EXPECT_EQ(std::pair(Lanes(mesh.GetPointArray()[0]), Lanes(mesh.GetPointArray()[1])), std::pair(Lanes4{1e6f, 0, 0, 0}, Lanes4{1700000.0f, 3, 9, 0}));
    EXPECT_EQ(mesh.GetPointArray()[2].z, 4.0f); // the mean of all six corners

    MakeOne(mesh);
    const t_htriangle& t = *mesh.GetTriangle(0);
    EXPECT_EQ((std::vector{Lanes(*t.S), Lanes(*t.T), Lanes(*t.V), Lanes(*t.MinPoint), Lanes(*t.MaxPoint)}),
              (std::vector<Lanes4>{{3, 4, 0, 0}, {-1, 3, 6, 0}, {-4, -1, 6, 0}, {0, 2, 3, 0}, {4, 6, 9, 0}}));
    // S x T = (4*6 - 0*3, 0*(-1) - 3*6, 3*3 - 4*(-1)) = (24, -18, 13), on all three
    // corners, whichever way it faces, from either form; the main normal stays.
    *t.MainNormal = Sse(0.5f, 0.5f, 0.5f);
    const float length = std::sqrt(24.0f * 24.0f + 18.0f * 18.0f + 13.0f * 13.0f);
    for (auto calc : {&CHTriangulation::CalcNormalsFromVertices, &CHTriangulation::OrientTrianglesTowardsBBoxCenter}) {
        *t.N1 = Sse(0, 0, 0);
        (mesh.*calc)();
        for (const SSEPoint* n : {t.N0, t.N1, t.N2}) ExpectNear(Lanes(*n), {24.0f / length, -18.0f / length, 13.0f / length, 0});
    }
    EXPECT_EQ(Lanes(*t.MainNormal), (Lanes4{0.5f, 0.5f, 0.5f, 0}));
}

TEST(CHTriangulationGeometry, ScalingsShiftAndTurnsMoveCornersToHandComputedPlaces)
{
    const struct {
        const char* what;
        std::function<void(CHTriangulation&)> change;
        Lanes4 p0;           // where (1, 2, 3) goes
        bool derivedRenewed; // whether S and the boxes follow the corners
    } cases[] = {
        {"scale", [](CHTriangulation& m) { m.ScaleTriangulation(); }, {2, 6, 12, 0}, false},
        {"scale in x and y", [](CHTriangulation& m) { m.ScaleTriangulationXY(); }, {2, 6, 3, 0}, false},
        // Rescaling stores the factors and multiplies by them; it never divides by the old.
        {"rescale twice", [](CHTriangulation& m) { m.ReScaleTriangulation(2, 2, 2); m.ReScaleTriangulation(2, 2, 2); }, {4, 8, 12, 0}, true},
        {"blow", [](CHTriangulation& m) { m.BlowTriangulation(-1, 0.5f, 10); }, {-1, 1, 30, 0}, true},
        {"first angle", [](CHTriangulation& m) { m.TransformVertices(1.57079632679f, 0); }, {2, -1, 3, 0}, true},
        {"second angle", [](CHTriangulation& m) { m.TransformVertices(0, 1.57079632679f); }, {3, 2, -1, 0}, true},
        {"third angle", [](CHTriangulation& m) { m.TransformVertices(0, 0, 1.57079632679f); }, {1, 3, -2, 0}, true},
        // About (1, 1, 1): (1, 2, 3) - pivot = (0, 1, 2) turns to (1, 0, 2) and (0, 2, -1).
        {"about a point", [](CHTriangulation& m) { SSEPoint c = Sse(1, 1, 1); m.TransformVerticesAboutPoint(1.57079632679f, 0, c); }, {2, 1, 3, 0}, true},
        {"about a point, third angle", [](CHTriangulation& m) { SSEPoint c = Sse(1, 1, 1); m.TransformVerticesAboutPoint(0, 0, 1.57079632679f, c); }, {1, 3, 0, 0}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CHTriangulation mesh(0, 2, 3, 4);
        MakeOne(mesh);
        mesh.CalcCenterPoint();
        *mesh.GetTriangle(0)->N0 = Sse(0, 1, 0);
        *mesh.GetTriangle(0)->P1 = Sse(4, 6, 3, 5); // a stray fourth lane is scaled or turned to 0
        c.change(mesh);
        const t_htriangle& t = *mesh.GetTriangle(0);
        ExpectNear(Lanes(*t.P0), c.p0);
        EXPECT_EQ(t.P1->w, 0.0f);
        const Lanes4 s = {t.P1->x - t.P0->x, t.P1->y - t.P0->y, t.P1->z - t.P0->z, 0};
        EXPECT_EQ(Lanes(*t.S), c.derivedRenewed ? s : (Lanes4{3, 4, 0, 0}));
        EXPECT_EQ(Lanes(mesh.GetPointArray()[1]), c.derivedRenewed ? Lanes(*t.MaxPoint) : (Lanes4{4, 6, 9, 0}));
        // Normals and centre never change.
        EXPECT_EQ(std::pair(Lanes(*t.N0), Lanes(mesh.GetPointArray()[2])), std::pair(Lanes4{0, 1, 0, 0}, Lanes4{5.0f / 3, 13.0f / 3, 5, 0}));
    }
    // The shift moves corners and boxes but keeps S, T and V bit for bit.
    CHTriangulation mesh(0, 1, 1, 1);
    MakeOne(mesh, {{{0.1f, 0.2f, 0.3f}, {1.7f, 0.9f, -2.5f}, {3.3f, -1.1f, 0.7f}}});
    const t_htriangle& t = *mesh.GetTriangle(0);
    const SSEPoint s = *t.S;
    mesh.ShiftTriangulation(1000.5f, -3, 0.25f);
    EXPECT_EQ(std::memcmp(t.S, &s, sizeof s), 0);
    EXPECT_EQ((std::array{Lanes(*t.P0), Lanes(*t.MinPoint), Lanes(mesh.GetPointArray()[1])}),
              (std::array<Lanes4, 3>{{{0.1f + 1000.5f, 0.2f - 3, 0.3f + 0.25f, 0}, {0.1f + 1000.5f, -1.1f - 3, -2.5f + 0.25f, 0},
                                      {3.3f + 1000.5f, 0.9f - 3, 0.7f + 0.25f, 0}}}));
}

} // namespace
