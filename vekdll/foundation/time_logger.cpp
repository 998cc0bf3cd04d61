#include "vekdll/foundation/time_logger.h"

#include "vekdll/platform/clock.h"

// The record is deliberately left uninitialised: only SetTimeStampStart gives
// it a meaning.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
CTimeLogger::CTimeLogger(CStringW)
{
}

CTimeLogger::~CTimeLogger() = default;

void CTimeLogger::SetTimeStampStart()
{
    Words[1] = vek::TimeGetTime();
}

void CTimeLogger::SetTimeStampEnd(CString)
{
}
