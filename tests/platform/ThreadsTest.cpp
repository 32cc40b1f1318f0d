#include "tests/support/Until.h"

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

struct StartedThread {
    HANDLE Done = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    DWORD Id = 0;
    BOOL Raised = FALSE;

    ~StartedThread() { CloseHandle(Done); }
};

void RunStartedThread(void* argument)
{
    auto* self = static_cast<StartedThread*>(argument);
    self->Id = GetCurrentThreadId();
    self->Raised = SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL);
    SetEvent(self->Done);
}

TEST(Threads, AStartedThreadGetsItsArgumentAndRaisesItself)
{
    StartedThread started;
    ASSERT_NE(static_cast<std::uintptr_t>(-1), _beginthread(RunStartedThread, 0, &started));
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(started.Done, ::Test::Limit));
    EXPECT_NE(GetCurrentThreadId(), started.Id);
    EXPECT_TRUE(started.Raised);
}

struct ThreadWithError {
    HANDLE Done = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    DWORD Before = 1;

    ~ThreadWithError() { CloseHandle(Done); }
};

void SetAnotherError(void* argument)
{
    auto* self = static_cast<ThreadWithError*>(argument);
    self->Before = GetLastError();
    SetLastError(7);
    SetEvent(self->Done);
}

TEST(Threads, EveryThreadHasItsOwnLastError)
{
    ThreadWithError other;
    SetLastError(5);
    ASSERT_NE(static_cast<std::uintptr_t>(-1), _beginthread(SetAnotherError, 0, &other));
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(other.Done, ::Test::Limit));
    EXPECT_EQ(5U, GetLastError());
    EXPECT_EQ(0U, other.Before);
}

TEST(Threads, ACriticalSectionKeepsOthersOut)
{
    constexpr int Threads = 4;
    constexpr int Rounds = 20000;
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    int counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < Rounds; ++round) {
                EnterCriticalSection(&section);
                EnterCriticalSection(&section);
                ++counter;
                LeaveCriticalSection(&section);
                ++counter;
                LeaveCriticalSection(&section);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(2 * Threads * Rounds, counter);
    DeleteCriticalSection(&section);
}

TEST(Threads, ACriticalSectionBelongsToOneThreadUntilItsLastLeave)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    std::atomic<bool> arrived{false};
    std::string order;
    EnterCriticalSection(&section);
    EnterCriticalSection(&section);
    std::thread other([&] {
        arrived = true;
        EnterCriticalSection(&section);
        order += "other ";
        LeaveCriticalSection(&section);
    });
    ::Test::Until("the other thread runs", [&] { return arrived.load(); });
    LeaveCriticalSection(&section);
    for (int i = 0; i < 100; ++i)
        std::this_thread::yield();
    order += "owner ";
    LeaveCriticalSection(&section);
    other.join();
    EXPECT_EQ("owner other ", order);
    DeleteCriticalSection(&section);
}

TEST(Threads, ACriticalSectionKeepsThreadsApart)
{
    constexpr int Rounds = 20000;
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    int value = 0;
    const auto count = [&] {
        for (int i = 0; i < Rounds; ++i) {
            EnterCriticalSection(&section);
            ++value;
            LeaveCriticalSection(&section);
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(2 * Rounds, value);
    DeleteCriticalSection(&section);
}

TEST(Threads, TheSystemTimeIsACalendarDate)
{
    SYSTEMTIME time{};
    GetSystemTime(&time);
    EXPECT_GE(time.wYear, 2020);
    EXPECT_TRUE(time.wMonth >= 1 && time.wMonth <= 12);
    EXPECT_TRUE(time.wDay >= 1 && time.wDay <= 31);
    EXPECT_LT(time.wHour, 24);
    EXPECT_LT(time.wMinute, 60);
    EXPECT_LT(time.wMilliseconds, 1000);
    // The day of the week follows from the date (Zeller's congruence, turned so that Sunday is 0).
    const int month = time.wMonth < 3 ? time.wMonth + 12 : time.wMonth;
    const int year = time.wMonth < 3 ? time.wYear - 1 : time.wYear;
    const int day = (time.wDay + 13 * (month + 1) / 5 + year + year / 4 - year / 100 + year / 400 + 6) % 7;
    EXPECT_EQ(day, time.wDayOfWeek);
}

TEST(Threads, TheTickCountFollowsASleep)
{
    const DWORD before = GetTickCount();
    Sleep(50);
    EXPECT_GE(GetTickCount() - before, 34U);
}

} // namespace
