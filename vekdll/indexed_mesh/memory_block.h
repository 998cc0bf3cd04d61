#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

// The names of the indexed mesh (SMemoryBlock, QbVector3f, the streams, the
// serializer and the normals) stand in the global namespace, as the
// triangulations call them unqualified; only the mesh itself lives in
// Geometry, where its callers name it.

// An owned block of `T` and its count: how the indexed mesh takes its arrays
// and hands them on. A block is filled through `data()` or `operator[]` and
// then moved into a mesh; copying a block copies its contents.
template <class T>
class SMemoryBlock {
public:
    SMemoryBlock() = default;
    // `count` value-initialised elements: zeros for numbers and vectors.
    explicit SMemoryBlock(std::size_t count) : items_(count) {}
    SMemoryBlock(std::initializer_list<T> items) : items_(items) {}

    std::size_t size() const { return items_.size(); }
    bool empty() const { return items_.empty(); }
    T* data() { return items_.data(); }
    const T* data() const { return items_.data(); }
    T& operator[](std::size_t i) { return items_[i]; }
    const T& operator[](std::size_t i) const { return items_[i]; }
    T* begin() { return items_.data(); }
    T* end() { return items_.data() + items_.size(); }
    const T* begin() const { return items_.data(); }
    const T* end() const { return items_.data() + items_.size(); }

    // Keeps the first `count` elements; a larger count changes nothing.
    void Truncate(std::size_t count)
    {
        if (count < items_.size()) items_.resize(count);
    }

private:
    std::vector<T> items_;
};
