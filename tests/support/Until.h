#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace Test
{

/// Waits until something holds that another thread brings about; a failure that says what, after a minute.
template <class Condition> bool Until(const char* what, Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            ADD_FAILURE() << "waited in vain until " << what;
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace Test
