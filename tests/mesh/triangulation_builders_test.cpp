#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>
#include <vector>

#include "mesh_builders.h"
#include "support/polygon_points.h"
#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/planar/convex_hull_3d.h"
#include "vekdll/planar/delaunay_2d.h"
#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/platform/user_hooks.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using namespace vek::test;

namespace {

using TriangleLanes = std::array<Lanes4, 3>;

TriangleLanes Tri(Lanes4 a, Lanes4 b, Lanes4 c)
{
    return {a, b, c};
}

// Twice the signed area of the triangle in the plane, positive counter-clockwise.
float TwiceArea(const t_htriangle& t)
{
    return (t.P1->x - t.P0->x) * (t.P2->y - t.P0->y) - (t.P2->x - t.P0->x) * (t.P1->y - t.P0->y);
}

bool AtOrigin(const t_htriangle& t)
{
    for (const Lanes4& c : Corners(t)) {
        if (c != Lanes4{0, 0, 0, 0}) return false;
    }
    return true;
}

TEST(MeshFromOneField, TheUnsampledBuilderKeepsRoomForTwiceTheValidPixelsAndLeavesAZeroedTail)
{
    // A 2 x 2 block of height 5 in a field of 0, cut above 1, scale (2, 3).
    CSSEMatrix field;
    FillField(field, 4, 4, [](int x, int y) { return x >= 1 && x <= 2 && y >= 1 && y <= 2 ? 5.0f : 0.0f; });
    CHTriangulation mesh(0, 2.0f, 3.0f, 7.0f);
    mesh.CreateTriangulationFromSSEField(&field, 1.0f, true);
    ASSERT_EQ(mesh.GetNumTriangles(), 8);
    // The one full cell, split along A-D; heights raw, x and y scaled.
    EXPECT_EQ(Corners(*mesh.GetTriangle(0)), Tri({2, 3, 5, 0}, {4, 6, 5, 0}, {2, 6, 5, 0}));
    EXPECT_EQ(Corners(*mesh.GetTriangle(1)), Tri({2, 3, 5, 0}, {4, 3, 5, 0}, {4, 6, 5, 0}));
    for (int i = 2; i < 8; ++i) {
        EXPECT_TRUE(AtOrigin(*mesh.GetTriangle(i))) << i;
        EXPECT_EQ(mesh.GetTriangle(i)->Flag, -1);
    }

    // A value equal to the threshold is valid on neither side; nothing valid
    // leaves the mesh as it was.
    CSSEMatrix level;
    level.Create(4, 4);
    level.Fill(1.0f);
    for (bool above : {true, false}) {
        mesh.CreateTriangulationFromSSEField(&level, 1.0f, above);
        EXPECT_EQ(mesh.GetNumTriangles(), 8) << above;
    }
}

// The rows of cells, as the y of their top corner, that have a triangle.
std::set<float> RowsWithTriangles(const CHTriangulation& mesh)
{
    std::set<float> rows;
    for (int i = 0; i < mesh.GetNumTriangles(); ++i) {
        const t_htriangle& t = *mesh.GetTriangle(i);
        if (!AtOrigin(t)) rows.insert(std::min({t.P0->y, t.P1->y, t.P2->y}));
    }
    return rows;
}

TEST(MeshFromOneField, BelowTheThresholdEveryFourthRowOfCellsStaysEmptyAndNormalsFaceDown)
{
    // 3 x 9 pixels: cells in rows 0 .. 7, four rows to a block of storage.
    CSSEMatrix field;
    FillField(field, 3, 9, [](int x, int y) { return static_cast<float>(x + y) * 0.1f; });
    CHTriangulation above(0, 1.0f, 1.0f, 1.0f), below(0, 1.0f, 1.0f, 1.0f);
    above.CreateTriangulationFromSSEField(&field, -1.0f, true);
    below.CreateTriangulationFromSSEField(&field, 100.0f, false);
    EXPECT_EQ(RowsWithTriangles(above), (std::set<float>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(RowsWithTriangles(below), (std::set<float>{0, 1, 2, 4, 5, 6}));
    // Room for twice every lane below 100, the padding lanes of the three
    // lines of storage included.
    EXPECT_EQ(below.GetNumTriangles(), 2 * 3 * 12);
    EXPECT_GT(above.GetTriangle(0)->N0->z, 0.0f);
    EXPECT_LT(below.GetTriangle(0)->N0->z, 0.0f);
    EXPECT_LT(below.GetTriangle(0)->MainNormal->z, 0.0f);
}

TEST(MeshFromOneField, SampledCellsCountWhatIsWrittenAndKeepToTheAreaAndThePolygon)
{
    CSSEMatrix field;
    field.Create(5, 5);
    field.Fill(2.0f);
    CHTriangulation mesh(0, 1.0f, 2.0f, 1.0f);
    // Cells of 2 x 2 at x, y = 0 and 2.
    mesh.CreateTriangulationFromSSEFieldSubSampled(&field, 1.0f, true, 2, 2);
    ASSERT_EQ(mesh.GetNumTriangles(), 8);
    EXPECT_EQ(Corners(*mesh.GetTriangle(0)), Tri({0, 0, 2, 0}, {2, 4, 2, 0}, {0, 4, 2, 0}));
    EXPECT_EQ(Corners(*mesh.GetTriangle(3)), Tri({0, 4, 2, 0}, {2, 4, 2, 0}, {2, 8, 2, 0}));

    // The area's upper bounds are inclusive: x from 1 to 4 holds one cell
    // (1 .. 3), y from 0 to 2 one (0 .. 2); an area narrower than a step none.
    mesh.CreateTriangulationFromSSEFieldSubSampled(&field, 1.0f, true, 2, 2, 1, 4, 0, 2, false);
    ASSERT_EQ(mesh.GetNumTriangles(), 2);
    EXPECT_EQ(Corners(*mesh.GetTriangle(1)), Tri({1, 0, 2, 0}, {3, 0, 2, 0}, {3, 4, 2, 0}));
    mesh.CreateTriangulationFromSSEFieldSubSampled(&field, 1.0f, true, 2, 2, 3, 4, 0, 4, false);
    EXPECT_EQ(mesh.GetNumTriangles(), 0);

    // The triangle x + y < 3, with every fourth point a corner: the thinned
    // line the inner-area test reads is the triangle itself. Of the cell at
    // the origin D = (2, 2) lies outside, which leaves A, B, C; no other cell
    // has a triangle's worth of corners inside.
    CSSE3dPolygon triangle;
    std::vector<Xyz> points;
    const Xyz corners[3] = {{-0.5f, -0.5f}, {3.5f, -0.5f}, {-0.5f, 3.5f}};
    for (int side = 0; side < 3; ++side) {
        const Xyz& a = corners[side];
        const Xyz& b = corners[(side + 1) % 3];
        for (int k = 0; k < 4; ++k) points.push_back({a.x + (b.x - a.x) * k / 4.0f, a.y + (b.y - a.y) * k / 4.0f});
    }
    Fill(triangle, points);
    mesh.CreateTriangulationFromSSEFieldSubSampled(&field, 1.0f, true, 2, 2, &triangle);
    ASSERT_EQ(mesh.GetNumTriangles(), 1);
    EXPECT_EQ(Corners(*mesh.GetTriangle(0)), Tri({0, 0, 2, 0}, {2, 0, 2, 0}, {0, 4, 2, 0}));

    // A step below one makes nothing.
    mesh.CreateTriangulationFromSSEFieldSubSampled(&field, 1.0f, true, 0, 2);
    EXPECT_EQ(mesh.GetNumTriangles(), 0);
}

TEST(MeshFromOneField, ACheckeredMaskThatOutgrowsTheEstimateStopsWhereTheRoomEnds)
{
    // Every second pixel valid, cells of 2: each cell's corners all fall on
    // valid pixels, so the cells want more than twice the valid pixels over 4.
    CSSEMatrix field;
    FillField(field, 9, 9, [](int x, int y) { return (x % 2 == 0 && y % 2 == 0) ? 1.0f : 0.0f; });
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    mesh.CreateTriangulationFromSSEFieldSubSampled(&field, 0.5f, true, 2, 2);
    // 25 valid pixels: room for 50 / 4 = 12 triangles, 6 cells of the 16.
    EXPECT_EQ(mesh.GetNumTriangles(), 12);
}

TEST(MeshFromTwoFields, CornersAreValidWhereUpperIsAboveAndTheMeshLiesOnTheChosenField)
{
    CSSEMatrix upper, lower;
    upper.Create(4, 4);
    upper.Fill(5.0f);
    lower.Create(4, 4);
    lower.Fill(1.0f);
    lower.SetPoint(0, 0, 9.0f);
    CHTriangulation top(&upper, &lower, true, 1.0f, 1.0f, 1.0f, 1, 1);
    CHTriangulation bottom(&upper, &lower, false, 1.0f, 1.0f, 1.0f, 1, 1);
    // Nine cells; the one at the origin lost A and keeps B, D, C.
    ASSERT_EQ(top.GetNumTriangles(), 17);
    ASSERT_EQ(bottom.GetNumTriangles(), 17);
    EXPECT_EQ(Corners(*top.GetTriangle(0)), Tri({1, 0, 5, 0}, {1, 1, 5, 0}, {0, 1, 5, 0}));
    for (int i = 0; i < 17; ++i) {
        const t_htriangle &t = *top.GetTriangle(i), &b = *bottom.GetTriangle(i);
        EXPECT_EQ(std::pair(t.P1->x, t.P2->y), std::pair(b.P1->x, b.P2->y));
        EXPECT_EQ(std::pair(t.P0->z, b.P0->z), std::pair(5.0f, 1.0f));
        // Flat normals, counter-clockwise seen from above.
        EXPECT_EQ(Lanes(*b.N2), (Lanes4{0, 0, 1, 0}));
    }
    // Neighbours found: the pair of an inner cell shares its diagonal, and
    // triangles on the rim are flagged.
    EXPECT_EQ(top.GetTriangle(9)->Neighbour0, top.GetTriangle(10));
    EXPECT_EQ(top.GetTriangle(0)->Flag, 13);
}

TEST(MeshFromFields, ThinOrEmptyFieldsGiveWhatTheLoopsAllow)
{
    CSSEMatrix column;
    column.Create(1, 6);
    column.Fill(2.0f);
    // One column has no cell: the sampled builder writes nothing, the
    // unsampled one keeps room for twice the valid lanes, all at the origin.
    CHTriangulation sampled(&column, 1.0f, true, 1.0f, 1.0f, 1.0f, 1, 1);
    EXPECT_EQ(sampled.GetNumTriangles(), 0);
    CHTriangulation unsampled(&column, 1.0f, true, 1.0f, 1.0f, 1.0f);
    ASSERT_EQ(unsampled.GetNumTriangles(), 16);
    EXPECT_TRUE(AtOrigin(*unsampled.GetTriangle(15)));

    CSSEMatrix row, empty;
    row.Create(6, 1);
    row.Fill(2.0f);
    CHTriangulation flat(&row, 1.0f, true, 1.0f, 1.0f, 1.0f, 1, 1);
    EXPECT_EQ(flat.GetNumTriangles(), 0);
    CHTriangulation none(&row, 5.0f, true, 1.0f, 1.0f, 1.0f);
    EXPECT_EQ(none.GetNumTriangles(), 0);
    CHTriangulation noImage(&empty, 0.0f, false, 1.0f, 1.0f, 1.0f, 2, 2);
    EXPECT_EQ(noImage.GetNumTriangles(), 0);
}

// ---------------------------------------------------------------- polygons

const std::vector<Xyz> kSquare = {{0, 0, 1}, {4, 0, 1}, {4, 4, 1}, {0, 4, 1}};

float SummedArea(const CHTriangulation& mesh)
{
    float twice = 0.0f;
    for (int i = 0; i < mesh.GetNumTriangles(); ++i) twice += TwiceArea(*mesh.GetTriangle(i));
    return twice / 2.0f;
}

TEST(MeshFromPolygon, EarClippingCoversTheRingClosedOrNotAndRefinementSplitsIt)
{
    CSSE3dPolygon square, closed;
    Fill(square, kSquare);
    std::vector<Xyz> closedPoints = kSquare;
    closedPoints.push_back(kSquare[0]);
    Fill(closed, closedPoints);

    // The mesh takes the ear clipper's triangles as they are (a run may stop
    // one short), scaled by (2, 3, 5), with flat normals facing up.
    CHPolygonTriangulator clipper(&square, 1, 1.0f, 1.0f, 1.0f, true);
    ASSERT_GE(clipper.GetNumTriangles(), 1);
    SSEPoint a, b, c;
    clipper.GetTriangle3D(0, a, b, c);
    CHTriangulation plain(&square, 2.0f, 3.0f, 5.0f, 1, 1.0f, false, false);
    CHTriangulation fromClosed(&closed, 2.0f, 3.0f, 5.0f, 1, 1.0f, false, false);
    for (const CHTriangulation* mesh : {&plain, &fromClosed}) {
        ASSERT_EQ(mesh->GetNumTriangles(), clipper.GetNumTriangles());
        EXPECT_EQ(Lanes(*mesh->GetTriangle(0)->P1), (Lanes4{2 * b.x, 3 * b.y, 5, 0}));
        EXPECT_EQ(Lanes(*mesh->GetTriangle(0)->N0), (Lanes4{0, 0, 1, 0}));
    }

    // Refinement splits the same area into more triangles; new corners take
    // their height from every eighth point of the ring, which must have them.
    CSSE3dPolygon circle;
    std::vector<Xyz> ring;
    for (int i = 0; i < 32; ++i) {
        const double angle = 2.0 * 3.141592653589793 * i / 32.0;
        ring.push_back({static_cast<float>(4.0 * std::cos(angle)), static_cast<float>(4.0 * std::sin(angle)), 1.0f});
    }
    Fill(circle, ring);
    CHTriangulation unrefined(&circle, 1.0f, 1.0f, 1.0f, 1, 0.5f, false, false);
    CHTriangulation refined(&circle, 1.0f, 1.0f, 1.0f, 1, 0.5f, false, true);
    EXPECT_GT(refined.GetNumTriangles(), 2 * unrefined.GetNumTriangles());
    EXPECT_FLOAT_EQ(SummedArea(refined), SummedArea(unrefined));
    for (int i = 0; i < refined.GetNumTriangles(); ++i) EXPECT_FLOAT_EQ(refined.GetTriangle(i)->P2->z, 1.0f) << i;

    // Fewer than three points: no triangle, and the constructor ends at once.
    CSSE3dPolygon two;
    Fill(two, {{0, 0}, {1, 1}});
    CHTriangulation none(&two, 1.0f, 1.0f, 1.0f, 1, 1.0f, false, true);
    EXPECT_EQ(none.GetNumTriangles(), 0);
}

TEST(MeshFromPolygon, TheFanStartsWithTheClosingTriangleAndEndsAtTheCentre)
{
    CSSE3dPolygon square;
    Fill(square, kSquare);
    CHTriangulation fan(&square, 1.0f, 1.0f, 1.0f, 1, 0.0f, true, false);
    ASSERT_EQ(fan.GetNumTriangles(), 4);
    EXPECT_EQ(Corners(*fan.GetTriangle(0)), Tri({0, 4, 1, 0}, {0, 0, 1, 0}, {2, 2, 1, 0}));
    EXPECT_EQ(Corners(*fan.GetTriangle(1)), Tri({0, 0, 1, 0}, {4, 0, 1, 0}, {2, 2, 1, 0}));
    // The source is left alone.
    EXPECT_EQ(square.GetNumPoints(), 4);
}

TEST(MeshBetweenTwoRings, TheRuledBandPairsEachSegmentAndTheLoftStacksBands)
{
    CSSE3dPolygon bottom, top;
    Fill(bottom, {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}});
    Fill(top, {{0, 0, 8}, {4, 0, 8}, {4, 4, 8}, {0, 4, 8}});
    CHTriangulation band(&bottom, &top, 1.0f, 1.0f, 0.5f, false, false);
    ASSERT_EQ(band.GetNumTriangles(), 8);
    // The closing segment first, with z scaled by 0.5.
    EXPECT_EQ(Corners(*band.GetTriangle(0)), Tri({0, 4, 0, 0}, {0, 0, 0, 0}, {0, 4, 4, 0}));
    EXPECT_EQ(Corners(*band.GetTriangle(1)), Tri({0, 4, 4, 0}, {0, 0, 0, 0}, {0, 0, 4, 0}));
    EXPECT_EQ(Corners(*band.GetTriangle(3)), Tri({0, 0, 4, 0}, {4, 0, 0, 0}, {4, 0, 4, 0}));
    EXPECT_EQ(Lanes(band.GetPointArray()[2]), (Lanes4{2, 2, 2, 0}));
    // The square runs counter-clockwise, so the band faces inward.
    EXPECT_EQ(Lanes(*band.GetTriangle(0)->N0), (Lanes4{-1, 0, 0, 0}));

    // Two levels, through the ring halfway up.
    CHTriangulation loft(&bottom, &top, 1.0f, 1.0f, 1.0f, 1, false, false);
    ASSERT_EQ(loft.GetNumTriangles(), 16);
    EXPECT_EQ(Corners(*loft.GetTriangle(1)), Tri({0, 4, 4, 0}, {0, 0, 0, 0}, {0, 0, 4, 0}));
    EXPECT_EQ(Corners(*loft.GetTriangle(9)), Tri({0, 4, 8, 0}, {0, 0, 4, 0}, {0, 0, 8, 0}));

    CSSE3dPolygon empty;
    CHTriangulation none(&empty, &top, 1.0f, 1.0f, 1.0f, 3, false, false);
    EXPECT_EQ(none.GetNumTriangles(), 0);
}

// ---------------------------------------------------------------- hulls and indexed meshes

TEST(MeshFromHulls, HullFacesFaceOutwardAndDelaunayFacesAreTenthsWithTheirFlag)
{
    CHConvexHull3D hull;
    for (const Xyz& p : std::vector<Xyz>{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0, 0, 10}}) hull.AppendVertex3D(p.x, p.y, p.z, 1.0f);
    hull.CalcConvexHull();
    CHTriangulation tetra(&hull, 1.0f, 1.0f, 1.0f, 2.0f);
    ASSERT_EQ(tetra.GetNumTriangles(), 4);
    for (int i = 0; i < 4; ++i) {
        const t_htriangle& t = *tetra.GetTriangle(i);
        // Corners halved; the normal points away from the inside point (1, 1, 1).
        for (const Lanes4& c : Corners(t)) EXPECT_EQ(c[0] + c[1] + c[2] == 0.0f || c[0] + c[1] + c[2] == 5.0f, true);
        const float outward = t.N0->x * (t.P0->x - 1) + t.N0->y * (t.P0->y - 1) + t.N0->z * (t.P0->z - 1);
        EXPECT_GT(outward, 0.0f) << i;
    }

    const vek::MessageHandler previous = vek::SetMessageHandler([](const std::string&) {});
    CH2DDelaunay delaunay;
    for (const Xyz& p : std::vector<Xyz>{{0, 0}, {3, 0}, {3, 3}, {0, 3}, {1, 2}}) delaunay.AppendVertex(p.x, p.y, -1, false);
    delaunay.CalcDelaunayTriangulation();
    vek::SetMessageHandler(previous);
    CHTriangulation lifted(&delaunay, 2.0f, 2.0f, 1.0f, false);
    CHTriangulation flat(&delaunay, 2.0f, 2.0f, 1.0f, true);
    ASSERT_EQ(lifted.GetNumTriangles(), 4);
    for (int i = 0; i < 4; ++i) {
        const t_htriangle &t = *lifted.GetTriangle(i), &f = *flat.GetTriangle(i);
        // x and y back in units, then doubled by the scale; z the lifted
        // height 10 (x^2 + y^2) of the grid of tenths, or 0.
        const float x = t.P1->x / 2.0f, y = t.P1->y / 2.0f;
        EXPECT_FLOAT_EQ(t.P1->z, 10.0f * (x * x + y * y));
        EXPECT_EQ(std::tuple(f.P1->z, f.Flag, t.Flag), std::tuple(0.0f, 14, 14));
    }
}

TEST(MeshFromIndexedMesh, IsEmptyWithTheScaleGiven)
{
    Geometry::CTriangulation indexed;
    CSSE3dPolygon polygon;
    CHTriangulation plain(&indexed), scaled(&indexed, 2.0f, 3.0f, 4.0f), withPolygon(&indexed, &polygon, 5.0f, 5.0f, 5.0f);
    EXPECT_EQ(std::tuple(plain.GetNumTriangles(), plain.GetScaleX(), scaled.GetScaleY(), withPolygon.GetNumTriangles()),
              std::tuple(0, 1.0f, 3.0f, 0));
}

} // namespace
