#pragma once

#include <algorithm>
#include <cstdint>
#include <smmintrin.h>

#include "vekdll/fields/pixel_store.h"
#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/foundation/sse_point.h"
#include "vekdll/platform/c_list.h"

// The sampler of the scan conversion, shared by both triangulation classes:
// each triangle is sampled on a regular barycentric lattice fine enough to
// hit every cell it covers, and each sample keeps the higher (or lower) of
// its value and the value already in its cell. It is written over the
// triangle record and a test that picks the triangles, so that the class
// with ten workers and the class with five run the same loop.
//
// This is the hot loop of refinement: nothing here allocates, calls through
// a pointer or walks a list per triangle.

namespace vek::detail {

// What a sample needs to know about the triangulation and the raster: the
// vertex array, the corner of the bounding box that falls on cell (0, 0),
// the units per cell, and the height offset added to every sample.
struct ScanLattice {
    const SSEPoint* vertices;
    __m128 minPoint;
    // (ScanResolutionX, ScanResolutionY, ScanResolutionZ, 1).
    __m128 resolution;
    // ScanResolutionXY, the diagonal of a cell.
    float diagonal;
    // (0, 0, origin.z, 0).
    __m128 originZ;
};

inline ScanLattice MakeScanLattice(const SSEPoint* vertices, const SSEPoint& minPoint, float resolutionX,
                                   float resolutionY, float resolutionZ, float diagonal, const SSEPoint& origin)
{
    return {vertices, minPoint.sse, _mm_setr_ps(resolutionX, resolutionY, resolutionZ, 1.0f), diagonal,
            _mm_setr_ps(0.0f, 0.0f, origin.z, 0.0f)};
}

// Direct access to the cells of the field being written, with the largest
// cell index of each axis in lanes 0 and 1 for the clamp.
struct ScanTarget {
    __m128** lines;
    __m128 largestCell;
};

inline bool MakeScanTarget(CSSEMatrix& field, ScanTarget& target)
{
    if (field.GetMatrixDataDirectly() == nullptr || field.GetSizeX() < 1 || field.GetSizeY() < 1) return false;
    target.lines = field.GetMatrixDataDirectly();
    target.largestCell = _mm_setr_ps(static_cast<float>(field.GetSizeX() - 1),
                                     static_cast<float>(field.GetSizeY() - 1), 0.0f, 0.0f);
    return true;
}

// One sample at P = v e2 + a + u e1 - MinPoint, added in that order. Its cell
// is truncate(P / resolution + 0.5) in x and y, clamped into the field, so a
// sample beyond the rim lands in the border cell. The clamp is taken on the
// float before the conversion, which gives the same cell as truncating first
// and keeps a far-off or not-a-number coordinate from overflowing it. The
// value is (origin.z + P.z) / ScanResolutionZ.
template <bool KeepMax>
inline void StoreSample(const ScanLattice& lattice, const ScanTarget& target, __m128 p)
{
    const __m128 scaled = _mm_div_ps(_mm_add_ps(p, lattice.originZ), lattice.resolution);
    const float value = _mm_cvtss_f32(_mm_movehl_ps(scaled, scaled));
    const __m128 cell = _mm_add_ps(scaled, _mm_setr_ps(0.5f, 0.5f, 0.0f, 0.0f));
    const __m128i index = _mm_cvttps_epi32(_mm_min_ps(_mm_max_ps(cell, _mm_setzero_ps()), target.largestCell));
    const int x = _mm_cvtsi128_si32(index);
    const int y = _mm_extract_epi32(index, 1);
    float& pixel = reinterpret_cast<float*>(target.lines[y >> 2] + x)[y & 3];
    StorePixel(pixel, value, KeepMax ? PixelStore::Maximum : PixelStore::Minimum);
}

// Samples one triangle with corners a, b, c. The lattice step is a fifth of
// the cell diagonal measured along the longer of the two edges from a, in
// the parameters u (along b - a) and v (along c - a). A triangle smaller
// than a cell gets a step above 1/5 and may be reduced to corner a and the
// closing sample; a degenerate one, of length 0, has an infinite step and is
// reduced to exactly those two.
template <bool KeepMax>
inline void SampleTriangle(const ScanLattice& lattice, const ScanTarget& target, __m128 a, __m128 b, __m128 c)
{
    const __m128 e1 = _mm_sub_ps(b, a);
    const __m128 e2 = _mm_sub_ps(c, a);
    const float longer = std::max(CSSEFns::vectorlen(e1), CSSEFns::vectorlen(e2));
    const float step = (lattice.diagonal / longer) / 5.0f;
    float u = 0.0f;
    for (; u < 1.0f; u += step) {
        const __m128 alongE1 = _mm_mul_ps(_mm_set1_ps(u), e1);
        const float vEnd = 1.0f - u;
        for (float v = 0.0f; v < vEnd; v += step) {
            const __m128 p = _mm_add_ps(_mm_add_ps(_mm_mul_ps(_mm_set1_ps(v), e2), a), alongE1);
            StoreSample<KeepMax>(lattice, target, _mm_sub_ps(p, lattice.minPoint));
            // A step too small to move v any more (a triangle millions of
            // cells long) ends the row rather than spin for ever.
            if (v + step == v) break;
        }
        if (u + step == u) break;
    }
    // u seldom lands on 1 exactly, so the far end of e1, corner b, is taken
    // by one more sample at u = 1, v = 0.
    if (u != 1.0f) {
        const __m128 p = _mm_add_ps(_mm_add_ps(_mm_mul_ps(_mm_setzero_ps(), e2), a), e1);
        StoreSample<KeepMax>(lattice, target, _mm_sub_ps(p, lattice.minPoint));
    }
}

template <bool KeepMax, class Triangle, class Test>
void SampleTrianglesFrom(const ScanLattice& lattice, const ScanTarget& target, const CList<Triangle*>& list,
                         POSITION pos, std::int64_t count, const Test& test)
{
    const SSEPoint* v = lattice.vertices;
    for (; pos != nullptr && count > 0; --count) {
        const Triangle* t = list.GetNext(pos);
        if (t == nullptr || !test(*t)) continue;
        SampleTriangle<KeepMax>(lattice, target, v[t->Vertex[0]].sse, v[t->Vertex[1]].sse, v[t->Vertex[2]].sse);
    }
}

// Samples the triangles of `list` at indices first ... last, both inclusive,
// that `test` lets pass. An index outside 0 ... count - 1 stands for the end
// of the list, so a first index beyond it samples nothing and a last index
// beyond it runs to the end; a stretch that would end before it starts is
// empty. The start is found by one walk from the head, once per call.
template <class Triangle, class Test>
void SampleStretch(const ScanLattice& lattice, CSSEMatrix& field, const CList<Triangle*>& list, int first, int last,
                   const Test& test, bool keepMax)
{
    ScanTarget target;
    if (!MakeScanTarget(field, target)) return;
    const std::int64_t count = list.GetCount();
    if (first < 0 || first >= count) return;
    const std::int64_t end = last + 1LL >= 0 && last + 1LL < count ? last + 1LL : count;
    if (end <= first) return;
    POSITION pos = list.GetHeadPosition();
    for (int i = 0; i < first; ++i) list.GetNext(pos);
    if (keepMax)
        SampleTrianglesFrom<true>(lattice, target, list, pos, end - first, test);
    else
        SampleTrianglesFrom<false>(lattice, target, list, pos, end - first, test);
}

// The same for the samplers that callers reach directly, which may be handed
// no field or no list: then nothing is sampled.
template <class Triangle, class Test>
void SampleStretch(const ScanLattice& lattice, CSSEMatrix* field, const CList<Triangle*>* list, int first, int last,
                   const Test& test, bool keepMax)
{
    if (field == nullptr || list == nullptr) return;
    SampleStretch(lattice, *field, *list, first, last, test, keepMax);
}

// Samples every triangle of `list` that `test` lets pass.
template <class Triangle, class Test>
void SampleWholeList(const ScanLattice& lattice, CSSEMatrix& field, const CList<Triangle*>& list, const Test& test,
                     bool keepMax)
{
    ScanTarget target;
    if (!MakeScanTarget(field, target)) return;
    if (keepMax)
        SampleTrianglesFrom<true>(lattice, target, list, list.GetHeadPosition(), list.GetCount(), test);
    else
        SampleTrianglesFrom<false>(lattice, target, list, list.GetHeadPosition(), list.GetCount(), test);
}

// ---------------------------------------------------------------- which triangles are sampled

struct EveryTriangle {
    template <class Triangle>
    bool operator()(const Triangle&) const
    {
        return true;
    }
};

// Triangles whose normal points up (z >= 0) or down (z <= 0); a normal of
// z 0 passes both ways. The visible ones of a maximum are those facing up,
// of a minimum those facing down, and the unvisible ones are the others, so
// each is this test with the direction chosen. A triangle whose normal was
// never computed faces no known way and is passed over.
struct FacingTriangles {
    bool upward;

    template <class Triangle>
    bool operator()(const Triangle& t) const
    {
        if (t.Normal == nullptr) return false;
        return upward ? t.Normal->z >= 0.0f : t.Normal->z <= 0.0f;
    }
};

// The same choice for records that keep no normal: the normal is computed
// from the corners, (b - a) x (c - a), whose z has the sign of the unit
// normal's; a triangle of no area has z 0 and passes both ways.
struct FacingTrianglesByCorners {
    const SSEPoint* vertices;
    bool upward;

    template <class Triangle>
    bool operator()(const Triangle& t) const
    {
        const __m128 a = vertices[t.Vertex[0]].sse;
        SSEPoint normal;
        normal.sse = CSSEFns::vectorproduct(_mm_sub_ps(vertices[t.Vertex[1]].sse, a),
                                            _mm_sub_ps(vertices[t.Vertex[2]].sse, a));
        return upward ? normal.z >= 0.0f : normal.z <= 0.0f;
    }
};

// Triangles with at least one corner at a height zMin ... zMax.
struct TrianglesInZRange {
    const SSEPoint* vertices;
    float zMax;
    float zMin;

    template <class Triangle>
    bool operator()(const Triangle& t) const
    {
        for (int i = 0; i < 3; ++i) {
            const float z = vertices[t.Vertex[i]].z;
            if (zMax >= z && z >= zMin) return true;
        }
        return false;
    }
};

// Triangles of the inside of the surface: none of Outside, Border and
// SubEdge, unless `inner`, no neighbour with Border or SubEdge either, and a
// corner whose y lies within yLow ... yHigh, the worker's band of lines.
struct InsideTrianglesOfBand {
    const SSEPoint* vertices;
    bool inner;
    float yLow;
    float yHigh;

    template <class Triangle>
    bool operator()(const Triangle& t) const
    {
        if (t.Outside || t.Border || t.SubEdge) return false;
        if (!inner) {
            for (const Triangle* n : t.Neighbour) {
                if (n != nullptr && (n->Border || n->SubEdge)) return false;
            }
        }
        for (int i = 0; i < 3; ++i) {
            const float y = vertices[t.Vertex[i]].y;
            if (yLow <= y && y <= yHigh) return true;
        }
        return false;
    }
};

} // namespace vek::detail
