#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "indexed_mesh/indexed_meshes.h"
#include "vekdll/indexed_mesh/c_triangulation.h"
#include "vekdll/indexed_mesh/triangulation_normals.h"
#include "vekdll/platform/framework_exceptions.h"

using namespace vek::test;
using Geometry::CTriangulation;

namespace {

TEST(IndexedMesh, BlocksAreCutToTheCountsAndShortOnesRefused)
{
    // Blocks allocated for more than ends up used, as a caller that counts
    // while filling does.
    CTriangulation mesh(3, 2, BlockOf<QbVector3f>({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {9, 9, 9}}),
                        BlockOf<Triangle>({{0, 1, 2}, {2, 1, 0}, {9, 9, 9}}), BlockOf<unsigned>({7, 8, 9}),
                        BlockOf<QbVector3f>({{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {9, 9, 9}}));
    EXPECT_EQ(mesh.GetNumVertices(), 3u);
    EXPECT_EQ(mesh.GetNumTriangles(), 2u);
    EXPECT_EQ(ListOf(mesh.GetPositions()), (std::vector<QbVector3f>{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}));
    EXPECT_EQ(ListOf(mesh.GetTriangles()), (std::vector<Triangle>{{0, 1, 2}, {2, 1, 0}}));
    EXPECT_EQ(ListOf(mesh.GetAttributes()), (std::vector<unsigned>{7, 8}));
    EXPECT_EQ(ListOf(mesh.GetNormals()), (std::vector<QbVector3f>{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}));

    const CTriangulation bare = UnitSquare();
    EXPECT_FALSE(bare.HasNormals());
    EXPECT_FALSE(bare.HasAttributes());

    const auto build = [](std::size_t positions, std::size_t triangles, std::size_t attributes, std::size_t normals) {
        return CTriangulation(2, 1, SMemoryBlock<QbVector3f>(positions), SMemoryBlock<Triangle>(triangles),
                              SMemoryBlock<unsigned>(attributes), SMemoryBlock<QbVector3f>(normals));
    };
    EXPECT_NO_THROW(build(2, 1, 1, 2));
    EXPECT_THROW(build(1, 1, 0, 0), CInvalidArgException);
    EXPECT_THROW(build(2, 0, 0, 0), CInvalidArgException);
    EXPECT_THROW(build(5, 5, 0, 1), CInvalidArgException) << "normals for fewer vertices than the mesh has";
    EXPECT_THROW(CTriangulation(2, 2, SMemoryBlock<QbVector3f>(2), SMemoryBlock<Triangle>(2), SMemoryBlock<unsigned>(1),
                                SMemoryBlock<QbVector3f>()),
                 CInvalidArgException);

    // Indices are taken as they come and only reported.
    EXPECT_TRUE(mesh.HasValidIndices());
    EXPECT_FALSE(MeshOf({{0, 0, 0}}, {{0, 0, 1}}).HasValidIndices());
}

TEST(IndexedMesh, CopiesShareTheirDataUntilOneOfThemChanges)
{
    CTriangulation empty;
    EXPECT_EQ(empty.GetNumVertices(), 0u);
    EXPECT_TRUE(empty.GetTriangles().empty());
    EXPECT_EQ(empty.getReferenceCounter(), 1);

    CTriangulation a = UnitSquare();
    EXPECT_EQ(a.getReferenceCounter(), 1);
    CTriangulation b(a);
    CTriangulation c;
    c = b;
    EXPECT_EQ(a.getReferenceCounter(), 3);
    EXPECT_EQ(c.getReferenceCounter(), 3);
    EXPECT_EQ(c.GetPositions().data(), a.GetPositions().data());
    {
        const CTriangulation d(c);
        EXPECT_EQ(a.getReferenceCounter(), 4);
    }
    EXPECT_EQ(a.getReferenceCounter(), 3);

    // A change to one copy gives it data of its own and leaves the others.
    QyMpTriangulationNormals::Compute(b);
    EXPECT_EQ(b.getReferenceCounter(), 1);
    EXPECT_EQ(a.getReferenceCounter(), 2);
    EXPECT_TRUE(b.HasNormals());
    EXPECT_FALSE(a.HasNormals());
    EXPECT_NE(b.GetPositions().data(), a.GetPositions().data());
    c.Compact(false);
    EXPECT_EQ(a.getReferenceCounter(), 1);
    EXPECT_EQ(ListOf(c.GetTriangles()), ListOf(a.GetTriangles()));

    // Moving hands the data over whole and leaves the source empty; the data
    // the target held before loses a holder.
    const QbVector3f* squareData = a.GetPositions().data();
    CTriangulation e(b);
    b = std::move(a);
    EXPECT_EQ(b.GetPositions().data(), squareData);
    EXPECT_EQ(b.getReferenceCounter(), 1);
    EXPECT_EQ(e.getReferenceCounter(), 1);
    EXPECT_EQ(a.GetNumVertices(), 0u); // a moved-from mesh is empty
    EXPECT_EQ(a.getReferenceCounter(), 1);
    CTriangulation f(std::move(b));
    EXPECT_EQ(f.GetPositions().data(), squareData);
    EXPECT_EQ(b.GetNumTriangles(), 0u);
}

TEST(IndexedMeshCompact, InvalidAndCollapsedTrianglesAndUnusedVerticesGo)
{
    // P4 is named by no triangle, P5 lies on P1, and P6 on P0 (as -0).
    const std::vector<QbVector3f> p{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 0}, {5, 5, 5}, {1, 0, 0}, {0, -0.0f, 0}};
    const std::vector<QbVector3f> n{{0, 0, 1}, {0, 0, 2}, {0, 0, 3}, {0, 0, 4}, {0, 0, 5}, {0, 0, 6}, {0, 0, 7}};
    const CTriangulation source = MeshOf(p,
                                         {
                                             {0, 1, 2}, // 10: kept
                                             {1, 1, 2}, // 11: one vertex twice
                                             {0, 7, 2}, // 12: no vertex 7
                                             {0, 1, 3}, // 13: collinear, kept
                                             {5, 2, 6}, // 14: merged into {1, 2, 0}
                                             {1, 5, 3}, // 15: collapses when merged
                                         },
                                         {10, 11, 12, 13, 14, 15}, n);

    CTriangulation kept = source;
    kept.Compact(false);
    EXPECT_EQ(ListOf(kept.GetTriangles()), (std::vector<Triangle>{{0, 1, 2}, {0, 1, 3}, {4, 2, 5}, {1, 4, 3}}));
    EXPECT_EQ(ListOf(kept.GetAttributes()), (std::vector<unsigned>{10, 13, 14, 15}));
    EXPECT_EQ(ListOf(kept.GetPositions()), (std::vector<QbVector3f>{p[0], p[1], p[2], p[3], p[5], p[6]}));
    EXPECT_EQ(ListOf(kept.GetNormals()), (std::vector<QbVector3f>{n[0], n[1], n[2], n[3], n[5], n[6]}));

    CTriangulation merged = source;
    merged.Compact(true);
    EXPECT_EQ(ListOf(merged.GetTriangles()), (std::vector<Triangle>{{0, 1, 2}, {0, 1, 3}, {1, 2, 0}}));
    EXPECT_EQ(ListOf(merged.GetAttributes()), (std::vector<unsigned>{10, 13, 14}));
    EXPECT_EQ(ListOf(merged.GetPositions()), (std::vector<QbVector3f>{p[0], p[1], p[2], p[3]}));
    EXPECT_EQ(ListOf(merged.GetNormals()), (std::vector<QbVector3f>{n[0], n[1], n[2], n[3]}));
    EXPECT_EQ(source.GetNumTriangles(), 6u) << "the shared source is untouched";

    // Nothing valid leaves nothing; NaN positions neither merge with others
    // nor upset the order they are sorted in.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    CTriangulation none = MeshOf({{0, 0, 0}, {1, 1, 1}}, {{0, 0, 1}, {0, 1, 2}});
    none.Compact(true);
    EXPECT_EQ(none.GetNumVertices(), 0u);
    EXPECT_EQ(none.GetNumTriangles(), 0u);
    CTriangulation odd = MeshOf({{nan, 0, 0}, {0, 0, 0}, {0, nan, 0}, {0, 0, 0}}, {{0, 1, 2}, {0, 2, 3}});
    odd.Compact(true);
    EXPECT_EQ(ListOf(odd.GetTriangles()), (std::vector<Triangle>{{0, 1, 2}, {0, 2, 1}}));
}

} // namespace
