#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "mesh_builders.h"

using namespace vek::test;

namespace {

// The cell x 10..12, y 20..21 with heights A = 1, B = 2, C = 3, D = 5.
Lanes4 CornerAt(char name)
{
    const float x = (name == 'B' || name == 'D') ? 12.0f : 10.0f, y = (name == 'C' || name == 'D') ? 21.0f : 20.0f;
    return {x, y, name == 'A' ? 1.0f : name == 'B' ? 2.0f : name == 'C' ? 3.0f : 5.0f, 0.0f};
}

// The unit corner normal from the height steps along the cell's edges, worked
// out by hand: top A-B = -1, bottom C-D = -2, left A-C = -2, right B-D = -3.
Lanes4 NormalAt(char name, float sign)
{
    const double x = (name == 'A' || name == 'B') ? -1 : -2, y = (name == 'A' || name == 'C') ? -2 : -3;
    const double length = std::sqrt(x * x + y * y + 1.0);
    return {static_cast<float>(sign * x / length), static_cast<float>(sign * y / length), static_cast<float>(sign / length), 0};
}

// Which triangles a pair of masks gives, as corner names; a column with one
// valid corner counts as full when the cell is filled.
std::string Shapes(int left, int right, bool fill)
{
    const auto filled = [fill](int mask) { return fill && (mask == 1 || mask == 2) ? 3 : mask; };
    static const std::map<std::pair<int, int>, std::string> table = {
        {{3, 3}, "ADC ABD"}, {{3, 1}, "ABC"}, {{3, 2}, "ADC"}, {{1, 3}, "ABD"}, {{2, 3}, "BDC"}};
    const auto found = table.find({filled(left), filled(right)});
    return found == table.end() ? "" : found->second;
}

TEST(CHTriangulationCells, EveryPairOfMasksGivesTheTrianglesOfTheTableWithHandComputedNormals)
{
    // Masks -1 .. 4 on either side, with and without filling and flipping.
    for (int combination = 0; combination < 6 * 6 * 4; ++combination) {
        const int left = combination % 6 - 1, right = combination / 6 % 6 - 1;
        const bool fill = combination / 36 % 2 == 1, flip = combination / 72 == 1;
        SCOPED_TRACE(::testing::Message() << "masks " << left << "/" << right << " fill " << fill << " flip " << flip);
        const std::string shapes = Shapes(left, right, fill);
        const int count = static_cast<int>((shapes.size() + 1) / 4);
        CHTriangulation mesh(4, 1.0f, 1.0f, 1.0f);
        int index = 1;
        mesh.AppendTriangle(left, right, 10, 12, 20, 21, 1, 3, 2, 5, index, flip, fill);
        ASSERT_EQ(index, 1 + count);
        for (int k = 0; k < count; ++k) {
            const t_htriangle& t = *mesh.GetTriangle(1 + k);
            const SSEPoint* corners[3] = {t.P0, t.P1, t.P2};
            const SSEPoint* normals[3] = {t.N0, t.N1, t.N2};
            double sum[3] = {0, 0, 0};
            for (int c = 0; c < 3; ++c) {
                const char name = shapes[4 * k + c];
                EXPECT_EQ(Lanes(*corners[c]), CornerAt(name));
                ExpectNear(Lanes(*normals[c]), NormalAt(name, flip ? -1.0f : 1.0f));
                for (int lane = 0; lane < 3; ++lane) sum[lane] += NormalAt(name, flip ? -1.0f : 1.0f)[lane];
            }
            const double length = std::sqrt(sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]);
            ExpectNear(Lanes(*t.MainNormal), {float(sum[0] / length), float(sum[1] / length), float(sum[2] / length), 0});
            EXPECT_EQ(Lanes(*t.S), (Lanes4{0, 0, 0, 0})) << "nothing derived is written";
        }
        // The two halves of a full cell meet along A-D; nothing else is linked or written.
        const t_htriangle* t = mesh.GetTriangles();
        using Links = std::pair<const t_htriangle*, const t_htriangle*>;
        EXPECT_EQ(Links(t[1].Neighbour0, t[2].Neighbour2), count == 2 ? Links(&t[2], &t[1]) : Links());
        EXPECT_EQ(std::pair(Lanes(*t[0].P0), Lanes(*t[count + 1].P0)), std::pair(Lanes4{}, Lanes4{}));
        EXPECT_EQ(std::pair(t[1].Flag, t[1].Index), std::pair(-1, 1));
    }
}

} // namespace
