#pragma once

#include "KesraNTC/KesraNTC.h"
#include "KesraNTC/rpc/CNTStub_Quiet.h"
#include "bench/BarePeer.h"

#include <atomic>

namespace Bench
{

/// Counts movement messages, and those without parameters.
class CountingStub : public CNTStub_Quiet
{
public:
    void SC_ObjectMove(unsigned long&, CDRVector&, short&, long&) override { CountOne(); }
    void SC_Event29002() override { CountOne(); }
    void CountOne()
    {
        const long count = Count.load(std::memory_order_relaxed) + 1;
        Count.store(count, std::memory_order_relaxed);
        if (count == Goal) {
            Reached.store(true, std::memory_order_release);
            Reached.notify_one();
        }
    }

    std::atomic<long> Count{0};
    long Goal = -1;
    std::atomic<bool> Reached{false};
};

/// A client with proxy and stub, connected to a listener of this process.
class GameClient : public CNTMainClient
{
public:
    explicit GameClient(const Listener& listener, bool onReceiveThread = false)
    {
        ProcessOnRecvThread = onReceiveThread;
        Attach(&Proxy);
        Attach(&Stub);
        SetServerAddr("127.0.0.1");
        SetServerPort(listener.Port());
        Startup();
        ConnectToServer();
        Peer = listener.Accept();
    }
    ~GameClient() override
    {
        StopReceiving();
        CloseDescriptor(Peer);
    }
    void ProcessDisconnection() override {}

    CNTProxy_CLToGS Proxy;
    CountingStub Stub;
    int Peer = -1;
};

/// A movement message, 30 bytes.
inline CNTPacket MovementMessage()
{
    CNTPacket packet;
    CDRVector movement;
    packet << static_cast<unsigned short>(Kesra::SC_OBJECT_MOVE) << static_cast<unsigned short>(0) << 7U
           << movement << static_cast<short>(1) << 2;
    return packet;
}

} // namespace Bench
