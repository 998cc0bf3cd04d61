#include "vekdll/platform/c_archive.h"

#include <algorithm>

CArchive::CArchive(CFile* file, UINT mode, int bufferSize, void* buffer)
    : file_(file), mode_(mode), capacity_(static_cast<std::size_t>(bufferSize > 0 ? bufferSize : 4096))
{
    if (file_ == nullptr) AfxThrowInvalidArgException();
    if (buffer != nullptr && bufferSize > 0) {
        buffer_ = static_cast<BYTE*>(buffer);
    } else {
        ownBuffer_.resize(capacity_);
        buffer_ = ownBuffer_.data();
    }
}

CArchive::~CArchive()
{
    if (file_ != nullptr && IsStoring() && (mode_ & bNoFlushOnDelete) == 0) {
        try {
            Flush();
        } catch (...) {
            // A destructor must not throw; Close reports the same failure.
        }
    }
}

void CArchive::RequireOpen() const
{
    if (file_ == nullptr) AfxThrowArchiveException(CArchiveException::genericException);
}

UINT CArchive::Read(void* buffer, UINT count)
{
    RequireOpen();
    if (IsStoring()) AfxThrowArchiveException(CArchiveException::writeOnly, file_->GetFilePath());
    auto* out = static_cast<BYTE*>(buffer);
    std::size_t left = count;
    while (left > 0) {
        if (begin_ == end_) {
            FillBuffer();
            if (begin_ == end_) AfxThrowArchiveException(CArchiveException::endOfFile, file_->GetFilePath());
        }
        const std::size_t n = std::min(left, end_ - begin_);
        std::memcpy(out, buffer_ + begin_, n);
        begin_ += n;
        out += n;
        left -= n;
    }
    return count;
}

void CArchive::FillBuffer()
{
    begin_ = 0;
    end_ = file_->Read(buffer_, static_cast<UINT>(capacity_));
}

void CArchive::Write(const void* buffer, UINT count)
{
    RequireOpen();
    if (IsLoading()) AfxThrowArchiveException(CArchiveException::readOnly, file_->GetFilePath());
    const auto* in = static_cast<const BYTE*>(buffer);
    std::size_t left = count;
    while (left > 0) {
        if (end_ == capacity_) Flush();
        const std::size_t n = std::min(left, capacity_ - end_);
        std::memcpy(buffer_ + end_, in, n);
        end_ += n;
        in += n;
        left -= n;
    }
}

void CArchive::Flush()
{
    RequireOpen();
    if (IsLoading() || end_ == 0) return;
    const std::size_t pending = end_;
    end_ = 0;
    file_->Write(buffer_, static_cast<UINT>(pending));
}

void CArchive::Close()
{
    if (file_ == nullptr) return;
    if (IsStoring()) Flush();
    file_ = nullptr;
}

void CArchive::Abort()
{
    file_ = nullptr;
}

ULONGLONG CArchive::GetBytesRemaining() const
{
    if (file_ == nullptr || IsStoring()) return 0;
    const ULONGLONG length = file_->GetLength();
    const ULONGLONG position = file_->GetPosition();
    return (end_ - begin_) + (length > position ? length - position : 0);
}

void CArchive::RequireReadable(LONGLONG count, ULONGLONG bytesPerItem) const
{
    if (count < 0) AfxThrowArchiveException(CArchiveException::badIndex);
    const ULONGLONG remaining = GetBytesRemaining();
    if (bytesPerItem != 0 && static_cast<ULONGLONG>(count) > remaining / bytesPerItem) {
        AfxThrowArchiveException(CArchiveException::badIndex, file_ != nullptr ? file_->GetFilePath() : CString());
    }
}
