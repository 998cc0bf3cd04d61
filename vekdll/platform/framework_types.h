#pragma once

#include <cstddef>
#include <cstdint>

// Integer names that the library's interfaces share with the desktop framework.
using BYTE = std::uint8_t;
using UINT = unsigned int;
using INT_PTR = std::ptrdiff_t;
using ULONGLONG = std::uint64_t;
using LONGLONG = std::int64_t;

namespace vek::detail {
struct PositionTag;
}

// An opaque place in a CList. It stays valid until the element it names is
// removed, whatever else is added or removed meanwhile.
using POSITION = vek::detail::PositionTag*;
