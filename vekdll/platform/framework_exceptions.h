#pragma once

#include <new>
#include <stdexcept>

#include "vekdll/export.h"
#include "vekdll/platform/c_string.h"

// The framework's exception classes. Each derives from the standard exception
// of the same meaning, so that a caller may catch either.

// Exhausted memory: the only failure of the Safe... allocation functions.
class VEKDLL_API CMemoryException : public std::bad_alloc {
public:
    const char* what() const noexcept override;
};

// A malformed, truncated or misused archive.
class VEKDLL_API CArchiveException : public std::runtime_error {
public:
    enum Cause {
        none,
        genericException,
        readOnly,   // a write to an archive that is loading
        endOfFile,  // a read past the end of the stream
        writeOnly,  // a read from an archive that is storing
        badIndex,   // a count or size that the stream cannot hold
        badClass,
        badSchema
    };
    explicit CArchiveException(int cause = none, const CString& fileName = CString());

    int m_cause;
    CString m_strFileName;
};

// A file that could not be opened, read, written or positioned.
class VEKDLL_API CFileException : public std::runtime_error {
public:
    enum Cause {
        none,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile
    };
    explicit CFileException(int cause = none, const CString& fileName = CString());

    int m_cause;
    CString m_strFileName;
};

// An argument outside what an operation accepts.
class VEKDLL_API CInvalidArgException : public std::invalid_argument {
public:
    CInvalidArgException();
};

[[noreturn]] VEKDLL_API void AfxThrowMemoryException();
[[noreturn]] VEKDLL_API void AfxThrowArchiveException(int cause, const CString& fileName = CString());
[[noreturn]] VEKDLL_API void AfxThrowFileException(int cause, const CString& fileName = CString());
[[noreturn]] VEKDLL_API void AfxThrowInvalidArgException();
