#pragma once

#include "KesraNTC/base/CLock.h"
#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/platform/EventHandle.h"

#include <atomic>

namespace Kesra
{

/// What a connection's copies share: its events, and the write that may be outstanding.
struct IoResources {
    EventHandle Read{EventHandle::AutoReset};
    EventHandle Write{EventHandle::AutoReset};
    /// Set when a write was accounted for, until the next one.
    EventHandle SendFinished{EventHandle::ManualReset};

    CLock SendLock; ///< one sender at a time, also while it waits for the previous write
    /// Guards OverlappedOUT while a write begins and while somebody looks whether it has completed.
    CLock WriteLock;
    /// Held while a socket is closed, until nothing is outstanding on it. Innermost.
    CLock CloseLock;
    /// A write is outstanding: whoever finds it complete accounts for it, and only then may the next one
    /// begin. Changed under WriteLock.
    std::atomic<bool> IsWriting{false};
    std::atomic<DWORD> SendError{0}; ///< code of the failed write that ends the connection, 0 = none
    char Rest[CNTPacket::Capacity];  ///< the bytes of the outstanding write
};

} // namespace Kesra
