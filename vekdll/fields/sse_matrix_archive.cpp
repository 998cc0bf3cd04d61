#include <algorithm>
#include <vector>

#include "vekdll/fields/sse_matrix.h"
#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_file.h"

namespace {

constexpr UINT kVectorBytes = sizeof(__m128);
// Columns moved per archive transfer. The archive runs down the columns while
// the storage runs along the lines; a few columns at a time are gathered line
// by line, so that each line is touched in one contiguous run.
constexpr int kColumnsPerTransfer = 16;

enum class Direction { ToArchive, FromArchive };

// Moves every vector between the lines and the archive in the archive's
// order: column by column, within a column line by line.
void TransferColumns(CArchive& ar, __m128* const* lines, int vectorsPerLine, int lineCount, Direction direction)
{
    const std::size_t perColumn = 4 * static_cast<std::size_t>(lineCount);
    std::vector<float> columns(static_cast<std::size_t>(std::min(kColumnsPerTransfer, vectorsPerLine)) * perColumn);
    for (int first = 0; first < vectorsPerLine; first += kColumnsPerTransfer) {
        const int count = std::min(kColumnsPerTransfer, vectorsPerLine - first);
        const UINT bytes = static_cast<UINT>(count) * static_cast<UINT>(lineCount) * kVectorBytes;
        if (direction == Direction::FromArchive) ar.Read(columns.data(), bytes);
        for (int line = 0; line < lineCount; ++line) {
            __m128* stored = lines[line] + first;
            float* archived = columns.data() + 4 * static_cast<std::size_t>(line);
            for (int c = 0; c < count; ++c, archived += perColumn) {
                if (direction == Direction::ToArchive) {
                    _mm_storeu_ps(archived, stored[c]);
                } else {
                    stored[c] = _mm_loadu_ps(archived);
                }
            }
        }
        if (direction == Direction::ToArchive) ar.Write(columns.data(), bytes);
    }
}

} // namespace

void CSSEMatrix::Serialize(CArchive& ar)
{
    if (ar.IsStoring()) {
        // A field that has released its image still reports the old size,
        // but there are no pixels behind it: it goes out as an empty field.
        if (MatrixData == nullptr) {
            ar << 0 << 0;
            return;
        }
        ar << SizeX << SizeY;
        TransferColumns(ar, MatrixData, SSESizeX, SSESizeY, Direction::ToArchive);
        return;
    }

    int sizeX = 0;
    int sizeY = 0;
    ar >> sizeX >> sizeY;
    // The header is checked against what the stream still holds before the
    // field gives up its image or allocates anything.
    if (sizeX < 0 || sizeY < 0 || sizeY > kMaxSizeY) AfxThrowArchiveException(CArchiveException::badIndex);
    const LONGLONG vectors = static_cast<LONGLONG>(sizeX) * ((sizeY >> 2) + 1);
    ar.RequireReadable(vectors, kVectorBytes);
    Create(sizeX, sizeY);
    TransferColumns(ar, MatrixData, SSESizeX, SSESizeY, Direction::FromArchive);
}

bool CSSEMatrix::Load(const CString& path)
{
    CFile file;
    CFileException error;
    if (!file.Open(path, CFile::modeRead | CFile::shareDenyWrite | CFile::typeBinary, &error)) return false;
    CArchive ar(&file, CArchive::load, 4096);
    Serialize(ar);
    ar.Close();
    file.Close();
    return true;
}

bool CSSEMatrix::Store(const CString& path)
{
    CFile file;
    CFileException error;
    if (!file.Open(path, CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive | CFile::typeBinary, &error)) return false;
    CArchive ar(&file, CArchive::store, 4096);
    Serialize(ar);
    ar.Close();
    file.Close();
    return true;
}
