// Linked into every test program. The library ends the process through
// vek::ExitProgram where its contract says so; a test that reaches it
// unexpectedly would otherwise end with the code the library chose (often
// 0), which CTest counts as a pass. Here such an exit throws
// vek::test::ProcessExitRequested instead, so the test fails unless it
// expects the exit and catches it.

#include <gtest/gtest.h>

#include "support/exit_guard.h"
#include "vekdll/platform/user_hooks.h"

namespace {

class ExitGuard : public ::testing::Environment {
public:
    void SetUp() override
    {
        vek::SetExitHandler([](int code) { throw vek::test::ProcessExitRequested{code}; });
    }
    void TearDown() override { vek::SetExitHandler(nullptr); }
};

[[maybe_unused]] ::testing::Environment* const exitGuard = ::testing::AddGlobalTestEnvironment(new ExitGuard);

} // namespace
