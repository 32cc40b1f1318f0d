#pragma once

#include "KesraNTC/platform/Platform.h"

namespace Kesra
{

/// Is shown bytes of a stream and returns how many of them, from the first on, it has used up (0 to `size`).
/// It runs under the lock of the socket's read direction: it may take short locks but makes no socket call.
using ReadAheadTaker = DWORD (*)(void* context, const char* data, DWORD size);

#ifdef _WIN32
/// The system reads nothing ahead.
inline DWORD ConsumeReadAhead(SOCKET, ReadAheadTaker, void*)
{
    return 0;
}
#else
/// Shows `take`, at most once, what the socket has read ahead and no read waits for. What it used up is gone;
/// the next WSARecv finds the rest. Returns the number of bytes used up: 0, too, when there is nothing, when
/// the socket is not open or when a read is pending.
DWORD ConsumeReadAhead(SOCKET socket, ReadAheadTaker take, void* context);
#endif

} // namespace Kesra
