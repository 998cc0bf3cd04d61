#pragma once

// Helpers for archive tests: run a storing function into memory and get the
// bytes, or feed bytes to a loading function.

#include <cstring>
#include <utility>
#include <vector>

#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_file.h"
#include "vekdll/platform/framework_exceptions.h"

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

// Serialize of any archivable object, into bytes and back.
template <class T>
std::vector<BYTE> SerializeToBytes(T& object)
{
    return StoreToBytes([&](CArchive& ar) { object.Serialize(ar); });
}

template <class T>
void SerializeFromBytes(T& object, std::vector<BYTE> bytes)
{
    LoadFromBytes(std::move(bytes), [&](CArchive& ar) { object.Serialize(ar); });
}

// The cause of the CArchiveException that loading `bytes` into `object`
// throws, or CArchiveException::none if they load.
template <class T>
int LoadFailureCause(T& object, std::vector<BYTE> bytes)
{
    try {
        SerializeFromBytes(object, std::move(bytes));
    } catch (const CArchiveException& e) {
        return e.m_cause;
    }
    return CArchiveException::none;
}

// Appends the bytes of one value, for archives built by hand.
template <class T>
void AppendBytes(std::vector<BYTE>& bytes, T value)
{
    const std::size_t at = bytes.size();
    bytes.resize(at + sizeof value);
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

// Appends the bytes of each value of a list, one after the other.
template <class T>
void AppendBytes(std::vector<BYTE>& bytes, const std::vector<T>& values)
{
    for (const T& value : values) AppendBytes(bytes, value);
}

// The bytes of the given values (single values or lists), one after the other.
template <class... T>
std::vector<BYTE> BytesOf(const T&... values)
{
    std::vector<BYTE> bytes;
    (AppendBytes(bytes, values), ...);
    return bytes;
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
