#include "KesraNTC/platform/posix/waiting/private/Futex.h"

#include <cerrno>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace Kesra
{

bool FutexWait(const void* word, std::uint32_t expected, const timespec* deadline)
{
    const long result = syscall(SYS_futex, word, FUTEX_WAIT_BITSET_PRIVATE, expected, deadline, nullptr,
                                FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno != ETIMEDOUT;
}

void FutexWakeOne(const void* word)
{
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void LockContendedWord(std::uint32_t& word)
{
    // The sections are short: with a second processor at work the holder is nearly done.
    static const int spins = std::thread::hardware_concurrency() > 1 ? 200 : 0;
    const std::atomic_ref state(word);
    for (int spin = 0; spin < spins; ++spin)
        if (state.load(std::memory_order_relaxed) == LockFree && TryLockWord(word))
            return;
    while (state.exchange(LockContended, std::memory_order_acquire) != LockFree)
        FutexWait(&word, LockContended, nullptr);
}

} // namespace Kesra
