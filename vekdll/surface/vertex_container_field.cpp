// Heights of the vertices read from a raster field.

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/vertex_container.h"

namespace {

// The cell of a coordinate: truncate(v + 0.5), clamped to 0 ... size - 1.
// The clamp comes first, in float, so that no coordinate is out of the
// integer range when it is truncated.
int CellOf(float v, int size)
{
    const float shifted = v + 0.5f;
    if (!(shifted >= 0.0f)) return 0;
    if (shifted >= static_cast<float>(size - 1)) return size - 1;
    return static_cast<int>(shifted);
}

} // namespace

// Vertices are in cell coordinates here: cell (x, y) holds the height at
// (x, y), with no offset of half the field.
void ZrCSSEVertexContainer::SetVertexZFromMatrix(const CSSEMatrix& field)
{
    const int sizeX = field.GetSizeX();
    const int sizeY = field.GetSizeY();
    if (sizeX < 1 || sizeY < 1) return;
    for (int i = 0; i < NumVertices; ++i) {
        SSEPoint& v = Vertices[i];
        v.z = field.GetPoint(CellOf(v.x, sizeX), CellOf(v.y, sizeY));
    }
}
