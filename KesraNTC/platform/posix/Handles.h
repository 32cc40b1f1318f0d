#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Types.h"

/// Refers to a kernel object (an event, a file); owned by whoever created it until CloseHandle.
using HANDLE = void*;
using LPHANDLE = HANDLE*;

struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD NO_ERROR = 0;
constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;

/// Gives up the handle; the object goes away with its last user. FALSE for what is not a handle.
KESRANTC_API BOOL CloseHandle(HANDLE object);

/// The error of the calling thread's last failed call. Calls that succeed leave it as it was.
KESRANTC_API DWORD GetLastError();
KESRANTC_API void SetLastError(DWORD code);
