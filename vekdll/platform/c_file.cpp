#include "vekdll/platform/c_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace {

const char* FopenMode(UINT flags)
{
    const UINT access = flags & 0x3;
    const bool create = (flags & CFile::modeCreate) != 0;
    const bool keep = (flags & CFile::modeNoTruncate) != 0;
    if (access == CFile::modeRead) return "rb";
    if (create && !keep) return access == CFile::modeWrite ? "wb" : "w+b";
    return "r+b";
}

int CauseFromErrno(int err)
{
    switch (err) {
    case ENOENT: return CFileException::fileNotFound;
    case EACCES:
    case EPERM:
    case EROFS: return CFileException::accessDenied;
    case ENAMETOOLONG:
    case ENOTDIR:
    case EISDIR: return CFileException::badPath;
    case EMFILE:
    case ENFILE: return CFileException::tooManyOpenFiles;
    case ENOSPC: return CFileException::diskFull;
    default: return CFileException::genericException;
    }
}

} // namespace

CFile::CFile() = default;

CFile::CFile(const CString& path, UINT openFlags)
{
    CFileException error;
    if (!Open(path, openFlags, &error)) throw error;
}

CFile::~CFile()
{
    Abort();
}

bool CFile::Open(const CString& path, UINT openFlags, CFileException* error)
{
    Abort();
    std::FILE* file = std::fopen(path.c_str(), FopenMode(openFlags));
    if (file == nullptr && (openFlags & modeCreate) != 0 && (openFlags & modeNoTruncate) != 0) {
        // Create-without-truncate on a file that does not exist yet.
        file = std::fopen(path.c_str(), "w+b");
    }
    if (file == nullptr) {
        if (error != nullptr) *error = CFileException(CauseFromErrno(errno), path);
        return false;
    }
    struct stat info {};
    if (fstat(fileno(file), &info) == 0 && S_ISDIR(info.st_mode)) {
        std::fclose(file);
        if (error != nullptr) *error = CFileException(CFileException::badPath, path);
        return false;
    }
    file_ = file;
    path_ = path;
    return true;
}

UINT CFile::Read(void* buffer, UINT count)
{
    if (file_ == nullptr) AfxThrowFileException(CFileException::invalidFile, path_);
    if (count == 0) return 0;
    const std::size_t got = std::fread(buffer, 1, count, file_);
    if (got < count && std::ferror(file_)) AfxThrowFileException(CFileException::hardIO, path_);
    return static_cast<UINT>(got);
}

void CFile::Write(const void* buffer, UINT count)
{
    if (file_ == nullptr) AfxThrowFileException(CFileException::invalidFile, path_);
    if (count == 0) return;
    if (std::fwrite(buffer, 1, count, file_) != count) AfxThrowFileException(CauseFromErrno(errno), path_);
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from)
{
    if (file_ == nullptr) AfxThrowFileException(CFileException::invalidFile, path_);
    const int whence = from == begin ? SEEK_SET : from == current ? SEEK_CUR : SEEK_END;
    if (fseeko(file_, static_cast<off_t>(offset), whence) != 0) AfxThrowFileException(CFileException::badSeek, path_);
    return GetPosition();
}

ULONGLONG CFile::GetLength() const
{
    if (file_ == nullptr) return 0;
    std::fflush(file_);
    struct stat info {};
    if (fstat(fileno(file_), &info) != 0) return 0;
    return static_cast<ULONGLONG>(info.st_size);
}

ULONGLONG CFile::GetPosition() const
{
    if (file_ == nullptr) return 0;
    const off_t pos = ftello(file_);
    return pos < 0 ? 0 : static_cast<ULONGLONG>(pos);
}

void CFile::Flush()
{
    if (file_ != nullptr && std::fflush(file_) != 0) AfxThrowFileException(CauseFromErrno(errno), path_);
}

void CFile::Close()
{
    if (file_ == nullptr) return;
    std::FILE* file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0) AfxThrowFileException(CauseFromErrno(errno), path_);
}

void CFile::Abort()
{
    if (file_ == nullptr) return;
    std::fclose(file_);
    file_ = nullptr;
}

bool CFile::IsOpen() const
{
    return file_ != nullptr;
}

bool CFile::GetStatus(CFileStatus& status) const
{
    return IsOpen() && GetStatus(path_, status);
}

bool CFile::GetStatus(const CString& path, CFileStatus& status)
{
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return false;
    status.m_mtime = info.st_mtime;
    status.m_size = static_cast<ULONGLONG>(info.st_size);
    status.m_attribute = S_ISDIR(info.st_mode) ? 0x10 : 0x00;
    char resolved[PATH_MAX];
    status.m_szFullName = realpath(path.c_str(), resolved) != nullptr ? CString(resolved) : path;
    return true;
}

// ------------------------------------------------------------------ CMemFile

CMemFile::CMemFile(UINT growBytes) : growBytes_(growBytes == 0 ? 1024 : growBytes)
{
}

CMemFile::CMemFile(BYTE* buffer, UINT size) : growBytes_(0)
{
    Attach(buffer, size);
}

CMemFile::~CMemFile() = default;

bool CMemFile::Open(const CString&, UINT, CFileException* error)
{
    // A memory file has no name to open; it is usable from construction on.
    if (error != nullptr) *error = CFileException(CFileException::badPath);
    return false;
}

UINT CMemFile::Read(void* buffer, UINT count)
{
    const std::size_t available = position_ < length_ ? length_ - position_ : 0;
    const std::size_t n = std::min<std::size_t>(count, available);
    if (n > 0) std::memcpy(buffer, GetData() + position_, n);
    position_ += n;
    return static_cast<UINT>(n);
}

void CMemFile::Write(const void* buffer, UINT count)
{
    if (count == 0) return;
    const std::size_t end = position_ + count;
    Reserve(end);
    BYTE* data = attached_ != nullptr ? attached_ : owned_.data();
    if (position_ > length_) std::memset(data + length_, 0, position_ - length_);
    std::memcpy(data + position_, buffer, count);
    position_ = end;
    length_ = std::max(length_, end);
}

void CMemFile::Reserve(std::size_t bytes)
{
    if (attached_ != nullptr) {
        if (bytes > attachedCapacity_) AfxThrowFileException(CFileException::diskFull);
        return;
    }
    if (bytes <= owned_.size()) return;
    const std::size_t grown = (bytes + growBytes_ - 1) / growBytes_ * growBytes_;
    try {
        owned_.resize(std::max(grown, owned_.size() * 2));
    } catch (const std::bad_alloc&) {
        AfxThrowMemoryException();
    }
}

ULONGLONG CMemFile::Seek(LONGLONG offset, UINT from)
{
    const LONGLONG base = from == begin ? 0 : from == current ? static_cast<LONGLONG>(position_) : static_cast<LONGLONG>(length_);
    const LONGLONG target = base + offset;
    if (target < 0) AfxThrowFileException(CFileException::badSeek);
    position_ = static_cast<std::size_t>(target);
    return position_;
}

ULONGLONG CMemFile::GetLength() const
{
    return length_;
}

ULONGLONG CMemFile::GetPosition() const
{
    return position_;
}

void CMemFile::Flush()
{
}

void CMemFile::Close()
{
    owned_.clear();
    attached_ = nullptr;
    attachedCapacity_ = 0;
    length_ = position_ = 0;
}

void CMemFile::Abort()
{
    Close();
}

bool CMemFile::IsOpen() const
{
    return true;
}

void CMemFile::Attach(BYTE* buffer, UINT size)
{
    owned_.clear();
    attached_ = buffer;
    attachedCapacity_ = buffer != nullptr ? size : 0;
    length_ = attachedCapacity_;
    position_ = 0;
}

std::vector<BYTE> CMemFile::Detach()
{
    std::vector<BYTE> contents(GetData(), GetData() + length_);
    Close();
    return contents;
}

const BYTE* CMemFile::GetData() const
{
    return attached_ != nullptr ? attached_ : owned_.data();
}
