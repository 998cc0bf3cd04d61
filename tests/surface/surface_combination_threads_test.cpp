// The threaded parts of joining surfaces: the blend of two rims on two
// workers, the seam of a patch laid into a surface, and the joining of
// sub-triangulations that workers built.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>
#include <vector>

#include "triangulation_checks.h"
#include "vekdll/platform/c_event.h"
#include "vekdll/surface/polygon_blend.h"

namespace vek::test {
namespace {

CSSE3dPolygon Square(float low, float high, int perSide, float z = 0.0f)
{
    CSSE3dPolygon square;
    square.Create(4 * perSide);
    const float step = (high - low) / static_cast<float>(perSide);
    for (int i = 0; i < perSide; ++i) {
        const float t = low + step * static_cast<float>(i);
        square.SetPoint(i, t, low, z);
        square.SetPoint(perSide + i, high, t, z);
        square.SetPoint(2 * perSide + i, high - (t - low), high, z);
        square.SetPoint(3 * perSide + i, low, high - (t - low), z);
    }
    return square;
}

TEST(RimBlend, TheBlendLiesTheFractionOfTheWayAcrossAlongTheLongerRimInEvenSteps)
{
    const CSSE3dPolygon outer = Square(0.0f, 10.0f, 10);
    const CSSE3dPolygon inner = Square(2.0f, 8.0f, 6);
    PolygonBlend blend(outer, inner, 0.5f, true);
    ASSERT_TRUE(blend.IsValid());
    const CSSE3dPolygon& half = blend.Blend();
    ASSERT_EQ(half.GetNumPoints(), 800) << "a place every 0.05 along the 40 units of the longer rim";
    // Place 100 lies 5 units along the outer square, at (5, 0); its nearest
    // place on the inner square is (5, 2), so the halfway point is (5, 1).
    float x, y, z;
    half.GetPoint(100, x, y, z);
    EXPECT_NEAR(x, 5.0f, 1e-4f);
    EXPECT_NEAR(y, 1.0f, 1e-4f);
    // Place 10 lies at (0.5, 0), whose nearest place on the inner square is
    // its corner (2, 2).
    half.GetPoint(10, x, y, z);
    EXPECT_NEAR(x, 1.25f, 1e-4f);
    EXPECT_NEAR(y, 1.0f, 1e-4f);
    const CSSE3dPolygon& near = blend.Blend(1.5f);
    near.GetPoint(100, x, y, z);
    EXPECT_NEAR(y, 2.0f, 1e-4f) << "the fraction is clamped to 1";
    const CSSE3dPolygon& along = blend.Blend(0.0f);
    for (int i = 1; i < along.GetNumPoints(); ++i) {
        float x0, y0, z0, x1, y1, z1;
        along.GetPoint(i - 1, x0, y0, z0);
        along.GetPoint(i, x1, y1, z1);
        EXPECT_NEAR(std::hypot(x1 - x0, y1 - y0), 0.05f, 1e-3f) << i;
    }

    PolygonBlend turned(inner, outer, 0.25f, true);
    turned.Blend().GetPoint(100, x, y, z);
    EXPECT_NEAR(y, 1.5f, 1e-4f) << "with the roles changed the fraction still counts from the first rim";

    CSSE3dPolygon two;
    two.Create(2);
    PolygonBlend none(two, outer, 0.5f, true);
    EXPECT_FALSE(none.IsValid());
    EXPECT_EQ(none.Blend().GetNumPoints(), 0);
}

// A grid of points over [low, high]^2 with the given spacing, triangulated
// and finalized.
void Grid(ZrCIncrementalDelaunay2D& d, float low, float high, float spacing, float z)
{
    const int n = static_cast<int>(std::lround((high - low) / spacing));
    d.CreateVertexArray((n + 1) * (n + 1) + 8);
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x)
            d.AppendVertex(P(low + spacing * static_cast<float>(x), low + spacing * static_cast<float>(y), z));
    d.Triangulate(d.GetNumVertices(), true, true);
}

bool Overlap(const ZrCIncrementalDelaunay2D& d, const t_hdelaunaytriangle* s, const t_hdelaunaytriangle* t)
{
    // Separating axis test on the sides of both, with a small tolerance so
    // that touching triangles do not count.
    const auto separated = [&](const t_hdelaunaytriangle* a, const t_hdelaunaytriangle* b) {
        for (int k = 0; k < 3; ++k) {
            const Point2 p = At(d, a->Vertex[k]), q = At(d, a->Vertex[(k + 1) % 3]), r = At(d, a->Vertex[(k + 2) % 3]);
            const double own = Cross(p, q, r);
            bool allOutside = true;
            for (int v : b->Vertex) allOutside = allOutside && Cross(p, q, At(d, v)) * own <= 1e-6 * std::fabs(own);
            if (allOutside) return true;
        }
        return false;
    };
    return !separated(s, t) && !separated(t, s);
}

double LayerArea(const ZrCIncrementalDelaunay2D& d, const std::vector<t_hdelaunaytriangle*>& triangles)
{
    double area = 0.0;
    for (const t_hdelaunaytriangle* t : triangles) area += std::fabs(SignedArea(d, t));
    return area;
}

// Pairs of triangles that overlap in x-y; only pairs whose spans in x meet
// are tested, swept in the order of their least x.
int Overlaps(const ZrCIncrementalDelaunay2D& d, std::vector<t_hdelaunaytriangle*> triangles)
{
    const auto span = [&d](const t_hdelaunaytriangle* t) {
        double low = HUGE_VAL, high = -HUGE_VAL;
        for (int v : t->Vertex) low = std::min<double>(low, d.GetVertex(v).x), high = std::max<double>(high, d.GetVertex(v).x);
        return std::pair(low, high);
    };
    std::ranges::sort(triangles, {}, [&](const t_hdelaunaytriangle* t) { return span(t).first; });
    int overlaps = 0;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        const double high = span(triangles[i]).second;
        for (std::size_t j = i + 1; j < triangles.size() && span(triangles[j]).first <= high; ++j)
            overlaps += Overlap(d, triangles[i], triangles[j]);
    }
    return overlaps;
}

// Lays `patch` into the open `surface` by the steps of
// InsertTriangulationAndCombine, up to the closing of the middle band. The
// surface keeps its outer rim, so the opening is picked by hand: of the
// loops of the surface's own vertices, the one of least area.
void LayPatchIntoOpenSurface(ZrCIncrementalDelaunay2D& surface, ZrCIncrementalDelaunay2D& patch)
{
    CList<t_hdelaunayedge*> rim1, rim2;
    CList<t_hdelaunaytriangle*> reached;
    surface.GetBorderOfCombinedTriangulationApdated(patch, &rim1, &rim2, &reached);
    surface.CheckAndGetBorderOfCombinedTriangulation(patch, &rim1, &rim2, &reached, false);
    ZrCIncrementalDelaunay2D::ClearEdgeList(&rim1);
    ZrCIncrementalDelaunay2D::ClearEdgeList(&rim2);
    if (surface.IsFinalized()) surface.CopyFinalTriangleListToTriangleList();
    const int patchStart = surface.GetNumVertices();
    surface.SetOtherVertexStart(patchStart);
    surface.CopyAndInsertOtherTriangulation(patch, false);

    EdgeLists loops;
    surface.FindAllBorderEdgeLists(&loops.lists);
    CList<t_hdelaunayedge*>* opening = nullptr;
    CList<t_hdelaunayedge*>* patchRim = nullptr;
    float openingArea = 0.0f;
    for (POSITION pos = loops.lists.GetHeadPosition(); pos != nullptr;) {
        CList<t_hdelaunayedge*>* loop = loops.lists.GetNext(pos);
        if (loop->GetHead()->Vertex[0] >= patchStart) {
            patchRim = loop;
            continue;
        }
        CSSE3dPolygon outline;
        ZrCIncrementalDelaunay2D::BuildPolygonFromEdgeList(loop, outline, surface);
        const float area = std::fabs(outline.CalcXYArea());
        if (opening == nullptr || area < openingArea) {
            opening = loop;
            openingArea = area;
        }
    }
    ASSERT_NE(opening, nullptr);
    ASSERT_NE(patchRim, nullptr);
    CSSE3dPolygon first, second;
    std::vector<int> firstIndices(static_cast<std::size_t>(opening->GetCount()));
    std::vector<int> secondIndices(static_cast<std::size_t>(patchRim->GetCount()));
    surface.BuildPolygonFromEdgeList(opening, first, firstIndices.data());
    surface.BuildPolygonFromEdgeList(patchRim, second, secondIndices.data());
    CList<t_hdelaunaytriangle*> seam;
    surface.CombineTriangulations(&first, &second, &seam, nullptr, firstIndices.data(), secondIndices.data());
    surface.LinkSeamToRims(seam, *opening, *patchRim);
    surface.CombineMergeTriangulations();
}

struct PatchCase {
    float low, high, spacing, surfaceSpacing;
};

TEST(PatchIntoSurface, TheSeamFillsTheOpeningWithoutOverlapOrGap)
{
    // Patches off the surface's grid and on it (where the clearing leaves
    // vertices behind at the places of the patch's rim), finer and as fine.
    for (const PatchCase c : {PatchCase{7.25f, 12.75f, 0.5f, 1.0f}, PatchCase{9.0f, 11.0f, 0.25f, 1.0f},
                              PatchCase{6.5f, 13.5f, 1.0f, 0.5f}}) {
        SCOPED_TRACE(c.low);
        ZrCIncrementalDelaunay2D surface, patch;
        Grid(surface, 0.0f, 20.0f, c.surfaceSpacing, 0.0f);
        Grid(patch, c.low, c.high, c.spacing, 0.0f);
        const int patchTriangles = patch.GetNumTriangles();
        LayPatchIntoOpenSurface(surface, patch);
        const std::vector<t_hdelaunaytriangle*> all = Triangles(surface.GetTriangleList());
        EXPECT_EQ(LinkFault(all), "");
        EXPECT_NEAR(LayerArea(surface, all), 400.0, 1e-2) << "the seam leaves no gap";
        EXPECT_EQ(Overlaps(surface, all), 0);
        EXPECT_EQ(OpenSides(all), static_cast<int>(std::lround(80.0f / c.surfaceSpacing)))
            << "only the outer rim stays open";
        EXPECT_EQ(patch.GetNumTriangles(), patchTriangles) << "the patch itself is left as it was";
    }
}

// The same patch in a closed skin, a box of two sheets 4 apart, into which
// an opening has been cut: the peel at the end finds nothing open.
TEST(PatchIntoSkin, TheOpeningIsSewnShutAndThePeelLeavesTheWholeSkin)
{
    ZrCIncrementalDelaunay2D top, bottom, skin, patch;
    Grid(top, 0.0f, 20.0f, 1.0f, 0.0f);
    Grid(bottom, 0.0f, 20.0f, 1.0f, -4.0f);
    Grid(patch, 7.25f, 12.75f, 0.5f, 0.0f);
    skin.CombineTriangulationsMidPoint(top, bottom, false, false);
    for (t_hdelaunaytriangle* t : Triangles(skin.GetTriangleList())) {
        double x = 0.0, y = 0.0, z = 0.0;
        for (int v : t->Vertex) x += skin.GetVertex(v).x / 3.0, y += skin.GetVertex(v).y / 3.0, z += skin.GetVertex(v).z;
        t->Ignore = z == 0.0 && x > 8.0 && x < 12.0 && y > 8.0 && y < 12.0;
    }
    skin.KillIgnoredTrianglesFromTriangleList(true);
    ASSERT_EQ(OpenSides(Triangles(skin.GetTriangleList())), 16);

    skin.InsertTriangulationAndCombine(patch, nullptr, false);
    ASSERT_FALSE(skin.IsFinalized()) << "it came in open";
    const std::vector<t_hdelaunaytriangle*> all = Triangles(skin.GetTriangleList());
    EXPECT_EQ(LinkFault(all), "");
    EXPECT_EQ(OpenSides(all), 0);
    std::vector<t_hdelaunaytriangle*> upper, lower, ofPatch;
    const int patchStart = skin.GetOtherVertexStart();
    for (t_hdelaunaytriangle* t : all) {
        const auto corners = [&](auto test) { return std::ranges::all_of(t->Vertex, test); };
        if (corners([&](int v) { return skin.GetVertex(v).z > -2.0f; })) upper.push_back(t);
        if (corners([&](int v) { return skin.GetVertex(v).z == -4.0f; })) lower.push_back(t);
        if (corners([&](int v) { return v >= patchStart && v < patchStart + patch.GetNumVertices(); })) ofPatch.push_back(t);
    }
    EXPECT_NEAR(LayerArea(skin, upper), 400.0, 1e-2);
    EXPECT_EQ(Overlaps(skin, upper), 0);
    EXPECT_NEAR(LayerArea(skin, lower), 400.0, 1e-2) << "the sheet below the patch is not touched";
    EXPECT_EQ(ofPatch.size(), 2u * 11u * 11u);
}

TEST(PatchIntoSurface, OnASurfaceWithAnOuterRimThePeelLeavesNothing)
{
    ZrCIncrementalDelaunay2D surface, patch;
    Grid(surface, 0.0f, 20.0f, 1.0f, 0.0f);
    Grid(patch, 7.25f, 12.75f, 0.5f, 0.0f);
    surface.InsertTriangulationAndCombine(patch, nullptr, false);
    EXPECT_TRUE(surface.IsFinalized()) << "it came in finalized";
    EXPECT_EQ(surface.GetNumTriangles(), 0);
}

TEST(PatchIntoSurface, EmptyOrLonePatchesChangeNothingAndCrashNothing)
{
    ZrCIncrementalDelaunay2D surface, empty;
    Grid(surface, 0.0f, 4.0f, 1.0f, 0.0f);
    surface.InsertTriangulationAndCombine(empty, nullptr, false);
    EXPECT_EQ(surface.GetNumTriangles(), 32);
    empty.InsertTriangulationAndCombine(surface, nullptr, false);
    EXPECT_EQ(empty.GetNumTriangles(), 0);
    surface.InsertTriangulationAndCombine(surface, nullptr, false);
    EXPECT_EQ(surface.GetNumTriangles(), 32);

    ZrCIncrementalDelaunay2D lone(3);
    AddTriangle(lone, P(50, 50), P(51, 50), P(50, 51));
    surface.InsertTriangulationAndCombine(lone, nullptr, false);
    CList<t_hdelaunaytriangle*>& present = surface.IsFinalized() ? surface.GetFinalList() : surface.GetTriangleList();
    EXPECT_EQ(LinkFault(Triangles(present)), "");

    // A patch over the surface's corner, one smaller than the clearance, and
    // points in a row that make no triangle: whatever is left is a valid
    // graph, and the patch is untouched.
    struct Odd {
        float low, high, spacing;
    };
    for (const Odd odd : {Odd{-5.0f, 5.0f, 0.5f}, Odd{9.9f, 10.1f, 0.1f}}) {
        ZrCIncrementalDelaunay2D big, patch;
        Grid(big, 0.0f, 20.0f, 1.0f, 0.0f);
        Grid(patch, odd.low, odd.high, odd.spacing, 0.0f);
        const int patchTriangles = patch.GetNumTriangles();
        big.InsertTriangulationAndCombine(patch, nullptr, false);
        EXPECT_EQ(LinkFault(Triangles(big.GetFinalList())), "") << odd.low;
        EXPECT_EQ(patch.GetNumTriangles(), patchTriangles);
    }
    ZrCIncrementalDelaunay2D big, row(8);
    Grid(big, 0.0f, 20.0f, 1.0f, 0.0f);
    for (int i = 0; i < 5; ++i) row.AppendVertex(P(5.0f + static_cast<float>(i), 5.0f));
    row.Triangulate(5, true, false);
    big.InsertTriangulationAndCombine(row, nullptr, false);
    EXPECT_EQ(LinkFault(Triangles(big.GetFinalList())), "");
}

TEST(SubTriangulations, SlotsAreJoinedInOrderAcrossTheirCut)
{
    // Two bands of a 2 x 1 strip, each built and signalled by a worker of
    // its own; slot 1 stays empty and is waited for all the same.
    ZrCIncrementalDelaunay2D* subs[10] = {};
    std::vector<std::unique_ptr<CEvent>> events;
    CEvent* slots[10] = {};
    for (int k = 0; k < 10; ++k) {
        events.push_back(std::make_unique<CEvent>(false));
        slots[k] = events.back().get();
    }
    subs[0] = new ZrCIncrementalDelaunay2D(4);
    subs[2] = new ZrCIncrementalDelaunay2D(4);
    std::vector<std::thread> workers;
    for (int k = 0; k < 10; ++k) {
        workers.emplace_back([&, k] {
            if (subs[k] != nullptr) {
                const float x0 = k == 0 ? 0.0f : 1.0f;
                for (SSEPoint p : {P(x0, 0), P(x0 + 1, 0), P(x0 + 1, 1), P(x0, 1)}) subs[k]->AppendVertex(p);
                subs[k]->Triangulate(4, k == 2, false);
            }
            slots[k]->SetEvent();
        });
    }
    ZrCIncrementalDelaunay2D whole;
    whole.CombineSubDelaunayTriangles(subs, slots);
    for (std::thread& worker : workers) worker.join();
    for (ZrCIncrementalDelaunay2D* sub : subs) EXPECT_EQ(sub, nullptr);
    EXPECT_EQ(whole.GetNumVertices(), 6) << "the two corners on the cut are one vertex each";
    const std::vector<t_hdelaunaytriangle*> all = Triangles(whole.GetTriangleList());
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(LinkFault(all), "");
    EXPECT_EQ(OpenSides(all), 6) << "the side on the cut is shared";
}

} // namespace
} // namespace vek::test
