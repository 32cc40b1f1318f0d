// Scenarios of the reference server: a text goes in, and a client hears its messages or the text is refused.

#include "PlayingClient.h"

#include "server/messages/Notifications.h"
#include "server/messages/Texts.h"
#include "tests/conformance/Fields.h"
#include "tests/conformance/WatchingStub.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Kesra;

namespace
{

/// Writes values as words: lists with their count in front, texts in UTF-8.
class WordSink
{
public:
    static constexpr std::size_t MostElements = SIZE_MAX;

    void TakeBool(bool value) { Append(value ? "true" : "false"); }
    template <class Integer> void TakeInteger(Integer value) { Append(std::to_string(value)); }
    void TakeBits(std::uint64_t bits, int bytes)
    {
        float single = 0;
        double number = 0;
        std::memcpy(bytes == sizeof single ? static_cast<void*>(&single) : &number, &bits,
                    static_cast<std::size_t>(bytes));
        char text[40];
        std::snprintf(text, sizeof text, "%g", bytes == sizeof single ? static_cast<double>(single) : number);
        Append(text);
    }
    void TakeText(const char* text) { Append('"' + Utf8Text(text) + '"'); }

    std::string Words;

private:
    void Append(const std::string& word) { Words += ' ' + word; }
};

/// Keeps the messages that a client hears.
class Ear
{
public:
    template <class... Values> void Got(MessageNumber number, Values&... values)
    {
        FlatValues<WordSink> sink;
        (sink.Add(values), ...);
        Heard.push_back(std::to_string(static_cast<int>(number)) + sink.Words);
    }

    std::deque<std::string> Heard;
};

class Listener : public PlayingClient
{
public:
    explicit Listener(const GameServer& server) : PlayingClient(server) { Attach(&Stub); }
    ~Listener() override { StopReceiving(); }

    std::string Next()
    {
        PlayUntil([this] { return !Messages.Heard.empty(); });
        const std::string message = Messages.Heard.front();
        Messages.Heard.pop_front();
        return message;
    }
    /// Forgets everything up to a chat line.
    void SkipTo(const std::string& line)
    {
        while (Next() != "12002 0 \"" + line + '"') {
        }
    }
    void Say(const char* line)
    {
        CFixCharString<200> text(line);
        Requests.CS_Chat(text);
    }

private:
    Ear Messages;
    WatchingStub<Ear> Stub{Messages};
};

/// A server without clock messages and a client that has connected and no more.
class Scenario : public ::testing::Test
{
protected:
    static ServerOptions NoClock()
    {
        ServerOptions options;
        options.ClockInterval = std::chrono::milliseconds(0);
        return options;
    }
    void SetUp() override
    {
        ASSERT_TRUE(Client.ConnectToServer());
        ASSERT_TRUE(Server.WaitFor([](const ServerCounters& c) { return c.Accepted == 1; }));
    }
    void Play(const std::string& text)
    {
        Server.LoadScenario(text);
        Server.StartScenario();
    }
    /// What loading says against a text; empty when it takes it.
    std::string Refusal(const std::string& text)
    {
        try {
            Server.LoadScenario(text);
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    GameServer Server{NoClock()};
    Listener Client{Server};
};

/// A line behind "all", and what is heard.
struct Spoken {
    const char* Line;
    const char* Heard;
};

constexpr Spoken Forms[] = {
    // numbers
    {"SC_Chat 0 \"x\"", "12002 0 \"x\""},
    {"12002 -32768 \"x\"", "12002 -32768 \"x\""},
    {"SC_Event12006 0xFFFFFFFF 0x7FFF -128", "12006 -1 32767 -128"},
    {"SC_Event12006 -2147483648 -0x10 +127", "12006 -2147483648 -16 127"},
    {"SC_Event12006 010 0009 00", "12006 10 9 0"},
    {"SC_Wisper_Chat 4294967295 \"\"", "16015 4294967295 \"\""},
    {"SC_GM_Transparent 5 1", "21004 5 true"},
    {"\tSC_Event12008\t  7 \t", "12008 7"},
    {"SC_Event29002", "29002"},
    // texts
    {R"(SC_Chat 1 "The gates open. 문이 열립니다.")", R"(12002 1 "The gates open. 문이 열립니다.")"},
    {R"(SC_Chat 1 "\"quoted\" \\ [1] (2) # \n@me")", R"(12002 1 ""quoted" \ [1] (2) # n@me")"},
    {R"(SC_Chat 1 "nowhere but here: ☃")", R"(12002 1 "nowhere but here: ?")"},
    {R"(SC_Wisper_Chat_Wide 1"a""b")", R"(16016 1 "a" "b")"},
    {R"(SC_Event18001 -1 "")", R"(18001 -1 "")"},
    // lists
    {"SC_World14012 []", "14012 0"},
    {"SC_World14012 [ 1 -2 0x3 ]", "14012 3 1 -2 3"},
    {"SC_Event12012 [1 2][3][4 5 6]", "12012 2 1 2 1 3 3 4 5 6"},
    // vectors and movements
    {"SC_Event16013 (1.5 -2e3)", "16013 1.5 -2000"},
    {"SC_AvatarMove 1 (0x10 .25 180 4) 65535 9", "12003 1 16 0.25 180 4 65535 9"},
    // records
    {"SC_GSList [(1 2) (3 -4)]", "508 2 1 2 3 -4"},
    {"SC_GM_Give_Item (0 1001 110001 3 4 99)", "21010 0 1001 110001 3 4 99"},
    {"SC_GM_Give_Skill (100 7 -8 9)", "21009 100 7 -8 9"},
    {"SC_WorldItem (1000001 1 (5 6 7 8) 200001 10 11)", "14008 1000001 1 5 6 7 8 200001 10 11"},
    {"SC_Monster (100001 1 2 (5 6 7 8) 3 40.5)", "14009 100001 1 2 5 6 7 8 3 40.5"},
    {"SC_Npc ()", "14010"},
    {"SC_WorldObjectLists [] [(1 2 3 (4 5 6 7) 8 9)] [() ()]", "14003 0 1 1 2 3 4 5 6 7 8 9 2"},
    {R"(SC_Avatar (1 2 3 0 5 (6 7 8 9) 10 "미나" 1 [11 12]))",
     R"(14007 1 2 3 0 5 6 7 8 9 10 "미나" true 2 11 12)"},
    {"SC_PrivData (1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 4 100 0 1000 500)",
     "13002 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 4 0 100 0 1000 500"},
    {"SC_Dealing 1 [(1 2 3 4 5 6) (7 8 9 10 11 12)] [] 5", "50001 1 2 1 2 3 4 5 6 7 8 9 10 11 12 0 5"},
};

TEST_F(Scenario, ValuesOfEveryFormArrive)
{
    for (const char* lineEnd : {"\n", "\r\n"}) {
        std::string text = "\xEF\xBB\xBF# a comment";
        for (const Spoken& form : Forms)
            text += lineEnd + std::string("  # \"no message\n \t") + lineEnd + "all " + form.Line;
        Play(text);
        for (const Spoken& form : Forms)
            ASSERT_EQ(Client.Next(), form.Heard) << form.Line;
    }
}

TEST_F(Scenario, EveryMessageHasItsNameAndNumber)
{
    const auto expectKnown = [this](const std::string& name) {
        const std::string refusal = Refusal("all " + name + " (");
        EXPECT_TRUE(refusal.find("expected") != std::string::npos ||
                    refusal.find("more than") != std::string::npos)
            << name << ": " << refusal;
    };
    const auto expectBoth = [&](const char* name, MessageNumber number) {
        expectKnown(name);
        expectKnown(std::to_string(static_cast<int>(number)));
    };
    std::apply([&](const auto&... row) { (expectBoth(row.Name, row.Number), ...); }, Notifications);
    expectBoth("SC_SetNetTime", SC_SET_NET_TIME);

    // No handler hears the clock, but from the second one on the client answers it.
    Play("all SC_SetNetTime 0xFFFFFFFF 1\nall 10005 0 40");
    Client.PlayUntil([this] { return Server.GetCounters().ReceivedOf(CS_RESPONSE_NET_TIME) > 0; });
}

/// A line, and what is said against it.
constexpr Spoken Refusals[] = {
    // messages
    {"all SC_Nothing", "expected a message's handler or number such as SC_Chat or 12002, found SC_Nothing"},
    {"all 12001 0", "expected a message's handler or number such as SC_Chat or 12002, found 12001"},
    {"all sc_chat 0 \"a\"", "expected a message's handler or number such as SC_Chat or 12002, found sc_chat"},
    {"all", "expected a message's handler or number such as SC_Chat or 12002, found the end of the line"},
    {"\"Mina SC_Chat 0", "expected \" at the end of the name, found the end of the line"},
    // too few and too many values
    {"all SC_Chat",
     "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found the end of the line"},
    {"all SC_Chat 0",
     "SC_Chat, value 2: expected a \"text\" of at most 200 bytes, found the end of the line"},
    {"all SC_Chat 0 \"a\" 1", "SC_Chat: expected the end of the line behind 2 values, found 1"},
    {"all SC_Event29002 0", "SC_Event29002: expected the end of the line behind 0 values, found 0"},
    {"all SC_World14012", "SC_World14012, value 1: expected a list in [ ], found the end of the line"},
    // other forms of value
    {"all SC_Chat \"a\" 0",
     "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found \"a\" 0"},
    {"all SC_Chat 0 a", "SC_Chat, value 2: expected a \"text\" of at most 200 bytes, found a"},
    {"all SC_World14012 1 2", "SC_World14012, value 1: expected a list in [ ], found 1 2"},
    {"all SC_Event16013 1 2", "SC_Event16013, value 1: expected a record (x z), found 1 2"},
    // texts and lists without end
    {"all SC_Chat 0 \"a", "SC_Chat, value 2: expected \" at the end of the text, found the end of the line"},
    {R"(all SC_Chat 0 "a\")",
     "SC_Chat, value 2: expected \" at the end of the text, found the end of the line"},
    {R"(all SC_Chat 0 "a\)",
     "SC_Chat, value 2: expected \" at the end of the text, found the end of the line"},
    {"all SC_World14012 [1 2",
     "SC_World14012, value 1: expected ] at the end of the list, found the end of the line"},
    {"all SC_World14012 [1 2)",
     "SC_World14012, value 1, element 3: expected a number from -32768 to 32767 or @name, found )"},
    {"all SC_NpcList [()",
     "SC_NpcList, value 1: expected ] at the end of the list, found the end of the line"},
    {"all SC_Event16013 (1 2",
     "SC_Event16013, value 1: expected ) behind the last field, found the end of the line"},
    {"all SC_Event16013 (1 2 3)", "SC_Event16013, value 1: expected ) behind the last field, found 3)"},
    {"all SC_Event16013 (1)", "SC_Event16013, value 1, z: expected a number such as 1.5, found )"},
    {"all SC_GM_Give_Item (1 2 3 4 5)", "SC_GM_Give_Item, value 1, ItemCount: expected a number from "
                                        "-2147483648 to 4294967295 or @name, found )"},
    // numbers that the field does not hold
    {"all SC_Chat 32768 \"a\"",
     "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found 32768"},
    {"all SC_Chat -32769 \"a\"",
     "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found -32769"},
    {"all SC_Wisper_Chat 4294967296 \"a\"",
     "SC_Wisper_Chat, value 1: expected a number from -2147483648 to 4294967295 or @name, found 4294967296"},
    {"all SC_Wisper_Chat -2147483649 \"a\"",
     "SC_Wisper_Chat, value 1: expected a number from -2147483648 to 4294967295 or @name, found -2147483649"},
    {"all SC_Wisper_Chat 99999999999999999999 \"a\"",
     "SC_Wisper_Chat, value 1: expected a number from -2147483648 to 4294967295 or @name, found "
     "99999999999999999999"},
    {"all SC_AvatarMove 1 (1 2 3 4) 65536 9",
     "SC_AvatarMove, value 3: expected a number from 0 to 65535 or @name, found 65536"},
    {"all SC_AvatarMove 1 (1 2 3 4) -1 9",
     "SC_AvatarMove, value 3: expected a number from 0 to 65535 or @name, found -1"},
    {"all SC_Event12006 1 2 128", "SC_Event12006, value 3: expected a number from -128 to 127, found 128"},
    {"all SC_GM_Transparent 5 2", "SC_GM_Transparent, value 2: expected a number from 0 to 1, found 2"},
    {"all SC_Event16013 (1e39 2)", "SC_Event16013, value 1, x: expected a number such as 1.5, found 1e39"},
    {"all SC_Event16013 (1 nan)", "SC_Event16013, value 1, z: expected a number such as 1.5, found nan"},
    {"all SC_PrivData (1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 5 0 0 0 0)",
     "SC_PrivData, value 1, MaxInventorySlot: expected a number up to 4, found 5"},
    {"all SC_PrivData (1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 4 0 0 0 99)",
     "SC_PrivData, value 1, SelectSkillIndex4: expected 0 or a number from 100 to 1000, found 99"},
    // what is no number
    {"all SC_Chat 1.5 \"a\"", "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found 1.5"},
    {"all SC_Chat 0x \"a\"", "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found 0x"},
    {"all SC_Chat - \"a\"", "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found -"},
    {"all SC_Chat +-1 \"a\"", "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found +-1"},
    {"all SC_Chat 1a \"a\"", "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found 1a"},
    {"all SC_Event16013 (1,5 2)", "SC_Event16013, value 1, x: expected a number such as 1.5, found 1,5"},
    // object IDs
    {"all SC_Chat @ \"a\"", "SC_Chat, value 1: expected a number from -32768 to 32767 or @name, found @"},
    {"all SC_Event12006 1 2 @me", "SC_Event12006, value 3: expected a number from -128 to 127, found @me"},
    {"all SC_GM_Transparent 5 @me", "SC_GM_Transparent, value 2: expected a number from 0 to 1, found @me"},
    // texts that are too long
    {"all SC_Wisper_Chat_Wide 1 \"가나다라마바사아자차카\" \"\"",
     "SC_Wisper_Chat_Wide, value 2: expected a \"text\" of at most 20 bytes, found 22 bytes: "
     "가나다라마바사아자차카"},
    // waiting
    {"wait", "wait: expected a number from 0 to 3600000, found the end of the line"},
    {"wait soon", "wait: expected a number from 0 to 3600000, found soon"},
    {"wait -1", "wait: expected a number from 0 to 3600000, found -1"},
    {"wait 3600001", "wait: expected a number from 0 to 3600000, found 3600001"},
    {"wait @me", "wait: expected a number from 0 to 3600000, found @me"},
    {"wait 1 2", "wait: expected the end of the line behind 1 value, found 2"},
};

TEST_F(Scenario, ARefusalNamesLineAndReason)
{
    Server.LoadScenario("all SC_Event12008 1");
    for (const Spoken& each : Refusals) {
        const std::string text = std::string("# a comment\n\nall SC_Event12008 2\n") + each.Line;
        const std::string expected = std::string("line 4: ") + each.Heard;
        EXPECT_EQ(Refusal(text), expected);
        EXPECT_EQ(Refusal(text + "\r\nall SC_Event12008 3\n"), expected);
    }
    // What was loaded before is still there.
    Server.StartScenario();
    EXPECT_EQ(Client.Next(), "12008 1");
}

std::string Repeated(const std::string& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST_F(Scenario, AMessageFillsAPacketAtMost)
{
    const auto sessions = [](int count) { return "all SC_World14012 [" + Repeated("7 ", count) + "]"; };
    const auto avatar = [](int appearance) {
        return "all SC_Avatar (1 2 3 0 5 (6 7 8 9) 10 \"\" 0 [" + Repeated("11 ", appearance) + "])";
    };
    const auto text = [](int length) {
        return "all SC_Chat 0 \"" + std::string(static_cast<std::size_t>(length), 'x') + '"';
    };
    const auto npcs = [](int count) { return "all SC_NpcList [" + Repeated("()", count) + "]"; };
    const std::string fits = ": expected at most 4096 bytes, found ";
    EXPECT_EQ(Refusal(sessions(2046)), "line 1: SC_World14012" + fits + "4098");
    EXPECT_EQ(Refusal(avatar(1015)), "line 1: SC_Avatar" + fits + "4099");
    EXPECT_EQ(Refusal(avatar(3000)), "line 1: SC_Avatar" + fits + "12039");
    EXPECT_EQ(Refusal(text(201)),
              "line 1: SC_Chat, value 2: expected a \"text\" of at most 200 bytes, found 201 bytes: " +
                  std::string(49, 'x') + "...");
    EXPECT_EQ(Refusal(npcs(32768)),
              "line 1: SC_NpcList, value 1: expected ] behind 32767 elements, the longest "
              "list, found ()]");

    Play(sessions(2045) + '\n' + avatar(1014) + '\n' + text(200) + '\n' + npcs(32767));
    EXPECT_EQ(Client.Next(), "14012 2045" + Repeated(" 7", 2045));
    EXPECT_EQ(Client.Next(), "14007 1 2 3 0 5 6 7 8 9 10 \"\" false 1014" + Repeated(" 11", 1014));
    EXPECT_EQ(Client.Next(), "12002 0 \"" + std::string(200, 'x') + '"');
    EXPECT_EQ(Client.Next(), "14006 32767");
}

TEST_F(Scenario, WaitingHoldsBackAllThatFollows)
{
    Play("all SC_Event12008 1\n"
         "wait 1\n"
         "all SC_Event12008 2\n"
         "all SC_Event12008 3\n"
         "wait 0\n"
         "all SC_Event12008 4\n"
         "wait 1800000\n"
         "wait 0\n"
         "all SC_Event12008 5\n"
         "all SC_Event12008 6\n"
         "wait 10");
    // A scenario that plays is not changed by loading another.
    Server.LoadScenario("all SC_Event12008 8");
    for (const char* number : {"1", "2", "3", "4"})
        EXPECT_EQ(Client.Next(), std::string("12008 ") + number);
    Server.PushAll(Notification<SC_EVENT12008>(7));
    EXPECT_EQ(Client.Next(), "12008 7");
    Server.StartScenario();
    EXPECT_EQ(Client.Next(), "12008 8");
}

TEST_F(Scenario, ReachesWhomItNames)
{
    Listener anna(Server);
    Listener bora(Server);
    Listener wait(Server);
    Listener number(Server);
    ASSERT_NO_FATAL_FAILURE(anna.Enter("anna"));
    ASSERT_NO_FATAL_FAILURE(bora.Enter(WireText("보라").c_str()));
    ASSERT_NO_FATAL_FAILURE(wait.Enter("wait"));
    ASSERT_NO_FATAL_FAILURE(number.Enter("#1"));
    Server.LoadScenario("all     SC_Chat 0 \"begin\"\n"
                        "me      SC_World14011 @me\n"
                        "anna    SC_World14013 @보라 1\n"
                        "보라    SC_World14011 @anna\n"
                        "\"보라\"  SC_World14011 @me\n"
                        "\"wait\"  SC_World14011 4\n"
                        "\"#1\"    SC_World14012 [@anna @보라]\n"
                        "nobody  SC_Chat 0 \"unheard\"\n"
                        "\"\"      SC_Chat 0 \"unheard\"\n"
                        "me      SC_World14011 @somebody\n"
                        "all     SC_Chat 0 \"end\"");
    bora.Say("/scenario");
    const std::string end = "12002 0 \"end\"";
    const std::pair<Listener*, std::vector<std::string>> expected[] = {
        {&Client, {}},
        {&anna, {"14013 2 1"}},
        {&bora, {"14011 2", "14011 1", "14011 2", "14011 0"}},
        {&wait, {"14011 4"}},
        {&number, {"14012 2 1 2"}},
    };
    for (const auto& [listener, messages] : expected) {
        listener->SkipTo("begin");
        for (const std::string& message : messages)
            EXPECT_EQ(listener->Next(), message);
        EXPECT_EQ(listener->Next(), end);
    }
    for (const char* missing :
         {"8: nobody is called nobody", "9: nobody is called ", "10: nobody is called somebody"}) {
        const std::vector<std::string> log = Server.GetLog();
        // The time stands in front.
        const auto isMissing = [&](const std::string& line) {
            return line.substr(line.find(' ') + 1) == std::string("scenario line ") + missing;
        };
        EXPECT_EQ(std::count_if(log.begin(), log.end(), isMissing), 1) << missing;
    }
}

TEST_F(Scenario, ItsNameStandsInFrontOfWhatIsWrong)
{
    const auto refusal = [this](const std::string& text) {
        try {
            Server.LoadScenario(text, "gates.txt");
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(refusal("\nall SC_GSList [(1 2) (3 x)]"),
              "gates.txt:2: SC_GSList, value 1, element 2, Value2: expected a number from -32768 to 32767 or "
              "@name, found x");
    EXPECT_EQ(refusal("nobody SC_Event29002\nall SC_Event12008 1"), "");
    Server.StartScenario();
    EXPECT_EQ(Client.Next(), "12008 1");
    const std::vector<std::string> log = Server.GetLog();
    EXPECT_NE(log.back().find("scenario gates.txt:1: nobody is called nobody"), std::string::npos)
        << log.back();
}

ServerOptions Playing(bool starts, bool loops)
{
    ServerOptions options;
    options.ClockInterval = std::chrono::milliseconds(0);
    options.StartsScenario = starts;
    options.LoopsScenario = loops;
    return options;
}

/// Skips what play brings.
void ExpectSoon(Listener& listener, const std::string& message)
{
    while (listener.Next() != message) {
    }
}

TEST(ScenarioStart, TheFirstPlayerStartsItAndNoOther)
{
    GameServer server(Playing(true, false));
    server.LoadScenario("me SC_World14011 @me\nall SC_Chat 0 \"started\"");
    Listener anna(server);
    Listener bora(server);
    ASSERT_NO_FATAL_FAILURE(anna.Enter("anna"));
    ExpectSoon(anna, "14011 1");
    anna.SkipTo("started");
    ASSERT_NO_FATAL_FAILURE(bora.Enter("bora"));
    ASSERT_TRUE(server.WaitForReceived(CS_ENTER_SESSION, 2));
    server.PushAll(Notification<SC_CHAT>(short{0}, "after bora"));
    for (std::string line = anna.Next(); line != "12002 0 \"after bora\""; line = anna.Next())
        EXPECT_NE(line, "12002 0 \"started\"");
    // When everybody has left, the next one is the first again.
    anna.Requests.CS_LeaveSession();
    bora.Requests.CS_LeaveSession();
    ASSERT_TRUE(server.WaitForReceived(CS_LEAVE_SESSION, 2));
    bora.Requests.CS_EnterSession();
    ExpectSoon(bora, "14011 2");
}

TEST(ScenarioStart, ALoopGoesOnWhileAnybodyPlays)
{
    GameServer server(Playing(true, true));
    EXPECT_THROW(server.LoadScenario("wait 0\nall SC_Event12008 1"), std::runtime_error)
        << "would never let go of the server";
    server.LoadScenario("me SC_World14011 @me\nwait 1\nme SC_Event12008 5\nwait 1");
    Listener anna(server);
    ASSERT_NO_FATAL_FAILURE(anna.Enter("anna"));
    for (int round = 0; round < 3; ++round) {
        ExpectSoon(anna, "14011 1");
        ExpectSoon(anna, "12008 5");
    }
}

TEST(ScenarioStart, ALoopThatStillRunsIsNotStartedTwice)
{
    GameServer server(Playing(true, true));
    server.LoadScenario("me SC_World14011 @me\nwait 3600000");
    Listener anna(server);
    Listener bora(server);
    ASSERT_NO_FATAL_FAILURE(anna.Enter("anna"));
    ExpectSoon(anna, "14011 1");
    anna.Requests.CS_LeaveSession();
    ExpectSoon(anna, "29002");
    ASSERT_NO_FATAL_FAILURE(bora.Enter("bora"));
    ASSERT_TRUE(server.WaitForReceived(CS_ENTER_SESSION, 2));
    server.PushAll(Notification<SC_CHAT>(short{0}, "after bora"));
    for (std::string line = bora.Next(); line != "12002 0 \"after bora\""; line = bora.Next())
        EXPECT_NE(line, "14011 2");
}

} // namespace
