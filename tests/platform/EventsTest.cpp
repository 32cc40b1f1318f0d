#include "tests/support/Until.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{

using ::Test::Limit;

class Event
{
public:
    explicit Event(BOOL manualReset, BOOL set = FALSE)
        : Handle(CreateEventA(nullptr, manualReset, set, nullptr))
    {
    }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    ~Event() { CloseHandle(Handle); }
    operator HANDLE() const { return Handle; }

private:
    HANDLE Handle;
};

TEST(Events, AutoResetLetsOneWaitThrough)
{
    const Event event(FALSE);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event, 0));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_TRUE(SetEvent(event));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, INFINITE));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event, 0));
    const Event set(FALSE, TRUE);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(set, 0));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(set, 1));
}

TEST(Events, ManualResetStaysSetUntilReset)
{
    const Event event(TRUE, TRUE);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, INFINITE));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_TRUE(ResetEvent(event));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event, 0));
}

TEST(Events, WaitingForSeveralTakesTheLowestAndLeavesTheOthersSet)
{
    const Event first(FALSE);
    const Event second(FALSE, TRUE);
    const Event third(TRUE, TRUE);
    const std::array<HANDLE, 3> events{first, second, third};
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitForMultipleObjects(3, events.data(), FALSE, INFINITE));
    EXPECT_EQ(WAIT_OBJECT_0 + 2, WaitForMultipleObjects(3, events.data(), FALSE, INFINITE));
    SetEvent(first);
    SetEvent(second);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(3, events.data(), FALSE, INFINITE));
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitForMultipleObjects(3, events.data(), FALSE, INFINITE));
    ResetEvent(third);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForMultipleObjects(3, events.data(), FALSE, 1));
}

TEST(Events, WhatIsNoHandleFailsTheCall)
{
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(nullptr, 0));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
    EXPECT_FALSE(SetEvent(nullptr));
    EXPECT_FALSE(ResetEvent(nullptr));
    const Event event(FALSE, TRUE);
    const std::array<HANDLE, 2> events{event, nullptr};
    EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(2, events.data(), FALSE, 0));
    EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(0, events.data(), FALSE, 0));
    EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS + 1, events.data(), FALSE, 0));
}

TEST(Events, AWaitTakesAtLeastItsTime)
{
    const Event event(FALSE);
    const DWORD before = GetTickCount();
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event, 50));
    // The tick of the real system is 16 ms coarse.
    EXPECT_GE(GetTickCount() - before, 34U);
}

TEST(Events, TwoThreadsHandOverThroughAPairOfEvents)
{
    constexpr int Rounds = 5000;
    const Event ping(FALSE);
    const Event pong(FALSE);
    int value = 0;
    std::thread other([&] {
        for (int i = 0; i < Rounds; ++i) {
            ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(ping, Limit));
            ++value;
            SetEvent(pong);
        }
    });
    for (int i = 0; i < Rounds; ++i) {
        ++value;
        SetEvent(ping);
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(pong, Limit));
        ASSERT_EQ(2 * i + 2, value);
    }
    other.join();
}

TEST(Events, OneSignalReleasesOneOfManySleepersAndManualResetAll)
{
    constexpr int Sleepers = 12;
    const Event one(FALSE);
    const Event all(TRUE);
    const Event done(FALSE);
    std::atomic<int> released{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < Sleepers; ++i) {
        threads.emplace_back([&] {
            const std::array<HANDLE, 2> events{one, all};
            if (WaitForMultipleObjects(2, events.data(), FALSE, Limit) == WAIT_OBJECT_0) {
                ++released;
                SetEvent(done);
            }
        });
    }
    for (int i = 1; i <= Sleepers / 2; ++i) {
        SetEvent(one);
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(done, Limit));
        EXPECT_EQ(i, released);
    }
    SetEvent(all);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Sleepers / 2, released);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(one, 0));
}

TEST(Events, SeveralSettersOfSeveralEventsLoseNoSignal)
{
    constexpr int Rounds = 3000;
    const Event first(FALSE);
    const Event second(FALSE);
    const Event firstTaken(FALSE);
    const Event secondTaken(FALSE);
    const auto setter = [](HANDLE event, HANDLE taken) {
        for (int i = 0; i < Rounds; ++i) {
            SetEvent(event);
            ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(taken, Limit));
        }
    };
    std::thread one(setter, HANDLE{first}, HANDLE{firstTaken});
    std::thread two(setter, HANDLE{second}, HANDLE{secondTaken});
    const std::array<HANDLE, 2> events{first, second};
    std::array<int, 2> seen{};
    while (seen[0] + seen[1] < 2 * Rounds) {
        const DWORD index = WaitForMultipleObjects(2, events.data(), FALSE, Limit) - WAIT_OBJECT_0;
        ASSERT_LT(index, 2U);
        ++seen[index];
        SetEvent(index == 0 ? firstTaken : secondTaken);
    }
    one.join();
    two.join();
    EXPECT_EQ(Rounds, seen[0]);
}

// A requester closes its event as soon as its wait returns, while the setter may still be inside SetEvent.
TEST(Events, AWaiterMayCloseItsEventWhileTheSetterReturns)
{
    constexpr int Rounds = 5000;
    const Event ready(FALSE);
    std::atomic<HANDLE> current{nullptr};
    std::thread setter([&] {
        for (int i = 0; i < Rounds; ++i) {
            ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(ready, Limit));
            SetEvent(current);
        }
    });
    for (int i = 0; i < Rounds; ++i) {
        const HANDLE event = CreateEventA(nullptr, i % 2, FALSE, nullptr);
        current = event;
        SetEvent(ready);
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, Limit));
        ASSERT_TRUE(CloseHandle(event));
    }
    setter.join();
}

} // namespace
