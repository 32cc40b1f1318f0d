#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/base/private/Korean.h"
#include "tests/support/LogDirectory.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <list>
#include <string>
#include <thread>
#include <vector>

using namespace Kesra;

namespace
{

constexpr unsigned long long UsualLimit = 64ULL * 1024 * 1024;
constexpr auto Patience = std::chrono::seconds(60);

/// Does some work that must come to an end; threads that got stuck in it end with the program.
void InTime(const std::function<void()>& work)
{
    std::packaged_task<void()> task(work);
    std::future<void> done = task.get_future();
    std::thread thread(std::move(task));
    if (done.wait_for(Patience) != std::future_status::ready) {
        ADD_FAILURE() << "This does not end.";
        std::abort();
    }
    thread.join();
}

std::string Notice(unsigned long long limit)
{
    return "The log has reached its limit of " + std::to_string(limit) +
           " bytes a day; what follows today is lost.\r\n";
}

/// Leaves the log of the other tests without hooks, and with its usual limit.
class Log : public testing::Test
{
protected:
    ~Log() override
    {
        CDebug::SetLogHook(nullptr, nullptr);
        CDebug::SetTraceHook(nullptr, nullptr);
        CDebug::SetLogLimit(UsualLimit);
    }

    std::filesystem::path File() const
    {
        return std::filesystem::directory_iterator(Directory.Path() / "KESRA_NETWORK_LOG")->path();
    }

    const LogDirectory Directory;
};

using LogLimit = Log;

TEST_F(LogLimit, IsReachedExactlyAndThenToldOnce)
{
    CDebug::SetLogLimit(18);
    for (int i = 0; i < 5; ++i)
        CDebug::AppendDebugMsg("%07d", i);
    EXPECT_EQ("0000000\r\n0000001\r\n" + Notice(18), Directory.Log());

    // A newline takes two bytes of the file.
    Directory.Clear();
    CDebug::SetLogLimit(15);
    CDebug::AppendDebugMsg("0000000\n\n\n");
    CDebug::AppendDebugMsg("x");
    EXPECT_EQ("0000000\r\n\r\n\r\n\r\n" + Notice(15), Directory.Log());
}

TEST_F(LogLimit, NothingComesBehindTheNoticeHoweverShort)
{
    const std::string text(298, 'x');
    CDebug::SetLogLimit(1000);
    for (int i = 0; i < 4; ++i)
        CDebug::AppendDebugMsg("%s", text.c_str());
    ASSERT_LT(Directory.Log().size() + 3, 1000U);
    CDebug::AppendDebugMsg("y");
    const std::string line = text + "\r\n";
    EXPECT_EQ(line + line + line + Notice(1000), Directory.Log());

    // As a process does that is started now: it knows no more than the file.
    CDebug::SetLogLimit(1000);
    CDebug::AppendDebugMsg("y");
    EXPECT_EQ(line + line + line + Notice(1000), Directory.Log());
}

TEST_F(LogLimit, CountsWhatIsInTheFileAlready)
{
    CDebug::SetLogLimit(0);
    CDebug::AppendDebugMsg("from an earlier run");
    CDebug::SetLogLimit(21 + 3);
    CDebug::AppendDebugMsg("a");
    CDebug::AppendDebugMsg("b");
    EXPECT_EQ("from an earlier run\r\na\r\n" + Notice(24), Directory.Log());

    Directory.Clear();
    CDebug::SetLogLimit(0);
    CDebug::AppendDebugMsg("from an earlier run");
    CDebug::SetLogLimit(1);
    CDebug::AppendDebugMsg("a");
    CDebug::AppendDebugMsg("b");
    EXPECT_EQ("from an earlier run\r\n" + Notice(1), Directory.Log());
}

TEST_F(LogLimit, IsUsually64MiB)
{
    CDebug::AppendDebugMsg("first");
    std::filesystem::resize_file(File(), UsualLimit - 3);
    CDebug::AppendDebugMsg("a");
    EXPECT_EQ(UsualLimit, std::filesystem::file_size(File()));
    CDebug::AppendDebugMsg("b");
    CDebug::AppendDebugMsg("c");
    std::ifstream file(File(), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(UsualLimit - 3));
    EXPECT_EQ("a\r\n" + Notice(UsualLimit), std::string(std::istreambuf_iterator<char>(file), {}));
}

TEST_F(LogLimit, AHigherOneOrNoneLetsLinesInAgain)
{
    CDebug::SetLogLimit(5);
    for (const char* message : {"one", "two", "three"})
        CDebug::AppendDebugMsg("%s", message);
    std::string expected = "one\r\n" + Notice(5);
    const unsigned long long higher = expected.size() + 6;
    CDebug::SetLogLimit(higher);
    for (const char* message : {"four", "five"})
        CDebug::AppendDebugMsg("%s", message);
    expected += "four\r\n" + Notice(higher);
    EXPECT_EQ(expected, Directory.Log());
    CDebug::SetLogLimit(0);
    CDebug::AppendDebugMsg("six");
    EXPECT_EQ(expected + "six\r\n", Directory.Log());
}

TEST_F(LogLimit, ALogThatWasDeletedBeginsAnew)
{
    CDebug::SetLogLimit(5);
    for (int i = 0; i < 3; ++i)
        CDebug::AppendDebugMsg("abc");
    EXPECT_EQ("abc\r\n" + Notice(5), Directory.Log());
    Directory.Clear();
    InTime([this] {
        while (Directory.Log().empty())
            CDebug::AppendDebugMsg("new");
    });
    EXPECT_EQ("new\r\n", Directory.Log());
}

TEST_F(LogLimit, HoldsForAllThreads)
{
    constexpr int writers = 4;
    constexpr unsigned long long limit = 50 * 12;
    CDebug::SetLogLimit(limit);
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer)
        threads.emplace_back([] {
            for (int i = 0; i < 50; ++i) {
                CDebug::AppendDebugMsg("%010d", i);
                CDebug::SetLogLimit(limit);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    const std::string log = Directory.Log();
    ASSERT_LT(limit, log.size());
    EXPECT_EQ(Notice(limit), log.substr(limit));
    for (std::size_t at = 0; at < limit; at += 12)
        EXPECT_EQ("\r\n", log.substr(at + 10, 2)) << at;
}

/// Keeps what a hook receives.
struct Received {
    std::vector<std::string> Texts;

    static void Take(void* context, const char* text)
    {
        static_cast<Received*>(context)->Texts.emplace_back(text);
    }
};

using Texts = std::vector<std::string>;
using LogHook = Log;

TEST_F(LogHook, SeesMessagesAsFormattedBesideTheFileOrInsteadOfIt)
{
    Received first;
    Received second;
    CDebug::SetLogHook(Received::Take, &first);
    CDebug::AppendDebugMsg("number %d\n", 1);
    CDebug::SetLogHook(Received::Take, &second, CDebug::InsteadOfFile);
    CDebug::AppendDebugMsg("이%s"_949, "");
    const std::string text(1023, 'x');
    CDebug::AppendDebugMsg("%s%s", text.c_str(), "yz");
    CDebug::SetLogHook(nullptr, nullptr);
    CDebug::AppendDebugMsg("last");
    EXPECT_EQ((Texts{"number 1\n"}), first.Texts);
    EXPECT_EQ((Texts{"\xC0\xCC", text}), second.Texts);
    EXPECT_EQ("number 1\r\n\r\nlast\r\n", Directory.Log());
}

TEST_F(LogHook, SeesWhatTheFileHasNoRoomFor)
{
    Received received;
    CDebug::SetLogLimit(1);
    CDebug::SetLogHook(Received::Take, &received);
    CDebug::AppendDebugMsg("a");
    CDebug::AppendDebugMsg("b");
    EXPECT_EQ((Texts{"a", "b"}), received.Texts);
    EXPECT_EQ(Notice(1), Directory.Log());
}

TEST_F(LogHook, OfTraceSeesWhatTraceTakesAndTheLogDoesNot)
{
    Received traced;
    Received logged;
    TRACE("nobody sees this %d", 0);
    CDebug::SetTraceHook(Received::Take, &traced);
    CDebug::SetLogHook(Received::Take, &logged, CDebug::InsteadOfFile);
    TRACE("file %s, %d bytes\n", "a", 5);
    TRACE("%01500d", 7);
    CDebug::AppendDebugMsg("logged");
    CDebug::SetTraceHook(nullptr, nullptr);
    TRACE("nor this");
    EXPECT_EQ((Texts{"file a, 5 bytes\n", std::string(1023, '0')}), traced.Texts);
    EXPECT_EQ((Texts{"logged"}), logged.Texts);
    EXPECT_EQ("", Directory.Log());
}

TEST_F(LogHook, ThatLogsReachesTheFileAndTheOtherHook)
{
    InTime([] {
        CDebug::SetLogHook(
            [](void*, const char* text) {
                CDebug::AppendDebugMsg("again %s", text);
                TRACE("discarded");
            },
            nullptr, CDebug::InsteadOfFile);
        CDebug::SetTraceHook(
            [](void*, const char* text) {
                TRACE("discarded");
                CDebug::AppendDebugMsg("traced %s", text);
            },
            nullptr);
        CDebug::AppendDebugMsg("one");
        TRACE("two");
    });
    EXPECT_EQ("again one\r\ntraced discarded\r\nagain traced two\r\n", Directory.Log());
}

TEST_F(LogHook, MayReplaceItself)
{
    static Received received;
    received.Texts.clear();
    InTime([] {
        CDebug::SetLogHook(
            [](void*, const char*) {
                CDebug::SetLogHook(Received::Take, &received, CDebug::InsteadOfFile);
                CDebug::AppendDebugMsg("the new one is not inside");
            },
            nullptr, CDebug::InsteadOfFile);
        CDebug::AppendDebugMsg("one");
        CDebug::AppendDebugMsg("two");
    });
    EXPECT_EQ((Texts{"two"}), received.Texts);
    EXPECT_EQ("the new one is not inside\r\n", Directory.Log());
}

TEST_F(LogHook, AndThatOfTraceMayReplaceEachOtherAtOnce)
{
    static std::atomic<int> inside;
    inside = 0;
    static const auto waitForBoth = [] {
        for (++inside; inside < 2;)
            std::this_thread::yield();
    };
    InTime([] {
        CDebug::SetLogHook(
            [](void*, const char*) {
                waitForBoth();
                CDebug::SetTraceHook(nullptr, nullptr);
            },
            nullptr, CDebug::InsteadOfFile);
        CDebug::SetTraceHook(
            [](void*, const char*) {
                waitForBoth();
                CDebug::SetLogHook(nullptr, nullptr);
            },
            nullptr);
        std::thread other([] { TRACE("traced"); });
        CDebug::AppendDebugMsg("logged");
        other.join();
        CDebug::AppendDebugMsg("after");
    });
    EXPECT_EQ("after\r\n", Directory.Log());
}

/// A context that its owner takes away as soon as the setter lets him.
struct Owned {
    std::atomic<int> Calls{0};
    std::atomic<int> CallsAfterTheEnd{0};
    std::atomic<bool> Ended{false};

    static void Use(void* context, const char*)
    {
        auto& owned = *static_cast<Owned*>(context);
        ++owned.Calls;
        for (int i = 0; i < 2000; ++i)
            owned.CallsAfterTheEnd += owned.Ended ? 1 : 0;
    }
};

TEST_F(LogHook, IsNotRunningAnyMoreWhenItHasBeenReplaced)
{
    std::list<Owned> contexts;
    std::atomic<bool> enough{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i)
        threads.emplace_back([&enough] {
            while (!enough) {
                CDebug::AppendDebugMsg("logged");
                TRACE("traced");
            }
        });
    // Without a hook the file would grow as long as this takes.
    CDebug::SetLogLimit(1);
    InTime([&contexts] {
        const auto isUsed = [](const Owned& context) {
            while (context.Calls == 0)
                std::this_thread::yield();
        };
        for (int round = 0; round < 20; ++round) {
            Owned& logged = contexts.emplace_back();
            CDebug::SetLogHook(Owned::Use, &logged, CDebug::InsteadOfFile);
            isUsed(logged);
            Owned& traced = contexts.emplace_back();
            CDebug::SetTraceHook(Owned::Use, &traced);
            isUsed(traced);
            CDebug::SetLogHook(nullptr, nullptr);
            logged.Ended = true;
            CDebug::SetTraceHook(nullptr, nullptr);
            traced.Ended = true;
        }
    });
    enough = true;
    for (std::thread& thread : threads)
        thread.join();
    for (const Owned& context : contexts)
        EXPECT_EQ(0, context.CallsAfterTheEnd);
}

} // namespace
