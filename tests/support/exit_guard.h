#pragma once

// What every test program's exit guard throws when the library asks to end
// the process (see exit_guard.cpp): a test that expects the exit catches it.

namespace vek::test {

struct ProcessExitRequested {
    int code;
};

} // namespace vek::test
