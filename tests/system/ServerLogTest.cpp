// The server's log: what stands in it, and that it never holds the server up.
#include "ServerTalk.h"

#include "server/log/LogWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <sstream>
#include <streambuf>

using namespace Kesra;
using namespace ServerTalk;

namespace
{

/// A stream that takes nothing until somebody reads, like a full pipe.
class Pipe : public std::streambuf
{
public:
    void Open()
    {
        const std::lock_guard lock(Mutex);
        IsOpen = true;
        Changed.notify_all();
    }
    /// Waits until somebody is stuck in it.
    bool WaitUntilStuck()
    {
        std::unique_lock lock(Mutex);
        return Changed.wait_for(lock, std::chrono::minutes(1), [this] { return IsStuck; });
    }
    std::string Text()
    {
        const std::lock_guard lock(Mutex);
        return Taken;
    }

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override
    {
        std::unique_lock lock(Mutex);
        IsStuck = true;
        Changed.notify_all();
        Changed.wait(lock, [this] { return IsOpen; });
        Taken.append(text, static_cast<std::size_t>(size));
        return size;
    }
    int_type overflow(int_type octet) override
    {
        const char character = traits_type::to_char_type(octet);
        return xsputn(&character, 1) == 1 ? octet : traits_type::eof();
    }

private:
    std::mutex Mutex;
    std::condition_variable Changed;
    std::string Taken;
    bool IsOpen = false;
    bool IsStuck = false;
};

} // namespace

TEST(ServerLog, HasTimesAddressesLogonsAndRefusals)
{
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    const std::string who = "connection 1 (127.0.0.1:" + std::to_string(peer.Port()) + "): ";
    EXPECT_NE(Ask(peer, LogonRequest(""), GS_REPLY_10002), 0U);
    EXPECT_EQ(Ask(peer, LogonRequest("mina\n\x1B[31m"), GS_REPLY_10002), 0U);
    peer.Send(Request(CS_USE_ITEM, short{1}));
    EXPECT_EQ(RefusalOf(peer), static_cast<short>(Result::NotPlaying));
    peer.Send(Request(CS_ENTER_SESSION));
    EXPECT_FALSE(ReadUntil(peer, SC_EVENT29003).empty());
    EXPECT_NE(Ask(peer, Request(CS_TRY_ON_SESSION, Serial, short{0}, short{1}), GS_REPLY_10007), 0U);
    peer.Send(Request(static_cast<MessageNumber>(2001)));
    ExpectServed(peer);
    peer.Close();
    ASSERT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ended == 1; }));

    const char* expected[] = {
        "accepted",
        "CS_Logon with account  refused: bad name (9)",
        "account mina??[31m logs on", // nothing of a client's reaches a terminal as a command
        "CS_Use_Item refused: not playing (11)",
        "CS_EnterSession refused: not ready (10)",
        "CS_TryOnSession refused: no such avatar (7)",
        "message 2001 ignored, unknown number",
        "CS_DeleteAvatar refused: no such avatar (7)",
        "closed by the peer",
    };
    const std::vector<std::string> log = server.GetLog();
    ASSERT_EQ(log.size(), std::size(expected));
    const std::string form = "0000-00-00T00:00:00.000Z ";
    for (std::size_t i = 0; i < log.size(); ++i) {
        std::string time = log[i].substr(0, form.size());
        std::replace_if(
            time.begin(), time.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
        ASSERT_EQ(time, form) << log[i];
        EXPECT_EQ(log[i].substr(form.size()), who + expected[i]);
    }
    EXPECT_EQ(server.GetCounters().Refused, 5U);
}

TEST(ServerLog, AFloodOfRefusalsIsCounted)
{
    GameServer server(QuietOptions());
    RawPeer peer(server.GetPort());
    constexpr unsigned requests = 5000;
    Bytes flood;
    for (unsigned i = 0; i < requests; ++i) {
        const Bytes one = Request(CS_USE_ITEM, short{1});
        flood.insert(flood.end(), one.begin(), one.end());
    }
    peer.Send(flood);
    peer.ShutdownSend();
    peer.ReadToEnd();
    ASSERT_TRUE(server.WaitFor([](const ServerCounters& c) { return c.Ended == 1; }));
    // The rest is told at the latest when the peer is forgotten, before anything else happens.
    ExpectServing(server);
    unsigned told = 0;
    unsigned counted = 0;
    for (const std::string& line : server.GetLog()) {
        told += line.find("CS_Use_Item refused") != std::string::npos ? 1 : 0;
        if (const std::size_t end = line.find(" more requests"); end != std::string::npos)
            counted += static_cast<unsigned>(std::stoul(line.substr(line.rfind(' ', end - 1) + 1)));
    }
    EXPECT_LT(told, requests / 2);
    EXPECT_EQ(told + counted, requests);
}

TEST(ServerLog, AFullPipeLosesLinesAndHoldsNobodyUp)
{
    Pipe pipe;
    std::ostream stream(&pipe);
    constexpr std::size_t limit = 10'000;
    LogWriter log(stream, limit);
    unsigned written = 0;
    ServerOptions options = QuietOptions();
    options.Log = [&](const std::string& line) {
        ++written;
        log.Write(line);
    };
    {
        GameServer server(options);
        RawPeer first(server.GetPort());
        ExpectServed(first);
        ASSERT_TRUE(pipe.WaitUntilStuck());
        for (int i = 0; i < 300; ++i)
            ExpectServing(server);
    }
    EXPECT_FALSE(log.Finish(std::chrono::milliseconds(0))) << "the pipe is still full";
    pipe.Open();
    ASSERT_TRUE(log.Finish(std::chrono::minutes(1)));

    const std::string text = pipe.Text();
    EXPECT_LT(text.size(), 3 * limit);
    unsigned lines = 0;
    unsigned lost = 0;
    std::istringstream reading(text);
    for (std::string line; std::getline(reading, line);) {
        const bool count = line.find("lines of the log are lost here") != std::string::npos;
        count ? lost += static_cast<unsigned>(std::stoul(line)) : ++lines;
    }
    EXPECT_GT(lost, 0U);
    EXPECT_EQ(lines + lost, written);
}

TEST(ServerLog, WritesEverythingInOrderWhenSomebodyReads)
{
    std::ostringstream stream;
    std::string expected;
    {
        LogWriter log(stream);
        for (int i = 0; i < 1000; ++i) {
            log.Write(std::to_string(i));
            expected += std::to_string(i) + '\n';
        }
    }
    EXPECT_EQ(stream.str(), expected);
}
