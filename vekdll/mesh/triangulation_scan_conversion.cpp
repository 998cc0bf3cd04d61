// A mesh back into a raster: every triangle sampled in its own parameters
// and each sample stamped with a brush that keeps the higher or the lower
// value per pixel. The Max and Min forms are one body over KeepHigher and
// KeepLower.

#include <algorithm>
#include <cmath>

#include <smmintrin.h>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/mesh/scan_sampling.h"
#include "vekdll/mesh/triangulation.h"
#include "vekdll/polygons/sse_3d_polygon.h"

using vek::detail::CellOf;
using vek::detail::RasterCell;
using vek::detail::SampleMeshTriangle;
using vek::detail::ZOf;

namespace {

enum class Brush { Cross, Box3x3, Box5x5 };

// How far a brush reaches from its centre.
int Reach(Brush brush)
{
    return brush == Brush::Box5x5 ? 2 : 1;
}

struct KeepHigher {
    // What the raster holds where no triangle reached, before it becomes 0.
    static constexpr float kBackground = -999999.9f;
    static float Pick(float held, float value) { return std::max(held, value); }
    static void Stamp(CSSEMatrix& field, Brush brush, int col, int row, float value)
    {
        switch (brush) {
        case Brush::Cross: field.SetCrossMax(col, row, value); break;
        case Brush::Box3x3: field.Set3x3BoxPointMax(col, row, value); break;
        case Brush::Box5x5: field.Set5x5BoxPointMax(col, row, value); break;
        }
    }
};

struct KeepLower {
    static constexpr float kBackground = 999999.9f;
    static float Pick(float held, float value) { return std::min(held, value); }
    static void Stamp(CSSEMatrix& field, Brush brush, int col, int row, float value)
    {
        switch (brush) {
        case Brush::Cross: field.SetCrossMin(col, row, value); break;
        case Brush::Box3x3: field.Set3x3BoxPointMin(col, row, value); break;
        case Brush::Box5x5: field.Set5x5BoxPointMin(col, row, value); break;
        }
    }
};

// truncate(v) for a count of pixels: 0 for anything below 1 or not a
// number, and no more than an int holds.
int PixelCount(float v)
{
    if (!(v >= 1.0f)) return 0;
    if (v >= 2147483520.0f) return 2147483520;
    return static_cast<int>(v);
}

__m128 ResolutionUnit(const CHTriangulation& mesh)
{
    float x, y, z;
    mesh.GetScanConvResolution(x, y, z);
    return _mm_setr_ps(x, y, 1.0f, 1.0f);
}

// Every sample of every triangle that `take` lets pass.
template <class Take, class Visit>
void SampleMesh(const CHTriangulation& mesh, Take take, Visit visit)
{
    const float diagonal = mesh.GetScanConvDiagonal();
    for (int i = 0; i < mesh.GetNumTriangles(); ++i) {
        const t_htriangle& triangle = *mesh.GetTriangle(i);
        if (take(triangle)) SampleMeshTriangle(triangle, diagonal, visit);
    }
}

bool EveryTriangle(const t_htriangle&)
{
    return true;
}

// A raster of its own, spanning (min, max), heights relative to min.z.
template <class Keep>
void ScanConvertFramed(const CHTriangulation& mesh, CSSEMatrix* field, float offset, const SSEPoint& min,
                       const SSEPoint& max)
{
    if (field == nullptr) return;
    const __m128 unit = ResolutionUnit(mesh);
    float rx, ry, rz;
    mesh.GetScanConvResolution(rx, ry, rz);
    const int width = PixelCount((max.x - min.x) / rx + 0.5f);
    const int height = PixelCount((max.y - min.y) / ry + 0.5f);
    if (width <= 0 || height <= 0 || mesh.GetNumTriangles() == 0) return;
    field->CreateNoClear(width, height);
    field->Fill(Keep::kBackground);
    const __m128 origin = min.sse;
    // The centre keeps off the outermost rows and columns, which only the
    // arms of the cross reach.
    SampleMesh(mesh, EveryTriangle, [&](__m128 p) {
        const __m128 q = _mm_sub_ps(p, origin);
        const RasterCell cell = CellOf(q, unit);
        if (cell.col >= 1 && cell.col < width - 1 && cell.row >= 1 && cell.row < height - 1) {
            Keep::Stamp(*field, Brush::Cross, cell.col, cell.row, ZOf(q) + offset);
        }
    });
    field->ReplaceValueWithValue(Keep::kBackground, 0.0f, 1.0f);
}

// Into the raster as it stands, in absolute coordinates, up to the mesh's
// maximum corner.
template <class Keep, class Take>
void ScanConvertInto(const CHTriangulation& mesh, CSSEMatrix* field, Brush brush, Take take)
{
    if (field == nullptr || field->GetMatrixDataDirectly() == nullptr) return;
    SSEPoint max;
    mesh.GetMaxPoint(max);
    float rx, ry, rz;
    mesh.GetScanConvResolution(rx, ry, rz);
    const int limitX = std::min(PixelCount(max.x / rx + 0.5f), field->GetSizeX());
    const int limitY = std::min(PixelCount(max.y / ry + 0.5f), field->GetSizeY());
    if (limitX < 1 || limitY < 1 || mesh.GetNumTriangles() == 0) return;
    const int reach = Reach(brush);
    const __m128 unit = ResolutionUnit(mesh);
    SampleMesh(mesh, take, [&](__m128 p) {
        const RasterCell cell = CellOf(p, unit);
        if (cell.col >= reach && cell.col < limitX - reach && cell.row >= reach && cell.row < limitY - reach) {
            Keep::Stamp(*field, brush, cell.col, cell.row, ZOf(p));
        }
    });
}

Brush NoDeleteBrush(bool box, bool large)
{
    if (!box) return Brush::Cross;
    return large ? Brush::Box5x5 : Brush::Box3x3;
}

// Only P0 decides, and the bounds are strict: a triangle is not clipped at
// the band.
auto StartsInBand(float yLow, float yHigh)
{
    return [yLow, yHigh](const t_htriangle& t) { return yLow < t.P0->y && t.P0->y < yHigh; };
}

// Single pixels over a fill just above the mesh, placed by the mesh's scale
// rather than its scan grid; then 0 outside the polygon, which is moved into
// raster coordinates for the test and left there.
template <class Keep>
void ScanConvertThroughLine(const CHTriangulation& mesh, CSSEMatrix* field, CSSE3dPolygon* polygon, float offset)
{
    if (field == nullptr || polygon == nullptr) return;
    polygon->CalcBoundingBox();
    SSEPoint min, max;
    mesh.GetMinPoint(min);
    mesh.GetMaxPoint(max);
    float rx, ry, rz;
    mesh.GetScanConvResolution(rx, ry, rz);
    const int width = PixelCount((max.x - min.x) / rx + 0.5f);
    const int height = PixelCount((max.y - min.y) / ry + 0.5f);
    if (width < 1 || height < 1 || mesh.GetNumTriangles() == 0) return;
    field->CreateNoClear(width, height);
    field->Fill(max.z + 0.1f);

    const __m128 origin = min.sse;
    const __m128 scale = _mm_setr_ps(mesh.GetScaleX(), mesh.GetScaleY(), 1.0f, 1.0f);
    SampleMesh(mesh, EveryTriangle, [&](__m128 p) {
        const __m128 q = _mm_sub_ps(p, origin);
        const RasterCell cell = CellOf(q, scale);
        if (cell.col >= 0 && cell.col < width && cell.row >= 0 && cell.row < height) {
            float* pixel = field->GetPointAddress(cell.col, cell.row);
            *pixel = Keep::Pick(*pixel, ZOf(q) + offset);
        }
    });

    polygon->ShiftLine(-min.x / mesh.GetScaleX(), -min.y / mesh.GetScaleY(), 0.0f);
    const float columns = static_cast<float>(width);
    const float rows = static_cast<float>(height);
    for (float x = 0.0f; x < columns; x += 1.0f) {
        for (float y = 0.0f; y < rows; y += 1.0f) {
            SSEPoint point;
            point.sse = _mm_setr_ps(x, y, 0.0f, 0.0f);
            if (!polygon->PointInLineInnerArea(point, 2)) {
                field->SetPoint(static_cast<int>(x), static_cast<int>(y), 0.0f);
            }
        }
    }
}

} // namespace

void CHTriangulation::SetScanConvResolution(float x, float y, float z)
{
    ScanConvResolutionX = x;
    ScanConvResolutionY = y;
    ScanConvResolutionZ = z;
    ScanConvDiagonal = std::sqrt(x * x + y * y);
}

void CHTriangulation::ScanConvertTriangulationMax(CSSEMatrix* field, float offset)
{
    ScanConvertFramed<KeepHigher>(*this, field, offset, *MinPoint, *MaxPoint);
}

void CHTriangulation::ScanConvertTriangulationMin(CSSEMatrix* field, float offset)
{
    ScanConvertFramed<KeepLower>(*this, field, offset, *MinPoint, *MaxPoint);
}

void CHTriangulation::ScanConvertTriangulationMax_MinMaxPoint(CSSEMatrix* field, float offset, SSEPoint& min,
                                                              SSEPoint& max)
{
    ScanConvertFramed<KeepHigher>(*this, field, offset, min, max);
}

void CHTriangulation::ScanConvertTriangulationMin_MinMaxPoint(CSSEMatrix* field, float offset, SSEPoint& min,
                                                              SSEPoint& max)
{
    ScanConvertFramed<KeepLower>(*this, field, offset, min, max);
}

void CHTriangulation::ScanConvertTriangulationMaxNoDelete(CSSEMatrix* field, bool box, bool large)
{
    ScanConvertInto<KeepHigher>(*this, field, NoDeleteBrush(box, large), EveryTriangle);
}

void CHTriangulation::ScanConvertTriangulationMinNoDelete(CSSEMatrix* field, bool box, bool large)
{
    ScanConvertInto<KeepLower>(*this, field, NoDeleteBrush(box, large), EveryTriangle);
}

void CHTriangulation::ScanConvertTriangulationMaxNoDeleteInYArea(CSSEMatrix* field, float yLow, float yHigh)
{
    ScanConvertInto<KeepHigher>(*this, field, Brush::Cross, StartsInBand(yLow, yHigh));
}

void CHTriangulation::ScanConvertTriangulationMinNoDeleteInYArea(CSSEMatrix* field, float yLow, float yHigh)
{
    ScanConvertInto<KeepLower>(*this, field, Brush::Cross, StartsInBand(yLow, yHigh));
}

void CHTriangulation::ScanConvertThroughLineMax(CSSEMatrix* field, CSSE3dPolygon* polygon, float offset)
{
    ScanConvertThroughLine<KeepHigher>(*this, field, polygon, offset);
}

void CHTriangulation::ScanConvertThroughLineMin(CSSEMatrix* field, CSSE3dPolygon* polygon, float offset)
{
    ScanConvertThroughLine<KeepLower>(*this, field, polygon, offset);
}
