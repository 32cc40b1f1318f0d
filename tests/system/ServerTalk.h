#pragma once

#include "RawPeer.h"

#include "server/GameServer.h"
#include "server/messages/Writers.h"
#include "server/network/Network.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

/// Talking to the server packet by packet.
namespace ServerTalk
{

using Bytes = RawPeer::Bytes;

inline Bytes BytesOf(const CNTPacket& packet)
{
    return {packet.GetBuf(), packet.GetBuf() + packet.GetBufSize()};
}

template <class... Fields> Bytes Request(Kesra::MessageNumber number, const Fields&... fields)
{
    return BytesOf(Kesra::MessageOf(number, fields...));
}

inline Bytes Header(unsigned short number, unsigned short size)
{
    Bytes bytes(4);
    std::memcpy(bytes.data(), &number, 2);
    std::memcpy(bytes.data() + 2, &size, 2);
    return bytes;
}

inline unsigned short NumberOf(const Bytes& packet)
{
    unsigned short number = 0;
    if (packet.size() >= sizeof number)
        std::memcpy(&number, packet.data(), sizeof number);
    return number;
}

/// A packet ready for reading its payload.
inline CNTPacket PayloadOf(const Bytes& bytes)
{
    CNTPacket packet;
    packet.Write(bytes.data(), static_cast<unsigned short>(bytes.size()));
    packet.SetBufPoint(CNTPacket::HeaderSize);
    return packet;
}

constexpr unsigned short Serial = 7;

inline Bytes LogonRequest(const std::string& account = "mina", const char* password = "secret")
{
    return Request(Kesra::CS_LOGON, Serial, account, password);
}

/// The result code at the end of a reply, whatever stands before it.
inline unsigned long ResultOf(const Bytes& bytes)
{
    CNTPacket packet = PayloadOf(bytes);
    unsigned short serial = 0;
    unsigned long result = 0;
    packet >> serial;
    EXPECT_EQ(serial, Serial);
    if (bytes.size() < 10) {
        ADD_FAILURE() << "no reply: " << bytes.size() << " bytes";
        return result;
    }
    packet.SetBufPoint(static_cast<unsigned short>(bytes.size() - 4));
    packet >> result;
    return result;
}

/// Skips pushed messages up to the next one of that number; empty when the connection ends first.
inline Bytes ReadUntil(RawPeer& peer, unsigned short number)
{
    Bytes packet = peer.ReadPacket();
    while (!packet.empty() && NumberOf(packet) != number)
        packet = peer.ReadPacket();
    return packet;
}

/// The code with which the next request without a reply is refused.
inline short RefusalOf(RawPeer& peer)
{
    CNTPacket packet = PayloadOf(ReadUntil(peer, Kesra::SC_EVENT16010));
    short code = -1;
    packet >> code;
    return code;
}

/// Sends a request that waits and reads its result.
inline unsigned long Ask(RawPeer& peer, const Bytes& request, unsigned short reply)
{
    peer.Send(request);
    return ResultOf(ReadUntil(peer, reply));
}

inline void LogonAndPlay(RawPeer& peer, const char* account, const char* nickname)
{
    peer.Send(LogonRequest(account));
    peer.Send(Request(Kesra::CS_CREATE_AVATAR, Serial, short{0}, nickname, short{1}));
    peer.Send(Request(Kesra::CS_TRY_ON_SESSION, Serial, short{0}, short{1}));
    peer.Send(Request(Kesra::CS_ENTER_SESSION));
    ASSERT_FALSE(ReadUntil(peer, Kesra::SC_WORLD_OBJECT_LISTS).empty());
}

/// The peer is served: a request gets its answer.
inline void ExpectServed(RawPeer& peer)
{
    peer.Send(Request(Kesra::CS_DELETE_AVATAR, Serial, short{0}));
    EXPECT_FALSE(ReadUntil(peer, Kesra::GS_REPLY_10004).empty());
}

/// The server still serves: a fresh connection gets an answer.
inline void ExpectServing(Kesra::GameServer& server)
{
    RawPeer peer(server.GetPort());
    ExpectServed(peer);
}

/// No clock messages, so that only what was asked for comes.
inline Kesra::ServerOptions QuietOptions()
{
    Kesra::ServerOptions options;
    options.ClockInterval = std::chrono::milliseconds(0);
    return options;
}

/// Whether a line of the log has this in it.
inline bool Logged(const Kesra::GameServer& server, const std::string& part)
{
    for (const std::string& line : server.GetLog())
        if (line.find(part) != std::string::npos)
            return true;
    return false;
}

} // namespace ServerTalk
