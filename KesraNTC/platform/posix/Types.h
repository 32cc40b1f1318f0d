#pragma once

#include <cstddef>
#include <cstdint>

// The plain types of the Win32 interface with the widths they have on 32-bit Windows.
using BYTE = unsigned char;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using BOOL = int;
using CHAR = char;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using WCHAR = char16_t;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPBOOL = BOOL*;
using LPDWORD = DWORD*;
using PVOID = void*;
using HRESULT = std::int32_t;

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using _SYSTEMTIME = SYSTEMTIME;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using _FILETIME = FILETIME;
