// The round trip of a waiting request and the rate of sends, the whole process on one core: there the
// scheduler's choice of a core cannot decide.

#include "bench/GameClient.h"
#include "bench/Ratios.h"

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

namespace
{

constexpr std::size_t RequestBytes = 8;
constexpr std::size_t ReplyBytes = 10;
constexpr std::size_t SendBytes = 26;

/// A reply to CS_CancelDeleteAvatar: the request's serial as it came, then a result code.
void MakeReply(const unsigned char* request, unsigned char* reply)
{
    std::memcpy(reply + 4, request + 4, 2);
}

std::vector<unsigned char> ReplyTemplate()
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(Kesra::GS_REPLY_10006) << static_cast<unsigned short>(0)
           << static_cast<short>(0) << 0U;
    return std::vector<unsigned char>(packet.GetBuf(), packet.GetBuf() + packet.GetBufSize());
}

void RoundTripBare(benchmark::State& state)
{
    const Bench::Listener listener;
    const int client = listener.Connect();
    const int server = listener.Accept();
    std::thread answering(Bench::AnswerRequests, server, RequestBytes, ReplyTemplate(), MakeReply);
    std::mutex lock;
    std::condition_variable arrived;
    long answers = 0;
    std::thread receiving([&] {
        unsigned char reply[ReplyBytes];
        while (Bench::RecvAll(client, reply, sizeof reply)) {
            const std::lock_guard guard(lock);
            ++answers;
            arrived.notify_one();
        }
    });
    const unsigned char request[RequestBytes] = {};
    long asked = 0;
    for (auto _ : state) {
        Bench::SendAll(client, request, sizeof request);
        ++asked;
        std::unique_lock guard(lock);
        arrived.wait(guard, [&] { return answers == asked; });
    }
    Bench::CloseDescriptor(client);
    receiving.join();
    answering.join();
    Bench::CloseDescriptor(server);
}

void RoundTrip(benchmark::State& state)
{
    const Bench::Listener listener;
    Bench::GameClient client(listener);
    std::thread answering(Bench::AnswerRequests, client.Peer, RequestBytes, ReplyTemplate(), MakeReply);
    unsigned long result = 0;
    for (auto _ : state) {
        if (client.Proxy.CS_CancelDeleteAvatar(1, result) != GS_OK) {
            state.SkipWithError("no reply");
            break;
        }
    }
    client.Disconnect();
    answering.join();
}

void SendBare(benchmark::State& state)
{
    const Bench::Listener listener;
    const int client = listener.Connect();
    const int server = listener.Accept();
    std::thread reading(Bench::Drain, server);
    const unsigned char packet[SendBytes] = {};
    for (auto _ : state)
        Bench::SendAll(client, packet, sizeof packet);
    Bench::CloseDescriptor(client);
    reading.join();
    Bench::CloseDescriptor(server);
}

void Send(benchmark::State& state)
{
    const Bench::Listener listener;
    Bench::GameClient client(listener);
    std::thread reading(Bench::Drain, client.Peer);
    CDRVector movement;
    for (auto _ : state)
        client.Proxy.CS_AvatarMove(movement, 1, 2);
    client.Disconnect();
    reading.join();
}

BENCHMARK(RoundTripBare)->UseRealTime();
BENCHMARK(RoundTrip)->UseRealTime();
BENCHMARK(SendBare)->UseRealTime();
BENCHMARK(Send)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    Bench::PinToOneCore();
    return Bench::RunAndCompare(
        argc, argv,
        {{"round trip of a waiting request", "RoundTrip", "RoundTripBare", Bench::Ratio::TimeAtMost, 1.35},
         {"sending 26-byte packets", "Send", "SendBare", Bench::Ratio::RateAtLeast, 0.5}});
}
