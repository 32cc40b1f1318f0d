#include "KesraNTC/platform/posix/Waker.h"

#include "KesraNTC/platform/posix/Deadline.h"
#include "KesraNTC/platform/posix/Futex.h"

#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace Kesra
{

Waker& Waker::Current()
{
    // The pointer outlives its owner: a global object's destructor may wait, too, after the main thread has
    // destroyed its thread-local ones. What is made then stays until the end of the process.
    static thread_local constinit Waker* own = nullptr;
    struct Owner {
        ~Owner() { std::exchange(own, nullptr)->Release(); }
    };
    if (own == nullptr) {
        own = new Waker;
        static thread_local const Owner owner;
    }
    return *own;
}

Waker::~Waker()
{
    if (WakeDescriptor >= 0)
        close(WakeDescriptor);
}

void Waker::Release()
{
    if (References.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
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
    timespec left = deadline != nullptr ? Deadline::Remaining(*deadline) : timespec{};
    const timespec* limit = deadline != nullptr ? &left : nullptr;
    // Out of descriptors there is no way to be woken: look again every few milliseconds until there is one.
    const timespec brief{0, 5000000};
    if (WakeDescriptor < 0 && (limit == nullptr || left.tv_sec != 0 || left.tv_nsec > brief.tv_nsec))
        limit = &brief;
    if (!BeginRest(Polling) || ppoll(descriptors, count + 1, limit, nullptr) < 0)
        for (std::size_t i = 0; i <= count; ++i)
            descriptors[i].revents = 0;
    State.exchange(Awake, std::memory_order_acq_rel);
    eventfd_t drained;
    if ((descriptors[count].revents & POLLIN) != 0)
        eventfd_read(WakeDescriptor, &drained);
}

void Waker::OpenWakeDescriptor()
{
    if (WakeDescriptor < 0)
        WakeDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

} // namespace Kesra
