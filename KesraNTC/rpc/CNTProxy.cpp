#include "KesraNTC/rpc/CNTProxy.h"

#include "KesraNTC/base/Trace.h"
#include "KesraNTC/net/CNTBaseClient.h"
#include "KesraNTC/net/private/ClientState.h"
#include "KesraNTC/net/private/DisconnectScope.h"
#include "KesraNTC/rpc/private/ProxyState.h"

#include <algorithm>
#include <chrono>
#include <new>

using namespace Kesra;

namespace
{

std::uint64_t Microseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

} // namespace

CNestedReply::CNestedReply()
    : Serial(0),
      Event(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      Reply(CNTPacket::Unzeroed{}),
      Delivered(false),
      Generation(0),
      Began(0)
{
}

CNestedReply::~CNestedReply()
{
    if (Event != nullptr)
        CloseHandle(Event);
}

CNTProxy::CNTProxy() : NextSerial(1), Client(nullptr), PendingCount(0), State(std::make_unique<ProxyState>())
{
}

CNTProxy::~CNTProxy() = default;

bool CNTProxy::Send(CNTPacket&)
{
    return true;
}

void CNTProxy::ProcessProxyError() {}

void CNTProxy::SetReplyTimeLimit(unsigned long milliseconds)
{
    State->TimeLimit = milliseconds;
}

unsigned long CNTProxy::GetReplyTimeLimit() const
{
    return State->TimeLimit;
}

ConnectionKey CNTProxy::GetConnectionKey() const
{
    const CNTBaseClient* owner = State->Owner;
    return owner != nullptr && Client == owner ? owner->GetConnectionKey() : ConnectionKey{};
}

CNestedReply* CNTProxy::PreNestedRequestReply()
{
    std::unique_ptr<CNestedReply> record(new (std::nothrow) CNestedReply);
    if (record == nullptr)
        return nullptr;
    record->Generation = GetConnectionKey().Generation;
    record->Began = Microseconds();
    try {
        return Register(*record) ? record.release() : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool CNTProxy::Register(CNestedReply& record)
{
    const auto after = [](short serial) {
        return serial < LastSerial ? static_cast<short>(serial + 1) : static_cast<short>(1);
    };
    const Held registering(Lock, ProxyRole);
    auto& pending = ProxyState::TableOf(*this);
    short serial = NextSerial;
    for (int tried = 0; pending.count(serial) != 0; serial = after(serial))
        if (++tried == LastSerial)
            return false;
    pending.emplace(serial, &record);
    record.Serial = serial;
    NextSerial = after(serial);
    PendingCount.store(static_cast<int>(pending.size()));
    return true;
}

bool CNTProxy::WaitForNestedRequestReply(CNestedReply* record)
{
    const auto limit = static_cast<DWORD>(State->TimeLimit.load());
    const auto passed =
        static_cast<DWORD>(std::min<std::uint64_t>(limit, (Microseconds() - record->Began) / 1000));
    const bool signalled = WaitForSingleObject(record->Event, limit - passed) == WAIT_OBJECT_0;
    const bool delivered = Unregister(*record);
    if (signalled)
        return true;
    if (delivered) {
        // The reply came in the last moment; the dispatcher must be done with the event before it is closed.
        WaitForSingleObject(record->Event, INFINITE);
        return true;
    }
    TRACE("Reply Error!!!\n");
    const ConnectionKey key = GetConnectionKey();
    if (key.Io != nullptr)
        State->Owner->NoteTimeOut(record->Generation);
    const DisconnectScope scope(key.Io, record->Generation, DisconnectScope::Request);
    ProcessProxyError();
    return false;
}

bool CNTProxy::DeliverReply(short serial, const CNTPacket& reply)
{
    HANDLE event = nullptr;
    {
        const Held delivering(Lock, ProxyRole);
        auto& pending = ProxyState::TableOf(*this);
        const auto found = pending.find(serial);
        if (found == pending.end())
            return false;
        found->second->Reply = reply;
        found->second->Delivered = true;
        NoteReply(*found->second);
        event = found->second->Event;
        pending.erase(found);
        PendingCount.store(static_cast<int>(pending.size()), std::memory_order_release);
    }
    // Outside the lock: the requester runs at once and would only meet it again.
    SetEvent(event);
    return true;
}

bool CNTProxy::Unregister(const CNestedReply& record)
{
    const Held unregistering(Lock, ProxyRole);
    auto& pending = ProxyState::TableOf(*this);
    const auto found = pending.find(record.Serial);
    if (found != pending.end() && found->second == &record) {
        pending.erase(found);
        PendingCount.store(static_cast<int>(pending.size()), std::memory_order_release);
    }
    return record.Delivered;
}

void CNTProxy::NoteReply(const CNestedReply& record) KESRANTC_LOCKING(requires_capability(ProxyRole))
{
    ProxyState& state = *State;
    if (state.RepliesOf != record.Generation) {
        state.RepliesOf = record.Generation;
        state.Replies = state.LongestTime = state.TotalTime = 0;
    }
    ++state.Replies;
    state.LastTime = Microseconds() - record.Began;
    state.LongestTime = std::max(state.LongestTime, state.LastTime);
    state.TotalTime += state.LastTime;
}
