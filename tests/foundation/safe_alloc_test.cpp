#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "vekdll/foundation/safe_alloc.h"
#include "vekdll/foundation/time_logger.h"

namespace {

TEST(SafeAllocTest, AllocatesAlignedZeroedAndNeverNull)
{
    void* plain = SafeMalloc(100);
    ASSERT_NE(plain, nullptr);
    SafeFree(plain);
    SafeFree(nullptr); // does nothing

    auto* zeroed = static_cast<unsigned char*>(SafeCalloc(10, 8));
    for (int i = 0; i < 80; ++i) ASSERT_EQ(zeroed[i], 0);
    SafeFree(zeroed);

    for (std::uint64_t alignment : {1u, 4u, 16u, 64u}) {
        void* aligned = SafeAlignedAlloc(48, alignment);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % alignment, 0u);
        SafeAlignedFree(aligned);
    }
    // A size of 0 is handed through and succeeds when the allocator gives a pointer.
    SafeAlignedFree(SafeAlignedAlloc(0, 16));
    SafeFree(SafeMalloc(0));
}

TEST(SafeAllocTest, ExhaustionThrowsTheMemoryException)
{
    const std::uint64_t absurd = std::numeric_limits<std::uint64_t>::max() / 2;
    EXPECT_THROW(SafeMalloc(absurd), CMemoryException);
    EXPECT_THROW(SafeCalloc(absurd, 4), CMemoryException);
    EXPECT_THROW(SafeAlignedAlloc(absurd, 16), CMemoryException);
    EXPECT_THROW(SafeAlignedAlloc(absurd, 16), std::bad_alloc);
}

TEST(CTimeLoggerTest, OnlyTheStartStampIsKept)
{
    CTimeLogger logger(L"ignored");
    logger.SetTimeStampStart();
    const std::uint32_t first = logger.GetTimeStampStart();
    logger.SetTimeStampEnd("ignored too");
    EXPECT_EQ(logger.GetTimeStampStart(), first);
    CTimeLogger copy(L"");
    copy = logger;
    EXPECT_EQ(copy.GetTimeStampStart(), first);
}

} // namespace
