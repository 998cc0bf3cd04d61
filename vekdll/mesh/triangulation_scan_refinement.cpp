// Filling the holes that scan conversion leaves in a raster.

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/mesh/triangulation.h"

namespace {

enum class Spread { Minimum, Maximum };

// Within 1 of `value`, both bounds open.
bool IsHole(float v, float low, float high)
{
    return low < v && v < high;
}

// Each hole that more than two of its direct neighbours (up, left, down,
// right, as far as the raster goes) outside the band surround takes their
// mean. The pass runs in place, rows outer, so a hole already filled counts
// for those after it.
void FillHoles(CSSEMatrix& field, float value)
{
    if (field.GetMatrixDataDirectly() == nullptr) return;
    const float low = value - 1.0f;
    const float high = value + 1.0f;
    const int width = field.GetSizeX();
    const int height = field.GetSizeY();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (!IsHole(field.GetPoint(x, y), low, high)) continue;
            float sum = 0.0f;
            int counted = 0;
            const auto look = [&](int nx, int ny) {
                const float n = field.GetPoint(nx, ny);
                if (low > n || n > high) {
                    sum += n;
                    ++counted;
                }
            };
            if (y > 0) look(x, y - 1);
            if (x > 0) look(x - 1, y);
            if (y < height - 1) look(x, y + 1);
            if (x < width - 1) look(x + 1, y);
            if (counted > 2) field.SetPoint(x, y, sum / static_cast<float>(counted));
        }
    }
}

void RefineHoles(CSSEMatrix* field, float value, Spread spread)
{
    if (field == nullptr) return;
    FillHoles(*field, value);
    field->SimpleMedianFilter();
    if (spread == Spread::Minimum) {
        field->SimpleMinimumFilter();
    } else {
        field->SimpleMaximumFilter();
    }
    field->ReplaceValueWithValue(value, 0.0f, 1.0f);
}

} // namespace

void CHTriangulation::RefineScanConvImage(CSSEMatrix* field, float value)
{
    RefineHoles(field, value, Spread::Minimum);
}

void CHTriangulation::RefineScanConvImageTop(CSSEMatrix* field, float value)
{
    RefineHoles(field, value, Spread::Maximum);
}
