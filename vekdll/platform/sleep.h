#pragma once

#include <cstdint>

#include "vekdll/export.h"

namespace vek {

// Gives the processor away for at least `milliseconds`; 0 only yields. A
// driver that polls its workers calls it between rounds.
VEKDLL_API void Sleep(std::uint32_t milliseconds);

} // namespace vek
