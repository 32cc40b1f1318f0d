// Servers and lines that make it hard to find a packet.

#include "PlayingClient.h"

#include "server/messages/Notifications.h"
#include "tests/support/GameClient.h"
#include "tests/support/LogDirectory.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

using namespace Kesra;
using asio::ip::tcp;
using Test::BytesOf;
using Test::Chat;
using Test::ChatStub;
using Test::GameClient;
using Test::Peer;
using Test::Reply;

namespace
{

TEST(Hostile, MassesOfWrongSerialsWhileARequestWaits)
{
    const LogDirectory log;
    Peer server;
    GameClient game;
    ASSERT_TRUE(game.ConnectTo(server));
    std::string masses = BytesOf(Chat("before"));
    for (int serial = -100; serial <= 12000; ++serial)
        if (serial != 1)
            masses += BytesOf(Reply(static_cast<short>(serial), 77));
    std::thread answering([&] {
        for (const short serial : {short{1}, short{2}}) {
            server.Receive(8);
            server.Send(masses + BytesOf(Reply(serial, 4U + static_cast<unsigned>(serial))));
            masses = BytesOf(Chat("between"));
        }
    });
    unsigned long result = 0;
    EXPECT_EQ(game.Requests.CS_CancelDeleteAvatar(1, result), GS_OK);
    EXPECT_EQ(result, 5U);
    // What was sent to its serial before it was made is not its answer.
    EXPECT_EQ(game.Requests.CS_CancelDeleteAvatar(1, result), GS_OK);
    EXPECT_EQ(result, 6U);
    answering.join();
    EXPECT_EQ(game.Stub.Lines, (std::vector<std::string>{"before", "between"}));
    game.Disconnect();
    game.WaitForEnd();
}

/// Stands between a client and its server and passes every byte by itself.
class Dribble
{
public:
    explicit Dribble(unsigned short port) : Worker([this, port] { Join(port); }) {}
    ~Dribble() { Worker.join(); }
    Dribble(const Dribble&) = delete;
    Dribble& operator=(const Dribble&) = delete;

    unsigned short Port() const { return Acceptor.local_endpoint().port(); }

private:
    void Join(unsigned short port)
    {
        Acceptor.accept(Client);
        Server.connect({asio::ip::address_v4::loopback(), port});
        for (tcp::socket* side : {&Client, &Server})
            side->set_option(tcp::no_delay(true));
        std::thread down([this] { Pass(Server, Client); });
        Pass(Client, Server);
        down.join();
    }
    static void Pass(tcp::socket& from, tcp::socket& to)
    {
        std::array<char, 4096> bytes;
        asio::error_code error;
        while (const std::size_t count = from.read_some(asio::buffer(bytes), error))
            for (std::size_t i = 0; i < count; ++i)
                asio::write(to, asio::buffer(&bytes[i], 1), error);
        to.shutdown(tcp::socket::shutdown_send, error);
    }

    asio::io_context Context;
    tcp::acceptor Acceptor{Context, {asio::ip::address_v4::loopback(), 0}};
    tcp::socket Client{Context};
    tcp::socket Server{Context};
    std::thread Worker;
};

class Listener : public PlayingClient
{
public:
    explicit Listener(const GameServer& server) : PlayingClient(server) { Attach(&Stub); }
    ~Listener() override { StopReceiving(); }

    ChatStub Stub;
};

TEST(Hostile, AWholeSessionOneByteAtATime)
{
    const LogDirectory log;
    ServerOptions quiet;
    quiet.ClockInterval = std::chrono::milliseconds(0);
    GameServer server(quiet);
    Dribble between(server.GetPort());
    Listener game(server);
    game.SetServerPort(between.Port());
    ASSERT_NO_FATAL_FAILURE(game.Enter("dora"));
    std::vector<std::string> pushed;
    for (int length = 0; length < 200; ++length) {
        pushed.push_back(std::string(static_cast<std::size_t>(length), 'x'));
        server.PushAll(Notification<SC_CHAT>(short{1}, pushed.back()));
        CFixCharString<200> line(pushed.back().c_str());
        game.Requests.CS_Chat(line);
    }
    game.PlayUntil([&] { return game.Stub.Lines.size() == pushed.size(); });
    EXPECT_EQ(game.Stub.Lines, pushed);
    EXPECT_TRUE(server.WaitForReceived(CS_CHAT, static_cast<unsigned>(pushed.size())));
    EXPECT_EQ(server.GetCounters().Ignored, 0U);
    EXPECT_EQ(server.GetCounters().BytesReceived, game.GetStatistics().BytesSent);
    game.Disconnect();
}

} // namespace
