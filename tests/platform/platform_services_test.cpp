#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "support/recorded_hooks.h"
#include "vekdll/platform/clock.h"
#include "vekdll/platform/crt_random.h"
#include "vekdll/platform/framework_exceptions.h"
#include "vekdll/platform/user_hooks.h"

namespace {

TEST(CrtRandomTest, ReproducesTheClassicSequence)
{
    // First values of the classic generator after srand(1), worked out from
    // s = s * 214013 + 2531011, value = (s >> 16) & 0x7FFF.
    vek::CrtRandom random;
    EXPECT_EQ(random.Next(), 41);
    EXPECT_EQ(random.Next(), 18467);
    EXPECT_EQ(random.Next(), 6334);
    random.Seed(1);
    EXPECT_EQ(random.Next(), 41);
    vek::CrtRandom other(12345);
    for (int i = 0; i < 1000; ++i) {
        const int v = other.Next();
        ASSERT_GE(v, 0);
        ASSERT_LE(v, vek::CrtRandom::Max);
    }
}

TEST(UserHooksTest, HandlersReplaceAndRestoreTheDefaults)
{
    {
        vek::test::RecordedHooks hooks("in.cls");
        vek::ShowMessage("Trainingsergebnis\n");
        vek::PathRequest request;
        request.defaultExtension = "cls";
        EXPECT_EQ(vek::AskPath(request).value(), "in.cls");
        EXPECT_EQ(hooks.messages, std::vector<std::string>{"Trainingsergebnis\n"});
        EXPECT_EQ(hooks.requests.at(0).defaultExtension, "cls");
    }
    EXPECT_FALSE(vek::AskPath({}).has_value()); // the default again: the user cancelled

    const vek::ExitHandler previousExit =
        vek::SetExitHandler([](int code) { throw std::runtime_error("exit " + std::to_string(code)); });
    EXPECT_THROW(vek::ExitProgram(0), std::runtime_error);
    vek::SetExitHandler(previousExit);
}

TEST(FrameworkExceptionsTest, DeriveFromTheStandardExceptions)
{
    EXPECT_THROW(AfxThrowMemoryException(), std::bad_alloc);
    EXPECT_THROW(AfxThrowArchiveException(CArchiveException::badIndex), std::runtime_error);
    EXPECT_THROW(AfxThrowFileException(CFileException::fileNotFound), std::runtime_error);
    EXPECT_THROW(AfxThrowInvalidArgException(), std::invalid_argument);
    try {
        AfxThrowArchiveException(CArchiveException::endOfFile, "a.bin");
    } catch (const CArchiveException& e) {
        EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
        EXPECT_EQ(e.m_strFileName, "a.bin");
    }
}

TEST(ClockTest, MillisecondsAdvance)
{
    const std::uint32_t start = vek::TimeGetTime();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::uint32_t elapsed = vek::TimeGetTime() - start;
    EXPECT_GE(elapsed, 15u);
    EXPECT_LT(elapsed, 5000u);
}

} // namespace
