#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <poll.h>

namespace Kesra
{

/// Puts one thread to sleep and lets others wake it. Every thread has its own among its thread-local
/// variables, so that a wait cannot fail for lack of memory; whoever wants to wake it later holds a
/// reference, and the thread does not end before that is given back.
class Waker
{
public:
    constexpr Waker() = default;
    Waker(const Waker&) = delete;
    Waker& operator=(const Waker&) = delete;

    /// The calling thread's own, for its waits; each of them ends with EndWait.
    static Waker& Current();
    void EndWait();

    bool IsCurrent() const;

    void AddRef() { References.fetch_add(1, std::memory_order_relaxed); }
    void Release() { References.fetch_sub(1, std::memory_order_release); }

    /// Ends the sleep of the thread, or keeps it from falling asleep next time.
    void Notify();

    /// Forgets what came before; the owner calls it before it tells anybody where it is going to sleep.
    void Prepare() { State.store(Awake, std::memory_order_relaxed); }

    /// Sleeps until notified or the deadline (null for none) has passed; may return early.
    void Sleep(const timespec* deadline);

    /// The same while also waiting for descriptors. `descriptors` has room for one more than `count`; their
    /// `revents` are valid afterwards. When the system cannot wait for them, all count as ready after a
    /// while.
    void Poll(pollfd* descriptors, std::size_t count, const timespec* deadline);

private:
    enum : std::uint32_t { Awake, Notified, Sleeping, Polling };

    static void Leave(void* waker);

    bool BeginRest(std::uint32_t kind);
    int PollOnce(pollfd* descriptors, std::size_t count, const timespec* deadline);
    void OpenWakeDescriptor();
    void CloseDown();

    std::atomic<std::uint32_t> State{Awake};
    std::atomic<std::uint32_t> References{0};
    // Whether the end of the thread calls Leave; the owner's alone.
    bool IsRegistered = false;
    // Opened on the thread itself; a late Notify may read it meanwhile when there was none before.
    std::atomic<int> WakeDescriptor{-1};
};

} // namespace Kesra
