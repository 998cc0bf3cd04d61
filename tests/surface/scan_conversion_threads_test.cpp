// The five-worker drivers of the scan conversion: surfaces whose heights are
// known come back as fields, and the bands merged from five threads give the
// bits of one sampler run over all triangles.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "surface/scan_conversion_helpers.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/incremental_delaunay.h"

namespace {

using vek::test::AddSquare;
using vek::test::AddTriangle;
using vek::test::CellBits;
using vek::test::P;

constexpr float kBackground = -77.0f;

struct Shape {
    std::string name;
    std::function<float(float, float)> f;
    // How far the grid triangles may depart from the shape: 0 for a plane,
    // half a unit where a pyramid's ridge crosses a grid diagonal, and
    // a R^2 for the paraboloid a |p|^2 over right triangles of legs 1.
    float interpolation;
};

// The least and greatest of f over cell (X, Y), the part of
// [X - 0.5, X + 0.5) x [Y - 0.5, Y + 0.5) that lies in 0 ... n, read on a
// fine grid.
std::pair<float, float> RangeOverCell(const Shape& s, int X, int Y, int n)
{
    float lo = 1e30f;
    float hi = -1e30f;
    for (int i = 0; i <= 40; ++i) {
        for (int j = 0; j <= 40; ++j) {
            const float x = std::clamp(static_cast<float>(X) - 0.5f + static_cast<float>(i) / 40.0f, 0.0f, float(n));
            const float y = std::clamp(static_cast<float>(Y) - 0.5f + static_cast<float>(j) / 40.0f, 0.0f, float(n));
            lo = std::min(lo, s.f(x, y));
            hi = std::max(hi, s.f(x, y));
        }
    }
    return {lo, hi};
}

TEST(FastScanConversion, AnalyticSurfacesComeBackWithinTheLatticeError)
{
    const int n = 12;
    const std::vector<Shape> shapes = {
        {"plane", [](float x, float y) { return 0.5f * x - 0.25f * y + 3.0f; }, 0.0f},
        {"pyramid", [](float x, float y) { return 6.0f - std::max(std::fabs(x - 6.0f), std::fabs(y - 6.0f)); }, 0.5f},
        {"paraboloid", [](float x, float y) { return ((x - 6) * (x - 6) + (y - 6) * (y - 6)) / 8.0f; }, 0.0625f},
    };
    for (const Shape& shape : shapes) {
        for (bool keepMax : {true, false}) {
            ZrCIncrementalDelaunay2D d((n + 1) * (n + 1) + 4);
            vek::test::TriangulateGrid(d, n, shape.f);
            CSSEMatrix m;
            SSEPoint origin = P(-1, -1, -1);
            d.FastScanConvertTriangulation(&m, kBackground, origin, keepMax);
            ASSERT_EQ(m.GetSizeX(), n + 1);
            ASSERT_EQ(m.GetSizeY(), n + 1);
            EXPECT_EQ(origin.x, 0.0f);
            EXPECT_EQ(origin.y, 0.0f);
            EXPECT_EQ(origin.z, d.GetMinPoint().z);
            for (int y = 0; y <= n; ++y) {
                for (int x = 0; x <= n; ++x) {
                    const auto [lo, hi] = RangeOverCell(shape, x, y, n);
                    const float slack = shape.interpolation + 0.01f;
                    const float v = m.GetPoint(x, y);
                    EXPECT_GE(v, lo - slack) << shape.name << " keepMax " << keepMax << " at " << x << "," << y;
                    EXPECT_LE(v, hi + slack) << shape.name << " keepMax " << keepMax << " at " << x << "," << y;
                }
            }
        }
    }
}

TEST(FastScanConversion, CellsNoTriangleReachesReadTheBackground)
{
    ZrCIncrementalDelaunay2D d(6);
    AddTriangle(d, P(0, 0, 3), P(4, 0, 3), P(0, 4, 3));
    AddTriangle(d, P(20, 20, 5), P(24, 20, 5), P(20, 24, 5));
    d.CalcBoundingBox();
    CSSEMatrix m;
    SSEPoint origin;
    d.FastScanConvertTriangulation(&m, kBackground, origin, true);
    ASSERT_EQ(m.GetSizeX(), 25);
    ASSERT_EQ(m.GetSizeY(), 25);
    EXPECT_EQ(m.GetPoint(1, 1), 3.0f);
    EXPECT_EQ(m.GetPoint(21, 21), 5.0f);
    for (int y = 5; y < 19; ++y)
        for (int x = 5; x < 19; ++x) ASSERT_EQ(m.GetPoint(x, y), kBackground) << x << "," << y;

    // With no triangles left, the whole box reads the background.
    d.ClearTriangleList();
    d.FastScanConvertTriangulation(&m, kBackground, origin, false);
    ASSERT_EQ(m.GetSizeX(), 25);
    for (std::uint32_t bits : CellBits(m)) ASSERT_EQ(bits, vek::test::Bits(kBackground));
}

TEST(FastScanConversion, KeepMaxTakesTheUpperOfTwoSheets)
{
    for (bool upperFirst : {true, false}) {
        ZrCIncrementalDelaunay2D d(12);
        if (upperFirst) AddSquare(d, 2, 2, 4, 20);
        AddSquare(d, 0, 0, 8, 10);
        if (!upperFirst) AddSquare(d, 2, 2, 4, 20);
        d.CalcBoundingBox();
        CSSEMatrix highest;
        CSSEMatrix lowest;
        SSEPoint origin;
        d.FastScanConvertTriangulation(&highest, kBackground, origin, true);
        d.FastScanConvertTriangulation(&lowest, kBackground, origin, false);
        for (int y = 0; y <= 8; ++y) {
            for (int x = 0; x <= 8; ++x) {
                const bool underUpper = x >= 3 && x <= 5 && y >= 3 && y <= 5;
                const bool clearOfUpper = x <= 1 || x >= 7 || y <= 1 || y >= 7;
                if (underUpper) {
                    EXPECT_EQ(highest.GetPoint(x, y), 20.0f) << x << "," << y;
                } else if (clearOfUpper) {
                    EXPECT_EQ(highest.GetPoint(x, y), 10.0f) << x << "," << y;
                }
                EXPECT_EQ(lowest.GetPoint(x, y), 10.0f) << x << "," << y;
            }
        }
    }
}

// ---------------------------------------------------------------- five bands against one run

// Random triangles over shared random vertices, overlapping and folding,
// some degenerate, with random border flags and links. Corner y are whole
// numbers, so that the line bands of the inside form leave no gaps.
void RandomTriangles(ZrCIncrementalDelaunay2D& d, int count, std::uint32_t seed)
{
    std::mt19937 engine(seed);
    const auto uniform = [&](float lo, float hi) {
        return lo + (hi - lo) * static_cast<float>(engine() / 4294967296.0);
    };
    const int vertices = std::max(3, count);
    for (int i = 0; i < vertices; ++i)
        d.AppendVertex(P(uniform(0, 40), std::floor(uniform(0, 30)), uniform(-5, 5)));
    std::vector<t_hdelaunaytriangle*> made;
    for (int i = 0; i < count; ++i) {
        t_hdelaunaytriangle* t = ZrCIncrementalDelaunay2D::InitNewTriangle();
        for (int& v : t->Vertex) v = static_cast<int>(engine() % static_cast<std::uint32_t>(vertices));
        t->Outside = engine() % 5 == 0;
        t->Border = engine() % 5 == 0;
        t->SubEdge = engine() % 5 == 0;
        d.AppendTriangle(t);
        made.push_back(t);
    }
    for (t_hdelaunaytriangle* t : made)
        for (auto*& n : t->Neighbour) n = engine() % 2 == 0 ? made[engine() % made.size()] : nullptr;
    d.ComputeNormalVectorsOfTriangles();
    d.CalcBoundingBox();
    d.SetScanConvResolution(0.7f, 1.3f, 0.5f);
}

using Sampler = std::function<void(ZrCIncrementalDelaunay2D&, CSSEMatrix*, const SSEPoint&, int, int, bool)>;
using Driver = std::function<void(ZrCIncrementalDelaunay2D&, CSSEMatrix*, SSEPoint&, bool)>;

struct Form {
    std::string name;
    Driver driver;
    Sampler sampler;
};

std::vector<Form> Forms(CSSEMatrix& reference)
{
    const auto list = [](ZrCIncrementalDelaunay2D& d) { return &d.GetTriangleList(); };
    return {
        {"plain",
         [](auto& d, CSSEMatrix* m, SSEPoint& o, bool k) { d.FastScanConvertTriangulation(m, kBackground, o, k); },
         [=](auto& d, CSSEMatrix* m, const SSEPoint& o, int f, int l, bool k) {
             d.ScanConvertTriangulationWithLimitedArea(m, list(d), o, f, l, k);
         }},
        {"visible",
         [](auto& d, CSSEMatrix* m, SSEPoint& o, bool k) {
             d.FastScanConvertTriangulationOnlyVisible(m, kBackground, o, k);
         },
         [=](auto& d, CSSEMatrix* m, const SSEPoint& o, int f, int l, bool k) {
             d.ScanConvertTriangulationWithLimitedAreaOnlyVisible(m, list(d), o, f, l, k);
         }},
        {"unvisible",
         [](auto& d, CSSEMatrix* m, SSEPoint& o, bool k) {
             d.FastScanConvertTriangulationOnlyUnvisible(m, kBackground, o, k);
         },
         [=](auto& d, CSSEMatrix* m, const SSEPoint& o, int f, int l, bool k) {
             d.ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(m, list(d), o, f, l, k);
         }},
        {"z range",
         [](auto& d, CSSEMatrix* m, SSEPoint& o, bool k) {
             d.FastScanConvertTriangulationWithZRange(m, kBackground, o, 2.5f, -1.0f, k);
         },
         [=](auto& d, CSSEMatrix* m, const SSEPoint& o, int f, int l, bool k) {
             d.ScanConvertTriangulationWithLimitedAreaWithZRange(m, list(d), o, f, l, 2.5f, -1.0f, k);
         }},
        {"inside",
         [&reference](auto& d, CSSEMatrix* m, SSEPoint& o, bool k) {
             o = d.GetMinPoint();
             d.FastScanConvertTriangulationOnlyInside(m, &reference, k, false);
         },
         [=](auto& d, CSSEMatrix* m, const SSEPoint& o, int, int, bool k) {
             d.ScanConvertTriangulationWithLimitedAreaOnlyInside(m, list(d), o, 0, m->GetSizeY() - 1, false, k);
         }},
    };
}

TEST(FastScanConversion, FiveWorkersGiveTheBitsOfOneSamplerRun)
{
    CSSEMatrix reference;
    reference.Create(45, 33);
    for (int count : {1, 2, 7, 203}) {
        for (const Form& form : Forms(reference)) {
            for (bool keepMax : {true, false}) {
                ZrCIncrementalDelaunay2D d(count + 3);
                RandomTriangles(d, count, 1000u + static_cast<std::uint32_t>(count));
                CSSEMatrix banded;
                SSEPoint origin;
                form.driver(d, &banded, origin, keepMax);

                CSSEMatrix single;
                vek::test::SentinelField(single, banded.GetSizeX(), banded.GetSizeY(), keepMax);
                form.sampler(d, &single, origin, 0, count - 1, keepMax);
                vek::test::ReplaceSentinel(single, keepMax, form.name == "inside" ? 0.0f : kBackground);

                ASSERT_GT(banded.GetSizeX(), 0);
                EXPECT_EQ(CellBits(banded), CellBits(single))
                    << form.name << ", " << count << " triangles, keepMax " << keepMax;
            }
        }
    }
}

} // namespace
