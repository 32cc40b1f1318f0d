#include "KesraNTC/base/CDebug.h"
#include "KesraNTC/base/Trace.h"
#include "KesraNTC/base/private/Korean.h"
#include "KesraNTC/platform/Platform.h"
#include "tests/support/LogDirectory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace Kesra;

namespace
{

std::string TodaysName()
{
    const std::time_t now = std::time(nullptr);
    const std::tm today = *std::localtime(&now);
    return std::to_string(today.tm_mon + 1) + "\xBF\xF9" + std::to_string(today.tm_mday) + "\xC0\xCF.log";
}

TEST(Debug, AppendsLinesToTheFileOfTheDay)
{
    const LogDirectory directory;
    CDebug::AppendDebugMsg("ConnectToServer() : Success\n");
    CDebug::AppendDebugMsg("%s %d", "second", 2);
    CDebug::AppendDebugMsg("헤더길이가 4바이트 보다 크다\n"_949);
    EXPECT_EQ(
        "ConnectToServer() : Success\r\n\r\nsecond 2\r\n"
        "\xC7\xEC\xB4\xF5\xB1\xE6\xC0\xCC\xB0\xA1 4\xB9\xD9\xC0\xCC\xC6\xAE \xBA\xB8\xB4\xD9 \xC5\xA9\xB4\xD9"
        "\r\n\r\n",
        directory.Log());
    EXPECT_TRUE(directory.HasLine("second 2"));

    const std::string before = TodaysName();
    CDebug::AppendDebugMsg("third");
    const std::string after = TodaysName();
    const auto isThere = [](const std::string& name) {
        return std::ifstream("KESRA_NETWORK_LOG/" + name).good();
    };
    EXPECT_TRUE(isThere(before) || isThere(after)) << before;
}

TEST(Debug, UsesADirectoryThatHoldsNoLogYetAndSurvivesOneThatCannotBe)
{
    {
        const LogDirectory directory;
        std::filesystem::create_directory("KESRA_NETWORK_LOG");
        CDebug::AppendDebugMsg("there");
        EXPECT_EQ("there\r\n", directory.Log());
    }
    const LogDirectory directory;
    std::ofstream("KESRA_NETWORK_LOG") << "a file in the way";
    CDebug::AppendDebugMsg("lost");
    EXPECT_EQ("", directory.Log());
}

TEST(Debug, CutsMessagesAt1023Bytes)
{
    const LogDirectory directory;
    const std::string text(1023, 'x');
    CDebug::AppendDebugMsg("%s", text.c_str());
    CDebug::AppendDebugMsg("%s%s", text.c_str(), "yz");
    CDebug::AppendDebugMsg("%02000d", 5);
    EXPECT_EQ(text + "\r\n" + text + "\r\n" + std::string(1023, '0') + "\r\n", directory.Log());
}

TEST(Debug, FormatsAsStringsDo)
{
    const LogDirectory directory;
    // Not literals: the compiler checks those against the printf of its own system.
    for (const char* format : {"%S|%I64d|%lu", static_cast<const char*>(nullptr)})
        CDebug::AppendDebugMsg(format, OLESTR("a\uAC00"), -5LL, 7UL);
    EXPECT_EQ("a\xB0\xA1|-5|7\r\n\r\n", directory.Log());
}

// The compiler takes all of these for right, so all of them have to be.
TEST(Debug, TakesTheArgumentsThatTheCompilerChecked)
{
    const LogDirectory directory;
    const std::size_t size = 7;
    CDebug::AppendDebugMsg("%zu %td %s", size, std::ptrdiff_t{-7}, "next");
    CDebug::AppendDebugMsg("%jd %hhd %lld %s", std::intmax_t{-1}, static_cast<signed char>(44), -5LL, "next");
    CDebug::AppendDebugMsg("%Lf %F %a %s", 1.5L, 2.5, 1.0, "next");
    EXPECT_EQ("7 -7 next\r\n-1 44 -5 next\r\n1.500000 2.500000 0x1p+0 next\r\n", directory.Log());
}

TEST(Debug, TraceAndInitWriteNothing)
{
    const LogDirectory directory;
    TRACE("버퍼 크기를 넘어서 더 이상 쓸 수가 없다\n"_949);
    CDebug::InitDebugMsg();
    EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST(Debug, MessagesOfManyThreadsStayWhole)
{
    const LogDirectory directory;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 4; ++writer)
        writers.emplace_back([writer] {
            for (int i = 0; i < 50; ++i)
                CDebug::AppendDebugMsg("writer %d message %d %s", writer, i, std::string(300, 'w').c_str());
        });
    for (std::thread& writer : writers)
        writer.join();

    std::vector<std::string> expected;
    for (int writer = 0; writer < 4; ++writer)
        for (int i = 0; i < 50; ++i)
            expected.push_back("writer " + std::to_string(writer) + " message " + std::to_string(i) + " " +
                               std::string(300, 'w') + "\r");
    std::vector<std::string> lines;
    std::istringstream log(directory.Log());
    for (std::string line; std::getline(log, line);)
        lines.push_back(line);
    std::sort(expected.begin(), expected.end());
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(expected, lines);
}

} // namespace
