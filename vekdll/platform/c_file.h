#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <vector>

#include "vekdll/export.h"
#include "vekdll/platform/c_string.h"
#include "vekdll/platform/framework_exceptions.h"
#include "vekdll/platform/framework_types.h"

// What GetStatus reports of a file.
struct CFileStatus {
    std::time_t m_mtime = 0;
    ULONGLONG m_size = 0;
    BYTE m_attribute = 0;
    CString m_szFullName;
};

// A binary file on disk, opened with the framework's mode flags. Read returns
// the number of bytes it could read; Write, Seek and Flush throw
// CFileException when the operating system refuses.
class VEKDLL_API CFile {
public:
    enum OpenFlags : UINT {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000
    };
    enum SeekPosition : UINT { begin = 0, current = 1, end = 2 };

    CFile();
    // Opens at once; throws CFileException if that fails.
    CFile(const CString& path, UINT openFlags);
    virtual ~CFile();

    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    // Returns false and fills `error` (when given) if the file cannot be opened.
    virtual bool Open(const CString& path, UINT openFlags, CFileException* error = nullptr);
    virtual UINT Read(void* buffer, UINT count);
    virtual void Write(const void* buffer, UINT count);
    virtual ULONGLONG Seek(LONGLONG offset, UINT from);
    virtual ULONGLONG GetLength() const;
    virtual ULONGLONG GetPosition() const;
    virtual void Flush();
    virtual void Close();
    // Closes without reporting errors.
    virtual void Abort();
    virtual bool IsOpen() const;

    void SeekToBegin() { Seek(0, begin); }
    ULONGLONG SeekToEnd() { return Seek(0, end); }
    const CString& GetFilePath() const { return path_; }

    bool GetStatus(CFileStatus& status) const;
    static bool GetStatus(const CString& path, CFileStatus& status);

private:
    std::FILE* file_ = nullptr;
    CString path_;
};

// A file held in memory: either a growing buffer of its own (what an archive
// round trip in memory uses), or a caller's buffer of fixed size.
class VEKDLL_API CMemFile : public CFile {
public:
    explicit CMemFile(UINT growBytes = 1024);
    CMemFile(BYTE* buffer, UINT size);
    ~CMemFile() override;

    bool Open(const CString& path, UINT openFlags, CFileException* error = nullptr) override;
    UINT Read(void* buffer, UINT count) override;
    void Write(const void* buffer, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    ULONGLONG GetLength() const override;
    ULONGLONG GetPosition() const override;
    void Flush() override;
    void Close() override;
    void Abort() override;
    bool IsOpen() const override;

    // Reads and writes a caller's buffer of fixed size in place; the file is
    // `size` bytes long. A write past its end throws CFileException (diskFull).
    void Attach(BYTE* buffer, UINT size);
    // Hands the owned contents to the caller and leaves the file empty.
    std::vector<BYTE> Detach();
    // The current contents, valid until the next write.
    const BYTE* GetData() const;

private:
    void Reserve(std::size_t bytes);

    std::vector<BYTE> owned_;
    BYTE* attached_ = nullptr;
    std::size_t attachedCapacity_ = 0;
    std::size_t length_ = 0;
    std::size_t position_ = 0;
    UINT growBytes_;
};
