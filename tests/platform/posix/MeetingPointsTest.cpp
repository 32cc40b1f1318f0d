#include "KesraNTC/platform/posix/sockets/private/SocketSlot.h"
#include "KesraNTC/platform/posix/waiting/private/Deadline.h"
#include "KesraNTC/platform/private/EventHandle.h"
#include "tests/platform/SocketFixture.h"
#include "tests/support/posix/FailingCalls.h"
#include "tests/support/posix/WaitQueueProbe.h"

#include <thread>
#include <vector>

namespace
{

using Kesra::EventHandle;
using Kesra::EventObject;
using Kesra::SocketSlot;
using Kesra::WaitQueue;

EventObject& ObjectOf(const EventHandle& event)
{
    return *Kesra::FromHandle<EventObject>(event.Get());
}

// A thread goes to sleep on two events; the one decides its wait while it is about to take the other's
// signal.
TEST(MeetingPoints, ASignalThatCameSecondIsLeftForTheNextWait)
{
    const EventHandle second(EventHandle::AutoReset);
    Kesra::WaitOutcome outcome(Kesra::Waker::Current());
    ASSERT_TRUE(outcome.Decide(0));
    second.Set();
    Kesra::WaitEntry entry{&ObjectOf(second), &outcome, 1, nullptr, nullptr, false};
    WaitQueue& queue = WaitQueue::Of(entry.Event);
    queue.Enter(entry);
    queue.Leave(entry);
    EXPECT_EQ(0U, outcome.Get());
    EXPECT_TRUE(second.Wait(0));
    EXPECT_FALSE(second.Wait(0));
}

// A thread on its way to sleep holds the signal for a moment and gives it back: a reset meanwhile counts.
TEST(MeetingPoints, AResetIsNotUndoneByASignalThatComesBack)
{
    const EventHandle event(EventHandle::AutoReset);
    Kesra::WaitOutcome outcome(Kesra::Waker::Current());
    Kesra::WaitEntry entry{&ObjectOf(event), &outcome, 0, nullptr, nullptr, false};
    WaitQueue& queue = WaitQueue::Of(entry.Event);
    queue.Enter(entry);

    Kesra::WaitQueueProbe probe(ObjectOf(event));
    probe.Lock();
    std::atomic<bool> isReset{false};
    std::thread resetter([&] {
        event.Reset();
        isReset = true;
    });
    // Either it waits for the lock or it did not ask for it.
    ::Test::Until("the reset has come", [&] { return isReset || probe.IsAwaited(); });
    probe.GiveSignalBack();
    probe.Unlock();
    resetter.join();
    queue.Leave(entry);
    EXPECT_FALSE(event.Wait(0));
}

class SocketPlacesTest : public SocketTest
{
};

TEST_F(SocketPlacesTest, AStaleSocketDoesNotNameTheNextOneInItsPlace)
{
    constexpr int Most = 5000;
    TestSocket first;
    const SOCKET stale = first;
    first.Close();
    TestSocket current;
    int opened = 1;
    for (; SocketSlot::Find(current) != SocketSlot::Find(stale) && opened < Most; ++opened) {
        current.Close();
        current = TestSocket();
    }
    ASSERT_LT(opened, Most);
    ASSERT_NE(stale, static_cast<SOCKET>(current));
    int value = 0;
    int size = sizeof value;
    EXPECT_EQ(SOCKET_ERROR, getsockopt(stale, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&value), &size));
    EXPECT_EQ(WSAENOTSOCK, WSAGetLastError());
    char data[1];
    Operation read;
    EXPECT_EQ(WSAENOTSOCK, read.Receive(stale, data, 1));
    EXPECT_EQ(SOCKET_ERROR, closesocket(stale));
    EXPECT_EQ(0, Server.Connect(current));
}

TEST_F(SocketPlacesTest, AClosedPlaceRestsHoweverFewAreFree)
{
    constexpr int Rounds = 40;
    constexpr int Resting = 7;
    std::vector<TestSocket> held;
    for (int round = 0; round < Rounds; ++round) {
        TestSocket closed;
        const SocketSlot* place = SocketSlot::Find(closed);
        closed.Close();
        for (int i = 0; i < Resting; ++i) {
            held.emplace_back();
            ASSERT_NE(place, SocketSlot::Find(held.back())) << round << ' ' << i;
        }
    }
}

TEST_F(SocketPlacesTest, ClosingEndsACallThatWaitsInsideTheSystem)
{
    Connect();
    // Ends the reader when closing does not, so that the test ends, too.
    const int fallback = 20000;
    ASSERT_EQ(0, setsockopt(Client, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&fallback),
                            sizeof fallback));
    const SOCKET socket = Client;
    const EventHandle ended(EventHandle::AutoReset);
    const int before = BlockingReceives;
    std::thread reader([&] {
        char data;
        EXPECT_EQ(SOCKET_ERROR, recv(socket, &data, 1, 0));
        EXPECT_EQ(WSAEINTR, WSAGetLastError());
        ended.Set();
    });
    // From here on it has the socket pinned and waits for nothing but the system.
    ::Test::Until("the reader is inside", [&] { return BlockingReceives != before; });
    Client.Close();
    EXPECT_TRUE(ended.Wait(fallback / 2));
    reader.join();
}

TEST_F(SocketPlacesTest, AClosedSocketGivesItsReadAheadBack)
{
    Connect();
    PeerSends("data");
    const long before = MappedBytes;
    char data[4];
    Operation read;
    ASSERT_TRUE(HasBegun(read.Receive(Client, data, sizeof data)));
    EXPECT_EQ(0, read.Harvest(Client));
    EXPECT_GT(MappedBytes, before);
    Client.Close();
    EXPECT_EQ(MappedBytes, before);
}

// A thread sleeps on the event of a socket that has nothing to watch yet; then an attempt begins whose end
// does not show at once.
TEST_F(SocketPlacesTest, ASleeperIsToldThatThereIsSomethingToWatch)
{
    const EventHandle event(EventHandle::AutoReset);
    ASSERT_EQ(0, WSAEventSelect(Client, event.Get(), FD_CONNECT | FD_CLOSE));
    Kesra::Waker& own = Kesra::Waker::Current();
    own.Prepare();
    Kesra::WaitOutcome outcome(own);
    Kesra::WaitEntry entry{&ObjectOf(event), &outcome, 0, nullptr, nullptr, false};
    WaitQueue& queue = WaitQueue::Of(entry.Event);
    queue.Enter(entry);
    {
        const Failing poll(SystemCall::Poll, EINTR);
        EXPECT_EQ(SOCKET_ERROR, Server.Connect(Client));
        EXPECT_EQ(WSAEWOULDBLOCK, WSAGetLastError());
    }
    EXPECT_EQ(Kesra::WaitOutcome::Open, outcome.Get());
    const Kesra::Deadline limit(10000);
    own.Sleep(limit.Absolute());
    EXPECT_FALSE(limit.HasPassed());
    queue.Leave(entry);
    own.EndWait();
}

// Whoever waits for the end of a connection must not be kept busy by what the connection brings.
TEST_F(SocketPlacesTest, UnreadDataDoesNotWakeWhoWaitsForTheEnd)
{
    Connect();
    const EventHandle event(EventHandle::AutoReset);
    ASSERT_EQ(0, WSAEventSelect(Client, event.Get(), FD_CLOSE));
    PeerSends("unread");
    pollfd readable{SocketSlot::Find(Client)->GetDescriptor(), POLLIN, 0};
    ASSERT_EQ(1, poll(&readable, 1, 10000));
    const int before = WaitingPolls;
    EXPECT_FALSE(event.Wait(20));
    EXPECT_LE(WaitingPolls - before, 3);
}

} // namespace
