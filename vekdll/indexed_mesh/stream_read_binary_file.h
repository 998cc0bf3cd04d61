#pragma once

#include "vekdll/export.h"
#include "vekdll/indexed_mesh/stream_read_binary.h"

class CArchive;

// Reads through a loading CArchive, which must outlive the stream. Reading
// past the end throws the archive's CArchiveException(endOfFile); a storing
// archive throws CArchiveException(writeOnly).
class VEKDLL_API QyStreamReadBinaryFile : public QbStreamReadBinary {
public:
    explicit QyStreamReadBinaryFile(CArchive& archive);
    ~QyStreamReadBinaryFile() override;

    void ReadBytes(void* data, std::size_t count) override;
    std::uint64_t GetBytesRemaining() const override;

private:
    CArchive& archive_;
};
