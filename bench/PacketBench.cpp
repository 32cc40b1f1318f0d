// What building a request and dispatching a message cost beside the same work written out by hand.

#include "bench/GameClient.h"
#include "bench/Repeated.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>

namespace
{

/// A proxy whose packets end here.
class SinkProxy : public CNTProxy_CLToGS
{
public:
    bool Send(CNTPacket& packet) override
    {
        benchmark::DoNotOptimize(packet.GetBuf());
        benchmark::ClobberMemory();
        return true;
    }
};

struct BareMovement {
    float X = 1;
    float Z = 2;
    float AY = 3;
    float Speed = 4;
    unsigned short Second = 5;
    std::uint32_t Third = 6;
};

/// 4096 zero bytes, the header and the six fields of a movement report.
void BuildBare(benchmark::State& state)
{
    BareMovement movement;
    for (auto _ : state) {
        benchmark::DoNotOptimize(movement);
        unsigned char buffer[4096];
        std::memset(buffer, 0, sizeof buffer);
        const std::uint16_t header[2] = {Kesra::CS_AVATAR_MOVE, 26};
        std::memcpy(buffer, header, sizeof header);
        std::memcpy(buffer + 4, &movement.X, 4);
        std::memcpy(buffer + 8, &movement.Z, 4);
        std::memcpy(buffer + 12, &movement.AY, 4);
        std::memcpy(buffer + 16, &movement.Speed, 4);
        std::memcpy(buffer + 20, &movement.Second, 2);
        std::memcpy(buffer + 22, &movement.Third, 4);
        benchmark::DoNotOptimize(buffer);
        benchmark::ClobberMemory();
    }
}

void BuildRequest(benchmark::State& state)
{
    SinkProxy proxy;
    CDRVector movement;
    for (auto _ : state) {
        benchmark::DoNotOptimize(movement);
        proxy.CS_AvatarMove(movement, 5, 6);
    }
}

void BuildChained(benchmark::State& state)
{
    CDRVector movement;
    for (auto _ : state) {
        benchmark::DoNotOptimize(movement);
        CNTPacket packet;
        packet << static_cast<unsigned short>(Kesra::CS_AVATAR_MOVE) << static_cast<unsigned short>(0)
               << movement << static_cast<unsigned short>(5) << static_cast<unsigned long>(6);
        benchmark::DoNotOptimize(packet.GetBuf());
        benchmark::ClobberMemory();
    }
}

/// The reads of a 15002 message and the call, by hand.
void DispatchBare(benchmark::State& state)
{
    Bench::CountingStub stub;
    CNTStub_GSToCL* handlers = &stub;
    const CNTPacket original = Bench::MovementMessage();
    CNTPacket packet;
    for (auto _ : state) {
        packet = original;
        packet.SetBufPoint(0);
        benchmark::DoNotOptimize(handlers);
        unsigned short number = 0;
        unsigned short size = 0;
        unsigned long objectID = 0;
        CDRVector movement;
        short second = 0;
        long third = 0;
        packet >> number >> size >> objectID >> movement >> second >> third;
        handlers->SC_ObjectMove(objectID, movement, second, third);
        benchmark::ClobberMemory();
    }
}

class UnconnectedClient : public CNTMainClient
{
public:
    void ProcessDisconnection() override {}
};

void Dispatch(benchmark::State& state)
{
    Bench::CountingStub stub;
    UnconnectedClient client;
    client.Attach(&stub);
    CNTBaseClient* dispatcher = &client;
    const CNTPacket original = Bench::MovementMessage();
    CNTPacket packet;
    for (auto _ : state) {
        packet = original;
        packet.SetBufPoint(0);
        benchmark::DoNotOptimize(dispatcher);
        dispatcher->ProcessPacketFromServer(packet);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BuildBare);
BENCHMARK(BuildRequest);
BENCHMARK(BuildChained);
BENCHMARK(DispatchBare);
BENCHMARK(Dispatch);

} // namespace

int main(int argc, char** argv)
{
    return Bench::RunRepeated(argc, argv, "packet");
}
