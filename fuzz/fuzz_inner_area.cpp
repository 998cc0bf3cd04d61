// Closed lines from arbitrary bytes through the inner-area column walk and the
// fills and cuts built on it. Byte 0 picks the coordinate form, byte 1 and 2
// the grid's start and step; the rest are the points, x then y. The forms: a
// half-cell lattice of 32 x 32 (vertices on grid columns, horizontal and
// vertical edges, doubled points), coordinates spread over +-10000 cells, and
// raw float bits (NaN, infinities, denormals). The walk must find exactly the
// runs of the point-by-point test; any difference stops the run.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz_coordinates.h"
#include "vekdll/vekdll.h"

namespace {

using vek::fuzz::Coordinate;
using vek::fuzz::Form;

using Runs = std::vector<std::pair<int, std::vector<vek::RowRun>>>;

Runs RunsOf(CSSE3dPolygon& line, vek::GridAxis columns, vek::GridAxis rows, vek::InnerAreaScan scan)
{
    Runs found;
    vek::ScanInnerArea(line, columns, rows, scan, [&](int x, const std::vector<vek::RowRun>& runs) { found.emplace_back(x, runs); });
    return found;
}

bool Same(const Runs& a, const Runs& b)
{
    if (a.size() != b.size()) return false;
    for (std::size_t k = 0; k < a.size(); ++k) {
        if (a[k].first != b[k].first || a[k].second.size() != b[k].second.size()) return false;
        for (std::size_t i = 0; i < a[k].second.size(); ++i) {
            if (a[k].second[i].first != b[k].second[i].first || a[k].second[i].end != b[k].second[i].end) return false;
        }
    }
    return true;
}

// The fills and cuts into small fields, where only the sanitizers watch.
// Far coordinates make the coarse fill, whose band isn't clamped, walk the
// whole box of the line, so it runs on the two bounded forms only.
void FillAndCut(const CSSE3dPolygon& source, Form form)
{
    CSSEMatrix field;
    field.Create(23, 17);
    CSSEcharMatrix bytes(23, 17);
    CSSE3dPolygon line(source);
    line.DrawInMatrixAndFillFine(1.0f, &field, false, -1e6f, 1e6f);
    line.DrawInCharMatrixAndFillFine(1, &bytes, true, 3.0f, 9.0f);
    line.DrawInMatrixAndFill(2.0f, &field);
    line.DrawInMatrix(3.0f, &field, false, 0.5f, -0.5f, false);
    line.DrawInMatrixAndFillToOneSideFront(4.0f, &field, 0.0f, 0.0f, true);
    if (form != Form::RawBits) line.DrawInMatrixAndFillCoarse(5.0f, &field, false, -1e6f, 1e6f);
    field.RemoveImageValuesOutSideOfBow(line, 0.0f, 0);
    if (form != Form::RawBits) {
        CSSE3dPolygon bow(source);
        field.RemoveImageValuesLeftOfOpenBow(bow, 0.0f, 2);
        field.RemoveImageValuesRightOfOpenBow(bow, 0.0f, -2);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 3) return 0;
    const Form form = static_cast<Form>(data[0] % 3);
    const vek::GridAxis columns{static_cast<int>(data[1] % 16) - 8, static_cast<int>(data[1] % 16) + 24, 1 + data[2] % 3};
    const vek::GridAxis rows{static_cast<int>(data[2] % 16) - 8, static_cast<int>(data[2] % 16) + 24, 1 + data[1] % 3};
    const std::size_t width = static_cast<std::size_t>(vek::fuzz::BytesPerCoordinate(form));
    const std::size_t count = std::min<std::size_t>((size - 3) / (2 * width), 256);
    CSSE3dPolygon line;
    line.Create(static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* at = data + 3 + 2 * width * i;
        line.SetPoint(static_cast<int>(i), Coordinate(at, form), Coordinate(at + width, form), 0.0f);
    }
    if (!Same(RunsOf(line, columns, rows, vek::InnerAreaScan::Crossings), RunsOf(line, columns, rows, vek::InnerAreaScan::PointByPoint))) {
        __builtin_trap();
    }
    FillAndCut(line, form);
    return 0;
}
