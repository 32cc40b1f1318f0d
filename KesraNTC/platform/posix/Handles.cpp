#include "KesraNTC/platform/posix/waiting/private/KernelObject.h"

namespace
{

// Part of the library's static thread block: reached without a call.
[[gnu::tls_model("initial-exec")]] thread_local DWORD LastError = ERROR_SUCCESS;

} // namespace

DWORD GetLastError()
{
    return LastError;
}

void SetLastError(DWORD code)
{
    LastError = code;
}

BOOL CloseHandle(HANDLE object)
{
    if (!Kesra::IsObjectHandle(object)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    static_cast<Kesra::KernelObject*>(object)->Release();
    return TRUE;
}
