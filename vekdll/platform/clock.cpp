#include "vekdll/platform/clock.h"

#include <chrono>

namespace vek {

std::uint32_t TimeGetTime()
{
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

} // namespace vek
