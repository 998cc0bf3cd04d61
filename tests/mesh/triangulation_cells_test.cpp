#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "mesh_builders.h"

using vek::test::ExpectNearPoint;
using vek::test::ExpectSamePoint;
using vek::test::Sse;

namespace {

// The cell used throughout: x from 10 to 12, y from 20 to 21, heights
// A = 1, B = 2, C = 3, D = 5.
constexpr float kX0 = 10, kX1 = 12, kY0 = 20, kY1 = 21;
constexpr float kZA = 1, kZB = 2, kZC = 3, kZD = 5;

SSEPoint CornerAt(char name)
{
    switch (name) {
    case 'A': return Sse(kX0, kY0, kZA);
    case 'B': return Sse(kX1, kY0, kZB);
    case 'C': return Sse(kX0, kY1, kZC);
    default: return Sse(kX1, kY1, kZD);
    }
}

// The unit corner normals worked out by hand from the height steps along the
// cell's edges (top A-B = -1, bottom C-D = -2, left A-C = -2, right B-D = -3).
SSEPoint UnitNormalAt(char name)
{
    double x = -2, y = -3; // D
    if (name == 'A') x = -1, y = -2;
    if (name == 'B') x = -1, y = -3;
    if (name == 'C') x = -2, y = -2;
    const double length = std::sqrt(x * x + y * y + 1.0);
    return Sse(static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(1.0 / length));
}

SSEPoint Scaled(const SSEPoint& p, float factor)
{
    return Sse(p.x * factor, p.y * factor, p.z * factor, p.w * factor);
}

// Which triangles each pair of masks gives, as corner names per triangle.
std::string ExpectedShapes(int left, int right, bool fill)
{
    const auto someValid = [](int mask) { return mask >= 1 && mask <= 3; };
    if (fill && someValid(left) && someValid(right)) return "ADC ABD";
    static const std::map<std::pair<int, int>, std::string> table = {
        {{3, 3}, "ADC ABD"}, {{3, 1}, "ABC"}, {{3, 2}, "ADC"}, {{1, 3}, "ABD"}, {{2, 3}, "BDC"}};
    const auto found = table.find({left, right});
    return found == table.end() ? "" : found->second;
}

float TwiceSignedAreaXY(const t_htriangle& t)
{
    return (t.P1->x - t.P0->x) * (t.P2->y - t.P0->y) - (t.P2->x - t.P0->x) * (t.P1->y - t.P0->y);
}

void ExpectCell(int left, int right, bool fill, bool flip)
{
    SCOPED_TRACE(::testing::Message() << "masks " << left << "/" << right << (fill ? " filled" : "")
                                      << (flip ? " flipped" : ""));
    const std::string expected = ExpectedShapes(left, right, fill);
    const int count = expected.empty() ? 0 : static_cast<int>((expected.size() + 1) / 4);

    CHTriangulation mesh(4, 1.0f, 1.0f, 1.0f);
    int index = 1;
    mesh.AppendTriangle(left, right, kX0, kX1, kY0, kY1, kZA, kZC, kZB, kZD, index, flip, fill);
    ASSERT_EQ(index, 1 + count);

    const float sign = flip ? -1.0f : 1.0f;
    for (int k = 0; k < count; ++k) {
        const t_htriangle& t = *mesh.GetTriangle(1 + k);
        const std::string names = expected.substr(4 * k, 3);
        const SSEPoint* corners[3] = {t.P0, t.P1, t.P2};
        const SSEPoint* normals[3] = {t.N0, t.N1, t.N2};
        SSEPoint sum = Sse(0, 0, 0);
        for (int c = 0; c < 3; ++c) {
            ExpectSamePoint(*corners[c], CornerAt(names[c]));
            const SSEPoint normal = Scaled(UnitNormalAt(names[c]), sign);
            ExpectNearPoint(*normals[c], normal, 1e-6f);
            sum = Sse(sum.x + normal.x, sum.y + normal.y, sum.z + normal.z);
        }
        const float length = std::sqrt(sum.x * sum.x + sum.y * sum.y + sum.z * sum.z);
        ExpectNearPoint(*t.MainNormal, Scaled(sum, 1.0f / length), 1e-6f);
        EXPECT_GT(TwiceSignedAreaXY(t), 0.0f) << "counter-clockwise from +z";
        // Nothing derived is written, and the record keeps its number and flag.
        ExpectSamePoint(*t.S, Sse(0, 0, 0));
        ExpectSamePoint(*t.V, Sse(0, 0, 0));
        EXPECT_EQ(t.Flag, -1);
        EXPECT_EQ(t.Index, 1 + k);
        EXPECT_EQ(t.Neighbour1, nullptr);
    }
    const t_htriangle& first = *mesh.GetTriangle(1);
    const t_htriangle& second = *mesh.GetTriangle(2);
    if (count == 2) {
        // The pair meets along the diagonal A-D.
        EXPECT_EQ(first.Neighbour0, &second);
        EXPECT_EQ(first.Neighbour2, nullptr);
        EXPECT_EQ(second.Neighbour0, nullptr);
        EXPECT_EQ(second.Neighbour2, &first);
    } else {
        EXPECT_EQ(first.Neighbour0, nullptr);
        EXPECT_EQ(first.Neighbour2, nullptr);
    }
    // Outside the written range nothing changes.
    ExpectSamePoint(*mesh.GetTriangle(0)->P0, Sse(0, 0, 0));
    ExpectSamePoint(*mesh.GetTriangle(3)->P2, Sse(0, 0, 0));
    if (count < 2) ExpectSamePoint(*second.P0, Sse(0, 0, 0));
}

TEST(CHTriangulationCells, EveryPairOfMasksGivesTheTrianglesOfTheTable)
{
    for (bool fill : {false, true}) {
        for (int left = 0; left <= 4; ++left) {
            for (int right = 0; right <= 4; ++right) ExpectCell(left, right, fill, false);
        }
        ExpectCell(7, 3, fill, false);
        ExpectCell(3, -1, fill, false);
    }
}

TEST(CHTriangulationCells, FlippingNegatesTheNormalsButKeepsTheWinding)
{
    for (auto [left, right] : {std::pair{3, 3}, {3, 1}, {2, 3}, {1, 1}}) ExpectCell(left, right, true, true);
}

} // namespace
