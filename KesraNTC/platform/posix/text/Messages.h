#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Types.h"

#include <cstdarg>

constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100;
constexpr DWORD FORMAT_MESSAGE_FROM_STRING = 0x400;

constexpr DWORD ERROR_NO_WORK_DONE = 235;

using HLOCAL = void*;

/// Knows messages from a string only, and always allocates; `buffer` is the address of the pointer that
/// receives the memory, which LocalFree gives back.
KESRANTC_API DWORD FormatMessageA(DWORD flags, LPCVOID source, DWORD messageId, DWORD languageId,
                                  LPSTR buffer, DWORD minSize, va_list* arguments);
KESRANTC_API HLOCAL LocalFree(HLOCAL memory);
