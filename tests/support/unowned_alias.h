#pragma once

// A place for the second party of a shallow assignment. Fields and polygons
// copy their pointers on assignment, and both parties would release what they
// share; the alias built here is never destroyed, so only the original
// releases it. Moving into the alias is no way to forget either: a move
// hands over what it moves, and the alias would be its only owner.

#include <cstring>
#include <memory>
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

// For the target of a move, which like the shallow assignment releases
// nothing that the target held: its own bytes are kept aside while `use`
// runs, what the target holds then is released by its destructor, and it
// gets its own bytes back.
template <class T, class Use>
void WithOwnBytesKeptAndTakenReleased(T& target, Use use)
{
    WithOwnBytesKept(target, [&] {
        use();
        std::destroy_at(&target);
    });
}

} // namespace vek::test
