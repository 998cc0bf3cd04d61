#pragma once

#include <utility>

namespace vek::detail {

// Moving for the classes whose assignment is a member copy that releases
// nothing (the rasters, the planar polygon, the span array). What the
// destination holds may be shared with another object through such an
// assignment, the usual way of handing a field on, so a move must not release
// it either: `to` takes every member of `from` by that copy, and `from` then
// forgets them by the same copy from a new object. Only `to` releases what it
// took over; `from` is left empty, frees nothing when destroyed, and may be
// used and assigned again.
//
// T's default object must own nothing (no allocation in its constructor).
template <class T>
T& MoveByMemberCopy(T& to, T& from) noexcept
{
    if (&to != &from) {
        const T empty{};
        to = std::as_const(from);
        from = empty;
    }
    return to;
}

} // namespace vek::detail
