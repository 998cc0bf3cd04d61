// Geometry of the whole surface: turns of all vertices, re-indexing against
// another vertex store, and the box of the triangles' corners.

#include <algorithm>
#include <cmath>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek {

// Despite the names, these turn the surface (about x, about y); they do not
// translate it.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::MoveTriangulationX(float angle)
{
    NoteVerticesChanged();
    for (int i = 0; i < NumVertices; ++i) RotateVertexX(angle, Vertices[i]);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::MoveTriangulationY(float angle)
{
    NoteVerticesChanged();
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    for (int i = 0; i < NumVertices; ++i) {
        SSEPoint& v = Vertices[i];
        const float x = v.x * c + v.z * s;
        const float z = v.z * c - v.x * s;
        v.x = x;
        v.z = z;
    }
}

// The triangles name corners in `source`; afterwards they name the same
// points in this object's own store, each point stored once (matched
// exactly in x, y and z). The store grows as needed, and ends with room for
// one more vertex.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::CopyVertexArray(const ZrCSSEVertexContainer& source)
{
    TriangleListType& present = Self().PresentList();
    for (POSITION pos = present.GetHeadPosition(); pos != nullptr;) {
        T* triangle = present.GetNext(pos);
        if (triangle == nullptr) continue;
        for (int& corner : triangle->Vertex) {
            if (corner < 0 || corner >= source.GetNumVertices()) continue;
            const SSEPoint point = source.GetVertex(corner);
            int index = PointIndex3D(point, 0, NumVertices);
            if (index < 0) {
                if (NumVertices >= MaxNumVertices) ReallocSize(NumVertices + 1);
                AppendVertex(point);
                index = NumVertices - 1;
            }
            corner = index;
        }
    }
    ReallocSize(std::max(MaxNumVertices, NumVertices) + 1);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::BoxOfCorners(const TriangleListType& list, SSEPoint& min, SSEPoint& max) const
{
    min.sse = _mm_set1_ps(999999.9f);
    max.sse = _mm_set1_ps(-999999.9f);
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        const T* triangle = list.GetNext(pos);
        if (triangle == nullptr) continue;
        for (int corner : triangle->Vertex) {
            min.sse = _mm_min_ps(min.sse, Vertices[corner].sse);
            max.sse = _mm_max_ps(max.sse, Vertices[corner].sse);
        }
    }
}

template <class D, class T, class E>
__m128 TriangleGraph<D, T, E>::UnitNormalOf(const T& triangle) const
{
    const __m128 p0 = Vertices[triangle.Vertex[0]].sse;
    const __m128 cross = CSSEFns::vectorproduct(_mm_sub_ps(Vertices[triangle.Vertex[1]].sse, p0),
                                                _mm_sub_ps(Vertices[triangle.Vertex[2]].sse, p0));
    const bool zero = _mm_movemask_ps(_mm_cmpeq_ps(cross, _mm_setzero_ps())) == 0xF;
    return zero ? cross : CSSEFns::normalizevector(cross);
}

template <class D, class T, class E>
__m128 TriangleGraph<D, T, E>::MeanOfVertices() const
{
    __m128 sum = _mm_setzero_ps();
    const __m128 count = _mm_set1_ps(static_cast<float>(NumVertices));
    for (int i = 0; i < NumVertices; ++i) sum = _mm_add_ps(sum, _mm_div_ps(Vertices[i].sse, count));
    return sum;
}

} // namespace vek
