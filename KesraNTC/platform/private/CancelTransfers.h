#pragma once

#include "KesraNTC/platform/Platform.h"

namespace Kesra
{

/// Ends what is pending on a socket that is about to be closed.
#ifdef _WIN32
inline void CancelTransfers(SOCKET socket)
{
    // Closing alone may let a pending write go on behind the program's back.
    CancelIoEx(reinterpret_cast<HANDLE>(socket), nullptr);
}
#else
inline void CancelTransfers(SOCKET)
{
    // Closing ends it all.
}
#endif

} // namespace Kesra
