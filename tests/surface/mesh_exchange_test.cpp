// The adaptive triangulation to the indexed mesh and its file, and back.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "indexed_mesh/indexed_meshes.h"
#include "surface/triangulation_checks.h"
#include "vekdll/surface/mesh_exchange.h"

using namespace vek::test;
using Geometry::CTriangulation;
using Mesh = std::unique_ptr<CTriangulation>;

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

std::vector<t_hdelaunaytriangle*> Inside(CList<t_hdelaunaytriangle*>& list)
{
    std::vector<t_hdelaunaytriangle*> inside;
    std::ranges::copy_if(Triangles(list), std::back_inserter(inside), [](auto* t) { return !t->Outside; });
    return inside;
}

std::vector<Triangle> CornerTriples(const std::vector<t_hdelaunaytriangle*>& triangles)
{
    std::vector<Triangle> triples;
    for (const t_hdelaunaytriangle* t : triangles) {
        triples.push_back({unsigned(t->Vertex[0]), unsigned(t->Vertex[1]), unsigned(t->Vertex[2])});
    }
    return triples;
}

std::vector<QbVector3f> VerticesOf(const ZrCIncrementalDelaunay2D& d)
{
    std::vector<QbVector3f> vertices;
    for (int i = 0; i < d.GetNumVertices(); ++i) vertices.push_back({d.GetVertex(i).x, d.GetVertex(i).y, d.GetVertex(i).z});
    return vertices;
}

void ExpectSameMesh(const CTriangulation& got, const CTriangulation& want)
{
    EXPECT_EQ(BitsOf(got.GetPositions()), BitsOf(want.GetPositions()));
    EXPECT_EQ(ListOf(got.GetTriangles()), ListOf(want.GetTriangles()));
    EXPECT_EQ(BitsOf(got.GetNormals()), BitsOf(want.GetNormals()));
}

// What the tests can see of a triangulation: its vertices, its state and the
// shape of its final and working lists.
struct Snapshot {
    std::vector<std::uint32_t> vertices;
    bool finalized;
    std::vector<long> final, working;
    bool operator==(const Snapshot&) const = default;
};

Snapshot SnapshotOf(ZrCIncrementalDelaunay2D& d)
{
    const auto vertices = VerticesOf(d);
    return {BitsOf(std::span<const QbVector3f>(vertices)), d.IsFinalized(), ListShape(d.GetFinalList()),
            ListShape(d.GetTriangleList())};
}

class TemporaryFolder {
public:
    TemporaryFolder() : path_(std::filesystem::temp_directory_path() / ("vekdll_exchange_" + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    std::string File(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

std::vector<char> ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& path, const std::vector<char>& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(MeshExchange, RoundTripKeepsEveryVertexAndEveryInsideTriangleWithItsLinks)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        for (int n : {3, 12, 80}) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", " + std::to_string(n) + " points");
            ZrCIncrementalDelaunay2D d;
            Triangulate(d, n, seed);
            const std::vector<t_hdelaunaytriangle*> inside = Inside(d.GetFinalList());

            const Mesh mesh(d.CreateCTriangulation());
            ASSERT_NE(mesh, nullptr);
            EXPECT_EQ(BitsOf(mesh->GetPositions()), BitsOf(std::span<const QbVector3f>(VerticesOf(d))));
            EXPECT_EQ(ListOf(mesh->GetTriangles()), CornerTriples(inside));
            EXPECT_EQ(mesh->GetNormals().size(), std::size_t(n));

            // The target held another surface before: it is replaced whole.
            ZrCIncrementalDelaunay2D e;
            Triangulate(e, 7, seed + 100);
            e.CreateDelaunayTriangulationFromCTriangulation(*mesh, true);
            ASSERT_TRUE(e.IsFinalized());
            EXPECT_EQ(VerticesOf(e), VerticesOf(d));
            EXPECT_EQ(e.GetVertex(n - 1).w, 0.0f);
            const std::vector<t_hdelaunaytriangle*> back = Triangles(e.GetFinalList());
            EXPECT_EQ(CornerTriples(back), CornerTriples(inside));
            EXPECT_EQ(LinkFault(back), "");
            ASSERT_EQ(back.size(), inside.size());
            for (std::size_t k = 0; k < inside.size(); ++k) {
                for (int s = 0; s < 3; ++s) {
                    // Linked where the original is linked to an inside triangle, open elsewhere.
                    const auto at = std::ranges::find(inside, inside[k]->Neighbour[s]);
                    EXPECT_EQ(back[k]->Neighbour[s], at == inside.end() ? nullptr : back[at - inside.begin()]);
                }
                EXPECT_EQ(back[k]->CircleRadius2, inside[k]->CircleRadius2);
                EXPECT_EQ(back[k]->CircleX, inside[k]->CircleX);
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
    const Mesh working(d.CreateCTriangulation());
    ASSERT_NE(working, nullptr);
    EXPECT_EQ(working->GetNumVertices(), 5u);
    EXPECT_EQ(working->GetNumTriangles(), 0u);

    d.FinalizeTriangleList();
    ASSERT_EQ(d.GetNumTriangles(), 2);
    // Working triangles beside the final ones are taken first, Outside ones
    // passed over, until the final list's count is reached.
    AddTriangle(d, 1, 4, 2)->Outside = true;
    AddTriangle(d, 0, 1, 2);
    AddTriangle(d, 2, 1, 4);
    AddTriangle(d, 0, 2, 3);
    const Mesh cut(d.CreateCTriangulation());
    EXPECT_EQ(ListOf(cut->GetTriangles()), (std::vector<Triangle>{{0, 1, 2}, {2, 1, 4}}));
}

// A record of the finest kind: corners and links, no Outside flag.
struct BareTriangle {
    std::int32_t Vertex[3];
    BareTriangle* Neighbour[3];
};

TEST(MeshExchange, RecordsWithoutOutsideFlagGiveEveryTriangle)
{
    ZrCSSEVertexContainer vertices(4);
    for (const SSEPoint& p : {P(0, 0, 1), P(1, 0, 2), P(1, 1, 3), P(0, 1, 4)}) vertices.AppendVertex(p);
    BareTriangle a{{0, 1, 2}, {}}, b{{0, 2, 3}, {}};
    CList<BareTriangle*> list;
    list.AddTail(&a);
    list.AddTail(&b);
    const Mesh mesh(vek::IndexedMeshFromTriangles(vertices, list, list.GetCount()));
    EXPECT_EQ(ListOf(mesh->GetTriangles()), (std::vector<Triangle>{{0, 1, 2}, {0, 2, 3}}));
    EXPECT_EQ(mesh->GetPositions()[3], (QbVector3f{0, 1, 4}));
}

TEST(MeshExchange, AnyMeshGivesAGraphWhoseLinksAreReturned)
{
    ZrCIncrementalDelaunay2D d;
    d.CreateDelaunayTriangulationFromCTriangulation(CornerTetrahedron(), false);
    EXPECT_FALSE(d.IsFinalized());
    EXPECT_EQ(d.GetNumTrianglesInTriangleList(), 4);
    EXPECT_EQ(LinkFault(Triangles(d.GetTriangleList())), "");
    EXPECT_EQ(OpenSides(Triangles(d.GetTriangleList())), 0);

    // Three triangles on the side 0-1, one of them wound the other way; one
    // triangle names a vertex twice and one a vertex beyond the mesh.
    const CTriangulation fan = MeshOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {1, 1, 0}},
                                      {{0, 1, 2}, {1, 0, 3}, {2, 2, 4}, {0, 1, 4}, {1, 4, 5}});
    d.CreateDelaunayTriangulationFromCTriangulation(fan, true);
    const std::vector<t_hdelaunaytriangle*> t = Triangles(d.GetFinalList());
    ASSERT_EQ(CornerTriples(t), (std::vector<Triangle>{{0, 1, 2}, {1, 0, 3}, {0, 1, 4}}));
    EXPECT_EQ(LinkFault(t), "");
    EXPECT_EQ(t[0]->Neighbour[0], t[1]);
    EXPECT_EQ(t[1]->Neighbour[0], t[0]);
    EXPECT_EQ(t[2]->Neighbour[0], nullptr);
    EXPECT_EQ(t[2]->Neighbour[1], nullptr);
}

TEST(MeshExchange, AnImportedGraphTakesInsertionsAsTheOriginalDoes)
{
    ZrCIncrementalDelaunay2D d, e;
    Triangulate(d, 60, 7);
    for (t_hdelaunaytriangle* t : Triangles(d.GetFinalList())) t->Outside = false;
    const Mesh mesh(d.CreateCTriangulation());
    e.CreateDelaunayTriangulationFromCTriangulation(*mesh, true);
    for (const auto& [x, y] : {std::pair(31.5f, 47.25f), std::pair(70.0f, 12.5f), std::pair(55.5f, 88.0f)}) {
        d.InsertVertexIntoTriangulation(x, y, true);
        e.InsertVertexIntoTriangulation(x, y, true);
    }
    EXPECT_EQ(ListShape(e.GetFinalList()), ListShape(d.GetFinalList()));
}

TEST(MeshExchange, ExportThenImportThroughAFileGivesTheSameMesh)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("surface.bin");
    ZrCIncrementalDelaunay2D d, e;
    Triangulate(d, 50, 3);
    d.ExportDelaunayTriangleNew(path);
    e.ImportDelaunayTriangle(path);
    ASSERT_TRUE(e.IsFinalized());
    const Mesh sent(d.CreateCTriangulation()), received(e.CreateCTriangulation());
    ExpectSameMesh(*received, *sent);

    // Nothing to send gives an empty mesh, which empties the receiver.
    ZrCIncrementalDelaunay2D empty;
    empty.ExportDelaunayTriangleNew(path);
    e.ImportDelaunayTriangle(path);
    EXPECT_EQ(e.GetNumVertices(), 0);
    EXPECT_EQ(e.GetNumTriangles(), 0);
}

TEST(MeshExchange, AFileThatDoesNotOpenIsPassedOver)
{
    const TemporaryFolder folder;
    ZrCIncrementalDelaunay2D d;
    Triangulate(d, 20, 5);
    const std::string nowhere = folder.File("no such folder/surface.bin");
    d.ExportDelaunayTriangleNew(nowhere);
    EXPECT_FALSE(std::filesystem::exists(nowhere));

    const Snapshot before = SnapshotOf(d);
    d.ImportDelaunayTriangle(nowhere);
    d.ImportDelaunayTriangle(folder.File(""));
    EXPECT_EQ(SnapshotOf(d), before);
}

TEST(MeshExchange, TruncatedAndRandomFilesAreRefusedAndChangeNothing)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("surface.bin");
    ZrCIncrementalDelaunay2D d, e;
    Triangulate(d, 6, 11);
    d.ExportDelaunayTriangleNew(path);
    const std::vector<char> whole = ReadFile(path);
    Triangulate(e, 9, 12);
    const Snapshot before = SnapshotOf(e);

    // Every cut inside the header, then cuts across the blocks; writing a
    // file costs milliseconds here, so not every byte is tried.
    std::vector<std::size_t> sizes{whole.size() - 1};
    for (std::size_t size = 0; size < whole.size(); size += size < 28 ? 1 : 13) sizes.push_back(size);
    for (std::size_t size : sizes) {
        WriteFile(path, std::vector<char>(whole.begin(), whole.begin() + static_cast<long>(size)));
        EXPECT_THROW(e.ImportDelaunayTriangle(path), CArchiveException) << size << " bytes";
        ASSERT_EQ(SnapshotOf(e), before) << size << " bytes";
    }

    // Random bytes, and the whole file with one to three bytes changed:
    // refused with the target as it was, or read into a sound graph.
    std::mt19937 random(13);
    int read = 0;
    for (int round = 0; round < 80; ++round) {
        std::vector<char> bytes = whole;
        if (round % 2 == 0) {
            bytes.resize(random() % (2 * whole.size()));
            for (char& byte : bytes) byte = static_cast<char>(random());
        } else {
            for (unsigned n = 1 + random() % 3; n > 0; --n) bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        WriteFile(path, bytes);
        ZrCIncrementalDelaunay2D f;
        Triangulate(f, 9, 12);
        try {
            f.ImportDelaunayTriangle(path);
        } catch (const CArchiveException&) {
            ASSERT_EQ(SnapshotOf(f), before) << "round " << round;
            continue;
        }
        ++read;
        const std::vector<t_hdelaunaytriangle*> graph = Triangles(f.GetFinalList());
        EXPECT_EQ(LinkFault(graph), "") << "round " << round;
        for (const t_hdelaunaytriangle* t : graph) {
            EXPECT_TRUE(std::ranges::all_of(t->Vertex, [&](int v) { return v >= 0 && v < f.GetNumVertices(); }));
        }
    }
    EXPECT_GT(read, 0);
}

} // namespace
