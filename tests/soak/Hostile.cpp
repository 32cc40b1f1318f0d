#include "tests/soak/Hostile.h"

#include "server/messages/Writers.h"
#include "tests/support/Peer.h"

#include <cstring>
#include <iterator>
#include <string>
#include <thread>

using Test::BytesOf;
using Test::Peer;

namespace Soak
{
namespace
{

constexpr std::size_t QuestionBytes = 8;
constexpr unsigned Flood = 3000;
constexpr unsigned WrongSerials = 2000;

struct Kind {
    void (*Serve)(Peer& server);
    void (*Suffer)(Traveller& traveller);
};

std::string Line(unsigned number)
{
    // Its connection is newer than any before, as every visit begins with line 1.
    static std::atomic<unsigned> connections{0};
    if (number == 1)
        ++connections;
    return BytesOf(Kesra::MessageOf(Kesra::SC_CHAT, short{1},
                                    std::to_string(connections) + " " + std::to_string(number)));
}

std::string Answer(short serial)
{
    return BytesOf(Kesra::MessageOf(Kesra::GS_REPLY_10006, serial, 5U));
}

std::string Header(unsigned short number, unsigned short size)
{
    std::string bytes(CNTPacket::HeaderSize, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    std::memcpy(bytes.data() + sizeof number, &size, sizeof size);
    return bytes;
}

GS_RESULT Ask(Traveller& traveller)
{
    unsigned long result = 0;
    return traveller.Requests.CS_CancelDeleteAvatar(1, result);
}

void AwaitReason(Traveller& traveller, END_REASON reason)
{
    traveller.AwaitEnd();
    Require(traveller.GetEndReason() == reason, "the reason " + std::to_string(reason) + " of an end");
}

void HearFlood(Traveller& traveller)
{
    traveller.Until("the end of a flood", [&] { return traveller.Stub.Heard == Flood; });
    AwaitReason(traveller, END_SERVER_CLOSED);
}

const Kind Kinds[] = {
    // Sends what is no packet.
    {[](Peer& server) { server.Send(Header(Kesra::SC_CHAT, 3)); },
     [](Traveller& traveller) { AwaitReason(traveller, END_MALFORMED); }},
    // Resets as soon as it has heard something: a connect that it resets may fail.
    {[](Peer& server) {
         server.Receive(1);
         server.Reset();
     },
     [](Traveller& traveller) {
         traveller.Say(1, 1);
         AwaitReason(traveller, END_RESET);
     }},
    // Goes in the middle of a packet.
    {[](Peer& server) {
         server.Send(Line(1).substr(0, 9));
         server.Close();
     },
     [](Traveller& traveller) { AwaitReason(traveller, END_SERVER_CLOSED); }},
    // Floods, and goes.
    {[](Peer& server) {
         for (unsigned line = 1; line <= Flood; ++line)
             server.Send(Line(line));
         server.Close();
     },
     HearFlood},
    // The same, byte by byte at times.
    {[](Peer& server) {
         for (unsigned line = 1; line <= Flood; ++line) {
             const std::string bytes = Line(line);
             if (line % 64 != 0)
                 server.Send(bytes);
             else
                 for (const char& octet : bytes)
                     server.Send({&octet, 1});
         }
         server.Close();
     },
     HearFlood},
    // Answers everybody else before the one who has asked.
    {[](Peer& server) {
         const std::string question = server.Receive(QuestionBytes);
         for (unsigned i = 0; i < WrongSerials; ++i)
             server.Send(Answer(static_cast<short>(10001 + i)));
         for (short serial = 1; serial <= CNTProxy::LastSerial; serial = static_cast<short>(serial + 1))
             server.Send(Answer(serial));
     },
     [](Traveller& traveller) {
         Require(Ask(traveller) == GS_OK, "an answer among alien ones");
         traveller.Leave();
     }},
    // Never answers.
    {[](Peer& server) { server.Receive(QuestionBytes + 1); },
     [](Traveller& traveller) {
         traveller.Requests.SetReplyTimeLimit(20);
         Require(Ask(traveller) == GS_REPLY_ERROR, "the end of a request");
         traveller.Requests.SetReplyTimeLimit(20000);
         AwaitReason(traveller, END_REQUEST_TIMED_OUT);
     }},
    // Never reads.
    {[](Peer&) {},
     [](Traveller& traveller) {
         traveller.SetSendBuffer(4096);
         traveller.SetOutboxLimit(64 * 1024);
         for (unsigned line = 1; traveller.IsAlive() && traveller.IsConnected(); ++line)
             traveller.Say(1, line);
         AwaitReason(traveller, END_OUTBOX_FULL);
     }},
};

} // namespace

std::size_t HostileKinds()
{
    return std::size(Kinds);
}

void VisitHostile(Traveller& traveller, std::size_t kind)
{
    Peer server{asio::socket_base::receive_buffer_size(4096)};
    std::thread serving([&] {
        server.Accept();
        Kinds[kind].Serve(server);
    });
    // Whatever is thrown, the server has had its visitor.
    struct Joining {
        std::thread& Thread;
        ~Joining() { Thread.join(); }
    } const joining{serving};
    traveller.ConnectTo(server.Port());
    Kinds[kind].Suffer(traveller);
}

} // namespace Soak
