#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/platform/private/EventHandle.h"
#include "KesraNTC/rpc/CNTProxy.h"
#include "tests/support/Until.h"
#include "tests/support/posix/WaitQueueProbe.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

using namespace Kesra;
using ::Test::Until;

namespace
{

class Patient : public CNTProxy
{
public:
    void ProcessProxyError() override { ++Errors; }

    std::atomic<int> Errors{0};
};

/// The time of a request is over and its thread on the way out, held up at the lock of its event's queue;
/// there the reply arrives, and its dispatcher is held up in turn. True when the meeting came about.
bool ReplyMeetsTheEnd(unsigned long milliseconds)
{
    Patient proxy;
    proxy.SetReplyTimeLimit(milliseconds);
    const std::unique_ptr<CNestedReply> record(proxy.PreNestedRequestReply());
    WaitQueueProbe probe(*FromHandle<EventObject>(record->Event));
    std::atomic<bool> isOver{false};
    bool hasReply = false;
    std::thread asking([&] {
        hasReply = proxy.WaitForNestedRequestReply(record.get());
        isOver = true;
    });
    Until("the request sleeps", [&] { return isOver || probe.HasSleepers(); });
    probe.Lock();
    Until(
        "its time is over", [&] { return isOver || probe.IsAwaited(); });
    std::thread replying([&] { proxy.DeliverReply(record->Serial, CNTPacket()); });
    Until("the reply is taken", [&] { return proxy.GetPendingCount() == 0; });
    const bool hasMet = !isOver;
    probe.Unlock();
    asking.join();
    replying.join();
    EXPECT_EQ(hasReply, hasMet);
    EXPECT_EQ(proxy.Errors, hasMet ? 0 : 1);
    return hasMet;
}

TEST(LastMoment, TheTimeOfARequestCountsFromItsRegistration)
{
    constexpr unsigned long FiftyDays = 0xFFFFFFFE;
    Patient proxy;
    proxy.SetReplyTimeLimit(FiftyDays);
    const std::unique_ptr<CNestedReply> record(proxy.PreNestedRequestReply());
    record->Began -= FiftyDays * 1000ULL;
    std::string traced;
    CDebug::SetTraceHook([](void* text, const char* message) { *static_cast<std::string*>(text) = message; },
                         &traced);
    EXPECT_FALSE(proxy.WaitForNestedRequestReply(record.get()));
    CDebug::SetTraceHook(nullptr, nullptr);
    EXPECT_EQ(traced, "Reply Error!!!\n");
    EXPECT_EQ(proxy.Errors, 1);
}

TEST(LastMoment, ARequesterThatLooksLateLeavesTheNextOfItsSerialAlone)
{
    Patient proxy;
    const std::unique_ptr<CNestedReply> first(proxy.PreNestedRequestReply());
    EXPECT_TRUE(proxy.DeliverReply(first->Serial, CNTPacket()));
    proxy.NextSerial = first->Serial;
    const std::unique_ptr<CNestedReply> next(proxy.PreNestedRequestReply());
    ASSERT_EQ(next->Serial, first->Serial);
    EXPECT_TRUE(proxy.WaitForNestedRequestReply(first.get()));
    EXPECT_EQ(proxy.GetPendingCount(), 1);
    EXPECT_TRUE(proxy.DeliverReply(next->Serial, CNTPacket()));
}

TEST(LastMoment, AReplyThatComesAsItsTimeEndsIsTaken)
{
    // A machine that stands still may let the time pass before the scene is set.
    unsigned long milliseconds = 100;
    while (!ReplyMeetsTheEnd(milliseconds) && milliseconds < ::Test::Limit && !testing::Test::HasFailure())
        milliseconds *= 2;
    EXPECT_LT(milliseconds, ::Test::Limit);
}

} // namespace
