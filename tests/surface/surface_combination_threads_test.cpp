// The threaded parts of joining surfaces: the blend of two rims on two
// workers, the seam of a patch laid into a surface, and the joining of
// sub-triangulations that workers built.

#include <gtest/gtest.h>

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

TEST(RimBlend, TheBlendLiesTheFractionOfTheWayAcrossAndWalksTheLongerRim)
{
    const CSSE3dPolygon outer = Square(0.0f, 10.0f, 10);
    const CSSE3dPolygon inner = Square(2.0f, 8.0f, 6);
    PolygonBlend blend(outer, inner, 0.5f, true);
    ASSERT_TRUE(blend.IsValid());
    const CSSE3dPolygon& half = blend.Blend();
    ASSERT_EQ(half.GetNumPoints(), 40) << "one point per point of the longer rim";
    // Mid-edge points of the outer square pair straight across: (5, 0)
    // meets (5, 2), so the halfway point is (5, 1).
    float x, y, z;
    half.GetPoint(5, x, y, z);
    EXPECT_FLOAT_EQ(x, 5.0f);
    EXPECT_FLOAT_EQ(y, 1.0f);
    const CSSE3dPolygon& near = blend.Blend(1.5f);
    near.GetPoint(5, x, y, z);
    EXPECT_FLOAT_EQ(y, 2.0f) << "the fraction is clamped to 1";

    PolygonBlend turned(inner, outer, 0.25f, true);
    turned.Blend().GetPoint(5, x, y, z);
    EXPECT_FLOAT_EQ(y, 1.5f) << "with the roles changed the fraction still counts from the first rim";

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

// Not yet met: the seam leaves gaps and overlaps where the opening's rim is
// ragged; kept here as the measure of the work still open.
TEST(PatchIntoSurface, DISABLED_TheSeamFillsTheOpeningWithoutOverlapOrGap)
{
    ZrCIncrementalDelaunay2D surface, patch;
    Grid(surface, 0.0f, 20.0f, 1.0f, 0.0f);
    Grid(patch, 7.25f, 12.75f, 0.5f, 0.0f);
    surface.InsertTriangulationAndCombine(patch, nullptr, false);
    ASSERT_TRUE(surface.IsFinalized());
    const std::vector<t_hdelaunaytriangle*> all = Triangles(surface.GetFinalList());
    EXPECT_EQ(LinkFault(all), "");
    double area = 0.0;
    for (const t_hdelaunaytriangle* t : all) area += std::fabs(SignedArea(surface, t));
    EXPECT_NEAR(area, 400.0, 1e-2);
    int overlaps = 0;
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = i + 1; j < all.size(); ++j) overlaps += Overlap(surface, all[i], all[j]);
    EXPECT_EQ(overlaps, 0);
    // Only the outer rim stays open: 80 sides of the 20 x 20 square.
    EXPECT_EQ(OpenSides(all), 80);
    EXPECT_EQ(patch.GetNumTriangles(), 2 * 11 * 11) << "the patch itself is left as it was";
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
