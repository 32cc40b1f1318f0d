// Streams of packets that are mostly right: the mutator changes fields, counts, texts, numbers and sizes of
// whole packets instead of loose bytes, so that what it makes gets past the framing and deep into the
// decoders.

#include "fuzz/StreamClient.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <span>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t capacity);

namespace
{

using Packet = std::vector<std::uint8_t>;
using Random = std::minstd_rand;

constexpr std::size_t HeaderSize = 4;
constexpr std::size_t LargestPacket = 4096;
constexpr std::uint8_t Key = 0x3C;

constexpr std::uint16_t Numbers[] = {
    508,   10002, 10003, 10004, 10005, 10006, 10007, 10008, 12002, 12003, 12004, 12005, 12006, 12007, 12008,
    12009, 12010, 12012, 13002, 13003, 13004, 13005, 13006, 13007, 13008, 13010, 14002, 14003, 14004, 14005,
    14006, 14007, 14008, 14009, 14010, 14011, 14012, 14013, 15002, 15003, 16006, 16007, 16008, 16009, 16010,
    16013, 16014, 16015, 16016, 16017, 16018, 16019, 16020, 16021, 16022, 16023, 16024, 16025, 16026, 17002,
    17003, 18001, 19001, 20001, 21001, 21002, 21003, 21004, 21005, 21006, 21007, 21008, 21009, 21010, 21011,
    29001, 29002, 29003, 50001, 50002, 50003, 50004, 50005, 60001, 60002, 0,     100,   62001, 65535};

constexpr std::uint16_t Counts[] = {0,   1,   2,   3,    20,   21,     199,    200,
                                    201, 255, 256, 1000, 4092, 0x7FFF, 0x8000, 0xFFFF};

std::size_t Below(Random& random, std::size_t limit)
{
    return random() % limit;
}

void SetWord(Packet& packet, std::size_t offset, std::size_t value)
{
    const auto word = static_cast<std::uint16_t>(value);
    std::memcpy(packet.data() + offset, &word, sizeof word);
}

/// The whole packets at the start of a stream.
std::vector<Packet> Split(std::span<const std::uint8_t> stream)
{
    std::vector<Packet> packets;
    while (stream.size() >= HeaderSize) {
        std::uint16_t size = 0;
        std::memcpy(&size, stream.data() + 2, sizeof size);
        if (size < HeaderSize || size > stream.size())
            break;
        packets.emplace_back(stream.begin(), stream.begin() + size);
        stream = stream.subspan(size);
    }
    return packets;
}

std::size_t Join(const std::vector<Packet>& packets, std::uint8_t* data, std::size_t capacity)
{
    std::size_t size = 0;
    for (const Packet& packet : packets) {
        if (packet.size() > capacity - size)
            break;
        std::memcpy(data + size, packet.data(), packet.size());
        size += packet.size();
    }
    return size;
}

/// A 16-bit value, perhaps a count or a length, becomes one at a limit, scrambled as it must be.
void ChangeCount(Packet& packet, Random& random)
{
    if (packet.size() < HeaderSize + 2)
        return;
    const std::size_t offset = HeaderSize + Below(random, packet.size() - HeaderSize - 1);
    SetWord(packet, offset, Counts[Below(random, std::size(Counts))] ^ Key);
}

void ChangeByte(Packet& packet, Random& random)
{
    if (packet.size() > HeaderSize)
        packet[HeaderSize + Below(random, packet.size() - HeaderSize)] = static_cast<std::uint8_t>(random());
}

void ChangeNumber(Packet& packet, Random& random)
{
    SetWord(packet, 0, Numbers[Below(random, std::size(Numbers))]);
}

void Shorten(Packet& packet, Random& random)
{
    packet.resize(HeaderSize + Below(random, packet.size() - HeaderSize + 1));
}

void Lengthen(Packet& packet, Random& random)
{
    const std::size_t limit = std::min<std::size_t>(LargestPacket, packet.size() + 1 + Below(random, 300));
    while (packet.size() < limit)
        packet.push_back(static_cast<std::uint8_t>(random()));
}

/// The bytes of the payload behind a place travel twice.
void RepeatTail(Packet& packet, Random& random)
{
    const std::size_t from = HeaderSize + Below(random, packet.size() - HeaderSize + 1);
    const Packet tail(packet.begin() + static_cast<std::ptrdiff_t>(from), packet.end());
    packet.insert(packet.end(), tail.begin(), tail.end());
    packet.resize(std::min(packet.size(), LargestPacket));
}

void MutateBytes(Packet& packet, Random&)
{
    const std::size_t size = packet.size() - HeaderSize;
    packet.resize(LargestPacket);
    packet.resize(HeaderSize +
                  LLVMFuzzerMutate(packet.data() + HeaderSize, size, LargestPacket - HeaderSize));
}

constexpr void (*Mutations[])(Packet&, Random&) = {ChangeCount, ChangeCount, ChangeByte, ChangeNumber,
                                                   Shorten,     Lengthen,    RepeatTail, MutateBytes};

void MutateOne(std::vector<Packet>& packets, Random& random)
{
    Packet& packet = packets[Below(random, packets.size())];
    Mutations[Below(random, std::size(Mutations))](packet, random);
    // Now and then the stated size lies, so that the stream breaks there.
    SetWord(packet, 2, random() % 64 == 0 ? random() : packet.size());
}

void MutateSequence(std::vector<Packet>& packets, Random& random)
{
    const std::size_t which = Below(random, packets.size());
    if (random() % 2 == 0 && packets.size() > 1)
        packets.erase(packets.begin() + static_cast<std::ptrdiff_t>(which));
    else
        packets.push_back(packets[which]);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t capacity,
                                               unsigned seed)
{
    Random random(seed);
    std::vector<Packet> packets = Split({data, size});
    if (packets.empty())
        packets.push_back({0xE2, 0x2E, 0x04, 0x00});
    if (random() % 8 == 0)
        MutateSequence(packets, random);
    else
        MutateOne(packets, random);
    return Join(packets, data, capacity);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* left, std::size_t leftSize,
                                                 const std::uint8_t* right, std::size_t rightSize,
                                                 std::uint8_t* out, std::size_t capacity, unsigned seed)
{
    Random random(seed);
    std::vector<Packet> packets = Split({left, leftSize});
    for (Packet& packet : Split({right, rightSize})) {
        const std::size_t at = Below(random, packets.size() + 1);
        packets.insert(packets.begin() + static_cast<std::ptrdiff_t>(at), std::move(packet));
    }
    return Join(packets, out, capacity);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::span stream(data, size);
    Kesra::StreamClient client;
    client.Deliver(stream, {});

    // The payload of the first packet also serves as the fields of a reply; the byte before it chooses the
    // request.
    const std::vector<Packet> packets = Split(stream);
    if (!packets.empty())
        Kesra::AskSomething(client, packets[0][0], std::span(packets[0]).subspan(HeaderSize));
    return 0;
}
