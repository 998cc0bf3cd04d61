// Whole-array moves, projection on a plane and the turns of single points.

#include <cmath>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/vertex_container.h"

namespace {

// Adds (x, y, z) of `offset` to every vertex; lane w stays.
void AddToAll(SSEPoint* vertices, int count, float x, float y, float z)
{
    const __m128 offset = _mm_setr_ps(x, y, z, 0.0f);
    for (int i = 0; i < count; ++i) vertices[i].sse = _mm_add_ps(vertices[i].sse, offset);
}

} // namespace

void ZrCSSEVertexContainer::AddError(const SSEPoint& point)
{
    NoteVerticesChanged();
    AddToAll(Vertices, NumVertices, point.x, point.y, point.z);
}

void ZrCSSEVertexContainer::AddOffset(float x, float y, float z)
{
    NoteVerticesChanged();
    AddToAll(Vertices, NumVertices, x, y, z);
}

// point + ((planePoint - point) . normal) normal, with the dot product over
// all four lanes; `normal` must be of unit length.
void ZrCSSEVertexContainer::CalcProjectionPoint(const SSEPoint& point, SSEPoint& result,
                                                const SSEPoint& planePoint, const SSEPoint& normal)
{
    const float distance = CSSEFns::scalarproduct(_mm_sub_ps(planePoint.sse, point.sse), normal.sse);
    result.sse = _mm_add_ps(point.sse, _mm_mul_ps(_mm_set1_ps(distance), normal.sse));
}

void ZrCSSEVertexContainer::RotateVertexX(float angle, SSEPoint& point)
{
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    const float y = point.y * c + point.z * s;
    const float z = point.z * c - point.y * s;
    point.y = y;
    point.z = z;
}

// First about y, then about x in the sense opposite to RotateVertexX.
void ZrCSSEVertexContainer::MoveVertex(float angleY, float angleX, SSEPoint& point)
{
    const float cy = std::cos(angleY);
    const float sy = std::sin(angleY);
    const float x = point.x * cy + point.z * sy;
    const float z1 = point.z * cy - point.x * sy;
    const float cx = std::cos(angleX);
    const float sx = std::sin(angleX);
    const float y = point.y * cx - z1 * sx;
    const float z = point.y * sx + z1 * cx;
    point.x = x;
    point.y = y;
    point.z = z;
}
