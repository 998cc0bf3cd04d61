#pragma once

#include <smmintrin.h>

#include "vekdll/export.h"
#include "vekdll/fields/img_from_to_array.h"
#include "vekdll/fields/pixel_store.h"
#include "vekdll/platform/c_string.h"
#include "vekdll/platform/framework_exceptions.h"

class CArchive;
class CSSE3dPolygon;
class CSSEcharMatrix;

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
    // a field whose source is forgotten afterwards (never used nor destroyed
    // again). CopyFromSSEMatrix is the deep copy. A copy
    // constructor would create a second owner implicitly, on every pass by
    // value, so there is none.
    CSSEMatrix(const CSSEMatrix&) = delete;
    CSSEMatrix& operator=(const CSSEMatrix& other) = default;
    // Moving is the safe form of that use: the destination takes over every
    // member of `other` in the same way, and `other` is left empty (as after
    // Reset, with an empty span array), so that it releases nothing. So a
    // field can be returned from a function and assigned from a temporary
    // without two owners of one image. Like the copy, a move releases nothing
    // that the destination held, which may still be shared with the field it
    // was assigned from: a field that owns its image alone is moved out first
    // (into a field that goes out of scope), which releases image and spans.
    CSSEMatrix(CSSEMatrix&& other) noexcept;
    CSSEMatrix& operator=(CSSEMatrix&& other) noexcept;

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

    // ---------------------------------------------------------------- arithmetic with a constant (sse_matrix_constant_ops.cpp)
    // In place over every lane of every line, padding included. Each test
    // keeps its own tolerance: they differ from one operation to the next.
    // The amount of p, root of p * p, not a cleared sign bit.
    void Absolute();
    // 0 - p, so that 0 becomes +0.
    void InvertSign();
    void OffsetMatrix(float offset);
    // p + offset where p > threshold, or where p < threshold.
    void OffsetMatrixAbove(float threshold, float offset);
    void OffsetMatrixBelow(float threshold, float offset);
    // OffsetMatrixAbove(0.005, offset): raises the pixels holding data; a
    // negative value counts as no data here.
    void LiftWhereNonZero(float offset);
    void ScalarMultiply(float factor);
    // `replacement` where -tolerance < value - p < tolerance; 0.002 by default.
    void ReplaceValueWithValue(float value, float replacement);
    void ReplaceValueWithValue(float value, float replacement, float tolerance);
    // In row y only (clamped to the field): `value` where p > threshold.
    void ReplaceLineAbove(float threshold, float value, int y);

    // ---------------------------------------------------------------- thresholds and erasures (sse_matrix_thresholds.cpp, sse_matrix_erase_frame.cpp)
    // `value` where p > threshold (p < threshold), 0 elsewhere. With a first
    // column, every lane of the columns before it becomes 0.
    void TresholdAbove(float threshold, float value);
    void TresholdBelow(float threshold, float value);
    void TresholdAbove(float threshold, float value, int firstColumn);
    void TresholdBelow(float threshold, float value, int firstColumn);
    // `value` where p > threshold; the other pixels stay.
    void TresholdAboveKeep(float threshold, float value);
    // 0 where p > threshold, or where p < threshold.
    void ErasePixelsGreater(float threshold);
    void ErasePixelsLower(float threshold);
    // Keeps only pixels within tolerance of `value`, in blocks of four rows:
    // one pixel outside the tolerance clears all four lanes of its vector.
    void EraseOtherValuePixels(float value, float tolerance);
    // Inner pixels (the outermost frame is never touched) that differ from
    // `value` become `value` where `other` is greater (Max) or smaller (Min).
    // A null `other` or a field narrower than 3 changes nothing.
    void EraseWithMatrixMax(const CSSEMatrix* other, float value);
    void EraseWithMatrixMin(const CSSEMatrix* other, float value);
    // Peels one pixel off every area of data: an inner pixel with an exactly
    // 0 four-neighbour becomes 0. The tests read the field as it was, so that
    // pixels peeled in this pass don't peel their neighbours. `removed`, if
    // given and of the same size, receives the values that were peeled.
    void EraseFrame(CSSEMatrix* removed);
    // The same with the four-neighbours read from `mask`; its pixel at the
    // centre isn't looked at.
    void EraseFrameWithMask(const CSSEMatrix* mask);

    // ---------------------------------------------------------------- combination with a second field (sse_matrix_combine.cpp, sse_matrix_stencil.cpp)
    // Over the lines and vectors that both fields have; the rest of this
    // field stays as it is. Where a second field is smaller than this one,
    // its pixels are never read beyond its own lines.
    void AddMatrix(const CSSEMatrix& q);
    void SubMatrix(const CSSEMatrix& q);
    // p - q where p > 0; pixels at or below 0 stay.
    void SubMatrixValidate(const CSSEMatrix& q);
    // p + max(0, q - offset), scaled by `factor` in the normed form.
    void AddMatrixOffseted(const CSSEMatrix& q, float offset);
    void AddMatrixOffsetedNormed(const CSSEMatrix& q, float offset, float factor);
    // max(0, q' - offset) * b + p * a, with q' = 0 where p < 0.001.
    void AddMatrixOffsetedConstrained(const CSSEMatrix& q, float offset, float a, float b);
    void MaximumOf(const CSSEMatrix& q);
    void MinimumOf(const CSSEMatrix& q);
    // Root of (q * q + p * p).
    void CombineAbsolute(const CSSEMatrix& q);
    // Root of (p * q)^2, the amount of the product.
    void CombineMultiplicative(const CSSEMatrix& q);
    // 0 where q < 0.1; the Validate form leaves pixels at or below 0 alone.
    void MaskOut(const CSSEMatrix& q);
    void MaskOutAndValidate(const CSSEMatrix& q);
    // 0 where q < threshold. The Below form is the same operation under a
    // second name: it does not invert the test.
    void StencilThreshAbove(const CSSEMatrix& q, float threshold);
    void StencilThreshBelow(const CSSEMatrix& q, float threshold);
    // 0 where the mask, read at (x * scaleX + 0.5, y * scaleY + 0.5)
    // truncated and clamped, is below 5. At scale 1 in both directions the
    // mask is applied vector by vector.
    void Stencil(const CSSEMatrix& q, float scaleX, float scaleY);
    // The same with a byte mask, read as signed, always pixel by pixel; at
    // scale 1 it reads the mask at (x, y), clamped to the mask.
    void Stencil(const CSSEcharMatrix& q, float scaleX, float scaleY);
    // Re-creates this field at the smaller of the two sizes as a - b, then
    // drops negative and/or positive differences.
    void CalcDifferenceMatrixConstrained(const CSSEMatrix& a, const CSSEMatrix& b, bool dropNegative, bool dropPositive);

    // ---------------------------------------------------------------- counts and sums (sse_matrix_statistics.cpp)
    // Over every lane of every line, padding included.
    int NumValuesAbove(float threshold) const;
    int NumValuesBelow(float threshold) const;
    // p > q (p < q) over the vectors both fields have; 0 for a null q.
    int NumValuesAbove(const CSSEMatrix* q) const;
    int NumValuesBelow(const CSSEMatrix* q) const;
    // Four single-precision partial sums, one per lane, lines in order and x
    // along the line, then added as (l0 + l3) + (l2 + l1).
    float IntegrateMatrix() const;
    // The same over the amounts, each multiplied by a * b in the second form.
    float IntegrateMatrixAbsolute() const;
    float IntegrateMatrixAbsolute(float a, float b) const;
    // The partial sums of the amounts, added as ((l0 + l1) + l2) + l3.
    float CalcAbsSum() const;

    // ---------------------------------------------------------------- extreme values (sse_matrix_extremes.cpp)
    // Searches start at 1000000 for a minimum and -1000000 for a maximum,
    // which is also the result where nothing was searched. The whole-field
    // search leaves out the first and the last line and the three outermost
    // columns on each side; ExcludeZero skips -0.002 < p < 0.002.
    void CalcMinMaxValues(float* max, float* min) const;
    void CalcMinMaxValuesExcludeZero(float* max, float* min) const;
    // Lines (y0 >> 2) + 1 up to (y1 >> 2) - 1 and vectors x0 + 3 up to
    // x1 - 3, both ends excluded, after clamping the corners to the field:
    // the patch is always shrunk by a line and three columns at each side.
    // ExcludeZero skips -0.005 < p < 0.005.
    void CalcMaxValueOfPatch(float* out, int x0, int x1, int y0, int y1) const;
    void CalcMinValueOfPatch(float* out, int x0, int x1, int y0, int y1) const;
    void CalcMinValueOfPatchExcludeZero(float* out, int x0, int x1, int y0, int y1) const;
    // The first column and row, scanned inwards, with a pixel p > value
    // (above) or p < value. minX and minY start their scans at 1; without a
    // hit maxX and maxY are 0, minX and minY the last column and row.
    void CalcBoundingBox(int& minX, int& minY, int& maxX, int& maxY, float value, bool above) const;

    // ---------------------------------------------------------------- filters and transforms (sse_matrix_morphology.cpp, _smoothing, _chamfer, _thinning, _derivatives)
    // Four-neighbourhood maximum (minimum): each inner pixel becomes the
    // larger (smaller) of itself and its neighbours above, below, left and
    // right. Built in a cleared temporary field, so the outermost frame and
    // the padding become 0; a field under 3 x 3 becomes 0 altogether.
    void SimpleMaximumFilter();
    void SimpleMinimumFilter();
    // CFilters::Median3x3 over the whole field: the frame is kept, the
    // padding becomes 0.
    void SimpleMedianFilter();
    // From src into this field, over the lines and vectors both have: first
    // the mean of three neighbouring columns, then, over it, the undivided
    // sum of four rows of src, written one row down (two with `lower`). Rows
    // that the sums don't reach keep the means, their first and last column
    // what they held. src may be this field.
    void BoxFilter(const CSSEMatrix& src, bool lower);
    // Correlates this field with `mask` into `out`, centred on the mask; the
    // frame that the mask can't reach keeps what `out` held (`out` is
    // created if its size differs). Divided by the mask's absolute sum with
    // `normalize`, unguarded against a sum of 0. An empty mask, or one at
    // least as wide or as high as this field, changes nothing. `out` may be
    // this field or the mask.
    void MaskFilter(CSSEMatrix& out, const CSSEMatrix& mask, bool normalize);
    // 3-4 chamfer distance from the pixels at 1; pixels at 0 are far away
    // (99999.9), other values are upper bounds. In units of 3 per pixel step.
    // A frame of 4 columns on the left, 5 on the right, one line at the top
    // and two at the bottom is cleared to 0.
    void Chamfer();
    // Thins the pixels above `threshold` to a skeleton of width one, left as
    // 1.0 on 0; the outermost frame becomes 0.
    void ZhangSuen(float threshold);
    // Forward first differences in place over all lanes; the last column
    // (line) keeps its values.
    void CalcDerivativeX();
    void CalcDerivativeY();

    // ---------------------------------------------------------------- resampling and resizing (sse_matrix_geometry_scale.cpp, sse_matrix_geometry_resize.cpp)
    // Each builds the new image beside the old one and then takes it over, so
    // that a failed allocation leaves the field as it was. RowProcessed and
    // the span array stay. A field without an image, or a negative size or
    // count, leaves the field alone.

    // Bilinear resampling to newX x newY. New pixel (x, y) lies at
    // (x * sx, y * sy) of the old image, sx = SizeX / newX and sy = SizeY /
    // newY in single precision; the neighbours to the right and below are
    // clamped to the field. Padding lanes of the new image are 0.
    void ScaleMatrix(int newX, int newY);
    // The same resampling, bit for bit.
    void ScaleMatrix_SSE(int newX, int newY);
    // n more columns on one side, each row of them holding the value of
    // pixel (0, 0) (left) or of the last pixel of row 0 (right).
    void ElongateLeft(int n);
    void ElongateRight(int n);
    // A field larger by nx columns on either side and ny rows above and
    // below, filled with v, padding included, around the old image.
    void EmbedinValueFrame(int ny, int nx, float v);

    // ---------------------------------------------------------------- area fills (sse_matrix_geometry_fill.cpp)
    // Columns run from x0 up to but not including x1, both clamped to the
    // field, so the last column is out of reach. Rows are handled in whole
    // lines of four wherever possible, which makes the row bounds coarse.

    // Fills the rectangle. The first and the last line are written with one
    // vector each: lanes outside the rectangle are not preserved but take
    // the lanes of column x0 (first line) or x1 (last line) in reverse order.
    // Where both lines coincide the last line wins. A y1 that starts a line
    // leaves that line alone.
    void FillArea(int x0, int y0, int x1, int y1, float v);
    // Fills whole lines only: from the line after (y0 >> 2) - 1 to the line
    // before (y1 >> 2) + 1, both clamped before the step, so line 0 is never
    // filled.
    void FillAreaApprox(int x0, int y0, int x1, int y1, float v);
    // A half-cylinder lying along y: column by column a circle of radius
    // r = (x1 - x0) * width * 0.5 is sampled at t = r - step, r - 2 step, ...
    // and sqrt(max(0, r^2 - t^2)) (negated if `negative`) is written into all
    // lines from (y0 >> 2) - 1 to before (y1 >> 2) + 1, clamped.
    void FillAreaZylindrical(int x0, int y0, int x1, int y1, float step, float width, bool negative);
    // Overwrites nx columns on the left and nx + 1 on the right, and ny >> 2
    // lines at the top and (ny >> 2) + 1 at the bottom, padding included.
    void RemoveFrameArtefacts(int nx, int ny, float v);

    // ---------------------------------------------------------------- scans (sse_matrix_geometry_scan.cpp)
    // A pixel p is a hit when it lies beyond the threshold t: below it, or
    // above it when `above` is true. The vector scans stop at the first
    // vector with a hit and report its lowest hitting lane.

    // Column by column from 20 to SSESizeX - 21, in each column the lines
    // from 5 to SSESizeY - 6, so a margin of 20 columns and 20 rows is never
    // looked at. Here a pixel equal to t is a hit as well. Without a hit x
    // and y are 0.
    void FindFirstPoint(int& x, int& y, float t, bool above);
    // Up column x from line SSESizeY - 2 to line 2; y is 0 without a hit or
    // for a column outside the field.
    void FindFirstPointLined(int x, int& y, float t, bool above);
    // Along row y (clamped) from x0 rising to x1, or from x0 falling to x1,
    // both inclusive; the first hit's column, or x1 without one.
    int FindPointFromLeft(int x0, int x1, int y, float t, bool above);
    int FindPointFromRight(int x0, int x1, int y, float t, bool above);
    // Paints column x upward with v, four rows at a time, from line
    // SSESizeY - 2 down to the line after (clamp(yStop) >> 2) + 1, and stops
    // at the first line with a hit, which is left as it is: y becomes its
    // first row. y is not touched when nothing hits, nor for a column outside
    // the field.
    void DrawFirstPointLined(int x, float t, bool above, float v, int& y, int yStop);
    // The same with a mask of this field's size, float or byte: a non-zero
    // mask pixel protects its pixel, which keeps its value while the lanes
    // around it are painted. The mask does not stop the scan, which still
    // ends only at a hit. A mask of another size leaves the field alone.
    void DrawFirstPointLinedUseMask(int x, float t, bool above, float v, int& y, CSSEMatrix& mask, int yStop);
    void DrawFirstPointLinedUseMask(int x, float t, bool above, float v, int& y, CSSEcharMatrix& mask, int yStop);

    // ---------------------------------------------------------------- cuts along a curve (sse_matrix_bow_cuts.cpp)
    // A bow is a line that runs roughly along x through the field; these
    // overwrite with v what lies beyond it. The first three resample the bow
    // itself first, which changes the line passed in: to a spacing of 0.5 as
    // a closed line (LeftOfBow) or as an open one, without its last point
    // (the OpenBow forms), so that no column is skipped. Then, with k =
    // max(RowProcessed - the bow's largest y truncated, 1), each point
    // (x, y), rounded to column c and row r, clears in column c:
    //   LeftOf...:  for r < SizeY, SizeY - r rows from row r + k + shift down;
    //   RightOf...: for r > 0, r rows from row k + shift down.
    // Rows and columns beyond the field pile up on its rim.
    void RemoveImageValuesLeftOfBow(CSSE3dPolygon& bow, float v, int shift);
    void RemoveImageValuesLeftOfOpenBow(CSSE3dPolygon& bow, float v, int shift);
    void RemoveImageValuesRightOfOpenBow(CSSE3dPolygon& bow, float v, int shift);
    // Every pixel whose (x, y) is not in the inner area of the bow taken as a
    // closed line (PointInLineInnerArea, step 1) becomes v: all of them for
    // a bow of one or two points, none for a bow without points. The bow
    // isn't resampled; `shift` has no effect.
    void RemoveImageValuesOutSideOfBow(CSSE3dPolygon& bow, float v, int shift);

    // ---------------------------------------------------------------- persistence (sse_matrix_archive.cpp)
    // SizeX and SizeY as int, then every vector column by column, within a
    // column line by line, four float lanes each, padding included. Loading
    // re-creates the field. A size that is negative, beyond kMaxSizeY or
    // larger than the stream still holds throws CArchiveException (badIndex)
    // before anything is allocated, and leaves the field as it was.
    void Serialize(CArchive& ar);
    // false, without a message, when the file cannot be opened; the field is
    // then unchanged. An archive that fails to load throws as Serialize does.
    bool Load(const CString& path);
    bool Store(const CString& path);

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
    // Releases this image and takes over that of `other`, sizes included,
    // leaving `other` empty. RowProcessed and the span array stay.
    void TakeImageFrom(CSSEMatrix& other);
    void Elongate(int n, bool left);

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
