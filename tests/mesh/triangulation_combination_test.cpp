#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <tuple>
#include <vector>

#include "mesh_builders.h"
#include "support/archive_bytes.h"
#include "vekdll/mesh/field_range.h"

using namespace vek::test;

namespace {

TEST(MeshCombination, TheJoinedMeshIsFlatShadedWithTurnedTrianglesAndNoNeighbours)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f), other(0, 1.0f, 1.0f, 1.0f);
    Fill(mesh, {{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}});
    Fill(other, {{{{0, 0, 1}, {1, 0, 1}, {0, 1, 1}}}});
    mesh.SetScanConvResolution(5.0f, 5.0f, 5.0f);
    mesh.Combine(other, true);
    ASSERT_EQ(mesh.GetNumTriangles(), 2);
    const t_htriangle &first = *mesh.GetTriangle(0), &turned = *mesh.GetTriangle(1);
    EXPECT_EQ(Corners(turned), (std::array<Lanes4, 3>{Lanes4{0, 1, 1, 0}, {1, 0, 1, 0}, {0, 0, 1, 0}}));
    EXPECT_EQ(std::pair(Lanes(*first.N2), Lanes(*turned.N0)), std::pair(Lanes4{0, 0, 1, 0}, Lanes4{0, 0, -1, 0}));
    // Copied in: each triangle's maximum holds its minimum, nothing is linked.
    EXPECT_EQ(Lanes(*turned.MaxPoint), (Lanes4{0, 0, 1, 0}));
    EXPECT_EQ(std::tuple(first.Neighbour0, turned.Neighbour2, turned.Flag), std::tuple(nullptr, nullptr, -1));
    EXPECT_EQ(Lanes(mesh.GetPointArray()[1]), (Lanes4{1, 1, 1, 0}));
    EXPECT_EQ(Lanes(mesh.GetPointArray()[2]), (Lanes4{2.0f / 6.0f, 2.0f / 6.0f, 0.5f, 0}));
    float x, y, z;
    mesh.GetScanConvResolution(x, y, z);
    EXPECT_EQ(std::tuple(x, y, z), std::tuple(1.0f, 1.0f, 1.0f));

    // With nothing to join, S, T and the flat normals are still rebuilt.
    CHTriangulation empty(0, 1.0f, 1.0f, 1.0f), lone(0, 1.0f, 1.0f, 1.0f);
    Fill(lone, {{{{0, 0, 0}, {0, 2, 0}, {2, 0, 0}}}});
    lone.Combine(empty, true);
    EXPECT_EQ(std::pair(Lanes(*lone.GetTriangle(0)->S), Lanes(*lone.GetTriangle(0)->N1)),
              std::pair(Lanes4{0, 2, 0, 0}, Lanes4{0, 0, -1, 0}));
}

TEST(MeshCombination, HeightsAreHeldAtTheFieldPlusOffsetWhereTheFieldHasData)
{
    CSSEMatrix field;
    FillField(field, 4, 4, [](int x, int y) { return x == 1 && y == 2 ? 0.1f : 2.0f; });
    for (bool keepLower : {true, false}) {
        CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
        Fill(mesh, {{{{1, 1, 5}, {2, 1, 1}, {1, 2, 2}}}});
        mesh.ConstrainWithHeightField(keepLower, &field, 1.0f);
        const t_htriangle& t = *mesh.GetTriangle(0);
        // Field 2 + offset 1 caps 5 from above or lifts 1; a reading of 0.1 is no data.
        EXPECT_EQ(std::tuple(t.P0->z, t.P1->z, t.P2->z), keepLower ? std::tuple(3.0f, 1.0f, 2.0f) : std::tuple(5.0f, 3.0f, 2.0f));
        // Derived data is left stale; the kept entry points do nothing.
        EXPECT_EQ(Lanes(*t.S), (Lanes4{0, 0, 0, 0}));
        mesh.ConstrainWithHeightField(keepLower, ZrCFieldRange{}, 100.0f);
        mesh.CutWithTriangulation(&mesh);
        mesh.MinimumZTriangulation(&mesh);
        EXPECT_EQ(mesh.GetTriangle(0)->P0->z, keepLower ? 3.0f : 5.0f);
    }
}

// Triangles ten units apart, so that none has a neighbour, with the given
// corner heights; S, T, V and boxes computed.
void MakeHeights(CHTriangulation& mesh, const std::vector<std::array<float, 3>>& heights)
{
    std::vector<Triangle> triangles;
    for (std::size_t i = 0; i < heights.size(); ++i) {
        const float x = 10.0f * static_cast<float>(i);
        triangles.push_back({{{x, 0, heights[i][0]}, {x + 1, 0, heights[i][1]}, {x, 1, heights[i][2]}}});
    }
    Fill(mesh, triangles);
    mesh.CalcSTV();
}

std::vector<int> Indices(const CHTriangulation& mesh)
{
    std::vector<int> indices;
    for (int i = 0; i < mesh.GetNumTriangles(); ++i) indices.push_back(mesh.GetTriangle(i)->Index);
    return indices;
}

TEST(MeshFilters, HeightFiltersDropWholeTrianglesAndRebuildWithNeighbours)
{
    const std::vector<std::array<float, 3>> heights = {{0, 0, 0}, {2, 2, 2}, {1, 3, 5}, {4, 4, 4}};
    CHTriangulation above(0, 1.0f, 1.0f, 1.0f), below(0, 1.0f, 1.0f, 1.0f), between(0, 1.0f, 1.0f, 1.0f);
    for (CHTriangulation* mesh : {&above, &below, &between}) MakeHeights(*mesh, heights);
    above.RemoveTrianglesAboveZ(2.0f);
    below.RemoveTrianglesBelowZ(2.0f);
    between.RemoveTrianglesBetweenZ(3.0f, 4.0f);
    // A triangle lying at z goes from both sides; one corner at a bound of
    // the interval is enough to go.
    EXPECT_EQ(Indices(above), (std::vector<int>{0, 2}));
    EXPECT_EQ(Indices(below), (std::vector<int>{2, 3}));
    EXPECT_EQ(Indices(between), (std::vector<int>{0, 1}));
    // Copied with the minimum in both box ends, then flagged by the neighbour search.
    const t_htriangle& kept = *above.GetTriangle(1);
    EXPECT_EQ(std::tuple(Lanes(*kept.MaxPoint), Lanes(*kept.S), kept.Flag), std::tuple(Lanes4{20, 0, 1, 0}, Lanes4{1, 0, 2, 0}, 13));
    EXPECT_EQ(kept.P0, above.GetEdgeArray() + 3);

    above.RemoveTrianglesAboveZ(-5.0f);
    EXPECT_EQ(above.GetNumTriangles(), 0);
}

TEST(MeshFilters, ChainsOfAlikeNormalsKeepTheirFirstTriangle)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    MakeHeights(mesh, std::vector<std::array<float, 3>>(6, {0, 0, 0}));
    // 0 -> 0.04 -> 0.08 turns by less than 0.05 per step though 0 and 0.08
    // differ; a gap of exactly 0.05 is alike; a triangle that came with
    // Flag 0 goes whatever its normal.
    const Lanes4 normals[6] = {{0, 0, 1, 0}, {0.04f, 0, 1, 0}, {0.08f, 0, 1, 0}, {1, 0, 0, 0}, {1, 0.05f, 0, 0}, {0, 1, 0, 0}};
    for (int i = 0; i < 6; ++i) *mesh.GetTriangle(i)->N0 = Sse(normals[i][0], normals[i][1], normals[i][2]);
    mesh.GetTriangle(5)->Flag = 0;
    mesh.RemoveTrianglesWithSameOrientation();
    EXPECT_EQ(Indices(mesh), (std::vector<int>{0, 3}));
}

// ---------------------------------------------------------------- the archive

// A mesh of 2 x 1 cells with neighbours, scale (2, 3, 4) and its own scan grid.
void MakeArchived(CHTriangulation& mesh)
{
    CSSEMatrix field;
    FillField(field, 3, 2, [](int x, int y) { return 1.0f + static_cast<float>(x * x + y); });
    CHTriangulation built(&field, 0.0f, true, 2.0f, 3.0f, 4.0f, 1, 1);
    mesh.BaseInitialization(2.0f, 3.0f, 4.0f);
    mesh.CopyFromHTriangulation(&built);
    mesh.CalcSTV();
    mesh.CalcCenterPoint();
    mesh.CalcNeighbours();
    mesh.SetScanConvResolution(7.0f, 8.0f, 9.0f);
}

bool SamePoints(const SSEPoint* a, const SSEPoint* b, int count)
{
    return std::memcmp(a, b, static_cast<std::size_t>(count) * sizeof(SSEPoint)) == 0;
}

std::uint64_t AddressAt(const std::vector<BYTE>& bytes, std::size_t offset)
{
    std::uint64_t v;
    std::memcpy(&v, bytes.data() + offset, sizeof v);
    return v;
}

TEST(MeshArchive, StoresTheTableInOrderAndLoadsEveryArrayWithItsOwnPointers)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    MakeArchived(mesh);
    const int n = mesh.GetNumTriangles();
    ASSERT_EQ(n, 4);
    const std::vector<BYTE> bytes = SerializeToBytes(mesh);
    ASSERT_EQ(bytes.size(), 32u + 336u * n + 48u);
    EXPECT_EQ(std::tuple(FloatAt(bytes, 4), FloatAt(bytes, 12), FloatAt(bytes, 24), IntAt(bytes, 28)),
              std::tuple(3.0f, 7.0f, std::sqrt(113.0f), n));
    // The first record byte for byte: the storing process's pointers, then
    // Index and Flag.
    const t_htriangle& first = *mesh.GetTriangle(0);
    EXPECT_EQ(AddressAt(bytes, 32), reinterpret_cast<std::uintptr_t>(mesh.GetEdgeArray()));
    EXPECT_EQ(AddressAt(bytes, 32 + 9 * 8), reinterpret_cast<std::uintptr_t>(mesh.GetMainNormalArray()));
    EXPECT_EQ(AddressAt(bytes, 32 + 12 * 8), reinterpret_cast<std::uintptr_t>(first.Neighbour0));
    EXPECT_EQ(std::pair(IntAt(bytes, 32 + 136), IntAt(bytes, 32 + 140)), std::pair(0, first.Flag));
    // Then the corners, and the box block behind the six per-triangle arrays.
    EXPECT_EQ(FloatAt(bytes, 32 + 144 * n + 4), first.P0->y);
    EXPECT_EQ(FloatAt(bytes, 32 + 304 * n + 16), mesh.GetPointArray()[1].x);

    CHTriangulation loaded(7, 5.0f, 5.0f, 5.0f);
    SerializeFromBytes(loaded, bytes);
    ASSERT_EQ(loaded.GetNumTriangles(), n);
    EXPECT_TRUE(SamePoints(loaded.GetEdgeArray(), mesh.GetEdgeArray(), 3 * n));
    EXPECT_TRUE(SamePoints(loaded.GetNormalArray(), mesh.GetNormalArray(), 3 * n));
    for (auto array : {&CHTriangulation::GetMainNormalArray, &CHTriangulation::GetTArray, &CHTriangulation::GetSArray,
                       &CHTriangulation::GetVArray, &CHTriangulation::GetMinPointArray}) {
        EXPECT_TRUE(SamePoints((loaded.*array)(), (mesh.*array)(), n));
    }
    EXPECT_TRUE(SamePoints(loaded.GetPointArray(), mesh.GetPointArray(), 3));
    for (int i = 0; i < n; ++i) {
        const t_htriangle &l = *loaded.GetTriangle(i), &m = *mesh.GetTriangle(i);
        EXPECT_EQ(std::tuple(l.Index, l.Flag, Lanes(*l.MaxPoint)), std::tuple(m.Index, m.Flag, Lanes(*m.MaxPoint)));
        EXPECT_EQ(std::tuple(l.P1, l.N2, l.V, l.MaxPoint == l.MinPoint, l.Neighbour1, l.Next),
                  std::tuple(loaded.GetEdgeArray() + 3 * i + 1, loaded.GetNormalArray() + 3 * i + 2, loaded.GetVArray() + i,
                             false, nullptr, nullptr));
    }
    // The stored ScaleX stands for ScaleY, and the scan grid follows the scale.
    float x, y, z;
    loaded.GetScanConvResolution(x, y, z);
    EXPECT_EQ(std::tuple(loaded.GetScaleY(), loaded.GetScaleZ(), x, y, z), std::tuple(2.0f, 4.0f, 2.0f, 2.0f, 4.0f));

    // A loaded mesh works like the original: neighbours found again match.
    loaded.CalcNeighbours();
    EXPECT_EQ(loaded.GetTriangle(0)->Neighbour0 - loaded.GetTriangle(0), first.Neighbour0 - &first);

    CHTriangulation empty(0, 1.0f, 1.0f, 1.0f);
    EXPECT_EQ(SerializeToBytes(empty).size(), 80u);
    SerializeFromBytes(loaded, SerializeToBytes(empty));
    EXPECT_EQ(loaded.GetNumTriangles(), 0);
}

TEST(MeshArchive, ShortOrGarbledStreamsAreRefusedAndLeaveTheMeshAsItWas)
{
    CHTriangulation mesh(0, 1.0f, 1.0f, 1.0f);
    MakeArchived(mesh);
    const std::vector<BYTE> bytes = SerializeToBytes(mesh);
    const auto unchanged = [](const CHTriangulation& target) {
        return target.GetNumTriangles() == 1 && target.GetScaleY() == 6.0f && target.GetTriangle(0)->P0 == target.GetEdgeArray();
    };
    CHTriangulation target(1, 5.0f, 6.0f, 7.0f);
    for (std::size_t size : {std::size_t{0}, std::size_t{27}, std::size_t{31}, std::size_t{32}, std::size_t{600}, bytes.size() - 1}) {
        EXPECT_NE(LoadFailureCause(target, std::vector<BYTE>(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))),
                  CArchiveException::none)
            << size;
        EXPECT_TRUE(unchanged(target)) << size;
    }
    for (int count : {5, -1, 0x7fffffff}) {
        std::vector<BYTE> garbled = bytes;
        std::memcpy(garbled.data() + 28, &count, sizeof count);
        EXPECT_EQ(LoadFailureCause(target, garbled), CArchiveException::badIndex) << count;
        EXPECT_TRUE(unchanged(target));
    }

    // Random streams with small counts either load whole or are refused.
    std::mt19937 random(16);
    for (int round = 0; round < 300; ++round) {
        std::vector<BYTE> noise(32 + random() % 800);
        for (BYTE& b : noise) b = static_cast<BYTE>(random());
        const int count = static_cast<int>(random() % 4);
        std::memcpy(noise.data() + 28, &count, sizeof count);
        CHTriangulation victim(1, 5.0f, 6.0f, 7.0f);
        const int cause = LoadFailureCause(victim, noise);
        if (cause == CArchiveException::none) {
            EXPECT_LE(32u + 336u * static_cast<unsigned>(count) + 48u, noise.size());
            EXPECT_EQ(victim.GetNumTriangles(), count);
        } else {
            EXPECT_TRUE(unchanged(victim));
        }
    }
}

} // namespace
