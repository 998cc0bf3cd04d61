#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "mesh_builders.h"
#include "vekdll/platform/framework_exceptions.h"

using vek::test::ExpectSamePoint;
using vek::test::Fill;
using vek::test::Sse;

namespace {

// Two triangles across the edge (1,0,2)-(0,1,3), with every derived datum computed.
void MakeSquare(CHTriangulation& mesh)
{
    Fill(mesh, {{{{0, 0, 1}, {1, 0, 2}, {0, 1, 3}}}, {{{1, 0, 2}, {1, 1, 4}, {0, 1, 3}}}});
    mesh.CalcSTV();
    mesh.CalcNormalsFromVertices();
    mesh.CalcBoundingBox();
    mesh.CalcCenterPoint();
    mesh.CalcNeighbours();
}

TEST(CHTriangulationLife, CreateGivesZeroedTrianglesInAlignedArraysAndFreeKeepsScaleAndBox)
{
    CHTriangulation mesh(3, 3.0f, 4.0f, 0.5f);
    ASSERT_EQ(mesh.GetNumTriangles(), 3);
    EXPECT_EQ(mesh.GetTriangle(-1), nullptr);
    EXPECT_EQ(mesh.GetTriangle(3), nullptr);
    EXPECT_EQ(mesh.GetMaxPointArray(), mesh.GetMinPointArray());
    for (const void* array : {mesh.GetEdgeArray(), mesh.GetNormalArray(), mesh.GetSArray(), mesh.GetPointArray()}) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array) % 16, 0u);
    }
    const t_htriangle* t = mesh.GetTriangle(2);
    EXPECT_EQ(t->P1, mesh.GetEdgeArray() + 7);
    EXPECT_EQ(t->MinPoint, mesh.GetMinPointArray() + 2);
    EXPECT_NE(t->MaxPoint, t->MinPoint);
    EXPECT_EQ(t->Index, 2);
    EXPECT_EQ(t->Flag, -1);
    EXPECT_EQ(t->Neighbour1, nullptr);
    for (const SSEPoint* p : {t->P2, t->N0, t->MainNormal, t->T}) ExpectSamePoint(*p, Sse(0, 0, 0));

    float x = 0, y = 0, z = 0;
    mesh.GetScanConvResolution(x, y, z);
    EXPECT_EQ(x, 3.0f);
    EXPECT_EQ(z, 0.5f);
    EXPECT_EQ(mesh.GetScanConvDiagonal(), 5.0f);

    SSEPoint* const box = mesh.GetPointArray();
    mesh.FreeTriangulation();
    EXPECT_EQ(mesh.GetNumTriangles(), 0);
    EXPECT_EQ(mesh.GetEdgeArray(), nullptr);
    EXPECT_EQ(mesh.GetTriangle(0), nullptr);
    EXPECT_EQ(mesh.GetPointArray(), box);
    EXPECT_EQ(mesh.GetScaleY(), 4.0f);

    // Below one triangle the mesh is empty; a count past what an int can
    // index by corner fails like exhausted memory.
    mesh.CreateTriangulation(-4);
    EXPECT_EQ(mesh.GetNumTriangles(), 0);
    EXPECT_THROW(mesh.CreateTriangulation(0x7fffffff), CMemoryException);
    EXPECT_EQ(mesh.GetNumTriangles(), 0);
}

TEST(CHTriangulationLife, DeepCopyOwnsItsArraysAndKeepsTheMinimumInBothBoxEnds)
{
    CHTriangulation source(0, 2.0f, 2.0f, 2.0f);
    MakeSquare(source);

    CHTriangulation copy(&source);
    ASSERT_EQ(copy.GetNumTriangles(), 2);
    EXPECT_NE(copy.GetEdgeArray(), source.GetEdgeArray());
    EXPECT_EQ(copy.GetScaleX(), 2.0f);
    for (int i = 0; i < 2; ++i) {
        const t_htriangle* s = source.GetTriangle(i);
        const t_htriangle* c = copy.GetTriangle(i);
        EXPECT_EQ(c->P0, copy.GetEdgeArray() + 3 * i);
        ExpectSamePoint(*c->P2, *s->P2);
        ExpectSamePoint(*c->N1, *s->N1);
        ExpectSamePoint(*c->V, *s->V);
        ExpectSamePoint(*c->MaxPoint, *s->MinPoint, "max takes the source's min");
        EXPECT_EQ(c->Neighbour1, s->Neighbour1); // still into the source
        EXPECT_EQ(c->Neighbour2, s->Neighbour2);
        EXPECT_EQ(c->Flag, 13);
    }
    for (int k = 0; k < 3; ++k) ExpectSamePoint(copy.GetPointArray()[k], source.GetPointArray()[k]);
    copy.CalcSTV();
    ExpectSamePoint(*copy.GetTriangle(1)->MaxPoint, Sse(1, 1, 4));

    source.GetEdgeArray()[0] = Sse(9, 9, 9);
    ExpectSamePoint(copy.GetEdgeArray()[0], Sse(0, 0, 1));

    // Into an existing mesh the scan conversion grid comes along, the scale
    // does not; a copy from itself changes nothing.
    CHTriangulation target(7, 5.0f, 5.0f, 5.0f);
    target.CopyFromHTriangulation(&source);
    EXPECT_EQ(target.GetNumTriangles(), 2);
    EXPECT_EQ(target.GetScaleX(), 5.0f);
    EXPECT_EQ(target.GetScanConvDiagonal(), source.GetScanConvDiagonal());
    target.CopyFromHTriangulation(&target);
    ExpectSamePoint(target.GetEdgeArray()[0], Sse(9, 9, 9));

    const CHTriangulation second = source; // the C++ copy is deep as well
    EXPECT_NE(second.GetEdgeArray(), source.GetEdgeArray());
}

TEST(CHTriangulationLife, AssignmentSharesTheArrays)
{
    CHTriangulation source(0, 1.0f, 1.0f, 1.0f);
    MakeSquare(source);
    CHTriangulation alias(1, 1.0f, 1.0f, 1.0f);
    // The assignment orphans the target's own arrays and makes both objects
    // release the same ones; the test keeps the target's bytes and hands them
    // back before the target is destroyed.
    alignas(CHTriangulation) unsigned char own[sizeof(CHTriangulation)];
    std::memcpy(own, static_cast<void*>(&alias), sizeof own);

    alias = source;
    EXPECT_EQ(alias.GetTriangles(), source.GetTriangles());
    EXPECT_EQ(alias.GetPointArray(), source.GetPointArray());
    alias.GetEdgeArray()[0] = Sse(-1, -2, -3);
    ExpectSamePoint(source.GetEdgeArray()[0], Sse(-1, -2, -3));

    std::memcpy(static_cast<void*>(&alias), own, sizeof own);
}

TEST(CHTriangulationLife, AppendTriangulationPutsTheOtherMeshBehindAndRecomputesOnlyTheBox)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    MakeSquare(mesh);
    const t_htriangle* const oldNeighbour = mesh.GetTriangle(0)->Neighbour1;
    const SSEPoint centre = mesh.GetPointArray()[2];
    CHTriangulation other(0, 1.0f, 1.0f, 1.0f);
    Fill(other, {{{{5, 6, 7}, {8, 6, 7}, {5, 9, -7}}}});
    other.GetTriangle(0)->Flag = 14;

    mesh.AppendTriangulation(&other);
    ASSERT_EQ(mesh.GetNumTriangles(), 3);
    ExpectSamePoint(mesh.GetEdgeArray()[4], Sse(1, 1, 4));
    ExpectSamePoint(*mesh.GetTriangle(2)->P2, Sse(5, 9, -7));
    EXPECT_EQ(mesh.GetTriangle(1)->Index, 1);
    EXPECT_EQ(mesh.GetTriangle(2)->Index, 0); // the appended half counts from 0 again
    EXPECT_EQ(mesh.GetTriangle(0)->Flag, 13);
    EXPECT_EQ(mesh.GetTriangle(2)->Flag, 14);
    EXPECT_EQ(mesh.GetTriangle(0)->Neighbour1, oldNeighbour); // now pointing at a released record
    ExpectSamePoint(*mesh.GetTriangle(0)->MaxPoint, *mesh.GetTriangle(0)->MinPoint);
    SSEPoint low, high;
    mesh.GetMinPoint(low);
    mesh.GetMaxPoint(high);
    ExpectSamePoint(low, Sse(0, 0, -7));
    ExpectSamePoint(high, Sse(8, 9, 7));
    ExpectSamePoint(mesh.GetPointArray()[2], centre);

    mesh.AppendTriangulation(&mesh); // doubles
    ASSERT_EQ(mesh.GetNumTriangles(), 6);
    for (int k = 0; k < 9; ++k) ExpectSamePoint(mesh.GetEdgeArray()[9 + k], mesh.GetEdgeArray()[k]);
}

} // namespace
