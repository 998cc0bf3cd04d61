#include <gtest/gtest.h>

#include <vector>

#include "support/polygon_points.h"
#include "vekdll/planar/polygon_triangulator.h"
#include "vekdll/planar/ring_cleanup.h"

using namespace vek::test;

namespace {

using Ring = std::vector<Xyz>;

Ring Cleaned(const Ring& ring)
{
    return PointsOf(vek::DropRepeatedRingPoints(PolygonOf(ring)));
}

Ring CleanedPlanar(const Ring& ring)
{
    CSSE2dPolygon polygon;
    Fill(polygon, ring);
    return PointsOf(vek::DropRepeatedRingPoints(polygon));
}

TEST(DropRepeatedRingPoints, ClosingPointsAndRunsOfOnePlaceGo)
{
    const Ring square{{0, 0, 1}, {4, 0, 2}, {4, 4, 3}, {0, 4, 4}};
    const struct {
        const char* name;
        Ring ring;
        Ring expected;
    } cases[] = {
        {"nothing repeated", square, square},
        {"closed once", {{0, 0, 1}, {4, 0, 2}, {4, 4, 3}, {0, 4, 4}, {0, 0, 1}}, square},
        {"closed three times", {{0, 0, 1}, {4, 0, 2}, {4, 4, 3}, {0, 4, 4}, {0, 0, 5}, {0, 0, 6}, {0, 0, 1}}, square},
        // In the plane a point that differs in height alone is a repeat; the
        // first of a run stays, with its height.
        {"runs inside", {{0, 0, 1}, {4, 0, 2}, {4, 0, 9}, {4, 0, 2}, {4, 4, 3}, {0, 4, 4}, {0, 4, 8}}, square},
        {"a point twice but not in a row",
         {{0, 0}, {2, 0}, {2, 2}, {2, 0}, {0, 2}},
         {{0, 0}, {2, 0}, {2, 2}, {2, 0}, {0, 2}}},
        {"one place only", {{3, 3, 1}, {3, 3, 2}, {3, 3, 3}}, {{3, 3, 1}}},
        {"empty", {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Cleaned(c.ring), c.expected);
        Ring planar = c.expected;
        for (Xyz& p : planar) p.z = 0;
        EXPECT_EQ(CleanedPlanar(c.ring), planar);
    }

    // The normalised copy of each kept point comes along.
    CSSE3dPolygon normalized = PolygonOf({{0, 0}, {4, 0}, {4, 0}, {4, 4}, {0, 0}});
    for (int i = 0; i < 5; ++i) normalized.SetPointNormalized(i, 10.0f * i, 20.0f * i, 30.0f * i);
    const CSSE3dPolygon cleaned = vek::DropRepeatedRingPoints(normalized);
    ASSERT_EQ(cleaned.GetNumPoints(), 3);
    std::vector<float> kept;
    for (int i = 0; i < 3; ++i) {
        float x = -1, y = -1, z = -1;
        cleaned.GetPointNormalized(i, x, y, z);
        kept.insert(kept.end(), {x, y, z});
    }
    EXPECT_EQ(kept, (std::vector<float>{0, 0, 0, 10, 20, 30, 30, 60, 90}));
}

TEST(DropRepeatedRingPoints, LetsEarClippingCutAClosedRingWhole)
{
    // A closed L with a corner given twice: ear clipping as it always was
    // gets no triangle out of the ring as given; cleaned, it cuts the ring
    // (but for the last triangle, which it may leave), and the exact mode
    // cuts it whole.
    const Ring closed{{0, 0}, {6, 0}, {6, 3}, {6, 3}, {3, 3}, {3, 6}, {0, 6}, {0, 0}};
    CSSE3dPolygon polygon = PolygonOf(closed);
    for (bool behindHead : {false, true}) {
        EXPECT_EQ(CHPolygonTriangulator(&polygon, 1, 1.0f, 1.0f, 1.0f, behindHead).GetNumTriangles(), 0);
    }
    CSSE3dPolygon cleaned = vek::DropRepeatedRingPoints(polygon);
    ASSERT_EQ(cleaned.GetNumPoints(), 6);
    for (bool behindHead : {false, true}) {
        EXPECT_GE(CHPolygonTriangulator(&cleaned, 1, 1.0f, 1.0f, 1.0f, behindHead).GetNumTriangles(), 3);
        const CHPolygonTriangulator exact(&cleaned, 1, 1.0f, 1.0f, 1.0f, behindHead, vek::PlanarPredicates::Exact);
        EXPECT_EQ(exact.GetNumTriangles(), 4);
    }
}

} // namespace
