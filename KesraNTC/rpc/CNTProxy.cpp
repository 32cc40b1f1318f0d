#include "KesraNTC/rpc/CNTProxy.h"

#include "KesraNTC/base/Trace.h"
#include "KesraNTC/rpc/ReplyTimeLimit.h"

#include <memory>
#include <new>

using Kesra::Locked;

std::atomic<unsigned> Kesra::ReplyTimeLimit{20000};

CNestedReply::CNestedReply()
    : Serial(0),
      Event(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      Reply(CNTPacket::Unzeroed{}),
      Delivered(false)
{
}

CNestedReply::~CNestedReply()
{
    if (Event != nullptr)
        CloseHandle(Event);
}

CNTProxy::CNTProxy() : NextSerial(1), Client(nullptr), PendingCount(0) {}

CNTProxy::~CNTProxy() = default;

bool CNTProxy::Send(CNTPacket&)
{
    return true;
}

void CNTProxy::ProcessProxyError() {}

CNestedReply* CNTProxy::PreNestedRequestReply()
{
    std::unique_ptr<CNestedReply> record(new (std::nothrow) CNestedReply);
    if (record == nullptr)
        return nullptr;
    const Locked registering(Lock);
    record->Serial = NextSerial;
    try {
        Pending.emplace(record->Serial, record.get());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    PendingCount.store(static_cast<int>(Pending.size()), std::memory_order_release);
    NextSerial = NextSerial < LastSerial ? static_cast<short>(NextSerial + 1) : static_cast<short>(1);
    return record.release();
}

bool CNTProxy::WaitForNestedRequestReply(CNestedReply* record)
{
    const bool signalled = WaitForSingleObject(record->Event, Kesra::ReplyTimeLimit) == WAIT_OBJECT_0;
    const bool delivered = Unregister(*record);
    if (signalled)
        return true;
    if (delivered) {
        // The reply came in the last moment; the dispatcher must be done with the event before it is closed.
        WaitForSingleObject(record->Event, INFINITE);
        return true;
    }
    TRACE("Reply Error!!!\n");
    ProcessProxyError();
    return false;
}

bool CNTProxy::DeliverReply(short serial, const CNTPacket& reply)
{
    HANDLE event = nullptr;
    {
        const Locked delivering(Lock);
        const auto found = Pending.find(serial);
        if (found == Pending.end())
            return false;
        found->second->Reply = reply;
        found->second->Delivered = true;
        event = found->second->Event;
        Pending.erase(found);
        PendingCount.store(static_cast<int>(Pending.size()), std::memory_order_release);
    }
    // Outside the lock: the requester runs at once and would only meet it again.
    SetEvent(event);
    return true;
}

bool CNTProxy::Unregister(const CNestedReply& record)
{
    const Locked unregistering(Lock);
    const auto found = Pending.find(record.Serial);
    if (found != Pending.end() && found->second == &record) {
        Pending.erase(found);
        PendingCount.store(static_cast<int>(Pending.size()), std::memory_order_release);
    }
    return record.Delivered;
}
