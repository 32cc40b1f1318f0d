// Arbitrary bytes as variants and as property collections, from a packet and from a byte image. What has been
// read once must survive being written and read again.

#include "KesraNTC/net/CPropCollection.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <strings.h>
#include <utility>
#include <vector>

namespace
{

using Bytes = std::vector<unsigned char>;
using Pairs = std::vector<std::pair<std::string, _variant_t>>;

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

/// Bytes of a number by its type; -1 for whatever no reader makes.
int WidthOf(VARTYPE type)
{
    constexpr int widths[] = {0,  0,  2,  4,  4, 8, -1, 8, -1, -1, -1, 2,
                              -1, -1, -1, -1, 1, 1, 2,  4, -1, -1, 4,  4};
    return type < std::size(widths) ? widths[type] : -1;
}

bool IsSame(const VARIANT& left, const VARIANT& right)
{
    if (left.vt != right.vt)
        return false;
    if (left.vt == VT_DECIMAL)
        return std::memcmp(&left.decVal, &right.decVal, sizeof left.decVal) == 0;
    if (left.vt == VT_BSTR)
        return std::u16string(left.bstrVal, SysStringLen(left.bstrVal)) ==
               std::u16string(right.bstrVal, SysStringLen(right.bstrVal));
    const int width = WidthOf(left.vt);
    return width >= 0 && std::memcmp(&left.llVal, &right.llVal, static_cast<std::size_t>(width)) == 0;
}

void RequireSame(const Pairs& left, const Pairs& right)
{
    Require(std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [](auto& one, auto& other) { return one.first == other.first && IsSame(one.second, other.second); }));
}

CNTPacket Started()
{
    CNTPacket packet;
    packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0);
    return packet;
}

void CheckVariants(CNTPacket packet)
{
    while (!packet.IsAtEnd()) {
        _variant_t first;
        packet >> first;
        CNTPacket again = Started();
        again << first;
        again.SetBufPoint(CNTPacket::HeaderSize);
        _variant_t second(OLESTR("old"));
        again >> second;
        Require(IsSame(first, second) && again.IsAtEnd());
    }
}

/// The pairs of a packet, one by one. Each takes a byte or more, and past the end comes only the last name.
Pairs ReadPairs(CNTPacket packet)
{
    packet.SetBufPoint(CNTPacket::HeaderSize);
    int count = 0;
    packet >> count;
    Pairs pairs;
    CString name;
    _variant_t value;
    const int most = packet.GetBufSize() - packet.GetBufPoint() + 1;
    for (int i = 0; i < std::min(count, most); ++i) {
        packet >> name >> value;
        pairs.emplace_back(static_cast<const char*>(name), value);
    }
    return pairs;
}

/// The pairs in the order in which a collection writes them: those that one packet holds.
Pairs Listed(const CPropCollection& properties)
{
    CNTPacket packet = Started();
    packet << properties;
    return ReadPairs(packet);
}

/// Copies by way of both images, which a text makes longer, perhaps than a packet.
void CheckCopies(CPropCollection properties, std::size_t fillerLength)
{
    const _variant_t filler(std::basic_string<OLECHAR>(fillerLength, 'x').c_str());
    properties.SetProperty("filler", filler);
    CPropCollection fromBytes;
    fromBytes.SetProperty("old", true);
    fromBytes = Bytes(properties);
    CPropCollection fromVariant{_variant_t(properties)};
    properties.EraseProperty("filler");
    for (CPropCollection* copy : {&fromBytes, &fromVariant}) {
        Require(IsSame(copy->GetProperty("filler"), filler));
        copy->EraseProperty("filler");
        Require(Bytes(*copy) == Bytes(properties));
        RequireSame(Listed(*copy), Listed(properties));
    }
}

struct NameOrder {
    bool operator()(const std::string& left, const std::string& right) const
    {
        return strcasecmp(left.c_str(), right.c_str()) < 0;
    }
};

/// What a collection makes of the pairs: the first of two equal names counts.
Pairs Ordered(const Pairs& pairs)
{
    const std::map<std::string, _variant_t, NameOrder> ordered(pairs.begin(), pairs.end());
    return {ordered.begin(), ordered.end()};
}

/// A packet with that payload, as far as it leaves room for what a pair that was cut off grows by when it is
/// written again.
CNTPacket Received(const Bytes& payload)
{
    constexpr std::size_t growth = 32;
    CNTPacket packet = Started();
    const std::size_t taken = std::min(payload.size(), CNTPacket::Capacity - CNTPacket::HeaderSize - growth);
    std::copy_n(payload.begin(), taken, packet.GetBuf() + CNTPacket::HeaderSize);
    packet.SetBufSize(static_cast<unsigned short>(CNTPacket::HeaderSize + taken));
    packet.SetBufPoint(CNTPacket::HeaderSize);
    return packet;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto fillerLength = input.ConsumeIntegralInRange<std::size_t>(0, CNTPacket::Capacity);
    const Bytes image = input.ConsumeRemainingBytes<unsigned char>();
    CheckVariants(Received(image));

    std::uint32_t count = 0;
    const std::size_t countSize = std::min(image.size(), sizeof count);
    std::copy_n(image.begin(), countSize, reinterpret_cast<unsigned char*>(&count));
    Bytes payload = image;
    CNTPacket::Concrete(payload.data(), static_cast<unsigned short>(countSize));
    CNTPacket packet = Received(payload);
    const Pairs pairs = Ordered(ReadPairs(packet));
    CPropCollection properties;
    properties.SetProperty("old", true);
    packet >> properties;
    RequireSame(Listed(properties), pairs);
    CheckCopies(properties, fillerLength);

    properties.SetProperty("old", true);
    properties.CopyFrom(image);
    // An image keeps the lower half of its count only, and from some number on a count may turn the
    // scrambling off.
    const bool isWhole = packet.GetBufSize() == CNTPacket::HeaderSize + image.size();
    if (isWhole && count > 0 && count < CNTPacket::PlainWrite2)
        RequireSame(Listed(properties), pairs);
    CheckCopies(properties, fillerLength);
    return 0;
}
