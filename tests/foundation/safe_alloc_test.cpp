#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "vekdll/foundation/safe_alloc.h"

namespace {

TEST(SafeAlloc, AlignsZeroesAndThrowsTheMemoryExceptionInsteadOfReturningNull)
{
    auto* zeroed = static_cast<unsigned char*>(SafeCalloc(10, 8));
    for (int i = 0; i < 80; ++i) ASSERT_EQ(zeroed[i], 0);
    SafeFree(zeroed);
    for (std::uint64_t alignment : {1u, 16u, 64u}) {
        void* aligned = SafeAlignedAlloc(48, alignment);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % alignment, 0u);
        SafeAlignedFree(aligned);
    }
    const std::uint64_t absurd = std::numeric_limits<std::uint64_t>::max() / 2;
    EXPECT_THROW(SafeMalloc(absurd), CMemoryException);
    EXPECT_THROW(SafeCalloc(absurd, 4), CMemoryException);
    EXPECT_THROW(SafeAlignedAlloc(absurd, 16), std::bad_alloc);
}

} // namespace
