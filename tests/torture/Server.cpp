#include "tests/torture/Server.h"

#include "server/messages/Replies.h"
#include "server/peer/RequestReader.h"

#include <asio.hpp>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

using namespace Kesra;
using asio::ip::tcp;

namespace Torture
{
namespace
{

constexpr int LittleBuffer = 4096;
constexpr std::chrono::milliseconds RestTime{2};

/// One connection of a client.
class Guest
{
public:
    Guest(tcp::socket socket, unsigned number, Outcome& outcome)
        : Socket(std::move(socket)), Number(number), Findings(outcome)
    {
    }

    void Serve()
    {
        CNTPacket packet;
        while (IsOpen && Receive(packet))
            Take(packet);
    }

private:
    bool Receive(CNTPacket& packet)
    {
        std::array<unsigned char, CNTPacket::Capacity> bytes;
        if (!Read(bytes.data(), CNTPacket::HeaderSize))
            return false;
        unsigned short size = 0;
        std::memcpy(&size, bytes.data() + 2, sizeof size);
        if (size < CNTPacket::HeaderSize || size > bytes.size()) {
            Blame(Findings, "the server got a packet of %u bytes", size);
            return false;
        }
        if (!Read(bytes.data() + CNTPacket::HeaderSize, size - CNTPacket::HeaderSize))
            return false;
        packet.SetBufSize(0);
        packet.SetBufPoint(0);
        packet.Write(bytes.data(), size);
        return true;
    }

    bool Read(unsigned char* bytes, std::size_t size)
    {
        asio::error_code error;
        asio::read(Socket, asio::buffer(bytes, size), error);
        return !error;
    }

    void Send(const CNTPacket& packet)
    {
        asio::error_code error;
        asio::write(Socket, asio::buffer(packet.GetBuf(), packet.GetBufSize()), error);
    }

    void Take(CNTPacket& packet)
    {
        unsigned short number = 0;
        std::memcpy(&number, packet.GetBuf(), sizeof number);
        RequestReader reader(packet);
        switch (number) {
        case CS_LOGON:
            return TakeLogon(reader);
        case CS_CANCEL_DELETE_AVATAR:
            return TakeQuestion(reader);
        case CS_CHAT:
            return TakeChat(reader);
        case CS_RESPONSE_NET_TIME:
            return;
        default:
            Blame(Findings, "the server got the request %u", number);
        }
    }

    void TakeLogon(RequestReader& reader)
    {
        Serial serial;
        NameText account;
        NameText password;
        reader.Take(serial);
        reader.Take(account);
        reader.Take(password);
        if (!reader.Finish() || password.Value != "secret")
            Blame(Findings, "the server got a malformed logon of %s", account.Value.c_str());
        Name = account.Value;
        const std::vector<TAvatar> avatars(2);
        const std::vector<TPrivData> data(2);
        Send(ReplyTo<CS_LOGON>(serial.Value, {std::uint16_t{7}, avatars, data}, Result{}));
    }

    void TakeQuestion(RequestReader& reader)
    {
        Serial serial;
        short count = 0;
        reader.Take(serial);
        reader.Take(count);
        Push(count);
        Send(MessageOf(GS_REPLY_10006, serial.Value, Heard));
    }

    void TakeChat(RequestReader& reader)
    {
        ChatText text;
        reader.Take(text);
        unsigned number = 0;
        char order[16] = "";
        int value = 0;
        const bool isWhole = reader.Finish();
        const int fields = std::sscanf(text.Value.c_str(), "%u %15s %d", &number, order, &value);
        if (!isWhole || fields < 1 || number != Heard + 1)
            Blame(Findings, "%s: the server got \"%.20s\" behind line %u", Name.c_str(), text.Value.c_str(),
                  Heard);
        Heard = number;
        Obey(order, value);
    }

    void Obey(const std::string& order, int value)
    {
        if (order == "push")
            Push(value);
        else if (order == "rest")
            std::this_thread::sleep_for(RestTime);
        else if (order == "close" || order == "reset")
            End(order == "reset");
    }

    void End(bool isReset)
    {
        if (isReset)
            Socket.set_option(asio::socket_base::linger(true, 0));
        Socket.close();
        IsOpen = false;
    }

    void Push(int count)
    {
        constexpr int ListEvery = 16;
        const std::string filling(120, 'x');
        for (int i = 0; i < count; ++i) {
            char line[200];
            std::snprintf(line, sizeof line, "%u %u %s", Number, ++Pushed, filling.c_str());
            Send(MessageOf(SC_CHAT, short{1}, std::string(line)));
            if (i % ListEvery == 0) {
                Send(MessageOf(SC_MONSTER_LIST, std::vector<TMonster>(5)));
                Send(MessageOf(SC_SET_NET_TIME, 1000UL + Pushed, 5UL));
            }
        }
    }

    tcp::socket Socket;
    const unsigned Number;
    Outcome& Findings;
    std::string Name = "nobody";
    unsigned Heard = 0;
    unsigned Pushed = 0;
    bool IsOpen = true;
};

[[noreturn]] void Serve(tcp::acceptor& acceptor, Outcome& outcome)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (unsigned number = 1;; ++number) {
        tcp::socket socket = acceptor.accept();
        socket.set_option(tcp::no_delay(true));
        std::thread([connection = std::move(socket), number, &outcome]() mutable {
            try {
                Guest(std::move(connection), number, outcome).Serve();
            } catch (const std::exception& error) {
                Blame(outcome, "the server failed: %s", error.what());
            }
        }).detach();
    }
}

} // namespace

ServerProcess StartServer(Outcome& outcome)
{
    asio::io_context context;
    tcp::acceptor acceptor(context);
    acceptor.open(tcp::v4());
    // Connections inherit it: their clients soon have to wait with sending.
    acceptor.set_option(asio::socket_base::receive_buffer_size(LittleBuffer));
    acceptor.bind({asio::ip::address_v4::loopback(), 0});
    acceptor.listen();
    ServerProcess server;
    server.Port = acceptor.local_endpoint().port();
    server.Process = fork();
    if (server.Process < 0)
        throw std::runtime_error("the server cannot be forked");
    if (server.Process == 0)
        Serve(acceptor, outcome);
    return server;
}

} // namespace Torture
