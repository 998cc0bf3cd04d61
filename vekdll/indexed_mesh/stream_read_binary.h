#pragma once

#include <cstddef>
#include <cstdint>

#include "vekdll/export.h"

// A source of bytes that a mesh is read from, which knows how many bytes it
// still holds so that a reader can refuse a count before it allocates.
class VEKDLL_API QbStreamReadBinary {
public:
    virtual ~QbStreamReadBinary();

    // Reads exactly `count` bytes, or throws CArchiveException when the
    // stream ends before.
    virtual void ReadBytes(void* data, std::size_t count) = 0;
    // The bytes the stream can still deliver.
    virtual std::uint64_t GetBytesRemaining() const = 0;

    std::uint32_t ReadUInt32()
    {
        std::uint32_t value = 0;
        ReadBytes(&value, sizeof value);
        return value;
    }
};
