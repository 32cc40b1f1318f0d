#include "KesraNTC/platform/posix/sockets/private/EventSelection.h"

#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"

#include <utility>

namespace Kesra
{
namespace
{

/// What holds now of these poll events; the end of a connection is always among them.
int PollNow(int descriptor, short events)
{
    pollfd state{descriptor, events, 0};
    return poll(&state, 1, 0) > 0 ? state.revents : 0;
}

} // namespace

bool EventSelection::Pin(pollfd& descriptor)
{
    const int events = Watch.load(std::memory_order_acquire);
    if (events == NoWatch || !Socket.PinWhateverIsOpen())
        return false;
    descriptor = {Socket.GetDescriptor(), static_cast<short>(events), 0};
    return true;
}

void EventSelection::Unpin()
{
    Socket.Unpin();
}

void EventSelection::Advance()
{
    const LockGuard guard(Lock);
    Observe();
}

int EventSelection::Select(SOCKET handle, EventObject* event, long networkEvents)
{
    const LockGuard guard(Lock);
    if (!Socket.IsOpen(handle))
        return WSAENOTSOCK;
    if (event != Event) {
        if (event != nullptr && !WaitQueue::Of(event).Attach(event, this))
            return WSAEINVAL;
        DropEvent();
        Event = event;
        if (event != nullptr)
            event->AddRef();
    }
    Wanted = networkEvents;
    Recorded = {};
    if (State == Phase::Ended)
        State = Phase::Connected;
    Observe();
    return 0;
}

bool EventSelection::IsActive()
{
    const LockGuard guard(Lock);
    return Event != nullptr;
}

WSANETWORKEVENTS EventSelection::Take(EventObject* reset)
{
    const LockGuard guard(Lock);
    Observe();
    if (reset != nullptr)
        reset->Reset();
    return std::exchange(Recorded, {});
}

void EventSelection::BeginConnecting()
{
    const LockGuard guard(Lock);
    Socket.HadPeer.store(true, std::memory_order_relaxed);
    Socket.ForgetError();
    State = Phase::Connecting;
    Observe();
}

void EventSelection::SetConnected()
{
    const LockGuard guard(Lock);
    Socket.HadPeer.store(true, std::memory_order_relaxed);
    State = Phase::Connected;
    Observe();
}

bool EventSelection::HasBegun()
{
    const LockGuard guard(Lock);
    return State != Phase::Unconnected;
}

void EventSelection::Clear()
{
    const LockGuard guard(Lock);
    DropEvent();
    State = Phase::Unconnected;
    Wanted = 0;
    Recorded = {};
}

void EventSelection::Observe()
{
    if (Event == nullptr)
        return;
    if (State == Phase::Connecting)
        ObserveAttempt();
    if (State == Phase::Connected && (Wanted & FD_CLOSE) != 0)
        ObserveEnd();
    UpdateWatch();
}

void EventSelection::ObserveAttempt()
{
    if (PollNow(Socket.GetDescriptor(), POLLOUT) == 0)
        return;
    const int error = Socket.TakeError();
    State = error == 0 ? Phase::Connected : Phase::Unconnected;
    Socket.HadPeer.store(error == 0, std::memory_order_relaxed);
    Record(FD_CONNECT, FD_CONNECT_BIT, error);
}

void EventSelection::ObserveEnd()
{
    const int state = PollNow(Socket.GetDescriptor(), 0);
    if (state == 0)
        return;
    const int error = Socket.TakeError();
    if (error == 0 && (state & POLLHUP) == 0)
        return;
    State = Phase::Ended;
    Record(FD_CLOSE, FD_CLOSE_BIT, error);
}

void EventSelection::Record(long networkEvent, int bit, int error)
{
    if ((Wanted & networkEvent) == 0)
        return;
    Recorded.lNetworkEvents |= networkEvent;
    Recorded.iErrorCode[bit] = error;
    Event->Set();
}

void EventSelection::DropEvent()
{
    if (Event == nullptr)
        return;
    WaitQueue::Of(Event).Detach(Event);
    Watch.store(NoWatch, std::memory_order_release);
    std::exchange(Event, nullptr)->Release();
}

void EventSelection::UpdateWatch()
{
    int watch = NoWatch;
    if (State == Phase::Connecting)
        watch = POLLOUT;
    else if (State == Phase::Connected && (Wanted & FD_CLOSE) != 0)
        watch = 0;
    // A thread that waits for the event already has to look at the socket from now on.
    if (Watch.exchange(watch, std::memory_order_acq_rel) == NoWatch && watch != NoWatch)
        WaitQueue::Of(Event).Alert(Event);
}

} // namespace Kesra
