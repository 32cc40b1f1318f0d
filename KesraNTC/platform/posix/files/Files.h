#pragma once

#include "KesraNTC/platform/posix/Handles.h"

struct OVERLAPPED;

using PLONG = LONG*;

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_SHARE_READ = 0x1;
constexpr DWORD FILE_SHARE_WRITE = 0x2;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD OPEN_ALWAYS = 4;
constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_BEGIN = 0;
constexpr DWORD FILE_CURRENT = 1;
constexpr DWORD FILE_END = 2;
constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_SHARING_VIOLATION = 32;
constexpr DWORD ERROR_DISK_FULL = 112;
constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
constexpr DWORD ERROR_ALREADY_EXISTS = 183;

// Names are bytes in the ANSI code page, taken as they are; a backslash separates folders like a slash.

/// Knows OPEN_EXISTING and OPEN_ALWAYS. Who opens a file for writing without FILE_SHARE_WRITE keeps other
/// writers of this kind away, and keeps the file from being deleted.
KESRANTC_API HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                DWORD disposition, DWORD attributes, HANDLE templateFile);
/// Moves within the first 4 GiB: `distanceHigh` is null.
KESRANTC_API DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD method);
KESRANTC_API BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, OVERLAPPED* overlapped);
KESRANTC_API BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, OVERLAPPED* overlapped);
KESRANTC_API BOOL DeleteFileA(LPCSTR name);
/// 0, or -1 with errno set.
KESRANTC_API int _mkdir(const char* name);
