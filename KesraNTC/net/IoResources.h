#pragma once

#include "KesraNTC/base/CLock.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/EventHandle.h"

#include <atomic>

namespace Kesra
{

/// How far the one overlapped write of a connection is. Whoever takes it from Pending to Finishing accounts
/// for the completion and then makes it Idle; only then may the next one begin.
enum class SendState { Idle, Pending, Finishing };

/// What a connection's copies share: its events, and the write that may be outstanding.
struct IoResources {
    EventHandle Read{EventHandle::AutoReset};
    EventHandle Write{EventHandle::AutoReset};
    EventHandle SendFinished{
        EventHandle::ManualReset}; ///< set when a write was accounted for, until the next one

    CLock SendLock; ///< one sender at a time, also while it waits for the previous write
    std::atomic<SendState> Sending{SendState::Idle};
    std::atomic<DWORD> SendError{0}; ///< code of the failed write that ends the connection, 0 = none
    char Rest[CNTPacket::Capacity];  ///< the bytes of the outstanding write
};

} // namespace Kesra
