#pragma once

#include <smmintrin.h>

#include <vector>

#include "vekdll/export.h"
#include "vekdll/fields/int_vector.h"
#include "vekdll/fields/line_blocks.h"
#include "vekdll/fields/pixel_store.h"

class CArchive;
class CSSEMatrix;

// The signed byte raster: masks for the polygon and stencil code, and fields
// whose x axis is time, which are matched against narrow templates and
// analysed for their humps.
//
// Sixteen vertically adjacent pixels form one __m128i: pixel (x, y) is byte
// y & 15 of vector x of line y >> 4. A line holds SSESizeX = SizeX vectors;
// there are (SizeY >> 4) + 1 lines, so at least one byte behind the last
// image row is padding, and a whole line when SizeY is a multiple of 16.
// Padding bytes are real storage: they are cleared and copied with the rest,
// and the correlation scores count them. Lines come in blocks of 32, as in the
// float field.
//
// All pixel arithmetic is on signed bytes.
class VEKDLL_API CSSEcharMatrix {
public:
    static constexpr int kLinesPerField = vek::detail::kLinesPerBlock;
    static constexpr int kMaxFields = vek::detail::kMaxBlocks;
    // The block table bounds a field to 8000 lines, that is to 127999 rows.
    static constexpr int kMaxSizeY = kMaxFields * kLinesPerField * 16 - 1;

    // ---------------------------------------------------------------- life cycle (sse_char_matrix_storage.cpp)
    CSSEcharMatrix() = default;
    CSSEcharMatrix(int sizeX, int sizeY);
    // Deep copies: CopyFromOtherMatrix and CopyFromOtherMatrixLimitedX.
    CSSEcharMatrix(const CSSEcharMatrix& src);
    CSSEcharMatrix(const CSSEcharMatrix& src, int x0, int x1);
    ~CSSEcharMatrix();

    // Assignment copies every member as it stands, pointers included, like
    // that of CSSEMatrix: both objects then share blocks and line table, and
    // the destination's own image (if any) is not released. It serves for
    // moving a field whose source is forgotten afterwards (never used nor
    // destroyed again). The copy constructor is the deep copy.
    CSSEcharMatrix& operator=(const CSSEcharMatrix& other) = default;
    // Moving is the safe form of that use: the destination takes over every
    // member of `other` in the same way, and `other` is left empty, so that it
    // releases nothing. Like the copy, a move releases nothing that the
    // destination held (it may be shared with the field it was assigned
    // from); Free a field that owns its image alone before moving into it.
    CSSEcharMatrix(CSSEcharMatrix&& other) noexcept;
    CSSEcharMatrix& operator=(CSSEcharMatrix&& other) noexcept;

    // Allocates sizeX x sizeY with every byte 0, padding included. Any old
    // image is released first. Throws CInvalidArgException, leaving the field
    // as it was, for a negative size or more than kMaxSizeY rows;
    // CMemoryException passes through with the sizes set and no image.
    void Create(int sizeX, int sizeY);
    // Create with the sizes of the other field; its pixels are not copied.
    void CreateSimilar(const CSSEcharMatrix& other);
    void CreateSimilar(const CSSEMatrix& other);
    // Releases blocks and line table; the sizes stay.
    void Free();

    // ---------------------------------------------------------------- sizes and storage
    int GetSizeX() const { return SizeX; }
    int GetSizeY() const { return SizeY; }
    int GetSSESizeX() const { return SSESizeX; }
    int GetSSESizeY() const { return SSESizeY; }
    int GetFields() const { return Fields; }
    int GetLinesPerField() const { return kLinesPerField; }
    __m128i** GetMatrixDataDirectly() const { return MatrixData; }
    // The smallest score of the latest correlation.
    int GetLastCorrelationError() const { return LastCorrelationError; }

    // ---------------------------------------------------------------- pixels
    // Coordinates are clamped to the field, never rejected. The field must
    // hold an image of at least one pixel.
    char GetPoint(int x, int y) const { return *ClampedPixel(x, y); }
    void SetPoint(int x, int y, char v) { *ClampedPixel(x, y) = v; }
    // Every byte of every line, padding included, becomes the low byte of v.
    void Clear(int v);
    // One row (y clamped): one byte in each of the SizeX vectors.
    void ClearRow(int y, unsigned char v);

    // ---------------------------------------------------------------- copies and conversions (sse_char_matrix_convert.cpp)
    // Create with the sizes of src, then copy every line, padding included,
    // if src holds an image.
    void CopyFromOtherMatrix(const CSSEcharMatrix& src);
    // Columns x0 to x1 of src, both clamped to src's columns. Nothing happens
    // if src has no rows. Columns are copied only if src holds an image and
    // x0 <= x1; for x0 > x1 the field is created with width 0 (the width
    // x1 - x0 + 1 would otherwise be negative).
    void CopyFromOtherMatrixLimitedX(const CSSEcharMatrix& src, int x0, int x1);
    // Create with the sizes of src; v where the float pixel is above (below)
    // t, 0 elsewhere. Padding bytes are 0 whatever the float padding holds.
    void CopyAndTresholdAbove(const CSSEMatrix& src, float t, char v);
    void CopyAndTresholdBelow(const CSSEMatrix& src, float t, char v);
    // this -= b byte by byte, wrapping, over the smaller width and the smaller
    // number of lines.
    void SubMatrix(const CSSEcharMatrix& b);

    // ---------------------------------------------------------------- growing and stacking (sse_char_matrix_combine.cpp)
    // n columns added on the left (right), every byte of them pixel (0, 0)
    // (pixel (SizeX - 1, 0)). No effect for n < 1 or a field without pixels.
    void ElongateLeft(int n);
    void ElongateRight(int n);
    // A field larger by 2 nx columns and 2 ny rows, filled with v, with the
    // old image in the middle. No effect for a negative frame or without an
    // image.
    void EmbedinValueFrame(int ny, int nx, char v);
    // a, b and c stacked in y over the smallest width. The rows of c are
    // taken for as many rows as b has: a taller c is cut, and a lower c
    // repeats its last row. Without c, a and b only.
    void CombineYDir(const CSSEcharMatrix& a, const CSSEcharMatrix& b, const CSSEcharMatrix* c);
    // a and b stacked by whole lines over the larger width: the padding bytes
    // of a stay between the two. Columns that a narrower field lacks stay 0.
    void CombineYDirFast(const CSSEcharMatrix& a, const CSSEcharMatrix& b);
    // Resamples to newX x newY by bilinear interpolation. No effect for a
    // size below 1 or without an image.
    void InterpolateUp(int newX, int newY);

    // ---------------------------------------------------------------- matching (sse_char_matrix_correlation.cpp)
    // This field is the wide one and t the narrow template of the same
    // height. The score of a shift s is the summed byte distance between t and
    // this field's columns s, s + 1, ... over all lines, padding included,
    // divided by t's width: lower is better. Each returns the best shift or
    // -1; on -1 from a failed precondition minScore is left alone.
    //
    // Shifts 0 ... SizeX - t.SizeX - 1 are tried; the best is the first with
    // the smallest score, provided that score is below `limit`. minScore and
    // LastCorrelationError receive the smallest score in any case.
    int Correlate(const CSSEcharMatrix& t, int& minScore, int limit);
    // As Correlate, and `ambiguity` measures how far the next three valleys
    // of the score curve lie above the best one.
    int CorrelateAmbiguity(const CSSEcharMatrix& t, int& minScore, int& ambiguity, int limit);
    // Shifts start ... min(SizeX - t.SizeX - 1, end) - 1 only, without a
    // limit, and the next five valleys are sought on a smoothed curve. A
    // negative start counts as 0. The last argument has no effect.
    int CorrelateAmbiguityStartEnd(const CSSEcharMatrix& t, int& minScore, int& ambiguity, int start, int end, int unused);

    // ---------------------------------------------------------------- time analysis (sse_char_matrix_time.cpp)
    // One entry per column: the bytes of the first min(maxRow >> 4,
    // SSESizeY) lines, each raised by offset (wrapping), summed as signed and
    // divided by SSESizeY x 16. The caller releases Data with delete[].
    t_intvector GetIntegralVectorFromMatrix(int offset, int maxRow) const;
    // The number of humps of the column profile along x.
    int CalcNumSyllables() const;
    // Adds to each inner column its central difference along x, the
    // difference wrapping and the sum saturating.
    void CalcPDResult();
    // Each inner column becomes its central difference along x, saturating;
    // the first and the last column become 0.
    void CalcDerivative();
    // This field becomes a measure of the spread of src along x, from -63 to
    // 63; columns 0, 1 and the last two are 0.
    void CalcTimeVariance(const CSSEcharMatrix& src);

    // ---------------------------------------------------------------- persistence (sse_char_matrix_archive.cpp)
    // SizeX, SizeY, then the pixels row by row without padding. A field
    // without an image is stored as 0 x 0. Loading throws CArchiveException
    // for sizes the stream cannot hold, before anything is allocated.
    void Serialize(CArchive& ar);

protected:
    // Address of pixel (x, y) without any clamp.
    char* PixelAddress(int x, int y) const
    {
        return reinterpret_cast<char*>(MatrixData[y >> 4] + x) + (y & 15);
    }
    char* ClampedPixel(int x, int y) const
    {
        return PixelAddress(vek::detail::ClampIndex(x, 0, SizeX - 1), vek::detail::ClampIndex(y, 0, SizeY - 1));
    }
    bool HasImage() const { return MatrixData != nullptr; }

private:
    // Exchanges images and sizes with `other`, keeping LastCorrelationError:
    // the operations that build their result in a temporary field take it
    // over this way, which also makes them safe when a source is this field.
    void SwapImage(CSSEcharMatrix& other);
    // Copies all lines of src (whole vectors, padding included) into lines
    // `firstLine` on of this field, for the columns both have.
    void CopyLinesFrom(const CSSEcharMatrix& src, int firstLine);
    void CopyThresholded(const CSSEMatrix& src, float t, char v, bool above);
    void Elongate(int n, bool left);
    // The correlations need a template of this height, at least one column
    // wide and narrower than this field, both holding an image.
    bool CanMatch(const CSSEcharMatrix& t) const;
    int ShiftScore(const CSSEcharMatrix& t, int shift) const;
    std::vector<int> ShiftScores(const CSSEcharMatrix& t, int firstShift, int count) const;

protected:
    __m128i** MatrixData = nullptr;
    __m128i* Field[kMaxFields] = {};
    int SizeX = 0;
    int SizeY = 0;
    int SSESizeX = 0;
    int SSESizeY = 0;
    int Fields = 0;
    int LastCorrelationError = 0;
};
