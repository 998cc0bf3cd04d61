#pragma once

#include <cstdint>

#include "vekdll/export.h"

namespace vek {

// Milliseconds of a steady clock, wrapping at 2^32 like the system tick count
// it stands in for. Only differences of two readings mean anything.
VEKDLL_API std::uint32_t TimeGetTime();

} // namespace vek
