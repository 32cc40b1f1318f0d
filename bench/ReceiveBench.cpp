// What a dense stream of packets costs: decoded and delivered by the library, against a bare parser that
// reads 64 KiB at a time, decodes every field and makes one virtual call per packet, and against two recv
// calls per packet that decode nothing.
//
//     ReceiveBench CORES [PACKET_BYTES [PACKETS]]

#include "bench/Figures.h"
#include "bench/GameClient.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr int Rounds = 7;
constexpr std::size_t BlockBytes = 65536;

struct Stream {
    std::size_t PacketBytes = 30;
    long Packets = 400000;
    std::vector<unsigned char> Block;
    long PacketsPerBlock = 0;
};

/// A movement message, or any other number of bytes for the handler that takes no parameters.
std::vector<unsigned char> PacketOf(std::size_t bytes)
{
    CNTPacket packet = Bench::MovementMessage();
    if (bytes == packet.GetBufSize())
        return {packet.GetBuf(), packet.GetBuf() + bytes};
    std::vector<unsigned char> other(bytes);
    const std::uint16_t header[2] = {Kesra::SC_EVENT29002, static_cast<std::uint16_t>(bytes)};
    std::memcpy(other.data(), header, sizeof header);
    return other;
}

Stream MakeStream(std::size_t packetBytes, long packets)
{
    Stream stream{packetBytes, packets, {}, 0};
    const std::vector<unsigned char> packet = PacketOf(packetBytes);
    stream.PacketsPerBlock = static_cast<long>(BlockBytes / packetBytes);
    stream.Packets -= packets % stream.PacketsPerBlock;
    for (long i = 0; i < stream.PacketsPerBlock; ++i)
        stream.Block.insert(stream.Block.end(), packet.begin(), packet.end());
    return stream;
}

/// CPU and wall time per packet, the sender's own CPU left out.
struct Cost {
    std::vector<double> Cpu;
    std::vector<double> Wall;

    void Report(const std::string& name)
    {
        Bench::Figure(name + ".cpu_ns", Bench::Median(Cpu));
        Bench::Figure(name + ".ns", Bench::Median(Wall));
    }
};

/// Times one whole stream, from the first write to the last packet.
void Time(const Stream& stream, int sender, Cost& cost, const std::function<void()>& receive)
{
    double sendersCpu = 0;
    const double cpu = Bench::ProcessSeconds();
    const auto start = std::chrono::steady_clock::now();
    std::thread sending([&] {
        for (long sent = 0; sent < stream.Packets; sent += stream.PacketsPerBlock)
            Bench::SendAll(sender, stream.Block.data(), stream.Block.size());
        sendersCpu = Bench::ThreadSeconds();
    });
    receive();
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    sending.join();
    const double perPacket = 1e9 / static_cast<double>(stream.Packets);
    cost.Cpu.push_back((Bench::ProcessSeconds() - cpu - sendersCpu) * perPacket);
    cost.Wall.push_back(passed.count() * perPacket);
}

/// A plain connection: its receiving and its sending end.
struct Pair {
    explicit Pair(const Bench::Listener& listener) : Receiver(listener.Connect()), Sender(listener.Accept())
    {
    }
    ~Pair()
    {
        Bench::CloseDescriptor(Sender);
        Bench::CloseDescriptor(Receiver);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    const int Receiver;
    const int Sender;
};

/// The fields of a movement message from memory, scrambled as they travel, and the call of the handler.
void DecodeByHand(const unsigned char* packet, CNTStub_GSToCL& handlers)
{
    const auto field = [packet](std::size_t at) {
        std::uint32_t value = 0;
        std::memcpy(&value, packet + at, sizeof value);
        return value ^ CNTPacket::Key;
    };
    const auto real = [&](std::size_t at) {
        const std::uint32_t bits = field(at);
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    };
    unsigned long objectID = field(4);
    CDRVector movement;
    CNTVector position(real(8), 0, real(12));
    movement.SetPos(position);
    movement.SetAY(real(16));
    movement.SetSpeed(real(20));
    std::uint16_t bits = 0;
    std::memcpy(&bits, packet + 24, sizeof bits);
    auto second = static_cast<short>(bits ^ CNTPacket::Key);
    long third = static_cast<std::int32_t>(field(26));
    handlers.SC_ObjectMove(objectID, movement, second, third);
}

/// Reads 64 KiB at a time and parses what is whole.
void ParseBarely(int descriptor, const Stream& stream, Bench::CountingStub& stub)
{
    std::vector<unsigned char> buffer(BlockBytes);
    std::size_t held = 0;
    CNTStub_GSToCL* handlers = &stub;
    for (long packets = 0; packets < stream.Packets;) {
        const std::size_t got = Bench::RecvSome(descriptor, buffer.data() + held, buffer.size() - held);
        if (got == 0)
            return;
        held += got;
        std::size_t at = 0;
        while (held - at >= CNTPacket::HeaderSize) {
            std::uint16_t header[2];
            std::memcpy(header, buffer.data() + at, sizeof header);
            if (held - at < header[1])
                break;
            if (header[0] == Kesra::SC_OBJECT_MOVE)
                DecodeByHand(buffer.data() + at, *handlers);
            else
                handlers->SC_Event29002();
            at += header[1];
            ++packets;
        }
        held -= at;
        std::memmove(buffer.data(), buffer.data() + at, held);
    }
}

/// Two recv calls for each packet.
void ReadPacketByPacket(int descriptor, const Stream& stream)
{
    std::vector<char> packet(stream.PacketBytes);
    for (long i = 0; i < stream.Packets; ++i) {
        Bench::RecvAll(descriptor, packet.data(), CNTPacket::HeaderSize);
        Bench::RecvAll(descriptor, packet.data() + CNTPacket::HeaderSize,
                       packet.size() - CNTPacket::HeaderSize);
    }
}

void DrainEveryMillisecond(Bench::GameClient& client, const Stream& stream)
{
    auto frame = std::chrono::steady_clock::now();
    for (client.Stub.Count = 0; client.Stub.Count < stream.Packets;) {
        std::this_thread::sleep_until(frame += std::chrono::milliseconds(1));
        client.ProcessQueuedMessageFromServer();
    }
}

void WaitForAll(Bench::CountingStub& stub)
{
    stub.Reached.wait(false);
    stub.Count = 0;
    stub.Reached = false;
}

} // namespace

int main(int argc, char** argv)
{
    const int cores = argc > 1 ? std::atoi(argv[1]) : 2;
    const Stream stream = MakeStream(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 30,
                                     argc > 3 ? std::atol(argv[3]) : 400000);
    if (cores == 1)
        Bench::PinToOneCore();
    const Bench::Listener listener;
    const Pair parsed(listener);
    const Pair simple(listener);
    Bench::CountingStub stub;
    Bench::GameClient drained(listener);
    Bench::GameClient direct(listener, true);
    direct.Stub.Goal = stream.Packets;

    Cost parser;
    Cost twoRecv;
    Cost queued;
    Cost onThread;
    for (int round = 0; round < Rounds; ++round) {
        Time(
            stream, parsed.Sender, parser, [&] { ParseBarely(parsed.Receiver, stream, stub); });
        Time(
            stream, direct.Peer, onThread, [&] { WaitForAll(direct.Stub); });
        Time(
            stream, simple.Sender, twoRecv, [&] { ReadPacketByPacket(simple.Receiver, stream); });
        Time(stream, drained.Peer, queued, [&] { DrainEveryMillisecond(drained, stream); });
    }
    const std::string prefix = "receive." + std::to_string(stream.PacketBytes) + "." + std::to_string(cores);
    parser.Report(prefix + ".parser");
    twoRecv.Report(prefix + ".two_recv");
    queued.Report(prefix + ".queued");
    onThread.Report(prefix + ".on_thread");
    return 0;
}
