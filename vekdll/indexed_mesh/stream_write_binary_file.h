#pragma once

#include "vekdll/export.h"
#include "vekdll/indexed_mesh/stream_write_binary.h"

class CArchive;

// Writes through a storing CArchive, which must outlive the stream. The
// stream neither flushes nor closes the archive: its owner does.
class VEKDLL_API QyStreamWriteBinaryFile : public QbStreamWriteBinary {
public:
    explicit QyStreamWriteBinaryFile(CArchive& archive);
    ~QyStreamWriteBinaryFile() override;

    // A loading archive throws CArchiveException(readOnly).
    void WriteBytes(const void* data, std::size_t count) override;

private:
    CArchive& archive_;
};
