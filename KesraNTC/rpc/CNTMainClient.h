#pragma once

#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/platform/Export.h"

/// The client whose received packets are sorted: pushed messages to the stub's handlers, replies to the
/// requests that wait for them, the clock message to the client itself. The game derives its client from this
/// class and implements ProcessDisconnection.
class KESRANTC_API CNTMainClient : public CNTBaseClient
{
public:
    CNTMainClient() = default;
    /// Stops receiving first, as long as the dispatcher is still there.
    ~CNTMainClient() override;
    CNTMainClient(const CNTMainClient&) = default;
    CNTMainClient& operator=(const CNTMainClient&) = default;

    /// Dispatches one packet, its position at 0; the payload is unscrambled in place. Unknown numbers,
    /// replies nobody waits for, and messages without an attached stub are dropped. Always 0.
    unsigned long ProcessPacketFromServer(CNTPacket& packet) override;
};
