#include "vekdll/foundation/safe_alloc.h"

#include <cstdlib>
#include <limits>

namespace {

void* OrThrow(void* memory)
{
    if (memory == nullptr) AfxThrowMemoryException();
    return memory;
}

bool FitsSizeT(std::uint64_t value)
{
    return value <= std::numeric_limits<std::size_t>::max();
}

} // namespace

void* SafeMalloc(std::uint64_t size)
{
    if (!FitsSizeT(size)) AfxThrowMemoryException();
    return OrThrow(std::malloc(static_cast<std::size_t>(size)));
}

void* SafeCalloc(std::uint64_t count, std::uint64_t size)
{
    if (!FitsSizeT(count) || !FitsSizeT(size)) AfxThrowMemoryException();
    return OrThrow(std::calloc(static_cast<std::size_t>(count), static_cast<std::size_t>(size)));
}

void* SafeAlignedAlloc(std::uint64_t size, std::uint64_t alignment)
{
    if (!FitsSizeT(size)) AfxThrowMemoryException();
    // posix_memalign wants a power of two that is a multiple of the pointer size.
    std::size_t align = sizeof(void*);
    while (align < alignment) align <<= 1;
    void* memory = nullptr;
    if (posix_memalign(&memory, align, static_cast<std::size_t>(size)) != 0) memory = nullptr;
    return OrThrow(memory);
}

void SafeFree(void* memory)
{
    if (memory != nullptr) std::free(memory);
}

void SafeAlignedFree(void* memory)
{
    std::free(memory);
}
