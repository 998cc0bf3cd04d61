#include "vekdll/platform/sleep.h"

#include <chrono>
#include <thread>

namespace vek {

void Sleep(std::uint32_t milliseconds)
{
    if (milliseconds == 0) {
        std::this_thread::yield();
        return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

} // namespace vek
