// How many 30-byte packets a second arrive over loopback: decoded and delivered by the library, against a
// bare loop of two recv calls per packet that decodes nothing.

#include "bench/GameClient.h"
#include "bench/Ratios.h"

#include <chrono>
#include <thread>
#include <vector>

namespace
{

constexpr long Packets = 400000;
constexpr std::size_t PacketBytes = 30;
constexpr long PacketsPerWrite = 2000;

/// Sends all packets in large writes.
void SendStream(int descriptor)
{
    const CNTPacket packet = Bench::MovementMessage();
    std::vector<unsigned char> block;
    for (long i = 0; i < PacketsPerWrite; ++i)
        block.insert(block.end(), packet.GetBuf(), packet.GetBuf() + packet.GetBufSize());
    for (long sent = 0; sent < Packets; sent += PacketsPerWrite)
        Bench::SendAll(descriptor, block.data(), block.size());
}

/// Times one whole stream, from the first write to the last packet.
template <class Receive> void TimeStream(benchmark::State& state, int sender, Receive receive)
{
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        std::thread sending(SendStream, sender);
        receive();
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        sending.join();
        state.SetIterationTime(passed.count());
    }
    state.SetItemsProcessed(state.iterations() * Packets);
}

void Bare(benchmark::State& state)
{
    const Bench::Listener listener;
    const int receiver = listener.Connect();
    const int sender = listener.Accept();
    TimeStream(state, sender, [receiver] {
        char packet[PacketBytes];
        for (long i = 0; i < Packets; ++i) {
            Bench::RecvAll(receiver, packet, 4);
            Bench::RecvAll(receiver, packet + 4, PacketBytes - 4);
        }
    });
    Bench::CloseDescriptor(sender);
    Bench::CloseDescriptor(receiver);
}

void DrainedEveryMillisecond(benchmark::State& state)
{
    const Bench::Listener listener;
    Bench::GameClient client(listener);
    TimeStream(state, client.Peer, [&client] {
        client.Stub.Count = 0;
        auto frame = std::chrono::steady_clock::now();
        while (client.Stub.Count < Packets) {
            std::this_thread::sleep_until(frame += std::chrono::milliseconds(1));
            client.ProcessQueuedMessageFromServer();
        }
    });
}

void OnReceiveThread(benchmark::State& state)
{
    const Bench::Listener listener;
    Bench::GameClient client(listener, true);
    client.Stub.Goal = Packets;
    TimeStream(state, client.Peer, [&client] {
        client.Stub.Reached.wait(false);
        client.Stub.Count = 0;
        client.Stub.Reached = false;
    });
}

BENCHMARK(Bare)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(DrainedEveryMillisecond)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(OnReceiveThread)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return Bench::RunAndCompare(
        argc, argv,
        {{"receive, drained every millisecond", "DrainedEveryMillisecond", "Bare", Bench::Ratio::RateAtLeast,
          2.0},
         {"receive, on the receive thread", "OnReceiveThread", "Bare", Bench::Ratio::RateAtLeast, 4.0}});
}
