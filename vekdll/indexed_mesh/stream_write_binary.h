#pragma once

#include <cstddef>
#include <cstdint>

#include "vekdll/export.h"

// A sink of bytes that a mesh is written to. Values go out as their
// little-endian bytes, the only order the library runs in.
class VEKDLL_API QbStreamWriteBinary {
public:
    virtual ~QbStreamWriteBinary();

    // Writes all `count` bytes or throws what the sink throws when it cannot
    // take them (CArchiveException, CFileException).
    virtual void WriteBytes(const void* data, std::size_t count) = 0;

    void WriteUInt32(std::uint32_t value) { WriteBytes(&value, sizeof value); }
};
