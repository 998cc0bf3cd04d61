#pragma once

#include <smmintrin.h>

#include "vekdll/export.h"
#include "vekdll/fields/img_from_to_array.h"
#include "vekdll/fields/pixel_store.h"
#include "vekdll/platform/framework_exceptions.h"

// The float raster of the library: height fields, distance images and masks.
//
// Storage is laid out for four-lane arithmetic. Four vertically adjacent
// pixels form one __m128: pixel (x, y) is lane y & 3 of vector x of line
// y >> 2. A line holds SSESizeX vectors; there are (SizeY >> 2) + 1 lines, so
// at least one lane behind the last image row is padding. Padding lanes are
// real storage: they are cleared, filled and copied with the rest.
//
// Lines are grouped into blocks ("fields") of 32 contiguous lines; the line
// table MatrixData points at every line. Whole-field operations walk the line
// table and must not assume that lines of different blocks are adjacent.
//
// A value of 0 means that a pixel holds no data.
class VEKDLL_API CSSEMatrix {
public:
    static constexpr int kLinesPerField = 32;
    // The block table has a fixed length, which bounds a field to 8000 lines,
    // that is to 31999 rows.
    static constexpr int kMaxFields = 250;
    static constexpr int kMaxSizeY = kMaxFields * kLinesPerField * 4 - 1;

    // ---------------------------------------------------------------- life cycle (sse_matrix_storage.cpp)
    CSSEMatrix() = default;
    ~CSSEMatrix();

    // Assignment copies every member as it stands, pointers included: both
    // objects then share blocks, line table and span array, and the
    // destination's own image (if any) is not released. It serves for moving
    // a field whose source is forgotten afterwards (for instance by assigning
    // an empty field to it). CopyFromSSEMatrix is the deep copy. A copy
    // constructor would create a second owner implicitly, on every pass by
    // value, so there is none.
    CSSEMatrix(const CSSEMatrix&) = delete;
    CSSEMatrix& operator=(const CSSEMatrix& other) = default;

    // Allocates a field of sizeX x sizeY with every lane 0. Any old image is
    // released first, whatever its size. Throws CInvalidArgException, leaving
    // the field as it was, for a negative size or more than kMaxSizeY rows;
    // CMemoryException passes through with the sizes already set and no image.
    void Create(int sizeX, int sizeY);
    // The same allocation, with undefined contents (padding included).
    void CreateNoClear(int sizeX, int sizeY);
    // Create with the sizes of `other`; its pixels are not copied.
    void CreateSimilar(const CSSEMatrix& other);
    // Releases blocks and line table; sizes and RowProcessed stay, so the
    // field still reports the size of the image it no longer holds.
    void FreeImageMemoryOnly();
    // FreeImageMemoryOnly, then all sizes and RowProcessed become 0.
    void Reset();

    // ---------------------------------------------------------------- sizes and storage
    int GetSizeX() const { return SizeX; }
    int GetSizeY() const { return SizeY; }
    int GetSSESizeX() const { return SSESizeX; }
    int GetSSESizeY() const { return SSESizeY; }
    int GetFields() const { return Fields; }
    int GetLinesPerField() const { return kLinesPerField; }
    // No bounds test: i must lie in 0 ... kMaxFields - 1.
    __m128* GetField(int i) const { return Field[i]; }
    __m128** GetMatrixDataDirectly() const { return MatrixData; }
    CImgFromToArray& GetFromToArray() { return FromToArray; }
    const CImgFromToArray& GetFromToArray() const { return FromToArray; }
    // The last row a row-wise producer has finished; kept raw, never checked.
    int GetRowProcessed() const { return RowProcessed; }
    void SetRowProcessed(int row) { RowProcessed = row; }

    // ---------------------------------------------------------------- pixels (sse_matrix_pixels.cpp)
    // Coordinates are clamped to the field, never rejected. The single-pixel
    // forms are inline because rasterisers call them once per pixel.
    float GetPoint(int x, int y) const { return *ClampedPixel(x, y); }
    float GetPointValue(int x, int y) const { return GetPoint(x, y); }
    float* GetPointAddress(int x, int y) const { return ClampedPixel(x, y); }
    void SetPoint(int x, int y, float v) { *ClampedPixel(x, y) = v; }
    void SetPointMax(int x, int y, float v) { vek::detail::StorePixel(*ClampedPixel(x, y), v, vek::detail::PixelStore::Maximum); }
    void SetPointMin(int x, int y, float v) { vek::detail::StorePixel(*ClampedPixel(x, y), v, vek::detail::PixelStore::Minimum); }

    // Writes with a footprint clamp the centre, not the footprint: asked for
    // at the rim, the footprint moves inward as a whole and keeps its shape.
    // The forms clamped at 1 need a field of at least 3 x 3, the 5 x 5 forms
    // one of at least 5 x 5; on a smaller field the caller must not use them.
    void SetPointAndLeftOfPoint(int x, int y, float v);
    void SetPointAndRightOfPoint(int x, int y, float v);
    void SetTriplePointMax(int x, int y, float v);
    void SetTriplePointMin(int x, int y, float v);
    void SetCross(int x, int y, float v);
    void SetCrossMax(int x, int y, float v);
    void SetCrossMin(int x, int y, float v);
    void Set3x3BoxPoint(int x, int y, float v);
    void Set3x3BoxPointMax(int x, int y, float v);
    void Set3x3BoxPointMin(int x, int y, float v);
    void Set5x5BoxPointMax(int x, int y, float v);
    void Set5x5BoxPointMin(int x, int y, float v);

    // Bilinear read. The integer corner is clamped to 1 ... Size - 2, so the
    // outermost pixel frame is reached only as the far corner with a weight
    // up to the rim. The flag is accepted for callers and has no effect.
    // Needs a field of at least 3 x 3.
    float GetPixelPreciseFloat(float x, float y, bool ignored = false) const;

    // ---------------------------------------------------------------- whole-field fills (sse_matrix_fill.cpp)
    // Every lane of every line, padding included.
    void Fill(float v);
    void SetAllPixelValuesToZero();
    // One row (y clamped): one lane of each of the SizeX vectors.
    void ClearRow(int y, float v);
    // Copies the row RowProcessed (clamped to the field; row 0 if negative)
    // into every storage row below it, padding lanes included.
    void FillMatrixWithProcessedRow();

    // ---------------------------------------------------------------- copies (sse_matrix_copy.cpp)
    // Deep copy of every line, padding included; re-creates this field if the
    // sizes differ. An empty source changes nothing. RowProcessed and the span
    // array are not copied.
    void CopyFromSSEMatrix(const CSSEMatrix& src);
    // Clears this field, then, if src is at least as wide and as high, copies
    // the part of src around its centre: both centres at size >> 1 coincide.
    void CopyFromSSEMatrixCentered(const CSSEMatrix& src);
    // The same mapping without clearing, keeping the larger or smaller value;
    // a source that is too small leaves this field untouched.
    void CopyFromSSEMatrixCenteredMaximum(const CSSEMatrix& src);
    void CopyFromSSEMatrixCenteredMinimum(const CSSEMatrix& src);
    // Narrows a row-pointer array of doubles. With an image: a source rows of
    // b columns, pixel (j, i) = src[i][j], clamped. Without: Create(b, a) and
    // then the two loop bounds exchanged (b rows of a columns are read). The
    // asymmetry is long-standing behaviour that callers rely on.
    void CopyFromMatrix(double** src, int a, int b);

    // ---------------------------------------------------------------- arithmetic and combination (sse_matrix_arithmetic*.cpp)

    // ---------------------------------------------------------------- filters and transforms (sse_matrix_filters*.cpp)

    // ---------------------------------------------------------------- geometry and persistence (sse_matrix_geometry*.cpp, sse_matrix_archive.cpp)

protected:
    // Address of pixel (x, y) without any clamp.
    float* PixelAddress(int x, int y) const
    {
        return reinterpret_cast<float*>(MatrixData[y >> 2] + x) + (y & 3);
    }
    float* ClampedPixel(int x, int y) const
    {
        return PixelAddress(vek::detail::ClampIndex(x, 0, SizeX - 1), vek::detail::ClampIndex(y, 0, SizeY - 1));
    }

private:
    void AllocateStorage(int sizeX, int sizeY);
    void StoreInFootprint(int x, int y, const vek::detail::Footprint& shape, float v, vek::detail::PixelStore how);
    void StoreCentered(const CSSEMatrix& src, vek::detail::PixelStore how);

protected:
    int SizeX = 0;
    int SizeY = 0;
    int SSESizeX = 0;
    int SSESizeY = 0;
    int RowProcessed = 0;
    int Fields = 0;
    __m128* Field[kMaxFields] = {};
    __m128** MatrixData = nullptr;
    CImgFromToArray FromToArray;
};
