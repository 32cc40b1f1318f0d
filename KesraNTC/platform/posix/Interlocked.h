#pragma once

#include "KesraNTC/platform/posix/Types.h"

// Atomic arithmetic on plain variables; every call is a full barrier. The arithmetic wraps at 32 bits.

/// Adds 1 and returns the new value.
inline LONG InterlockedIncrement(LONG volatile* target)
{
    return __atomic_add_fetch(target, 1, __ATOMIC_SEQ_CST);
}

/// Subtracts 1 and returns the new value.
inline LONG InterlockedDecrement(LONG volatile* target)
{
    return __atomic_sub_fetch(target, 1, __ATOMIC_SEQ_CST);
}

/// Stores the value and returns the previous one.
inline LONG InterlockedExchange(LONG volatile* target, LONG value)
{
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}

/// Adds the value and returns the previous one.
inline LONG InterlockedExchangeAdd(LONG volatile* target, LONG value)
{
    return __atomic_fetch_add(target, value, __ATOMIC_SEQ_CST);
}

/// Stores `exchange` where `comparand` stands; returns the previous value in either case.
inline LONG InterlockedCompareExchange(LONG volatile* target, LONG exchange, LONG comparand)
{
    __atomic_compare_exchange_n(target, &comparand, exchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}
