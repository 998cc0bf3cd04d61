#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "support/plane_geometry.h"
#include "support/polygon_points.h"
#include "support/unowned_alias.h"
#include "vekdll/planar/polygon_triangulation_refinement.h"
#include "vekdll/planar/polygon_triangulator.h"

using namespace vek::test;

namespace {

class OpenRefinement : public CHPolygonTriangulationRefinement {
public:
    using CHPolygonTriangulationRefinement::CHPolygonTriangulationRefinement;
    using CHPolygonTriangulationRefinement::GetSharedSide;
};

using Corners = std::vector<std::pair<float, float>>;

Corners CornersOf(const t_hdynamictriangle* t)
{
    return {{t->Point[0].x, t->Point[0].y}, {t->Point[1].x, t->Point[1].y}, {t->Point[2].x, t->Point[2].y}};
}

std::vector<t_hdynamictriangle*> ListOf(const CHPolygonTriangulationRefinement& r)
{
    std::vector<t_hdynamictriangle*> list;
    for (t_hdynamictriangle* t = r.GetTriangle(0); t != nullptr; t = t->Next) list.push_back(t);
    return list;
}

// The square 0..4 with a point at every unit of its edges, heights 100
// except 2 at (0, 0) and 10 at (4, 4): the two points, 0 and 8, that the
// interpolation from every eighth point reads. At step 4 the triangulator
// sees the four corners; from the head it clips (3, 0, 1) and (1, 2, 3),
// one behind the head only (0, 1, 2).
struct Square {
    CSSE3dPolygon source;
    Square()
    {
        std::vector<Xyz> points = DottedSquare(4);
        for (Xyz& p : points) p.z = 100.0f;
        points[0].z = 2.0f;
        points[8].z = 10.0f;
        Fill(source, points);
    }
    CHPolygonTriangulator Clip(bool behindHead, float scaleZ = 1.0f)
    {
        return CHPolygonTriangulator(&source, 4, 1.0f, 1.0f, scaleZ, behindHead);
    }
};

std::vector<Xyz> Read(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c)
{
    return {{a.x, a.y, a.z}, {b.x, b.y, b.z}, {c.x, c.y, c.z}};
}

TEST(CHPolygonTriangulationRefinement, TrianglesSplitOnTheirLongestSideTogetherWithTheNeighbourThere)
{
    Square square;
    CHPolygonTriangulator clipped = square.Clip(false);
    // No pass: the ear-clipped triangles, the last one at the head, each
    // neighbour of the other across the diagonal, their side 2.
    OpenRefinement unrefined(&clipped, 2.5f, 0);
    const std::vector<t_hdynamictriangle*> pair = ListOf(unrefined);
    ASSERT_EQ(pair.size(), 2u);
    EXPECT_EQ(std::tuple(pair[0]->Index, pair[1]->Index, unrefined.GetNum2dPoints()), std::tuple(1, 0, 4));
    EXPECT_EQ(CornersOf(pair[0]), (Corners{{4, 0}, {4, 4}, {0, 4}}));
    EXPECT_EQ(std::tuple(pair[0]->Neighbour[2], pair[1]->Neighbour[2]), std::tuple(pair[1], pair[0]));
    EXPECT_EQ(OpenRefinement::GetSharedSide(pair[0], pair[1]), eSide2);
    EXPECT_EQ(OpenRefinement::GetSharedSide(pair[0], nullptr), eSide0);  // side 0 is open
    EXPECT_EQ(unrefined.GetTriangle(2), nullptr);
    EXPECT_EQ(unrefined.GetTriangle(-1), nullptr);

    // Sides 4, 4 and the diagonal of about 5.66 against a limit of 5: one
    // pass splits both at (2, 2). The halves of the first go to the head
    // first, then those of its neighbour; the count grows by 2.
    OpenRefinement refined(&clipped, 2.5f, 1);
    const std::vector<t_hdynamictriangle*> four = ListOf(refined);
    ASSERT_EQ(refined.GetNumTriangles(), 4);
    ASSERT_EQ(four.size(), 4u);
    EXPECT_EQ(CornersOf(four[0]), (Corners{{2, 2}, {0, 0}, {4, 0}}));
    EXPECT_EQ(CornersOf(four[1]), (Corners{{0, 4}, {0, 0}, {2, 2}}));
    EXPECT_EQ(CornersOf(four[2]), (Corners{{2, 2}, {4, 4}, {0, 4}}));
    EXPECT_EQ(CornersOf(four[3]), (Corners{{4, 0}, {4, 4}, {2, 2}}));
    for (const t_hdynamictriangle* t : four) {
        EXPECT_EQ(t->Index, -1);
        EXPECT_EQ(std::vector(t->Z, t->Z + 3), std::vector(3, -999999.0f));
    }
    // Halves pair by position: both split sides were a side 2, so the first
    // halves, at opposite ends of the diagonal, are linked across it.
    EXPECT_EQ(std::tuple(four[3]->Neighbour[2], four[1]->Neighbour[2]), std::tuple(four[1], four[3]));
    EXPECT_EQ(std::tuple(four[2]->Neighbour[2], four[0]->Neighbour[2]), std::tuple(four[0], four[2]));
    EXPECT_EQ(std::tuple(four[3]->Neighbour[1], four[2]->Neighbour[0]), std::tuple(four[2], four[3]));
    EXPECT_EQ(std::tuple(four[3]->Neighbour[0], four[2]->Neighbour[1]), std::tuple(nullptr, nullptr));

    // The halves are within the limit: further passes change nothing, and
    // a limit above the diagonal splits nothing at all.
    EXPECT_EQ(OpenRefinement(&clipped, 2.5f, 14).GetNumTriangles(), 4);
    EXPECT_EQ(OpenRefinement(&clipped, 2.9f, 14).GetNumTriangles(), 2);

    // A triangle alone splits on its long border side without asking anyone.
    CHPolygonTriangulator single = square.Clip(true);
    OpenRefinement alone(&single, 2.5f, 1);
    ASSERT_EQ(alone.GetNumTriangles(), 2);
    EXPECT_EQ(CornersOf(alone.GetTriangle(0)), (Corners{{2, 2}, {4, 0}, {4, 4}}));
    EXPECT_EQ(CornersOf(alone.GetTriangle(1)), (Corners{{0, 0}, {4, 0}, {2, 2}}));

    // Assignment shares the list: the copy reads the same records.
    OpenRefinement other(&single, 2.5f, 0);
    WithOwnBytesKept(other, [&] {
        other = refined;
        EXPECT_EQ(std::tuple(other.GetNumTriangles(), other.GetTriangle(3)), std::tuple(4, four[3]));
    });

    // Nothing to refine without a triangulator.
    OpenRefinement none(nullptr, 1.0f, 3);
    EXPECT_EQ(std::tuple(none.GetNumTriangles(), none.GetNum2dPoints(), none.GetTriangle(0)), std::tuple(0, 0, nullptr));
}

TEST(CHPolygonTriangulationRefinement, NeighboursRefuseSplitsThatWouldMakeSliversOrTinySides)
{
    // (4, 0), (4, 4), (0, 4) against (0, 4), (-8, -6), (4, 0): the diagonal
    // (32 squared) is the first one's longest side but far from the
    // second's (164 and 180 squared), so the first stays. The second splits
    // alone on its longest side, which lies on the border.
    CSSE2dPolygon kite;
    Fill(kite, {{-8, -6}, {4, 0}, {4, 4}, {0, 4}});
    CHPolygonTriangulator clipped(&kite, 1, 1.0f, 1.0f, false);
    OpenRefinement refined(&clipped, 2.5f, 1);
    const std::vector<t_hdynamictriangle*> list = ListOf(refined);
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[2]->Index, 1);
    EXPECT_EQ(CornersOf(list[0]), (Corners{{0, 4}, {-2, -3}, {4, 0}}));
    EXPECT_EQ(CornersOf(list[1]), (Corners{{0, 4}, {-8, -6}, {-2, -3}}));
    // The first learns the half that took over the diagonal.
    EXPECT_EQ(std::tuple(list[2]->Neighbour[2], list[0]->Neighbour[2]), std::tuple(list[0], list[2]));

    // The diagonal of the square, 32 squared, is split only while it is
    // longer than 4 times the height scale: the shortest shared side.
    Square square;
    CHPolygonTriangulator coarse = square.Clip(false, 7.9f);
    CHPolygonTriangulator fine = square.Clip(false, 8.0f);
    EXPECT_EQ(OpenRefinement(&coarse, 2.5f, 1).GetNumTriangles(), 4);
    EXPECT_EQ(OpenRefinement(&fine, 2.5f, 1).GetNumTriangles(), 2);

    // A triangle whose sides 0 and 1 tie as the longest goes to side 2,
    // here its short base: it is never split.
    CSSE2dPolygon tall;
    Fill(tall, {{1, 0}, {0.5f, 20}, {0, 0}, {0.5f, -3}});
    CHPolygonTriangulator spire(&tall, 1, 1.0f, 1.0f, true);
    ASSERT_EQ(spire.GetNumTriangles(), 1);  // (0, 1, 2)
    EXPECT_EQ(OpenRefinement(&spire, 2.0f, 5).GetNumTriangles(), 1);
}

TEST(CHPolygonTriangulationRefinement, NewCornersTakeInverseDistanceHeightsFromEveryEighthSourcePoint)
{
    Square square;
    CHPolygonTriangulator clipped = square.Clip(false);
    SSEPoint a, b, c;
    // Unrefined triangles are the triangulator's: source points, own heights.
    OpenRefinement unrefined(&clipped, 2.5f, 0);
    ASSERT_TRUE(unrefined.GetFirstTriangle3D(a, b, c));
    EXPECT_EQ(Read(a, b, c), (std::vector<Xyz>{{4, 0, 100}, {4, 4, 10}, {0, 4, 100}}));

    // Refined, the heights come from source points 0 and 8 only, weighted
    // by 1 / squared distance, or the point's own height within 4 (the
    // shortest shared side) of it: (2, 2), (4, 0) and (0, 4) lie equally
    // far from both and get (2 + 10) / 2 = 6.
    OpenRefinement refined(&clipped, 2.5f, 1);
    std::vector<std::vector<Xyz>> read;
    for (bool more = refined.GetFirstTriangle3D(a, b, c); more; more = refined.GetNextTriangle3D(a, b, c)) {
        read.push_back(Read(a, b, c));
    }
    EXPECT_EQ(read, (std::vector<std::vector<Xyz>>{{{2, 2, 6}, {0, 0, 2}, {4, 0, 6}},
                                                    {{0, 4, 6}, {0, 0, 2}, {2, 2, 6}},
                                                    {{2, 2, 6}, {4, 4, 10}, {0, 4, 6}},
                                                    {{4, 0, 6}, {4, 4, 10}, {2, 2, 6}}}));
    // Past the end the outputs stay as they are.
    a.x = -7.0f;
    EXPECT_FALSE(refined.GetNextTriangle3D(a, b, c));
    EXPECT_EQ(a.x, -7.0f);

    // Corner 1 keeps its height in corner 0's slot, so the head triangle
    // read again gives (2, 2) the height of (0, 0). Its neighbours got the
    // heights of the corners they share with it at the first reading.
    EXPECT_EQ(std::vector(refined.GetTriangle(0)->Z, refined.GetTriangle(0)->Z + 3), (std::vector{2.0f, -999999.0f, 6.0f}));
    ASSERT_TRUE(refined.GetTriangle3D(0, a, b, c));
    EXPECT_EQ(Read(a, b, c), (std::vector<Xyz>{{2, 2, 2}, {0, 0, 2}, {4, 0, 6}}));

    // A planar source has no heights: nothing is read.
    CSSE2dPolygon planar;
    Fill(planar, DottedSquare(4));
    CHPolygonTriangulator flat(&planar, 4, 1.0f, 1.0f, false);
    OpenRefinement noHeights(&flat, 2.5f, 1);
    EXPECT_EQ(noHeights.GetNumTriangles(), 4);
    EXPECT_FALSE(noHeights.GetFirstTriangle3D(a, b, c) || noHeights.GetTriangle3D(0, a, b, c));
}

TEST(CHPolygonTriangulationRefinement, BorderLineChainsOpenSidesInTheOrderTheyAreMet)
{
    // Each open side links to the first other side that starts at its end,
    // or failing that, side by side, to one that ends at its start, which
    // is turned round. Sides met head to tail in list order thus turn each
    // other round, and the chain doubles back on itself.
    Square square;
    CHPolygonTriangulator clipped = square.Clip(false);
    CSSE3dPolygon border;
    // Sides (4,0)-(4,4), (4,4)-(0,4), (0,4)-(0,0), (0,0)-(4,0), heights 0 as
    // the ear-clipped records hold them. The second side turns the first
    // round and links to it, the third the second: the ring closes, and
    // its walk swings between two corners.
    OpenRefinement unrefined(&clipped, 2.5f, 0);
    unrefined.GetBorderLinePolygon(&border);
    EXPECT_EQ(PointsOf(border), (std::vector<Xyz>{{4, 4, 0}, {0, 4, 0}, {4, 4, 0}, {0, 4, 0}}));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(unrefined.GetTriangle(i)->IsBorder, 1);

    // Refined: (0,0)-(4,0) turns (0,4)-(0,0) round and links to it, which
    // then finds no side at its end (0,4): the line is open, with room for
    // one point more than there are sides, and ends there. Split records
    // hold the height "not known".
    OpenRefinement refined(&clipped, 2.5f, 1);
    refined.GetBorderLinePolygon(&border);
    const float unknown = -999999.0f;
    ASSERT_EQ(border.GetNumPoints(), 5);
    EXPECT_EQ((std::vector{PointOf(border, 0), PointOf(border, 1), PointOf(border, 2)}),
              (std::vector<Xyz>{{0, 0, unknown}, {0, 0, unknown}, {0, 4, unknown}}));

    // A triangle without neighbours is the border by itself.
    CHPolygonTriangulator single = square.Clip(true);
    OpenRefinement alone(&single, 2.5f, 0);
    alone.GetBorderLinePolygon(&border);
    EXPECT_EQ(PointsOf(border), (std::vector<Xyz>{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}}));
    // No triangles, no border.
    OpenRefinement(nullptr, 1.0f, 0).GetBorderLinePolygon(&border);
    EXPECT_EQ(border.GetNumPoints(), 0);
}

// Rings in the triangulator's plane, counter-clockwise.
std::vector<Xyz> Wavy(int count, double waves, double depth)
{
    return Polar(count, count, [=](int, double angle) { return 100.0 + depth * std::sin(waves * angle); });
}

TEST(CHPolygonTriangulationRefinement, RefinedPolygonsTileTheEarClippingWithMutualLinksAndShortSides)
{
    // On the star a border side of 44.8 may sit in a triangle whose longest
    // side is shared with a neighbour that refuses: such triangles stay
    // long, and further passes change nothing.
    const std::vector<Xyz> star = Polar(24, 24, [](int i, double) { return i % 2 == 0 ? 100.0 : 60.0; });
    for (const auto& [name, ring, mayStayLong] : {std::tuple{"circle", Wavy(40, 0, 0), false},
                                                  std::tuple{"wavy", Wavy(200, 5, 30), false},
                                                  std::tuple{"star", star, true}}) {
        CSSE3dPolygon source;
        Fill(source, ring);
        CHPolygonTriangulator clipped(&source, 1, 1.0f, 1.0f, 1.0f, true);
        double clippedArea = 0.0;
        for (int i = 0; i < clipped.GetNumTriangles(); ++i) {
            const t_htriangleconnectivity& k = clipped.GetConnectivityArray()[i];
            clippedArea += Cross(ring[k.a], ring[k.b], ring[k.c]);
        }
        for (const float maxEdge : {20.0f, 7.0f}) {
            SCOPED_TRACE(std::string(name) + ", max edge " + std::to_string(maxEdge));
            OpenRefinement refined(&clipped, maxEdge, 14);
            const std::vector<t_hdynamictriangle*> list = ListOf(refined);
            ASSERT_EQ(static_cast<int>(list.size()), refined.GetNumTriangles());
            const std::set<const t_hdynamictriangle*> members(list.begin(), list.end());
            double area = 0.0;
            int longSides = 0;
            const double limit = 2.0 * maxEdge;
            for (const t_hdynamictriangle* t : list) {
                // Each piece keeps the sense of the ring: the areas add up
                // only if no two overlap.
                const double twice = Cross(t->Point[0], t->Point[1], t->Point[2]);
                EXPECT_GT(twice, 0.0);
                area += twice;
                for (int side = 0; side < 3; ++side) {
                    const t_h2dpoint &p = t->Point[side], &r = t->Point[(side + 1) % 3];
                    longSides += std::hypot(double(r.x) - p.x, double(r.y) - p.y) > limit * (1.0 + 1e-6);
                    const t_hdynamictriangle* n = t->Neighbour[side];
                    if (n == nullptr) continue;
                    EXPECT_EQ(members.count(n), 1u) << "a link to a released triangle";
                    EXPECT_NE(OpenRefinement::GetSharedSide(n, t), eSideNone) << "a link not returned";
                }
            }
            EXPECT_NEAR(area, clippedArea, 1e-5 * clippedArea);
            if (mayStayLong) {
                EXPECT_EQ(OpenRefinement(&clipped, maxEdge, 40).GetNumTriangles(), refined.GetNumTriangles());
            } else {
                EXPECT_EQ(longSides, 0);
            }
            EXPECT_GT(list.size(), 2 * ring.size());
        }
    }
}

} // namespace
