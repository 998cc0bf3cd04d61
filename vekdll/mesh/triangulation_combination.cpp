// Joining a second mesh on, and bending corner heights towards a field.

#include <smmintrin.h>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/mesh/triangulation.h"

namespace {

// A field reading of this much or less holds no data.
constexpr float kNoDataLimit = 0.1f;

} // namespace

void CHTriangulation::Combine(CHTriangulation& other, bool flip)
{
    CHTriangulation joined(0, ScaleX, ScaleY, ScaleZ);
    joined.CreateTriangulation(NumTriangles + other.NumTriangles);
    for (int i = 0; i < 3 * NumTriangles; ++i) joined.EdgeArray[i] = EdgeArray[i];
    SSEPoint* const back = joined.EdgeArray + 3 * NumTriangles;
    for (int i = 0; i < other.NumTriangles; ++i) {
        const SSEPoint* corners = other.EdgeArray + 3 * i;
        // Turning a triangle over exchanges its first and last corner.
        back[3 * i] = corners[flip ? 2 : 0];
        back[3 * i + 1] = corners[1];
        back[3 * i + 2] = corners[flip ? 0 : 2];
    }
    // The old corner normals are not carried over: the result is flat-shaded.
    joined.CalcBoundingBox();
    joined.CalcSTV();
    joined.CalcNormalsFromVertices();
    joined.CalcCenterPoint();
    CopyFromHTriangulation(&joined);
}

void CHTriangulation::ConstrainWithHeightField(bool keepLower, CSSEMatrix* field, float offset)
{
    // The interpolation reads a 2 x 2 patch inside the frame: a field under
    // 3 x 3 has none, and holds no data for this purpose.
    if (field == nullptr || field->GetMatrixDataDirectly() == nullptr) return;
    if (field->GetSizeX() < 3 || field->GetSizeY() < 3) return;
    // Corners are private to their triangle: a shared position is treated
    // once for each triangle, always alike.
    for (int i = 0; i < 3 * NumTriangles; ++i) {
        SSEPoint& corner = EdgeArray[i];
        const float v = field->GetPixelPreciseFloat(corner.x, corner.y);
        if (!(v > kNoDataLimit)) continue;
        const float limit = v + offset;
        if (keepLower ? limit < corner.z : limit > corner.z) corner.z = limit;
    }
}

void CHTriangulation::ConstrainWithHeightField(bool, const ZrCFieldRange&, float)
{
}

void CHTriangulation::CutWithTriangulation(CHTriangulation*)
{
}

void CHTriangulation::MinimumZTriangulation(CHTriangulation*)
{
}
