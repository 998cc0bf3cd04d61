#pragma once

#include <cstdint>

#include "vekdll/export.h"
#include "vekdll/platform/c_string.h"

// A time-stamp record of three 64-bit words. Only the start stamp, the
// millisecond clock in the second word, is ever written; the record keeps no
// end stamp and prints nothing. It is part of the exported surface only.
class VEKDLL_API CTimeLogger {
public:
    // The constructor leaves the words as they are.
    CTimeLogger(CStringW name);
    ~CTimeLogger();

    void SetTimeStampStart();
    void SetTimeStampEnd(CString text);

    std::uint32_t GetTimeStampStart() const { return static_cast<std::uint32_t>(Words[1]); }

private:
    std::uint64_t Words[3];
};
static_assert(sizeof(CTimeLogger) == 24);
