#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

#include "vekdll/export.h"
#include "vekdll/platform/c_file.h"
#include "vekdll/platform/framework_exceptions.h"
#include "vekdll/platform/framework_types.h"

static_assert(std::endian::native == std::endian::little, "archives are written in the machine's little-endian order");

// A buffered byte stream over a CFile (on disk or in memory) that either
// stores or loads. Values pass as little-endian bytes of their own width:
// int and float 4 bytes, double 8, BYTE 1. Reading past the end of the
// stream throws CArchiveException(endOfFile); a read from a storing archive
// or a write to a loading one throws writeOnly or readOnly.
class VEKDLL_API CArchive {
public:
    enum Mode : UINT { store = 0, load = 1, bNoFlushOnDelete = 2 };

    CArchive(CFile* file, UINT mode, int bufferSize = 4096, void* buffer = nullptr);
    // Flushes a storing archive; errors at this point are swallowed, call
    // Close to see them.
    ~CArchive();

    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    bool IsLoading() const { return (mode_ & load) != 0; }
    bool IsStoring() const { return !IsLoading(); }
    CFile* GetFile() const { return file_; }

    // Reads exactly `count` bytes or throws endOfFile; returns `count`.
    UINT Read(void* buffer, UINT count);
    void Write(const void* buffer, UINT count);
    // Writes buffered bytes through to the file.
    void Flush();
    // Flushes and detaches from the file; the file stays open.
    void Close();
    // Detaches without flushing.
    void Abort();

    // Bytes a loading archive can still deliver: what is buffered plus what
    // the file holds behind its position. Loaders compare every count they
    // read against it before they allocate.
    ULONGLONG GetBytesRemaining() const;
    // Throws CArchiveException(badIndex) unless `count` items of
    // `bytesPerItem` bytes each can still be read; a negative count fails too.
    void RequireReadable(LONGLONG count, ULONGLONG bytesPerItem) const;

    CArchive& operator<<(BYTE v) { return WriteValue(v); }
    CArchive& operator<<(char v) { return WriteValue(v); }
    CArchive& operator<<(signed char v) { return WriteValue(v); }
    CArchive& operator<<(short v) { return WriteValue(v); }
    CArchive& operator<<(unsigned short v) { return WriteValue(v); }
    CArchive& operator<<(int v) { return WriteValue(v); }
    CArchive& operator<<(unsigned int v) { return WriteValue(v); }
    CArchive& operator<<(long long v) { return WriteValue(v); }
    CArchive& operator<<(unsigned long long v) { return WriteValue(v); }
    CArchive& operator<<(float v) { return WriteValue(v); }
    CArchive& operator<<(double v) { return WriteValue(v); }
    // A bool has no width of its own in the formats; say which one is meant.
    CArchive& operator<<(bool) = delete;
    // `long` is 4 bytes on one platform and 8 on another: not in a format.
    CArchive& operator<<(long) = delete;
    CArchive& operator<<(unsigned long) = delete;

    CArchive& operator>>(BYTE& v) { return ReadValue(v); }
    CArchive& operator>>(char& v) { return ReadValue(v); }
    CArchive& operator>>(signed char& v) { return ReadValue(v); }
    CArchive& operator>>(short& v) { return ReadValue(v); }
    CArchive& operator>>(unsigned short& v) { return ReadValue(v); }
    CArchive& operator>>(int& v) { return ReadValue(v); }
    CArchive& operator>>(unsigned int& v) { return ReadValue(v); }
    CArchive& operator>>(long long& v) { return ReadValue(v); }
    CArchive& operator>>(unsigned long long& v) { return ReadValue(v); }
    CArchive& operator>>(float& v) { return ReadValue(v); }
    CArchive& operator>>(double& v) { return ReadValue(v); }
    CArchive& operator>>(bool&) = delete;
    CArchive& operator>>(long&) = delete;
    CArchive& operator>>(unsigned long&) = delete;

private:
    template <class T>
    CArchive& WriteValue(T v)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        Write(&v, sizeof v);
        return *this;
    }
    template <class T>
    CArchive& ReadValue(T& v)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        Read(&v, sizeof v);
        return *this;
    }
    void FillBuffer();
    void RequireOpen() const;

    CFile* file_;
    UINT mode_;
    std::vector<BYTE> ownBuffer_;
    BYTE* buffer_;
    std::size_t capacity_;
    std::size_t begin_ = 0; // next byte to read (loading)
    std::size_t end_ = 0;   // end of valid bytes (loading) or of pending bytes (storing)
};
