// The program's default, adaptive mode from file to files: the triangles it
// writes are checked against the input at every cell centre, from the mesh
// file alone.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tools/tool_test_support.h"
#include "tools/triangulate_field/height_raster.h"
#include "tools/triangulate_field/raster_files.h"

namespace {

using namespace vek::test;
using vek::tools::HeightRaster;

// 40 x 30 cells, row 0 at the top: a bowl with a sharp crest across it.
HeightRaster BowlWithACrest()
{
    HeightRaster r{40, 30, {}};
    for (int row = 0; row < r.height; ++row) {
        for (int column = 0; column < r.width; ++column) {
            const double bowl = 0.03 * ((column - 21.5) * (column - 21.5) + (row - 12.2) * (row - 12.2));
            r.heights.push_back(static_cast<float>(bowl + 6.0 - 0.8 * std::fabs(column - 0.7 * row - 12.0)));
        }
    }
    return r;
}

// The height of the mesh over (x, y): a face whose closed area holds the
// point, interpolated in double; not-a-number if none does.
double MeshHeightAt(const ObjMesh& mesh, double x, double y)
{
    for (const auto& f : mesh.faces) {
        const auto &a = mesh.vertices[f[0] - 1], &b = mesh.vertices[f[1] - 1], &c = mesh.vertices[f[2] - 1];
        const double area = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
        const double wa = ((b[0] - x) * (c[1] - y) - (b[1] - y) * (c[0] - x)) / area;
        const double wb = ((c[0] - x) * (a[1] - y) - (c[1] - y) * (a[0] - x)) / area;
        const double wc = 1.0 - wa - wb;
        if (area != 0.0 && wa >= -1e-9 && wb >= -1e-9 && wc >= -1e-9) return wa * a[2] + wb * b[2] + wc * c[2];
    }
    return std::nan("");
}

TEST(AdaptiveMode, TheMeshIsWithinTheTargetAtEveryCellCentre)
{
    ScratchFolder folder;
    const HeightRaster input = BowlWithACrest();
    vek::tools::WritePfm(folder.File("bowl.pfm"), input);
    const Outcome o = RunProgram({folder.File("bowl.pfm"), "--max-error", "0.5", "--cell-size", "1", "--no-images",
                                  "-o", folder.File("out")});
    ASSERT_EQ(o.code, 0) << o.err;
    EXPECT_NE(o.out.find("target      0.50 "), std::string::npos) << o.out;
    EXPECT_NE(o.out.find("(target reached)"), std::string::npos) << o.out;
    EXPECT_NE(o.out.find("at centres  over 1200 cells with data: maximum 0."), std::string::npos) << o.out;

    // Without a georeference the mesh is in cells times the cell size: x the
    // column, y the row counted from the bottom. Every vertex sits on a cell
    // with that cell's height, far fewer of them than cells, and every cell
    // centre lies under a face within 0.5 of its height.
    const ObjMesh mesh = ReadObj(folder.File("out/bowl_triangles.obj"));
    EXPECT_LT(mesh.vertices.size(), 1200u / 3);
    EXPECT_NE(o.out.find("mesh        " + std::to_string(mesh.vertices.size()) + " vertices, " +
                         std::to_string(mesh.faces.size()) + " triangles"),
              std::string::npos)
        << o.out;
    for (const auto& v : mesh.vertices) {
        ASSERT_EQ(v[0], std::round(v[0]));
        ASSERT_EQ(v[1], std::round(v[1]));
        EXPECT_NEAR(v[2], input.At(static_cast<int>(v[0]), 29 - static_cast<int>(v[1])), 1e-4);
    }
    double worst = 0.0;
    for (int row = 0; row < input.height; ++row) {
        for (int column = 0; column < input.width; ++column) {
            const double h = MeshHeightAt(mesh, column, 29 - row);
            ASSERT_FALSE(std::isnan(h)) << column << " " << row;
            worst = std::max(worst, std::fabs(h - input.At(column, row)));
        }
    }
    EXPECT_LE(worst, 0.5 + 1e-4);
    EXPECT_GT(worst, 0.25);

    // The scan-converted field reaches every cell.
    const HeightRaster surface = vek::tools::ReadHeightRaster(folder.File("out/bowl_surface.pfm")).raster;
    for (const float h : surface.heights) EXPECT_TRUE(HeightRaster::HoldsData(h));
}

TEST(AdaptiveMode, ABudgetEndsTheRunShortOfTheTargetAndTheReportSaysSo)
{
    ScratchFolder folder;
    vek::tools::WritePfm(folder.File("bowl.pfm"), BowlWithACrest());
    const Outcome o = RunProgram({folder.File("bowl.pfm"), "--max-error", "0.5", "--max-vertices", "10",
                                  "--no-images", "-o", folder.File("out")});
    ASSERT_EQ(o.code, 0) << o.err;
    EXPECT_NE(o.out.find("vertices    10: the 4 corners, then 6 inserted"), std::string::npos) << o.out;
    EXPECT_NE(o.out.find("target not reached: the budget of 10 vertices by --max-vertices ran out first"),
              std::string::npos)
        << o.out;
    EXPECT_EQ(ReadObj(folder.File("out/bowl_triangles.obj")).vertices.size(), 10u);
}

} // namespace
