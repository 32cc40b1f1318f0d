#include "KesraNTC/platform/posix/waiting/CriticalSections.h"

#include "KesraNTC/platform/posix/waiting/private/Futex.h"

namespace
{

// Its address names the thread: cheaper than any call that asks for a number.
[[gnu::tls_model("initial-exec")]] thread_local char ThreadMark;

std::uintptr_t CurrentThread()
{
    return reinterpret_cast<std::uintptr_t>(&ThreadMark);
}

// Everybody compares the owner, only the one inside writes it.
std::atomic_ref<std::uintptr_t> Owner(CRITICAL_SECTION* section)
{
    return std::atomic_ref(section->OwningThread);
}

bool IsOwner(CRITICAL_SECTION* section)
{
    return Owner(section).load(std::memory_order_relaxed) == CurrentThread();
}

void BecomeOwner(CRITICAL_SECTION* section)
{
    Owner(section).store(CurrentThread(), std::memory_order_relaxed);
    section->RecursionCount = 1;
}

} // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section)
{
    *section = CRITICAL_SECTION{};
}

void DeleteCriticalSection(CRITICAL_SECTION*) {}

void EnterCriticalSection(CRITICAL_SECTION* section)
{
    if (IsOwner(section)) {
        ++section->RecursionCount;
        return;
    }
    Kesra::LockWord(section->LockState);
    BecomeOwner(section);
}

void LeaveCriticalSection(CRITICAL_SECTION* section)
{
    if (--section->RecursionCount != 0)
        return;
    Owner(section).store(0, std::memory_order_relaxed);
    Kesra::UnlockWord(section->LockState);
}
