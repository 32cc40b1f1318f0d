#pragma once

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/platform/private/EventHandle.h"
#include "KesraNTC/rpc/CNTStub_Quiet.h"
#include "tests/support/Peer.h"
#include "tests/support/Until.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace Test
{

/// Keeps the chat lines it hears.
class ChatStub : public CNTStub_Quiet
{
public:
    void SC_Chat(short&, CFixCharString<200>& text) override
    {
        Lines.emplace_back(text);
        Threads.push_back(std::this_thread::get_id());
        if (OnChat)
            OnChat();
        Heard.Set();
    }

    std::vector<std::string> Lines;
    std::vector<std::thread::id> Threads;
    std::function<void()> OnChat;
    Kesra::EventHandle Heard{Kesra::EventHandle::AutoReset};
};

/// A client that counts its disconnections.
class GameClient : public CNTMainClient
{
public:
    GameClient() { EXPECT_TRUE(Attach(&Stub) && Attach(&Requests) && Startup()); }
    ~GameClient() override { StopReceiving(); }

    void ProcessDisconnection() override
    {
        ++Disconnections;
        if (OnDisconnection)
            OnDisconnection();
        Disconnected.Set();
    }

    bool ConnectTo(Peer& peer)
    {
        SetServerAddr("127.0.0.1");
        SetServerPort(peer.Port());
        if (!ConnectToServer())
            return false;
        peer.Accept();
        return true;
    }
    /// The connection has ended and the receive thread with it.
    void WaitForEnd() { ASSERT_TRUE(WaitForReceiveThread(60000)) << "the receive thread has not ended"; }
    /// Waits until so many bytes more fit into the outbox as it is set by itself.
    void WaitForRoom(std::size_t bytes)
    {
        Until(
            "there is room in the outbox", [&] { return GetUnsentBytes() + bytes <= 1024 * 1024; });
    }
    /// Waits until so many bytes have been taken in.
    void WaitForBytes(std::size_t bytes)
    {
        Until(
            "the bytes have been taken in", [&] { return GetRecvBytes() >= bytes; });
    }

    ChatStub Stub;
    CNTProxy_CLToGS Requests;
    std::function<void()> OnDisconnection;
    std::atomic<int> Disconnections{0};
    Kesra::EventHandle Disconnected{Kesra::EventHandle::AutoReset};
};

inline CNTPacket Chat(const std::string& text)
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(Kesra::SC_CHAT) << static_cast<unsigned short>(0)
           << static_cast<short>(1) << text;
    return packet;
}

/// The answer to a waiting request that brings nothing but its result.
inline CNTPacket Reply(short serial, unsigned result)
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(Kesra::GS_REPLY_10006) << static_cast<unsigned short>(0) << serial
           << result;
    return packet;
}

} // namespace Test
