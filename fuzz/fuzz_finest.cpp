// Closed lines from arbitrary bytes as the outline of the finest
// triangulation. Byte 0 picks the coordinate form (the half-cell lattice or
// raw float bits; far-spread coordinates would only make large grids), byte
// 1 the step, 1 to 4; the rest are the points, x then y, over a raster of
// 20 x 20 with heights of their own. Both builds must link every shared side
// both ways, and give the same result by the keyed and the plain row links
// and in one band as in fifteen; any difference stops the run.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "fuzz_coordinates.h"
#include "surface/finest_fixtures.h"
#include "vekdll/vekdll.h"

namespace {

using vek::fuzz::Form;

void Build(ZrCFinestTriangulation& t, CSSE3dPolygon& line, CSSEMatrix& field, int step, bool marching)
{
    if (marching)
        t.TriangulateWithMarching(line, &field, step, true);
    else
        t.Triangulate(line, &field, step, true);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) return 0;
    const Form form = data[0] % 2 == 0 ? Form::Lattice : Form::RawBits;
    const int step = 1 + data[1] % 4;
    const int width = vek::fuzz::BytesPerCoordinate(form);
    const std::size_t count = (size - 2) / (2 * static_cast<std::size_t>(width));
    if (count > 64) return 0;
    CSSE3dPolygon line;
    line.Create(static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* at = data + 2 + i * 2 * width;
        line.SetPoint(static_cast<int>(i), vek::fuzz::Coordinate(at, form), vek::fuzz::Coordinate(at + width, form),
                      0.0f);
    }
    CSSEMatrix field;
    vek::test::MakeField(field, 20, 20, [](int x, int y) { return float((x * 7 + y * 3) % 5); });
    for (const bool marching : {false, true}) {
        ZrCFinestTriangulation keyed;
        Build(keyed, line, field, step, marching);
        if (vek::test::LinkFaults(keyed) != 0) std::abort();
        const vek::test::BuildRecord expected = vek::test::Record(keyed);
        ZrCFinestTriangulation plain;
        plain.SetSearchMode(vek::SearchMode::LinearScan);
        Build(plain, line, field, step, marching);
        ZrCFinestTriangulation oneBand;
        oneBand.SetRowBands(1);
        Build(oneBand, line, field, step, marching);
        if (!(vek::test::Record(plain) == expected) || !(vek::test::Record(oneBand) == expected)) std::abort();
    }
    return 0;
}
