// The round trip of a waiting request, alone and right behind a movement report, and the rate of sends, the
// whole process on one core: there the scheduler's choice of a core cannot decide.

#include "bench/Figures.h"
#include "bench/GameClient.h"
#include "bench/Repeated.h"

#include <benchmark/benchmark.h>

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

/// The bare end of a connection: a thread that receives, and a hand-over through a condition variable.
class BareClient
{
public:
    explicit BareClient(const Bench::Listener& listener)
        : Descriptor(listener.Connect()), Peer(listener.Accept()), Receiving([this] { Receive(); })
    {
    }
    ~BareClient()
    {
        Bench::CloseDescriptor(Descriptor);
        Receiving.join();
    }
    void Ask(const unsigned char* request)
    {
        Bench::SendAll(Descriptor, request, RequestBytes);
        ++Asked;
        std::unique_lock guard(Lock);
        Arrived.wait(guard, [this] { return Answers == Asked; });
    }

    const int Descriptor;
    const int Peer;

private:
    void Receive()
    {
        unsigned char reply[ReplyBytes];
        while (Bench::RecvAll(Descriptor, reply, sizeof reply)) {
            const std::lock_guard guard(Lock);
            ++Answers;
            Arrived.notify_one();
        }
    }

    std::mutex Lock;
    std::condition_variable Arrived;
    long Answers = 0;
    long Asked = 0;
    std::thread Receiving;
};

void Answer(int peer)
{
    Bench::AnswerRequests(peer, RequestBytes, ReplyTemplate(), MakeReply);
}

void RoundTripBare(benchmark::State& state)
{
    const Bench::Listener listener;
    std::thread answering;
    {
        BareClient client(listener);
        answering = std::thread(Answer, client.Peer);
        const unsigned char request[RequestBytes] = {};
        for (auto _ : state)
            client.Ask(request);
    }
    answering.join();
}

void RoundTrip(benchmark::State& state)
{
    const Bench::Listener listener;
    Bench::GameClient client(listener);
    std::thread answering(Answer, client.Peer);
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

/// Reads a movement report before each request that it answers.
void AnswerAfterReports(int peer)
{
    unsigned char report[SendBytes];
    unsigned char request[RequestBytes];
    std::vector<unsigned char> reply = ReplyTemplate();
    while (Bench::RecvAll(peer, report, sizeof report) && Bench::RecvAll(peer, request, sizeof request)) {
        MakeReply(request, reply.data());
        Bench::SendAll(peer, reply.data(), reply.size());
    }
}

void AfterReportBare(benchmark::State& state)
{
    const Bench::Listener listener;
    std::thread answering;
    {
        BareClient client(listener);
        answering = std::thread(AnswerAfterReports, client.Peer);
        const unsigned char report[SendBytes] = {};
        const unsigned char request[RequestBytes] = {};
        for (auto _ : state) {
            Bench::SendAll(client.Descriptor, report, sizeof report);
            client.Ask(request);
        }
    }
    answering.join();
}

void AfterReport(benchmark::State& state)
{
    const Bench::Listener listener;
    Bench::GameClient client(listener);
    std::thread answering(AnswerAfterReports, client.Peer);
    CDRVector movement;
    unsigned long result = 0;
    for (auto _ : state) {
        client.Proxy.CS_AvatarMove(movement, 1, 2);
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
BENCHMARK(AfterReportBare)->UseRealTime();
BENCHMARK(AfterReport)->UseRealTime();
BENCHMARK(SendBare)->UseRealTime();
BENCHMARK(Send)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    Bench::PinToOneCore();
    return Bench::RunRepeated(argc, argv, "request");
}
