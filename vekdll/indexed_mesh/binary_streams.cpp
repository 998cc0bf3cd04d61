// The binary streams of the indexed mesh over the library's archives.

#include <algorithm>
#include <cstdint>

#include "vekdll/indexed_mesh/stream_read_binary.h"
#include "vekdll/indexed_mesh/stream_read_binary_file.h"
#include "vekdll/indexed_mesh/stream_write_binary.h"
#include "vekdll/indexed_mesh/stream_write_binary_file.h"
#include "vekdll/platform/c_archive.h"

namespace {

// An archive moves at most a UINT of bytes at a time; larger blocks go in
// pieces of a gigabyte.
constexpr std::size_t kPieceBytes = std::size_t{1} << 30;

template <class Move>
void InPieces(std::size_t count, Move&& move)
{
    for (std::size_t done = 0; done < count;) {
        const std::size_t n = std::min(kPieceBytes, count - done);
        move(done, static_cast<UINT>(n));
        done += n;
    }
}

} // namespace

QbStreamWriteBinary::~QbStreamWriteBinary() = default;
QbStreamReadBinary::~QbStreamReadBinary() = default;

QyStreamWriteBinaryFile::QyStreamWriteBinaryFile(CArchive& archive) : archive_(archive) {}
QyStreamWriteBinaryFile::~QyStreamWriteBinaryFile() = default;

void QyStreamWriteBinaryFile::WriteBytes(const void* data, std::size_t count)
{
    const auto* bytes = static_cast<const BYTE*>(data);
    InPieces(count, [&](std::size_t at, UINT n) { archive_.Write(bytes + at, n); });
}

QyStreamReadBinaryFile::QyStreamReadBinaryFile(CArchive& archive) : archive_(archive) {}
QyStreamReadBinaryFile::~QyStreamReadBinaryFile() = default;

void QyStreamReadBinaryFile::ReadBytes(void* data, std::size_t count)
{
    auto* bytes = static_cast<BYTE*>(data);
    InPieces(count, [&](std::size_t at, UINT n) { archive_.Read(bytes + at, n); });
}

std::uint64_t QyStreamReadBinaryFile::GetBytesRemaining() const
{
    return archive_.GetBytesRemaining();
}
