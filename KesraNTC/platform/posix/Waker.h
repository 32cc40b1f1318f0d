#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <poll.h>

namespace Kesra
{

/// Puts one thread to sleep and lets others wake it. Every thread has its own; whoever wants to wake it later
/// holds a reference, so that a wake-up that comes late meets neither freed memory nor a foreign descriptor.
class Waker
{
public:
    /// The calling thread's own, made on first use.
    static Waker& Current();

    void AddRef() { References.fetch_add(1, std::memory_order_relaxed); }
    void Release();

    /// Ends the sleep of the thread, or keeps it from falling asleep next time.
    void Notify();

    /// Forgets what came before; the owner calls it before it tells anybody where it is going to sleep.
    void Prepare() { State.store(Awake, std::memory_order_relaxed); }

    /// Sleeps until notified or the deadline (null for none) has passed; may return early.
    void Sleep(const timespec* deadline);

    /// The same while also waiting for descriptors. `descriptors` has room for one more than `count`; their
    /// `revents` are valid afterwards.
    void Poll(pollfd* descriptors, std::size_t count, const timespec* deadline);

private:
    enum : std::uint32_t { Awake, Notified, Sleeping, Polling };

    Waker() = default;
    ~Waker();

    bool BeginRest(std::uint32_t kind);
    void OpenWakeDescriptor();

    std::atomic<std::uint32_t> State{Awake};
    std::atomic<std::uint32_t> References{1};
    // Opened on the thread itself; a late Notify may read it meanwhile when there was none before.
    std::atomic<int> WakeDescriptor{-1};
};

} // namespace Kesra
