#pragma once

#include <cstdint>

#include "vekdll/export.h"
#include "vekdll/platform/framework_exceptions.h"

// Allocation that never returns null: each function calls the underlying
// allocator once and throws CMemoryException if it fails. Memory from
// SafeAlignedAlloc goes back through SafeAlignedFree, memory from SafeMalloc
// and SafeCalloc through SafeFree; the two families don't mix.
VEKDLL_API void* SafeMalloc(std::uint64_t size);
VEKDLL_API void* SafeCalloc(std::uint64_t count, std::uint64_t size);
VEKDLL_API void* SafeAlignedAlloc(std::uint64_t size, std::uint64_t alignment);
VEKDLL_API void SafeFree(void* memory);
VEKDLL_API void SafeAlignedFree(void* memory);
