// The server's command line: what it understands, and what it says of the rest.
#include "ServerTalk.h"

#include "server/Program.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Kesra;

namespace
{

ServerCommand Parse(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "kesra-server");
    return ParseServerCommand(static_cast<int>(arguments.size()), arguments.data());
}

/// What is said against a command line.
std::string Refusal(const std::vector<const char*>& arguments)
{
    try {
        Parse(arguments);
    } catch (const CommandLineEnd& end) {
        EXPECT_EQ(end.ExitCode, 2);
        return end.what();
    }
    return "";
}

struct Wrong {
    std::vector<const char*> Arguments;
    const char* Expected; ///< somewhere in what is said
};

} // namespace

TEST(ServerProgram, UnderstandsItsOptions)
{
    const ServerCommand plain = Parse({});
    EXPECT_EQ(plain.Options.Address, "127.0.0.1");
    EXPECT_EQ(plain.Options.Port, 0);
    const ServerLimits limits;
    EXPECT_EQ(plain.Options.Limits.Connections, limits.Connections);
    EXPECT_EQ(plain.Options.Limits.LogonTime, limits.LogonTime);
    EXPECT_EQ(plain.Options.Limits.QueuedBytes, limits.QueuedBytes);
    EXPECT_EQ(plain.Options.Limits.PeerTimeout, limits.PeerTimeout);
    EXPECT_EQ(plain.Options.ClockInterval, ServerOptions().ClockInterval);

    const ServerCommand port = Parse({"--listen", ":7001"});
    EXPECT_EQ(port.Options.Address, "127.0.0.1");
    EXPECT_EQ(port.Options.Port, 7001);
    const ServerCommand all = Parse({"--listen",       "0.0.0.0:65535",
                                     "--master",       "mina:with:colon",
                                     "--master",       "\xEB\xAF\xB8\xEB\x82\x98:b",
                                     "--clock",        "0",
                                     "--connections",  "3",
                                     "--logon-time",   "4",
                                     "--queue",        "5",
                                     "--peer-timeout", "6",
                                     "--scenario",     "gates.txt",
                                     "--start",        "--loop",
                                     "--quiet"});
    EXPECT_EQ(all.Options.Address, "0.0.0.0");
    EXPECT_EQ(all.Options.Port, 65535);
    ASSERT_EQ(all.Masters.size(), 2U);
    EXPECT_EQ(all.Masters[0].Account, "mina");
    EXPECT_EQ(all.Masters[0].Password, "with:colon");
    EXPECT_EQ(all.Masters[1].Account, "\xB9\xCC\xB3\xAA") << "as a client sends it";
    EXPECT_EQ(all.Options.ClockInterval.count(), 0);
    EXPECT_EQ(all.Options.Limits.Connections, 3U);
    EXPECT_EQ(all.Options.Limits.LogonTime, std::chrono::seconds(4));
    EXPECT_EQ(all.Options.Limits.QueuedBytes, 5U * 1024 * 1024);
    EXPECT_EQ(all.Options.Limits.PeerTimeout, std::chrono::seconds(6));
    EXPECT_EQ(all.Scenario, "gates.txt");
    EXPECT_TRUE(all.Options.StartsScenario && all.Options.LoopsScenario && all.Quiet);
}

TEST(ServerProgram, SaysWhatWouldBeRight)
{
    const char* address = "such as 127.0.0.1:7001";
    const char* master = "such as mina:secret";
    const Wrong wrong[] = {
        {{"--listen", "7001"}, address},
        {{"--listen", "127.0.0.1"}, address},
        {{"--listen", "127.0.0.1:"}, address},
        {{"--listen", "127.0.0.1:65536"}, address},
        {{"--listen", "127.0.0.1:http"}, address},
        {{"--listen"}, "[ADDRESS]:PORT"},
        {{"--master", "mina"}, master},
        {{"--master", "mina:"}, master},
        {{"--master", ":secret"}, master},
        {{"--clock", "soon"}, "range 0 to 86400000"},
        {{"--clock", "-1"}, "range 0 to 86400000"},
        {{"--connections", "0"}, "range 1 to 1000000"},
        {{"--logon-time", "-1"}, "range 0 to 86400"},
        {{"--queue", "0"}, "range 1 to 2047"},
        {{"--peer-timeout", "86401"}, "range 0 to 86400"},
        {{"--start"}, "--scenario"},
        {{"--loop"}, "--scenario"},
        {{"--port", "7001"}, "--help"},
    };
    for (const Wrong& each : wrong) {
        const std::string said = Refusal(each.Arguments);
        EXPECT_NE(said.find(each.Expected), std::string::npos) << each.Arguments.front() << ": " << said;
    }
    try {
        Parse({"--help"});
        FAIL();
    } catch (const CommandLineEnd& end) {
        EXPECT_EQ(end.ExitCode, 0);
        EXPECT_NE(std::string(end.what()).find("--peer-timeout"), std::string::npos);
    }
}

TEST(ServerProgram, APlaceWhereItCannotListenIsExplained)
{
    const auto refusal = [](const char* address, unsigned short port) {
        ServerOptions options;
        options.Address = address;
        options.Port = port;
        try {
            GameServer server(options);
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    const std::string name = refusal("localhost", 0);
    EXPECT_NE(name.find("no IPv4 address such as 127.0.0.1"), std::string::npos) << name;
    const GameServer holder;
    const std::string taken = refusal("127.0.0.1", holder.GetPort());
    EXPECT_NE(taken.find("a port that is free"), std::string::npos) << taken;
}
