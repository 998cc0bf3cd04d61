// Where triangulate_field puts its results in the world: the georeference
// record and the mesh it places.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <vector>

#include "tools/triangulate_field/georeference.h"
#include "tools/triangulate_field/mesh_file.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

using vek::tools::Georeference;

TEST(Georeference, CellsFrameAndGroundSteps)
{
    // 4 rows of 2.5: the lower left centre at (0, 0), the upper left at
    // (0, 7.5), the outer corner half a cell beyond.
    Georeference cells;
    cells.FrameInCells(2.5, 4);
    EXPECT_EQ(std::pair(cells.X(0), cells.Y(3)), std::pair(0.0, 0.0));
    EXPECT_EQ(std::pair(cells.X(3), cells.Y(0)), std::pair(7.5, 7.5));
    EXPECT_EQ(cells.GeoTransform(), (std::array<double, 6>{-1.25, 2.5, 0, 8.75, 0, -2.5}));
    EXPECT_FALSE(cells.placed);
    EXPECT_EQ(cells.GroundSteps(0), (std::array<double, 2>{2.5, -2.5}));

    // Cells of 0.001 degrees at 60 degrees north: a degree of latitude is
    // 6371008.8 pi / 180 = 111195.08 m, one of longitude half of it there.
    Georeference degrees;
    degrees.placed = degrees.degrees = true;
    degrees.columnStep = 0.001;
    degrees.rowStep = -0.001;
    degrees.originY = 60.0 + 0.0005; // the centre of row 0 at 60 degrees
    const std::array<double, 2> steps = degrees.GroundSteps(0);
    EXPECT_NEAR(steps[0], 55.59754, 1e-4);
    EXPECT_NEAR(steps[1], -111.19508, 1e-4);
}

// Five points in cells (x the column, y the row from the bottom of 3 rows,
// z the height over the cell size 2) triangulated by the library.
struct SmallSurface {
    ZrCIncrementalDelaunay2D triangulation{5 + 4};
    vek::tools::HeightRaster input{5, 3, std::vector<float>(15, 0.0f)};
    vek::tools::RoadSettings settings{5, 2.0, true, {}};

    SmallSurface()
    {
        for (const auto& [x, y, z] : std::vector<std::array<float, 3>>{{0, 0, 10}, {4, 0, 11}, {4, 2, 12}, {0, 2, 13}, {2, 1, 14}}) {
            SSEPoint p;
            p.sse = _mm_setr_ps(x, y, z, 0.0f);
            triangulation.AppendVertex(p);
        }
        triangulation.Triangulate(triangulation.GetNumVertices(), true, true);
    }
};

double TwiceArea(const vek::tools::WorldMesh& mesh, const std::array<int, 3>& t)
{
    const auto &a = mesh.vertices[t[0]], &b = mesh.vertices[t[1]], &c = mesh.vertices[t[2]];
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

TEST(WorldMesh, VerticesArePlacedAndTrianglesFaceUpInEitherRowDirection)
{
    SmallSurface surface;
    Georeference northUp;
    northUp.placed = true;
    northUp.originX = 100;
    northUp.originY = 200;
    northUp.columnStep = 2;
    northUp.rowStep = -2;
    northUp.projectionName = "Test Grid";
    Georeference southUp = northUp;
    southUp.rowStep = 2;

    // Cell (column, up) lies at row 2 - up; its centre at 100 + 2 (column +
    // 0.5) and 200 -+ 2 (row + 0.5); heights are z times the cell size.
    using Corners = std::set<std::array<double, 3>>;
    const Corners northUpCorners = {
        {101, 195, 20}, {109, 195, 22}, {109, 199, 24}, {101, 199, 26}, {105, 197, 28}};
    const Corners southUpCorners = {
        {101, 205, 20}, {109, 205, 22}, {109, 201, 24}, {101, 201, 26}, {105, 203, 28}};
    for (const auto& [frame, corners] : {std::pair(northUp, northUpCorners), std::pair(southUp, southUpCorners)}) {
        const vek::tools::WorldMesh mesh =
            vek::tools::MeshInWorld(surface.triangulation, surface.input, surface.settings, frame);
        const Corners placed(mesh.vertices.begin(), mesh.vertices.end());
        EXPECT_EQ(placed, corners);
        ASSERT_EQ(mesh.vertices.size(), 5u);
        ASSERT_EQ(mesh.triangles.size(), 4u);
        for (const auto& t : mesh.triangles) EXPECT_GT(TwiceArea(mesh, t), 0.0);
        EXPECT_EQ(mesh.note, "x east, y north, z up; Test Grid");
    }
}

} // namespace
