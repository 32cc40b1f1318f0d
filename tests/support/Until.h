#pragma once

#include "KesraNTC/platform/private/EventHandle.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace Test
{

/// How long a test waits for what has to come, in milliseconds: so long that only something that hangs takes
/// it.
constexpr DWORD Limit = 60000;

/// Waits until something holds that another thread brings about; a failure that says what, after the limit.
template <class Condition> bool Until(const char* what, Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(Limit);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            ADD_FAILURE() << "waited in vain until " << what;
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// The same for an event.
inline bool Await(const char* what, const Kesra::EventHandle& event)
{
    const bool isSet = event.Wait(Limit);
    EXPECT_TRUE(isSet) << "waited in vain until " << what;
    return isSet;
}

} // namespace Test
