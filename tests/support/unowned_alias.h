#pragma once

// A place for the second party of a shallow assignment. Fields and polygons
// copy their pointers on assignment, and both parties would release what they
// share; the alias built here is never destroyed, so only the original
// releases it. Moving into the alias is not a way to forget: a move releases
// the destination's image.

#include <cstring>
#include <new>

namespace vek::test {

template <class T>
class UnownedAlias {
public:
    UnownedAlias() : object_(new (storage_) T) {}
    UnownedAlias(const UnownedAlias&) = delete;
    UnownedAlias& operator=(const UnownedAlias&) = delete;
    // Deliberately no destructor call of T.

    T& operator*() { return *object_; }
    T* operator->() { return object_; }

private:
    alignas(T) unsigned char storage_[sizeof(T)];
    T* object_;
};

// For types whose default object already owns memory (a box block): the
// target of a shallow assignment keeps its own bytes aside while `use` runs
// and gets them back afterwards, so that it releases only what it owned.
template <class T, class Use>
void WithOwnBytesKept(T& target, Use use)
{
    alignas(T) unsigned char own[sizeof(T)];
    std::memcpy(own, static_cast<void*>(&target), sizeof own);
    use();
    std::memcpy(static_cast<void*>(&target), own, sizeof own);
}

} // namespace vek::test
