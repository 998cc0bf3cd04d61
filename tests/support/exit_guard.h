#pragma once

// What every test program's exit guard throws when the library asks to end
// the process (see exit_guard.cpp): a test that expects the exit catches it.

#include <optional>

namespace vek::test {

struct ProcessExitRequested {
    int code;
};

// The code with which `run` asks to end the process, or none if it returns.
template <class Run>
std::optional<int> ExitCodeOf(Run&& run)
{
    try {
        run();
    } catch (const ProcessExitRequested& exit) {
        return exit.code;
    }
    return std::nullopt;
}

} // namespace vek::test
