// Deleting what a newer raster contradicts: in the band of y where a view
// found triangles meeting the raster, a triangle whose corner stands beyond
// the raster's surface (above a raster of maxima, below one of minima) is
// contradicted by it. The views turn the surface about x; the rasters are
// centred on it.

#include <cmath>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/surface/raster_cells.h"
#include "vekdll/surface/triangle_graph.h"

namespace vek::detail {

// The turns of the three views, in the order of EDirection.
inline constexpr float kViewTurns[3] = {0.0f, -1.5707964f, 1.5707964f};

// Turns p about x by `angle`: forward in the sense of RotateVertexX, else in
// the other sense, that of the turn about x in MoveVertex.
inline void TurnAboutX(SSEPoint& p, float angle, bool forward)
{
    if (forward)
        ZrCSSEVertexContainer::RotateVertexX(angle, p);
    else
        ZrCSSEVertexContainer::MoveVertex(0.0f, angle, p);
}

// The corner stands more than 0.001 beyond the raster's surface where the
// raster holds data (neither its background nor the scan conversion's
// sentinel) and the mask is set.
inline bool CornerBeyondRaster(const SSEPoint& corner, const CSSEMatrix& field, const CSSEMatrix& mask,
                               float background, bool maxImage)
{
    const float v = ValueAtCentredCell(field, corner.x, corner.y);
    const float m = std::fabs(ValueAtCentredCell(mask, corner.x, corner.y));
    const float sense = maxImage ? 1.0f : -1.0f;
    return std::fabs(v - background) > 0.001f && sense * v > -999998.0f && m > 0.001f &&
           sense * (corner.z - v) > 0.001f;
}

} // namespace vek::detail

namespace vek {

template <class D, class T, class E>
void TriangleGraph<D, T, E>::TurnVerticesAboutX(float angle, bool forward)
{
    NoteVerticesChanged();
    for (int i = 0; i < NumVertices; ++i) detail::TurnAboutX(Vertices[i], angle, forward);
}

// The first corner with from < y < to, if the raster contradicts it; else -1.
template <class D, class T, class E>
int TriangleGraph<D, T, E>::ContradictedCornerInArea(const T* triangle, float from, float to, const CSSEMatrix& field,
                                                     const CSSEMatrix& mask, float background, bool maxImage) const
{
    for (int k = 0; k < 3; ++k) {
        const SSEPoint& corner = Vertices[triangle->Vertex[k]];
        if (!(from < corner.y && corner.y < to)) continue;
        return detail::CornerBeyondRaster(corner, field, mask, background, maxImage) ? k : -1;
    }
    return -1;
}

// The frame of the DeleteInArea family: the surface turned into the view,
// `visit(test)` over the caller's list, where test(triangle) gives the
// contradicted corner in the area, and the surface turned back.
template <class D, class T, class E>
template <class Visit>
void TriangleGraph<D, T, E>::InViewArea(bool maxImage, CSSEMatrix* field, CSSEMatrix* mask, float from, float to,
                                        float angle, bool turnForward, Visit visit)
{
    if (!detail::Readable(field) || !detail::Readable(mask)) return;
    const float background = detail::RasterBackground(*field, maxImage);
    TurnVerticesAboutX(angle, turnForward);
    visit([&](const T* triangle) {
        return ContradictedCornerInArea(triangle, from, to, *field, *mask, background, maxImage);
    });
    TurnVerticesAboutX(-angle, turnForward);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteInAreaTriangles(bool maxImage, TriangleListType* triangles, CSSEMatrix* field,
                                                   CSSEMatrix* mask, float from, float to, float angle,
                                                   bool turnForward)
{
    if (triangles == nullptr) return;
    InViewArea(maxImage, field, mask, from, to, angle, turnForward, [triangles](const auto& contradicted) {
        for (POSITION pos = triangles->GetHeadPosition(); pos != nullptr;) {
            T* triangle = triangles->GetNext(pos);
            if (triangle != nullptr && !triangle->Ignore && contradicted(triangle) >= 0) triangle->Ignore = true;
        }
    });
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteInAreaAffectedTriangles(bool maxImage, AffectedListType* affected,
                                                           CSSEMatrix* field, CSSEMatrix* mask, float from, float to,
                                                           float angle, bool turnForward)
{
    if (affected == nullptr) return;
    InViewArea(maxImage, field, mask, from, to, angle, turnForward, [affected](const auto& contradicted) {
        for (POSITION pos = affected->GetHeadPosition(); pos != nullptr;) {
            AffectedRecord* record = affected->GetNext(pos);
            if (record == nullptr || record->Triangle == nullptr || record->Triangle->Ignore) continue;
            const int corner = contradicted(record->Triangle);
            if (corner < 0) continue;
            record->Corner[corner] = true;
            ++record->CornerCount;
        }
    });
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteInAreaTrianglesMaxImg(TriangleListType* triangles, CSSEMatrix* field,
                                                         CSSEMatrix* mask, float from, float to, float angle,
                                                         bool turnForward)
{
    DeleteInAreaTriangles(true, triangles, field, mask, from, to, angle, turnForward);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteInAreaTrianglesMinImg(TriangleListType* triangles, CSSEMatrix* field,
                                                         CSSEMatrix* mask, float from, float to, float angle,
                                                         bool turnForward)
{
    DeleteInAreaTriangles(false, triangles, field, mask, from, to, angle, turnForward);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteInAreaAffectedTrianglesMaxImg(AffectedListType* affected, CSSEMatrix* field,
                                                                 CSSEMatrix* mask, float from, float to, float angle,
                                                                 EDirection, bool turnForward)
{
    DeleteInAreaAffectedTriangles(true, affected, field, mask, from, to, angle, turnForward);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteInAreaAffectedTrianglesMinImg(AffectedListType* affected, CSSEMatrix* field,
                                                                 CSSEMatrix* mask, float from, float to, float angle,
                                                                 EDirection, bool turnForward)
{
    DeleteInAreaAffectedTriangles(false, affected, field, mask, from, to, angle, turnForward);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::FindAffectedTrianglesInArea(AffectedListType* affected, TriangleListType* triangles,
                                                         CSSEMatrix* heightStraight, CSSEMatrix* heightMinus,
                                                         CSSEMatrix* heightPlus, CSSEMatrix* maskStraight,
                                                         CSSEMatrix* maskMinus, CSSEMatrix* maskPlus, float* from,
                                                         float* to, bool useMax, bool turnForward)
{
    if (from == nullptr || to == nullptr) return;
    CSSEMatrix* heights[3] = {heightStraight, heightMinus, heightPlus};
    CSSEMatrix* masks[3] = {maskStraight, maskMinus, maskPlus};
    for (int view = 0; view < 3; ++view) {
        const float angle = detail::kViewTurns[view];
        DeleteInAreaTriangles(useMax, triangles, heights[view], masks[view], from[view], to[view], angle,
                              turnForward);
        DeleteInAreaAffectedTriangles(useMax, affected, heights[view], masks[view], from[view], to[view], angle,
                                      turnForward);
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::BuildMaskFromMatrix(CSSEMatrix* source, CSSEMatrix* mask, bool flag)
{
    if (source == nullptr || mask == nullptr) return;
    mask->CreateSimilar(*source);
    if (!detail::Readable(source)) return;
    float maxValue = 0.0f;
    float minValue = 0.0f;
    source->CalcMinMaxValues(&maxValue, &minValue);
    mask->CopyFromSSEMatrix(*source);
    if (flag)
        mask->TresholdBelow(maxValue, 1.0f);
    else
        mask->TresholdAbove(minValue, 1.0f);
}

// The candidates that a view's mask confirms: the triangle's centroid,
// turned into the view, lies on the mask.
template <class D, class T, class E>
void TriangleGraph<D, T, E>::MarkConfirmedByMasks(TriangleListType& candidates, CSSEMatrix (&masks)[3],
                                                  bool turnForward)
{
    for (POSITION pos = candidates.GetHeadPosition(); pos != nullptr;) {
        T* triangle = candidates.GetNext(pos);
        if (triangle == nullptr) continue;
        const int* v = triangle->Vertex;
        for (int view = 0; view < 3 && !triangle->Ignore; ++view) {
            SSEPoint centroid = detail::CentroidOf(Vertices[v[0]], Vertices[v[1]], Vertices[v[2]]);
            detail::TurnAboutX(centroid, detail::kViewTurns[view], turnForward);
            if (detail::ValueAtCentredCell(masks[view], centroid.x, centroid.y) > 0.5f) triangle->Ignore = true;
        }
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::DeleteTrianglesInArea(CSSE3dPolygon polygon, CSSEMatrix* heightStraight,
                                                   CSSEMatrix* heightMinus, CSSEMatrix* heightPlus,
                                                   CSSEMatrix* maskStraight, CSSEMatrix* maskMinus,
                                                   CSSEMatrix* maskPlus, bool useMax, bool flag)
{
    CSSEMatrix* heights[3] = {heightStraight, heightMinus, heightPlus};
    for (const CSSEMatrix* m : {heightStraight, heightMinus, heightPlus, maskStraight, maskMinus, maskPlus}) {
        if (!detail::Readable(m)) return;
    }
    const bool wasFinalized = Self().LeaveFinalizedState();
    // The new state, scaled up, gives the masks that confirm a deletion.
    CSSEMatrix scaled[3];
    for (int view = 0; view < 3; ++view) {
        scaled[view].CopyFromSSEMatrix(*heights[view]);
        scaled[view].ScalarMultiply(40.0f);
    }
    AffectedListType affected;
    TriangleListType clean;
    float minima[3];
    float maxima[3];
    FindAffectedTriangles(&affected, &clean, &polygon, heightStraight, heightMinus, heightPlus, maskStraight,
                          maskMinus, maskPlus, minima, maxima, useMax, flag);
    CheckAndKillIgnoredTrianglesFromTriangleList();
    FindAffectedTrianglesInArea(&affected, &clean, heightStraight, heightMinus, heightPlus, maskStraight, maskMinus,
                                maskPlus, minima, maxima, useMax, flag);
    TriangleListType candidates;
    CopyIgnoredTrianglesToList(&candidates);
    for (POSITION pos = affected.GetHeadPosition(); pos != nullptr;) {
        const AffectedRecord* record = affected.GetNext(pos);
        if (record->CornerCount > 0 && !record->Triangle->Ignore) candidates.AddTail(record->Triangle);
    }
    CSSEMatrix masks[3];
    for (int view = 0; view < 3; ++view) BuildMaskFromMatrix(&scaled[view], &masks[view], !useMax);
    MarkConfirmedByMasks(candidates, masks, flag);
    CheckAndKillIgnoredTrianglesFromTriangleList();
    DeleteTrianglesWithTwoNULLNeighbours();
    ClearAffectedList(&affected);
    Self().ReturnToFinalizedState(wasFinalized);
}

} // namespace vek
