#pragma once

#include "server/network/Link.h"

#include "KesraNTC/net/CNTPacket.h"
#include "KesraNTC/net/CPropCollection.h"
#include "KesraNTC/world/CDRVector.h"
#include "KesraNTC/world/TItem.h"
#include "KesraNTC/world/TSkill.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace Kesra
{

/// The number that ties a reply to its request.
struct Serial {
    unsigned short Value = 0;
};

/// A text of which the first Limit bytes count.
template <std::size_t Limit> struct Text {
    std::string Value;
};
using NameText = Text<20>;
using ChatText = Text<200>;
using LongText = Text<PacketLimit>; ///< as long as a packet lets it be

/// Reads the fields of a request. Unlike the packet's own operators it notices when a field is not there:
/// a request that is too short or too long is not carried out at all.
class RequestReader
{
public:
    explicit RequestReader(CNTPacket& packet) : Packet(packet) { packet.SetBufPoint(CNTPacket::HeaderSize); }

    void Take(char& value) { TakeSized(value, 1); }
    void Take(bool& value) { TakeSized(value, 1); }
    void Take(short& value) { TakeSized(value, 2); }
    void Take(unsigned short& value) { TakeSized(value, 2); }
    void Take(int& value) { TakeSized(value, 4); }
    void Take(long& value) { TakeSized(value, 4); }
    void Take(unsigned long& value) { TakeSized(value, 4); }
    void Take(Serial& serial)
    {
        TakeSized(serial.Value, 2);
        SerialTaken = Whole;
    }
    void Take(CNTVector& vector) { TakeSized(vector, 8); }
    void Take(CDRVector& vector) { TakeSized(vector, 16); }
    void Take(TItem& item) { TakeSized(item, 16); }
    void Take(TSkill& skill) { TakeSized(skill, 12); }

    void Take(CPropCollection& properties) { TakeSized(properties, sizeof(std::uint32_t)); }
    template <std::size_t Limit> void Take(Text<Limit>& text) { TakeText(text.Value, Limit); }

    template <class T> void Take(std::vector<T>& list)
    {
        short count = 0;
        Take(count);
        for (short taken = 0; taken < count && Whole; ++taken)
            Take(list.emplace_back());
    }

    /// Ends the reading: true when every field was there and nothing follows the last one.
    bool Finish() const { return Whole && Packet.GetBufPoint() == Packet.GetBufSize(); }
    bool HasSerial() const { return SerialTaken; }

private:
    bool Holds(std::size_t bytes) const
    {
        return Whole && Packet.GetBufPoint() + bytes <= Packet.GetBufSize();
    }

    template <class T> void TakeSized(T& value, std::size_t bytes)
    {
        Whole = Holds(bytes);
        if (Whole)
            Packet >> value;
    }

    void TakeText(std::string& text, std::size_t limit)
    {
        unsigned short length = 0;
        Take(length);
        Whole = Whole && Holds(length);
        if (!Whole || length == 0)
            return;
        text.resize(length);
        Packet.Read(text.data(), length);
        // A NUL ends a text wherever it is used.
        text.resize(std::min(text.find('\0'), std::min<std::size_t>(length, limit)));
    }

    CNTPacket& Packet;
    bool Whole = true;
    bool SerialTaken = false;
};

} // namespace Kesra
