#pragma once

#include "KesraNTC/platform/private/Locking.h"

#include <atomic>
#include <cstdint>
#include <ctime>

namespace Kesra
{

/// Sleeps while the word holds `expected`; null for no deadline (monotonic clock, absolute). False when the
/// deadline has passed. May return early for no reason.
bool FutexWait(const void* word, std::uint32_t expected, const timespec* deadline);

/// Wakes one sleeper. Only the address counts: the word may be gone by the time of the call.
void FutexWakeOne(const void* word);

// A lock in a plain word (0 is free) for short sections: one atomic operation each way, contenders sleep.
enum LockStates : std::uint32_t { LockFree, LockHeld, LockContended };

void LockContendedWord(std::uint32_t& word);

inline bool TryLockWord(std::uint32_t& word)
{
    std::uint32_t expected = LockFree;
    return std::atomic_ref(word).compare_exchange_strong(expected, LockHeld, std::memory_order_acquire,
                                                         std::memory_order_relaxed);
}

inline void LockWord(std::uint32_t& word)
{
    if (!TryLockWord(word))
        LockContendedWord(word);
}

inline void UnlockWord(std::uint32_t& word)
{
    if (std::atomic_ref(word).exchange(LockFree, std::memory_order_release) == LockContended)
        FutexWakeOne(&word);
}

/// The same lock as an object, for LockGuard.
class KESRANTC_LOCKING(capability("lock")) FutexLock
{
public:
    void lock() KESRANTC_LOCKING(acquire_capability()) { LockWord(Word); }
    void unlock() KESRANTC_LOCKING(release_capability()) { UnlockWord(Word); }
    /// Whether somebody may sleep until it is free.
    bool IsContended() { return std::atomic_ref(Word).load(std::memory_order_acquire) == LockContended; }

private:
    std::uint32_t Word = LockFree;
};

} // namespace Kesra
