// The samplers on the test's thread, and the five-worker drivers that must match them.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "surface/triangulation_checks.h"
#include "vekdll/surface/scan_workers.h"

namespace {

using vek::test::AddTriangle;
using vek::test::P;

constexpr float kBackground = -77.0f;

float SentinelOf(bool keepMax) { return keepMax ? -999999.9f : 999999.9f; }

// A field with every cell the sentinel, for calling a sampler by hand.
void SentinelField(CSSEMatrix& m, int sizeX, int sizeY, bool keepMax)
{
    m.Create(sizeX, sizeY);
    m.Fill(SentinelOf(keepMax));
}

// Calls visit(x, y) for every cell of the field, row by row.
template <class Visit>
void ForEachCell(const CSSEMatrix& m, Visit visit)
{
    for (int i = 0; i < m.GetSizeX() * m.GetSizeY(); ++i) visit(i % m.GetSizeX(), i / m.GetSizeX());
}

std::vector<std::uint32_t> CellBits(const CSSEMatrix& m)
{
    std::vector<std::uint32_t> bits;
    ForEachCell(m, [&](int x, int y) { bits.push_back(std::bit_cast<std::uint32_t>(m.GetPoint(x, y))); });
    return bits;
}

enum class Form { Plain, Visible, Unvisible, ZRange, Inside };

// The sampler of one form over the stretch first ... last (lines, for the inside form).
void Sample(Form form, ZrCIncrementalDelaunay2D& d, CSSEMatrix* m, const SSEPoint& o, int first, int last, bool k,
            float zMax = 2.5f, float zMin = -1.0f, bool inner = false)
{
    const auto* list = &d.GetTriangleList();
    switch (form) {
    case Form::Plain: return d.ScanConvertTriangulationWithLimitedArea(m, list, o, first, last, k);
    case Form::Visible: return d.ScanConvertTriangulationWithLimitedAreaOnlyVisible(m, list, o, first, last, k);
    case Form::Unvisible: return d.ScanConvertTriangulationWithLimitedAreaOnlyUnvisible(m, list, o, first, last, k);
    case Form::ZRange:
        return d.ScanConvertTriangulationWithLimitedAreaWithZRange(m, list, o, first, last, zMax, zMin, k);
    case Form::Inside: return d.ScanConvertTriangulationWithLimitedAreaOnlyInside(m, list, o, first, last, inner, k);
    }
}

// The five-worker driver of one form.
void Drive(Form form, ZrCIncrementalDelaunay2D& d, CSSEMatrix* m, SSEPoint& o, bool k, CSSEMatrix* reference)
{
    switch (form) {
    case Form::Plain: return d.FastScanConvertTriangulation(m, kBackground, o, k);
    case Form::Visible: return d.FastScanConvertTriangulationOnlyVisible(m, kBackground, o, k);
    case Form::Unvisible: return d.FastScanConvertTriangulationOnlyUnvisible(m, kBackground, o, k);
    case Form::ZRange: return d.FastScanConvertTriangulationWithZRange(m, kBackground, o, 2.5f, -1.0f, k);
    case Form::Inside: o = d.GetMinPoint(); return d.FastScanConvertTriangulationOnlyInside(m, reference, k, false);
    }
}

using Cells = std::set<std::pair<int, int>>;

// The cells that one sampler run writes into a sentinel field.
Cells Written(ZrCIncrementalDelaunay2D& d, int sizeX, int sizeY, Form form, int first, int last, bool keepMax,
              float zMax = 2.5f, float zMin = -1.0f, bool inner = false)
{
    CSSEMatrix m;
    SentinelField(m, sizeX, sizeY, keepMax);
    Sample(form, d, &m, P(0, 0, 1), first, last, keepMax, zMax, zMin, inner);
    Cells written;
    ForEachCell(m, [&](int x, int y) {
        if (m.GetPoint(x, y) != SentinelOf(keepMax)) written.insert({x, y});
    });
    return written;
}

TEST(ScanConversionSampler, CellsFollowTheResolutionAndTheLattice)
{
    // x + y <= 4 at height 4, cells of 0.5 in x and y and 2 in z: samples
    // read (origin.z + z - 4) / 2. Cells with X + Y <= 7 lie wholly inside,
    // those with X + Y >= 10 wholly outside.
    ZrCIncrementalDelaunay2D flat(8);
    AddTriangle(flat, P(0, 0, 4), P(4, 0, 4), P(0, 4, 4));
    flat.CalcBoundingBox();
    flat.SetScanConvResolution(0.5f, 0.5f, 2.0f);
    CSSEMatrix m;
    SentinelField(m, 12, 12, true);
    flat.ScanConvertTriangulationWithLimitedArea(&m, &flat.GetTriangleList(), P(0, 0, 10), 0, 0, true);
    ForEachCell(m, [&](int x, int y) {
        if (x + y <= 7 || x + y >= 10) {
            EXPECT_EQ(m.GetPoint(x, y), x + y <= 7 ? 5.0f : SentinelOf(true)) << x << "," << y;
        }
    });
    EXPECT_EQ(m.GetPoint(8, 0), 5.0f);  // corner b, 4 / 0.5 = 8

    // z = x + y, ten cells wide, into 3 x 3: samples beyond land in the
    // border cells. Cell (2, 2)'s lowest lattice point is (1.6, 1.6), the
    // step being a fifth of the cell diagonal over the longer edge.
    ZrCIncrementalDelaunay2D wide(4);
    AddTriangle(wide, P(0, 0, 0), P(10, 0, 10), P(0, 10, 10));
    wide.CalcBoundingBox();
    SentinelField(m, 3, 3, true);
    wide.ScanConvertTriangulationWithLimitedArea(&m, &wide.GetTriangleList(), P(0, 0, 0), 0, 0, true);
    EXPECT_EQ(m.GetPoint(2, 0), 10.0f);  // corner b, clamped in from x = 10
    SentinelField(m, 3, 3, false);
    wide.ScanConvertTriangulationWithLimitedArea(&m, &wide.GetTriangleList(), P(0, 0, 0), 0, 0, false);
    EXPECT_NEAR(m.GetPoint(2, 2), 3.2f, 1e-3);

    // The drivers' field covers the box plus one unit, in cells, rounded.
    EXPECT_EQ(vek::detail::ScanFieldCells(-2.0f, 10.0f, 0.5f), 26);            // 13 / 0.5 + 0.5
    EXPECT_EQ(vek::detail::ScanFieldCells(0.0f, 10.0f, 3.0f), 4);              // 11 / 3 + 0.5 = 4.17
    EXPECT_EQ(vek::detail::ScanFieldCells(999999.9f, -999999.9f, 1.0f), 0);  // box of an empty surface
}

TEST(ScanConversionSampler, StretchesPickedTrianglesAndTrianglesBelowACell)
{
    // Triangle i in cells x = 4 i: 0 faces up at z 1, 1 down at z 5, 2 up at
    // z 9, 3 upright at z 1 ... 3, 4 at z 1 without a normal.
    ZrCIncrementalDelaunay2D d(16);
    t_hdelaunaytriangle* up = AddTriangle(d, P(0, 0, 1), P(1, 0, 1), P(0, 0.4f, 1));
    t_hdelaunaytriangle* down = AddTriangle(d, P(4, 0, 5), P(4, 0.4f, 5), P(5, 0, 5));
    t_hdelaunaytriangle* high = AddTriangle(d, P(8, 0, 9), P(9, 0, 9), P(8, 0.4f, 9));
    AddTriangle(d, P(12, 0, 1), P(13, 0, 1), P(12, 0, 3));
    d.ComputeNormalVectorsOfTriangles();
    AddTriangle(d, P(16, 0, 1), P(17, 0, 1), P(16, 0.4f, 1));
    d.CalcBoundingBox();
    const auto sampled = [&](auto... formAndStretch) {
        std::set<int> triangles;
        for (const auto& cell : Written(d, 18, 1, formAndStretch...)) triangles.insert(cell.first / 4);
        return triangles;
    };
    using S = std::set<int>;
    // First ... last, both inclusive; a last outside the list is its end.
    EXPECT_EQ(sampled(Form::Plain, 0, 4, true), (S{0, 1, 2, 3, 4}));
    EXPECT_EQ(sampled(Form::Plain, 1, 1, true), (S{1}));
    EXPECT_EQ(sampled(Form::Plain, 3, 99, true), (S{3, 4}));
    EXPECT_EQ(sampled(Form::Plain, 0, -5, true), (S{0, 1, 2, 3, 4}));
    EXPECT_EQ(sampled(Form::Plain, 5, 6, true), (S{}));
    EXPECT_EQ(sampled(Form::Plain, -1, 2, true), (S{}));
    EXPECT_EQ(sampled(Form::Plain, 2, 0, true), (S{}));
    // Visible faces look towards the kept extreme; an upright face is both.
    EXPECT_EQ(sampled(Form::Visible, 0, 4, true), (S{0, 2, 3}));
    EXPECT_EQ(sampled(Form::Unvisible, 0, 4, true), (S{1, 3}));
    EXPECT_EQ(sampled(Form::Visible, 0, 4, false), (S{1, 3}));
    EXPECT_EQ(sampled(Form::Unvisible, 0, 4, false), (S{0, 2, 3}));
    // A corner at zMin ... zMax, both limits included.
    EXPECT_EQ(sampled(Form::ZRange, 0, 4, true, 6, 4), (S{1}));
    EXPECT_EQ(sampled(Form::ZRange, 0, 4, false, 1, 1), (S{0, 3, 4}));
    EXPECT_EQ(sampled(Form::ZRange, 0, 4, true, 9, 5), (S{1, 2}));
    EXPECT_EQ(sampled(Form::ZRange, 0, 4, true, 4, 6), (S{}));
    // Inside: by lines; no Outside, Border, SubEdge triangles, nor, without `inner`, their neighbours.
    EXPECT_EQ(sampled(Form::Inside, 0, 0, true), (S{0, 1, 2, 3, 4}));
    EXPECT_EQ(sampled(Form::Inside, 1, 5, true), (S{}));
    up->Outside = true;
    high->SubEdge = true;
    down->Neighbour[0] = high;
    EXPECT_EQ(sampled(Form::Inside, 0, 0, true, 0, 0, true), (S{1, 3, 4}));
    EXPECT_EQ(sampled(Form::Inside, 0, 0, true, 0, 0, false), (S{3, 4}));

    // A sliver below a cell still leaves corners a and b; three corners in
    // one point leave corner a only. Triangle 0 pins the box to (0, 0).
    ZrCIncrementalDelaunay2D tiny(12);
    AddTriangle(tiny, P(0, 0, 1), P(0.1f, 0, 1), P(0, 0.1f, 1));
    AddTriangle(tiny, P(2.45f, 2, 1), P(2.55f, 2, 1), P(2.45f, 2.05f, 1));
    AddTriangle(tiny, P(5.5f, 5.5f, 1), P(5.5f, 5.5f, 1), P(5.5f, 5.5f, 1));
    tiny.CalcBoundingBox();
    EXPECT_EQ(Written(tiny, 8, 8, Form::Plain, 1, 1, true), (Cells{{2, 2}, {3, 2}}));
    EXPECT_EQ(Written(tiny, 8, 8, Form::Plain, 2, 2, true), (Cells{{6, 6}}));
}

TEST(FastScanConversion, AnalyticSurfacesComeBackWithinTheLatticeError)
{
    // Grid points (i, j, f(i, j)), 0 <= i, j <= 12. A cell reads within the
    // range of f over its square, widened by how far grid triangles depart
    // from f: 0 for a plane, 0.5 where a pyramid's ridge crosses a diagonal,
    // a R^2 for a paraboloid a |p|^2 over right triangles of legs 1.
    const int n = 12;
    const struct {
        const char* name;
        std::function<float(float, float)> f;
        float interpolation;
    } shapes[] = {
        {"plane", [](float x, float y) { return 0.5f * x - 0.25f * y + 3.0f; }, 0.0f},
        {"pyramid", [](float x, float y) { return 6.0f - std::max(std::fabs(x - 6.0f), std::fabs(y - 6.0f)); }, 0.5f},
        {"paraboloid", [](float x, float y) { return ((x - 6) * (x - 6) + (y - 6) * (y - 6)) / 8.0f; }, 0.0625f},
    };
    for (const auto& shape : shapes) {
        ZrCIncrementalDelaunay2D d((n + 1) * (n + 1) + 4);
        for (int j = 0; j <= n; ++j) {
            for (int i = 0; i <= n; ++i) d.AppendVertex(P(float(i), float(j), shape.f(float(i), float(j))));
        }
        d.Triangulate(d.GetNumVertices(), true, true);
        d.CalcBoundingBox();
        for (bool keepMax : {true, false}) {
            SCOPED_TRACE(std::string(shape.name) + (keepMax ? ", highest" : ", lowest"));
            CSSEMatrix m;
            SSEPoint origin = P(-1, -1, -1);
            d.FastScanConvertTriangulation(&m, kBackground, origin, keepMax);
            ASSERT_EQ(std::pair(m.GetSizeX(), m.GetSizeY()), std::pair(n + 1, n + 1));
            EXPECT_EQ(vek::test::Lanes(origin), (vek::test::Lanes4{0, 0, 0, 0}));  // each shape's lowest is 0
            ForEachCell(m, [&](int x, int y) {
                float lo = 1e30f, hi = -1e30f;
                for (int k = 0; k < 41 * 41; ++k) {
                    const float fx = std::clamp(float(x) - 0.5f + float(k % 41) / 40.0f, 0.0f, float(n));
                    const float fy = std::clamp(float(y) - 0.5f + float(k / 41) / 40.0f, 0.0f, float(n));
                    lo = std::min(lo, shape.f(fx, fy));
                    hi = std::max(hi, shape.f(fx, fy));
                }
                EXPECT_GE(m.GetPoint(x, y), lo - shape.interpolation - 0.01f) << x << "," << y;
                EXPECT_LE(m.GetPoint(x, y), hi + shape.interpolation + 0.01f) << x << "," << y;
            });
        }
    }
}

TEST(FastScanConversion, KeepMaxTakesTheUpperOfTwoSheets)
{
    // A square at 20 over part of one at 10, in either list order.
    const auto square = [](ZrCIncrementalDelaunay2D& d, float x0, float size, float z) {
        AddTriangle(d, P(x0, x0, z), P(x0 + size, x0, z), P(x0 + size, x0 + size, z));
        AddTriangle(d, P(x0, x0, z), P(x0 + size, x0 + size, z), P(x0, x0 + size, z));
    };
    for (bool upperFirst : {true, false}) {
        ZrCIncrementalDelaunay2D d(12);
        for (const bool upper : {upperFirst, !upperFirst}) square(d, upper ? 2 : 0, upper ? 4 : 8, upper ? 20 : 10);
        d.CalcBoundingBox();
        CSSEMatrix highest, lowest;
        SSEPoint origin;
        d.FastScanConvertTriangulation(&highest, kBackground, origin, true);
        d.FastScanConvertTriangulation(&lowest, kBackground, origin, false);
        ASSERT_EQ(highest.GetSizeX(), 9);
        ForEachCell(highest, [&](int x, int y) {
            // Cells the upper square's edge crosses may read either.
            const bool underUpper = x >= 3 && x <= 5 && y >= 3 && y <= 5;
            if (underUpper || x <= 1 || x >= 7 || y <= 1 || y >= 7) {
                EXPECT_EQ(highest.GetPoint(x, y), underUpper ? 20.0f : 10.0f) << x << "," << y;
            }
            EXPECT_EQ(lowest.GetPoint(x, y), 10.0f) << x << "," << y;
        });
    }
}

// Random overlapping, folded and degenerate triangles with random flags and
// links; whole-number y, so that the inside form's line bands leave no gaps.
void RandomTriangles(ZrCIncrementalDelaunay2D& d, int count, std::uint32_t seed)
{
    std::mt19937 engine(seed);
    const auto uniform = [&](float lo, float hi) { return lo + (hi - lo) * float(engine() / 4294967296.0); };
    const int vertices = std::max(3, count);
    for (int i = 0; i < vertices; ++i) d.AppendVertex(P(uniform(0, 40), std::floor(uniform(0, 30)), uniform(-5, 5)));
    std::vector<t_hdelaunaytriangle*> made;
    for (int i = 0; i < count; ++i) {
        const auto corner = [&] { return static_cast<int>(engine() % static_cast<std::uint32_t>(vertices)); };
        t_hdelaunaytriangle* t = vek::test::AddTriangle(d, corner(), corner(), corner());
        t->Outside = engine() % 5 == 0;
        t->Border = engine() % 5 == 0;
        t->SubEdge = engine() % 5 == 0;
        made.push_back(t);
    }
    for (t_hdelaunaytriangle* t : made) {
        for (auto*& n : t->Neighbour) n = engine() % 2 == 0 ? made[engine() % made.size()] : nullptr;
    }
    d.ComputeNormalVectorsOfTriangles();
    d.CalcBoundingBox();
    d.SetScanConvResolution(0.7f, 1.3f, 0.5f);
}

TEST(FastScanConversion, FiveWorkersGiveTheBitsOfOneSamplerRun)
{
    CSSEMatrix reference;
    reference.Create(45, 33);
    for (int count : {1, 2, 7, 203}) {
        for (Form form : {Form::Plain, Form::Visible, Form::Unvisible, Form::ZRange, Form::Inside}) {
            for (bool keepMax : {true, false}) {
                SCOPED_TRACE(testing::Message() << "form " << int(form) << ", count " << count << ", max " << keepMax);
                ZrCIncrementalDelaunay2D d(count + 3);
                RandomTriangles(d, count, 1000u + static_cast<std::uint32_t>(count));
                CSSEMatrix banded;
                SSEPoint origin;
                Drive(form, d, &banded, origin, keepMax, &reference);
                ASSERT_GT(banded.GetSizeX(), 0);

                // The sentinel becomes the background (0 for the inside form).
                CSSEMatrix single;
                SentinelField(single, banded.GetSizeX(), banded.GetSizeY(), keepMax);
                const int last = form == Form::Inside ? single.GetSizeY() - 1 : count - 1;
                Sample(form, d, &single, origin, 0, last, keepMax);
                ForEachCell(single, [&](int x, int y) {
                    const float gap = SentinelOf(keepMax) - single.GetPoint(x, y);
                    if (-1.0f < gap && gap < 1.0f) single.SetPoint(x, y, form == Form::Inside ? 0.0f : kBackground);
                });
                EXPECT_EQ(CellBits(banded), CellBits(single));
            }
        }
    }
}

} // namespace
