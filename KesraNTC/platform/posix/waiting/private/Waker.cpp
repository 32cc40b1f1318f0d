#include "KesraNTC/platform/posix/waiting/private/Waker.h"

#include "KesraNTC/platform/posix/waiting/private/Deadline.h"
#include "KesraNTC/platform/posix/waiting/private/Futex.h"
#include "KesraNTC/platform/posix/waiting/private/ThreadKey.h"

#include <cerrno>
#include <sched.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Kesra
{

namespace
{

[[gnu::tls_model("initial-exec")]] thread_local constinit Waker Own;

// How long to rest where the system cannot wait.
constexpr long BriefNanoseconds = 5000000;

} // namespace

Waker& Waker::Current()
{
    static ThreadKey key(&Waker::Leave);
    if (!Own.IsRegistered)
        Own.IsRegistered = key.Set(&Own);
    return Own;
}

void Waker::EndWait()
{
    // Usually only the end of the thread waits for those who are about to wake it.
    if (!IsRegistered)
        CloseDown();
}

bool Waker::IsCurrent() const
{
    return this == &Own;
}

void Waker::Leave(void* waker)
{
    auto* self = static_cast<Waker*>(waker);
    self->CloseDown();
    // What ends later with the thread may wait once more.
    self->IsRegistered = false;
}

void Waker::CloseDown()
{
    // Whoever holds a reference gives it back without waiting for anything.
    while (References.load(std::memory_order_acquire) != 0)
        sched_yield();
    if (const int descriptor = WakeDescriptor.exchange(-1); descriptor >= 0)
        close(descriptor);
}

void Waker::Notify()
{
    switch (State.exchange(Notified, std::memory_order_acq_rel)) {
    case Sleeping:
        FutexWakeOne(&State);
        break;
    case Polling:
        if (WakeDescriptor >= 0)
            eventfd_write(WakeDescriptor, 1);
        break;
    default:
        break;
    }
}

bool Waker::BeginRest(std::uint32_t kind)
{
    std::uint32_t expected = Awake;
    return State.compare_exchange_strong(expected, kind, std::memory_order_acq_rel,
                                         std::memory_order_acquire);
}

void Waker::Sleep(const timespec* deadline)
{
    if (BeginRest(Sleeping))
        FutexWait(&State, Sleeping, deadline);
    State.exchange(Awake, std::memory_order_acq_rel);
}

void Waker::Poll(pollfd* descriptors, std::size_t count, const timespec* deadline)
{
    OpenWakeDescriptor();
    descriptors[count] = {WakeDescriptor, POLLIN, 0};
    const int error = BeginRest(Polling) ? PollOnce(descriptors, count + 1, deadline) : EINTR;
    if (error != 0)
        for (std::size_t i = 0; i <= count; ++i)
            descriptors[i].revents = 0;
    State.exchange(Awake, std::memory_order_acq_rel);
    eventfd_t drained;
    if ((descriptors[count].revents & POLLIN) != 0)
        eventfd_read(WakeDescriptor, &drained);
    if (error == 0 || error == EINTR)
        return;
    const timespec brief{0, BriefNanoseconds};
    nanosleep(&brief, nullptr);
    for (std::size_t i = 0; i < count; ++i)
        descriptors[i].revents = POLLERR;
}

int Waker::PollOnce(pollfd* descriptors, std::size_t count, const timespec* deadline)
{
    timespec left = deadline != nullptr ? Deadline::Remaining(*deadline) : timespec{};
    const timespec* limit = deadline != nullptr ? &left : nullptr;
    // Out of descriptors there is no way to be woken: look again every few milliseconds until there is one.
    const timespec brief{0, BriefNanoseconds};
    if (WakeDescriptor < 0 && (limit == nullptr || left.tv_sec != 0 || left.tv_nsec > brief.tv_nsec))
        limit = &brief;
    return ppoll(descriptors, count, limit, nullptr) < 0 ? errno : 0;
}

void Waker::OpenWakeDescriptor()
{
    if (WakeDescriptor < 0)
        WakeDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

} // namespace Kesra
