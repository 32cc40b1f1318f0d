#pragma once

#include "KesraNTC/rpc/CNTMainClient.h"

#include <atomic>
#include <map>
#include <mutex>

/// How often each message number went one way, and how many bytes that were.
struct Traffic {
    std::map<unsigned short, unsigned> Packets;
    unsigned long long Bytes = 0;

    unsigned Total() const;
};

/// A game's client: what every game derives, and here it counts as well.
class GameClient : public CNTMainClient
{
public:
    ~GameClient() override;

    void ProcessDisconnection() override;
    unsigned long ProcessPacketFromServer(CNTPacket& packet) override;
    unsigned long SendToServer(CNTPacket& packet) override;

    bool HasEnded() const { return Ended; }
    Traffic Received() const;
    Traffic Sent() const;

private:
    // Packets are processed, and sent, on the game's thread and on the receive thread.
    mutable std::mutex Mutex;
    Traffic In;
    Traffic Out;
    std::atomic<bool> Ended{false};
};
