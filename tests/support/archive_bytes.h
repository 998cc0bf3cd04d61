#pragma once

// Helpers for archive tests: run a storing function into memory and get the
// bytes, or feed bytes to a loading function.

#include <cstring>
#include <vector>

#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_file.h"

namespace vek::test {

template <class StoreFn>
std::vector<BYTE> StoreToBytes(StoreFn&& store)
{
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        store(ar);
        ar.Close();
    }
    return file.Detach();
}

template <class LoadFn>
void LoadFromBytes(std::vector<BYTE> bytes, LoadFn&& load)
{
    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    CArchive ar(&file, CArchive::load);
    load(ar);
}

inline float FloatAt(const std::vector<BYTE>& bytes, std::size_t offset)
{
    float v;
    std::memcpy(&v, bytes.data() + offset, sizeof v);
    return v;
}

inline int IntAt(const std::vector<BYTE>& bytes, std::size_t offset)
{
    int v;
    std::memcpy(&v, bytes.data() + offset, sizeof v);
    return v;
}

} // namespace vek::test
