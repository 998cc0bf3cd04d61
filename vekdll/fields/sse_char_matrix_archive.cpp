// The archive format of the byte field: SizeX and SizeY as little-endian
// ints, then SizeX x SizeY bytes row by row (for each y, every x). Unlike the
// float field's format it holds no padding: 8 + SizeX x SizeY bytes in all.

#include <vector>

#include "vekdll/fields/sse_char_matrix.h"
#include "vekdll/platform/c_archive.h"

namespace {

// A field without rows stores no pixels, so the stream cannot vouch for its
// width; its one line of padding is still allocated. Wider than this it is
// taken for a damaged archive rather than for a field.
constexpr int kMaxWidthWithoutRows = 1 << 20;

} // namespace

void CSSEcharMatrix::Serialize(CArchive& ar)
{
    if (ar.IsStoring()) {
        const int width = HasImage() ? SizeX : 0;
        const int height = HasImage() ? SizeY : 0;
        ar << width << height;
        if (width == 0) return;
        std::vector<char> row(static_cast<std::size_t>(width));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) row[x] = *PixelAddress(x, y);
            ar.Write(row.data(), static_cast<UINT>(width));
        }
        return;
    }

    Free();
    int width = 0;
    int height = 0;
    ar >> width >> height;
    // The sizes must fit the bytes that are left before anything is allocated.
    if (width < 0 || height < 0 || height > kMaxSizeY || (height == 0 && width > kMaxWidthWithoutRows)) AfxThrowArchiveException(CArchiveException::badIndex);
    ar.RequireReadable(static_cast<LONGLONG>(width) * height, 1);
    Create(width, height);
    if (width == 0) return;
    std::vector<char> row(static_cast<std::size_t>(width));
    for (int y = 0; y < height; ++y) {
        ar.Read(row.data(), static_cast<UINT>(width));
        for (int x = 0; x < width; ++x) *PixelAddress(x, y) = row[x];
    }
}
