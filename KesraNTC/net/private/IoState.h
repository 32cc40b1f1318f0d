#pragma once

#include "KesraNTC/net/private/ClientConnection.h"
#include "KesraNTC/net/private/LockRoles.h"

#include <memory>

namespace Kesra
{

/// What a socket's copies share: its events, and the connection that a receive thread runs on it. Whoever
/// closes or sends keeps it, since the object itself may be deleted meanwhile.
struct IoState {
    static constexpr std::size_t UsualOutboxLimit = std::size_t{1024} * 1024;

    EventHandle Read{EventHandle::AutoReset};
    EventHandle Write{EventHandle::AutoReset}; ///< of the write block, for sends without a receive thread
    EventHandle Wake{EventHandle::AutoReset};  ///< a receive thread that has paused looks around

    /// False when the system could not make the events.
    bool IsWhole() const { return Read.Get() != nullptr && Write.Get() != nullptr && Wake.Get() != nullptr; }

    CLock SendLock; ///< guards Current and its outbox; for moments, never around CloseLock
    /// Held while the socket is replaced or closed, until nothing is outstanding on it.
    GuardLock CloseLock;
    /// The newest connection, ended or not; null until a receive thread was begun.
    std::shared_ptr<ClientConnection> Current KESRANTC_LOCKING(guarded_by(SendRole));
    /// Counts every socket that was set; changed under CloseLock.
    std::atomic<std::uint64_t> Generation{0};
    std::atomic<std::size_t> OutboxLimit{UsualOutboxLimit};
};

} // namespace Kesra
