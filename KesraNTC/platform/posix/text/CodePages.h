#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Types.h"

// The ANSI and the OEM code page of this system are both 949 (Korean, Unified Hangul Code).
constexpr UINT CP_ACP = 0;
constexpr UINT CP_OEMCP = 1;
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD MB_ERR_INVALID_CHARS = 0x8;

constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_INVALID_FLAGS = 1004;
constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;

KESRANTC_API int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceLength,
                                     LPWSTR target, int targetLength);
KESRANTC_API int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceLength,
                                     LPSTR target, int targetLength, LPCSTR defaultChar,
                                     LPBOOL usedDefaultChar);

KESRANTC_API BOOL CharToOemA(LPCSTR source, LPSTR target);
KESRANTC_API BOOL OemToCharA(LPCSTR source, LPSTR target);
