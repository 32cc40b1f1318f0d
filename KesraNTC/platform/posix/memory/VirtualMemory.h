#pragma once

#include "KesraNTC/platform/Export.h"
#include "KesraNTC/platform/posix/Handles.h"

using SIZE_T = std::size_t;

constexpr DWORD MEM_COMMIT = 0x1000;
constexpr DWORD MEM_RESERVE = 0x2000;
constexpr DWORD MEM_RELEASE = 0x8000;
constexpr DWORD PAGE_READWRITE = 0x04;

/// Pages of the system, zeroed, at an address of its choice (`address` is null), to be read and written
/// (`type` is MEM_RESERVE | MEM_COMMIT, `protection` PAGE_READWRITE). A page takes memory once it is touched;
/// one more remembers the size. Null, with the last error ERROR_NOT_ENOUGH_MEMORY, when the system refuses.
KESRANTC_API LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD type, DWORD protection);

/// Gives all pages of one VirtualAlloc back (`size` is 0, `type` MEM_RELEASE).
KESRANTC_API BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD type);
