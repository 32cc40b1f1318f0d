#pragma once

#include "KesraNTC/base/CLock.h"
#include "KesraNTC/net/CNTBase.h"
#include "KesraNTC/platform/Export.h"
#include "KesraNTC/rpc/CNestedReply.h"

#include <atomic>
#include <map>

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

    /// Makes and registers the record of a new waiting request. The caller owns it and deletes it after
    /// WaitForNestedRequestReply. Null when there is no memory. Any thread.
    CNestedReply* PreNestedRequestReply();
    /// Blocks until the reply is in, at most 20000 ms. True when it is; false, after ProcessProxyError, when
    /// it did not come. Either way the record is no longer registered.
    bool WaitForNestedRequestReply(CNestedReply* record);
    /// Hands a received reply, its position behind the serial, to the request with that serial and wakes it.
    /// False when none waits. Called by the dispatcher.
    bool DeliverReply(short serial, const CNTPacket& reply);
    /// Number of requests that wait for their reply. Any thread.
    int GetPendingCount() const { return PendingCount.load(std::memory_order_acquire); }

    std::map<short, CNestedReply*> Pending; ///< the waiting requests by serial, under Lock
    short NextSerial;                       ///< of the next waiting request, under Lock
    CNTBase* Client;                        ///< what the proxy sends through; set by CNTBaseClient::Attach
    CLock Lock;                             ///< taken inside the connection's lock, held for moments only

private:
    /// Takes the record out of the table; true when its reply has been delivered.
    bool Unregister(const CNestedReply& record);

    std::atomic<int> PendingCount; ///< size of Pending
};
