#include "KesraNTC/base/CLock.h"
#include "tests/support/LogDirectory.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace
{

TEST(Lock, ExcludesOtherThreadsAndLetsItsOwnerInAgain)
{
    CLock lock;
    int count = 0;
    const auto work = [&] {
        for (int i = 0; i < 20000; ++i) {
            const Kesra::Locked outer(lock);
            const Kesra::Locked inner(lock);
            ++count;
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(60000, count);
}

TEST(Lock, ACopyOfAHeldLockIsFree)
{
    CLock held;
    held.Enter();
    CLock copy(held);
    copy = held;
    std::thread([&copy] {
        copy.Enter();
        copy.Leave();
    }).join();
    held.Leave();
}

TEST(Lock, LoggingOperationsWriteTwoLinesEach)
{
    const LogDirectory directory;
    CLock lock;
    lock.Enter("%d", 5);
    lock.Leave("%zu %s done", sizeof(char), "all");
    const std::string text(600, 'x');
    lock.Enter("%s", text.c_str());
    lock.Leave();
    EXPECT_EQ("Enter \r\n5\r\nLeave \r\n1 all done\r\nEnter \r\n" + text.substr(0, 511) + "\r\n",
              directory.Log());
    // Both really worked on the lock: another thread gets in.
    std::thread([&lock] { const Kesra::Locked held(lock); }).join();
}

} // namespace
