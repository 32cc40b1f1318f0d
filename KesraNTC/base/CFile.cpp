#include "KesraNTC/base/CFile.h"

#include "KesraNTC/base/Trace.h"
#include "KesraNTC/base/private/BoundedFormat.h"

#include <cstdarg>
#include <cstring>

namespace
{

constexpr std::size_t TextRoom = 512;

} // namespace

CFile::CFile() : Handle(INVALID_HANDLE_VALUE) {}
CFile::CFile(const CFile&) = default;
CFile& CFile::operator=(const CFile&) = default;
CFile::~CFile() = default;

void* CFile::Open(const char* name)
{
    if (name == nullptr)
        return INVALID_HANDLE_VALUE;
    const HANDLE opened = CreateFileA(name, GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_ARCHIVE, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        TRACE("File Open Failed [%s]", name);
        return INVALID_HANDLE_VALUE;
    }
    SetFilePointer(opened, 0, nullptr, FILE_END);
    Handle = opened;
    return opened;
}

void CFile::Close()
{
    if (Handle == INVALID_HANDLE_VALUE)
        return;
    CloseHandle(Handle);
    Handle = INVALID_HANDLE_VALUE;
}

void CFile::Write(const char* format, ...)
{
    char text[TextRoom];
    std::va_list arguments;
    va_start(arguments, format);
    Kesra::BoundedFormat(text, format, arguments);
    va_end(arguments);
    Write(static_cast<const void*>(text), static_cast<unsigned int>(std::strlen(text)));
}

void CFile::Write(const void* data, unsigned int n)
{
    if (n == 0)
        return;
    DWORD written = 0;
    if (!WriteFile(Handle, data, n, &written, nullptr))
        TRACE("Can't Write %d buffer\n", GetLastError());
    else if (written < n)
        TRACE("DiskFull! %s\n", "CFile");
}

unsigned int CFile::Read(void* data, unsigned int n)
{
    if (n == 0)
        return 0;
    DWORD read = 0;
    if (!ReadFile(Handle, data, n, &read, nullptr))
        TRACE("Can't Read %d buffer\n", GetLastError());
    return static_cast<unsigned int>(read);
}

void CFile::Remove(const char* name)
{
    if (!DeleteFileA(name))
        TRACE("Can't Remove %s File\n", name);
}
