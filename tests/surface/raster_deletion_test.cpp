// Triangles measured against a newer raster of the surface: which meet it
// (critical corners), which it contradicts in a band, and the deletion that
// puts both together. The rasters are centred on the surface.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <vector>

#include "support/sse_lanes.h"
#include "surface/refinement_fixtures.h"

namespace vek::test {
namespace {

using Surface = ZrCIncrementalDelaunay2D;
using TriangleList = CList<t_hdelaunaytriangle*>;
using AffectedList = CList<t_AffectedDelaunayTriangles*>;

// A raster of 16 x 16 cells centred on the surface (x = cell - 8): `data`
// where the surface's x is at most `upToX`, `background` elsewhere.
CSSEMatrix Raster(float upToX, float data, float background)
{
    return Field(16, 16, [=](int x, int) { return static_cast<float>(x - 8) <= upToX ? data : background; });
}

bool CornerUpTo(Surface& d, const t_hdelaunaytriangle* t, int k, float x)
{
    return d.GetVertex(t->Vertex[k]).x <= x;
}

// The flat surface x, y in -4 .. 4 at height 1 and the box of a ring
// around it.
struct Flat {
    Surface d{100};
    CSSE3dPolygon box;
    explicit Flat(float z = 1.0f)
    {
        Grid(d, -4, -4, 8, [z](float, float) { return z; });
        box.Create(4);
        SSEPoint corners[4] = {P(-4, -4, z), P(4, -4, z), P(4, 4, z), P(-4, 4, z)};
        for (int i = 0; i < 4; ++i) box.SetPointSSE(i, corners[i]);
    }
};

// Checks the sorting of a pass whose raster has data at x <= 0: three such
// corners mark the triangle, none leaves it clean, some list it with them.
void ExpectSortedByCornersUpTo(Surface& d, TriangleList& clean, AffectedList& affected, float upToX)
{
    const std::vector<t_hdelaunaytriangle*> cleanOnes = Triangles(clean);
    const std::set<const t_hdelaunaytriangle*> inClean(cleanOnes.begin(), cleanOnes.end());
    std::map<const t_hdelaunaytriangle*, const t_AffectedDelaunayTriangles*> listed;
    for (POSITION pos = affected.GetHeadPosition(); pos != nullptr;) {
        const t_AffectedDelaunayTriangles* record = affected.GetNext(pos);
        EXPECT_TRUE(listed.emplace(record->Triangle, record).second);
        EXPECT_EQ(record->CornerCount, 0);
    }
    for (const t_hdelaunaytriangle* t : Triangles(PresentTriangles(d))) {
        int critical = 0;
        for (int k = 0; k < 3; ++k) critical += CornerUpTo(d, t, k, upToX);
        EXPECT_EQ(t->Ignore, critical == 3);
        EXPECT_EQ(inClean.count(t), critical == 0 ? 1u : 0u);
        ASSERT_EQ(listed.count(t), critical == 1 || critical == 2 ? 1u : 0u);
        if (listed.count(t) == 0) continue;
        for (int k = 0; k < 3; ++k) EXPECT_EQ(listed[t]->Corner[k], CornerUpTo(d, t, k, upToX));
    }
}

TEST(CriticalTriangles, CornersNearTheRasterSortTheTrianglesForMaximaAndMinima)
{
    for (const bool maxima : {true, false}) {
        SCOPED_TRACE(maxima);
        Flat f;
        // Seen from below, the surface must face down.
        if (!maxima) f.d.FlipAllTrianglesOrientation();
        CSSEMatrix height = maxima ? Raster(0.0f, 0.5f, -10.0f) : Raster(0.0f, 1.5f, 10.0f);
        CSSEMatrix mask = Raster(0.0f, 1.0f, 0.0f);
        TriangleList clean;
        AffectedList affected;
        float minY = 99999.9f, maxY = -99999.9f;
        const SSEPoint view = P(0, 0, maxima ? -1.0f : 1.0f);
        if (maxima)
            f.d.FindCriticalTriangleListMaxImg(&clean, &affected, minY, maxY, &height, &mask, &f.box, view, true);
        else
            f.d.FindCriticalTriangleListMinImg(&clean, &affected, minY, maxY, &height, &mask, &f.box, view, true);
        EXPECT_TRUE(f.d.IsFinalized());
        ExpectSortedByCornersUpTo(f.d, clean, affected, 0.0f);
        EXPECT_EQ(std::pair(minY, maxY), std::pair(-4.0f, 4.0f));
        Surface::ClearAffectedList(&affected);
        EXPECT_TRUE(affected.IsEmpty());
    }
}

TEST(CriticalTriangles, SteepTrianglesAndTrianglesFarFromTheBoxAreNeverCritical)
{
    // z = 3y rises at 72 degrees (the box reaches down below it, since
    // corners more than 2.0 below the box are passed over); a box 100 cells
    // away reaches no triangle.
    Flat steep;
    for (int v = 0; v < steep.d.GetNumVertices(); ++v)
        steep.d.SetZValueInVertex(3.0f * steep.d.GetVertex(v).y, v);
    steep.box.SetAllZValues(-20.0f);
    Flat far;
    far.box.AddValueToAllXValues(100.0f);
    CSSEMatrix height = Raster(8.0f, 0.5f, -10.0f);  // data everywhere on the surface
    height.SetPoint(12, 12, -10.0f);                 // and the background inside the searched part
    CSSEMatrix mask = Constant(16, 16, 1.0f);
    for (Flat* f : {&steep, &far}) {
        TriangleList clean;
        AffectedList affected;
        float minY = 99999.9f, maxY = -99999.9f;
        f->d.FindCriticalTriangleListMaxImg(&clean, &affected, minY, maxY, &height, &mask, &f->box, P(0, 0, -1), true);
        EXPECT_TRUE(affected.IsEmpty());
        EXPECT_EQ(clean.GetCount(), f == &steep ? f->d.GetNumTriangles() : 0);
        EXPECT_EQ(minY, 99999.9f);
        for (const t_hdelaunaytriangle* t : Triangles(f->d.GetFinalList())) EXPECT_FALSE(t->Ignore);
    }
}

TEST(CriticalTriangles, LaterViewsCheckTheCleanTrianglesAndCompleteTheRecords)
{
    Flat f;
    CSSEMatrix none = Raster(-100.0f, 0.0f, -10.0f);
    CSSEMatrix noMask = Constant(16, 16, 0.0f);
    CSSEMatrix height = Raster(0.0f, 0.5f, -10.0f);
    CSSEMatrix mask = Raster(0.0f, 1.0f, 0.0f);
    const SSEPoint view = P(0, 0, -1);
    TriangleList clean;
    AffectedList affected;
    float minY = 99999.9f, maxY = -99999.9f;
    f.d.FindCriticalTriangleListMaxImg(&clean, &affected, minY, maxY, &none, &noMask, &f.box, view, true);
    ASSERT_EQ(clean.GetCount(), f.d.GetNumTriangles());

    // Turned a quarter about x, the level surface stands on edge: steep.
    f.d.CheckCriticalTriangleListMaxImg(1.5707964f, &affected, &height, &mask, view, &clean, minY, maxY,
                                        eViewPlus90, true);
    EXPECT_EQ(clean.GetCount(), f.d.GetNumTriangles());
    // Unturned, the clean ones are sorted as by the first pass.
    f.d.CheckCriticalTriangleListMaxImg(0.0f, &affected, &height, &mask, view, &clean, minY, maxY, eViewStraight,
                                        true);
    ExpectSortedByCornersUpTo(f.d, clean, affected, 0.0f);
    EXPECT_EQ(std::pair(minY, maxY), std::pair(-4.0f, 4.0f));

    // A raster with data up to x = 1 completes every listed record, whose
    // corners all lie at x <= 1, and marks its triangle.
    CSSEMatrix wider = Raster(1.0f, 0.5f, -10.0f);
    CSSEMatrix widerMask = Raster(1.0f, 1.0f, 0.0f);
    f.d.CheckAffectedTrianglesMaxImg(&affected, &wider, &widerMask, view, true);
    ASSERT_FALSE(affected.IsEmpty());
    for (POSITION pos = affected.GetHeadPosition(); pos != nullptr;) {
        const t_AffectedDelaunayTriangles* record = affected.GetNext(pos);
        EXPECT_TRUE(record->Corner[0] && record->Corner[1] && record->Corner[2]);
        EXPECT_TRUE(record->Triangle->Ignore);
    }
    Surface::ClearAffectedList(&affected);
}

TEST(CriticalTriangles, ThreeViewsKeepTheirOwnBands)
{
    Flat f;
    CSSEMatrix height = Raster(0.0f, 0.5f, -10.0f);
    CSSEMatrix mask = Raster(0.0f, 1.0f, 0.0f);
    CSSEMatrix none = Raster(-100.0f, 0.0f, -10.0f);
    CSSEMatrix noMask = Constant(16, 16, 0.0f);
    TriangleList clean;
    AffectedList affected;
    float minima[3] = {1, 1, 1}, maxima[3] = {0, 0, 0};
    f.d.FindAffectedTriangles(&affected, &clean, &f.box, &height, &none, &none, &mask, &noMask, &noMask, minima,
                              maxima, true, true);
    ExpectSortedByCornersUpTo(f.d, clean, affected, 0.0f);
    EXPECT_EQ(std::pair(minima[0], maxima[0]), std::pair(-4.0f, 4.0f));
    for (const int view : {1, 2}) EXPECT_EQ(std::pair(minima[view], maxima[view]), std::pair(99999.9f, -99999.9f));
    Surface::ClearAffectedList(&affected);
}

std::vector<SSEPoint> AllVertices(Surface& d)
{
    std::vector<SSEPoint> vertices;
    for (int v = 0; v < d.GetNumVertices(); ++v) vertices.push_back(d.GetVertex(v));
    return vertices;
}

TEST(DeletionInArea, TheFirstCornerInTheBandDecidesAgainstTheRaster)
{
    for (const bool maxima : {true, false}) {
        SCOPED_TRACE(maxima);
        Flat f;
        // Level at 1: above a raster of maxima at 0, below one of minima at 2.
        CSSEMatrix height = maxima ? Raster(0.0f, 0.0f, -10.0f) : Raster(0.0f, 2.0f, 10.0f);
        CSSEMatrix mask = Raster(0.0f, 1.0f, 0.0f);
        TriangleList all;
        for (t_hdelaunaytriangle* t : Triangles(f.d.GetFinalList())) all.AddTail(t);
        const std::vector<SSEPoint> before = AllVertices(f.d);
        if (maxima)
            f.d.DeleteInAreaTrianglesMaxImg(&all, &height, &mask, -10.0f, 10.0f, 0.0f, true);
        else
            f.d.DeleteInAreaTrianglesMinImg(&all, &height, &mask, -10.0f, 10.0f, 0.0f, true);
        for (const t_hdelaunaytriangle* t : Triangles(all)) EXPECT_EQ(t->Ignore, CornerUpTo(f.d, t, 0, 0.0f));
        const std::vector<SSEPoint> after = AllVertices(f.d);
        for (std::size_t v = 0; v < before.size(); ++v) EXPECT_EQ(Lanes(after[v]), Lanes(before[v]));
    }
    // A corner at y = 4 is not in the band 4 .. 10; the surface ends there.
    Flat f;
    CSSEMatrix height = Raster(0.0f, 0.0f, -10.0f);
    CSSEMatrix mask = Raster(0.0f, 1.0f, 0.0f);
    TriangleList all;
    for (t_hdelaunaytriangle* t : Triangles(f.d.GetFinalList())) all.AddTail(t);
    f.d.DeleteInAreaTrianglesMaxImg(&all, &height, &mask, 4.0f, 10.0f, 0.0f, true);
    for (const t_hdelaunaytriangle* t : Triangles(all)) EXPECT_FALSE(t->Ignore);
}

TEST(DeletionInArea, TheAffectedFormRecordsTheCornerAndTurnsAreUndone)
{
    Flat f;
    CSSEMatrix height = Raster(0.0f, 0.0f, -10.0f);
    CSSEMatrix mask = Raster(0.0f, 1.0f, 0.0f);
    std::vector<t_AffectedDelaunayTriangles> records;
    for (t_hdelaunaytriangle* t : Triangles(f.d.GetFinalList())) records.push_back({t, {false, false, false}, 0});
    AffectedList affected;
    for (t_AffectedDelaunayTriangles& r : records) affected.AddTail(&r);
    f.d.DeleteInAreaAffectedTrianglesMaxImg(&affected, &height, &mask, -10.0f, 10.0f, 0.0f, eViewStraight, true);
    for (const t_AffectedDelaunayTriangles& r : records) {
        const bool concerned = CornerUpTo(f.d, r.Triangle, 0, 0.0f);
        EXPECT_EQ(r.Corner[0], concerned);
        EXPECT_FALSE(r.Corner[1] || r.Corner[2]);
        EXPECT_EQ(r.CornerCount, concerned ? 1 : 0);
        EXPECT_FALSE(r.Triangle->Ignore);
    }
    // Turned a quarter either way, in both senses, the vertices come back
    // but for rounding.
    const std::vector<SSEPoint> before = AllVertices(f.d);
    for (const bool forward : {true, false}) {
        for (const float angle : {1.5707964f, -1.5707964f})
            f.d.DeleteInAreaAffectedTrianglesMinImg(&affected, &height, &mask, -10.0f, 10.0f, angle, eViewPlus90,
                                                    forward);
    }
    const std::vector<SSEPoint> after = AllVertices(f.d);
    for (std::size_t v = 0; v < before.size(); ++v) {
        for (int lane = 0; lane < 4; ++lane) EXPECT_NEAR(after[v].lane[lane], before[v].lane[lane], 1e-5f);
    }
}

TEST(DeletionInArea, ANewerRasterTakesOutTheSurfaceBelowItsDataAndLeavesOneGraph)
{
    // The surface x, y in -6 .. 6 at height 2; the newer raster of maxima,
    // 20 x 20 cells centred on it, holds 0 over |x| <= 2; the other views
    // hold nothing.
    Surface d(200);
    Grid(d, -6, -6, 12, [](float, float) { return 2.0f; });
    const auto strip = [](float inside, float outside) {
        return Field(20, 20, [=](int x, int) { return std::abs(x - 10) <= 2 ? inside : outside; });
    };
    CSSEMatrix height = strip(0.0f, -10.0f), mask = strip(1.0f, 0.0f);
    CSSEMatrix none = Constant(20, 20, -10.0f), noMask = Constant(20, 20, 0.0f);
    CSSE3dPolygon ring;
    ring.Create(4);
    SSEPoint corners[4] = {P(-2, -2, 2), P(2, -2, 2), P(2, 2, 2), P(-2, 2, 2)};
    for (int i = 0; i < 4; ++i) ring.SetPointSSE(i, corners[i]);
    const std::vector<SSEPoint> before = AllVertices(d);
    const auto farFromStrip = [&d]() {
        int count = 0;
        for (const t_hdelaunaytriangle* t : Triangles(PresentTriangles(d))) {
            bool far = true;
            for (const int v : t->Vertex) far = far && std::fabs(d.GetVertex(v).x) >= 4 && std::fabs(d.GetVertex(v).y) <= 3;
            count += far;
        }
        return count;
    };
    const int farBefore = farFromStrip();
    d.DeleteTrianglesInArea(ring, &height, &none, &none, &mask, &noMask, &noMask, true, true);
    EXPECT_TRUE(d.IsFinalized());
    EXPECT_EQ(SurfaceFault(d), "");
    EXPECT_EQ(farFromStrip(), farBefore);
    for (const t_hdelaunaytriangle* t : Triangles(d.GetFinalList())) {
        bool core = true;
        for (const int v : t->Vertex) core = core && std::fabs(d.GetVertex(v).x) <= 1 && std::fabs(d.GetVertex(v).y) <= 3;
        EXPECT_FALSE(core);
    }
    const std::vector<SSEPoint> after = AllVertices(d);
    for (std::size_t v = 0; v < before.size(); ++v) {
        for (int lane = 0; lane < 4; ++lane) EXPECT_NEAR(after[v].lane[lane], before[v].lane[lane], 1e-5f);
    }
}

} // namespace
} // namespace vek::test
