#pragma once

#include "KesraNTC/base/CLock.h"
#include "KesraNTC/net/CNTBase.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/rpc/CNestedReply.h"

#include <atomic>
#include <map>
#include <memory>

namespace Kesra
{
struct ConnectionKey;
struct ProxyState;
} // namespace Kesra

/// The generic half of the requests: hands out serials, keeps the table of requests that wait for a reply and
/// blocks a requester until its reply is in. A concrete proxy says how to send and what to do about failure.
class KESRANTC_API CNTProxy
{
public:
    static constexpr short LastSerial = 10000; ///< serials run from 1 to this and start again

    CNTProxy();
    /// Drops the table's entries; the records belong to their requesters.
    virtual ~CNTProxy();
    CNTProxy(const CNTProxy&) = delete;
    CNTProxy& operator=(const CNTProxy&) = delete;

    /// Sends a packet. Here: nothing is sent, true.
    virtual bool Send(CNTPacket& packet);
    /// Called when a send failed or a reply did not come. Here: nothing.
    virtual void ProcessProxyError();

    /// Makes and registers the record of a new waiting request, with the next serial whose request is not
    /// still waiting. The caller owns it and deletes it after WaitForNestedRequestReply. Null when there is
    /// no memory or all 10000 serials are waiting. Any thread.
    CNestedReply* PreNestedRequestReply();
    /// Blocks until the reply is in, at most the time limit (20000 ms). True when it is; false, after
    /// ProcessProxyError, when it did not come. Either way the record is no longer registered. What
    /// ProcessProxyError disconnects is the connection on which the request was made, never a newer one.
    bool WaitForNestedRequestReply(CNestedReply* record);
    /// Hands a received reply, its position behind the serial, to the request with that serial and wakes it.
    /// False when none waits. Called by the dispatcher.
    bool DeliverReply(short serial, const CNTPacket& reply);
    /// How long a waiting request waits for its reply: 20000 ms unless set. For requests made from now on.
    /// Any thread.
    void SetReplyTimeLimit(unsigned long milliseconds);
    unsigned long GetReplyTimeLimit() const;
    /// Number of requests that wait for their reply. Any thread.
    int GetPendingCount() const { return PendingCount.load(std::memory_order_acquire); }

    std::map<short, CNestedReply*> Pending; ///< the waiting requests by serial, under Lock
    short NextSerial;                       ///< of the next waiting request, under Lock
    CNTBase* Client;                        ///< what the proxy sends through; set by CNTBaseClient::Attach
    CLock Lock;                             ///< taken inside the connection's lock, held for moments only

protected:
    /// The connection that a request made now belongs to.
    Kesra::ConnectionKey GetConnectionKey() const;

private:
    friend class CNTBaseClient;

    /// Hands out the next serial that is free; false when none is.
    bool Register(CNestedReply& record);
    void NoteReply(const CNestedReply& record);
    /// Takes the record out of the table; true when its reply has been delivered.
    bool Unregister(const CNestedReply& record);

    std::atomic<int> PendingCount; ///< size of Pending
    std::unique_ptr<Kesra::ProxyState> State;
};
