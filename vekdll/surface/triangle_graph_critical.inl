// Which triangles meet a newer raster of the surface, taken from above
// (a raster of maxima) or from below (minima), straight or from a view
// turned about x. The rasters are centred on the surface: its (0, 0) lies at
// the middle of the field. Each Max and Min pair is one operation with the
// sense of the height comparison exchanged.

#include <algorithm>
#include <cmath>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/foundation/sse_fns.h"
#include "vekdll/surface/raster_cells.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

// A corner meets the raster where the raster holds data, the mask is set,
// the corner stands no more than 4.0 above (below, for minima) the raster's
// surface, and no farther from it than the mask's value plus 4.0.
inline bool CornerMeetsRaster(const SSEPoint& corner, const CSSEMatrix& height, const CSSEMatrix& mask,
                              float background, bool maxImage)
{
    const float h = ValueAtCentredCell(height, corner.x, corner.y);
    const float m = std::fabs(ValueAtCentredCell(mask, corner.x, corner.y));
    const bool underFour = maxImage ? h + 4.0f > corner.z : h - 4.0f < corner.z;
    return std::fabs(h - background) > 0.001f && m > 0.0f && underFour && m + 4.0f >= std::fabs(corner.z - h);
}

// Whether the triangle lies within 50 degrees of facing the view: its
// normal (c - a) x (b - a) and `direction`, both without lane 0 with
// `flag` (else without lane 1), enclose a smaller angle. A normal of no
// length faces nothing.
inline bool FacesView(const SSEPoint& a, const SSEPoint& b, const SSEPoint& c, const SSEPoint& direction, bool flag)
{
    SSEPoint normal;
    normal.sse = CSSEFns::vectorproduct(_mm_sub_ps(c.sse, a.sse), _mm_sub_ps(b.sse, a.sse));
    SSEPoint view = direction;
    if (flag) {
        normal.x = 0.0f;
        view.x = 0.0f;
    } else {
        normal.y = 0.0f;
        view.y = 0.0f;
    }
    normal.sse = CSSEFns::normalizevector(normal.sse);
    // Rounding can carry the cosine of a level triangle past 1.
    const float angle = std::acos(std::clamp(CSSEFns::scalarproduct(normal.sse, view.sse), -1.0f, 1.0f));
    return angle > -1e-6f && angle < 0.8726657f;
}

enum class RasterVerdict { Clean, Affected, AllCritical };

// Sorts one triangle with the given (maybe turned) corners; each critical
// corner's y widens minY .. maxY.
inline RasterVerdict JudgeAgainstRaster(const SSEPoint (&corners)[3], const CSSEMatrix& height, const CSSEMatrix& mask,
                                        float background, const SSEPoint& direction, bool flag, bool maxImage,
                                        bool (&critical)[3], float& minY, float& maxY)
{
    if (!FacesView(corners[0], corners[1], corners[2], direction, flag)) return RasterVerdict::Clean;
    int count = 0;
    for (int k = 0; k < 3; ++k) {
        critical[k] = CornerMeetsRaster(corners[k], height, mask, background, maxImage);
        if (!critical[k]) continue;
        ++count;
        if (corners[k].y < minY) minY = corners[k].y;
        if (corners[k].y > maxY) maxY = corners[k].y;
    }
    if (count == 0) return RasterVerdict::Clean;
    return count == 3 ? RasterVerdict::AllCritical : RasterVerdict::Affected;
}

// Whether p lies in the box, grown by 2.0 in x and y and reaching down to
// 2.0 below it in z.
inline bool NearBox(const SSEPoint& p, const float (&low)[3], const float (&high)[3])
{
    return p.x >= low[0] - 2.0f && p.x <= high[0] + 2.0f && p.y >= low[1] - 2.0f && p.y <= high[1] + 2.0f &&
           p.z > low[2] - 2.0f;
}

} // namespace vek::detail

namespace vek {

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ListAffected(AffectedListType& affected, T* triangle, const bool (&critical)[3])
{
    auto* record = static_cast<AffectedRecord*>(SafeCalloc(1, sizeof(AffectedRecord)));
    record->Triangle = triangle;
    std::copy(critical, critical + 3, record->Corner);
    record->CornerCount = 0;
    affected.AddTail(record);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::ClearAffectedList(AffectedListType* affected)
{
    if (affected == nullptr) return;
    for (POSITION pos = affected->GetHeadPosition(); pos != nullptr;) SafeFree(affected->GetNext(pos));
    affected->RemoveAll();
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindCriticalTriangles(bool maxImage, TriangleListType* clean,
                                                   AffectedListType* affected, float& minZ, float& maxZ,
                                                   CSSEMatrix* height, CSSEMatrix* mask, CSSE3dPolygon* polygon,
                                                   const SSEPoint& direction, bool flag)
{
    if (clean == nullptr || affected == nullptr || !detail::Readable(height) || !detail::Readable(mask) ||
        polygon == nullptr)
        return;
    const bool wasFinalized = Self().LeaveFinalizedState();
    const float background = detail::RasterBackground(*height, maxImage);
    if (!polygon->IsBoundingBoxCalculated()) polygon->CalcBoundingBox();
    float low[3];
    float high[3];
    polygon->GetBoundingBox3D(low[0], low[1], low[2], high[0], high[1], high[2]);
    for (POSITION pos = TriangleList.GetHeadPosition(); pos != nullptr;) {
        T* triangle = TriangleList.GetNext(pos);
        if (triangle == nullptr || triangle->Ignore) continue;
        const SSEPoint corners[3] = {Vertices[triangle->Vertex[0]], Vertices[triangle->Vertex[1]],
                                     Vertices[triangle->Vertex[2]]};
        if (!detail::NearBox(corners[0], low, high) && !detail::NearBox(corners[1], low, high) &&
            !detail::NearBox(corners[2], low, high))
            continue;
        bool critical[3] = {};
        switch (detail::JudgeAgainstRaster(corners, *height, *mask, background, direction, flag, maxImage, critical,
                                           minZ, maxZ)) {
        case detail::RasterVerdict::Clean: clean->AddTail(triangle); break;
        case detail::RasterVerdict::AllCritical: triangle->Ignore = true; break;
        case detail::RasterVerdict::Affected: ListAffected(*affected, triangle, critical); break;
        }
    }
    Self().ReturnToFinalizedState(wasFinalized);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindCriticalTriangleListMaxImg(TriangleListType* clean, AffectedListType* affected,
                                                            float& minZ, float& maxZ, CSSEMatrix* height,
                                                            CSSEMatrix* mask, CSSE3dPolygon* polygon,
                                                            const SSEPoint& direction, bool flag)
{
    FindCriticalTriangles(true, clean, affected, minZ, maxZ, height, mask, polygon, direction, flag);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindCriticalTriangleListMinImg(TriangleListType* clean, AffectedListType* affected,
                                                            float& minZ, float& maxZ, CSSEMatrix* height,
                                                            CSSEMatrix* mask, CSSE3dPolygon* polygon,
                                                            const SSEPoint& direction, bool flag)
{
    FindCriticalTriangles(false, clean, affected, minZ, maxZ, height, mask, polygon, direction, flag);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckCriticalTriangles(bool maxImage, float angle, AffectedListType* affected,
                                                    CSSEMatrix* field, CSSEMatrix* mask, const SSEPoint& direction,
                                                    TriangleListType* clean, float& minZ, float& maxZ, bool flag)
{
    if (affected == nullptr || !detail::Readable(field) || !detail::Readable(mask) || clean == nullptr) return;
    const float background = detail::RasterBackground(*field, maxImage);
    for (POSITION pos = clean->GetHeadPosition(); pos != nullptr;) {
        const POSITION current = pos;
        T* triangle = clean->GetNext(pos);
        if (triangle == nullptr || triangle->Ignore) continue;
        SSEPoint corners[3] = {Vertices[triangle->Vertex[0]], Vertices[triangle->Vertex[1]],
                               Vertices[triangle->Vertex[2]]};
        for (SSEPoint& corner : corners) RotateVertexX(angle, corner);
        bool critical[3] = {};
        switch (detail::JudgeAgainstRaster(corners, *field, *mask, background, direction, flag, maxImage, critical,
                                           minZ, maxZ)) {
        case detail::RasterVerdict::Clean: continue;
        case detail::RasterVerdict::AllCritical: triangle->Ignore = true; break;
        case detail::RasterVerdict::Affected: ListAffected(*affected, triangle, critical); break;
        }
        clean->RemoveAt(current);
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckCriticalTriangleListMaxImg(float angle, AffectedListType* affected,
                                                             CSSEMatrix* field, CSSEMatrix* mask,
                                                             const SSEPoint& direction, TriangleListType* clean,
                                                             float& minZ, float& maxZ, EDirection, bool flag)
{
    CheckCriticalTriangles(true, angle, affected, field, mask, direction, clean, minZ, maxZ, flag);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckCriticalTriangleListMinImg(float angle, AffectedListType* affected,
                                                             CSSEMatrix* field, CSSEMatrix* mask,
                                                             const SSEPoint& direction, TriangleListType* clean,
                                                             float& minZ, float& maxZ, EDirection, bool flag)
{
    CheckCriticalTriangles(false, angle, affected, field, mask, direction, clean, minZ, maxZ, flag);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckAffectedTriangles(bool maxImage, AffectedListType* affected, CSSEMatrix* field,
                                                    CSSEMatrix* mask, const SSEPoint& direction, bool flag)
{
    if (affected == nullptr || !detail::Readable(field) || !detail::Readable(mask)) return;
    const float background = detail::RasterBackground(*field, maxImage);
    for (POSITION pos = affected->GetHeadPosition(); pos != nullptr;) {
        AffectedRecord* record = affected->GetNext(pos);
        T* triangle = record != nullptr ? record->Triangle : nullptr;
        if (triangle == nullptr || triangle->Ignore) continue;
        const SSEPoint& a = Vertices[triangle->Vertex[0]];
        const SSEPoint& b = Vertices[triangle->Vertex[1]];
        const SSEPoint& c = Vertices[triangle->Vertex[2]];
        if (!detail::FacesView(a, b, c, direction, flag)) continue;
        const SSEPoint* corners[3] = {&a, &b, &c};
        for (int k = 0; k < 3; ++k) {
            if (!record->Corner[k])
                record->Corner[k] = detail::CornerMeetsRaster(*corners[k], *field, *mask, background, maxImage);
        }
        if (record->Corner[0] && record->Corner[1] && record->Corner[2]) triangle->Ignore = true;
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckAffectedTrianglesMaxImg(AffectedListType* affected, CSSEMatrix* field,
                                                          CSSEMatrix* mask, const SSEPoint& direction, bool flag)
{
    CheckAffectedTriangles(true, affected, field, mask, direction, flag);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::CheckAffectedTrianglesMinImg(AffectedListType* affected, CSSEMatrix* field,
                                                          CSSEMatrix* mask, const SSEPoint& direction, bool flag)
{
    CheckAffectedTriangles(false, affected, field, mask, direction, flag);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindAffectedTriangles(AffectedListType* affected, TriangleListType* clean,
                                                   CSSE3dPolygon* polygon, CSSEMatrix* heightStraight,
                                                   CSSEMatrix* heightMinus, CSSEMatrix* heightPlus,
                                                   CSSEMatrix* maskStraight, CSSEMatrix* maskMinus,
                                                   CSSEMatrix* maskPlus, float* minima, float* maxima, bool useMax,
                                                   bool flag)
{
    if (minima == nullptr || maxima == nullptr) return;
    std::fill(minima, minima + 3, 99999.9f);
    std::fill(maxima, maxima + 3, -99999.9f);
    SSEPoint direction = detail::PointAt(0.0f, 0.0f, useMax ? -1.0f : 1.0f);
    FindCriticalTriangles(useMax, clean, affected, minima[eViewStraight], maxima[eViewStraight], heightStraight,
                          maskStraight, polygon, direction, flag);
    CheckCriticalTriangles(useMax, 1.5707964f, affected, heightPlus, maskPlus, direction, clean,
                           minima[eViewPlus90], maxima[eViewPlus90], flag);
    CheckCriticalTriangles(useMax, -1.5707964f, affected, heightMinus, maskMinus, direction, clean,
                           minima[eViewMinus90], maxima[eViewMinus90], flag);
}

} // namespace vek
