// Both triangulations to the indexed mesh and its file, and the adaptive one back.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "indexed_mesh/indexed_meshes.h"
#include "surface/finest_fixtures.h"
#include "surface/triangulation_checks.h"
#include "vekdll/surface/mesh_exchange.h"

using namespace vek::test;
using Mesh = std::unique_ptr<Geometry::CTriangulation>;

namespace {

// n random points over a 100 x 100 square with random heights, triangulated
// and finalized, and about one triangle in five marked Outside.
void Triangulate(ZrCIncrementalDelaunay2D& d, int n, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> place(0.0f, 100.0f);
    d.CreateVertexArray(n);
    for (int i = 0; i < n; ++i) d.AppendVertex(P(place(random), place(random), place(random) - 50.0f));
    d.Triangulate(n, true, false);
    for (t_hdelaunaytriangle* t : Triangles(d.GetFinalList())) t->Outside = random() % 5 == 0;
}

std::vector<Triangle> Corners(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    std::vector<Triangle> corners;
    for (const auto* t : triangles) {
        corners.push_back({unsigned(t->Vertex[0]), unsigned(t->Vertex[1]), unsigned(t->Vertex[2])});
    }
    return corners;
}

// The vertices' bits and the shape of both lists: equal only if nothing changed.
std::vector<long> Shape(ZrCIncrementalDelaunay2D& d)
{
    std::vector<long> shape = ListShape(d.GetFinalList());
    for (long v : ListShape(d.GetTriangleList())) shape.push_back(v);
    for (int i = 0; i < d.GetNumVertices(); ++i) {
        for (float c : Lanes(d.GetVertex(i))) shape.push_back(std::bit_cast<std::int32_t>(c));
    }
    return shape;
}

std::string TemporaryPath(const std::string& name)
{
    return (std::filesystem::temp_directory_path() / ("vekdll_exchange_" + std::to_string(::getpid()) + name)).string();
}

void WriteFile(const std::string& path, const std::vector<char>& bytes)
{
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(MeshExchange, RoundTripKeepsEveryVertexAndEveryInsideTriangleWithItsLinks)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        for (int n : {3, 12, 80}) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", " + std::to_string(n) + " points");
            ZrCIncrementalDelaunay2D d, e;
            Triangulate(d, n, seed);
            std::vector<t_hdelaunaytriangle*> inside;
            for (auto* t : Triangles(d.GetFinalList())) {
                if (!t->Outside) inside.push_back(t);
            }
            const Mesh mesh(d.CreateCTriangulation());
            ASSERT_NE(mesh, nullptr);
            ASSERT_EQ(mesh->GetNumVertices(), unsigned(n));
            const SSEPoint last = d.GetVertex(n - 1);
            EXPECT_EQ(mesh->GetPositions()[n - 1], (QbVector3f{last.x, last.y, last.z}));
            EXPECT_EQ(ListOf(mesh->GetTriangles()), Corners(inside));
            EXPECT_EQ(mesh->GetNormals().size(), std::size_t(n));

            // The target held another surface before: it is replaced whole.
            Triangulate(e, 7, seed + 100);
            e.CreateDelaunayTriangulationFromCTriangulation(*mesh, true);
            ASSERT_TRUE(e.IsFinalized());
            ASSERT_EQ(e.GetNumVertices(), n);
            EXPECT_EQ(Lanes(e.GetVertex(n - 1)), Lanes(d.GetVertex(n - 1)));
            const std::vector<t_hdelaunaytriangle*> back = Triangles(e.GetFinalList());
            ASSERT_EQ(Corners(back), Corners(inside));
            EXPECT_EQ(LinkFault(back), "");
            for (std::size_t k = 0; k < inside.size(); ++k) {
                for (int s = 0; s < 3; ++s) {
                    // Linked where the original is linked to an inside triangle, open elsewhere.
                    const auto at = std::ranges::find(inside, inside[k]->Neighbour[s]);
                    EXPECT_EQ(back[k]->Neighbour[s], at == inside.end() ? nullptr : back[at - inside.begin()]);
                }
                EXPECT_EQ(back[k]->CircleRadius2, inside[k]->CircleRadius2);
            }
        }
    }
}

TEST(MeshExchange, TheMeshHasRoomForAsManyTrianglesAsTheFinalListHolds)
{
    ZrCIncrementalDelaunay2D d;
    EXPECT_EQ(d.CreateCTriangulation(), nullptr);
    d.CreateVertexArray(5);
    for (const SSEPoint& p : {P(0, 0), P(1, 0), P(1, 1), P(0, 1), P(2, 0)}) d.AppendVertex(p);
    d.Triangulate(4, false, false);
    EXPECT_EQ(Mesh(d.CreateCTriangulation())->GetNumTriangles(), 0u);

    d.FinalizeTriangleList();
    ASSERT_EQ(d.GetNumTriangles(), 2);
    // Working triangles beside the final ones go first, Outside ones passed
    // over, until the final list's count is reached.
    AddTriangle(d, 1, 4, 2)->Outside = true;
    AddTriangle(d, 0, 1, 2);
    AddTriangle(d, 2, 1, 4);
    AddTriangle(d, 0, 2, 3);
    EXPECT_EQ(ListOf(Mesh(d.CreateCTriangulation())->GetTriangles()), (std::vector<Triangle>{{0, 1, 2}, {2, 1, 4}}));
}

TEST(MeshExchange, AnyMeshGivesAGraphWhoseLinksAreReturned)
{
    ZrCIncrementalDelaunay2D d;
    d.CreateDelaunayTriangulationFromCTriangulation(CornerTetrahedron(), false);
    EXPECT_FALSE(d.IsFinalized());
    EXPECT_EQ(LinkFault(Triangles(d.GetTriangleList())), "");
    EXPECT_EQ(OpenSides(Triangles(d.GetTriangleList())), 0);

    // Three triangles on the side 0-1, one of them wound the other way; one
    // triangle names a vertex twice and one a vertex beyond the mesh.
    d.CreateDelaunayTriangulationFromCTriangulation(MeshOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {1, 1, 0}},
                                                           {{0, 1, 2}, {1, 0, 3}, {2, 2, 4}, {0, 1, 4}, {1, 4, 5}}),
                                                    true);
    const std::vector<t_hdelaunaytriangle*> t = Triangles(d.GetFinalList());
    ASSERT_EQ(Corners(t), (std::vector<Triangle>{{0, 1, 2}, {1, 0, 3}, {0, 1, 4}}));
    EXPECT_EQ(LinkFault(t), "");
    EXPECT_EQ(t[0]->Neighbour[0], t[1]);
    EXPECT_EQ(OpenSides({t[2]}), 3);
}

TEST(MeshExchange, ExportThenImportThroughAFileGivesTheSameMeshAndAFileThatDoesNotOpenIsPassedOver)
{
    const std::string path = TemporaryPath(".bin"), nowhere = TemporaryPath("/no such folder/surface.bin");
    ZrCIncrementalDelaunay2D d, e;
    Triangulate(d, 50, 3);
    d.ExportDelaunayTriangleNew(path);
    e.ImportDelaunayTriangle(path);
    ASSERT_TRUE(e.IsFinalized());
    const Mesh sent(d.CreateCTriangulation()), received(e.CreateCTriangulation());
    EXPECT_EQ(BitsOf(received->GetPositions()), BitsOf(sent->GetPositions()));
    EXPECT_EQ(ListOf(received->GetTriangles()), ListOf(sent->GetTriangles()));
    EXPECT_EQ(BitsOf(received->GetNormals()), BitsOf(sent->GetNormals()));

    d.ExportDelaunayTriangleNew(nowhere);
    EXPECT_FALSE(std::filesystem::exists(nowhere));
    const std::vector<long> before = Shape(e);
    e.ImportDelaunayTriangle(nowhere);
    e.ImportDelaunayTriangle(std::filesystem::temp_directory_path().string());
    EXPECT_EQ(Shape(e), before);

    // Nothing to send gives an empty mesh, which empties the receiver.
    ZrCIncrementalDelaunay2D().ExportDelaunayTriangleNew(path);
    e.ImportDelaunayTriangle(path);
    EXPECT_EQ(e.GetNumVertices() + e.GetNumTriangles(), 0);
    std::filesystem::remove(path);
}

// Random and altered files are the business of fuzz_triangulation_import.
TEST(MeshExchange, TruncatedFilesAreRefusedAndChangeNothing)
{
    const std::string path = TemporaryPath(".bin");
    ZrCIncrementalDelaunay2D d, e;
    Triangulate(d, 6, 11);
    d.ExportDelaunayTriangleNew(path);
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> whole{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    Triangulate(e, 9, 12);
    const std::vector<long> before = Shape(e);

    // Every cut inside the header, then cuts across the blocks; writing a
    // file costs milliseconds here, so not every byte is tried.
    for (std::size_t size = 0; size < whole.size(); size += size < 28 || size + 13 >= whole.size() ? 1 : 13) {
        WriteFile(path, std::vector<char>(whole.begin(), whole.begin() + static_cast<long>(size)));
        EXPECT_THROW(e.ImportDelaunayTriangle(path), CArchiveException) << size << " bytes";
        ASSERT_EQ(Shape(e), before) << size << " bytes";
    }

    std::filesystem::remove(path);
}

} // namespace

// The finest triangulation hands over every vertex and every triangle of its
// working list, in order and with its winding; the file of it reads back into
// an adaptive triangulation with the same mesh, and an empty one writes none.
TEST(MeshExchange, FinestTriangulationGoesWholeIntoTheMeshAndItsFile)
{
    CSSE3dPolygon ring;
    CSSEMatrix field;
    MakeWavyRing(ring, 40, 10.0f, 10.0f, 7.0f);
    MakeField(field, 20, 20, [](int x, int y) { return 0.5f * float(x) - 0.25f * float(y); });
    ZrCFinestTriangulation t;
    t.TriangulateWithMarching(ring, &field, 1, true);
    const std::vector<t_hfinesttriangle*> triangles = ListOf(t.GetTriangleList());
    ASSERT_GT(triangles.size(), 100u);

    const Mesh mesh(t.CreateCTriangulationFromFinestTriangulation());
    ASSERT_NE(mesh, nullptr);
    std::vector<Triangle> corners;
    for (const auto* tr : triangles) {
        corners.push_back({unsigned(tr->Vertex[0]), unsigned(tr->Vertex[1]), unsigned(tr->Vertex[2])});
    }
    EXPECT_EQ(ListOf(mesh->GetTriangles()), corners);
    ASSERT_EQ(mesh->GetNumVertices(), unsigned(t.GetNumVertices()));
    for (int i = 0; i < t.GetNumVertices(); ++i) {
        const QbVector3f p = mesh->GetPositions()[std::size_t(i)];
        EXPECT_TRUE(p.x == t.GetVertex(i).x && p.y == t.GetVertex(i).y && p.z == t.GetVertex(i).z) << i;
    }

    const std::string path = TemporaryPath("_finest.bin");
    t.ExportTriangulation(path);
    ZrCIncrementalDelaunay2D back;
    back.ImportDelaunayTriangle(path);
    const Mesh received(back.CreateCTriangulation());
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(ListOf(received->GetTriangles()), corners);
    EXPECT_EQ(BitsOf(received->GetPositions()), BitsOf(mesh->GetPositions()));
    EXPECT_EQ(LinkFault(Triangles(back.GetFinalList())), "");
    std::filesystem::remove(path);

    ZrCFinestTriangulation().ExportTriangulation(path);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(ZrCFinestTriangulation().CreateCTriangulationFromFinestTriangulation(), nullptr);
}
