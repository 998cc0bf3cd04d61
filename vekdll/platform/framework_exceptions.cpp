#include "vekdll/platform/framework_exceptions.h"

namespace {

const char* ArchiveCauseText(int cause)
{
    switch (cause) {
    case CArchiveException::readOnly: return "archive: write to an archive that is loading";
    case CArchiveException::endOfFile: return "archive: read past the end of the stream";
    case CArchiveException::writeOnly: return "archive: read from an archive that is storing";
    case CArchiveException::badIndex: return "archive: a count or size that the stream cannot hold";
    case CArchiveException::badClass: return "archive: unexpected object class";
    case CArchiveException::badSchema: return "archive: unexpected format version";
    default: return "archive: malformed stream";
    }
}

const char* FileCauseText(int cause)
{
    switch (cause) {
    case CFileException::fileNotFound: return "file: not found";
    case CFileException::badPath: return "file: bad path";
    case CFileException::accessDenied: return "file: access denied";
    case CFileException::badSeek: return "file: bad seek";
    case CFileException::hardIO: return "file: input/output error";
    case CFileException::diskFull: return "file: disk full";
    case CFileException::endOfFile: return "file: end of file";
    default: return "file: error";
    }
}

CString WithName(const char* text, const CString& fileName)
{
    return fileName.empty() ? CString(text) : CString(text) + " (" + fileName + ")";
}

} // namespace

const char* CMemoryException::what() const noexcept
{
    return "out of memory";
}

CArchiveException::CArchiveException(int cause, const CString& fileName)
    : std::runtime_error(WithName(ArchiveCauseText(cause), fileName)), m_cause(cause), m_strFileName(fileName)
{
}

CFileException::CFileException(int cause, const CString& fileName)
    : std::runtime_error(WithName(FileCauseText(cause), fileName)), m_cause(cause), m_strFileName(fileName)
{
}

CInvalidArgException::CInvalidArgException() : std::invalid_argument("invalid argument")
{
}

void AfxThrowMemoryException()
{
    throw CMemoryException();
}

void AfxThrowArchiveException(int cause, const CString& fileName)
{
    throw CArchiveException(cause, fileName);
}

void AfxThrowFileException(int cause, const CString& fileName)
{
    throw CFileException(cause, fileName);
}

void AfxThrowInvalidArgException()
{
    throw CInvalidArgException();
}
