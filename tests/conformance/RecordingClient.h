#pragma once

#include "tests/conformance/Recording.h"

#include "KesraNTC/KesraNTC.h"

#include <mutex>
#include <optional>

namespace Kesra
{

/// A client that writes down what it sends, in the order in which it sends it, and the clock.
class RecordingClient : public CNTMainClient
{
public:
    explicit RecordingClient(Recording& recording) : Record(recording) { ProcessOnRecvThread = true; }
    ~RecordingClient() override { StopReceiving(); }

    /// The values of the request that the calling thread makes next.
    void Announce(const Fields& fields) { Announced = fields; }

    void ProcessDisconnection() override {}

    unsigned long SendToServer(CNTPacket& packet) override
    {
        // Requests and clock answers come from two threads; the lines stand in the order of the stream.
        const std::lock_guard hold(SendOrder);
        const auto number = static_cast<MessageNumber>(packet.GetBuf()[0] | packet.GetBuf()[1] << 8);
        Record.Sent(number, number == CS_RESPONSE_NET_TIME ? Estimate.value() : Announced.value());
        return CNTMainClient::SendToServer(packet);
    }

    unsigned long ProcessPacketFromServer(CNTPacket& packet) override
    {
        const bool clock = (packet.GetBuf()[0] | packet.GetBuf()[1] << 8) == SC_SET_NET_TIME;
        if (clock) {
            const std::uint32_t passed = static_cast<std::uint32_t>(GetTickCount()) - NetTime;
            const std::uint32_t estimate = ServerTime + passed;
            Estimate = Fields(Fields::Reading(estimate));
        }
        const unsigned long result = CNTMainClient::ProcessPacketFromServer(packet);
        if (clock)
            Record.Got(SC_SET_NET_TIME, ServerTime, Latency);
        return result;
    }

private:
    Recording& Record;
    std::mutex SendOrder;
    std::optional<Fields> Announced; // the requesting thread's
    std::optional<Fields> Estimate;  // the receive thread's
};

} // namespace Kesra
